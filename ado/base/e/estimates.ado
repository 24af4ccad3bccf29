*! estimates kept under names, brought back and set side by side
program estimates, rclass
	version 12.1
	gettoken what 0 : 0, parse(" ,")
	local l = length("`what'")
	if "`what'" == substr("store", 1, max(3, `l')) {
		Store `0'
	}
	else if "`what'" == substr("restore", 1, max(3, `l')) {
		Restore `0'
	}
	else if "`what'" == "drop" {
		Drop `0'
	}
	else if "`what'" == substr("dir", 1, max(3, `l')) {
		_estimates dir
	}
	else if "`what'" == "clear" {
		_estimates clear
	}
	else if "`what'" == substr("table", 1, max(3, `l')) {
		Table `0'
		return add
	}
	else if "`what'" == substr("stats", 1, max(4, `l')) {
		Stats `0'
	}
	else if "`what'" == substr("replay", 1, max(3, `l')) | "`what'" == "" {
		if `"`e(cmd)'"' == "" {
			error 301
		}
		`e(cmd)'
	}
	else {
		display as error "estimates `what' not valid"
		exit 198
	}
end

program Store
	gettoken name 0 : 0, parse(" ,")
	syntax [, NOCOPY]
	confirm name `name'
	if `"`e(cmd)'"' == "" {
		error 301
	}
	capture _estimates drop `name'
	_estimates hold `name', permanent
	if "`nocopy'" == "" {
		_estimates unhold `name', copy
	}
end

program Restore
	syntax anything(name=name)
	_estimates unhold `name', copy
	display as text "(results `name' are active now)"
end

program Drop
	syntax anything(name=names)
	foreach n in `names' {
		_estimates drop `n'
	}
end

* The statistics of the criteria, one line a set.
program Stats
	syntax anything(name=names)
	tempname hold
	_estimates hold `hold', restore nullok
	display ""
	display as text "{hline 13}{c TT}{hline 63}"
	display as text "       Model {c |}    Obs    ll(null)   ll(model)     df          AIC         BIC"
	display as text "{hline 13}{c +}{hline 63}"
	foreach n in `names' {
		_estimates unhold `n', copy
		display as text %12s abbrev("`n'", 12) " {c |}" as result %7.0f e(N) "  " %10.0g e(ll_0) "  " %10.0g e(ll) %7.0f e(rank) "   " %10.0g -2*e(ll)+2*e(rank) "  " %10.0g -2*e(ll)+ln(e(N))*e(rank)
	}
	display as text "{hline 13}{c BT}{hline 63}"
end

* Coefficients of several sets side by side.
program Table, rclass
	syntax anything(name=names) [, B(string) SE SEfmt(string) T P STats(string) STAR]
	if `"`b'"' == "" {
		local b %9.0g
	}
	local width = cond("`star'" != "", 15, 12)
	tempname hold coef table
	local n : word count `names'
	_estimates hold `hold', restore nullok
	local k 0
	foreach m in `names' {
		local ++k
		_estimates unhold `m', copy
		tempname b`k' V`k'
		matrix `b`k'' = e(b)
		matrix `V`k'' = e(V)
		local df`k' = e(df_r)
		foreach s in `stats' {
			local `s'_`k' = e(`s')
			if inlist("`s'", "aic", "bic") {
				local `s'_`k' = -2*e(ll) + cond("`s'" == "aic", 2, ln(e(N)))*e(rank)
			}
		}
		local own : colfullnames `b`k''
		local rows : list rows | own
	}
	* the constant stands last
	local cons _cons
	local has : list cons in rows
	if `has' {
		local rows : list rows - cons
		local rows `rows' _cons
	}
	local line = `n'*`width' + 1
	display ""
	display as text "{hline 13}{c TT}{hline `line'}"
	display as text "    Variable {c |}" _continue
	foreach m in `names' {
		display as text %`width's abbrev("`m'", 10) _continue
	}
	display ""
	display as text "{hline 13}{c +}{hline `line'}"
	foreach x in `rows' {
		display as text %12s abbrev("`x'", 12) " {c |}" _continue
		forvalues i = 1/`k' {
			Cell `width' `b`i'' `V`i'' `x' b `df`i'' `b' `star'
		}
		display ""
		foreach what in se t p {
			if "``what''" != "" {
				display as text %12s "" " {c |}" _continue
				forvalues i = 1/`k' {
					Cell `width' `b`i'' `V`i'' `x' `what' `df`i'' `b'
				}
				display ""
			}
		}
	}
	if "`stats'" != "" {
		display as text "{hline 13}{c +}{hline `line'}"
		foreach s in `stats' {
			display as text %12s "`s'" " {c |}" _continue
			forvalues i = 1/`k' {
				display as result %`width's string(``s'_`i'', "%9.0g") _continue
			}
			display ""
		}
	}
	display as text "{hline 13}{c BT}{hline `line'}"
	if "`star'" != "" {
		display as text %`=`line'+14's "legend: * p<.05; ** p<.01; *** p<.001"
	}
	return local names `names'
end

program Cell
	args width b V x what df fmt star
	local j = colnumb(`b', "`x'")
	local text
	if `j' < . {
		local z = `b'[1, `j']
		local s = sqrt(`V'[`j', `j'])
		if `df' < . {
			local p = 2*ttail(`df', abs(`z'/`s'))
		}
		else {
			local p = 2*normal(-abs(`z'/`s'))
		}
		if `z' == 0 & `s' == 0 {
			local text (omitted)
		}
		else if "`what'" == "b" {
			local text = trim(string(`z', "`fmt'"))
			if "`star'" != "" {
				local text `text'`=cond(`p' < .001, "***", cond(`p' < .01, "**", cond(`p' < .05, "*", "")))'
			}
		}
		else if "`what'" == "se" {
			local text = trim(string(`s', "`fmt'"))
		}
		else if "`what'" == "t" {
			local text = string(`z'/`s', "%6.2f")
		}
		else {
			local text = string(`p', "%6.4f")
		}
	}
	display as result %`width's "`text'" _continue
end
