// stats/distnc.cpp - noncentral distributions as Poisson mixtures, and the bivariate normal.
//
//   mixtures   terms from the largest weight outward, as in D. Benton and K. Krishnamoorthy,
//              Computational Statistics and Data Analysis 43 (2003)
//   bivariate  the integral over the correlation of Z. Drezner and G. O. Wesolowsky, Journal
//              of Statistical Computation and Simulation 35 (1990), by Gauss-Legendre rules
#include "core/mem.h"
#include "core/missing.h"
#include "stats/dist.h"
#include "stats/normal.h"
#include <cmath>

static constexpr double highest_L = 1e7;

struct mixture {
    char kind;  // c chi-squared, b beta, B its density, u upper tail of beta
    double a, b, x, y;
};

static double part(const mixture *m, double j)
{
    tails t;
    switch (m->kind) {
    case 'c': return dist_gamma(m->a + j, m->x, &t) ? t.lower : misval;
    case 'b': return dist_beta(m->a + j, m->b, m->x, m->y, &t) ? t.lower : misval;
    case 'u': return dist_beta(m->a + j, m->b, m->x, m->y, &t) ? t.upper : misval;
    default: {
        double a = m->a + j;
        return a * m->b / (a + m->b) * dist_binomial_term(a, a + m->b, m->x, m->y)
               / (m->x * m->y);
    }
    }
}

static double mix(const mixture *m, double L)
{
    double mean = L / 2, mode = std::floor(mean), sum = 0;
    for (int up = 0; up < 2; up++)
        for (double j = up ? mode + 1 : mode; j >= 0; j += up ? 1 : -1) {
            double w = dist_poisson_term(j, mean), z = part(m, j);
            if (z >= misval || ((int64_t(j) & 255) == 0 && fault_poll()))
                return misval;
            sum += w * z;
            // Weights fall on both sides; parts are bounded, but a density may still grow.
            if (w < 1e-20 || (w * z < sum * 1e-18 && w < 1e-3 && (m->kind != 'B' || z < sum)))
                break;
        }
    return sum;
}

static bool good(double df) { return df >= 2e-10 && df <= 1e17; }
static bool good_L(double L) { return L >= 0 && L <= highest_L; }

double nchi2(double df, double L, double x)
{
    if (!good(df) || !good_L(L) || !(x < misval))
        return misval;
    mixture m{'c', df / 2, 0, x / 2, 0};
    return x <= 0 ? 0 : mix(&m, L);
}

double nibeta(double a, double b, double L, double x)
{
    if (!good(a) || !good(b) || !good_L(L) || !(x < misval))
        return misval;
    mixture m{'b', a, b, x, 1 - x};
    return x <= 0 ? 0 : x >= 1 ? 1 : mix(&m, L);
}

double nbetaden(double a, double b, double L, double x)
{
    if (!good(a) || !good(b) || !good_L(L) || !(x < misval))
        return misval;
    mixture m{'B', a, b, x, 1 - x};
    return x <= 0 || x >= 1 ? 0 : mix(&m, L);
}

double nftail(double df1, double df2, double L, double f)
{
    if (!good(df1) || !good(df2) || !good_L(L) || !(f < misval))
        return misval;
    double sum = df1 * f + df2;
    mixture m{'u', df1 / 2, df2 / 2, df1 * f / sum, df2 / sum};
    return f <= 0 ? 1 : mix(&m, L);
}

double nfden(double df1, double df2, double L, double f)
{
    if (!good(df1) || !good(df2) || !good_L(L) || !(f < misval))
        return misval;
    if (f <= 0)
        return 0;
    double sum = df1 * f + df2;
    mixture m{'B', df1 / 2, df2 / 2, df1 * f / sum, df2 / sum};
    double z = mix(&m, L);
    return z >= misval ? misval : z * (df1 / sum) * (df2 / sum);
}

// ---- inverses by halving, where the value rises or falls over the whole range

using curve = double (*)(const double *parm, double x);

