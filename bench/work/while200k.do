local i = 0
while `i' < 200000 {
	local ++i
}
display `i'
