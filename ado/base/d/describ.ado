*! describe the dataset in memory
program describ
	version 12.1
	_describe `0'
end
