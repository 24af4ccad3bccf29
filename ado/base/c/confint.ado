*! confidence intervals of means, proportions and rates
program confint, rclass
	version 12.1
	syntax varlist(numeric) [if] [in] [fweight aweight/] [, Binomial Poisson Exposure(varname numeric) ///
		Wilson Agresti Level(cilevel)]
	local kind = cond("`binomial'`wilson'`agresti'" != "", "Binomial", ///
		cond("`poisson'`exposure'" != "", "Poisson", "Mean"))
	if "`weight'" == "aweight" & "`kind'" != "Mean" {
		display as error "aweights not allowed with binomial or poisson"
		exit 101
	}
	if "`weight'" != "" {
		tempvar w
		quietly gen double `w' = `exp'
		local weights [`weight'=`w']
	}
	display as text _newline "    Variable {c |}     Obs        Mean   Std. Err.     [`level'% interval]"
	display as text "{hline 13}{c +}{hline 54}"
	foreach v of local varlist {
		tempvar touse
		mark `touse' `if' `in' `weights'
		markout `touse' `v' `exposure'
		`kind' `v' `touse' `level' "`weights'" "`wilson'`agresti'" `exposure'
		display as text %12s abbrev("`v'", 12) " {c |}" as result %8.0fc r(N) "   " %9.0g r(mean) "   " ///
			%9.0g r(se) "   " %9.0g r(lb) "  " %9.0g r(ub)
		return clear
		return add
		drop `touse'
	}
	return scalar level = `level'
end

program Mean, rclass
	args v touse level weights
	quietly summarize `v' if `touse' `weights'
	if r(N) == 0 {
		error 2000
	}
	local se = r(sd) / sqrt(r(N))
	local t = invttail(r(N) - 1, (1 - `level' / 100) / 2)
	return scalar N = r(N)
	return scalar mean = r(mean)
	return scalar se = `se'
	return scalar lb = r(mean) - `t' * `se'
	return scalar ub = r(mean) + `t' * `se'
end

* Exact (Clopper and Pearson 1934), score (Wilson 1927), or adjusted (Agresti and Coull 1998)
program Binomial, rclass
	args v touse level weights method
	quietly count if !inlist(`v', 0, 1) & `touse'
	if r(N) {
		display as error "`v' must hold 0 and 1"
		exit 450
	}
	quietly summarize `v' if `touse' `weights', meanonly
	local n = r(N)
	if `n' == 0 {
		error 2000
	}
	local k = r(sum)
	local p = `k' / `n'
	local alpha = (1 - `level' / 100) / 2
	local z = invnormal(1 - `alpha')
	if "`method'" == "" {
		local lb = cond(`k' == 0, 0, invibeta(max(`k', 1), `n' - `k' + 1, `alpha'))
		local ub = cond(`k' == `n', 1, 1 - invibeta(max(`n' - `k', 1), `k' + 1, `alpha'))
	}
	else if "`method'" == "wilson" {
		local centre = (`p' + `z'^2 / (2 * `n')) / (1 + `z'^2 / `n')
		local half = `z' * sqrt(`p' * (1 - `p') / `n' + `z'^2 / (4 * `n'^2)) / (1 + `z'^2 / `n')
		local lb = `centre' - `half'
		local ub = `centre' + `half'
	}
	else {
		local nn = `n' + `z'^2
		local pp = (`k' + `z'^2 / 2) / `nn'
		local lb = max(0, `pp' - `z' * sqrt(`pp' * (1 - `pp') / `nn'))
		local ub = min(1, `pp' + `z' * sqrt(`pp' * (1 - `pp') / `nn'))
	}
	return scalar N = `n'
	return scalar mean = `p'
	return scalar se = sqrt(`p' * (1 - `p') / `n')
	return scalar lb = `lb'
	return scalar ub = `ub'
end

* Exact, through the chi-squared distribution (Garwood 1936)
program Poisson, rclass
	args v touse level weights method exposure
	quietly count if (`v' < 0 | `v' != int(`v')) & `touse'
	if r(N) {
		display as error "`v' must hold counts: whole numbers that are not negative"
		exit 459
	}
	quietly summarize `v' if `touse' `weights', meanonly
	local n = r(N)
	local k = r(sum)
	if `n' == 0 {
		error 2000
	}
	if "`exposure'" != "" {
		quietly summarize `exposure' if `touse' `weights', meanonly
		local n = r(sum)
	}
	local alpha = (1 - `level' / 100) / 2
	return scalar N = `n'
	return scalar mean = `k' / `n'
	return scalar se = sqrt(`k') / `n'
	return scalar lb = cond(`k' == 0, 0, invchi2(max(2 * `k', 1), `alpha') / 2) / `n'
	return scalar ub = invchi2tail(2 * (`k' + 1), `alpha') / 2 / `n'
end
