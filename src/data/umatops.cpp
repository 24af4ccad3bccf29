// data/umatops.cpp - operations on matrices.
//
// Every operation computes into a buffer of its own and then makes the destination, which may
// be an operand. Inverses and determinants are the textbook eliminations with pivoting; the
// inverse of a symmetric matrix is by sweeps, where a row that depends on earlier ones
// becomes zeros.
#include "core/mem.h"
#include "core/missing.h"
#include "core/rc.h"
#include "core/settings.h"
#include "core/text.h"
#include "data/umat.h"
#include "interp/messages.h"
#include <cmath>
#include <cstring>
#include <memory>
#include <utility>

double *umat_scratch;

namespace {
struct freer {
    void operator()(void *p) const
    {
        if (p != umat_scratch)
            safefree(p);
    }
};
}  // namespace
template <class T> using block = std::unique_ptr<T[], freer>;

template <class T> static block<T> take(int64_t n)
{
    return block<T>(static_cast<T *>(safemalloc(sizeof(T) * size_t(n))));
}

// A matrix outside the store.
struct work {
    int32_t rows = 0, cols = 0;
    block<double> el;
    block<umatname> row, col;
    double &at(int32_t i, int32_t j) { return el[int64_t(i) * cols + j]; }
};

static int32_t work_make(work *w, int32_t rows, int32_t cols)
{
    if (rows > set_matsize || cols > set_matsize)
        return error(908);
    w->rows = rows;
    w->cols = cols;
    w->el = umat_scratch ? block<double>(umat_scratch) : take<double>(int64_t(rows) * cols);
    w->row = take<umatname>(rows);
    w->col = take<umatname>(cols);
    return w->el && w->row && w->col
               ? 0
               : errout(RC_DMMEM, "op. sys. refuses to provide memory\n");
}

static void names(umatname *to, const umatname *from, int32_t n)
{
    memcpy(to, from, sizeof(umatname) * size_t(n));
}

static int32_t work_store(work *w, const char *dst)
{
    matref d;
    int32_t rc = umat_new(dst, MK_MAT, w->rows, w->cols, &d);
    if (rc)
        return rc;
    int64_t n = int64_t(w->rows) * w->cols;
    for (int64_t i = 0; i < n; i++)
        d.m->el[i] = z_allexp(w->el[i]) ? misval : w->el[i];
    names(d.row, w->row.get(), w->rows);
    names(d.col, w->col.get(), w->cols);
    return 0;
}

static int32_t find(const char *name, matkind kind, matref *out)
{
    return umat_get(name, kind, out) ? 0 : matnotfound(name);
}

static bool has_missing(const matref *a)
{
    int64_t n = int64_t(a->m->rows) * a->m->cols;
    for (int64_t i = 0; i < n; i++)
        if (a->m->el[i] >= misval)
            return true;
    return false;
}

// The default names of a side, so that what is joined or made keeps counting.
static bool is_default(const umatname *s, int32_t n, char letter)
{
    for (int32_t i = 0; i < n; i++) {
        const char *name = s[i].name;
        size_t digits = *name == letter ? strspn(name + 1, "0123456789") : 0;
        if (!digits || name[1 + digits] || strcmp(s[i].eq, "_"))
            return false;
    }
    return true;
}

// ---- two operands

static int32_t sum(work *w, const matref *a, const matref *b, bool negate, bool product)
{
    if (a->m->rows != b->m->rows || a->m->cols != b->m->cols)
        return error(503);
    if (int32_t rc = work_make(w, a->m->rows, a->m->cols))
        return rc;
    int64_t n = int64_t(w->rows) * w->cols;
    for (int64_t i = 0; i < n; i++) {
        double x = a->m->el[i], y = b->m->el[i];
        w->el[i] = x >= misval || y >= misval ? misval : product ? x * y : negate ? x - y : x + y;
    }
    names(w->row.get(), a->row, w->rows);
    names(w->col.get(), a->col, w->cols);
    return 0;
}

