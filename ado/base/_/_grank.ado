*! ranks within groups
program _grank
	version 12.1
	syntax newvarname =/exp [if] [in] [, BY(varlist) FIELD TRACK UNIQUE]
	if `: word count `field' `track' `unique'' > 1 {
		display as error "only one of field, track and unique may be given"
		exit 198
	}
	tempvar touse x n
	quietly {
		mark `touse' `if' `in'
		gen double `x' = `exp' if `touse'
		if "`field'" != "" {
			replace `x' = -`x'
		}
		replace `touse' = 0 if missing(`x')
		sort `touse' `by' `x', stable
		by `touse' `by': gen `typlist' `varlist' = _n if `touse'
		if "`unique'" == "" {
			local last = cond("`field'`track'" == "", "_N", "1")
			by `touse' `by' `x': replace `varlist' = (`varlist'[1] + `varlist'[`last']) / 2 if _n == 1
			by `touse' `by' `x': replace `varlist' = `varlist'[1]
		}
	}
end
