*! remove the data from memory
program clear
	version 12.1
	syntax [anything(name=what)]
	local all = inlist("`what'", "all", "_all", "*")
	if !inlist("`what'", "", "all", "_all", "*", "results", "matrix", "mosa", "programs", "ado") {
		display as error `"`what' not allowed"'
		exit 198
	}
	if "`what'" == "" | `all' {
		drop _all
		label drop _all
		_label data
		local names : char _dta[]
		foreach name of local names {
			char _dta[`name']
		}
		global S_FN
		global S_FNDATE
	}
	if inlist("`what'", "", "mosa") | `all' {
		mosa_clear
	}
	if "`what'" == "matrix" | `all' {
		matrix drop _all
	}
	if `all' {
		scalar drop _all
	}
	if "`what'" == "results" | `all' {
		ereturn clear
		Noresults
	}
	* last, for this program goes with the others
	if inlist("`what'", "programs", "ado") | `all' {
		program drop _allado
	}
end

* An r-class program that sets nothing leaves r() empty.
program Noresults, rclass
	return clear
end
