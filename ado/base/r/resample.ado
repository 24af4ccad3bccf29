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
	Draw `unit' `stratum' `draws' `size' `cluster'
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

* How often each unit is drawn. The numbers of draws of all units are multinomial, and are made
* one after the other: of the draws that are left, a unit gets a binomial number with one part
* in the units that are left.
program Draw
	args unit stratum draws size cluster
	tempvar k n left first
	quietly {
		sort `stratum' `unit'
		by `stratum': gen long `k' = `unit'[_N] - `unit'[1] + 1
		if `size' < . {
			count if `k' < `size'
			if r(N) {
				noisily display as error "the sample cannot be larger than the data"
				exit 498
			}
		}
		gen long `n' = min(`size', `k')
		gen byte `first' = `unit' != `unit'[_n - 1]
		* what is left for this unit and those behind it
		by `stratum': gen long `left' = `n'
		by `stratum': replace `left' = cond(!`first' | `left'[_n - 1] <= 0, `left'[_n - 1], ///
			`left'[_n - 1] - rbinomial(`left'[_n - 1], 1 / (`k' - `unit' + `unit'[1] + 1))) if _n > 1
		by `stratum': gen long `draws' = `left' - cond(_n < _N, `left'[_n + 1], 0)
		if "`cluster'" != "" {
			by `stratum' `unit': replace `draws' = `draws'[_N]
		}
	}
end
