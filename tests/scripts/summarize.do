set obs 10
generate x = _n
generate y = x^2 if x != 4
generate str3 s = "a"
generate w = mod(x, 3)
summarize
return list
summarize y, detail
return list
summarize x y [fweight=w]
summarize x [aw=w]
display r(N) " " r(sum_w) " " r(Var)
summarize x [w=w]
summarize x if x > 100
display r(N) " " r(mean)
summarize x, meanonly
display r(mean)
capture noisily summarize x [pw=w]
display _rc
capture noisily summarize x, det mean
display _rc
capture noisily summarize x [fw=x/2]
display _rc
generate g = x > 5
bysort g: summarize x
* One value, and a large mean with a small spread.
drop x
generate double x = 1e9 + mod(_n, 2)
summarize x
display %21.0g r(Var)
drop in 2/l
summarize x, detail
