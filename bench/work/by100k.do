set obs 1000000
generate long g = int((_n - 1)/10)
bysort g: generate n = _N
