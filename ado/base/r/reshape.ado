*! turn wide data into long data and back
program reshape
	version 12.1
	gettoken how 0 : 0, parse(" ,")
	if "`how'" == "long" {
		Long `0'
	}
	else if "`how'" == "wide" {
		Wide `0'
	}
	else {
		display as error "reshape needs one of: long, wide"
		exit 198
	}
end

* What was said before may be left out: the dataset remembers it.
program Remembered, sclass
	args stubs i j string
	foreach what in stubs i j {
		if "``what''" == "" {
			local `what' : char _dta[reshape_`what']
		}
		if "``what''" == "" {
			display as error cond("`what'" == "stubs", "which variables to reshape is not known", ///
				"option `what'() required")
			exit 198
		}
		sreturn local `what' ``what''
	}
	if "`string'" == "" {
		local string : char _dta[reshape_string]
	}
	sreturn local string `string'
end

program Remember
	args stubs i j string
	foreach what in stubs i j string {
		char _dta[reshape_`what'] ``what''
	}
end

* ---- wide to long

program Long
	syntax [anything(name=stubs)] [, I(varlist) J(string) String]
	gettoken j values : j
	Remembered "`stubs'" "`i'" "`j'" "`string'"
	local stubs `s(stubs)'
	local i `s(i)'
	local j `s(j)'
	local string `s(string)'
	confirm new variable `j'
	if trim("`values'") == "" {
		Values "`stubs'" "`i'" "`string'"
		local values `s(values)'
	}
	if "`string'" == "" {
		numlist "`values'", sort
		local values `r(numlist)'
	}
	capture checkid `i', missok
	if _rc {
		display as error "`i' must identify the rows of wide data (`: list sizeof i' variable(s) in i())"
		exit 9
	}
	local rows = c(N)
	local wide = c(k)
	local k : list sizeof values
	preserve
	quietly {
		Copy `rows' `k' "`stubs'" "`values'"
		Jvalues `j' `rows' "`values'" "`string'"
		foreach stub of local stubs {
			Lengthen `stub' `rows' "`values'"
			local news `news' `s(new)'
		}
		_order `i' `j' `news', first
		sort `i' `j'
	}
	Remember "`stubs'" "`i'" "`j'" "`string'"
	restore, not
	Told wide long `rows' `wide' `k' `j'
end

* Name of a variable of wide data; @ stands for the value when it is not at the end.
program Wname, sclass
	args stub value
	if !strpos("`stub'", "@") {
		local stub `stub'@
	}
	local name : subinstr local stub "@" "`value'"
	sreturn local name `name'
end

* The values of j are what stands behind the stubs.
program Values, sclass
	args stubs i string
	_unab all : _all
	local all : list all - i
	local what = cond("`string'" == "", "[0-9]+", ".+")
	foreach stub of local stubs {
		Wname `stub' "(`what')"
		local pattern `s(name)'
		foreach v of local all {
			if regexm("`v'", "^`pattern'$") {
				local values `values' `=regexs(1)'
			}
		}
	}
	local values : list uniq values
	if "`values'" == "" {
		display as error "no variables of the form `stubs' followed by a " ///
			cond("`string'" == "", "number", "text") " found"
		exit 111
	}
	sreturn local values `values'
end

* Every row once for each value, the copies as blocks behind the first.
program Copy
	args rows k stubs values
	foreach stub of local stubs {
		foreach value of local values {
			Wname `stub' `value'
			local moving `moving' `s(name)'
		}
	}
	_unab others : _all
	local others : list others - moving
	set obs `=`rows' * `k''
	if `k' > 1 {
		foreach v of local others {
			replace `v' = `v'[_n - `rows'] in `=`rows' + 1'/l
		}
	}
end

program Jvalues
	args j rows values string
	if "`string'" == "" {
		gen long `j' = .
	}
	else {
		gen str1 `j' = ""
	}
	local from 1
	foreach value of local values {
		local to = `from' + `rows' - 1
		replace `j' = `=cond("`string'" == "", "`value'", `""`value'""')' in `from'/`to'
		local from = `to' + 1
	}
	compress `j'
	if "`string'" == "" {
		format `j' %9.0g
	}
end

* One long variable from its wide ones.
program Lengthen, sclass
	args stub rows values
	tempvar new
	local block 0
	foreach value of local values {
		Wname `stub' `value'
		local v `s(name)'
		capture confirm variable `v', exact
		if _rc == 0 {
			if "`first'" == "" {
				local first `v'
				local type : type `v'
				gen `type' `new' = `=cond(substr("`type'", 1, 3) == "str", `""""', ".")'
			}
			local shift = `block' * `rows'
			replace `new' = `v'[_n - `shift'] in `=`shift' + 1'/`=`shift' + `rows''
			local gone `gone' `v'
		}
		local ++block
	}
	if "`first'" == "" {
		noisily display as error "no variables `stub' for any value of j"
		exit 111
	}
	format `new' `: format `first''
	_label values `new' `: value label `first''
	local name : subinstr local stub "@" ""
	drop `gone'
	_rename `new' `name'
	sreturn local new `name'
end

* ---- long to wide

program Wide
	syntax [anything(name=stubs)] [, I(varlist) J(varname) String]
	Remembered "`stubs'" "`i'" "`j'" ""
	local stubs `s(stubs)'
	local i `s(i)'
	local j `s(j)'
	confirm variable `j'
	foreach stub of local stubs {
		if strpos("`stub'", "@") {
			local list `list' `stub'
			continue
		}
		_unab vars : `stub'
		local list `list' `vars'
	}
	local stubs `list'
	local string
	if substr("`: type `j''", 1, 3) == "str" {
		local string string
	}
	sort `i' `j'
	capture by `i' `j': assert _N == 1
	if _rc {
		display as error "values of `j' are not unique within `i'; see: duplicates list `i' `j'"
		exit 9
	}
	quietly count if missing(`j')
	if r(N) {
		display as error "`j' has missing values"
		exit 498
	}
	quietly levels `j', clean
	local values `r(levels)'
	local k : list sizeof values
	local rows = c(N)
	local wide = c(k)
	Constant "`stubs'" "`i'" `j'
	preserve
	quietly {
		sort `i' `j'
		foreach value of local values {
			Widen "`stubs'" "`i'" `j' `value' "`string'"
			local news `news' `s(news)'
		}
		tempvar first
		by `i': gen byte `first' = _n == 1
		keep if `first'
		foreach stub of local stubs {
			local gone `gone' `: subinstr local stub "@" ""'
		}
		drop `first' `gone' `j'
		_order `i' `news', first
		sort `i'
	}
	Remember "`stubs'" "`i'" "`j'" "`string'"
	restore, not
	Told long wide `rows' `wide' `k' `j'
end

* What is neither reshaped nor an identifier must not vary within the rows to be joined.
program Constant
	args stubs i j
	foreach stub of local stubs {
		local moving `moving' `: subinstr local stub "@" ""'
	}
	_unab others : _all
	local others : list others - moving
	local others : list others - i
	local others : list others - j
	sort `i' `j'
	tempvar differs
	foreach v of local others {
		quietly by `i': gen byte `differs' = `v' != `v'[1]
		quietly count if `differs'
		if r(N) {
			local bad `bad' `v'
		}
		drop `differs'
	}
	if "`bad'" != "" {
		display as error "not constant within `i': `bad'; reshape them too, or drop them"
		exit 9
	}
end

program Widen, sclass
	args stubs i j value string
	local is = cond("`string'" == "", "`value'", `""`value'""')
	tempvar at
	by `i': gen long `at' = sum(cond(`j' == `is', _n, 0))
	by `i': replace `at' = `at'[_N]
	foreach stub of local stubs {
		local v : subinstr local stub "@" ""
		Wname `stub' `value'
		local new `s(name)'
		by `i': gen `: type `v'' `new' = `v'[`at']
		format `new' `: format `v''
		_label values `new' `: value label `v''
		local text : variable label `v'
		if `"`text'"' != "" {
			_label variable `new' `"`value' `text'"'
		}
		local news `news' `new'
	}
	sreturn local news `news'
end

program Told
	args from to rows vars k j
	display as text _newline "Data" _column(36) %12s "`from'" "   ->   " "`to'"
	display as text "{hline 68}"
	display as text "observations" _column(36) as result %12.0fc `rows' as text "   ->   " ///
		as result %-12.0fc c(N)
	display as text "variables" _column(36) as result %12.0fc `vars' as text "   ->   " ///
		as result %-12.0fc c(k)
	display as text "j variable" _column(36) as result %12s ///
		cond("`from'" == "wide", "`k' values", "`j'") as text "   ->   " ///
		as result cond("`from'" == "wide", "`j'", "`k' values")
	display as text "{hline 68}"
end
