* save and use: whole files, parts of them, and what they refuse.
set obs 6
generate byte id = 7 - _n
generate str4 s = "r" + string(id)
generate double z = .a if id > 4
replace z = id/4 if id <= 4
label define yn 1 "one" 2 "two" .a "none"
label values id yn
label variable z "a quarter"
label data "six rows"
char id[note1] "kept with the data"
sort id
save usesave_tmp
capture save usesave_tmp
display _rc
replace z = 0 in 1
capture use usesave_tmp
display _rc
use usesave_tmp, clear
label list
list, clean
char list
use s z in -2/l using usesave_tmp, clear
list, clean
use usesave_tmp if id == 3 | z >= ., clear nolabel
list, clean
label dir
capture use nosuch using usesave_tmp, clear
display _rc " " _N
capture use nosuch_file, clear
display _rc " " _N
capture noisily sort id if id
save usesave_tmp, replace oldformat
erase usesave_tmp.dta
