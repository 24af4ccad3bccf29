*! mean of each row
program _growmean
	version 12.1
	_growstat mean `0'
end
