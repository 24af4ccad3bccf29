* predictions, tests, combinations and sets of estimates
set obs 40
set seed 5
gen x = _n
gen z = rnormal()
gen y = 1 + 2*x - z + rnormal()*x
regress y x z
predict f
predict double r, residuals
predict h, hat
predict rs, rstudent
predict cd, cooksd
predict sp, stdp
predict sf, stdf
predict dfi, dfits
predict cr in 1/10, covratio
summarize f r h rs cd sp sf dfi cr
test x
test x = 2
return list
test (x = 2) (z = -1)
test x z
test x = -z, accumulate
lincom x - 2*z + 1
return list
estat ic
estat vif
estat hetero
estat reset
estimates store full
regress y x
estimates store small
estimates dir
estimates table full small, se stats(N r2 aic) star
estimates restore full
regress
count if e(sample)
describe, short
nlincom _b[x]/_b[z]
testnonlin _b[x]*_b[z] = -2
estat hetero x z, iid
capture test nosuch
di _rc
estimates stats full small
estimates drop full small
capture noisily estimates restore full
capture noisily predict x
display _rc
regress y x z, robust
capture noisily predict h2, hat
test x z
ereturn display, level(90)

* variance inflation about zero: by hand, and with the constant as one regressor more
clear
quietly set obs 30
generate a = _n
generate b = mod(7*_n, 11)
generate y = a + b + mod(_n, 4)
generate one = 1
quietly regress a b, noconstant
local byhand = 1/(1 - e(r2))
quietly regress y a b, noconstant
quietly estat vif
assert reldif(r(vif_1), `byhand') < 1e-12
quietly regress y a b one, noconstant
quietly estat vif
local byhand = r(vif_1)
quietly regress y a b
estat vif, uncentered
assert reldif(r(vif_1), `byhand') < 1e-12
capture noisily estat vif, centred
