set seed 7
quietly set obs 1000000
generate byte g = int(runiform() * 10)
generate byte h = int(runiform() * 5)
generate x = rnormal()
generate y = x + g + rnormal()
generate t = _n
quietly regress y i.g##i.h c.x
quietly predict p
quietly regress y x i.g#c.x
char _dta[_TStvar] t
generate d = D.y
