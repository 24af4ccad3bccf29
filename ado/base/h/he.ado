*! short for help
program he
	version 12.1
	chelp `0'
end
