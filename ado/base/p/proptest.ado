*! tests of proportions: one sample, two samples
program proptest, rclass
	version 12.1
	syntax anything(equalok id="variable") [if] [in] [, BY(varname) Level(cilevel)]
	gettoken a rest : anything, parse("= ")
	gettoken equal rest : rest, parse("= ")
	local rest = trim(subinstr("`rest'", "=", "", .))
	_unab a : `a'
	tempvar touse
	mark `touse' `if' `in'
	if "`by'" != "" {
		markout `touse' `by', strok
		_twogroups `by' `touse'
		forvalues i = 1/2 {
			local name`i' `"`s(name`i')'"'
			Proportion `a' "`touse' & `s(is`i')'" `i'
		}
	}
	else {
		if "`rest'" == "" {
			display as error "give a value, a second variable, or by(): proptest x == .5"
			exit 198
		}
		local name1 `a'
		Proportion `a' `touse' 1
		capture confirm number `rest'
		if _rc {
			_unab b : `rest'
			local name2 `b'
			Proportion `b' `touse' 2
		}
		else if `rest' <= 0 | `rest' >= 1 {
			display as error "a proportion to test against lies between 0 and 1"
			exit 198
		}
	}
	local two = "`name2'" != ""
	display as text _newline cond(`two', "Two-sample", "One-sample") " test of proportions" _newline
	display as text "{hline 13}{c TT}{hline 54}"
	display as text "             {c |}     Obs  Proportion   Std. Err.     [`level'% interval]"
	display as text "{hline 13}{c +}{hline 54}"
	local z = invnormal(1 - (1 - `level' / 100) / 2)
	forvalues i = 1/`=1 + `two'' {
		local se`i' = sqrt(`p`i'' * (1 - `p`i'') / `n`i'')
		Row `"`name`i''"' `n`i'' `p`i'' `se`i'' `z'
		return scalar P_`i' = `p`i''
		return scalar N_`i' = `n`i''
	}
	local null = cond(`two', "0", "`rest'")
	if `two' {
		display as text "{hline 13}{c +}{hline 54}"
		local diff = `p1' - `p2'
		Row diff `=`n1' + `n2'' `diff' `=sqrt(`se1'^2 + `se2'^2)' `z'
		local pool = (`p1' * `n1' + `p2' * `n2') / (`n1' + `n2')
		local zstat = `diff' / sqrt(`pool' * (1 - `pool') * (1 / `n1' + 1 / `n2'))
	}
	else {
		local zstat = (`p1' - `rest') / sqrt(`rest' * (1 - `rest') / `n1')
	}
	display as text "{hline 13}{c BT}{hline 54}"
	display as text "Null hypothesis: " cond(`two', "diff", "p") " = `null'" _column(45) "z = " as result %8.4f `zstat'
	display as text "P(Z < z) = " as result %6.4f normal(`zstat') as text "    P(|Z| > |z|) = " ///
		as result %6.4f 2 * normal(-abs(`zstat')) as text "    P(Z > z) = " as result %6.4f normal(-`zstat')
	return scalar z = `zstat'
	return scalar p = 2 * normal(-abs(`zstat'))
end

program Proportion
	args v condition i
	quietly count if !inlist(`v', 0, 1) & !missing(`v') & `condition'
	if r(N) {
		display as error "`v' must hold 0 and 1"
		exit 450
	}
	quietly summarize `v' if `condition', meanonly
	if r(N) == 0 {
		error 2000
	}
	c_local n`i' = r(N)
	c_local p`i' = r(mean)
end

program Row
	args name n p se z
	display as text %12s abbrev(`"`name'"', 12) " {c |}" as result %8.0fc `n' "   " %9.0g `p' "   " ///
		%9.0g `se' "   " %9.0g `p' - `z' * `se' "  " %9.0g `p' + `z' * `se'
end
