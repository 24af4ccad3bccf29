* infile, infix and outfile: words, columns, dictionaries.
set obs 4
gen g = ceil(_n/2)
gen float x = _n*1.5
replace x = . in 2
gen str8 t = "a " + string(_n)
replace t = `"say "b""' in 3
label define yn 1 "yes" 2 "no"
label values g yn
label variable x "an x"
outfile using o1, replace
type o1.raw
outfile using o2, comma nolabel
type o2.raw
capture noisily outfile using o2, comma
outfile x t g using o3, dictionary replace
type o3.dct
gen str40 long1 = "wwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwww"
gen str40 long2 = long1
outfile long1 long2 g using o4, noquote
type o4.raw
drop long1 long2
infile g x str8 t using o2, clear
list, clean
infile g x str8 t using o2 in 2/3, clear
list, clean
infile byte g _skip str5 t using o2 if g == 2, clear
list, clean
infile using o3, clear automatic
list, clean
label list
file open f using words.raw, write
file write f "1 2,3" _n "x, ,'a b' 4" _n "5"
file close f
infile a b str3 c using words, clear
list, clean
infile a b using words, byvariable(3) clear
list, clean
capture noisily infile a b using words
capture noisily infile a b, clear
capture noisily infile a a using words, clear
file open f using cols.raw, write
file write f "heading" _n "1234567 ab " _n "  12" _n "765 321c  d" _n " 9.5" _n "1"
file close f
infix 2 firstlineoffile 2 lines id 1-3 byte n 4 - 6 str s 8-11 2: z 1-4 using cols, clear
describe, simple
list, clean
infix id 1 / z 3-4 using cols in 1/2, clear
list, clean
capture noisily infix id using cols, clear
capture noisily infix id 3-1 using cols, clear
file open f using d.dct, write
file write f "infile dictionary using cols.raw {" _n "_first(2) _lines(2)" _n
file write f "* a comment" _n "  int  id %3f  " `""an id""' _n "_column(8) str4 s %4S" _n
file write f "float w:wl %2.1f _newline double z" _n "}" _n
file close f
infile using d, clear
describe
list, clean
gen len = length(s)
list s len, clean
capture noisily infix using d, clear
capture noisily infile using o1.raw, clear
infile using d if z == 12, using(cols.raw) clear
list, clean
