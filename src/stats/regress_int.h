// stats/regress_int.h - one linear regression under way: regfit computes, regress talks.
#pragma once
#include "stats/crossprod.h"
#include "stats/groups.h"
#include <vector>

enum regvce : uint8_t { RV_OLS, RV_ROBUST, RV_HC2, RV_HC3, RV_CLUSTER };

struct regjob {
    // the model: vars[0] the dependent variable, then nx regressors
    // entries of a parsed list: -k is column k of fv_current
    std::vector<int32_t> vars;
    int32_t nx = 0;
    bool cons = true, hascons = false, tsscons = false, mse1 = false;
    bool optsweep = false; // pivots by size even where the terms of the model have an order
    regvce vce = RV_OLS;
    groupids cluster, absorb;
    double dof = 0; // 0: as counted
    // instruments: all variables held exogenous; vars ends with those that are no regressors
    std::vector<int32_t> inst;
    std::vector<int32_t> zcol; // their columns in vars
    std::vector<uint8_t> exog; // by regressor
    std::vector<double> first; // coefficients of the regressors on them, inst by nx
    // the data
    datarows rows;
    crossprod cp;
    std::vector<uint8_t> used; // by observation
    std::vector<double> gmean; // absorb: group by group the means of the columns
    double between = 0;        // and the squares between them, of the dependent variable
    std::vector<int32_t> blockgroup;
    // results. b and V end with the constant when there is one
    double N = 0, scale = 1; // scale makes weights count as observations
    int32_t rank = 0, p = 0;
    double df_m = 0, df_r = 0, df_a = 0, tss = 0, rss = 0, mss = 0, F = 0, rmse = 0, r2 = 0,
           r2_a = 0, ll = 0, ll_0 = 0, N_clust = 0;
    std::vector<double> H; // (X'X)^-1 about the means, nx by nx
    std::vector<double> b, V, beta;
    std::vector<uint8_t> dropped; // by regressor
};

[[nodiscard]] int32_t reg_build(regjob *r); // the cross products. 0, 2000 and so on
[[nodiscard]] int32_t reg_solve(regjob *r); // sweeps, coefficients, sums of squares, variance
// The same by two-stage least squares, where there are instruments. 481 without enough.
[[nodiscard]] int32_t reg_solve_iv(regjob *r);
// What both do with products of y and the regressors once they are swept (rows of matsize, y at
// 1): coefficients and inverse; and, when r->rss is known, sums of squares and the variance.
void reg_coefficients(regjob *r, const double *swept, double syy);
void reg_variance(regjob *r, double syy);
// A row about the means where there is a constant: x of the regressors, zeros for dropped ones,
// 1 for the constant; the residual is returned.
double reg_residual(const regjob *r, const double *row, double *x);
// Rows of the sample as the model takes them. n is 0 at the end.
[[nodiscard]] int32_t reg_rows(regjob *r);
// Calls f(row, weight, observation) for every row of the sample, from the first. 0 or a code.
template <class F> [[nodiscard]] int32_t reg_each(regjob *r, F f)
{
    dr_rewind(&r->rows);
    for (;;) {
        int32_t rc = reg_rows(r);
        if (rc || !r->rows.n)
            return rc;
        for (int32_t i = 0; i < r->rows.n; i++)
            f(r->rows.x + int64_t(i) * r->rows.ld, r->rows.w[i], r->rows.obs[i]);
    }
}
[[nodiscard]] int32_t reg_robust(regjob *r); // replaces the variance
// (X'X)^-1 on the scale of the data, p by p, zeros where a column was left out.
void reg_inverse(const regjob *r, double *out);
// The Wald F of all slopes over df_m, or misval.
double reg_wald(const regjob *r);
