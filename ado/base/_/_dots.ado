*! a dot for each pass of a long job, an x for one that failed
program _dots
	version 12.1
	args i n failed
	display as text cond(`failed' == 0, ".", "x") _continue
	if mod(`i', 50) == 0 | `i' == `n' {
		display as text %6.0f `i'
	}
end
