// The colon operators: element by element over shapes that need not be the same.
#include "mosa/elwise.h"
#include <cmath>

m_colonclass m_colonshape(const matobj *a, const matobj *b, int32_t *rows, int32_t *cols)
{
    m_colonclass cc = CC_NONE;
    if (a->rows == b->rows && a->cols == b->cols)
        cc = CC_SAME;
    else if (mo_is1by1(b))
        cc = CC_BONE;
    else if (mo_is1by1(a))
        cc = CC_AONE;
    else if (b->rows == 1 && a->cols == b->cols)
        cc = CC_BROW;
    else if (b->cols == 1 && a->rows == b->rows)
        cc = CC_BCOL;
    else if (a->rows == 1 && a->cols == b->cols)
        cc = CC_AROW;
    else if (a->cols == 1 && a->rows == b->rows)
        cc = CC_ACOL;
    const matobj *big = cc == CC_AONE || cc == CC_AROW || cc == CC_ACOL ? b : a;
    *rows = big->rows;
    *cols = big->cols;
    return cc;
}

// The class of the two operands; CC_NONE after 3102 or 3200.
static m_colonclass colon_class(int32_t *rows, int32_t *cols)
{
    const matobj *a = m_stak[-1], *b = m_stak[0];
    if (no_mat(a) || no_mat(b))
        return CC_NONE;
    m_colonclass cc = m_colonshape(a, b, rows, cols);
    if (cc == CC_NONE)
        m_xrc = 3200;
    return cc;
}

static bool both_strings()
{
    const matobj *a = m_stak[-1], *b = m_stak[0];
    return a->eltype == MO_STRING && b->eltype == MO_STRING && !mo_isfcn(a) && !mo_isfcn(b);
}

template <class K> static void colon_arith(zc (*cf)(zc, zc))
{
    int32_t rows, cols;
    if (!two_numbers())
        return;
    if (m_colonclass cc = colon_class(&rows, &cols))
        numeric_binary<K>(cc, rows, cols, cf);
}

void opcadd()
{
    if (!both_strings())
        return colon_arith<k_add>(zc_add);
    int32_t rows, cols;
    m_colonclass cc = colon_class(&rows, &cols);
    if (cc && !two_arrays())
        string_concat(cc, rows, cols);
}

void opcsub()
{
    colon_arith<k_sub>(zc_sub);
}

void string_repeat(m_colonclass cc, int32_t rows, int32_t cols)
{
    matobj *a = m_stak[-1], *b = m_stak[0];
    bool first = a->eltype == MO_STRING;
    const matobj *s = first ? a : b, *r = first ? b : a;
    matobj *out = m_mktmat(MO_STRING, rows, cols);
    if (!out)
        return;
    ew_index at{cc, cols};
    for (int64_t k = 0, n = mo_count(out); k < n; k++) {
        int64_t si = first ? at.a(k) : at.b(k), ri = first ? at.b(k) : at.a(k);
        double times = mo_re(r)[ri];
        int64_t count = times < 0 ? 0 : times > INT32_MAX ? INT32_MAX : int64_t(times);
        int64_t length = sel_len(mo_sel(s)[si]);
        if (length * count > INT32_MAX)
            m_xrc = 3492;
        else if (length && count && selrecreate(out, k, length * count) && !m_xrc)
            m_xrc = 3900;
        for (int64_t i = 0; !m_xrc && length && i < count; i++)
            memcpy(mo_sel(out)[k] + 4 + i * length, sel_text(mo_sel(s)[si]), size_t(length));
        if (m_xrc || row_break())
            return mo_free(out);
        if (mo_sel(out)[k])
            mo_sel(out)[k][4 + length * count] = 0;
    }
    qppp(out);
}

void opcmult()
{
    const matobj *a = m_stak[-1], *b = m_stak[0];
    if (no_mat(a) || no_mat(b))
        return;
    if ((a->eltype == MO_STRING && b->eltype == MO_REAL) ||
        (a->eltype == MO_REAL && b->eltype == MO_STRING)) {
        int32_t rows, cols;
        m_colonclass cc = colon_class(&rows, &cols);
        if (cc && !two_arrays())
            string_repeat(cc, rows, cols);
        return;
    }
    colon_arith<k_mul>(zc_mul);
}

void opcdiv()
{
    colon_arith<k_div>(zc_div);
}

void opcpower()
{
    colon_arith<k_pow>(zc_pow);
}

// ---- comparisons

// Results of comparing: Y is the number of the comparison.
enum comparison { EE, NE, GE, LE, GT, LT };

template <comparison Y, class T> static inline bool holds(T a, T b)
{
    return Y == EE   ? a == b
           : Y == NE ? a != b
           : Y == GE ? a >= b
           : Y == LE ? a <= b
           : Y == GT ? a > b
                     : a < b;
}

template <comparison Y> struct k_compare {
    double operator()(double a, double b) const { return holds<Y>(a, b); }
};

// A complex number equals another in both parts, and missing values are alike by their real
// parts; order goes by the real parts.
template <comparison Y> static bool zc_holds(zc a, zc b)
{
    if (Y != EE && Y != NE)
        return holds<Y>(a.re, b.re);
    bool equal = a.re == b.re && (a.im == b.im || a.re >= misval);
    return (Y == EE) == equal;
}

