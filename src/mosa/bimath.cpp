// Functions of one or two numbers, element by element.
//
// A missing argument, or one outside the domain, gives missing; a letter of missing survives
// where the function is defined for every number.
#include "core/mem.h"
#include "expr/machine.h"
#include "expr/strfun.h"
#include "mosa/bi_int.h"
#include "mosa/bihandlers.h"
#include "stats/normal.h"
#include <algorithm>
#include <cmath>
#include <complex>

namespace
{

using cplx = std::complex<double>;
using realfn = double (*)(double);
using cplxfn = cplx (*)(cplx);

double kept(double z)
{
    return std::isfinite(z) && z < misval ? z : misval;
}

double guard(realfn f, double z)
{
    return z >= misval ? misval : kept(f(z));
}

void put(matobj *r, int64_t i, int64_t n, cplx z)
{
    bool bad = !(std::isfinite(z.real()) && std::isfinite(z.imag())) || z.real() >= misval ||
               z.imag() >= misval;
    mo_re(r)[i] = bad ? misval : z.real();
    mo_re(r)[n + i] = bad ? misval : z.imag();
}

matobj *map_complex(matobj *a, cplxfn f)
{
    matobj *r = bi_target(a, MO_COMPLEX);
    int64_t n = mo_count(a);
    for (int64_t i = 0; r && i < n && !bi_stop(i); i++) {
        cplx z(mo_re(a)[i], mo_re(a)[n + i]);
        put(r, i, n, z.real() >= misval ? cplx(misval, misval) : f(z));
    }
    return r;
}

// Reals whose image leaves the reals (log of a negative number) stay real and missing.
void unary(int32_t argc, const char *id, realfn f, cplxfn cf, bool letters = false)
{
    m_xeqerrid = id;
    matobj *a = m_arg(0);
    if (!(cf ? bi_isnumeric(a) : bi_isreal(a)))
        return;
    if (a->eltype == MO_COMPLEX) {
        if (matobj *r = map_complex(a, cf))
            m_result(argc, r);
        return;
    }
    matobj *r = bi_target(a, MO_REAL);
    if (!r)
        return;
    double *to = mo_re(r);
    for (int32_t i = 0; i < a->rows; i++) {
        if (fault_poll()) {
            m_xrc = 1;
            break;
        }
        for (int32_t j = 0; j < a->cols; j++) {
            double z = a->view ? v_el(a, i, j) : mo_re(a)[int64_t(i) * a->cols + j];
            *to++ = letters && z >= misval ? z : guard(f, z);
        }
    }
    m_result(argc, r);
}

double fn_abs(double z)
{
    return std::fabs(z);
}
double fn_fac(double z)
{
    return z < 0 || z != std::floor(z) ? misval : std::round(std::tgamma(z + 1));
}
double fn_lnfac(double z)
{
    return z < 0 || z != std::floor(z) ? misval : ovlngamma(z + 1);
}
cplx c_sqrt(cplx z)
{
    return std::sqrt(z);
}
cplx c_exp(cplx z)
{
    return std::exp(z);
}
cplx c_log(cplx z)
{
    return std::log(z);
}
cplx c_sin(cplx z)
{
    return std::sin(z);
}
cplx c_cos(cplx z)
{
    return std::cos(z);
}
cplx c_tan(cplx z)
{
    return std::tan(z);
}
cplx c_sinh(cplx z)
{
    return std::sinh(z);
}
cplx c_cosh(cplx z)
{
    return std::cosh(z);
}
cplx c_floor(cplx z)
{
    return {std::floor(z.real()), std::floor(z.imag())};
}
cplx c_ceil(cplx z)
{
    return {std::ceil(z.real()), std::ceil(z.imag())};
}
cplx c_trunc(cplx z)
{
    return {std::trunc(z.real()), std::trunc(z.imag())};
}

} // namespace

