*! standard errors by leaving out one observation, or one cluster, at a time
program jackknife, rclass
	version 12.1
	gettoken mine command : 0, parse(":") bind
	gettoken colon command : command, parse(":")
	if trim(`"`command'"') == "" {
		display as error "the form is: jackknife results: command"
		exit 198
	}
	local 0 `"`mine'"'
	syntax [anything(name=list equalok)] [, CLuster(varlist) SAVing(string) Level(cilevel) NODots]
	quietly `command'
	_resultlist `list'
	local names `s(names)'
	local k `s(k)'
	forvalues j = 1/`k' {
		local exp`j' `s(exp`j')'
		local observed`j' = `exp`j''
	}
	local file `"`saving'"'
	if `"`file'"' == "" {
		tempfile file
	}
	tempname post
	tempvar unit
	preserve
	quietly {
		if "`cluster'" == "" {
			gen long `unit' = _n
		}
		else {
			compute long `unit' = group(`cluster')
		}
		summarize `unit', meanonly
	}
	local n = r(max)
	postfile `post' double(`names') using `"`file'"', replace
	restore, preserve
	forvalues i = 1/`n' {
		quietly {
			if "`cluster'" == "" {
				drop in `i'
			}
			else {
				compute long `unit' = group(`cluster')
				drop if `unit' == `i'
				drop `unit'
			}
			capture `command'
		}
		local rc = _rc
		if `rc' == 1 {
			error 1
		}
		local values
		forvalues j = 1/`k' {
			local value .
			if `rc' == 0 {
				capture local value = `exp`j''
			}
			local values `values' (`value')
		}
		post `post' `values'
		if "`nodots'" == "" {
			_dots `i' `n' `rc'
		}
		else {
			set progress `i' `n'
		}
		restore, preserve
	}
	postclose `post'
	quietly use `"`file'"', clear
	display as text _newline "Jackknife results" _column(48) "Replications  = " as result %12.0fc `n'
	display as text _newline "   command:" as result `"`command'"'
	display as text _newline "{hline 13}{c TT}{hline 58}"
	display as text "             {c |}   Observed      Bias    Jackknife" ///
		"        [`level'% interval]"
	display as text "             {c |}                         std. err."
	display as text "{hline 13}{c +}{hline 58}"
	local j 0
	foreach name of local names {
		local ++j
		quietly summarize `name'
		local m = r(N)
		local b = `observed`j''
		local bias = (`m' - 1) * (r(mean) - `b')
		local se = sqrt((`m' - 1)^2 / `m' * r(Var))
		local t = invttail(`m' - 1, (1 - `level' / 100) / 2)
		display as text %12s abbrev("`name'", 12) " {c |}" as result "  " %9.0g `b' "  " %9.0g `bias' ///
			"   " %9.0g `se' "   " %9.0g `b' - `t' * `se' "  " %9.0g `b' + `t' * `se'
		foreach what in b se bias {
			return scalar `what'_`name' = ``what''
		}
	}
	display as text "{hline 13}{c BT}{hline 58}"
	return scalar reps = `n'
	return scalar level = `level'
end
