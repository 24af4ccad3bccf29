// Linear algebra: factorisations and solutions through LAPACK, cross products, the
// generalized inverse of symmetric matrices.
//
// Arrays stand by rows where LAPACK wants columns, so each routine is handed the transpose and
// its answer is read as the transpose of what it says. Without the library: 3022.
#include "core/mem.h"
#include "core/state.h"
#include "mosa/bi_int.h"
#include "mosa/bihandlers.h"
#include "mosa/lapack.h"
#include <algorithm>
#include <cmath>
#include <memory>
#include <new>
#include <vector>

namespace
{

void result_of(int32_t argc, double z)
{
    m_result(argc, m_mktsmatsto(z));
}
void result_void(int32_t argc)
{
    m_result(argc, m_mktmat(MO_REAL, 0, 0));
}

template <class F> F lapack(const char *name)
{
    auto f = reinterpret_cast<F>(blas_find(name));
    if (!f)
        m_xrc = 3022;
    return f;
}

bool square(const matobj *a)
{
    return bi_isarray(a) && bi_isreal(a) && (a->rows == a->cols || bi_fail(3205));
}

bool any_missing(const matobj *a)
{
    const double *p = mo_re(a);
    for (int64_t k = 0, n = mo_count(a); k < n; k++)
        if (p[k] >= misval)
            return true;
    return false;
}

// Scratch space whose size comes from the data: null means 3900.
template <class T> std::unique_ptr<T[]> scratch(int64_t n)
{
    std::unique_ptr<T[]> p(new (std::nothrow) T[size_t(std::max<int64_t>(n, 1))]);
    if (!p)
        m_xrc = 3900;
    return p;
}

using getrf = void (*)(const int *m, const int *n, double *a, const int *lda, int *ipiv, int *info);
using getri = void (*)(const int *n, double *a, const int *lda, const int *ipiv, double *work,
                       const int *lwork, int *info);
using gesdd = void (*)(const char *job, const int *m, const int *n, double *a, const int *lda,
                       double *s, double *u, const int *ldu, double *vt, const int *ldvt,
                       double *work, const int *lwork, int *iwork, int *info, size_t);
using syevr = void (*)(const char *job, const char *range, const char *uplo, const int *n,
                       double *a, const int *lda, const double *vl, const double *vu, const int *il,
                       const int *iu, const double *tol, int *m, double *w, double *z,
                       const int *ldz, int *isuppz, double *work, const int *lwork, int *iwork,
                       const int *liwork, int *info, size_t, size_t, size_t);
using potrf = void (*)(const char *uplo, const int *n, double *a, const int *lda, int *info,
                       size_t);
using getrs = void (*)(const char *trans, const int *n, const int *nrhs, const double *a,
                       const int *lda, const int *ipiv, double *b, const int *ldb, int *info,
                       size_t);

// The LU factors of the transpose in place; *info is the first zero pivot, 0 for none.
bool factor(matobj *a, int *pivots, int *info)
{
    auto f = lapack<getrf>("dgetrf_");
    if (!f)
        return false;
    int n = a->rows, lda = std::max(n, 1);
    f(&n, &n, mo_re(a), &lda, pivots, info);
    return true;
}

// Pivots this small beside the largest are zero: the tolerance given, or 1e-13 times the size.
bool nearly_singular(const matobj *a, double tol)
{
    int64_t n = a->rows;
    double low = misval, high = 0;
    for (int64_t i = 0; i < n; i++) {
        double d = std::fabs(mo_re(a)[i * n + i]);
        low = std::min(low, d);
        high = std::max(high, d);
    }
    return n > 0 && !(low > high * (tol < misval ? tol : 1e-16 * double(n)));
}

bool tolerance(int32_t argc, int32_t k, double *tol)
{
    *tol = misval;
    return argc < k || bi_real(bi_arg(argc, k), tol);
}

} // namespace

