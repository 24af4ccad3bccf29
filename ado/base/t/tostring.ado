*! turn numbers into text
program tostring
	version 12.1
	syntax varlist [, Generate(namelist) REPLACE FORCE Format(string) USEDisplayformat]
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
	if "`format'" != "" {
		confirm numeric format `format'
	}
	foreach v of local varlist {
		gettoken new generate : generate
		if substr("`: type `v''", 1, 3) == "str" {
			display as text "`v' is text already; nothing done"
			continue
		}
		if "`usedisplayformat'" != "" {
			local format : format `v'
		}
		One `v' "`new'" "`force'" "`format'"
	}
end

program One
	args v new force format
	tempvar text
	quietly {
		gen str1 `text' = ""
		if "`format'" != "" {
			replace `text' = string(`v', "`format'")
			count if real(`text') != `v' & float(real(`text')) != `v' & !missing(`v')
		}
		else {
			* the short form where it says all, else as many digits as are needed
			replace `text' = string(`v', "%9.0g")
			local kind = cond("`: type `v''" == "float", "float", "")
			replace `text' = string(`v', "%18.0g") if `kind'(real(`text')) != `v' & !missing(`v')
			count if `kind'(real(`text')) != `v' & !missing(`v')
		}
	}
	local bad = r(N)
	if `bad' & "`force'" == "" {
		display as text "`v': `bad' values would lose digits; nothing done (the option force allows it)"
		exit
	}
	_label variable `text' `"`: variable label `v''"'
	if "`new'" != "" {
		_rename `text' `new'
	}
	else {
		_order `text', after(`v')
		drop `v'
		_rename `text' `v'
		local new `v'
	}
	display as text "`v': text in `new', type `: type `new''" ///
		cond(`bad', "; digits of `bad' values lost", "")
end
