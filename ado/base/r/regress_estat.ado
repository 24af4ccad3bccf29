*! statistics after regress: vif, hetero, reset
program regress_estat, rclass
	version 12.1
	gettoken what rest : 0, parse(" ,")
	local l = length("`what'")
	if "`what'" == "vif" {
		Vif `rest'
	}
	else if "`what'" == substr("hetero", 1, max(3, `l')) {
		Hetero `rest'
	}
	else if "`what'" == substr("reset", 1, max(3, `l')) {
		Reset `rest'
	}
	else {
		display as error "estat `what' not valid"
		exit 321
	}
	return add
end

* The regressors that were not left out.
program Regressors, sclass
	local names : colnames e(b)
	foreach x in `names' {
		if "`x'" != "_cons" {
			if _se[`x'] > 0 {
				local keep `keep' `x'
			}
		}
	}
	sreturn local names `keep'
end

* Variance inflation: 1/(1 - R2) of each regressor on the others. Without a constant in the
* model R2 is the one about zero; uncentered asks for that, the constant one regressor more.
program Vif, rclass
	syntax [, Uncentered]
	Regressors
	local all : colnames e(b)
	local cons _cons
	local cons : list all & cons
	local names `s(names)'
	local n : word count `names'
	if `n' == 0 {
		exit
	}
	tempvar touse
	tempname v hold
	quietly gen byte `touse' = e(sample)
	if "`e(wtype)'" != "" {
		local w [`e(wtype)'`e(wexp)']
	}
	* levels and products become variables for as long as this runs
	fvrevar `names'
	local vars `r(varlist)'
	if "`cons'" == "" {
		local about noconstant
	}
	else if "`uncentered'" != "" {
		local about noconstant
		tempvar one
		quietly gen byte `one' = 1
		local vars `vars' `one'
		local names `names' _cons
		local ++n
	}
	_estimates hold `hold', restore
	matrix `v' = J(1, `n', .)
	forvalues i = 1/`n' {
		local x : word `i' of `vars'
		local others : list vars - x
		local r2 0
		if "`others'`about'" != "noconstant" {
			quietly _regress `x' `others' if `touse' `w', `about'
			local r2 = e(r2)
		}
		matrix `v'[1, `i'] = 1/(1 - `r2')
		local total = 0`total' + `v'[1, `i']
	}
	display ""
	display as text "    Variable {c |}       VIF       1/VIF"
	display as text "{hline 13}{c +}{hline 22}"
	* the largest first
	forvalues pass = 1/`n' {
		local best 0
		forvalues i = 1/`n' {
			if "`done`i''" == "" {
				if `best' == 0 {
					local best `i'
				}
				else if `v'[1, `i'] > `v'[1, `best'] {
					local best `i'
				}
			}
		}
		local done`best' 1
		local x : word `best' of `names'
		display as text %12s abbrev("`x'", 12) " {c |}" as result %10.2f `v'[1, `best'] %12.6f 1/`v'[1, `best']
		return local name_`pass' `x'
		return scalar vif_`pass' = `v'[1, `best']
	}
	display as text "{hline 13}{c +}{hline 22}"
	display as text "    Mean VIF {c |}" as result %10.2f `total'/`n'
end

* Breusch and Pagan (1979), Cook and Weisberg (1983): squared residuals on the fitted values or on variables.
program Hetero, rclass
	syntax [varlist(default=none)] [, Rhs IID FSTAT Normal]
	tempvar touse res fit
	tempname hold
	quietly {
		gen byte `touse' = e(sample)
		_predict double `res' if `touse', residuals
		_predict double `fit' if `touse', xb
		local s2 = e(rss)/e(N)
		if "`rhs'" != "" {
			Regressors
			local varlist `varlist' `s(names)'
		}
		local shown fitted values of `e(depvar)'
		if "`varlist'" != "" {
			local shown `varlist'
		}
		else {
			local varlist `fit'
		}
		replace `res' = `res'^2/`s2' if `touse'
		_estimates hold `hold', restore
		_regress `res' `varlist' if `touse'
	}
	return scalar df = e(df_m)
	display ""
	display as text "Breusch-Pagan / Cook-Weisberg test for heteroskedasticity"
	display as text "         Ho: Constant variance"
	display as text "         Variables: `shown'"
	display ""
	if "`fstat'" != "" {
		return scalar df_r = e(df_r)
		return scalar F = e(F)
		return scalar p = Ftail(e(df_m), e(df_r), e(F))
		display as text %15s "F(`e(df_m)' , `e(df_r)')" "  =" as result %9.2f e(F)
		display as text %15s "Prob > F" "  =" as result %9.4f return(p)
	}
	else {
		return scalar chi2 = cond("`iid'" != "", e(N)*e(r2), e(mss)/2)
		return scalar p = chi2tail(e(df_m), return(chi2))
		display as text %15s "chi2(`e(df_m)')" "  =" as result %9.2f return(chi2)
		display as text %15s "Prob > chi2" "  =" as result %9.4f return(p)
	}
end

* Ramsey (1969): powers 2 to 4 of the fitted values, or of the regressors, added to the model.
program Reset, rclass
	syntax [, Rhs]
	tempvar touse fit
	tempname hold rss dfr
	Regressors
	local names `s(names)'
	local y `e(depvar)'
	scalar `rss' = e(rss)
	scalar `dfr' = e(df_r)
	quietly {
		gen byte `touse' = e(sample)
		_predict double `fit' if `touse', xb
		local base `fit'
		local shown fitted values of `y'
		if "`rhs'" != "" {
			local base `names'
			local shown independent variables
		}
		foreach x in `base' {
			* in units between 0 and 1, or the powers would all look alike
			summarize `x' if `touse', meanonly
			local lo = r(min)
			local hi = r(max)
			forvalues p = 2/4 {
				tempvar z
				gen double `z' = ((`x' - `lo')/(`hi' - `lo'))^`p' if `touse'
				local powers `powers' `z'
			}
		}
		if "`e(wtype)'" != "" {
			local w [`e(wtype)'`e(wexp)']
		}
		_estimates hold `hold', restore
		_regress `y' `names' `powers' if `touse' `w'
	}
	return scalar df = `dfr' - e(df_r)
	return scalar df_r = e(df_r)
	return scalar F = ((`rss' - e(rss))/return(df))/(e(rss)/e(df_r))
	return scalar p = Ftail(return(df), e(df_r), return(F))
	local d1 = return(df)
	display ""
	display as text "Ramsey RESET test using powers of the `shown'"
	display as text "       Ho:  model has no omitted variables"
	display as text %25s "F(`d1', `e(df_r)')" " =" as result %10.2f return(F)
	display as text %25s "Prob > F" " =" as result %10.4f return(p)
end
