* split, tonumber, tostring
set obs 5
gen str20 s = "a b c"
replace s = "x,y" in 2
replace s = " 1  2" in 3
replace s = "" in 4
split s
return list
split s, parse(, " ") generate(q) limit(2)
list, clean
gen str8 t = "1,234"
replace t = "3.5" in 2
replace t = ".a" in 3
tonumber t, generate(tt)
tonumber t, generate(tt) ignore(",")
list t tt, clean
assert tt == .a in 3
tonumber t, replace force
gen double z = 1/3
replace z = 5 in 2
gen f = .1
gen long n = 123456789
tostring z f n, generate(sz sf sn)
list z sz f sf n sn, clean
assert real(sz) == z
tostring f, replace
tostring z, format(%4.2f) generate(bad)
tostring z, format(%4.2f) generate(bad) force
list bad, clean
gen str4 c = "1,5"
tonumber c, replace dpcomma
assert c == 1.5
