* the smallest and the largest data: none, one row, one variable short of the limit
program code
	gettoken want 0 : 0
	capture `0'
	if _rc != `want' {
		display as error `"`0': r(`=_rc')"'
	}
end
* ---- nothing at all
assert _N == 0 & c(k) == 0
code 0 list
code 0 describe
code 0 count
assert r(N) == 0
code 0 drop _all
code 0 clear
code 111 summarize x
code 111 save nothing
code 0 compress
code 622 restore
code 0 set obs 0
* variables without rows
code 0 generate x = _n
code 0 generate str5 s = "a"
assert _N == 0 & c(k) == 2
code 0 replace x = 5
code 0 summarize
assert r(N) == 0
code 0 summarize x, detail
code 0 list
code 0 sort x
code 0 bysort s: count
code 0 drop if x == .
code 0 assert x == 3
code 0 save norows
code 0 use norows, clear
assert _N == 0 & c(k) == 2
confirm string variable s
code 0 _append using norows
assert _N == 0
code 2000 regress x x
code 0 expand 2
code 0 outsheet using norows.csv, comma
code 0 compress
code 2000 compute m = mean(x)
* ---- one row
clear
set obs 1
generate x = 3
generate str1 s = "q"
code 0 summarize x, detail
assert r(N) == 1 & r(mean) == 3 & r(p50) == 3 & r(min) == 3 & r(max) == 3
assert r(sd) == . & r(skewness) == .
code 0 tabulate x
assert r(N) == 1 & r(r) == 1
code 0 tabulate x s
code 0 sort x s
code 0 by x: assert _N == 1
code 0 expand 1
assert _N == 1
code 0 expand 0
assert _N == 1
code 0 expand 4
assert _N == 4 & x == 3 & s == "q"
code 0 duplicates drop
assert _N == 1
code 0 encode s, generate(e)
assert e == 1
code 0 aggregate (mean) x (count) n=e
assert x == 3 & n == 1 & c(k) == 2
display x[0] " " x[1] " " x[2] " " x[-1] " " x[.]
generate lag = x[_n-1]
generate lead = x[_n+1]
assert lag == . & lead == .
code 0 keep if x == 3
assert _N == 1
code 0 drop if x == 3
assert _N == 0 & c(k) == 4
* ---- the last variable that fits
clear
set obs 3
local most = c(max_k_theory)
forvalues i = 1/`=`most' - 1' {
	quietly generate byte v`i' = `i'
}
assert c(k) == `most' - 1
code 0 generate last = v1 + v2
assert c(k) == `most' & last == 3
code 900 generate toomany = 1
code 107 encode v1, generate(toomany)
code 900 generate str5 toomany = "a"
assert c(k) == `most'
* what stands can still be worked with
code 0 replace last = last*1000.5
assert last == 3001.5
code 0 sort last v1
code 0 by last: assert _N == 3
code 0 recast double last
code 0 summarize last if v5 == 5
assert r(N) == 3
code 0 regress last v1
code 0 drop v1-v10
assert c(k) == `most' - 10
code 0 generate toomany = 1
code 0 save wide
code 0 use wide, clear
assert c(k) == `most' - 9 & v11 == 11 & toomany == 1
* ---- the widest text and the extremes of each type
clear
set obs 2
local long
forvalues i = 1/244 {
	local long x`long'
}
generate str244 t = "`long'"
assert length(t) == 244 & substr(t, 244, 1) == "x"
code 103 generate str245 u = ""
code 0 replace t = t + "y"
assert length(t) == 244
generate byte b = 100
generate int i = 32740
generate long l = 2147483620
assert b == 100 & i == 32740 & l == 2147483620
replace b = 101 in 1
replace i = 32741 in 1
replace l = 2147483621 in 1
assert b[1] == 101 & i[1] == 32741 & l[1] == 2147483621
foreach pair in "b int" "i long" "l double" {
	local name : word 1 of `pair'
	local type : word 2 of `pair'
	assert "`: type `name''" == "`type'"
}
generate byte neg = -127
replace neg = -128 in 2
assert "`: type neg'" == "int" & neg[2] == -128
* numbers beyond a kept type become missing, and are counted
generate byte small = 1
replace small = 1000, nopromote
assert small == .
