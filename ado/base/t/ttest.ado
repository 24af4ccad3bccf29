*! tests of means: one sample, two samples, pairs
program ttest, rclass
	version 12.1
	syntax anything(equalok id="variable") [if] [in] [, BY(varname) UNEqual Welch UNPaired Level(cilevel)]
	gettoken a rest : anything, parse("= ")
	gettoken equal rest : rest, parse("= ")
	local rest = trim(subinstr("`rest'", "=", "", .))
	confirm numeric variable `a'
	_unab a : `a'
	tempvar touse
	mark `touse' `if' `in'
	if "`by'" != "" {
		if "`equal'" != "" {
			display as error "by() goes with a single variable"
			exit 198
		}
		markout `touse' `a'
		markout `touse' `by', strok
		_twogroups `by' `touse'
		forvalues i = 1/2 {
			quietly summarize `a' if `touse' & `s(is`i')'
			Take `i'
			local name`i' `"`s(name`i')'"'
		}
		display as text _newline "Two-sample t test with " ///
			cond("`unequal'`welch'" == "", "equal", "unequal") " variances" _newline
		Two `n1' `mean1' `sd1' `n2' `mean2' `sd2' "`unequal'" "`welch'" `level' `"`name1'"' `"`name2'"'
		return add
		exit
	}
	if "`equal'" == "" {
		display as error "give a value, a second variable, or by(): ttest x == 5"
		exit 198
	}
	capture confirm number `rest'
	if _rc == 0 {
		markout `touse' `a'
		quietly summarize `a' if `touse'
		Take 1
		display as text _newline "One-sample t test" _newline
		_ttable head `level'
		local se = `sd1' / sqrt(`n1')
		_ttable row `a' `n1' `mean1' `sd1' `se' `=`n1' - 1' `level'
		_ttable end
		Verdict "mean(`a')" `=`mean1' - `rest'' `se' `=`n1' - 1' "`rest'"
		return add
		return scalar N_1 = `n1'
		return scalar mu_1 = `mean1'
		return scalar sd_1 = `sd1'
		exit
	}
	confirm numeric variable `rest'
	_unab b : `rest'
	if "`unpaired'" != "" {
		local i 0
		foreach v in `a' `b' {
			local ++i
			quietly summarize `v' if `touse'
			Take `i'
		}
		display as text _newline "Two-sample t test with " ///
			cond("`unequal'`welch'" == "", "equal", "unequal") " variances" _newline
		Two `n1' `mean1' `sd1' `n2' `mean2' `sd2' "`unequal'" "`welch'" `level' `a' `b'
		return add
		exit
	}
	markout `touse' `a' `b'
	tempvar d
	quietly gen double `d' = `a' - `b' if `touse'
	display as text _newline "Paired t test" _newline
	_ttable head `level'
	local i 0
	foreach v in `a' `b' `d' {
		local ++i
		quietly summarize `v' if `touse'
		Take `i'
		if `i' == 3 {
			_ttable line
			local v diff
		}
		_ttable row `v' `n`i'' `mean`i'' `sd`i'' `=`sd`i'' / sqrt(`n`i'')' `=`n`i'' - 1' `level'
		if `i' < 3 {
			return scalar mu_`i' = `mean`i''
			return scalar sd_`i' = `sd`i''
			return scalar N_`i' = `n`i''
		}
	}
	_ttable end
	Verdict "mean(diff)" `mean3' `=`sd3' / sqrt(`n3')' `=`n3' - 1' 0
	return add
end

* What summarize left, for sample i, into locals of the caller
program Take
	args i
	if r(N) < 2 {
		error 2001
	}
	c_local n`i' = r(N)
	c_local mean`i' = r(mean)
	c_local sd`i' = r(sd)
end

program Two, rclass
	args n1 mean1 sd1 n2 mean2 sd2 unequal welch level name1 name2
	local v1 = `sd1'^2 / `n1'
	local v2 = `sd2'^2 / `n2'
	local df = `n1' + `n2' - 2
	local se = sqrt(((`n1' - 1) * `sd1'^2 + (`n2' - 1) * `sd2'^2) / `df' * (1 / `n1' + 1 / `n2'))
	if "`unequal'`welch'" != "" {
		local se = sqrt(`v1' + `v2')
		if "`welch'" == "" {
			local df = (`v1' + `v2')^2 / (`v1'^2 / (`n1' - 1) + `v2'^2 / (`n2' - 1))
		}
		else {
			local df = -2 + (`v1' + `v2')^2 / (`v1'^2 / (`n1' + 1) + `v2'^2 / (`n2' + 1))
		}
	}
	_ttable head `level' Group
	forvalues i = 1/2 {
		_ttable row `"`name`i''"' `n`i'' `mean`i'' `sd`i'' `=`sd`i'' / sqrt(`n`i'')' `=`n`i'' - 1' `level'
		return scalar mu_`i' = `mean`i''
		return scalar sd_`i' = `sd`i''
		return scalar N_`i' = `n`i''
	}
	_ttable line
	_ttable row diff `=`n1' + `n2'' `=`mean1' - `mean2'' . `se' `df' `level'
	_ttable end
	display as text "    diff = mean(`name1') - mean(`name2')"
	Verdict diff `=`mean1' - `mean2'' `se' `df' 0
	return add
end

program Verdict, rclass
	args what diff se df null
	local t = `diff' / `se'
	display as text _column(52) "t = " as result %10.4f `t'
	display as text "Null hypothesis: `what' = `null'" _column(35) "degrees of freedom = " as result %10.0g `df'
	display as text _newline "   H: `what' < `null'" _column(31) "H: `what' != `null'" _column(58) "H: `what' > `null'"
	display as text "   P(T < t) = " as result %6.4f 1 - ttail(`df', `t') _column(31) as text ///
		"P(|T| > |t|) = " as result %6.4f 2 * ttail(`df', abs(`t')) _column(58) as text ///
		"P(T > t) = " as result %6.4f ttail(`df', `t')
	return scalar t = `t'
	return scalar df_t = `df'
	return scalar se = `se'
	return scalar p = 2 * ttail(`df', abs(`t'))
	return scalar p_l = 1 - ttail(`df', `t')
	return scalar p_u = ttail(`df', `t')
end
