*! largest value of each row
program _growmax
	version 12.1
	_growstat max `0'
end