// The x from 0 on where f is p. rising tells the direction; limit bounds the search.
static double halve(curve f, const double *parm, double p, bool rising, double limit)
{
    double low = 0, high = 1;
    auto before = [&](double z) { return rising ? z < p : z > p; };
    while (high < limit) {
        double z = f(parm, high);
        if (z >= misval)
            return misval;
        if (!before(z))
            break;
        low = high;
        high *= 2;
    }
    if (high >= limit) {
        high = limit;
        if (before(f(parm, limit)))
            return misval;
    }
    for (int i = 0; i < 200 && high - low > 1e-15 * high; i++) {
        double mid = (low + high) / 2, z = f(parm, mid);
        if (z >= misval)
            return misval;
        (before(z) ? low : high) = mid;
    }
    return (low + high) / 2;
}

static bool inside(double p) { return p > 0 && p < 1; }

double invnchi2(double df, double L, double p)
{
    double parm[] = {df, L};
    if (!good(df) || !good_L(L) || !inside(p))
        return p == 0 ? 0 : misval;
    return halve([](const double *q, double x) { return nchi2(q[0], q[1], x); }, parm, p, true,
                 1e300);
}

double npnchi2(double df, double x, double p)
{
    double parm[] = {df, x};
    if (!good(df) || !(x > 0 && x < misval) || !inside(p) || nchi2(df, 0, x) < p)
        return misval;
    return halve([](const double *q, double L) { return nchi2(q[0], L, q[1]); }, parm, p, false,
                 highest_L);
}

double invnibeta(double a, double b, double L, double p)
{
    double parm[] = {a, b, L};
    if (!good(a) || !good(b) || !good_L(L) || !inside(p))
        return p == 0 || p == 1 ? p : misval;
    return halve([](const double *q, double x) { return nibeta(q[0], q[1], q[2], x); }, parm, p,
                 true, 1);
}

double invnftail(double df1, double df2, double L, double p)
{
    double parm[] = {df1, df2, L};
    if (!good(df1) || !good(df2) || !good_L(L) || !inside(p))
        return p == 1 ? 0 : misval;
    return halve([](const double *q, double f) { return nftail(q[0], q[1], q[2], f); }, parm, p,
                 false, 1e300);
}

// ---- bivariate normal

// Ten of the twenty points lie on either side of the middle.
static const double gl_x[10] = {0.0765265211334973, 0.2277858511416451, 0.3737060887154196,
                                0.5108670019508271, 0.6360536807265150, 0.7463319064601508,
                                0.8391169718222188, 0.9122344282513259, 0.9639719272779138,
                                0.9931285991850949};
static const double gl_w[10] = {0.1527533871307259, 0.1491729864726037, 0.1420961093183821,
                                0.1316886384491766, 0.1181945319615184, 0.1019301198172404,
                                0.0832767415767048, 0.0626720483341091, 0.0406014298003869,
                                0.0176140071391521};

// The integrand at angle t; c is pi/2 less t, so that the cosine keeps its digits.
static double over_angle(double h, double k, double c)
{
    double cosine = std::sin(c), sine = std::cos(c);
    double e = (h - k) * (h - k) / (2 * cosine * cosine) + h * k / (1 + sine);
    return std::exp(-e);
}

// Between the angles pi/2 - from and pi/2 - to.
static double panel(double h, double k, double from, double to)
{
    double mid = (from + to) / 2, half = (from - to) / 2, sum = 0;
    for (int i = 0; i < 10; i++)
        sum += gl_w[i] * (over_angle(h, k, mid + half * gl_x[i])
                          + over_angle(h, k, mid - half * gl_x[i]));
    return sum * half;
}

double binormal(double h, double k, double rho)
{
    if (!(h < misval && k < misval && rho >= -1 && rho <= 1))
        return misval;
    if (rho < 0)  // the other side of one variable has the opposite correlation
        return std::fmax(0, ovnormal(h) - binormal(h, -k, -rho));
    if (rho == 1)
        return ovnormal(h < k ? h : k);
    double c = std::acos(rho), from = M_PI / 2, sum = 0;
    while (from > c) {  // panels shrink toward the right angle, where the integrand is steep
        double to = from / 2 > c ? from / 2 : c;
        sum += panel(h, k, from, to);
        from = to;
    }
    double z = ovnormal(h) * ovnormal(k) + sum / double2p;
    return z < 0 ? 0 : z > 1 ? 1 : z;
}