static int32_t product(work *w, const matref *a, const matref *b)
{
    int32_t n = a->m->cols;
    if (n != b->m->rows)
        return error(503);
    if (int32_t rc = work_make(w, a->m->rows, b->m->cols))
        return rc;
    bool missing = has_missing(a) || has_missing(b);
    for (int32_t i = 0; i < w->rows; i++) {
        double *out = &w->at(i, 0);
        memset(out, 0, sizeof(double) * size_t(w->cols));
        for (int32_t k = 0; k < n; k++) {
            double x = a->m->el[int64_t(i) * n + k];
            const double *y = b->m->el + int64_t(k) * w->cols;
            if (!missing) {
                for (int32_t j = 0; j < w->cols; j++)
                    out[j] += x * y[j];
                continue;
            }
            for (int32_t j = 0; j < w->cols; j++)
                out[j] = x >= misval || y[j] >= misval || out[j] >= misval ? misval
                                                                            : out[j] + x * y[j];
        }
        if (fault_poll())
            return 1;
    }
    names(w->row.get(), a->row, w->rows);
    names(w->col.get(), b->col, w->cols);
    return 0;
}

// A name of the Kronecker product: the left one's name is the equation of the right one's.
static void kron_names(umatname *out, const umatname *a, int32_t na, const umatname *b, int32_t nb)
{
    for (int32_t i = 0; i < na; i++)
        for (int32_t j = 0; j < nb; j++) {
            umatname &o = out[i * nb + j];
            strcut(o.eq, sizeof o.eq, a[i].name);
            strcpy(o.name, b[j].name);
        }
}

static int32_t kron(work *w, const matref *a, const matref *b)
{
    int64_t rows = int64_t(a->m->rows) * b->m->rows, cols = int64_t(a->m->cols) * b->m->cols;
    if (rows > set_matsize || cols > set_matsize)
        return error(908);
    if (int32_t rc = work_make(w, int32_t(rows), int32_t(cols)))
        return rc;
    for (int32_t i = 0; i < w->rows; i++)
        for (int32_t j = 0; j < w->cols; j++) {
            double x = umat_el(a->m, i / b->m->rows + 1, j / b->m->cols + 1);
            double y = umat_el(b->m, i % b->m->rows + 1, j % b->m->cols + 1);
            w->at(i, j) = x >= misval || y >= misval ? misval : x * y;
        }
    kron_names(w->row.get(), a->row, a->m->rows, b->row, b->m->rows);
    kron_names(w->col.get(), a->col, a->m->cols, b->col, b->m->cols);
    return 0;
}

static void joined_names(umatname *out, const umatname *a, int32_t na, const umatname *b,
                         int32_t nb, char letter)
{
    if (is_default(a, na, letter) && is_default(b, nb, letter)) {
        umat_defstripe(out, na + nb, letter);
        return;
    }
    names(out, a, na);
    names(out + na, b, nb);
}

static int32_t join(work *w, const matref *a, const matref *b, bool rows)
{
    bool fit = rows ? a->m->cols == b->m->cols : a->m->rows == b->m->rows;
    if (!fit)
        return error(503);
    int32_t r = a->m->rows + (rows ? b->m->rows : 0), c = a->m->cols + (rows ? 0 : b->m->cols);
    if (int32_t rc = work_make(w, r, c))
        return rc;
    for (int32_t i = 0; i < r; i++)
        for (int32_t j = 0; j < c; j++) {
            bool left = i < a->m->rows && j < a->m->cols;
            w->at(i, j) = left ? umat_el(a->m, i + 1, j + 1)
                               : umat_el(b->m, i - (rows ? a->m->rows : 0) + 1,
                                         j - (rows ? 0 : a->m->cols) + 1);
        }
    if (rows) {
        joined_names(w->row.get(), a->row, a->m->rows, b->row, b->m->rows, 'r');
        names(w->col.get(), a->col, c);
    } else {
        names(w->row.get(), a->row, r);
        joined_names(w->col.get(), a->col, a->m->cols, b->col, b->m->cols, 'c');
    }
    return 0;
}

