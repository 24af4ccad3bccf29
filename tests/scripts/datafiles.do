* describe using, example datasets, old files, notes, label languages and checks, signatures.
describe using data/old105
describe using data/old105, layout
describe using data/old105, simple
use data/old105
describe, short
list, clean
capture noisily describe using nosuch
capture noisily describe nosuch using data/old105
sysuse penguins, clear
capture noisily sysuse nosuch, clear
describe, simple
notes
label language
label language de, new
label variable sex "Geschlecht"
label define geschlecht 1 "w" 2 "m"
label values sex geschlecht
label language default
local l : variable label sex
display "`l' `: value label sex'"
save pp
use pp, clear
label language de
local l : variable label sex
display "`l' `: value label sex'"
label list geschlecht
label language
return list
label language fr, new copy
label language french, rename
label language de, delete
label language
capture noisily label language de
capture noisily label language french, new
capture noisily label language french, new rename
label language french, delete
label language default
char list
label define bad 1 "a" 3 "a" 4 " b" 5 "7"
label define long 1 "a text that is long" 2 "a text that is longer"
label values species long
label values island nowhere
label check
return list
label check species bad, length(50)
clear
set obs 2
gen byte x = _n
gen y = x
notes: about the data
note x: first
notes x: second
notes x: third
notes
notes drop x in 2
notes list x
notes replace x in 3: the third, which is long enough that it has to be folded when it is listed
notes renumber x
notes x in 2
notes drop _dta
notes
char list
capture noisily notes drop nosuch
datasignature
datasignature set
capture noisily datasignature set
datasignature set, reset
recast int x
quietly datasignature confirm
display r(same)
replace x = 7 in 2
capture quietly datasignature confirm
display _rc
datasignature clear
capture noisily datasignature confirm
display c(sortseed)
set sortseed 77
display c(sortseed)
capture noisily set sortseed x
