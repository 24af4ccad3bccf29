*! describe the dataset in memory
program descri
	version 12.1
	_describe `0'
end