int32_t umat_binary(umat_op op, const char *an, matkind ka, const char *bn, matkind kb,
                    const char *dst)
{
    matref a, b;
    int32_t rc = find(an, ka, &a);
    if (!rc)
        rc = find(bn, kb, &b);
    if (rc)
        return rc;
    work w;
    switch (op) {
    case UM_ADD: rc = sum(&w, &a, &b, false, false); break;
    case UM_SUB: rc = sum(&w, &a, &b, true, false); break;
    case UM_HADAMARD: rc = sum(&w, &a, &b, false, true); break;
    case UM_MUL: rc = product(&w, &a, &b); break;
    case UM_KRON: rc = kron(&w, &a, &b); break;
    case UM_ROWJOIN: rc = join(&w, &a, &b, true); break;
    case UM_COLJOIN: rc = join(&w, &a, &b, false); break;
    }
    return rc ? rc : work_store(&w, dst);
}

// ---- one operand

static int32_t copy_of(work *w, const matref *a)
{
    if (int32_t rc = work_make(w, a->m->rows, a->m->cols))
        return rc;
    memcpy(w->el.get(), a->m->el, sizeof(double) * size_t(w->rows) * size_t(w->cols));
    names(w->row.get(), a->row, w->rows);
    names(w->col.get(), a->col, w->cols);
    return 0;
}

static void swap_names(work *w)
{
    std::swap(w->row, w->col);
}

static int32_t transpose(work *w, const matref *a)
{
    if (int32_t rc = work_make(w, a->m->cols, a->m->rows))
        return rc;
    for (int32_t i = 0; i < w->rows; i++)
        for (int32_t j = 0; j < w->cols; j++)
            w->at(i, j) = umat_el(a->m, j + 1, i + 1);
    names(w->row.get(), a->col, w->rows);
    names(w->col.get(), a->row, w->cols);
    return 0;
}

static bool symmetric(const matref *a)
{
    int32_t n = a->m->rows;
    if (n != a->m->cols)
        return false;
    for (int32_t i = 1; i <= n; i++)
        for (int32_t j = 1; j < i; j++) {
            double x = umat_el(a->m, i, j), y = umat_el(a->m, j, i);
            if (std::fabs(x - y) > 1e-8 * (1 + std::fabs(x) + std::fabs(y)))
                return false;
        }
    return true;
}

static int32_t need_symmetric(const matref *a)
{
    if (a->m->rows != a->m->cols)
        return error(503);
    if (has_missing(a))
        return error(504);
    return symmetric(a) ? 0 : error(505);
}

static void zero_out(work *w, int32_t k)
{
    for (int32_t i = 0; i < w->rows; i++)
        w->at(k, i) = w->at(i, k) = 0;
}

// Sweeps row and column k (0-based), whose diagonal is not 0.
static void sweep_one(work *w, int32_t k)
{
    int32_t n = w->rows;
    double d = w->at(k, k);
    for (int32_t j = 0; j < n; j++)
        w->at(k, j) /= d;
    for (int32_t i = 0; i < n; i++) {
        double b = w->at(i, k);
        if (i == k || b == 0)
            continue;
        for (int32_t j = 0; j < n; j++)
            if (j != k)
                w->at(i, j) -= b * w->at(k, j);
        w->at(i, k) = -b / d;
    }
    w->at(k, k) = 1 / d;
}

// J. H. Goodnight, A tutorial on the SWEEP operator, The American Statistician 33 (1979).
static int32_t syminv(work *w, const matref *a)
{
    if (int32_t rc = need_symmetric(a))
        return rc;
    if (int32_t rc = copy_of(w, a))
        return rc;
    int32_t n = w->rows;
    block<double> first = take<double>(n);
    if (!first)
        return errout(RC_DMMEM, "op. sys. refuses to provide memory\n");
    for (int32_t i = 0; i < n; i++) {
        first[i] = w->at(i, i);
        if (first[i] < 0)
            return error(506);
    }
    for (int32_t k = 0; k < n; k++) {
        if (w->at(k, k) > first[k] * 1e-9)
            sweep_one(w, k);
        else
            zero_out(w, k);
        if (fault_poll())
            return 1;
    }
    for (int32_t i = 0; i < n; i++)  // rounding must not spoil the symmetry
        for (int32_t j = 0; j < i; j++)
            w->at(i, j) = w->at(j, i) = (w->at(i, j) + w->at(j, i)) / 2;
    swap_names(w);
    return 0;
}

