*! short for regress
program regres, eclass byable(onecall)
	version 12.1
	if _by() {
		by `_byvars': regress `0'
		exit
	}
	regress `0'
end
