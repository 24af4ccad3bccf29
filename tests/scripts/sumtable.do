* sumtable, codebook, compare, comparedata
set obs 30
gen g = mod(_n,3)
label define gl 0 "zero" 1 "one"
label values g gl
gen str4 h = cond(_n>15, "hi","low")
gen x = _n^2
replace x = . in 4
label variable x "squares"
gen y = _n/7
sumtable x y
sumtable x y, by(g)
sumtable x, by(g) stats(n mean p50 p10 p90 min max iqr)
sumtable x, by(g h) stats(mean n) format(%8.2f)
drop if g==1 & h == "hi"
sumtable x, by(h g) stats(n)
capture noisily sumtable x if y < 0
capture noisily sumtable x, stats(nosuch)
* a line that takes no range sees the rows that there are
tempfile now
quietly save `now'
quietly keep in 1/4
local n = _N
assert `n' == 4
quietly use `now', clear
local n = _N
assert `n' == 25
codebook
codebook, compact
compare x y
quietly save z
comparedata using z
replace x = 3 in 2/3
drop y
gen byte new = 1
capture noisily comparedata using z, all verbose
quietly drop in 1
capture noisily comparedata using z
* weights: a row of weight w is w rows
use z, clear
gen w = mod(_n, 4)
sumtable x y [fw=w], by(g) stats(n mean sd p50 total)
capture noisily sumtable x [fw=w/2]
drop if w == 0
expand w
sumtable x y, by(g) stats(n mean sd p50 total)
* more columns than the line has room for go into tables below each other
gen k = mod(_n, 9)
sumtable x, by(h k) stats(mean)
quietly sumtable x if k > 3, by(h) stats(mean)
assert r(N) < _N & "`r(stats)'" == "mean"
