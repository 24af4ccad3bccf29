// stats/distterm.cpp - the terms that lead every distribution, by saddle points.
//
//   terms  C. Loader, Fast and accurate computation of binomial probabilities (2000)
#include "core/missing.h"
#include "stats/distcore.h"

static constexpr wide half_ln_2pi = 0.918938533204672741780329736405617640L;

wide dist_lngamma1p(wide a)
{
    // Abramowitz and Stegun 6.1.33
    static const wide zeta_less_1[] = {
        0.64493406684822643647L, 0.20205690315959428540L, 0.082323233711138191516L,
        0.036927755143369926331L, 0.017343061984449139714L, 0.0083492773819228268398L,
        0.0040773561979443393787L, 0.0020083928260822144179L, 0.00099457512781808533715L,
        0.00049418860411946455870L, 0.00024608655330804829863L, 0.00012271334757848914675L,
        0.000061248135058704829259L, 0.000030588236307020493552L, 0.000015282259408651871733L,
        7.6371976378997622737e-6L, 3.8172932649998398565e-6L, 1.9082127165539389257e-6L,
        9.5396203387279611315e-7L, 4.7693298678780646312e-7L, 2.3845050272773299000e-7L,
        1.1921992596531107307e-7L, 5.9608189051259479612e-8L, 2.9803503514652280186e-8L,
        1.4901554828365041235e-8L, 7.4507117898354294920e-9L, 3.7253340247884570548e-9L,
        1.8626597235130490065e-9L};
    wide sum = 0;
    for (int k = 29; k >= 2; k--)
        sum = -a * (sum - zeta_less_1[k - 2] / k);
    return -std::log1p(a) + a * (1 - 0.57721566490153286060651209008240243L) + a * sum;
}

wide dist_lnfac_rest(wide x)
{
    if (x <= 0)
        return 0;
    if (x < 15)
        return lgammal(x + 1) - x * std::log(x) + x;
    wide s = 1 / (x * x);
    wide stirling = (1 / 12.0L - s * (1 / 360.0L - s * (1 / 1260.0L - s * (1 / 1680.0L
                     - s * (1 / 1188.0L - s * (691 / 360360.0L - s / 156)))))) / x;
    return stirling + half_ln_2pi + std::log(x) / 2;
}

wide dist_cross(double a, double b, double c, double d)
{
    double p = a * b, q = c * d;
    if (!(std::fabs(p) < 1e290 && std::fabs(q) < 1e290))
        return static_cast<wide>(a) * b - static_cast<wide>(c) * d;
    return (static_cast<wide>(p) - q) + (std::fma(a, b, -p) - static_cast<wide>(std::fma(c, d, -q)));
}

double dist_poisson_term(double x, double mean)
{
    if (mean == 0)
        return x == 0;
    if (x == 0)
        return std::exp(-mean);
    wide delta = static_cast<wide>(mean) - x;
    return double(std::exp(-dist_lnfac_rest(x) - dist_deviance(x, mean, delta)));
}

// p and q add to 1 and the smaller of them is exact.
double dist_binomial_term(double x, double n, double p, double q)
{
    if (p == 0)
        return x == 0;
    if (q == 0)
        return x == n;
    double rest = n - x;
    if (rest < 0)
        return 0;
    wide wp = p < q ? p : 1 - static_cast<wide>(q), wq = p < q ? 1 - static_cast<wide>(p) : q;
    if (x == 0)
        return double(std::exp(n * (p < q ? std::log1p(-wp) : std::log(wq))));
    if (rest == 0)
        return double(std::exp(n * (p < q ? std::log(wp) : std::log1p(-wq))));
    // The mean less x, from the exact one of p and q.
    wide delta = p < q ? dist_cross(n, p, x, 1) : -dist_cross(n, q, rest, 1);
    wide e = dist_lnfac_rest(n) - dist_lnfac_rest(x) - dist_lnfac_rest(rest)
             - dist_deviance(x, n * wp, delta)
             - dist_deviance(rest, n * wq, -delta);
    return double(std::exp(e));
}

// The parts without x are kept from one call to the next: a column of values, or the steps of
// an inverse, share their parameters.
wide dist_gammafront(double a, double x)
{
    static double last_a;
    static wide kept;
    if (a != last_a) {
        kept = std::log(static_cast<wide>(a)) - dist_lnfac_rest(a);
        last_a = a;
    }
    return kept - dist_deviance(a, x, static_cast<wide>(x) - a);
}

wide dist_betafront(const betapoint *p)
{
    static double last_a, last_b;
    static wide kept;
    wide a = p->a, b = p->b, n = a + b;
    if (p->a != last_a || p->b != last_b) {
        kept = std::log(a / n * b) + dist_lnfac_rest(n) - dist_lnfac_rest(a) - dist_lnfac_rest(b);
        last_a = p->a;
        last_b = p->b;
    }
    return kept - dist_deviance(a, n * p->x, -p->lambda) - dist_deviance(b, n * p->y, p->lambda);
}

betapoint dist_betapoint(double a, double b, double x)
{
    wide y = 1 - static_cast<wide>(x);
    // a*y - b*x = (a - a*x) - b*x, the large parts first
    double ax = a * x, bx = b * x;
    wide rest = static_cast<wide>(std::fma(a, x, -ax)) + std::fma(b, x, -bx);
    wide lambda = ax > bx ? ((static_cast<wide>(a) - ax) - bx) - rest
                          : ((static_cast<wide>(a) - bx) - ax) - rest;
    return {a, b, x, y, lambda};
}

betapoint dist_mirrored(const betapoint *p) { return {p->b, p->a, p->y, p->x, -p->lambda}; }
