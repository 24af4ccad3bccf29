// stats/regfit.cpp - the arithmetic of a linear regression.
//
// With a constant everything is done about the means, where the constant is apart from the
// rest, and brought back to the scale of the data at the end.
#include "core/missing.h"
#include "core/rc.h"
#include "core/settings.h"
#include "core/state.h"
#include "interp/messages.h"
#include "stats/regress_int.h"
#include "stats/statparse.h"
#include "stats/sweep.h"
#include "varlist/terms.h"
#include <algorithm>
#include <cmath>

static bool weighted_as(uint8_t mask)
{
    return parinfo->pi_hasexp && (parinfo->pi_wtype & mask);
}

// ---- the data

// The next block of the sample: rows without a cluster or a group to absorb are left out.
static int32_t next_rows(regjob *r)
{
    datarows *d = &r->rows;
    do {
        int32_t rc = dr_next(d);
        if (rc || !d->n)
            return rc;
        if (!r->cluster.var && !r->absorb.var)
            return 0;
        int32_t n = 0;
        for (int32_t i = 0; i < d->n; i++) {
            int32_t g = r->absorb.var ? group_at(&r->absorb, d->obs[i]) : 0;
            if (g < 0 || (r->cluster.var && group_at(&r->cluster, d->obs[i]) < 0))
                continue;
            if (n != i) {
                std::copy(d->x + i * d->ld, d->x + i * d->ld + d->k, d->x + n * d->ld);
                d->w[n] = d->w[i];
                d->obs[n] = d->obs[i];
            }
            r->blockgroup[size_t(n++)] = g;
        }
        d->n = n;
    } while (!d->n);
    return 0;
}

// Takes the group means off, once they are known; the grand mean stays.
static void absorb_rows(const regjob *r, datarows *d)
{
    auto k = size_t(d->k);
    for (int32_t i = 0; i < d->n; i++) {
        const double *g = &r->gmean[(size_t(r->blockgroup[size_t(i)]) + 1) * k];
        for (size_t j = 0; j < k; j++)
            d->x[size_t(i) * size_t(d->ld) + j] -= g[j] - r->gmean[j];
    }
}

int32_t reg_rows(regjob *r)
{
    int32_t rc = next_rows(r);
    if (!rc && r->absorb.var && !r->gmean.empty())
        absorb_rows(r, &r->rows);
    return rc;
}

// A pass ahead: the weighted means of every column within the groups, and over all of them.
static int32_t group_means(regjob *r)
{
    auto k = r->vars.size();
    std::vector<double> sum, weight;
    for (;;) {
        int32_t rc = next_rows(r);
        if (rc)
            return rc;
        if (!r->rows.n)
            break;
        for (int32_t i = 0; i < r->rows.n; i++) {
            auto g = size_t(r->blockgroup[size_t(i)]) + 1;
            if (sum.size() < (g + 1) * k) {
                sum.resize((g + 1) * k);
                weight.resize(g + 1);
            }
            double w = r->rows.w[i];
            weight[g] += w;
            weight[0] += w;
            for (size_t j = 0; j < k; j++) {
                double z = w * r->rows.x[size_t(i) * size_t(r->rows.ld) + j];
                sum[g * k + j] += z;
                sum[j] += z;
            }
        }
    }
    for (size_t g = 0; g < weight.size(); g++)
        for (size_t j = 0; j < k; j++)
            sum[g * k + j] /= weight[g] != 0 ? weight[g] : 1;
    for (size_t g = 1; g < weight.size(); g++)
        r->between += weight[g] * (sum[g * k] - sum[0]) * (sum[g * k] - sum[0]);
    r->gmean = std::move(sum);
    r->df_a = r->absorb.n > 0 ? r->absorb.n - 1 : 0;
    dr_rewind(&r->rows);
    return 0;
}

int32_t reg_build(regjob *r)
{
    auto k = int32_t(r->vars.size());
    r->rows.zeromarked = true;
    int32_t rc = dr_open(&r->rows, r->vars.data(), k);
    if (rc || (rc = cp_open(&r->cp, k, r->cons)))
        return rc;
    r->blockgroup.resize(block_rows);
    r->used.assign(size_t(_Nobs) + 1, 0);
    if (r->absorb.var && (rc = group_means(r)))
        return rc;
    for (;;) {
        if ((rc = reg_rows(r)))
            return rc;
        if (!r->rows.n)
            break;
        for (int32_t i = 0; i < r->rows.n; i++)
            r->used[size_t(r->rows.obs[i])] = 1;
        cp_block(&r->cp, &r->rows);
    }
    cp_close(&r->cp);
    if (!r->cp.n || r->cp.sum_w == 0)
        return errout(RC_NOOBS, "no observations\n");
    bool counts = weighted_as(W_FW | W_IW);
    r->N = counts ? r->cp.sum_w : double(r->cp.n);
    if (r->cp.n == 1 && r->N <= 1)
        return error(RC_FEWOBS);
    r->scale = weighted_as(W_AW | W_PW) ? double(r->cp.n) / r->cp.sum_w : 1;
    return 0;
}

