* Fourier transforms, polynomials, splines: against their definitions.
version 12.1
set mosaoptimize on
mosa
real scalar ok(numeric matrix a, numeric matrix b)
{
    if (rows(a) != rows(b) | cols(a) != cols(b)) return(-1)
    return(rows(a) * cols(a) ? norm(a - b, 0) <= 1e-12 * norm(b, 0) + 1e-14 : 1)
}
numeric matrix dft(numeric colvector h)
{
    real scalar n
    n = rows(h)
    return(exp(C(0, -2 * 3.14159265358979324 / n) :* mod((0::n - 1) * (0..n - 1), n)) * h)
}
// Convolution and correlation as they are defined
numeric rowvector slow(numeric rowvector r, numeric rowvector s)
{
    real scalar i, j
    numeric rowvector z
    z = J(1, cols(r) + cols(s) - 1, 0)
    if (iscomplex(r) | iscomplex(s)) z = C(z)
    for (i = 1; i <= cols(r); i++) for (j = 1; j <= cols(s); j++) z[i + j - 1] = z[i + j - 1] + r[i] * s[j]
    return(z)
}
numeric rowvector slowcorr(numeric rowvector g, numeric rowvector h, real scalar k)
{
    real scalar l, j
    numeric rowvector z
    z = J(1, 2 * k + 1, iscomplex(g) | iscomplex(h) ? C(0) : 0)
    for (l = -k; l <= k; l++) for (j = 1; j <= cols(h); j++) if (j + l >= 1 & j + l <= cols(g)) z[l + k + 1] = z[l + k + 1] + g[j + l] * conj(h[j])
    return(z)
}
rseed(8)
h = runiform(30, 1); z = C(runiform(32, 1), runiform(32, 1))
(ok(fft(h), dft(h)), ok(fft(z), dft(z)), ok(invfft(fft(h)), C(h)), ok(fft(z), conj(fft(conj(z'))')))
g = runiform(1, 9); r = runiform(1, 5); u = C(g, g :^ 2)
(ok(convolve(r, g), slow(r, g)), ok(convolve(u, r), slow(u, r)), ok(convolve(g, r'), slow(g, r)'), ok(deconvolve(r, convolve(r, g)), g))
isreal(convolve(r, g))
h = runiform(1, 70); x = C(runiform(1, 45), runiform(1, 45))
(ok(convolve(h, x), slow(h, x)), ok(convolve(x', h'), slow(x, h)'), ok(convolve(h', 2), 2 * h), ok(convolve(2, h'), 2 * h'))
h = runiform(30, 1)
(ok(Corr(g, g[9..1], 3), slowcorr(g, g[9..1], 3)), ok(Corr(u, g, 12), slowcorr(u, g, 12)), ok(Corr(g', u', 2), slowcorr(g, u, 2)'))
fft((1, 2, 3, 4))
(ftpad((1, 2, 3)), ftpad((1 \ 2 \ 3 \ 4 \ 5))')
ftfreqs((1, 2, 3, 4), .5)
ftfreqs((1 \ 2 \ 3), .1) * 3
(ftwrap((1, 2, 3), 5), ftunwrap((1, 2, 3, 4)), ftretime((1, 2, 1), (1, 2, 3, 4, 5)))
p = ftperiodogram(fft(h))
(rows(p), ok(sum(p), 30 * sum(h :^ 2)))
ftperiodogram(fft((1, 2, 3, 4)))
convolve((1, 2, 3), ftwrap((0, 1, 0), 3))

polyeval((1, 2, 3), (0, 1, 2))
polyeval((1, 1i), 2)
polysolve((1, 6, 17), (0, 1, 2))
ok(polysolve(polyeval(g, (1..9)), (1..9))[9], g[9])
polytrim((1, 2, 0, 0))
polyderiv((1, 2, 3, 4), 2)
(polyderiv((1, 2), 2), polyderiv(5, 1))
polyinteg((2, 6), 2)
polyderiv((2, 6), -1)
polyadd((1, 2), (3, 4, 5))
polymult((1, 1), (1, -1, 0, 2))
polydiv((2, 3, 5, 7), (1, 2), q = ., r = .)
(q, r)
polydiv((1, 2), (1, 2, 3), q = ., r = .)
(q, r)
polydiv((-1, 0, 0, 1), (-1, 1), q = ., r = .)
(q, r)
ok(Re(polyroots((-6, 11, -6, 1))), (3, 2, 1))
polyroots((1, 0, 1, 0))
cols(polyroots((1, 0)))
// Wilkinson's polynomial of degree 10, and the roots of unity
c = 1
for (i = 1; i <= 10; i++) c = polymult(c, (-i, 1))
minmax(abs(polyroots(c) - (10..1)))[2] < 1e-7
all(abs(abs(polyroots((-1, J(1, 11, 0), 1))) :- 1) :< 1e-13)

// The spline of a straight line is that line.
S = spline3((0, 1, 3, 4), (1, 3, 7, 9))
ok(spline3eval(S, (0, .5, 2, 3.9, 4)), (1, 2, 5, 8.8, 9))
x = (0, 1, 2, 4); y = (0, 1, 0, 2)
S = spline3(x, y)
(spline3eval(S, x), spline3eval(S, 4.1), spline3eval(S, -.1))
ok(S[1, 2], 0)
// Value, slope and curvature of neighbours meet; the last curvature is 0.
t = (1 \ 1 \ 2)
a = S[|1, . \ 3, .|]
ok(((a[., 3] :* t :+ a[., 2]) :* t :+ a[., 1]) :* t :+ a[., 5], S[|2, 5 \ 4, 5|])
ok((3 * a[., 3] :* t :+ 2 * a[., 2]) :* t :+ a[., 1], S[|2, 1 \ 4, 1|])
ok(3 * a[., 3] :* t :+ a[., 2], S[|2, 2 \ 4, 2|])
end
capture noisily mosa: deconvolve((0, 1), (1, 2, 3))
capture noisily mosa: ftwrap((1, 2), 5)
capture noisily mosa: spline3((0, 0), (1, 2))
capture noisily mosa: polysolve((1, 2), 1)
