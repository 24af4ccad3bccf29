* arguments
program show
  display `"0=|`0'| 1=|`1'| 2=|`2'| 3=|`3'|"'
end
show "one two" three
show `"a "b" c"' "" d
show
* a program of that name stands already, an empty body, a wrong option
capture noisily program show
program empty
end
capture noisily empty
capture noisily program wrong, byable(maybe)
capture noisily program drop nosuch
* stored lines: blanks shrink outside quotes only
program   blanks
      display   "a   b"   `"c   "d   e"   f"'   
end
program list blanks
blanks
* locals belong to a level
local x outer
program inner
  display "inner sees |`x'|"
  local x changed
  c_local y from below
end
inner
display "`x' `y'"
* return codes climb; capture stops them; everything is put back
program deep
  args n
  local before `n'
  tempvar t
  tempname s
  scalar `s' = 1
  gen `t' = 1
  version 8
  if `n' == 0 {
    error 111
  }
  local m = `n' - 1
  quietly deep `m'
  display "never"
end
set obs 3
gen a = 1
local k = c(k)
capture noisily deep 6
display _rc " " c(k) == `k' " " c(version) " `: all scalars __*'|`before'|"
capture quietly deep 2
display "shown"
* too deep
program forever
  forever
end
capture noisily forever
display _rc
* a program that drops itself; one that redefines itself
program selfdrop
  display "first"
  program drop selfdrop
  display "not reached"
end
selfdrop
display _rc
capture selfdrop
display _rc
* results
program r1, rclass
  return scalar x = 1
  display "`r(x)' `return(x)'"
  quietly summarize a
  return add
  display "|`r(mean)'|`return(mean)'"
  return local text "some words"
end
r1
return list
program plain
  quietly summarize a
end
plain
display r(N)
program r0, rclass
  quietly summarize a
end
r0
display "|`r(N)'|"
program r2, rclass
  return scalar y = 2
  return
  display "not reached"
end
r2
display r(y)
program rfail, rclass
  return scalar z = 3
  error 198
end
capture rfail
display r(z)
program s1, sclass
  sreturn local a "from s"
end
s1
display "`s(a)'"
program e1, eclass
  ereturn clear
  ereturn scalar n = 10
  ereturn local cmd "e1"
end
e1
ereturn list
capture noisily return local x 1
capture noisily ereturn local x 1
capture noisily sreturn local x 1
* exit
program leaves
  exit 459
end
capture leaves
display _rc
program ex0
  foreach i in 1 2 {
    if 1 {
      exit
    }
  }
  display "not reached"
end
ex0
* sorting and data come back
replace a = 4 - _n
program keeps, sortpreserve
  sort a
  list
end
keeps
list, clean
program pres
  preserve
  drop in 1/2
  display _N
  capture preserve
  display _rc
end
pres
display _N
capture noisily restore
preserve
drop a
restore, preserve
drop in 1
restore, not
display _N
* definitions in blocks
if 1 {
  program inblock
    display "made in a block"
  end
}
inblock
if 0 {
  program notmade
    if x {
    display "{"
    }
  end
}
capture notmade
display _rc
* held estimates come back with the level when asked
program fits, eclass
  ereturn clear
  ereturn local cmd "`1'"
end
program keepsest
  _estimates hold old, restore
  fits inner
  display "`e(cmd)'"
end
fits outer
keepsest
display "`e(cmd)'"
_estimates dir
* an s-class program starts with an empty s(); one that sets nothing leaves it so
program s2, sclass
  local nothing "`s(a)'"
end
program nos
  display "plain: `s(a)'"
end
s1
nos
foreach i in 1 2 {
  nos
}
s2
sreturn list
display "[`s(a)']"
