*! describe what variables hold
program codebook
	version 12.1
	syntax [varlist] [if] [in] [, Compact TABulate(integer 9)]
	tempvar touse
	mark `touse' `if' `in'
	quietly count if `touse'
	if r(N) == 0 {
		error 2000
	}
	preserve
	quietly keep if `touse'
	drop `touse'
	if "`compact'" != "" {
		Compact "`varlist'"
		exit
	}
	foreach v of local varlist {
		Unique `v'
		local unique = r(unique)
		local missing = r(missing)
		display as text _newline "{hline}"
		display as result "`v'" as text "  `: variable label `v''"
		display as text "{hline}"
		display as text "          type:  " as result "`: type `v''" _continue
		local labels : value label `v'
		display as text cond("`labels'" == "", "", "   labels: `labels'")
		if substr("`: type `v''", 1, 3) != "str" {
			quietly summarize `v', detail
			display as text "         range:  " as result "[" %9.0g r(min) "," %9.0g r(max) "]"
		}
		display as text " unique values:  " as result `unique' _column(45) as text ///
			"missing:  " as result "`missing'/`=_N'"
		if `unique' <= `tabulate' {
			Values `v' `unique'
		}
		else if substr("`: type `v''", 1, 3) == "str" {
			Examples `v'
		}
		else {
			display as text "          mean:  " as result %9.0g r(mean)
			display as text "     std. dev.:  " as result %9.0g r(sd)
			display as text "   percentiles:      10%       25%       50%       75%       90%"
			display as result "              " %10.0g r(p10) %10.0g r(p25) %10.0g r(p50) ///
				%10.0g r(p75) %10.0g r(p90)
		}
	}
	display ""
end

program Unique, rclass
	args v
	tempvar first
	quietly {
		sort `v', stable
		by `v': gen byte `first' = _n == 1 & !missing(`v')
		count if `first'
		return scalar unique = r(N)
		count if missing(`v')
		return scalar missing = r(N)
	}
end

* Each value with its frequency; v is sorted, with missing values last or, as text, first
program Values
	args v unique
	tempvar n
	quietly by `v': gen long `n' = _N
	local labels : value label `v'
	display as text "    tabulation:      Freq.  Value"
	local at 0
	while `at' < _N {
		local ++at
		local count = `n'[`at']
		local value = `v'[`at']
		if "`labels'" != "" {
			local value `"`value'  `: label `labels' `value''"'
		}
		display as result "               " %10.0fc `count' `"  `value'"'
		local at = `at' + `count' - 1
	}
end

program Examples
	args v
	display as text "      examples:  " _continue
	forvalues i = 1/4 {
		local at = ceil(_N * `i' / 5)
		local value = `v'[`at']
		display as result _column(18) `""`value'""'
	}
end

program Compact
	args vars
	display as text _newline "Variable          Obs Unique       Mean        Min        Max  Label"
	display as text "{hline}"
	foreach v of local vars {
		Unique `v'
		local unique = r(unique)
		local obs = _N - r(missing)
		local numbers
		if substr("`: type `v''", 1, 3) != "str" {
			quietly summarize `v'
			foreach s in mean min max {
				local numbers `"`numbers'`=substr("           " + trim(string(r(`s'), "%9.0g")), -11, 11)'"'
			}
		}
		else {
			local numbers `"          .          .          ."'
		}
		display as result %-12s abbrev("`v'", 12) %9.0f `obs' %7.0f `unique' `"`numbers'"' ///
			as text `"  `: variable label `v''"'
	}
	display as text "{hline}"
end
