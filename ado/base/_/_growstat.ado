*! statistics of the variables of each row, for the functions whose names begin with row
program _growstat
	version 12.1
	gettoken what 0 : 0
	gettoken type 0 : 0
	gettoken name 0 : 0
	gettoken equal 0 : 0, parse(" =")
	gettoken vars 0 : 0, match(par)
	local 0 `vars' `0'
	syntax varlist [if] [in] [, BY(varlist) MISSing]
	if "`by'" != "" {
		display as error "row`what'() may not be combined with by"
		exit 190
	}
	tempvar touse n
	quietly {
		mark `touse' `if' `in'
		Nonmissing `n' `touse' "`varlist'"
		if inlist("`what'", "nonmiss", "miss") {
			local k : list sizeof varlist
			gen `type' `name' = cond("`what'" == "miss", `k' - `n', `n') if `touse'
			exit
		}
		confirm numeric variable `varlist'
		`what' `type' `name' `n' `touse' "`missing'" "`varlist'"
	}
end

program Nonmissing
	args n touse vars
	gen int `n' = 0 if `touse'
	foreach v of local vars {
		replace `n' = `n' + !missing(`v') if `touse'
	}
end

program total
	args type name n touse missing vars
	gen `type' `name' = 0 if `touse'
	foreach v of local vars {
		replace `name' = `name' + `v' if `touse' & !missing(`v')
	}
	if "`missing'" != "" {
		replace `name' = . if `n' == 0
	}
end

program mean
	args type name n touse missing vars
	tempvar sum
	total double `sum' `n' `touse' "" "`vars'"
	gen `type' `name' = `sum' / `n' if `touse'
end

program sd
	args type name n touse missing vars
	tempvar centre sum
	mean double `centre' `n' `touse' "" "`vars'"
	gen double `sum' = 0 if `touse'
	foreach v of local vars {
		replace `sum' = `sum' + (`v' - `centre')^2 if `touse' & !missing(`v')
	}
	gen `type' `name' = sqrt(`sum' / (`n' - 1)) if `touse' & `n' > 1
end

program min
	args type name n touse missing vars
	gen `type' `name' = . if `touse'
	foreach v of local vars {
		replace `name' = min(`name', `v') if `touse'
	}
end

program max
	args type name n touse missing vars
	gen `type' `name' = . if `touse'
	foreach v of local vars {
		replace `name' = max(`name', `v') if `touse'
	}
end

program first
	args type name n touse missing vars
	gen `type' `name' = . if `touse'
	foreach v of local vars {
		replace `name' = `v' if `touse' & missing(`name')
	}
end

program last
	args type name n touse missing vars
	gen `type' `name' = . if `touse'
	foreach v of local vars {
		replace `name' = `v' if `touse' & !missing(`v')
	}
end
