*! the two groups that a variable forms, as s(value1), s(value2), s(name1), s(name2)
program _twogroups, sclass
	version 12.1
	args group touse
	quietly levels `group' if `touse'
	if r(r) != 2 {
		display as error "`group' must have 2 distinct values, and has `r(r)'"
		exit 420
	}
	local text = substr("`: type `group''", 1, 3) == "str"
	local labels : value label `group'
	local i 0
	foreach value in `r(levels)' {
		local ++i
		sreturn local name`i' `"`value'"'
		if "`labels'" != "" {
			sreturn local name`i' `"`: label `labels' `value''"'
		}
		sreturn local value`i' `=cond(`text', `"`"`value'"'"', "`value'")'
		sreturn local is`i' `group' == `=cond(`text', `""`value'""', "`value'")'
		if "`: type `group''" == "float" {
			sreturn local is`i' `group' == float(`value')
		}
	}
end
