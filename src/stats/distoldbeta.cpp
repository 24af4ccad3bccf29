// stats/distoldbeta.cpp - the first generation: incomplete beta function and what follows from
// it, and the inverses of the noncentral families.
//
//   series and fraction  Abramowitz and Stegun 26.5.4 and 26.5.8
//   mixtures             Poisson sums, Abramowitz and Stegun 26.4.25 and 26.6.20
#include "core/mem.h"
#include "core/missing.h"
#include "stats/distold.h"
#include <cmath>

static constexpr double maxlog = 709.782712893384, minlog = -708.3964185322641,
                        halfulp = 1.1102230246251565e-16;
static constexpr int maxsteps = 1500;

// x^a y^b / B(a,b): directly while every part can be held, else by logarithms. False when the
// parts cancel so far that nothing is left.
static bool front(double a, double b, double x, double y, double *f)
{
    double u = a * std::log(x), v = b * std::log(y);
    if (a + b < 170 && std::fabs(u) < maxlog && std::fabs(v) < maxlog) {
        *f = std::tgamma(a + b) / (std::tgamma(a) * std::tgamma(b)) * std::pow(x, a)
             * std::pow(y, b);
        if (*f > 0 && std::isfinite(*f))
            return true;
    }
    double s = std::lgamma(a + b), ga = std::lgamma(a), gb = std::lgamma(b);
    double e = u + v + s - ga - gb;
    double most = std::fmax(std::fmax(std::fabs(u), std::fabs(v)),
                            std::fmax(std::fabs(s), std::fmax(std::fabs(ga), std::fabs(gb))));
    if (most > 1e14 * std::fabs(e))
        return false;
    *f = e < minlog ? 0 : std::exp(e);
    return true;
}

static bool powers(double a, double b, double x, double *out)
{
    double c = 1, sum = 1 / a, f;
    for (int n = 1;; n++) {
        c *= (n - b) / n * x;
        double term = c / (a + n);
        sum += term;
        if (std::fabs(term) <= halfulp * std::fabs(sum))
            break;
        if (n >= maxsteps)
            return false;
    }
    if (!front(a, b, x, 1, &f))
        return false;
    *out = f * sum;
    return true;
}

static bool fraction(double a, double b, double x, double y, double *out)
{
    double f, c = 1, d = 1 - (a + b) * x / (a + 1);
    if (!front(a, b, x, y, &f))
        return false;
    if (f == 0) {
        *out = 0;
        return true;
    }
    d = 1 / (d == 0 ? 1e-300 : d);
    double h = d;
    for (int m = 1; m <= maxsteps; m++) {
        double n = m, step = 1;
        for (int odd = 0; odd < 2; odd++) {
            double k = odd ? -(a + n) * (a + b + n) * x / ((a + 2 * n) * (a + 2 * n + 1))
                           : n * (b - n) * x / ((a + 2 * n - 1) * (a + 2 * n));
            d = 1 + k * d;
            c = 1 + k / c;
            d = 1 / (d == 0 ? 1e-300 : d);
            c = c == 0 ? 1e-300 : c;
            step = d * c;
            h *= step;
        }
        if (std::fabs(step - 1) <= 3 * halfulp) {
            *out = f * h / a;
            return true;
        }
    }
    return false;
}

double ibeta(double a, double b, double x)
{
    if (!(a < misval && b < misval && x < misval) || a <= 0 || b <= 0)
        return misval;
    if (x <= 0 || x >= 1)
        return x >= 1;
    double z;
    if (b * x <= 1 && x <= 0.95)
        return powers(a, b, x, &z) ? z : misval;
    double y = 1 - x;
    bool exchanged = a / (a + b) < x;
    if (exchanged) {
        double t = a;
        a = b;
        b = t;
        t = x;
        x = y;
        y = t;
    }
    bool ok = exchanged && b * x <= 1 && x <= 0.95 ? powers(a, b, x, &z) : fraction(a, b, x, y, &z);
    if (!ok)
        return misval;
    return exchanged ? 1 - (z <= halfulp ? halfulp : z) : z;
}

// ---- inverses: a bracket, then halves of it until it is 1e-10 of its end wide

using curve = double (*)(const double *parm, double x);

static double search(curve f, const double *parm, double p, bool rising, double limit)
{
    double low = 0, high = limit == 1 ? 1 : 500, x = high;
    auto before = [&](double z) { return rising ? z < p : z > p; };
    for (int i = 0; i < 100 && high < limit; i++) {
        double z = f(parm, high);
        if (z >= misval || fault_poll())
            return misval;
        if (!before(z))
            break;
        low = high;
        high *= 2;
    }
    for (int i = 0; i < 200 && high - low > 1e-10 * high; i++) {
        x = (low + high) / 2;
        double z = f(parm, x);
        if (z >= misval || fault_poll())
            return misval;
        (before(z) ? low : high) = x;
    }
    return x;
}

static bool inside(double p) { return p > 0 && p < 1; }

double invibeta(double a, double b, double p)
{
    double parm[] = {a, b};
    if (!(a > 0 && a < misval && b > 0 && b < misval))
        return misval;
    if (!inside(p))
        return p == 0 || p == 1 ? p : misval;
    return search([](const double *q, double x) { return ibeta(q[0], q[1], x); }, parm, p, true, 1);
}

// ---- F, t, binomial

static bool good_f(double df1, double df2, double f)
{
    return df1 > 0 && df1 < misval && df2 > 0 && df2 < misval && f < misval;
}

