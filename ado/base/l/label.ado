*! labels of the dataset, of variables and of values
program label
	version 12.1
	_label `0'
end
