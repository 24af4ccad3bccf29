*! turn text that holds numbers into numbers
program tonumber
	version 12.1
	syntax [varlist] , [Generate(namelist) REPLACE FORCE Ignore(string) DPComma]
	if ("`generate'" == "") == ("`replace'" == "") {
		display as error "give either generate() or replace"
		exit 198
	}
	if "`generate'" != "" {
		if `: list sizeof generate' != `: list sizeof varlist' {
			display as error "generate() needs one name for each variable"
			exit 198
		}
		confirm new variable `generate'
	}
	foreach v of local varlist {
		gettoken new generate : generate
		if substr("`: type `v''", 1, 3) != "str" {
			display as text "`v' is numeric already; nothing done"
			continue
		}
		One `v' "`new'" "`force'" `"`ignore'"' "`dpcomma'"
	}
end

program One
	args v new force ignore dpcomma
	tempvar text number
	quietly {
		gen `: type `v'' `text' = trim(`v')
		local n = length(`"`ignore'"')
		forvalues i = 1/`n' {
			replace `text' = subinstr(`text', substr(`"`ignore'"', `i', 1), "", .)
		}
		if "`dpcomma'" != "" {
			replace `text' = subinstr(subinstr(`text', ".", "", .), ",", ".", .)
		}
		gen double `number' = real(`text')
		* the letters of missing values are values too
		forvalues i = 1/26 {
			local letter : word `i' of `c(alpha)'
			replace `number' = .`letter' if `text' == ".`letter'"
		}
		count if missing(`number') & `text' != "" & !regexm(`text', "^[.][a-z]?$")
	}
	local bad = r(N)
	if `bad' & "`force'" == "" {
		display as text "`v': `bad' value" cond(`bad' == 1, " is", "s are") ///
			" no number; nothing done (the options force or ignore() may help)"
		exit
	}
	quietly compress `number'
	Place `v' `number' `new'
	local name = cond("`new'" == "", "`v'", "`new'")
	display as text "`v': numbers in `name', type `: type `name''" ///
		cond(`bad', "; `bad' made missing", "")
end

* The new variable takes name, place and label of the old one, or its own name.
program Place
	args v made new
	_label variable `made' `"`: variable label `v''"'
	if "`new'" != "" {
		_rename `made' `new'
		exit
	}
	_order `made', after(`v')
	drop `v'
	_rename `made' `v'
end
