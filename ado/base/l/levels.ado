*! list the distinct values of a variable and keep them for later use
program levels, rclass
	version 12.1
	syntax varname [if] [in] [, LOCal(name local) CLEAN MISSing SEParate(string)]
	tempvar touse
	mark `touse' `if' `in'
	if "`missing'" == "" {
		markout `touse' `varlist', strok
	}
	if `"`separate'"' == "" {
		local separate " "
	}
	local isstr = substr("`: type `varlist''", 1, 3) == "str"
	* the sort moves the one variable alone, and the order of the data is not touched
	preserve
	quietly {
		keep if `touse'
		keep `varlist'
		sort `varlist'
		keep if _n == 1 | `varlist' != `varlist'[_n - 1]
	}
	local n = _N
	forvalues i = 1/`n' {
		local value = `varlist'[`i']
		if `isstr' & "`clean'" == "" {
			local value `"`"`value'"'"'
		}
		if `i' == 1 {
			local list `"`value'"'
		}
		else {
			if `: length local list' > c(macrolen) - 600 {
				display as error "`varlist' has too many levels for one list; see tally"
				exit 134
			}
			local list `"`list'`separate'`value'"'
		}
	}
	restore
	if `n' {
		display as text `"`list'"'
	}
	if "`local'" != "" {
		c_local `local' `"`list'"'
	}
	return local levels `"`list'"'
	return scalar r = `n'
end
