// Matrices that carry vec and vech into one another (Magnus and Neudecker 1988, "Matrix
// Differential Calculus", 3.7 and 3.8), the order of elements in memory, and kernels for
// triangular and Toeplitz matrices and for traces of products.
#include "mosa/bihandlers.h"
#include "mosa/lapack.h"
#include <algorithm>

namespace
{

matobj *zeros(int64_t rows, int64_t cols)
{
    if (rows > INT32_MAX || cols > INT32_MAX) {
        m_xrc = 3900;
        return nullptr;
    }
    matobj *r = m_mktmat(MO_REAL, int32_t(rows), int32_t(cols));
    if (r)
        std::fill_n(mo_re(r), mo_count(r), 0.0);
    return r;
}

// Place of element (i, j) of a symmetric matrix in its vech.
int64_t vech_at(int64_t i, int64_t j, int64_t n)
{
    if (i < j)
        std::swap(i, j);
    return j * n - j * (j + 1) / 2 + i;
}

bool order_of(int32_t argc, int32_t k, int32_t *n)
{
    return bi_int(bi_arg(argc, k), 0, 1 << 20, n);
}

// vec(A), or of a square A only the part from the diagonal down. Any type.
void stacked(int32_t argc, bool half)
{
    matobj *arg = m_arg(0);
    if (!bi_ismatrix(arg))
        return;
    if (half && arg->rows != arg->cols) {
        m_xrc = 3205;
        return;
    }
    int64_t n = arg->rows, count = half ? n * (n + 1) / 2 : mo_count(arg), k = 0;
    if (count > INT32_MAX) {
        m_xrc = 3900;
        return;
    }
    matobj *a = bi_array(arg);
    matobj *r = a ? m_mktmat(a->eltype, int32_t(count), 1) : nullptr;
    for (int64_t j = 0; r && j < a->cols && !row_break(); j++)
        for (int64_t i = half ? j : 0; i < n; i++)
            if (matcpy_el(r, k++, a, i * a->cols + j))
                return;
    if (a && a != arg)
        mo_freemat(a);
    if (r && !m_xrc)
        m_result(argc, r);
}

} // namespace

// _dmatrix_u(n): D with D vech(A) = vec(A) for symmetric n by n matrices.
void bi_dmatrix_u(int32_t argc)
{
    m_xeqerrid = "_dmatrix_u()";
    int32_t n;
    if (!order_of(argc, 1, &n))
        return;
    int64_t m = n, half = m * (m + 1) / 2;
    matobj *r = zeros(m * m, half);
    for (int64_t j = 0; r && j < m; j++)
        for (int64_t i = 0; i < m; i++)
            mo_re(r)[(j * m + i) * half + vech_at(i, j, m)] = 1;
    if (r)
        m_result(argc, r);
}

// _lmatrix_u(n): L with L vec(A) = vech(A).
void bi_lmatrix_u(int32_t argc)
{
    m_xeqerrid = "_lmatrix_u()";
    int32_t n;
    if (!order_of(argc, 1, &n))
        return;
    int64_t m = n, half = m * (m + 1) / 2;
    matobj *r = zeros(half, m * m);
    for (int64_t j = 0; r && j < m; j++)
        for (int64_t i = j; i < m; i++)
            mo_re(r)[vech_at(i, j, m) * m * m + j * m + i] = 1;
    if (r)
        m_result(argc, r);
}

// _kmatrix_u(m, n): K with K vec(A) = vec(A') for m by n matrices.
void bi_kmatrix_u(int32_t argc)
{
    m_xeqerrid = "_kmatrix_u()";
    int32_t m, n;
    if (!order_of(argc, 1, &m) || !order_of(argc, 2, &n))
        return;
    int64_t all = int64_t(m) * n;
    matobj *r = zeros(all, all);
    for (int64_t i = 0; r && i < m; i++)
        for (int64_t j = 0; j < n; j++)
            mo_re(r)[(i * n + j) * all + j * m + i] = 1;
    if (r)
        m_result(argc, r);
}

void bi_vec_u(int32_t argc)
{
    m_xeqerrid = "_vec_u()";
    stacked(argc, false);
}
void bi_vech_u(int32_t argc)
{
    m_xeqerrid = "_vech_u()";
    stacked(argc, true);
}

// ---- order of elements in memory

