*! take a list of results to be collected apart
* "a=r(mean) b=(r(max)-r(min)) r(N)" gives s(names) and s(exp1), s(exp2), ...; s(k) of them.
* Without a list, the scalars that the last command left in r(), or else in e(), are meant.
program _resultlist, sclass
	version 12.1
	local k 0
	sreturn clear
	if trim(`"`0'"') == "" {
		local scalars : r(scalars)
		local class r
		if "`scalars'" == "" {
			local scalars : e(scalars)
			local class e
		}
		if "`scalars'" == "" {
			display as error "the command leaves no results; name what to collect"
			exit 301
		}
		foreach s of local scalars {
			local 0 `0' `s'=`class'(`s')
		}
	}
	gettoken word 0 : 0, parse(" =") bind
	while `"`word'"' != "" {
		local ++k
		gettoken equal after : 0, parse(" =") bind
		local name _r`k'
		if "`equal'" == "=" {
			local name `word'
			gettoken word 0 : after, parse(" =") bind
		}
		confirm name `name'
		local names `names' `name'
		sreturn local exp`k' `word'
		gettoken word 0 : 0, parse(" =") bind
	}
	sreturn local names `names'
	sreturn local k `k'
end
