*! pairwise correlations, each over the observations that have both variables
program paircorr, rclass byable(recall)
	version 12.1
	syntax [varlist(numeric)] [if] [in] [aw fw] [, Obs SIG Print(real 1) STar(real 0) Bonferroni SIDak LISTwise CASEwise]
	marksample touse, novarlist
	if "`listwise'`casewise'" != "" {
		markout `touse' `varlist'
	}
	if "`weight'" != "" {
		local w [`weight'`exp']
	}
	local k : word count `varlist'
	local pairs = max(1, `k'*(`k' - 1)/2)
	tempname R
	matrix `R' = J(`k', `k', 1)
	matrix rownames `R' = `varlist'
	matrix colnames `R' = `varlist'
	local room = max(1, int((c(linesize) - 14)/9))
	forvalues from = 1(`room')`k' {
		local to = min(`from' + `room' - 1, `k')
		local line = (`to' - `from' + 1)*9
		display ""
		display as text _skip(13) "{c |}" _continue
		forvalues j = `from'/`to' {
			local v : word `j' of `varlist'
			display as text %9s abbrev("`v'", 8) _continue
		}
		display ""
		display as text "{hline 13}{c +}{hline `line'}"
		forvalues i = `from'/`k' {
			local x : word `i' of `varlist'
			local rline
			local sline
			local oline
			forvalues j = `from'/`=min(`i', `to')' {
				local y : word `j' of `varlist'
				local p .
				capture quietly correlate `x' `y' if `touse' `w'
				local rho = cond(_rc, ., r(rho))
				local n = cond(_rc, 0, r(N))
				if `i' == `j' & `n' > 1 & _rc == 0 {
					local rho = cond(el(r(C), 1, 1) < ., 1, .)
				}
				matrix `R'[`i', `j'] = `rho'
				matrix `R'[`j', `i'] = `rho'
				if `i' != `j' & `rho' < . & `n' > 2 {
					local p = cond(abs(`rho') >= 1, 0, 2*ttail(`n' - 2, abs(`rho')*sqrt((`n' - 2)/(1 - `rho'^2))))
					if "`bonferroni'" != "" {
						local p = min(1, `p'*`pairs')
					}
					if "`sidak'" != "" {
						local p = 1 - (1 - `p')^`pairs'
					}
					return scalar rho = `rho'
					return scalar N = `n'
				}
				local mark = cond(`p' <= `star', "*", " ")
				local cell = string(`rho', "%8.4f") + "`mark'"
				if `i' != `j' & `p' > `print' {
					local cell
				}
				local rline `"`rline' "`cell'""'
				local sig1 = cond(`i' == `j', "", string(`p', "%8.4f"))
				local sline `"`sline' "`sig1'""'
				local oline `"`oline' "`n'""'
			}
			display as text %12s abbrev("`x'", 12) " {c |}" _continue
			foreach cell in `rline' {
				display as result %9s "`cell'" _continue
			}
			display ""
			if "`sig'" != "" {
				display as text _skip(13) "{c |}" _continue
				foreach cell in `sline' {
					display as result %8s "`cell'" " " _continue
				}
				display ""
			}
			if "`obs'" != "" {
				display as text _skip(13) "{c |}" _continue
				foreach cell in `oline' {
					display as result %8s "`cell'" " " _continue
				}
				display ""
			}
			if "`sig'`obs'" != "" {
				display as text _skip(13) "{c |}"
			}
		}
	}
	return matrix C = `R'
end
