*! short for help
program hel
	version 12.1
	chelp `0'
end
