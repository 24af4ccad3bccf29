#include "stats/variates.h"
#include "core/mem.h"
#include "core/missing.h"
#include "core/state.h"
#include "stats/dist.h"
#include "stats/normtab.h"
#include "stats/random.h"
#include <cmath>

// ---- what the vector forms share

// Fills with what draw gives; a broken value becomes misval. A break leaves the rest alone.
template <class F> static void fill(double *out, int64_t n, int64_t stride, F draw)
{
    for (int64_t i = 0; i < n; i++) {
        if (i % 500 == 499 && fault_poll())
            return;
        double z = draw();
        out[i * stride] = z_allexp(z) ? misval : z;
    }
}

static void fill_missing(double *out, int64_t n, int64_t stride, double z)
{
    for (int64_t i = 0; i < n; i++)
        out[i * stride] = z;
}

static bool near_one(double z) { return std::fabs(z - 1) <= 1024 * eps_ovdouble; }
static bool within(double z, double low, double high) { return z >= low && z <= high; }

// A uniform of 64 bits strictly between 0 and 1, for samplers that walk along probabilities.
static double fine_uniform()
{
    double high = iurnuni();
    return (high + (iurnuni() + 0.5) / 4294967296.0) / 4294967296.0;
}

void runiform_(double *out, int64_t n, int64_t stride)
{
    fill(out, n, stride, [] { return urnuni(); });
}

// ---- normal: rectangle-wedge-tail over 31 strips, with aliases (Knuth, The Art of Computer
// Programming 2, 3.4.1, algorithm M; Marsaglia, MacLaren and Bray 1964). Tables and their
// derivation: tools/normal_tables.py.

static constexpr double tail_at = 3.875;
static constexpr int tries = 100;

static double wedge(int32_t k)
{
    double d = ver_rng == 1 || ver_rng == 3 ? rwt_D0[k] : rwt_D1[k];
    for (int i = 0; i < tries; i++) {
        double a = urnuni(), b = urnuni();
        if (a > b) {
            double t = a;
            a = b;
            b = t;
        }
        double x = 0.125 * a + rwt_A[k];
        if (b <= d)
            return x;
        double edge = rwt_A[k + 1];
        if (b <= (std::exp((edge * edge - x * x) / 2) - 1) * rwt_E[k] + a)
            return x;
    }
    return misval;
}

static double tail()
{
    for (int i = 0; i < tries; i++) {
        double u = urnuni(), v = urnuni();
        double x = std::sqrt(tail_at * tail_at - 2 * std::log(v));
        if (u * x < tail_at)
            return x;
    }
    return misval;
}

static double standard_normal()
{
    bool negative;
    uint32_t j;
    if (ver_rng == 1) {
        uint32_t u = iurnuni();
        negative = u & 1;
        j = u >> 1 & 63;
    } else {
        iurnuni();
        negative = iurnuni() >> 31;
        j = iurnuni() >> 26;
    }
    double u = urnuni(), z;
    if (u >= rwt_P[j])
        z = u * rwt_Q[j] + rwt_S[j];
    else if (j < 32)
        z = u * rwt_B[j] + rwt_A[j];
    else if ((z = j < 63 ? wedge(int32_t(j) - 31) : tail()) >= misval)
        return z;
    return negative ? -z : z;
}

void rnormal_(double *out, int64_t n, int64_t stride, double m, double s)
{
    if (!(s < misval) || s < 0 || !(m < misval) || m < min_ovdouble)
        return fill_missing(out, n, stride, misval);
    if (s < smallest_ovdouble)
        return fill_missing(out, n, stride, 0);
    bool scaled = !near_one(s);
    fill(out, n, stride, [=] {
        double z = standard_normal();
        if (scaled && z < misval)
            z *= s;
        return m != 0 && z < misval ? z + m : z;
    });
}

// ---- gamma

// Shapes below 1: Best (1983), "A note on gamma variate generators with shape parameter less
// than unity".
static double gamma_small(double a)
{
    static double last = -1, t, c;
    if (a != last) {
        t = 0.07 + 0.75 * std::sqrt(1 - a);
        c = 1 + a * std::exp(-t) / t;
        last = a;
    }
    for (;;) {
        double p = c * urnuni(), v = urnuni();
        if (p <= 1) {
            double x = t * std::pow(p, 1 / a);
            if (v <= (2 - x) / (2 + x) || v <= std::exp(-x))
                return x;
        } else {
            double x = -std::log(t * (c - p) / a), y = x / t;
            if (v * ((1 - a) * y + a) <= 1 || v <= std::pow(y, a - 1))
                return x;
        }
        if (stopflag)
            return misval;
    }
}

