set obs 6
gen byte b = _n
gen int i = _n
gen long l = _n
gen float f = _n
gen double d = _n
gen str3 s = "abc"
* nothing changes
replace b = b
replace f = f + 1e-9
replace s = "abc"
* to missing; . to . is no change, . to .a is
replace b = . in 1
replace b = . in 1/2
replace b = .b in 1
replace b = .b in 1
* widening
replace b = 100 in 6
replace b = 101 in 6
replace b = 1.5 in 5
display b[1]
replace i = 40000 in 1
replace l = 2147483620 in 1
replace l = 2147483621 in 1
replace s = "longer" in 2
replace s = "a"
* and not
gen byte n = 1
replace n = 1.5, nopromote
replace n = 200, nop
replace s = "too long a text", nopromote
version 3.1: replace n = 300
* what a row wrote, the next row reads
gen byte w = 3
replace w = w[_n-1] * 4 if _n > 1
list b i l s n w
* a promoted variable keeps what belongs to it
gen byte k = 1
format k %5.1f
replace k = 3.25 in 1
_describe k
* refusals
capture noisily replace k = "a"
capture noisily replace s = 1
capture noisily replace k l = 1
capture noisily replace k
capture noisily replace nosuch = 1
capture noisily replace = 1
capture noisily replace k = 1, promote(3)
* by: one report, with totals, and the type before the first group
gen g = mod(_n, 3)
gen byte z = 0
bysort g (d): replace z = 50 * _n * g
by g: replace z = . if _n == 1
by g: replace z = 1000000 if g == 1
by g: replace z = _N, nopromote
list g z
