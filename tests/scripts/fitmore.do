* after a fit: every figure by a second road
program same
	args a b tolerance
	if "`tolerance'" == "" {
		local tolerance 1e-8
	}
	if !(abs((`a') - (`b')) <= `tolerance'*max(1, abs(`b'))) {
		display as error `a' " is not " `b'
		exit 9
	}
end
set seed 31
set obs 50
gen double x = uniform()*4
gen double z = invnorm(uniform()) + x/3
gen double y = 1 + x - 2*z + 2*invnorm(uniform())
gen byte g = 1 + mod(_n, 5)
* ---- too few observations
capture noisily regress y x in 1
assert _rc == 2001
quietly regress y x in 1 [fw=3]
assert e(N) == 3 & e(rss) == 0
* ---- parts of the swept products as matrices, and pivots by size
quietly regress y x z, optsweep bmat rssmat
matrix B = e(bmat)
matrix R = e(rssmat)
matrix b = e(b)
matrix b = b'
assert mreldif(B, b) == 0 & rowsof(B) == 3 & R[1,1] == e(rss)
local rows : rownames B
assert "`rows'" == "x z _cons"
* ---- the products before the sweep, and the inverse after it
quietly regress y x z [aw=g], AnovaExtras
matrix L = e(L)
matrix H = e(H)
matrix V = e(V)
matrix accum A = y x z [aw=g]
assert mreldif(L, A) < 1e-12
matrix X = A["x"...,"x"...]
matrix X = syminv(X)
matrix V = V/e(rmse)^2
matrix I = H[2...,2...]
assert mreldif(X, I) < 1e-10
assert mreldif(V, I) < 1e-10
same H[1,1] e(rss)
same H[1,3] _b[z]
quietly regress y x z, noconstant AnovaExtras
matrix L = e(L)
matrix accum A = y x z, noconstant
assert mreldif(L, A) < 1e-12
* ---- an observation left out moves a coefficient by its dfbeta
quietly regress y x z
predict double df, dfbeta(z)
scalar all = _b[z]
scalar unit = _se[z]/e(rmse)
foreach i in 1 17 50 {
	quietly regress y x z if _n != `i'
	same df[`i'] (all-_b[z])/(unit*e(rmse))
}
* ---- intervals: the mean within, by Simpson's rule over the density
quietly regress y x z
predict double fit
predict double inside, pr(-1,2)
predict double mean, e(-1,2)
predict double cut, ystar(-1,2)
predict double below, pr(.,fit)
predict double low, e(.,fit)
predict double s, scores
predict double r, residuals
assert s == r
same below[7] .5
same low[7] fit[7]-e(rmse)*sqrt(2/_pi)
scalar sump = 0
scalar summ = 0
forvalues i = 0/400 {
	local t = -1 + `i'*3/400
	local w = cond(inlist(`i', 0, 400), 1, cond(mod(`i', 2), 4, 2))*3/1200
	scalar sump = sump + `w'*normalden(`t', fit[3], e(rmse))
	scalar summ = summ + `w'*`t'*normalden(`t', fit[3], e(rmse))
}
same inside[3] sump
same mean[3] summ/sump
same cut[3] summ-normal((-1-fit[3])/e(rmse))+2*normal(-(2-fit[3])/e(rmse))
capture noisily predict double no, pr(1)
capture noisily predict double no, pr(0,1) stdp
capture noisily predict double no, dfbeta(nosuch)
* ---- scores of a matrix are predictions
matrix b = e(b)
matrix score double fit2 = b
assert reldif(fit, fit2) < 1e-14
matrix score fit2 = b in 1/3, replace missval(5)
matrix coleq b = one one two
matrix score double last = b if g > 1, equation(#2)
assert last == _b[_cons] if g > 1
assert missing(last) if g == 1
capture noisily matrix score no = b, equation(three)
capture noisily matrix score fit2 = b
* ---- linear hypotheses put as nonlinear ones
quietly test (x = 1) (z = -2) (_cons = 1)
scalar F = r(F)
quietly testnonlin (_b[x] = 1) (_b[z] = -2) (_b[_cons] = 1) (2*_b[x] = 2) (3*_b[z] = -6) (-_b[x] = -1)
same r(F) F 1e-6
same r(df) 3
quietly testnonlin _b[x] = 1 = _b[_cons]
same r(df) 2
quietly lincom x + 2*z
scalar est = r(estimate)
scalar se = r(se)
nlincom (sum: _b[x]+2*_b[z]) (ratio: _b[x]/_b[z]), post
same _b[sum] est
same _se[sum] se 1e-6
ereturn display, first
* ---- each hypothesis on its own; whole equations
quietly regress y x z g
test x z g, mtest(holm)
matrix M = r(mtest)
quietly test x
scalar p1 = r(p)
quietly test z
scalar p2 = r(p)
quietly test g
scalar p3 = r(p)
* p2 < p1 < p3 here
assert p2 < p1 & p1 < p3
same M[2,3] 3*p2
same M[1,3] max(3*p2,2*p1)
same M[3,3] max(2*p1,p3)
quietly test x z g, mtest(sidak)
matrix M = r(mtest)
same M[1,3] 1-(1-p1)^3
capture noisily test x, mtest(tukey)
capture noisily test (x = 12
assert _rc == 198
matrix b = (1, 2, 3, 4)
matrix V = diag((1, 1, 4, 1))
matrix colnames b = a:x a:_cons b:x b:_cons
matrix colnames V = a:x a:_cons b:x b:_cons
matrix rownames V = a:x a:_cons b:x b:_cons
program two, eclass
	ereturn post b V
	ereturn local cmd two
end
two
test [a=b]
same r(chi2) 4/5
test [a]: x _cons, mtest
same r(chi2) 5
capture noisily test [c]
capture noisily test [a]: q
* ---- what is decomposed may be any expression, and its result its operand
matrix A = (2,1\1,2)
matrix symeigen X L = 3*A
same L[1,1] 9
matrix symeigen A L = A
same L[1,2] 1
same abs(A[1,1]) sqrt(.5)
capture noisily matrix list A, format(%5s)
* ---- absorbed groups and the same with indicators
quietly tabulate g, generate(gg)
quietly regress y x z gg2-gg5 [aw=x]
predict double full
predict double left, residuals
quietly regress y x z [aw=x], absorb(g)
predict double eff, d
predict double both, xbd
predict double own, residuals
predict double mixed, dresiduals
assert reldif(both, full) < 1e-10
assert abs(own - left) < 1e-10
assert reldif(mixed, own + eff) < 1e-12
assert reldif(both, eff + _b[x]*x + _b[z]*z + _b[_cons]) < 1e-12
quietly summarize eff [aw=x]
same r(mean) 0
capture noisily predict double lev, hat
quietly regress y x z
capture noisily predict double eff2, d
* ---- instruments: the two stages by hand
gen double u = invnorm(uniform())
gen double w = z + u + invnorm(uniform())
gen double v = x + 2*w + 2*u
quietly regress v x w (z x g) [aw=g]
scalar bhat = _b[w]
scalar sehat = _se[w]
scalar c0 = _b[_cons]
scalar sigma = e(rmse)
gen double ivres2 = (v - _b[x]*x - _b[w]*w - _b[_cons])^2
quietly summarize ivres2 [aw=g]
same sigma sqrt(r(mean)*50/47)
assert "`e(instd)'" == "w" & e(r2) < .
quietly regress w x z g [aw=g]
predict double what
quietly regress v x what [aw=g]
same bhat _b[what]
same c0 _b[_cons]
same sehat _se[what]*sigma/e(rmse)
* one instrument: a ratio of covariances; own clusters: robust but for the factor
quietly correlate v z, covariance
scalar covar = r(cov_12)
quietly correlate w z, covariance
quietly regress v w (z), robust
same _b[w] covar/r(cov_12)
scalar sehat = _se[w]
gen id = _n
quietly regress v w (z), cluster(id)
same _se[w] sehat
quietly regress w z
predict double wz
quietly regress v w (z)
gen double part = (v - _b[w]*w - _b[_cons])^2*(wz - 0)^2
quietly summarize wz
replace part = (v - _b[w]*w - _b[_cons])^2*(wz - r(mean))^2
scalar ss = r(Var)*49
quietly summarize part
same sehat sqrt(50/48*r(sum))/ss
regress v w x (z x), noheader
capture noisily regress v w x (x)
capture noisily regress v w (z), hc2
capture noisily regress v w (z
quietly regress v w x (w x)
scalar Fols = e(F)
quietly regress v w x
same Fols e(F)
* ---- what is stored comes back in its order, and a replay leaves the line as it was
quietly regress y x z
regress, noheader cformat(%8.3f) pformat(%6.4f) sformat(%7.3f)
regress, noheader means
capture noisily regress, cformat(%12.3f)
local names : e(scalars)
estimates store A, title(two regressors)
quietly regress y x
estimates store B
estimates dir
estimates restore A
local again : e(scalars)
assert "`names'" == "`again'"
estimates query
estimates describe B
estimates table *, keep(x) eform b(%6.3f)
estimates stats A
matrix S = r(S)
same S[1,5] -2*e(ll)+6
estimates replay B, noheader
assert e(cmdline) == "regress y x z"
capture noisily estimates drop nosuch
estat vce, correlation
matrix C = r(V)
matrix V = e(V)
same C[2,1] V[2,1]/sqrt(V[1,1]*V[2,2])
* ---- names of rows
mkmat x in 3/4, matrix(M) obs rowprefix(id) roweq(g)
matrix list M, noblank format(%6.3f)
matrix rownames M = e:
matrix list M, noheader nodotz format(%6.3f)
display %24.17g 1/3 %20.16g .1 %24.17g .1
program says, rclass
	return scalar replay = replay()
end
says
assert r(replay) == 1
says x
assert r(replay) == 0
says, level(90)
assert r(replay) == 1
