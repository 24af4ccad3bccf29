// Quadrature, long memory, the hypergeometric series, quasi-random points, normal probabilities.
#include "mosa/bi_kern.h"
#include "mosa/bihandlers.h"
#include "stats/gaussnodes.h"
#include "stats/ghk.h"
#include "stats/longmemory.h"
#include <algorithm>
#include <cmath>
#include <complex>

// ---- Gaussian quadrature: n rows of a node and its weight

static void nodes(int32_t argc, const char *id, gauss_rule rule)
{
    m_xeqerrid = id;
    int32_t n;
    double alpha = 0;
    if (!bi_int(bi_arg(argc, 1), 1, gauss_most, &n) || (argc > 1 && !bi_real(m_arg(0), &alpha)))
        return;
    if (!(alpha > -1 && alpha <= 1000)) {
        m_xrc = 3300;
        return;
    }
    bi_new r(n, 2);
    bi_doubles work(3 * int64_t(n));
    if (!r || !work)
        return;
    if (!gauss_nodes(rule, n, alpha, work.p, work.p + n, work.p + 2 * n)) {
        m_xrc = row_break() ? 1 : 3360;
        return;
    }
    for (int32_t i = 0; i < n; i++) {
        r.p[2 * i] = work[i];
        r.p[2 * i + 1] = work[n + i];
    }
    r.result(argc);
}

void bi_gauss_legendre_nodes(int32_t argc)
{
    nodes(argc, "_gauss_legendre_nodes()", GAUSS_LEGENDRE);
}
// _gauss_laguerre_nodes(n [, alpha])
void bi_gauss_laguerre_nodes(int32_t argc)
{
    nodes(argc, "_gauss_laguerre_nodes()", GAUSS_LAGUERRE);
}
void bi_gauss_hermite_nodes(int32_t argc)
{
    nodes(argc, "_gauss_hermite_nodes()", GAUSS_HERMITE);
}

// ---- long memory

// fracdiff(X, d): each column of X differenced d times. After a missing value all is missing.
void bifracdiff(int32_t argc)
{
    m_xeqerrid = "fracdiff()";
    bi_in x(m_arg(1));
    double d;
    if (!x || !bi_real(m_arg(0), &d))
        return;
    bi_new r(x.rows, x.cols);
    bi_doubles coef(x.rows);
    if (!r || !coef)
        return;
    for (int32_t j = 0; j < x.cols; j++) {
        int64_t n = 0;
        while (n < x.rows && x.p[n * x.cols + j] < misval)
            n++;
        n = d < misval ? n : 0;
        if (!frac_difference(x.p + j, r.p + j, n, x.cols, d, coef.p)) {
            m_xrc = 1;
            return;
        }
        for (; n < x.rows; n++)
            r.p[n * x.cols + j] = misval;
    }
    r.result(argc);
}

// arfimaacf_u(ar, ma, d, s2, n): autocovariances 0 to n - 1 as a column, missing when the process
// is not stationary. ar and ma are vectors, empty for none.
void biarfimaacf_u(int32_t argc)
{
    m_xeqerrid = "arfimaacf_u()";
    bi_in ar(m_arg(4));
    if (!ar)
        return;
    bi_in ma(m_arg(3));
    double d, s2;
    int32_t n;
    if (!ma || !bi_real(m_arg(2), &d) || !bi_real(m_arg(1), &s2) ||
        !bi_int(m_arg(0), 0, 2147483646, &n))
        return;
    auto fits = [](const bi_in &a) { return (a.isvector() || !a.count()) && a.count() <= 2000; };
    if (!fits(ar) || !fits(ma)) {
        m_xrc = 3201;
        return;
    }
    if (!bi_nomissing(ar) || !bi_nomissing(ma))
        return;
    bi_new r(n, 1);
    if (!r)
        return;
    int32_t good = s2 < misval ? arfima_autocov(ar.p, int32_t(ar.count()), ma.p,
                                                int32_t(ma.count()), d, s2, n, r.p)
                               : 0;
    if (good < 0) {
        m_xrc = row_break() ? 1 : 3900;
        return;
    }
    if (!good)
        fillwithmissing(r.m);
    r.result(argc);
}

