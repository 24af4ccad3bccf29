// Square matrices with few diagonals, kept as LAPACK keeps them.
//
// A band array B of an n by n matrix A with kl diagonals below the main one and ku above has
// kl + ku + 1 rows and n columns; A[i, j] stands at B[ku + 1 + i - j, j], and places that no
// element of A has are 0. Every function is told kl and ku after the array.
#include "mosa/bihandlers.h"
#include "mosa/lapack.h"
#include <algorithm>

namespace
{

struct band {
    matobj *m;
    int64_t kl, ku, n;
    double at(int64_t i, int64_t j) const { return mo_re(m)[(ku + i - j) * n + j]; }
    double &to(int64_t i, int64_t j) const { return mo_re(m)[(ku + i - j) * n + j]; }
    int64_t first(int64_t i) const { return std::max<int64_t>(0, i - kl); } // columns of row i
    int64_t last(int64_t i) const { return std::min(n - 1, i + ku); }
};

// Arguments k to k + 2: the array, kl, ku.
bool read_band(int32_t argc, int32_t k, band *b)
{
    int32_t kl, ku;
    b->m = bi_arg(argc, k);
    if (!bi_isarray(b->m) || !bi_isreal(b->m) || !bi_int(bi_arg(argc, k + 1), 0, 1 << 29, &kl) ||
        !bi_int(bi_arg(argc, k + 2), 0, 1 << 29, &ku))
        return false;
    b->kl = kl;
    b->ku = ku;
    b->n = b->m->cols;
    return b->m->rows == kl + ku + 1 || bi_fail(3200);
}
bool read_two(int32_t argc, band *a, band *b)
{
    return read_band(argc, 1, a) && read_band(argc, 4, b) && (a->n == b->n || bi_fail(3200));
}
// A new band array of zeros; diagonals beyond the corners are kept, as the caller asked.
bool make_band(band *b, int64_t n, int64_t kl, int64_t ku)
{
    *b = {nullptr, kl, ku, n};
    if (kl + ku + 1 > INT32_MAX)
        return bi_fail(3900);
    b->m = m_mktmat(MO_REAL, int32_t(kl + ku + 1), int32_t(n));
    if (b->m)
        std::fill_n(mo_re(b->m), mo_count(b->m), 0.0);
    return b->m;
}
bool any_missing(const band &a, const band &b)
{
    return la_anymissing(a.m) || la_anymissing(b.m);
}
void end_with(int32_t argc, matobj *r, bool missing)
{
    if (missing)
        fillwithmissing(r);
    else
        la_keep(mo_re(r), mo_count(r));
    m_result(argc, r);
}

// c gets a b, or a' b.
void multiply(const band &a, const band &b, bool turned, const band &c)
{
    for (int64_t i = 0; i < a.n && !row_break(); i++)
        for (int64_t k = a.first(i); k <= a.last(i); k++) {
            double f = a.at(i, k);
            if (f == 0)
                continue;
            int64_t row = turned ? i : k, into = turned ? k : i;
            for (int64_t j = b.first(row); j <= b.last(row); j++)
                c.to(into, j) += f * b.at(row, j);
        }
}

void product_of(int32_t argc, bool turned)
{
    band a, b, c;
    if (!read_two(argc, &a, &b))
        return;
    int64_t kl = turned ? a.ku : a.kl, ku = turned ? a.kl : a.ku;
    if (!make_band(&c, a.n, kl + b.kl, ku + b.ku))
        return;
    bool missing = any_missing(a, b);
    if (!missing)
        multiply(a, b, turned, c);
    end_with(argc, c.m, missing);
}

void sum_of(int32_t argc, double sign)
{
    band a, b, c;
    if (!read_two(argc, &a, &b) || !make_band(&c, a.n, std::max(a.kl, b.kl), std::max(a.ku, b.ku)))
        return;
    for (int64_t i = 0; i < a.n; i++) {
        for (int64_t j = a.first(i); j <= a.last(i); j++)
            c.to(i, j) += a.at(i, j);
        for (int64_t j = b.first(i); j <= b.last(i); j++)
            c.to(i, j) += sign * b.at(i, j);
    }
    end_with(argc, c.m, any_missing(a, b));
}

} // namespace

// SPMATbandedmake(A, kl, ku): the band array of the square matrix A; elements outside the band
// are left out.
void biSPMATbandedmake(int32_t argc)
{
    m_xeqerrid = "SPMATbandedmake()";
    matobj *a = bi_arg(argc, 1);
    int32_t kl, ku;
    band b;
    if (!bi_isreal(a) || !bi_int(bi_arg(argc, 2), 0, 1 << 29, &kl) ||
        !bi_int(bi_arg(argc, 3), 0, 1 << 29, &ku))
        return;
    if (a->rows != a->cols) {
        m_xrc = 3205;
        return;
    }
    if (!make_band(&b, a->cols, kl, ku))
        return;
    for (int64_t i = 0; i < b.n; i++)
        for (int64_t j = b.first(i); j <= b.last(i); j++)
            b.to(i, j) = m_el(a, i, j);
    m_result(argc, b.m);
}

