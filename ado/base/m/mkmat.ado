*! matrices from variables: one a variable, or all of them as columns of one
program mkmat
	version 12.1
	syntax varlist(numeric) [if] [in] [, MATrix(name) NOMISSing ROWNames(varname) ROWPREfix(string)]
	tempvar touse
	mark `touse' `if' `in'
	if "`nomissing'" != "" {
		markout `touse' `varlist'
	}
	quietly count if `touse'
	local n = r(N)
	if `n' == 0 {
		error 2000
		exit 2000
	}
	if `n' > c(matsize) {
		error 908
	}
	local names
	if "`rownames'" != "" {
		forvalues i = 1/`=_N' {
			if `touse'[`i'] {
				local one = `rownames'[`i']
				local names `names' `rowprefix'`one'
			}
		}
	}
	local k : word count `varlist'
	tempname M
	matrix `M' = J(`n', `k', 0)
	local r 0
	forvalues i = 1/`=_N' {
		if `touse'[`i'] {
			local ++r
			local c 0
			foreach v in `varlist' {
				local ++c
				matrix `M'[`r', `c'] = `v'[`i']
			}
		}
	}
	matrix colnames `M' = `varlist'
	if "`names'" != "" {
		matrix rownames `M' = `names'
	}
	if "`matrix'" != "" {
		matrix `matrix' = `M'
		exit
	}
	local c 0
	foreach v in `varlist' {
		local ++c
		matrix `v' = `M'[1..., `c']
	}
end