#define UNARY(name, f, cf)                                                                         \
    void bi##name(int32_t argc)                                                                    \
    {                                                                                              \
        unary(argc, #name "()", f, cf);                                                            \
    }
UNARY(exp, std::exp, c_exp)
UNARY(log, std::log, c_log)
UNARY(sqrt, std::sqrt, c_sqrt)
UNARY(sin, std::sin, c_sin)
UNARY(cos, std::cos, c_cos)
UNARY(tan, std::tan, c_tan)
UNARY(sinh, std::sinh, c_sinh)
UNARY(cosh, std::cosh, c_cosh)
UNARY(asinr, std::asin, nullptr)
UNARY(acosr, std::acos, nullptr)
UNARY(atanr, std::atan, nullptr)
UNARY(asinhr, std::asinh, nullptr)
UNARY(acoshr, std::acosh, nullptr)
UNARY(factorial, fn_fac, nullptr)
UNARY(lnfactorial, fn_lnfac, nullptr)
UNARY(lngamma, ovlngamma, nullptr)
UNARY(digamma, ovdigamma, nullptr)
UNARY(trigamma, ovtrigamma, nullptr)
UNARY(normal, ovnormal, nullptr)
UNARY(invnormal, ovinvnormal, nullptr)
#undef UNARY

void bifloor(int32_t argc)
{
    unary(argc, "floor()", std::floor, c_floor, true);
}
void biceil(int32_t argc)
{
    unary(argc, "ceil()", std::ceil, c_ceil, true);
}
void bitrunc(int32_t argc)
{
    unary(argc, "trunc()", std::trunc, c_trunc, true);
}

// To the nearest number a float variable holds.
void bifloatround(int32_t argc)
{
    unary(argc, "floatround()", xq_float, nullptr, true);
}

void biabs(int32_t argc)
{
    matobj *a = m_arg(0);
    if (!mo_isfcn(a) && a->eltype != MO_REAL && a->eltype != MO_COMPLEX) {
        m_xeqerrid = "abs()";
        m_xrc = 3251;
        return;
    }
    if (mo_isfcn(a) || a->eltype == MO_REAL) {
        unary(argc, "abs()", fn_abs, nullptr, true);
        return;
    }
    matobj *r = m_mktmat(MO_REAL, a->rows, a->cols);
    if (!r)
        return;
    for (int64_t i = 0, n = mo_count(a); i < n; i++)
        mo_re(r)[i] = mo_re(a)[i] >= misval ? misval : kept(std::hypot(mo_re(a)[i], mo_im(a)[i]));
    m_result(argc, r);
}

// ---- two arguments: colon-conformable

namespace
{

void binary(int32_t argc, const char *id, double (*f)(double, double))
{
    m_xeqerrid = id;
    const matobj *a = m_arg(1), *b = m_arg(0);
    if (!bi_isreal(a) || !bi_isreal(b))
        return;
    int32_t rows, cols;
    m_colonclass c = m_colonshape(a, b, &rows, &cols);
    if (c == CC_NONE) {
        m_xrc = 3200;
        return;
    }
    matobj *r = m_mktmat(MO_REAL, rows, cols);
    if (!r)
        return;
    double *to = mo_re(r);
    for (int32_t i = 0; i < rows && !m_xrc; i++) {
        if (fault_poll())
            m_xrc = 1;
        for (int32_t j = 0; j < cols; j++) {
            double x = m_el(a, a->rows == 1 ? 0 : i, a->cols == 1 ? 0 : j);
            double y = m_el(b, b->rows == 1 ? 0 : i, b->cols == 1 ? 0 : j);
            *to++ = x >= misval || y >= misval ? misval : kept(f(x, y));
        }
    }
    m_result(argc, r);
}

double fn_round1(double x)
{
    return std::floor(x + 0.5);
}

} // namespace

void biatan2(int32_t argc)
{
    binary(argc, "atan2()", std::atan2);
}
void bimod(int32_t argc)
{
    binary(argc, "mod()", ovmod);
}
void bicomb(int32_t argc)
{
    binary(argc, "comb()", ovcomb);
}
void bireldif(int32_t argc)
{
    binary(argc, "reldif()", ovreldif);
}
void biround(int32_t argc)
{
    if (argc == 1)
        unary(argc, "round()", fn_round1, nullptr, true);
    else
        binary(argc, "round()", ovround);
}

// The largest relative difference of two matrices of one shape.
void bimreldif(int32_t argc)
{
    m_xeqerrid = "mreldif()";
    const matobj *a = m_arg(1), *b = m_arg(0);
    if (!bi_isreal(a) || !bi_isreal(b))
        return;
    if (a->rows != b->rows || a->cols != b->cols) {
        m_xrc = 3200;
        return;
    }
    double most = mo_count(a) ? 0 : misval;
    for (int32_t i = 0; i < a->rows; i++)
        for (int32_t j = 0; j < a->cols; j++) {
            double x = m_el(a, i, j), y = m_el(b, i, j);
            double d = x == y ? 0 : x >= misval || y >= misval ? misval : ovreldif(x, y);
            most = std::max(most, d);
        }
    m_result(argc, m_mktsmatsto(most));
}

// ---- complex numbers

static void part(int32_t argc, const char *id, bool imaginary)
{
    m_xeqerrid = id;
    matobj *a = m_arg(0);
    if (!bi_isnumeric(a))
        return;
    matobj *r =
        a->eltype == MO_REAL && !imaginary && !a->view ? a : m_mktmat(MO_REAL, a->rows, a->cols);
    if (!r)
        return;
    if (r != a)
        for (int64_t i = 0, n = mo_count(a); i < n; i++) {
            double z = a->view ? v_el1(a, i) : mo_re(a)[i];
            if (imaginary)
                z = a->eltype == MO_COMPLEX ? mo_im(a)[i] : z >= misval ? misval : 0;
            mo_re(r)[i] = z;
        }
    m_result(argc, r);
}

void biRe(int32_t argc)
{
    part(argc, "Re()", false);
}
void biIm(int32_t argc)
{
    part(argc, "Im()", true);
}

// C(re), C(re, im), C(complex)
void biC(int32_t argc)
{
    m_xeqerrid = "C()";
    matobj *re = bi_arg(argc, 1), *im = argc > 1 ? bi_arg(argc, 2) : nullptr;
    if (argc == 1 && !mo_isfcn(re) && re->eltype == MO_COMPLEX) {
        m_result(argc, re);
        return;
    }
    if (!bi_isreal(re) || (im && !bi_isreal(im)))
        return;
    int32_t rows = re->rows, cols = re->cols;
    if (im && m_colonshape(re, im, &rows, &cols) == CC_NONE) {
        m_xrc = 3200;
        return;
    }
    matobj *r = m_mktmat(MO_COMPLEX, rows, cols);
    if (!r)
        return;
    for (int64_t k = 0, n = mo_count(r); k < n; k++) {
        auto i = int32_t(k / cols), j = int32_t(k % cols);
        double x = m_el(re, re->rows == 1 ? 0 : i, re->cols == 1 ? 0 : j);
        double y = im ? m_el(im, im->rows == 1 ? 0 : i, im->cols == 1 ? 0 : j) : 0;
        bool bad = x >= misval || y >= misval;
        mo_re(r)[k] = bad ? misval : x;
        mo_im(r)[k] = bad ? misval : y;
    }
    m_result(argc, r);
}

void biconj(int32_t argc)
{
    m_xeqerrid = "conj()";
    matobj *a = m_arg(0);
    if (!bi_isnumeric(a))
        return;
    matobj *r = a->eltype == MO_REAL ? a : bi_target(a, MO_COMPLEX);
    if (!r)
        return;
    if (a->eltype == MO_COMPLEX)
        for (int64_t i = 0, n = mo_count(a); i < n; i++) {
            double im = mo_im(a)[i];
            mo_re(r)[i] = mo_re(a)[i];
            mo_im(r)[i] = im >= misval ? im : -im;
        }
    m_result(argc, r);
}

void biarg(int32_t argc)
{
    m_xeqerrid = "arg()";
    matobj *a = m_arg(0);
    if (!bi_isnumeric(a))
        return;
    matobj *r = m_mktmat(MO_REAL, a->rows, a->cols);
    if (!r)
        return;
    for (int64_t i = 0, n = mo_count(a); i < n; i++) {
        double x = a->view ? v_el1(a, i) : mo_re(a)[i];
        double y = a->eltype == MO_COMPLEX ? mo_im(a)[i] : 0;
        mo_re(r)[i] = x >= misval ? misval : std::atan2(y, x);
    }
    m_result(argc, r);
}
