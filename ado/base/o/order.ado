*! change the order of variables
program order
	version 12.1
	_order `0'
end
