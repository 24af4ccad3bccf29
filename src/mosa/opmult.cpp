// Products: of matrices, of a matrix and a scalar, of strings and counts, and Kronecker's.
//
// Whatever holds a missing value makes its whole row or column of a product missing. The
// kernels below know nothing of that: rows of the left and columns of the right operand are
// looked through first, and what they spoil is written over afterwards.
#include "core/mem.h"
#include "mosa/blas.h"
#include "mosa/elwise.h"
#include <memory>

struct free_block {
    void operator()(void *p) const { safefree(p); }
};
using flags = std::unique_ptr<uint8_t, free_block>;

static bool row_missing(const double *a, int64_t n)
{
    const double mis = misval;
    int any = 0;
    for (int64_t i = 0; i < n; i++)
        any |= int(a[i] >= mis);
    return any != 0;
}

static void mark_rows(const double *a, int64_t n, int64_t k, uint8_t *bad)
{
    for (int64_t i = 0; i < n; i++)
        bad[i] |= uint8_t(row_missing(a + i * k, k));
}

static void mark_cols(const double *b, int64_t k, int64_t m, uint8_t *bad)
{
    const double mis = misval;
    for (int64_t l = 0; l < k; l++) {
        const double *row = b + l * m;
        if (row_missing(row, m))
            for (int64_t j = 0; j < m; j++)
                bad[j] |= uint8_t(row[j] >= mis);
    }
}

static void spoil(double *c, int64_t n, int64_t m, const uint8_t *badrow, const uint8_t *badcol)
{
    const double mis = misval;
    for (int64_t i = 0; i < n; i++)
        for (int64_t j = 0; j < m; j++) {
            double z = c[i * m + j];
            bool good = int(z < mis) & int(z > -__builtin_inf());
            c[i * m + j] = badrow[i] || badcol[j] || !good ? mis : z;
        }
}

// What multiplication of planes needs besides them.
struct product {
    int64_t n, k, m;
    flags badrow, badcol;
    product(int64_t n_, int64_t k_, int64_t m_)
        : n(n_), k(k_), m(m_), badrow(static_cast<uint8_t *>(safecalloc(size_t(n_)))),
          badcol(static_cast<uint8_t *>(safecalloc(size_t(m_))))
    {
    }
    bool made() const { return badrow && badcol; }
    void look(const double *a, const double *b)
    {
        mark_rows(a, n, k, badrow.get());
        mark_cols(b, k, m, badcol.get());
    }
};

// False when there is no memory or a break came; m_xrc tells.
static bool multiply_real(double *c, const double *a, const double *b, int64_t n, int64_t k,
                          int64_t m)
{
    product p(n, k, m);
    if (!p.made()) {
        m_xrc = 3900;
        return false;
    }
    p.look(a, b);
    if (gemm(n, k, m, 1, a, b, 0, c)) {
        m_xrc = 1;
        return false;
    }
    spoil(c, n, m, p.badrow.get(), p.badcol.get());
    return true;
}

void multrc_ra_ra(double *c, const double *a, const double *b, int64_t n, int64_t k, int64_t m)
{
    multiply_real(c, a, b, n, k, m);
}

static bool multiply_complex(matobj *c, const matobj *a, const matobj *b)
{
    product p(a->rows, a->cols, b->cols);
    if (!p.made()) {
        m_xrc = 3900;
        return false;
    }
    p.look(mo_re(a), mo_re(b));
    p.look(mo_im(a), mo_im(b));
    if (gemm(p.n, p.k, p.m, 1, mo_re(a), mo_re(b), 0, mo_re(c)) ||
        gemm(p.n, p.k, p.m, -1, mo_im(a), mo_im(b), 1, mo_re(c)) ||
        gemm(p.n, p.k, p.m, 1, mo_re(a), mo_im(b), 0, mo_im(c)) ||
        gemm(p.n, p.k, p.m, 1, mo_im(a), mo_re(b), 1, mo_im(c))) {
        m_xrc = 1;
        return false;
    }
    spoil(mo_re(c), p.n, p.m, p.badrow.get(), p.badcol.get());
    spoil(mo_im(c), p.n, p.m, p.badrow.get(), p.badcol.get());
    for (int64_t i = 0, n = mo_count(c); i < n; i++) {
        zc z = zc_fix({mo_re(c)[i], mo_im(c)[i]});
        mo_re(c)[i] = z.re;
        mo_im(c)[i] = z.im;
    }
    return true;
}

// A string and a count in either order; false when the operands are something else.
static bool repeats_string()
{
    const matobj *a = m_stak[-1], *b = m_stak[0];
    bool first = a->eltype == MO_STRING && b->eltype == MO_REAL;
    if (!first && !(a->eltype == MO_REAL && b->eltype == MO_STRING))
        return false;
    if (!mo_is1by1(first ? b : a)) {
        m_xrc = 3200;
        return true;
    }
    if (two_arrays())
        return true;
    const matobj *s = m_stak[first ? -1 : 0];
    string_repeat(mo_is1by1(s) ? CC_SAME : first ? CC_BONE : CC_AONE, s->rows, s->cols);
    return true;
}

void opmult()
{
    m_xeqerrid = "*";
    const matobj *a = m_stak[-1], *b = m_stak[0];
    if (no_mat(a) || no_mat(b) || repeats_string() || !two_numbers())
        return;
    a = m_stak[-1];
    b = m_stak[0];
    if (mo_is1by1(b))
        return numeric_binary<k_mul>(mo_is1by1(a) ? CC_SAME : CC_BONE, a->rows, a->cols, zc_mul);
    if (mo_is1by1(a))
        return numeric_binary<k_mul>(CC_AONE, b->rows, b->cols, zc_mul);
    if (a->cols != b->rows)
        return fail(3200);
    matobj *c = m_mktmat(a->eltype, a->rows, b->cols);
    if (!c)
        return;
    bool good = a->eltype == MO_REAL
                    ? multiply_real(mo_re(c), mo_re(a), mo_re(b), a->rows, a->cols, b->cols)
                    : multiply_complex(c, a, b);
    if (good)
        qppp(c);
    else
        mo_free(c);
}

// Row by row of a, each of its elements times the whole of b.
static bool kronecker(matobj *out, const matobj *a, const matobj *b)
{
    const k_mul times;
    for (int64_t i = 0; i < a->rows; i++)
        for (int64_t r = 0; r < b->rows; r++) {
            if (row_break())
                return false;
            int64_t to = (i * b->rows + r) * out->cols;
            for (int64_t j = 0; j < a->cols; j++)
                for (int64_t s = 0; s < b->cols; s++, to++) {
                    int64_t x = i * a->cols + j, y = r * b->cols + s;
                    if (a->eltype == MO_REAL) {
                        mo_re(out)[to] = times(mo_re(a)[x], mo_re(b)[y]);
                        continue;
                    }
                    zc z = zc_mul(zc_at(a, x), zc_at(b, y));
                    mo_re(out)[to] = z.re;
                    mo_im(out)[to] = z.im;
                }
        }
    return true;
}

void opdmult()
{
    if (!two_numbers())
        return;
    const matobj *a = m_stak[-1], *b = m_stak[0];
    if (m_checkrandc(double(a->rows) * b->rows, double(a->cols) * b->cols))
        return;
    matobj *out = m_mktmat(a->eltype, a->rows * b->rows, a->cols * b->cols);
    if (!out)
        return;
    if (kronecker(out, a, b))
        qppp(out);
    else
        mo_free(out);
}
