*! linear regression by least squares
program regress, eclass byable(onecall)
	version 12.1
	if _by() {
		by `_byvars': _regress `0'
		exit
	}
	if replay() {
		_regress `0'
		exit
	}
	_regress `0'
	local line = itrim(`"regress `0'"')
	ereturn local cmdline `"`line'"'
end