// _lud2_la(A, p): A becomes its packed factors, p the row each step took. Answers the first
// zero pivot, or 0.
void bi_lud2_la(int32_t argc)
{
    m_xeqerrid = "_lud2_la()";
    matobj *a = m_arg(1), *p = m_arg(0);
    if (!bi_distinct(argc))
        return;
    if (a->eltype == MO_COMPLEX) {
        lz_lud(argc);
        return;
    }
    if (!square(a) || !bi_isarray(p))
        return;
    if (any_missing(a)) {
        m_xrc = 3351;
        return;
    }
    auto pivots = scratch<int>(a->rows);
    matobj *t = pivots ? m_transpose(a) : nullptr;
    int info = 0;
    if (!t || !factor(t, pivots.get(), &info) || m_remkmat(p, MO_REAL, 0, a->rows, 1))
        return;
    matobj *back = m_transpose(t);
    if (!back)
        return;
    m_swapmat(a, back);
    mo_freemat(back);
    mo_freemat(t);
    for (int32_t i = 0; i < a->rows; i++)
        mo_re(p)[i] = pivots[size_t(i)];
    result_of(argc, info);
}

// _luinv_la(A [, tol]): A becomes its inverse; 1 and all missing when it is singular.
void bi_luinv_la(int32_t argc)
{
    m_xeqerrid = "_luinv_la()";
    matobj *a = bi_arg(argc, 1);
    double tol;
    if (a->eltype == MO_COMPLEX) {
        lz_luinv(argc);
        return;
    }
    if (!square(a) || !tolerance(argc, 2, &tol))
        return;
    int n = a->rows, info = 0, lda = std::max(n, 1), lwork = std::max(64 * n, 1);
    auto f = lapack<getri>("dgetri_");
    auto pivots = scratch<int>(n);
    auto work = scratch<double>(lwork);
    if (!f || !pivots || !work)
        return;
    bool bad = any_missing(a);
    if (!bad && n) {
        if (!factor(a, pivots.get(), &info))
            return;
        bad = info != 0 || nearly_singular(a, tol);
        if (!bad)
            f(&n, mo_re(a), &lda, pivots.get(), work.get(), &lwork, &info);
    }
    if (bad)
        fillwithmissing(a);
    result_of(argc, bad);
}

// _lusolve_la(A, B [, tol]): B becomes X of A X = B and A is destroyed; 1 and all missing when
// A is singular.
void bi_lusolve_la(int32_t argc)
{
    m_xeqerrid = "_lusolve_la()";
    matobj *a = bi_arg(argc, 1), *b = bi_arg(argc, 2);
    double tol;
    if (!bi_distinct(argc))
        return;
    if (a->eltype == MO_COMPLEX || b->eltype == MO_COMPLEX) {
        lz_lusolve(argc);
        return;
    }
    if (!square(a) || !bi_isarray(b) || !bi_isreal(b) || !tolerance(argc, 3, &tol))
        return;
    if (a->rows != b->rows) {
        m_xrc = 3200;
        return;
    }
    int n = a->rows, nrhs = b->cols, info = 0, lda = std::max(n, 1);
    auto f = lapack<getrs>("dgetrs_");
    auto pivots = scratch<int>(n);
    if (!f || !pivots)
        return;
    bool bad = any_missing(a) || any_missing(b);
    if (!bad && n && nrhs) {
        matobj *t = m_transpose(b); // columns of B one behind the other
        if (!t || !factor(a, pivots.get(), &info))
            return;
        bad = info != 0 || nearly_singular(a, tol);
        if (!bad) {
            f("T", &n, &nrhs, mo_re(a), &lda, pivots.get(), mo_re(t), &lda, &info, 1);
            matobj *x = m_transpose(t);
            if (!x)
                return;
            m_swapmat(b, x);
            mo_freemat(x);
        }
        mo_freemat(t);
    }
    if (bad)
        fillwithmissing(b);
    result_of(argc, bad);
}

