// Sums, extremes, counts and tests over a matrix.
#include "core/mem.h"
#include "mosa/bi_int.h"
#include "mosa/bihandlers.h"
#include <algorithm>
#include <cmath>
#include <vector>

namespace
{

// Two sums are kept: what the plain sum loses is carried along (Neumaier's form of
// compensated summation).
struct summer {
    double sum = 0, carry = 0;
    bool missing = false;
    void add(double z)
    {
        double t = sum + z;
        carry += std::fabs(sum) >= std::fabs(z) ? (sum - t) + z : (z - t) + sum;
        sum = t;
    }
    double value() const
    {
        double z = sum + carry;
        return missing || !std::isfinite(z) || z >= misval ? misval : z;
    }
};

enum sumof { WHOLE, ROWS, COLS };

// Missing counts as 0 unless the second argument is nonzero: then it makes the sum missing.
void plane(const matobj *a, sumof what, bool miss, bool imaginary, double *out, int64_t stride)
{
    std::vector<summer> s(size_t(what == WHOLE ? 1 : what == ROWS ? a->rows : a->cols));
    std::vector<double> buffer(size_t(a->view ? a->cols : 0));
    const double *base = a->view ? buffer.data() : imaginary ? mo_im(a) : mo_re(a);
    for (int32_t i = 0; i < a->rows; i++, base += a->view ? 0 : a->cols) {
        if (fault_poll()) {
            m_xrc = 1;
            return;
        }
        if (a->view)
            v_row(a, i, buffer.data());
        for (int32_t j = 0; j < a->cols; j++) {
            double z = base[j];
            summer &to = s[size_t(what == WHOLE ? 0 : what == ROWS ? i : j)];
            if (z < misval)
                to.add(z);
            else if (miss)
                to.missing = true;
        }
    }
    for (size_t k = 0; k < s.size(); k++)
        out[int64_t(k) * stride] = s[k].value();
}

void sums(int32_t argc, const char *id, sumof what)
{
    m_xeqerrid = id;
    const matobj *a = bi_arg(argc, 1);
    double miss = 0;
    if (!bi_isnumeric(a) || (argc > 1 && !bi_real(bi_arg(argc, 2), &miss)))
        return;
    matobj *r = m_mktmat(a->eltype, what == ROWS ? a->rows : 1, what == COLS ? a->cols : 1);
    if (!r)
        return;
    plane(a, what, miss != 0, false, mo_re(r), 1);
    if (a->eltype == MO_COMPLEX)
        plane(a, what, miss != 0, true, mo_im(r), 1);
    m_result(argc, r);
}

} // namespace

void bisum(int32_t argc)
{
    sums(argc, "sum()", WHOLE);
}
void birowsum(int32_t argc)
{
    sums(argc, "rowsum()", ROWS);
}
void bicolsum(int32_t argc)
{
    sums(argc, "colsum()", COLS);
}
void biquadsum(int32_t argc)
{
    sums(argc, "quadsum()", WHOLE);
}
void biquadrowsum(int32_t argc)
{
    sums(argc, "quadrowsum()", ROWS);
}
void biquadcolsum(int32_t argc)
{
    sums(argc, "quadcolsum()", COLS);
}

// ---- running sums over a vector, or over a matrix by rows

namespace
{

void running(const matobj *a, double miss, matobj *r)
{
    summer s;
    for (int64_t k = 0, n = mo_count(a); k < n && !bi_stop(k); k++) {
        double z = a->view ? v_el1(a, k) : mo_re(a)[k];
        if (z < misval)
            s.add(z);
        else if (miss != 0)
            s.missing = true;
        mo_re(r)[k] = s.value();
    }
}

// (X [, missing])
void running_of(int32_t argc, const char *id)
{
    m_xeqerrid = id;
    matobj *a = bi_arg(argc, 1);
    double miss = 0;
    if (!bi_isreal(a) || (argc > 1 && !bi_real(bi_arg(argc, 2), &miss)))
        return;
    matobj *r = bi_target(a, MO_REAL);
    if (!r)
        return;
    running(a, miss, r);
    m_result(argc, r);
}

// (Y, X [, missing]): into Y, which may be a view of the same shape.
void running_into(int32_t argc, const char *id)
{
    m_xeqerrid = id;
    matobj *y = bi_arg(argc, 1), *x = bi_arg(argc, 2);
    double miss = 0;
    if (!bi_ismatrix(y) || !bi_isreal(x) || (argc > 2 && !bi_real(bi_arg(argc, 3), &miss)) || v_fvnotallowed(y))
        return;
    if (y->view && (!bi_isreal(y) || y->rows != x->rows || y->cols != x->cols)) {
        m_xrc = m_xrc ? m_xrc : 3200;
        return;
    }
    matobj *r = m_mktmat(MO_REAL, x->rows, x->cols);
    if (!r)
        return;
    running(x, miss, r);
    if (y->view ? matcpy_x_x(y, r) : (m_swapmat(y, r), 0))
        return;
    mo_free(r);
    m_result(argc, m_mktmat(MO_REAL, 0, 0));
}

} // namespace

