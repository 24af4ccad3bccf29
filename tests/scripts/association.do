* correlations, percentiles, tests of tables, analysis of variance
set obs 24
set seed 11
gen a = mod(_n, 3)
gen b = mod(_n*_n, 4) + (a == 2)
gen x = rnormal()
gen y = x + rnormal() + a
gen z = y - x
replace z = . in 3/5
replace y = . in 1
gen s = "q"
correlate x y z
return list
matrix list r(C)
correlate x y, covariance means
correlate x y [fw=a+1]
correlate
capture noisily correlate s
paircorr x y z, obs sig
paircorr x y z, star(.05) bonferroni
_pctile x, percentiles(10 25 50 90)
return list
_pctile x, nq(4) altdef
return list
capture noisily _pctile x, p(0 101)
centiles x y, centile(25 50 75)
tabulate a b, chi2 lrchi2 V gamma taub exact
return list
gen c = x > 0
gen d = a > 0
tabulate c d, chi2 exact V
capture noisily tabulate a, chi2
oneway y a, tabulate bonferroni scheffe sidak
return list
_rmcoll x y z a
return list
gen xx = 2*x
gen one = 4
_rmcoll x xx one y
return list
_rmcoll xx x, noconstant
_rmcoll c x xx, logit asis
return list
capture noisily _rmcoll x y, force expand
capture noisily _rmcoll x y, touse(x)
_rmcoll one
return list
