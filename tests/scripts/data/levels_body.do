* Levels are given back however they end, and what they changed with them.
global data : environment TESTDATA
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
    quietly include "$data/inner.do"
    noisily display "`mine' `shared' " c(version)
    error `1'
end
capture noisily spoiler 459
display _rc " `mine' " c(version) " `shared'"

* a do-file's own level, its arguments, its delimiter
capture noisily do $data/args "a b" c
display _rc " `mine' " c(version)
run $data/args x
do $data/args x, nostop
do $data/args x, nonsense
do nosuchfile
capture do nosuchfile.txt
display _rc

* stop and nostop
capture noisily do $data/stops
display _rc
do $data/stops, nostop
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
