*! edition small
* The table of variables is full: what needs a variable for a moment works, a new one does not.
set obs 1200
quietly forvalues i = 1/120 {
	generate byte v`i' = mod(_n * `i', 7)
}
capture noisily generate w = 1
sort v1, stable
assert v2 == mod(2 * v1, 7)
replace v3 = 1000 in 7
by v1: replace v4 = _n + 100
program at_limit
	syntax varlist [if] [in]
	marksample touse
	count if `touse'
end
at_limit v1 v2 if v1 > 2 in 1/700
describe, short
drop if v1 == 3
_dsasys fsa
drop v120
generate byte v120 = 1
capture noisily set obs 1201
list v1 v3 v4 if v1 == 6 & v4 > 268, noobs
by v1: list v3 if v1 == 6 & _n == 171
