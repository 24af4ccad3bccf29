*! keep a random sample
program sample, byable(onecall)
	version 12.1
	local prefix `_byvars'
	gettoken size 0 : 0, parse(" ,")
	syntax [if] [in] [, COUNT BY(varlist)]
	confirm number `size'
	if `size' < 0 | (`size' > 100 & "`count'" == "") {
		display as error "the size is a percentage between 0 and 100, or a number with the option count"
		exit 198
	}
	local by `prefix' `by'
	tempvar touse u
	quietly {
		mark `touse' `if' `in'
		gen double `u' = runiform()
		sort `touse' `by' `u'
		local least = cond("`count'" == "", "round(_N * `size' / 100)", "`size'")
		by `touse' `by': replace `touse' = _n > `least' if `touse'
		count if `touse'
		local n = r(N)
		drop if `touse'
	}
	display as text "(`n' observation" cond(`n' == 1, "", "s") " deleted)"
end
