* Items, formats, directives, and the difference between a text and a value.
display 2 + 2
display "sum " 2 + 2 ", product " 2 * 3
display "{bf:bold}" "{bf:" + "raw}"
local x = 5
display "x is `x'" _newline(2) "two lines below"
display %8.2f 3.14159 "|" %-8.2f 3.14159 "|" %8s "abc" "|" %-8s "ab" + "c" "|"
display %td 0 " " %tdCCYY-NN-DD 365
display as text "t" as result "r" as error "e" as input "i" in red "x"
display "a" _column(10) "b" _skip(3) "c" _dup(3) "-=" "|"
display 1 , 2 ,, 3
display _asis "{bf:braces}" _char(33)
display "to be " _continue
display "continued"
display (1 + 2) * 3 -4
display = 1/3
display .a " " . " " 1e300*1e300
display "abc" == "abc"
display "{hline 10}{c |}{c -(}{c )-}{&alpha}"
display "{p 4 8 2}A paragraph of words that is long enough to be wrapped at the width of the log, with an indent of its own.{p_end}"
display
capture noisily display "never closed
capture noisily display 1 + "a"
capture noisily display %9.2q 1
capture noisily display %9.2f "text"
capture noisily display nosuch
capture noisily display as purple "x"
quietly display "hidden"
quietly display as error "errors are seen"
display c(N) " " _N
set obs 3
generate y = _n * 10
display y " " y[2] " " y[4]
display "`=y[3]'"
