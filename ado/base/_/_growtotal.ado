*! total of each row
program _growtotal
	version 12.1
	_growstat total `0'
end