// Shapes above 1: Marsaglia and Tsang (2000), "A simple method for generating gamma variables".
static double gamma_large(double a)
{
    static double last = -1, d, c;
    if (a != last) {
        d = a - 1.0 / 3;
        c = 1 / std::sqrt(9 * d);
        last = a;
    }
    for (;;) {
        double x = standard_normal(), v = 1 + c * x;
        if (v <= 0 || x >= misval)
            continue;
        v = v * v * v;
        double u = urnuni(), x2 = x * x;
        if (u < 1 - 0.0331 * x2 * x2 || std::log(u) < x2 / 2 + d * (1 - v + std::log(v)))
            return d * v;
        if (stopflag)
            return misval;
    }
}

static double standard_gamma(double a)
{
    if (near_one(a))
        return -std::log(urnuni());
    return a < 1 ? gamma_small(a) : gamma_large(a);
}

static constexpr double shape_low = 0.0001, shape_high = 1e8;

void rgamma_(double *out, int64_t n, int64_t stride, double a, double b)
{
    if (!within(a, shape_low, shape_high) || !(b >= smallest_ovdouble && b < misval))
        return fill_missing(out, n, stride, misval);
    bool scaled = !near_one(b);
    fill(out, n, stride, [=] {
        double z = standard_gamma(a);
        return scaled && z < misval ? z * b : z;
    });
}

// The logarithm of a gamma variate, which does not underflow for a small shape.
static double log_gamma_variate(double a)
{
    if (a >= 1)
        return std::log(standard_gamma(a));
    return std::log(gamma_large(a + 1)) + std::log(fine_uniform()) / a;
}

// A beta variate is the share that one of two gamma variates has in their sum.
void rbeta_(double *out, int64_t n, int64_t stride, double a, double b)
{
    if (!within(a, shape_low, shape_high) || !within(b, shape_low, shape_high))
        return fill_missing(out, n, stride, misval);
    fill(out, n, stride, [=] {
        double x = log_gamma_variate(a), y = log_gamma_variate(b);
        return 1 / (1 + std::exp(y - x));
    });
}

void rchi2_(double *out, int64_t n, int64_t stride, double df)
{
    if (!within(df, 2 * shape_low, 2 * shape_high))
        return fill_missing(out, n, stride, misval);
    fill(out, n, stride, [=] { return 2 * standard_gamma(df / 2); });
}

void rt_(double *out, int64_t n, int64_t stride, double df)
{
    if (!within(df, 2 * shape_low, 2 * shape_high))
        return fill_missing(out, n, stride, misval);
    fill(out, n, stride, [=] {
        double z = standard_normal();
        return z / std::sqrt(2 * standard_gamma(df / 2) / df);
    });
}

// ---- counts

// Walks up from 0 while the probability of what lies below is under u. ratio(k) leads from
// the probability of k - 1 to that of k.
template <class F> static double walk_up(double p0, double most, F ratio)
{
    double u = fine_uniform(), p = p0, k = 0;
    while (u > p && k < most) {
        u -= p;
        p *= ratio(++k);
        if (p < 1e-300)
            break;
    }
    return k;
}

// Means from 10: transformed rejection with squeeze (Hormann 1993, "The transformed rejection
// method for generating Poisson random variables", algorithm PTRS).
static double poisson_large(double m)
{
    double b = 0.931 + 2.53 * std::sqrt(m), a = -0.059 + 0.02483 * b;
    double inv = 1.1239 + 1.1328 / (b - 3.4), vr = 0.9277 - 3.6224 / (b - 2);
    for (;;) {
        double u = urnuni() - 0.5, v = urnuni(), us = 0.5 - std::fabs(u);
        double k = std::floor((2 * a / us + b) * u + m + 0.43);
        if (us >= 0.07 && v <= vr)
            return k;
        if (k < 0 || (us < 0.013 && v > us))
            continue;
        if (v * inv / (a / (us * us) + b) <= dist_poisson_term(k, m))
            return k;
        if (stopflag)
            return misval;
    }
}

static double poisson_one(double m)
{
    if (m >= 10)
        return poisson_large(m);
    return walk_up(std::exp(-m), 1e9, [m](double k) { return m / k; });
}

void rpoisson_(double *out, int64_t n, int64_t stride, double m)
{
    if (!within(m, 1e-6, 1e15))
        return fill_missing(out, n, stride, misval);
    fill(out, n, stride, [=] { return poisson_one(m); });
}

