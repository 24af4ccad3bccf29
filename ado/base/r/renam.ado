*! rename one variable or many
program renam, rclass
	version 12.1
	rename `0'
	return add
end