// ---- the Gauss hypergeometric series, inside the unit circle

// Terms until they no longer count (Abramowitz and Stegun 15.1.1). False when they do not.
static bool series2f1(double a, double b, double c, std::complex<double> z,
                      std::complex<double> *sum)
{
    std::complex<double> term = *sum = 1;
    for (int32_t k = 0; k < 1000000; k++) {
        if (c + k == 0)
            return false;
        term *= (a + k) * (b + k) / ((c + k) * (1.0 + k)) * z;
        *sum += term;
        if (std::abs(term) <= 1e-17 * std::abs(*sum))
            return std::isfinite(sum->real()) && std::isfinite(sum->imag());
        if (k % 65536 == 65535 && fault_poll())
            return false;
    }
    return false;
}

// _hypergeometricseries_u(a, b, c, Z): scalars a, b, c; Z real or complex.
void bi_hypergeometricseries_u(int32_t argc)
{
    m_xeqerrid = "_hypergeometricseries_u()";
    double par[3];
    for (int k = 0; k < 3; k++)
        if (!bi_real(m_arg(3 - k), &par[k]))
            return;
    const matobj *z = m_arg(0);
    if (!bi_isnumeric(z))
        return;
    matobj *r = m_mktmat(z->eltype, z->rows, z->cols);
    if (!r)
        return;
    bool good = par[0] < misval && par[1] < misval && par[2] < misval;
    for (int64_t k = 0, n = mo_count(z); k < n; k++) {
        if (row_break()) {
            mo_freemat(r);
            return;
        }
        std::complex<double> x(z->view ? v_el1(z, k) : mo_re(z)[k],
                               z->eltype == MO_COMPLEX ? mo_im(z)[k] : 0),
            sum;
        bool ok = good && x.real() < misval && std::abs(x) <= 1 &&
                  series2f1(par[0], par[1], par[2], x, &sum);
        mo_re(r)[k] = ok ? sum.real() : misval;
        if (z->eltype == MO_COMPLEX)
            mo_im(r)[k] = ok ? sum.imag() : misval;
    }
    m_result(argc, r);
}

// ---- points and normal probabilities

static bool isprime(int32_t q)
{
    for (int32_t k = 2; int64_t(k) * k <= q; k++)
        if (q % k == 0)
            return false;
    return q > 1;
}

// ghalton(n, q [, u]): n elements of the sequence of prime base q behind u.
void bighalton(int32_t argc)
{
    m_xeqerrid = "ghalton()";
    int32_t n, q;
    double u = 0;
    if (!bi_int(bi_arg(argc, 1), 0, 2147483646, &n) || !bi_int(bi_arg(argc, 2), 2, 1000000, &q) ||
        (argc > 2 && !bi_real(m_arg(0), &u)))
        return;
    if (!isprime(q) || !(u >= 0 && u < 1)) {
        m_xrc = 3300;
        return;
    }
    bi_new r(n, 1);
    if (!r)
        return;
    if (halton_points(r.p, n, q, u))
        r.result(argc);
    else
        m_xrc = 1;
}

