// mosa/elwise.h - element by element over two operands, in the seven ways their shapes may go
// together. The kernel is a template argument, so that each loop is compiled for its operator;
// it is asked for a break once a row, or once a few thousand elements where the operands are
// walked as one.
#pragma once
#include "mosa/vmint.h"

// Kernels hold their own copy of the missing value, since results could overwrite the global
// for all the compiler knows.
struct k_base {
    double mis = misval;
    double fix(bool ok, double z) const
    {
        return (int(ok) & int(z < mis) & int(z > -__builtin_inf())) ? z : mis;
    }
    bool both(double a, double b) const { return int(a < mis) & int(b < mis); }
};
struct k_add : k_base {
    double operator()(double a, double b) const { return fix(both(a, b), a + b); }
};
struct k_sub : k_base {
    double operator()(double a, double b) const { return fix(both(a, b), a - b); }
};
struct k_mul : k_base {
    double operator()(double a, double b) const { return fix(both(a, b), a * b); }
};
struct k_div : k_base {
    double operator()(double a, double b) const { return fix(both(a, b), a / b); }
};
struct k_pow {
    double operator()(double a, double b) const { return z_pow(a, b); }
};

inline constexpr int64_t ew_chunk = 8192;

// n elements with steps of 0 or 1 over each operand.
template <bool sa, bool sb, class T, class R, class F>
inline void ew_run(const T *a, const T *b, R *out, int64_t n, const F &f)
{
    for (int64_t i = 0; i < n; i++)
        out[i] = f(a[sa ? i : 0], b[sb ? i : 0]);
}
// The same in pieces; true when a break came.
template <bool sa, bool sb, class T, class R, class F>
bool ew_flat(const T *a, const T *b, R *out, int64_t n, const F &f)
{
    // A fixed operand may be overwritten by its own result, so it is held.
    for (int64_t i = 0; i < n; i += ew_chunk) {
        int64_t m = n - i < ew_chunk ? n - i : ew_chunk;
        if (row_break())
            return true;
        ew_run<sa, sb>(a + (sa ? i : 0), b + (sb ? i : 0), out + i, m, f);
    }
    return false;
}

// All elements of a result of rows by cols. True when a break came.
template <class T, class R, class F>
bool ew_walk(m_colonclass cc, int64_t rows, int64_t cols, const T *a, const T *b, R *out,
             const F &f)
{
    if (cc == CC_SAME)
        return ew_flat<true, true>(a, b, out, rows * cols, f);
    if (cc == CC_BONE) {
        const T hold = *b;
        return ew_flat<true, false>(a, &hold, out, rows * cols, f);
    }
    if (cc == CC_AONE) {
        const T hold = *a;
        return ew_flat<false, true>(&hold, b, out, rows * cols, f);
    }
    for (int64_t i = 0; i < rows; i++, out += cols) {
        if (row_break())
            return true;
        switch (cc) {
        case CC_BROW: ew_run<true, true>(a + i * cols, b, out, cols, f); break;
        case CC_BCOL: ew_run<true, false>(a + i * cols, b + i, out, cols, f); break;
        case CC_AROW: ew_run<true, true>(a, b + i * cols, out, cols, f); break;
        default: ew_run<false, true>(a + i, b + i * cols, out, cols, f); break;
        }
    }
    return false;
}

// Index of each operand's element for the k-th of the result, for the element types whose
// elements are dear enough not to mind.
struct ew_index {
    m_colonclass cc;
    int64_t cols;
    int64_t a(int64_t k) const
    {
        return cc == CC_AONE ? 0 : cc == CC_AROW ? k % cols : cc == CC_ACOL ? k / cols : k;
    }
    int64_t b(int64_t k) const
    {
        return cc == CC_BONE ? 0 : cc == CC_BROW ? k % cols : cc == CC_BCOL ? k / cols : k;
    }
};

// ---- complex numbers
struct zc {
    double re, im;
};
inline zc zc_at(const matobj *m, int64_t i)
{
    return {mo_re(m)[i], m->eltype == MO_COMPLEX ? mo_im(m)[i] : 0};
}
inline bool zc_missing(zc a)
{
    return a.re >= misval || a.im >= misval;
}
zc zc_fix(zc z); // both parts missing when one is out of range
zc zc_add(zc a, zc b);
zc zc_sub(zc a, zc b);
zc zc_mul(zc a, zc b);
zc zc_div(zc a, zc b); // Smith, Comm. ACM 5 (1962) 435
zc zc_pow(zc a, zc b);

// ---- what operators share
// Slot fromtop if it may hold a result of the type and shape, else null.
inline matobj *reusable(int32_t fromtop, int16_t eltype, int32_t rows, int32_t cols)
{
    matobj *m = m_stak[-fromtop];
    return m_isfree(m) && m->eltype == eltype && m->rows == rows && m->cols == cols ? m : nullptr;
}
// Where a binary operator's result goes: a free operand or a new matrix, null on failure.
matobj *result_home(int16_t eltype, int32_t rows, int32_t cols);
// Both operands arrays; both complex if one is. False after 3250 when one is not a number.
bool two_numbers();
// Both operands arrays. True on failure.
bool two_arrays();
// Strings joined element by element, the shapes known to go together.
void string_concat(m_colonclass cc, int32_t rows, int32_t cols);
// Strings repeated: one operand of strings, the other real.
void string_repeat(m_colonclass cc, int32_t rows, int32_t cols);
// Two numeric arrays, complex if either is, by the kernel of each type.
template <class K>
void numeric_binary(m_colonclass cc, int32_t rows, int32_t cols, zc (*cf)(zc, zc))
{
    matobj *a = m_stak[-1], *b = m_stak[0];
    matobj *out = result_home(a->eltype, rows, cols);
    if (!out)
        return;
    bool broke = false;
    if (a->eltype == MO_REAL)
        broke = ew_walk(cc, rows, cols, mo_re(a), mo_re(b), mo_re(out), K{});
    else {
        ew_index at{cc, cols};
        const zc fixed = cc == CC_AONE ? zc_at(a, 0) : cc == CC_BONE ? zc_at(b, 0) : zc{};
        for (int64_t k = 0, n = mo_count(out); k < n && !broke; k++) {
            zc z = cf(cc == CC_AONE ? fixed : zc_at(a, at.a(k)),
                      cc == CC_BONE ? fixed : zc_at(b, at.b(k)));
            mo_re(out)[k] = z.re;
            mo_im(out)[k] = z.im;
            broke = (k & 4095) == 0 && row_break();
        }
    }
    if (!broke)
        ppp(out);
    else if (out->links == 0)
        mo_free(out);
}
