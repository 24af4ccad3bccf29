*! percentile by groups
program _gpctile
	version 12.1
	syntax newvarname =/exp [if] [in] [, BY(varlist) P(real 50)]
	if `p' <= 0 | `p' >= 100 {
		display as error "p() must lie between 0 and 100"
		exit 198
	}
	tempvar touse x n at
	quietly {
		mark `touse' `if' `in'
		gen double `x' = `exp' if `touse'
		sort `touse' `by' `x'
		by `touse' `by': gen long `n' = sum(!missing(`x'))
		by `touse' `by': gen double `at' = `n'[_N] * `p' / 100
		by `touse' `by': gen `typlist' `varlist' = cond(`at' == int(`at'), ///
			(`x'[`at'] + `x'[`at' + 1]) / 2, `x'[int(`at') + 1]) if `n'[_N] & `touse'
	}
end
