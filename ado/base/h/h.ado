*! short for help
program h
	version 12.1
	chelp `0'
end
