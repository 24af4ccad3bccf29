// Geometry, interpolation, moments, haplotypes, moving variances: values by hand, by integrals of
// school geometry, and by plain loops in another language.
#include "mosabi.h"

static const called geometry[] = {
    {"_geo_line_intersect((0, 0, 2, 2), (0, 2, 2, 0))", "R1,2:1 1"},
    {"_geo_line_intersect((0, 0, 1, 1), (3, 0, 0, 3))", "R1,2:. ."},
    {"_geo_line_intersect((0, 0, 1, 1), (1, 0, 2, 1))", "R1,2:. ."},
    {"_geo_line_intersect((0, 0, 1, 1), (1, 1, 5, 0))", "R1,2:1 1"},
    {"_geo_boxline_intersect((0, 0, 4, 2), (-1, 1, 9, 1))", "R2,2:0 1 4 1"},
    {"_geo_boxline_intersect((0, 0, 4, 2), (9, 1, 2, 1))", "R1,2:4 1"},
    {"_geo_boxline_intersect((4, 2, 0, 0), (1, 1, 2, 5))", "R1,2:1.25 2"},
    {"_geo_boxline_intersect((0, 0, 4, 2), (5, 0, 5, 2))", "R0,2:"},
    {"_geo_boxline_intersect((0, 0, 4, 2), (-1, 1, 1, 3))", "R1,2:0 2"}, // a corner
    {"_geo_ellipseline_intersect((0, 0, 2, 1), (-3, 0, 3, 0))", "R2,2:-2 0 2 0"},
    {"_geo_ellipseline_intersect((1, 1, 2, 1, atan2(1, 0)), (1, 1, 1, 9))", "R1,2:1 3"},
    {"_geo_ellipseline_intersect((0, 0, 2, 1), (-3, 2, 3, 2))", "R0,2:"},
    {"_geo_ellipseline_intersect2((0, 0, 2, 1), (0, .5, 1, .5))",
     "R2,2:-1.732050808 0.5 1.732050808 0.5"},
    {"_geo_ellipseline_intersect2((0, 0, 2, 1), (0, 1, 1, 1))", "R1,2:0 1"}, // touches
    {"_geo_boxangle_intersect((0, 0, 4, 2), 0)", "R1,2:4 1"},
    {"_geo_boxangle_intersect((0, 0, 4, 2), atan2(1, 1))", "R1,2:3 2"},
    {"_geo_ellipseangle_intersect((1, 1, 2, 1), atan2(1, 0))", "R1,2:1 2"},
    {"_geo_ellipseangle_intersect((0, 0, 2, 1), atan2(1, 2))", "R1,2:1.414213562 0.7071067812"},
    {"_geo_ellipseangle_intersect((0, 0, 0, 1), 0)", "3300"},
    {"_geo_line_intersect((0, 0, 1), (1, 1, 5, 0))", "3200"},
    {"_geo_boxangle_intersect((0, 0, 4, .), 0)", "3351"},
};

static const called interpolation[] = {
    {"_rbf_tps_setup((0, 0 \\ 1, 0 \\ 0, 2), .5)[(1, 2, 3), ]",
     "R3,6:0.5 0 2.772588722 1 0 0 0 0.5 4.023594781 1 1 0 2.772588722 4.023594781 0.5 1 0 2"},
    {"A = _rbf_tps_setup((0 \\ 1 \\ 3)); (issymmetric(A), A[1, 3], A[5, 5])", "R1,3:1 27 0"},
    // a plane is its own spline
    {"X = (0, 0 \\ 1, 0 \\ 0, 2 \\ 3, 3 \\ -1, 1); A = _rbf_tps_setup(X); "
     "c = (X * (2 \\ -1) :+ 5 \\ 0 \\ 0 \\ 0); _lusolve_la(A, c); "
     "mreldif(c, (J(5, 1, 0) \\ 5 \\ 2 \\ -1)) < 1e-12",
     "R1,1:1"},
    {"_rbf_tps_setup(J(2, 4, 1))", "3200"},
    {"_rbf_shepard((0, 0 \\ 1, 0 \\ 0, 2), (1 \\ 2 \\ 5), (1, 1 \\ 0, 2 \\ ., 1))", "R3,1:2.5 5 ."},
    {"_rbf_shepard((0, 0 \\ 1, 0 \\ 0, 2), (1 \\ 2 \\ 5), (1, 1), 3)", "R1,1:2.414213562"},
    {"_rbf_shepard((0 \\ 1), (1 \\ 2 \\ 5), 1)", "3200"},
};