// _svd_la(A, s, Vt): A (rows no fewer than columns) becomes U, s the singular values from the
// largest on, Vt the transposed right vectors. Answers LAPACK's code.
void bi_svd_la(int32_t argc)
{
    m_xeqerrid = "_svd_la()";
    matobj *a = m_arg(2), *s = m_arg(1), *vt = m_arg(0);
    if (!bi_distinct(argc))
        return;
    if (a->eltype == MO_COMPLEX) {
        lz_svd(argc);
        return;
    }
    if (!bi_isarray(a) || !bi_isreal(a) || !bi_isarray(s) || !bi_isarray(vt))
        return;
    if (a->rows < a->cols) {
        m_xrc = 3200;
        return;
    }
    int m = a->cols, n = a->rows, info = 0; // of the transpose
    bool missing = any_missing(a);
    if (m_remkmat(s, MO_REAL, 0, m, 1) || m_remkmat(vt, MO_REAL, 0, m, m))
        return;
    if (missing || !m) {
        fillwithmissing(a);
        fillwithmissing(s);
        fillwithmissing(vt);
        result_of(argc, 0);
        return;
    }
    auto f = lapack<gesdd>("dgesdd_");
    auto iwork = scratch<int>(8 * int64_t(m));
    matobj *u = m_mktmat(MO_REAL, n, m);
    if (!f || !iwork || !u)
        return;
    int lwork = -1;
    double want;
    f("S", &m, &n, mo_re(a), &m, mo_re(s), mo_re(vt), &m, mo_re(u), &m, &want, &lwork, iwork.get(),
      &info, 1);
    lwork = int(want);
    auto work = scratch<double>(lwork);
    if (!work)
        return;
    f("S", &m, &n, mo_re(a), &m, mo_re(s), mo_re(vt), &m, mo_re(u), &m, work.get(), &lwork,
      iwork.get(), &info, 1);
    // The left vectors of the transpose stand by columns, which read by rows are Vt.
    m_swapmat(a, u);
    mo_freemat(u);
    if (info > 0)
        m_xrc = 3360;
    else if (info < 0)
        m_xrc = 3930;
    else
        result_of(argc, 0);
}

// _symeigen_la(A, X, L): the lower half of A is read; X gets the vectors in its columns, L the
// values as a row, from the largest on. A is destroyed.
void bi_symeigen_la(int32_t argc)
{
    m_xeqerrid = "_symeigen_la()";
    matobj *a = bi_arg(argc, 1), *x = bi_arg(argc, 2), *l = bi_arg(argc, 3);
    if (!bi_distinct(argc))
        return;
    if (a->eltype == MO_COMPLEX) {
        lz_symeigen(argc);
        return;
    }
    if (!square(a) || !bi_isarray(x) || !bi_isarray(l))
        return;
    int n = a->rows, info = 0, found = 0;
    bool missing = any_missing(a);
    if (m_remkmat(x, MO_REAL, 0, n, n) || m_remkmat(l, MO_REAL, 0, 1, n))
        return;
    if (missing || !n) {
        fillwithmissing(x);
        fillwithmissing(l);
        result_of(argc, 0);
        return;
    }
    auto f = lapack<syevr>("dsyevr_");
    int lwork = 33 * n + 64, liwork = 10 * n + 64;
    auto work = scratch<double>(lwork);
    auto iwork = scratch<int>(liwork);
    auto support = scratch<int>(2 * int64_t(n));
    auto values = scratch<double>(n);
    auto vectors = scratch<double>(int64_t(n) * n);
    if (!f || !work || !iwork || !support || !values || !vectors)
        return;
    double zero = 0;
    int none = 0;
    f("V", "A", "U", &n, mo_re(a), &n, &zero, &zero, &none, &none, &zero, &found, values.get(),
      vectors.get(), &n, support.get(), work.get(), &lwork, iwork.get(), &liwork, &info, 1, 1, 1);
    if (info) {
        m_xrc = info > 0 ? 3360 : 3930;
        return;
    }
    for (int64_t j = 0; j < n; j++) {
        const double *v = vectors.get() + (n - 1 - j) * n;
        mo_re(l)[j] = values[size_t(n - 1 - j)];
        for (int64_t i = 0; i < n; i++)
            mo_re(x)[i * n + j] = v[i];
    }
    result_of(argc, 0);
}

