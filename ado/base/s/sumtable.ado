*! table of summary statistics, by one factor or two
program sumtable
	version 12.1
	syntax varlist(numeric) [if] [in] [, BY(varlist max=2) Stats(string) Format(string) NOTotal MISSing]
	if "`stats'" == "" {
		local stats n mean sd min max
	}
	if "`format'" == "" {
		local format %10.0g
	}
	else {
		confirm numeric format `format'
	}
	foreach s of local stats {
		local s = cond("`s'" == "n", "count", cond("`s'" == "var", "variance", "`s'"))
		local list `list' `s'
	}
	tempvar touse
	mark `touse' `if' `in'
	if "`missing'" == "" & "`by'" != "" {
		markout `touse' `by', strok
	}
	quietly count if `touse'
	if r(N) == 0 {
		error 2000
	}
	preserve
	quietly keep if `touse'
	gettoken rows columns : by
	if "`columns'" == "" {
		Oneway "`varlist'" "`list'" "`stats'" "`rows'" `format' "`nototal'"
	}
	else {
		foreach v of local varlist {
			local heads `stats'
			foreach s of local list {
				gettoken head heads : heads
				Twoway `v' `s' `head' `rows' `columns' `format' "`nototal'"
			}
		}
	}
end

* All statistics of all variables, one row for each group: v1_s1, v1_s2, ...
program Cells
	args vars stats by
	local i 0
	foreach v of local vars {
		local ++i
		local j 0
		foreach s of local stats {
			local list `list' (`s') c`i'_`++j'=`v'
		}
	}
	if "`by'" != "" {
		local by by(`by')
	}
	quietly aggregate `list', `by' fast
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
	args vars stats heads by format nototal
	tempfile data
	quietly save `data'
	local i 0
	foreach v of local vars {
		local ++i
		local label`i' : variable label `v'
	}
	local n : list sizeof vars
	local k : list sizeof stats
	* a panel holds as many statistics as the line has room for
	local room = max(1, int((c(linesize) - 16) / 12))
	if "`by'" == "" {
		Cells "`vars'" "`stats'"
		display ""
		forvalues from = 1(`room')`k' {
			Head "variable" "`heads'" `from' `room'
			local i 0
			foreach v of local vars {
				Row "`v'" 1 `++i' `from' `=min(`k', `from' + `room' - 1)' `format'
			}
		}
		exit
	}
	Cells "`vars'" "`stats'" "`by'"
	local levels = _N
	tempfile groups total
	quietly {
		save `groups'
		use `data', clear
		Cells "`vars'" "`stats'"
		save `total'
		use `groups', clear
		_append using `total'
	}
	local i 0
	foreach v of local vars {
		local ++i
		display as text _newline "`v'" cond(`"`label`i''"' == "", "", `"  `label`i''"')
		forvalues from = 1(`room')`k' {
			local to = min(`k', `from' + `room' - 1)
			Head "`by'" "`heads'" `from' `room'
			forvalues row = 1/`levels' {
				Levelname `by' `row'
				Row `"`s(name)'"' `row' `i' `from' `to' `format'
			}
			if "`nototal'" == "" {
				display as text "{hline 13}{c +}{hline `=12 * (`to' - `from' + 1)'}"
				Row "Total" `=`levels' + 1' `i' `from' `to' `format'
			}
		}
	}
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
	args name row i from to format
	display as text %12s abbrev(`"`name'"', 12) " {c |}" _continue
	forvalues j = `from'/`to' {
		local text = trim(string(c`i'_`j'[`row'], "`format'"))
		display as result %12s "`text'" _continue
	}
	display ""
end

program Twoway
	args v stat head rows columns format nototal
	tempfile data cells r c t
	quietly {
		save `data'
		Cells `v' `stat' "`rows' `columns'"
		save `cells'
		use `data', clear
		Cells `v' `stat' `columns'
		save `c'
		use `data', clear
		Cells `v' `stat' `rows'
		save `r'
		use `data', clear
		Cells `v' `stat'
		save `t'
		use `c', clear
	}
	local ncols = _N
	display as text _newline "`head' of `v' by `rows' and `columns'" _newline
	local width = 12 * (`ncols' + ("`nototal'" == ""))
	display as text %12s "" " {c |}  " abbrev("`columns'", 12)
	display as text %12s abbrev("`rows'", 12) " {c |}" _continue
	forvalues j = 1/`ncols' {
		Levelname `columns' `j'
		display as text %12s abbrev(`"`s(name)'"', 11) _continue
		local foot `foot' `=c1_1[`j']'
		local value`j' = `columns'[`j']
	}
	display as text cond("`nototal'" == "", "       Total", "")
	display as text "{hline 13}{c +}{hline `width'}"
	quietly use `r', clear
	local nrows = _N
	forvalues i = 1/`nrows' {
		Levelname `rows' `i'
		local row`i' `"`s(name)'"'
		local total`i' = c1_1[`i']
		local key`i' = `rows'[`i']
	}
	quietly use `cells', clear
	local at 1
	forvalues i = 1/`nrows' {
		display as text %12s abbrev(`"`row`i''"', 12) " {c |}" _continue
		forvalues j = 1/`ncols' {
			* cells stand in the order of rows and columns; those that are empty are not there
			local text
			local a = `rows'[`at']
			local b = `columns'[`at']
			if `"`a'"' == `"`key`i''"' & `"`b'"' == `"`value`j''"' {
				local text = trim(string(c1_1[`at'], "`format'"))
				local ++at
			}
			display as result %12s "`text'" _continue
		}
		local text = cond("`nototal'" == "", trim(string(`total`i'', "`format'")), "")
		display as result %12s "`text'"
	}
	if "`nototal'" == "" {
		quietly use `t', clear
		local foot `foot' `=c1_1[1]'
		display as text "{hline 13}{c +}{hline `width'}" _newline %12s "Total" " {c |}" _continue
		foreach x of local foot {
			local text = trim(string(`x', "`format'"))
			display as result %12s "`text'" _continue
		}
		display ""
	}
	quietly use `data', clear
end
