*! short for estimates
program estimat
	version 12.1
	estimates `0'
end
