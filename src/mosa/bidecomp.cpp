// Factorisations beyond those of bila.cpp: QR with exchanges, eigenvalues of any square matrix,
// singular values by the QR iteration, the generalized inverse; and the complex kin of what
// bila.cpp does for real matrices.
#include "mosa/bihandlers.h"
#include "mosa/lapack.h"
#include <algorithm>
#include <numeric>
#include <vector>

namespace
{

template <class T> constexpr bool is_z = sizeof(T) == sizeof(cplx);

bool numeric_array(const matobj *m)
{
    return bi_isarray(m) && bi_isnumeric(m);
}
bool square_array(const matobj *m)
{
    return numeric_array(m) && (m->rows == m->cols || bi_fail(3205));
}
bool fill(matobj *m, int16_t eltype, int32_t rows, int32_t cols)
{
    if (m_remkmat(m, eltype, 0, rows, cols))
        return false;
    fillwithmissing(m);
    return true;
}
template <class T> double first(const T &z)
{
    return std::real(z);
}

// Runs a routine twice, first to be told the size of its scratch. call(work, lwork).
template <class T, class F> bool with_work(F call)
{
    T want{};
    int lwork = -1;
    if (!call(&want, &lwork))
        return false;
    lwork = std::max(int(first(want)), 1);
    auto work = la_scratch<T>(lwork);
    return work && call(work.get(), &lwork);
}

// ---- QR

// Columns with a mark come first, the others as their norms order them (LAPACK xGEQP3).
template <class T> void hqrdp(int32_t argc, matobj *a, matobj *tau, matobj *p)
{
    colmat<T> q, t;
    int n = a->cols, k = std::min(a->rows, a->cols), info = 0;
    auto jpvt = la_scratch<int>(n);
    auto rwork = la_scratch<double>(2 * int64_t(n));
    bool marks = mo_count(p) == n && p->eltype == MO_REAL;
    if (!jpvt || !rwork || !q.load(a) || !t.make(1, k))
        return;
    for (int64_t j = 0; j < n; j++)
        jpvt[size_t(j)] = marks && mo_re(p)[j] != 0 && mo_re(p)[j] < misval;
    bool done = with_work<T>([&](T *work, int *lwork) {
        if constexpr (is_z<T>)
            return la_call("zgeqp3_", &q.r, &q.c, q.p.get(), &q.ld, jpvt.get(), t.p.get(), work,
                           lwork, rwork.get(), &info);
        else
            return la_call("dgeqp3_", &q.r, &q.c, q.p.get(), &q.ld, jpvt.get(), t.p.get(), work,
                           lwork, &info);
    });
    if (!done || !la_ok(info) || !q.store(a) || !t.store(tau) || m_remkmat(p, MO_REAL, 0, 1, n))
        return;
    for (int64_t j = 0; j < n; j++)
        mo_re(p)[j] = jpvt[size_t(j)];
    la_void(argc);
}

template <class T> void multiply_q(int32_t argc, matobj *h, matobj *tau, matobj *x, bool turned)
{
    colmat<T> q, t, b;
    int k = int(mo_count(tau)), info = 0;
    char side = 'L', trans = !turned ? 'N' : is_z<T> ? 'C' : 'T';
    if (!q.load(h) || !t.load(tau) || !b.load(x))
        return;
    bool done = with_work<T>([&](T *work, int *lwork) {
        return la_call(la_name<T>("dormqr_", "zunmqr_"), &side, &trans, &b.r, &b.c, &k, q.p.get(),
                       &q.ld, t.p.get(), b.p.get(), &b.ld, work, lwork, &info);
    });
    if (done && la_ok(info) && b.store(x))
        la_void(argc);
}

template <class T> void make_q1(int32_t argc, matobj *h, matobj *tau)
{
    colmat<T> q, t;
    int k = int(mo_count(tau)), info = 0;
    if (!q.load(h) || !t.load(tau))
        return;
    bool done = with_work<T>([&](T *work, int *lwork) {
        return la_call(la_name<T>("dorgqr_", "zungqr_"), &q.r, &k, &k, q.p.get(), &q.ld, t.p.get(),
                       work, lwork, &info);
    });
    if (done && la_ok(info) && q.store(h, h->rows, k))
        la_void(argc);
}

bool read_h(const matobj *h, const matobj *tau)
{
    if (!numeric_array(h) || !numeric_array(tau))
        return false;
    int64_t k = std::min(h->rows, h->cols);
    return (mo_count(tau) == k && (tau->rows == 1 || tau->cols == 1 || !k)) || bi_fail(3200);
}

} // namespace

