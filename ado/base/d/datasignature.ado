*! a short text that changes when the data do: shown, remembered, compared
program datasignature, rclass
	version 12.1
	gettoken what rest : 0, parse(" ,")
	if !inlist(`"`what'"', "set", "confirm", "report", "clear") {
		_datasignature `0'
		return add
		exit
	}
	local 0 `"`rest'"'
	syntax [, RESET STRict]
	local was : char _dta[datasignature]
	if "`what'" == "set" {
		if "`was'" != "" & "`reset'" == "" {
			display as error "a data signature is set already; use option reset"
			exit 110
		}
		_datasignature
		char _dta[datasignature] "`r(datasignature)'"
		return add
		char _dta[datasignature_when] "`c(current_date)' `c(current_time)'"
		exit
	}
	if "`what'" == "clear" {
		char _dta[datasignature]
		char _dta[datasignature_when]
		exit
	}
	if "`was'" == "" {
		display as error "no data signature is set"
		exit 459
	}
	local when : char _dta[datasignature_when]
	quietly _datasignature
	return local datasignature "`r(datasignature)'"
	return local fullsignature "`was'"
	local same = "`r(datasignature)'" == "`was'"
	return scalar same = `same'
	if `same' {
		display as text "(data unchanged since `when')"
		exit
	}
	if "`what'" == "report" {
		display as text "data have changed since `when'"
		display as text "    set    " as result "`was'"
		display as text "    now    " as result "`r(datasignature)'"
		exit
	}
	display as error "data have changed since `when'"
	exit 9
end
