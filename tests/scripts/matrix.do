matrix A = (1,2\3,4)
matrix list A
matrix B = A*A' + J(2,2,2)
matrix list B
matrix rownames B = first second
matrix colnames B = eq1:first eq1:second
matrix list B, format(%6.2f) title(sums)
matrix B[1,2] = .a
matrix list B, noheader
matrix A[1,1] = (9\8)
matrix list A, nonames nohalf
capture matrix A[2,1] = (9\8)
display _rc
matrix C = I(3)#A[1..2,1]
matrix list C
matrix rename C D
capture matrix list C
display _rc
matrix dir
display det(A) " " rowsof(D) " " A[2,"c2"]
matrix S = syminv((4,2\2,5))
matrix list S
scalar s = trace(S)
display s
matrix drop A B D
matrix dir
capture noisily matrix X = A
capture noisily matrix X = (1,2)*(1,2)
capture noisily matrix X = inv((1,2\2,4))
matrix svd U W V = S
matrix drop _all
* names that only begin like the default ones are kept by a join
matrix A = (1, 2 \ 3, 4)
matrix rownames A = r1st r2nd
matrix colnames A = c1x c2x
matrix coleq A = left right
matrix B = (5, 6 \ 7, 8)
matrix C = A, B
matrix list C
matrix C = A \ B
matrix list C
matrix coleq B = one two
matrix C = B, B
matrix list C
matrix list B, title("in quotes") noblank
