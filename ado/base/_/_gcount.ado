*! number of values that are not missing, by groups
program _gcount
	version 12.1
	syntax newvarname =/exp [if] [in] [, BY(varlist)]
	tempvar touse
	local present (`exp') < .
	* text counts too, when a variable is given by its name
	local name = subinstr(subinstr("`exp'", "(", "", .), ")", "", .)
	capture confirm string variable `name'
	if _rc == 0 {
		local present `name' != ""
	}
	quietly {
		mark `touse' `if' `in'
		sort `touse' `by', stable
		by `touse' `by': gen `typlist' `varlist' = sum(`present') if `touse'
		by `touse' `by': replace `varlist' = `varlist'[_N]
	}
end
