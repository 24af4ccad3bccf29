// Values changed where they stand, the least of a vector, and what is made of whole matrices.
#include "core/pollsort.h"
#include "expr/strfun.h"
#include "mosa/bi_map.h"
#include "mosa/bihandlers.h"
#include <algorithm>
#include <cmath>
#include <vector>

namespace
{

void result_void(int32_t argc)
{
    m_result(argc, m_mktmat(MO_REAL, 0, 0));
}

struct cnum {
    double re, im;
    bool operator==(const cnum &b) const { return re == b.re && (im == b.im || re >= misval); }
};
cnum num_at(const matobj *m, int64_t k)
{
    if (m->view)
        return {v_el1(m, k), 0};
    return {mo_re(m)[k], m->eltype == MO_COMPLEX ? mo_im(m)[k] : 0};
}
void num_to(matobj *m, int64_t k, cnum z)
{
    if (m->view)
        v_sto_el1(z.re, m, k);
    else {
        mo_re(m)[k] = z.re;
        if (m->eltype == MO_COMPLEX)
            mo_im(m)[k] = z.re >= misval ? z.re : z.im;
    }
}

// Values of v can stand among those of a: numbers among numbers, complex ones not among reals.
bool fits(const matobj *a, const matobj *v)
{
    if (!bi_ismatrix(a) || !bi_ismatrix(v))
        return false;
    if (mo_isptrlike(a->eltype))
        return bi_fail(3256);
    bool same = a->eltype == v->eltype || (a->eltype == MO_COMPLEX && v->eltype == MO_REAL);
    return same || bi_fail(3250);
}

} // namespace

// ---- one value for another

// _editmissing(A, v): every missing value becomes v
void bi_editmissing(int32_t argc)
{
    m_xeqerrid = "_editmissing()";
    matobj *a = m_arg(1);
    const matobj *v = m_arg(0);
    if (!bi_isnumeric(a) || !bi_isnumeric(v) || !bi_isscalar(v) || !fits(a, v) || v_fvnotallowed(a))
        return;
    cnum z = num_at(v, 0);
    for (int64_t k = 0, n = mo_count(a); k < n; k++) {
        if (bi_stop(k))
            return;
        if (num_at(a, k).re >= misval)
            num_to(a, k, z);
    }
    result_void(argc);
}

// Every element of A that equals one of from becomes the one of to beside it.
static void replace_values(int32_t argc, const char *id, bool vectors)
{
    m_xeqerrid = id;
    matobj *a = m_arg(2);
    const matobj *from = m_arg(1), *to = m_arg(0);
    if (!fits(a, from) || !fits(a, to) || v_fvnotallowed(a))
        return;
    if (!vectors && (!bi_isscalar(from) || !bi_isscalar(to)))
        return;
    int64_t values = mo_count(from);
    if (values != mo_count(to) || (vectors && from->rows != 1 && from->cols != 1 && values)) {
        m_xrc = values != mo_count(to) ? 3200 : 3201;
        return;
    }
    char x[bi_textroom], y[bi_textroom], z[bi_textroom];
    auto text = [](const matobj *m, int64_t k, char *buffer) {
        return bi_textc(m, m->rows == 1 ? 0 : int32_t(k / m->cols), int32_t(k % m->cols), buffer);
    };
    for (int64_t k = 0, n = mo_count(a); k < n; k++) {
        if (bi_stop(k))
            return;
        for (int64_t v = 0; v < values; v++) {
            if (a->eltype != MO_STRING) {
                if (!(num_at(a, k) == num_at(from, v)))
                    continue;
                num_to(a, k, num_at(to, v));
            } else {
                if (text(a, k, x) != text(from, v, y))
                    continue;
                std::string_view t = text(to, v, z);
                if (a->view)
                    v_sto_sel(t.data(), int32_t(t.size()), a, int32_t(k / a->cols),
                              int32_t(k % a->cols));
                else if (!bi_puttext(a, k, t))
                    return;
            }
            break;
        }
    }
    result_void(argc);
}

void bi_editvalue(int32_t argc)
{
    replace_values(argc, "_editvalue()", false);
}
void bi_replacevalues(int32_t argc)
{
    replace_values(argc, "_replacevalues()", true);
}

// ---- where they stand

void bi_negate(int32_t argc)
{
    m_xeqerrid = "_negate()";
    matobj *a = m_arg(0);
    if (!bi_isnumeric(a) || v_fvnotallowed(a))
        return;
    for (int64_t k = 0, n = mo_count(a); k < n; k++) {
        if (bi_stop(k))
            return;
        cnum z = num_at(a, k);
        if (z.re < misval)
            num_to(a, k, {0.0 - z.re, 0.0 - z.im});
    }
    result_void(argc);
}

