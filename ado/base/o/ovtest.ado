*! estat ovtest
program ovtest
	version 12.1
	estat ovtest `0'
end