namespace
{

// Bounds of one row put in rising order of bound over deviation, which makes the simulated
// value vary less (Gibson, Glasbey and Elston, Advances in Numerical Methods 1994).
void put_in_order(const double *x, const double *v, int32_t m, int32_t *order)
{
    for (int32_t j = 0; j < m; j++)
        order[j] = j;
    std::stable_sort(order, order + m, [&](int32_t a, int32_t b) {
        double za = x[a] < misval ? x[a] / std::sqrt(v[a * m + a]) : misval;
        double zb = x[b] < misval ? x[b] / std::sqrt(v[b * m + b]) : misval;
        return za < zb;
    });
}

int32_t vech_index(int32_t m, int32_t i, int32_t j)
{
    if (i < j)
        std::swap(i, j);
    return j * m - j * (j - 1) / 2 + i - j;
}

struct ghk_call {
    const bi_in &x, &v, &u;
    bool pivot, own; // own: each row of x has its draws
    double *prob, *dx, *dv;
};

// Every row of x. False with a code when stopped.
bool ghk_rows(const ghk_call &c, ghk_plan &plan)
{
    int32_t m = plan.m, nv = m * (m + 1) / 2;
    bi_doubles scratch(int64_t(m) * m * 2 + 2 * int64_t(m) + nv + m), work(ghk_work(m));
    if (!scratch || !work)
        return false;
    plan.work = work.p;
    double *vp = scratch.p, *root = vp + m * m, *xp = root + m * m, *dxp = xp + m, *dvp = dxp + m;
    auto *order = reinterpret_cast<int32_t *>(dvp + nv);
    bool rooted = !c.pivot && ghk_root(c.v.p, m, root);
    for (int32_t j = 0; j < m; j++)
        order[j] = j;
    for (int32_t i = 0; i < c.x.rows; i++) {
        if (row_break())
            return false;
        const double *x = c.x.p + int64_t(i) * m;
        if (c.pivot) {
            put_in_order(x, c.v.p, m, order);
            for (int32_t a = 0; a < m; a++)
                for (int32_t b = 0; b < m; b++)
                    vp[a * m + b] = c.v.p[order[a] * m + order[b]];
            rooted = ghk_root(vp, m, root);
        }
        for (int32_t j = 0; j < m; j++)
            xp[j] = x[order[j]];
        plan.u = c.u.p + (c.own ? plan.points * i * (m - 1) : 0);
        c.prob[i] = rooted ? ghk_probability(plan, xp, root, dxp, dvp) : misval;
        if (!plan.derivatives)
            continue;
        for (int32_t a = 0; a < m; a++) {
            c.dx[int64_t(i) * m + order[a]] = rooted ? dxp[a] : misval;
            for (int32_t b = 0; b <= a; b++)
                c.dv[int64_t(i) * nv + vech_index(m, order[a], order[b])] =
                    rooted ? dvp[vech_index(m, a, b)] : misval;
        }
    }
    return true;
}

} // namespace

// _ghk(X, V, U, n [, antithetic [, pivot [, DX, DV]]]): for each row of X the chance, from n draws,
// that normals of mean 0 and variances V lie below it, a missing bound being none. U has a row of
// cols(X) - 1 numbers between 0 and 1 for each draw: n rows for all of X, or n for each row of X.
// DX and DV become the derivatives by the bounds and by vech(V).
void bi_ghk(int32_t argc)
{
    m_xeqerrid = "_ghk()";
    if (argc == 7) {
        m_xrc = 3001;
        return;
    }
    bi_in x(bi_arg(argc, 1));
    if (!x)
        return;
    bi_in v(bi_arg(argc, 2));
    if (!v)
        return;
    bi_in u(bi_arg(argc, 3));
    double anti = 0, pivot = 0;
    int32_t n;
    if (!u || !bi_int(bi_arg(argc, 4), 1, 2147483646, &n) ||
        (argc > 4 && !bi_real(bi_arg(argc, 5), &anti)) ||
        (argc > 5 && !bi_real(bi_arg(argc, 6), &pivot)))
        return;
    bool derivatives = argc > 7;
    if (derivatives && (!bi_ismatrix(m_arg(1)) || !bi_ismatrix(m_arg(0))))
        return;
    int32_t m = x.cols;
    if (!m || m > 1000 || v.rows != m || v.cols != m || u.cols != m - 1 ||
        (u.rows != n && u.rows != int64_t(n) * x.rows)) {
        m_xrc = 3200;
        return;
    }
    if (!bi_nomissing(v) || !bi_nomissing(u))
        return;
    bi_new prob(x.rows, 1), dx(derivatives ? x.rows : 0, m),
        dv(derivatives ? x.rows : 0, m * (m + 1) / 2);
    if (!prob || !dx || !dv)
        return;
    ghk_plan plan{m, n, u.p, anti != 0, derivatives, nullptr};
    if (!ghk_rows({x, v, u, pivot != 0, u.rows != n, prob.p, dx.p, dv.p}, plan))
        return;
    if (derivatives) {
        dx.give(m_arg(1));
        dv.give(m_arg(0));
    }
    prob.result(argc);
}
