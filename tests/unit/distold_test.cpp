// The first generation: its own limits and lapses are what is tested here, its agreement with
// the second where both are sound, and the derivatives against numbers to 30 digits.
#include "exprhelp.h"
#include <gtest/gtest.h>
#include <cmath>
#include <cstdio>

// Where the series runs out of terms the normal approximation steps in, which shows.
TEST(distold, GammaLapses)
{
    double old = number("_gammap_old(1e5,99800)"), now = number("gammap(1e5,99800)");
    EXPECT_NEAR(std::fabs(old / now - 1), 2e-7, 1.5e-7);
    EXPECT_EQ(number("_gammap_old(1,1.2e-13)"), misval);  // the lead is too near 1
    EXPECT_NEAR(number("_gammap_old(1,1e-14)"), 1e-14, 1e-28);
    EXPECT_NEAR(number("gammap(1,1.2e-13)"), 1.2e-13, 1e-26);
    EXPECT_EQ(number("_gammap_old(1e5,900)"), 0);         // too far out for the approximation too
    EXPECT_NEAR(number("_gammap_old(1e14,1e14)"), .5, 1e-6);
    EXPECT_EQ(number("_gammap_old(.,1)"), misval);
    EXPECT_EQ(number("_gammap_old(1,0)"), 0);
    EXPECT_EQ(number("_gammap_old(0,1)"), misval);
    EXPECT_NEAR(number("_gammap_old(.00005,.3)"), number("gammap(.00005,.3)"), 1e-14);
}

TEST(distold, BetaNeverReachesOne)
{
    EXPECT_EQ(number("_ibeta_old(1,50,.9)"), 1 - 1.1102230246251565e-16);
    EXPECT_EQ(number("ibeta(1,50,.9)"), 1);
    EXPECT_EQ(number("_ibeta_old(2,3,1)"), 1);
    EXPECT_EQ(number("_ibeta_old(0,3,.5)"), misval);
    EXPECT_EQ(number("_ttail_old(0,10)"), misval);
    EXPECT_EQ(number("_ttail_old(7,0)"), .5);
}

// Inverses end with their bracket: near the second generation, not equal to it.
TEST(distold, InversesStopEarly)
{
    double old = number("_invgammap_old(3,.4)"), now = number("invgammap(3,.4)");
    EXPECT_NEAR(old, now, 1e-7);
    EXPECT_GT(std::fabs(old - now), 1e-12);
    for (auto [a, b] : {std::pair{"_invttail_old(7,.025)", "invttail(7,.025)"},
                        {"_invttail_old(7,.9)", "invttail(7,.9)"},
                        {"_invF_old(3,9,.2)", "invF(3,9,.2)"},
                        {"_invFtail_old(3,9,.2)", "invFtail(3,9,.2)"},
                        {"_invibeta_old(3,9,.2)", "invibeta(3,9,.2)"},
                        {"_invchi2_old(3,.2)", "invchi2(3,.2)"},
                        {"_invchi2tail_old(3,1e-20)", "invchi2tail(3,1e-20)"},
                        {"_invnchi2_old(3,4,.5)", "invnchi2(3,4,.5)"},
                        {"_npnchi2_old(3,5,.3)", "npnchi2(3,5,.3)"},
                        {"_invnibeta_old(2,3,4,.4)", "invnibeta(2,3,4,.4)"},
                        {"_invnFtail_old(3,9,2,.3)", "invnFtail(3,9,2,.3)"},
                        {"_invbinomial_old(10,3,.3)", "invbinomialtail(10,3,.3)"}})
        EXPECT_NEAR(number(a) / number(b), 1, 1e-6) << a;
}

TEST(distold, AgreesWhereBothAreSound)
{
    for (auto [a, b] : {std::pair{"chiprob(3,7.81)", "chi2tail(3,7.81)"},
                        {"chiprob(1,300)", "chi2tail(1,300)"},
                        {"_chi2_old(4,2)", "chi2(4,2)"}, {"_F_old(3,20,2)", "F(3,20,2)"},
                        {"_Ftail_old(3,20,2)", "Ftail(3,20,2)"},
                        {"_ttail_old(5,2.5)", "ttail(5,2.5)"},
                        {"_ttail_old(5,-2.5)", "ttail(5,-2.5)"},
                        {"_ibeta_old(20,30,.3)", "ibeta(20,30,.3)"},
                        {"_Binomial_old(10,3,.4)", "binomialtail(10,3,.4)"}})
        EXPECT_NEAR(number(a) / number(b), 1, 1e-12) << a;
}

TEST(distold, Derivatives)
{
    struct row {
        const char *text;
        double want;
    };
    for (const row &r : {row{"dgammapda(2.5,3)", -0.22754855127826082},
                         {"dgammapdada(2.5,3)", -0.03980498725025575},
                         {"dgammapdx(2.5,3)", 0.19460869331856584},
                         {"dgammapdadx(2.5,3)", 0.076959106927176746},
                         {"dgammapdxdx(2.5,3)", -0.09730434665928292},
                         {"dgammapda(2.5,4)", -0.14765686908718715},
                         {"dgammapdada(2.5,4)", -0.069773879331723977}})
        EXPECT_NEAR(number(r.text) / r.want, 1, 1e-13) << r.text;
    for (const char *name : {"da", "dx", "dada", "dadx", "dxdx"}) {
        char text[60];
        snprintf(text, sizeof text, "dgammap%s(2,0)", name);
        EXPECT_EQ(number(text), 0) << text;
        snprintf(text, sizeof text, "dgammap%s(-1,2)", name);
        EXPECT_EQ(number(text), misval) << text;
        snprintf(text, sizeof text, "dgammap%s(1,.a)", name);
        EXPECT_EQ(number(text), misval) << text;
    }
}

// The logarithm of the normal tail was taken of the tail itself.
TEST(distold, LogOfTheNormalTail)
{
    EXPECT_NEAR(number("lnnormal(-40)"), -804.60844201375, 1e-10);
    vernum = 900;
    EXPECT_EQ(number("lnnormal(-40)"), misval);
    EXPECT_NEAR(number("lnnormal(-3)"), -6.60772622151035, 1e-12);
    vernum = 1210;
}
