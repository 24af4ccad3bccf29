// stats/distcore.h - what the distribution files share. Exponents are formed in long double,
// for an error of 1e-16 in an exponent of 700 would already cost three digits.
#pragma once
#include "stats/dist.h"
#include <cmath>

using wide = long double;

// t - log(1 + t), and exp(t) - 1 - t, without cancellation near 0.
template <class T> T dist_log_rest(T t)
{
    if (t < T(-0.25) || t > T(0.35))
        return t - std::log1p(t);
    T v = t / (2 + t), w = v * v, sum = 0;
    for (int k = sizeof(T) > 8 ? 27 : 21; k >= 3; k -= 2)
        sum = sum * w + T(1) / T(k);
    return t * v - 2 * v * w * sum;
}

inline double dist_exp_rest(double t)
{
    if (std::fabs(t) > 0.5)
        return std::expm1(t) - t;
    double sum = 1;
    for (int k = 13; k >= 3; k--)
        sum = 1 + sum * t / k;
    return t * t / 2 * sum;
}

// x log(x/m) + m - x, where delta is m - x: the difference serves near m, the quotient far off.
inline wide dist_deviance(wide x, wide m, wide delta)
{
    if (x <= 0)
        return m;
    wide t = delta / x;
    return t < -0.25L || t > 0.35L ? delta - x * std::log(m / x) : x * dist_log_rest(t);
}

// log(x!) less x log(x) - x; 0 for 0.
wide dist_lnfac_rest(wide x);
// log gamma(1 + a) for a up to 1/2, good relatively near 0.
wide dist_lngamma1p(wide a);
// a*b - c*d with the rounding of both products made good.
wide dist_cross(double a, double b, double c, double d);

// A point of a beta distribution. lambda is a*y - b*x: the distance from the mean, which must
// not come out of rounded x and y when a and b are large.
struct betapoint {
    double a, b;
    wide x, y, lambda;
};
betapoint dist_betapoint(double a, double b, double x);
betapoint dist_mirrored(const betapoint *p);
bool dist_betatails(const betapoint *p, tails *out);
// log of x^a y^b / B(a,b), the density over the log of the odds.
wide dist_betafront(const betapoint *p);
// log of x^a exp(-x) / gamma(a), the density over the log of x.
wide dist_gammafront(double a, double x);
// The odds x/y where the tail is p; false outside the domain, infinite or 0 at its ends.
bool dist_invodds(double a, double b, double p, bool upper, double *odds);
