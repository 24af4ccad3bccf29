*! rank tests of two or more groups
program ranktest, rclass
	version 12.1
	syntax varname(numeric) [if] [in] , BY(varname)
	tempvar touse rank ties
	mark `touse' `if' `in'
	markout `touse' `varlist'
	markout `touse' `by', strok
	quietly {
		count if `touse'
		if r(N) < 2 {
			error 2001
		}
		local n = r(N)
		compute double `rank' = rank(`varlist') if `touse'
		* the variance of the ranks shrinks where values are tied
		summarize `rank' if `touse'
		local s2 = r(Var)
		levels `by' if `touse'
		local groups = r(r)
	}
	if `groups' == 2 {
		Two `varlist' `by' `touse' `rank' `n' `s2'
	}
	else {
		Many `varlist' `by' `touse' `rank' `n' `s2' `groups'
	}
	return add
	return scalar N = `n'
end

program Two, rclass
	args x by touse rank n s2
	_twogroups `by' `touse'
	display as text _newline "Rank-sum test of two samples" _newline
	display as text %12s abbrev("`by'", 12) " {c |}      Obs     Rank sum     Expected"
	display as text "{hline 13}{c +}{hline 36}"
	forvalues i = 1/2 {
		quietly summarize `rank' if `touse' & `s(is`i')', meanonly
		local n`i' = r(N)
		local sum`i' = r(sum)
		display as text %12s abbrev(`"`s(name`i')'"', 12) " {c |}" as result %9.0fc `n`i'' %13.0g `sum`i'' ///
			%13.0g `n`i'' * (`n' + 1) / 2
	}
	local expected = `n1' * (`n' + 1) / 2
	local variance = `n1' * `n2' / `n' * `s2'
	local z = (`sum1' - `expected') / sqrt(`variance')
	local area = (`sum1' - `n1' * (`n1' + 1) / 2) / (`n1' * `n2')
	display as text _newline "variance, for ties adjusted" _column(31) as result %10.0g `variance'
	display as text "z" _column(31) as result %10.4f `z'
	display as text "P(|Z| > |z|)" _column(31) as result %10.4f 2 * normal(-abs(`z'))
	display as text "P(first > second)" _column(31) as result %10.4f `area'
	return scalar N_1 = `n1'
	return scalar N_2 = `n2'
	return scalar sum_1 = `sum1'
	return scalar sum_2 = `sum2'
	return scalar Var_a = `variance'
	return scalar z = `z'
	return scalar p = 2 * normal(-abs(`z'))
	return scalar porder = `area'
end

program Many, rclass
	args x by touse rank n s2 groups
	if `groups' < 2 {
		display as error "`by' must have at least 2 distinct values"
		exit 420
	}
	display as text _newline "Rank test of `groups' groups" _newline
	preserve
	quietly {
		keep if `touse'
		keep `by' `rank'
		sort `by'
		tempvar sum count first
		by `by': gen double `sum' = sum(`rank')
		by `by': gen long `count' = _N
		by `by': gen byte `first' = _n == _N
		keep if `first'
	}
	display as text %12s abbrev("`by'", 12) " {c |}      Obs     Rank sum"
	display as text "{hline 13}{c +}{hline 23}"
	local between 0
	local labels : value label `by'
	forvalues i = 1/`groups' {
		local name = `by'[`i']
		if "`labels'" != "" {
			local name : label `labels' `name'
		}
		display as text %12s abbrev(`"`name'"', 12) " {c |}" as result %9.0fc `count'[`i'] %13.0g `sum'[`i']
		local between = `between' + `sum'[`i']^2 / `count'[`i']
	}
	local chi2 = 12 / (`n' * (`n' + 1)) * `between' - 3 * (`n' + 1)
	* with ties, the statistic is divided by the share of the variance that they leave
	local adjusted = `chi2' * (`n' * (`n' + 1) / 12) / `s2'
	local df = `groups' - 1
	display as text _newline "chi-squared(" as result `df' as text ")" _column(31) as result %10.4f `chi2' ///
		as text "   P = " as result %6.4f chi2tail(`df', `chi2')
	display as text "with ties" _column(31) as result %10.4f `adjusted' ///
		as text "   P = " as result %6.4f chi2tail(`df', `adjusted')
	return scalar chi2 = `chi2'
	return scalar chi2_adj = `adjusted'
	return scalar df = `df'
	return scalar p = chi2tail(`df', `adjusted')
end
