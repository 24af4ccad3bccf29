*! join a dataset file to the one in memory by variables that both have
program merge, rclass
	version 12.1
	_merge `0'
	return add
end
