* factor variables and time-series operators: tables, and the same models by hand
set more off
sysuse penguins, clear
regress body_mass_g i.species##c.bill_length_mm i.sex, noheader
predict double p
predict double se, stdp
predict double r, rstudent
test 2.species 3.species
test i.species#c.bill_length_mm
testparm i.sex
lincom 3.species + 45*3.species#c.bill_l
generate byte s2 = species == 2
generate byte s3 = species == 3
generate double b2 = s2*bill_length
generate double b3 = s3*bill_length
generate byte male = sex == 2 if sex < .
quietly regress body_mass_g s2 s3 bill_length_mm b2 b3 male
predict double p0 if sex < .
predict double se0, stdp
predict double r0, rstudent
assert reldif(p, p0) < 1e-12 & reldif(se, se0) < 1e-9 & reldif(r, r0) < 1e-9 if p < .
assert p == . if p0 == .

* base levels, empty cells and what follows from others
regress body_mass_g ib3.species#i.island, noheader allbaselevels
regress body_mass_g ib3.species#i.island, noheader noemptycells noomitted nofvlabel vsquish
set showbaselevels on
regress body_mass_g i.species s2 i.sex, noheader
set showbaselevels off
fvset base last species
regress body_mass_g i.species, noheader
fvset report
fvset clear species
regress body_mass_g ibn.species, noheader noconstant
regress body_mass_g c.bill_length_mm##c.bill_length_mm##c.bill_length_mm, noheader

* instruments beside factors, groups absorbed
regress body_mass_g bill_length_mm i.species (flipper_length_mm i.species), noheader
predict double iv
quietly regress body_mass_g bill_length_mm s2 s3 (flipper_length_mm s2 s3)
predict double iv0
assert reldif(iv, iv0) < 1e-10 if iv < .
regress body_mass_g i.species##i.sex, absorb(island) noheader

* lags and differences
clear
set obs 40
generate firm = 1 + (_n > 20)
generate year = 1990 + mod(_n - 1, 20)
generate double x = 3*sin(_n) + _n/5
drop in 7
tsset firm year
generate double lx = L.x
by firm: assert lx == x[_n-1] if _n > 1 & year == year[_n-1] + 1
assert lx == . if year == 1990 | (year == 1997 & firm == 1)
generate double y = 2 + x - 0.5*cond(lx < ., lx, 0) + cos(7*_n)/10
regress y x L.x D.x, noheader
regress D.y L(0/1)D.x i.firm, noheader
predict double e, residuals
generate double dy = D.y
generate double dx = D.x
generate double ldx = L.dx
quietly regress dy dx ldx i.firm
predict double e0, residuals
assert reldif(e, e0) < 1e-10 if e < .
assert (e == .) == (e0 == .)

* programs
program show
	syntax varlist(fv ts) [if] [, OPT(varlist fv)]
	display "`varlist' | `opt'"
end
show y L(1/2).x i.f#c.x, opt(i.firm)
capture noisily show i.nothere
program plain
	syntax varlist
	display "`varlist'"
end
capture noisily plain i.firm
capture noisily plain L.x
capture noisily summarize i.firm
* a factor that is missing throughout leaves no observations
clear
set obs 3
generate z = .
generate y = _n
capture noisily regress y i.z
assert _rc == 2000
capture noisily _rmcoll i.z y
assert _rc == 2000
