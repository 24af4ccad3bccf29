set obs 7
generate x = _n/3
generate byte g = mod(_n, 2)
generate str12 s = "text " + string(_n)
generate averyveryverylongname = _n*1000000
replace x = .b in 3
label define g 0 "even" 1 "odd"
label values g g
list
list x g in 2/4, noobs
list x s if g, clean noobs
list g in f, nolabel
list g in -2/l, separator(1)
capture noisily list in 5/3
display _rc
capture noisily list in 1/8
display _rc
capture noisily list nosuch
display _rc
capture noisily by g: list in 1
display _rc
sort g x
by g: list x s
generate double z = x*123456789
set linesize 40
list
list if x > 100
drop _all
capture noisily list
display _rc

* A condition that answers differently each time is asked once: the rows shown are those counted.
set obs 40
generate x = _n
set seed 7
list x if runiform() < .2
set seed 7
count if runiform() < .2
* Numbers and their width are those of the group.
generate g = x > 36
sort g x
by g: list x if _n == 2
* lines where the values of variables change, names and texts cut to a length
clear
set obs 6
generate byte group = int((_n - 1) / 2)
generate str12 words = cond(_n < 4, "abcdefghij", "k")
generate a_rather_long_name = _n
list, sepby(group)
list if _n != 2, sepby(group words) noobs
list in 1/2, abbreviate(18) string(4)
capture noisily list, sepby(nosuch)
display _rc
