* by: groups, order, what it refuses
quietly set obs 6
generate g = mod(_n, 2)
generate x = _n
by g: generate n = _n
program show
    forvalues i = 1/6 {
        display g[`i'] " " x[`i'] " " `1'[`i'] _continue "; "
    }
    display
end
bysort g (x): generate n = _n
by g: generate N = _N
by g (x): generate t = sum(x)
show n
show N
show t
by g: replace x = x[1] if _n == _N
show x
by g (x): generate again = 1
by g: count if x > 2
quietly by g: count
by g (n): count
format x %5.1f
bysort g x: assert n <= 3
bysort g x: count if t > 5
generate str5 s = "s" + string(g)
bysort s g: count
bysort N n, rc0: assert n < 9
bysort g (x): assert 1
by g: by g: count
by g: bysort x: count
by g: save foo
by g: quietly count
by g: {
by g: nosuch
by g:
by zz: count
by : count
by g count
by g (x: count
by g, wrong: count
program groups, byable(recall)
    display _byindex() " " _by() " " _bylastcall() " " _byn1() "-" _byn2() " `_byvars' `0'"
    program_inside
end
program program_inside
    display "inside " _by() _byindex()
end
bysort g (x): assert 1
by g: groups a b
program plain
    display "never"
end
by g: plain
program once, byable(onecall)
    display "once for `_byvars': " _byindex() _bylastcall()
end
by g: once
program hush, byable(recall, noheader)
    display _byn1() "-" _byn2()
    if _byindex() == 1 exit 2000
    display "second"
end
by g: hush
program fails, byable(recall, noheader)
    display "group " _byindex()
    error 459
end
by g: fails
display _by() _byindex() _bylastcall() _byn1() _byn2()
drop _all
by g: count
