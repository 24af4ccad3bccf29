#!/usr/bin/env python3
"""Writes the reference tables of the distribution functions (tests/unit/disttables.inc).

Needs the multiple-precision library mpmath; the build and the tests do not. Every value is had
from the definition, to 50 digits inside: series where the parameters are small, else Gaussian
panels over the density, whose number of points is raised until nothing changes. Arguments are
doubles, taken exactly; values are rounded once, to the nearest double.

    tools/make-dist-tables.py [FUNCTION ...] > tests/unit/disttables.inc
"""
import sys
from fractions import Fraction
from mpmath import (mp, mpf, log, exp, loggamma, sqrt, pi, ncdf, npdf, erfc, gammainc, betainc,
                    quad, diff, psi, expm1, log1p, legendre, findroot, cos, inf, floor, binomial)

mp.dps = 50
POINTS = 28


def nodes(n):
    found = []
    for i in range(1, n // 2 + 1):
        x = findroot(lambda t: legendre(n, t), cos(pi * (i - mpf(1) / 4) / (n + mpf(1) / 2)))
        p = n * (legendre(n - 1, x) - x * legendre(n, x)) / (1 - x * x)
        w = 2 / ((1 - x * x) * p * p)
        found += [(x, w), (-x, w)]
    return found


RULE = nodes(POINTS)


def panel(f, a, b):
    half, mid = (b - a) / 2, (a + b) / 2
    return half * sum(w * f(mid + half * x) for x, w in RULE)


def tail(g, g1, g2, u, sign):
    """The integral of exp(g(t) - g(u)) from u outward, sign telling the direction."""
    base, total, most, at = g(u), mpf(0), mpf(0), u
    while True:
        step = min(mpf(1), 3 / max(abs(g1(at)), mpf(10) ** -40), 2 / sqrt(abs(g2(at)) + mpf(10) ** -40))
        nxt = at + sign * step
        part = abs(panel(lambda t: exp(g(t) - base), at, nxt))
        total += part
        at = nxt
        if part < total * mpf(10) ** -34 and sign * g1(at) < 0:
            return total


# ---- gamma and beta

def gamma_front(a, x):
    return a * log(x) - x - loggamma(a)


def gamma_tail(a, x, upper):
    a, x = mpf(a), mpf(x)
    if x <= 0:
        return mpf(upper)
    if a < 300 and x < 3000:
        with mp.workdps(60 + int(min(x, 1000)) + int(max(0, -log(x) * a / 2))):
            v = gammainc(a, x, inf, regularized=True) if upper else gammainc(a, 0, x, regularized=True)
        return +v
    v = exp(gamma_front(a, x)) * tail(lambda u: a * u - exp(u), lambda u: a - exp(u),
                                      lambda u: -exp(u), log(x), 1 if upper else -1)
    return v


def beta_front(a, b, x, y):
    return a * log(x) + b * log(y) - (loggamma(a) + loggamma(b) - loggamma(a + b))


def beta_tail(a, b, x, upper, y=None):
    a, b, x = mpf(a), mpf(b), mpf(x)
    y = 1 - x if y is None else y
    if x <= 0 or y <= 0:
        return mpf(upper if x <= 0 else not upper)
    if upper:
        a, b, x, y = b, a, y, x
    if x < mpf(1) / 2 and b * x < 2:  # powers of x
        c, s, n = mpf(1), 1 / a, 0
        while True:
            n += 1
            c *= (n - b) / n * x
            t = c / (a + n)
            s += t
            if abs(t) < abs(s) * mpf(10) ** -48:
                break
        return exp(beta_front(a, b, x, y) - b * log1p(-x)) * s
    if a < mpf(1) / 10:  # a tail too long for panels; the other one is short of nothing
        with mp.workdps(80):
            return 1 - beta_tail(b, a, y, False, x)
    odds = log(x / y)

    def g(u):
        return a * u - (a + b) * (log1p(exp(u)) if u < 0 else u + log1p(exp(-u)))

    def g1(u):
        return a - (a + b) / (1 + exp(-u))

    def g2(u):
        return -(a + b) * exp(-abs(u)) / (1 + exp(-abs(u))) ** 2
    return exp(beta_front(a, b, x, y)) * tail(g, g1, g2, odds, -1)


def f_tail(d1, d2, f, upper):
    d1, d2, f = mpf(d1), mpf(d2), mpf(f)
    s = d1 * f + d2
    return beta_tail(d1 / 2, d2 / 2, d1 * f / s, upper, d2 / s)


def t_tail(df, t):
    df, t = mpf(df), mpf(t)
    s = df + t * t
    v = beta_tail(df / 2, mpf(1) / 2, df / s, False, t * t / s) / 2 if t else mpf(1) / 2
    return v if t > 0 else 1 - v


def solve(f, slope, p, x):
    """Newton on the logarithm of f over log x; slope is df/dlog x."""
    u, p = log(x), mpf(p)
    for _ in range(200):
        v = f(exp(u))
        step = (log(p) - log(v)) * v / slope(exp(u))
        step = max(min(step, mpf(50)), mpf(-50))
        u += step
        if abs(step) < mpf(10) ** -20:
            return exp(u)
    raise ValueError("no root")


def inv_gamma(a, p, upper):
    a = mpf(a)
    s = -1 if upper else 1
    small = a < 1 and not upper
    start = exp((log(mpf(p)) + loggamma(a + 1)) / a) if small else a if not upper else a + 1
    return solve(lambda x: gamma_tail(a, x, upper), lambda x: s * exp(gamma_front(a, x)), p, start)


def inv_odds(a, b, p, upper):
    a, b = mpf(a), mpf(b)
    s = -1 if upper else 1
    return solve(lambda w: beta_tail(a, b, w / (1 + w), upper, 1 / (1 + w)),
                 lambda w: s * exp(beta_front(a, b, w / (1 + w), 1 / (1 + w))), p, a / b)


def inv_beta(a, b, p, upper):
    w = inv_odds(a, b, p, upper)
    return w / (1 + w)


def inv_t(df, p):
    df, p = mpf(df), mpf(p)
    if p > mpf(1) / 2:
        return -inv_t(df, 1 - p)
    return sqrt(inv_odds(mpf(1) / 2, df / 2, 2 * p, True) * df)


# ---- noncentral

def mixture(L, part, join, down):
    """Sums weights times parts; join(j) is part(j) less part(j+1), for lower tails."""
    m = mpf(L) / 2
    top = int(m + 14 * sqrt(m) + 120)
    w, z, total = exp(top * log(m) - m - loggamma(top + 1)), part(top), mpf(0)
    for j in range(top, -1, -1):
        total += w * z
        if j:
            z = z + down * join(j - 1)
            w = w * j / m
    return total


def nchi2(df, L, x):
    a, x = mpf(df) / 2, mpf(x) / 2
    return mixture(L, lambda j: gamma_tail(a + j, x, False),
                   lambda j: exp(gamma_front(a + j, x)) / (a + j), 1)


def nbeta(a, b, L, x, upper, y=None):
    a, b, x = mpf(a), mpf(b), mpf(x)
    y = 1 - x if y is None else y
    return mixture(L, lambda j: beta_tail(a + j, b, x, upper, y),
                   lambda j: exp(beta_front(a + j, b, x, y)) / (a + j), -1 if upper else 1)


def nbeta_den(a, b, L, x, y=None):
    a, b, x = mpf(a), mpf(b), mpf(x)
    y = 1 - x if y is None else y
    m, total, j = mpf(L) / 2, mpf(0), 0
    while True:
        t = exp(j * log(m) - m - loggamma(j + 1) + beta_front(a + j, b, x, y))
        total += t
        if j > m + 50 and t < total * mpf(10) ** -40:
            return total / (x * y)
        j += 1


def nf(d1, d2, L, f, den):
    d1, d2, f = mpf(d1), mpf(d2), mpf(f)
    s = d1 * f + d2
    x, y = d1 * f / s, d2 / s
    if den:
        return nbeta_den(d1 / 2, d2 / 2, L, x, y) * x * y / f
    return nbeta(d1 / 2, d2 / 2, L, x, True, y)


# ---- normal families

def phi(z):
    return erfc(-mpf(z) / sqrt(mpf(2))) / 2


def inv_phi(p):
    p, z = mpf(p), mpf(0)
    if p > mpf(1) / 2:
        return -inv_phi(1 - p)
    for _ in range(100):
        v = phi(z)
        step = (log(p) - log(v)) * v / npdf(z)
        z += step
        if abs(step) < mpf(10) ** -40:
            return z


def between(lo, hi):
    return phi(-lo) - phi(-hi) if lo > 0 else phi(hi) - phi(lo)


def binormal(h, k, r):
    h, k, r = mpf(h), mpf(k), mpf(r)
    root = sqrt((1 - r) * (1 + r))
    cut = k / r if r else mpf(0)
    marks = {h}
    for d in (0, 0.5, 1, 2, 3, 4, 6, 8, 10, 14, 18):
        marks |= {h - mpf(d), cut + d * root, cut - d * root}
    low = min(h, 0) - 22
    marks = sorted(m for m in marks | {low} if low <= m <= h)
    return sum(panel(lambda x: npdf(x) * phi((k - r * x) / root), a, b)
               for a, b in zip(marks, marks[1:]))


def over_scale(f, df):
    a = mpf(df) / 2
    total, step, was = mpf(0), mpf(1) / 24 / max(1, sqrt(mpf(df) / 8)), None
    const = a * log(a) - loggamma(a)

    def at(i):
        u = i * step
        return exp(2 * a * u - a * exp(2 * u) + const) * f(exp(u))
    for direction in (1, -1):
        i = 0 if direction == 1 else -1
        while True:
            t = at(i)
            total += t
            if abs(i) > 20 and t < total * mpf(10) ** -19:
                break
            i += direction
    return 2 * total * step


def narrow(f, low, high):
    """Half-unit panels, but only those where f counts: with many means it is narrow."""
    marks = [mpf(i) / 2 for i in range(2 * low, 2 * high + 1)]
    at = [abs(f(m)) for m in marks]
    top = max(at)
    return sum(panel(f, p, q) for p, q, v, w in zip(marks, marks[1:], at, at[1:])
               if max(v, w) > top * mpf(10) ** -22)


def range_prob(k, w):
    return k * narrow(lambda z: npdf(z) * between(z - w, z) ** (k - 1), -10, 12 + int(min(w, 50)))


def dunnett_prob(k, w):
    w = w * sqrt(mpf(2))
    return 2 * narrow(lambda z: npdf(z) * between(z - w, z + w) ** k, 0, 11)


def quick(f, *args):
    with mp.workdps(22):
        return f(*args)


# ---- discrete

def poisson_p(m, k):
    m, k = mpf(m), mpf(k)
    return exp(k * log(m) - m - loggamma(k + 1))


def binomial_p(n, k, p):
    n, k, p = mpf(n), mpf(k), mpf(p)
    return exp(loggamma(n + 1) - loggamma(k + 1) - loggamma(n - k + 1) + k * log(p) + (n - k) * log1p(-p))


def nb_p(n, k, p):
    n, k, p = mpf(n), mpf(k), mpf(p)
    return exp(loggamma(n + k) - loggamma(n) - loggamma(k + 1) + n * log(p) + k * log1p(-p))


def hyper_p(N, K, n, k):
    def lnc(a, b):
        return loggamma(mpf(a) + 1) - loggamma(mpf(b) + 1) - loggamma(mpf(a) - b + 1)
    return exp(lnc(K, k) + lnc(N - K, n - k) - lnc(N, n))


def hyper(N, K, n, k):
    low = max(0, n - (N - K))
    t, s = hyper_p(N, K, n, k), mpf(0)
    for j in range(k, low - 1, -1):
        s += t
        t *= mpf(j) * (N - K - n + j) / (mpf(K - j + 1) * (n - j + 1))
        if t < s * mpf(10) ** -45:
            break
    return s


# ---- points

# Shapes and where to look: on both sides of the changes of method (a of 1/2, x of 3/2, x of
# a + 1, a of 100, x of a/2 and 2a), around the mean, deep in both tails.
GAMMA = [(1e-10, 1e-300), (1e-10, 1e-5), (1e-10, 1.5), (1e-10, 20), (0.001, 1e-8), (0.001, 0.75),
         (0.001, 1.49), (0.001, 1.51), (0.25, 1e-20), (0.4999, 1.4999), (0.5001, 1.4999),
         (0.5, 1.75), (0.5, 650), (1, 1e-200), (1, 700), (1.5, 2.25), (1.5, 2.75), (3.25, 0.0625),
         (10, 3), (10, 10.875), (10, 11.25), (10, 30), (50, 4), (99.5, 99), (100.5, 40),
         (100.5, 99), (100.5, 110), (100.5, 199), (100.5, 205), (300, 500), (1000, 700), (1e4, 10300),
         (99999, 99000), (1e5, 99800), (100001, 104000), (1e6, 1e6), (1e8, 100300000.0), (1e10, 9999000000.0),
         (1e12, 1000003e6), (1e15, 999999900000000.0), (1e17, 1.0000000003e17)]
BETA = [(1e-10, 1e-10, 0.25), (1e-10, 1, 1e-200), (0.001, 0.002, 1e-5), (0.001, 2, 0.375),
        (0.001, 1e5, 1e-9), (0.5, 0.5, 1e-10), (0.5, 0.5, 0.75), (0.25, 3, 0.125), (1, 1, 0.3125),
        (1, 50, 0.9), (2, 3, 0.3), (2, 3, 0.7), (2, 3, 1e-150), (5, 0.3, 0.99), (10, 20, 0.3125),
        (10, 20, 0.34375), (10, 20, 0.01), (10, 20, 0.96875), (19, 21, 0.25), (21, 19, 0.25),
        (50, 50, 0.4990234375), (200, 2, 0.985), (2000, 300, 0.88), (2000, 300, 0.8125),
        (1000, 1000, 0.5), (1000, 1000, 0.55), (1e5, 0.5, 0.99997), (1e5, 20, 0.9996), (1e5, 2e5, 0.33),
        (1e6, 1e3, 0.999), (1e6, 1e6, 0.5009765625), (1e8, 1e8, 0.4999), (1e10, 3e10, 0.25),
        (1e12, 1e3, 0.999999999), (1e13, 1e13, 0.4999999), (1e15, 2, 0.999999999999998),
        (1e17, 1e17, 0.5), (1e17, 1e17, 0.50000000125), (3, 1e17, 2e-17), (1e17, 0.5, 0.9999999999999998)]
T = [(2e-10, 1), (0.1, 3), (0.5, -2), (1, 1e-10), (1, 0.5), (1, 12.75), (1, 1e10), (2, 1e100), (2.5, 2.5),
     (5, -2.5), (5, 2.5), (5, 1e5), (10, 0.75), (29, 2.045), (30, 40), (100, 1.984), (100, 12), (500, 1.01),
     (500, 0.99), (1000, 2), (1000, 30), (1e4, 5), (1e6, 1.96), (1e8, 10), (1e12, 3), (1e15, 6), (2e17, 2)]
F = [(1, 1, 1e-10), (1, 1, 161), (1, 1e17, 3.84), (2, 2, 0.5), (3, 20, 3.1), (3, 20, 1e-5), (3, 20, 300),
     (0.5, 7, 2), (10, 10, 0.9921875), (10, 10, 1.0078125), (100, 50, 1.5), (100, 50, 4), (1000, 3, 8.5),
     (1000, 1000, 1.1), (1000, 1000, 0.6), (1e5, 1e5, 1.01), (1e6, 20, 2), (1e8, 1e8, 0.9999),
     (1e10, 1e10, 1.00005), (2e17, 5, 2), (1e15, 1e15, 1.0000001)]
BINOMIAL = [(1, 0, 0.25), (10, 3, 0.4), (10, 9, 0.4), (40, 1, 1e-10), (100, 30, 0.5), (100, 55, 0.5),
            (1000, 900, 0.99), (1000, 10, 0.01), (1e6, 499000, 0.5), (1e6, 100, 1e-4), (1e9, 1e8, 0.1),
            (1e12, 500000500000, 0.5), (1e15, 100, 1e-13)]
POISSON = [(1e-10, 0), (1e-10, 2), (0.5, 1), (3.5, 2), (3.5, 40), (30, 10), (100, 99), (100, 100), (100, 200),
           (1e4, 9700), (1e6, 1003000), (1e10, 9999900000), (9007199254740991, 9007199300000000)]
NB = [(1e-10, 1, 0.5), (0.5, 3, 0.25), (4, 3, 0.4), (4, 300, 0.4), (100, 250, 0.3), (1e4, 100, 0.99), (1e6, 1e6, 0.5),
      (1e10, 30, 0.999999998), (1e12, 3000003000000, 0.25)]
HYPER = [(50, 10, 8, 2), (50, 10, 8, 0), (50, 10, 8, 7), (1000, 300, 200, 60), (1000, 300, 200, 20),
         (100000, 50000, 1000, 480), (1000000, 1000, 1000, 3), (10**9, 10**8, 10**4, 900)]
NCHI = [(1, 1e-5, 1), (1, 2, 5), (3, 2, 5), (3, 2, 1e-8), (3, 30, 100), (0.5, 10, 0.01), (10, 100, 30),
        (10, 100, 110), (100, 1000, 700), (7, 4000, 3500), (7, 4000, 2000), (1000, 10, 1010), (2, 1400, 1500)]
NBETA = [(2, 3, 4, 0.4), (2, 3, 4, 1e-6), (0.5, 0.5, 1, 0.75), (10, 20, 50, 0.5), (10, 20, 50, 0.3),
         (5, 2, 1000, 0.99), (100, 200, 400, 0.6), (2, 3, 1e-5, 0.4), (3, 3000, 100, 0.02)]
NF = [(3, 7, 4, 1.5), (3, 7, 4, 1e-4), (3, 7, 4, 200), (1, 1, 10, 2), (10, 50, 100, 8), (10, 50, 100, 40),
      (100, 100, 500, 6), (5, 1e6, 3, 2), (2, 30, 2000, 1000)]
NORMAL = [-37.5, -37, -30, -12.5, -8, -5.65686, -5.65685, -3, -1.5, -1, -0.6745, -0.67448, -0.25, -1e-10, 1e-17,
          0.125, 0.5, 0.67448, 0.6745, 0.9, 1.25, 2, 4, 5.65685, 5.65686, 6.5, 8.25]
P = [1e-300, 1e-100, 1e-20, 1e-8, 0.001, 0.025, 0.0749, 0.0751, 0.25, 0.4999, 0.50000001, 0.75, 0.9375, 0.999]
XI = [1e-300, 1e-9, 0.125, 0.5, 0.9, 0.999999, 1.000001, 1.4375, 1.4616321449683622, 1.4616321449683624,
      1.46163, 1.5, 1.99999, 2.00001, 2.5, 11.5, 12.5, 33.25, 1e3, 1e8, 1e16, 1e300, -0.5, -1.5, -2.0625, -20.3]
BINORM = [(0, 0, 0.5), (0, 0, -0.5), (1, -0.5, 0.9), (2, 2, 0.99), (-1, 2, -0.7), (1, 1.001, 0.9999), (-3, -3, 0.25),
          (-8, -8, 0.5), (-8, -9, 0.96875), (-5, 4, 0.75), (5, -4.9, -0.9), (3, -2.9, -0.999), (-2, -2, -0.5),
          (-1, -1, -0.9375), (0.5, -0.25, 0.0078125), (-20, -20, 0.5), (1.5, 1.25, -0.25), (4, 5, 0.9999)]
DERIV = [(0.00005, 0.25), (0.01, 0.5), (0.5, 0.25), (0.5, 3), (1, 1e-5), (1, 1), (2.5, 3), (2.5, 4), (2.5, 30),
         (10, 4), (10, 11.5), (10, 40), (100, 80), (100, 120), (1000, 950), (1000, 1100)]
RANGE = [(2, 5, 2.5), (3, 10, 3.5), (3, 10, 0.0078125), (10, 20, 5), (5, 4, 30), (20, 100, 4), (50, 1000, 6),
         (100, 12, 1)]
INVP = [1e-200, 1e-10, 0.025, 0.4375, 0.9, 0.999]


wanted = sys.argv[1:]


def rows():
    def one(name, points, f):
        for p in points if name in wanted or not wanted else []:
            p = p if isinstance(p, tuple) else (p,)
            yield name, p, f(*p)
    yield from one("normal", NORMAL, phi)
    yield from one("lnnormal", NORMAL + [-1e10, -1e4, -38, 20], lambda z: log(phi(z)) if z < 5 and z > -1e3 else
                   log1p(-phi(-z)) if z > 0 else -mpf(z) ** 2 / 2 - log(-z * sqrt(2 * pi)) + log1p(
                       -1 / mpf(z) ** 2 + 3 / mpf(z) ** 4 - 15 / mpf(z) ** 6 + 105 / mpf(z) ** 8))
    yield from one("invnormal", P + [1 - 2.0 ** -40], inv_phi)
    yield from one("lngamma", XI, lambda x: log(abs(mp.gamma(x))) if x < 1e6 else loggamma(x))
    yield from one("digamma", XI[1:], lambda x: psi(0, mpf(x)))
    yield from one("trigamma", [x for x in XI[1:]], lambda x: psi(1, mpf(x)))
    yield from one("gammap", GAMMA, lambda a, x: gamma_tail(a, x, False))
    yield from one("gammaptail", GAMMA, lambda a, x: gamma_tail(a, x, True))
    yield from one("gammaden", [(a, 1.0, 0.0, x) for a, x in GAMMA[4:]], lambda a, b, g, x:
                   exp(gamma_front(mpf(a), mpf(x))) / x)
    yield from one("chi2", [(2 * a, 2 * x) for a, x in GAMMA[8::3]], lambda d, x: gamma_tail(mpf(d) / 2, mpf(x) / 2, False))
    yield from one("chi2tail", [(1, 1300)] + [(2 * a, 2 * x) for a, x in GAMMA[8::3]],
                   lambda d, x: gamma_tail(mpf(d) / 2, mpf(x) / 2, True))
    yield from one("ibeta", BETA, lambda a, b, x: beta_tail(a, b, x, False))
    yield from one("ibetatail", BETA, lambda a, b, x: beta_tail(a, b, x, True))
    yield from one("betaden", BETA[2:], lambda a, b, x: exp(beta_front(mpf(a), mpf(b), mpf(x), 1 - mpf(x)))
                   / mpf(x) / (1 - mpf(x)))
    yield from one("F", F, lambda a, b, f: f_tail(a, b, f, False))
    yield from one("Ftail", F, lambda a, b, f: f_tail(a, b, f, True))
    yield from one("Fden", F, lambda a, b, f: exp(beta_front(mpf(a) / 2, mpf(b) / 2, mpf(a) * f / (mpf(a) * f + b),
                   b / (mpf(a) * f + b))) / f)
    yield from one("ttail", T, t_tail)
    yield from one("tprob", T[::4], lambda d, t: 2 * t_tail(d, abs(t)))
    yield from one("tden", T + [(7, 0.0), (1e10, 1e-4), (1, 0.001)], lambda d, t: exp(
        loggamma((mpf(d) + 1) / 2) - loggamma(mpf(d) / 2) - (mpf(d) + 1) / 2 * log1p(mpf(t) ** 2 / mpf(d)))
        / sqrt(mpf(d) * pi))
    whole = [(int(n), int(k), p) for n, k, p in BINOMIAL]
    yield from one("binomial", whole, lambda n, k, p: beta_tail(mpf(k) + 1, n - k, p, True))
    yield from one("binomialtail", [w for w in whole if w[1]], lambda n, k, p: beta_tail(k, mpf(n) - k + 1, p, False))
    yield from one("binomialp", whole, binomial_p)
    yield from one("poisson", POISSON, lambda m, k: gamma_tail(mpf(k) + 1, m, True))
    yield from one("poissontail", POISSON[1:], lambda m, k: gamma_tail(k, m, False))
    yield from one("poissonp", POISSON, poisson_p)
    yield from one("nbinomial", NB, lambda n, k, p: beta_tail(n, mpf(k) + 1, p, False))
    yield from one("nbinomialtail", NB, lambda n, k, p: beta_tail(n, k, p, True))
    yield from one("nbinomialp", NB, nb_p)
    yield from one("hypergeometric", HYPER, hyper)
    yield from one("hypergeometricp", HYPER, hyper_p)
    yield from one("nchi2", NCHI, nchi2)
    yield from one("nibeta", NBETA, lambda a, b, L, x: nbeta(a, b, L, x, False))
    yield from one("nbetaden", NBETA, nbeta_den)
    yield from one("nFtail", NF, lambda a, b, L, f: nf(a, b, L, f, False))
    yield from one("nFden", NF, lambda a, b, L, f: nf(a, b, L, f, True))
    yield from one("binormal", BINORM, lambda h, k, r: quick(binormal, h, k, r) if h > -6 else binormal(h, k, r))

    def gp(a, x):
        return gammainc(a, 0, x, regularized=True)
    with mp.workdps(70):
        yield from one("dgammapdx", DERIV, lambda a, x: exp(gamma_front(mpf(a), mpf(x))) / x)
        yield from one("dgammapdxdx", DERIV, lambda a, x: exp(gamma_front(mpf(a), mpf(x))) / x * ((mpf(a) - 1) / x - 1))
        yield from one("dgammapdadx", DERIV, lambda a, x: exp(gamma_front(mpf(a), mpf(x))) / x * (log(mpf(x)) - psi(0, mpf(a))))
    with mp.workdps(90):
        h = mpf(10) ** -18
        few = [p for p in DERIV]

        def g(a, x):
            with mp.workdps(90 + int(x)):
                return gammainc(mpf(a), 0, mpf(x), regularized=True)
        yield from one("dgammapda", few, lambda a, x: (8 * (g(a + h, x) - g(a - h, x)) - g(a + 2 * h, x)
                                                       + g(a - 2 * h, x)) / (12 * h))
        yield from one("dgammapdada", few, lambda a, x: (16 * (g(a + h, x) + g(a - h, x)) - g(a + 2 * h, x)
                                                         - g(a - 2 * h, x) - 30 * g(a, x)) / (12 * h * h))
    yield from one("invgammap", [(a, p) for a in (0.01, 0.75, 3, 150, 1e5, 1e12, 1e17) for p in INVP
                                 if a > 0.1 or p > 0.4], lambda a, p: inv_gamma(a, p, False))
    yield from one("invgammaptail", [(a, p) for a in (0.01, 0.75, 3, 150, 1e12) for p in INVP if a > 0.1 or p < 0.5],
                   lambda a, p: inv_gamma(a, p, True))
    ab = [(0.5, 0.25), (0.75, 20), (2, 3), (150, 3), (1000, 4000), (1e10, 1e10)]
    yield from one("invibeta", [(a, b, p) for a, b in ab for p in INVP[1:]], lambda a, b, p: inv_beta(a, b, p, False))
    yield from one("invibetatail", [(a, b, p) for a, b in ab for p in INVP[1:]], lambda a, b, p: inv_beta(a, b, p, True))
    yield from one("invFtail", [(1, 1, 0.025), (3, 20, 0.05), (3, 20, 1e-100), (3, 20, 0.999), (1e6, 1e6, 0.3), (1e12, 7, 0.01)],
                   lambda a, b, p: inv_odds(mpf(a) / 2, mpf(b) / 2, p, True) * b / a)
    yield from one("invttail", [(d, p) for d in (1, 2.5, 7, 30, 1000, 1e8, 1e15) for p in (1e-200, 1e-10, 0.025, 0.499, 0.75)
                                if d > 2 or p > 1e-100], inv_t)
    yield from one("srangeprob", RANGE, lambda k, d, x: quick(over_scale, lambda s: range_prob(k, s * mpf(x)), d))
    yield from one("dunnettprob", RANGE, lambda k, d, x: quick(over_scale, lambda s: dunnett_prob(k, s * mpf(x)), d))


def main():
    print("// Made by tools/make-dist-tables.py: function, arguments, value.")
    seen = ""
    for name, args, value in rows():
        if name != seen:
            print(name, file=sys.stderr, flush=True)
            seen = name
        v = float(value)
        if value != 0 and (abs(v) < 1e-306 or abs(v) > 1e306):
            continue
        cells = ["%s" % float(a).hex() for a in args] + ["0"] * (4 - len(args))
        print("R(%s, %s, %s)" % (name, ", ".join(cells), v.hex()), flush=True)


main()
