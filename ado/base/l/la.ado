*! labels of the dataset, of variables and of values
program la
	version 12.1
	_label `0'
end
