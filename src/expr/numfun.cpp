#include "core/missing.h"
#include "expr/strfun.h"
#include <algorithm>
#include <cmath>

static double held(double z)
{
    return std::fabs(z) < misval ? z : misval;
}

// Small whole powers are products, so that they are exact where they can be.
double ovpow(double x, double y)
{
    if (x >= misval || y >= misval)
        return misval;
    if (y == 0)
        return 1;
    if (x == 0)
        return y > 0 ? 0 : misval;
    bool wholey = y == std::trunc(y);
    if (wholey && std::fabs(y) <= 64) {
        double base = y < 0 ? 1 / x : x, z = base;
        for (int i = int(std::fabs(y)); i > 1; i--)
            z *= base;
        return held(z);
    }
    if (x > 0)
        return held(std::exp(y * std::log(x)));
    if (!wholey)
        return misval;
    double z = std::exp(y * std::log(-x));
    return held(std::fmod(y, 2) != 0 ? -z : z);
}

double ovint(double x)
{
    return x >= misval ? x : std::trunc(x);
}

double ovfloor(double x)
{
    return x >= misval ? x : std::floor(x);
}

double ovceil(double x)
{
    return x >= misval ? x : std::ceil(x);
}

double ovround(double x, double y)
{
    if (y == 0)
        return x;
    if (y >= misval)
        return misval;
    if (x >= misval)
        return x;
    return held(std::floor(x / y + .5) * y);
}

double ovmod(double x, double y)
{
    if (x >= misval || y >= misval || y <= 0)
        return misval;
    double z = x - std::floor(x / y) * y;
    return z < 0 ? z + y : z;
}

double ovchop(double x, double e)
{
    if (x >= misval)
        return x;
    if (e >= misval || e < 0)
        return misval;
    double r = ovround(x, 1);
    return std::fabs(r - x) <= e ? r : x;
}

double ovclip(double x, double a, double b)
{
    if (x >= misval)
        return x;
    if (a < misval && b < misval && b < a)
        return misval;
    if (a < misval && x < a)
        return a;
    return b < misval && x > b ? b : x;
}

double ovsign(double x)
{
    return x >= misval ? misval : double((x > 0) - (x < 0));
}

double ovautocode(double x, double n, double x0, double x1)
{
    if (!(n > 0 && n < 1000) || x0 >= misval || x1 >= misval || x0 >= x1)
        return misval;
    if (x >= misval)
        return x;
    double step = (x1 - x0) / n;
    for (int i = 1; i < n; i++) {
        x0 += step;
        if (x0 >= x)
            return x0;
    }
    return x1;
}

static bool ascending(const double *cut, int32_t n)
{
    for (int32_t i = 1; i < n; i++)
        if (cut[i] < cut[i - 1])
            return false;
    return true;
}

double ovrecode(double x, const double *cut, int32_t n)
{
    if (!ascending(cut, n) || n < 1)
        return misval;
    if (x >= misval)
        return x;
    for (int32_t i = 0; i < n; i++)
        if (x <= cut[i])
            return cut[i];
    return cut[n - 1];
}

double ovirecode(double x, const double *cut, int32_t n)
{
    if (x >= misval || !ascending(cut, n))
        return misval;
    int32_t below = 0;
    while (below < n && cut[below] < x)
        below++;
    return below;
}

double ovmax(const double *x, int32_t n)
{
    double z = misval;
    for (int32_t i = 0; i < n; i++)
        if (x[i] < misval && (z >= misval || x[i] > z))
            z = x[i];
    return z;
}

double ovmin(const double *x, int32_t n)
{
    double z = misval;
    for (int32_t i = 0; i < n; i++)
        if (x[i] < z)
            z = x[i];
    return z;
}

double ovreldif(double x, double y)
{
    if (x >= misval || y >= misval)
        return x == y ? 0 : misval;
    return held(std::fabs(x - y) / (std::fabs(y) + 1));
}

// A product while that is short, so that results below 2^53 are exact.
double ovcomb(double n, double k)
{
    if (n >= misval || k >= misval || n < 0 || k < 0 || k > n || n != std::trunc(n) ||
        k != std::trunc(k))
        return misval;
    k = std::min(k, n - k);
    if (k > 4000) {
        long double l = lgammal(n + 1.0L) - lgammal(k + 1.0L) - lgammal(n - k + 1.0L);
        return held(double(expl(l)));
    }
    long double z = 1;
    for (double i = 1; i <= k; i++)
        z = z * (n - k + i) / i;
    return held(double(z < 0x1p63L ? roundl(z) : z));
}

