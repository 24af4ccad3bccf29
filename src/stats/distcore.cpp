// stats/distcore.cpp - incomplete gamma and beta functions.
//
//   gamma      series and continued fraction, Abramowitz and Stegun 6.5.29 and 6.5.31
//   beta       series, Abramowitz and Stegun 26.5.4; continued fraction of A. R. DiDonato and
//              A. H. Morris, Algorithm 708, ACM Transactions on Mathematical Software 18 (1992)
//   large parameters, both: the density over log x (over the log odds) falls from the point
//              outward like exp(-c), c convex; a Gauss-Legendre rule of 32 points over the
//              range where c is below 40 gives the tail, whatever the size of the parameters
//              (P. J. Davis and P. Rabinowitz, Methods of Numerical Integration, 1984)
#include "core/missing.h"
#include "stats/distcore.h"
#include "stats/distquad.h"
#include "stats/normal.h"

static constexpr double lowest_a = 1e-10, highest_a = 1e17;
static constexpr int maxsteps = 100000;

// ---- incomplete gamma

// The tail that x lies on, for large a.
static void gamma_integral(double a, double x, tails *out)
{
    bool low = x < a;
    double slope = std::fabs(a - x), sign = low ? -1 : 1;
    auto c = [=](double s) { return slope * s + x * dist_exp_rest(sign * s); };
    wide front = dist_gammafront(a, x);
    double tail = front < -760 ? 0 : double(std::exp(front) * dist_falling(c, slope, x));
    *out = low ? tails{tail, 1 - tail} : tails{1 - tail, tail};
}

