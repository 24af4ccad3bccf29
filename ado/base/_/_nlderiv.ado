*! values and first derivatives of expressions in the coefficients
* _nlderiv b value jacobian m exp1 exp2 ...: central differences; e(b) is put back
program _nlderiv, eclass
	version 12.1
	args b value G m
	macro shift 4
	tempname save work up h
	local k = colsof(`b')
	matrix `value' = J(`m', 1, 0)
	matrix `G' = J(`m', `k', 0)
	forvalues i = 1/`m' {
		matrix `value'[`i', 1] = ``i''
	}
	capture noisily {
		forvalues j = 1/`k' {
			scalar `h' = max(abs(`b'[1, `j']), 1e-3) * 6e-6
			matrix `up' = J(`m', 1, 0)
			matrix `work' = `b'
			matrix `work'[1, `j'] = `b'[1, `j'] + `h'
			ereturn repost b = `work'
			forvalues i = 1/`m' {
				matrix `up'[`i', 1] = ``i''
			}
			matrix `work' = `b'
			matrix `work'[1, `j'] = `b'[1, `j'] - `h'
			ereturn repost b = `work'
			forvalues i = 1/`m' {
				matrix `G'[`i', `j'] = (`up'[`i', 1] - (``i''))/(2*`h')
			}
		}
	}
	local rc = _rc
	matrix `work' = `b'
	ereturn repost b = `work'
	exit `rc'
end
