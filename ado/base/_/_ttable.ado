*! rows of a table of means: head, one row, or the closing line
program _ttable
	version 12.1
	args what
	if "`what'" == "head" {
		args what level title
		if "`title'" == "" {
			local title Variable
		}
		display as text "{hline 13}{c TT}{hline 63}"
		display as text %12s "`title'" " {c |}     Obs       Mean  Std. Err.  Std. Dev.   " ///
			" [`level'% interval]"
		display as text "{hline 13}{c +}{hline 63}"
		exit
	}
	if "`what'" == "line" {
		display as text "{hline 13}{c +}{hline 63}"
		exit
	}
	if "`what'" == "end" {
		display as text "{hline 13}{c BT}{hline 63}"
		exit
	}
	* name, observations, mean, standard deviation, standard error, degrees of freedom, level
	args what name n mean sd se df level
	local t = invttail(`df', (1 - `level' / 100) / 2)
	local sd = cond("`sd'" == ".", "", "`=string(`sd', "%9.0g")'")
	display as text %12s abbrev(`"`name'"', 12) " {c |}" as result %8.0fc `n' "  " %9.0g `mean' ///
		"  " %9.0g `se' %11s "`sd'" "  " %9.0g `mean' - `t' * `se' "  " %9.0g `mean' + `t' * `se'
end
