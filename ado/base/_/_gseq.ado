*! sequences within groups
program _gseq
	version 12.1
	gettoken type 0 : 0
	gettoken name 0 : 0
	gettoken equal 0 : 0, parse(" =")
	gettoken nothing 0 : 0, match(par)
	syntax [if] [in] [, BY(varlist) From(integer 1) To(string) Block(integer 1)]
	if "`to'" == "" {
		local to = cond(`from' > 1, 1, c(N) + `from')
	}
	confirm integer number `to'
	if `block' < 1 {
		display as error "block() must be at least 1"
		exit 198
	}
	local length = abs(`to' - `from') + 1
	local step = cond(`to' < `from', -1, 1)
	tempvar touse
	quietly {
		mark `touse' `if' `in'
		sort `touse' `by', stable
		by `touse' `by': gen `type' `name' = `from' + ///
			`step' * mod(int((_n - 1) / `block'), `length') if `touse'
	}
end
