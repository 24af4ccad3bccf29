*! total by groups; missing values count as 0
program _gtotal
	version 12.1
	syntax newvarname =/exp [if] [in] [, BY(varlist) MISSing]
	tempvar touse any
	quietly {
		mark `touse' `if' `in'
		sort `touse' `by', stable
		by `touse' `by': gen `typlist' `varlist' = sum(`exp') if `touse'
		if "`missing'" != "" {
			by `touse' `by': gen long `any' = sum((`exp') < .)
			by `touse' `by': replace `varlist' = . if `any'[_N] == 0
		}
		by `touse' `by': replace `varlist' = `varlist'[_N]
	}
end
