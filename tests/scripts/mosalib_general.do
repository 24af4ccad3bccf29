* order, panels, extremes, parts of matrices, values and numbers of the library
mosa
// ---- order
sort((3, 1 \ 1, 2 \ 2, 2), (2, 1))
X = (3, 1 \ 1, 2 \ 2, 2)
_sort(X, -1)
X
sort(("b" \ "a" \ ""), 1)'
order((3 \ . \ -1 \ .a \ 0 \ -0 \ -2 \ 3), 1)'
order((3 \ . \ -1 \ .a \ 0 \ -0 \ -2 \ 3), -1)'
order((1, 5 \ 1, 7 \ 0, 5 \ 1, 5), (-2, 1))'
order((2 + 1i \ 2 - 1i \ -3), 1)'
order(("same start b" \ "same start a" \ "z" \ "same start b" \ "same"), 1)'
order(("a", "y" \ "b", "x" \ "a", "x"), (1, -2))'
order((7 \ 8), J(1, 0, .))'
X = round(runiform(40000, 3) * 6)
p = order(X, (2, -3, 1))
K = X[p, 2] * 100 - X[p, 3] * 10 + X[p, 1]
all(K[|2 \ .|] :>= K[|1 \ 39999|])
all((p[|2 \ .|] :> p[|1 \ 39999|]) :| (K[|2 \ .|] :> K[|1 \ 39999|]))
X = (3, 1 \ 1, 2 \ 2, 2)
rseed(1)
sort(jumble(1::50), 1) == (1::50)
_jumble(X)
sort(X, 1)
sort(unorder(5), 1)'
rows(unorder(0))
(invorder((3, 1, 2)), revorder((3, 1, 2)))
(invorder((3 \ 1 \ 2)), revorder((3 \ 1 \ 2)))
(selectindex((0, 1, .)), selectindex((1 \ 0))', cols(selectindex((0, 0))), cols(selectindex(J(1, 0, .))))
uniqrows((1, 2 \ 1, 1 \ 1, 2 \ 0, 9), 1)
uniqrows(("b" \ "a" \ "b"))
rows(uniqrows(J(0, 2, .)))
(range(0, .3, .1) \ range(1, 0, .3) \ range(5, 5, 0) \ range(0, 1, -2))'
(rangen(0, 1, 5) \ rangen(3, 4, 1))'
s = cvpermutesetup((1 \ 2 \ 1))
while (rows(p = cvpermute(s))) p'
s = cvpermutesetup((1 \ 2 \ 1), 1)
n = 0
while (rows(p = cvpermute(s))) n++
n
s = cvpermutesetup(1::6)
all = J(0, 6, .)
while (rows(p = cvpermute(s))) all = all \ p'
(rows(uniqrows(all)), colsum(all))

// ---- panels
V = (1, 1 \ 1, 2 \ 2, 3 \ 3, 4 \ 3, 5 \ 3, 6)
info = panelsetup(V, 1)
info
panelstats(info)
panelsubmatrix(V, 3, info)
(panelsetup(V, 1, 2), panelsetup(V, 1, 2, 2))
panelsetup(("a" \ "b" \ "b"), 1)
(panelsetup((7 \ 7), 1), panelsetup(5, 1))
(rows(panelsetup(J(0, 1, .), 1)), panelstats(J(0, 2, .)))

// ---- extremes
(max((1, 5, .)), min((1, 5, .), (0, 9)), max(1, 2), max(.))
(rowmax((1, 2 \ 3, .)), rowmin((1, 2 \ 3, .)), rowmedian((1, 2, 4, 9 \ 5, ., 1, .)))
(colmax((1, 2 \ 3, .)), colmin((1, 2 \ 3, .)), colmedian((1, 5 \ 3, 6 \ 2, .)))
i = w = .
maxindex((3, 1, 3), 1, i, w)
(i', w)
(colcumsum((1, 2 \ 3, .)), rowcumsum((1, 2 \ ., 4), 1))

// ---- parts of matrices
A = (1, 2, 3 \ 4, 5, 6 \ 7, 8, 9)
(diag((1, 2)), diag((1, 2 \ 3, 4)), diag(7 \ 8))
diag((1i, 2))
(isdiagonal(I(3)), isdiagonal((1, 0 \ 1, 1)), isdiagonal((0, 1 \ 0, 0)), diag0cnt((0, 1 \ 1, 2)))
(issquare(A), issquare((1, 2)))
(lowertriangle(A), uppertriangle(A, 1))
(lowertriangle(A[(1, 2), .], 0) \ uppertriangle(A[., (1, 2)], 0)')
(sublowertriangle(A, 1), sublowertriangle(A, -1), A)
_uppertriangle(A)
A
uppertriangle((1i, 2 \ 3, 4))
makesymmetric((1, 9 \ 2, 3))
blockdiag((1, 2), 3i)
(transposeonly((1i, 2)), negate((1 \ 2)))
X = (1, 2 \ 3, 4)
_rowswap(X, 1, 2)
_colswap(X, 1, 2)
X

// ---- values
X = (1, ., .b)
(editmissing(X, 3), fillmissing((1, 2)), editvalue(X, 1, 5))
X
edittozero((1, 1e-17, 2), 1)
edittoint((1 + 2 ^ -52, 2.5, .), 10)
edittozerotol(C(.1, 1), .2)
edittointtol((1.05, 2.4, -3.05i), .1)
(sign((-2, 0, 3, .)), dsign(3, -1), dsign(-3, 0))
assert(1)
asserteq((1, 2), (1, 2))

// ---- numbers, against another program's
reldif((logit(.2), invlogit(-1.5), cloglog(.3), invcloglog(-.4)), (-1.3862943611198906, 0.18242552380635635, -1.0309304331587228, 0.4884551663109584)) :< 1e-13
(pi(), log10((1000, 20, 1e-3, ., 0)))
reldif((asin(.5), acos(.5), atan(.5), asinh(.5), acosh(2), atanh(.5), tanh(.5), tanh(-1000)), (0.5235987755982989, 1.0471975511965979, 0.4636476090008061, 0.48121182505960347, 1.3169578969248166, 0.5493061443340548, 0.46211715726000973, -1)) :< 1e-15
(atanh((1e-20, 1, 2)), tanh(1e-20), asin(2))
z = C((.3, -2.5, 2, 0), (-.7, 1e-8, 0, 2))
r = (asin(z) \ acos(z) \ atan(z) \ asinh(z) \ acosh(z) \ atanh(z) \ tanh(z))
want = (C((0.2457320061010797, -1.5707963224305388, 1.5707963267948966, 0.0), (-0.6703367429877897, 1.5667992369724109, 1.3169578969248166, 1.4436354751788103)) \ C((1.3250643206938169, 3.1415926492254354, 0.0, 1.5707963267948966), (0.6703367429877897, -1.5667992369724109, -1.3169578969248166, -1.4436354751788103)) \ C((0.480035181202844, -1.1902899496825317, 1.1071487177940904, 1.5707963267948966), (-0.7016804321523099, 1.3793103448275863e-09, 0.0, 0.5493061443340549)) \ C((0.3855909873181749, -1.6472311463710958, 1.4436354751788103, 1.3169578969248166), (-0.7089034409655053, 3.713906763541037e-09, 0.0, 1.5707963267948966)) \ C((0.6703367429877897, 1.5667992369724109, 1.3169578969248166, 1.4436354751788103), (-1.3250643206938169, 3.1415926492254354, 0.0, 1.5707963267948966)) \ C((0.19988189602962927, -0.42364893019360184, 0.5493061443340549, 0.0), (-0.6396697661585148, 1.5707963248901347, 1.5707963267948966, 1.1071487177940904)) \ C((0.4697051659675581, -0.9866142981514303, 0.9640275800758169, 0.0), (-0.72703718624352, 2.659222668316062e-10, 0.0, -2.185039863261519)))
max(abs(r - want) :/ (abs(want) :+ 1)) < 1e-14
max(abs(sin(asin(z)) - z)) < 1e-14
tanh(C(1000, 1))
end
foreach wrong in invorder((1,1)) invorder((1,5)) range(1,2,0) assert(0) asserteq(1,2) panelsetup(1,2) frombase(1,"1") {
    display `"`wrong'"'
    capture noisily mosa: `wrong'
}
set obs 4
generate id = ceil(_n/2)
generate y = _n
mosa
V = W = .
ov_view(V, ., ("id", "y"))
info = panelsetup(V, 1)
panelsubview(W, V, 2, info)
W
isview(W)
W[1, 2] = 30
V[., 2]'
_sort(V, -2)
V
sort(V, (1, 2))
(editmissing(V, 0), rowmax(V), lowertriangle(V))
end
