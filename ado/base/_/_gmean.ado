*! mean by groups
program _gmean
	version 12.1
	syntax newvarname =/exp [if] [in] [, BY(varlist)]
	tempvar touse
	quietly {
		mark `touse' `if' `in'
		sort `touse' `by', stable
		by `touse' `by': gen `typlist' `varlist' = sum(`exp') / sum((`exp') < .) if `touse'
		by `touse' `by': replace `varlist' = `varlist'[_N]
	}
end
