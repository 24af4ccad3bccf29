// The recursive simulator of Geweke, Hajivassiliou and Keane (Geweke, Computing Science and
// Statistics 23 (1991) 571; Hajivassiliou, McFadden and Ruud, Journal of Econometrics 72 (1996)
// 85): each normal is drawn below its bound given those before, and the probability is the mean
// product of the chances to lie below. Its derivatives are those of the simulated value itself,
// collected backwards through the recursion; from the root to the variances they go as in Murray,
// arXiv:1602.07527.
#include "stats/ghk.h"
#include "core/mem.h"
#include "core/missing.h"
#include "stats/normal.h"
#include <algorithm>
#include <cmath>

// The digits of the fraction move from left to right: add one to the first, carry to the right
// (Struckmeier, Journal of Computational and Applied Mathematics 61 (1995) 29).
bool halton_points(double *out, int64_t n, int32_t q, double u)
{
    int32_t digits = 0, digit[64];
    int64_t unit = 1;
    while (unit <= (int64_t(1) << 53) / q) {
        unit *= q;
        digits++;
    }
    auto at = int64_t(std::floor(u * double(unit) + 0.5));
    int64_t rest = at = std::min(at, unit - 1);
    for (int32_t k = digits - 1; k >= 0; k--) {
        digit[k] = int32_t(rest % q);
        rest /= q;
    }
    for (int64_t i = 0; i < n; i++) {
        if (i % 4096 == 0 && fault_poll())
            return false;
        int64_t step = unit / q;
        for (int32_t k = 0; k < digits; k++, step /= q) {
            if (++digit[k] < q) {
                at += step;
                break;
            }
            digit[k] = 0;
            at -= step * (q - 1);
        }
        out[i] = double(at) / double(unit);
    }
    return true;
}

bool ghk_root(const double *v, int32_t m, double *c)
{
    for (int32_t i = 0; i < m; i++)
        for (int32_t j = 0; j < m; j++) {
            double z = v[i * m + j];
            for (int32_t k = 0; k < j; k++)
                z -= c[i * m + k] * c[j * m + k];
            if (j > i)
                c[i * m + j] = 0;
            else if (j < i)
                c[i * m + j] = z / c[j * m + j];
            else if (!(z > 1e-14 * v[i * m + i]) || !(v[i * m + i] < misval))
                return false;
            else
                c[i * m + i] = std::sqrt(z);
        }
    return true;
}

int64_t ghk_work(int32_t m)
{
    return 5 * int64_t(m) + 2 * int64_t(m) * m;
}

namespace
{

struct pass { // one draw
    double *t, *p, *z, *u, *zbar;
};

double forwards(const ghk_plan &g, const pass &w, const double *x, const double *c,
                const double *draw, bool other)
{
    int32_t m = g.m;
    double prob = 1;
    for (int32_t j = 0; j < m; j++) {
        double s = x[j];
        w.p[j] = 1;
        if (s < misval) {
            for (int32_t k = 0; k < j; k++)
                s -= c[j * m + k] * w.z[k];
            w.t[j] = s / c[j * m + j];
            w.p[j] = ovnormal(w.t[j]);
        }
        prob *= w.p[j];
        if (j + 1 == m || prob == 0)
            break;
        w.u[j] = other ? 1 - draw[j] : draw[j];
        double a = std::clamp(w.u[j] * w.p[j], 1e-300, 1 - 1.1e-16);
        w.z[j] = ovinvnormal(a);
    }
    return prob;
}

void backwards(int32_t m, const pass &w, const double *x, const double *c, double prob,
               double *xbar, double *cbar)
{
    std::fill(w.zbar, w.zbar + m, 0.0);
    for (int32_t j = m - 1; j >= 0; j--) {
        if (!(x[j] < misval))
            continue; // what it draws does not depend on anything
        double den = ovnormalden(w.t[j]), tbar = prob * den / w.p[j];
        if (j + 1 < m) {
            double at = ovnormalden(w.z[j]);
            if (at > 0)
                tbar += w.zbar[j] * w.u[j] * den / at;
        }
        double over = tbar / c[j * m + j];
        xbar[j] += over;
        cbar[j * m + j] -= over * w.t[j];
        for (int32_t k = 0; k < j; k++) {
            cbar[j * m + k] -= over * w.z[k];
            w.zbar[k] -= over * c[j * m + k];
        }
    }
}

// cbar by the root becomes dv by the variances; s is scratch of m by m.
void to_variances(int32_t m, const double *c, const double *cbar, double *s, double *dv)
{
    for (int32_t i = 0; i < m; i++) // s = the symmetric part of root' cbar
        for (int32_t j = 0; j <= i; j++) {
            double z = 0;
            for (int32_t k = i; k < m; k++)
                z += c[k * m + i] * cbar[k * m + j];
            s[i * m + j] = s[j * m + i] = z;
        }
    for (int32_t turn = 0; turn < 2; turn++) { // s = root'^-1 s, then its transpose, twice
        for (int32_t j = 0; j < m; j++)
            for (int32_t i = m - 1; i >= 0; i--) {
                double z = s[i * m + j];
                for (int32_t k = i + 1; k < m; k++)
                    z -= c[k * m + i] * s[k * m + j];
                s[i * m + j] = z / c[i * m + i];
            }
        for (int32_t i = 0; i < m; i++)
            for (int32_t j = 0; j < i; j++)
                std::swap(s[i * m + j], s[j * m + i]);
    }
    for (int32_t j = 0; j < m; j++)
        for (int32_t i = j; i < m; i++)
            *dv++ = s[i * m + j] * (i == j ? 0.5 : 1);
}

} // namespace

double ghk_probability(const ghk_plan &g, const double *x, const double *c, double *dx, double *dv)
{
    int32_t m = g.m;
    double *w = g.work;
    pass at{w, w + m, w + 2 * m, w + 3 * m, w + 4 * m};
    double *cbar = w + 5 * m, *s = cbar + m * m, sum = 0;
    if (g.derivatives) {
        std::fill(dx, dx + m, 0.0);
        std::fill(cbar, cbar + m * m, 0.0);
    }
    int64_t draws = 0;
    for (int64_t i = 0; i < g.points; i++)
        for (int32_t other = 0; other <= int32_t(g.antithetic); other++, draws++) {
            double prob = forwards(g, at, x, c, g.u + i * (m - 1), other);
            sum += prob;
            if (g.derivatives && prob > 0)
                backwards(m, at, x, c, prob, dx, cbar);
        }
    double one = 1 / double(draws);
    if (g.derivatives) {
        for (int32_t j = 0; j < m; j++)
            dx[j] *= one;
        for (int32_t k = 0; k < m * m; k++)
            cbar[k] *= one;
        to_variances(m, c, cbar, s, dv);
    }
    return sum * one;
}
