* by: groups, order, what it refuses
quietly set obs 6
generate g = mod(_n, 2)
generate x = _n
by g: generate n = _n
sort g x
by g: generate n = _n
by g: generate N = _N
by g (x): generate t = sum(x)
by g: replace x = x[1] if _n == _N
list
by g: count if x > 2
by g: summarize x
bysort g (x): list x t
gsort
bysort N n, rc0: count
by g: by g: count
by g: save foo
by g: nosuch
by zz: count
by : count
by g count
by g, wrong: count
program groups, byable(recall)
    display _byindex() " " _by() " " _bylastcall() " `_byvars'"
end
sort g
by g: groups
program plain
    display "never"
end
by g: plain
program once, byable(onecall)
    display "once for `_byvars'"
end
by g: once
program quiet, byable(recall, noheader)
    display _byn1() "-" _byn2()
    if _byindex() == 1 exit 2000
    display "second"
end
by g: quiet
display _by() _byindex() _bylastcall() _byn1()
drop _all
by g: count
