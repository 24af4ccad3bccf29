* separate, stack, sortby: what is kept, what is refused, and that a refusal changes nothing
set obs 8
gen byte id = _n
gen g = mod(_n, 3) - 1
replace g = .b in 8
gen double x = _n / 7
format x %6.3f
label define yn 1 "one" 2 "two"
gen byte lab = 1 + mod(_n, 2)
label values lab yn
gen str3 s = char(64 + _n) + "z"

* a level that cannot be part of a name is refused, and nothing is left half made
capture separate x, by(g) generate(q)
assert _rc == 198 & c(k) == 5
separate x if id > 2, by(g) generate(q) sequential
assert "`r(varlist)'" == "q1 q2 q3"
assert q1 == x if g == -1 & id > 2
assert q1 == . if g != -1 | id <= 2
assert q2 == x if g == 0 & id > 2
assert missing(q1, q2, q3) if id == 8
assert "`: type q1'" == "double" & "`: format q1'" == "%6.3f"
drop q1-q3
* missing values are a group of their own when asked for
separate x, by(g) generate(q) sequential missing
assert "`r(varlist)'" == "q1 q2 q3 q4"
assert q4 == cond(id == 8, x, .)
drop q1-q4
* the second name is taken: the first is not made either
gen t2 = 0
capture separate lab, by(lab) generate(t)
assert _rc == 110
capture confirm new variable t1
assert _rc == 0
drop t2
separate lab, by(lab) generate(t)
assert "`: value label t1'" == "yn" & t1 == 1 & t2 == . if lab == 1
separate s, by(id > 4) generate(u)
assert u0 == cond(id <= 4, s, "") & u1 == cond(id > 4, s, "")
capture separate x, by(nosuch)
assert _rc == 111
capture separate x
assert _rc == 100
* levels of a float that are no whole numbers, found again when numbered
gen f = .1 * mod(_n, 2)
separate id, by(f) generate(v) sequential
assert v1 == cond(mod(id, 2), ., id) & v2 == cond(mod(id, 2), id, .)

clear
set obs 3
gen byte a1 = _n
gen str2 b1 = "p" + string(_n)
gen double a2 = _n + .123456789
gen str9 b2 = "longer" + string(_n)
gen byte a3 = .c
gen str1 b3 = ""
label define al 1 "uno"
label values a1 al
tempfile before
quietly save `before'
* 6 variables are 3 blocks of 2
stack a1 b1 a2 b2 a3 b3, into(a b)
assert _N == 9 & c(k) == 3
assert _stack == ceil(_n / 3)
assert a == _n & b == "p" + string(_n) if _stack == 1
assert a == _n - 3 + .123456789 & b == "longer" + string(_n - 3) if _stack == 2
assert a == .c & b == "" if _stack == 3
assert "`: type a'" == "double" & "`: value label a'" == "al" & "`: type _stack'" == "byte"
use `before', clear
stack a1 b1 a2 b2 a3 b3, group(3)
assert _N == 9 & v1 == _n & v2 == "p" + string(_n) if _stack == 1
* refused: groups that do not come out, both or none of the options, kinds that differ, names twice
foreach bad in "a1 a2 a3, group(2)" "a1 b1 a2 b2, group(3)" "a1 a2, group(5)" "a1 a2" ///
	"a1 a2, into(a) group(2)" "a1 a2 a3, into(a b)" {
	use `before', clear
	capture stack `bad'
	assert _rc == 198
	assert _N == 3 & c(k) == 6
}
foreach bad in "a1 b1, into(a)" "a1 a2, into(a a)" "a1 a2, into(_stack)" {
	use `before', clear
	capture stack `bad'
	assert inlist(_rc, 109, 110, 198)
	assert _N == 3 & c(k) == 6 & a2 == _n + .123456789
}
* data that were not saved are kept unless clear is said
use `before', clear
quietly replace a1 = 9 in 1
capture stack a1 a2, into(a)
assert _rc == 4 & _N == 3
stack a1 a2, into(a) clear
assert _N == 6 & a == 9 in 1

clear
set obs 12
gen byte id = _n
gen x = mod(_n, 3)
replace x = . in 5
replace x = .z in 6
gen str2 s = cond(mod(_n, 2), "b", "a")
* ties keep the order that they had, also behind a text that descends
sortby -s, stable
assert s == "b" & id == 2 * _n - 1 if _n <= 6
assert s == "a" & id == 2 * (_n - 6) if _n > 6
sort id
sortby -x +s -id
* 2 2 2, 1 1 1 1, 0 0 0, and the missing values stay behind
assert x == 2 - (_n > 3) - (_n > 7) if _n <= 10
assert missing(x) if _n > 10
assert id == 8 in 1
assert id == 2 in 2
assert id == 11 in 3
sortby x -id, mfirst generate(n)
assert missing(x) & id == 4 + _n if _n <= 2
assert x == 0 & n == 3 in 3
assert n == _N in l
assert "`: type n'" == "byte"
drop n
sort id
capture sortby -s -nosuch
assert _rc == 111 & id == _n
capture sortby x, generate(s)
assert _rc == 110 & id == _n
capture sortby
assert inlist(_rc, 100, 198)
