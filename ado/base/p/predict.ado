*! predictions and residuals after an estimation
program predict
	version 12.1
	if `"`e(cmd)'"' == "" {
		error 301
	}
	if "`e(predict)'" != "" {
		`e(predict)' `0'
	}
	else {
		_predict `0'
	}
end
