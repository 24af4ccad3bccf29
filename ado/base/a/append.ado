*! add the observations of dataset files behind those in memory
program append
	version 12.1
	gettoken word 0 : 0, parse(" ,")
	if "`word'" != "using" {
		display as error "using required"
		exit 100
	}
	gettoken file 0 : 0, parse(" ,")
	while `"`file'"' != "" & `"`file'"' != "," {
		local files `"`files' `"`file'"'"'
		gettoken file 0 : 0, parse(" ,")
	}
	local 0 `", `0'"'
	syntax [, Generate(name) *]
	if "`generate'" != "" {
		confirm new variable `generate'
		tempvar source
		quietly gen int `source' = 0
	}
	local number 0
	foreach file of local files {
		local before = c(N)
		_append using `"`file'"', `options'
		local ++number
		if "`generate'" != "" & c(N) > `before' {
			quietly replace `source' = `number' in `=`before' + 1'/l
		}
	}
	if "`generate'" != "" {
		quietly compress `source'
		_rename `source' `generate'
	}
end
