* types: typed, set, found from the expression
set obs 4
gen a = _n
gen byte b = _n
gen str s = substr("abcdefgh", 1, 2 * _n)
gen t = "x" if _n > 1
gen str1 u = "abc"
gen double(d) = 1
set type double
gen e = 1/3
set type float
_describe
* refusals
capture noisily gen str n = 5
capture noisily gen byte n = "a"
capture noisily gen = 5
capture noisily gen n
capture noisily gen n m = 1
capture noisily gen a = 1
capture noisily gen float = 1
capture noisily gen n = n + 1
capture noisily gen n = 1, foo
capture noisily gen n = 1 if a in 2 in 3
capture noisily version 7: gen n = "a"
* clauses in any order, an empty option list
gen c if a > 2 = 1
gen f in 2/3 = _n,
gen g in f/l = a[_n+1] if 0
* missing values are counted, not under quietly
gen h = a[_n+1]
quietly gen i = a[_n+1]
gen j = .a
gen k = "" in 1/2
* sum and its restart; subscripts within a group
gen grp = mod(_n, 2)
bysort grp (a): gen m = sum(a)
by grp: gen n = a[_n-1]
by grp: gen N = _N if a > 2
by grp: gen str w = "g" + string(_n)
by grp: gen str1 w2 = string(_n)
capture noisily by grp: gen q = 1 in 1
list grp a m n N w w2
* the widest string there is
gen l = ""
forvalues i = 1/25 {
	quietly replace l = l + "0123456789"
}
display length(l[1])
* a variable at the limits of its type
gen byte lim = 100 in 1
quietly replace lim = -127 in 2
gen byte lim2 = 101
gen int lim3 = 32740
gen long lim4 = 2147483620
gen float lim5 = 1e39
gen float lim6 = 1e-46
list lim-lim6 in 1/2
* many rows at once or one by one: the same values
drop _all
set obs 3001
gen x = _n / 7
gen a = x * 2 - int(x) if x > 3
gen b = x[_n] * 2 - int(x) if x[_n] > 3
assert a == b
replace a = a + _n if mod(_n, 3)
replace b = b[_n] + _n if mod(_n, 3)
assert a == b
gen byte c = 1
gen byte d = 1
replace c = _n * (x > 100)
replace d = cond(x[_n] > 100, _n, 0)
assert c == d
_describe c d
count if a > 500
drop if x[_n] > 100 & mod(_n, 2)
count
