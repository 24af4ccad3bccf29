#include "stats/moptkern.h"
#include "core/mem.h"
#include "core/missing.h"
#include "stats/normal.h"
#include <algorithm>
#include <cmath>

namespace
{

constexpr int64_t rows_a_block = 64;
constexpr int64_t rows_a_poll = 1024;

bool poll(int64_t i)
{
    return i % rows_a_poll == 0 && fault_poll();
}

// total + carry takes part, and part becomes 0.
void carry_over(double *total, double *carry, double *part, int64_t n)
{
    for (int64_t k = 0; k < n; k++) {
        double t = total[k] + part[k];
        carry[k] += std::fabs(total[k]) >= std::fabs(part[k]) ? (total[k] - t) + part[k]
                                                              : (part[k] - t) + total[k];
        total[k] = t;
        part[k] = 0;
    }
}

// n times term(i, part), which adds observation i to part; the sums of blocks carried over.
template <class F>
bool in_blocks(int64_t n, bool plain, double *out, double *work, int64_t size, F term)
{
    double *carry = work, *part = plain ? out : work + size;
    std::fill(out, out + size, 0.0);
    std::fill(work, work + 2 * size, 0.0);
    for (int64_t i = 0; i < n; i++) {
        if (poll(i))
            return false;
        term(i, part);
        if (!plain && (i + 1) % rows_a_block == 0)
            carry_over(out, carry, part, size);
    }
    if (!plain) {
        carry_over(out, carry, part, size);
        for (int64_t k = 0; k < size; k++)
            out[k] += carry[k];
    }
    for (int64_t k = 0; k < size; k++)
        out[k] = std::isfinite(out[k]) && std::fabs(out[k]) < misval ? out[k] : misval;
    return true;
}

void add_row(const mopt_eq &e, int64_t i, double f, double *to)
{
    const double *x = e.x + i * e.k;
    for (int32_t j = 0; j < e.k; j++)
        to[j] += f * x[j];
    if (e.cons)
        to[e.k] += f;
}

} // namespace

bool mopt_xb(const mopt_eq &e, const double *b, double *out, int64_t stride)
{
    for (int64_t i = 0; i < e.n; i++) {
        if (poll(i))
            return false;
        const double *x = e.x + i * e.k;
        double z = e.cons ? b[e.k] : 0;
        for (int32_t j = 0; j < e.k; j++)
            z += x[j] * b[j];
        out[i * stride] = std::fabs(z) < misval ? z : misval;
    }
    return true;
}

bool mopt_vecsum(const mopt_eq &e, const double *s, const double *w, bool plain, double *out,
                 double *work)
{
    return in_blocks(e.n, plain, out, work, e.kc(),
                     [&](int64_t i, double *part) { add_row(e, i, w ? s[i] * w[i] : s[i], part); });
}

bool mopt_matsum(const mopt_eq &x, const mopt_eq &y, const double *s, const double *w, bool plain,
                 double *out, double *work)
{
    int32_t kx = x.kc(), ky = y.kc();
    bool same = x.x == y.x && x.k == y.k && x.cons == y.cons;
    bool good = in_blocks(x.n, plain, out, work, int64_t(kx) * ky, [&](int64_t i, double *part) {
        double f = w ? s[i] * w[i] : s[i];
        const double *a = x.x + i * x.k, *b = y.x + i * y.k;
        for (int32_t r = 0; r < kx; r++, part += ky) {
            double fa = r < x.k ? f * a[r] : f;
            int32_t most = same ? r + 1 : ky, vars = std::min(most, y.k);
            for (int32_t c = 0; c < vars; c++)
                part[c] += fa * b[c];
            if (most > y.k)
                part[y.k] += fa;
        }
    });
    for (int32_t r = 0; same && r < kx; r++)
        for (int32_t c = 0; c < r; c++)
            out[c * ky + r] = out[r * ky + c];
    return good;
}

bool mopt_bysum(const mopt_eq &x, const mopt_eq &y, const double *g, const double *a,
                const double *b, const double *c, double *out, double *work)
{
    int32_t kx = x.kc(), ky = y.kc();
    double *u = work, *v = work + kx;
    std::fill(out, out + int64_t(kx) * ky, 0.0);
    std::fill(work, work + kx + ky, 0.0);
    for (int64_t i = 0; i < x.n; i++) {
        if (poll(i))
            return false;
        add_row(x, i, b[i], u);
        add_row(y, i, c[i], v);
        if (i + 1 < x.n && g[i + 1] == g[i])
            continue;
        for (int32_t r = 0; r < kx; r++)
            for (int32_t q = 0; q < ky; q++)
                out[int64_t(r) * ky + q] += a[i] * u[r] * v[q];
        std::fill(work, work + kx + ky, 0.0);
    }
    for (int64_t k = 0; k < int64_t(kx) * ky; k++)
        out[k] = std::fabs(out[k]) < misval ? out[k] : misval;
    return true;
}

