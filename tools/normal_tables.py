#!/usr/bin/env python3
"""Tables of the normal variates, for src/stats/normtab.h.

Rectangle-wedge-tail construction (Marsaglia, MacLaren and Bray 1964; in the form with Walker's
aliases given by Knuth, The Art of Computer Programming 2, section 3.4.1, algorithm M), for 31
strips of width h = 1/8 and a tail beyond 31/8.

The half-normal density p(x) = sqrt(2/pi) exp(-x^2/2) is cut into 63 parts, numbered as j:

  1..31    rectangle k = j under the curve over [(k-1)h, kh], height p(kh)
  32..62   wedge k = j - 31 between that rectangle and the curve
  63       the tail

A uniform j of 0..63 picks a part with its probability through aliases: part j itself is taken
when u < P[j], the rectangle Y[j] otherwise. As u is then uniform on [0, P) or on [P, 1), it
also places the point in the rectangle:

  alias   x = S[j] + u Q[j]        own rectangle   x = A[j] + u B[j]

In a wedge, a pair a < b of uniforms stands for a point of a triangle that holds the wedge;
x = A[k] + h a is accepted when b <= a + E[k] (exp((A[k+1]^2 - x^2)/2) - 1), surely when b <= D[k].

  python3 tools/normal_tables.py > src/stats/normtab.h
"""
from mpmath import mp, mpf, sqrt, exp, pi, quad, findroot, erfc, floor, nstr

mp.dps = 40
H = mpf(1) / 8
N = 31


def p(x):
    return sqrt(2 / pi) * exp(-x * x / 2)


def parts():
    prob = [mpf(0)] * 64
    for k in range(1, N + 1):
        prob[k] = H * p(k * H)
        prob[k + N] = quad(p, [(k - 1) * H, k * H]) - prob[k]
    prob[63] = erfc(N * H / sqrt(2))
    assert abs(sum(prob) - 1) < mpf(10) ** -35
    return prob


def aliases(prob):
    """Walker's method: the smallest share is filled up from the largest, lowest number first."""
    share = [64 * q for q in prob]
    own = [mpf(1)] * 64
    other = list(range(64))
    left = set(range(64))
    while len(left) > 1:
        low = min(left, key=lambda i: (share[i], i))
        high = max(left, key=lambda i: (share[i], -i))
        if share[low] >= 1 - mpf(10) ** -30:
            break
        assert 1 <= high <= N, "only rectangles are alias of others"
        own[low], other[low] = share[low], high
        share[high] -= 1 - share[low]
        left.remove(low)
    return own, other


def wedge(k):
    """D and E of wedge k: over it the line b(1 - t), under it the parallel a - b t."""
    s = (k - 1) * H
    g = lambda t: p(s + H * t) - p(s + H)
    if k * H <= 1:  # the curve is concave here
        b = H * k * H * p(k * H)
        a = g(0)
    else:
        b = g(0)
        # the parallel that touches the curve
        t = findroot(lambda t: -(s + H * t) * H * p(s + H * t) + b, mpf(1) / 2)
        a = g(t) + b * t
    assert all(a - b * t <= g(t) + mpf(10) ** -30 and g(t) <= b * (1 - t) + mpf(10) ** -30
               for t in (mpf(i) / 64 for i in range(65)))
    return a / b, p(s + H) / b


def table(name, values):
    print("inline constexpr double %s[%d] = {" % (name, len(values)))
    line = "   "
    for v in values:
        text = " %r," % float(v)
        if len(line) + len(text) > 96:
            print(line)
            line = "   "
        line += text
    print(line)
    print("};")


def main():
    prob = parts()
    own, other = aliases(prob)
    S, Q, B = [mpf(0)] * 64, [mpf(0)] * 64, [mpf(0)] * 32
    A = [mpf(0)] + [(k - 1) * H for k in range(1, N + 2)] 
    for j in range(64):
        if own[j] < 1:
            Q[j] = H / (1 - own[j])
            S[j] = (other[j] - 1) * H - own[j] * Q[j]
        if 1 <= j <= N:
            B[j] = H / own[j]
    D, E = [mpf(0)] * 32, [mpf(0)] * 32
    for k in range(1, N + 1):
        D[k], E[k] = wedge(k)
    # A full share must win against every u below 1.
    own = [mpf(2) if q == 1 else q for q in own]
    own[0] = mpf(0)
    print("// stats/normtab.h - tables of the normal variates. Written by tools/normal_tables.py.")
    print("#pragma once")
    table("rwt_P", own)
    table("rwt_Q", Q)
    table("rwt_S", S)
    table("rwt_A", A)
    table("rwt_B", B)
    print("// Sure acceptance in a wedge: the sharp bound, and the same cut to three decimals.")
    table("rwt_D0", [d * (1 - mpf(2) ** -50) for d in D])
    table("rwt_D1", [floor(d * 1000) / 1000 for d in D])
    table("rwt_E", E)


main()
