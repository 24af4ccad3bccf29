*! standard errors and intervals by sampling from the data
program bootstrap, rclass
	version 12.1
	gettoken mine command : 0, parse(":") bind
	gettoken colon command : command, parse(":")
	if trim(`"`command'"') == "" {
		display as error "the form is: bootstrap results, reps(#): command"
		exit 198
	}
	local 0 `"`mine'"'
	syntax [anything(name=list equalok)] [, Reps(integer 50) SEED(string) STRata(varlist) ///
		CLuster(varlist) SAVing(string) Level(cilevel) NODots]
	if "`seed'" != "" {
		set seed `seed'
	}
	if "`strata'" != "" {
		local strata strata(`strata')
	}
	if "`cluster'" != "" {
		local cluster cluster(`cluster')
	}
	quietly `command'
	_resultlist `list'
	local names `s(names)'
	local k `s(k)'
	forvalues j = 1/`k' {
		local exp`j' `s(exp`j')'
		local observed`j' = `exp`j''
	}
	local n = c(N)
	local file `"`saving'"'
	if `"`file'"' == "" {
		tempfile file
	}
	tempname post
	postfile `post' double(`names') using `"`file'"', replace
	preserve
	forvalues i = 1/`reps' {
		quietly resample, `strata' `cluster'
		capture quietly `command'
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
			_dots `i' `reps' `rc'
		}
		else {
			set progress `i' `reps'
		}
		restore, preserve
	}
	postclose `post'
	quietly use `"`file'"', clear
	display as text _newline "Bootstrap results" _column(48) "Observations  = " as result %12.0fc `n'
	display as text _column(48) "Replications  = " as result %12.0fc `reps'
	display as text _newline "   command:" as result `"`command'"'
	display as text _newline "{hline 13}{c TT}{hline 65}"
	display as text "             {c |}   Observed      Bias    Bootstrap       " ///
		"[`level'% interval]"
	display as text "             {c |}                         std. err.    (N) normal, (P) percentile"
	display as text "{hline 13}{c +}{hline 65}"
	local z = invnormal(1 - (1 - `level' / 100) / 2)
	local j 0
	foreach name of local names {
		local ++j
		quietly summarize `name'
		local b = `observed`j''
		local se = r(sd)
		local bias = r(mean) - `b'
		Percentile `name' `=(100 - `level') / 2'
		local low = r(value)
		Percentile `name' `=100 - (100 - `level') / 2'
		local high = r(value)
		display as text %12s abbrev("`name'", 12) " {c |}" as result "  " %9.0g `b' "  " %9.0g `bias' ///
			"   " %9.0g `se' "   " %11.0g `b' - `z' * `se' " " %11.0g `b' + `z' * `se' as text " (N)"
		display as text _column(14) "{c |}" _column(52) as result %11.0g `low' " " %11.0g `high' ///
			as text " (P)"
		foreach what in b se bias {
			return scalar `what'_`name' = ``what''
		}
		return scalar low_`name' = `low'
		return scalar high_`name' = `high'
	}
	display as text "{hline 13}{c BT}{hline 65}"
	return scalar reps = `reps'
	return scalar N = `n'
	return scalar level = `level'
end

program Percentile, rclass
	args name p
	sort `name'
	quietly count if !missing(`name')
	local at = r(N) * `p' / 100
	if `at' == int(`at') & `at' >= 1 {
		return scalar value = (`name'[`at'] + `name'[`at' + 1]) / 2
		exit
	}
	return scalar value = `name'[int(`at') + 1]
end