// ---- the solution

static void sums_of_squares(regjob *r, double syy)
{
    double mean = cp_mean(&r->cp, 0), centred = syy;
    if (!r->cons)
        centred = syy - mean * mean * r->N;
    r->tss = r->cons || r->tsscons || r->hascons ? centred : syy;
    double within = r->tss; // with groups absorbed, what the slopes have to explain
    r->tss += r->between * r->scale;
    r->mss = r->tss - r->rss;
    bool constant = r->cons || r->hascons;
    r->df_m = r->rank - (r->hascons ? 1 : 0);
    r->df_r = r->dof > 0 ? r->dof : r->N - r->rank - r->cons - r->df_a;
    double mse = r->df_r > 0 ? r->rss / r->df_r : misval;
    if (r->mse1)
        mse = 1;
    r->rmse = mse < misval ? std::sqrt(mse) : misval;
    r->r2 = r->tss > 0 ? 1 - r->rss / r->tss : 1;
    double df_t = r->N - constant;
    r->r2_a = r->df_r > 0 ? 1 - df_t * (1 - r->r2) / r->df_r : misval;
    double explained = (constant ? within : syy) - r->rss;
    r->F = misval;
    if (r->df_m > 0 && mse < misval && mse > 0 && explained >= 0)
        r->F = explained / r->df_m / mse;
    r->ll = r->ll_0 = misval;
    if (constant && !weighted_as(W_PW) && r->inst.empty()) {
        if (r->rss > 0)
            r->ll = -0.5 * r->N * (doubleln2pi + std::log(r->rss / r->N) + 1);
        if (r->tss > 0)
            r->ll_0 = -0.5 * r->N * (doubleln2pi + std::log(r->tss / r->N) + 1);
    }
}

// The covariance of the coefficients from that about the means: C is nx+1 square there, its
// last row and column those of the constant, which has to go back to zero.
static std::vector<double> data_scale(const regjob *r, const std::vector<double> &C)
{
    auto p = size_t(r->p), nx = size_t(r->nx);
    std::vector<double> V = C;
    if (!r->cons)
        return V;
    std::vector<double> m(nx), Vm(nx);
    for (size_t j = 0; j < nx; j++)
        m[j] = r->dropped[j] ? 0 : cp_mean(&r->cp, int32_t(j) + 1);
    double q = 0, cross = 0;
    for (size_t i = 0; i < nx; i++) {
        for (size_t j = 0; j < nx; j++)
            Vm[i] += C[i * p + j] * m[j];
        q += m[i] * Vm[i];
        cross += m[i] * C[i * p + nx];
    }
    for (size_t i = 0; i < nx; i++)
        V[i * p + nx] = V[nx * p + i] = C[i * p + nx] - Vm[i];
    V[nx * p + nx] = C[nx * p + nx] - 2 * cross + q;
    return V;
}

// The generalized inverse about the means, the constant's entry apart from the rest.
static std::vector<double> inverse_about_means(const regjob *r, double factor)
{
    auto p = size_t(r->p), nx = size_t(r->nx);
    std::vector<double> C(p * p);
    for (size_t i = 0; i < nx; i++)
        for (size_t j = 0; j < nx; j++)
            C[i * p + j] = factor * r->H[i * nx + j];
    if (r->cons)
        C[nx * p + nx] = factor / r->N;
    return C;
}

void reg_inverse(const regjob *r, double *out)
{
    std::vector<double> V = data_scale(r, inverse_about_means(r, 1));
    std::copy(V.begin(), V.end(), out);
}

