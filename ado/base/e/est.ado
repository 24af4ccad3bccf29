*! short for estimates
program est
	version 12.1
	estimates `0'
end
