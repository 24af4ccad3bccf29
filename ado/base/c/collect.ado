*! run a command for each group and collect its results into a dataset
program collect
	version 12.1
	gettoken mine command : 0, parse(":") bind
	gettoken colon command : command, parse(":")
	if trim(`"`command'"') == "" {
		display as error "the form is: collect results, by(varlist): command"
		exit 198
	}
	local 0 `"`mine'"'
	syntax [anything(name=list equalok)] , BY(varlist) [SAVing(string) CLEAR TOTAL MISSing NODots]
	if "`clear'" == "" & `"`saving'"' == "" & c(changed) {
		display as error "the data in memory would be lost; save them, or give clear or saving()"
		exit 4
	}
	local file `"`saving'"'
	if `"`file'"' == "" {
		tempfile file
	}
	gettoken before after : command, parse(",") bind
	* commands that are known to take a range are spared a dataset of their own
	local word : word 1 of `command'
	capture unabcmd `word'
	local word `r(cmd)'
	local ranged = inlist("`word'", "summarize", "count", "correlate", "tabulate", "_pctile")
	preserve
	quietly {
		tempvar touse group end
		mark `touse'
		if "`missing'" == "" {
			markout `touse' `by', strok
		}
		keep if `touse'
		drop `touse'
		if _N == 0 {
			error 2000
		}
		sort `by', stable
		by `by': gen byte `group' = _n == 1
		gen long `end' = .
		by `by': replace `end' = _N
		replace `end' = `end' + _n - 1
		tempvar number
		gen long `number' = sum(`group')
		drop `group'
		_rename `number' `group'
		tempfile groups
		local count = `group'[_N]
		tempfile all
		local rows = _N
		local at 1
		forvalues i = 1/`count' {
			local to`i' = `end'[`at']
			local at = `to`i'' + 1
		}
		drop `end'
		save `all'
		Groups `groups' `group' "`by'" "`total'"
	}
	tempname post
	tempfile results
	local last = `count' + ("`total'" != "")
	local from 1
	forvalues i = 1/`last' {
		local to `to`i''
		if `i' > `count' {
			local from 1
			local to `rows'
		}
		if `ranged' {
			capture quietly `before' in `from'/`to' `after'
			local rc = _rc
		}
		else {
			quietly use in `from'/`to' using `all', clear
			capture quietly `command'
			local rc = _rc
		}
		if `rc' == 1 {
			error 1
		}
		if `i' == 1 {
			if `rc' {
				display as error "the command failed in the first group"
				error `rc'
			}
			_resultlist `list'
			local names `s(names)'
			local k `s(k)'
			forvalues j = 1/`k' {
				local exp`j' `s(exp`j')'
			}
			postfile `post' long(`group') double(`names') using `results', replace
		}
		local values
		forvalues j = 1/`k' {
			local value .
			if `rc' == 0 {
				capture local value = `exp`j''
			}
			local values `values' (`value')
		}
		post `post' (`i') `values'
		local from = `to' + 1
		if "`nodots'" == "" {
			_dots `i' `last' `rc'
		}
		else {
			set progress `i' `last'
		}
	}
	postclose `post'
	quietly {
		use `groups', clear
		merge 1:1 `group' using `results', nogenerate noreport
		drop `group'
		if `"`saving'"' != "" {
			save `"`file'"', replace
			restore
			exit
		}
	}
	global S_FN
	restore, not
end

* One row for each group; the total comes last, with missing by-variables.
program Groups
	args file group by total
	tempfile now
	tempvar first
	save `now'
	by `by': gen byte `first' = _n == 1
	keep if `first'
	keep `by' `group'
	if "`total'" != "" {
		set obs `=_N + 1'
		replace `group' = _N in l
	}
	save `file'
	use `now', clear
end
