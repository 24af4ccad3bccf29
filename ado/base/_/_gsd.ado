*! standard deviation by groups
program _gsd
	version 12.1
	syntax newvarname =/exp [if] [in] [, BY(varlist)]
	tempvar touse x mean n
	quietly {
		mark `touse' `if' `in'
		gen double `x' = `exp' if `touse'
		sort `touse' `by'
		by `touse' `by': gen long `n' = sum(!missing(`x'))
		by `touse' `by': gen double `mean' = sum(`x')
		by `touse' `by': replace `mean' = `mean'[_N] / `n'[_N]
		by `touse' `by': gen `typlist' `varlist' = sum((`x' - `mean')^2)
		by `touse' `by': replace `varlist' = ///
			cond(`touse' & `n'[_N] > 1, sqrt(`varlist'[_N] / (`n'[_N] - 1)), .)
	}
end