double ftail(double df1, double df2, double f)
{
    if (!good_f(df1, df2, f))
        return misval;
    return f <= 0 ? 1 : ibeta(df2 / 2, df1 / 2, df2 / (df2 + df1 * f));
}

double fcumm(double df1, double df2, double f)
{
    if (!good_f(df1, df2, f))
        return misval;
    return f <= 0 ? 0 : ibeta(df1 / 2, df2 / 2, df1 * f / (df2 + df1 * f));
}

double invftail(double df1, double df2, double p)
{
    double parm[] = {df1, df2};
    if (!good_f(df1, df2, p) || !inside(p))
        return good_f(df1, df2, p) && p == 1 ? 0 : misval;
    return search([](const double *q, double x) { return ftail(q[0], q[1], x); }, parm, p, false,
                  1e300);
}

double invfcumm(double df1, double df2, double p)
{
    double parm[] = {df1, df2};
    if (!good_f(df1, df2, p) || !inside(p))
        return good_f(df1, df2, p) && p == 0 ? 0 : misval;
    return search([](const double *q, double x) { return fcumm(q[0], q[1], x); }, parm, p, true,
                  1e300);
}

double ttail(double df, double t)
{
    if (!(df > 0 && df < misval && t < misval))
        return misval;
    double h = ibeta(df / 2, 0.5, df / (t * t + df));
    if (h >= misval)
        return misval;
    return t > 0 ? h / 2 : 1 - h / 2;
}

double invttail(double df, double p)
{
    if (!(df > 0 && df < misval) || !inside(p))
        return misval;
    bool low = p < 0.5;
    double f = invftail(1, df, 2 * (low ? p : 1 - p));
    return f >= misval ? misval : low ? std::sqrt(f) : -std::sqrt(f);
}

double invt_old(double df, double p)
{
    return p >= 0 && p < 1 ? invttail(df, (1 - p) / 2) : misval;
}

static bool good_nk(double *n, double *k)
{
    if (!(*n < misval && *k < misval))
        return false;
    *n = std::floor(*n);
    *k = std::floor(*k);
    return *n >= 1 && *k >= 0 && *k <= *n;
}

double binomial_old(double n, double k, double p)
{
    if (!good_nk(&n, &k) || !(p >= 0 && p <= 1))
        return misval;
    return k == 0 ? 1 : ibeta(k, n - k + 1, p);
}

double invbinomial_old(double n, double k, double q)
{
    if (!good_nk(&n, &k) || !inside(q) || k == 0)
        return misval;
    return invibeta(k, n - k + 1, q);
}

// ---- noncentral families

// The Poisson mixture over the first parameter, from its mode both ways.
static double mix(double (*part)(const double *parm, double j), const double *parm, double L)
{
    double mean = L / 2, mode = std::floor(mean), sum = 0;
    double top = std::exp(mode * std::log(mean > 0 ? mean : 1) - mean - std::lgamma(mode + 1));
    for (int up = 0; up < 2; up++) {
        double w = up ? top * mean / (mode + 1) : top, j = up ? mode + 1 : mode;
        for (; j >= 0 && w > 1e-18; j += up ? 1 : -1) {
            double z = part(parm, j);
            if (z >= misval || fault_poll())
                return misval;
            sum += w * z;
            w *= up ? mean / (j + 1) : mean > 0 ? j / mean : 0;
        }
    }
    return sum;
}

static bool good_L(double L) { return L >= 0 && L <= 1e4; }

// Parameters: degrees of freedom, value, noncentrality.
static double nchi2_old(double df, double L, double x)
{
    double parm[] = {df / 2, x / 2};
    return mix([](const double *q, double j) { return gammap(q[0] + j, q[1]); }, parm, L);
}

static double nibeta_old(double a, double b, double L, double x)
{
    double parm[] = {a, b, x};
    return mix([](const double *q, double j) { return ibeta(q[0] + j, q[1], q[2]); }, parm, L);
}

double invnchi2_old(double df, double L, double p)
{
    double parm[] = {df, L};
    if (!(df > 0 && df < misval) || !good_L(L) || !inside(p))
        return df > 0 && df < misval && good_L(L) && p == 0 ? 0 : misval;
    return search([](const double *q, double x) { return nchi2_old(q[0], q[1], x); }, parm, p, true,
                  1e300);
}

double npnchi2_old(double df, double x, double p)
{
    double parm[] = {df, x};
    if (!(df > 0 && df < misval && x > 0 && x < misval) || !inside(p) || nchi2_old(df, 0, x) < p)
        return misval;
    double L = search([](const double *q, double z) { return nchi2_old(q[0], z, q[1]); }, parm, p,
                      false, 1e4);
    return L < 1e4 ? L : misval;
}

double invnibeta_old(double a, double b, double L, double p)
{
    double parm[] = {a, b, L};
    if (!(a > 0 && a < misval && b > 0 && b < misval) || !good_L(L) || !(p >= 0 && p <= 1))
        return misval;
    if (!inside(p))
        return p;
    return search([](const double *q, double x) { return nibeta_old(q[0], q[1], q[2], x); }, parm,
                  p, true, 1);
}

double invnftail_old(double df1, double df2, double L, double p)
{
    double parm[] = {df1, df2, L};
    if (!good_f(df1, df2, p) || !good_L(L) || !inside(p))
        return good_f(df1, df2, p) && good_L(L) && p == 1 ? 0 : misval;
    return search(
        [](const double *q, double f) {
            double x = q[0] * f / (q[0] * f + q[1]);
            return 1 - nibeta_old(q[0] / 2, q[1] / 2, q[2], x);
        },
        parm, p, false, 1e300);
}
