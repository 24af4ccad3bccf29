* matrices from data and back; decompositions
set obs 6
gen x = _n
gen y = _n^2
gen g = int((_n+1)/2)
gen r = mod(_n-1, 2) + 1
matrix accum A = x y
matrix list A
display r(N)
matrix accum D = x y, deviations noconstant means(M)
matrix list D
matrix list M
matrix accum W = x [fw=g]
matrix list W
matrix accum W = x [aw=g]
matrix list W
matrix vecaccum v = y x
matrix list v
matrix W = (2, 1 \ 1, 3)
matrix glsaccum G = x, group(g) glsmat(W) row(r)
matrix list G
capture noisily matrix glsaccum G = x, group(g) glsmat(W) row(x)
matrix S = (4, 1, 0 \ 1, 3, 1 \ 0, 1, 2)
matrix rownames S = a b c
matrix colnames S = a b c
matrix symeigen X L = S
matrix list L
matrix list X
matrix Z = X*diag(L)*X'
display mreldif(Z, S) < 1e-14
matrix B = (1, 2 \ 3, 4 \ 5, 6)
matrix svd U w V = B
matrix list w
matrix Z = U*diag(w)*V'
display mreldif(Z, B) < 1e-14
matrix N = (0, 1 \ -1, 0)
matrix eigenvalues re im = N
matrix list re
matrix list im
capture noisily matrix symeigen X L = N
capture noisily matrix svd U w V = v
capture noisily matrix accum Q = x if x > 99
mkmat x y in 1/3, matrix(K)
matrix list K
mkmat x if x > 4
matrix list x
matrix drop x
svmat K, names(col2_*)
svmat double S
list col2_1 col2_2 S1-S3 in 1/4
matrix dir
