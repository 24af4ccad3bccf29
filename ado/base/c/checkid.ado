*! check that variables identify the observations
program checkid, rclass sortpreserve
	version 12.1
	syntax varlist [if] [in] [, MISSok]
	tempvar touse many
	mark `touse' `if' `in'
	if "`missok'" == "" {
		foreach v of local varlist {
			quietly count if missing(`v') & `touse'
			if r(N) {
				display as error "variable `v' should never be missing; " ///
					"the option missok allows it"
				exit 459
			}
		}
	}
	quietly {
		bysort `touse' `varlist': gen byte `many' = _N > 1 & `touse'
		count if `many'
		local n = r(N)
		count if `touse'
	}
	return scalar N = r(N)
	return scalar repeated = `n'
	if `n' == 0 {
		exit
	}
	local s = cond(`: word count `varlist'' > 1, "s", "")
	local does = cond("`s'" == "", "does", "do")
	display as error "variable`s' `varlist' `does' not identify the observations uniquely"
	display as error "(`n' observations share their values; see them with: duplicates list `varlist')"
	exit 459
end
