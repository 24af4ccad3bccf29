// stats/distinv.cpp - inverses of the incomplete gamma and beta functions.
//
//   starts     E. B. Wilson and M. M. Hilferty (1931) for gamma; Abramowitz and Stegun
//              26.5.22 for beta, 26.7.5 for t; the leading power where a parameter is small
//   steps      Newton on the logarithm of the tail over log x (over the log odds): the tail is
//              log-concave there, so that the steps come in from one side
#include "core/missing.h"
#include "stats/distcore.h"
#include "stats/normal.h"

static bool good_a(double a) { return a >= 1e-10 && a <= 1e17; }
static bool good_p(double p) { return p >= 0 && p <= 1; }

struct target {
    double a, b;  // b is 0 for gamma
    double p;     // the tail wanted, the smaller of the two
    bool upper;
};

// The tail at x, which for beta stands for the odds, and its derivative over log x.
static bool tail_at(const target *g, double x, double *tail, double *slope)
{
    tails v;
    if (g->b == 0) {
        if (!dist_gamma(g->a, x, &v))
            return false;
        *slope = double(std::exp(dist_gammafront(g->a, x)));
    } else {
        betapoint p = x <= 1 ? dist_betapoint(g->a, g->b, x / (1 + x))
                             : dist_betapoint(g->b, g->a, 1 / (1 + x));
        if (x > 1)
            p = dist_mirrored(&p);
        if (!dist_betatails(&p, &v))
            return false;
        *slope = double(std::exp(dist_betafront(&p)));
    }
    *tail = g->upper ? v.upper : v.lower;
    return true;
}

static constexpr double least_x = 1e-307, most_x = 1e308;

// Between two ends that lie far apart: their geometric mean.
static double middle(double low, double high)
{
    return high / low < 1.5 ? low + (high - low) / 2 : std::sqrt(low) * std::sqrt(high);
}

static bool solve(const target *g, double x, double *out)
{
    double low = least_x, high = most_x;
    x = x > low && x < high ? x : x >= high ? 1e300 : 1e-300;
    for (int i = 0; i < 300; i++) {
        double tail, slope;
        if (!tail_at(g, x, &tail, &slope))
            return false;
        if (tail == g->p)
            break;
        bool left = g->upper ? tail > g->p : tail < g->p;  // the root lies to the right
        (left ? low : high) = x;
        double step = 0, next = 0;
        if (tail > 1e-307 && slope > 0) {  // else the tail has underflown
            // log(tail/p) from the difference when near
            double near = (tail - g->p) / g->p;
            double ln = std::fabs(near) < 0.1 ? std::log1p(near) : std::log(tail / g->p);
            step = (g->upper ? ln : -ln) * (tail / slope);
            next = x + x * std::expm1(step);
        }
        if (step != 0 && std::fabs(step) < 1e-15) {
            x = next;
            break;
        }
        if (!(next > low && next < high))
            next = middle(low, high);
        if (next == x || high / low < 1 + 3e-16)
            break;
        x = next;
    }
    *out = x;
    return true;
}

// ---- gamma

static double gamma_start(const target *g)
{
    double a = g->a, z = ovinvnormal(g->p), c = 1 / (9 * a);
    z = g->upper ? -z : z;
    double root = 1 - c + z * std::sqrt(c);
    if (a > 0.3 && root > 0.1)
        return a * root * root * root;
    if (g->upper)
        return std::fmax(0.01, -std::log(g->p));
    return std::exp((std::log(g->p) + double(dist_lngamma1p(std::fmin(a, 0.5)))) / a
                    + (a > 0.5 ? std::log(a) : 0));
}

// p is the lower tail unless upper is set.
static double inv_gamma(double a, double p, bool upper)
{
    double x;
    if (!good_a(a) || !good_p(p))
        return misval;
    if (p == (upper ? 1 : 0))
        return 0;
    if (p == (upper ? 0 : 1))
        return misval;
    target g{a, 0, p, upper};
    if (p > 0.5)
        g = {a, 0, 1 - p, !upper};
    if (!solve(&g, gamma_start(&g), &x))
        return misval;
    return x <= least_x * 2 ? 0 : x;
}

double invgammap2(double a, double p) { return inv_gamma(a, p, false); }
double invgammaptail2(double a, double p) { return inv_gamma(a, p, true); }

// ---- beta

// Student's t from the normal, Abramowitz and Stegun 26.7.5; 0 where that is far off. p is
// both tails of t when outer, else what lies between them.
static double t_start(double df, double p, bool outer)
{
    double z = outer ? -ovinvnormal(p / 2) : ovinvnormal(0.5 + p / 2), sq = z * z;
    if (!(sq < 3 * df && df > 2))
        return 0;
    return z * (1 + (sq + 1 + ((5 * sq + 16) * sq + 3) / (24 * df)) / (4 * df));
}

// The odds to begin with.
static double beta_start(const target *g)
{
    double a = g->a, b = g->b;
    if (a == 0.5 || b == 0.5) {
        double df = 2 * (a == 0.5 ? b : a), t = t_start(df, g->p, g->upper == (a == 0.5));
        if (t > 0 && t < 1e100)
            return a == 0.5 ? t * t / df : df / (t * t);
    }
    if (a > 0.6 && b > 0.6) {
        double z = ovinvnormal(g->p), ra = 1 / (2 * a - 1), rb = 1 / (2 * b - 1);
        z = g->upper ? -z : z;
        double k = (z * z - 3) / 6, h = 2 / (ra + rb);
        double w = z * std::sqrt(std::fmax(h + k, 0)) / h + (rb - ra) * (k + 5 / 6.0 - 2 / (3 * h));
        if (std::fabs(w) < 300)
            return a / b * std::exp(2 * w);
    }
    // The leading power of the near end: p is x^a / (a B).
    double s = g->upper ? b : a, lnb = std::lgamma(a) + std::lgamma(b) - std::lgamma(a + b);
    double ln = (std::log(g->p) + std::log(s) + lnb) / s;
    ln = ln < -700 ? -700 : ln > -0.01 ? std::log(s / (a + b)) : ln;
    return g->upper ? std::exp(-ln) : std::exp(ln);
}

bool dist_invodds(double a, double b, double p, bool upper, double *odds)
{
    if (!good_a(a) || !good_a(b) || !good_p(p))
        return false;
    if (p == 0 || p == 1) {
        *odds = (p == 0) == upper ? HUGE_VAL : 0;
        return true;
    }
    target g{a, b, p, upper};
    if (p > 0.5)
        g = {a, b, 1 - p, !upper};
    return solve(&g, beta_start(&g), odds);
}

static double inv_beta(double a, double b, double p, bool upper)
{
    double w;
    if (!dist_invodds(a, b, p, upper, &w))
        return misval;
    return w <= least_x * 2 ? 0 : w <= 1 ? w / (1 + w) : 1 / (1 + 1 / w);
}

double invibeta2(double a, double b, double p) { return inv_beta(a, b, p, false); }
double invibetatail2(double a, double b, double p) { return inv_beta(a, b, p, true); }

static double inv_f(double df1, double df2, double p, bool upper)
{
    double w;
    if (!dist_invodds(df1 / 2, df2 / 2, p, upper, &w) || w >= most_x)
        return misval;
    return w <= least_x * 2 ? 0 : df2 / df1 * w;
}

double invfcumm2(double df1, double df2, double p) { return inv_f(df1, df2, p, false); }
double invftail2(double df1, double df2, double p) { return inv_f(df1, df2, p, true); }
