* estimates posted by programs: names, sample, classes, hold and back
set obs 10
gen x = _n
gen byte touse = x > 4
matrix b = (1, 2, 0)
matrix V = (4, 1, 0 \ 1, 9, 0 \ 0, 0, 0)
matrix colnames b = x z _cons
matrix colnames V = x z _cons
matrix rownames V = x z _cons
program poster, eclass
	ereturn post b V, depname(y) obs(6) dof(5) esample(touse)
	ereturn local cmd poster
	ereturn scalar extra = 7
end
capture ereturn post b V
display _rc
poster
ereturn list
ereturn display
count if e(sample)
display c(k)
capture confirm variable touse
display _rc
display _b[z] " " _se[x]
* a held set leaves nothing behind and comes back whole
_estimates hold mine
ereturn list
capture display _b[z]
display _rc
_estimates dir
describe, simple
_estimates unhold mine
display _b[z] " " e(extra)
count if e(sample)
* new values under the old names
program again, eclass
	matrix c = (5, 6, 7)
	matrix colnames c = x z _cons
	ereturn repost b = c
end
again
display _b[z] " " e(extra) " " _se[z]
program wrong, eclass
	matrix c = (5, 6, 7)
	ereturn repost b = c
end
capture noisily wrong
program misshapen, eclass
	matrix d = I(2)
	matrix b = (1, 2, 3)
	ereturn post b d
end
capture noisily misshapen
display _b[z]
program lopsided, eclass
	matrix b = (1, 2)
	matrix d = (1, 2 \ 3, 4)
	ereturn post b d
end
capture noisily lopsided
* what a program holds goes, or comes back, with it
program holder
	_estimates hold x, restore
	capture display _b[z]
	display _rc
end
holder
display _b[z]
* old names go with the next estimates
global S_E_cmd old
program poster2, eclass
	ereturn post
	ereturn local cmd two
end
poster2
display "$S_E_cmd|" e(cmd)
count if e(sample)
* the sample through changes of the data
drop _all
set obs 10
gen x = _n
gen y = x^2
quietly regress y x in 1/6
gen after = 1
describe, simple
count if e(sample)
set obs 12
count if e(sample)
drop if x < 3
count if e(sample)
sort after y
keep x y
count if e(sample)
save kept, replace
use kept, clear
count if e(sample)
display c(k) " " _b[x]
quietly regress y x
drop _all
display c(k)
ereturn clear
ereturn list