double ovlnfactorial(double n)
{
    if (n >= misval || n < 0 || n != std::trunc(n))
        return misval;
    return ovlngamma(n + 1);
}

// Log of the absolute value of gamma, by the method of the C library (Sun's fdlibm: Hart et
// al., minimax approximations about the minimum at 1.4616, reflection below 0).
double ovlngamma(double x)
{
    if (x >= misval || (x <= 0 && x == std::trunc(x)))
        return misval;
    int sign;
    return held(lgamma_r(x, &sign));
}

static constexpr long double pi_l = 3.141592653589793238462643383279502884L;

// tan(pi x) and sin(pi x) with x first taken to within half of a whole number, exactly.
static long double near0(double x)
{
    return x - std::nearbyint(x);
}

// The zero of digamma as two doubles, and the Taylor coefficients about it: there the sum of
// the general method would cancel.
static constexpr double psizero = 1.4616321449683622, psizerolow = 9.5499954299656977152e-17;
static const long double psitaylor[] = {
    0.9676722454476211704274L,    -0.4427631689835921060929L,   0.2584997609556510106244L,
    -0.1639427054424065275043L,   0.1078240506912623657572L,    -0.07219956125645471092612L,
    0.04880428816414310722509L,   -0.03316112648484735929226L,  0.02259764823221810465962L,
    -0.0154247659049489591388L,   0.01053879161661217538812L,   -0.00720453438635686824097L,
    0.004926781395729853446354L,  -0.003369801655439328082793L, 0.002305126326734927836938L,
};

// Abramowitz and Stegun: recurrence 6.3.5 up to 12, asymptotic series 6.3.18, reflection
// 6.3.7.
double ovdigamma(double x)
{
    if (x >= misval || (x <= 0 && x == std::trunc(x)))
        return misval;
    if (std::fabs(x - psizero) < .06) {
        long double d = (x - psizero) - static_cast<long double>(psizerolow), sum = 0;
        for (size_t i = sizeof psitaylor / sizeof *psitaylor; i-- > 0;)
            sum = (sum + psitaylor[i]) * d;
        return double(sum);
    }
    long double z = x, add = 0;
    if (x < 0) {
        add = -pi_l / tanl(pi_l * near0(x));
        z = 1 - z;
    }
    for (; z < 12; z += 1)
        add -= 1 / z;
    static const long double b[] = {1 / 12.0L,      -1 / 120.0L, 1 / 252.0L, -1 / 240.0L,
                                    1 / 132.0L,     -691 / 32760.0L, 1 / 12.0L,
                                    -3617 / 8160.0L};
    long double w = 1 / (z * z), sum = 0;
    for (size_t i = sizeof b / sizeof *b; i-- > 0;)
        sum = (sum + b[i]) * w;
    return held(double(logl(z) - .5L / z - sum + add));
}

// Abramowitz and Stegun: recurrence 6.4.6 up to 12, asymptotic series 6.4.12, reflection
// 6.4.7.
double ovtrigamma(double x)
{
    if (x >= misval || (x <= 0 && x == std::trunc(x)))
        return misval;
    long double z = x, add = 0, sign = 1;
    if (x < 0) {
        long double s = sinl(pi_l * near0(x));
        add = pi_l * pi_l / (s * s);
        sign = -1;
        z = 1 - z;
    }
    for (; z < 12; z += 1)
        add += sign / (z * z);
    static const long double b[] = {1 / 6.0L,  -1 / 30.0L,     1 / 42.0L, -1 / 30.0L,
                                    5 / 66.0L, -691 / 2730.0L, 7 / 6.0L,  -3617 / 510.0L};
    long double w = 1 / (z * z), sum = 0;
    for (size_t i = sizeof b / sizeof *b; i-- > 0;)
        sum = (sum + b[i]) * w;
    return held(double(sign * (1 / z + .5L * w + sum / z) + add));
}

double ovlogit(double p)
{
    if (!(p > 0 && p < 1))
        return misval;
    // About one half the odds are near 1, and their excess is what counts.
    return p > .25 && p < .75 ? std::log1p((2 * p - 1) / (1 - p)) : std::log(p / (1 - p));
}

double ovinvlogit(double x)
{
    if (x >= misval)
        return misval;
    double e = std::exp(-std::fabs(x));
    return (x < 0 ? e : 1) / (1 + e);
}

double ovcloglog(double p)
{
    return p > 0 && p < 1 ? std::log(-std::log1p(-p)) : misval;
}

double ovinvcloglog(double x)
{
    return x >= misval ? misval : -std::expm1(-std::exp(x));
}
