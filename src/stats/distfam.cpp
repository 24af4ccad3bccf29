// stats/distfam.cpp - the families that follow from the incomplete gamma and beta functions:
// chi-squared, F, t, binomial, Poisson, negative binomial, hypergeometric.
#include "core/mem.h"
#include "core/missing.h"
#include "stats/distcore.h"
#include <initializer_list>

static constexpr double lowest_df = 2e-10, highest_df = 2e17, pow53 = 9007199254740992.0;

static bool good_df(double df) { return df >= lowest_df && df <= highest_df; }
static bool good_p(double p) { return p >= 0 && p <= 1; }

// ---- gamma and chi-squared

double gammaden(double a, double b, double g, double x)
{
    if (!(a > 0 && a < misval && b > 0 && b < misval && g < misval && x < misval))
        return misval;
    wide over = static_cast<wide>(x) - g;
    double z = double(over / b);
    if (z < 0 || (z == 0 && a > 1))
        return 0;
    if (z == 0)
        return a == 1 ? 1 / b : misval;
    return double(std::exp(dist_gammafront(a, z)) / over);
}

double chi2cumm2(double df, double x)
{
    return x < 0 && df < misval ? 0 : x < misval && df < misval ? gammap2(df / 2, x / 2) : misval;
}

double chi2tail2(double df, double x)
{
    return x < 0 && df < misval ? 1 : x < misval && df < misval ? gammaptail2(df / 2, x / 2)
                                                                : misval;
}

static double twice(double z) { return z >= misval ? misval : 2 * z; }
double invchi2cumm2(double df, double p)
{
    return df < misval ? twice(invgammap2(df / 2, p)) : misval;
}
double invchi2tail2(double df, double p)
{
    return df < misval ? twice(invgammaptail2(df / 2, p)) : misval;
}

// ---- beta, F, t

double betaden(double a, double b, double x)
{
    if (!(a > 0 && a < misval && b > 0 && b < misval && x < misval))
        return misval;
    if (x <= 0 || x >= 1)
        return 0;
    betapoint p = dist_betapoint(a, b, x);
    return double(std::exp(dist_betafront(&p)) / (p.x * p.y));
}

// Where f lies, above 0; the distance from the mean comes straight from f.
static betapoint f_point(double df1, double df2, double f)
{
    wide n = static_cast<wide>(df1) * f, sum = n + df2;
    return {df1 / 2, df2 / 2, n / sum, df2 / sum, df1 / sum * df2 * (1 - static_cast<wide>(f)) / 2};
}

static bool f_tails(double df1, double df2, double f, tails *t)
{
    if (!good_df(df1) || !good_df(df2) || !(f < misval))
        return false;
    if (f <= 0) {
        *t = {0, 1};
        return true;
    }
    betapoint p = f_point(df1, df2, f);
    return dist_betatails(&p, t);
}

double fcumm2(double df1, double df2, double f)
{
    tails t;
    return f_tails(df1, df2, f, &t) ? t.lower : misval;
}

double ftail2(double df1, double df2, double f)
{
    tails t;
    return f_tails(df1, df2, f, &t) ? t.upper : misval;
}

double fden(double df1, double df2, double f)
{
    if (!good_df(df1) || !good_df(df2) || !(f < misval))
        return misval;
    if (f <= 0)
        return 0;
    betapoint p = f_point(df1, df2, f);
    return double(std::exp(dist_betafront(&p)) / f);
}

static betapoint t_point(double df, double t)
{
    wide sq = static_cast<wide>(t) * t, sum = df + sq;
    return {df / 2, 0.5, df / sum, sq / sum, df / sum * (sq - 1) / 2};
}

double ttail2(double df, double t)
{
    if (!good_df(df) || !(t < misval))
        return misval;
    if (t == 0)
        return 0.5;
    tails v;
    betapoint p = t_point(df, t);
    if (!dist_betatails(&p, &v))
        return misval;
    return t > 0 ? v.lower / 2 : 1 - v.lower / 2;
}

