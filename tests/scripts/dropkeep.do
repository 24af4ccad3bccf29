set obs 8
foreach v in a b c xa xb yb {
	gen `v' = _n
}
drop b-c
drop x*
drop if a > 6
drop in 1/2
keep in -3/l
drop if missing(a)
_describe
capture noisily drop
capture noisily drop nosuch
capture noisily drop a if a > 1
capture noisily drop if
capture noisily drop in 9
gen b = 1
gen str5 c = "x"
keep yb c
_describe
keep if yb > 5 & yb < .
count
drop _all
display c(N) " " c(k)
* compress, recast, rename, order, format
set obs 3
gen a = _n
gen double d = _n * 1000000
gen e = _n / 2
gen str20 s = "abc"
gen long l = .z in 1
compress
_recast double a
_recast byte e
_recast byte e, force
_recast str2 s
capture noisily _recast str5 a
capture noisily _recast foo a
format a %9.2f
format %-8s s
capture noisily format a %9s
capture noisily format a %9.9q
capture noisily format nosuch %9.0g
format
_rename a first
capture noisily _rename nosuch x
capture noisily _rename first e
capture noisily _rename first 1x
capture noisily _rename first if
_order s d
_order first, last
_order e, after(l)
capture noisily _order e, before(nosuch)
_describe, simple
list
count if e > 1
return list
assert first < 5
capture noisily assert first < 3
capture noisily assert first < 3, fast
assert first < 3, rc0
capture noisily assert first == 1 in 1/2
gen g = first > 1
bysort g: count
capture noisily by g: assert first == 1