void reg_coefficients(regjob *r, const double *swept, double syy)
{
    int32_t nx = r->nx;
    int64_t ld = set_matsize;
    r->p = nx + r->cons;
    r->b.assign(size_t(r->p), 0);
    r->beta.assign(size_t(nx), misval);
    r->H.assign(size_t(nx) * size_t(nx), 0);
    r->dropped.assign(size_t(nx), 0);
    r->rank = 0;
    double left = 0; // of the constant, small terms together
    for (int32_t i = 0; i < nx; i++) {
        const double *row = swept + (i + 2) * ld;
        r->dropped[size_t(i)] = row[i + 2] == 0;
        r->rank += row[i + 2] != 0;
        r->b[size_t(i)] = row[1];
        for (int32_t j = 0; j < nx; j++)
            r->H[size_t(i) * size_t(nx) + size_t(j)] = row[j + 2];
        left += row[1] * cp_mean(&r->cp, i + 1);
        double sxx = cp_el(&r->cp, i + 1, i + 1) * r->scale;
        if (syy > 0)
            r->beta[size_t(i)] = row[1] * std::sqrt(sxx / syy);
    }
    if (r->cons)
        r->b[size_t(nx)] = cp_mean(&r->cp, 0) - left;
}

void reg_variance(regjob *r, double syy)
{
    sums_of_squares(r, syy);
    double mse = r->mse1 ? 1 : r->df_r > 0 ? r->rss / r->df_r : 0;
    r->V = data_scale(r, inverse_about_means(r, mse));
}

// Terms are swept in an order of their own, and with a tolerance of their own.
static int32_t sweep_regressors(const regjob *r, double *a)
{
    int32_t nx = r->nx;
    const int32_t *x = r->vars.data() + 1;
    std::vector<int32_t> order;
    double rel = matrind.rel;
    if (std::any_of(x, x + nx, [](int32_t v) { return v < 0; })) {
        fv_apply_omit_for_anova(x, nx, 2, a, set_matsize);
        if (!r->optsweep)
            fv_sweeporder(x, nx, 2, &order);
        matrind.rel = matrind.fv;
    }
    int32_t rc =
        sweep_within(a, 1, nx + 1, 2, nx + 1, order.empty() ? nullptr : order.data(), -1);
    matrind.rel = rel;
    return rc;
}

int32_t reg_solve(regjob *r)
{
    int32_t nx = r->nx, ld = set_matsize, rc;
    matblock a;
    if ((rc = take_block(&a, nx + 2)))
        return rc;
    a[0] = r->cp.sum_w * r->scale;
    for (int32_t i = 0; i <= nx; i++) {
        a[i + 1] = cp_mean(&r->cp, i) * a[0];
        for (int32_t j = 0; j <= nx; j++)
            a[int64_t(i + 1) * ld + j + 1] = cp_el(&r->cp, i, j) * r->scale;
    }
    double syy = a[ld + 1];
    if ((rc = sweep_regressors(r, a.get())))
        return rc;
    reg_coefficients(r, a.get(), syy);
    r->rss = a[ld + 1] > 0 ? a[ld + 1] : 0;
    reg_variance(r, syy);
    return 0;
}

double reg_residual(const regjob *r, const double *row, double *x)
{
    double e = row[0] - (r->cons ? cp_mean(&r->cp, 0) : 0);
    for (int32_t j = 0; j < r->nx; j++) {
        double z = row[j + 1] - (r->cons ? cp_mean(&r->cp, j + 1) : 0);
        x[j] = r->dropped[size_t(j)] ? 0 : z;
        e -= r->b[size_t(j)] * x[j];
    }
    if (r->cons)
        x[r->nx] = 1;
    return e;
}

// ---- robust variances (Huber 1967, White 1980; hc2 and hc3 of MacKinnon and White 1985)

struct meat {
    const regjob *r;
    std::vector<double> x;
    std::vector<double> M, sums; // p by p; clusters by p
};

// The row about the means, with the constant behind it; its residual is returned. Instruments
// leave what they explain of the regressors.
static double score_row(meat *m, const double *row)
{
    const regjob *r = m->r;
    double e = reg_residual(r, row, m->x.data());
    auto nx = size_t(r->nx);
    for (size_t j = 0; j < nx && !r->inst.empty(); j++) {
        if (r->exog[j] || r->dropped[j])
            continue;
        m->x[j] = 0;
        for (size_t l = 0; l < r->zcol.size(); l++) {
            int32_t c = r->zcol[l];
            m->x[j] += r->first[l * nx + j] * (row[c] - (r->cons ? cp_mean(&r->cp, c) : 0));
        }
    }
    return e;
}

static double leverage(const meat *m, double w)
{
    const regjob *r = m->r;
    auto nx = size_t(r->nx);
    double h = r->cons ? 1 / r->N : 0;
    for (size_t i = 0; i < nx; i++) {
        double t = 0;
        for (size_t j = 0; j < nx; j++)
            t += r->H[i * nx + j] * m->x[j];
        h += t * m->x[i];
    }
    return h * w;
}

