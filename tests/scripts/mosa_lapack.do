* Routines of LAPACK by their names: what they make of a matrix is put together again.
version 12.1
set mosaoptimize on
mosa
real scalar near(numeric matrix a, numeric matrix b)
{
    return(rows(a) == rows(b) & cols(a) == cols(b) ? minmax(abs(a - b))[2] < 1e-12 : -1)
}
// Two sides of one thing laid by columns
numeric matrix laid(numeric matrix a)
{
    numeric matrix b
    b = a
    _flopin(b)
    return(b)
}
numeric matrix back(numeric matrix a)
{
    numeric matrix b
    b = a
    _flopout(b)
    return(b)
}
real scalar below4(real scalar re, real scalar im) return(re < 4 & im == 0)
real scalar leftside(complex scalar w) return(Re(w) < 0)

A = (4, 1, 2, 0 \ 3, 5, 1, -1 \ 2, 0, 6, 2 \ 1, -3, 2, 1)
B = (2, 0, 1, 1 \ 1, 3, 0, 0 \ 0, 1, 4, 1 \ 1, 1, 0, 5)
Z = A + 1i * B'
W = B - .5i * A
w = info = .

// Hessenberg form, Schur form, vectors of a triangle
ilo = ihi = scale = tau = .
LA_DGEBAL("N", 4, h = laid(A), 4, ilo, ihi, scale, info)
(ilo, ihi, info)
LA_DGEHRD(4, ilo, ihi, h, 4, tau, w, 100, info)
q = h
LA_DORGHR(4, ilo, ihi, q, 4, tau, w, 100, info)
for (i = 3; i <= 4; i++) for (j = 1; j <= i - 2; j++) h[j, i] = 0
near(back(q) * back(h) * back(q)', A)
wr = wi = vl = .
LA_DHSEQR("S", "V", 4, ilo, ihi, h, 4, wr, wi, q, 4, w, 100, info)
near(back(q) * back(h) * back(q)', A)
near(back(q)' * back(q), I(4))
m = .
sel = s = sep = iw = .
t = h; u = q
LA_DTRSEN("N", "V", (0 \ 0 \ 0 \ 1), 4, t, 4, u, 4, wr2 = ., wi2 = ., m, s, sep, w, 100, iw, 10, info)
(m, info, near(back(u) * back(t) * back(u)', A), near(back(t)[1, 1], wr[4]))
LA_DTREVC("R", "B", 0, 4, h, 4, vl, 1, q, 4, 4, m, w, info)
near(A * back(q), back(q) * (I(4) :* wr))
LA_DGEBAK("N", "R", 4, ilo, ihi, scale, 4, q, 4, info)
info

LA_ZGEBAL("N", 4, h = laid(Z), 4, ilo, ihi, scale, info)
LA_ZGEHRD(4, ilo, ihi, h, 4, tau, w, 100, info)
q = h
LA_ZUNGHR(4, ilo, ihi, q, 4, tau, w, 100, info)
for (i = 3; i <= 4; i++) for (j = 1; j <= i - 2; j++) h[j, i] = 0
near(back(q) * back(h) * back(q)', Z)
ww = .
LA_ZHSEQR("S", "V", 4, ilo, ihi, h, 4, ww, q, 4, w, 100, info)
near(back(q) * back(h) * back(q)', Z)
t = h; u = q
LA_ZTRSEN("N", "V", (0 \ 0 \ 0 \ 1), 4, t, 4, u, 4, w2 = ., m, s, sep, w, 100, info)
(m, info, near(back(u) * back(t) * back(u)', Z), near(back(t)[1, 1], ww[4]))
LA_ZTREVC("R", "B", 0, 4, h, 4, vl, 1, q, 4, 4, m, w, 0, info)
near(Z * back(q), back(q) * (I(4) :* ww))
LA_ZGEBAK("N", "R", 4, ilo, ihi, scale, 4, q, 4, info)
info

// Inverse iteration for chosen vectors of a Hessenberg matrix
h = A; h[3, 1] = h[4, 1] = h[4, 2] = 0
H = h; vr = il = ir = .
LA_DGEEV("N", "N", 4, laid(h), 4, wr, wi, vl, 1, vl2 = ., 1, w, 100, info)
LA_DHSEIN("R", "Q", "N", sel = (1 \ 1 \ 1 \ 1), 4, laid(H), 4, wr, wi, vl, 1, vr, 4, 4, m, w, il, ir, info)
(m, info)
x = back(rowshape(vr, 4))[, 1]
wi[1] == 0 ? near(H * x, wr[1] * x) : -1
LA_ZGEEV("N", "N", 4, laid(C(H)), 4, ww, vl = C(0), 1, vl2 = C(0), 1, w, 100, 0, info)
LA_ZHSEIN("R", "Q", "N", sel, 4, laid(C(H)), 4, ww, vl = C(0), 1, vr = C(0), 4, 4, m, w, 0, il, ir, info)
(m, info)
x = back(rowshape(vr, 4))[, 1]
near(H * x, ww[1] * x)

// All at once
vr = .
LA_DGEEV("V", "V", 4, laid(A), 4, wr, wi, vl = ., 4, vr, 4, w, 100, info)
near(A * back(vr), back(vr) * (I(4) :* wr))
near(back(vl)' * A, (I(4) :* wr) * back(vl)')
LA_ZGEEV("V", "V", 4, laid(Z), 4, ww, vl, 4, vr, 4, w, 100, 0, info)
near(Z * back(vr), back(vr) * (I(4) :* ww))
near(back(vl)' * Z, (I(4) :* ww) * back(vl)')
sd = vs = .
LA_DGEES("V", "S", &below4(), 4, t = laid(A), 4, sd, wr, wi, vs, 4, w, 100, 0, info)
(sd, info, all(wr[|1 \ sd|] :< 4), all(wr[|sd + 1 \ 4|] :>= 4), near(back(vs) * back(t) * back(vs)', A))
LA_ZGEES("V", "S", &leftside(), 4, t = laid(Z - 4 * I(4)), 4, sd, ww, vs, 4, w, 100, 0, 0, info)
(sd, info, Re(ww[1]) < 0, near(back(vs) * back(t) * back(vs)', Z - 4 * I(4)))
S = A + A'
LA_DSYEVX("V", "I", "L", 4, laid(S), 4, 0, 0, 2, 3, 0, m, wr, vr = ., 4, w, 100, 0, ir, info)
x = back(vr)[, (1, 2)]
(m, info, near(S * x, x * (I(2) :* wr[|1 \ 2|])))
S = Z + Z'
LA_ZHEEVX("V", "V", "L", 4, laid(S), 4, 9, 99, 0, 0, 0, m, wr, vr = C(0), 4, w, 100, 0, 0, ir, info)
x = back(vr)[, 1]
(info, wr[1] > 9, near(S * x, x * wr[1]))

// Pairs of matrices
ls = rs = .
LA_DGGBAL("N", 4, laid(A), 4, laid(B), 4, ilo, ihi, ls, rs, w, info)
R = (2, 1, 0, 1 \ 0, 3, 1, 0 \ 0, 0, 4, 1 \ 0, 0, 0, 5)
LA_DGGHRD("I", "I", 4, ilo, ihi, h = laid(A), 4, t = laid(R), 4, q = ., 4, z = ., 4, info)
(near(back(q) * back(h) * back(z)', A), near(back(q) * back(t) * back(z)', R))
ar = ai = be = .
LA_DHGEQZ("S", "V", "V", 4, ilo, ihi, h, 4, t, 4, ar, ai, be, q, 4, z, 4, w, 100, info)
(near(back(q) * back(h) * back(z)', A), near(back(q) * back(t) * back(z)', R))
pl = pr = dif = .
LA_DTGSEN(0, 1, 1, (0 \ 0 \ 0 \ 1), 4, h, 4, t, 4, ar, ai, be, q, 4, z, 4, m, pl, pr, dif, w, 100, iw, 10, info)
(m, info, near(back(q) * back(h) * back(z)', A), near(back(q) * back(t) * back(z)', R))
LA_DTGEVC("R", "B", 0, 4, h, 4, t, 4, vl = ., 1, z, 4, 4, m, w, info)
near(A * back(z) * (I(4) :* be), R * back(z) * (I(4) :* ar))
LA_DGGBAK("N", "R", 4, ilo, ihi, ls, rs, 4, z, 4, info)
info
LA_ZGGBAL("N", 4, laid(Z), 4, laid(W), 4, ilo, ihi, ls, rs, w, info)
R = R + 1i * I(4)
LA_ZGGHRD("I", "I", 4, ilo, ihi, h = laid(Z), 4, t = laid(R), 4, q = C(0), 4, z = C(0), 4, info)
LA_ZHGEQZ("S", "V", "V", 4, ilo, ihi, h, 4, t, 4, ar, be, q, 4, z, 4, w, 100, 0, info)
(near(back(q) * back(h) * back(z)', Z), near(back(q) * back(t) * back(z)', R))
LA_ZTGSEN(0, 1, 1, (0 \ 0 \ 0 \ 1), 4, h, 4, t, 4, ar, be, q, 4, z, 4, m, pl, pr, dif, w, 100, iw, 10, info)
(m, info, near(back(q) * back(h) * back(z)', Z), near(back(q) * back(t) * back(z)', R))
LA_ZTGEVC("R", "B", 0, 4, h, 4, t, 4, vl = C(0), 1, z, 4, 4, m, w, 0, info)
near(Z * back(z) * (I(4) :* be), R * back(z) * (I(4) :* ar))
LA_ZGGBAK("N", "R", 4, ilo, ihi, ls, rs, 4, z, 4, info)
info

// The size of scratch, wrong arguments, missing values
LA_DGEEV("N", "N", 4, laid(A), 4, wr, wi, vl = ., 1, vr = ., 1, w, -1, info)
(w >= 12, info)
LA_DGEEV("N", "N", 4, laid(A), 3, wr, wi, vl, 1, vr, 1, w, 100, info)
info
LA_DGEEV("Q", "N", 4, laid(A), 4, wr, wi, vl, 1, vr, 1, w, 100, info)
info
A[2, 2] = .
LA_DGEEV("N", "V", 4, laid(A), 4, wr, wi, vl, 1, vr, 4, w, 100, info)
(missing(wr), missing(vr), info)
end
capture noisily mosa: LA_DGEEV("N", "N", 5, laid(B), 5, wr, wi, vl, 1, vr, 1, w, 100, info)
capture noisily mosa: LA_DGEBAK("P", "R", 4, 3, 3, (9 \ 1 \ 1 \ 1), 4, laid(B), 4, info)
capture noisily mosa: LA_DGEES("V", "S", 1, 4, laid(B), 4, sd, wr, wi, vs, 4, w, 100, 0, info)
capture noisily mosa: LA_DGEEV("N", "N", 4, laid(Z), 4, wr, wi, vl, 1, vr, 1, w, 100, info)
capture noisily mosa: LA_DGEEV(1, "N", 4, laid(B), 4, wr, wi, vl, 1, vr, 1, w, 100, info)