// ---- one observation

namespace
{

double logistic(double z)
{
    return z >= 0 ? 1 / (1 + std::exp(-z)) : std::exp(z) / (1 + std::exp(z));
}
double log1pexp(double z)
{
    return z > 0 ? z + std::log1p(std::exp(-z)) : std::log1p(std::exp(z));
}

double obs_logit(double y, const double *eta, double *s, double *h)
{
    double p = logistic(*eta);
    *s = y != 0 ? logistic(-*eta) : -p;
    *h = -p * logistic(-*eta);
    return -log1pexp(y != 0 ? -*eta : *eta);
}

double obs_probit(double y, const double *eta, double *s, double *h)
{
    double q = y != 0 ? 1 : -1, z = q * *eta, lnf = ovlnnormal(z);
    double mills = std::exp(ovlnnormalden3(z, 0, 1) - lnf);
    *s = q * mills;
    *h = -mills * (mills + z);
    return lnf;
}

// The chance to lie from a to b, its logarithm, and that one's derivatives by a and b. An end
// may be infinite.
struct interval {
    double ln, da, db, daa, dab, dbb;
};

interval logistic_interval(double a, double b)
{
    double r = std::isinf(b - a) ? 0 : 1 / std::expm1(b - a), rr = r * (1 + r);
    double fa = logistic(a), fb = logistic(b);
    double ln = -(std::isinf(b) ? 0 : log1pexp(-b)) - (std::isinf(a) ? 0 : log1pexp(a));
    if (!std::isinf(b - a))
        ln += std::log(-std::expm1(a - b));
    return {ln, -r - fa, r + logistic(-b), -rr - fa * logistic(-a), rr, -rr - fb * logistic(-b)};
}

interval normal_interval(double a, double b)
{
    bool turned = a + b > 0; // the left tail holds the digits
    if (turned) {
        std::swap(a, b);
        a = -a;
        b = -b;
    }
    double ln = std::isinf(b) ? 0 : ovlnnormal(b), ga = 0, gb = 0;
    if (!std::isinf(a))
        ln += std::log1p(-std::exp(ovlnnormal(a) - ln));
    if (!std::isinf(a))
        ga = std::exp(ovlnnormalden3(a, 0, 1) - ln);
    if (!std::isinf(b))
        gb = std::exp(ovlnnormalden3(b, 0, 1) - ln);
    double daa = ga == 0 ? 0 : ga * (a - ga), dbb = gb == 0 ? 0 : -gb * (b + gb);
    if (turned)
        return {ln, -gb, ga, dbb, ga * gb, daa};
    return {ln, -ga, gb, daa, ga * gb, dbb};
}

double obs_ordered(bool probit, double y, const double *eta, int32_t m, double *s, double *h)
{
    const double *cut = eta + 1;
    int32_t cuts = m - 1;
    if (!(y >= 1 && y <= m) || y != std::floor(y))
        return misval;
    auto j = int32_t(y);
    double low = j > 1 ? cut[j - 2] - eta[0] : -HUGE_VAL;
    double high = j <= cuts ? cut[j - 1] - eta[0] : HUGE_VAL;
    if (!(low < high))
        return misval;
    interval z = probit ? normal_interval(low, high) : logistic_interval(low, high);
    std::fill(s, s + m, 0.0);
    std::fill(h, h + m * (m + 1) / 2, 0.0);
    s[0] = -(z.da + z.db);
    h[0] = z.daa + 2 * z.dab + z.dbb;
    auto at = [h](int32_t r, int32_t c) -> double & { return h[r * (r + 1) / 2 + c]; };
    if (j > 1) {
        s[j - 1] = z.da;
        at(j - 1, 0) = -(z.daa + z.dab);
        at(j - 1, j - 1) = z.daa;
    }
    if (j <= cuts) {
        s[j] = z.db;
        at(j, 0) = -(z.dbb + z.dab);
        at(j, j) = z.dbb;
        if (j > 1)
            at(j, j - 1) = z.dab;
    }
    return z.ln;
}

double obs_mlogit(double y, const double *eta, int32_t m, double *s, double *h)
{
    if (!(y >= 0 && y <= m) || y != std::floor(y))
        return misval;
    auto j = int32_t(y);
    double top = 0, sum = 0;
    for (int32_t k = 0; k < m; k++)
        top = std::max(top, eta[k]);
    for (int32_t k = 0; k < m; k++)
        sum += s[k] = std::exp(eta[k] - top);
    sum += std::exp(-top);
    for (int32_t k = 0; k < m; k++)
        s[k] /= sum;
    for (int32_t r = 0; r < m; r++)
        for (int32_t c = 0; c <= r; c++)
            *h++ = s[r] * (s[c] - (r == c ? 1 : 0));
    for (int32_t k = 0; k < m; k++)
        s[k] = (k + 1 == j ? 1 : 0) - s[k];
    return (j ? eta[j - 1] : 0) - top - std::log(sum);
}

} // namespace

