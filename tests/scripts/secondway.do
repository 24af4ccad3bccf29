* library commands against the same numbers worked out with by and subscripts
program near
	args a b
	quietly count if !(abs(`a' - `b') <= 1e-5*max(1, abs(`b')) | (`a' >= . & `b' >= .))
	assert r(N) == 0
end
set seed 711
set obs 60
gen id = _n
gen g = mod(_n*7, 5)
gen double x = round(uniform()*40)/4
replace x = . if mod(_n, 11) == 0
gen double y = x^2/3 + uniform() if mod(_n, 13)
gen str3 s = char(97 + mod(_n*3, 4)) + char(97 + mod(_n, 2))
* ---- compute by groups
foreach f in mean total count min max sd median iqr {
	compute double c`f' = `f'(x), by(g)
}
gen byte ok = x < .
sort g x id
by g: gen double run = sum(x)
by g: gen nok = sum(ok)
by g: replace run = run[_N]
by g: replace nok = nok[_N]
assert ccount == nok
near ctotal run
gen double byhand = run/nok
near cmean byhand
by g: assert cmin == x[1]
by g: assert cmax == x[nok]
gen double dev = (x - byhand)^2
by g: gen double ss = sum(dev)
by g: replace ss = sqrt(ss[_N]/(nok - 1))
near csd ss
by g: gen double mid = cond(mod(nok, 2), x[(nok + 1)/2], (x[nok/2] + x[nok/2 + 1])/2)
near cmedian mid
* the quarter points by the same rule: on the edge between two values their middle
by g: gen double q1 = cond(nok*.25 == int(nok*.25), (x[nok*.25] + x[nok*.25 + 1])/2, x[int(nok*.25) + 1])
by g: gen double q3 = cond(nok*.75 == int(nok*.75), (x[nok*.75] + x[nok*.75 + 1])/2, x[int(nok*.75) + 1])
replace q3 = q3 - q1
near ciqr q3
* ranks: 1 more than those below, and half of those equal
compute double r = rank(x)
gen double slow = .
forvalues i = 1/60 {
	quietly count if x < x[`i']
	local below = r(N)
	quietly count if x == x[`i'] & x < .
	quietly replace slow = `below' + (r(N) + 1)/2 in `i' if ok
}
near r slow
* groups are numbered in order, one row of each is tagged
compute gr = group(g s)
compute t = tag(g s)
sort g s id
by g s: gen byte first = _n == 1
gen number = sum(first)
assert gr == number
by g s: gen tags = sum(t)
by g s: assert tags[_N] == 1
* rows across
compute double rm = rowmean(x y id)
compute rn = rownonmiss(x y id)
compute rx = rowmax(x y id)
compute ri = rowmin(x y id)
compute double rt = rowtotal(x y id)
assert rn == (x < .) + (y < .) + 1
gen double rtotal = cond(x < ., x, 0) + cond(y < ., y, 0) + id
near rt rtotal
replace rtotal = rtotal/rn
near rm rtotal
assert rx == max(x, y, id) | abs(rx - max(x, y, id)) < 1e-4
assert ri == min(x, y, id) | abs(ri - min(x, y, id)) < 1e-4
* ---- aggregate gives what compute put on every row
keep id g x y s cmean ccount csd cmedian cmax
sort g id
tempfile rows
quietly save `rows'
aggregate (mean) am=x (count) an=x (sd) as=x (median) ad=x (max) ax=x, by(g)
assert _N == 5
checkid g
sort g
tempfile groups
quietly save `groups'
use `rows', clear
merge m:1 g using `groups', noreport
assert _merge == 3
near am cmean
near as csd
near ad cmedian
assert an == ccount & ax == cmax
* ---- expand counts rows, duplicates finds them again, tally counts them
use `rows', clear
local n = _N
quietly summarize g
local extra = r(sum)
expand g + 1
assert _N == `n' + `extra'
duplicates tag id, generate(copies)
assert copies == g
duplicates drop
assert _N == `n'
sort g
by g: gen freq = _N
tempfile counted
quietly save `counted'
tally g, freq(f)
sort g
tempfile freqs
quietly save `freqs'
use `counted', clear
merge m:1 g using `freqs', noreport assert(match)
assert f == freq
* ---- there and back: encode, tostring, reshape, the file
use `rows', clear
encode s, gen(code)
decode code, gen(s2)
assert s == s2
tostring id, gen(idtext)
tonumber idtext, gen(id2)
assert id == id2
drop s2 idtext id2 code
gen k1 = x
gen k2 = y
gen k3 = id
keep id k1 k2 k3
sort id
quietly save `groups', replace
reshape long k, i(id) j(which)
assert _N == 180
sort id which
by id: assert which == _n
reshape wide
order id k1 k2 k3
sort id
comparedata using `groups'
* ---- append then keep is the file again
_append using `groups'
assert _N == 120
by id, sort: assert _N == 2 & k1[1] == k1[2] & k3 == id
