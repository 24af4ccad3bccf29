*! write out the names in a list with operators
program fvunab
	version 12.1
	gettoken name 0 : 0, parse(" :")
	gettoken colon 0 : 0, parse(" :")
	if "`colon'" != ":" {
		error 198
	}
	syntax varlist(fv ts) [, MIN(integer 1) MAX(integer 2147483620)]
	_fvparse `varlist'
	if r(k_terms) < `min' {
		error 102
	}
	if r(k_terms) > `max' {
		error 103
	}
	c_local `name' `r(varlist)'
end
