*! predictions after regress
program regres_p
	version 12.1
	_predict `0'
end
