* recode, tomissing, frommissing
set obs 12
gen g = mod(_n,3)
gen x = mod(_n*7,11)
replace x = . in 5
gen str1 s = char(64+_n)
recode x 1=2 3 4=7
recode x (min/3 = 1 "low") (4/max = 2 "high") (missing = .a), generate(y)
recode x g (nonmissing = 0) (else = 9), prefix(r_)
list x y r_x r_g g, clean nolabel
tabulate y
recode g (0 1 = 5) (* = 6)
gen f = .1*_n
recode f (.3 = 1) (.4/.6 = 2) (else = copy) if _n < 10
list f in 1/10, clean
foreach bad in "g (0 1)" "g (q=1)" "s (0=1)" "g (1=2), generate(a b)" "g 1" {
	capture noisily recode `bad'
	display _rc
}
tomissing g, values(5=.a 6)
tabulate g, missing
frommissing g, values(.a=5 else=0)
tabulate g
capture noisily frommissing y, values(1)
