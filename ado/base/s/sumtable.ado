*! table of summary statistics, by one factor or two
program sumtable, rclass
	version 12.1
	syntax varlist(numeric) [if] [in] [fweight aweight/] ///
		[, BY(varlist max=2) Stats(string) Format(string) NOTotal MISSing]
	if "`stats'" == "" {
		local stats n mean sd min max
	}
	Known `stats'
	if "`format'" == "" {
		local format %10.0g
	}
	else {
		confirm numeric format `format'
	}
	tempvar touse
	if "`weight'" != "" {
		tempvar w
		quietly gen double `w' = `exp'
		local weights [`weight'=`w']
	}
	mark `touse' `if' `in' `weights'
	if "`missing'" == "" & "`by'" != "" {
		markout `touse' `by', strok
	}
	quietly count if `touse'
	if r(N) == 0 {
		error 2000
	}
	return scalar N = r(N)
	return local stats `stats'
	preserve
	quietly keep if `touse'
	quietly keep `varlist' `by' `w'
	gettoken rows columns : by
	if "`columns'" == "" {
		Oneway "`varlist'" "`stats'" "`rows'" `format' "`nototal'" "`weights'"
	}
	else {
		Twoway "`varlist'" "`stats'" `rows' `columns' `format' "`nototal'" "`weights'"
	}
end

program Known
	foreach s of local 0 {
		if !inlist("`s'", "n", "count", "mean", "sd", "var", "variance", "min", "max") & ///
			!inlist("`s'", "total", "sum", "semean", "median", "iqr") & ///
			!regexm("`s'", "^p[1-9][0-9]?$") {
			display as error "unknown statistic `s': use n, mean, sd, var, min, max, total, " ///
				"semean, median, iqr or p1 to p99"
			exit 198
		}
	}
end

* The statistics of a variable in a range of observations: r(c1), r(c2), ...
program Cells, rclass
	args v stats range weights
	quietly summarize `v' `range' `weights'
	foreach s in N mean sd Var min max sum {
		tempname `s'
		scalar ``s'' = r(`s')
	}
	local j 0
	foreach s of local stats {
		local ++j
		if inlist("`s'", "n", "count") {
			return scalar c`j' = `N'
		}
		else if inlist("`s'", "mean", "sd", "min", "max") {
			return scalar c`j' = ``s''
		}
		else if inlist("`s'", "var", "variance") {
			return scalar c`j' = `Var'
		}
		else if inlist("`s'", "total", "sum") {
			return scalar c`j' = cond(`N' == 0, 0, `sum')
		}
		else if "`s'" == "semean" {
			return scalar c`j' = `sd' / sqrt(`N')
		}
		else if `N' == 0 {
			return scalar c`j' = .
		}
		else if "`s'" == "iqr" {
			_pctile `v' `range' `weights', percentiles(25 75)
			return scalar c`j' = r(r2) - r(r1)
		}
		else {
			local p = cond("`s'" == "median", "50", substr("`s'", 2, 2))
			_pctile `v' `range' `weights', percentiles(`p')
			return scalar c`j' = r(r1)
		}
	}
end

* The text that heads a row or column
program Levelname, sclass
	args v row
	local value = `v'[`row']
	local labels : value label `v'
	if "`labels'" != "" {
		local value : label `labels' `value'
	}
	sreturn local name `"`value'"'
end

program Oneway
	args vars stats by format nototal weights
	local k : list sizeof stats
	* a panel holds as many statistics as the line has room for
	local room = max(1, int((c(linesize) - 16) / 12))
	if "`by'" == "" {
		display ""
		forvalues from = 1(`room')`k' {
			Head "variable" "`stats'" `from' `room'
			foreach v of local vars {
				Cells `v' "`stats'" "" "`weights'"
				Texts `k' `format'
				Row "`v'" `from' `room' `"`s(texts)'"'
			}
		}
		exit
	}
	tempvar size
	sort `by'
	quietly by `by': gen long `size' = _N
	foreach v of local vars {
		local label : variable label `v'
		display as text _newline "`v'" cond(`"`label'"' == "", "", `"  `label'"')
		forvalues from = 1(`room')`k' {
			Head "`by'" "`stats'" `from' `room'
			local at 1
			while `at' <= _N {
				local last = `at' + `size'[`at'] - 1
				Cells `v' "`stats'" "in `at'/`last'" "`weights'"
				Texts `k' `format'
				local texts `s(texts)'
				Levelname `by' `at'
				Row `"`s(name)'"' `from' `room' `"`texts'"'
				local at = `last' + 1
			}
			if "`nototal'" == "" {
				local wide = 12 * min(`room', `k' - `from' + 1)
				display as text "{hline 13}{c +}{hline `wide'}"
				Cells `v' "`stats'" "" "`weights'"
				Texts `k' `format'
				Row "Total" `from' `room' `"`s(texts)'"'
			}
		}
	}
