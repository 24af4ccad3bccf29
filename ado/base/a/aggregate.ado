*! reduce the dataset to statistics of groups
program aggregate
	version 12.1
	syntax anything(name=list id="list of statistics" equalok) [if] [in] [fweight aweight/] ///
		[, BY(varlist) CW FAST]
	Targets `list'
	local stats `s(stats)'
	local sources `s(sources)'
	local names `s(names)'
	foreach name of local names {
		if `: list posof "`name'" in by' {
			display as error "`name' is in by() and cannot be a result too"
			exit 198
		}
	}
	local twice : list dups names
	if "`twice'" != "" {
		display as error "`: word 1 of `twice'' would be made twice; name the results: (mean) x (sd) s=x"
		exit 198
	}
	tempvar touse
	if "`weight'" != "" {
		local weights [`weight'=`exp']
	}
	mark `touse' `if' `in' `weights'
	if "`cw'" != "" {
		markout `touse' `sources'
	}
	quietly count if `touse'
	if r(N) == 0 {
		error 2000
	}
	if "`fast'" == "" {
		preserve
	}
	quietly {
		keep if `touse'
		tempvar sequence
		gen long `sequence' = _n
		if "`weight'" != "" {
			tempvar w
			gen double `w' = `exp'
		}
		if "`by'" != "" {
			local byoption by(`by')
		}
		local n : list sizeof names
		forvalues i = 1/`n' {
			tempvar result
			local stat : word `i' of `stats'
			local source : word `i' of `sources'
			if "`weight'" == "" | inlist("`stat'", "min", "max", "first", "last") {
				One `stat' `source' `result' `sequence' "`by'" "`byoption'"
			}
			else {
				Weighted `stat' `source' `result' `w' `weight' "`by'"
			}
			Describe `stat' `source' `result'
			local results `results' `result'
		}
		if "`by'" == "" {
			keep in 1
		}
		else {
			tempvar first
			sort `by'
			by `by': gen byte `first' = _n == 1
			keep if `first'
		}
		keep `by' `results'
	}
	forvalues i = 1/`n' {
		_rename `: word `i' of `results'' `: word `i' of `names''
	}
	if "`by'" != "" {
		sort `by'
	}
	if "`fast'" == "" {
		restore, not
	}
end

* "(mean) a b (sd) s=a" as three lists of equal length
program Targets, sclass
	local stat mean
	gettoken word 0 : 0, parse(" ()=") match(par)
	while "`word'" != "" {
		if "`par'" == "(" {
			local stat = trim("`word'")
			Known `stat'
		}
		else {
			local name
			gettoken next rest : 0, parse(" ()=")
			if "`next'" == "=" {
				local name `word'
				confirm name `name'
				gettoken word 0 : rest, parse(" ()=")
			}
			_unab vars : `word'
			foreach v of local vars {
				local stats `stats' `stat'
				local sources `sources' `v'
				local names `names' `=cond("`name'" == "", "`v'", "`name'")'
			}
		}
		gettoken word 0 : 0, parse(" ()=") match(par)
	}
	if "`names'" == "" {
		error 102
	}
	sreturn local stats `stats'
	sreturn local sources `sources'
	sreturn local names `names'
end

program Known
	args stat
	if inlist("`stat'", "mean", "median", "sd", "total", "sum", "count", "min", "max") | ///
		inlist("`stat'", "iqr", "first", "last", "variance", "semean") {
		exit
	}
	if regexm("`stat'", "^p[1-9][0-9]?$") {
		exit
	}
	display as error "unknown statistic (`stat'): use mean, median, sd, variance, semean, total, " ///
		"count, min, max, iqr, p1 to p99, first or last"
	exit 198
end