// _hqrdp_la(A, tau, p): A becomes its QR factors packed as LAPACK does, tau the row of its
// multipliers, p the row of columns as they were taken. On entry a row p as long as A is wide
// marks with nonzero values the columns that go first.
void bi_hqrdp_la(int32_t argc)
{
    m_xeqerrid = "_hqrdp_la()";
    matobj *a = m_arg(2), *tau = m_arg(1), *p = m_arg(0);
    if (!numeric_array(a) || !bi_isarray(tau) || !bi_isarray(p))
        return;
    if (la_anymissing(a) || !mo_count(a)) {
        int16_t type = a->eltype;
        fillwithmissing(a);
        if (fill(tau, type, 1, std::min(a->rows, a->cols)) && fill(p, MO_REAL, 1, a->cols))
            la_void(argc);
        for (int64_t j = 0; !m_xrc && j < a->cols; j++)
            mo_re(p)[j] = double(j + 1);
    } else if (a->eltype == MO_COMPLEX)
        hqrdp<cplx>(argc, a, tau, p);
    else
        hqrdp<double>(argc, a, tau, p);
}

// _hqrdmult(H, tau, X, t): X becomes Q X, or Q' X where t is not 0, for the packed H.
void bi_hqrdmult(int32_t argc)
{
    m_xeqerrid = "_hqrdmult()";
    matobj *h = m_arg(3), *tau = m_arg(2), *x = m_arg(1);
    double t;
    if (!read_h(h, tau) || !numeric_array(x) || !bi_real(m_arg(0), &t))
        return;
    if (h->rows != x->rows)
        m_xrc = 3200;
    else if (la_anymissing(h) || la_anymissing(x) || !mo_count(x) || !mo_count(h)) {
        if (la_anymissing(h) || la_anymissing(x))
            fillwithmissing(x);
        la_void(argc);
    } else if (h->eltype == MO_COMPLEX || x->eltype == MO_COMPLEX || tau->eltype == MO_COMPLEX)
        multiply_q<cplx>(argc, h, tau, x, t != 0);
    else
        multiply_q<double>(argc, h, tau, x, t != 0);
}

// _hqrdq1(H, tau): H becomes the first columns of Q, as many as there are multipliers.
void bi_hqrdq1(int32_t argc)
{
    m_xeqerrid = "_hqrdq1()";
    matobj *h = m_arg(1), *tau = m_arg(0);
    if (!read_h(h, tau))
        return;
    if (la_anymissing(h) || !mo_count(h)) {
        if (fill(h, h->eltype, h->rows, std::min(h->rows, h->cols)))
            la_void(argc);
    } else if (h->eltype == MO_COMPLEX || tau->eltype == MO_COMPLEX)
        make_q1<cplx>(argc, h, tau);
    else
        make_q1<double>(argc, h, tau);
}

// ---- eigenvalues of a square matrix

namespace
{

// From the largest modulus on; of a conjugate pair the one above the axis first.
std::vector<int> by_modulus(const std::vector<cplx> &w)
{
    std::vector<int> order(w.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&](int a, int b) {
        cplx x = w[size_t(a)], y = w[size_t(b)];
        double p = std::abs(x), q = std::abs(y);
        if (std::conj(x) == y && x.imag() != 0)
            return x.imag() > y.imag();
        return p > q;
    });
    return order;
}

bool put_vectors(matobj *to, const cplx *v, const std::vector<int> &order, bool left)
{
    int64_t n = int64_t(order.size());
    if (m_remkmat(to, MO_COMPLEX, 0, int32_t(n), int32_t(n)))
        return false;
    for (int64_t j = 0; j < n; j++)
        for (int64_t i = 0; i < n; i++) {
            cplx z = v[order[size_t(j)] * n + i];
            colmat<cplx>::put(to, left ? j * n + i : i * n + j, left ? std::conj(z) : z);
        }
    return true;
}

// Vectors of conjugate pairs stand as their real and imaginary parts.
std::unique_ptr<cplx[]> unpaired(const double *v, const double *wi, int64_t n)
{
    auto z = la_scratch<cplx>(n * n);
    if (!z)
        return z;
    for (int64_t j = 0; j < n; j++) {
        bool pair = wi[j] > 0 && j + 1 < n;
        for (int64_t i = 0; i < n; i++) {
            double re = v[j * n + i], im = pair ? v[(j + 1) * n + i] : 0;
            z[size_t(j * n + i)] = cplx(re, im);
            if (pair)
                z[size_t((j + 1) * n + i)] = cplx(re, -im);
        }
        j += pair;
    }
    return z;
}

