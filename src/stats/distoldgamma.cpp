// stats/distoldgamma.cpp - the first generation: incomplete gamma function, its derivatives
// and what follows from it.
//
//   function and derivatives  R. J. Moore, Algorithm AS 187, Derivatives of the incomplete
//                             gamma integral, Applied Statistics 31 (1982)
//   large parameters          E. B. Wilson and M. M. Hilferty, The distribution of
//                             chi-square, Proc. Nat. Acad. Sci. 17 (1931)
#include "core/mem.h"
#include "core/missing.h"
#include "stats/distold.h"
#include "stats/normal.h"
#include <cmath>

static constexpr int maxterms = 1500;
static constexpr double close_enough = 1e-16, too_big = 1e30;

// What one pass yields: the function and its complement, and on demand the derivatives.
template <class T> struct as187 {
    T lower, upper;
    T lnlead;  // log of the density, which leads every term
    T da, dada;
};

// Digamma and trigamma by recurrence to 25 and their asymptotic series (Abramowitz and
// Stegun 6.3.18, 6.4.12).
static void psi_pair(long double a, long double *psi, long double *psi1)
{
    long double add = 0, add1 = 0;
    for (; a < 25; a += 1) {
        add -= 1 / a;
        add1 += 1 / (a * a);
    }
    static const long double b[] = {1 / 6.0L, -1 / 30.0L, 1 / 42.0L, -1 / 30.0L, 5 / 66.0L,
                                    -691 / 2730.0L, 7 / 6.0L};
    long double w = 1 / (a * a), power = w, s = 0, s1 = 0;
    for (int i = 0; i < 7; i++, power *= w) {
        s += b[i] / (2 * (i + 1)) * power;
        s1 += b[i] * power;
    }
    *psi = std::log(a) - 1 / (2 * a) - s + add;
    *psi1 = 1 / a + w / 2 + s1 / a + add1;
}

// The factor exp(a log x - x) / gamma(a), times x over a where the series leads with it.
template <class T> static T front(T a, T x, T lnlead, bool low)
{
    if (low && a < T(0.0001))
        return std::exp(a * std::log(x)) * std::exp(-x) / std::exp(std::lgamma(a + 1));
    return std::exp(lnlead) * (low ? x / a : x);
}

// Lower tail in rising powers of x; each term carries its derivatives over a.
template <class T, bool derive> static bool series(T a, T x, T f, as187<T> *out)
{
    T c = 1, s = 1, cp = 0, cpp = 0, sp = 0, spp = 0, n = a;
    for (int i = 0;; i++) {
        n += 1;
        if constexpr (derive) {
            T ratio = cp / c;
            cp = ratio - 1 / n;
            cpp = cpp / c - ratio * ratio + 1 / (n * n);
        }
        c *= x / n;
        s += c;
        if constexpr (derive) {
            cp *= c;
            cpp = cpp * c + cp * cp / c;
            sp += cp;
            spp += cpp;
        }
        if (c <= T(close_enough) * s
            && (!derive || std::fabs(cpp) <= T(close_enough) * std::fabs(spp)))
            break;
        if (i >= maxterms)
            return false;
    }
    out->lower = s * f;
    out->upper = 1 - out->lower;
    if constexpr (derive) {
        long double psi, psi1;
        psi_pair(a + 1, &psi, &psi1);
        T d = std::log(x) - psi, fp = f * d, fpp = f * (d * d - psi1);
        out->da = s * fp + f * sp;
        out->dada = s * fpp + 2 * fp * sp + f * spp;
    }
    return true;
}

// Upper tail by the continued fraction, forward; rows 0 to 5 are the last three numerators
// and denominators in turn, with their derivatives over a.
template <class T, bool derive> static bool fraction(T a, T x, T f, as187<T> *out)
{
    T k = a - 1, b = x + 1 - k, term = 0;
    T p[6] = {1, x, x + 1, x * b}, d[6] = {0, 0, 0, -x}, dd[6] = {};
    T s0 = p[2] / p[3], s, sp = 0, spp = 0;
    for (;;) {
        k -= 1;
        b += 2;
        term += 1;
        T an = k * term;
        for (int i = 0; i < 2; i++) {
            p[4 + i] = b * p[2 + i] + an * p[i];
            if constexpr (derive) {
                d[4 + i] = b * d[2 + i] - p[2 + i] + an * d[i] + p[i] * term;
                dd[4 + i] = b * dd[2 + i] + an * dd[i] + 2 * (term * d[i] - d[2 + i]);
            }
        }
        s = p[4] / p[5];
        T was = spp;
        if constexpr (derive) {  // the derivatives settle later than the value
            sp = (d[4] - s * d[5]) / p[5];
            spp = (dd[4] - s * dd[5] - 2 * sp * d[5]) / p[5];
        }
        if (p[5] != 0 && std::fabs(s - s0) <= T(close_enough) * std::fabs(s)
            && (!derive || std::fabs(spp - was) <= T(close_enough) * std::fabs(spp)))
            break;
        if (term >= maxterms || !std::isfinite(s))
            return false;
        s0 = s;
        T scale = std::fabs(p[4]) > T(too_big) ? 1 / T(too_big) : T(1);
        for (int i = 0; i < 4; i++) {
            p[i] = p[i + 2] * scale;
            d[i] = d[i + 2] * scale;
            dd[i] = dd[i + 2] * scale;
        }
    }
    out->upper = f * s;
    out->lower = 1 - out->upper;
    if constexpr (derive) {
        long double psi, psi1;
        psi_pair(a, &psi, &psi1);
        T e = std::log(x) - psi, fp = f * e, fpp = f * (e * e - psi1);
        out->da = -f * sp - s * fp;
        out->dada = -f * spp - 2 * sp * fp - s * fpp;
    }
    return true;
}

