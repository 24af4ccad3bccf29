*! intervals of a variable
program _gcut
	version 12.1
	syntax newvarname =/exp [if] [in] [, BY(varlist) AT(numlist ascending min=2) ///
		Group(integer 0) Icodes Label]
	if "`by'" != "" | ("`at'" == "") == (`group' == 0) {
		display as error "cut() takes either at() or group(), and no by"
		exit 198
	}
	tempvar touse x
	quietly {
		mark `touse' `if' `in'
		gen double `x' = `exp' if `touse'
		replace `touse' = 0 if missing(`x')
		if `group' {
			Equal `typlist' `varlist' `x' `touse' `group'
			exit
		}
		gen `typlist' `varlist' = . if `touse'
	}
	local k : list sizeof at
	local code 0
	forvalues i = 1/`k' {
		local from : word `i' of `at'
		local value = cond(`i' == `k', ".", cond("`icodes'`label'" == "", "`from'", "`code'"))
		quietly replace `varlist' = `value' if `x' >= `from' & `touse'
		if "`label'" != "" & `i' < `k' {
			_label define `varlist' `code' "`from'-", modify
		}
		local ++code
	}
	if "`label'" != "" {
		_label values `varlist' `varlist'
	}
end

* k groups of nearly equal size, numbered from 0; equal values stay together.
program Equal
	args type name x touse k
	quantiles `name' = `x' if `touse', groups(`k')
	replace `name' = `name' - 1
	recast `type' `name'
end
