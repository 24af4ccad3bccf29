* An expression over all rows gives what it gives row by row, in every type, also where it
* reads rows that the same command has changed and where the type widens on the way.
set obs 700
generate double x = mod(_n * 7919, 1009) / 3
replace x = . if mod(_n, 13) == 0
replace x = .c if mod(_n, 17) == 0
local tried 0
foreach type in byte int long float double {
	foreach exp in "y[_n-1]*4" "y+y[_n+1]" "x*y" "y[_n-1]+1 if y<100" "y*3 if y[_n-1]>=y" /*
	*/ "x/7 if y" "y[1]+y" "y[_N]-y if y[_n-1]!=." "1e10 if x>300" "y+.5 if mod(_n,500)==0" /*
	*/ "y*1000 if x<. & y<50" "cond(y>5,y[_n-1],x)" "y[_n-1]*1.000001" ".a if x==." "y*1e300" {
		local one : subinstr local exp "y" "z", all
		quietly {
			generate `type' y = mod(_n, 11)
			generate `type' z = y
			replace y = `exp'
			forvalues i = 1/700 {
				replace z = `one' in `i'
			}
			count if y != z
		}
		local yt : type y
		local zt : type z
		if r(N) | "`yt'" != "`zt'" display "`type' `exp': `r(N)' rows differ, `yt' and `zt'"
		local ++tried
		drop y z
	}
}
display `tried'
