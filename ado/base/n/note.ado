*! notes kept with the dataset and its variables
program note
	version 12.1
	char notes `0'
end
