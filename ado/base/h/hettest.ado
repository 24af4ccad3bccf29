*! estat hettest
program hettest
	version 12.1
	estat hettest `0'
end
