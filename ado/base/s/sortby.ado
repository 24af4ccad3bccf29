*! sort in ascending and descending order
program sortby
	version 12.1
	syntax anything(name=keys id="sort keys") [, Generate(name) MFirst Stable]
	if "`generate'" != "" {
		confirm new variable `generate'
	}
	* every key is looked up before a text that descends moves the rows
	local names : subinstr local keys "-" " ", all
	local names : subinstr local names "+" " ", all
	_unab names : `names'
	gettoken key keys : keys, parse(" +-")
	while "`key'" != "" {
		local down = "`key'" == "-"
		if inlist("`key'", "+", "-") {
			gettoken key keys : keys, parse(" +-")
		}
		_unab vars : `key'
		foreach v of local vars {
			local plain `plain' `v'
			tempvar new
			if `down' {
				Reverse `v' `new' `mfirst'
				local order `order' `new'
			}
			else if "`mfirst'" != "" & substr("`: type `v''", 1, 3) != "str" {
				quietly gen byte `new' = !missing(`v')
				local order `order' `new' `v'
			}
			else {
				local order `order' `v'
			}
		}
		gettoken key keys : keys, parse(" +-")
	}
	sort `order', `stable'
	if "`generate'" != "" {
		quietly by `order': gen long `generate' = _n == 1
		quietly replace `generate' = sum(`generate')
		quietly compress `generate'
	}
end

* A variable whose ascending order is the descending order of the given one. Missing values
* stay last unless they are to come first.
program Reverse
	args v new mfirst
	local type : type `v'
	quietly {
		if substr("`type'", 1, 3) == "str" {
			tempvar first
			sort `v', stable
			by `v': gen byte `first' = _n == 1
			gen double `new' = -sum(`first')
			exit
		}
		gen double `new' = -`v' if !missing(`v')
		if "`mfirst'" != "" {
			replace `new' = -c(maxdouble) if missing(`v')
		}
	}
end
