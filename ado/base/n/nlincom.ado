*! nonlinear combinations of the coefficients, by the delta method
program nlincom, rclass
	version 12.1
	if `"`e(cmd)'"' == "" {
		error 301
	}
	syntax anything(equalok name=exp) [, Level(real `c(level)')]
	tempname b V d0 G W se q
	matrix `b' = e(b)
	matrix `V' = e(V)
	_nlderiv `b' `d0' `G' 1 `"`exp'"'
	matrix `W' = `G'*`V'*`G''
	scalar `se' = sqrt(`W'[1,1])
	local t z
	scalar `q' = invnormal(.5 + `level'/200)
	local p = 2*normal(-abs(`d0'[1,1]/`se'))
	display ""
	display as text "       _nl_1:  `exp'"
	display ""
	display as text "{hline 13}{c TT}{hline 64}"
	display as text %12s abbrev("`e(depvar)'", 12) " {c |}      Coef.   Std. Err.      z    P>|z|" %25s "[`level'% Conf. Interval]"
	display as text "{hline 13}{c +}{hline 64}"
	display as text %12s "_nl_1" " {c |}" as result "  " %9.0g `d0'[1,1] "  " %9.0g `se' " " %8.2f `d0'[1,1]/`se' "   " %5.3f `p' "    " %9.0g `d0'[1,1]-`q'*`se' "   " %9.0g `d0'[1,1]+`q'*`se'
	display as text "{hline 13}{c BT}{hline 64}"
	return scalar estimate = `d0'[1,1]
	return scalar se = `se'
end