static int32_t pivot_row(work *w, int32_t k)
{
    int32_t best = k;
    for (int32_t i = k + 1; i < w->rows; i++)
        if (std::fabs(w->at(i, k)) > std::fabs(w->at(best, k)))
            best = i;
    return best;
}

// Gauss-Jordan elimination with row pivoting, in place.
static int32_t inverse(work *w, const matref *a)
{
    if (a->m->rows != a->m->cols)
        return error(503);
    if (has_missing(a))
        return error(504);
    if (int32_t rc = copy_of(w, a))
        return rc;
    int32_t n = w->rows;
    block<int32_t> piv = take<int32_t>(n);
    if (!piv)
        return errout(RC_DMMEM, "op. sys. refuses to provide memory\n");
    for (int32_t k = 0; k < n; k++) {
        int32_t p = piv[k] = pivot_row(w, k);
        if (w->at(p, k) == 0)
            return errout(506, "matrix is singular\n");
        for (int32_t j = 0; j < n && p != k; j++)
            std::swap(w->at(p, j), w->at(k, j));
        double d = w->at(k, k);
        w->at(k, k) = 1;
        for (int32_t j = 0; j < n; j++)
            w->at(k, j) /= d;
        for (int32_t i = 0; i < n; i++) {
            double f = w->at(i, k);
            if (i == k || f == 0)
                continue;
            w->at(i, k) = 0;
            for (int32_t j = 0; j < n; j++)
                w->at(i, j) -= f * w->at(k, j);
        }
        if (fault_poll())
            return 1;
    }
    for (int32_t k = n - 1; k >= 0; k--)
        for (int32_t i = 0; i < n && piv[k] != k; i++)
            std::swap(w->at(i, k), w->at(i, piv[k]));
    swap_names(w);
    return 0;
}

static int32_t cholesky(work *w, const matref *a)
{
    if (int32_t rc = need_symmetric(a))
        return rc;
    if (int32_t rc = copy_of(w, a))
        return rc;
    int32_t n = w->rows;
    for (int32_t j = 0; j < n; j++) {
        double d = w->at(j, j);
        for (int32_t k = 0; k < j; k++)
            d -= w->at(j, k) * w->at(j, k);
        if (!(d > 0))
            return error(506);
        d = w->at(j, j) = std::sqrt(d);
        for (int32_t i = j + 1; i < n; i++) {
            double x = w->at(i, j);
            for (int32_t k = 0; k < j; k++)
                x -= w->at(i, k) * w->at(j, k);
            w->at(i, j) = x / d;
            w->at(j, i) = 0;
        }
        if (fault_poll())
            return 1;
    }
    return 0;
}

static int32_t correlation(work *w, const matref *a)
{
    if (int32_t rc = need_symmetric(a))
        return rc;
    if (int32_t rc = copy_of(w, a))
        return rc;
    int32_t n = w->rows;
    for (int32_t i = 0; i < n; i++)
        if (!(umat_el(a->m, i + 1, i + 1) > 0))
            return error(506);
    for (int32_t i = 0; i < n; i++)
        for (int32_t j = 0; j < n; j++)
            w->at(i, j) = i == j ? 1
                                 : umat_el(a->m, i + 1, j + 1)
                                       / std::sqrt(umat_el(a->m, i + 1, i + 1)
                                                   * umat_el(a->m, j + 1, j + 1));
    return 0;
}

static int32_t diagonal(work *w, const matref *a)
{
    if (a->m->rows != 1 && a->m->cols != 1)
        return error(503);
    bool isrow = a->m->rows == 1;
    int32_t n = isrow ? a->m->cols : a->m->rows;
    if (int32_t rc = work_make(w, n, n))
        return rc;
    memset(w->el.get(), 0, sizeof(double) * size_t(n) * size_t(n));
    for (int32_t i = 0; i < n; i++)
        w->at(i, i) = a->m->el[i];
    const umatname *from = isrow ? a->col : a->row;
    names(w->row.get(), from, n);
    names(w->col.get(), from, n);
    return 0;
}

