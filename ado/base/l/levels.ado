*! list the distinct values of a variable and keep them for later use
program levels, rclass sortpreserve
	version 12.1
	syntax varname [if] [in] [, LOCal(name local) CLEAN MISSing SEParate(string)]
	tempvar touse first
	mark `touse' `if' `in'
	if "`missing'" == "" {
		markout `touse' `varlist', strok
	}
	if `"`separate'"' == "" {
		local separate " "
	}
	local isstr = substr("`: type `varlist''", 1, 3) == "str"
	quietly {
		bysort `touse' `varlist': gen byte `first' = _n == 1 & `touse'
		count if `first'
		local n = r(N)
		replace `first' = -`first'
		sort `first' `varlist'
	}
	forvalues i = 1/`n' {
		local value = `varlist'[`i']
		if `isstr' & "`clean'" == "" {
			local value `"`"`value'"'"'
		}
		if `i' == 1 {
			local list `"`value'"'
		}
		else {
			local list `"`list'`separate'`value'"'
		}
	}
	if `n' {
		display as text `"`list'"'
	}
	if "`local'" != "" {
		c_local `local' `"`list'"'
	}
	return local levels `"`list'"'
	return scalar r = `n'
end
