*! number of values that are not missing of each row
program _grownonmiss
	version 12.1
	_growstat nonmiss `0'
end
