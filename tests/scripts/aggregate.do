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
* frequency weights give what the rows would give when written out; analytic weights of a
* constant change nothing
use `all', clear
gen n = mod(_n, 4) + 1
tempfile heavy
quietly save `heavy'
local stats (mean) m=x (sd) s=x (count) c=x (p50) md=x (p25) q=x (total) t=x (semean) e=x (iqr) i=x (max) b=x
quietly expand n
aggregate `stats', by(g)
tempfile written
rename (m s c md q t e i b) (m1 s1 c1 md1 q1 t1 e1 i1 b1)
quietly save `written'
use `heavy', clear
aggregate `stats' [fweight=n], by(g)
list, clean
quietly merge 1:1 g using `written', noreport
foreach v in m s c md q t e i b {
	assert reldif(`v', `v'1) < 1e-12
}
use `heavy', clear
gen two = 2
aggregate `stats' [aweight=two]
list, clean
use `heavy', clear
aggregate `stats'
list, clean
