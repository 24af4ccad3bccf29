*! reduce the dataset to the distinct combinations of values and their frequencies
program tally
	version 12.1
	syntax varlist [if] [in] [fweight/] [, Freq(name) Percent(name) CUMulative(name) NOMISS ZERO]
	if "`freq'" == "" {
		local freq _freq
	}
	foreach name in `freq' `percent' `cumulative' {
		if `: list posof "`name'" in varlist' {
			display as error "`name' is one of the variables; choose another name for the result"
			exit 110
		}
	}
	tempvar touse n last
	if "`exp'" != "" {
		local weights [`weight'=`exp']
	}
	if "`nomiss'" == "" {
		mark `touse' `if' `in' `weights'
	}
	else {
		marksample touse, strok
	}
	preserve
	quietly {
		keep if `touse'
		if _N == 0 {
			error 2000
		}
		sort `varlist'
		local one = cond("`exp'" == "", "1", "`exp'")
		by `varlist': gen double `n' = sum(`one')
		by `varlist': gen byte `last' = _n == _N
		keep if `last'
		keep `varlist' `n'
		if "`zero'" != "" {
			Cross "`varlist'" `n'
		}
		_rename `n' `freq'
		_label variable `freq' "frequency"
		compress `freq'
		format `freq' %9.0g
		summarize `freq', meanonly
		local total = r(sum)
		if "`percent'" != "" {
			gen `percent' = 100 * `freq' / `total'
			_label variable `percent' "percent"
		}
		if "`cumulative'" != "" {
			gen double `cumulative' = sum(`freq')
			_label variable `cumulative' "cumulative frequency"
			compress `cumulative'
		}
	}
	sort `varlist'
	restore, not
end

* Combinations that do not occur are added, with frequency 0: every level of each variable is
* laid against all the rows that there are so far.
program Cross
	args vars n
	tempvar block first
	tempfile counted levels
	save `counted'
	foreach v of local vars {
		use `v' using `counted', clear
		sort `v'
		capture drop `first'
		gen byte `first' = `v' != `v'[_n-1] | _n == 1
		keep if `first'
		drop `first'
		gen long `block' = _n
		local k = _N
		if "`sofar'" != "" {
			save `levels', replace
			use `crossed', clear
			local rows = _N
			set obs `=`rows' * `k''
			foreach w of local sofar {
				replace `w' = `w'[mod(_n - 1, `rows') + 1]
			}
			gen long `block' = int((_n - 1) / `rows') + 1
			merge m:1 `block' using `levels', nogenerate noreport
		}
		drop `block'
		local sofar `sofar' `v'
		tempfile crossed
		save `crossed'
	}
	merge 1:1 `vars' using `counted', nogenerate noreport
	replace `n' = 0 if `n' == .
end
