// Quadrature, long memory, quasi-random points and simulated normal probabilities. Values come
// from integrals and roots reckoned with thirty digits.
#include "mosabi.h"

static const called series[] = {
    {"_gauss_legendre_nodes(5)",
     "R5,2:-0.9061798459 0.2369268851 -0.5384693101 0.4786286705 0 "
     "0.5688888889 0.5384693101 0.4786286705 0.9061798459 0.2369268851"},
    {"_gauss_laguerre_nodes(3, .5)",
     "R3,2:0.6663259077 0.5671862778 2.800775054 0.3053717688 7.032899038 0.01366887877"},
    {"_gauss_hermite_nodes(4)", "R4,2:-1.650680124 0.08131283545 -0.5246476233 0.80491409 "
                                "0.5246476233 0.80491409 1.650680124 0.08131283545"},
    // moments of large rules: x^4 under exp(-x^2), x^3 under exp(-x), x^10 over -1 to 1
    {"x = _gauss_hermite_nodes(800); reldif(cross(x[,2], x[,1] :^ 4), .75 * sqrt(atan2(0, -1))) < "
     "1e-12",
     "R1,1:1"},
    {"x = _gauss_laguerre_nodes(600); reldif(cross(x[,2], x[,1] :^ 3), 6) < 1e-11", "R1,1:1"},
    {"x = _gauss_legendre_nodes(2000); reldif(cross(x[,2], x[,1] :^ 10), 2 / 11) < 1e-12",
     "R1,1:1"},
    {"_gauss_legendre_nodes(1)", "R1,2:0 2"},
    {"_gauss_legendre_nodes(0)", "3300"},
    {"_gauss_laguerre_nodes(3, -1)", "3300"},

    {"fracdiff((1 \\ 2 \\ 4 \\ 3), .4)", "R4,1:1 1.6 3.08 1.096"},
    {"fracdiff((1, 2 \\ 3, . \\ 6, 1), 1)", "R3,2:1 2 2 . 3 ."},
    {"fracdiff(fracdiff((1 \\ 2 \\ 4), .3), -.3)", "R3,1:1 2 4"},
    {"arfimaacf_u((.5, -.3), .4, .3, 2, 6)[(1 \\ 2 \\ 3 \\ 6)]",
     "R4,1:6.641554446 5.051150169 2.706171757 1.803157838"},
    {"arfimaacf_u(J(1, 0, .), (.4, .2), -.3, 1, 6)[(1 \\ 2 \\ 3 \\ 6)]",
     "R4,1:1.054273327 0.128654157 -0.01881519355 -0.04958745672"},
    {"arfimaacf_u(.8, J(0, 0, .), 0, 1, 2)", "R2,1:2.777777778 2.222222222"},
    // a double root, where formulas by partial fractions divide by 0
    {"arfimaacf_u((1, -.25), J(0, 0, .), 0, 1, 2)", "R2,1:2.962962963 2.37037037"},
    {"arfimaacf_u(1.2, J(0, 0, .), 0, 1, 2)", "R2,1:. ."},
    {"arfimaacf_u(.2, J(0, 0, .), .5, 1, 1)", "R1,1:."},
    {"arfimaacf_u(., J(0, 0, .), .1, 1, 1)", "3351"},
    {"_hypergeometricseries_u(1, 2.5, 3.5, (.6, 1.5, .))", "R1,3:1.832540287 . ."},
    {"_hypergeometricseries_u(1, .5, 2, .3 + .4i)", "C1,1:1.054709623+0.1301360631i"},

    {"ghalton(5, 2)'", "R1,5:0.5 0.25 0.75 0.125 0.625"},
    {"ghalton(2, 3, 1 / 3 + 2 / 9)'", "R1,2:0.8888888889 0.03703703704"},
    {"ghalton(2, 5, .9)'", "R1,2:0.14 0.34"},
    {"ghalton(2, 4)", "3300"},
    {"ghalton(2, 3, 1)", "3300"},

    {"_ghk((0, 0), (1, .5 \\ .5, 1), ghalton(4000, 2), 4000) :- 1 / 3 < 1e-4", "R1,1:1"},
    {"U = (ghalton(5000, 2), ghalton(5000, 3)); V = (1, .5, .2 \\ .5, 2, -.4 \\ .2, -.4, 1.5); "
     "abs(_ghk((.5, -.2, .8), V, U, 5000, 1, 1) - .251591043060722) < 2e-5",
     "R1,1:1"},
    // the simulated value's own derivatives, against differences of it
    {"dx = dv = .; h = 1e-5; X = (.5, -2, .8 \\ .5, ., -.8); U = (ghalton(99, 2), ghalton(99, 3)); "
     "p = _ghk(X, V, U, 99, 1, 1, dx, dv); E = J(3, 3, 0); E[2, 1] = E[1, 2] = h; F = J(3, 3, 0); "
     "F[3, 3] = h; "
     "mreldif(dx[, 3], (_ghk(X :+ (0, 0, h), V, U, 99, 1, 1) - _ghk(X :- (0, 0, h), V, U, 99, 1, "
     "1)) / 2 / h) < 1e-7, "
     "mreldif(dv[, 2], (_ghk(X, V + E, U, 99, 1, 1) - _ghk(X, V - E, U, 99, 1, 1)) / 2 / h) < "
     "1e-7, "
     "mreldif(dv[, 6], (_ghk(X, V + F, U, 99, 1, 1) - _ghk(X, V - F, U, 99, 1, 1)) / 2 / h) < 1e-7",
     "R1,3:1 1 1"},
    // draws of its own for each row
    {"_ghk((0, 0 \\ 1, 1), I(2), (.1 \\ .9 \\ .2 \\ .7), 2) == (.25 \\ normal(1) ^ 2)", "R1,1:1"},
    {"_ghk((1, 2), (1, 2 \\ 2, 1), .5, 1)", "R1,1:."},
    {"reldif(_ghk(1.5, 4, J(7, 0, .), 7), normal(.75)) < 1e-15", "R1,1:1"},
    {"_ghk((1, 2), I(3), .5, 1)", "3200"},
    {"_ghk((1, 2), I(2), (.5 \\ .5 \\ .5), 2)", "3200"},
    {"_ghk((1, 2), (1, . \\ ., 1), .5, 1)", "3351"},
};

TEST(MosaSeries, Values)
{
    session();
    try_all(series);
}
