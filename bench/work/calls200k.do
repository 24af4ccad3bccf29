program addone
	args x
	local y = `x' + 1
end
forvalues i = 1/200000 {
	addone `i'
}
