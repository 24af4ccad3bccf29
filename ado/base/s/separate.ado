*! make one variable of each group of observations
program separate, rclass
	version 12.1
	syntax varname [if] [in] , BY(string asis) [Generate(name) SEQuential MISSing]
	tempvar touse group
	mark `touse' `if' `in'
	if "`generate'" == "" {
		local generate `varlist'
	}
	* by() is a variable or a condition
	capture confirm variable `by', exact
	if _rc == 0 {
		local by : word 1 of `by'
		local group `by'
	}
	else {
		quietly gen byte `group' = `by'
	}
	quietly levels `group' if `touse', `missing'
	local levels `"`r(levels)'"'
	if `"`levels'"' == "" {
		error 2000
	}
	local text = substr("`: type `group''", 1, 3) == "str"
	local type : type `varlist'
	local blank = cond(substr("`type'", 1, 3) == "str", `""""', ".")
	* all names are tried before a variable is made
	local i 0
	foreach level of local levels {
		local ++i
		local suffix `level'
		if "`sequential'" != "" | `text' {
			local suffix `i'
		}
		confirm new variable `generate'`suffix'
		local news `news' `generate'`suffix'
	}
	local i 0
	foreach level of local levels {
		local ++i
		local new : word `i' of `news'
		local value `level'
		if `text' {
			local value `""`level'""'
		}
		local condition `group' == `value'
		if "`: type `group''" == "float" & !missing(`value') {
			local condition `group' == float(`value')
		}
		quietly gen `type' `new' = cond(`condition' & `touse', `varlist', `blank')
		format `new' `: format `varlist''
		_label values `new' `: value label `varlist''
		_label variable `new' `"`varlist', `by' == `level'"'
	}
	display as text "variables made: " as result "`news'"
	return local varlist `news'
end
