* fits, tests and summaries by two roads each
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
set seed 29
set obs 80
gen double x = uniform()*10
gen double z = uniform() + x/5
gen double y = 3 - 2*x + 5*z + invnorm(uniform())
gen w = 1 + mod(_n, 4)
gen byte d = mod(_n, 2)
* ---- the normal equations
quietly regress y x z
matrix b = e(b)
matrix V = e(V)
scalar rss = e(rss)
gen double one = 1
foreach v in y x z one {
	foreach u in x z one {
		quietly gen double prod = `v'*`u'
		quietly summarize prod
		local s`v'`u' = r(sum)
		drop prod
	}
}
matrix XX = (`sxx', `sxz', `sxone' \ `szx', `szz', `szone' \ `sonex', `sonez', `soneone')
matrix Xy = (`syx' \ `syz' \ `syone')
matrix slow = inv(XX)*Xy
forvalues i = 1/3 {
	same b[1,`i'] slow[`i',1]
}
gen double e = y - slow[1,1]*x - slow[2,1]*z - slow[3,1]
gen double e2 = e^2
quietly summarize e2
same rss r(sum)
matrix V2 = inv(XX)*(rss/77)
forvalues i = 1/3 {
	forvalues j = 1/3 {
		same V[`i',`j'] V2[`i',`j']
	}
}
same e(rmse) sqrt(rss/77)
quietly summarize y
same e(r2) 1-rss/(r(Var)*79)
same e(F) (r(Var)*79-rss)/2/(rss/77)
same e(ll) -40*(ln(2*_pi)+ln(rss/80)+1)
* ---- predictions
predict double fit
predict double res, residuals
predict double se, stdp
predict double lev, leverage
gen double one2 = fit + res
assert abs(one2 - y) < 1e-9
assert abs(res - e) < 1e-8
quietly summarize res
same r(mean) 0
quietly summarize lev
same r(sum) 3
assert abs(se - sqrt(lev*rss/77)) < 1e-8
* ---- a slope alone is the slope of what others leave (and its t test is an F test)
quietly test x
scalar F = r(F)
same r(F) (_b[x]/_se[x])^2
same r(p) 2*ttail(77,abs(_b[x]/_se[x]))
scalar bx = _b[x]
quietly test x z
same r(F) e(F)
quietly lincom x + z
same r(estimate) _b[x]+_b[z]
same r(se) sqrt(V[1,1]+V[2,2]+2*V[1,2])
quietly regress y z
predict double ry, residuals
quietly regress x z
predict double rx, residuals
quietly regress ry rx, noconstant
same _b[rx] bx
same e(rss) rss
* ---- weights that count are rows repeated
quietly regress y x z [fweight=w]
matrix bw = e(b)
matrix Vw = e(V)
scalar nw = e(N)
quietly summarize x [fweight=w], detail
scalar p25 = r(p25)
scalar p50 = r(p50)
scalar p90 = r(p90)
scalar sk = r(skewness)
scalar mw = r(mean)
scalar vw = r(Var)
preserve
quietly expand w
quietly regress y x z
assert e(N) == nw & _N == nw
forvalues i = 1/3 {
	same bw[1,`i'] _b[`:word `i' of x z _cons']
	same Vw[`i',`i'] _se[`:word `i' of x z _cons']^2
}
quietly summarize x, detail
same p25 r(p25)
same p50 r(p50)
same p90 r(p90)
same sk r(skewness)
same mw r(mean)
same vw r(Var)
restore
* weights of precision may be of any size
quietly regress y x [aweight=w]
scalar b1 = _b[x]
scalar s1 = _se[x]
gen double w2 = w*1000
quietly regress y x [aweight=w2]
same b1 _b[x]
same s1 _se[x]
gen double sw = sqrt(w)
foreach v in y x one {
	gen double s`v' = sw*`v'
}
quietly regress sy sx sone, noconstant
same b1 _b[sx]
same s1 _se[sx]
* ---- two groups: the t test, the regression on a mark, and by hand
quietly ttest y, by(d)
scalar t = r(t)
scalar p = r(p)
quietly regress y d
same abs(t) abs(_b[d]/_se[d])
same p 2*ttail(78,abs(t))
quietly summarize y if d
scalar m1 = r(mean)
scalar v1 = r(Var)
quietly summarize y if !d
same abs(t) abs((m1-r(mean))/sqrt((v1+r(Var))/2*(2/40)))
* ---- ranks
compute double r1 = rank(y)
compute double r2 = rank(x)
quietly regress r1 r2
scalar rho = sign(_b[r2])*sqrt(e(r2))
quietly rankcorr y x
same r(rho) rho
* ---- the sample: if, in and missing values are dropping rows
quietly regress y x z if d & x > 2 in 5/70
scalar bs = _b[z]
scalar ns = e(N)
preserve
quietly keep in 5/70
quietly keep if d & x > 2
quietly regress y x z
same bs _b[z]
assert ns == e(N) & ns == _N
restore
quietly replace z = . in 1/7
quietly regress y x z
assert e(N) == 73
quietly count if e(sample)
assert r(N) == 73
assert !e(sample) in 1/7
* a proportional column is left out and the rest is as before
gen double z3 = 3*z
scalar keepb = _b[x]
quietly regress y x z z3
same keepb _b[x]
assert e(df_m) == 2
* ---- two columns that fit exactly
gen double line = 4 - x/2
quietly regress line x
same _b[x] -.5
same _b[_cons] 4
assert e(rss) < 1e-12
