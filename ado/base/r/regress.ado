*! linear regression by least squares
program regress, eclass byable(onecall)
	version 12.1
	local asked "version `=_caller()':"	// words of the caller's own version
	if _by() {
		`asked' by `_byvars': _regress `0'
		exit
	}
	if replay() {
		`asked' _regress `0'
		exit
	}
	`asked' _regress `0'
	local line = itrim(`"regress `0'"')
	ereturn local cmdline `"`line'"'
end
