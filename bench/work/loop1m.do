local s = 0
forvalues i = 1/1000000 {
	local s = `i'
}
display `s'
