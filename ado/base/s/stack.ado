*! put groups of variables one below the other
program stack
	version 12.1
	syntax varlist , [Into(namelist) Group(integer 0) CLEAR]
	if ("`into'" == "") == (`group' == 0) {
		display as error "give either into() or group()"
		exit 198
	}
	local n : list sizeof varlist
	if `group' {
		if `group' < 1 | mod(`n', `group') {
			display as error "`n' variables do not make `group' groups"
			exit 198
		}
		local width = `n' / `group'
		forvalues i = 1/`width' {
			local into `into' v`i'
		}
	}
	local width : list sizeof into
	local k = `n' / `width'
	if mod(`n', `width') | `width' == 0 {
		display as error "`n' variables do not make groups of `width'"
		exit 198
	}
	if "`clear'" == "" & c(changed) {
		error 4
	}
	local rows = c(N)
	preserve
	quietly {
		tempvar block
		set obs `=`rows' * `k''
		gen long `block' = int((_n - 1) / `rows') + 1
		forvalues i = 1/`width' {
			local first : word `i' of `varlist'
			tempvar new
			* numbers of several types are laid in the widest, where none loses digits
			local type : type `first'
			forvalues j = 2/`k' {
				local other : type `: word `=(`j' - 1) * `width' + `i'' of `varlist''
				if "`other'" != "`type'" & substr("`type'", 1, 3) != "str" {
					local type double
				}
			}
			gen `type' `new' = `first'[_n - (`block' - 1) * `rows']
			forvalues j = 2/`k' {
				local v : word `=(`j' - 1) * `width' + `i'' of `varlist'
				replace `new' = `v'[_n - (`block' - 1) * `rows'] if `block' == `j'
			}
			compress `new'
			format `new' `: format `first''
			_label values `new' `: value label `first''
			local news `news' `new'
		}
		keep `block' `news'
	}
	foreach name of local into {
		gettoken new news : news
		_rename `new' `name'
	}
	_rename `block' _stack
	quietly compress _stack
	_order _stack
	sort _stack, stable
	restore, not
end