namespace
{

// The plane of a rows by cols array: element (i, j) goes from i * cols + j to i + j * rows,
// or back. Along the cycles of the permutation when asked, else through a copy.
bool turn_plane(double *p, int64_t rows, int64_t cols, bool in, bool cycles)
{
    int64_t n = rows * cols, step = in ? cols : rows;
    if (rows < 2 || cols < 2)
        return true;
    // What comes to place k was at k * step modulo n - 1; the last stays.
    auto source = [&](int64_t k) { return int64_t(__int128(k) * step % (n - 1)); };
    if (!cycles) {
        auto copy = la_scratch<double>(n);
        if (!copy)
            return false;
        std::copy_n(p, n, copy.get());
        for (int64_t k = 0; k < n - 1; k++)
            p[k] = copy[size_t(source(k))];
        return true;
    }
    auto done = la_scratch<bool>(n);
    if (!done)
        return false;
    std::fill_n(done.get(), n, false);
    for (int64_t start = 1; start < n - 1; start++) {
        if (done[size_t(start)])
            continue;
        double held = p[start];
        int64_t k = start;
        for (int64_t from = source(k); from != start; k = from, from = source(k)) {
            p[k] = p[from];
            done[size_t(k)] = true;
        }
        p[k] = held;
        done[size_t(k)] = true;
    }
    return true;
}

void turned(int32_t argc, bool in, bool cycles)
{
    matobj *a = m_arg(0);
    if (!bi_isarray(a) || !bi_isnumeric(a))
        return;
    bool ok = turn_plane(mo_re(a), a->rows, a->cols, in, cycles);
    if (ok && a->eltype == MO_COMPLEX)
        ok = turn_plane(mo_im(a), a->rows, a->cols, in, cycles);
    if (ok)
        la_void(argc);
}

} // namespace

// _flopin(A): the elements, kept by rows, are laid by columns as LA_*() wants them; rows and
// cols stay. _flopout(A) undoes it. The test forms do the same without a second copy of A.
void bi_flopin(int32_t argc)
{
    m_xeqerrid = "_flopin()";
    turned(argc, true, false);
}
void bi_flopout(int32_t argc)
{
    m_xeqerrid = "_flopout()";
    turned(argc, false, false);
}
void bi_testflopin(int32_t argc)
{
    m_xeqerrid = "_testflopin()";
    turned(argc, true, true);
}
void bi_testflopout(int32_t argc)
{
    m_xeqerrid = "_testflopout()";
    turned(argc, false, true);
}

// ---- triangular matrices

namespace
{

bool lower_of(const matobj *l)
{
    return bi_isarray(l) && bi_isreal(l) && (l->rows == l->cols || bi_fail(3205));
}

} // namespace

// _invlower_u(L): L, of which the lower triangle is read, becomes its inverse; all missing when
// there is a 0 on the diagonal.
void bi_invlower_u(int32_t argc)
{
    m_xeqerrid = "_invlower_u()";
    matobj *l = m_arg(0);
    if (!lower_of(l))
        return;
    int n = l->rows, info = 0;
    char upper = 'U', full = 'N'; // by columns it is the upper triangle
    for (int64_t i = 0; i < n; i++)
        std::fill_n(mo_re(l) + i * n + i + 1, n - 1 - i, 0.0);
    bool bad = la_anymissing(l);
    if (!bad && n && !la_call("dtrtri_", &upper, &full, &n, mo_re(l), &n, &info))
        return;
    if (bad || info)
        fillwithmissing(l);
    la_keep(mo_re(l), mo_count(l));
    la_void(argc);
}

// _solvelower_u(L, B): B becomes X of L X = B, of L only the lower triangle is read; all missing
// when there is a 0 on the diagonal.
void bi_solvelower_u(int32_t argc)
{
    m_xeqerrid = "_solvelower_u()";
    matobj *l = m_arg(1), *b = m_arg(0);
    if (!lower_of(l) || !bi_isarray(b) || !bi_isreal(b))
        return;
    if (l->rows != b->rows) {
        m_xrc = 3200;
        return;
    }
    int64_t n = l->rows, m = b->cols;
    const double *p = mo_re(l);
    double *x = mo_re(b);
    bool bad = la_anymissing(b);
    for (int64_t i = 0; i < n && !bad; i++) {
        bad = p[i * n + i] == 0;
        for (int64_t k = 0; k <= i; k++)
            bad |= p[i * n + k] >= misval;
    }
    for (int64_t i = 0; i < n && !bad && !row_break(); i++) {
        for (int64_t k = 0; k < i; k++) {
            double f = p[i * n + k];
            for (int64_t j = 0; f != 0 && j < m; j++)
                x[i * m + j] -= f * x[k * m + j];
        }
        for (int64_t j = 0; j < m; j++)
            x[i * m + j] /= p[i * n + i];
    }
    if (bad)
        fillwithmissing(b);
    la_keep(x, mo_count(b));
    if (!m_xrc)
        la_void(argc);
}

// ---- Toeplitz matrices

