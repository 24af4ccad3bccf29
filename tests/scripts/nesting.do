* programs, loops and macros by two ways: recursion, nested loops, quoting, levels
program factorial, rclass
	args n
	if `n' <= 1 {
		return scalar f = 1
		exit
	}
	factorial `=`n' - 1'
	return scalar f = `n'*r(f)
end
factorial 10
assert r(f) == 3628800
assert r(f) == round(exp(lnfactorial(10)))
program fib, rclass
	args n
	if `n' < 2 {
		return scalar v = `n'
		exit
	}
	fib `=`n' - 1'
	local a = r(v)
	fib `=`n' - 2'
	return scalar v = `a' + r(v)
end
local x 0
local y 1
forvalues i = 1/12 {
	local z = `x' + `y'
	local x `y'
	local y `z'
}
fib 12
assert r(v) == `x'
* loops inside loops, left early and stepped over
local seen
forvalues i = 1/4 {
	foreach w in a b c {
		if "`w'" == "b" & `i' == 2 {
			continue, break
		}
		if `i' == 3 {
			continue
		}
		local seen `seen' `i'`w'
	}
}
assert "`seen'" == "1a 1b 1c 2a 4a 4b 4c"
local n 0
while 1 {
	local ++n
	if mod(`n', 7) == 0 & mod(`n', 5) == 0 {
		continue, break
	}
}
assert `n' == 35
* counted steps up, down, by parts and by lists
local up 0
forvalues i = 2(3)20 {
	local up = `up' + `i'
}
assert `up' == 2 + 5 + 8 + 11 + 14 + 17 + 20
local down
forvalues i = 3(-1)-2 {
	local down `down' `i'
}
assert "`down'" == "3 2 1 0 -1 -2"
local parts
forvalues i = 0(.25)1 {
	local parts `parts' `i'
}
assert `: word count `parts'' == 5
forvalues i = 5/4 {
	assert 0
}
foreach i of numlist 1/3 8 10(5)20 {
	local nums `nums' `i'
}
assert "`nums'" == "1 2 3 8 10 15 20"
* a macro made of macros, made at each turn
forvalues i = 1/5 {
	local m`i' = `i'^2
}
local total 0
forvalues i = 1/5 {
	local total = `total' + `m`i''
}
assert `total' == 55
local pointer m4
assert ``pointer'' == 16
local k 2
assert `m`++k'' == 9 & `k' == 3
assert `m`k--'' == 9 & `k' == 2
* quotes survive being handed on
program echo
	args a b
	local again `"`a'"'
	assert `"`again'"' == `"`a'"'
	display `"<`a'><`b'>"'
end
echo `"say "hi""' "two  blanks"
echo "" last
* sets of words, against foreach
local A 1 2 2 3 5 8
local B 2 3 4 8 8
local both : list A & B
local either : list A | B
local only : list A - B
local once : list uniq A
foreach w of local both {
	assert `: list posof "`w'" in A' & `: list posof "`w'" in B'
}
foreach w of local A {
	assert `: list posof "`w'" in either'
}
assert "`once'" == "1 2 3 5 8"
assert `: list sizeof once' == 5
assert `: list once in A'
assert !`: list A in B'
* errors climb out of every level and leave the outer locals be
program deep
	args n
	local mine `n'
	if `n' == 0 {
		error 459
	}
	capture noisily deep `=`n' - 1'
	local rc = _rc
	assert "`mine'" == "`n'"
	exit `rc'
end
local outer stays
capture deep 6
assert _rc == 459 & "`outer'" == "stays"
* too deep is an error and not an end
program bottomless
	bottomless
end
capture bottomless
assert _rc == 1000
factorial 5
assert r(f) == 120
* results: kept until the next of their class, looked at by name
set obs 5
generate v = _n
quietly summarize v
local mean = r(mean)
generate w = v - r(mean)
assert r(mean) == `mean' & r(N) == 5
quietly count if w > 0
assert r(N) == 2 & r(mean) == .
capture program drop nosuch
assert _rc == 111
program drop factorial fib
capture factorial 3
assert _rc == 199
* version comes back after a program
program old
	version 6
	assert _caller() <= 12.1
end
local before = c(version)
old
assert c(version) == `before'
