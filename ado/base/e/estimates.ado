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
		Dir `0'
		return add
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
		return add
	}
	else if "`what'" == substr("replay", 1, max(3, `l')) | "`what'" == "" {
		Replay `0'
	}
	else if "`what'" == substr("describe", 1, max(3, `l')) {
		Describe `0'
	}
	else if "`what'" == substr("query", 1, `l') {
		if `"`e(cmd)'"' == "" {
			display as text "(no estimates are active)"
		}
		else if "`e(_estimates_name)'" == "" {
			display as text "(the active estimates have not been stored)"
		}
		else {
			display as text "(the active estimates are stored as `e(_estimates_name)')"
		}
	}
	else if substr("`what'", 1, 5) == "title" {
		Title `what' `0'
	}
	else {
		display as error "estimates `what' not valid"
		exit 198
	}
end

program Store, eclass
	gettoken name 0 : 0, parse(" ,")
	syntax [, TITLE(string) NOCOPY]
	confirm name `name'
	if `"`e(cmd)'"' == "" {
		error 301
	}
	capture _estimates drop `name'
	ereturn hidden local _estimates_name `name'
	if `"`title'"' != "" {
		ereturn hidden local _estimates_title `"`title'"'
	}
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

* s(names): those named, with * and _all for every set there is.
program Names, sclass
	syntax [anything(name=names)]
	quietly _estimates dir
	local all `r(names)'
	foreach n in `names' {
		if inlist("`n'", "*", "_all") {
			local list : list list | all
		}
		else if "`n'" == "." {
			local list `list' .
		}
		else {
			local known : list n in all
			if !`known' {
				display as error "estimation result `n' not found"
				exit 111
			}
			local list `list' `n'
		}
	}
	sreturn local names `list'
end

program Drop
	Names `0'
	foreach n in `s(names)' {
		_estimates drop `n'
	}
end

program Replay
	gettoken names options : 0, parse(",")
	if trim(`"`names'"') == "," {
		local names
		local options `0'
	}
	Names `names'
	local names `s(names)'
	if "`names'" == "" {
		Show `options'
		exit
	}
	foreach n in `names' {
		if "`n'" == "." {
			Show `options'
		}
		else {
			ShowStored `n' `options'
		}
	}
end

program ShowStored
	gettoken n 0 : 0, parse(" ,")
	tempname hold
	_estimates hold `hold', restore nullok
	_estimates unhold `n', copy
	display ""
	display as text "{hline 79}"
	display as text "Model `n'" as result cond(`"`e(_estimates_title)'"' != "", `" (`e(_estimates_title)')"', "")
	display as text "{hline 79}"
	Show `0'
end

program Show
	if `"`e(cmd)'"' == "" {
		error 301
	}
	`e(cmd)' `0'
end

program Dir, rclass
	local names `0'
	if trim("`names'") == "" {
		local names _all
	}
	Names `names'
	local names `s(names)'
	if "`names'" == "" {
		exit
	}
	tempname hold
	_estimates hold `hold', restore nullok
	display ""
	display as text "{hline 13}{c TT}{hline 63}"
	display as text "        Name {c |} Command      Dep. variable  Coefs  Title"
	display as text "{hline 13}{c +}{hline 63}"
	foreach n in `names' {
		_estimates unhold `n', copy
		display as text %12s abbrev("`n'", 12) " {c |} " as result %-12s abbrev("`e(cmd)'", 12) ///
			" " %-14s abbrev("`e(depvar)'", 14) %6.0f colsof(e(b)) `"  `=substr(`"`e(_estimates_title)'"', 1, 27)'"'
	}
	display as text "{hline 13}{c BT}{hline 63}"
	return local names `names'
end

program Describe
	Names `0'
	local names `s(names)'
	if "`names'" == "" {
		local names .
	}
	foreach n in `names' {
		DescribeOne `n'
	}
end

