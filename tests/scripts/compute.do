* compute: functions of groups and rows, types of the results, an own function; quantiles
set obs 12
gen g = mod(_n,3)
gen x = mod(_n*7,11)
replace x = . in 5
gen id = _n
compute m = mean(x), by(g)
by g, sort: compute s = sd(x)
compute t = total(x) if id > 3, by(g)
compute n = count(x), by(g)
compute a = min(x), by(g)
compute b = max(x), by(g)
compute md = median(x), by(g)
compute p = pctile(x), by(g) p(25)
compute i = iqr(x), by(g)
list, separator(0)
foreach k in 0 1 2 {
	quietly summarize x if g == `k', detail
	assert reldif(m, r(mean)) < 1e-7 & reldif(s, r(sd)) < 1e-7 if g == `k'
	assert n == r(N) & a == r(min) & b == r(max) & md == r(p50) & p == r(p25) if g == `k'
	assert i == r(p75) - r(p25) if g == `k'
}
sort id
drop m-i
compute r = rank(x)
compute rf = rank(x), field
compute rt = rank(x), track
compute ru = rank(x), unique by(g)
compute z = std(x)
compute gr = group(g x)
compute gg = group(g), label
compute tg = tag(g)
compute sq = seq(), by(g) from(3) to(1)
compute sb = seq(), block(2) to(3)
compute c = cut(x), at(0 3 6 20)
compute ci = cut(x), at(0 3 6 20) icodes
compute cl = cut(x), at(0 3 6 20) label
compute cg = cut(x), group(3)
* the order of the rows is as it was
assert id == _n
list g x r-tg, separator(0)
list g x sq-cg, separator(0)
* ranks sum to n(n+1)/2 and a tag marks the first of a group
quietly summarize r
assert r(sum) == 66
assert tg == (_n <= 3)
drop r-cg
compute mo = mode(mod(x, 2)), by(g) minmode
compute mx = mode(mod(x, 2)), by(g) maxmode
compute mn = mode(mod(x, 2)), by(g)
gen y = 10-x
gen str2 s = "s"
compute r1 = rowtotal(x y g)
compute r2 = rowmean(x y g)
compute r3 = rowsd(x y g)
compute r4 = rowmin(x y g)
compute r5 = rowmax(x y g)
compute r6 = rowmiss(x y g s)
compute r7 = rownonmiss(x y g s)
compute r8 = rowfirst(x y g)
compute r9 = concat(s x g), punct(-)
compute double d = mean(x/3)
compute byte low = min(x)
list g x mo-mn r1-low, separator(0)
foreach v in r2 d low {
	display "`v': `: type `v''"
}
foreach bad in "q = nosuch(x)" "q mean(x)" "x = mean(x)" "q = mean(zz)" "q = rank(x), field track" {
	capture noisily compute `bad'
	display _rc
}
* a function of one's own is found like any command
program _gspan
	version 12.1
	syntax newvarname =/exp [if] [in] [, BY(varlist)]
	tempvar low
	if "`by'" != "" {
		local groups by(`by')
	}
	quietly {
		_gmin double `low' = `exp' `if' `in', `groups'
		_gmax `typlist' `varlist' = `exp' `if' `in', `groups'
		replace `varlist' = `varlist' - `low'
	}
end
compute span = span(x), by(g)
by g, sort: summarize x span

quantiles q4 = x, groups(4)
tabulate q4
quantiles q2 = x, groups(2) by(g)
bysort g (x): list g x q2, clean
compute words = count(s), by(g)
assert words == 4
* value labels are named for the variable; a failing function leaves nothing behind
compute lab = group(g s), label
label list lab
capture noisily compute fails = cut(x), at(3 1)
capture noisily compute fails = mean(s)
capture confirm new variable fails
assert _rc == 0
