forvalues i = 1/3 {
  display "`i'"
}
display "|`i'|"
forvalues i = 10(-5)0 {
  display "`i'"
}
forvalues i = 1 3 to 7 {
  display "`i'"
}
forvalues i = 1 2 : 3 {
  display "`i'"
}
forvalues i = 3/1 {
  display "never"
  if 1 {
  }
}
local n 0
forvalues i = 0(.1)1 {
  local ++n
}
display `n'
capture noisily forvalues i = 1(0)3 {
  display "never"
}
display _rc
capture noisily forvalues i = 1/x {
  display "never"
}
display "after"
foreach x in a "b c" `"d "e" f"' {
  display `"[`x']"'
}
foreach x in {
  display "never"
}
foreach n of numlist 1/3 7 {
  display `n'
}
set obs 2
gen alpha = 1
gen beta = 2
foreach v of varlist a* beta {
  display "`v'"
}
foreach v of newlist c1 c2 {
  display "`v'"
}
capture noisily foreach v of newlist alpha {
  display "`v'"
}
local m a b
foreach x of local m {
  display "`x'"
  if "`x'" == "a" {
    local m `m' c
  }
}
global g x y
foreach x of global g {
  display "`x' rest: `foreach()'"
}
foreach x in 1 2 3 4 {
  if `x' == 2 {
    continue
  }
  if `x' == 4 continue, break
  foreach y in p q {
    if "`y'" == "q" {
      continue, break
    }
    display "`x' `y'"
  }
}
local i 0
while `i' < 5 {
  local ++i
  if `i' == 2 continue
  if `i' == 4 {
    continue, break
  }
  display `i'
}
display `i'
capture noisily continue
display _rc
* nothing of the block runs after an error, and the loop ends
capture noisily foreach x in 1 2 {
  display "`x'"
  error 111
  display "never"
}
display _rc
* chains
foreach x in 1 2 3 4 {
  if `x' == 1 {
    display "one"
  }
  else if `x' == 2 {
    if 0 {
      display "never"
    }
    else display "two"
  }
  else if `x' == 3 display "three"
  else {
    display "many"
  }
}
if 0 display "never"
else if 0 display "never"
else display "last"
capture noisily if 1 else display "never"
if 0 {
  foreach x in a {
    while 1 {
      forvalues i = 1/`nosuch' {
      }
    }
  }
  if {
  }
}
display "behind dead code"
capture noisily if 1 { display "x"
}
* older versions write code beside the braces
program old1
  version 7
  if 1 { display "old style" }
  else { display "never" }
  if 0 { display "never" }
  else { display "other" }
  local i 0
  while `i' < 3 { 
    local i = `i' + 1
    if `i' == 1 { display "in one line" } 
    display `i' }
end
capture noisily old1
program old2
  version 7
  local i 1
  while `i' <= 2 {
    local i = `i' + 1 }
  display "`i'"
end
old2
* a loop lifted out of a do-file has no level of its own
while "`made'" == "" {
  local made here
}
display "`made'"
program leaver
  forvalues i = 1/3 {
    if `i' == 2 {
      exit
    }
    display `i'
  }
  display "never"
end
leaver
capture program drop old
quietly foreach x in 1 2 {
  display "silent"
  noisily display "loud `x'"
}
local word while
capture noisily `word' 1 {
}
display _rc
* new names, as a range too; names that are taken are refused
clear
set obs 1
gen taken = 1
local made
foreach v of newlist b1-b3 c {
	local made `made' `v'
}
assert "`made'" == "b1 b2 b3 c"
capture noisily foreach v of newlist b1 taken {
	assert 0
}
display _rc
