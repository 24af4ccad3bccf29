// stats/crossprod.h - sums of squares and products of columns, about their means or about zero.
//
// One pass. Means run along: each block is taken about its own mean and joined to what stands
// (Chan, Golub and LeVeque 1983), after the first row was taken off all, so that data far from
// zero lose nothing. Every sum carries the rounding error of its additions along in a second
// number (Neumaier 1974) that is added at the end.
#pragma once
#include "stats/rows.h"

struct crossprod {
    int32_t k = 0, ld = 0;
    bool central = false;
    int64_t n = 0;           // observations
    double sum_w = 0;        // weights as typed
    double *s = nullptr, *c = nullptr;      // k by ld, upper triangle; c the carried errors
    double *shift = nullptr, *mean = nullptr, *meanc = nullptr, *d = nullptr;  // of ld each
    crossprod() = default;
    crossprod(const crossprod &) = delete;
    crossprod &operator=(const crossprod &) = delete;
    ~crossprod();
};
[[nodiscard]] int32_t cp_open(crossprod *p, int32_t k, bool central);
void cp_block(crossprod *p, const datarows *d);  // adds a block of the same columns
void cp_close(crossprod *p);                     // carried errors into the sums
inline double cp_el(const crossprod *p, int32_t i, int32_t j)
{
    return i <= j ? p->s[int64_t(i) * p->ld + j] : p->s[int64_t(j) * p->ld + i];
}
// The mean of a column, whole; about zero it is the sum over the weights.
inline double cp_mean(const crossprod *p, int32_t j)
{
    return p->shift[j] + (p->mean[j] + p->meanc[j]);
}
