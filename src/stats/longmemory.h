// stats/longmemory.h - fractional differences and the autocovariances of long memory processes.
#pragma once
#include <cstdint>

// y[t] = sum over j of c[j] x[t - j], c the coefficients of (1 - L)^d, over the observations
// there are; stride apart in both. coef holds n numbers. False on a break.
bool frac_difference(const double *x, double *y, int64_t n, int64_t stride, double d, double *coef);

// Autocovariances 0 to n - 1 of a stationary process
//   (1 - ar[0] L - ar[1] L^2 - ...) (1 - L)^d y = (1 + ma[0] L + ...) e,   var(e) = s2
// 1, or 0 when it is not stationary (d from -1 to below 1/2, not -1), or -1 when memory or a
// break stops it.
int32_t arfima_autocov(const double *ar, int32_t p, const double *ma, int32_t q, double d,
                       double s2, int64_t n, double *out);
