*! name the time variable that operators such as L. go by
program tsset, rclass
	version 12.1
	syntax [varlist(numeric default=none max=2)] [, clear DELTA(real 1)]
	if "`clear'" != "" {
		foreach c in TStvar TSpanel TSdelta {
			char _dta[_`c']
		}
		exit
	}
	if "`varlist'" == "" {
		local time : char _dta[_TStvar]
		local panel : char _dta[_TSpanel]
		local delta : char _dta[_TSdelta]
		if "`time'" == "" {
			display as error "time variable not set"
			exit 111
		}
		if "`delta'" == "" {
			local delta 1
		}
		confirm variable `time' `panel'
		sort `panel' `time'
	}
	else {
		local n : word count `varlist'
		local time : word `n' of `varlist'
		if `n' == 2 {
			local panel : word 1 of `varlist'
		}
		if `delta' <= 0 {
			display as error "delta() must be above 0"
			exit 198
		}
		sort `panel' `time'
		local by
		if "`panel'" != "" {
			local by by `panel':
		}
		capture `by' assert `time' != `time'[_n-1] | `time' >= . if _n > 1
		if _rc {
			if "`panel'" != "" {
				display as error "repeated time values within panel"
			}
			else {
				display as error "repeated time values in sample"
			}
			exit 451
		}
		char _dta[_TStvar] `time'
		char _dta[_TSpanel] `panel'
		local d
		if `delta' != 1 {
			local d `delta'
		}
		char _dta[_TSdelta] `d'
	}
	quietly summarize `time', meanonly
	if "`panel'" != "" {
		display as text %22s "panel variable:  " as result "`panel'"
	}
	local from = trim(string(r(min), "`: format `time''"))
	local to = trim(string(r(max), "`: format `time''"))
	display as text %22s "time variable:  " as result "`time', `from' to `to'"
	display as text %22s "delta:  " as result "`delta'"
	return scalar tmin = r(min)
	return scalar tmax = r(max)
	return local timevar `time'
	return local panelvar `panel'
	return local tdelta `delta'
end