static bool gamma_series(double a, double x, tails *out)
{
    double term = 1, sum = 1;
    for (int i = 1; i < maxsteps; i++) {
        term *= x / (a + i);
        sum += term;
        if (term < sum * 1e-17) {
            out->lower = double(std::exp(dist_gammafront(a, x)) / a * sum);
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
        if (std::fabs(step - 1) < 2.3e-16) {
            out->upper = double(std::exp(dist_gammafront(a, x)) * h);
            out->lower = 1 - out->upper;
            return true;
        }
    }
    return false;
}

// Both tails for small a and x, where the upper one is far too small for a difference.
static void gamma_small(double a, double x, tails *out)
{
    wide ln = a * std::log(static_cast<wide>(x)) - dist_lngamma1p(a), lead = std::exp(ln);
    wide term = 1, sum = 0;
    for (int n = 1; n < 40; n++) {
        term *= -static_cast<wide>(x) / n;
        sum -= term / (a + n);
    }
    out->upper = double(-std::expm1(ln) + lead * a * sum);
    out->lower = double(lead * (1 - a * sum));
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
    if (x > a + 1 && x > 1e300) {
        *out = {1, 0};
        return true;
    }
    if (a > 100 && x > 0.5 * a && x < 2 * a) {
        gamma_integral(a, x, out);
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

// ---- incomplete beta: the lower tail at or below the mean

// The integral for the lower tail in units of the front factor.
static double beta_integral(const betapoint *p)
{
    double n = p->a + p->b, x = double(p->x), y = double(p->y), lambda = double(p->lambda);
    lambda = lambda > 0 ? lambda : 0;
    double first = lambda, second = n * x * y;
    if (x <= 0.5)
        return dist_falling(
            [=](double s) {
                return lambda * s
                       + n * (x * dist_exp_rest(-s) - dist_log_rest(x * std::expm1(-s)));
            },
            first, second);
    return dist_falling(
        [=](double s) {
            return lambda * s + n * (y * dist_exp_rest(s) - dist_log_rest(y * std::expm1(s)));
        },
        first, second);
}

// The same by the continued fraction; false when it is slow.
static bool beta_fraction(const betapoint *p0, int steps, double *out)
{
    double a = p0->a, b = p0->b, x = double(p0->x), y = double(p0->y);
    double c = 1 + double(p0->lambda), c0 = b / a, c1 = 1 + 1 / a, yp1 = y + 1;
    double n = 0, p = 1, s = a + 1, an = 0, bn = 1, anp1 = 1, bnp1 = c / c1, r = c1 / c;
    for (int i = 0; i < steps; i++) {
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
        if (std::fabs(r - r0) <= 1.2e-16 * r) {
            *out = r;
            return true;
        }
        an /= bnp1;
        bn /= bnp1;
        anp1 = r;
        bnp1 = 1;
    }
    return false;
}

// The same by powers of x.
static double beta_series(const betapoint *p)
{
    double sum = 0, c = 1, a = p->a, b = p->b, x = double(p->x);
    for (int n = 1; n < maxsteps; n++) {
        c *= (n - b) / n * x;
        double term = c / (a + n);
        sum += term;
        if (std::fabs(term) <= 1e-17 * std::fabs(1 / a + sum))
            break;
    }
    return 1 / a + sum;
}

static bool beta_lower(const betapoint *p, double *out)
{
    wide front = dist_betafront(p);
    double a = p->a, b = p->b, x = double(p->x);
    if (front < -800) {
        *out = 0;
        return true;
    }
    if (b * x <= 1 && x <= 0.7) {  // leave out y^b
        *out = double(std::exp(front - b * std::log1p(-p->x)) * beta_series(p));
        return true;
    }
    double r;
    if (!beta_fraction(p, a > 20 ? 60 : 2000, &r))
        r = beta_integral(p);
    *out = double(std::exp(front) * r);
    return true;
}

// The upper tail where a is small and most lies below x: what is between x and a middle, by
// powers, and what is beyond, which is a lower tail seen from the other side.
static bool beta_skewed(const betapoint *p, double *out)
{
    double a = p->a, b = p->b, x = double(p->x), middle = b > 2 ? 1 / b : 0.5;
    if (!(middle > x))
        middle = x;
    // log of 1/B(a,b), with the powers at x taken out of the front factor
    wide lnx = std::log(p->x), ln = dist_betafront(p) - a * lnx - b * std::log1p(-p->x);
    wide rise = a * (std::log(static_cast<wide>(middle)) - lnx), xa = std::exp(a * lnx);
    wide sum = std::expm1(rise) / a, c = 1, at_x = 1, at_middle = std::exp(rise);
    for (int n = 1; n < 400; n++) {
        c *= (n - b) / n;
        at_x *= x;
        at_middle *= middle;
        wide term = c * (at_middle - at_x) / (a + n);
        sum += term;
        if (std::fabs(c * at_middle) < 1e-18L * std::fabs(sum))
            break;
    }
    double beyond;
    betapoint m = dist_betapoint(a, b, middle);
    m = dist_mirrored(&m);
    if (!beta_lower(&m, &beyond))
        return false;
    *out = double(std::exp(ln) * xa * sum) + beyond;
    return true;
}

bool dist_betatails(const betapoint *p, tails *out)
{
    if (p->x <= 0 || p->y <= 0) {
        *out = p->x <= 0 ? tails{0, 1} : tails{1, 0};
        return true;
    }
    // By powers where a small parameter calls for them, else on the side the point lies on.
    bool powers = p->a < 1 && p->b * p->x <= 1 && p->x <= 0.5L;
    bool mirror = p->b < 1 && p->a * p->y <= 1 && p->y <= 0.5L ? true : p->lambda < 0 && !powers;
    betapoint q = mirror ? dist_mirrored(p) : *p;
    double lower, upper;
    if (!beta_lower(&q, &lower))
        return false;
    lower = lower > 1 ? 1 : lower;
    if (lower < 0.8 || q.a > 2)
        upper = 1 - lower;
    else if (!beta_skewed(&q, &upper))
        return false;
    *out = mirror ? tails{upper, lower} : tails{lower, upper};
    return lower >= 0;
}

bool dist_beta(double a, double b, double x, double y, tails *out)
{
    betapoint p = x <= y ? dist_betapoint(a, b, x) : dist_betapoint(b, a, y);
    if (x > y)
        p = dist_mirrored(&p);
    return dist_betatails(&p, out);
}

static bool good_ab(double a, double b) { return good_a(a) && good_a(b); }

static bool ibeta_tails(double a, double b, double x, tails *t)
{
    if (!good_ab(a, b) || !(x < misval))
        return false;
    if (x <= 0 || x >= 1) {
        *t = x <= 0 ? tails{0, 1} : tails{1, 0};
        return true;
    }
    betapoint p = dist_betapoint(a, b, x);
    return dist_betatails(&p, t);
}

double ibeta2(double a, double b, double x)
{
    tails t;
    return ibeta_tails(a, b, x, &t) ? t.lower : misval;
}

double ibetatail2(double a, double b, double x)
{
    tails t;
    return ibeta_tails(a, b, x, &t) ? t.upper : misval;
}
