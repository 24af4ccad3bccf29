*! join a dataset file to the one in memory by variables that both have
program merge, rclass
	version 12.1
	gettoken kind 0 : 0, parse(" ")
	if !inlist("`kind'", "1:1", "m:1", "1:m") {
		display as error "merge begins with 1:1, m:1 or 1:m, then the variables that both datasets have"
		exit 198
	}
	syntax varlist using/ [, KEEPUSing(string) Generate(name) NOGENerate NOLabel ///
		UPDATE REPLACE FORCE KEEP(string) ASSERT(string) NOREPort]
	if "`replace'" != "" & "`update'" == "" {
		display as error "the option replace goes with update"
		exit 198
	}
	if "`generate'" == "" {
		local generate _merge
	}
	if "`nogenerate'" == "" {
		confirm new variable `generate'
	}
	foreach option in keep assert {
		Codes "``option''"
		local `option' `s(codes)'
	}
	if "`kind'" != "m:1" {
		Unique "`varlist'" "the data in memory"
	}
	tempvar side result
	tempfile prepared
	_unab mine : _all
	preserve
	quietly Load `"`using'"' "`varlist'" "`keepusing'"
	if "`kind'" != "1:m" {
		Unique "`varlist'" "the file"
	}
	_unab theirs : _all
	local common : list mine & theirs
	local common : list common - varlist
	foreach v of local common {
		tempvar shadow
		_rename `v' `shadow'
		local shadows `shadows' `shadow'
	}
	quietly {
		gen byte `side' = 2
		_unab theirs : _all
		save `prepared'
		restore, preserve
		gen byte `side' = 1
		_append using `prepared', `nolabel' `force'
		local other = cond("`kind'" == "1:m", "mine", "theirs")
		local marker `side'
		local other : list `other' - varlist
		local other : list other - marker
		Join "`varlist'" `side' `result' `kind' "`other'"
		Meet "`common'" "`shadows'" `result' "`update'" "`replace'" "`force'"
		drop `side' `shadows'
	}
	forvalues i = 1/5 {
		quietly count if `result' == `i'
		return scalar n`i' = r(N)
	}
	if "`assert'" != "" {
		quietly count if !inlist(`result', `assert')
		if r(N) {
			display as error "`r(N)' observations have another result than assert() allows"
			exit 9
		}
	}
	if "`keep'" != "" {
		quietly keep if inlist(`result', `keep')
	}
	if "`noreport'" == "" {
		Report `result' "`update'"
	}
	sort `varlist'
	if "`nogenerate'" == "" {
		_rename `result' `generate'
		_label define _merge 1 "memory only (1)" 2 "file only (2)" 3 "matched (3)" ///
			4 "missing updated (4)" 5 "conflict (5)", modify
		_label values `generate' _merge
	}
	restore, not
end

* Words of keep() and assert() as numbers.
program Codes, sclass
	args words
	foreach w of local words {
		if inlist("`w'", "1", "2", "3", "4", "5") {
			local codes `codes' `w'
		}
		else if inlist("`w'", "master", "memory") {
			local codes `codes' 1
		}
		else if inlist("`w'", "using", "file") {
			local codes `codes' 2
		}
		else if inlist("`w'", "match", "matched") {
			local codes `codes' 3 4 5
		}
		else {
			display as error "`w' is no result of merge: use master, using, match or 1 to 5"
			exit 198
		}
	}
	local codes : list uniq codes
	local codes : subinstr local codes " " ",", all
	sreturn local codes `codes'
end

program Unique
	args keys where
	capture checkid `keys', missok
	if _rc == 459 {
		display as error "the values of `keys' are not unique in `where'"
	}
	if _rc {
		exit _rc
	}
end

program Load
	args file keys wanted
	if "`wanted'" == "" {
		use `"`file'"', clear
	}
	else {
		use `keys' `wanted' using `"`file'"', clear
	}
	foreach v of local keys {
		capture confirm variable `v', exact
		if _rc {
			noisily display as error "variable `v' not found in the file"
			exit 111
		}
	}
end

* The rows of a group meet: of the side that has one row a key, the values go to the rows of
* the other side, and the row itself goes.
program Join
	args keys side result kind other
	sort `keys' `side', stable
	by `keys': gen byte `result' = cond(`side'[1] == `side'[_N], `side', 3)
	local one = cond("`kind'" == "1:m", 1, 2)
	local at = cond("`kind'" == "1:m", "1", "_N")
	foreach v of local other {
		by `keys': replace `v' = `v'[`at'] if `result' == 3 & `side' != `one'
	}
	drop if `result' == 3 & `side' == `one'
end

* Variables that both sides have: memory wins unless told otherwise.
program Meet
	args common shadows result update replace force
	foreach v of local common {
		gettoken s shadows : shadows
		local text = substr("`: type `v''", 1, 3) == "str"
		if `text' != (substr("`: type `s''", 1, 3) == "str") {
			if "`force'" == "" {
				noisily display as error "variable `v' is text on one side and numeric on the other"
				exit 109
			}
			continue
		}
		if "`update'" != "" {
			replace `result' = 5 if `result' >= 3 & `v' != `s' & !missing(`v') & !missing(`s')
			replace `result' = 4 if `result' == 3 & missing(`v') & !missing(`s')
			replace `v' = `s' if `result' >= 3 & missing(`v')
		}
		if "`replace'" != "" {
			replace `v' = `s' if `result' >= 3 & !missing(`s')
		}
		replace `v' = `s' if `result' == 2
	}
end

program Report
	args result update
	forvalues i = 1/5 {
		quietly count if `result' == `i'
		local n`i' = r(N)
	}
	display as text _newline "    Result" _column(36) "observations"
	display as text "    {hline 43}"
	display as text "    not matched" _column(35) as result %13.0fc `n1' + `n2'
	if `n1' + `n2' {
		display as text "        in memory only" _column(35) as result %13.0fc `n1' as text "  (1)"
		display as text "        in the file only" _column(35) as result %13.0fc `n2' as text "  (2)"
	}
	display as text _newline "    matched" _column(35) as result %13.0fc `n3' + `n4' + `n5' ///
		as text cond("`update'" == "", "  (3)", "")
	if "`update'" != "" {
		display as text "        alike" _column(35) as result %13.0fc `n3' as text "  (3)"
		display as text "        missing updated" _column(35) as result %13.0fc `n4' as text "  (4)"
		display as text "        in conflict" _column(35) as result %13.0fc `n5' as text "  (5)"
	}
	display as text "    {hline 43}"
end
