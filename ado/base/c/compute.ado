*! make a variable by a function of groups or of rows
* A function f is a program _gf, found along the search path. It is called as
*     _gf type newvar = (arguments) [if] [in] [, by(varlist) options]
* and makes newvar in any order of observations.
program compute, byable(onecall) sortpreserve
	version 12.1
	local prefix `_byvars'
	gettoken type 0 : 0, parse(" =")
	gettoken name rest : 0, parse(" =")
	if "`name'" == "=" {
		local name `type'
		local type
		local rest `"`0'"'
	}
	else {
		gettoken name 0 : 0, parse(" =")
	}
	gettoken equal 0 : 0, parse(" =")
	gettoken function 0 : 0, parse(" (")
	gettoken arguments 0 : 0, parse(" (") match(parenthesis)
	if "`equal'" != "=" | "`parenthesis'" != "(" {
		display as error "the form is: compute [type] newvar = function(arguments) ..."
		exit 198
	}
	syntax [if] [in] [, BY(varlist) *]
	confirm new variable `name'
	if _N == 0 {
		error 2000
	}
	capture unabcmd _g`function'
	if _rc {
		display as error "unknown function `function'(); see help compute"
		exit 133
	}
	if "`prefix'" != "" & "`by'" != "" {
		display as error "by() may not be combined with the prefix by"
		exit 190
	}
	if "`prefix'`by'" != "" {
		local groups by(`prefix'`by')
	}
	local how = cond("`type'" == "", "double", "`type'")
	capture noisily _g`function' `how' `name' = (`arguments') `if' `in', `groups' `options'
	if _rc {
		local rc = _rc
		capture drop `name'
		exit `rc'
	}
	if "`type'" == "" {
		Smallest `name'
	}
	quietly count if missing(`name')
	if r(N) {
		local s = cond(r(N) == 1, "", "s")
		display as text "(`r(N)' missing value`s' generated)"
	}
end

* Without a type, whole numbers take the smallest exact type and others the usual one.
program Smallest
	args v
	quietly compress `v'
	if "`: type `v''" == "double" & c(type) == "float" {
		quietly recast float `v', force
	}
	local type : type `v'
	local width = cond(inlist("`type'", "byte", "int"), 8, cond("`type'" == "long", 12, ///
		cond("`type'" == "float", 9, 10)))
	if substr("`type'", 1, 3) != "str" {
		format `v' %`width'.0g
	}
end