// Results of operands whose elements are compared one pair at a time.
template <class F> static void compare_each(m_colonclass cc, int32_t rows, int32_t cols, F pair)
{
    matobj *out = m_mktmat(MO_REAL, rows, cols);
    if (!out)
        return;
    ew_index at{cc, cols};
    for (int64_t k = 0, n = mo_count(out); k < n; k++) {
        mo_re(out)[k] = pair(at.a(k), at.b(k));
        if ((k & 4095) == 0 && row_break())
            return mo_free(out);
    }
    qppp(out);
}

// The two operands may be compared; sets 3250 or, for the order of pointers, 3012.
static bool comparable(bool order)
{
    const matobj *a = m_stak[-1], *b = m_stak[0];
    if (no_mat(a) || no_mat(b))
        return false;
    if ((is_num(a) && is_num(b)) || (a->eltype == MO_STRING && b->eltype == MO_STRING))
        return true;
    bool pointers = a->eltype == MO_POINTER && b->eltype == MO_POINTER;
    if (pointers && !order)
        return true;
    m_xrc = pointers ? 3012 : 3250;
    return false;
}

template <comparison Y> static void colon_compare()
{
    int32_t rows, cols;
    if (!comparable(Y != EE && Y != NE))
        return;
    m_colonclass cc = colon_class(&rows, &cols);
    if (!cc || two_arrays())
        return;
    matobj *a = m_stak[-1], *b = m_stak[0];
    if (a->eltype == MO_STRING)
        return compare_each(cc, rows, cols, [a, b](int64_t i, int64_t j) {
            return holds<Y>(exstrcmp(mo_sel(a)[i], mo_sel(b)[j]), 0);
        });
    if (a->eltype == MO_POINTER)
        return compare_each(cc, rows, cols, [a, b](int64_t i, int64_t j) {
            return (mo_pel(a)[i] == mo_pel(b)[j]) == (Y == EE);
        });
    if (a->eltype == MO_COMPLEX || b->eltype == MO_COMPLEX)
        return compare_each(cc, rows, cols, [a, b](int64_t i, int64_t j) {
            return zc_holds<Y>(zc_at(a, i), zc_at(b, j));
        });
    matobj *out = result_home(MO_REAL, rows, cols);
    if (!out)
        return;
    if (!ew_walk(cc, rows, cols, mo_re(a), mo_re(b), mo_re(out), k_compare<Y>{}))
        ppp(out);
    else if (out->links == 0)
        mo_free(out);
}

void opcee()
{
    colon_compare<EE>();
}
void opcne()
{
    colon_compare<NE>();
}
void opcge()
{
    colon_compare<GE>();
}
void opcle()
{
    colon_compare<LE>();
}
void opcgt()
{
    colon_compare<GT>();
}
void opclt()
{
    colon_compare<LT>();
}

// ---- logic

struct k_or {
    double operator()(double a, double b) const { return int(a != 0) | int(b != 0); }
};
struct k_and {
    double operator()(double a, double b) const { return int(a != 0) & int(b != 0); }
};

template <class K> static void colon_logic()
{
    int32_t rows, cols;
    const matobj *a = m_stak[-1], *b = m_stak[0];
    if (no_mat(a) || no_mat(b))
        return;
    if (a->eltype != MO_REAL || b->eltype != MO_REAL)
        return fail(3250);
    m_colonclass cc = colon_class(&rows, &cols);
    if (!cc || two_arrays())
        return;
    matobj *out = result_home(MO_REAL, rows, cols);
    if (!out)
        return;
    if (!ew_walk(cc, rows, cols, mo_re(m_stak[-1]), mo_re(m_stak[0]), mo_re(out), K{}))
        ppp(out);
    else if (out->links == 0)
        mo_free(out);
}

void opcor()
{
    colon_logic<k_or>();
}
void opcand()
{
    colon_logic<k_and>();
}

// ---- comparisons of whole values

// Elements k of two arrays, both of numbers or both of strings; numbers go by real parts.
template <comparison Y> static bool element_holds(const matobj *a, const matobj *b, int64_t k)
{
    if (a->eltype == MO_STRING)
        return holds<Y>(exstrcmp(mo_sel(a)[k], mo_sel(b)[k]), 0);
    return holds<Y>(mo_re(a)[k], mo_re(b)[k]);
}

// a > b and the like: every pair of elements must be so.
template <comparison Y> static void whole_order()
{
    if (!comparable(true))
        return;
    const matobj *a = m_stak[-1], *b = m_stak[0];
    if (a->rows != b->rows || a->cols != b->cols)
        return fail(3200);
    if (two_arrays())
        return;
    a = m_stak[-1];
    b = m_stak[0];
    bool all = true;
    for (int64_t k = 0, n = mo_count(a); all && k < n; k++) {
        all = element_holds<Y>(a, b, k);
        if ((k & 4095) == 0 && row_break())
            return;
    }
    matobj *out = rs_new(all);
    if (!out)
        return;
    qppp(out);
    m_condflag = all;
}

void opge()
{
    whole_order<GE>();
}
void ople()
{
    whole_order<LE>();
}
void opgt()
{
    whole_order<GT>();
}
void oplt()
{
    whole_order<LT>();
}

static void whole_equal(bool want)
{
    if (no_mat(m_stak[-1]) || no_mat(m_stak[0]) || two_arrays())
        return;
    bool truth = matricesequal(m_stak[-1], m_stak[0]) == want;
    if (m_xrc)
        return;
    matobj *out = rs_new(truth);
    if (!out)
        return;
    qppp(out);
    m_condflag = truth;
}

void opee()
{
    whole_equal(true);
}
void opne()
{
    whole_equal(false);
}
