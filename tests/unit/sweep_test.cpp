#include "core/settings.h"
#include "../session.h"
#include "stats/results.h"
#include "stats/sweep.h"
#include <cmath>
#include <gtest/gtest.h>
#include <vector>

// A matrix of rows of set_matsize numbers.
struct square {
    std::vector<double> a;
    int32_t n;
    explicit square(std::initializer_list<double> v)
        : a(size_t(set_matsize) * size_t(std::lround(std::sqrt(double(v.size()))))),
          n(int32_t(std::lround(std::sqrt(double(v.size())))))
    {
        int32_t i = 0;
        for (double z : v) {
            at(i / n, i % n) = z;
            i++;
        }
    }
    double &at(int32_t i, int32_t j) { return a[size_t(i) * size_t(set_matsize) + size_t(j)]; }
};

TEST(sweep, InvertsAndDropsByItsRule)
{
    square m{4, 2, 1, 2, 5, 3, 1, 3, 6};
    ASSERT_EQ(matrin(m.a.data(), 0, 2, -1), 0);
    double want[3][3] = {{21, -9, 1}, {-9, 23, -10}, {1, -10, 16}};
    for (int32_t i = 0; i < 3; i++)
        for (int32_t j = 0; j < 3; j++)
            EXPECT_NEAR(m.at(i, j), want[i][j] / 67, 1e-15);

    // Of two proportional columns the larger stays; among equals the first; a forced order and
    // a last position win over both.
    square p{1, 2, 2, 4};
    ASSERT_EQ(matrin(p.a.data(), 0, 1, -1), 0);
    EXPECT_EQ(p.at(0, 0), 0);
    EXPECT_EQ(p.at(1, 1), .25);
    square e{2, 2, 2, 2};
    ASSERT_EQ(matrin(e.a.data(), 0, 1, -1), 0);
    EXPECT_EQ(e.at(1, 1), 0);
    square f{1, 2, 2, 4};
    int32_t order[] = {0, -1};
    ASSERT_EQ(matrinf(f.a.data(), 0, 1, order, -1), 0);
    EXPECT_EQ(f.at(0, 0), 1);
    EXPECT_EQ(f.at(1, 1), 0);
    square l{1, 2, 2, 4};
    ASSERT_EQ(matrin(l.a.data(), 0, 1, 1), 0);
    EXPECT_EQ(l.at(1, 1), 0);

    // Zero, negative and tiny diagonals go; one that just meets its tolerance stays.
    square z{0, 0, 0, 0, -1, 0, 0, 0, 1e-30};
    ASSERT_EQ(matrin(z.a.data(), 0, 2, -1), 0);
    for (int32_t i = 0; i < 3; i++)
        EXPECT_EQ(z.at(i, i), 0);
    square t{1e-19};
    ASSERT_EQ(matrin(t.a.data(), 0, 0, -1), 0);
    EXPECT_EQ(t.at(0, 0), 1e19);

    square r{1, 2, 2, 4};
    ASSERT_EQ(matrin3(r.a.data(), 0, 1, -1), 0);
    EXPECT_TRUE(matrin3flg);
    EXPECT_GT(r.at(0, 0), 0);
    EXPECT_GT(r.at(1, 1), 0);
}

TEST(sweep, FollowersHoldCoefficients)
{
    // y at position 0 follows: slope 3, residual 0.
    square m{9, 3, 3, 1};
    ASSERT_EQ(sweep_within(m.a.data(), 0, 1, 1, 1, nullptr, -1), 0);
    EXPECT_EQ(m.at(1, 0), 3);
    EXPECT_EQ(m.at(0, 0), 0);
}

TEST(regress, FarFromZeroKeepsTheCoefficients)
{
    ASSERT_EQ(run("drop _all"), 0);
    ASSERT_EQ(run("set obs 1000"), 0);
    ASSERT_EQ(run("gen double x = mod(_n*37, 101)/16"), 0);
    ASSERT_EQ(run("gen double z = mod(_n*53, 89)/8"), 0);
    ASSERT_EQ(run("gen double y = 2*x - 3*z + mod(_n*29, 17)/32"), 0);
    ASSERT_EQ(run("_regress y x z"), 0);
    double rss = estval_get_double("rss"), r2 = estval_get_double("r2");
    ASSERT_EQ(run("scalar bx = _b[x]"), 0);
    ASSERT_EQ(run("scalar sx = _se[x]"), 0);
    for (const char *v : {"x", "y", "z"})
        ASSERT_EQ(run(std::string("quietly replace ") + v + " = " + v + " + 1e9"), 0);
    ASSERT_EQ(run("_regress y x z"), 0);
    EXPECT_NEAR(estval_get_double("rss") / rss, 1, 1e-12);
    EXPECT_NEAR(estval_get_double("r2") / r2, 1, 1e-12);
    EXPECT_EQ(run("assert reldif(_b[x], bx) < 1e-13 & reldif(_se[x], sx) < 1e-12"), 0);
}

TEST(regress, DegenerateSamples)
{
    ASSERT_EQ(run("drop _all"), 0);
    ASSERT_EQ(run("set obs 3"), 0);
    ASSERT_EQ(run("gen x = _n"), 0);
    ASSERT_EQ(run("gen y = 2*x"), 0);
    ASSERT_EQ(run("gen one = 7"), 0);
    ASSERT_EQ(run("gen z = _n^2"), 0);
    ASSERT_EQ(run("_regress y x"), 0);  // exact
    EXPECT_GE(estval_get_double("rss"), 0);
    EXPECT_LT(estval_get_double("rss"), 1e-25);
    ASSERT_EQ(run("_regress y x z"), 0);  // no degrees of freedom
    EXPECT_EQ(estval_get_double("df_r"), 0);
    EXPECT_EQ(estval_get_double("rmse"), misval);
    EXPECT_EQ(estval_get_double("F"), misval);
    ASSERT_EQ(run("_regress one x"), 0);  // nothing to explain
    EXPECT_EQ(estval_get_double("r2"), 1);
    ASSERT_EQ(run("_regress y one x"), 0);
    EXPECT_EQ(estval_get_double("df_m"), 1);
    EXPECT_EQ(run("assert _b[one] == 0 & _se[one] == 0"), 0);
    // Nothing is posted for want of observations.
    EXPECT_EQ(run("_regress y x if x > 5"), 2000);
    EXPECT_EQ(estval_get_double("df_m"), 1);
    EXPECT_EQ(run("_regress y x, beta vce(cluster x)"), 184);
    EXPECT_EQ(run("_regress y x [iweight=x], robust"), 101);
    ASSERT_EQ(run("ereturn clear"), 0);
    EXPECT_EQ(run("_regress"), 301);
}
