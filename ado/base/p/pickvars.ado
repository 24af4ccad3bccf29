*! list the variables that have a property
program pickvars, rclass
	version 12.1
	syntax [varlist] [, HAS(string) NOT(string) Local(name local)]
	foreach v of local varlist {
		local keep 1
		if "`has'" != "" {
			Holds `v' "`has'"
			local keep = r(holds)
		}
		if `keep' & "`not'" != "" {
			Holds `v' "`not'"
			local keep = !r(holds)
		}
		if `keep' {
			local list `list' `v'
		}
	}
	if "`list'" != "" {
		display as result "{p 0 2 2}`list'{p_end}"
	}
	if "`local'" != "" {
		c_local `local' `list'
	}
	return local varlist `list'
	return scalar k = `: word count `list''
end

* Whether the variable has the property: "type numeric", "format %t*", "varlabel", ...
program Holds, rclass
	args v property
	gettoken kind rest : property
	local rest = trim("`rest'")
	local type : type `v'
	if "`kind'" == "type" {
		local yes 0
		foreach t of local rest {
			local one = "`type'" == "`t'"
			if "`t'" == "numeric" {
				local one = substr("`type'", 1, 3) != "str"
			}
			else if "`t'" == "string" | "`t'" == "str" {
				local one = substr("`type'", 1, 3) == "str"
			}
			local yes = `yes' | `one'
		}
	}
	else if inlist("`kind'", "format", "varlabel", "vallabel") {
		if "`kind'" == "format" {
			local text : format `v'
		}
		else if "`kind'" == "varlabel" {
			local text : variable label `v'
		}
		else {
			local text : value label `v'
		}
		local yes = `"`text'"' != ""
		if "`rest'" != "" {
			local yes 0
			foreach pattern of local rest {
				local yes = `yes' | strmatch(`"`text'"', "`pattern'")
			}
		}
	}
	else if "`kind'" == "char" {
		local names : char `v'[]
		local yes = "`names'" != ""
		if "`rest'" != "" {
			local yes = `: list posof "`rest'" in names' > 0
		}
	}
	else if "`kind'" == "missing" | "`kind'" == "constant" {
		quietly count if missing(`v')
		local yes = r(N) > 0
		if "`kind'" == "constant" {
			quietly count if `v' != `v'[1]
			local yes = r(N) == 0
		}
	}
	else {
		display as error `"property `kind' unknown; use type, format, varlabel, vallabel, char, missing or constant"'
		exit 198
	}
	return scalar holds = `yes'
end
