* value labels: define, add, modify, and formats that follow.
label define ab 2 "b" 1 "a"
capture noisily label define ab 3 "c"
capture noisily label define ab 1 "x", add
label define ab 3 "a long label here", add
label define ab 1 "uno" 2 "", modify
label list ab
return list
set obs 3
generate byte v = _n
format v %3.0g
label values v ab
list, clean
describe
capture noisily label define cd 1.5 "x"
capture noisily label define cd . "x"
generate str1 s = "q"
capture noisily label values s ab
label values v
list v, clean
label define zz 1 `"say "hi""', replace
label save zz using labels_tmp
type labels_tmp.do
erase labels_tmp.do
label drop ab
capture noisily label list ab
label dir
