*! describe the dataset in memory
program d
	version 12.1
	_describe `0'
end
