*! write a list of variables in full into a local macro
program unab
	version 12.1
	gettoken name 0 : 0, parse(" :")
	_unab list `0'
	c_local `name' `list'
end
