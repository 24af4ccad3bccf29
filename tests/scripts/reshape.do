* separate, stack and reshape: the shape of the data
set obs 6
gen g = mod(_n,2)
gen x = _n
separate x, by(g)
separate x, by(x>3) generate(w) sequential
list, clean
stack x0 g x1 x, into(a b) clear
list, clean
clear
set obs 3
gen id = _n
gen sex = mod(_n,2)
label define sex 0 "a" 1 "b"
label values sex sex
gen inc80 = 5000*_n
gen inc81 = 5500.5*_n
gen int ue80 = _n
gen int ue82 = 9
reshape long inc ue, i(id) j(year)
list, separator(3)
* 3 rows by 3 years, and each value in its place
assert _N == 9 & inc == 5500.5*id if year == 81
assert ue == 9 if year == 82
reshape wide
list, clean
reshape long
capture noisily reshape wide inc, i(id) j(year)
replace sex = 5 in 1
capture noisily reshape wide inc ue, i(id) j(year)
replace year = 80
capture noisily reshape wide inc ue, i(id) j(year)
clear
set obs 4
gen i = int((_n+1)/2)
gen str1 w = cond(mod(_n,2),"m","f")
gen xr = _n
gen str2 t = "t" + string(_n)
drop in 4
reshape wide x@r t, i(i) j(w)
list, clean
reshape long
list, clean
clear
set obs 2
gen id=_n
capture noisily reshape long q, i(id) j(k)
capture noisily reshape wide q
capture noisily reshape
