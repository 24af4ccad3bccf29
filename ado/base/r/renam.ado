*! rename a variable
program renam
	version 12.1
	_rename `0'
end
