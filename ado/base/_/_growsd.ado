*! standard deviation of each row
program _growsd
	version 12.1
	_growstat sd `0'
end