double invttail2(double df, double p)
{
    if (!good_df(df) || !(p > 0 && p < 1))
        return misval;
    bool low = p < 0.5;
    double f = invftail2(1, df, 2 * (low ? p : 1 - p));
    return f >= misval ? misval : low ? std::sqrt(f) : -std::sqrt(f);
}

double tden(double df, double t)
{
    if (!good_df(df) || !(t < misval))
        return misval;
    bool middle = std::fabs(t) < 1e-3;  // there from the density at 1
    betapoint p = t_point(df, middle ? 1 : t);
    wide ln = dist_betafront(&p);
    if (!middle)
        return double(std::exp(ln) / std::fabs(t));
    wide v = df, sq = static_cast<wide>(t) * t;
    return double(std::exp(ln - (v + 1) / 2 * (std::log1p(sq / v) - std::log1p(1 / v))));
}

double tprob(double df, double t)
{
    if (!(t < misval))
        return misval;
    double p = ttail2(df, std::fabs(t));
    return p >= misval ? misval : 2 * p;
}

double invt(double df, double p)
{
    return p >= 0 && p < 1 ? invttail2(df, (1 - p) / 2) : misval;
}

// ---- binomial

// Whole n at least 1 and whole k from 0 to n, cut downward.
static bool good_nk(double *n, double *k)
{
    *n = std::floor(*n);
    *k = std::floor(*k);
    return *n >= 1 && *n < pow53 && *k >= 0 && *k <= *n;
}

double binomial2(double n, double k, double p)
{
    if (!(n < misval && k < misval) || !good_p(p))
        return misval;
    if (k < 0)
        return 0;
    if (std::floor(k) >= std::floor(n) && n >= 1)
        return 1;
    tails t;
    if (!good_nk(&n, &k) || !dist_beta(k + 1, n - k, p, 1 - p, &t))
        return misval;
    return t.upper;
}

double binomialtail2(double n, double k, double p)
{
    if (!(n < misval && k < misval) || !good_p(p))
        return misval;
    if (k <= 0 && n >= 1)
        return 1;
    if (std::floor(k) > std::floor(n) && n >= 1)
        return 0;
    tails t;
    if (!good_nk(&n, &k) || !dist_beta(k, n - k + 1, p, 1 - p, &t))
        return misval;
    return k == 0 ? 1 : t.lower;
}

double binomialp(double n, double k, double p)
{
    if (!(n < misval && k < misval) || !good_p(p) || !good_nk(&n, &k))
        return misval;
    return dist_binomial_term(k, n, p, 1 - p);
}

double invbinomial2(double n, double k, double q)
{
    if (!(n < misval && k < misval) || !(q > 0 && q < 1) || !good_nk(&n, &k) || k == n)
        return misval;
    return invibetatail2(k + 1, n - k, q);
}

double invbinomialtail2(double n, double k, double q)
{
    if (!(n < misval && k < misval) || !(q > 0 && q < 1) || !good_nk(&n, &k) || k == 0)
        return misval;
    return invibeta2(k, n - k + 1, q);
}

// ---- Poisson

static bool good_mean(double m) { return m >= 1e-10 && m < pow53; }

double poisson2(double m, double k)
{
    if (!good_mean(m) || !(k < misval))
        return misval;
    if (k < 0)
        return 0;
    k = std::floor(k);
    if (k < pow53)
        return gammaptail2(k + 1, m);
    double z = gammaptail2(k, m);  // k + 1 is no double any more
    return z >= misval ? misval : std::fmin(1, z + dist_poisson_term(k, m));
}

double poissontail2(double m, double k)
{
    if (!good_mean(m) || !(k < misval))
        return misval;
    k = std::floor(k);
    return k <= 0 ? 1 : gammap2(k, m);
}

double poissonp(double m, double k)
{
    if (!good_mean(m) || !(k < misval))
        return misval;
    k = std::floor(k);
    return k < 0 ? 0 : dist_poisson_term(k, m);
}

double invpoisson(double k, double q)
{
    return k >= 0 && k < misval && q > 0 && q < 1 ? invgammaptail2(std::floor(k) + 1, q) : misval;
}

double invpoissontail(double k, double q)
{
    return k >= 1 && k < misval && q > 0 && q < 1 ? invgammap2(std::floor(k), q) : misval;
}

