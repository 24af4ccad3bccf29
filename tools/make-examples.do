* Makes the example datasets of sysuse from the tables in examples/. To be run at the top of
* the source tree:  ovata -q -b do tools/make-examples.do
version 12.1
clear
insheet using examples/penguins.csv, comma names
foreach v in species island sex {
	encode `v', gen(c)
	local lbl "`v'"
	_label drop c
	drop c
	encode `v', gen(c) label(`v')
	order c, before(`v')
	drop `v'
	rename c `v'
	recast byte `v'
}
_label variable species "Species"
_label variable island "Island"
_label variable bill_length_mm "Length of the bill, mm"
_label variable bill_depth_mm "Depth of the bill, mm"
_label variable flipper_length_mm "Length of a flipper, mm"
_label variable body_mass_g "Body mass, g"
_label variable sex "Sex"
_label data "Penguins of the Palmer Archipelago"
char notes: Palmer Station Antarctica LTER; public domain (CC0 1.0)
compress
save examples/penguins, replace
clear
insheet using examples/seattle-weather.csv, comma names
gen int day = date(date, "YMD")
format day %td
order day
drop date
encode weather, gen(w) label(weather)
drop weather
rename w weather
recast byte weather
_label variable day "Day"
_label variable precipitation "Precipitation, mm"
_label variable temp_max "Highest temperature, C"
_label variable temp_min "Lowest temperature, C"
_label variable wind "Wind, m/s"
_label variable weather "Weather"
_label data "Weather of Seattle, 2012 to 2015"
char notes: NOAA; public domain; the weather category is derived
sort day
compress
save examples/weather, replace
clear
insheet using examples/us-employment.csv, comma names
gen int m = mofd(date(month, "YMD"))
format m %tm
order m
drop month
rename m month
_label variable month "Month"
_label variable nonfarm "Nonfarm employment, thousands"
_label data "Employment in the United States by sector"
char notes: Bureau of Labor Statistics, seasonally adjusted; public domain
sort month
compress
save examples/employment, replace
