* a regression of 100,000 observations on 100 regressors
set obs 100000
set seed 1
forvalues i = 1/100 {
	generate double x`i' = runiform()
}
generate double y = x1 + 2*x2 - x10 + runiform()
quietly regress y x1-x100
