// stats/distnc.cpp - noncentral distributions as Poisson mixtures.
//
//   mixtures   D. Benton and K. Krishnamoorthy, Computing discrete mixtures of continuous
//              distributions, Computational Statistics and Data Analysis 43 (2003); but the
//              sum runs about the largest product, which in the tails is far from the largest
//              weight, and in the direction in which the recurrence only adds
#include "stats/distcore.h"
#include "stats/distquad.h"

static constexpr double highest_L = 1e7;

// A mixture over the first parameter a + j with Poisson weights of the given mean.
struct mixture {
    char kind;  // c lower tail of gamma; b lower, u upper tail of beta; d its density over odds
    double a, b;
    wide x, y, lambda;  // as in a beta point; x alone for gamma
    double mean;
};

static bool is_gamma(const mixture *m) { return m->kind == 'c'; }

// log of the front factor at j.
static wide front(const mixture *m, double j)
{
    if (is_gamma(m))
        return dist_gammafront(m->a + j, double(m->x));
    betapoint p{m->a + j, m->b, m->x, m->y, m->lambda + j * m->y};
    return dist_betafront(&p);
}

static bool part(const mixture *m, double j, double *z)
{
    tails t;
    if (m->kind == 'd') {
        *z = double(std::exp(front(m, j)));
        return true;
    }
    if (is_gamma(m)) {
        if (!dist_gamma(m->a + j, double(m->x), &t))
            return false;
    } else {
        betapoint p{m->a + j, m->b, m->x, m->y, m->lambda + j * m->y};
        if (!dist_betatails(&p, &t))
            return false;
    }
    *z = m->kind == 'u' ? t.upper : t.lower;
    return true;
}

// The weight of j, in extended range: in the tails it may lie below the smallest double.
static wide weight(const mixture *m, double j)
{
    return std::exp(-dist_lnfac_rest(j) - dist_deviance(j, m->mean, m->mean - wide(j)));
}

// Weight times part at j.
static bool product(const mixture *m, double j, wide *out)
{
    double z;
    if (m->kind == 'd') {
        *out = weight(m, j) * std::exp(front(m, j));
        return true;
    }
    if (!part(m, j, &z))
        return false;
    *out = weight(m, j) * z;
    return true;
}

// The products rise to one peak and fall from it: finds it between low and high by halving.
static bool peak(const mixture *m, double low, double high, double *at)
{
    while (low < high) {
        double mid = std::floor((low + high) / 2);
        wide z, next;
        if (!product(m, mid, &z) || !product(m, mid + 1, &next) || fault_poll())
            return false;
        bool rises = next > z;
        if (z == 0 && next == 0)  // underflow: of weights far from their mode, or of the parts
            rises = weight(m, mid) == 0 ? mid < m->mean : m->kind == 'u';
        if (rises)
            low = mid + 1;
        else
            high = mid;
    }
    *at = low;
    return true;
}

// The first j on the way in steps of dir from the peak where the product no longer counts.
static bool far_end(const mixture *m, double from, double dir, wide least, double *at)
{
    double j = from, step = 8;
    for (wide z = HUGE_VAL; z > least; step *= 1.5) {
        j = std::fmax(0, j + dir * std::floor(step));
        if (j == 0 && dir < 0)
            break;
        if (!product(m, j, &z) || fault_poll())
            return false;
    }
    *at = j;
    return true;
}

static double mix(const mixture *m)
{
    double mode = std::floor(m->mean), spread = std::sqrt(m->mean) * 200 + 5000, at, z;
    bool down = m->kind == 'c' || m->kind == 'b';  // parts fall with j, and add on the way down
    wide most;
    if (!peak(m, m->kind == 'u' ? mode : 0, down ? mode : mode + spread, &at)
        || !product(m, at, &most))
        return misval;
    double first, last;
    wide least = most * 1e-21L;
    if (!far_end(m, at, down ? 1 : -1, least, &first) || !far_end(m, at, down ? -1 : 1, least, &last)
        || !part(m, first, &z))
        return misval;
    wide w = weight(m, first), sum = 0, term = std::exp(front(m, first));
    wide value = m->kind == 'd' ? term : wide(z);
    if (m->kind != 'd')
        term /= m->a + first;
    for (double j = first;; j += down ? -1 : 1) {
        sum += w * value;
        if (j == last)
            break;
        if ((int64_t(j) & 1023) == 0 && fault_poll())
            return misval;
        // The term of j - 1 joins the part of j to that of j - 1.
        wide a = m->a + j;
        if (down) {
            term *= is_gamma(m) ? a / m->x : a / (m->x * (a + m->b - 1));
            value += term;
            w *= j / m->mean;
        } else if (m->kind == 'u') {
            value += term;
            term *= m->x * (a + m->b) / (a + 1);
            w *= m->mean / (j + 1);
        } else {
            term *= m->x * (a + m->b) / a;
            value = term;
            w *= m->mean / (j + 1);
        }
    }
    return m->kind == 'd' ? double(sum) : std::fmin(1, double(sum));
}