void bi_conj(int32_t argc)
{
    m_xeqerrid = "_conj()";
    matobj *a = m_arg(0);
    if (!bi_isnumeric(a))
        return;
    if (a->eltype == MO_COMPLEX)
        for (int64_t k = 0, n = mo_count(a); k < n; k++) {
            if (bi_stop(k))
                return;
            if (mo_im(a)[k] < misval)
                mo_im(a)[k] = 0.0 - mo_im(a)[k];
        }
    result_void(argc);
}

// Rows become columns; complex numbers stay as they are.
void bi_transposeonly(int32_t argc)
{
    m_xeqerrid = "_transposeonly()";
    matobj *a = m_arg(0);
    if (!bi_isarray(a))
        return;
    matobj *t = m_transpose(a);
    if (!t)
        return;
    if (t->eltype == MO_COMPLEX)
        for (int64_t k = 0, n = mo_count(t); k < n; k++)
            if (mo_im(t)[k] < misval)
                mo_im(t)[k] = 0.0 - mo_im(t)[k];
    m_swapmat(a, t);
    mo_free(t);
    result_void(argc);
}

// _diag(A, v): the diagonal becomes v, a vector of its length or one number for all
void bi_diag(int32_t argc)
{
    m_xeqerrid = "_diag()";
    matobj *a = m_arg(1);
    const matobj *v = m_arg(0);
    if (!bi_isnumeric(a) || !bi_isnumeric(v) || !fits(a, v) || v_fvnotallowed(a))
        return;
    int32_t n = std::min(a->rows, a->cols);
    bool one = mo_is1by1(v);
    if (!one && v->rows != 1 && v->cols != 1) {
        m_xrc = 3201;
        return;
    }
    if (!one && mo_count(v) != n) {
        m_xrc = 3200;
        return;
    }
    for (int64_t k = 0; k < n; k++)
        num_to(a, k * a->cols + k, num_at(v, one ? 0 : k));
    result_void(argc);
}

// J2(r, c, X): X set side by side c times and below itself r times
void biJ2(int32_t argc)
{
    m_xeqerrid = "J2()";
    int32_t r, c;
    matobj *x = m_arg(0);
    if (!bi_int(m_arg(2), 0, 2147483646, &r) || !bi_int(m_arg(1), 0, 2147483646, &c) ||
        !bi_ismatrix(x))
        return;
    if (m_checkrandc(double(r) * x->rows, double(c) * x->cols))
        return;
    matobj *src = bi_array(x);
    matobj *z = src ? m_mktmat(x->eltype, r * x->rows, c * x->cols) : nullptr;
    if (!z)
        return;
    for (int64_t k = 0, n = mo_count(z); k < n; k++) {
        int64_t i = k / z->cols % x->rows, j = k % z->cols % x->cols;
        if (bi_stop(k) || matcpy_el(z, k, src, i * x->cols + j))
            return;
    }
    if (src != x)
        mo_freemat(src);
    m_result(argc, z);
}

// ---- of whole matrices

// 1 when no element has an imaginary part.
void biisrealvalues(int32_t argc)
{
    m_xeqerrid = "isrealvalues()";
    const matobj *a = m_arg(0);
    if (!bi_isnumeric(a))
        return;
    bool real = true;
    if (a->eltype == MO_COMPLEX)
        for (int64_t k = 0, n = mo_count(a); k < n && real && !bi_stop(k); k++)
            real = mo_im(a)[k] == 0 || mo_im(a)[k] >= misval;
    m_result(argc, m_mktsmatsto(real));
}

namespace
{

// |a - b| relative to |b| + 1; the same missing values do not differ.
double difference(cnum a, cnum b)
{
    if (a == b)
        return 0;
    if (a.re >= misval || b.re >= misval)
        return misval;
    return std::hypot(a.re - b.re, a.im - b.im) / (std::hypot(b.re, b.im) + 1);
}

} // namespace

// The largest relative difference of a square matrix from its conjugate transpose.
void bimreldifsym(int32_t argc)
{
    m_xeqerrid = "mreldifsym()";
    const matobj *a = m_arg(0);
    if (!bi_isnumeric(a))
        return;
    if (a->rows != a->cols) {
        m_xrc = 3205;
        return;
    }
    double most = mo_count(a) ? 0 : misval;
    int64_t n = a->rows;
    for (int64_t k = 0; k < n * n; k++) {
        if (bi_stop(k))
            return;
        cnum t = num_at(a, k % n * n + k / n);
        t.im = t.im < misval ? 0.0 - t.im : t.im;
        most = std::max(most, difference(t, num_at(a, k)));
    }
    m_result(argc, m_mktsmatsto(most));
}

