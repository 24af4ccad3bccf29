*! report, list, tag or drop observations that repeat others
program duplicates
	version 12.1
	gettoken what 0 : 0, parse(" ,")
	local l = length("`what'")
	if "`what'" == substr("report", 1, max(3, `l')) {
		Report `0'
	}
	else if "`what'" == substr("list", 1, max(1, `l')) {
		List `0'
	}
	else if "`what'" == substr("tag", 1, max(1, `l')) {
		Tag `0'
	}
	else if "`what'" == "drop" {
		Drop `0'
	}
	else {
		display as error "duplicates needs one of: report, list, tag, drop"
		exit 198
	}
end

* copies: the number of observations that share the values; copy: 1 for the first of them
program Count, sortpreserve
	args copies copy touse varlist
	quietly {
		sort `touse' `varlist', stable
		by `touse' `varlist': gen long `copies' = _N if `touse'
		by `touse' `varlist': gen long `copy' = _n if `touse'
	}
end

program Report, rclass
	syntax [varlist] [if] [in]
	tempvar touse copies copy
	mark `touse' `if' `in'
	Count `copies' `copy' `touse' "`varlist'"
	quietly count if `touse'
	return scalar N = r(N)
	quietly count if `copy' == 1
	return scalar unique = r(N)
	display as text _newline "Repeated values of: " as result "`varlist'" _newline
	display as text "   copies {c |} observations      surplus"
	display as text "{hline 10}{c +}{hline 26}"
	quietly levels `copies' if `touse'
	foreach c in `r(levels)' {
		quietly count if `copies' == `c'
		display as text %9.0f `c' " {c |}" as result %13.0f r(N) %13.0f r(N) - r(N) / `c'
	}
end

program List
	syntax [varlist] [if] [in] [, *]
	tempvar touse copies copy
	mark `touse' `if' `in'
	Count `copies' `copy' `touse' "`varlist'"
	quietly count if `copies' > 1 & `touse'
	if r(N) == 0 {
		display as text "(no repeated observations)"
		exit
	}
	preserve
	quietly {
		tempvar number
		gen long `number' = _n
		char `number'[varname] "obs"
		keep if `copies' > 1 & `touse'
		sort `varlist' `number'
	}
	capture confirm new variable obs
	if _rc == 0 {
		rename `number' obs
		local number obs
	}
	list `number' `varlist', noobs `options'
end

program Tag
	syntax [varlist] [if] [in] , Generate(name)
	confirm new variable `generate'
	tempvar touse copies copy
	mark `touse' `if' `in'
	Count `copies' `copy' `touse' "`varlist'"
	quietly gen long `generate' = `copies' - 1 if `touse'
	quietly compress `generate'
	label variable `generate' "other observations with the same values"
	quietly count if `generate' > 0 & `touse'
	display as text "(`r(N)' observations have copies)"
end

program Drop, rclass
	syntax [varlist(default=none)] [if] [in] [, FORCE]
	if "`varlist'" == "" {
		_unab varlist : _all
	}
	else if "`force'" == "" {
		display as error "observations alike in `varlist' may differ elsewhere; " ///
			"add the option force to drop them all the same"
		exit 198
	}
	tempvar touse copies copy
	mark `touse' `if' `in'
	Count `copies' `copy' `touse' "`varlist'"
	quietly count if `copy' > 1 & `touse'
	return scalar N_drop = r(N)
	quietly drop if `copy' > 1 & `touse'
	display as text "(" return(N_drop) " observation" cond(return(N_drop) == 1, "", "s") " deleted)"
end
