* Makes the table that csvread reads: 1,000,000 rows of 10 columns.
set obs 1000000
forvalues j = 1/7 {
	generate double v`j' = round(mod(_n*`j'*7919, 100003)/97, .001)
}
generate long id = _n
generate str8 name = "n" + string(mod(_n, 9973))
generate byte k = mod(_n, 100)
outsheet using table.csv, comma replace
