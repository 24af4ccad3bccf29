*! test nonlinear hypotheses about the coefficients
program testnonlin, rclass
	version 12.1
	if `"`e(cmd)'"' == "" {
		error 301
	}
	tempname b V R d0 d1 G W stat h
	matrix `b' = e(b)
	matrix `V' = e(V)
	* every restriction is written as a difference that ought to be zero
	local m 0
	local rest `"`0'"'
	gettoken first : rest, match(par)
	if "`par'" == "(" {
		while `"`rest'"' != "" {
			gettoken one rest : rest, match(par)
			local ++m
			local eq`m' `"`one'"'
		}
	}
	else {
		local m 1
		local eq1 `"`rest'"'
	}
	display ""
	forvalues i = 1/`m' {
		gettoken left right : eq`i', parse("=")
		gettoken sign right : right, parse("=")
		if "`sign'" != "=" {
			display as error "= expected"
			exit 198
		}
		display as text "  (`i')  `left' =`right'"
		local exp`i' (`left')-(`right')
	}
	_nlderiv `b' `d0' `G' `m' `"`exp1'"' `"`exp2'"' `"`exp3'"' `"`exp4'"' `"`exp5'"'
	matrix `W' = `G'*`V'*`G''
	matrix `W' = syminv(`W')
	matrix `stat' = `d0''*`W'*`d0'
	local df = `m' - diag0cnt(`W')
	display ""
	if e(df_r) < . {
		return scalar F = `stat'[1,1]/`df'
		return scalar df_r = e(df_r)
		return scalar p = Ftail(`df', e(df_r), `stat'[1,1]/`df')
		display as text %18s "F(`df', `e(df_r)')" " =" as result %8.2f return(F)
		display as text %18s "Prob > F" " =" as result %8.4f return(p)
	}
	else {
		return scalar chi2 = `stat'[1,1]
		return scalar p = chi2tail(`df', `stat'[1,1])
		display as text %18s "chi2(`df')" " =" as result %8.2f return(chi2)
		display as text %18s "Prob > chi2" " =" as result %8.4f return(p)
	}
	return scalar df = `df'
end
