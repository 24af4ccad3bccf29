*! smallest value of each row
program _growmin
	version 12.1
	_growstat min `0'
end
