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