// ---- negative binomial: failures before success n

static bool good_nb(double n, double k, double p)
{
    return n >= 1e-10 && n <= 1e17 && k < misval && p >= 0 && p <= 1;
}

double nbinomial(double n, double k, double p)
{
    if (!good_nb(n, k, p))
        return misval;
    return k < 0 ? 0 : ibeta2(n, std::floor(k) + 1, p);
}

double nbinomialtail(double n, double k, double p)
{
    if (!good_nb(n, k, p))
        return misval;
    k = std::floor(k);
    return k <= 0 ? 1 : ibetatail2(n, k, p);
}

double nbinomialp(double n, double k, double p)
{
    if (!good_nb(n, k, p))
        return misval;
    k = std::floor(k);
    if (k < 0)
        return 0;
    if (k == 0 || p == 0 || p == 1)
        return p == 0 || (p == 1 && k > 0) ? 0 : double(std::exp(n * std::log(static_cast<wide>(p))));
    betapoint at = dist_betapoint(n, k, p);
    return double(std::exp(dist_betafront(&at)) / k);
}

double invnbinomial(double n, double k, double q)
{
    return good_nb(n, k, q) && k >= 0 && q > 0 && q < 1 ? invibeta2(n, std::floor(k) + 1, q)
                                                        : misval;
}

double invnbinomialtail(double n, double k, double q)
{
    return good_nb(n, k, q) && k >= 1 && q > 0 && q < 1 ? invibetatail2(n, std::floor(k), q)
                                                        : misval;
}

// ---- hypergeometric: K marked among N, n drawn

static bool good_hyper(double *N, double *K, double *n, double *k)
{
    for (double *z : {N, K, n, k}) {
        if (!(*z < misval))
            return false;
        *z = std::floor(*z);
    }
    return *N >= 1 && *N < 1e15 && *K >= 0 && *K <= *N && *n >= 0 && *n <= *N;
}

double hypergeometricp(double N, double K, double n, double k)
{
    if (!good_hyper(&N, &K, &n, &k))
        return misval;
    if (k < 0 || k > K || k > n || n - k > N - K)
        return 0;
    // Four terms about their means, which all lie at the same distance.
    wide mean = static_cast<wide>(n) * K / N, delta = dist_cross(K, n, k, N) / N;
    wide mean2 = n - mean, rest = K - mean, rest2 = N - n - rest;
    double k2 = n - k, r = K - k, r2 = N - K - k2;
    wide e = dist_lnfac_rest(K) + dist_lnfac_rest(N - K) + dist_lnfac_rest(n)
             + dist_lnfac_rest(N - n) - dist_lnfac_rest(N) - dist_lnfac_rest(k)
             - dist_lnfac_rest(k2) - dist_lnfac_rest(r) - dist_lnfac_rest(r2)
             - dist_deviance(k, mean, delta) - dist_deviance(k2, mean2, -delta)
             - dist_deviance(r, rest, -delta) - dist_deviance(r2, rest2, delta);
    return double(std::exp(e));
}

double hypergeometric(double N, double K, double n, double k)
{
    if (!good_hyper(&N, &K, &n, &k))
        return misval;
    double low = n - (N - K) > 0 ? n - (N - K) : 0, high = K < n ? K : n;
    if (k < low)
        return 0;
    if (k >= high)
        return 1;
    // The terms of the nearer tail, which shrink from the first one on.
    bool upper = k > n * K / N;
    double j = upper ? k + 1 : k, term = hypergeometricp(N, K, n, j), sum = 0;
    while (j >= low && j <= high && term > sum * 1e-18 && term > 0) {
        sum += term;
        if ((int64_t(j) & 1023) == 0 && fault_poll())
            return misval;
        if (upper) {
            term *= (K - j) * (n - j) / ((j + 1) * (N - K - n + j + 1));
            j++;
        } else {
            term *= j * (N - K - n + j) / ((K - j + 1) * (n - j + 1));
            j--;
        }
    }
    sum = sum > 1 ? 1 : sum;
    return upper ? 1 - sum : sum;
}
