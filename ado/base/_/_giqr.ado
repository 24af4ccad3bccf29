*! distance between the quartiles, by groups
program _giqr
	version 12.1
	gettoken type 0 : 0
	gettoken name 0 : 0
	tempvar low
	_gpctile double `low' `0' p(25)
	_gpctile `type' `name' `0' p(75)
	quietly replace `name' = `name' - `low'
end
