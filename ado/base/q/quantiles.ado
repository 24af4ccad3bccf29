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
	syntax anything(name=value id="expression" equalok) [if] [in] [fweight aweight/] ///
		[, Groups(integer 2) CUTpoints(varname numeric) BY(varlist)]
	if `groups' < 2 {
		display as error "groups() must be at least 2"
		exit 198
	}
	if "`cutpoints'" != "" & ("`by'" != "" | "`weight'" != "") {
		display as error "cutpoints() tells the limits itself: by() and weights may not go with it"
		exit 198
	}
	tempvar touse x w
	quietly {
		if "`weight'" != "" {
			gen double `w' = `exp'
			local weights [`weight'=`w']
		}
		mark `touse' `if' `in' `weights'
		gen double `x' = `value' if `touse'
		replace `touse' = 0 if missing(`x')
	}
	if "`cutpoints'" != "" {
		ByCuts `name' `x' `touse' `cutpoints'
	}
	else if "`by'" == "" & `groups' <= 1000 {
		Whole `name' `x' `touse' `groups' "`weights'"
	}
	else {
		if "`weight'" == "" {
			quietly gen byte `w' = 1
		}
		Within `name' `x' `touse' `groups' `w' "`by'"
	}
	return scalar groups = `groups'
	quietly count if missing(`name')
	if r(N) {
		display as text "(`r(N)' missing value" cond(r(N) == 1, "", "s") " generated)"
	}
end

* One set of quantiles: in sorted data the place where a group ends is found by halving.
program Whole
	args name x touse k weights
	quietly {
		sort `touse' `x'
		gen int `name' = .
		count if `touse'
		if r(N) == 0 {
			exit
		}
		local from = _N - r(N) + 1
		_pctile `x' in `from'/l `weights', nquantiles(`k')
		forvalues i = 1/`=`k' - 1' {
			tempname cut`i'
			scalar `cut`i'' = r(r`i')
		}
		forvalues i = 1/`=`k' - 1' {
			* the first row of those above the cut
			local low `from'
			local high = _N + 1
			while `low' < `high' {
				local middle = int((`low' + `high') / 2)
				if `x'[`middle'] > `cut`i'' {
					local high `middle'
				}
				else {
					local low = `middle' + 1
				}
			}
			if `low' > `from' {
				replace `name' = `i' in `from'/`=`low' - 1'
				local from `low'
			}
		}
		if `from' <= _N {
			replace `name' = `k' in `from'/l
		}
		compress `name'
	}
end

* Quantiles within groups: the value at which the running sum of weights passes its share;
* where it meets the share exactly, the mean of this value and the next.
program Within
	args name x touse k w by
	tempvar sum at cut
	quietly {
		sort `touse' `by' `x'
		gen int `name' = 1 if `touse'
		by `touse' `by': gen double `sum' = sum(`w')
		gen long `at' = .
		gen double `cut' = .
		forvalues i = 1/`=`k' - 1' {
			by `touse' `by': replace `at' = sum(`sum' <= `sum'[_N] * `i' / `k')
			by `touse' `by': replace `cut' = cond(`sum'[`at'[_N]] == `sum'[_N] * `i' / `k', ///
				(`x'[`at'[_N]] + `x'[`at'[_N] + 1]) / 2, `x'[`at'[_N] + 1])
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
