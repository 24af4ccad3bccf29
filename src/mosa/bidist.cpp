// Distributions, element by element: parameters first, the value last, the routines those of
// stats/dist.h.
//
// Arguments are scalars, or go together as the operands of a colon operator do: one of them has
// the shape of the result, the others that shape, one row, one column, or one element of it.
// A missing argument, or one outside the domain, gives missing.
#include "mosa/bi_int.h"
#include "mosa/bidist_int.h"
#include "mosa/bihandlers.h"
#include "stats/dist.h"
#include "stats/distold.h"
#include "stats/normal.h"

int32_t bi_shapes(matobj *const *a, int32_t n, int32_t *rows, int32_t *cols)
{
    *rows = *cols = 1;
    for (int32_t k = 0; k < n; k++) {
        if (*rows == 1)
            *rows = a[k]->rows;
        if (*cols == 1)
            *cols = a[k]->cols;
    }
    int32_t whole = -1;
    for (int32_t k = 0; k < n; k++) {
        bool r = a[k]->rows == *rows, c = a[k]->cols == *cols;
        if ((!r && a[k]->rows != 1) || (!c && a[k]->cols != 1)) {
            m_xrc = 3200;
            return -1;
        }
        if (r && c && whole < 0)
            whole = k;
    }
    if (whole < 0)
        m_xrc = 3200;
    return whole;
}

namespace
{

constexpr int64_t poll_every = 64; // the slow ones take a millisecond an element

double call(double (*f)(double), const double *x)
{
    return f(x[0]);
}
double call(double (*f)(double, double), const double *x)
{
    return f(x[0], x[1]);
}
double call(double (*f)(double, double, double), const double *x)
{
    return f(x[0], x[1], x[2]);
}
double call(double (*f)(double, double, double, double), const double *x)
{
    return f(x[0], x[1], x[2], x[3]);
}

// All elements of r; true when a break came.
template <int N, class F> bool walk(matobj *r, matobj *const *a, F f)
{
    ew_arg arg[N];
    for (int k = 0; k < N; k++)
        arg[k] = ew_arg(a[k]);
    double *to = mo_re(r);
    int64_t done = 0;
    for (int32_t i = 0; i < r->rows; i++)
        for (int32_t j = 0; j < r->cols; j++) {
            if (done++ % poll_every == 0 && row_break())
                return true;
            double x[N];
            bool missing = false;
            for (int k = 0; k < N; k++) {
                x[k] = arg[k].at(i, j);
                missing |= !(x[k] < misval);
            }
            double z = missing ? misval : call(f, x);
            *to++ = __builtin_fabs(z) < misval ? z : misval;
        }
    return false;
}

// N arguments, the result in the place of a temporary of its shape if there is one. Elements of
// such an argument are read before they are written: both go in the same order.
template <int N, class F> void dist(int32_t argc, const char *id, F f)
{
    m_xeqerrid = id;
    matobj *const *a = m_stak - (N - 1);
    for (int k = 0; k < N; k++)
        if (!bi_isreal(a[k]))
            return;
    int32_t rows, cols, whole = bi_shapes(a, N, &rows, &cols);
    if (whole < 0)
        return;
    matobj *r = bi_target(a[whole], MO_REAL);
    if (!r)
        return;
    if (!walk<N>(r, a, f))
        m_result(argc, r);
    else if (r->links == 0)
        mo_free(r);
}

using fn1 = double (*)(double);
using fn2 = double (*)(double, double);
using fn3 = double (*)(double, double, double);
using fn4 = double (*)(double, double, double, double);

double lnden1(double x)
{
    return ovlnnormalden3(x, 0, 1);
}
double lnden2(double x, double sd)
{
    return ovlnnormalden3(x, 0, sd);
}
double den2(double x, double sd)
{
    return ovnormalden3(x, 0, sd);
}

} // namespace

