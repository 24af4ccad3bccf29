*! variables from the columns of a matrix
program svmat
	version 12.1
	local type float
	gettoken first rest : 0, parse(" ,")
	if inlist("`first'", "byte", "int", "long", "float", "double") {
		local type `first'
		local 0 `"`rest'"'
	}
	syntax name(name=A) [, Names(string)]
	local n = rowsof(`A')
	local k = colsof(`A')
	local cols : colnames `A'
	local eqs : coleq `A'
	forvalues j = 1/`k' {
		local c : word `j' of `cols'
		local e : word `j' of `eqs'
		if "`names'" == "col" {
			local v `c'
		}
		else if "`names'" == "eqcol" {
			local v `e'`c'
		}
		else if "`names'" == "matcol" {
			local v `A'`c'
		}
		else if "`names'" != "" {
			local v = subinstr("`names'", "*", "", 1) + "`j'"
		}
		else {
			local v `A'`j'
		}
		confirm new variable `v'
		local new `new' `v'
	}
	if _N < `n' {
		display as text "number of observations will be reset to `n'"
		quietly set obs `n'
	}
	forvalues j = 1/`k' {
		local v : word `j' of `new'
		quietly gen `type' `v' = `A'[_n, `j'] if _n <= `n'
	}
end
