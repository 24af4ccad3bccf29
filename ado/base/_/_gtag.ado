*! mark one observation of each group
program _gtag
	version 12.1
	gettoken type 0 : 0
	gettoken name 0 : 0
	gettoken equal 0 : 0, parse(" =")
	gettoken vars 0 : 0, match(par)
	local 0 `vars' `0'
	syntax varlist [if] [in] [, BY(varlist) MISSing]
	tempvar touse
	quietly {
		mark `touse' `if' `in'
		if "`missing'" == "" {
			markout `touse' `varlist', strok
		}
		sort `touse' `by' `varlist', stable
		by `touse' `by' `varlist': gen `type' `name' = _n == 1 & `touse'
	}
end
