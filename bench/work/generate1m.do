set obs 1000000
generate double x = _n
generate y = x*2 + 1 if x > 10
replace y = y/3 if mod(x, 2)
