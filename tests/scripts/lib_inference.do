* confint, centiles, proptest, signedrank, ranktest, mkmat: figures worked out by other means
set obs 10
gen byte id = _n
gen byte b = _n <= 3
gen byte none = 0 if _n <= 8
gen byte every = 1 in 1/5
gen x = _n
gen byte k = 9 in 1
confint b, binomial
assert r(N) == 10 & reldif(r(lb), .06673951117773447) < 1e-12 & reldif(r(ub), .6524528500599973) < 1e-12
confint none, binomial level(90)
assert r(N) == 8 & r(lb) == 0 & reldif(r(ub), .3123439780663677) < 1e-12 & r(level) == 90
confint every, binomial
assert reldif(r(lb), .4781762498950185) < 1e-12 & r(ub) == 1
confint b, wilson
assert reldif(r(lb), .10779126740630099) < 1e-12 & reldif(r(ub), .6032218525388546) < 1e-12
confint b, agresti
assert reldif(r(lb), .10333841792242532) < 1e-12 & reldif(r(ub), .6076747020227304) < 1e-12
confint k, poisson
assert r(mean) == 9 & reldif(r(lb), 4.115373097378329) < 1e-12 & reldif(r(ub), 17.08480345141917) < 1e-12
confint none in 1, poisson
assert r(lb) == 0 & reldif(r(ub), 3.6888794541139367) < 1e-12
confint k, poisson exposure(x)
assert r(mean) == 9
* 1 to 5: mean 3, squares 10 over 4, t(4) .975 is 2.7764451051977987
confint x in 1/5
assert r(mean) == 3 & reldif(r(se), sqrt(.5)) < 1e-14 & reldif(r(ub), 3 + 2.7764451051977987 * sqrt(.5)) < 1e-12
foreach row in "x, binomial=450" "x if id > 10=2000" "x, level(5)=198" "nosuch=111" "none if id > 8, poisson=2000" {
	local rc = substr("`row'", strpos("`row'", "=") + 1, .)
	capture confint `=substr("`row'", 1, strpos("`row'", "=") - 1)'
	assert _rc == `rc' & id == _n
}

* of 1 to 10 the median is 5.5, the place of 25 percent 11/4, of 90 percent 9.9, of 99 the last
centiles x, centile(25 50 90 99)
assert r(N) == 10 & r(n_cent) == 4
assert r(c_1) == 2.75 & r(c_2) == 5.5 & reldif(r(c_3), 9.9) < 1e-14 & r(c_4) == 10
* the binomial at one half: P(X<=1) is 11/1024, P(X<=2) is 56/1024, so 2 and 9 enclose
centiles x, cci
assert r(lb_1) == 2 & r(ub_1) == 9
assert id == _n & _N == 10

* 3 of 10 against .5: -.2 over sqrt(.025)
proptest b == .5
assert reldif(r(z), -.2 / sqrt(.025)) < 1e-14 & r(P_1) == .3 & r(N_1) == 10
gen byte half = id > 5
proptest b, by(half)
* 3/5 against 0/5, pooled .3
assert reldif(r(z), .6 / sqrt(.3 * .7 * .4)) < 1e-12 & r(N_2) == 5
foreach row in "x == .5=450" "b=198" "b if id > 10 == .5=2000" {
	local rc = substr("`row'", -3, 3)
	capture proptest `=substr("`row'", 1, length("`row'") - 4)'
	assert _rc != 0
}

* differences -1 -1 0 3 4: ranks 2.5 2.5 1 4 5 of the sizes
gen d = real(word("-1 -1 0 3 4", _n))
signedrank d == 0
assert r(plus) == 9 & r(minus) == 5 & r(N) == 5 & r(N_pos) == 2 & r(N_neg) == 2 & r(N_0) == 1
* expected (15 - 1) / 2; squares 6.25 6.25 16 25 over 4
assert r(Var_a) == 53.5 / 4 & reldif(r(z), 2 / sqrt(13.375)) < 1e-14 & r(p_sign) == 1
signedrank x == 0 in 1/4
assert r(plus) == 10 & r(minus) == 0 & r(N_neg) == 0 & r(p_sign) == .125
signedrank x == x
assert r(plus) == 0 & r(minus) == 0 & r(N_0) == 10
capture signedrank x == 0 if id > 10
assert _rc == 2000
* 1 2 3 against 4 5: rank sums 6 and 9, expected 9 and 6, variance 3
gen byte grp = 1 + (id > 3) if id <= 5
ranktest x, by(grp)
assert r(sum_1) == 6 & r(sum_2) == 9 & r(porder) == 0 & reldif(r(z), -sqrt(3)) < 1e-14 & r(N) == 5
gen byte three = ceil(id / 2) if id <= 6
gen str1 t3 = char(96 + three)
* sums 3 7 11: 12/42 (9 + 49 + 121)/2 - 21
ranktest x, by(three)
assert reldif(r(chi2), 12 / 42 * 179 / 2 - 21) < 1e-12 & r(df) == 2 & reldif(r(chi2_adj), r(chi2)) < 1e-12
ranktest x if id <= 6, by(t3)
assert reldif(r(chi2), 12 / 42 * 179 / 2 - 21) < 1e-12
capture ranktest x if id <= 2, by(three)
assert _rc == 420
assert id == _n & _N == 10

mkmat x d in 1/6, matrix(M) nomissing rownames(id) rowprefix(r)
assert rowsof(M) == 5 & colsof(M) == 2 & M[4, 2] == 3 & M[5, 1] == 5
local rows : rownames M
assert "`rows'" == "r1 r2 r3 r4 r5"
capture mkmat x if id > 10
assert _rc == 2000
local c = c(k)
gen m2 = 0
capture svmat M, names(m)
assert _rc == 110 & c(k) == `c' + 1
svmat double M, names(y)
assert y1 == cond(id <= 5, x, .) & y2 == d
* a frequency weight is so many rows, in every kind of interval and in quantile groups
clear
set obs 40
gen x = mod(_n * 17, 41)
gen byte b = mod(_n, 3) == 0
gen w = 1 + mod(_n, 4)
gen id = _n
foreach how in "x" "b, binomial" "b, wilson" "x, poisson" {
	gettoken v opts : how, parse(",")
	quietly confint `v' [fw=w] `opts'
	local lb = r(lb)
	local ub = r(ub)
	local n = r(N)
	preserve
	quietly expand w
	quietly confint `v' `opts'
	assert reldif(r(lb), `lb') < 1e-12 & reldif(r(ub), `ub') < 1e-12 & r(N) == `n'
	restore
}
capture confint b [aw=w], binomial
assert _rc == 101
replace x = 1.5 in 1
capture confint x, poisson
assert _rc == 459
capture confint x, level(5)
assert _rc == 198
quantiles weighted = x [fw=w], groups(5)
quantiles within = x [fw=w], groups(5) by(b)
quietly expand w
quantiles whole = x, groups(5)
quantiles inb = x, groups(5) by(b)
quantiles first = x if b, groups(5)
assert whole == weighted & inb == within & (first == inb | !b)
capture quantiles more = x [fw=w], groups(3) cutpoints(x)
assert _rc == 198
