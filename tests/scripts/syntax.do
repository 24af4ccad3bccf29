set obs 5
gen x = _n
gen y = 2*x
gen str3 s = "a"
* what each part leaves behind
program parts
  syntax [varlist] [if] [in] [fweight aweight] [using/] [, Level(cilevel) noCONstant BY(varname) Name(string) As(string asis) N(integer 3) R(real .5) Num(numlist >=0 integer) Pass(passthru) ON *]
  display `"v=`varlist' if=`if' in=`in' w=`weight' e=`exp' u=`using'"'
  display `"level=`level' con=`constant' by=`by' name=`name' as=`as' n=`n' r=`r' num=`num' pass=`pass' on=`on' rest=`options'"'
end
parts
parts x if y > 2 in 2/4 [aw=x] using some.txt, noconst by(s) name("a b") as("a b") n(-2) r(1e3) num(1/3) pass(q) on other(1 2) more
parts x [w = y], level(90)
parts y, l(99) nocons
foreach bad in `"nosuch"' `"x, by(x y)"' `"x, n(1.5)"' `"x, n(a)"' `"x, num(-1)"' `"x, level(5)"' `"x [pw=x]"' `"x in 9/10"' `"x, by"' `"x, on(3)"' `"x if"' `"x, name(a"' {
  capture noisily parts `bad'
  display _rc
}
* required parts
program needs
  syntax varlist(min=2 max=3 numeric) if using , Gen(name) [Replace]
  display `"`varlist' `if' `using' `gen' `replace'"'
end
needs x y if 1 using "a b.txt", g(new) rep
foreach bad in `"x if 1 using a, g(n)"' `"x s if 1 using a, g(n)"' `"x y using a, g(n)"' `"x y if 1, g(n)"' `"x y if 1 using a"' `"x y in 1 if 1 using a, g(n)"' `"x y if 1 using a, g(n) other"' `", g(n)"' `"x y if 1 using a, g(1a)"' {
  capture noisily needs `bad'
  display _rc
}
* other kinds of names
program any
  syntax [anything(name=given id="things" equalok)] [if] [, Opt]
  display `"|`given'|`if'|`opt'|"'
end
any a = b (c, d) "e, f" if x == 1, opt
any
program anyreq
  syntax anything(id="things")
  display "`anything'"
end
capture noisily anyreq
program newv
  syntax newvarlist(min=1) =exp [, Double]
  display "`varlist'|`typlist'|`exp'|`double'"
end
newv a b = x + 1, double
newv double a int b = 2
capture noisily newv x = 1
program nl
  syntax namelist(max=2)
  display "`namelist'"
end
nl p q
capture noisily nl p q r
capture noisily nl p 2q
program optv
  syntax varname [, New(newvarname) Vars(varlist min=2) E(exp)]
  display "`varlist' `new' `vars' `e'"
end
optv x, new(fresh) vars(x-s) e(x*2)
capture noisily optv
capture noisily optv x y
capture noisily optv x, new(y)
capture noisily optv x, vars(x)
program nothing
  syntax
  display "fine"
end
nothing
capture noisily nothing x
capture noisily nothing , opt
program defnone
  syntax [varlist(default=none)] [, *]
  display "|`varlist'|`options'|"
end
defnone
defnone x, a b(c) a
* samples
program smp
  syntax [varlist] [if] [in] [fweight] [, Strok]
  marksample touse, `strok'
  quietly count if `touse'
  display r(N)
end
replace x = . in 2
replace y = .a in 3
smp x
smp x y if x > 1
smp x y in 1/2
smp x s
smp x s, strok
smp y [fw=x]
capture noisily smp y [fw=x/2]
mark m if x < 5
markout m y
list x y m, clean
markin if x == 4, name(r)
display "`r'"
* args, tokenize and gettoken
program ar
  args one two three
  display "`one'|`two'|`three'"
end
ar a "b c"
tokenize "a+b  c", parse("+ ")
display "`1'|`2'|`3'|`4'|`5'"
tokenize
display "`1'|"
local t `"(a b) c"(d)"'
gettoken first t : t, match(paren)
display `"`first'|`t'|`paren'"'
gettoken first t : t, bind
display `"`first'|`t'"'
