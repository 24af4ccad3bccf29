* what expressions mean inside commands
set obs 6
gen g = 1 + (_n>3)
gen x = _n*10
gen str8 name = "n" + string(_n)
label define marlbl 1 "married" 2 "single person"
gen m = "single person":marlbl
display "married":marlbl
display "divorced":marlbl
sort g, stable
by g: gen first = x[1]
by g: gen run = sum(x)
by g: gen last = x[_N] if _n<=2
by g: gen share = group(2)
list
gen next = x[_n+1]
scalar x = 5
display x " " scalar(x) " " scalar(x)*2
gen t = d(31dec1999) + _n
format t %td
char _dta[_TStvar] t
list t if tin(2jan2000,4jan2000)
count if twithin(1jan2000, 4jan2000)
count if tin(,)
count if tin(1jan2000,)
count if missing(next) | name=="n2"
count if inlist(name,"n1","n2") & !inrange(x,15,99)
capture noisily gen y = x=1
capture noisily gen y = x +
capture noisily gen y = (x
capture noisily gen y = x)
capture noisily gen y = nosuch
capture noisily gen y = nosuch(1)
capture noisily gen y = "a" + 1
capture noisily gen y = i.x
capture noisily gen y = serset("a")
capture noisily display A*B
capture noisily display _b[x]
capture noisily display d(32jan2000)
capture noisily gen y = missing(missing(x))
capture noisily gen y = c(nosuch)
display regexs(1)
display regexm("abc-123","([a-z]+)-([0-9]+)") " " regexs(1) " " regexs(2)
display r(nosuch) " " _rc
summarize x
display r(N) " " r(mean)*2
version 7: display .a==.b
version 4: display -2^2
display -2^2 " " 2^3^2 " " .a==.b
display %9.4f chi2tail(1,3.84) " " invttail(10,.025)
display tc(21nov2026 03:17:00) " " %tc tc(21nov2026 03:17:00)