end

* r(c1) and so on as they are shown
program Texts, sclass
	args k format
	forvalues j = 1/`k' {
		local texts `texts' `=trim(string(r(c`j'), "`format'"))'
	}
	sreturn local texts `texts'
end

program Head
	args corner heads from room
	local to = min(`: list sizeof heads', `from' + `room' - 1)
	display as text %12s abbrev("`corner'", 12) " {c |}" _continue
	forvalues j = `from'/`to' {
		display as text %12s "`: word `j' of `heads''" _continue
	}
	display _newline as text "{hline 13}{c +}{hline `=12 * (`to' - `from' + 1)'}"
end

program Row
	args name from room texts
	local to = min(`: list sizeof texts', `from' + `room' - 1)
	display as text %12s abbrev(`"`name'"', 12) " {c |}" _continue
	forvalues j = `from'/`to' {
		display as result %12s "`: word `j' of `texts''" _continue
	}
	display ""
end

* One table for each variable and statistic. Sorted by columns the data give the columns'
* names and totals, sorted by rows and columns the cells and the rows' totals.
program Twoway
	args vars stats rows columns format nototal weights
	tempvar column inrow incell
	sort `columns'
	quietly by `columns': gen long `column' = _n == 1
	quietly by `columns': gen long `incell' = _N
	quietly replace `column' = sum(`column')
	local at 1
	local ncols 0
	while `at' <= _N {
		Levelname `columns' `at'
		local column`++ncols' `"`s(name)'"'
		local last = `at' + `incell'[`at'] - 1
		local range`ncols' in `at'/`last'
		local at = `last' + 1
	}
	foreach v of local vars {
		forvalues j = 1/`ncols' {
			Cells `v' "`stats'" "`range`j''" "`weights'"
			local i 0
			foreach s of local stats {
				local ++i
				local foot_`v'_`i' `foot_`v'_`i'' `=trim(string(r(c`i'), "`format'"))'
			}
		}
		Cells `v' "`stats'" "" "`weights'"
		local i 0
		foreach s of local stats {
			local ++i
			local foot_`v'_`i' `foot_`v'_`i'' `=trim(string(r(c`i'), "`format'"))'
		}
	}
	sort `rows' `column'
	quietly by `rows': gen long `inrow' = _N
	quietly by `rows' `column': replace `incell' = _N
	if "`nototal'" == "" {
		local column`=`ncols' + 1' Total
	}
	local room = max(1, int((c(linesize) - 16) / 12))
	local all = `ncols' + ("`nototal'" == "")
	foreach v of local vars {
		local i 0
		foreach s of local stats {
			local ++i
			display as text _newline "`s' of `v' by `rows' and `columns'"
			forvalues from = 1(`room')`all' {
				local to = min(`all', `from' + `room' - 1)
				display as text _newline %12s "" " {c |}  " abbrev("`columns'", 12)
				display as text %12s abbrev("`rows'", 12) " {c |}" _continue
				forvalues j = `from'/`to' {
					display as text %12s abbrev(`"`column`j''"', 11) _continue
				}
				display _newline as text "{hline 13}{c +}{hline `=12 * (`to' - `from' + 1)'}"
				Body `v' `s' `rows' `column' `inrow' `incell' `ncols' `from' `to' `format' "`weights'"
				if "`nototal'" == "" {
					display as text "{hline 13}{c +}{hline `=12 * (`to' - `from' + 1)'}"
					Row "Total" `from' `room' `"`foot_`v'_`i''"'
				}
			}
		}
	}
end

* The rows of columns from to to; the one behind the last column is the row's total.
program Body
	args v stat rows column inrow incell ncols from to format weights
	local at 1
	while `at' <= _N {
		Levelname `rows' `at'
		display as text %12s abbrev(`"`s(name)'"', 12) " {c |}" _continue
		local begin `at'
		local last = `at' + `inrow'[`at'] - 1
		forvalues j = 1/`to' {
			* a combination that is not in the data leaves its cell empty
			local range
			if `j' > `ncols' {
				local range in `begin'/`last'
			}
			else if `at' <= `last' {
				if `column'[`at'] == `j' {
					local next = `at' + `incell'[`at']
					local range in `at'/`=`next' - 1'
					local at `next'
				}
			}
			if `j' >= `from' {
				local text
				if "`range'" != "" {
					Cells `v' `stat' "`range'" "`weights'"
					local text = trim(string(r(c1), "`format'"))
				}
				display as result %12s "`text'" _continue
			}
		}
		display ""
		local at = `last' + 1
	}
end
