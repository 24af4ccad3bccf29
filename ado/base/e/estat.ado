*! statistics after an estimation
program estat, rclass
	version 12.1
	if `"`e(cmd)'"' == "" {
		error 301
	}
	gettoken what rest : 0, parse(" ,")
	local l = length("`what'")
	if "`what'" == "ic" {
		Ic `rest'
		return add
	}
	else if "`what'" == substr("vce", 1, max(3, `l')) {
		Vce `rest'
		return add
	}
	else if "`what'" == substr("summarize", 1, max(2, `l')) {
		Summ `rest'
		return add
	}
	else if "`e(estat_cmd)'" != "" {
		`e(estat_cmd)' `0'
		return add
	}
	else {
		display as error "estat `what' not valid"
		exit 321
	}
end

* Akaike's and the Bayesian information criterion
program Ic, rclass
	syntax [, n(real -1)]
	if e(ll) >= . {
		display as error "likelihood information not found in last estimation results"
		exit 321
	}
	local N = cond(`n' > 0, `n', e(N))
	local k = e(rank)
	tempname S aic bic
	scalar `aic' = -2*e(ll) + 2*`k'
	scalar `bic' = -2*e(ll) + ln(`N')*`k'
	display ""
	display as text "{hline 13}{c TT}{hline 63}"
	display as text "       Model {c |}    Obs    ll(null)   ll(model)     df          AIC         BIC"
	display as text "{hline 13}{c +}{hline 63}"
	display as text %12s "." " {c |}" as result %7.0f `N' "  " %10.0g e(ll_0) "  " %10.0g e(ll) %7.0f `k' "   " %10.0g `aic' "  " %10.0g `bic'
	display as text "{hline 13}{c BT}{hline 63}"
	matrix `S' = (`N', e(ll_0), e(ll), `k', `aic', `bic')
	matrix rownames `S' = .
	matrix colnames `S' = N ll0 ll df AIC BIC
	return matrix S = `S'
end

* The covariances of the coefficients, or their correlations.
program Vce, rclass
	syntax [, Correlation FORmat(string)]
	tempname V
	matrix `V' = e(V)
	local what Covariance
	if "`correlation'" != "" {
		local what Correlation
		* what was left out has no variance to divide by
		local k = rowsof(`V')
		tempname C
		matrix `C' = J(`k', `k', 0)
		forvalues i = 1/`k' {
			forvalues j = 1/`k' {
				if `V'[`i', `i'] > 0 & `V'[`j', `j'] > 0 {
					matrix `C'[`i', `j'] = `V'[`i', `j']/sqrt(`V'[`i', `i']*`V'[`j', `j'])
				}
			}
		}
		local names : colfullnames `V'
		matrix rownames `C' = `names'
		matrix colnames `C' = `names'
		matrix `V' = `C'
	}
	if "`format'" == "" {
		local format = cond("`correlation'" != "", "%8.4f", "%10.0g")
	}
	display ""
	display as text "`what' matrix of coefficients of `e(cmd)' model"
	matrix list `V', noheader format(`format')
	return matrix V = `V'
end

* The variables of the model over the sample it was fitted to.
program Summ, rclass
	local names : colnames e(b)
	local names `e(depvar)' `names'
	foreach x in `names' {
		capture confirm numeric variable `x'
		if _rc == 0 {
			local list : list list | x
		}
	}
	if "`e(wtype)'" != "" & "`e(wtype)'" != "pweight" {
		local w [`e(wtype)'`e(wexp)']
	}
	display ""
	display as text "  Estimation sample of `e(cmd)'" _column(45) "Number of obs = " as result %9.0fc e(N)
	summarize `list' if e(sample) `w'
end
