// Factorisations, transforms, cross products, vec and band arrays: small cases by hand, and
// larger ones by what must hold of any answer.
#include "mosabi.h"

static const called byhand[] = {
    {"f = (1, 2, 3, 4); _fft(f); f", "C1,4:10+0i -2+2i -2+0i -2-2i"},
    {"f = (1 \\ 0 \\ 0); _fft(f); round(Re(f), 1e-12)", "R3,1:1 1 1"},
    {"f = (1i, 2); _fft(f); f", "C1,2:2+1i -2+1i"},
    {"f = (1, ., 3); _fft(f); Re(f)", "R1,3:. . ."},
    {"f = J(1, 0, .); _fft(f); iscomplex(f)", "R1,1:1"},
    {"f = (1, 2 \\ 3, 4); _fft(f)", "3201"},
    {"crossdev((1, 2 \\ 3, 4), (2, 3), (5 \\ 7), 6)", "R2,1:2 2"},
    {"crossdev((1 \\ 3), 2, (1 \\ 3), (5 \\ 7), 6)", "R1,1:4"},
    {"crossdev((1 \\ 3), 1, (2, 0), (5 \\ 7), 1, (6, 1))", "R2,2:2 0 0 0"},
    {"crossdev((1 \\ 3 \\ .), 2, (5 \\ 7 \\ 9), 6)", "R1,1:2"},
    {"crossdev((1 \\ 3), ., (5 \\ 7), 6)", "R1,1:."},
    {"crossdev((1 \\ 3), (1, 2), (5 \\ 7), 6)", "3200"},
    {"quadcross((1e16 \\ 1 \\ -1e16), (1 \\ 1 \\ 1))", "R1,1:1"},
    {"quadcross((1e16 \\ 1 \\ -1e16), (2 \\ 3 \\ 2), (1 \\ 1 \\ 1))", "R1,1:3"},
    {"quadcross((1 \\ 2), 1, (3 \\ 4), 0)", "R2,1:11 7"},
    {"quadcrossdev((1e8 \\ 1e8 + 2), 1e8 + 1, (1 \\ 2), 0)", "R1,1:1"},
    {"_dmatrix_u(2)", "R4,3:1 0 0 0 1 0 0 1 0 0 0 1"},
    {"_lmatrix_u(2)", "R3,4:1 0 0 0 0 1 0 0 0 0 0 1"},
    {"_kmatrix_u(2, 3) * _vec_u((1, 2, 3 \\ 4, 5, 6))", "R6,1:1 2 3 4 5 6"},
    {"_dmatrix_u(0)", "R0,0:"},
    {"_vec_u((\"a\", \"b\" \\ \"c\", \"d\"))", "S4,1:a|c|b|d"},
    {"_vech_u((1, 9, 9 \\ 2, 4, 9 \\ 3, 5, 6))", "R6,1:1 2 3 4 5 6"},
    {"_vech_u((1, 2))", "3205"},
    {"f = (1, 2, 3 \\ 4, 5, 6); _flopin(f); f", "R2,3:1 4 2 5 3 6"},
    {"_flopout(f); f", "R2,3:1 2 3 4 5 6"},
    {"f = (1..6) \\ (7..12); _flopin(f); _testflopout(f); f[2, .]", "R1,6:7 8 9 10 11 12"},
    {"f = (1, 2, 3 \\ 4, 5, 6) :* 1i; _testflopin(f); f", "C2,3:0+1i 0+4i 0+2i 0+5i 0+3i 0+6i"},
    {"f = (4, 1 \\ 2, 3); x = (8, 4 \\ 8, 5); _solvelower_u(f, x); x", "R2,2:2 1 1.333333333 1"},
    {"f = (4, 9 \\ 2, 2); _invlower_u(f); f", "R2,2:0.25 0 -0.25 0.5"},
    {"f = (4, 9 \\ 2, 0); _invlower_u(f); f", "R2,2:. . . ."},
    {"trace_AVBV((1, 2 \\ 3, 4), (2, 0 \\ 0, 1), (0, 1 \\ 1, 0))", "R1,1:10"},
    {"trace_ABBAV((1, 2 \\ 3, 4), (1, 0 \\ 0, 2), (1, 0 \\ 0, 1))", "R1,1:95"},
    {"SPMATbandedmake((1, 2, 0 \\ 3, 4, 5 \\ 0, 6, 7), 1, 1)", "R3,3:0 2 5 1 4 7 3 6 0"},
    {"SPMATbandedunmake((0, 2, 5 \\ 1, 4, 7), 0, 1)", "R3,3:1 2 0 0 4 5 0 0 7"},
    {"SPMATbandedtrace((0, 2, 5 \\ 1, 4, 7), 0, 1)", "R1,1:12"},
    {"f = (0, 2, 5 \\ 1, 4, 7); _SPMATbandedtranspose(f, 0, 1); f", "R2,3:1 4 7 2 5 0"},
    {"SPMATbandedmultfull((0, 2, 5 \\ 1, 4, 7), 0, 1, (1 \\ 2 \\ 3))", "R3,1:5 23 21"},
    {"SPMATbandedplus((1, 2), 0, 0, (0, 5 \\ 1, 1), 0, 1)", "R2,2:0 5 2 3"},
    {"SPMATbandedmult((1, 2), 0, 0, (1, 2), 1, 0)", "3200"},
    {"ginvr((2, 0 \\ 0, 0))", "R2,2:0.5 0 0 0"},
    {"ginvr(J(0, 3, .))", "R3,0:"},
    {"ginvr((1 \\ .))", "R1,2:. ."},
    {"invsym((2, 2 \\ 2, 2), (2, 1))", "R2,2:0 0 0 0.5"},
    {"invsym((2, 2 \\ 2, 2), (1 \\ 2))", "R2,2:0.5 0 0 0"},
    {"invsym((2, 2 \\ 2, 2), (1, 2, 3))", "3200"},
    {"_toeplitzscale_u((1, 2), (1 \\ 2))", "R1,1:."},
    {"y = (1 \\ 2); _toeplitzscale_u((4, 2), y)", "R1,1:2.48490665"},
    {"y", "R2,1:0.5 0.8660254038"},
    {"LA_DLAMCH(\"B\")", "R1,1:2"},
    {"a = 1; p = 4; _kf_update_u(a, p, 3, 2, 9) + ln(2 * 3.14159265358979324 * 25) / 2",
     "R1,1:-0.02"},
    {"(a, p)", "R1,2:1.32 1.44"},
    {"a = (1 \\ 2); p = (2, 1 \\ 1, 2); _kf_update_u(a, p, (. \\ .), I(2), I(2))", "R1,1:0"},
    {"(a, p)", "R2,3:1 2 1 2 1 2"},
    {"a = 1; _kf_update_u(a, p = 0, 3, 2, 0)", "R1,1:."},
    {"a = 1; _kf_update_u(a, p = 1, (1 \\ 2), 1, 1)", "3200"},
};

