set obs 12
generate a = mod(_n, 3)
generate b = mod(_n, 4) if _n != 4
generate str5 s = substr("red  blue green", 1 + 5*a, 5)
replace s = "" in 3
label define a 0 "none" 1 "one" 2 "a rather long label"
label values a a
label variable a "how many of them there are in all"
tabulate a
tabulate b
tabulate b, missing
tabulate s, sort
tabulate a b
tabulate a b, row column cell
tabulate a b, nofreq row nokey
tabulate a s, missing nolabel
return list
tabulate a [fw=b]
tabulate a, generate(d) matcell(f) matrow(v)
list a d1-d3 in 1/4, nolabel
display f[1,1] + f[2,1] + f[3,1] " " v[3,1]
tabulate a, plot
capture noisily tabulate a b s
display _rc
capture noisily tabulate a if a > 7
display _rc
capture noisily tabulate
display _rc
sort b
by b: tabulate a if b < 2
* a value met only with weights of zero is none of the table, nor of its indicators
drop _all
set obs 12
gen g = mod(_n, 3)
gen str2 s = string(g)
tabulate g s [aw=g], nofreq chi2
tabulate g [aw=g], gen(d)
list g d* in 1/3
assert missing(d1) if g == 0
* summaries of a measure in the groups, and the same by hand
drop _all
set obs 40
set seed 8
gen byte a = 1 + mod(_n, 3)
gen byte b = _n > 25
gen w = 1 + mod(_n, 4)
gen x = a*10 + b + (_n - 20)/50
replace x = . in 3
label variable x "the measure"
tabulate a, summarize(x)
tabulate a b, summarize(x)
forvalues i = 1/3 {
	summarize x if a == `i' & b == 1
}
tabulate a b [aw=w], summarize(x) nofreq
summarize x [aw=w] if a == 2 & b == 0
tabulate b [fw=w], summarize(x) nostandard
tabulate a if b, summarize(x) nomeans
replace b = 2 if a == 3
tabulate a b if a > 1, summarize(x) nostandard
capture noisily tabulate a, summarize(nosuch)
