* encode, decode, expand, move, snapshot, _datasignature.
set obs 5
gen str6 s = word("red green blue red", _n)
label variable s "colour"
encode s, gen(c)
label list
list, clean
list, clean nolabel
decode c in 1/3, gen(d)
decode c, gen(e) maxlength(2)
describe, fullnames
replace s = "pink" in 5
encode s if s < "q", gen(c2) label(c)
label list
list s c2, clean
capture noisily encode s, gen(c3) label(c2) noextend
display _rc
capture noisily encode c, gen(c3)
capture noisily decode s, gen(c3)
capture noisily encode s, gen(c)
capture noisily encode s
label drop c
capture noisily decode c, gen(c3)
keep s c
expand 2 in 1/2, gen(dup)
expand cond(_n == 1, ., _n - 2) if !dup
list, clean
capture noisily expand 2, gen(dup)
clear
set obs 4
gen g = ceil(_n/2)
sort g
by g: expand _n
list, clean
gen x = g/2
gen y = 1
move y g
move x y
describe, simple
capture noisily move x
capture noisily move x y g
quietly _datasignature
local was "`r(datasignature)'"
quietly snapshot save, label("first one")
display r(snapshot)
recast double x
quietly _datasignature
assert "`r(datasignature)'" == "`was'"
replace x = x + 1 in 3
quietly _datasignature
assert "`r(datasignature)'" != "`was'"
drop y
char x[note1] "lost"
snapshot restore 1
quietly _datasignature
assert "`r(datasignature)'" == "`was'"
describe, simple
char list
capture noisily snapshot restore 2
snapshot erase _all
snapshot list
