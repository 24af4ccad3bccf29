*! first value that is not missing of each row
program _growfirst
	version 12.1
	_growstat first `0'
end