// The same of a matrix from its real part.
void bimreldifre(int32_t argc)
{
    m_xeqerrid = "mreldifre()";
    const matobj *a = m_arg(0);
    if (!bi_isnumeric(a))
        return;
    double most = mo_count(a) ? 0 : misval;
    for (int64_t k = 0, n = mo_count(a); k < n; k++) {
        if (bi_stop(k))
            return;
        cnum z = num_at(a, k);
        most = std::max(most, difference({z.re, 0}, z));
    }
    m_result(argc, m_mktsmatsto(most));
}

// chebyeval(c, X): the series of Chebyshev polynomials c1 T0(x) + c2 T1(x) + ... at each x
// (C. W. Clenshaw, MTAC 9 (1955) 118).
void bichebyeval(int32_t argc)
{
    m_xeqerrid = "chebyeval()";
    matobj *x = m_arg(0);
    const matobj *c = m_arg(1);
    if (!bi_isreal(c) || !bi_isreal(x))
        return;
    if (c->rows != 1 && c->cols != 1) {
        m_xrc = 3201;
        return;
    }
    std::vector<double> coef(size_t(mo_count(c)));
    for (size_t k = 0; k < coef.size(); k++) {
        coef[k] = c->view ? v_el1(c, int64_t(k)) : mo_re(c)[k];
        if (coef[k] >= misval)
            coef[k] = NAN;
    }
    matobj *r = m_mktmat(MO_REAL, x->rows, x->cols);
    for (int64_t k = 0, n = r ? mo_count(r) : 0; k < n; k++) {
        if (bi_stop(k))
            return;
        double z = x->view ? v_el1(x, k) : mo_re(x)[k], b1 = 0, b2 = 0;
        for (size_t m = coef.size(); m > 1; m--) {
            double b = 2 * z * b1 - b2 + coef[m - 1];
            b2 = b1;
            b1 = b;
        }
        double f = coef.empty() ? 0 : z * b1 - b2 + coef[0];
        mo_re(r)[k] = z >= misval || std::isnan(f) ? misval : bi_inrange(f);
    }
    m_result(argc, r);
}

// minindex(v, k, i, w): where the k least values of v are, all of them for missing k. i takes
// the positions, equal values together; w a row for each value, its first place in i and how
// often it is there. A negative k wants just so many positions. Missing values have no place.
void biminindex(int32_t argc)
{
    m_xeqerrid = "minindex()";
    const matobj *v = m_arg(3);
    matobj *i = m_arg(1), *w = m_arg(0);
    double want;
    if (!bi_isreal(v) || !bi_real(m_arg(2), &want) || !bi_isarray(i) || !bi_isarray(w))
        return;
    if (v->rows != 1 && v->cols != 1 && mo_count(v)) {
        m_xrc = 3201;
        return;
    }
    struct place {
        double z;
        int64_t at;
    };
    std::vector<place> p;
    for (int64_t k = 0, n = mo_count(v); k < n; k++) {
        double z = v->view ? v_el1(v, k) : mo_re(v)[k];
        if (z < misval)
            p.push_back({z, k + 1});
    }
    if (poll_sort(p.data(), int64_t(p.size()),
                  [](place a, place b) { return a.z != b.z ? a.z < b.z : a.at < b.at; })) {
        m_xrc = 1;
        return;
    }
    double most = std::fabs(want);
    std::vector<std::pair<size_t, size_t>> runs; // first place and length
    size_t n = 0;
    while (n < p.size() && double(want < 0 ? n : runs.size()) < most) {
        size_t from = n;
        while (n < p.size() && p[n].z == p[from].z && (want >= 0 || double(n) < most))
            n++;
        runs.emplace_back(from, n - from);
    }
    matobj *ti = m_mktmat(MO_REAL, int32_t(n), 1);
    matobj *tw = ti ? m_mktmat(MO_REAL, int32_t(runs.size()), 2) : nullptr;
    if (!tw)
        return;
    for (size_t k = 0; k < n; k++)
        mo_re(ti)[k] = double(p[k].at);
    for (size_t k = 0; k < runs.size(); k++) {
        mo_re(tw)[2 * k] = double(runs[k].first + 1);
        mo_re(tw)[2 * k + 1] = double(runs[k].second);
    }
    m_swapmat(i, ti);
    m_swapmat(w, tw);
    mo_free(ti);
    mo_free(tw);
    result_void(argc);
}
