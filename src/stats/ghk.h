// stats/ghk.h - simulated probabilities of the multivariate normal, and points to simulate with.
#pragma once
#include <cstdint>

// n elements of the sequence of base q (a prime) that follows u, from 0 to below 1; after 0 come
// 1/q, 2/q, ... False on a break.
bool halton_points(double *out, int64_t n, int32_t q, double u);

struct ghk_plan {
    int32_t m;       // dimensions
    int64_t points;  // how many draws
    const double *u; // points rows of m - 1 numbers between 0 and 1
    bool antithetic; // each draw once more as 1 - u
    bool derivatives;
    double *work; // ghk_work(m) numbers
};
int64_t ghk_work(int32_t m);

// The probability that m normals with mean 0 and lower triangular root c (m by m, by rows) of
// their variance matrix are at most x; a missing bound is none. With derivatives dx has m and
// dv the m (m + 1) / 2 derivatives by the lower triangle of the variances, column by column.
double ghk_probability(const ghk_plan &plan, const double *x, const double *c, double *dx,
                       double *dv);

// The lower root of v, m by m, by rows; false when v is not positive definite.
bool ghk_root(const double *v, int32_t m, double *c);
