* Least squares by hand beside the command that does it, and a program that posts its own.
version 12.1
clear
set obs 40
generate double x1 = mod(7 * _n, 13)
generate double x2 = mod(5 * _n, 11) - 3
generate double y = 2 + 0.5 * x1 - 1.5 * x2 + (mod(3 * _n, 7) - 3) / 4
quietly replace y = . in 7
quietly replace x2 = . in 11

program olsmosa, eclass
    syntax varlist
    gettoken dep indep : varlist
    tempname b V
    mosa: olsfit("`dep'", "`indep'", "`b'", "`V'")
    ereturn post `b' `V', obs(`n')
    ereturn local depvar `dep'
    ereturn local cmd olsmosa
end

mosa
// Coefficients and variances of y on the variables of xs and a constant, over the observations
// without missing values; the number of them goes to the macro n of the program that asks.
void olsfit(string scalar y, string scalar xs, string scalar b, string scalar V)
{
    real matrix Z, X, XXi
    real colvector Y, beta, e
    string matrix stripe

    Z = .
    ov_view(Z, ., y + " " + xs, 0)
    ov_subview(Y = ., Z, ., 1)
    X = (Z[., (2..cols(Z))], J(rows(Z), 1, 1))
    XXi = invsym(cross(X, X))
    beta = XXi * cross(X, Y)
    e = Y - X * beta
    stripe = (J(cols(X), 1, ""), (tokens(xs)' \ "_cons"))
    ov_matrix(b, beta')
    ov_matrixcolstripe(b, stripe)
    ov_matrix(V, cross(e, e) / (rows(X) - cols(X)) * XXi)
    ov_matrixrowstripe(V, stripe)
    ov_matrixcolstripe(V, stripe)
    ov_local("n", strofreal(rows(X)))
}
end

olsmosa y x1 x2
matrix hand = e(b)
matrix handV = e(V)
quietly regress y x1 x2
display "coefficients agree: " (mreldif(hand, e(b)) < 1e-12)
display "variances agree: " (mreldif(handV, e(V)) < 1e-12)

* Residuals go back into the data through a view of a new variable.
mosa
k = ov_addvar("double", "resid")
ov_view(R = ., ., k)
b = ov_matrix("e(b)")
X = (ov_data(., ("x1", "x2")), J(ov_nobs(), 1, 1))
R[., .] = ov_data(., "y") - X * b'
printf("%g residuals, their sum rounds to %g\n", nonmissing(R), round(sum(R), 1e-9))
end
predict double r, residuals
count if reldif(r, resid) > 1e-12 & resid < .
