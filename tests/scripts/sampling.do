* sample, resample, simulate, jackknife, bootstrap, collect
set obs 1000
gen g = mod(_n,4)
gen id = _n
set seed 5
sample 10, by(g)
tabulate g
sample 3, count by(g)
tabulate g
sample 50 if g == 1
capture noisily sample 101
clear
set obs 1000
gen g = mod(_n,4)
gen id = _n
* as many draws as rows, and within strata too
resample, weight(w)
summarize w
resample, weight(w) strata(g)
by g, sort: summarize w
resample 10, weight(w)
quietly summarize w
assert r(sum) == 10
* clusters are drawn whole
resample, cluster(g) weight(w)
by g, sort: assert w == w[1]
quietly summarize w
assert r(sum) == 1000
capture noisily resample 2000

program draw, rclass
	drop _all
	set obs 100
	gen x = invnormal(runiform())
	summarize x
	return scalar m = r(mean)
	return scalar v = r(Var)
end
simulate mean=r(m) v=(r(v)+1), reps(100) seed(7): draw
summarize
simulate, reps(3) nodots: draw
list, clean
capture noisily simulate, reps(3): nosuch
capture noisily simulate r(m): draw

clear
set obs 30
gen g = mod(_n,3)
gen x = _n^2
gen h = _n>15
tempfile st
quietly save `st'
collect m=r(mean) sd=r(sd), by(g) clear: summarize x if x>10
list, clean
quietly use `st', clear
collect, by(g h) clear total nodots: summarize x, detail
list g h N mean p50, clean
quietly use `st', clear
* a program that takes no range gets a dataset of its own
program middle, rclass
	summarize x
	return scalar q = r(mean)
end
collect q=r(q), by(g) clear nodots: middle
list, clean
quietly use `st', clear
jackknife m=r(mean), nodots: summarize x
local se = r(se_m)
quietly summarize x
* of a mean, the jackknife gives the usual standard error
assert reldif(`se', r(sd) / sqrt(r(N))) < 1e-10
jackknife r(mean), nodots cluster(g): summarize x
* rows come back as often as drawn, and whole clusters together
quietly use `st', clear
set seed 4
resample, cluster(g)
assert _N == 30
by g x, sort: assert _N == 1 | _N == 2 | _N == 3
quietly use `st', clear
bootstrap m=r(mean) sd=r(sd), reps(200) nodots seed(3): summarize x
* near the standard error from theory, 50.5
assert abs(r(se_m) - 50.5) < 8
bootstrap r(mean), reps(60) seed(3) strata(g): summarize x
assert _N == 30
