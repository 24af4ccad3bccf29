global data : environment TESTDATA
global S_ADO "$data/ado;BASE"
aload one two
bload
display "`r(who)'"
capture noisily helper
display _rc
capture noisily fails
display _rc
capture notreached1
display _rc
capture noisily nodef
display _rc
capture noisily nosuchcommand a b
display _rc
capture noisily 9bad
aload after failures
#delimit ;
bload ; display
  "still here" ;
#delimit cr
program dir
program drop aload
aload loads again with its own
discard
program dir
capture which aload
display _rc
display "`: properties pargs'"
set obs 6
gen g = mod(_n, 2)
sort g
gen x = _n
by g: pargs x if x > 1
pargs x
if 1 {
  aload in a block
  display "line after"
}
capture quietly aload silent
capture noisily program aload
* the path of program files: in front, at the end, moved, taken away by name and by number
local before $S_ADO
mkdir first
mkdir last
foreach where in first last {
	file open h using `where'/whence.ado, write replace
	file write h "program whence" _n "display " `"""' "`where'" `"""' _n "end" _n
	file close h
}
quietly adopath + last
whence
discard
quietly adopath ++ first
assert "$S_ADO" == "first;`before';last"
whence
discard
quietly adopath + first
assert "$S_ADO" == "`before';last;first"
whence
quietly adopath - last
assert "`r(path)'" == "`before';first"
quietly adopath ++ first
quietly adopath - 1
assert "$S_ADO" == "`before'"
foreach bad in "- nosuch" "+" "first" "+ a b" "- 9" `"+ "a;b""' {
	capture adopath `bad'
	assert inlist(_rc, 111, 198) & "$S_ADO" == "`before'"
}