struct eigen_parts {
    std::vector<cplx> w;
    std::unique_ptr<cplx[]> right, left; // column behind column
    std::vector<double> condition;       // reciprocal, of each value
};

// xGEEVX: balance tells 'B' or 'N', sense 'E' or 'N'.
bool real_eigen(matobj *a, eigen_parts &e, char balance, char sense)
{
    colmat<double> m, vl, vr;
    int n = a->rows, lo, hi, info = 0;
    auto wr = la_scratch<double>(n), wi = la_scratch<double>(n), scale = la_scratch<double>(n);
    auto rv = la_scratch<double>(n), re = la_scratch<double>(n);
    auto iw = la_scratch<int>(2 * int64_t(n));
    if (!wr || !wi || !scale || !rv || !re || !iw || !m.load(a) || !vl.make(n, n) || !vr.make(n, n))
        return false;
    char v = 'V';
    double norm;
    bool done = with_work<double>([&](double *work, int *lwork) {
        return la_call("dgeevx_", &balance, &v, &v, &sense, &n, m.p.get(), &m.ld, wr.get(),
                       wi.get(), vl.p.get(), &vl.ld, vr.p.get(), &vr.ld, &lo, &hi, scale.get(),
                       &norm, re.get(), rv.get(), work, lwork, iw.get(), &info);
    });
    if (!done || !la_ok(info))
        return false;
    for (int i = 0; i < n; i++)
        e.w.emplace_back(wr[size_t(i)], wi[size_t(i)]);
    e.right = unpaired(vr.p.get(), wi.get(), n);
    e.left = unpaired(vl.p.get(), wi.get(), n);
    e.condition.assign(re.get(), re.get() + n);
    return e.right && e.left;
}

bool complex_eigen(matobj *a, eigen_parts &e, char balance, char sense)
{
    colmat<cplx> m, vl, vr;
    int n = a->rows, lo, hi, info = 0;
    auto w = la_scratch<cplx>(n);
    auto scale = la_scratch<double>(n), rv = la_scratch<double>(n), re = la_scratch<double>(n);
    auto rwork = la_scratch<double>(2 * int64_t(n));
    if (!w || !scale || !rv || !re || !rwork || !m.load(a) || !vl.make(n, n) || !vr.make(n, n))
        return false;
    char v = 'V';
    double norm;
    bool done = with_work<cplx>([&](cplx *work, int *lwork) {
        return la_call("zgeevx_", &balance, &v, &v, &sense, &n, m.p.get(), &m.ld, w.get(),
                       vl.p.get(), &vl.ld, vr.p.get(), &vr.ld, &lo, &hi, scale.get(), &norm,
                       re.get(), rv.get(), work, lwork, rwork.get(), &info);
    });
    if (!done || !la_ok(info))
        return false;
    e.w.assign(w.get(), w.get() + n);
    e.right = std::move(vr.p);
    e.left = std::move(vl.p);
    e.condition.assign(re.get(), re.get() + n);
    return true;
}

} // namespace