// Without noncentrality there is one part.
static double mixed(mixture m, double L)
{
    double z;
    m.mean = L / 2;
    if (L == 0)
        return part(&m, 0, &z) ? z : misval;
    return mix(&m);
}

static bool good(double df) { return df >= 2e-10 && df <= 1e17; }
static bool good_L(double L) { return L >= 0 && L <= highest_L; }
static bool inside(double p) { return p > 0 && p < 1; }

// ---- chi-squared

double nchi2(double df, double L, double x)
{
    if (!good(df) || !good_L(L) || !(x < misval))
        return misval;
    return x <= 0 ? 0 : mixed({'c', df / 2, 0, x / 2, 0, 0, 0}, L);
}

double invnchi2(double df, double L, double p)
{
    if (!good(df) || !good_L(L) || !inside(p))
        return p == 0 && good(df) && good_L(L) ? 0 : misval;
    return dist_root([=](double x) { return nchi2(df, L, x); }, p, true, df + L, 1e300);
}

double npnchi2(double df, double x, double p)
{
    if (!good(df) || !(x > 0 && x < misval) || !inside(p))
        return misval;
    double most = nchi2(df, 0, x);
    if (most >= misval || most < p)
        return misval;
    if (most == p)
        return 0;
    return dist_root([=](double L) { return nchi2(df, L, x); }, p, false, std::fmax(1, x - df),
                     highest_L);
}

// ---- beta

static mixture beta_mixture(char kind, double a, double b, double x)
{
    betapoint p = dist_betapoint(a, b, x);
    return {kind, a, b, p.x, p.y, p.lambda, 0};
}

double nibeta(double a, double b, double L, double x)
{
    if (!good(a) || !good(b) || !good_L(L) || !(x < misval))
        return misval;
    return x <= 0 ? 0 : x >= 1 ? 1 : mixed(beta_mixture('b', a, b, x), L);
}

double nbetaden(double a, double b, double L, double x)
{
    if (!good(a) || !good(b) || !good_L(L) || !(x < misval))
        return misval;
    if (x <= 0 || x >= 1)
        return 0;
    double z = mixed(beta_mixture('d', a, b, x), L);
    return z >= misval ? misval : double(z / (x * (1 - static_cast<wide>(x))));
}

double invnibeta(double a, double b, double L, double p)
{
    if (!good(a) || !good(b) || !good_L(L) || !(p >= 0 && p <= 1))
        return misval;
    if (!inside(p))
        return p;
    return dist_root([=](double x) { return nibeta(a, b, L, x); }, p, true,
                     (a + L / 2) / (a + b + L / 2), 1);
}

// ---- F

static mixture f_mixture(char kind, double df1, double df2, double f)
{
    wide n = static_cast<wide>(df1) * f, sum = n + df2;
    return {kind, df1 / 2, df2 / 2, n / sum, df2 / sum,
            df1 / sum * df2 * (1 - static_cast<wide>(f)) / 2, 0};
}

double nftail(double df1, double df2, double L, double f)
{
    if (!good(df1) || !good(df2) || !good_L(L) || !(f < misval))
        return misval;
    return f <= 0 ? 1 : mixed(f_mixture('u', df1, df2, f), L);
}

double nfden(double df1, double df2, double L, double f)
{
    if (!good(df1) || !good(df2) || !good_L(L) || !(f < misval))
        return misval;
    if (f <= 0)
        return 0;
    double z = mixed(f_mixture('d', df1, df2, f), L);
    return z >= misval ? misval : z / f;
}

double invnftail(double df1, double df2, double L, double p)
{
    if (!good(df1) || !good(df2) || !good_L(L) || !inside(p))
        return p == 1 && good(df1) && good(df2) && good_L(L) ? 0 : misval;
    return dist_root([=](double f) { return nftail(df1, df2, L, f); }, p, false, 1 + L / df1,
                     1e300);
}