static int32_t vecdiag(work *w, const matref *a)
{
    int32_t n = a->m->rows;
    if (n != a->m->cols)
        return error(503);
    if (int32_t rc = work_make(w, 1, n))
        return rc;
    for (int32_t i = 0; i < n; i++)
        w->el[i] = umat_el(a->m, i + 1, i + 1);
    umat_defstripe(w->row.get(), 1, 'r');
    names(w->col.get(), a->col, n);
    return 0;
}

// The columns below one another; each row is named by its column and its row.
static int32_t vec(work *w, const matref *a)
{
    int64_t n = int64_t(a->m->rows) * a->m->cols;
    if (n > set_matsize)
        return error(908);
    if (int32_t rc = work_make(w, int32_t(n), 1))
        return rc;
    for (int32_t i = 0; i < w->rows; i++) {
        int32_t r = i % a->m->rows, c = i / a->m->rows;
        w->el[i] = umat_el(a->m, r + 1, c + 1);
        strcut(w->row[i].eq, sizeof w->row[i].eq, a->col[c].name);
        strcpy(w->row[i].name, a->row[r].name);
    }
    umat_defstripe(w->col.get(), 1, 'c');
    return 0;
}

static int32_t scaled(work *w, const matref *a, double s)
{
    if (int32_t rc = copy_of(w, a))
        return rc;
    int64_t n = int64_t(w->rows) * w->cols;
    for (int64_t i = 0; i < n; i++)
        w->el[i] = w->el[i] >= misval || s >= misval ? misval : w->el[i] * s;
    return 0;
}

int32_t umat_unary(umat_uop op, const char *an, matkind ka, const char *dst)
{
    matref a;
    int32_t rc = find(an, ka, &a);
    if (rc)
        return rc;
    work w;
    switch (op) {
    case UM_NEG: rc = scaled(&w, &a, -1); break;
    case UM_TRANSPOSE: rc = transpose(&w, &a); break;
    case UM_SYMINV: rc = syminv(&w, &a); break;
    case UM_INV: rc = inverse(&w, &a); break;
    case UM_CHOLESKY: rc = cholesky(&w, &a); break;
    case UM_CORR: rc = correlation(&w, &a); break;
    case UM_DIAG: rc = diagonal(&w, &a); break;
    case UM_VECDIAG: rc = vecdiag(&w, &a); break;
    case UM_VEC: rc = vec(&w, &a); break;
    }
    return rc ? rc : work_store(&w, dst);
}

int32_t umat_scale(const char *an, matkind ka, double s, const char *dst)
{
    matref a;
    work w;
    int32_t rc = find(an, ka, &a);
    if (!rc)
        rc = scaled(&w, &a, s);
    return rc ? rc : work_store(&w, dst);
}

int32_t umat_sweep(const char *an, matkind ka, double k, const char *dst)
{
    matref a;
    work w;
    int32_t rc = find(an, ka, &a);
    if (rc)
        return rc;
    if (a.m->rows != a.m->cols || !(k >= 1) || !(k < a.m->rows + 1.0))
        return error(503);
    if (has_missing(&a))
        return error(504);
    if ((rc = copy_of(&w, &a)))
        return rc;
    int32_t at = int32_t(k) - 1;
    if (std::fabs(w.at(at, at)) < 1e-15)
        zero_out(&w, at);
    else
        sweep_one(&w, at);
    umatname swapped = w.row[at];
    w.row[at] = w.col[at];
    w.col[at] = swapped;
    return work_store(&w, dst);
}

int32_t umat_sub(const char *an, matkind ka, int32_t r1, int32_t r2, int32_t c1, int32_t c2,
                 const char *dst)
{
    matref a;
    work w;
    int32_t rc = find(an, ka, &a);
    if (rc)
        return rc;
    if (r1 < 1 || r2 < r1 || r2 > a.m->rows || c1 < 1 || c2 < c1 || c2 > a.m->cols)
        return error(503);
    if ((rc = work_make(&w, r2 - r1 + 1, c2 - c1 + 1)))
        return rc;
    for (int32_t i = 0; i < w.rows; i++)
        for (int32_t j = 0; j < w.cols; j++)
            w.at(i, j) = umat_el(a.m, r1 + i, c1 + j);
    names(w.row.get(), a.row + r1 - 1, w.rows);
    names(w.col.get(), a.col + c1 - 1, w.cols);
    return work_store(&w, dst);
}

