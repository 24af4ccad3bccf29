*! notes kept with the dataset and its variables
program notes
	version 12.1
	char notes `0'
end