// One row a function: its name, how many arguments, the routine.
#define DISTRIBUTIONS(D)                                                                           \
    D(lnnormal, 1, ovlnnormal)                                                                     \
    D(gammap, 2, gammap2)                                                                          \
    D(gammaptail, 2, gammaptail2)                                                                  \
    D(invgammap, 2, invgammap2)                                                                    \
    D(invgammaptail, 2, invgammaptail2)                                                            \
    D(gammaden, 4, gammaden)                                                                       \
    D(dgammapda, 2, dgammapda)                                                                     \
    D(dgammapdx, 2, dgammapdx)                                                                     \
    D(dgammapdada, 2, dgammapdada)                                                                 \
    D(dgammapdadx, 2, dgammapdadx)                                                                 \
    D(dgammapdxdx, 2, dgammapdxdx)                                                                 \
    D(chi2, 2, chi2cumm2)                                                                          \
    D(chi2tail, 2, chi2tail2)                                                                      \
    D(invchi2, 2, invchi2cumm2)                                                                    \
    D(invchi2tail, 2, invchi2tail2)                                                                \
    D(nchi2, 3, nchi2)                                                                             \
    D(invnchi2, 3, invnchi2)                                                                       \
    D(npnchi2, 3, npnchi2)                                                                         \
    D(tden, 2, tden)                                                                               \
    D(ttail, 2, ttail2)                                                                            \
    D(invttail, 2, invttail2)                                                                      \
    D(F, 3, fcumm2)                                                                                \
    D(Ftail, 3, ftail2)                                                                            \
    D(Fden, 3, fden)                                                                               \
    D(invF, 3, invfcumm2)                                                                          \
    D(invFtail, 3, invftail2)                                                                      \
    D(nFtail, 4, nftail)                                                                           \
    D(nFden, 4, nfden)                                                                             \
    D(invnFtail, 4, invnftail)                                                                     \
    D(ibeta, 3, ibeta2)                                                                            \
    D(ibetatail, 3, ibetatail2)                                                                    \
    D(betaden, 3, betaden)                                                                         \
    D(invibeta, 3, invibeta2)                                                                      \
    D(invibetatail, 3, invibetatail2)                                                              \
    D(nibeta, 4, nibeta)                                                                           \
    D(nbetaden, 4, nbetaden)                                                                       \
    D(invnibeta, 4, invnibeta)                                                                     \
    D(binormal, 3, binormal)                                                                       \
    D(Binomial, 3, binomialtail2)                                                                  \
    D(binomial, 3, binomial2)                                                                      \
    D(binomialtail, 3, binomialtail2)                                                              \
    D(binomialp, 3, binomialp)                                                                     \
    D(invbinomial, 3, invbinomial2)                                                                \
    D(invbinomialtail, 3, invbinomialtail2)                                                        \
    D(nbinomial, 3, nbinomial)                                                                     \
    D(nbinomialtail, 3, nbinomialtail)                                                             \
    D(nbinomialp, 3, nbinomialp)                                                                   \
    D(invnbinomial, 3, invnbinomial)                                                               \
    D(invnbinomialtail, 3, invnbinomialtail)                                                       \
    D(poisson, 2, poisson2)                                                                        \
    D(poissontail, 2, poissontail2)                                                                \
    D(poissonp, 2, poissonp)                                                                       \
    D(invpoisson, 2, invpoisson)                                                                   \
    D(invpoissontail, 2, invpoissontail)                                                           \
    D(hypergeometric, 4, hypergeometric)                                                           \
    D(hypergeometricp, 4, hypergeometricp)                                                         \
    D(srangeprob, 3, srangeprob)                                                                   \
    D(invsrangeprob, 3, invsrangeprob)                                                             \
    D(tukeyprob, 3, srangeprob)                                                                    \
    D(invtukeyprob, 3, invsrangeprob)                                                              \
    D(dunnettprob, 3, dunnettprob)                                                                 \
    D(invdunnettprob, 3, invdunnettprob)

#define D(name, n, routine)                                                                        \
    void bi##name(int32_t argc)                                                                    \
    {                                                                                              \
        dist<n>(argc, #name "()", static_cast<fn##n>(routine));                                    \
    }
DISTRIBUTIONS(D)
#undef D

// (x), (x, sd), (x, mean, sd)
void binormalden(int32_t argc)
{
    if (argc == 1)
        dist<1>(argc, "normalden()", ovnormalden);
    else if (argc == 2)
        dist<2>(argc, "normalden()", den2);
    else
        dist<3>(argc, "normalden()", ovnormalden3);
}

void bilnnormalden(int32_t argc)
{
    if (argc == 1)
        dist<1>(argc, "lnnormalden()", lnden1);
    else if (argc == 2)
        dist<2>(argc, "lnnormalden()", lnden2);
    else
        dist<3>(argc, "lnnormalden()", ovlnnormalden3);
}
