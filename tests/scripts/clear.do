* clear: what goes and what stays
set obs 2
gen x = _n
label data "two rows"
label define l 1 "one"
char _dta[note0] 1
scalar s = 3
matrix A = (1,2)
local m kept
clear
describe
label dir
char list
display scalar(s) A[1,2] "`m'"
set obs 1
gen x = 1
count
clear all
assert r(N) == .
capture display scalar(s)
assert _rc == 111
capture matrix list A
assert _rc == 111
assert c(k) == 0 & c(N) == 0 & "`m'" == "kept"
capture noisily clear nonsense
count
assert r(N) == 0
clear results
assert r(N) == .
return list
