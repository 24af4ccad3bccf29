*! use an example dataset that comes with the system
program sysuse
	version 12.1
	local dir `"`c(sysdir_ovata)'examples/"'
	gettoken name options : 0, parse(" ,")
	if `"`name'"' == "dir" {
		dir `"`dir'*.dta"'
		exit
	}
	if `"`name'"' == "" | `"`name'"' == "," {
		display as error "name of an example dataset required"
		exit 100
	}
	if strpos(`"`name'"', ".") == 0 local name `"`name'.dta"'
	capture confirm file `"`dir'`name'"'
	if _rc {
		display as error "example dataset " `"`name'"' " not found"
		exit 601
	}
	use `"`dir'`name'"' `options'
end