// _toeplitzscale_u(g, Y): g holds the autocovariances 0, 1, ... of a stationary series, Y has
// one in each column. Y becomes G Y with G the lower triangle for which G T G' = I, T the Toeplitz
// matrix of g: one-step errors of prediction in units of their standard deviations. The answer
// is ln det T; missing, with Y, where T is not positive definite (Levinson 1947, Durbin 1960).
void bi_toeplitzscale_u(int32_t argc)
{
    m_xeqerrid = "_toeplitzscale_u()";
    matobj *garg = m_arg(1), *y = m_arg(0);
    if (!bi_isreal(garg) || !bi_isarray(y) || !bi_isreal(y))
        return;
    int64_t n = y->rows, m = y->cols;
    if (mo_count(garg) < n || (garg->rows != 1 && garg->cols != 1)) {
        m_xrc = 3200;
        return;
    }
    matobj *g = bi_array(garg);
    auto phi = la_scratch<double>(n), was = la_scratch<double>(n), out = la_scratch<double>(n * m);
    if (!g || !phi || !was || !out)
        return;
    const double *c = mo_re(g);
    double v = n ? c[0] : 1, logdet = 0;
    bool bad = la_anymissing(g) || la_anymissing(y);
    for (int64_t t = 0; t < n && !bad; t++) {
        if (row_break())
            return;
        if (t) {
            double r = c[t];
            for (int64_t k = 1; k < t; k++)
                r -= phi[size_t(k - 1)] * c[t - k];
            r /= v;
            std::copy_n(phi.get(), t - 1, was.get());
            for (int64_t k = 0; k < t - 1; k++)
                phi[size_t(k)] -= r * was[size_t(t - 2 - k)];
            phi[size_t(t - 1)] = r;
            v *= 1 - r * r;
        }
        bad = !(v > 0);
        double sd = std::sqrt(v);
        logdet += std::log(v);
        for (int64_t j = 0; j < m && !bad; j++) {
            double e = mo_re(y)[t * m + j];
            for (int64_t k = 0; k < t; k++)
                e -= phi[size_t(k)] * mo_re(y)[(t - 1 - k) * m + j];
            out[size_t(t * m + j)] = la_kept(e / sd);
        }
    }
    if (g != garg)
        mo_freemat(g);
    if (bad)
        fillwithmissing(y);
    else
        std::copy_n(out.get(), n * m, mo_re(y));
    la_scalar(argc, bad ? misval : la_kept(logdet));
}

// ---- traces

namespace
{

bool real_square_like(const matobj *a, int32_t n)
{
    return bi_isarray(a) && bi_isreal(a) && ((a->rows == n && a->cols == n) || bi_fail(3200));
}
// tr(P Q) for n by n arrays.
double trace_of(const double *p, const double *q, int64_t n)
{
    double z = 0;
    for (int64_t i = 0; i < n; i++)
        for (int64_t j = 0; j < n; j++)
            z += p[i * n + j] * q[j * n + i];
    return z;
}
void trace_products(int32_t argc, bool abbav)
{
    matobj *a = m_arg(2), *b = m_arg(abbav ? 1 : 0), *v = m_arg(abbav ? 0 : 1);
    if (!bi_isarray(a) || !real_square_like(a, a->rows) || !real_square_like(b, a->rows) ||
        !real_square_like(v, a->rows))
        return;
    int64_t n = a->rows;
    auto p = la_scratch<double>(n * n), q = la_scratch<double>(n * n),
         r = la_scratch<double>(n * n);
    if (!p || !q || !r)
        return;
    bool bad = la_anymissing(a) || la_anymissing(b) || la_anymissing(v), stop = false;
    double z = misval;
    if (!bad && abbav) {
        stop = gemm(n, n, n, 1, mo_re(a), mo_re(b), 0, p.get()) ||
               gemm(n, n, n, 1, mo_re(b), mo_re(a), 0, q.get()) ||
               gemm(n, n, n, 1, p.get(), q.get(), 0, r.get());
        z = trace_of(r.get(), mo_re(v), n);
    } else if (!bad) {
        stop = gemm(n, n, n, 1, mo_re(a), mo_re(v), 0, p.get()) ||
               gemm(n, n, n, 1, mo_re(b), mo_re(v), 0, q.get());
        z = trace_of(p.get(), q.get(), n);
    }
    if (stop)
        m_xrc = 1;
    else
        la_scalar(argc, la_kept(z));
}

} // namespace

// trace_AVBV(A, V, B): the trace of A V B V.
void bitrace_AVBV(int32_t argc)
{
    m_xeqerrid = "trace_AVBV()";
    trace_products(argc, false);
}
// trace_ABBAV(A, B, V): the trace of A B B A V.
void bitrace_ABBAV(int32_t argc)
{
    m_xeqerrid = "trace_ABBAV()";
    trace_products(argc, true);
}
