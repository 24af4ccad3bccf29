// Arithmetic of whole matrices, negation, transposition and the scalar logic.
#include "mosa/classdef.h"
#include "mosa/elwise.h"
#include "mosa/views.h"
#include <cmath>

double z_pow(double a, double b)
{
    if (a >= misval || b >= misval)
        return misval;
    if (b == 2)
        return z_fix(a * a);
    double z = pow(a, b);
    return z == z ? z_fix(z) : misval;
}

// ---- complex numbers

zc zc_fix(zc z)
{
    if (z.re < misval && z.re > -INFINITY && z.im < misval && z.im > -INFINITY)
        return z;
    return {misval, misval};
}

static bool zc_known(zc a, zc b)
{
    return !zc_missing(a) && !zc_missing(b);
}

zc zc_add(zc a, zc b)
{
    return zc_known(a, b) ? zc_fix({a.re + b.re, a.im + b.im}) : zc{misval, misval};
}

zc zc_sub(zc a, zc b)
{
    return zc_known(a, b) ? zc_fix({a.re - b.re, a.im - b.im}) : zc{misval, misval};
}

zc zc_mul(zc a, zc b)
{
    if (!zc_known(a, b))
        return {misval, misval};
    return zc_fix({a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re});
}

zc zc_div(zc a, zc b)
{
    if (!zc_known(a, b) || (b.re == 0 && b.im == 0))
        return {misval, misval};
    if (fabs(b.re) >= fabs(b.im)) {
        double r = b.im / b.re, d = b.re + b.im * r;
        return zc_fix({(a.re + a.im * r) / d, (a.im - a.re * r) / d});
    }
    double r = b.re / b.im, d = b.re * r + b.im;
    return zc_fix({(a.re * r + a.im) / d, (a.im * r - a.re) / d});
}

zc zc_pow(zc a, zc b)
{
    if (!zc_known(a, b))
        return {misval, misval};
    if (b.im == 0 && b.re == floor(b.re) && fabs(b.re) <= 64) {
        zc z{1, 0}, p = a;
        for (int n = int(fabs(b.re)); n; n >>= 1) {
            if (n & 1)
                z = zc_mul(z, p);
            if (n > 1)
                p = zc_mul(p, p);
        }
        return b.re < 0 ? zc_div({1, 0}, z) : z;
    }
    if (a.re == 0 && a.im == 0)
        return b.re > 0 ? zc{0, 0} : zc{misval, misval};
    double lr = log(hypot(a.re, a.im)), arg = atan2(a.im, a.re);
    double size = exp(b.re * lr - b.im * arg), angle = b.im * lr + b.re * arg;
    return zc_fix({size * cos(angle), size * sin(angle)});
}

// ---- what operators share

matobj *result_home(int16_t eltype, int32_t rows, int32_t cols)
{
    if (matobj *m = reusable(1, eltype, rows, cols))
        return m;
    if (matobj *m = reusable(0, eltype, rows, cols))
        return m;
    return m_mktmat(eltype, rows, cols);
}

bool two_arrays()
{
    if (no_mat(m_stak[-1]) || no_mat(m_stak[0]))
        return true;
    return need_array(1) || need_array(0);
}

bool two_numbers()
{
    if (no_mat(m_stak[-1]) || no_mat(m_stak[0]))
        return false;
    if (!is_num(m_stak[-1]) || !is_num(m_stak[0])) {
        m_xrc = 3250;
        return false;
    }
    if (two_arrays())
        return false;
    if (m_stak[-1]->eltype == m_stak[0]->eltype)
        return true;
    return !make_complex(m_stak[-1]->eltype == MO_REAL ? 1 : 0);
}

// True with 3200 when the operands differ in shape.
static bool not_p_conformable()
{
    const matobj *a = m_stak[-1], *b = m_stak[0];
    if (no_mat(a) || no_mat(b))
        return true;
    if (a->rows == b->rows && a->cols == b->cols)
        return false;
    m_xrc = 3200;
    return true;
}

// ---- plus and minus

// Strings joined element by element; the shapes are known to go together.
void string_concat(m_colonclass cc, int32_t rows, int32_t cols)
{
    matobj *a = m_stak[-1], *b = m_stak[0];
    matobj *out = m_mktmat(MO_STRING, rows, cols);
    if (!out)
        return;
    ew_index at{cc, cols};
    for (int64_t k = 0, n = mo_count(out); k < n; k++) {
        const char *x = mo_sel(a)[at.a(k)], *y = mo_sel(b)[at.b(k)];
        int64_t nx = sel_len(x), ny = sel_len(y);
        if (nx + ny > INT32_MAX)
            m_xrc = 3492;
        else if (nx + ny) {
            if (selrecreate(out, k, nx + ny) == 0) {
                memcpy(mo_sel(out)[k] + 4, sel_text(x), size_t(nx));
                memcpy(mo_sel(out)[k] + 4 + nx, sel_text(y), size_t(ny));
                mo_sel(out)[k][4 + nx + ny] = 0;
            } else if (!m_xrc)
                m_xrc = 3900;
        }
        if (m_xrc || ((k & 4095) == 0 && row_break()))
            return mo_free(out);
    }
    qppp(out);
}

void opplus()
{
    const matobj *a = m_stak[-1], *b = m_stak[0];
    if (no_mat(a) || no_mat(b))
        return;
    if (a->eltype == MO_STRING && b->eltype == MO_STRING) {
        if (!not_p_conformable() && !two_arrays())
            string_concat(CC_SAME, a->rows, m_stak[0]->cols);
        return;
    }
    if (is_num(a) && is_num(b) && not_p_conformable())
        return;
    if (two_numbers())
        numeric_binary<k_add>(CC_SAME, m_stak[0]->rows, m_stak[0]->cols, zc_add);
}

