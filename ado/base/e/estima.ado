*! short for estimates
program estima
	version 12.1
	estimates `0'
end
