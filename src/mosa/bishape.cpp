// Shape, type, and matrices made from shapes.
#include "core/mem.h"
#include "mosa/bi_int.h"
#include "mosa/bihandlers.h"
#include "mosa/mtypes.h"
#include <algorithm>

namespace
{

void result_of(int32_t argc, double z)
{
    m_result(argc, m_mktsmatsto(z));
}

void result_text(int32_t argc, const char *text)
{
    m_result(argc, m_mktstr(text, int64_t(strlen(text))));
}

// Answers with a number about a matrix; a function is none.
#define ABOUT(name, expr)                                                                          \
    void bi##name(int32_t argc)                                                                    \
    {                                                                                              \
        m_xeqerrid = #name "()";                                                                   \
        const matobj *a = m_arg(0);                                                                \
        if (bi_ismatrix(a))                                                                        \
            result_of(argc, double(expr));                                                         \
    }

} // namespace

ABOUT(rows, a->rows)
ABOUT(cols, a->cols)
ABOUT(length, mo_count(a))
ABOUT(isreal, a->eltype == MO_REAL)
ABOUT(iscomplex, a->eltype == MO_COMPLEX)
ABOUT(isstring, a->eltype == MO_STRING)
ABOUT(ispointer, a->eltype == MO_POINTER)
ABOUT(isview, a->view != 0)
ABOUT(sizeof, m_objsize(a))
ABOUT(isfleeting, a->view == 0 && a->links < 3)
ABOUT(sys_linkcount, a->links - 1)
#undef ABOUT

void bisys_incrlinkcount(int32_t argc)
{
    m_arg(0)->links++;
    m_result(argc, m_mktmat(MO_REAL, 0, 0));
}

void bisys_decrlinkcount(int32_t argc)
{
    matobj *a = m_arg(0);
    if (a->links > 1)
        a->links--;
    m_result(argc, m_mktmat(MO_REAL, 0, 0));
}

void bieltype(int32_t argc)
{
    m_xeqerrid = "eltype()";
    if (bi_ismatrix(m_arg(0)))
        result_text(argc, mateltypestr(m_arg(0)->eltype));
}

void biorgtype(int32_t argc)
{
    m_xeqerrid = "orgtype()";
    const matobj *a = m_arg(0);
    if (!bi_ismatrix(a))
        return;
    int32_t o = mo_is1by1(a)   ? OT_SCALAR
                : a->rows == 1 ? OT_ROWVECTOR
                : a->cols == 1 ? OT_COLVECTOR
                               : OT_MATRIX;
    result_text(argc, readableorgtype(o));
}

void bimosa_representation(int32_t argc)
{
    m_xeqerrid = "mosa_representation()";
    if (bi_ismatrix(m_arg(0)))
        result_text(argc, mosa_representation(m_arg(0)));
}

// ---- filled matrices

namespace
{

bool shape_of(const matobj *r, const matobj *c, int32_t *rows, int32_t *cols)
{
    double x, y;
    if (!bi_real(r, &x) || !bi_real(c, &y))
        return false;
    if (x < 0 || y < 0 || x >= misval || y >= misval)
        return bi_fail(3300);
    if (m_checkrandc(x, y))
        return false;
    *rows = int32_t(x);
    *cols = int32_t(y);
    return true;
}

} // namespace

// J(rows, cols, scalar)
void biJ(int32_t argc)
{
    m_xeqerrid = "J()";
    int32_t rows, cols;
    matobj *v = m_arg(0);
    if (!shape_of(m_arg(2), m_arg(1), &rows, &cols) || !bi_isscalar(v))
        return;
    matobj *r = m_mktmat(v->eltype, rows, cols);
    matobj *a = r ? bi_array(v) : nullptr;
    if (!a)
        return;
    int64_t n = mo_count(r);
    if (a->eltype == MO_REAL)
        for (int64_t k = 0; k < n && !row_break(); k += 65536)
            std::fill_n(mo_re(r) + k, std::min<int64_t>(n - k, 65536), *mo_re(a));
    else
        for (int64_t k = 0; k < n; k++)
            if (bi_stop(k) || matcpy_el(r, k, a, 0))
                break;
    if (a != v)
        mo_freemat(a);
    m_result(argc, r);
}

// I(n), I(rows, cols)
void biI(int32_t argc)
{
    m_xeqerrid = "I()";
    int32_t rows, cols;
    if (!shape_of(bi_arg(argc, 1), bi_arg(argc, argc), &rows, &cols))
        return;
    matobj *r = m_mktmat(MO_REAL, rows, cols);
    if (!r)
        return;
    std::fill_n(mo_re(r), mo_count(r), 0.0);
    for (int32_t i = 0; i < std::min(rows, cols); i++)
        mo_re(r)[int64_t(i) * cols + i] = 1;
    m_result(argc, r);
}

// ---- the same elements in another shape

namespace
{

void reshaped(int32_t argc, const char *id, bool byrows)
{
    m_xeqerrid = id;
    matobj *a = bi_arg(argc, 1);
    int32_t n;
    if (!bi_ismatrix(a) || !bi_int(bi_arg(argc, 2), 0, 2147483647, &n))
        return;
    int64_t count = mo_count(a);
    if (n ? count % n != 0 : count != 0) {
        m_xrc = 3200;
        return;
    }
    auto other = int32_t(n ? count / n : 0);
    int32_t rows = byrows ? n : other, cols = byrows ? other : n;
    matobj *src = bi_array(a);
    matobj *r = src ? m_mktmat(a->eltype, rows, cols) : nullptr;
    if (!r)
        return;
    // Both read and fill row by row.
    for (int64_t k = 0; k < count; k++)
        if (matcpy_el(r, k, src, k))
            break;
    if (src != a)
        mo_freemat(src);
    m_result(argc, r);
}

} // namespace

