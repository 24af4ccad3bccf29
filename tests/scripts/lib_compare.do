* duplicates, checkid, compare, comparedata, pickvars: what repeats, what differs
set obs 10
gen byte id = _n
gen g = int((_n - 1) / 3)
replace g = . in 10
gen str1 s = cond(inlist(_n, 1, 2, 4), "a", "b")
* pairs (g, s): (0,a) twice, (0,b), (1,a), (1,b) twice, (2,b) three times, (.,b)
duplicates report g s
assert r(N) == 10 & r(unique) == 6
duplicates report g if id <= 6
assert r(N) == 6 & r(unique) == 2
duplicates tag g s, generate(more)
assert more == real(word("1 1 0 0 1 1 2 2 2 0", _n))
duplicates tag g in 1/4, generate(part)
assert part == cond(_n <= 3, 2, cond(_n == 4, 0, .))
assert id == _n
capture duplicates tag g, generate(id)
assert _rc == 110
capture duplicates
assert _rc == 198
capture duplicates drop g
assert _rc == 198 & _N == 10
preserve
duplicates drop g s if id != 9, force
assert r(N_drop) == 3 & _N == 7
assert inlist(id, 1, 3, 4, 5, 7, 9, 10)
duplicates drop
assert r(N_drop) == 0 & _N == 7
restore

checkid id
assert r(N) == 10
checkid id, missok
capture checkid g
assert _rc == 459
capture checkid g s, missok
assert _rc == 459 & id == _n
checkid g s if !inlist(id, 2, 6, 8, 9, 10)
checkid g if inlist(id, 1, 4, 7)
capture checkid s if id == 99
assert inlist(_rc, 0, 2000)

gen h = g + cond(mod(_n, 2), 1, -1) if id != 9
replace h = g in 2
compare g h
* 10 has both missing, 9 has g only, 2 is equal; odd ones of the rest: g < h
assert r(N_less) == 4 & r(N_equal) == 1 & r(N_greater) == 3 & r(N) == 8
compare g h if id > 2 in 1/6
assert r(N_less) == 2 & r(N_equal) == 0 & r(N_greater) == 2 & r(N) == 4
gen str1 z = "b"
compare s z
assert r(N_less) == 3 & r(N_equal) == 7 & r(N_greater) == 0
capture compare g s
assert _rc == 109
capture compare g
assert _rc == 102

tempfile f
quietly save `f'
comparedata using `f'
assert r(mismatches) == 0
quietly replace g = 7 in 3/5
quietly replace s = "q" in 1
capture comparedata using `f'
assert _rc == 9
assert g == 7 in 4
comparedata id h using `f'
assert r(mismatches) == 0
* a variable that the file has not, one that only it has, a kind that differs, other lengths
gen extra = 1
capture comparedata id extra using `f'
assert _rc == 9
drop extra z
comparedata id h using `f'
drop h
gen str1 h = "x"
capture comparedata id h using `f'
assert _rc == 9 & h == "x"
quietly drop in 10
capture comparedata id using `f'
assert _rc == 9 & _N == 9
capture comparedata id using nosuchfile
assert _rc == 601 & _N == 9

clear
set obs 4
gen byte one = 1
gen double miss = cond(_n == 2, ., _n)
gen str5 name = "q"
gen int day = _n
format day %td
label variable day "the day"
label define dl 1 "x"
label values one dl
char name[note] "seen"
foreach row in "has(type numeric)=one miss day" "has(type byte int)=one day" "not(type string)=one miss day" ///
	"has(constant)=one name" "has(missing)=miss" "has(format %t*)=day" "has(varlabel)=day" ///
	"not(vallabel)=miss name day" "has(vallabel d*)=one" "has(char)=name" "has(char other)=" ///
	"has(type numeric) not(constant)=miss day" {
	gettoken what want : row, parse("=")
	local want = trim(substr("`want'", 2, .))
	quietly pickvars, `what'
	assert "`r(varlist)'" == "`want'" & r(k) == wordcount("`want'")
}
pickvars miss name, has(type string) local(found)
assert "`found'" == "name"
