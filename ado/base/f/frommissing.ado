*! change missing values to values
program frommissing
	version 12.1
	syntax varlist(numeric) [if] [in] , VALues(string) [OVERride]
	tempvar touse
	mark `touse' `if' `in'
	* "0" for every missing value; ".a=9 .b=8" for single ones, "else=7" for those left
	local spaced : subinstr local values "=" " = ", all
	* all values are looked for before any is put in: two kinds may become one value
	local rest `spaced'
	while "`rest'" != "" {
		gettoken to rest : rest
		gettoken equal after : rest
		if "`equal'" == "=" {
			gettoken to rest : after
		}
		confirm number `to'
		foreach v of local varlist {
			quietly count if `v' == `to'
			if r(N) & "`override'" == "" {
				display as error "`v' already holds `to' in `r(N)' observations; " ///
					"the option override allows it"
				exit 9
			}
		}
		local rest = trim("`rest'")
	}
	foreach v of local varlist {
		local rest `spaced'
		local changed 0
		while "`rest'" != "" {
			gettoken from rest : rest
			gettoken equal after : rest
			local condition missing(`v')
			local to `from'
			if "`equal'" == "=" {
				gettoken to rest : after
				if "`from'" != "else" {
					local condition `v' == `from'
				}
			}
			quietly count if `condition' & `touse'
			local changed = `changed' + r(N)
			quietly replace `v' = `to' if `condition' & `touse'
			local rest = trim("`rest'")
		}
		if `changed' {
			display as text "(`v': `changed' missing value" cond(`changed' == 1, "", "s") " changed)"
		}
	}
end
