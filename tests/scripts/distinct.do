* levels, checkid, duplicates, pickvars, sortby: what values there are and what they identify
set obs 9
gen x = mod(_n*4,5)
replace x = . in 3
gen str8 s = word("pear apple fig", mod(_n,3)+1) + " z"
gen y = _n
label variable y "number"
levels x
return list
levels s, local(q)
foreach v of local q {
	display "<`v'>"
}
levels s, clean separate(", ")
levels x, missing
quietly levels x if y < 0
assert r(r) == 0
* the order of the rows is as it was
assert y == _n

checkid y
capture noisily checkid x
capture noisily checkid x, missok
checkid x s y, missok
capture noisily checkid s
checkid s in 1/3

duplicates report x
duplicates list x, separator(0)
duplicates tag x, generate(copies)
list x copies, clean
duplicates drop
capture noisily duplicates drop x
assert _rc == 198 & _N == 9
duplicates drop x, force
* the first of each is kept
assert inlist(y, 1, 2, 3, 4, 5, 8)

pickvars, has(type string)
pickvars, not(type string) local(numbers)
assert "`numbers'" == "x y copies"
pickvars, has(missing)
pickvars, has(varlabel num*)
pickvars, has(constant)
return list
capture noisily pickvars, has(colour)

sortby -s x
list s x, clean
sortby -x +y, mfirst generate(order)
list x y order, clean
sortby x -y
assert y == 5 in 1
capture noisily sortby -nosuch
unab all : x-y
assert "`all'" == "x s y"
