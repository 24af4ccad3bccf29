* split, tonumber, tostring: text taken apart, text to numbers and back
set obs 7
gen byte id = _n
gen str20 s = ""
replace s = "a,b,c" in 1
replace s = ",x" in 2
replace s = "y," in 3
replace s = "one; two" in 4
replace s = "  " in 5
replace s = "p,,q" in 6
replace s = "k,l,m,n" in 7
split s, parse(,) generate(v)
assert r(k) == 4 & "`r(varlist)'" == "v1 v2 v3 v4"
assert v1 == "a" & v2 == "b" & v3 == "c" & v4 == "" in 1
assert v1 == "" & v2 == "x" & v3 == "" in 2
assert v1 == "y" & v2 == "" in 3
assert v1 == "one; two" in 4
assert v1 == "" & v4 == "" in 5
assert v1 == "p" & v2 == "" & v3 == "q" in 6
assert v1 == "k" & v4 == "n" in 7
drop v?
* several separators, each of its own length; if; a limit
split s if id != 7, parse("; " ",") generate(v)
assert v1 == "one" & v2 == "two" in 4
assert v1 == "" in 7
assert r(k) == 3
drop v?
split s, parse(,) generate(v) limit(2)
assert r(k) == 2 & v1 == "k" & v2 == "l" in 7
drop v?
* a name that is taken: no variable of the new ones is left
gen v2 = 1
capture split s, parse(,) generate(v)
assert _rc == 110
capture confirm new variable v1
assert _rc == 0
drop v2
capture split id
assert _rc == 109
capture split s, limit(x)
assert _rc == 198
gen str12 n = string(id) + "/" + string(id * 1.5)
label variable n "pair"
split n, parse(/) tonumber
assert n1 == id & n2 == id * 1.5
assert substr("`: type n1'", 1, 3) != "str"

clear
set obs 6
gen byte id = _n
gen str12 t = word("1 -2.5 1e3 . .k 0", _n)
label variable t "the text"
gen after = 1
tonumber t, replace
assert t == 1 in 1
assert t == -2.5 in 2
assert t == 1000 in 3
assert t == . in 4
assert t == .k in 5
assert t == 0 in 6
assert "`: variable label t'" == "the text"
unab order : _all
assert "`order'" == "id t after"
* what is no number stops the change, and force makes it missing
gen str8 u = word("1 two 3 4x 5 6", _n)
tonumber u, replace
assert "`: type u'" == "str8" & u == "two" in 2
tonumber u, generate(uf) force
assert uf == id if !inlist(id, 2, 4)
assert uf == . if inlist(id, 2, 4)
assert u == "two" in 2
gen str14 m = word("$1,234 5% 1,000,000 12,5 7 -3", _n)
tonumber m, generate(mi) ignore("$,%")
assert mi == real(word("1234 5 1000000 125 7 -3", _n))
gen str14 e = word("1.234,5 0,25 7 -1,5 1.000.000 ,5", _n)
tonumber e, generate(ei) dpcomma
assert ei == real(word("1234.5 .25 7 -1.5 1000000 .5", _n))
* large whole numbers and decimal ones lose nothing
gen str18 w = word("123456789012345 .1 16777217 -2147483647 2147483648 100", _n)
tonumber w, replace
assert w == real(word("123456789012345 .1 16777217 -2147483647 2147483648 100", _n))
assert "`: type w'" == "double"
* several at a time, names that do not match in number, both or none of the ways
foreach bad in "u m, generate(one)" "u" "u, generate(z) replace" {
	capture tonumber `bad'
	assert _rc == 198
}
capture tonumber u, generate(id) force
assert _rc == 110
tonumber id, replace
assert "`: type id'" == "byte"

clear
set obs 6
gen byte b = _n - 3
gen long l = 2147483600 + _n
gen float f = _n / 10
gen double d = _n / 8
replace d = 123456789.125 in 2
replace d = . in 3
replace d = .q in 4
format f %5.2f
label variable f "tenths"
gen int day = 18262 + _n
format day %td
foreach v in b l f d {
	gen double o_`v' = `v'
}
tostring b l f d, replace
assert b == "-2" & l == "2147483601" & f == ".1" in 1
assert d == "123456789.125" in 2
assert d == "." in 3
assert d == ".q" in 4
assert "`: variable label f'" == "tenths"
* there and back again
tonumber b l f d, replace
assert b == o_b & l == o_l & d == o_d
assert float(f) == float(o_f)
* by the display format, where the date is the text; a format that loses digits needs force
tostring day, generate(ds) usedisplayformat force
assert ds == "01jan2010" in 1
tostring d, format(%9.2f) replace
assert substr("`: type d'", 1, 3) != "str"
tostring d, format(%12.1f) replace force
assert trim(d) == "0.1" in 1
assert trim(d) == "123456789.1" in 2
assert trim(d) == "0.6" in 5
tostring b f, generate(bs fs) format(%03.0f) force
assert bs == "-02" & fs == "000" in 1
assert bs == "003" & fs == "001" in 6
foreach bad in "b f, generate(x)" "b" "b, generate(x) replace" {
	capture tostring `bad'
	assert _rc == 198
}
capture tostring b, generate(f)
assert _rc == 110
capture tostring b, format(%zz) replace
assert _rc == 7 & b == _n - 3
