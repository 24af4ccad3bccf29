// stats/normal.cpp - the normal distribution.
//
//   lower tail  W. J. Cody, Rational Chebyshev approximations for the error function,
//               Mathematics of Computation 23 (1969); coefficients as in ACM Algorithm 715
//   inverse     M. J. Wichura, Algorithm AS 241, Applied Statistics 37 (1988)
#include "stats/normal.h"
#include "core/missing.h"
#include <cmath>

static constexpr double inv_sqrt2pi = 0.39894228040143267794;
static constexpr double inner = 0.67448975, outer = 5.656854249492381, lowest = -37.519;

static double poly(const double *c, int n, double x)
{
    double z = c[n - 1];
    for (int i = n - 2; i >= 0; i--)
        z = z * x + c[i];
    return z;
}

// Around 0: the tail is a half plus z times a ratio in z squared.
static double central(double z)
{
    static const double a[] = {18154.981253343561249, 1067.6894854603709582,
                               161.02823106855587881, 2.2352520354606839287,
                               0.065682337918207449113};
    static const double b[] = {45507.789335026729956, 10260.932208618978205,
                               976.09855173777669322, 47.202581904688241870, 1.0};
    double y = std::fabs(z), sq = y > 1.11e-16 ? y * y : 0;
    return z * poly(a, 5, sq) / poly(b, 5, sq);
}

// The upper tail at y above inner, without its factor exp(-y*y/2).
static double tail_factor(double y)
{
    static const double c[] = {9842.7148383839780218, 11602.651437647350124,
                               6848.1904505362823326, 2494.5375852903726711,
                               597.27027639480026226, 93.506656132177855979,
                               8.8831497943883759412, 0.39894151208813466764,
                               1.0765576773720192317e-8};
    static const double d[] = {19685.429676859990727, 38912.003286093271411,
                               34900.952721145977266, 18615.571640885098091,
                               6485.5582982667607550, 1519.3775994075548050,
                               235.38790178262499861, 22.266688044328115691, 1.0};
    static const double p[] = {2.9112874951168792e-5, 1.421619193227893466e-3,
                               2.2235277870649807e-2, 1.274011611602473639e-1,
                               2.1589853405795699e-1, 2.307344176494017303e-2};
    static const double q[] = {7.29751555083966205e-5, 3.78239633202758244e-3,
                               6.59881378689285515e-2, 4.68238212480865118e-1,
                               1.28426009614491121, 1.0};
    if (y <= outer)
        return poly(c, 9, y) / poly(d, 9, y);
    double sq = 1 / (y * y);
    return (inv_sqrt2pi - sq * poly(p, 6, sq) / poly(q, 6, sq)) / y;
}

// exp(-y*y/2) with the square split, so that its rounding does not matter.
static double gauss(double y)
{
    double high = std::trunc(y * 16) / 16, rest = (y - high) * (y + high);
    return std::exp(-high * high * 0.5) * std::exp(-rest * 0.5);
}

double ovnormal(double z)
{
    if (std::fabs(z) <= inner)
        return 0.5 + central(z);
    if (z < lowest)
        return 0;
    double y = std::fabs(z), upper = y > 40 ? 0 : gauss(y) * tail_factor(y);
    return z < 0 ? upper : 1 - upper;
}

double ovlnnormal(double z)
{
    if (std::fabs(z) <= inner)
        return std::log(0.5 + central(z));
    if (z < 0) {
        double ln = std::log(tail_factor(-z)) - z * z / 2;
        return std::fabs(ln) < misval ? ln : misval;
    }
    return z > 40 ? 0 : std::log1p(-gauss(z) * tail_factor(z));
}

double old_lnnormal(double z)
{
    double p = ovnormal(z);
    return p > 0 ? std::log(p) : misval;
}

double ovinvnormal(double p)
{
    if (!(p > 0 && p < 1))
        return misval;
    static const double a[] = {3.3871328727963666080, 133.14166789178437745,
                               1971.5909503065514427, 13731.693765509461125,
                               45921.953931549871457, 67265.770927008700853,
                               33430.575583588128105, 2509.0809287301226727};
    static const double b[] = {1.0, 42.313330701600911252, 687.18700749205790830,
                               5394.1960214247511077, 21213.794301586595867,
                               39307.895800092710610, 28729.085735721942674,
                               5226.4952788528545610};
    static const double c[] = {1.42343711074968357734, 4.63033784615654529590,
                               5.76949722146069140550, 3.64784832476320460504,
                               1.27045825245236838258, 0.241780725177450611770,
                               0.0227238449892691845833, 7.74545014278341407640e-4};
    static const double d[] = {1.0, 2.05319162663775882187, 1.67638483018380384940,
                               0.689767334985100004550, 0.148103976427480074590,
                               0.0151986665636164571966, 5.47593808499534494600e-4,
                               1.05075007164441684324e-9};
    static const double e[] = {6.65790464350110377720, 5.46378491116411436990,
                               1.78482653991729133580, 0.296560571828504891230,
                               0.0265321895265761230930, 1.24266094738807843860e-3,
                               2.71155556874348757815e-5, 2.01033439929228813265e-7};
    static const double f[] = {1.0, 0.599832206555887937690, 0.136929880922735805310,
                               0.0148753612908506148525, 7.86869131145613259100e-4,
                               1.84631831751005468180e-5, 1.42151175831644588870e-7,
                               2.04426310338993978564e-15};
    double q = p - 0.5;
    if (std::fabs(q) <= 0.425) {
        double r = 0.180625 - q * q;
        return q * poly(a, 8, r) / poly(b, 8, r);
    }
    double r = std::sqrt(-std::log(q < 0 ? p : 1 - p));
    double z = r <= 5 ? poly(c, 8, r - 1.6) / poly(d, 8, r - 1.6)
                      : poly(e, 8, r - 5) / poly(f, 8, r - 5);
    return q < 0 ? -z : z;
}

double ovnormalden(double z) { return inv_sqrt2pi * std::exp(-0.5 * z * z); }

double ovnormalden3(double x, double mean, double sd)
{
    return sd > 0 ? ovnormalden((x - mean) / sd) / sd : misval;
}

double ovlnnormalden3(double x, double mean, double sd)
{
    if (!(sd > 0))
        return misval;
    double z = (x - mean) / sd;
    return -0.5 * z * z - std::log(sd) - 0.5 * doubleln2pi;
}