// _eigen_la(A, X, L, Y, rcond [, nobalance]): the values of A in the row L, from the largest
// modulus on; right vectors in the columns of X, left vectors in the rows of Y, each of length
// 1; all complex. rcond, when it comes as a number other than 0, becomes the row of reciprocal
// condition numbers of the values (LAPACK xGEEVX).
void bi_eigen_la(int32_t argc)
{
    m_xeqerrid = "_eigen_la()";
    matobj *a = bi_arg(argc, 1), *x = bi_arg(argc, 2), *l = bi_arg(argc, 3), *y = bi_arg(argc, 4);
    matobj *rcond = bi_arg(argc, 5);
    double plain = 0;
    if (!square_array(a) || !bi_isarray(x) || !bi_isarray(l) || !bi_isarray(y) ||
        !bi_isarray(rcond) || (argc > 5 && !bi_real(bi_arg(argc, 6), &plain)))
        return;
    int32_t n = a->rows;
    bool wanted = mo_count(rcond) != 1 || rcond->eltype != MO_REAL || *mo_re(rcond) != 0;
    eigen_parts e;
    if (la_anymissing(a) || !n) {
        if (fill(x, MO_COMPLEX, n, n) && fill(l, MO_COMPLEX, 1, n) && fill(y, MO_COMPLEX, n, n) &&
            (!wanted || fill(rcond, MO_REAL, 1, n)))
            la_void(argc);
        return;
    }
    char balance = plain != 0 ? 'N' : 'B', sense = wanted ? 'E' : 'N';
    if (a->eltype == MO_COMPLEX ? !complex_eigen(a, e, balance, sense)
                                : !real_eigen(a, e, balance, sense))
        return;
    auto order = by_modulus(e.w);
    if (m_remkmat(l, MO_COMPLEX, 0, 1, n) || !put_vectors(x, e.right.get(), order, false) ||
        !put_vectors(y, e.left.get(), order, true))
        return;
    for (int64_t j = 0; j < n; j++)
        colmat<cplx>::put(l, j, e.w[size_t(order[size_t(j)])]);
    if (wanted && m_remkmat(rcond, MO_REAL, 0, 1, n))
        return;
    for (int64_t j = 0; wanted && j < n; j++)
        mo_re(rcond)[j] = la_kept(e.condition[size_t(order[size_t(j)])]);
    la_void(argc);
}

// ---- singular values

namespace
{

// Thin factors of a matrix at least as tall as wide: by division (fast), or by QR iteration,
// which converges where the other does not.
template <class T> bool thin_svd(matobj *a, matobj *s, matobj *vt, bool iterate)
{
    colmat<T> m, u, v;
    int n = a->cols, info = 0;
    auto values = la_scratch<double>(n);
    auto iw = la_scratch<int>(8 * int64_t(n));
    auto rwork = la_scratch<double>(is_z<T> ? (5 * int64_t(n) + 7) * n : 1);
    if (!values || !iw || !rwork || !m.load(a) || !u.make(a->rows, n) || !v.make(n, n))
        return false;
    char job = 'S';
    const char *name =
        iterate ? la_name<T>("dgesvd_", "zgesvd_") : la_name<T>("dgesdd_", "zgesdd_");
    bool done = with_work<T>([&](T *work, int *lwork) {
        auto both = [&](auto... rest) {
            if (iterate)
                return la_call(name, &job, &job, &m.r, &m.c, m.p.get(), &m.ld, values.get(),
                               u.p.get(), &u.ld, v.p.get(), &v.ld, work, lwork, rest..., &info);
            return la_call(name, &job, &m.r, &m.c, m.p.get(), &m.ld, values.get(), u.p.get(), &u.ld,
                           v.p.get(), &v.ld, work, lwork, rest..., iw.get(), &info);
        };
        if constexpr (is_z<T>)
            return both(rwork.get());
        else
            return both();
    });
    if (!done || !la_ok(info) || m_remkmat(s, MO_REAL, 0, n, 1) || !u.store(a) || !v.store(vt))
        return false;
    for (int64_t i = 0; i < n; i++)
        mo_re(s)[i] = la_kept(values[size_t(i)]);
    return true;
}

void svd_of(int32_t argc, bool iterate)
{
    matobj *a = m_arg(2), *s = m_arg(1), *vt = m_arg(0);
    if (!numeric_array(a) || !bi_isarray(s) || !bi_isarray(vt))
        return;
    if (a->rows < a->cols) {
        m_xrc = 3200;
        return;
    }
    bool ok;
    if (la_anymissing(a) || !a->cols) {
        fillwithmissing(a);
        ok = fill(s, MO_REAL, a->cols, 1) && fill(vt, a->eltype, a->cols, a->cols);
    } else
        ok = a->eltype == MO_COMPLEX ? thin_svd<cplx>(a, s, vt, iterate)
                                     : thin_svd<double>(a, s, vt, iterate);
    if (ok)
        la_scalar(argc, 0);
}

// V diag(1/s) U' over the singular values above the tolerance.
template <class T> matobj *pseudo_inverse(matobj *a, double tol, int *rank)
{
    colmat<T> m, u, v;
    int k = std::min(a->rows, a->cols), info = 0;
    auto s = la_scratch<double>(k);
    int64_t most = std::max(a->rows, a->cols);
    auto rwork = la_scratch<double>(is_z<T> ? 5 * most : 1);
    if (!s || !rwork || !m.load(a) || !u.make(a->rows, k) || !v.make(k, a->cols))
        return nullptr;
    char job = 'S';
    bool done = with_work<T>([&](T *work, int *lwork) {
        auto call = [&](auto... rest) {
            return la_call(la_name<T>("dgesvd_", "zgesvd_"), &job, &job, &m.r, &m.c, m.p.get(),
                           &m.ld, s.get(), u.p.get(), &u.ld, v.p.get(), &v.ld, work, lwork, rest...,
                           &info);
        };
        if constexpr (is_z<T>)
            return call(rwork.get());
        else
            return call();
    });
    if (!done || !la_ok(info))
        return nullptr;
    double low = (tol < misval ? tol : double(most) * 2.220446049250313e-16) * s[0];
    colmat<T> out;
    if (!out.make(a->cols, a->rows))
        return nullptr;
    std::fill_n(out.p.get(), int64_t(a->cols) * a->rows, T(0));
    for (*rank = 0; *rank < k && s[size_t(*rank)] > low; ++*rank)
        for (int64_t j = 0; j < a->cols; j++)
            v.at(*rank, j) /= s[size_t(*rank)];
    char turned = 'C';
    T one = 1, zero = 0;
    if (*rank && !la_call(la_name<T>("dgemm_", "zgemm_"), &turned, &turned, &out.r, &out.c, rank,
                          &one, v.p.get(), &v.ld, u.p.get(), &u.ld, &zero, out.p.get(), &out.ld))
        return nullptr;
    matobj *r = m_mktmat(MO_REAL, 0, 0);
    return r && out.store(r) ? r : nullptr;
}

} // namespace

