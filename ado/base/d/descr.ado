*! describe the dataset in memory
program descr
	version 12.1
	_describe `0'
end
