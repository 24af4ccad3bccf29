*! number the groups that variables form
program _ggroup
	version 12.1
	gettoken type 0 : 0
	gettoken name 0 : 0
	gettoken equal 0 : 0, parse(" =")
	gettoken vars 0 : 0, match(par)
	local 0 `vars' `0'
	syntax varlist [if] [in] [, BY(varlist) MISSing LABel]
	if "`by'" != "" {
		display as error "group() may not be combined with by"
		exit 190
	}
	tempvar touse first
	quietly {
		mark `touse' `if' `in'
		if "`missing'" == "" {
			markout `touse' `varlist', strok
		}
		sort `touse' `varlist', stable
		by `touse' `varlist': gen byte `first' = _n == 1 & `touse'
		gen `type' `name' = sum(`first')
		replace `name' = . if !`touse'
	}
	if "`label'" != "" {
		Label `name' `first' "`varlist'"
	}
end

* Each group is labelled with the values that form it.
program Label
	args name first vars
	tempvar at
	quietly gen long `at' = _n if `first'
	sort `at'
	quietly count if `first'
	local n = r(N)
	forvalues i = 1/`n' {
		local text
		foreach v of local vars {
			local value = `v'[`i']
			local labels : value label `v'
			if "`labels'" != "" {
				local value : label `labels' `value'
			}
			local text `"`text' `value'"'
		}
		local text = trim(`"`text'"')
		_label define `name' `i' `"`text'"', modify
	}
	_label values `name' `name'
end
