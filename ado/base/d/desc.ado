*! describe the dataset in memory
program desc
	version 12.1
	_describe `0'
end
