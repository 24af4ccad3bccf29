*! change values to missing
program tomissing
	version 12.1
	syntax varlist(numeric) [if] [in] , VALues(string)
	tempvar touse
	mark `touse' `if' `in'
	* "9 99" makes . of both; "9=.a 99=.b" tells them apart
	local spaced : subinstr local values "=" " = ", all
	* once to see that all can be done, then to do it
	local rest `spaced'
	while "`rest'" != "" {
		gettoken from rest : rest
		gettoken equal after : rest
		if "`equal'" == "=" {
			gettoken to rest : after
			if !regexm("`to'", "^[.][a-z]?$") {
				display as error "`to' is no missing value"
				exit 198
			}
		}
		numlist "`from'"
		local rest = trim("`rest'")
	}
	foreach v of local varlist {
		local rest `spaced'
		local changed 0
		while "`rest'" != "" {
			gettoken from rest : rest
			gettoken equal after : rest
			local to .
			if "`equal'" == "=" {
				gettoken to rest : after
			}
			numlist "`from'"
			foreach x in `r(numlist)' {
				quietly count if `v' == float(`x') & `touse' | `v' == `x' & `touse'
				local changed = `changed' + r(N)
				quietly replace `v' = `to' if (`v' == float(`x') | `v' == `x') & `touse'
			}
			local rest = trim("`rest'")
		}
		if `changed' {
			display as text "(`v': `changed' value" cond(`changed' == 1, "", "s") " made missing)"
		}
	}
end
