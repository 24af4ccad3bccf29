*! percentiles with confidence intervals
program centiles, rclass byable(recall)
	version 12.1
	syntax [varlist(numeric)] [if] [in] [, Centile(numlist >=0 <=100) Level(cilevel) Normal Meansd CCi]
	if "`centile'" == "" {
		local centile 50
	}
	marksample touse, novarlist
	display ""
	display as text _skip(46) "-- `=cond("`normal'" != "", "Normal-based", cond("`meansd'" != "", "Mean and s.d.", "Binom. Interp."))' --"
	display as text "    Variable {c |}     Obs  Percentile      Centile" %32s "[`level'% Conf. Interval]"
	display as text "{hline 13}{c +}{hline 65}"
	tempvar x
	foreach v in `varlist' {
		quietly {
			preserve
			keep if `touse' & `v' < .
			keep `v'
			sort `v'
			summarize `v'
		}
		local N = r(N)
		local mean = r(mean)
		local sd = r(sd)
		local name = abbrev("`v'", 12)
		local i 0
		foreach c in `centile' {
			local ++i
			local p = `c'/100
			At `v' `N' `=(`N' + 1)*`p''
			local value = r(value)
			local z = invnormal(.5 + `level'/200)
			if "`meansd'" != "" {
				local zp = invnormal(`p')
				local value = `mean' + `zp'*`sd'
				local se = `sd'*sqrt(1/`N' + `zp'^2/(2*(`N' - 1)))
				local lo = `value' - `z'*`se'
				local hi = `value' + `z'*`se'
			}
			else if "`normal'" != "" {
				local zp = invnormal(`p')
				local se = sqrt(`p'*(1 - `p'))/(sqrt(`N')*normalden(`zp')/`sd')
				local lo = `value' - `z'*`se'
				local hi = `value' + `z'*`se'
			}
			else {
				Limits `v' `N' `p' `level' `cci'
				local lo = r(lo)
				local hi = r(hi)
			}
			display as text %12s "`name'" " {c |}" as result %8.0f `N' %12.0g `c' "    " %9.0g `value' "        " %9.0g `lo' "    " %9.0g `hi'
			local name
			return scalar c_`i' = `value'
			return scalar lb_`i' = `lo'
			return scalar ub_`i' = `hi'
		}
		return scalar N = `N'
		return scalar n_cent = `i'
		restore
	}
	return local centiles `centile'
end

* The value at a place between two order statistics.
program At, rclass
	args v N at
	local j = max(1, min(`N', floor(`at')))
	local k = min(`N', `j' + 1)
	local f = max(0, min(1, `at' - `j'))
	return scalar value = `v'[`j'] + `f'*(`v'[`k'] - `v'[`j'])
end

* Order statistics between which the binomial puts the percentile, interpolated.
program Limits, rclass
	args v N p level cci
	local alpha = (1 - `level'/100)/2
	if `p' <= 0 | `p' >= 1 {
		return scalar lo = `v'[cond(`p' <= 0, 1, `N')]
		return scalar hi = `v'[cond(`p' <= 0, 1, `N')]
		exit
	}
	* r: the smallest with Pr(X <= r) above alpha; s: one more than the largest with Pr(X >= s)
	* above it; both are found by halving
	local r 0
	local high `N'
	while `r' < `high' {
		local middle = int((`r' + `high')/2)
		if binomial(`N', `middle', `p') > `alpha' {
			local high `middle'
		}
		else {
			local r = `middle' + 1
		}
	}
	local s 0
	local high `N'
	while `s' < `high' {
		local middle = int((`s' + `high' + 1)/2)
		if binomialtail(`N', `middle', `p') > `alpha' {
			local s `middle'
		}
		else {
			local high = `middle' - 1
		}
	}
	local ++s
	if `r' < 1 {
		local lo = `v'[1]
	}
	else if "`cci'" != "" {
		local lo = `v'[`r']
	}
	else {
		local q0 = cond(`r' > 1, binomial(`N', `r' - 1, `p'), binomial(`N', 0, `p'))
		local q1 = binomial(`N', `r', `p')
		local f = (`alpha' - `q0')/(`q1' - `q0')
		At `v' `N' `=`r' + max(0, min(1, `f'))'
		local lo = r(value)
	}
	if `s' > `N' {
		local hi = `v'[`N']
	}
	else if "`cci'" != "" {
		local hi = `v'[`s']
	}
	else {
		local q0 = binomialtail(`N', `s', `p')
		local q1 = binomialtail(`N', `s' - 1, `p')
		local f = (`alpha' - `q0')/(`q1' - `q0')
		At `v' `N' `=`s' - max(0, min(1, `f'))'
		local hi = r(value)
	}
	return scalar lo = `lo'
	return scalar hi = `hi'
end
