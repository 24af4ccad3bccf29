* a regression of 1,000,000 observations on 10 regressors
set obs 1000000
set seed 1
forvalues i = 1/10 {
	generate double x`i' = runiform()
}
generate double y = x1 + 2*x2 - x10 + runiform()
quietly regress y x1-x10
