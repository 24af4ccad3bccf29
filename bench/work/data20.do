* The file of the dataset workloads: 1,000,000 rows of 20 variables in no order.
set obs 1000000
generate long id = mod(_n*7919, 1000003)
forvalues i = 1/6 {
	generate double d`i' = uniform()
	generate float f`i' = uniform()
}
forvalues i = 1/3 {
	generate byte b`i' = mod(_n, 100)
	generate int i`i' = mod(_n, 30000)
}
generate str8 s = string(mod(_n, 1000))
save data20, replace
keep id d1 s
rename d1 e1
rename s t
replace id = id + 500000
save side20, replace