program One
	args stat source result sequence by byoption
	local type : type `source'
	if "`stat'" == "sum" {
		local stat total
	}
	if inlist("`stat'", "first", "last") {
		* the order within groups is the one that the data came in
		local at = cond("`stat'" == "first", "1", "_N")
		sort `by' `sequence'
		if "`by'" == "" {
			gen `type' `result' = `source'[`at']
		}
		else {
			by `by': gen `type' `result' = `source'[`at']
		}
		local labels : value label `source'
		if "`labels'" != "" {
			_label values `result' `labels'
		}
	}
	else if "`stat'" == "count" {
		_gcount long `result' = `source', `byoption'
	}
	else {
		confirm numeric variable `source'
		local call _g`stat'
		if substr("`stat'", 1, 1) == "p" {
			local call _gpctile
			local pth p(`=substr("`stat'", 2, 2)')
		}
		if inlist("`stat'", "variance", "semean") {
			local call _gsd
		}
		local store = cond(inlist("`stat'", "min", "max"), "`type'", "double")
		`call' `store' `result' = `source', `byoption' `pth'
		if "`stat'" == "variance" {
			replace `result' = `result'^2
		}
		if "`stat'" == "semean" {
			tempvar n
			_gcount double `n' = `source', `byoption'
			replace `result' = `result' / sqrt(`n')
		}
	}
end

* Format and label tell where a result comes from
program Describe
	args stat source result
	local format : format `source'
	local label : variable label `source'
	if "`stat'" == "count" {
		local format %9.0g
	}
	if `"`label'"' == "" {
		local label `source'
	}
	format `result' `format'
	_label variable `result' `"(`stat') `label'"'
end

* Frequency weights count as so many observations; analytic weights are scaled so that they
* sum to the number of observations of the group.
program Weighted
	args stat source result weight kind by
	confirm numeric variable `source'
	tempvar w sum n mean all
	if "`by'" == "" {
		gen byte `all' = 1
		local by `all'
	}
	gen double `w' = `weight' if !missing(`source')
	sort `by' `source'
	by `by': gen double `sum' = sum(`w')
	if regexm("`stat'", "^p[0-9]+$") | inlist("`stat'", "median", "iqr") {
		if "`stat'" == "iqr" {
			tempvar low
			Wpctile `source' `low' `sum' 25 `by'
			Wpctile `source' `result' `sum' 75 `by'
			replace `result' = `result' - `low'
			exit
		}
		Wpctile `source' `result' `sum' `=cond("`stat'" == "median", "50", substr("`stat'", 2, 2))' `by'
		exit
	}
	by `by': replace `sum' = `sum'[_N]
	by `by': gen double `n' = sum(`w' < .)
	by `by': replace `n' = cond("`kind'" == "fweight", `sum', `n'[_N])
	if "`stat'" == "count" {
		gen double `result' = `n'
		compress `result'
		exit
	}
	by `by': gen double `mean' = sum(`w' * `source')
	by `by': replace `mean' = `mean'[_N] / `sum'
	if "`stat'" == "mean" {
		gen double `result' = `mean'
		exit
	}
	if inlist("`stat'", "total", "sum") {
		gen double `result' = cond(`n' == 0, 0, `mean' * `n')
		exit
	}
	by `by': gen double `result' = sum(`w' * (`source' - `mean')^2)
	by `by': replace `result' = `result'[_N] / `sum' * `n' / (`n' - 1)
	if "`stat'" == "sd" {
		replace `result' = sqrt(`result')
	}
	if "`stat'" == "semean" {
		replace `result' = sqrt(`result' / `n')
	}
end

* The value at which the running sum of weights passes p percent of it all; where it meets
* them exactly, the mean of this value and the next
program Wpctile
	args source result sum p
	macro shift 4
	local by `*'
	tempvar goal k
	by `by': gen double `goal' = `sum'[_N] * `p' / 100
	by `by': gen long `k' = sum(`sum' <= `goal' & !missing(`source'))
	by `by': replace `k' = `k'[_N]
	by `by': gen double `result' = cond(`sum'[`k'] == `goal', ///
		(`source'[`k'] + `source'[`k' + 1]) / 2, `source'[`k' + 1])
end