// _svd_2(A, s, Vt): as _svd_la(), by QR iteration: slower, and sure to converge.
void bi_svd_2(int32_t argc)
{
    m_xeqerrid = "_svd_2()";
    svd_of(argc, true);
}
void lz_svd(int32_t argc)
{
    svd_of(argc, false);
}

// ginvr(A [, tol]): the Moore-Penrose inverse; singular values at most tol times the largest
// count as 0.
void biginvr(int32_t argc)
{
    m_xeqerrid = "ginvr()";
    matobj *arg = bi_arg(argc, 1);
    double tol = misval;
    int rank;
    if (!bi_isnumeric(arg) || (argc > 1 && !bi_real(bi_arg(argc, 2), &tol)))
        return;
    matobj *a = bi_array(arg), *r;
    if (!a)
        return;
    if (la_anymissing(a) || !mo_count(a)) {
        r = m_mktmat(a->eltype, a->cols, a->rows);
        if (r)
            fillwithmissing(r);
    } else
        r = a->eltype == MO_COMPLEX ? pseudo_inverse<cplx>(a, tol, &rank)
                                    : pseudo_inverse<double>(a, tol, &rank);
    if (a != arg)
        mo_freemat(a);
    if (r)
        m_result(argc, r);
}

// ---- complex kin

namespace
{

bool z_factor(colmat<cplx> &m, int *pivots, int *info)
{
    return la_call("zgetrf_", &m.r, &m.c, m.p.get(), &m.ld, pivots, info);
}
bool z_singular(colmat<cplx> &m, double tol)
{
    double low = misval, high = 0;
    for (int64_t i = 0; i < m.r; i++) {
        double d = std::abs(m.at(i, i));
        low = std::min(low, d);
        high = std::max(high, d);
    }
    return m.r > 0 && !(low > high * (tol < misval ? tol : 1e-16 * double(m.r)));
}
bool z_tolerance(int32_t argc, int32_t k, double *tol)
{
    *tol = misval;
    return argc < k || bi_real(bi_arg(argc, k), tol);
}
bool to_complex(matobj *m)
{
    if (m->eltype == MO_COMPLEX)
        return true;
    colmat<cplx> c;
    return c.load(m) && c.store(m);
}

} // namespace

void lz_lud(int32_t argc)
{
    matobj *a = m_arg(1), *p = m_arg(0);
    colmat<cplx> m;
    int info = 0;
    if (!square_array(a) || !bi_isarray(p))
        return;
    if (la_anymissing(a)) {
        m_xrc = 3351;
        return;
    }
    auto pivots = la_scratch<int>(a->rows);
    if (!pivots || !m.load(a) || (m.r && !z_factor(m, pivots.get(), &info)) || !m.store(a) ||
        m_remkmat(p, MO_REAL, 0, a->rows, 1))
        return;
    for (int64_t i = 0; i < a->rows; i++)
        mo_re(p)[i] = pivots[size_t(i)];
    la_scalar(argc, info);
}

