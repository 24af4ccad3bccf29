set seed 7
quietly set obs 1000000
generate long id = _n
generate g = int(runiform() * 50)
generate byte h = int(runiform() * 5)
generate x = rnormal()
generate y = runiform()
compute m = mean(x), by(g)
compute r = rank(x)
quantiles q = x, groups(10)
duplicates report g h
levels g
sumtable x y, by(h)
recode g (0/9 = 1) (10/19 = 2) (else = 3), generate(g3)
preserve
aggregate (mean) x (sd) y (median) z = x, by(g h)
restore
preserve
keep id x y
rename (x y) (v1 v2)
reshape long v, i(id) j(t)
restore
tally g h
