// stats/gaussnodes.h - nodes and weights of Gaussian quadrature.
#pragma once
#include <cstdint>

enum gauss_rule : int32_t {
    GAUSS_LEGENDRE, // weight 1 over -1 to 1
    GAUSS_LAGUERRE, // x^alpha exp(-x) over 0 and up, alpha above -1
    GAUSS_HERMITE,  // exp(-x^2) over all numbers
};
inline constexpr int32_t gauss_most = 2000;

// n nodes in rising order and their weights, n from 1 to gauss_most; work holds n numbers.
// alpha is for the Laguerre rule. A weight below the smallest number is 0. False when the
// eigenvalues do not settle, which only a break or a bad alpha can bring about.
bool gauss_nodes(gauss_rule rule, int32_t n, double alpha, double *node, double *weight,
                 double *work);
