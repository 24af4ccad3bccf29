// stats/regiv.cpp - two-stage least squares (Theil 1953, Basmann 1957).
//
// With P the projection on the instruments, b = (X'PX)^-1 X'Py. P takes from the products of y
// and X what is left of them when the instruments have been swept.
#include "core/missing.h"
#include "core/rc.h"
#include "core/settings.h"
#include "core/state.h"
#include "interp/messages.h"
#include "stats/regress_int.h"
#include "stats/statparse.h"
#include "stats/sweep.h"

namespace
{

// Which regressors are instruments too, and where each instrument's column is.
int32_t sort_out(regjob *r)
{
    r->exog.assign(size_t(r->nx), 0);
    r->zcol.clear();
    int32_t endogenous = r->nx, more = 0;
    for (int32_t v : r->inst) {
        int32_t at = 0;
        for (int32_t c = 1; c < int32_t(r->vars.size()); c++)
            if (r->vars[size_t(c)] == v) {
                at = c;
                break;
            }
        if (at <= r->nx && !r->exog[size_t(at) - 1]) {
            r->exog[size_t(at) - 1] = 1;
            endogenous--;
        } else
            more++;
        r->zcol.push_back(at);
    }
    return more < endogenous ? error(481) : 0;
}

// Rows and columns: y, the regressors, the instruments, from 1 on.
void fill(const regjob *r, double *a)
{
    int32_t n = 1 + r->nx + int32_t(r->zcol.size());
    auto column = [r](int32_t i) { return i <= r->nx ? i : r->zcol[size_t(i - r->nx - 1)]; };
    for (int32_t i = 0; i < n; i++)
        for (int32_t j = 0; j < n; j++)
            a[int64_t(i + 1) * set_matsize + j + 1] =
                cp_el(&r->cp, column(i), column(j)) * r->scale;
}

int32_t squares_left(regjob *r)
{
    std::vector<double> x(size_t(r->p));
    double sum = 0, carry = 0;
    int32_t rc = reg_each(r, [&](const double *row, double w, int32_t) {
        double e = reg_residual(r, row, x.data()), add = w * e * e, t = sum + add;
        carry += (sum - t) + add;
        sum = t;
    });
    r->rss = (sum + carry) * r->scale;
    return rc;
}

} // namespace

int32_t reg_solve_iv(regjob *r)
{
    int32_t rc = sort_out(r);
    if (rc)
        return rc;
    int32_t nx = r->nx, nz = int32_t(r->zcol.size());
    int64_t ld = set_matsize;
    matblock a, b;
    if ((rc = take_block(&a, nx + nz + 2)) || (rc = take_block(&b, nx + 2)))
        return rc;
    fill(r, a.get());
    for (int32_t i = 1; i <= nx + 1; i++)
        for (int32_t j = 1; j <= nx + 1; j++)
            b[i * ld + j] = a[i * ld + j];
    double syy = a[ld + 1];
    if ((rc = sweep_within(a.get(), 1, nx + nz + 1, nx + 2, nx + nz + 1, nullptr, -1)))
        return rc;
    auto own = [r](int32_t i) { return i > 1 && r->exog[size_t(i) - 2]; };
    for (int32_t i = 1; i <= nx + 1; i++)
        for (int32_t j = 1; j <= nx + 1; j++)
            if (!own(i) && !own(j)) // nothing is left of the others
                b[i * ld + j] -= a[i * ld + j];
    r->first.assign(size_t(nz) * size_t(nx), 0);
    for (int32_t l = 0; l < nz; l++)
        for (int32_t j = 0; j < nx; j++)
            r->first[size_t(l) * size_t(nx) + size_t(j)] = a[(nx + 2 + l) * ld + j + 2];
    if ((rc = sweep_within(b.get(), 1, nx + 1, 2, nx + 1, nullptr, -1)))
        return rc;
    reg_coefficients(r, b.get(), syy);
    if ((rc = squares_left(r)))
        return rc;
    reg_variance(r, syy);
    r->F = r->df_m > 0 ? reg_wald(r) : misval;
    if (r->mss < 0) // such a fit is no part of the total
        r->r2 = r->r2_a = misval;
    return 0;
}
