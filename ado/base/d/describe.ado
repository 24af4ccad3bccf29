*! describe the dataset in memory
program describe
	version 12.1
	_describe `0'
end
