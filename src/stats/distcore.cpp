// stats/distcore.cpp - incomplete gamma and beta functions and their inverses.
//
//   terms      C. Loader, Fast and accurate computation of binomial probabilities (2000)
//   gamma      series and continued fraction, Abramowitz and Stegun 6.5.29 and 6.5.31; for
//              large parameters N. M. Temme, The asymptotic expansion of the incomplete gamma
//              functions, SIAM Journal on Mathematical Analysis 10 (1979)
//   beta       continued fraction of A. R. DiDonato and A. H. Morris, Algorithm 708, ACM
//              Transactions on Mathematical Software 18 (1992), run by Lentz's method
//   inverses   Newton steps on the logarithm of the smaller tail inside a bracket
#include "core/missing.h"
#include "stats/dist.h"
#include "stats/normal.h"
#include <cmath>

static constexpr double ln_sqrt_2pi = 0.918938533204672741780;

// ---- terms

// log(n!) less Stirling's approximation of it.
static double stirling_error(double n)
{
    if (n < 15)
        return std::lgamma(n + 1) - (n + 0.5) * std::log(n) + n - ln_sqrt_2pi;
    double s = 1 / (n * n);
    return (1 / 12.0 - s * (1 / 360.0 - s * (1 / 1260.0 - s * (1 / 1680.0 - s / 1188.0)))) / n;
}

// x log(x/m) + m - x without cancellation.
static double deviance(double x, double m)
{
    if (std::fabs(x - m) < 0.1 * (x + m)) {
        double v = (x - m) / (x + m), s = (x - m) * v, e = 2 * x * v;
        v *= v;
        for (int j = 1; j < 1000; j++) {
            e *= v;
            double next = s + e / (2 * j + 1);
            if (next == s)
                break;
            s = next;
        }
        return s;
    }
    return x * std::log(x / m) + m - x;
}

double dist_poisson_term(double x, double mean)
{
    if (mean == 0)
        return x == 0;
    if (x == 0)
        return std::exp(-mean);
    if (x < 1e-6)  // the error term is a difference of near equals there
        return std::exp(x * std::log(mean) - mean - std::lgamma(x + 1));
    return std::exp(-stirling_error(x) - deviance(x, mean) - ln_sqrt_2pi - 0.5 * std::log(x));
}

double dist_binomial_term(double x, double n, double p, double q)
{
    if (p == 0)
        return x == 0;
    if (q == 0)
        return x == n;
    double rest = n - x;
    if (x == 0)
        return std::exp(p < 0.1 ? n * std::log1p(-p) : n * std::log(q));
    if (rest <= 0)
        return rest == 0 ? std::exp(q < 0.1 ? n * std::log1p(-q) : n * std::log(p)) : 0;
    if (x < 1e-6 || rest < 1e-6)
        return std::exp(std::lgamma(n + 1) - std::lgamma(x + 1) - std::lgamma(rest + 1)
                        + x * std::log(p) + rest * std::log(q));
    double c = stirling_error(n) - stirling_error(x) - stirling_error(rest) - deviance(x, n * p)
               - deviance(rest, n * q);
    return std::exp(c - ln_sqrt_2pi - 0.5 * (std::log(x) + std::log1p(-x / n)));
}

// ---- incomplete gamma

static constexpr double lowest_a = 1e-10, highest_a = 1e17;
static constexpr int maxsteps = 100000;

// The uniform expansion, for a so large that two terms are all that doubles hold.
static void gamma_uniform(double a, double x, tails *out)
{
    double mu = (x - a) / a, dev = deviance(a, x) / a;  // half of eta squared
    double eta = std::sqrt(2 * dev) * (mu < 0 ? -1 : 1), c0, c1;
    if (std::fabs(mu) < 1e-3) {
        c0 = -1 / 3.0 + eta * (1 / 12.0 - eta * (2 / 135.0 - eta / 864.0));
        c1 = -1 / 540.0 - eta / 288.0;
    } else {
        c0 = 1 / mu - 1 / eta;
        c1 = 1 / (eta * eta * eta) - 1 / (mu * mu * mu) - 1 / (mu * mu) - 1 / (12 * mu);
    }
    double r = std::exp(-a * dev) / std::sqrt(double2p * a) * (c0 + c1 / a);
    double z = eta * std::sqrt(a);
    out->upper = ovnormal(-z) + r;
    out->lower = ovnormal(z) - r;
}