void birunningsum(int32_t argc)
{
    running_of(argc, "runningsum()");
}
void biquadrunningsum(int32_t argc)
{
    running_of(argc, "quadrunningsum()");
}
void bi_runningsum(int32_t argc)
{
    running_into(argc, "_runningsum()");
}
void bi_quadrunningsum(int32_t argc)
{
    running_into(argc, "_quadrunningsum()");
}

// ---- extremes: least and greatest; missing values are passed over unless asked for

namespace
{

void extremes(int32_t argc, const char *id, sumof what)
{
    m_xeqerrid = id;
    const matobj *a = bi_arg(argc, 1);
    double usemiss = 0;
    if (!bi_isreal(a) || (argc > 1 && !bi_real(bi_arg(argc, 2), &usemiss)))
        return;
    int32_t groups = what == WHOLE ? 1 : what == ROWS ? a->rows : a->cols;
    matobj *r = what == COLS ? m_mktmat(MO_REAL, 2, groups) : m_mktmat(MO_REAL, groups, 2);
    if (!r)
        return;
    fillwithmissing(r);
    int64_t step = what == COLS ? 1 : 2, up = what == COLS ? groups : 1;
    std::vector<bool> seen(size_t(groups), false);
    for (int32_t i = 0; i < a->rows && !bi_stop(i); i++)
        for (int32_t j = 0; j < a->cols; j++) {
            if (j && bi_stop(j))
                return;
            double z = m_el(a, i, j);
            if (z >= misval && usemiss == 0)
                continue;
            int64_t g = what == WHOLE ? 0 : what == ROWS ? i : j;
            double &low = mo_re(r)[g * step], &high = mo_re(r)[g * step + up];
            if (!seen[size_t(g)]) {
                low = high = z;
                seen[size_t(g)] = true;
            }
            low = std::min(low, z);
            high = std::max(high, z);
        }
    m_result(argc, r);
}

} // namespace

void biminmax(int32_t argc)
{
    extremes(argc, "minmax()", WHOLE);
}
// The largest absolute value of each row or column; missing values are passed over.
static void largest(int32_t argc, const char *id, sumof what)
{
    m_xeqerrid = id;
    const matobj *a = m_arg(0);
    if (!bi_isnumeric(a))
        return;
    matobj *r = m_mktmat(MO_REAL, what == ROWS ? a->rows : 1, what == COLS ? a->cols : 1);
    if (!r)
        return;
    fillwithmissing(r);
    for (int64_t k = 0, n = mo_count(a); k < n; k++) {
        if (bi_stop(k))
            return;
        double z = a->view ? v_el1(a, k) : mo_re(a)[k];
        if (z >= misval)
            continue;
        z = a->eltype == MO_COMPLEX ? std::hypot(z, mo_im(a)[k]) : std::fabs(z);
        double &to = mo_re(r)[what == ROWS ? k / a->cols : k % a->cols];
        to = to >= misval ? z : std::max(to, z);
    }
    m_result(argc, r);
}

void birowmaxabs(int32_t argc)
{
    largest(argc, "rowmaxabs()", ROWS);
}
void bicolmaxabs(int32_t argc)
{
    largest(argc, "colmaxabs()", COLS);
}
void birowminmax(int32_t argc)
{
    extremes(argc, "rowminmax()", ROWS);
}
void bicolminmax(int32_t argc)
{
    extremes(argc, "colminmax()", COLS);
}

// ---- missing values

namespace
{

bool el_missing(const matobj *a, int32_t i, int32_t j)
{
    char text[256];
    int64_t k = int64_t(i) * a->cols + j;
    switch (a->eltype) {
    case MO_REAL:
    case MO_COMPLEX: return (a->view ? v_el(a, i, j) : mo_re(a)[k]) >= misval;
    case MO_STRING: return a->view ? v_sel(a, i, j, text) == 0 : !mo_sel(a)[k];
    default: return !mo_pel(a)[k];
    }
}

// The number of elements that are (or are not) missing, whole or by rows or columns.
void countmissing(int32_t argc, const char *id, sumof what, bool wanted)
{
    m_xeqerrid = id;
    const matobj *a = m_arg(0);
    if (!bi_ismatrix(a))
        return;
    matobj *r = m_mktmat(MO_REAL, what == ROWS ? a->rows : 1, what == COLS ? a->cols : 1);
    if (!r)
        return;
    std::fill_n(mo_re(r), mo_count(r), 0.0);
    for (int32_t i = 0; i < a->rows; i++)
        for (int32_t j = 0; j < a->cols; j++)
            if (el_missing(a, i, j) == wanted)
                mo_re(r)[what == WHOLE ? 0 : what == ROWS ? i : j]++;
    m_result(argc, r);
}

} // namespace

