*! signed-rank and sign tests of pairs, or of one variable against a value
program signedrank, rclass
	version 12.1
	syntax anything(equalok id="variable") [if] [in]
	gettoken a rest : anything, parse("= ")
	local rest = trim(subinstr("`rest'", "=", "", .))
	if "`rest'" == "" {
		display as error "the form is: signedrank x == y, or x == 0"
		exit 198
	}
	confirm numeric variable `a'
	tempvar touse d rank square
	mark `touse' `if' `in'
	quietly {
		gen double `d' = `a' - (`rest') if `touse'
		markout `touse' `d'
		count if `touse'
		local n = r(N)
		if `n' == 0 {
			error 2000
		}
		compute double `rank' = rank(abs(`d')) if `touse'
		replace `rank' = `rank' * sign(`d') if `touse'
		gen double `square' = `rank'^2 if `touse'
		summarize `square', meanonly
		local sumsquares = r(sum)
		drop `square'
	}
	display as text _newline "Signed-rank test" _newline
	display as text "        sign {c |}      Obs    Rank sum    Expected"
	display as text "{hline 13}{c +}{hline 33}"
	foreach sign in positive negative zero {
		local which = cond("`sign'" == "positive", "> 0", cond("`sign'" == "negative", "< 0", "== 0"))
		quietly count if `d' `which' & `touse'
		local n_`sign' = r(N)
	}
	quietly summarize `rank' if `d' > 0 & `touse', meanonly
	local plus = r(sum) + 0
	quietly summarize `rank' if `d' < 0 & `touse', meanonly
	local minus = -r(sum) + 0
	local zeros = `n_zero' * (`n_zero' + 1) / 2
	local expected = (`n' * (`n' + 1) / 2 - `zeros') / 2
	display as text "    positive {c |}" as result %9.0fc `n_positive' %12.0g `plus' %12.0g `expected'
	display as text "    negative {c |}" as result %9.0fc `n_negative' %12.0g `minus' %12.0g `expected'
	display as text "        zero {c |}" as result %9.0fc `n_zero' %12.0g `zeros' %12.0g `zeros'
	local variance = `sumsquares' / 4
	local z = (`plus' - `expected') / sqrt(`variance')
	display as text _newline "variance, for ties and zeros adjusted" _column(41) as result %10.0g `variance'
	display as text "z" _column(41) as result %10.4f `z'
	display as text "P(|Z| > |z|)" _column(41) as result %10.4f 2 * normal(-abs(`z'))
	local m = `n_positive' + `n_negative'
	local sign = min(1, 2 * binomial(`m', min(`n_positive', `n_negative'), .5))
	display as text "sign test, P two-sided" _column(41) as result %10.4f `sign'
	foreach sum in plus minus z {
		return scalar `sum' = ``sum''
	}
	return scalar N = `n'
	return scalar N_pos = `n_positive'
	return scalar N_neg = `n_negative'
	return scalar N_0 = `n_zero'
	return scalar Var_a = `variance'
	return scalar p = 2 * normal(-abs(`z'))
	return scalar p_sign = `sign'
end