static bool gamma_series(double a, double x, tails *out)
{
    double term = 1, sum = 1;
    for (int i = 1; i < maxsteps; i++) {
        term *= x / (a + i);
        sum += term;
        if (term < sum * 1e-17) {
            out->lower = dist_poisson_term(a, x) * sum;
            out->upper = 1 - out->lower;
            return true;
        }
    }
    return false;
}

static bool gamma_fraction(double a, double x, tails *out)
{
    double b = x + 1 - a, c = 1e300, d = 1 / b, h = d;
    for (int i = 1; i < maxsteps; i++) {
        double an = -i * (i - a);
        b += 2;
        d = an * d + b;
        d = std::fabs(d) < 1e-300 ? 1e-300 : d;
        c = b + an / c;
        c = std::fabs(c) < 1e-300 ? 1e-300 : c;
        d = 1 / d;
        double step = d * c;
        h *= step;
        if (std::fabs(step - 1) < 1e-16) {
            out->upper = a * dist_poisson_term(a, x) * h;
            out->lower = 1 - out->upper;
            return true;
        }
    }
    return false;
}

// log gamma(1 + a) for small a, Abramowitz and Stegun 6.1.33.
static double lngamma1p(double a)
{
    static const double zeta_less_1[] = {
        0.644934066848226436, 0.202056903159594285, 0.0823232337111381915,
        0.0369277551433699263, 0.0173430619844491397, 0.00834927738192282684,
        0.00407735619794433938, 0.00200839282608221442, 0.000994575127818085337,
        0.000494188604119464559, 0.000246086553308048299, 0.000122713347578489147,
        0.0000612481350587048293, 0.0000305882363070204936, 0.0000152822594086518717,
        7.63719763789976227e-6, 3.81729326499983986e-6, 1.90821271655393893e-6,
        9.53962033872796113e-7, 4.76932986787806463e-7, 2.3845050272773299e-7,
        1.19219925965311073e-7, 5.96081890512594796e-8, 2.98035035146522802e-8,
        1.49015548283650412e-8, 7.45071178983542949e-9, 3.72533402478845705e-9,
        1.86265972351304901e-9};
    double sum = 0, power = -a;
    for (int k = 2; k < 30; k++) {
        power *= -a;
        sum += zeta_less_1[k - 2] * power / k;
    }
    return -std::log1p(a) + a * (1 - 0.57721566490153286061) + sum;
}

// Both tails for small a and x, where the upper one is far too small for a difference.
static void gamma_small(double a, double x, tails *out)
{
    double ln = a * std::log(x) - lngamma1p(a), term = 1, sum = 0;
    for (int n = 1; n < 60; n++) {
        term *= -x / n;
        sum -= term / (a + n);
    }
    double lead = std::exp(ln);
    out->upper = -std::expm1(ln) + lead * a * sum;
    out->lower = lead * (1 - a * sum);
}

bool dist_gamma(double a, double x, tails *out)
{
    if (x <= 0) {
        *out = {0, 1};
        return true;
    }
    if (a < 0.5 && x < 1.5) {
        gamma_small(a, x, out);
        return true;
    }
    if (a > 1e5 && std::fabs(x - a) < 0.3 * a) {
        gamma_uniform(a, x, out);
        return true;
    }
    if (x > a + 1 && x > 1e300) {
        *out = {1, 0};
        return true;
    }
    return x < a + 1 ? gamma_series(a, x, out) : gamma_fraction(a, x, out);
}

static bool good_a(double a) { return a >= lowest_a && a <= highest_a; }

