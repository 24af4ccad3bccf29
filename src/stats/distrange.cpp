// stats/distrange.cpp - the bivariate normal, the studentised range and Dunnett's maximum.
//
//   bivariate  the integral over the correlation of Z. Drezner and G. O. Wesolowsky, Journal
//              of Statistical Computation and Simulation 35 (1990), begun at -1 for negative
//              correlations so that nothing cancels
//   range      M. D. Copenhaver and B. Holland, Computation of the distribution of the maximum
//              studentized range statistic, Journal of Statistical Computation and
//              Simulation 30 (1988)
//   Dunnett    C. W. Dunnett, A multiple comparison procedure for comparing several treatments
//              with a control, Journal of the American Statistical Association 50 (1955)
//   The outer integrals over log s are trapezoidal sums, whose error falls exponentially.
#include "stats/distcore.h"
#include "stats/distquad.h"
#include "stats/normal.h"

static constexpr double sqrt2 = 1.41421356237309504880, inv_sqrt2pi = 0.39894228040143267794;

// ---- bivariate normal

// The integrand at the angle pi/2 - c, so that the cosine keeps its digits; c above pi/2 is a
// negative correlation, where the other pair of squares keeps them.
static double over_angle(double h, double k, double c)
{
    double cosine = std::sin(c), sine = std::cos(c), sum = h + k, diff = h - k;
    double e = sine >= 0 ? diff * diff / (2 * cosine * cosine) + h * k / (1 + sine)
                         : sum * sum / (2 * cosine * cosine) - h * k / (1 - sine);
    return std::exp(-e);
}

// Halves the range until both halves together agree with the whole.
static double over_range(double h, double k, double from, double to, double whole, double least,
                         int depth)
{
    auto f = [=](double c) { return over_angle(h, k, c); };
    double mid = (from + to) / 2, left = dist_rule(f, from, mid), right = dist_rule(f, mid, to);
    double both = left + right;
    if (depth >= 40 || (depth >= 2 && std::fabs(both - whole) <= std::fmax(least, 1e-13 * both)))
        return both;
    least = std::fmax(least, both * 1e-16);
    return over_range(h, k, from, mid, left, least, depth + 1)
           + over_range(h, k, mid, to, right, least, depth + 1);
}

static double angles(double h, double k, double from, double to)
{
    double whole = dist_rule([=](double c) { return over_angle(h, k, c); }, from, to);
    return over_range(h, k, from, to, whole, 0, 0) / double2p;
}

double binormal(double h, double k, double rho)
{
    if (!(h < misval && k < misval && rho >= -1 && rho <= 1))
        return misval;
    h = std::fmax(-100, std::fmin(100, h));
    k = std::fmax(-100, std::fmin(100, k));
    if (rho == 1)
        return ovnormal(h < k ? h : k);
    double c = std::acos(rho), z;
    if (rho >= 0) {
        z = ovnormal(h) * ovnormal(k) + (rho > 0 ? angles(h, k, c, M_PI / 2) : 0);
    } else {
        // At correlation -1 what lies between -k and h is left.
        z = h + k <= 0 ? 0 : h > 0 && k < 0 ? ovnormal(k) - ovnormal(-h) : ovnormal(h) - ovnormal(-k);
        z += rho > -1 ? angles(h, k, c, M_PI) : 0;
    }
    return z < 0 ? 0 : z > 1 ? 1 : z;
}

// ---- ranges of normals

// The normal probability from mid - half to mid + half, mid not below 0.
static double between(double mid, double half)
{
    if (half < 0.1) {  // by Hermite polynomials, where the difference of tails would cancel
        double x = mid * mid, w = half * half, he2 = x - 1, he4 = x * (x - 6) + 3,
               he6 = x * (x * (x - 15) + 45) - 15, he8 = x * (x * (x * (x - 28) + 210) - 420) + 105;
        double sum = 1 + w * (he2 / 6 + w * (he4 / 120 + w * (he6 / 5040 + w * he8 / 362880)));
        if (mid < 8)
            return 2 * half * ovnormalden(mid) * sum;
    }
    double z = ovnormal(half - mid);
    return mid > half ? z - ovnormal(-mid - half) : 1 - ovnormal(mid - half) - ovnormal(-mid - half);
}