void lz_luinv(int32_t argc)
{
    matobj *a = bi_arg(argc, 1);
    colmat<cplx> m;
    double tol;
    int info = 0;
    if (!square_array(a) || !z_tolerance(argc, 2, &tol))
        return;
    auto pivots = la_scratch<int>(a->rows);
    if (!pivots || !m.load(a))
        return;
    bool bad = la_anymissing(a);
    if (!bad && m.r) {
        if (!z_factor(m, pivots.get(), &info))
            return;
        bad = info != 0 || z_singular(m, tol);
    }
    if (!bad && m.r) {
        bool done = with_work<cplx>([&](cplx *work, int *lwork) {
            return la_call("zgetri_", &m.r, m.p.get(), &m.ld, pivots.get(), work, lwork, &info);
        });
        if (!done || !la_ok(info) || !m.store(a))
            return;
    }
    if (bad)
        fillwithmissing(a);
    la_scalar(argc, bad);
}

void lz_lusolve(int32_t argc)
{
    matobj *a = bi_arg(argc, 1), *b = bi_arg(argc, 2);
    colmat<cplx> m, x;
    double tol;
    int info = 0;
    if (!square_array(a) || !numeric_array(b) || !z_tolerance(argc, 3, &tol))
        return;
    if (a->rows != b->rows) {
        m_xrc = 3200;
        return;
    }
    auto pivots = la_scratch<int>(a->rows);
    if (!pivots || !m.load(a) || !x.load(b))
        return;
    bool bad = la_anymissing(a) || la_anymissing(b);
    if (!bad && m.r) {
        if (!z_factor(m, pivots.get(), &info))
            return;
        bad = info != 0 || z_singular(m, tol);
    }
    char plain = 'N';
    if (!bad && m.r && x.c &&
        (!la_call("zgetrs_", &plain, &m.r, &x.c, m.p.get(), &m.ld, pivots.get(), x.p.get(), &x.ld,
                  &info) ||
         !x.store(b)))
        return;
    if (bad && to_complex(b))
        fillwithmissing(b);
    if (!m_xrc)
        la_scalar(argc, bad);
}

void lz_symeigen(int32_t argc)
{
    matobj *a = bi_arg(argc, 1), *x = bi_arg(argc, 2), *l = bi_arg(argc, 3);
    colmat<cplx> m;
    int info = 0;
    if (!square_array(a) || !bi_isarray(x) || !bi_isarray(l))
        return;
    int n = a->rows;
    if (la_anymissing(a) || !n) {
        if (fill(x, MO_COMPLEX, n, n) && fill(l, MO_REAL, 1, n))
            la_scalar(argc, 0);
        return;
    }
    auto w = la_scratch<double>(n), rwork = la_scratch<double>(3 * int64_t(n));
    if (!w || !rwork || !m.load(a))
        return;
    char job = 'V', lower = 'L';
    bool done = with_work<cplx>([&](cplx *work, int *lwork) {
        return la_call("zheev_", &job, &lower, &n, m.p.get(), &m.ld, w.get(), work, lwork,
                       rwork.get(), &info);
    });
    if (!done || !la_ok(info))
        return;
    for (int64_t j = 0; j < n / 2; j++) // from the largest on
        for (int64_t i = 0; i < n; i++)
            std::swap(m.at(i, j), m.at(i, n - 1 - j));
    if (!m.store(x) || m_remkmat(l, MO_REAL, 0, 1, n))
        return;
    for (int64_t j = 0; j < n; j++)
        mo_re(l)[j] = la_kept(w[size_t(n - 1 - j)]);
    la_scalar(argc, 0);
}

void lz_cholesky(int32_t argc)
{
    matobj *a = m_arg(0);
    colmat<cplx> m;
    int info = 0;
    char lower = 'L';
    if (!square_array(a) || !m.load(a))
        return;
    bool bad = la_anymissing(a);
    if (!bad && m.r && !la_call("zpotrf_", &lower, &m.r, m.p.get(), &m.ld, &info))
        return;
    for (int64_t j = 0; j < m.c; j++)
        for (int64_t i = 0; i < j; i++)
            m.at(i, j) = 0;
    if (bad || info)
        fillwithmissing(a);
    else if (!m.store(a))
        return;
    la_void(argc);
}
