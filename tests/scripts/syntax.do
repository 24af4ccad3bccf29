* what the parser of commands says
set obs 5
gen x = _n
gen ab = 1
gen ac = 2
gen str3 s = "abc"
capture noisily list in 5/3
capture noisily list in 6
capture noisily list in 1 in 2
capture noisily list nosuch
capture noisily list a
capture noisily list a~
capture noisily list zz*
capture noisily list ac-x
capture noisily list L.x
capture noisily list i.x
capture noisily list x (
capture noisily list x "y"
capture noisily count if x = 1
capture noisily count if x if ab
capture noisily count if s
capture noisily count, detail
capture noisily count [fw=x]
capture noisily count x
capture noisily count using x
capture noisily summarize x [zz=ab]
capture noisily summarize x [pw=ab]
capture noisily summarize x [fw=ab] [fw=ab]
capture noisily summarize x = ab
capture noisily summarize x, nosuch
capture noisily summarize x, separator
capture noisily summarize x, separator(a)
capture noisily summarize x, detail(3)
capture noisily summarize x, sep(3
capture noisily replace if x > 2
capture noisily insheet x
capture noisily format
summarize x []
bysort x: summarize ab [w=x] if x < 3
list x-ac in f/-4, noobs
list a? in l, noobs
list ?b x in l, noobs
list x ab , noobs, in 2/3
count if x > 2 & !missing(s)
replace x = . in 1
count if x
bysort ab (x): gen n = _n if x > 3
scalar cut = 3
count if x > cut
capture noisily by ab: list in 1
capture noisily by ab: drop in 1
