*! show and change where program files are looked for
program adopath, rclass
	version 12.1
	gettoken sign rest : 0, parse(" +-")
	if `"`sign'"' == "" {
		List
		return local path `"$S_ADO"'
		exit
	}
	if !inlist(`"`sign'"', "+", "-") {
		display as error "the form is: adopath, adopath + dir, adopath ++ dir, or adopath - dir | #"
		exit 198
	}
	* ++ puts the directory in front
	gettoken next behind : rest, parse(" +-")
	local first = `"`sign'`next'"' == "++"
	if `first' {
		local rest `"`behind'"'
	}
	gettoken dir rest : rest
	if `"`dir'"' == "" | `"`rest'"' != "" {
		display as error "one directory is expected; quote a name that holds blanks"
		exit 198
	}
	if strpos(`"`dir'"', ";") {
		display as error "a directory on the path may not have ; in its name"
		exit 198
	}
	if "`sign'" == "-" {
		Without `"`dir'"'
		if "`s(found)'" == "" {
			display as error `"`dir' is not on the path"'
			exit 111
		}
		Put `"`s(path)'"'
	}
	else {
		* a directory that is there already only moves
		Without `"`dir'"'
		local path `"`s(path)'"'
		if `"`path'"' == "" {
			Put `"`dir'"'
		}
		else if `first' {
			Put `"`dir';`path'"'
		}
		else {
			Put `"`path';`dir'"'
		}
	}
	List
	return local path `"$S_ADO"'
end

program Put
	if `: length local 1' > 999 {
		display as error "the path is too long"
		exit 1000
	}
	global S_ADO `"`1'"'
end

* The path without a directory, or without the directory of that number
program Without, sclass
	args dir
	local rest `"$S_ADO"'
	local i 0
	local found
	while `"`rest'"' != "" {
		gettoken part rest : rest, parse(";")
		if `"`part'"' == ";" {
			continue
		}
		local ++i
		if `"`part'"' == `"`dir'"' | "`i'" == `"`dir'"' {
			local found yes
			continue
		}
		local path `"`path'`sep'`part'"'
		local sep ;
	}
	sreturn clear
	sreturn local path `"`path'"'
	sreturn local found `found'
end

program List
	local rest `"$S_ADO"'
	local i 0
	while `"`rest'"' != "" {
		gettoken part rest : rest, parse(";")
		if `"`part'"' == ";" {
			continue
		}
		local ++i
		local word
		local place `"`part'"'
		if inlist(`"`part'"', "OVATA", "UPDATES", "BASE", "SITE", "PLUS", "PERSONAL", "OLDPLACE") {
			local word (`part')
			local place : sysdir `part'
		}
		display as text "  [" %1.0f `i' "]  " %-12s "`word'" as result `"  "`place'""'
	}
end
