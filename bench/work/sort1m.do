set obs 1000000
generate double u = mod(_n*7919, 1000003)
sort u
