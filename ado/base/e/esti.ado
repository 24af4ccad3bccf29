*! short for estimates
program esti
	version 12.1
	estimates `0'
end
