// stats/distfam.cpp - the families that follow from the incomplete gamma and beta functions:
// chi-squared, F, t, binomial, Poisson, negative binomial, hypergeometric.
#include "core/mem.h"
#include "core/missing.h"
#include "stats/dist.h"
#include <cmath>
#include <initializer_list>

static constexpr double lowest_df = 2e-10, highest_df = 2e17, pow53 = 9007199254740992.0;

static bool good_df(double df) { return df >= lowest_df && df <= highest_df; }
static bool good_p(double p) { return p >= 0 && p <= 1; }

// ---- gamma and chi-squared

double gammaden(double a, double b, double g, double x)
{
    if (!(a > 0 && a < misval && b > 0 && b < misval && g < misval && x < misval))
        return misval;
    double z = (x - g) / b;
    if (z < 0 || (z == 0 && a > 1))
        return 0;
    if (z == 0)
        return a == 1 ? 1 / b : misval;
    return dist_poisson_term(a, z) * a / (z * b);
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
    return a * b / (a + b) * dist_binomial_term(a, a + b, x, 1 - x) / (x * (1 - x));
}

static bool f_tails(double df1, double df2, double f, tails *t)
{
    if (!good_df(df1) || !good_df(df2) || !(f < misval))
        return false;
    if (f <= 0) {
        *t = {0, 1};
        return true;
    }
    double n = df1 * f, sum = n + df2;
    return dist_beta(df1 / 2, df2 / 2, n / sum, df2 / sum, t);
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
    double sum = df1 * f + df2, a = df1 / 2, b = df2 / 2;
    return a * b / (a + b) * dist_binomial_term(a, a + b, df1 * f / sum, df2 / sum) / f;
}

double ttail2(double df, double t)
{
    if (!good_df(df) || !(t < misval))
        return misval;
    tails v;
    double sq = t * t, sum = df + sq;
    if (!std::isfinite(sum))
        return t < 0 ? 1 : 0;
    if (!dist_beta(df / 2, 0.5, df / sum, sq / sum, &v))
        return misval;
    return t > 0 ? v.lower / 2 : t == 0 ? 0.5 : 1 - v.lower / 2;
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
    double sum = df + t * t, a = df / 2, b = 0.5;
    double x = df / sum, y = t * t / sum;
    if (y < 1e-8)  // near the middle the term of the beta loses its small side
        return std::exp(std::lgamma(a + 0.5) - std::lgamma(a) - 0.5 * std::log(df * M_PI)
                        - (a + 0.5) * std::log1p(t * t / df));
    return a * b / (a + b) * dist_binomial_term(a, a + b, x, y) / std::fabs(t);
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
    return k < 0 ? 0 : gammaptail2(std::floor(k) + 1, m);
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
    return n / (n + k) * dist_binomial_term(n, n + k, p, 1 - p);
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
    double p = n / N, q = (N - n) / N;
    return dist_binomial_term(k, K, p, q) * dist_binomial_term(n - k, N - K, p, q)
           / dist_binomial_term(n, N, p, q);
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
