*! split a string variable into its parts
program split, rclass
	version 12.1
	syntax varname(string) [if] [in] [, Parse(string asis) Generate(name) Limit(integer 0) NOTrim ///
		TONUMber]
	tempvar rest at
	tempvar touse
	mark `touse' `if' `in'
	if "`generate'" == "" {
		local generate `varlist'
	}
	if `"`parse'"' == "" {
		local parse `"" ""'
	}
	quietly gen `: type `varlist'' `rest' = `varlist' if `touse'
	* all separators become the first one
	gettoken first others : parse
	foreach p of local others {
		quietly replace `rest' = subinstr(`rest', `"`p'"', `"`first'"', .)
	}
	if "`notrim'" == "" {
		quietly replace `rest' = trim(`rest')
	}
	if `"`first'"' == " " {
		quietly replace `rest' = itrim(trim(`rest'))
	}
	local width = length(`"`first'"')
	* the parts become variables under their names when all of them are known to be free
	local k 0
	quietly count if `rest' != ""
	while r(N) & (`k' < `limit' | `limit' == 0) {
		local ++k
		local name `generate'`k'
		confirm new variable `name'
		tempvar new
		quietly {
			capture drop `at'
			gen int `at' = strpos(`rest', `"`first'"')
			gen str1 `new' = ""
			replace `new' = cond(`at', substr(`rest', 1, `at' - 1), `rest')
			replace `rest' = cond(`at', substr(`rest', `at' + `width', .), "")
			if "`notrim'" == "" {
				replace `new' = trim(`new')
			}
			count if `rest' != ""
		}
		local made `made' `new'
		local news `news' `name'
	}
	foreach name of local news {
		gettoken new made : made
		_rename `new' `name'
	}
	if `k' == 0 {
		display as text "(nothing to split)"
		exit
	}
	display as text "variables made: " as result "`news'"
	if "`tonumber'" != "" {
		tonumber `news', replace
	}
	return local varlist `news'
	return scalar k = `k'
end