// ---- matrices from numbers

static int32_t dimension(double n, int32_t *out)
{
    if (!(n >= 1 && n < 2147483647.0))
        return error(503);
    *out = int32_t(n);
    return 0;
}

int32_t umat_const(const char *dst, double r, double c, double z)
{
    int32_t rows = 0, cols = 0;
    int32_t rc = dimension(r, &rows);
    if (!rc)
        rc = dimension(c, &cols);
    matref m;
    if (!rc)
        rc = umat_new(dst, MK_MAT, rows, cols, &m);
    if (rc)
        return rc;
    for (int64_t i = 0; i < int64_t(rows) * cols; i++)
        m.m->el[i] = z;
    return 0;
}

int32_t umat_ident(const char *dst, double n)
{
    int32_t rc = umat_const(dst, n, n, 0);
    matref m;
    if (rc || !umat_get(dst, MK_MAT, &m))
        return rc;
    for (int32_t i = 0; i < m.m->rows; i++)
        m.m->el[int64_t(i) * m.m->cols + i] = 1;
    return 0;
}

// ---- numbers from matrices

static int32_t square(const matref *a) { return a->m->rows == a->m->cols ? 0 : error(503); }

double umat_trace(const matref *a, int32_t *rc)
{
    if ((*rc = square(a)))
        return misval;
    double sum_ = 0;
    for (int32_t i = 1; i <= a->m->rows; i++) {
        double x = umat_el(a->m, i, i);
        if (x >= misval)
            return misval;
        sum_ += x;
    }
    return sum_;
}

double umat_det(const matref *a, int32_t *rc)
{
    if ((*rc = square(a)))
        return misval;
    if (has_missing(a))
        return misval;
    work w;
    if ((*rc = copy_of(&w, a)))
        return misval;
    double det = 1;
    for (int32_t k = 0; k < w.rows; k++) {
        int32_t p = pivot_row(&w, k);
        if (w.at(p, k) == 0)
            return 0;
        if (p != k) {
            for (int32_t j = k; j < w.cols; j++)
                std::swap(w.at(p, j), w.at(k, j));
            det = -det;
        }
        det *= w.at(k, k);
        for (int32_t i = k + 1; i < w.rows; i++) {
            double f = w.at(i, k) / w.at(k, k);
            for (int32_t j = k + 1; f != 0 && j < w.cols; j++)
                w.at(i, j) -= f * w.at(k, j);
        }
    }
    return std::fabs(det) < misval ? det : misval;
}

double umat_mreldif(const matref *a, const matref *b, int32_t *rc)
{
    *rc = 0;
    if (a->m->rows != b->m->rows || a->m->cols != b->m->cols) {
        *rc = error(503);
        return misval;
    }
    double worst = 0;
    for (int64_t i = 0; i < int64_t(a->m->rows) * a->m->cols; i++) {
        double x = a->m->el[i], y = b->m->el[i];
        if (x >= misval || y >= misval) {
            if (x == y)
                continue;
            return misval;
        }
        double d = std::fabs(x - y) / (std::fabs(y) + 1);
        worst = d > worst ? d : worst;
    }
    return worst;
}

double umat_diag0cnt(const matref *a, int32_t *rc)
{
    if ((*rc = square(a)))
        return misval;
    int32_t n = 0;
    for (int32_t i = 1; i <= a->m->rows; i++)
        n += umat_el(a->m, i, i) == 0;
    return n;
}

double umat_missing(const matref *a) { return has_missing(a); }

double umat_issym(const matref *a)
{
    for (int32_t i = 1; i <= a->m->rows && a->m->rows == a->m->cols; i++)
        for (int32_t j = 1; j < i; j++)
            if (umat_el(a->m, i, j) != umat_el(a->m, j, i))
                return 0;
    return a->m->rows == a->m->cols;
}