static void add_row(meat *m, const double *row, double w, int32_t obs)
{
    auto *r = const_cast<regjob *>(m->r);
    auto p = size_t(r->p);
    bool counts = weighted_as(W_FW);
    double e = score_row(m, row), wn = counts ? 1 : w * r->scale, f = counts ? w : 1;
    if (r->vce == RV_HC2 || r->vce == RV_HC3) {
        double left = 1 - leverage(m, wn);
        if (left > 1e-12)
            e /= r->vce == RV_HC2 ? std::sqrt(left) : left;
    }
    if (r->vce == RV_CLUSTER) {
        auto g = size_t(group_at(&r->cluster, obs));
        if (m->sums.size() < (g + 1) * p)
            m->sums.resize((g + 1) * p);
        for (size_t j = 0; j < p; j++)
            m->sums[g * p + j] += f * wn * e * m->x[j];
        return;
    }
    for (size_t i = 0; i < p; i++) {
        double t = f * wn * e * wn * e * m->x[i];
        for (size_t j = i; j < p; j++)
            m->M[i * p + j] += t * m->x[j];
    }
}

// H M H, where the constant stands apart from the rest.
static std::vector<double> sandwich(const regjob *r, const std::vector<double> &M, double factor)
{
    auto p = size_t(r->p);
    std::vector<double> G = inverse_about_means(r, 1), T(p * p), C(p * p);
    for (size_t i = 0; i < p; i++)
        for (size_t k = 0; k < p; k++)
            for (size_t j = 0; j < p; j++)
                T[i * p + j] += G[i * p + k] * M[k * p + j];
    for (size_t i = 0; i < p; i++)
        for (size_t k = 0; k < p; k++)
            for (size_t j = 0; j < p; j++)
                C[i * p + j] += T[i * p + k] * G[k * p + j] * factor;
    for (size_t i = 0; i < p; i++)
        for (size_t j = 0; j < i; j++)
            C[i * p + j] = C[j * p + i];
    return C;
}

int32_t reg_robust(regjob *r)
{
    auto p = size_t(r->p);
    meat m{r, std::vector<double>(p), std::vector<double>(p * p), {}};
    int32_t rc =
        reg_each(r, [&m](const double *row, double w, int32_t obs) { add_row(&m, row, w, obs); });
    if (rc)
        return rc;
    double k = r->rank + r->cons + r->df_a, factor = 1;
    if (r->vce == RV_CLUSTER) {
        double g = r->N_clust = r->cluster.n;
        for (size_t c = 0; c < size_t(r->cluster.n); c++)
            for (size_t i = 0; i < p; i++)
                for (size_t j = i; j < p; j++)
                    m.M[i * p + j] += m.sums[c * p + i] * m.sums[c * p + j];
        factor = g > 1 && r->N > k ? g / (g - 1) * ((r->N - 1) / (r->N - k)) : 0;
        r->df_r = r->dof > 0 ? r->dof : g - 1;
    } else if (r->vce == RV_ROBUST)
        factor = r->N > k ? r->N / (r->N - k) : 0;
    for (size_t i = 0; i < p; i++)
        for (size_t j = 0; j < i; j++)
            m.M[i * p + j] = m.M[j * p + i];
    r->V = data_scale(r, sandwich(r, m.M, factor));
    r->F = r->df_m > 0 ? reg_wald(r) : misval;
    return 0;
}

double reg_wald(const regjob *r)
{
    int32_t nx = r->nx, ld = set_matsize;
    matblock a;
    if (nx < 1 || take_block(&a, nx))
        return misval;
    // In units of the standard errors, so that no small one is taken for none.
    std::vector<double> se(static_cast<size_t>(nx)), z(static_cast<size_t>(nx));
    for (size_t i = 0; i < size_t(nx); i++) {
        se[i] = std::sqrt(r->V[i * size_t(r->p) + i]);
        z[i] = se[i] > 0 ? r->b[i] / se[i] : 0;
    }
    for (size_t i = 0; i < size_t(nx); i++)
        for (size_t j = 0; j < size_t(nx); j++)
            if (se[i] > 0 && se[j] > 0)
                a[i * size_t(ld) + j] = r->V[i * size_t(r->p) + j] / se[i] / se[j];
    if (matrin(a.get(), 0, nx - 1, -1))
        return misval;
    double q = 0;
    int32_t rank = 0;
    for (int32_t i = 0; i < nx; i++) {
        rank += a[int64_t(i) * ld + i] != 0;
        for (int32_t j = 0; j < nx; j++)
            q += z[size_t(i)] * a[int64_t(i) * ld + j] * z[size_t(j)];
    }
    return rank == r->df_m && q >= 0 ? q / r->df_m : misval;
}