double gammap2(double a, double x)
{
    tails t;
    return good_a(a) && x < misval && dist_gamma(a, x, &t) ? t.lower : misval;
}

double gammaptail2(double a, double x)
{
    tails t;
    return good_a(a) && x < misval && dist_gamma(a, x, &t) ? t.upper : misval;
}

// ---- incomplete beta

// The continued fraction for the lower tail, good when x is below a/(a+b).
static bool beta_fraction(double a, double b, double x, double y, double *out)
{
    double lambda = a - (a + b) * x;
    if (a > b)
        lambda = (a + b) * y - b;
    double c = 1 + lambda, c0 = b / a, c1 = 1 + 1 / a, yp1 = y + 1;
    double n = 0, p = 1, s = a + 1, an = 0, bn = 1, anp1 = 1, bnp1 = c / c1, r = c1 / c;
    for (int i = 0; i < maxsteps; i++) {
        n += 1;
        double t = n / a, w = n * (b - n) * x, e = a / s;
        double alpha = p * (p + c0) * e * e * (w * x);
        e = (t + 1) / (c1 + t + t);
        double beta = n + w / s + e * (c + n * yp1);
        p = t + 1;
        s += 2;
        t = alpha * an + beta * anp1;
        an = anp1;
        anp1 = t;
        t = alpha * bn + beta * bnp1;
        bn = bnp1;
        bnp1 = t;
        double r0 = r;
        r = anp1 / bnp1;
        if (std::fabs(r - r0) <= 1e-16 * r) {
            // The factor x^a y^b / B(a,b), over a fraction scaled by a.
            *out = r * (a * b / (a + b)) * dist_binomial_term(a, a + b, x, y);
            return true;
        }
        an /= bnp1;
        bn /= bnp1;
        anp1 = r;
        bnp1 = 1;
    }
    return false;
}

// Lower tail by powers of x, for small b*x.
static double beta_series(double a, double b, double x, double y)
{
    double sum = 0, c = 1, term;
    for (int n = 1; n < maxsteps; n++) {
        c *= (n - b) / n * x;
        term = c / (a + n);
        sum += term;
        if (std::fabs(term) <= 1e-17 * std::fabs(1 / a + sum))
            break;
    }
    // x^a / B(a,b) = y^-b times the factor of the fraction
    double factor = a * b / (a + b) * dist_binomial_term(a, a + b, x, y) * std::exp(-b * std::log(y));
    return factor * (1 / a + sum);
}

bool dist_beta(double a, double b, double x, double y, tails *out)
{
    if (x <= 0) {
        *out = {0, 1};
        return true;
    }
    if (y <= 0) {
        *out = {1, 0};
        return true;
    }
    bool swap = x > a / (a + b);
    if (swap) {
        double t = a;
        a = b;
        b = t;
        t = x;
        x = y;
        y = t;
    }
    double lower;
    if ((b * x <= 1 && x <= 0.95) || a < 1 || b < 1)
        lower = beta_series(a, b, x, y);
    else if (!beta_fraction(a, b, x, y, &lower))
        return false;
    lower = lower > 1 ? 1 : lower;
    *out = swap ? tails{1 - lower, lower} : tails{lower, 1 - lower};
    return std::fabs(lower) <= 1;
}

static bool good_ab(double a, double b) { return good_a(a) && good_a(b); }

double ibeta2(double a, double b, double x)
{
    tails t;
    return good_ab(a, b) && x < misval && dist_beta(a, b, x, 1 - x, &t) ? t.lower : misval;
}

double ibetatail2(double a, double b, double x)
{
    tails t;
    return good_ab(a, b) && x < misval && dist_beta(a, b, x, 1 - x, &t) ? t.upper : misval;
}

// ---- inverses

struct target {
    double a, b;      // b is 0 for gamma
    double p;         // the tail wanted
    bool upper;       // which one
};

