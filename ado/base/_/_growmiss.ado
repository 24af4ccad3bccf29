*! number of missing values of each row
program _growmiss
	version 12.1
	_growstat miss `0'
end
