set obs 1000000
generate long g = int((_n - 1)/10)
by g: generate n = _N
