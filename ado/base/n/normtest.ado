*! tests of normality
program normtest, rclass
	version 12.1
	syntax varlist(numeric) [if] [in]
	display as text _newline "Tests of normality: skewness and kurtosis; order statistics W" _newline
	display as text "    Variable {c |}     Obs  P(skew)  P(kurt)   chi2(2)        P        W        P"
	display as text "{hline 13}{c +}{hline 62}"
	foreach v of local varlist {
		tempvar touse
		mark `touse' `if' `in'
		markout `touse' `v'
		return clear
		Moments `v' `touse'
		display as text %12s abbrev("`v'", 12) " {c |}" as result %8.0fc r(N) %9.4f r(p_skew) ///
			%9.4f r(p_kurt) %10.4f r(chi2) %9.4f r(p) _continue
		return add
		Order `v' `touse'
		display as result %9.5f r(W) %9.4f r(p_W)
		return add
		drop `touse'
	}
end

* Normal deviates of skewness (D'Agostino 1970) and kurtosis (Anscombe and Glynn 1983)
program Moments, rclass
	args v touse
	quietly summarize `v' if `touse', detail
	local n = r(N)
	return scalar N = `n'
	if `n' < 8 {
		foreach what in p_skew p_kurt chi2 p {
			return scalar `what' = .
		}
		exit
	}
	local skew = r(skewness)
	local kurt = r(kurtosis)
	local y = `skew' * sqrt((`n' + 1) * (`n' + 3) / (6 * (`n' - 2)))
	local beta = 3 * (`n'^2 + 27 * `n' - 70) * (`n' + 1) * (`n' + 3) / ///
		((`n' - 2) * (`n' + 5) * (`n' + 7) * (`n' + 9))
	local w2 = -1 + sqrt(2 * (`beta' - 1))
	local delta = 1 / sqrt(ln(sqrt(`w2')))
	local alpha = sqrt(2 / (`w2' - 1))
	local z1 = `delta' * ln(`y' / `alpha' + sqrt((`y' / `alpha')^2 + 1))
	local mean = 3 * (`n' - 1) / (`n' + 1)
	local variance = 24 * `n' * (`n' - 2) * (`n' - 3) / ((`n' + 1)^2 * (`n' + 3) * (`n' + 5))
	local x = (`kurt' - `mean') / sqrt(`variance')
	local b = 6 * (`n'^2 - 5 * `n' + 2) / ((`n' + 7) * (`n' + 9)) * ///
		sqrt(6 * (`n' + 3) * (`n' + 5) / (`n' * (`n' - 2) * (`n' - 3)))
	local a = 6 + 8 / `b' * (2 / `b' + sqrt(1 + 4 / `b'^2))
	local root = (1 - 2 / `a') / (1 + `x' * sqrt(2 / (`a' - 4)))
	local z2 = (1 - 2 / (9 * `a') - sign(`root') * abs(`root')^(1 / 3)) / sqrt(2 / (9 * `a'))
	return scalar p_skew = 2 * normal(-abs(`z1'))
	return scalar p_kurt = 2 * normal(-abs(`z2'))
	return scalar chi2 = (`z1')^2 + (`z2')^2
	return scalar p = chi2tail(2, (`z1')^2 + (`z2')^2)
end

* W with the coefficients and the normal approximation of Royston (1995, AS R94)
program Order, rclass
	args v touse
	preserve
	quietly {
		keep if `touse'
		local n = _N
		if `n' < 4 | `n' > 5000 {
			return scalar W = .
			return scalar p_W = .
			exit
		}
		sort `v'
		tempvar m a
		gen double `m' = invnormal((_n - .375) / (`n' + .25))
		gen double `a' = `m'^2
		summarize `a', meanonly
		local mm = r(sum)
		local u = 1 / sqrt(`n')
		local an = -2.706056*`u'^5 + 4.434685*`u'^4 - 2.071190*`u'^3 - .147981*`u'^2 + .221157*`u' + `m'[`n'] / sqrt(`mm')
		if `n' > 5 {
			local an1 = -3.582633*`u'^5 + 5.682633*`u'^4 - 1.752461*`u'^3 - .293762*`u'^2 + .042981*`u' + `m'[`n'-1] / sqrt(`mm')
			local phi = (`mm' - 2*`m'[`n']^2 - 2*`m'[`n'-1]^2) / (1 - 2*`an'^2 - 2*`an1'^2)
		}
		else {
			local an1 = 0
			local phi = (`mm' - 2*`m'[`n']^2) / (1 - 2*`an'^2)
		}
		replace `a' = `m' / sqrt(`phi')
		replace `a' = `an' in l
		replace `a' = -`an' in f
		if `n' > 5 {
			replace `a' = `an1' in `=`n'-1'
			replace `a' = -`an1' in 2
		}
		summarize `v'
		local ss = r(Var) * (`n' - 1)
		replace `a' = `a' * (`v' - r(mean))
		summarize `a', meanonly
		local W = r(sum)^2 / `ss'
	}
	local x = ln(`n')
	if `n' <= 11 {
		local g = -2.273 + .459*`n'
		local mu = .5440 - .39978*`n' + .025054*`n'^2 - .0006714*`n'^3
		local sigma = exp(1.3822 - .77857*`n' + .062767*`n'^2 - .0020322*`n'^3)
		local z = (-ln(`g' - ln(1 - `W')) - `mu') / `sigma'
	}
	else {
		local mu = -1.5861 - .31082*`x' - .083751*`x'^2 + .0038915*`x'^3
		local sigma = exp(-.4803 - .082676*`x' + .0030302*`x'^2)
		local z = (ln(1 - `W') - `mu') / `sigma'
	}
	return scalar W = `W'
	return scalar p_W = normal(-`z')
end
