*! test that all coefficients of variables and terms are zero, or equal
program testparm, rclass
	version 12.1
	syntax anything(id="varlist") [, EQual EQuation(passthru) *]
	_ms_extract_varlist `anything', `equation'
	local cols `r(varlist)'
	* what was left out has nothing to test
	foreach c of local cols {
		_ms_parse_parts `c'
		if !r(omit) {
			local keep `keep' `c'
		}
	}
	if "`keep'" == "" {
		display as error "no such variables;"
		display as error "the specified varlist does not identify any testable coefficients"
		exit 111
	}
	if "`equal'" == "" {
		_test `keep', `options'
	}
	else {
		gettoken first rest : keep
		if "`rest'" == "" {
			display as error "too few variables specified"
			exit 102
		}
		foreach c of local rest {
			local eqs `eqs' (`c' - `first' = 0)
		}
		_test `eqs', `options'
	}
	return add
end
