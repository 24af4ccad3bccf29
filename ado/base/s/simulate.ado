*! run a command again and again and collect its results
program simulate
	version 12.1
	gettoken mine command : 0, parse(":") bind
	gettoken colon command : command, parse(":")
	if trim(`"`command'"') == "" {
		display as error "the form is: simulate results, reps(#): command"
		exit 198
	}
	local 0 `"`mine'"'
	syntax [anything(name=list equalok)] , Reps(integer) [SEED(string) SAVing(string) NODots NOIsily]
	if `reps' < 1 {
		display as error "reps() must be at least 1"
		exit 198
	}
	if "`seed'" != "" {
		set seed `seed'
	}
	local show = cond("`noisily'" == "", "quietly", "noisily")
	tempname post
	local file `"`saving'"'
	if `"`file'"' == "" {
		tempfile file
	}
	forvalues i = 1/`reps' {
		capture `show' `command'
		local rc = _rc
		if `rc' == 1 {
			error 1
		}
		if `i' == 1 {
			if `rc' {
				`command'
			}
			_resultlist `list'
			local names `s(names)'
			local k `s(k)'
			forvalues j = 1/`k' {
				local exp`j' `s(exp`j')'
			}
			postfile `post' double(`names') using `"`file'"', replace
		}
		local values
		forvalues j = 1/`k' {
			local value .
			if `rc' == 0 {
				capture local value = `exp`j''
			}
			local values `values' (`value')
		}
		post `post' `values'
		if "`nodots'" == "" {
			_dots `i' `reps' `rc'
		}
		else {
			set progress `i' `reps'
		}
	}
	postclose `post'
	quietly use `"`file'"', clear
	global S_FN
	_label data `"simulate:`command'"'
	char _dta[command] `"`command'"'
end
