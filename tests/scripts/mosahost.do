* The matrix language within do-files, programs, prefixes, loops and files of programs.
set more off
* a block, a function over several lines, comments, lines that go on
mosa:
real scalar fib(real scalar n)
{
	if (n < 2) return(n)   // the two first
	return(fib(n-1) +
	       fib(n-2))
}
/* a comment
   of two lines */ fib(10)
x = (1,
     2)
x
end
local k 7
mosa: `k' + ///
	3
mosa: (`k',
	`k' + 1)
m: fib(7)
mosa fib(8)
* prefixes and levels of output
quietly mosa: 3 + 4
quietly {
	mosa
	5 + 6
	y = 5
	end
}
noisily mosa: y
capture mosa: y = nosuch(3)
display _rc
capture noisily mosa: 1 +* 2
display _rc
capture noisily mosa: exit(0)
display _rc
capture noisily mosa: exit(9)
display _rc
* dead and living blocks, loops
if 0 {
	mosa:
	if (1) {
		dead = 1
	}
	end
}
else {
	mosa
	alive = 1
	end
}
mosa: alive
capture mosa: dead
display _rc
foreach i in 1 2 3 {
	mosa: `i'*2
	mosa
	z`i' = `i'
	if (z`i' > 2) {
		"big"
	}
	real scalar f`i'() return(`i')
	end
}
mosa: (z1, z2, z3, f1() + f2() + f3())
forvalues i = 1/2 {
	mosa:
	for (j=1; j<=`i'; j++) printf("%g.%g ", `i', j)
	printf("\n")
	end
}
local i = 0
while `i' < 2 {
	local ++i
	mosa: `i'
}
#delimit ;
mosa: `k'
	+ 1;
mosa;
a = 1
	+ 3;
a;
end;
#delimit cr
* an error in a block of a program: the code, temporary things gone, the machine sound
program failing
	tempvar t
	tempname m
	generate `t' = 1
	matrix `m' = (1,2)
	local inner 3
	mosa:
	before = `inner'
	A = (1,2) + (1,2,3)
	after = 1
	end
	display "not reached"
end
quietly set obs 2
capture noisily failing
display _rc
describe, short
matrix dir
mosa: before
capture mosa: after
display _rc
* programs and statements within each other
program outer
	args n x
	mosa: ovata("inner `0'")
	display "back in outer `n'"
end
program inner
	args n x
	mosa: w`n' = `n'
	if `n' > 1 {
		outer `=`n'-1'
	}
	if `n' == 1 & "`x'" != "" {
		error 459
	}
end
mosa:
real scalar twice(real scalar n)
{
	real scalar kept
	kept = n
	ovata("outer 2")
	(void) _ovata("capture mosa: nosuch()")
	return(2*kept)
}
twice(21)
(w1, w2)
rc = _ovata("inner 1 x")
rc
end
capture noisily outer 1 x
display _rc
mosa: twice(4)
* as deep as programs go, and told so
program bottomless
	mosa: rc = _ovata("bottomless")
end
quietly bottomless
mosa: rc
* what a program defines is its own, and goes with it
program own
	capture mosa: real scalar priv() return(5)
	mosa: priv()
end
own
own
capture mosa: priv()
display _rc
program drop own
program own
	mosa: real scalar priv() return(6)
	mosa: priv()
end
own
tempname h
file open `h' using ownfile.ado, write text replace
file write `h' "program ownfile" _n "version 12" _n "Part" _n "mosa: total(3)" _n "end" _n
file write `h' "program Part" _n "mosa: total(4)" _n "end" _n "mosa:" _n
file write `h' "struct pair {" _n "real scalar a" _n "}" _n
file write `h' "class cell {" _n "real scalar b" _n "real scalar get()" _n "}" _n
file write `h' "real scalar cell::get() {" _n "return(b*helper())" _n "}" _n
file write `h' "real scalar total(real scalar x) {" _n "struct pair scalar p" _n
file write `h' "class cell scalar c" _n "p.a = x" _n "c.b = p.a" _n "return(c.get())" _n "}" _n
file write `h' "real scalar helper() return(10)" _n "end" _n
file close `h'
ownfile
capture mosa: total(1)
display _rc
mosa: real scalar helper() return(1000)
ownfile
mosa: helper()
discard
ownfile
program drop ownfile
ownfile
mosa clear
ownfile
mosa describe
* functions and matrices of their own
mosa: q = 5
mosa: real scalar g() return(q)
mosa: pp = &q
mosa: cc = 1
mosa: cc = &cc
mosa describe
mosa drop q
mosa: *pp
capture mosa: q
display _rc
mosa describe
mosa rename g() gg
capture noisily mosa rename gg() 2bad
display _rc
mosa which gg()
mosa
mosa_drop gg()
mosa describe
end
clear
mosa describe
mosa: 1
clear all
ownfile
* tracing shows the lines of programs, and blocks go through logs
set trace on
outer 1
set trace off
quietly log using inner.log, text replace
mosa: 6*7
quietly log close
type inner.log
* the end of the file within a block, and within a bracket
file open `h' using cut.do, write text replace
file write `h' "mosa:" _n "1+1" _n
file close `h'
capture noisily do cut
display _rc
file open `h' using cut.do, write text replace
file write `h' "mosa:" _n "foo(" _n
file close `h'
capture noisily do cut
display _rc
mosa: "still here"
