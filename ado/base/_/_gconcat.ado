*! join the values of variables into a text
program _gconcat
	version 12.1
	gettoken type 0 : 0
	gettoken name 0 : 0
	gettoken equal 0 : 0, parse(" =")
	gettoken vars 0 : 0, match(par)
	local 0 `vars' `0'
	syntax varlist [if] [in] [, BY(varlist) Punct(string) Format(string) DECODE]
	tempvar piece
	quietly gen str1 `name' = ""
	foreach v of local varlist {
		local value `v'
		local labels : value label `v'
		if "`decode'" != "" & "`labels'" != "" {
			capture drop `piece'
			decode `v', generate(`piece')
			local value `piece'
		}
		else if substr("`: type `v''", 1, 3) != "str" {
			local value = cond("`format'" == "", "string(`v')", `"string(`v', "`format'")"')
		}
		quietly replace `name' = `name' + `"`between'"' + `value' `if' `in'
		local between `"`punct'"'
	}
end
