*! test nonlinear hypotheses about the coefficients
program testnonlin, rclass
	version 12.1
	if `"`e(cmd)'"' == "" {
		error 301
	}
	tempname b V d0 G W stat
	matrix `b' = e(b)
	matrix `V' = e(V)
	* every restriction is written as a difference that ought to be zero; a = b = c makes two
	local m 0
	local rest `"`0'"'
	gettoken first : rest, match(par)
	if "`par'" != "(" {
		local rest `"(`0')"'
	}
	display ""
	while trim(`"`rest'"') != "" {
		gettoken one rest : rest, match(par)
		if "`par'" != "(" {
			error 198
		}
		gettoken left one : one, parse("=")
		if trim(`"`one'"') == "" {
			display as error "= expected"
			exit 198
		}
		while trim(`"`one'"') != "" {
			gettoken sign one : one, parse("=")
			if substr(trim(`"`sign'"'), 1, 1) != "=" {
				display as error "= expected"
				exit 198
			}
			gettoken right one : one, parse("=")
			if trim(`"`right'"') == "" {
				error 198
			}
			local ++m
			display as text "  (`m')  `=trim("`left'")' = `=trim("`right'")'"
			local exps `"`exps' `"(`left')-(`right')"'"'
			local left `"`right'"'
		}
	}
	_nlderiv `b' `d0' `G' `m' `exps'
	matrix `W' = `G'*`V'*`G''
	matrix `W' = syminv(`W')
	matrix `stat' = `d0''*`W'*`d0'
	local df = `m' - diag0cnt(`W')
	if `df' < `m' {
		display as text "       Constraints that follow from others dropped: `=`m'-`df''"
	}
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
