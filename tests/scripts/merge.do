* _append and _merge: rows behind rows, variables beside variables.
set obs 4
gen byte id = _n
gen a = id*10
gen str3 s = "m" + string(id)
label define L 1 "one"
label values id L
save m, replace
clear
set obs 5
gen int id = _n+2
gen a = id*11
gen str6 s = "using" + string(id)
gen double b = id/7
label variable b "seventh"
label define L 1 "uno" 2 "dos"
label define B 3 "three"
label values id L
label values b B
char b[hello] world
char _dta[note0] 1
char _dta[note1] "a note"
save u, replace
use m, clear
_append using u, generate(src)
list, clean
char list
label list
use m, clear
_merge 1:1 id using u
list, clean
return list
use m, clear
_merge 1:1 id using u, update replace keepusing(a b) gen(mm) keep(match using match_conflict)
list, clean
use m, clear
_merge 1:1 _n using u, noreport nogen
list, clean
clear
set obs 6
gen id = ceil(_n/2)
gen v = _n
save many, replace
use m, clear
_merge 1:m id using many
list, clean
use many, clear
capture noisily _merge m:1 id using m, assert(match)
use many, clear
capture noisily _merge 1:1 id using m
capture noisily _merge m:1 v using m
_merge m:m id using many
capture noisily _append using nosuch
list, clean
