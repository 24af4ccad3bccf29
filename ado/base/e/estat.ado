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
		matrix list e(V)
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
