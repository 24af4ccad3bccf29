* Levels are given back however they end, and what they changed with them.
tempname handle
local mine kept
program deep
    global depth = $depth + 1
    deep
end
global depth 0
capture deep
display _rc " after $depth"
global depth 0
capture deep
display _rc " after $depth"

program spoiler
    version 7
    local mine spoiled
    set more off
    tempfile f
    tempvar v
    quietly include "inner.do"
    noisily display "`mine' `shared' " c(version)
    error `1'
end
file open f using inner.do, write
file write f "local shared yes" _n "local mine inner" _n
file close f
capture noisily spoiler 459
display _rc " `mine' " c(version) " `shared'"

* a do-file's own level, its arguments, its delimiter
file open f using args.do, write
file write f "#delimit ;" _n `"display "0: \`0'" "1: \`1' 2: \`2'" ;"' _n
file write f "local mine gone; version 9; exit 7; display 1;" _n
file close f
capture noisily do args "a b" c
display _rc " `mine' " c(version)
run args x
do args x, nostop
do args x, nonsense
do nosuchfile
capture do nosuchfile.txt
display _rc

* stop and nostop
file open f using stops.do, write
file write f "error 111" _n "display 1" _n
file close f
capture noisily do stops
display _rc
do stops, nostop
display "done"

* a program that drops itself ends with 0
program selfdrop
    program drop selfdrop
    display "not reached"
end
capture noisily selfdrop
display _rc
capture selfdrop
display _rc
