// Geometry, interpolation, moments, haplotypes, moving variances: values by hand, by integrals of
// school geometry, and by plain loops in another language.
#include "mosabi.h"
#include <random>

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

// Views do as well as the arrays they show.
TEST(MosaKernels, Views)
{
    session();
    ASSERT_EQ(run("drop _all"), 0);
    ASSERT_EQ(run("set obs 6"), 0);
    ASSERT_EQ(run("generate a = _n"), 0);
    ASSERT_EQ(run("generate b = mod(_n, 3) + 1"), 0);
    ASSERT_EQ(run("generate long g = ceil(_n / 2)"), 0);
    ASSERT_EQ(ms("V = B = G = .; ov_view(V, ., (\"a\", \"b\")); ov_view(B, ., \"b\"); "
                 "ov_view(G, ., \"g\"); A = V :+ 0; b = B :+ 0; g = G :+ 0"),
              0);
    static const called rows[] = {
        {"_mopt_xb(V, (1, 2, 3)) == _mopt_xb(A, (1, 2, 3))", "R1,1:1"},
        {"_mopt_vecsum(V, B, 1, G) == _mopt_vecsum(A, b, 1, g)", "R1,1:1"},
        {"_mopt_matsum_xy(V, G, B) == _mopt_matsum_xy(A, g, b)", "R1,1:1"},
        {"_mopt_matbysum_xx(V, G, B, B) == _mopt_matbysum_xx(A, g, b, b)", "R1,1:1"},
        {"_robust_work(V, G) == _robust_work(A, g)", "R1,1:1"},
        {"_cov_ms(V, G) == _cov_ms(A, g)", "R1,1:1"},
        {"fracdiff(V, .4) == fracdiff(A, .4)", "R1,1:1"},
        {"H = .; _mopt_holdxbi(H, 1, B); _mopt_xbdelta(H, 1, V, 1, 1) == b + A[, 1]", "R1,1:1"},
        {"x = y = z = .; _mopt_ologit_e2(2, B, V[, 1], (1, 2), x, y, z) == "
         "_mopt_ologit_e2(2, b, A[, 1], (1, 2), x, y, z)",
         "R1,1:1"},
        {"f = h = .; _mopt_probit_d2(1, B, V, (.1, .2, 0), f, h, z); f < 0", "R1,1:1"},
        {"_rbf_shepard(V, B, V) == b", "R1,1:1"},
        {"rpoisson(6, 1, B) :>= 0", "R6,1:1 1 1 1 1 1"},
        {"all(V :== A)", "R1,1:1"},
    };
    try_all(rows);
}

// Memory refused and breaks at any moment leave nothing behind.
TEST(MosaKernels, NothingLeaks)
{
    session();
    ASSERT_EQ(ms("X = J(60, 2, .5); y = J(60, 1, 1); U = ghalton(50, 2); f = s = h = p = .; "
                 "G = J(30, 3, 1); E = J(40, 2, .5); R = (1, .2 \\ .2, 1); e = J(1, 0, .)"),
              0);
    for (const char *text :
         {"p = _ghk(J(9, 2, 0), R, U, 50, 1, 1, s, h)", "p = _gauss_hermite_nodes(40)",
          "p = arfimaacf_u(.9, .1, .2, 1, 50)",
          "_mopt_mlogit_d2(2, y, X, (1, 2, 3, 4, 5, 6), f, s, h)",
          "p = _mopt_oprobit_e2(2, y, X[, 1], (1, 2), f, s, h)", "p = _mopt_matsum_xy(X, y, y)",
          "_mopt_holdxbi(f, 3, y)", "p = _mopt_xb(X, (1, 2, .), 1)", "p = _robust_work(X, y)",
          "p = _rbf_tps_setup(X)", "p = _haplo_d2_work_u(G, J(8, 1, .125), s, h)",
          "p = _em_haplotype_u(G)", "p = _mgarch_ll_vcc_u(E, E, R, .1, .2)",
          "p = _mgarch_loop_u(E, (1, 1), (.1, .1), J(0, 2, .), (1, 1))", "p = _cov_ms(X, y, y)"}) {
        ASSERT_EQ(ms(text), 0) << text;
        auto held = [] {
            EXPECT_EQ(ms("f = s = h = p = 1"), 0);
            return mem_live().blocks;
        };
        int64_t before = held();
        int32_t refused = 0, stopped = 0;
        for (fault_kind kind : {F_MEM, F_BREAK})
            for (int k = 1, hit = 1; hit && k < 120; k++) {
                fault_arm(kind, k, false);
                int32_t rc = ms(text);
                hit = fault_disarm() > 0;
                stopflag = 0;
                EXPECT_EQ(rc != 0, hit != 0) << text << k;
                (kind == F_MEM ? refused : stopped) += rc == (kind == F_MEM ? 3900 : 1);
                if (rc == 3300 || rc == 3200)
                    ADD_FAILURE() << text << k << ": " << rc;
            }
        EXPECT_GT(refused, 0) << text;
        EXPECT_LE(held(), before + 1) << text;
    }
}