double mopt_obs(mopt_model model, double y, const double *eta, int32_t m, double *s, double *h)
{
    switch (model) {
    case MOPT_LOGIT: return obs_logit(y, eta, s, h);
    case MOPT_PROBIT: return obs_probit(y, eta, s, h);
    case MOPT_OLOGIT: return obs_ordered(false, y, eta, m, s, h);
    case MOPT_OPROBIT: return obs_ordered(true, y, eta, m, s, h);
    case MOPT_MLOGIT: return obs_mlogit(y, eta, m, s, h);
    }
    return misval;
}

// ---- all observations

namespace
{

// Which coefficients an index has: kc of the equation, or one of its own.
struct slot {
    int32_t at, width;
};

slot slot_of(const mopt_data &d, bool ordered, int32_t q)
{
    if (!ordered)
        return {q * d.e.kc(), d.e.kc()};
    return q ? slot{d.e.k + q - 1, 1} : slot{0, d.e.k};
}

void indices(const mopt_data &d, bool ordered, int64_t i, double *x, double *eta)
{
    std::copy(d.e.x + i * d.e.k, d.e.x + (i + 1) * d.e.k, x);
    for (int32_t q = 0; q < d.m; q++) {
        slot at = slot_of(d, ordered, q);
        eta[q] = 0;
        if (ordered && q)
            eta[q] = d.b[at.at];
        else {
            for (int32_t c = 0; c < at.width; c++)
                eta[q] += x[c] * d.b[at.at + c];
            if (d.off)
                eta[q] += d.off[d.noff == 1 ? 0 : i];
        }
    }
}

// One observation's share of the gradient and of the lower triangle of second derivatives.
void add_derivatives(const mopt_data &d, bool ordered, int32_t todo, double w, const double *x,
                     const double *s, const double *hh, double *g, double *h)
{
    const double one = 1;
    int32_t p = d.params();
    for (int32_t q = 0; q < d.m; q++) {
        slot a = slot_of(d, ordered, q);
        const double *xa = ordered && q ? &one : x;
        for (int32_t c = 0; c < a.width; c++)
            g[a.at + c] += w * s[q] * xa[c];
        for (int32_t r = 0; todo > 1 && r <= q; r++) {
            double z = w * hh[q * (q + 1) / 2 + r];
            if (z == 0)
                continue;
            slot b = slot_of(d, ordered, r);
            const double *xb = ordered && r ? &one : x;
            for (int32_t c = 0; c < a.width; c++) {
                double zc = z * xa[c], *to = h + int64_t(a.at + c) * p + b.at;
                for (int32_t e = 0, most = q == r ? c + 1 : b.width; e < most; e++)
                    to[e] += zc * xb[e];
            }
        }
    }
}

} // namespace

bool mopt_total(const mopt_data &d, int32_t todo, double *f, double *g, double *h, double *work)
{
    bool ordered = d.model == MOPT_OLOGIT || d.model == MOPT_OPROBIT;
    int32_t m = d.m, p = d.params();
    double *eta = work, *s = eta + m, *hh = s + m, *x = hh + m * (m + 1) / 2;
    double sum = 0, carry = 0;
    if (todo > 0)
        std::fill(g, g + p, 0.0);
    if (todo > 1)
        std::fill(h, h + int64_t(p) * p, 0.0);
    if (!ordered && d.e.cons)
        x[d.e.k] = 1;
    for (int64_t i = 0; i < d.e.n; i++) {
        if (poll(i))
            return false;
        double w = d.w ? d.w[d.nw == 1 ? 0 : i] : 1;
        indices(d, ordered, i, x, eta);
        double ln = mopt_obs(d.model, d.y[i], eta, m, s, hh);
        if (!(std::fabs(ln) < misval)) {
            *f = misval;
            return true;
        }
        double part = w * ln;
        carry_over(&sum, &carry, &part, 1);
        if (todo > 0)
            add_derivatives(d, ordered, todo, w, x, s, hh, g, h);
    }
    for (int32_t r = 0; todo > 1 && r < p; r++)
        for (int32_t c = 0; c < r; c++)
            h[int64_t(c) * p + r] = h[int64_t(r) * p + c];
    *f = sum + carry;
    return true;
}
