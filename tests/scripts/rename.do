* rename: one variable, groups, patterns, letters
set obs 2
foreach v in a b inc1990 inc1991 pop1990 {
	gen `v' = _n
}
label variable a "first"
rename a A
rename (A b) (b A)
assert "`: variable label b'" == "first"
ren inc* income*
rename (*1990 *1991) (*90 *91)
describe, simple
rename *, upper
rename _all, lower prefix(x_)
describe, simple
rename x_?nc* *_?
describe, simple
rename (*) v#
describe, simple
rename (v1 v2 v3) (v2 v3 v1), dryrun
rename (v1 v2 v3) (v2 v3 v1)
* a failing rename leaves all names as they were
foreach bad in "v1 v2" "v1 if" "v* same" "v1" "nosuch v9" "(v1 v2) (a b c)" "(v1 v1) (a b)" "(v1 v2) (z byte)" {
	capture noisily rename `bad'
	display _rc
}
describe, simple
rename v1 w
return list