void birowshape(int32_t argc)
{
    reshaped(argc, "rowshape()", true);
}
void bicolshape(int32_t argc)
{
    reshaped(argc, "colshape()", false);
}

void bidiagonal(int32_t argc)
{
    m_xeqerrid = "diagonal()";
    matobj *a = m_arg(0);
    if (!bi_isnumeric(a))
        return;
    int32_t n = std::min(a->rows, a->cols);
    matobj *r = m_mktmat(a->eltype, n, 1);
    if (!r)
        return;
    for (int32_t i = 0; i < n; i++) {
        mo_re(r)[i] = m_el(a, i, i);
        if (a->eltype == MO_COMPLEX)
            mo_im(r)[i] = mo_im(a)[int64_t(i) * a->cols + i];
    }
    m_result(argc, r);
}

void biswap(int32_t argc)
{
    m_xeqerrid = "swap()";
    matobj *a = m_arg(1), *b = m_arg(0);
    if (!bi_ismatrix(a) || !bi_ismatrix(b))
        return;
    if (a != b)
        m_swapmat(a, b);
    m_result(argc, m_mktmat(MO_REAL, 0, 0));
}

// ---- symmetry and transposition

namespace
{

bool symmetric(const matobj *a, bool conjugate)
{
    if (a->rows != a->cols)
        return false;
    for (int32_t i = 0; i < a->rows; i++)
        for (int32_t j = 0; j <= i; j++) {
            int64_t p = int64_t(i) * a->cols + j, q = int64_t(j) * a->cols + i;
            if (a->eltype == MO_STRING ? exstrcmp(mo_sel(a)[p], mo_sel(a)[q]) != 0
                                       : m_el(a, i, j) != m_el(a, j, i))
                return false;
            if (a->eltype == MO_COMPLEX) {
                double im = mo_im(a)[q];
                if (mo_im(a)[p] != (conjugate && im < misval ? -im : im))
                    return false;
            }
        }
    return true;
}

void is_symmetric(int32_t argc, const char *id, bool conjugate)
{
    m_xeqerrid = id;
    matobj *a = m_arg(0);
    if (!bi_ismatrix(a))
        return;
    if (mo_isptrlike(a->eltype)) {
        m_xrc = 3256;
        return;
    }
    matobj *src = bi_array(a);
    if (!src)
        return;
    bool yes = symmetric(src, conjugate);
    if (src != a)
        mo_freemat(src);
    m_result(argc, m_mktsmatsto(yes));
}

} // namespace

void biissymmetric(int32_t argc)
{
    is_symmetric(argc, "issymmetric()", true);
}
void biissymmetriconly(int32_t argc)
{
    is_symmetric(argc, "issymmetriconly()", false);
}

// The lower half copied over the upper.
void bi_makesymmetric(int32_t argc)
{
    m_xeqerrid = "_makesymmetric()";
    matobj *a = m_arg(0);
    if (!bi_isarray(a) || !bi_isnumeric(a))
        return;
    if (a->rows != a->cols) {
        m_xrc = 3205;
        return;
    }
    int64_t n = a->cols;
    for (int64_t i = 0; i < n; i++)
        for (int64_t j = 0; j < i; j++) {
            mo_re(a)[j * n + i] = mo_re(a)[i * n + j];
            if (a->eltype == MO_COMPLEX) {
                double im = mo_im(a)[i * n + j];
                mo_im(a)[j * n + i] = im >= misval ? im : -im;
            }
        }
    m_result(argc, m_mktmat(MO_REAL, 0, 0));
}

void bi_transpose(int32_t argc)
{
    m_xeqerrid = "_transpose()";
    matobj *a = m_arg(0);
    if (!bi_isarray(a))
        return;
    matobj *t = m_transpose(a);
    if (!t)
        return;
    m_swapmat(a, t);
    if (t->links < 1)
        mo_freemat(t);
    m_result(argc, m_mktmat(MO_REAL, 0, 0));
}

// select(X, v): the rows of X where the column v is not 0, or the columns where the row is.
void biselect(int32_t argc)
{
    m_xeqerrid = "select()";
    matobj *x = m_arg(1), *v = m_arg(0);
    if (!bi_ismatrix(x) || !bi_isreal(v))
        return;
    bool byrow = v->cols == 1 && v->rows == x->rows;
    if (!byrow && !(v->rows == 1 && v->cols == x->cols)) {
        m_xrc = 3200;
        return;
    }
    int32_t kept = 0, n = byrow ? v->rows : v->cols;
    for (int32_t k = 0; k < n; k++)
        kept += m_el(v, byrow ? k : 0, byrow ? 0 : k) != 0;
    matobj *src = bi_array(x);
    matobj *r = src ? m_mktmat(x->eltype, byrow ? kept : x->rows, byrow ? x->cols : kept) : nullptr;
    if (!r)
        return;
    int64_t to = 0;
    for (int32_t i = 0; i < x->rows; i++)
        for (int32_t j = 0; j < x->cols; j++)
            if (m_el(v, byrow ? i : 0, byrow ? 0 : j) != 0)
                if (matcpy_el(r, to++, src, int64_t(i) * x->cols + j))
                    break;
    if (src != x)
        mo_freemat(src);
    m_result(argc, r);
}