void bimissing(int32_t argc)
{
    countmissing(argc, "missing()", WHOLE, true);
}
void binonmissing(int32_t argc)
{
    countmissing(argc, "nonmissing()", WHOLE, false);
}
void birowmissing(int32_t argc)
{
    countmissing(argc, "rowmissing()", ROWS, true);
}
void bicolmissing(int32_t argc)
{
    countmissing(argc, "colmissing()", COLS, true);
}

void birownonmissing(int32_t argc)
{
    countmissing(argc, "rownonmissing()", ROWS, false);
}
void bicolnonmissing(int32_t argc)
{
    countmissing(argc, "colnonmissing()", COLS, false);
}

void bihasmissing(int32_t argc)
{
    m_xeqerrid = "hasmissing()";
    const matobj *a = m_arg(0);
    if (!bi_ismatrix(a))
        return;
    bool found = false;
    for (int32_t i = 0; i < a->rows && !found; i++)
        for (int32_t j = 0; j < a->cols && !found; j++)
            found = el_missing(a, i, j);
    m_result(argc, m_mktsmatsto(found));
}

// The missing value of the argument's type: ., . + .i, "" or NULL.
void bimissingof(int32_t argc)
{
    m_xeqerrid = "missingof()";
    const matobj *a = m_arg(0);
    if (!bi_ismatrix(a))
        return;
    matobj *r = m_mktmat(a->eltype, 1, 1);
    if (!r)
        return;
    fillwithmissing(r);
    m_result(argc, r);
}

void bi_fillmissing(int32_t argc)
{
    m_xeqerrid = "_fillmissing()";
    matobj *a = m_arg(0);
    if (!bi_isarray(a))
        return;
    fillwithmissing(a);
    m_result(argc, m_mktmat(MO_REAL, 0, 0));
}

// ---- tests over all elements

namespace
{

void truths(int32_t argc, const char *id, bool all)
{
    m_xeqerrid = id;
    const matobj *a = m_arg(0);
    if (!bi_isreal(a))
        return;
    bool found = false; // an element that decides
    for (int32_t i = 0; i < a->rows && !found; i++)
        for (int32_t j = 0; j < a->cols && !found; j++)
            found = (m_el(a, i, j) == 0) == all;
    m_result(argc, m_mktsmatsto(all ? !found && mo_count(a) > 0 : found));
}

bool el_equals(const matobj *a, int32_t i, int32_t j, const matobj *s)
{
    int64_t k = int64_t(i) * a->cols + j;
    if (a->eltype == MO_STRING) {
        char x[256], y[256];
        int32_t nx = a->view ? v_sel(a, i, j, x) : sel_len(mo_sel(a)[k]);
        int32_t ny = s->view ? v_sel(s, 0, 0, y) : sel_len(*mo_sel(s));
        return nx == ny && !memcmp(a->view ? x : sel_text(mo_sel(a)[k]),
                                   s->view ? y : sel_text(*mo_sel(s)), size_t(nx));
    }
    if (mo_isptrlike(a->eltype))
        return mo_pel(a)[k] == *mo_pel(s);
    double im = a->eltype == MO_COMPLEX ? mo_im(a)[k] : 0;
    double sim = s->eltype == MO_COMPLEX ? *mo_im(s) : 0;
    return m_el(a, i, j) == m_el(s, 0, 0) && im == sim;
}

void equals(int32_t argc, const char *id, bool all)
{
    m_xeqerrid = id;
    const matobj *a = m_arg(1), *s = m_arg(0);
    if (!bi_ismatrix(a) || !bi_isscalar(s))
        return;
    bool numbers = a->eltype >= MO_COMPLEX && s->eltype >= MO_COMPLEX;
    if (a->eltype != s->eltype && !numbers) {
        m_xrc = 3250;
        return;
    }
    bool found = false;
    for (int32_t i = 0; i < a->rows && !found; i++)
        for (int32_t j = 0; j < a->cols && !found; j++)
            found = el_equals(a, i, j, s) != all;
    m_result(argc, m_mktsmatsto(all ? !found && mo_count(a) > 0 : found));
}

} // namespace

void biany(int32_t argc)
{
    truths(argc, "any()", false);
}
void biall(int32_t argc)
{
    truths(argc, "all()", true);
}
void bianyof(int32_t argc)
{
    equals(argc, "anyof()", false);
}
void biallof(int32_t argc)
{
    equals(argc, "allof()", true);
}
