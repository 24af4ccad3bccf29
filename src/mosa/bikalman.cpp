// The step of a Kalman filter that takes an observation in (Kalman 1960; Durbin and Koopman 2012,
// "Time Series Analysis by State Space Methods", 4.3 and, for missing elements, 4.10).
#include "mosa/bihandlers.h"
#include "mosa/lapack.h"
#include <algorithm>
#include <numbers>
#include <vector>

namespace
{

struct kf_step {
    int64_t k, m;                      // states, elements of y that are there
    std::unique_ptr<double[]> v, f, w; // m; m by m, then its lower root; m by k
};

// v = y - Z a, F = Z P Z' + H, W = Z P, of the rows of y that are there.
bool kf_prepare(kf_step &s, const matobj *a, const matobj *p, const matobj *y, const matobj *z,
                const matobj *h)
{
    int64_t k = s.k = a->rows, all = y->rows;
    auto rows = la_scratch<int64_t>(all);
    if (!rows)
        return false;
    s.m = 0;
    for (int64_t i = 0; i < all; i++)
        if (mo_re(y)[i] < misval)
            rows[size_t(s.m++)] = i;
    int64_t m = s.m;
    s.v = la_scratch<double>(m);
    s.f = la_scratch<double>(m * m);
    s.w = la_scratch<double>(m * k);
    if (!s.v || !s.f || !s.w)
        return false;
    for (int64_t i = 0; i < m; i++) {
        const double *row = mo_re(z) + rows[size_t(i)] * k;
        double e = mo_re(y)[rows[size_t(i)]];
        for (int64_t j = 0; j < k; j++)
            e -= row[j] * mo_re(a)[j];
        s.v[size_t(i)] = e;
        for (int64_t j = 0; j < k; j++) {
            double t = 0;
            for (int64_t l = 0; l < k; l++)
                t += row[l] * mo_re(p)[l * k + j];
            s.w[size_t(i * k + j)] = t;
        }
    }
    for (int64_t i = 0; i < m; i++)
        for (int64_t j = 0; j <= i; j++) {
            const double *row = mo_re(z) + rows[size_t(j)] * k;
            double t = mo_re(h)[rows[size_t(i)] * all + rows[size_t(j)]];
            for (int64_t l = 0; l < k; l++)
                t += s.w[size_t(i * k + l)] * row[l];
            s.f[size_t(i * m + j)] = t;
        }
    return true;
}

// F becomes its lower root L; W and v become L^-1 W and L^-1 v. False when F is not positive
// definite.
bool kf_solve(kf_step &s)
{
    int64_t m = s.m, k = s.k;
    double *f = s.f.get(), *w = s.w.get(), *v = s.v.get();
    for (int64_t i = 0; i < m; i++) {
        for (int64_t j = 0; j < i; j++) {
            double t = f[i * m + j];
            for (int64_t l = 0; l < j; l++)
                t -= f[i * m + l] * f[j * m + l];
            f[i * m + j] = t /= f[j * m + j];
            f[i * m + i] -= t * t;
            v[i] -= t * v[j];
            for (int64_t l = 0; l < k; l++)
                w[i * k + l] -= t * w[j * k + l];
        }
        if (!(f[i * m + i] > 0))
            return false;
        double d = f[i * m + i] = std::sqrt(f[i * m + i]);
        v[i] /= d;
        for (int64_t l = 0; l < k; l++)
            w[i * k + l] /= d;
    }
    return true;
}

bool kf_arguments(int32_t argc)
{
    for (int32_t i = 1; i <= 5; i++)
        if (!bi_isarray(bi_arg(argc, i)) || !bi_isreal(bi_arg(argc, i)))
            return false;
    const matobj *a = bi_arg(argc, 1), *p = bi_arg(argc, 2), *y = bi_arg(argc, 3),
                 *z = bi_arg(argc, 4), *h = bi_arg(argc, 5);
    if (a->cols != 1 || y->cols != 1)
        return bi_fail(3203);
    return (p->rows == a->rows && p->cols == a->rows && z->rows == y->rows && z->cols == a->rows &&
            h->rows == y->rows && h->cols == y->rows) ||
           bi_fail(3200);
}

} // namespace

// _kf_update_u(a, P, y, Z, H): the mean a and the variance P of a state after y = Z state + e,
// e of variance H, has been seen; missing elements of y say nothing. The answer is the log
// density of y. It, a and P are missing when the variance of y is not positive definite.
void bi_kf_update_u(int32_t argc)
{
    m_xeqerrid = "_kf_update_u()";
    if (!kf_arguments(argc))
        return;
    matobj *a = bi_arg(argc, 1), *p = bi_arg(argc, 2), *z = bi_arg(argc, 4), *h = bi_arg(argc, 5);
    kf_step s;
    if (!kf_prepare(s, a, p, bi_arg(argc, 3), z, h))
        return;
    bool bad = la_anymissing(a) || la_anymissing(p) || la_anymissing(z) || la_anymissing(h);
    if (bad || !kf_solve(s)) {
        fillwithmissing(a);
        fillwithmissing(p);
        la_scalar(argc, misval);
        return;
    }
    double logden = 0 - 0.5 * double(s.m) * std::log(2 * std::numbers::pi);
    for (int64_t i = 0; i < s.m; i++) {
        double v = s.v[size_t(i)];
        const double *w = s.w.get() + i * s.k;
        logden -= std::log(s.f[size_t(i * s.m + i)]) + v * v / 2;
        for (int64_t j = 0; j < s.k; j++) {
            mo_re(a)[j] += w[j] * v;
            for (int64_t l = 0; l < s.k; l++)
                mo_re(p)[j * s.k + l] -= w[j] * w[l];
        }
    }
    la_keep(mo_re(a), s.k);
    la_keep(mo_re(p), s.k * s.k);
    la_scalar(argc, la_kept(logden));
}