void opsub()
{
    const matobj *a = m_stak[-1], *b = m_stak[0];
    if (is_num(a) && is_num(b) && not_p_conformable())
        return;
    if (two_numbers())
        numeric_binary<k_sub>(CC_SAME, m_stak[0]->rows, m_stak[0]->cols, zc_sub);
}

void opdiv()
{
    m_xeqerrid = "/";
    const matobj *a = m_stak[-1], *b = m_stak[0];
    if (no_mat(a) || no_mat(b))
        return;
    if (is_num(a) && is_num(b) && !mo_is1by1(b))
        return fail(3204);
    if (!two_numbers())
        return;
    a = m_stak[-1];
    numeric_binary<k_div>(mo_is1by1(a) ? CC_SAME : CC_BONE, a->rows, a->cols, zc_div);
}

void oppower()
{
    m_xeqerrid = "^";
    const matobj *a = m_stak[-1], *b = m_stak[0];
    if (no_mat(a) || no_mat(b))
        return;
    if (is_num(a) && is_num(b) && (!mo_is1by1(a) || !mo_is1by1(b)))
        return fail(3204);
    if (two_numbers())
        numeric_binary<k_pow>(CC_SAME, 1, 1, zc_pow);
}

// ---- one operand

void opneg()
{
    if (need_array(0))
        return;
    matobj *a = *m_stak;
    if (!is_num(a))
        return fail(3250);
    matobj *out = reusable(0, a->eltype, a->rows, a->cols);
    if (!out && !(out = m_mktmat(a->eltype, a->rows, a->cols)))
        return;
    const double *x = mo_re(a), mis = misval;
    double *z = mo_re(out);
    int64_t n = mo_count(a) * (a->eltype == MO_COMPLEX ? 2 : 1);
    for (int64_t i = 0; i < n; i++)
        z[i] = x[i] < mis ? z_fix(0.0 - x[i]) : mis;
    put_result(1, out);
}

void opnot()
{
    if (need_array(0))
        return;
    matobj *a = *m_stak;
    if (a->eltype != MO_REAL && a->eltype != MO_POINTER)
        return fail(3250);
    matobj *out = reusable(0, MO_REAL, a->rows, a->cols);
    if (!out && !(out = m_mktmat(MO_REAL, a->rows, a->cols)))
        return;
    for (int64_t i = 0, n = mo_count(a); i < n && !el_break(i); i++)
        mo_re(out)[i] = a->eltype == MO_REAL ? mo_re(a)[i] == 0 : mo_pel(a)[i] == nullptr;
    put_result(1, out);
}

static void transpose_plane(const double *a, double *z, int64_t rows, int64_t cols)
{
    constexpr int64_t block = 32;
    for (int64_t i0 = 0; i0 < rows && !row_break(); i0 += block)
        for (int64_t j0 = 0; j0 < cols; j0 += block)
            for (int64_t i = i0; i < rows && i < i0 + block; i++)
                for (int64_t j = j0; j < cols && j < j0 + block; j++)
                    z[j * rows + i] = a[i * cols + j];
}

matobj *m_transpose(const matobj *m)
{
    matobj *t = m_mktmat(m->eltype, m->cols, m->rows);
    if (!t)
        return nullptr;
    int64_t n = mo_count(m);
    if (is_num(m)) {
        transpose_plane(mo_re(m), mo_re(t), m->rows, m->cols);
        if (m->eltype == MO_COMPLEX) {
            transpose_plane(mo_im(m), mo_im(t), m->rows, m->cols);
            for (int64_t i = 0; i < n && !el_break(i); i++)
                mo_im(t)[i] = mo_im(t)[i] < misval ? 0.0 - mo_im(t)[i] : misval;
        }
        return t;
    }
    for (int64_t k = 0; k < n; k++) {
        int64_t to = k % m->cols * m->rows + k / m->cols;
        if (el_break(k))
            return t;
        if (mo_isptrlike(m->eltype))
            pelreplace(t, to, mo_pel(m)[k]);
        else if (matcpy_el(t, to, m, k)) {
            mo_free(t);
            return nullptr;
        }
    }
    return t;
}

void optrans()
{
    if (need_array(0))
        return;
    matobj *a = *m_stak;
    if (a->eltype == MO_ODD)
        return fail(3250);
    // A vector of its own keeps its elements where they are.
    if (a->eltype != MO_COMPLEX && a->links == 1 && (a->rows <= 1 || a->cols <= 1) &&
        !mo_isinstance(a)) {
        int32_t rows = a->rows;
        a->rows = a->cols;
        a->cols = rows;
        return;
    }
    put_result(1, m_transpose(a));
}

// ---- and, or

// Truth of an operand of & or |: 0, 1, or -1 with 3250.
static int32_t logic_truth(const matobj *m)
{
    if (no_mat(m))
        return -1;
    if (mo_is1by1(m) && (m->eltype == MO_REAL || m->eltype == MO_POINTER))
        return truth_of(m);
    m_xrc = 3250;
    return -1;
}

static void logic(const char *id, bool all)
{
    m_xeqerrid = id;
    int32_t a = logic_truth(m_stak[-1]);
    int32_t b = a < 0 ? -1 : logic_truth(m_stak[0]);
    if (b < 0)
        return;
    matobj *out = result_home(MO_REAL, 1, 1);
    if (!out)
        return;
    *mo_re(out) = all ? a & b : a | b;
    ppp(out);
}

void opand()
{
    logic("&", true);
}

void opor()
{
    logic("|", false);
}
