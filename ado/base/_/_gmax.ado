*! largest value by groups
program _gmax
	version 12.1
	syntax newvarname =/exp [if] [in] [, BY(varlist)]
	tempvar touse x
	quietly {
		mark `touse' `if' `in'
		gen double `x' = `exp' if `touse'
		sort `touse' `by', stable
		by `touse' `by': gen `typlist' `varlist' = `x'
		by `touse' `by': replace `varlist' = max(`varlist', `varlist'[_n-1])
		by `touse' `by': replace `varlist' = cond(`touse', `varlist'[_N], .)
	}
end
