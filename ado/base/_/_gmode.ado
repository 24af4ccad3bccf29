*! most frequent value, by groups
program _gmode
	version 12.1
	syntax newvarname =/exp [if] [in] [, BY(varlist) MINmode MAXmode]
	tempvar touse x n
	quietly {
		mark `touse' `if' `in'
		gen double `x' = `exp' if `touse'
		sort `touse' `by' `x'
		by `touse' `by' `x': gen long `n' = cond(missing(`x'), 0, _N)
		if "`minmode'" != "" {
			replace `x' = -`x'
		}
		sort `touse' `by' `n' `x'
		by `touse' `by': gen `typlist' `varlist' = `x'[_N] if `touse'
		if "`minmode'" != "" {
			replace `varlist' = -`varlist'
		}
		if "`minmode'`maxmode'" == "" {
			* two values are equally frequent when the one before the last is
			by `touse' `by': replace `varlist' = . if `n'[_N - `n'[_N]] == `n'[_N]
		}
	}
end
