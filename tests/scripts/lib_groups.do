* compute, quantiles, aggregate and tally: groups with missing values, if, weights, and refusals
set obs 10
gen byte id = _n
gen byte g = 1 + (_n > 4) + (_n > 9)
gen double x = real(word("4 . 2 6 1 3 3 .a 5 .", _n))
gen str1 s = word("a a b b c c c d d e", _n)
* group 1 holds 2 4 6, group 2 holds 1 3 3 5, group 3 nothing
compute n = count(x), by(g)
compute m = mean(x), by(g)
compute t = total(x), by(g)
compute tm = total(x), by(g) missing
compute sd = sd(x), by(g)
compute lo = min(x), by(g)
compute hi = max(x), by(g)
compute md = median(x), by(g)
compute mo = mode(x), by(g)
compute q = pctile(x), by(g) p(30)
compute iq = iqr(x), by(g)
foreach row in "n 3 4 0" "m 4 3 ." "t 12 12 0" "tm 12 12 ." "lo 2 1 ." "hi 6 5 ." "md 4 3 ." "mo . 3 ." ///
	"q 2 3 ." "iq 4 2 ." {
	gettoken v want : row
	assert `v' == real(word("`want'", g))
}
* deviations 0 -2 2 and -2 0 0 2: squares 8 over 2 and over 3
assert sd == cond(g == 1, 2, cond(g == 2, float(sqrt(8 / 3)), .))
assert id == _n
drop n-iq
* missing values are large; if leaves the others missing and out of the figures; in an expression; a type of one's own
compute m = mean(x^2) if x > 2, by(g)
assert m == cond(inlist(id, 1, 2, 4), 26, .) if g == 1
compute m2 = total(x * (s == "c"))
assert m2 == 7
compute double d = mean(x) in 3/7
assert d == cond(inrange(id, 3, 7), 3, .)
compute c = count(s) if s != "c", by(g)
assert c == cond(s == "c", ., cond(g == 1, 4, cond(g == 2, 2, 1)))
sort g, stable
by g: compute r = rank(x)
assert r == real(word("2 . 1 3 1 2.5 2.5 . 4 .", _n))
compute f = rank(x), field
* 6 is first, 5 second, 4 third, then two times 3
assert f == real(word("3 . 6 1 7 4 4 . 2 .", _n))
compute u = rank(x), track
assert u == real(word("5 . 2 7 1 3 3 . 6 .", _n))
drop m-u
compute z = std(x), by(g)
assert z == real(word("0 . -1 1", id)) if g == 1
compute k = group(g s), missing
assert k == real(word("1 1 2 2 3 3 3 4 4 5", _n))
compute kx = group(x) if g < 3
assert kx == real(word("4 . 2 6 1 3 3 . 5 .", _n))
compute tg = tag(s g)
assert tg == inlist(id, 1, 3, 5, 8, 10)
compute sq = seq(), from(2) to(4) by(g)
assert sq == real(word("2 3 4 2 2 3 4 2 3 2", _n))
compute ct = cut(x), at(1 3 5)
assert ct == real(word("3 . 1 . 1 3 3 . . .", _n))
gen y = 10 if mod(id, 2)
compute ra = rowtotal(x y)
compute rb = rowtotal(x y), missing
compute rc = rowmean(x y) if g == 1
compute rd = rowfirst(y x)
compute re = rowlast(x y)
compute rf = rowmiss(x y s)
compute rg = rowsd(x y)
foreach row in "ra 14 0 12 6 11 3 13 0 15 0" "rb 14 . 12 6 11 3 13 . 15 ." "rc 7 . 6 6 . . . . . ." ///
	"rd 10 . 10 6 10 3 10 .a 10 ." "re 10 . 10 6 10 3 10 . 10 ." "rf 0 2 0 1 0 1 0 2 0 2" {
	gettoken v want : row
	assert `v' == real(word("`want'", id)) | missing(`v') & missing(real(word("`want'", id)))
}
assert reldif(rg, abs(x - 10) / sqrt(2)) < 1e-6 if x < . & y < .
assert rg == . if x >= . | y >= .
* refused, with the data as they were
local k = c(k)
foreach row in "q = nosuch(x)=133" "q = mean(s)=109" "q = rowmax(x s)=007" "q = group(g), by(s)=190" ///
	"q = pctile(x), p(100)=198" "q = cut(x), at(3 2)=124" "x = mean(x)=110" "q = total(nosuch)=111" "q=198" {
	local rc = substr(`"`row'"', -3, 3)
	capture compute `=substr(`"`row'"', 1, length(`"`row'"') - 4)'
	assert _rc == `rc' & c(k) == `k' & id == _n
}

quantiles h = x if g < 3, groups(2)
* 1 2 3 3 4 5 6: the middle one is 3
assert h == cond(x >= . | g == 3, ., 1 + (x > 3))
assert r(groups) == 2
gen float cuts = real(word("2 4.1", _n))
gen float e = x + .1
quantiles hc = e, cutpoints(cuts)
* 4.1 as a cut point and 4.1 as a value are one number
assert hc == cond(missing(x), ., 1 + (x > 1.9) + (x > 4)) & id == _n
capture quantiles h = x
assert _rc == 110
capture quantiles h2 = x, groups(1)
assert _rc == 198

* weights: what stands for n rows gives what n rows give, also where all values are missing
clear
set obs 7
gen byte g = 1 + (_n > 3) + (_n > 6)
gen double x = real(word("1 5 . 2 2 8 .", _n))
gen byte w = real(word("2 1 4 1 2 1 3", _n))
label define gl 1 "first"
label values g gl
tempfile all
quietly save `all'
aggregate (mean) m=x (total) t=x (count) n=x (sd) s=x (median) d=x (min) lo=x [fweight=w], by(g)
assert _N == 3 & g == _n & "`: value label g'" == "gl"
* 1 1 5; 2 2 2 8
assert reldif(m, real(word("2.333333333333333 3.5 .", _n))) < 1e-14 in 1/2
assert m == . & n == 0 & s == . & d == . & lo == . & t == 0 in 3
assert t == 7 & n == 3 & d == 1 in 1
assert t == 14 & n == 4 & d == 2 & s == 3 in 2
use `all', clear
aggregate (mean) m=x (total) t=x (count) n=x [aweight=w] if g < 3, by(g)
* the total is the weighted mean times the number of values
assert n == cond(g == 1, 2, 3) & reldif(t, m * n) < 1e-14
assert reldif(m, cond(g == 1, 7 / 3, 3.5)) < 1e-14
use `all', clear
capture aggregate x [fweight=x/4]
assert _rc == 401 & _N == 7
capture aggregate x if g > 3
assert _rc == 2000 & _N == 7
capture aggregate (mean) nosuch, by(g)
assert _rc == 111 & _N == 7 & c(k) == 3
tally g x [fweight=w] if g < 3, percent(p) cumulative(c)
assert _N == 5 & "`: value label g'" == "gl"
assert _freq == real(word("2 1 4 3 1", _n)) & c == real(word("2 3 7 10 11", _n))
assert reldif(p, 100 * _freq / 11) < 1e-6
use `all', clear
capture tally g x, freq(g)
assert _rc == 110
capture tally g x, freq(a) percent(a)
assert _rc != 0 & _N == 7 & c(k) == 3
capture tally g if g > 5
assert _rc == 2000 & _N == 7
tally g x, nomiss zero
* the levels 1 2 by 1 2 5 8
assert _N == 8 & _freq == real(word("1 0 1 0 0 2 0 1", _n))