// A becomes the lower triangle G of A = G G'; all missing when it is not positive definite.
void bi_cholesky(int32_t argc)
{
    m_xeqerrid = "_cholesky()";
    matobj *a = m_arg(0);
    if (a->eltype == MO_COMPLEX) {
        lz_cholesky(argc);
        return;
    }
    if (!square(a))
        return;
    int n = a->rows, info = 0;
    auto f = lapack<potrf>("dpotrf_");
    if (!f)
        return;
    bool bad = any_missing(a);
    if (!bad && n)
        f("U", &n, mo_re(a), &n, &info, 1);
    if (bad || info)
        fillwithmissing(a);
    else
        for (int64_t i = 0; i < n; i++)
            std::fill_n(mo_re(a) + i * n + i + 1, n - 1 - i, 0.0);
    result_void(argc);
}

// ---- generalized inverse by sweeping the largest remaining diagonal (Goodnight 1979, "A
// tutorial on the sweep operator", The American Statistician 33)

namespace
{

// With an order, rank by rank: a row of a lower rank goes before all of higher ones.
bool sweep_all(double *a, int64_t n, const double *rank)
{
    auto done = scratch<char>(n);
    auto was = scratch<double>(n);
    if (!done || !was)
        return false;
    std::fill_n(done.get(), n, char(0));
    for (int64_t i = 0; i < n; i++)
        was[size_t(i)] = std::fabs(a[i * n + i]);
    for (int64_t step = 0; step < n && !fault_poll(); step++) {
        int64_t k = -1;
        for (int64_t i = 0; i < n; i++)
            if (!done[size_t(i)] && a[i * n + i] > was[size_t(i)] * 1e-13 &&
                (k < 0 || (rank && rank[i] < rank[k]) ||
                 (a[i * n + i] > a[k * n + k] && !(rank && rank[i] > rank[k]))))
                k = i;
        if (k < 0)
            break;
        done[size_t(k)] = 1;
        double d = a[k * n + k];
        for (int64_t i = 0; i < n; i++) {
            double b = a[i * n + k] / d;
            if (i == k || b == 0)
                continue;
            for (int64_t j = 0; j < n; j++)
                if (j != k)
                    a[i * n + j] -= b * a[k * n + j];
            a[i * n + k] = -b;
        }
        for (int64_t j = 0; j < n; j++)
            a[k * n + j] = j == k ? 1 / d : a[k * n + j] / d;
    }
    for (int64_t i = 0; i < n; i++)
        for (int64_t j = 0; j < n; j++) {
            if (!done[size_t(i)] || !done[size_t(j)])
                a[i * n + j] = 0;
            else if (j < i)
                a[i * n + j] = a[j * n + i] = (a[i * n + j] + a[j * n + i]) / 2;
        }
    return true;
}

// order: null, or a vector that gives each row its turn, the lowest first; among rows of one
// turn the largest pivot goes first.
bool sweep_matrix(matobj *a, const matobj *order)
{
    int64_t n = a->rows;
    std::unique_ptr<double[]> rank;
    if (order && mo_count(order)) {
        if (mo_count(order) != n || (order->rows != 1 && order->cols != 1))
            return bi_fail(3200);
        rank = scratch<double>(n);
        if (!rank)
            return false;
        for (int64_t i = 0; i < n; i++)
            rank[size_t(i)] = order->view ? v_el1(order, i) : mo_re(order)[i];
    }
    if (any_missing(a)) {
        fillwithmissing(a);
        return true;
    }
    for (int64_t i = 0; i < n; i++)
        for (int64_t j = 0; j < i; j++)
            mo_re(a)[j * n + i] = mo_re(a)[i * n + j];
    return sweep_all(mo_re(a), n, rank.get());
}

} // namespace

