*! draw a random sample with replacement
program resample
	version 12.1
	syntax [anything(name=size)] [if] [in] [, STRata(varlist) CLuster(varlist) Weight(name)]
	if "`size'" == "" {
		local size .
	}
	tempvar touse unit stratum draws
	quietly {
		mark `touse' `if' `in'
		keep if `touse'
		drop `touse'
		if _N == 0 {
			error 2000
		}
		Units `unit' `stratum' "`strata'" "`cluster'"
	}
	Draw `unit' `stratum' `draws' `size'
	quietly {
		drop `unit' `stratum'
		if "`weight'" != "" {
			capture confirm new variable `weight'
			if _rc {
				replace `weight' = `draws'
				drop `draws'
			}
			else {
				_rename `draws' `weight'
			}
			exit
		}
		drop if `draws' == 0
		expand `draws'
		drop `draws'
	}
end

* unit numbers what is drawn, in the order of the strata, which stratum numbers
program Units
	args unit stratum strata cluster
	tempvar first
	if "`strata'`cluster'" != "" {
		sort `strata' `cluster', stable
	}
	if "`strata'" == "" {
		gen byte `stratum' = 1
	}
	else {
		by `strata': gen long `stratum' = _n == 1
		replace `stratum' = sum(`stratum')
	}
	if "`cluster'" == "" {
		gen long `unit' = _n
		exit
	}
	by `strata' `cluster': gen byte `first' = _n == 1
	gen long `unit' = sum(`first')
end

* How often each unit is drawn: a row for each draw is put behind the data, with the unit
* that it hits, and counted within the units.
program Draw
	args unit stratum draws size
	tempvar first start k isdraw n
	quietly {
		sort `unit', stable
		by `unit': gen byte `first' = _n == 1
		sort `stratum' `unit', stable
		by `stratum': gen long `start' = `unit'[1]
		by `stratum': gen long `k' = `unit'[_N] - `unit'[1] + 1
		by `stratum': gen double `n' = min(`size', `k')
		if `size' < . {
			count if `k' < `size' & `first'
		}
	}
	if `size' < . & r(N) {
		display as error "the sample cannot be larger than the data"
		exit 498
	}
	local rows = c(N)
	quietly {
		tempvar pick
		* within a stratum only as many draws as asked for
		by `stratum': replace `first' = `first' & `unit' - `start' < `n'
		count if `first'
		local total = r(N)
		gen double `pick' = .
		tempvar at
		gen long `at' = _n if `first'
		sort `at'
		set obs `=`rows' + `total''
		gen byte `isdraw' = _n > `rows'
		replace `pick' = `start'[_n - `rows'] + int(runiform() * `k'[_n - `rows']) if `isdraw'
		replace `unit' = `pick' if `isdraw'
		sort `unit' `isdraw', stable
		by `unit': gen long `draws' = sum(`isdraw')
		by `unit': replace `draws' = `draws'[_N]
		drop if `isdraw'
	}
end
