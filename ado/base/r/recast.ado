*! change the storage type of variables
program recast
	version 12.1
	_recast `0'
end
