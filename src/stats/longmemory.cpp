#include "stats/longmemory.h"
#include "core/mem.h"
#include <algorithm>
#include <cmath>
#include <memory>

bool frac_difference(const double *x, double *y, int64_t n, int64_t stride, double d, double *coef)
{
    // Hosking, Biometrika 68 (1981) 165: each coefficient from the one before.
    for (int64_t j = 0; j < n; j++)
        coef[j] = j ? coef[j - 1] * ((double(j) - 1 - d) / double(j)) : 1;
    for (int64_t t = 0; t < n; t++) {
        if (t % 64 == 0 && fault_poll())
            return false;
        double z = 0;
        for (int64_t j = t; j >= 0; j--) // the small ones first
            z += coef[j] * x[(t - j) * stride];
        y[t * stride] = z;
    }
    return true;
}

namespace
{

using block = std::unique_ptr<double[], void (*)(void *)>;

block numbers(int64_t n)
{
    return {static_cast<double *>(safemalloc(size_t(n) * sizeof(double))), safefree};
}

// Whether 1 - a[0] z - ... has its roots outside the unit circle: the partial autocorrelations
// of a stationary process lie within -1 and 1 (Durbin-Levinson, run backwards). a is spoilt.
bool stationary(double *a, int32_t p, double *w)
{
    for (; p > 0; p--) {
        double r = a[p - 1];
        if (!(std::fabs(r) < 1))
            return false;
        for (int32_t i = 0; i < p - 1; i++)
            w[i] = (a[i] + r * a[p - 2 - i]) / (1 - r * r);
        std::copy(w, w + p - 1, a);
    }
    return true;
}

// n equations by elimination with row exchanges; m is n by n + 1. False when singular.
bool solve(double *m, int32_t n)
{
    int32_t w = n + 1;
    for (int32_t k = 0; k < n; k++) {
        int32_t best = k;
        for (int32_t i = k + 1; i < n; i++)
            if (std::fabs(m[i * w + k]) > std::fabs(m[best * w + k]))
                best = i;
        if (m[best * w + k] == 0)
            return false;
        if (best != k)
            std::swap_ranges(m + k * w, m + k * w + w, m + best * w);
        for (int32_t i = 0; i < n; i++) {
            double f = i == k ? 0 : m[i * w + k] / m[k * w + k];
            for (int32_t j = k; f != 0 && j < w; j++)
                m[i * w + j] -= f * m[k * w + j];
        }
    }
    for (int32_t k = 0; k < n; k++)
        m[k * w + n] /= m[k * w + k];
    return true;
}

// Autocovariances of the short memory part, 0 to p, with innovations of variance 1: the
// equations of Brockwell and Davis, Time Series, 2nd ed., 3.3.8. m holds (p + 1) (p + 2) numbers.
bool arma_start(const double *ar, int32_t p, const double *ma, int32_t q, double *psi, double *m)
{
    psi[0] = 1;
    for (int32_t j = 1; j <= q; j++) {
        psi[j] = ma[j - 1];
        for (int32_t i = 1; i <= std::min(j, p); i++)
            psi[j] += ar[i - 1] * psi[j - i];
    }
    int32_t w = p + 2;
    std::fill(m, m + (p + 1) * w, 0.0);
    for (int32_t k = 0; k <= p; k++) {
        m[k * w + k] += 1;
        for (int32_t i = 1; i <= p; i++)
            m[k * w + std::abs(k - i)] -= ar[i - 1];
        for (int32_t j = k; j <= q; j++)
            m[k * w + p + 1] += (j ? ma[j - 1] : 1) * psi[j - k];
    }
    return solve(m, p + 1);
}

} // namespace

// The autocovariances of the two parts convolved (Bertelli and Caporin, Journal of Time Series
// Analysis 23 (2002) 503); the short memory ones die out, and are taken as far as they count.
int32_t arfima_autocov(const double *ar, int32_t p, const double *ma, int32_t q, double d,
                       double s2, int64_t n, double *out)
{
    constexpr int64_t most = 2000000;
    block a = numbers(2 * int64_t(p) + 2), psi = numbers(int64_t(q) + 1),
          m = numbers((int64_t(p) + 1) * (p + 2));
    if (!a || !psi || !m)
        return -1;
    std::copy(ar, ar + p, a.get());
    if (!(d < 0.5 && d > -1) || !stationary(a.get(), p, a.get() + p) ||
        !arma_start(ar, p, ma, q, psi.get(), m.get()))
        return 0;
    // How far: past the moving average, until p in a row are negligible.
    int64_t room = std::max<int64_t>(int64_t(p) + q + 1, 1024), far = 0;
    block g = numbers(room);
    if (!g)
        return -1;
    for (int64_t k = 0, small = 0;; k++) {
        if (k == most)
            return 0;
        if (k == room) {
            block more = numbers(room * 2);
            if (!more)
                return -1;
            std::copy(g.get(), g.get() + room, more.get());
            g.swap(more);
            room *= 2;
        }
        if (k <= p)
            g[k] = m[k * (p + 2) + p + 1];
        else {
            double z = 0;
            for (int32_t i = 1; i <= p; i++)
                z += ar[i - 1] * g[k - i];
            for (int64_t j = k; j <= q; j++)
                z += ma[j - 1] * psi[j - k];
            g[k] = z;
        }
        far = k;
        small = k > std::max(p, q) && std::fabs(g[k]) <= 1e-18 * std::fabs(g[0]) ? small + 1 : 0;
        if (small > p)
            break;
    }
    block f = numbers(n + far + 1);
    if (!f)
        return -1;
    f[0] = s2 * std::exp(std::lgamma(1 - 2 * d) - 2 * std::lgamma(1 - d));
    for (int64_t k = 1; k < n + far + 1; k++)
        f[k] = f[k - 1] * ((double(k) - 1 + d) / (double(k) - d));
    for (int64_t k = 0; k < n; k++) {
        if (k % 64 == 0 && fault_poll())
            return -1;
        double z = g[0] * f[k];
        for (int64_t h = 1; h <= far; h++)
            z += g[h] * (f[k + h] + f[std::abs(k - h)]);
        out[k] = z;
    }
    return 1;
}
