global data : environment TESTDATA
do "$data/prefixes_body", nostop
* rc0 looks at every group although one fails
clear
set obs 6
generate g = int((_n - 1) / 2)
generate x = _n
sort g
capture noisily by g: assert x < 2
display _rc
capture noisily by g, rc0: assert x < 2
display _rc
program failsin2, byable(recall)
	if _byindex() == 2 {
		error 459
	}
	display "group " _byindex()
end
by g, rc0: failsin2
