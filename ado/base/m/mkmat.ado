*! matrices from variables: one a variable, or all of them as columns of one
program mkmat
	version 12.1
	syntax varlist(numeric) [if] [in] [, MATrix(name) NOMISSing ROWNames(varname) ///
		ROWEq(varname) ROWPREfix(string) OBS NCHar(integer 32)]
	if `nchar' < 1 | `nchar' > 32 {
		display as error "nchar() must be between 1 and 32"
		exit 198
	}
	if "`obs'" != "" & "`rownames'" != "" {
		display as error "options obs and rownames() may not be combined"
		exit 198
	}
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
	local eqs
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
			if "`rownames'" != "" {
				local one = `rownames'[`i']
			}
			else if "`obs'" != "" {
				local one `i'
			}
			else {
				local one `r'
			}
			local one = substr(subinstr(subinstr("`rowprefix'`one'", " ", "_", .), ".", "_", .), 1, `nchar')
			local names `names' `one'
			if "`roweq'" != "" {
				local eq = `roweq'[`i']
				local eq = substr(subinstr(subinstr("`eq'", " ", "_", .), ".", "_", .), 1, `nchar')
				local eqs `eqs' `eq'
			}
		}
	}
	matrix colnames `M' = `varlist'
	if "`rownames'`obs'`rowprefix'" != "" {
		matrix rownames `M' = `names'
	}
	if "`eqs'" != "" {
		matrix roweq `M' = `eqs'
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
