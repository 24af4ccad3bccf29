* wrong calls: each gives its code, and the data stay
program wrong
	gettoken code 0 : 0
	_datasignature
	local before `r(datasignature)'
	capture `0'
	local rc = _rc
	if `rc' != `code' {
		display as error `"`0': r(`rc') and not r(`code')"'
	}
	_datasignature
	if "`r(datasignature)'" != "`before'" {
		display as error `"`0': the data changed"'
	}
end
set obs 10
gen x = _n
gen double y = x^2
gen str3 s = "a" + string(mod(_n,3))
gen byte d = mod(_n,2)
label define L 0 "no" 1 "yes"
label values d L
tempfile other
quietly save `other'
rename x xx
quietly save right, replace
quietly use `other', clear
* names that are not there, or there already
wrong 111 summarize nosuch
wrong 111 regress x nosuch
wrong 111 tabulate nosuch
wrong 111 drop nosuch
wrong 111 keep nosuch
wrong 111 sort nosuch
wrong 111 list nosuch
wrong 111 replace nosuch = 1
wrong 111 encode nosuch, gen(c)
wrong 111 generate z = nosuch
wrong 111 rename nosuch z
wrong 111 format nosuch %9.0g
wrong 111 expand nosuch
wrong 111 aggregate (mean) nosuch
wrong 111 reshape long nosuch, i(x) j(t)
wrong 111 ttest nosuch == 3
wrong 111 recode nosuch (1=2)
wrong 111 label values nosuch L
wrong 111 by nosuch, sort: list
wrong 111 order nosuch
wrong 111 confirm variable nosuch
wrong 111 duplicates report nosuch
wrong 111 tonumber nosuch, replace
wrong 110 generate x = 1
wrong 110 rename x y
wrong 110 encode s, gen(x)
wrong 110 compute y = mean(x)
wrong 110 confirm new variable x
wrong 110 mark x
* text where numbers belong, numbers where text does
wrong 109 generate z = s + 1
wrong 109 replace x = "text"
wrong 109 replace s = 5
wrong 109 summarize x if s
wrong 109 generate z = x + "a"
wrong 109 expand s
wrong 107 encode x, gen(c)
wrong 109 list if s == 1
wrong 109 assert x == "a"
wrong 7 confirm numeric variable s
wrong 7 confirm string variable x
* too little, too much, no such option
wrong 102 generate
wrong 301 regress
wrong 301 predict p
wrong 198 summarize x, nosuch
wrong 198 list x, nosuch
wrong 198 regress x y, nosuch
wrong 198 tabulate x, nosuch
wrong 198 sort x, nosuch
wrong 198 generate z = 1, nosuch
wrong 198 save, nosuch
wrong 198 label nosuch
wrong 198 summarize x in 5/2
wrong 198 summarize x in 1/11
wrong 198 set obs -1
wrong 198 generate 1z = 2
wrong 102 generate if = 2
wrong 198 rename x _n
wrong 198 recast nosuch x
wrong 120 format x %9.0q
wrong 111 format x nonsense
wrong 103 tabulate x y d
* no rows to work on
wrong 2000 regress x y if x > 100
wrong 2001 ttest x == 3 if x > 100
wrong 2000 aggregate (mean) x if x > 100
wrong 0 summarize x if x > 100
wrong 0 list if x > 100
wrong 0 count if x > 100
* expressions
wrong 198 display 1 +
wrong 132 display (1
wrong 132 display 1)
wrong 133 display nosuchfunction(1)
wrong 111 display nosuch
wrong 109 display sqrt("a")
wrong 198 display sqrt(1,2)
wrong 132 generate z = (1
wrong 503 matrix A = (1,2)*(3,4)
wrong 503 matrix A = (1,2) + (1,2,3)
wrong 111 matrix A = nosuch + 1
wrong 111 matrix list nosuch
wrong 505 matrix A = cholesky((1,2\3,4))
* files
wrong 601 use nosuch
wrong 601 use nosuch, clear
wrong 601 _append using nosuch
wrong 601 _merge 1:1 x using nosuch
wrong 601 insheet using nosuch, clear
wrong 601 do nosuch
wrong 601 type nosuch.txt
wrong 601 erase nosuch.dta
wrong 602 save `other'
wrong 602 outsheet using right.dta
wrong 603 save nosuchfolder/x
wrong 170 cd nosuchfolder
wrong 601 confirm file nosuch
wrong 111 _merge 1:1 x using right
wrong 459 _merge 1:1 d using `other'
* structure
wrong 5 by d: list
wrong 9 assert x < 5
wrong 199 nosuchcommand
wrong 199 nosuchcommand x, by(y)
wrong 198 clear nosuchpart
wrong 3 exit 3
wrong 7 error 7
wrong 111 estimates restore nosuch
replace x = 5 in 1
wrong 4 use right
wrong 18 insheet using right.dta
