*! reduce the dataset to statistics of groups
program aggregate
	version 12.1
	syntax anything(name=list id="list of statistics" equalok) [if] [in] [, BY(varlist) CW FAST]
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
	mark `touse' `if' `in'
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
		if "`by'" != "" {
			local byoption by(`by')
		}
		local n : list sizeof names
		forvalues i = 1/`n' {
			tempvar result
			local stat : word `i' of `stats'
			local source : word `i' of `sources'
			One `stat' `source' `result' `sequence' "`by'" "`byoption'"
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
	local format : format `source'
	local label : variable label `source'
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
		local format %9.0g
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
	format `result' `format'
	if `"`label'"' == "" {
		local label `source'
	}
	_label variable `result' `"(`stat') `label'"'
end
