* tomissing and frommissing: values to missing ones and back; all is checked before any change
set obs 8
gen byte id = _n
gen x = real(word("1 9 99 .1 . .a 9 -9", _n))
gen double y = x
gen str1 s = "9"
tomissing x y if id != 7, values(9 99=.m .1=.t -9)
assert x == real(word("1 . .m .t . .a 9 .", _n))
assert y == x
* refused and unchanged: no missing value as a goal, a text, no such variable
foreach v in x y {
	quietly replace `v' = id
}
capture tomissing x y, values(1 2=7)
assert _rc == 198 & x == id & y == id
capture tomissing x, values(1 2=.ab)
assert _rc == 198 & x == id
capture tomissing x, values(1 oops)
assert inlist(_rc, 121, 198) & x == id
capture tomissing s, values(9)
assert inlist(_rc, 108, 109)
capture tomissing x
assert inlist(_rc, 100, 198)
* a range, and a value taken by an earlier one stays
tomissing x in 1/6, values(2/4=.r 3=.s 6)
assert x == real(word("1 .r .r .r 5 . 7 8", _n))

* back: several to one value, the rest of them to another
quietly replace x = real(word("1 2 . .a .b .c .a 3", _n))
quietly replace y = 7
frommissing x, values(.a=-1 .b=-1 else=-2)
assert x == real(word("1 2 -2 -1 -1 -2 -1 3", _n))
quietly replace x = real(word("1 2 . .a .b .c .a 3", _n))
* a value that is in use is refused before anything changes, in whichever variable it is
capture frommissing x y, values(7)
assert _rc == 9
assert x == real(word("1 2 . .a .b .c .a 3", _n))
capture frommissing x, values(.a=8 .b=3)
assert _rc == 9 & x == .a if id == 4
frommissing x if id < 7, values(.a=8 .b=3) override
assert x == real(word("1 2 . 8 3 .c .a 3", _n))
capture frommissing x, values(.a=.b)
assert _rc != 0 & x == .a if id == 7
capture frommissing x, values(.a=text)
assert inlist(_rc, 7, 198) & x == .a if id == 7
frommissing x in 3/6, values(0)
assert x == real(word("1 2 0 8 3 0 .a 3", _n))
