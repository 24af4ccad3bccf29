*! tests of variances: one sample, two samples, several groups
program vartest, rclass
	version 12.1
	syntax anything(equalok id="variable") [if] [in] [, BY(varname) ROBust]
	gettoken a rest : anything, parse("= ")
	gettoken equal rest : rest, parse("= ")
	local rest = trim(subinstr("`rest'", "=", "", .))
	confirm numeric variable `a'
	_unab a : `a'
	tempvar touse
	mark `touse' `if' `in'
	markout `touse' `a'
	if "`robust'" != "" {
		if "`by'" == "" {
			display as error "the option robust goes with by()"
			exit 198
		}
		markout `touse' `by', strok
		Spread `a' `by' `touse'
		return add
		exit
	}
	if "`by'" != "" {
		markout `touse' `by', strok
		_twogroups `by' `touse'
		forvalues i = 1/2 {
			quietly summarize `a' if `touse' & `s(is`i')'
			local n`i' = r(N)
			local sd`i' = r(sd)
			local name`i' `"`s(name`i')'"'
		}
		if min(`n1', `n2') < 2 {
			error 2001
		}
	}
	else {
		if "`rest'" == "" {
			display as error "give a standard deviation, a second variable, or by(): vartest x == 5"
			exit 198
		}
		quietly summarize `a' if `touse'
		local n1 = r(N)
		local sd1 = r(sd)
		local name1 `a'
		if `n1' < 2 {
			error 2001
		}
		capture confirm number `rest'
		if _rc == 0 {
			local chi2 = (`n1' - 1) * `sd1'^2 / `rest'^2
			local df = `n1' - 1
			display as text _newline "Test of a standard deviation" _newline
			Line `a' `n1' `sd1'
			display as text "Null hypothesis: sd = `rest'" _column(45) "chi2(" as result `df' as text ") = " ///
				as result %9.4f `chi2'
			local low = chi2(`df', `chi2')
			Probabilities C `low' `=chi2tail(`df', `chi2')'
			return add
			return scalar chi2 = `chi2'
			return scalar df = `df'
			return scalar sd_1 = `sd1'
			exit
		}
		_unab b : `rest'
		tempvar touse2
		mark `touse2' `if' `in'
		quietly summarize `b' if `touse2'
		local n2 = r(N)
		local sd2 = r(sd)
		local name2 `b'
	}
	local F = `sd1'^2 / `sd2'^2
	display as text _newline "Test of two standard deviations" _newline
	forvalues i = 1/2 {
		Line `"`name`i''"' `n`i'' `sd`i''
		return scalar sd_`i' = `sd`i''
		return scalar N_`i' = `n`i''
	}
	display as text "Null hypothesis: ratio of sd = 1" _column(41) "F(" as result `n1' - 1 as text "," ///
		as result `n2' - 1 as text ") = " as result %9.4f `F'
	Probabilities F `=F(`n1' - 1, `n2' - 1, `F')' `=Ftail(`n1' - 1, `n2' - 1, `F')'
	return add
	return scalar F = `F'
	return scalar df_1 = `n1' - 1
	return scalar df_2 = `n2' - 1
end

program Line
	args name n sd
	display as text %12s abbrev(`"`name'"', 12) "   observations " as result %9.0fc `n' as text ///
		"   std. dev. " as result %10.0g `sd'
end

program Probabilities, rclass
	args letter low high
	local two = min(1, 2 * min(`low', `high'))
	display as text "P(`letter' < c) = " as result %6.4f `low' as text "    2 * smaller = " as result ///
		%6.4f `two' as text "    P(`letter' > c) = " as result %6.4f `high'
	return scalar p = `two'
	return scalar p_l = `low'
	return scalar p_u = `high'
end

* Analysis of variance of the absolute deviations from the group's mean and from its median
program Spread, rclass
	args x by touse
	tempvar centre d mean
	display as text _newline "Tests of equal variances" _newline
	foreach kind in mean median {
		quietly {
			capture drop `centre' `d' `mean'
			compute double `centre' = `kind'(`x') if `touse', by(`by')
			gen double `d' = abs(`x' - `centre') if `touse'
			compute double `mean' = mean(`d') if `touse', by(`by')
			summarize `d' if `touse'
			local n = r(N)
			local total = r(Var) * (`n' - 1)
			replace `d' = (`d' - `mean')^2
			summarize `d' if `touse', meanonly
			local within = r(sum)
			levels `by' if `touse'
			local df1 = r(r) - 1
		}
		local df2 = `n' - `df1' - 1
		local F = (`total' - `within') / `df1' / (`within' / `df2')
		display as text "deviations from the " %-7s "`kind'" "  F(" as result `df1' as text "," as result ///
			`df2' as text ") = " as result %9.4f `F' as text "   P > F = " as result %6.4f Ftail(`df1', `df2', `F')
		return scalar F_`kind' = `F'
		return scalar p_`kind' = Ftail(`df1', `df2', `F')
	}
	return scalar df_1 = `df1'
	return scalar df_2 = `df2'
end
