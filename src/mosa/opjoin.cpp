// Joining columns and rows, and the two ranges.
#include "mosa/elwise.h"
#include <cmath>

// Copies count elements of from, beginning at fi, to ti of out; strings of an operand that is
// going away are handed over.
static bool copy_run(matobj *out, int64_t ti, matobj *from, int64_t fi, int64_t count)
{
    if (is_num(out)) {
        memcpy(mo_re(out) + ti, mo_re(from) + fi, size_t(count) * 8);
        if (out->eltype == MO_COMPLEX)
            memcpy(mo_im(out) + ti, mo_im(from) + fi, size_t(count) * 8);
        return true;
    }
    for (int64_t k = 0; k < count; k++) {
        if (mo_isptrlike(out->eltype))
            pelreplace(out, ti + k, mo_pel(from)[fi + k]);
        else if (m_isfree(from))
            mo_sel(out)[ti + k] = selexch(from, fi + k);
        else if (matcpy_el(out, ti + k, from, fi + k))
            return false;
    }
    return true;
}

static bool copy_all(matobj *out, int64_t ti, matobj *from)
{
    constexpr int64_t some = 65536;
    for (int64_t k = 0, n = mo_count(from); k < n; k += some)
        if (row_break() || !copy_run(out, ti + k, from, k, n - k < some ? n - k : some))
            return false;
    return true;
}

static bool is_void(const matobj *m)
{
    return m->rows == 0 && m->cols == 0;
}

// The result is one of the operands, but never the variable it may be.
static void give(matobj *m)
{
    if (m_isfree(m))
        ppp(m);
    else
        put_result(2, m_dupmat(m));
}

// Settles what need not be joined, and makes the operands arrays of one type. True when the
// work is done or has failed.
static bool join_settled()
{
    matobj *a = m_stak[-1], *b = m_stak[0];
    if (no_mat(a) || no_mat(b))
        return true;
    if (is_void(a) || is_void(b)) {
        give(is_void(b) ? a : b);
        return true;
    }
    if (is_num(a) && is_num(b))
        return !two_numbers();
    if (a->eltype != b->eltype || a->eltype == MO_ODD) {
        m_xrc = 3250;
        return true;
    }
    return two_arrays();
}

static void finish(matobj *out, bool good)
{
    if (good)
        qppp(out);
    else
        mo_free(out);
}

void opaddc()
{
    if (join_settled())
        return;
    matobj *a = m_stak[-1], *b = m_stak[0];
    if (a->rows != b->rows)
        return fail(3200);
    if (m_checkrandc(a->rows, double(a->cols) + b->cols))
        return;
    matobj *out = m_mktmat(a->eltype, a->rows, a->cols + b->cols);
    if (!out)
        return;
    bool good = true;
    for (int64_t i = 0; good && i < a->rows; i++)
        good = !row_break() && copy_run(out, i * out->cols, a, i * a->cols, a->cols) &&
               copy_run(out, i * out->cols + a->cols, b, i * b->cols, b->cols);
    finish(out, good);
}

void opaddr()
{
    if (join_settled())
        return;
    matobj *a = m_stak[-1], *b = m_stak[0];
    if (a->cols != b->cols)
        return fail(3200);
    if (m_checkrandc(double(a->rows) + b->rows, a->cols))
        return;
    matobj *out = m_mktmat(a->eltype, a->rows + b->rows, a->cols);
    if (!out)
        return;
    bool good = copy_all(out, 0, a) && copy_all(out, mo_count(a), b);
    finish(out, good);
}

// ---- ranges

// The value of a real scalar operand; false after 3253 or 3204.
static bool bound(const matobj *m, double *z)
{
    if (no_mat(m))
        return false;
    if (m->eltype != MO_REAL)
        m_xrc = 3253;
    else if (!mo_is1by1(m))
        m_xrc = 3204;
    else
        *z = m_el(m, 0, 0);
    return m_xrc == 0;
}

static void range(bool row)
{
    double from, to;
    if (!bound(m_stak[-1], &from) || !bound(m_stak[0], &to))
        return;
    if (from >= misval || to >= misval)
        return qppp(rs_new(misval));
    double span = fabs(to - from);
    if (!(span < 2147483647.0))
        return fail(3300);
    int32_t n = int32_t(span) + 1;
    matobj *out = m_mktmat(MO_REAL, row ? 1 : n, row ? n : 1);
    if (!out)
        return;
    double step = from <= to ? 1 : -1;
    for (int32_t i = 0; i < n && !el_break(i); i++)
        mo_re(out)[i] = from + step * i;
    qppp(out);
}

void oprowto()
{
    range(true);
}

void opcolto()
{
    range(false);
}