// Calls with anything as arguments, as many as the row allows: a code or a result, never worse.
TEST(MosaKernels, AnyArguments)
{
    session();
    static const char *const families[] = {
        "_mopt_", "_geo_",  "_rbf_", "_mgarch_", "_haplo", "_geno",  "_em_", "_cov_",  "_robust",
        "_gauss", "_ghk",   "ghalt", "fracdif",  "arfima", "_hyper", "rpoi", "rgam",   "rb",
        "rdi",    "rhyp",   "rn",    "rt",       "inv",    "chi2",   "nbin", "poisso", "binorm",
        "lnnorm", "hyperg", "tukey", "npn",      "ibeta",  "dgamma"};
    static const char *const values[] = {"1",
                                         ".",
                                         "J(0, 0, .)",
                                         "J(3, 2, .5)",
                                         "\"a\"",
                                         "J(2, 2, \"x\")",
                                         "1i",
                                         "NULL",
                                         "-1",
                                         "2.5",
                                         "(1 \\ 2 \\ 3)",
                                         "(0, 1, 2)",
                                         "J(3, 0, .)",
                                         "J(0, 2, 1)",
                                         "1e300",
                                         "7",
                                         "(1, .3 \\ .3, 1)",
                                         "J(3, 1, 1)",
                                         "(1, ., 2)",
                                         "0",
                                         "3"};
    ASSERT_EQ(run("drop _all"), 0);
    ASSERT_EQ(run("set obs 3"), 0);
    ASSERT_EQ(run("generate a = _n"), 0);
    std::mt19937 die(20);
    int32_t fine = 0, calls = 0;
    for (int32_t i = 0; i < m_nbuiltin; i++) {
        const m_birow &row = m_bitable[i];
        bool ours = false;
        for (const char *f : families)
            ours |= !strncmp(row.name, f, strlen(f));
        if (!row.handler || !ours || row.maxargs > 10)
            continue;
        for (int32_t turn = 0; turn < 40; turn++) {
            int32_t n = row.minargs + int32_t(die() % uint32_t(row.maxargs - row.minargs + 1));
            std::string text = "V = .; ov_view(V, ., \"a\"); ", call;
            for (int32_t k = 0; k < n; k++) {
                std::string name = "w" + std::to_string(k);
                size_t pick = die() % (std::size(values) + 1);
                text += name + " = " + (pick ? values[pick - 1] : "1") + "; ";
                call += (k ? ", " : "") + (pick ? name : "V");
            }
            int32_t rc = ms(text + "w = 1; (void) " + row.name + "(" + call + ")");
            EXPECT_TRUE(rc == 0 || (rc >= 3000 && rc < 4000)) << row.name << " " << text << rc;
            fine += rc == 0;
            calls++;
        }
    }
    EXPECT_GT(fine, calls / 50);
    EXPECT_GT(calls, 2500);
}
