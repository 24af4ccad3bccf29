* command text taken apart and put together: _parse, parse, and display as a text
program apart
	_parse comma lhs rhs : 0
	display `"<`lhs'> <`rhs'>"'
	_parse expand c g : 0, common(Title() by()) gweight
	forvalues i = 1/`c_n' {
		display `"  `i' <`c_`i''>"'
	}
	display `"  if <`g_if'> in <`g_in'> weight <`g_wt'> options <`g_op'>"'
	_parse canonicalize again : c g
	display `"  `again'"'
	* what was put together comes apart into the same pieces
	_parse expand d h : again, common(Title() by()) gweight
	assert `d_n' == `c_n' & `"`h_if'`h_in'`h_wt'"' == `"`g_if'`g_in'`g_wt'"'
	forvalues i = 1/`c_n' {
		assert `"`d_`i''"' == `"`c_`i''"'
	}
end
apart x y if f(a, b) > 2, opt(1, 2) t
apart (a b, opt ti("x, y")) (c d if e, q) if z == 1 in 2/3 [fw=w], r by(s)
apart a b, opt || c d if e [aw=u], by(k) || , level(90)
apart (a) (b || c)
apart "a, b" `"c "d, e""', f
apart
foreach bad in "(a" "(a) b" "(a [aw=x]) (b [aw=y])" "(a) if 1 if 2" {
	local 0 `"`bad'"'
	capture noisily _parse expand c g : 0, gweight
	display _rc
}
local o a(1) t(1 2, left) title(3, right) b
_parse combop both : o, option(Title) opsin
assert "`both'" == "a(1) t(1 2 3, left right) b"
_parse combop last : o, option(Title) rightmost
assert "`last'" == "a(1) title(3, right) b"
local o , t(1) t(2)
_parse combop both : o, option(t)
assert "`both'" == ", t(1 2)"
capture noisily _parse combop both : o
capture noisily _parse comma a : o
capture noisily _parse nosuch a b : o
capture noisily _parse comma a b : o, nosuch
parse "a+b*(c)", parse("+*()")
assert "`1'`2'`3'`4'`5'`6'`7'`8'" == "a+b*(c)" & "`5'" == "("
* what display shows, as a text
local text : display %6.2f 3.14159 " is " "pi" _column(16) 2 + 2 _skip(2) _dup(3) "=" _char(33)
assert "`text'" == "  3.14 is pi    4  ===!"
local text : display as error "red" as text " and not" %8s "right"
assert "`text'" == "red and not   right"
capture local text : display nosuchname
assert _rc == 111
* a code that is known by another number; a setting that the list of c() has no row for
capture noisily error 7196
assert _rc == 180
set varabbrev off
assert c(varabbrev) == "off"
set varabbrev on
* an included file that fails says its code once
tempname h
file open `h' using inner.do, write
file write `h' "local seen 1" _n "error 459" _n
file close `h'
file open `h' using outer.do, write
file write `h' "include inner.do" _n
file close `h'
do outer, nostop
do outer