void biinvsym(int32_t argc)
{
    m_xeqerrid = "invsym()";
    matobj *a = bi_arg(argc, 1);
    const matobj *order = argc > 1 ? bi_arg(argc, 2) : nullptr;
    if (!bi_isreal(a) || (order && !bi_isreal(order)))
        return;
    if (a->rows != a->cols) {
        m_xrc = 3205;
        return;
    }
    matobj *r = m_isfree(a) ? a : m_dupmat(a);
    if (r && sweep_matrix(r, order))
        m_result(argc, r);
}

void bi_invsym(int32_t argc)
{
    m_xeqerrid = "_invsym()";
    matobj *a = bi_arg(argc, 1);
    const matobj *order = argc > 1 ? bi_arg(argc, 2) : nullptr;
    if (square(a) && (!order || bi_isreal(order)) && sweep_matrix(a, order))
        result_void(argc);
}

// ---- cross products

namespace
{

struct crossarg {
    const matobj *x, *w, *z;
    int32_t xc, zc; // a constant column behind
};

bool read_cross(int32_t argc, crossarg *c)
{
    double xc = 0, zc = 0;
    const matobj *one = argc > 1 ? bi_arg(argc, 2) : nullptr;
    c->x = bi_arg(argc, 1);
    c->w = nullptr;
    if (argc == 2)
        c->z = one;
    else if (argc == 3) {
        c->w = one;
        c->z = bi_arg(argc, 3);
    } else if (argc == 4) {
        c->z = bi_arg(argc, 3);
        if (!bi_real(one, &xc) || !bi_real(bi_arg(argc, 4), &zc))
            return false;
    } else {
        c->w = bi_arg(argc, 3);
        c->z = bi_arg(argc, 4);
        if (!bi_real(one, &xc) || !bi_real(bi_arg(argc, 5), &zc))
            return false;
    }
    c->xc = xc != 0;
    c->zc = zc != 0;
    if (!bi_isreal(c->x) || !bi_isreal(c->z) || (c->w && !bi_isreal(c->w)))
        return false;
    if (c->x->rows != c->z->rows)
        return bi_fail(3200);
    if (c->w && !mo_is1by1(c->w) && (c->w->rows != c->x->rows || c->w->cols != 1))
        return bi_fail(3200);
    return true;
}

} // namespace

// cross(X, Z), cross(X, w, Z), cross(X, xc, Z, zc), cross(X, xc, w, Z, zc): X' diag(w) Z, rows
// with a missing value left out; xc and zc add a constant behind.
void bicross(int32_t argc)
{
    m_xeqerrid = "cross()";
    crossarg c;
    if (!read_cross(argc, &c))
        return;
    int32_t nx = c.x->cols + c.xc, nz = c.z->cols + c.zc;
    matobj *r = m_mktmat(MO_REAL, nx, nz);
    auto row = scratch<double>(int64_t(nx) + nz);
    if (!r || !row)
        return;
    double *out = mo_re(r), *x = row.get(), *z = x + nx;
    std::fill_n(out, mo_count(r), 0.0);
    bool same = c.x == c.z && nx == nz;
    for (int32_t i = 0; i < c.x->rows; i++) {
        if (fault_poll()) {
            m_xrc = 1;
            return;
        }
        double w = !c.w ? 1 : m_el(c.w, mo_is1by1(c.w) ? 0 : i, 0);
        bool use = w < misval;
        for (int32_t j = 0; j < nx; j++)
            use &= (x[j] = j < c.x->cols ? m_el(c.x, i, j) : 1) < misval;
        for (int32_t j = 0; j < nz; j++)
            use &= (z[j] = j < c.z->cols ? m_el(c.z, i, j) : 1) < misval;
        if (!use)
            continue;
        for (int64_t a = 0; a < nx; a++) {
            double f = w * x[a], *to = out + a * nz;
            for (int64_t b = same ? a : 0; b < nz; b++)
                to[b] += f * z[b];
        }
    }
    if (same)
        for (int64_t a = 0; a < nx; a++)
            for (int64_t b = 0; b < a; b++)
                out[a * nz + b] = out[b * nz + a];
    m_result(argc, r);
}
