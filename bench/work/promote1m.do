set obs 1000000
generate byte b = 1
replace b = _n
