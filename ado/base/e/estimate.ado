*! short for estimates
program estimate
	version 12.1
	estimates `0'
end
