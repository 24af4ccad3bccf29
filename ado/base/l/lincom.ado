*! linear combinations of the coefficients
program lincom
	version 12.1
	gettoken what 0 : 0, parse(",")
	gettoken comma 0 : 0, parse(",")
	_test `what', combine `0'
end
