*! median by groups
program _gmedian
	version 12.1
	_gpctile `0' p(50)
end
