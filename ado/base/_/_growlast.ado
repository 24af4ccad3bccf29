*! last value that is not missing of each row
program _growlast
	version 12.1
	_growstat last `0'
end