static const char *const functions = R"(
real scalar off(numeric matrix a, numeric matrix b)
{
    return(rows(a) == rows(b) & cols(a) == cols(b) ? minmax(abs(a - b))[2] : .)
}
complex matrix dft(real scalar n)
{
    real scalar pi
    pi = 3.14159265358979324
    return(exp(C(0, -2 * pi / n) :* mod((0::n - 1) * (0..n - 1), n)))
}
real scalar ok_fft(real scalar n)
{
    complex vector x, y
    x = y = C(runiform(n, 1), runiform(n, 1))
    _fft(y)
    if (off(y, dft(n) * x) > 1e-11) return(0)
    _invfft(y)
    return(off(x, y) < 1e-14)
}
real scalar ok_qr(numeric matrix a, real rowvector p)
{
    numeric matrix h, q, r, x
    numeric rowvector t
    real scalar k, i, j
    h = a
    _hqrdp_la(h, t = ., p)
    k = rows(a) < cols(a) ? rows(a) : cols(a)
    r = h[|1, 1 \ k, cols(a)|]
    for (j = 1; j <= cols(a); j++) for (i = j + 1; i <= k; i++) r[i, j] = 0
    x = q = h
    if (rows(a) >= cols(a)) _hqrdq1(q, t)
    else q = I(k)
    if (rows(a) < cols(a)) _hqrdmult(h, t, q, 0)
    x = a[, p]
    _hqrdmult(h, t, x, 1)
    return(off(q * r, a[, p]) < 1e-13 & off(q' * q, I(k)) < 1e-14 & off(x[|1, 1 \ k, cols(a)|], r) < 1e-13)
}
real scalar ok_eigen(numeric matrix a)
{
    numeric matrix x, y, b
    numeric rowvector l
    real rowvector r
    b = a
    r = 1
    _eigen_la(b, x = ., l = ., y = ., r)
    return(off(a * x, x :* l) < 1e-12 & off(y * a, conj(l)' :* y) < 1e-12 & all(abs(l[|1 \ cols(l) - 1|]) :>= abs(l[|2 \ cols(l)|]) :- 1e-12) & cols(r) == cols(a))
}
real scalar ok_svd(numeric matrix a)
{
    numeric matrix u, w, v, vt
    real colvector s, t
    u = w = a
    if (_svd_la(u, s = ., v = .) != 0 | _svd_2(w, t = ., vt = .) != 0) return(0)
    return(off(u * (s :* v), a) < 1e-12 & off(w * (t :* vt), a) < 1e-12 & off(s, t) < 1e-13 & off(u' * u, I(cols(a))) < 1e-13)
}
real scalar ok_solve(numeric matrix a, numeric matrix b)
{
    numeric matrix c, x, g
    c = a
    x = b
    if (_lusolve_la(c, x) != 0) return(0)
    if (off(a * x, b) > 1e-12) return(0)
    c = a
    if (_luinv_la(c) != 0) return(0)
    if (off(a * c, I(rows(a))) > 1e-12) return(0)
    g = c = a * a'
    _cholesky(g)
    return(off(g * g', c) < 1e-11)
}
real scalar ok_band(real matrix a, real matrix b)
{
    real matrix p, q
    p = SPMATbandedmake(a, 1, 2)
    q = SPMATbandedmake(b, 2, 0)
    a = SPMATbandedunmake(p, 1, 2)
    b = SPMATbandedunmake(q, 2, 0)
    return(off(SPMATbandedunmake(SPMATbandedmult(p, 1, 2, q, 2, 0), 3, 2), a * b) < 1e-14 & off(SPMATbandedunmake(SPMATbandedcross(p, 1, 2, q, 2, 0), 4, 1), a' * b) < 1e-14 & off(SPMATbandedunmake(SPMATbandedminus(p, 1, 2, q, 2, 0), 2, 2), a - b) < 1e-15 & abs(SPMATbandedtracemult(p, 1, 2, q, 2, 0) - sum(diagonal(a * b))) < 1e-14)
}
real scalar ok_kalman(real scalar k, real colvector y)
{
    real matrix P, Z, H, K, Q
    real colvector a, b, s
    real scalar l
    P = R(k, k)
    P = P * P'
    Z = R(rows(y), k)
    H = I(rows(y)) :* (1::rows(y))
    a = b = R(k, 1)
    Q = P
    l = _kf_update_u(b, Q, y, Z, H)
    s = select(1::rows(y), y :< .)
    y = y[s]
    Z = Z[s, .]
    H = H[s, s]
    K = P * Z' * luinv(Z * P * Z' + H)
    if (off(b, a + K * (y - Z * a)) > 1e-13 | off(Q, P - K * Z * P) > 1e-13) return(0)
    s = y - Z * a
    return(abs(l + rows(y) * ln(2 * 3.14159265358979324) / 2 + ln(det(Z * P * Z' + H)) / 2 + (s' * luinv(Z * P * Z' + H) * s) / 2) < 1e-12)
}
real matrix R(real scalar n, real scalar m) return(runiform(n, m) :- .5)
complex matrix Z(real scalar n, real scalar m) return(C(R(n, m), R(n, m)))
)";

static const called identities[] = {
    {"all((ok_fft(1), ok_fft(2), ok_fft(3), ok_fft(8), ok_fft(97), ok_fft(128), ok_fft(360)))",
     "R1,1:1"},
    {"ok_qr(R(9, 5), J(1, 5, 0))", "R1,1:1"},
    {"ok_qr(R(4, 7), J(1, 0, .))", "R1,1:1"},
    {"ok_qr(Z(6, 6), J(1, 0, .))", "R1,1:1"},
    {"h = R(5, 3); _hqrdp_la(h, t = ., p = (0, 0, 1)); p[1]", "R1,1:3"},
    {"ok_eigen(R(12, 12))", "R1,1:1"},
    {"ok_eigen(Z(9, 9))", "R1,1:1"},
    {"ok_eigen((0, 1 \\ -1, 0))", "R1,1:1"},
    {"ok_svd(R(9, 6))", "R1,1:1"},
    {"ok_svd(Z(7, 7))", "R1,1:1"},
    {"ok_solve(R(8, 8) + 8 * I(8), R(8, 2))", "R1,1:1"},
    {"ok_solve(Z(8, 8) + 8 * I(8), Z(8, 2))", "R1,1:1"},
    {"ok_solve(R(5, 5) + 5 * I(5), Z(5, 1))", "R1,1:1"},
    {"h = Z(6, 6); h = h + h'; g = h; _symeigen_la(g, x = ., l = .); off(h * x, x :* l) < 1e-13",
     "R1,1:1"},
    {"isreal(l) & all(l[|1 \\ 5|] :>= l[|2 \\ 6|])", "R1,1:1"},
    {"ok_band(R(7, 7), R(7, 7))", "R1,1:1"},
    {"(ok_kalman(3, (1 \\ .5)), ok_kalman(2, (1 \\ . \\ 3 \\ -1)))", "R1,2:1 1"},
    {"h = Z(6, 4); g = ginvr(h); off(h * g * h, h) < 1e-13 & off((h * g)', h * g) < 1e-13",
     "R1,1:1"},
    {"h = R(5, 3) * R(3, 6); g = ginvr(h); off(h * g * h, h) + off(g * h * g, g) < 1e-11",
     "R1,1:1"},
};

TEST(MosaLinear, ByHand)
{
    ms_begin();
    try_all(byhand);
}

TEST(MosaLinear, WhatMustHold)
{
    ms_begin();
    ASSERT_EQ(ms(functions), 0) << session_output;
    ASSERT_EQ(ms("rseed(71)"), 0);
    try_all(identities);
}

TEST(MosaLinear, ViewsAndMissing)
{
    ms_begin();
    ASSERT_EQ(run("set obs 5"), 0);
    ASSERT_EQ(run("generate x = _n"), 0);
    ASSERT_EQ(run("generate y = _n^2 if _n < 5"), 0);
    static const called rows[] = {
        {"vx = .; ov_view(vx, ., \"x\"); vy = .; ov_view(vy, ., \"y\"); quadcross(vx, vy)",
         "R1,1:100"},
        {"crossdev(vx, 2.5, vy, 7.5)", "R1,1:25"},
        {"ginvr(vx) * (1 \\ 2 \\ 3 \\ 4 \\ 5)", "R1,1:1"},
        {"_vec_u(vx)", "R5,1:1 2 3 4 5"},
        {"_fft(vx)", "3103"},
        {"z = (1, . \\ 2, 3); _eigen_la(z, xx = ., l = ., yy = ., 0); missing(Re(l))", "R1,1:2"},
        {"z = (1, . \\ 2, 3); _svd_2(z, s = ., vt = .); missing(z) + missing(s) + missing(vt)",
         "R1,1:10"},
        {"z = (1, . \\ 2, 3); _hqrdp_la(z, t = ., p = .); (missing(z), missing(t))", "R1,2:4 2"},
    };
    try_all(rows);
}

// A matrix of order 0 through every routine: nothing to do, and info says so.
static const called order0[] = {
    {"lv = J(0, 0, .); lz = 9; LA_DGEHRD(0, 1, 0, lv, 1, lv, lv, 1, lz); lz", "R1,1:0"},
    {"lv = J(0, 0, .); lz = 9; LA_DORGHR(0, 1, 0, lv, 1, lv, lv, 1, lz); lz", "R1,1:0"},
    {"lv = J(0, 0, .); lz = 9; LA_DGEBAL(\"N\", 0, lv, 1, lv, lv, lv, lz); lz", "R1,1:0"},
    {"lv = J(0, 0, .); lz = 9; LA_ZGEHRD(0, 1, 0, lv, 1, lv, lv, 1, lz); lz", "R1,1:0"},
    {"lv = J(0, 0, .); lz = 9; LA_ZUNGHR(0, 1, 0, lv, 1, lv, lv, 1, lz); lz", "R1,1:0"},
    {"lv = J(0, 0, .); lz = 9; LA_ZGEBAL(\"N\", 0, lv, 1, lv, lv, lv, lz); lz", "R1,1:0"},
    {"lv = J(0, 0, .); lz = 9; LA_DHSEQR(\"E\", \"N\", 0, 1, 0, lv, 1, lv, lv, lv, 1, lv, 1, lz); "
     "lz",
     "R1,1:0"},
    {"lv = J(0, 0, .); lz = 9; LA_ZHSEQR(\"E\", \"N\", 0, 1, 0, lv, 1, lv, lv, 1, lv, 1, lz); lz",
     "R1,1:0"},
    {"lv = J(0, 0, .); lz = 9; LA_DHSEIN(\"R\", \"N\", \"N\", lv, 0, lv, 1, lv, lv, lv, 1, lv, 1, "
     "0, lv, lv, lv, lv, lz); lz",
     "R1,1:0"},
    {"lv = J(0, 0, .); lz = 9; LA_ZHSEIN(\"R\", \"N\", \"N\", lv, 0, lv, 1, lv, lv, 1, lv, 1, 0, "
     "lv, lv, lv, lv, lv, lz); lz",
     "R1,1:0"},
    {"lv = J(0, 0, .); lz = 9; LA_DGEEV(\"N\", \"N\", 0, lv, 1, lv, lv, lv, 1, lv, 1, lv, 1, lz); "
     "lz",
     "R1,1:0"},
    {"lv = J(0, 0, .); lz = 9; LA_ZGEEV(\"N\", \"N\", 0, lv, 1, lv, lv, 1, lv, 1, lv, 1, lv, lz); "
     "lz",
     "R1,1:0"},
    {"lv = J(0, 0, .); lz = 9; LA_DGEBAK(\"N\", \"R\", 0, 1, 0, lv, 0, lv, 1, lz); lz", "R1,1:0"},
    {"lv = J(0, 0, .); lz = 9; LA_ZGEBAK(\"N\", \"R\", 0, 1, 0, lv, 0, lv, 1, lz); lz", "R1,1:0"},
    {"lv = J(0, 0, .); lz = 9; LA_DTREVC(\"R\", \"A\", lv, 0, lv, 1, lv, 1, lv, 1, 0, lv, lv, lz); "
     "lz",
     "R1,1:0"},
    {"lv = J(0, 0, .); lz = 9; LA_ZTREVC(\"R\", \"A\", lv, 0, lv, 1, lv, 1, lv, 1, 0, lv, lv, lv, "
     "lz); lz",
     "R1,1:0"},
    {"lv = J(0, 0, .); lz = 9; LA_DGGBAL(\"N\", 0, lv, 1, lv, 1, lv, lv, lv, lv, lv, lz); lz",
     "R1,1:0"},
    {"lv = J(0, 0, .); lz = 9; LA_ZGGBAL(\"N\", 0, lv, 1, lv, 1, lv, lv, lv, lv, lv, lz); lz",
     "R1,1:0"},
    {"lv = J(0, 0, .); lz = 9; LA_DGGBAK(\"N\", \"R\", 0, 1, 0, lv, lv, 0, lv, 1, lz); lz",
     "R1,1:0"},
    {"lv = J(0, 0, .); lz = 9; LA_ZGGBAK(\"N\", \"R\", 0, 1, 0, lv, lv, 0, lv, 1, lz); lz",
     "R1,1:0"},
    {"lv = J(0, 0, .); lz = 9; LA_DGGHRD(\"N\", \"N\", 0, 1, 0, lv, 1, lv, 1, lv, 1, lv, 1, lz); "
     "lz",
     "R1,1:0"},
    {"lv = J(0, 0, .); lz = 9; LA_ZGGHRD(\"N\", \"N\", 0, 1, 0, lv, 1, lv, 1, lv, 1, lv, 1, lz); "
     "lz",
     "R1,1:0"},
    {"lv = J(0, 0, .); lz = 9; LA_DHGEQZ(\"E\", \"N\", \"N\", 0, 1, 0, lv, 1, lv, 1, lv, lv, lv, "
     "lv, 1, lv, 1, lv, 1, lz); lz",
     "R1,1:0"},
    {"lv = J(0, 0, .); lz = 9; LA_ZHGEQZ(\"E\", \"N\", \"N\", 0, 1, 0, lv, 1, lv, 1, lv, lv, lv, "
     "1, lv, 1, lv, 1, lv, lz); lz",
     "R1,1:0"},
    {"lv = J(0, 0, .); lz = 9; LA_DTGEVC(\"R\", \"A\", lv, 0, lv, 1, lv, 1, lv, 1, lv, 1, 0, lv, "
     "lv, lz); lz",
     "R1,1:0"},
    {"lv = J(0, 0, .); lz = 9; LA_ZTGEVC(\"R\", \"A\", lv, 0, lv, 1, lv, 1, lv, 1, lv, 1, 0, lv, "
     "lv, lv, lz); lz",
     "R1,1:0"},
    {"lv = J(0, 0, .); lz = 9; LA_DGEES(\"N\", \"N\", lv, 0, lv, 1, lv, lv, lv, lv, 1, lv, 1, lv, "
     "lz); lz",
     "R1,1:0"},
    {"lv = J(0, 0, .); lz = 9; LA_DTRSEN(\"N\", \"N\", lv, 0, lv, 1, lv, 1, lv, lv, lv, lv, lv, "
     "lv, 1, lv, 1, lz); lz",
     "R1,1:0"},
    {"lv = J(0, 0, .); lz = 9; LA_ZGEES(\"N\", \"N\", lv, 0, lv, 1, lv, lv, lv, 1, lv, 1, lv, lv, "
     "lz); lz",
     "R1,1:0"},
    {"lv = J(0, 0, .); lz = 9; LA_ZTRSEN(\"N\", \"N\", lv, 0, lv, 1, lv, 1, lv, lv, lv, lv, lv, 1, "
     "lz); lz",
     "R1,1:0"},
    {"lv = J(0, 0, .); lz = 9; LA_DSYEVX(\"N\", \"A\", \"L\", 0, lv, 1, 0, 0, 0, 0, 0, lv, lv, lv, "
     "1, lv, 1, lv, lv, lz); lz",
     "R1,1:0"},
    {"lv = J(0, 0, .); lz = 9; LA_ZHEEVX(\"N\", \"A\", \"L\", 0, lv, 1, 0, 0, 0, 0, 0, lv, lv, lv, "
     "1, lv, 1, lv, lv, lv, lz); lz",
     "R1,1:0"},
    {"lv = J(0, 0, .); lz = 9; LA_DTGSEN(0, 0, 0, lv, 0, lv, 1, lv, 1, lv, lv, lv, lv, 1, lv, 1, "
     "lv, lv, lv, lv, lv, 1, lv, 1, lz); lz",
     "R1,1:0"},
    {"lv = J(0, 0, .); lz = 9; LA_ZTGSEN(0, 0, 0, lv, 0, lv, 1, lv, 1, lv, lv, lv, 1, lv, 1, lv, "
     "lv, lv, lv, lv, 1, lv, 1, lz); lz",
     "R1,1:0"},
    {"lv = J(0, 0, .); LA_DGBMV(\"N\", 0, 0, 0, 0, 1, lv, 1, lv, 1, 0, lv, 1); lv", "R0,0:"},
};

TEST(MosaLinear, LapackOfOrder0)
{
    ms_begin();
    try_all(order0);
}

// Sizes, options and matrices that do not belong together: refused, or told by info, or run;
// never written past an array.
TEST(MosaLinear, LapackOfAnyArguments)
{
    static const struct {
        const char *id, *form;
    } rows[] = {
#define LA(handler, id, routine, form) {id, form},
#include "mosa/lapack.def"
#undef LA
    };
    ms_begin();
    ASSERT_EQ(ms(R"(
real matrix lm(real scalar n) return(runiform(n, n) :- .5)
real colvector lv(real scalar n) return(runiform(n, 1) :* 4)
real scalar lsel(a, | b) return(Re(a) > 0)
)"),
              0);
    uint32_t state = 12345;
    auto draw = [&](int n) {
        state = state * 1664525u + 1013904223u;
        return int(state >> 8) % n;
    };
    int ran = 0;
    for (auto &r : rows)
        for (int turn = 0; turn < 150; turn++) {
            std::string call = std::string(r.id, strlen(r.id) - 1);
            const char *glue = "";
            int n = draw(5), spoil = draw(3);
            for (const char *s = r.form; *s; s++) {
                bool odd = spoil && draw(12) == 0;
                std::string size = std::to_string(odd ? draw(6) : n);
                call += glue;
                switch (*s) {
                case 'c': call += std::string("\"") + "NVBLRASIEPUT"[draw(12)] + "\""; break;
                case 'i': call += draw(4) ? size : std::to_string(draw(7) - 1); break;
                case 'l':
                case 'd': call += std::to_string(draw(3) - 1); break;
                case 'f': call += "&lsel()"; break;
                case 'x':
                case 'y': call += "l" + std::to_string(s - r.form) + "=lm(" + size + ")"; break;
                case 'L':
                case 'M': call += std::to_string(draw(4) - 1); break;
                default: call += "l" + std::to_string(s - r.form) + "=lv(" + size + ")"; break;
                }
                glue = ", ";
                while (s[1] && *s != ' ')
                    s++;
            }
            int32_t rc = ms(call + ")");
            ran += rc == 0;
            EXPECT_TRUE(rc == 0 || rc == 3200 || rc == 3300 || rc == 3251 || rc == 3253 ||
                        rc == 3257 || rc == 3498)
                << rc << " " << call << session_output;
        }
    EXPECT_GT(ran, 500);
}
