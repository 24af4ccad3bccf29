*! rank correlations
program rankcorr, rclass
	version 12.1
	syntax varlist(numeric min=2) [if] [in] [, Kendall PW]
	tempvar touse
	mark `touse' `if' `in'
	if "`pw'" == "" {
		markout `touse' `varlist'
	}
	local kind = cond("`kendall'" == "", "Spearman", "Kendall")
	display as text _newline cond("`kendall'" == "", "Rank correlations (rho)", "Rank correlations (tau-a, tau-b)") _newline
	display as text "                              {c |}      Obs  " ///
		cond("`kendall'" == "", "       rho            P", "     tau-a        tau-b            P")
	display as text "{hline 30}{c +}{hline `=cond("`kendall'" == "", 33, 46)'}"
	local k : list sizeof varlist
	forvalues i = 2/`k' {
		forvalues j = 1/`=`i' - 1' {
			local a : word `i' of `varlist'
			local b : word `j' of `varlist'
			tempvar both
			quietly gen byte `both' = `touse' & !missing(`a') & !missing(`b')
			`kind' `a' `b' `both'
			display as text %29s "`=abbrev("`a'", 12)' with `=abbrev("`b'", 12)'" " {c |}" as result ///
				%9.0fc r(N) "  " _continue
			if "`kendall'" == "" {
				display as result %10.4f r(rho) %13.4f r(p)
			}
			else {
				display as result %10.4f r(tau_a) %13.4f r(tau_b) %13.4f r(p)
			}
			drop `both'
		}
	}
	return add
end

* The correlation of the ranks
program Spearman, rclass
	args a b both
	tempvar ra rb product
	quietly {
		compute double `ra' = rank(`a') if `both'
		compute double `rb' = rank(`b') if `both'
		summarize `ra' if `both'
		local ma = r(mean)
		local va = r(Var)
		local n = r(N)
		summarize `rb' if `both'
		gen double `product' = (`ra' - `ma') * (`rb' - r(mean)) if `both'
		local vb = r(Var)
		summarize `product', meanonly
	}
	local rho = r(sum) / (`n' - 1) / sqrt(`va' * `vb')
	local p = cond(missing(`rho'), ., 0)
	if abs(`rho') < 1 {
		local p = 2 * ttail(`n' - 2, abs(`rho') * sqrt((`n' - 2) / (1 - (`rho')^2)))
	}
	return scalar N = `n'
	return scalar rho = `rho'
	return scalar p = `p'
end

* Every pair is looked at, one observation against all that follow; the score is that of the
* pairs in the same order less those in opposite order.
program Kendall, rclass
	args a b both
	preserve
	quietly {
		keep if `both'
		local n = _N
		tempvar s ta tb
		gen double `s' = 0
		forvalues i = 1/`=`n' - 1' {
			replace `s' = `s' + sign(`a' - `a'[`i']) * sign(`b' - `b'[`i']) in `=`i' + 1'/l
		}
		summarize `s', meanonly
		local score = r(sum)
		Ties `a'
		local ta1 = r(t1)
		local ta2 = r(t2)
		local ta3 = r(t3)
		Ties `b'
	}
	local pairs = `n' * (`n' - 1) / 2
	local v0 = `n' * (`n' - 1) * (2 * `n' + 5)
	local variance = (`v0' - `ta3' - r(t3)) / 18 + `ta2' * r(t2) / (9 * `n' * (`n' - 1) * (`n' - 2)) ///
		+ `ta1' * r(t1) / (2 * `n' * (`n' - 1))
	return scalar tau_b = `score' / sqrt((`pairs' - `ta1' / 2) * (`pairs' - r(t1) / 2))
	return scalar tau_a = `score' / `pairs'
	return scalar score = `score'
	return scalar se_score = sqrt(`variance')
	local z = cond(`score' == 0, 0, (abs(`score') - 1) / sqrt(`variance'))
	return scalar p = min(1, 2 * normal(-`z'))
	return scalar N = `n'
end

* Sums of t(t-1), t(t-1)(t-2) and t(t-1)(2t+5) over the groups of t equal values
program Ties, rclass
	args x
	tempvar t first
	sort `x'
	by `x': gen double `t' = _N
	by `x': gen byte `first' = _n == 1
	local i 0
	foreach term in 1 (`t'-2) (2*`t'+5) {
		tempvar v
		gen double `v' = `t' * (`t' - 1) * `term' if `first'
		summarize `v', meanonly
		return scalar t`++i' = r(sum)
		drop `v'
	}
end
