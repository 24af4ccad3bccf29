* sort: order told, ties, ranges, rows that tie.
set obs 8
generate byte k = mod(_n, 3)
generate byte id = _n
sort k, stable
list, clean
describe, short
sort id in 2/5
describe, short
capture noisily sort
capture noisily sort nosuch
capture noisily sort k, index(id) stable
sort id
sort, index(id)
list in 1/3, clean
generate str2 s = char(97 + k) + "x"
sort s id
list s id in 1/3, clean
_dsasys fsa