// The range of k normals is below w.
static double range_prob(double k, double w)
{
    double all = between(0, w / 2);
    if (all == 0)
        return 0;
    double head = std::exp(k * std::log(all)), g0 = between(0, w / 2);
    // The largest lies beyond w/2, the others less than w below it.
    auto c = [=](double s) {
        double g = between(s, w / 2);
        return g > 0 ? s * (s + w) / 2 - (k - 1) * std::log(g / g0) : 1e3 + s;
    };
    double lead = 2 * k * ovnormalden(w / 2) * std::exp((k - 1) * std::log(g0));
    double rest = lead > 0 ? lead * dist_falling(c, w / 2, 1 + (k - 1) * std::fmin(1, w)) : 0;
    return std::fmin(1, head + rest);
}

// All k differences from a control are within w, over the square root of 2.
static double dunnett_prob(double k, double w)
{
    w *= sqrt2;
    double g0 = between(0, w);
    if (g0 == 0)
        return 0;
    auto c = [=](double s) {
        double g = between(s, w);
        return g > 0 ? s * s / 2 - k * std::log(g / g0) : 1e3 + s;
    };
    double z = 2 * inv_sqrt2pi * std::exp(k * std::log(g0)) * dist_falling(c, 0, 1 + k * std::fmin(1, w));
    return std::fmin(1, z);
}

// The mean of f(k, x s) over s, where df s^2 is chi-squared; power is how fast f can rise.
static double over_scale(double (*f)(double k, double w), double k, double df, double x,
                         double power)
{
    if (df > 1e13)  // the spread of s is below a rounding
        return f(k, x);
    // log of the density over u = log s, less its value at 0: df (u - expm1(2u)/2)
    auto ln = [=](double u) { return -df / 2 * dist_exp_rest(2 * u); };
    double spread = 1 / std::sqrt(2 * (df + power)), step = std::fmin(0.1, 0.55 * spread);
    double most = 0.5 * std::log1p(power / df), sum = 0, weight = 0;
    // From the peak of density and power together down, then up.
    double start = std::floor(most / step);
    for (int dir = -1; dir <= 1; dir += 2)
        for (double i = dir < 0 ? start : start + 1;; i += dir) {
            double u = i * step, d = std::exp(ln(u)), v = d > 0 ? d * f(k, x * std::exp(u)) : 0;
            if (fault_poll())
                return misval;
            sum += v;
            weight += d;
            bool past = dir > 0 || u < 0;  // beyond the peak of the density too
            if (past && v <= sum * 1e-18 && d <= weight * 1e-18)
                break;
            if (dir > 0 && v <= sum * 1e-18 && u > 1)
                break;
            if (d == 0 && past)
                break;
        }
    // The sum of the density is known: 1 over the step.
    double norm = double(std::exp(dist_gammafront(df / 2, df / 2))) * 2 * step;
    return std::fmin(1, sum * norm);
}

static double srange_at(double k, double df, double x)
{
    return over_scale(range_prob, k, df, x, k - 1);
}

static double dunnett_at(double k, double df, double x)
{
    return over_scale(dunnett_prob, k, df, x, k);
}

static bool good_range(double k, double df, double least)
{
    return k >= least && k <= 1e6 && df >= 1 && df <= 1e17;
}

double srangeprob(double k, double df, double x)
{
    if (!good_range(k, df, 2) || !(x < misval))
        return misval;
    return x <= 0 ? 0 : srange_at(std::floor(k), df, x);
}

double dunnettprob(double k, double df, double x)
{
    if (!good_range(k, df, 1) || !(x < misval))
        return misval;
    return x <= 0 ? 0 : dunnett_at(std::floor(k), df, x);
}

static double inverse(double (*f)(double, double, double), double k, double df, double p)
{
    k = std::floor(k);
    if (p == 0)
        return 0;
    return dist_root([=](double x) { return f(k, df, x); }, p, true, 3, 1e300);
}

double invsrangeprob(double k, double df, double p)
{
    return good_range(k, df, 2) && p >= 0 && p < 1 ? inverse(srange_at, k, df, p) : misval;
}

double invdunnettprob(double k, double df, double p)
{
    return good_range(k, df, 1) && p >= 0 && p < 1 ? inverse(dunnett_at, k, df, p) : misval;
}
