// Nodes are the eigenvalues of the Jacobi matrix of the orthonormal polynomials (Golub and Welsch,
// Mathematics of Computation 23 (1969) 221), by implicit QL steps (Martin and Wilkinson, Numerische
// Mathematik 12 (1968) 377). A Newton step or two on the recurrence polishes them, and the weight
// is the reciprocal of the sum of squares of the polynomials at the node, which keeps small weights
// as precise as large ones.
#include "stats/gaussnodes.h"
#include "core/mem.h"
#include <algorithm>
#include <cmath>

namespace
{

struct jacobi {
    gauss_rule rule;
    double alpha;
    double diagonal(int32_t k) const { return rule == GAUSS_LAGUERRE ? 2.0 * k + 1 + alpha : 0; }
    double beside(int32_t k) const // between k - 1 and k, from 1
    {
        double z = k;
        return rule == GAUSS_LEGENDRE   ? z / std::sqrt(4 * z * z - 1)
               : rule == GAUSS_LAGUERRE ? std::sqrt(z * (z + alpha))
                                        : std::sqrt(z / 2);
    }
    double total() const // of the weight function, its logarithm
    {
        return rule == GAUSS_LEGENDRE   ? std::log(2.0)
               : rule == GAUSS_LAGUERRE ? std::lgamma(1 + alpha)
                                        : 0.5 * std::log(3.14159265358979323846);
    }
};

// Eigenvalues of the symmetric tridiagonal matrix with diagonal d; e[i] is between i and i + 1.
bool ql_values(double *d, double *e, int32_t n)
{
    e[n - 1] = 0;
    for (int32_t l = 0; l < n; l++)
        for (int32_t tries = 0;; tries++) {
            int32_t m = l;
            for (; m < n - 1; m++) {
                double s = std::fabs(d[m]) + std::fabs(d[m + 1]);
                if (std::fabs(e[m]) <= 2.3e-16 * s)
                    break;
            }
            if (m == l)
                break;
            if (tries == 60 || fault_poll())
                return false;
            double g = (d[l + 1] - d[l]) / (2 * e[l]), r = std::hypot(g, 1.0);
            g = d[m] - d[l] + e[l] / (g + std::copysign(r, g));
            double s = 1, c = 1, p = 0;
            int32_t i = m - 1;
            for (; i >= l; i--) {
                double f = s * e[i], b = c * e[i];
                e[i + 1] = r = std::hypot(f, g);
                if (r == 0) {
                    d[i + 1] -= p;
                    e[m] = 0;
                    break;
                }
                s = f / r;
                c = g / r;
                g = d[i + 1] - p;
                r = (d[i] - g) * s + 2 * c * b;
                d[i + 1] = g + (p = s * r);
                g = c * r - b;
            }
            if (r == 0 && i >= l)
                continue;
            d[l] -= p;
            e[l] = g;
            e[m] = 0;
        }
    return true;
}

// The polynomials at x, the first being 1: the quotient of the n-th and its derivative, and the
// logarithm of the sum of squares of those before it.
void at_node(const jacobi &j, int32_t n, double x, double *newton, double *logsum)
{
    double p0 = 0, p1 = 1, q0 = 0, q1 = 0, sum = 0, scale = 0, b0 = 0;
    for (int32_t k = 0; k < n; k++) {
        sum += p1 * p1;
        double b1 = j.beside(k + 1), u = x - j.diagonal(k);
        double p2 = (u * p1 - b0 * p0) / b1, q2 = (p1 + u * q1 - b0 * q0) / b1;
        p0 = p1, p1 = p2, q0 = q1, q1 = q2, b0 = b1;
        if (std::fabs(p1) > 1e100 || std::fabs(q1) > 1e100) {
            p0 *= 1e-100, p1 *= 1e-100, q0 *= 1e-100, q1 *= 1e-100, sum *= 1e-200;
            scale += 200 * std::log(10.0);
        }
    }
    *newton = q1 != 0 ? p1 / q1 : 0;
    *logsum = std::log(sum) + scale;
}

} // namespace

bool gauss_nodes(gauss_rule rule, int32_t n, double alpha, double *node, double *weight,
                 double *work)
{
    jacobi j{rule, alpha};
    double *e = work;
    for (int32_t k = 0; k < n; k++) {
        node[k] = j.diagonal(k);
        e[k] = j.beside(k + 1);
    }
    if (!ql_values(node, e, n))
        return false;
    std::sort(node, node + n);
    bool even = rule != GAUSS_LAGUERRE;
    for (int32_t k = 0; k < n; k++) {
        double step, logsum;
        if (even && 2 * k + 1 == n)
            node[k] = 0;
        for (int32_t turn = 0; turn < 2; turn++) {
            at_node(j, n, node[k], &step, &logsum);
            if (!(even && 2 * k + 1 == n))
                node[k] -= step;
        }
        at_node(j, n, node[k], &step, &logsum);
        weight[k] = std::exp(j.total() - logsum);
        if (fault_poll())
            return false;
    }
    for (int32_t k = 0; even && k < n / 2; k++) { // the rule mirrors itself, to the last digit
        node[n - 1 - k] = -node[k];
        weight[n - 1 - k] = weight[k];
    }
    return true;
}
