*! short for estimates
program estim
	version 12.1
	estimates `0'
end
