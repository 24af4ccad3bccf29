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

