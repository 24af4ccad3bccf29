*! standardised values, by groups
program _gstd
	version 12.1
	syntax newvarname =/exp [if] [in] [, BY(varlist) Mean(real 0) Sd(real 1)]
	if "`by'" != "" {
		local groups by(`by')
	}
	tempvar x centre spread
	quietly {
		gen double `x' = `exp'
		_gmean double `centre' = `x' `if' `in', `groups'
		_gsd double `spread' = `x' `if' `in', `groups'
		gen `typlist' `varlist' = `mean' + `sd' * (`x' - `centre') / `spread' `if' `in'
	}
end
