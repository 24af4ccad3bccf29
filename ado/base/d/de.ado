*! describe the dataset in memory
program de
	version 12.1
	_describe `0'
end
