* commands about the names of rows and columns, and about lists with operators
set more off
sysuse penguins, clear
quietly regress body_mass_g i.species##i.island c.bill_depth_mm##c.bill_depth_mm
_ms_omit_info e(b)
matrix list r(omit), noheader
assert r(k_omit) == 11
_ms_empty_info e(b)
assert r(k_empty) == 3 & el(r(empty), 1, 12) == 1 & el(r(empty), 1, 10) == 0
_ms_op_info e(b)
return list
_ms_eq_info
return list
forvalues j = 11/13 {
	_ms_element_info, element(`j')
	display "`r(name)' `r(type)' `r(term)' `r(level)' `r(note)' " r(k_pos) " of " r(k_term) " " r(first)
}
_ms_display, element(2) first
display ""
_ms_display, element(17)
display ""
capture noisily _ms_display, element(99)
_ms_extract_varlist i.species c.bill_d#c.bill_d _cons
display "`r(varlist)'"
_ms_extract_varlist 2.species i.sex, nofatal
display "`r(varlist)'"
capture noisily _ms_check_varlist i.sex
_ms_check_varlist i.island bill_depth_mm
_ms_parse_parts 2b.a#coL2.x
return list
capture noisily _ms_parse_parts i.a
_msparse c.b#2.a y:L.x 1bn.g
display "`r(stripe)'"
capture noisily _msparse a-b

* means of columns are those of the variables they stand for
_ms_means e(b) if e(sample)
matrix m = r(mean)
quietly summarize bill_depth_mm if e(sample)
assert reldif(m[1, 16], r(mean)) < 1e-12
quietly count if species == 3 & island == 1 & e(sample)
assert reldif(m[1, 13], r(N)/e(N)) < 1e-12

* the slope of a quadratic at 17, by its derivative and by a difference
_ms_dzb_dx bill_depth_mm
matrix d = r(b)
matrix x = 0*e(b)
_ms_setvalues x species=2 island=2 bill_depth_mm=17
matrix x[1, colsof(x)] = 1
matrix slope = d*x'
assert reldif(slope[1, 1], _b[bill_depth_mm] + 34*_b[c.bill_depth_mm#c.bill_depth_mm]) < 1e-10
assert x[1, 11] == 1 & x[1, 17] == 289 & x[1, 1] == 0
_ms_balance x species
assert reldif(x[1, 1], 1/3) < 1e-15 & reldif(x[1, 3], 1/3) < 1e-15 & x[1, 5] == 1
capture noisily _ms_dzb_dx sex
_ms_dydx_parse species bill_depth_mm
display "`r(varlist)'"
_ms_dydx_parse *
display "`r(varlist)'"

* marks taken off and found again
quietly regress body_mass_g i.species i.sex if sex == 2
matrix B = e(b)
matrix V = e(V)
_ms_omit_unset B
local names : colnames B
display "`names'"
matrix colnames B = 1b.species 2.species 3.species 2.sex _cons
_ms_findomitted B V
local names : colnames B
display "`names'"
matrix C = J(1, 3, 1)
matrix colnames C = 1.species#2.sex 3.species#3.island bill_depth_mm
_ms_build_info C
_ms_empty_info C
matrix list r(empty), noheader
_msdebug C

* lists
_fv_term_info i.species##c.bill_depth_mm L0.sex if species < 3
return list
capture noisily _fv_check_depvar i.species sex
capture noisily _fv_check_depvar sex i.species#sex, k(2)
_fv_check_depvar sex i.species
_fvsum i.species c.bill_depth_mm if sex == 1
assert r(N) == 165
fvset base 2 species
_fvisclear species sex
assert r(clear) == 0
fvexpand i.species
display "`r(varlist)'"
fvset base default species
_fvisclear species
assert r(clear) == 1
capture noisily fvset base no species