// The tail at t and its derivative over t, where x = exp(t), or t = log(x/y) for beta.
static bool tail_at(const target *g, double t, double *tail, double *slope)
{
    tails v;
    if (g->b == 0) {
        double x = std::exp(t);
        if (!dist_gamma(g->a, x, &v))
            return false;
        *slope = g->a * dist_poisson_term(g->a, x);
    } else {
        double x = 1 / (1 + std::exp(-t)), y = 1 / (1 + std::exp(t));
        if (!dist_beta(g->a, g->b, x, y, &v))
            return false;
        *slope = g->a * g->b / (g->a + g->b) * dist_binomial_term(g->a, g->a + g->b, x, y);
    }
    *tail = g->upper ? v.upper : v.lower;
    if (g->upper)
        *slope = -*slope;
    return true;
}

// Solves for t: Newton on the logarithm of the tail, halving the bracket when that fails.
static bool solve(const target *g, double t, double *out)
{
    double low = -745, high = 709, lnp = std::log(g->p);
    t = t > low && t < high ? t : 0;
    for (int i = 0; i < 400; i++) {
        double tail, slope;
        if (!tail_at(g, t, &tail, &slope))
            return false;
        bool left = g->upper ? tail > g->p : tail < g->p;  // the root lies to the right
        (left ? low : high) = t;
        bool steps = tail > 0 && slope != 0;  // else the tail has underflown
        double next = steps ? t - (std::log(tail) - lnp) * tail / slope : t + 1;
        double least = 2e-16 * (std::fabs(t) + 1e-3);
        if (tail == g->p || std::fabs(next - t) <= least || high - low <= least)
            break;
        t = steps && next > low && next < high ? next : (low + high) / 2;
    }
    *out = t;
    return true;
}

// Lower p and upper q, of which the smaller is aimed at; x and y of the solution.
static bool invert(double a, double b, double p, double q, double *x, double *y)
{
    target g{a, b, p <= q ? p : q, p > q};
    double start = b == 0 ? std::log(a) : std::log(a) - std::log(b), t;
    if (!solve(&g, start, &t))
        return false;
    *x = b == 0 ? std::exp(t) : 1 / (1 + std::exp(-t));
    *y = b == 0 ? 0 : 1 / (1 + std::exp(t));
    return true;
}

static bool good_p(double p) { return p >= 0 && p <= 1; }

// p is the lower tail unless upper is set.
static double inv_gamma(double a, double p, bool upper)
{
    double x, y, q = 1 - p;
    if (!good_a(a) || !good_p(p))
        return misval;
    if (p == (upper ? 1 : 0))
        return 0;
    if (p == (upper ? 0 : 1))
        return misval;
    return invert(a, 0, upper ? q : p, upper ? p : q, &x, &y) ? x : misval;
}

double invgammap2(double a, double p) { return inv_gamma(a, p, false); }
double invgammaptail2(double a, double p) { return inv_gamma(a, p, true); }

// The odds x/y of the solution too, for F.
static bool inv_beta(double a, double b, double p, bool upper, double *x, double *y)
{
    if (!good_ab(a, b) || !good_p(p))
        return false;
    if (p == 0 || p == 1) {
        *x = (p == 0) == upper;
        *y = 1 - *x;
        return true;
    }
    return invert(a, b, upper ? 1 - p : p, upper ? p : 1 - p, x, y);
}

double invibeta2(double a, double b, double p)
{
    double x, y;
    return inv_beta(a, b, p, false, &x, &y) ? x : misval;
}

double invibetatail2(double a, double b, double p)
{
    double x, y;
    return inv_beta(a, b, p, true, &x, &y) ? x : misval;
}

static double inv_f(double df1, double df2, double p, bool upper)
{
    double x, y;
    if (!inv_beta(df1 / 2, df2 / 2, p, upper, &x, &y) || y == 0)
        return misval;
    return df2 / df1 * (x / y);
}

double invfcumm2(double df1, double df2, double p) { return inv_f(df1, df2, p, false); }
double invftail2(double df1, double df2, double p) { return inv_f(df1, df2, p, true); }