// SPMATbandedunmake(B, kl, ku): the matrix itself.
void biSPMATbandedunmake(int32_t argc)
{
    m_xeqerrid = "SPMATbandedunmake()";
    band b;
    if (!read_band(argc, 1, &b))
        return;
    matobj *r = m_mktmat(MO_REAL, int32_t(b.n), int32_t(b.n));
    if (!r)
        return;
    std::fill_n(mo_re(r), mo_count(r), 0.0);
    for (int64_t i = 0; i < b.n; i++)
        for (int64_t j = b.first(i); j <= b.last(i); j++)
            mo_re(r)[i * b.n + j] = b.at(i, j);
    m_result(argc, r);
}

// SPMATbandedmult(A, kl, ku, B, kl, ku): the band array of A B; SPMATbandedcross() of A' B. The
// diagonals of the result are the sums of those of the two (of A' with kl and ku exchanged).
void biSPMATbandedmult(int32_t argc)
{
    m_xeqerrid = "SPMATbandedmult()";
    product_of(argc, false);
}
void biSPMATbandedcross(int32_t argc)
{
    m_xeqerrid = "SPMATbandedcross()";
    product_of(argc, true);
}

// SPMATbandedplus(A, kl, ku, B, kl, ku), SPMATbandedminus(): with the larger kl and ku.
void biSPMATbandedplus(int32_t argc)
{
    m_xeqerrid = "SPMATbandedplus()";
    sum_of(argc, 1);
}
void biSPMATbandedminus(int32_t argc)
{
    m_xeqerrid = "SPMATbandedminus()";
    sum_of(argc, -1);
}

// _SPMATbandedtranspose(B, kl, ku): B becomes the band array of A', which has ku diagonals
// below and kl above.
void bi_SPMATbandedtranspose(int32_t argc)
{
    m_xeqerrid = "_SPMATbandedtranspose()";
    band a, b;
    if (!read_band(argc, 1, &a) || !make_band(&b, a.n, a.ku, a.kl))
        return;
    for (int64_t i = 0; i < a.n; i++)
        for (int64_t j = a.first(i); j <= a.last(i); j++)
            b.to(j, i) = a.at(i, j);
    m_swapmat(a.m, b.m);
    mo_freemat(b.m);
    la_void(argc);
}

// SPMATbandedtrace(B, kl, ku) and SPMATbandedtracemult(A, kl, ku, B, kl, ku), the trace of A B.
void biSPMATbandedtrace(int32_t argc)
{
    m_xeqerrid = "SPMATbandedtrace()";
    band a;
    double z = 0;
    if (!read_band(argc, 1, &a))
        return;
    for (int64_t i = 0; i < a.n; i++)
        z = z < misval && a.at(i, i) < misval ? z + a.at(i, i) : misval;
    la_scalar(argc, la_kept(z));
}
void biSPMATbandedtracemult(int32_t argc)
{
    m_xeqerrid = "SPMATbandedtracemult()";
    band a, b;
    double z = 0;
    if (!read_two(argc, &a, &b))
        return;
    for (int64_t i = 0; i < a.n; i++)
        for (int64_t j = std::max(a.first(i), i - b.ku); j <= std::min(a.last(i), i + b.kl); j++)
            z += a.at(i, j) * b.at(j, i);
    la_scalar(argc, any_missing(a, b) ? misval : la_kept(z));
}

// SPMATbandedmultfull(A, kl, ku, X): A X for an ordinary matrix X.
void biSPMATbandedmultfull(int32_t argc)
{
    m_xeqerrid = "SPMATbandedmultfull()";
    band a;
    matobj *x = bi_arg(argc, 4);
    if (!read_band(argc, 1, &a) || !bi_isarray(x) || !bi_isreal(x))
        return;
    if (x->rows != a.n) {
        m_xrc = 3200;
        return;
    }
    matobj *r = m_mktmat(MO_REAL, int32_t(a.n), x->cols);
    if (!r)
        return;
    bool missing = la_anymissing(a.m) || la_anymissing(x);
    int64_t m = x->cols;
    std::fill_n(mo_re(r), mo_count(r), 0.0);
    for (int64_t i = 0; i < a.n && !missing && !row_break(); i++)
        for (int64_t k = a.first(i); k <= a.last(i); k++)
            for (int64_t j = 0; j < m; j++)
                mo_re(r)[i * m + j] += a.at(i, k) * mo_re(x)[k * m + j];
    end_with(argc, r, missing);
}
