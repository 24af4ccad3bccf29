* standard errors and influence against figures of 30-digit arithmetic
set obs 12
gen x = mod(_n*7, 11)
gen z = mod(_n*5, 13)
gen y = x - z/3 + mod(_n*_n, 7)
gen g = int((_n+2)/3)
gen f = 1 + mod(_n, 3)
program near
	args got want
	if reldif(`got', `want') > 1e-11 {
		display "got " %18.12g `got' " wanted " %18.12g `want'
		exit 9
	}
end
quietly regress y x z
near _se[x] .134808902649
near _se[_cons] 1.2042690023
near e(F) 31.7086061472
quietly regress y x z, vce(robust)
near _se[x] .0840543277508
near _se[_cons] .424687844014
near e(F) 72.6983826269
quietly regress y x z, vce(hc2)
near _se[x] .0837908231394
near e(F) 73.1917869746
quietly regress y x z, vce(hc3)
near _se[x] .0981140774432
near _se[_cons] .611992781251
quietly regress y x z, vce(cluster g)
near _se[x] .0917692791114
near _se[_cons] .287745328097
near e(F) 382.607957524
quietly regress y x z [aw=f]
near _b[x] .942296878286
near _se[_cons] .920185864796
near e(rmse) 1.30881676301
near e(ll) -18.5306519002
quietly regress y x z [pw=f]
near _se[x] .0858282658076
near _se[_cons] .332628113977
quietly regress y x z [fw=f], robust
near _se[x] .070176304932
near e(rmse) 1.21172886611
quietly regress y x z, noconstant
near _b[x] 1.0938373967
near _se[x] .0964700524178
near e(F) 116.36032721
near e(r2_a) .950560449712
quietly regress y x z
predict double rs, rstudent
predict double cd, cooksd
predict double cv, covratio
predict double w, welsch
near rs[3] .404539796897
near cd[3] .036927715431
near cv[3] 2.16265368008
near w[3] 1.33570537876
