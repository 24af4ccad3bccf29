*! rename one variable or many
program rename, rclass
	version 12.1
	syntax anything(name=names id="old and new names") [, Lower Upper Proper ///
		PREfix(name) SUFfix(string) DRYrun]
	local how `lower' `upper' `proper'
	if `: word count `how'' > 1 {
		display as error "only one of lower, upper and proper may be given"
		exit 198
	}
	if "`how'`prefix'`suffix'" != "" {
		_unab olds : `names'
		foreach v of local olds {
			local new `v'
			if "`how'" != "" {
				local new = `how'("`v'")
			}
			local news `news' `prefix'`new'`suffix'
		}
	}
	else {
		Pairs `names'
		local olds `s(olds)'
		local news `s(news)'
	}
	Check "`olds'" "`news'"
	if "`dryrun'" == "" {
		Move "`olds'" "`news'"
	}
	else {
		Show "`olds'" "`news'"
	}
	return local oldnames `olds'
	return local newnames `news'
	return scalar n = `: list sizeof olds'
end

* Take the names apart: (a b c) (x y z), or one old and one new name or pattern.
program Pairs, sclass
	gettoken left 0 : 0, match(par)
	gettoken right 0 : 0, match(par2)
	if `"`right'"' == "" | trim(`"`0'"') != "" {
		display as error "give one old and one new name, or both as lists in parentheses"
		exit 198
	}
	local nleft : word count `left'
	local nright : word count `right'
	if `nright' != 1 & `nleft' != `nright' {
		display as error "there are `nleft' old names and `nright' new ones"
		exit 198
	}
	local number 0
	forvalues i = 1/`nleft' {
		local old : word `i' of `left'
		local new : word `=min(`i', `nright')' of `right'
		_unab vars : `old'
		foreach v of local vars {
			Newname `v' `old' `new' `++number'
			local olds `olds' `v'
			local news `news' `s(new)'
		}
	}
	sreturn local olds `olds'
	sreturn local news `news'
end

* What * and ? stood for in the old name goes where they stand in the new one; # is a number.
program Newname, sclass
	args v old new number
	local pattern = subinstr(subinstr("`old'", "?", "(.)", .), "*", "(.*)", .)
	local wild = "`pattern'" != "`old'"
	if `wild' {
		local found = regexm("`v'", "^`pattern'" + "$")
		local k 0
		while regexm("`new'", "[*?]") {
			local at = regexm("`new'", "^([^*?]*)[*?](.*)$")
			local before = regexs(1)
			local after = regexs(2)
			local at = regexm("`v'", "^`pattern'" + "$")
			local piece = regexs(`++k')
			local new `before'`piece'`after'
		}
	}
	local new = subinstr("`new'", "#", "`number'", 1)
	sreturn local new `new'
end

program Check
	args olds news
	local twice : list dups news
	if "`twice'" != "" {
		display as error "more than one variable would be named " word("`twice'", 1)
		exit 110
	}
	local twice : list dups olds
	if "`twice'" != "" {
		display as error "variable " word("`twice'", 1) " would be renamed twice"
		exit 198
	}
	foreach new of local news {
		if !`: list posof "`new'" in olds' {
			confirm new variable `new'
		}
	}
end

* A new name that is still in use is reached by way of a temporary name.
program Move
	args olds news
	local n : list sizeof olds
	forvalues i = 1/`n' {
		local old : word `i' of `olds'
		local new : word `i' of `news'
		if "`old'" != "`new'" {
			if `: list posof "`new'" in olds' {
				tempname t
				_rename `old' `t'
				local waiting `waiting' `t'
				local names `names' `new'
			}
			else {
				_rename `old' `new'
			}
		}
	}
	foreach t of local waiting {
		gettoken new names : names
		_rename `t' `new'
	}
end

program Show
	args olds news
	foreach old of local olds {
		gettoken new news : news
		display as text %32s "`old'" "  ->  " as result "`new'"
	}
end
