*! compare two variables
program compare, rclass
	version 12.1
	syntax varlist(min=2 max=2) [if] [in]
	gettoken a b : varlist
	local b = trim("`b'")
	tempvar touse
	mark `touse' `if' `in'
	display as text _newline _column(34) "{hline 11} difference {hline 11}"
	display as text _column(22) "count       minimum      average     maximum"
	display as text "{hline 67}"
	local text = substr("`: type `a''", 1, 3) == "str"
	foreach sign in < == > {
		local condition `a' `sign' `b' & !missing(`a') & !missing(`b') & `touse'
		quietly count if `condition'
		local n = r(N)
		local what = cond("`sign'" == "==", "=", "`sign'")
		display as text %-18s "`=abbrev("`a'", 8)'`what'`=abbrev("`b'", 8)'" as result %9.0fc `n' _continue
		if `n' & "`sign'" != "==" & !`text' {
			tempvar d
			quietly gen double `d' = `a' - `b' if `condition'
			summarize `d', meanonly
			display as result "  " %12.0g r(min) " " %12.0g r(mean) " " %12.0g r(max) _continue
		}
		display ""
		local name = cond("`sign'" == "<", "less", cond("`sign'" == ">", "greater", "equal"))
		return scalar N_`name' = `n'
	}
	quietly count if !missing(`a') & !missing(`b') & `touse'
	display as text "{hline 67}"
	display as text %-18s "jointly defined" as result %9.0fc r(N)
	return scalar N = r(N)
	quietly count if missing(`a') & !missing(`b') & `touse'
	display as text %-18s "`=abbrev("`a'", 8)' missing only" as result %9.0fc r(N)
	quietly count if !missing(`a') & missing(`b') & `touse'
	display as text %-18s "`=abbrev("`b'", 8)' missing only" as result %9.0fc r(N)
	quietly count if missing(`a') & missing(`b') & `touse'
	display as text %-18s "jointly missing" as result %9.0fc r(N)
	quietly count if `touse'
	display as text "{hline 67}" _newline %-18s "total" as result %9.0fc r(N)
end
