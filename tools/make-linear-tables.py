#!/usr/bin/env python3
"""Writes reference values of matrix functions (tests/unit/lineartables.inc).

Needs the multiple-precision library mpmath; the build and the tests do not. Matrices are made of
doubles, as the matrix language makes them, and taken exactly; values are had with 60 digits and
rounded once. The last column is the relative error that the condition of the problem allows.

    tools/make-linear-tables.py > tests/unit/lineartables.inc
"""
from mpmath import mp, mpf, mpc, matrix, det, inverse, svd_r, eigsy, eig, expm, lu_solve, polyroots
from mpmath import exp, pi, sqrt, log, fabs, sin

mp.dps = 60
rows = []


def row(text, value, tol):
    rows.append('    {"%s", %s, %g},' % (text, repr(float(value)), tol))


def M(lists):
    return matrix([[mpf(float(z)) for z in r] for r in lists])


def hilbert(n):
    return M([[1.0 / (i + j + 1) for j in range(n)] for i in range(n)])


def frank(n):
    return M([[0 if j < i - 1 else n - max(i, j) for j in range(n)] for i in range(n)])


def singular(a):
    return sorted(svd_r(a, compute_uv=False), reverse=True)


for n, tol in ((3, 1e-13), (5, 1e-11), (8, 1e-6)):
    row('det(Hilbert(%d))' % n, det(hilbert(n)), tol)
    row('lusolve(Hilbert(%d), J(%d, 1, 1))[1]' % (n, n), lu_solve(hilbert(n), matrix([1] * n))[0],
        tol * 100)
    row('cholinv(Hilbert(%d))[%d, 1]' % (n, n), inverse(hilbert(n))[n - 1, 0], tol * 100)
    row('norm(Hilbert(%d))' % n, singular(hilbert(n))[0], 1e-14)
    s = singular(hilbert(n))
    row('svdsv(Hilbert(%d))[%d]' % (n, n), s[-1], tol * 10)
    row('cond(Hilbert(%d))' % n, s[0] / s[-1], tol * 10)
    row('symeigenvalues(Hilbert(%d))[2]' % n, sorted(eigsy(hilbert(n), eigvals_only=True))[-2],
        1e-13)
values = sorted((z.real for z in eig(frank(8), left=False, right=False)), reverse=True)
row('Re(eigenvalues(frank(8))[1])', values[0], 1e-13)
row('Re(eigenvalues(frank(8))[8])', values[-1], 1e-8)
row('det(frank(9))', det(frank(9)), 1e-10)
a = M([[1, 2, 0.5], [0.25, 3, 1], [2, 1, 0.125]])
row('trace(matpowersym(spd(), .5))', sum(sqrt(z) for z in eigsy(a * a.T, eigvals_only=True)), 1e-14)
row('matexpsym(spd() / 8)[1, 3]', expm(a * a.T / 8)[0, 2], 1e-13)
row('sum(matlogsym(spd()))', sum(mp.logm(a * a.T)), 1e-12)
row('norm(pinv(base())) * norm(base())', singular(a)[0] / singular(a)[-1], 1e-13)
row('Re(eigenvalues(base())[3])', sorted(eig(a, left=False, right=False), key=abs)[0].real, 1e-12)

# A polynomial of degree 5 through 21 points, whose columns go from 1 to 3,200,000.
X = matrix([[mpf(x) ** k for k in range(6)] for x in range(21)])
y = matrix([sum(mpf(x) ** k for k in range(6)) + (-1) ** x * mpf(x % 3) for x in range(21)])
b = lu_solve(X.T * X, X.T * y)
for k, tol in ((0, 1e-8), (1, 1e-8), (3, 1e-9), (5, 1e-10)):
    row('qrsolve(powers(), bent())[%d]' % (k + 1), b[k], tol)
    row('svsolve(powers(), bent())[%d]' % (k + 1), b[k], tol)

c = [mpf(1)]
for i in range(1, 9):
    c = [(c[k - 1] if k else 0) - i * (c[k] if k < len(c) else 0) for k in range(len(c) + 1)]
for k in (0, 4, 7):
    row('Re(polyroots(wilkinson(8))[%d])' % (k + 1), 8 - k, 1e-9)
r = sorted(polyroots([3, -2, 0, 5, 1, -7], maxsteps=200, extraprec=200), key=abs)
row('abs(polyroots((-7, 1, 5, 0, -2, 3))[5])', abs(r[0]), 1e-13)

h = [mpf(float(k)) / 8 for k in (3, -1, 4, 1, -5, 9, 2)]
z = sum(h[k] * exp(mpc(0, -2) * pi * 3 * k / 7) for k in range(7))
row('Re(fft((3, -1, 4, 1, -5, 9, 2) / 8)[4])', z.real, 1e-13)
row('Im(fft((3, -1, 4, 1, -5, 9, 2) / 8)[4])', z.imag, 1e-13)
big = [mpf(1e8) + k * k % 17 for k in range(50)]
m = sum(big) / 50
row('variance(1e8 :+ mod((0::49) :^ 2, 17))', sum((v - m) ** 2 for v in big) / 49, 1e-13)
row('mean(1e8 :+ mod((0::49) :^ 2, 17))', m, 1e-15)
row('correlation((1e8 :+ mod((0::49) :^ 2, 17), (1::50)))[2, 1]',
    sum((v - m) * (k + 1 - mpf(51) / 2) for k, v in enumerate(big)) /
    sqrt(sum((v - m) ** 2 for v in big) * sum((k + 1 - mpf(51) / 2) ** 2 for k in range(50))), 1e-12)
g = [mpf(10) ** p for p in (16, 0, -16)]
row('quadcross((1e16 \\\\ 1 \\\\ -1e16 \\\\ 3), (1 \\\\ .1 \\\\ 1 \\\\ .1))', mpf(0.1) + 3 * mpf(0.1), 1e-15)

print('// Made by tools/make-linear-tables.py: expression, value, relative error allowed.')
print('\n'.join(rows))
