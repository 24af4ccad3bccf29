*! test linear hypotheses about the coefficients
program test
	version 12.1
	_test `0'
end
