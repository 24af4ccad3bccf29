*! number the groups that quantiles divide a variable into
program quantiles, rclass sortpreserve
	version 12.1
	gettoken name 0 : 0, parse(" =")
	gettoken equal 0 : 0, parse(" =")
	if "`equal'" != "=" {
		display as error "the form is: quantiles newvar = exp [if] [in] [, groups(#) | cutpoints(varname)]"
		exit 198
	}
	confirm new variable `name'
	local 0 `"= `0'"'
	syntax =/exp [if] [in] [, Groups(integer 2) CUTpoints(varname numeric) BY(varlist)]
	if `groups' < 2 {
		display as error "groups() must be at least 2"
		exit 198
	}
	tempvar touse x
	quietly {
		mark `touse' `if' `in'
		gen double `x' = `exp' if `touse'
		replace `touse' = 0 if missing(`x')
	}
	if "`cutpoints'" != "" {
		ByCuts `name' `x' `touse' `cutpoints'
	}
	else {
		ByCounts `name' `x' `touse' `groups' "`by'"
	}
	return scalar groups = `groups'
	quietly count if missing(`name')
	if r(N) {
		display as text "(`r(N)' missing value" cond(r(N) == 1, "", "s") " generated)"
	}
end

* The group of a value is that of the largest position that it holds: it is the number of
* cut points that lie below it, plus 1.
program ByCounts
	args name x touse k by
	tempvar n at cut
	quietly {
		sort `touse' `by' `x'
		gen int `name' = 1 if `touse'
		by `touse' `by': gen long `n' = _N
		gen double `at' = .
		gen double `cut' = .
		forvalues i = 1/`=`k' - 1' {
			replace `at' = `n' * `i' / `k'
			by `touse' `by': replace `cut' = cond(`at' == int(`at'), ///
				(`x'[`at'] + `x'[`at' + 1]) / 2, `x'[int(`at') + 1])
			replace `name' = `i' + 1 if `x' > `cut' & `touse'
		}
		compress `name'
	}
end

program ByCuts
	args name x touse cuts
	quietly {
		gen int `name' = 1 if `touse'
		levels `cuts'
		foreach c in `r(levels)' {
			replace `name' = `name' + 1 if `x' > `c' & `touse'
		}
		compress `name'
	}
end
