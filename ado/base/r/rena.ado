*! rename a variable
program rena
	version 12.1
	_rename `0'
end