static const called moments[] = {
    {"S = (1, 2 \\ 3, 4 \\ -1, 0 \\ 2, 2); _robust_work(S) == S'S", "R1,1:1"},
    {"_robust_work(S, (1 \\ 2 \\ 1 \\ 3)) == (0, 2)'(0, 2) + S[2,]'S[2,] + S[4,]'S[4,]", "R1,1:1"},
    {"_robust_work(J(0, 2, 1))", "R2,2:0 0 0 0"},
    {"_robust_work((1 \\ .))", "3351"},
    {"_robust_work(S, (1 \\ 2))", "3200"},
    {"_cov_ss((1, 2 \\ 3, 4 \\ 5, 9))", "R2,2:4 7 7 13"},
    {"_cov_ss((1, 2 \\ 3, 4), (2 \\ 1)) == _cov_ss((1, 2 \\ 1, 2 \\ 3, 4))", "R1,1:1"},
    {"_cov_ss((1, 2))", "R2,2:. . . ."},
    {"_cov_ms((1 \\ 10 \\ 3 \\ 14 \\ 5), (1 \\ 2 \\ 1 \\ 2 \\ 1))",
     "R1,1:5.333333333"}, // (8 + 8) / 3
    {"mreldif(_cov_ms((1 \\ 10 \\ 3), (1 \\ 2 \\ 1), (2 \\ 1 \\ 1)), _cov_ms((1 \\ 10 \\ 3 \\ 1), "
     "(1 \\ 2 \\ 1 \\ 1))) < 1e-15",
     "R1,1:1"},
    {"_cov_ms((1 \\ 2), (1 \\ 2))", "R1,1:."},
};

static const called haplotypes[] = {
    {"_geno2haplo_u((1, 1))", "R2,2:1 4 2 3"},
    {"_geno2haplo_u((2, 0, 1))", "R1,2:2 6"},
    {"_geno2haplo_u((0, .))", "R3,2:1 1 1 3 3 3"},
    {"rows(_geno2haplo_u((1, 1, 1, 1)))", "R1,1:8"},
    {"rows(_geno2haplo_u((., .)))", "R1,1:10"},
    {"_geno2haplo_u((1, 3))", "3300"},
    {"_geno2haplo_u((1, 1 \\ 0, 1))", "3202"},
    {"G = (0, 1 \\ 1, 1 \\ 2, 0 \\ 1, 1 \\ 0, 0 \\ 1, 2 \\ 1, 1 \\ 2, 2 \\ ., 1); "
     "mreldif(_em_haplotype_u(G, 0, 5000), (.34204073 \\ .15795927 \\ .15795927 \\ .34204073)) < "
     "1e-7",
     "R1,1:1"},
    {"f = g = H = .; f = _haplo_d2_work_u(G, (.4, .3, .2, .1), g, H); f, g",
     "R1,5:-19.59296885 11.92857143 14.0952381 22.33333333 45.33333333"},
    {"all(abs(H - (-23.791, -8.041, -9, 18 \\ -8.041, -36.263, 12, -24 \\ -9, 12, -88.111, -47.111 "
     "\\ 18, -24, -47.111, -359.112)) :< .002)",
     "R1,1:1"},
    {"f = _haplo_d2_work_u((0, 0), (0, .5, .5, 0), g, H); f, g", "R1,5:. . . . ."},
    {"_haplo_d2_work_u(G, (.5, .5), g, H)", "3200"},
};

static const called volatility[] = {
    {"E = (.5, -.3 \\ 1.2, .4 \\ -.7, .9 \\ .1, -1.1 \\ .6, .2); H = (1, .8 \\ 1.1, .9 \\ 1.3, .7 "
     "\\ .9, 1.2 \\ 1, 1); "
     "R = (1, .3 \\ .3, 1); _mgarch_ll_ccc_u(E, H, R)",
     "R1,1:-11.57658491"},
    {"_mgarch_ll_dcc_u(E, H, R, .1, .7)", "R1,1:-11.61444055"},
    {"_mgarch_ll_vcc_u(E, H, R, .1, .7)", "R1,1:-11.59274836"},
    {"_mgarch_ll_vcc_u(E, H, R, .1, .7, 2)", "R1,1:-11.62857847"},
    {"_mgarch_ll_dcc_u(E, H, R, .5, .5)", "R1,1:."},
    {"_mgarch_ll_ccc_u(E, -H, R)", "R1,1:."},
    {"_mgarch_ll_ccc_u(E, H, (1, 2 \\ 2, 1))", "R1,1:."},
    {"_mgarch_ll_ccc_u(E, H, 1)", "3200"},
    {"_mgarch_loop_u(E[, 1], .1, (.2 \\ .05), .6, .9)'",
     "R1,5:0.865 0.714 0.8289 0.76734 0.586904"},
    {"_mgarch_loop_u(E, (.1, .2), (.2, .1), J(0, 2, .), (1, 2))[(1, 2), ]",
     "R2,2:0.3 0.4 0.15 0.209"},
    {"_mgarch_loop_u(E, .1, .2, .6, .9)", "3200"},
};

TEST(MosaKernels, Values)
{
    session();
    try_all(geometry);
    try_all(interpolation);
    try_all(moments);
    try_all(haplotypes);
    try_all(volatility);
}
