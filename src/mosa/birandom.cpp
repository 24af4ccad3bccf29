// Random variates in a matrix: rows, columns, then the parameters of the distribution, which
// are scalars or have the rows or columns of the result. Elements are drawn row by row, so that
// a seed gives the same numbers whatever the shape. A parameter outside its range gives missing
// for its elements and draws nothing.
#include "mosa/bi_kern.h"
#include "mosa/bidist_int.h"
#include "mosa/bihandlers.h"
#include "stats/random.h"
#include "stats/variates.h"
#include <algorithm>
#include <cmath>

namespace
{

// Rows and columns from the two arguments below n parameters; an empty matrix of that shape.
matobj *random_shape(int32_t n)
{
    int32_t rows, cols;
    if (!bi_int(m_arg(n + 1), 0, 2147483646, &rows) || !bi_int(m_arg(n), 0, 2147483646, &cols))
        return nullptr;
    for (int32_t k = 0; k < n; k++) {
        const matobj *a = m_arg(n - 1 - k);
        if (!bi_isreal(a))
            return nullptr;
        if ((a->rows != 1 && a->rows != rows) || (a->cols != 1 && a->cols != cols)) {
            m_xrc = 3200;
            return nullptr;
        }
    }
    return m_mktmat(MO_REAL, rows, cols);
}

void finish(int32_t argc, matobj *r, bool broke)
{
    if (broke)
        mo_free(r);
    else
        m_result(argc, r);
}

double draw(double (*one)(double), const double *x)
{
    return one(x[0]);
}
double draw(double (*one)(double, double), const double *x)
{
    return one(x[0], x[1]);
}
double draw(double (*one)(double, double, double), const double *x)
{
    return one(x[0], x[1], x[2]);
}
void fill(void (*all)(double *, int64_t, int64_t, double), matobj *r, const double *x)
{
    all(mo_re(r), mo_count(r), 1, x[0]);
}
void fill(void (*all)(double *, int64_t, int64_t, double, double), matobj *r, const double *x)
{
    all(mo_re(r), mo_count(r), 1, x[0], x[1]);
}
void fill(void (*all)(double *, int64_t, int64_t, double, double, double), matobj *r,
          const double *x)
{
    all(mo_re(r), mo_count(r), 1, x[0], x[1], x[2]);
}

template <int N, class One> bool each(matobj *r, const ew_arg *arg, One one)
{
    double *to = mo_re(r);
    int64_t done = 0;
    for (int32_t i = 0; i < r->rows; i++)
        for (int32_t j = 0; j < r->cols; j++) {
            if (done++ % 256 == 0 && row_break())
                return true;
            double x[N];
            bool missing = false;
            for (int k = 0; k < N; k++) {
                x[k] = arg[k].at(i, j);
                missing |= !(x[k] < misval);
            }
            double z = missing ? misval : draw(one, x);
            *to++ = __builtin_fabs(z) < misval ? z : misval;
        }
    return false;
}

// N parameters. With scalars alone the vector form keeps its setup for all elements.
template <int N, class One, class All> void variates(int32_t argc, const char *id, One one, All all)
{
    m_xeqerrid = id;
    matobj *r = random_shape(N);
    if (!r)
        return;
    ew_arg arg[N];
    bool scalars = true;
    double x[N];
    for (int k = 0; k < N; k++) {
        const matobj *a = m_arg(N - 1 - k);
        arg[k] = ew_arg(a);
        if (mo_is1by1(a) && (x[k] = arg[k].at(0, 0)) < misval)
            continue;
        scalars = false;
    }
    if (!scalars)
        finish(argc, r, each<N>(r, arg, one));
    else {
        fill(all, r, x);
        finish(argc, r, row_break());
    }
}

} // namespace

void birnormal(int32_t argc)
{
    variates<2>(argc, "rnormal()", rnormal, rnormal_);
}
void birgamma(int32_t argc)
{
    variates<2>(argc, "rgamma()", rgamma, rgamma_);
}
void birbeta(int32_t argc)
{
    variates<2>(argc, "rbeta()", rbeta, rbeta_);
}
void birt(int32_t argc)
{
    variates<1>(argc, "rt()", rt, rt_);
}
void birpoisson(int32_t argc)
{
    variates<1>(argc, "rpoisson()", rpoisson, rpoisson_);
}
void birbinomial(int32_t argc)
{
    variates<2>(argc, "rbinomial()", rbinomial, rbinomial_);
}
void birhypergeometric(int32_t argc)
{
    variates<3>(argc, "rhypergeometric()", rhypergeometric, rhypergeometric_);
}
void birnbinomial(int32_t argc)
{
    variates<2>(argc, "rnbinomial()", rnbinomial, rnbinomial_);
}

// Probabilities as running sums that end in 1; false with a code when they are none.
static bool cumulate(const matobj *p, const bi_doubles &upto)
{
    int64_t n = mo_count(p);
    double sum = 0;
    for (int64_t k = 0; k < n; k++) {
        double z = p->view ? v_el1(p, k) : mo_re(p)[k];
        if (!(z >= 0 && z <= 1))
            return bi_fail(3300);
        upto[k] = sum += z;
    }
    if (!(std::fabs(sum - 1) <= 1e-10))
        return bi_fail(3300);
    // The rounding of the sum belongs to the last that can come at all.
    for (int64_t k = n - 1; k >= 0 && upto[k] == sum; k--)
        upto[k] = 1;
    return true;
}

// rdiscrete(r, c, p): the numbers 1, 2, ... with the probabilities of the vector p.
void birdiscrete(int32_t argc)
{
    m_xeqerrid = "rdiscrete()";
    int32_t rows, cols;
    const matobj *p = m_arg(0);
    if (!bi_int(m_arg(2), 0, 2147483646, &rows) || !bi_int(m_arg(1), 0, 2147483646, &cols) ||
        !bi_isreal(p))
        return;
    if (p->rows != 1 && p->cols != 1) {
        m_xrc = 3201;
        return;
    }
    int64_t most = mo_count(p);
    bi_doubles upto(most);
    if (!upto || !cumulate(p, upto))
        return;
    matobj *r = m_mktmat(MO_REAL, rows, cols);
    if (!r)
        return;
    bool broke = false;
    for (int64_t k = 0, n = mo_count(r); k < n && !broke; k++) {
        mo_re(r)[k] = double(std::upper_bound(upto.p, upto.p + most, urnuni()) - upto.p + 1);
        broke = bi_stop(k);
    }
    finish(argc, r, broke);
}