// a and x above 0. False: the terms ran out, or the parameters are too large for them.
template <class T, bool derive> static bool direct(double a, double x, as187<T> *out)
{
    if (a > 1e13 && x > 1e13)
        return false;
    T lngamma = std::lgamma(T(a));
    if (!std::isfinite(lngamma) || lngamma >= T(misval))
        return false;
    out->lnlead = (T(a) - 1) * std::log(T(x)) - lngamma - T(x);
    bool low = x < a + 1 || x < 1;
    T f = front(T(a), T(x), out->lnlead, low);
    return low ? series<T, derive>(a, x, f, out) : fraction<T, derive>(a, x, f, out);
}

// Both tails. A lead so near 1 that its digits are gone spoils the value.
static bool gamma_old(double a, double x, double *lower, double *upper)
{
    as187<double> v;
    if (direct<double, false>(a, x, &v)) {
        double d = std::fabs(v.lnlead);
        if (!(2 * d / (a + x + 2) < 1e-13 && d > 1e-13)) {
            *lower = v.lower;
            *upper = v.upper;
            return true;
        }
    }
    if (!(a > 1000 && x > 1000))
        return false;
    double z = 3 * std::sqrt(a) * (std::pow(x / a, 1 / 3.0) - (1 - 1 / (9 * a)));
    *lower = ovnormal(z);
    *upper = ovnormal(-z);
    return true;
}

static bool good(double a, double x) { return a < misval && x < misval && a > 0; }

double gammap(double a, double x)
{
    double lower, upper;
    if (!good(a, x))
        return misval;
    return x <= 0 ? 0 : gamma_old(a, x, &lower, &upper) ? lower : misval;
}

static double gammaptail(double a, double x)
{
    double lower, upper;
    if (!good(a, x))
        return misval;
    return x <= 0 ? 1 : gamma_old(a, x, &lower, &upper) ? upper : misval;
}

// ---- derivatives

double dgammapda(double a, double x)
{
    as187<long double> v;
    if (!good(a, x))
        return misval;
    return x <= 0 ? 0 : direct<long double, true>(a, x, &v) ? double(v.da) : misval;
}

double dgammapdada(double a, double x)
{
    as187<long double> v;
    if (!good(a, x))
        return misval;
    return x <= 0 ? 0 : direct<long double, true>(a, x, &v) ? double(v.dada) : misval;
}

// The density and its derivatives need no terms, but are had where the function is.
static bool density(double a, double x, long double *f)
{
    as187<long double> v;
    if (!direct<long double, false>(a, x, &v))
        return false;
    *f = std::exp(v.lnlead);
    return true;
}

double dgammapdx(double a, double x)
{
    long double f;
    if (!good(a, x))
        return misval;
    return x <= 0 ? 0 : density(a, x, &f) ? double(f) : misval;
}

double dgammapdxdx(double a, double x)
{
    long double f;
    if (!good(a, x))
        return misval;
    return x <= 0 ? 0 : density(a, x, &f) ? double(f * ((a - 1.0L - x) / x)) : misval;
}

double dgammapdadx(double a, double x)
{
    long double f, psi, psi1;
    if (!good(a, x))
        return misval;
    if (x <= 0)
        return 0;
    if (!density(a, x, &f))
        return misval;
    psi_pair(a, &psi, &psi1);
    return double(f * (std::log(static_cast<long double>(x)) - psi));
}

// ---- inverses

// Where the tail meets p: doubled or halved from 500 into a bracket, which is then halved.
static double search(double (*tail)(double, double), double a, double p, bool rising)
{
    double x = 500, low = 0, high = 0;
    for (int i = 0; i < 100 && (low == 0 || high == 0); i++) {
        double z = tail(a, x);
        if (z >= misval || fault_poll())
            return misval;
        if (rising ? z < p : z > p) {
            low = x;
            x = high == 0 ? x * 2 : x;
        } else {
            high = x;
            x = low == 0 ? x / 2 : x;
        }
    }
    if (low == 0 || high == 0)
        return x;
    for (int i = 0; i < 60 && high - low > 1e-7; i++) {
        x = (low + high) / 2;
        double z = tail(a, x);
        if (z >= misval || fault_poll())
            return misval;
        ((rising ? z < p : z > p) ? low : high) = x;
    }
    return (low + high) / 2;
}

double invgammap(double a, double p)
{
    if (!good(a, p) || p < 0 || p >= 1)
        return misval;
    return p == 0 ? 0 : search(gammap, a, p, true);
}

static double invgammaptail(double a, double p)
{
    if (!good(a, p) || p <= 0 || p > 1)
        return misval;
    return p == 1 ? 0 : search(gammaptail, a, p, false);
}

// ---- chi-squared

static double twice(double z) { return z >= misval ? misval : 2 * z; }

double chi2cumm(double df, double x)
{
    return df < misval && x < misval ? gammap(df / 2, x / 2) : misval;
}

double chi2tail(double df, double x)
{
    return df < misval && x < misval ? gammaptail(df / 2, x / 2) : misval;
}

double invchi2cumm(double df, double p)
{
    return df < misval ? twice(invgammap(df / 2, p)) : misval;
}

double invchi2tail(double df, double p)
{
    return df < misval ? twice(invgammaptail(df / 2, p)) : misval;
}
