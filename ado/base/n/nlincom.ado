*! nonlinear combinations of the coefficients, by the delta method
program nlincom, rclass
	version 12.1
	if `"`e(cmd)'"' == "" {
		error 301
	}
	syntax anything(equalok name=exps) [, Level(cilevel) POST NOHEADer]
	tempname b V d0 G W se q
	matrix `b' = e(b)
	matrix `V' = e(V)
	* several in parentheses, or one expression, which may begin with one
	local m 0
	local rest `"`exps'"'
	local parted 1
	while trim(`"`rest'"') != "" {
		gettoken one rest : rest, match(par)
		if "`par'" != "(" {
			local parted 0
		}
		local ++m
		local exp`m' `"`one'"'
	}
	if !`parted' {
		local m 1
		local exp1 `"`exps'"'
	}
	forvalues i = 1/`m' {
		local name _nl_`i'
		gettoken first after : exp`i', parse(":")
		gettoken colon after : after, parse(":")
		local first = trim(`"`first'"')
		if "`colon'" == ":" & strpos(`"`first'"', "[") == 0 {
			confirm name `first'
			local name `first'
			local exp`i' `"`after'"'
		}
		local exp`i' = trim(`"`exp`i''"')
		local names `names' `name'
		local list `"`list' `"`exp`i''"'"'
	}
	_nlderiv `b' `d0' `G' `m' `list'
	matrix `W' = `G'*`V'*`G''
	matrix `d0' = `d0''
	matrix `W' = (`W'+`W'')/2
	foreach side in rownames colnames {
		matrix `side' `W' = `names'
	}
	matrix rownames `d0' = y1
	matrix colnames `d0' = `names'
	scalar `q' = invnormal(.5 + `level'/200)
	if "`noheader'" == "" {
		display ""
		forvalues i = 1/`m' {
			local x : word `i' of `names'
			display as text %12s abbrev("`x'", 12) `":  `exp`i''"'
		}
	}
	display ""
	display as text "{hline 13}{c TT}{hline 64}"
	display as text %12s abbrev("`e(depvar)'", 12) " {c |}      Coef.   Std. Err.      z    P>|z|" %25s "[`level'% Conf. Interval]"
	display as text "{hline 13}{c +}{hline 64}"
	forvalues i = 1/`m' {
		local x : word `i' of `names'
		scalar `se' = sqrt(`W'[`i',`i'])
		local z = `d0'[1,`i']
		display as text %12s abbrev("`x'", 12) " {c |}" as result "  " %9.0g `z' "  " %9.0g `se' " " ///
			%8.2f `z'/`se' "   " %5.3f 2*normal(-abs(`z'/`se')) ///
			"    " %9.0g `z'-`q'*`se' "   " %9.0g `z'+`q'*`se'
	}
	display as text "{hline 13}{c BT}{hline 64}"
	if `m' == 1 {
		return scalar estimate = `d0'[1,1]
		return scalar se = `se'
	}
	tempname rb rV
	matrix `rb' = `d0'
	matrix `rV' = `W'
	return matrix b = `rb'
	return matrix V = `rV'
	if "`post'" != "" {
		Post `d0' `W'
	}
end

program Post, eclass
	args b V
	local N = e(N)
	ereturn post `b' `V', obs(`N')
	ereturn local cmd nlincom
end
