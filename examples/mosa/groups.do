* Groups without variables for them: a view whose columns are levels and products, read from the
* data as they stand, and the regression that the same list makes.
version 12.1
set more off
sysuse penguins, clear

mosa:
// Columns of the levels, the product of each with the bill, and the outcome behind them.
ov_view(X = ., ., "ibn.species ibn.species#c.bill_length_mm body_mass_g", 0)
mosa_representation(X)
(rows(X), cols(X))
Z = X[., (1::6)]
y = X[., 7]
b = invsym(cross(Z, Z)) * cross(Z, y)
b
end

regress body_mass_g ibn.species ibn.species#c.bill_length_mm, noconstant noheader
mosa: max(abs(b :- select(ov_matrix("e(b)")', ov_matrixcolstripe_fvinfo("e(b)")[., 3] :== 0))) < 1e-6

* All three lines, or one line for all?
quietly regress body_mass_g i.species##c.bill_length_mm
testparm i.species#c.bill_length_mm
mosa: ov_matrixcolstripe_term_size("e(b)")
