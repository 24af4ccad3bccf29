*! compare the data in memory with a dataset file, row by row
program comparedata, rclass
	version 12.1
	syntax [varlist] using/ [, ALL VERBose]
	local rows = c(N)
	preserve
	quietly {
		_unab mine : _all
		use `"`using'"', clear
		local theirrows = c(N)
		_unab theirs : _all
	}
	if `rows' != `theirrows' {
		display as error "there are `rows' observations in memory and `theirrows' in the file"
		exit 9
	}
	local common : list varlist & theirs
	local absent : list varlist - theirs
	local extra : list theirs - mine
	tempfile file
	quietly {
		keep `common'
		foreach v of local common {
			tempvar t
			_rename `v' `t'
			local shadows `shadows' `t'
		}
		save `file'
		restore, preserve
		_merge 1:1 _n using `file', nogenerate noreport
	}
	local total 0
	foreach v of local common {
		gettoken t shadows : shadows
		local a = substr("`: type `v''", 1, 3) == "str"
		local b = substr("`: type `t''", 1, 3) == "str"
		if `a' != `b' {
			display as text %32s "`v'" ":  " as result "`: type `v'' in memory, `: type `t'' in the file"
			local ++total
			continue
		}
		quietly count if `v' != `t'
		local n = r(N)
		local total = `total' + `n'
		if `n' {
			display as text %32s "`v'" ":  " as result "`n' mismatch" cond(`n' == 1, "", "es")
			if "`verbose'" != "" {
				quietly compress `t'
				_rename `t' __file
				list `v' __file if `v' != __file, noobs
				drop __file
			}
		}
		else if "`all'" != "" {
			display as text %32s "`v'" ":  match"
		}
	}
	foreach v of local absent {
		display as text %32s "`v'" ":  " as result "not in the file"
		local ++total
	}
	foreach v of local extra {
		display as text %32s "`v'" ":  only in the file"
	}
	return scalar mismatches = `total'
	if `total' {
		exit 9
	}
	display as text "(the variables agree)"
end
