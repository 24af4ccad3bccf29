* A first analysis: 344 penguins of three species, measured at Palmer Station.
* It reads a table of text, builds variables, looks at them, and saves what it made.
version 12.1
local here : environment OVATA_EXAMPLES
if "`here'" == "" local here "examples"
capture log close
log using tour.log, text replace

* The data: one line a penguin, names in the first row, empty fields where a value is missing.
insheet using "`here'/penguins.csv", clear
describe

* Better units and labels.
generate mass = body_mass_g/1000
label variable mass "body mass, kg"
label data "Penguins of the Palmer Archipelago"
generate byte female = sex == "female" if sex != ""
label define yesno 0 "no" 1 "yes"
label values female yesno
generate ratio = bill_length_mm/bill_depth_mm
format ratio %6.2f
list species island mass female ratio in 1/8

* What is there, and what is missing.
summarize bill_length_mm bill_depth_mm flipper_length_mm mass
count if missing(mass)
summarize mass, detail
tabulate species
tabulate species island
tabulate species female, row

* Group by group: each penguin against the mean of its species.
bysort species: summarize mass ratio
sort species mass
by species: generate heaviest = mass[_N] if _n == 1
by species: generate total = sum(mass)
by species: generate n = sum(mass < .)
by species: generate mean = total[_N]/n[_N]
generate above = mass > mean if mass < .
tabulate species above, missing
by species: list species mass mean if _n == _N, noobs

* A loop over variables, with results taken from one command to the next.
foreach v of varlist bill_length_mm bill_depth_mm flipper_length_mm {
	quietly summarize `v'
	generate z_`v' = (`v' - r(mean))/r(sd)
	display as text "`v'" _column(22) as result %9.3f r(mean) %9.3f r(sd)
}
assert abs(z_bill_length_mm) < 4 if z_bill_length_mm < .

* Keep the result in the smallest types that hold it, and save it.
drop total n
compress
order species island sex mass
save tour.dta, replace
describe, short
log close
