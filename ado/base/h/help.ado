*! the page of a command, a function or a subject
program help
	version 12.1
	chelp `0'
end