program DescribeOne
	args n
	if "`n'" != "." {
		tempname hold
		_estimates hold `hold', restore nullok
		_estimates unhold `n', copy
	}
	if `"`e(cmd)'"' == "" {
		error 301
	}
	display ""
	display as text "  Estimation results " cond("`n'" == ".", "that are active", "stored as `n'")
	display ""
	if `"`e(_estimates_title)'"' != "" {
		display as text "      title:  " as result `"`e(_estimates_title)'"'
	}
	local line `"`e(cmdline)'"'
	if `"`line'"' == "" {
		local line `e(cmd)'
	}
	display as text "    made by:  " as result `"`line'"'
	if e(N) < . {
		display as text "        obs:  " as result trim(string(e(N), "%12.0fc"))
	}
end

program Title, eclass
	gettoken what 0 : 0, parse(" :")
	gettoken colon text : 0, parse(" :")
	if `"`e(cmd)'"' == "" {
		error 301
	}
	if `"`colon'"' == ":" {
		local text = trim(`"`text'"')
		ereturn hidden local _estimates_title `"`text'"'
		exit
	}
	display as text `"`e(_estimates_title)'"'
end

* The statistics of the criteria, one line a set.
program Stats, rclass
	syntax anything(name=names) [, n(real -1)]
	Names `names'
	local names `s(names)'
	local k : word count `names'
	tempname S
	matrix `S' = J(`k', 6, .)
	local row 0
	tempname hold
	_estimates hold `hold', restore nullok
	display ""
	display as text "{hline 13}{c TT}{hline 63}"
	display as text "       Model {c |}    Obs    ll(null)   ll(model)     df          AIC         BIC"
	display as text "{hline 13}{c +}{hline 63}"
	foreach m in `names' {
		_estimates unhold `m', copy
		local ++row
		local N = cond(`n' > 0, `n', e(N))
		matrix `S'[`row', 1] = (`N', e(ll_0), e(ll), e(rank), -2*e(ll)+2*e(rank), -2*e(ll)+ln(`N')*e(rank))
		display as text %12s abbrev("`m'", 12) " {c |}" as result %7.0f `N' "  " %10.0g `S'[`row',2] ///
			"  " %10.0g `S'[`row',3] %7.0f `S'[`row',4] "   " %10.0g `S'[`row',5] "  " %10.0g `S'[`row',6]
	}
	display as text "{hline 13}{c BT}{hline 63}"
	matrix rownames `S' = `names'
	matrix colnames `S' = N ll0 ll df AIC BIC
	return matrix S = `S'
end

* Coefficients of several sets side by side.
program Table, rclass
	syntax anything(name=names) [, B(string) SE T P STats(string) STAR Keep(string) Drop(string) ///
		EForm TItle(string)]
	Names `names'
	local names `s(names)'
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
	if "`keep'" != "" {
		local rows : list keep & rows
	}
	if "`drop'" != "" {
		local rows : list rows - drop
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
	if `"`title'"' != "" {
		display as text `"`title'"'
	}
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
			Cell `width' `b`i'' `V`i'' `x' b `df`i'' `b' `"`eform'"' `star'
		}
		display ""
		foreach what in se t p {
			if "``what''" != "" {
				display as text %12s "" " {c |}" _continue
				forvalues i = 1/`k' {
					Cell `width' `b`i'' `V`i'' `x' `what' `df`i'' `b' `"`eform'"'
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
	args width b V x what df fmt eform star
	local j = colnumb(`b', "`x'")
	local text
	if `j' < . {
		local z = `b'[1, `j']
		local s = sqrt(`V'[`j', `j'])
		local e = cond("`eform'" != "", exp(`z'), 1)
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
			local text = trim(string(cond("`eform'" != "", `e', `z'), "`fmt'"))
			if "`star'" != "" {
				local text `text'`=cond(`p' < .001, "***", cond(`p' < .01, "**", cond(`p' < .05, "*", "")))'
			}
		}
		else if "`what'" == "se" {
			local text = trim(string(`s'*`e', "`fmt'"))
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
