*! labels of the dataset, of variables and of values
program labe
	version 12.1
	_label `0'
end
