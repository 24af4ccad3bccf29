// mosa/blas.h - the library of linear algebra, loaded when first needed.
//
// Linking it would cost every start of the program a few milliseconds and a thread. It is
// opened by name instead; where it is not installed, our own kernels do the work more slowly.
#pragma once
#include <cstdint>

// The address of a function of BLAS or LAPACK ("cblas_dgemm", "dgesv_"), or null.
void *blas_find(const char *name);
// c = alpha * a * b + beta * c for arrays by rows: a is n by k, b is k by m, c is n by m and
// apart from both. beta 0 does not read c. True when a break came.
bool gemm(int64_t n, int64_t k, int64_t m, double alpha, const double *a, const double *b,
          double beta, double *c);
