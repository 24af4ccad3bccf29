*! rename a variable
program rename
	version 12.1
	_rename `0'
end
