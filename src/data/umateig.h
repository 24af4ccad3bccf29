// data/umateig.h - eigenvalues and singular values of plain matrices, stored by rows.
//
// Codes: 0, 1 after a break, 909 with words; eig_general also 430 when it does not settle.
#pragma once
#include <cstdint>

// Symmetric a, n by n, which is used up. values in descending order; vectors in the columns
// of v, of length one, the largest component positive. Cyclic Jacobi (Golub and Van Loan 8.5).
[[nodiscard]] int32_t eig_symmetric(double *a, int32_t n, double *values, double *v);
// a, m by n with m >= n, becomes U with a = U diag(w) V'. One-sided Jacobi (Hestenes 1958). The
// columns of U of zero singular values are zero.
[[nodiscard]] int32_t svd_jacobi(double *a, int32_t m, int32_t n, double *w, double *v);
// Real and imaginary parts, largest modulus first; a is used up. Balancing, elimination to
// Hessenberg form, double-shift QR (Martin, Peters and Wilkinson 1970).
[[nodiscard]] int32_t eig_general(double *a, int32_t n, double *re, double *im);
