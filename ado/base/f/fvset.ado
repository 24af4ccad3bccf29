*! keep the base level of factor variables with the data
program fvset, rclass
	version 12.1
	gettoken what rest : 0, parse(" ,")
	local n = length("`what'")
	if `n' > 0 & "`what'" == substr("clear", 1, `n') & "`what'" != "c" {
		syntax anything [, *]
		local 0 `"`rest'"'
		syntax varlist
		foreach v of local varlist {
			char `v'[_fv_base]
			char `v'[_fv_design]
		}
		exit
	}
	if `n' > 2 & "`what'" == substr("report", 1, `n') {
		local 0 `"`rest'"'
		syntax [varlist]
		_fvset_report `varlist'
		return local varlist `r(varlist)'
		return local baselist `r(baselist)'
		exit
	}
	if `n' > 0 & "`what'" == substr("base", 1, `n') {
		gettoken level rest : rest
		local 0 `"`rest'"'
		syntax varlist(numeric)
		if "`level'" == "default" {
			local level
		}
		else if !inlist("`level'", "first", "last", "freq", "frequent", "none") {
			local number = subinstr("`level'", "#", "", 1)
			capture confirm integer number `number'
			if _rc | "`number'" == "" {
				display as error "invalid base level: `level'"
				exit 198
			}
			if `number' < ("`number'" != "`level'") {
				display as error "invalid base level: `level'"
				exit 198
			}
		}
		if "`level'" == "frequent" {
			local level freq
		}
		foreach v of local varlist {
			char `v'[_fv_base] `level'
		}
		exit
	}
	if `n' > 0 & "`what'" == substr("design", 1, `n') {
		gettoken level rest : rest
		local 0 `"`rest'"'
		syntax varlist(numeric)
		if !inlist("`level'", "asbalanced", "asobserved", "default") {
			display as error "invalid design: `level'"
			exit 198
		}
		if "`level'" == "default" {
			local level
		}
		foreach v of local varlist {
			char `v'[_fv_design] `level'
		}
		exit
	}
	display as error "fvset base, design, clear or report expected"
	exit 198
end

program _fvset_report, rclass
	local header 1
	foreach v of local 0 {
		local base : char `v'[_fv_base]
		local design : char `v'[_fv_design]
		if "`base'`design'" == "" {
			continue
		}
		if `header' {
			display as text %12s "Variable" "   Base        Design"
			local header 0
		}
		display as text %12s abbrev("`v'", 12) "   " as result %-12s "`base'" "`design'"
		local list `list' `v'
		local bases `bases' `base'
	}
	return local varlist `list'
	return local baselist `bases'
end