// Transformed rejection (Hormann 1993, "The generation of binomial random variates", BTRS),
// for p up to a half and means from 10.
static double binomial_large(double n, double p)
{
    double q = 1 - p, sd = std::sqrt(n * p * q), b = 1.15 + 2.53 * sd;
    double a = -0.0873 + 0.0248 * b + 0.01 * p, c = n * p + 0.5, vr = 0.92 - 4.2 / b;
    double alpha = (2.83 + 5.1 / b) * sd, mode = std::floor((n + 1) * p);
    double top = dist_binomial_term(mode, n, p, q);
    for (;;) {
        double u = urnuni() - 0.5, v = urnuni(), us = 0.5 - std::fabs(u);
        double k = std::floor((2 * a / us + b) * u + c);
        if (us >= 0.07 && v <= vr)
            return k;
        if (k < 0 || k > n)
            continue;
        if (v * alpha / (a / (us * us) + b) * top <= dist_binomial_term(k, n, p, q))
            return k;
        if (stopflag)
            return misval;
    }
}

void rbinomial_(double *out, int64_t n, int64_t stride, double trials, double p)
{
    trials = trials < misval ? std::floor(trials) : misval;
    if (!within(trials, 1, 1e11) || !within(p, 0, 1))
        return fill_missing(out, n, stride, misval);
    bool turned = p > 0.5;
    double small = turned ? 1 - p : p, odds = small / (1 - small);
    fill(out, n, stride, [=] {
        double k = small == 0 ? 0
                   : trials * small >= 10
                       ? binomial_large(trials, small)
                       : walk_up(std::exp(trials * std::log1p(-small)), trials,
                                 [=](double i) { return (trials - i + 1) / i * odds; });
        return turned && k < misval ? trials - k : k;
    });
}

// Walks to both sides of the mode, likely values first (Kachitvichyanukul and Schmeiser 1985
// call it inversion from the mode).
static double hypergeometric_one(double N, double K, double draws, double mode, double pmode)
{
    double low = draws + K - N > 0 ? draws + K - N : 0, high = K < draws ? K : draws;
    double u = fine_uniform(), up = mode, dn = mode, pu = pmode, pd = pmode;
    if (u <= pmode)
        return mode;
    u -= pmode;
    while (dn > low || up < high) {
        if (up < high) {
            pu *= (K - up) * (draws - up) / ((up + 1) * (N - K - draws + up + 1));
            up++;
            if (u <= pu)
                return up;
            u -= pu;
        }
        if (dn > low) {
            pd *= dn * (N - K - draws + dn) / ((K - dn + 1) * (draws - dn + 1));
            dn--;
            if (u <= pd)
                return dn;
            u -= pd;
        }
    }
    return mode;
}

void rhypergeometric_(double *out, int64_t n, int64_t stride, double N, double K, double draws)
{
    bool good = within(N, 2, 1e6) && within(K, 1, N - 1) && within(draws, 1, N - 1)
                && N == std::floor(N) && K == std::floor(K) && draws == std::floor(draws);
    if (!good)
        return fill_missing(out, n, stride, misval);
    static double last[3], mode, pmode;
    if (N != last[0] || K != last[1] || draws != last[2]) {
        mode = std::floor((draws + 1) * (K + 1) / (N + 2));
        pmode = hypergeometricp(N, K, draws, mode);
        last[0] = N;
        last[1] = K;
        last[2] = draws;
    }
    fill(out, n, stride, [=] { return hypergeometric_one(N, K, draws, mode, pmode); });
}

// Failures before the n-th success: a Poisson count whose mean is a gamma variate.
void rnbinomial_(double *out, int64_t n, int64_t stride, double size, double p)
{
    if (!within(size, shape_low, shape_high) || !(p > 0 && p <= 1))
        return fill_missing(out, n, stride, misval);
    double scale = (1 - p) / p;
    fill(out, n, stride, [=] {
        double m = standard_gamma(size) * scale;
        return m < 1e15 ? m > 0 ? poisson_one(m) : 0 : m < misval ? std::floor(m) : misval;
    });
}

// ---- one at a time

#define ONE(f, params, args)                                                                   \
    double f params                                                                            \
    {                                                                                          \
        double z = misval;                                                                     \
        f##_ args;                                                                             \
        return z;                                                                              \
    }
ONE(rnormal, (double m, double s), (&z, 1, 1, m, s))
ONE(rgamma, (double a, double b), (&z, 1, 1, a, b))
ONE(rbeta, (double a, double b), (&z, 1, 1, a, b))
ONE(rchi2, (double df), (&z, 1, 1, df))
ONE(rt, (double df), (&z, 1, 1, df))
ONE(rpoisson, (double m), (&z, 1, 1, m))
ONE(rbinomial, (double trials, double p), (&z, 1, 1, trials, p))
ONE(rhypergeometric, (double N, double K, double draws), (&z, 1, 1, N, K, draws))
ONE(rnbinomial, (double size, double p), (&z, 1, 1, size, p))
