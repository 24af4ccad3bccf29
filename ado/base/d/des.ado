*! describe the dataset in memory
program des
	version 12.1
	_describe `0'
end
