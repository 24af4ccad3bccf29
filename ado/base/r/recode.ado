*! change values of variables by rules
program recode
	version 12.1
	* the variables end where the first rule begins
	local list
	local rest `"`0'"'
	while 1 {
		gettoken word after : rest, parse(" (=,")
		gettoken next : after, parse(" (=,")
		if `"`word'"' == "" | inlist(`"`word'"', "(", ",") | "`next'" == "=" {
			continue, break
		}
		capture _unab vars : `word'
		if _rc {
			continue, break
		}
		local list `list' `word'
		local rest `"`after'"'
	}
	if "`list'" == "" {
		if !inlist(`"`word'"', "", "(", ",") {
			_unab list : `word'
		}
		error 102
	}
	local 0 `"`rest'"'
	syntax anything(name=rules id="rules" equalok) [if] [in] [, Generate(namelist) PREfix(name) ///
		LABel(name) TEST]
	_unab list : `list'
	confirm numeric variable `list'
	local n : list sizeof list
	if "`generate'" != "" & "`prefix'" != "" {
		display as error "generate() and prefix() may not be combined"
		exit 198
	}
	if "`prefix'" != "" {
		foreach v of local list {
			local generate `generate' `prefix'`v'
		}
	}
	if "`generate'" != "" {
		if `: list sizeof generate' != `n' {
			display as error "generate() needs one name for each variable"
			exit 198
		}
		confirm new variable `generate'
	}
	tempvar touse
	mark `touse' `if' `in'
	local number 0
	while `"`rules'"' != "" {
		gettoken rule rules : rules, parse(" (=") match(par)
		if "`par'" == "" {
			* without parentheses a rule ends with the word behind its =
			gettoken word rules : rules, parse(" =")
			while "`word'" != "=" & "`word'" != "" {
				local rule `rule' `word'
				gettoken word rules : rules, parse(" =")
			}
			gettoken value rules : rules
			local rule `rule' = `value'
		}
		local rule`++number' `"`rule'"'
		local rules = trim(`"`rules'"')
	}
	foreach v of local list {
		gettoken new generate : generate
		tempvar result done
		quietly {
			gen double `result' = `v'
			gen byte `done' = !`touse'
		}
		forvalues i = 1/`number' {
			Apply `v' `result' `done' `"`rule`i''"'
			if `"`s(label)'"' != "" {
				local texts `"`texts' `s(value)' `"`s(label)'"'"'
			}
		}
		quietly count if `result' != `v' & `touse'
		display as text "(`v': `r(N)' change" cond(r(N) == 1, "", "s") " made)"
		if "`new'" == "" {
			quietly replace `v' = `result' if `touse'
			local new `v'
		}
		else {
			quietly Keep `result' `v' `new' `touse'
		}
		if `"`texts'"' != "" {
			local name = cond("`label'" == "", "`new'", "`label'")
			_label define `name' `texts', modify
			_label values `new' `name'
			local texts
		}
		capture drop `result'
		drop `done'
	}
end

* A new variable in the smallest type, and no wider than the old one needs.
program Keep
	args result v new touse
	replace `result' = . if !`touse'
	compress `result'
	if "`: type `result''" == "double" & "`: type `v''" != "double" {
		recast float `result', force
	}
	_rename `result' `new'
	local what : variable label `v'
	if `"`what'"' == "" {
		local what `v'
	}
	_label variable `new' `"recoded `what'"'
end

* One rule: "values = result" or "values = result "label"". Each row obeys the first that fits.
program Apply, sclass
	args v result done rule
	gettoken item rest : rule, parse(" =/")
	local condition 0
	* .1 in a rule means what a float holds as .1
	local round = cond("`: type `v''" == "float", "float", "")
	while `"`item'"' != "=" {
		if `"`item'"' == "" {
			display as error `"rule (`rule') has no ="'
			exit 198
		}
		gettoken slash after : rest, parse(" =/")
		if "`slash'" == "/" {
			gettoken high rest : after, parse(" =/")
			Bound `item' min
			local low `s(bound)'
			Bound `high' max
			local condition `condition' | (`v' >= `round'(`low') & `v' <= `round'(`s(bound)') & `v' < .)
		}
		else if inlist("`item'", "else", "*") {
			local condition `condition' | 1
		}
		else if inlist("`item'", "missing", "miss") {
			local condition `condition' | missing(`v')
		}
		else if inlist("`item'", "nonmissing", "nonmiss") {
			local condition `condition' | !missing(`v')
		}
		else {
			Bound `item' none
			local at `s(bound)'
			local condition `condition' | `v' == `round'(`at')
		}
		gettoken item rest : rest, parse(" =/")
	}
	gettoken value rest : rest
	gettoken text rest : rest
	if "`value'" == "copy" {
		local value `v'
	}
	else {
		capture confirm number `value'
		if _rc & !regexm("`value'", "^[.][a-z]?$") {
			display as error `"'`value'' is no value; a rule reads: values = value"'
			exit 198
		}
	}
	quietly {
		replace `result' = `value' if (`condition') & !`done'
		replace `done' = 1 if `condition'
	}
	sreturn local value `value'
	sreturn local label `"`text'"'
end

program Bound, sclass
	args word open
	if inlist("`word'", "min", "max") & "`word'" == "`open'" {
		sreturn local bound = cond("`word'" == "min", "c(minfloat)", "c(maxfloat)")
		exit
	}
	capture confirm number `word'
	if _rc & !regexm("`word'", "^[.][a-z]?$") {
		display as error "`word' is no value in a rule"
		exit 198
	}
	sreturn local bound `word'
end
