* regressors that tell an outcome without error
set seed 11
set obs 200
gen byte y = uniform() < .5
gen double z = invnorm(uniform())
gen byte d = y == 1 & mod(_n, 5) == 0
gen byte f = cond(y == 0 & mod(_n, 7) == 0, 3, 9)
gen byte touse = _n > 10
quietly count if d == 1 & touse
local nd = r(N)
quietly count if f == 3 & d == 0 & touse
local nf = r(N)
_rmcoll y d z f, logit touse(touse)
assert "`r(varlist)'" == "z" & r(k_omitted) == 2
quietly count if touse
assert r(N) == 190 - `nd' - `nf'
quietly count if y & touse
local n1 = r(N)
quietly count if !y & touse
local n0 = r(N)
_rmcoll y d z f, logit touse(touse)
assert r(n1) == `n1' & r(n0) == `n0' & abs(r(b0) - ln(`n1'/`n0')) < 1e-12
* the search leaves the sample alone with asis, and an outcome of several values has none
_rmcoll y d z f, logit asis
assert "`r(varlist)'" == "d z f" & r(k_omitted) == 0 & r(n0) + r(n1) == 200
_rmcoll y d z f, mlogit
assert "`r(varlist)'" == "d z f"
* one regressor after the other: e tells only where d does not
gen byte e = d == 1 | (y == 0 & mod(_n, 4) == 0)
_rmcoll y e z d, probit
assert "`r(varlist)'" == "z" & r(k_omitted) == 2
* bounds
gen double w = cond(y, abs(z), -abs(z))
capture noisily _rmcoll y w, logit
assert _rc == 2000
replace w = -w
capture noisily _rmcoll y z w, logit
assert _rc == 2000
replace w = 0 if mod(_n, 3) == 0
_rmcoll y w z, logit
assert "`r(varlist)'" == "z" & r(n0) + r(n1) == 66
gen byte same = y
capture noisily _rmcoll y same, logit
assert _rc == 2000
* one outcome alone is not told by anybody
_rmcoll y d z if y, logit
assert r(n0) == 0 & r(b0) == .
