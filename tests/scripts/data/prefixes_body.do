* Every prefix puts back what it changed, after an error too.
program where
    display "shown " c(version)
    error 9
end
quietly where
capture noisily where
display _rc
capture where
display _rc
capture noisily quietly where
quietly noisily where
program loud
    noisily display "loud"
    quietly display "soft"
end
loud
quietly loud
quietly noisily loud
capture loud
capture: display "no"
quietly : display "no"
noisily: display "yes"
version 8: where
display c(version)
version 5: display c(version)
version
version 8.2
version
version 12.1
version 7, missing
version
version 12.1
version 13
version 12.2
version 0.5
version 12.123
version x
version 12345678901.5
version 8, born(1jan2050)
version 8, born(1foo2050)
version 8, nonsense
display c(version)
novarabbrev capture error 5
display c(varabbrev) " " _rc
varabbrev display c(varabbrev)
nobreak display "still"
break display "still"
* dead lines: braces count, nothing is expanded or run
if 0 {
    while 1 {
        quietly {
            capture noisily {
            }
        }
    }
    foreach x of nonsense {
        version 99: if 1 {
        }
    }
    local z `=1/' `nosuch(
    mosa {
    }
    nosuchcommand
}
else {
    display "else"
}
error 111
error 0
exit 0 + 3
display "not reached"
