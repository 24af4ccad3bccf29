*! rename a variable
program ren
	version 12.1
	_rename `0'
end
