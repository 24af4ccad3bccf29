* linear regression: tables, weights, robust variances, replay, by
set obs 20
set seed 5
gen x = _n
gen z = rnormal()
gen y = 1 + 2*x - z + rnormal()
gen x2 = 2*x
gen id = int((_n+1)/2)
_regress y x z
_regress y x z x2, beta
_regress y x z, robust
_regress y x z, vce(cluster id)
_regress, level(90) noheader
ereturn list
regress y x z in 1/15 [fw=id], noconstant
regress y x z [aw=id], vce(hc3)
gen q = e(sample)
count if e(sample)
di c(k)
di _b[x] " " _se[z] " " _b[_cons]
matrix list e(V)
describe
capture noisily regress y x z if y > 1000
display _rc " " e(N)
gen g = x > 10
by g, sort: regress y x
regress y x z, absorb(g)
regress y x z if x < 3
capture noisily regress y x, beta vce(cluster id)
quietly regress y x z, hc2
display e(vce) " " _se[x]
regress, eform(Ratio) noheader
regress y x z [pw=id], cluster(id) level(90)
drop _all
display c(k) " " e(N)

* the words of the caller's version
clear
quietly set obs 8
generate a = _n
generate twice = 2 * a
generate out = a^2
version 10: regress out a twice, noheader
version 11: regress out a twice, noheader notable
