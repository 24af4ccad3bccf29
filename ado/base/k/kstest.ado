*! tests that a sample follows a distribution, or that two samples follow the same
program kstest, rclass
	version 12.1
	syntax anything(equalok id="variable") [if] [in] [, BY(varname)]
	gettoken x rest : anything, parse("=")
	local x = trim("`x'")
	gettoken equal rest : rest, parse("=")
	_unab x : `x'
	confirm numeric variable `x'
	if ("`by'" == "") == (trim(`"`rest'"') == "") {
		display as error "give a distribution, or by(): kstest x = normal((x - 5)/2)"
		exit 198
	}
	tempvar touse
	mark `touse' `if' `in'
	markout `touse' `x'
	if "`by'" == "" {
		One `x' `touse' `"`rest'"'
	}
	else {
		markout `touse' `by', strok
		Two `x' `touse' `by'
	}
	return add
end

program One, rclass
	args x touse distribution
	tempvar f d
	preserve
	quietly {
		keep if `touse'
		if _N == 0 {
			error 2000
		}
		sort `x'
		gen double `f' = `distribution'
		count if missing(`f') | `f' < 0 | `f' > 1
	}
	if r(N) {
		display as error "the distribution must lie between 0 and 1 for every observation"
		exit 459
	}
	local n = _N
	quietly gen double `d' = max(_n / _N - `f', `f' - (_n - 1) / _N)
	quietly summarize `d', meanonly
	display as text _newline "Test of the distribution of `x'"
	Verdict r(max) `n'
	return add
	return scalar N = `n'
end

program Two, rclass
	args x touse by
	_twogroups `by' `touse'
	tempvar first f d
	preserve
	quietly {
		keep if `touse'
		gen byte `first' = `s(is1)'
		count if `first'
		local n1 = r(N)
		local n2 = _N - `n1'
		sort `x'
		gen double `d' = sum(`first') / `n1' - sum(!`first') / `n2'
		* the step functions are compared where all equal values are behind
		by `x': gen byte `f' = _n == _N
		replace `d' = abs(`d')
		summarize `d' if `f', meanonly
	}
	display as text _newline "Test that `x' is distributed alike in both groups of `by'"
	Verdict r(max) `n1' * `n2' / (`n1' + `n2')
	return add
	return scalar N_1 = `n1'
	return scalar N_2 = `n2'
end

* The limiting distribution, with Stephens's (1970) correction for small samples
program Verdict, rclass
	local D = `1'
	macro shift
	local n = `*'
	local t = `D' * (sqrt(`n') + .12 + .11 / sqrt(`n'))
	local p 0
	if `t' < .2 {
		local p .5
	}
	else {
		forvalues k = 1/100 {
			local p = `p' + cond(mod(`k', 2), 1, -1) * exp(-2 * `k'^2 * `t'^2)
		}
	}
	local p = max(0, min(1, 2 * `p'))
	display as text "largest distance D = " as result %8.4f `D' as text "    P = " as result %6.4f `p'
	return scalar D = `D'
	return scalar p = `p'
end
