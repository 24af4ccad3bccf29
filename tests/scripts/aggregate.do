* aggregate and tally: a dataset of statistics, a dataset of frequencies
set obs 12
gen g = mod(_n,3)
gen x = mod(_n*7,11)
replace x = . in 5
gen str1 s = char(64+_n)
gen h = x > 5
label variable x "the x"
tempfile all
quietly save `all'
aggregate (mean) x (sd) sx=x (count) n=x cs=s (p25) q=x (median) md=x (first) s (last) e=s ///
	(total) t=x (semean) se=x (variance) v=x (iqr) i=x, by(g)
list g x sx n cs q md, clean
list g s e t se v i, clean
display "`: variable label x' / `: variable label sx' / `: variable label s'"
use `all', clear
aggregate (median) x (max) g if _n>2
list
use `all', clear
foreach bad in "(foo) x" "(mean) s" "(mean) x (sd) x, by(g)" "x if g>100" "(mean) g, by(g)" "(p0) x" {
	capture noisily aggregate `bad'
	display _rc
}
* nothing was lost
assert _N == 12 & c(k) == 4
tally g, percent(p) cumulative(c)
list
use `all', clear
drop if h==1 & g==2 | h == 0 & g==0
tally g h, zero
list
assert _N == 6
use `all', clear
tally x if x > 8, nomiss freq(times)
list
use `all', clear
tally g [fweight=g]
list
