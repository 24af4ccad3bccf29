// What must hold between the distribution functions whatever their methods: inverses lead
// back, tails add to 1, values never fall, limits are kept at both ends.
#include "core/missing.h"
#include "stats/dist.h"
#include "stats/distcore.h"
#include "stats/normal.h"
#include <gtest/gtest.h>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>

namespace {

const double probabilities[] = {1e-250, 1e-60, 1e-9, .001, .025, .3, .5, .7, .95, .999999};

struct worst_of {
    const char *name;
    double most = 0;
    ~worst_of()
    {
        if (getenv("DIST_TABLES"))
            printf("| `%s` | %.1e |\n", name, most);
    }
    void back(double got, double want, double allowed, double parm)
    {
        double e = std::fabs(got / want - 1);
        most = e > most ? e : most;
        EXPECT_LE(e, allowed) << name << " at " << want << " with " << parm;
    }
};

}

TEST(distlaws, InversesLeadBack)
{
    worst_of chi{"invnchi2"}, nc{"npnchi2"}, beta{"invnibeta"}, f{"invnFtail"}, range{"invsrangeprob"},
        dunnett{"invdunnettprob"}, bin{"invbinomial"}, bint{"invbinomialtail"}, poi{"invpoisson"},
        poit{"invpoissontail"}, nb{"invnbinomial"}, nbt{"invnbinomialtail"}, c2{"invchi2"},
        c2t{"invchi2tail"}, fl{"invF"}, t{"invt"};
    for (double p : probabilities) {
        for (double L : {.5, 30., 1200.}) {
            chi.back(nchi2(3, L, invnchi2(3, L, p)), p, 1e-12, L);
            beta.back(nibeta(2, 3, L, invnibeta(2, 3, L, p)), p, 1e-12, L);
            f.back(nftail(3, 40, L, invnftail(3, 40, L, p)), p, 1e-12, L);
            double x = 5 + L;
            if (nchi2(3, 0, x) > p && p > 1e-200)
                nc.back(nchi2(3, npnchi2(3, x, p), x), p, 1e-12, L);
        }
        if (p < 1e-9)
            continue;  // what follows would answer 1, or less than any number
        bin.back(binomial2(20, 7, invbinomial2(20, 7, p)), p, 1e-12, 7);
        bint.back(binomialtail2(20, 7, invbinomialtail2(20, 7, p)), p, 1e-12, 7);
        poi.back(poisson2(invpoisson(7, p), 7), p, 1e-12, 7);
        poit.back(poissontail2(invpoissontail(7, p), 7), p, 1e-12, 7);
        nb.back(nbinomial(5, 7, invnbinomial(5, 7, p)), p, 1e-12, 7);
        nbt.back(nbinomialtail(5, 7, invnbinomialtail(5, 7, p)), p, 1e-12, 7);
        for (double df : {1., 7.5, 1e6, 1e12}) {
            bool coarse = df > 1e9;  // one rounding of the value moves p by more
            c2.back(chi2cumm2(df, invchi2cumm2(df, p)), p, coarse ? 1e-7 : 2e-11, df);
            c2t.back(chi2tail2(df, invchi2tail2(df, p)), p, coarse ? 1e-7 : 2e-11, df);
        }
        fl.back(fcumm2(3, 9, invfcumm2(3, 9, p)), p, 1e-12, 9);
        if (p > 1e-9)
            t.back(1 - tprob(7, invt(7, p)), p, 1e-12, 7);
        range.back(srangeprob(4, 12, invsrangeprob(4, 12, p)), p, 1e-12, 12);
        dunnett.back(dunnettprob(4, 12, invdunnettprob(4, 12, p)), p, 1e-12, 12);
    }
}

// Across every change of method, for shapes on both sides of each.
TEST(distlaws, TailsAddUpAndNeverTurn)
{
    for (double a : {1e-9, .3, .4999, .5001, .9, 1.1, 19.9, 20.1, 99.9, 100.1, 3e4}) {
        double was = 0;
        for (int i = 1; i < 600; i++) {
            double x = std::fmax(a, .5) * i / 200, p = gammap2(a, x), q = gammaptail2(a, x);
            EXPECT_NEAR(p + q, 1, 1e-15) << a << " " << x;
            EXPECT_GE(p, was * (1 - 4e-15)) << a << " " << x;
            was = p;
        }
        for (double b : {1e-9, .4, .99, 1.01, 30., 1e5}) {
            was = 0;
            for (int i = 1; i < 300; i++) {
                double x = i / 300.0, p = ibeta2(a, b, x), q = ibetatail2(a, b, x);
                EXPECT_NEAR(p + q, 1, 1e-15) << a << " " << b << " " << x;
                EXPECT_GE(p, was * (1 - 4e-15)) << a << " " << b << " " << x;
                was = p;
            }
            for (double x : {.0625, .375, .5})  // exact on both sides
                EXPECT_NEAR(ibeta2(a, b, x), ibetatail2(b, a, 1 - x), 1e-13 * ibeta2(a, b, x)) << a << " " << b;
        }
    }
}

TEST(distlaws, BivariateFollowsItsSymmetries)
{
    for (double r : {-.999, -.6, -.01, .2, .9, .9999})
        for (double h : {-4., -.5, 0., 1.5})
            for (double k : {-3., .25, 2.}) {
                double z = binormal(h, k, r);
                EXPECT_NEAR(z, binormal(k, h, r), 1e-13 * z);
                EXPECT_NEAR(z + binormal(h, -k, -r), ovnormal(h), 1e-14);
            }
    EXPECT_NEAR(binormal(0, 0, .5), 1 / 3.0, 1e-15);
    EXPECT_NEAR(binormal(-1, 300, .5), ovnormal(-1), 1e-15);
}

TEST(distlaws, RangesAgreeWithStudentsT)
{
    for (double df : {1., 2., 7.5, 60., 1e4, 1e9})
        for (double x : {1e-6, .01, 1., 4., 30.}) {
            double inside = invt(df, .5) > 0 ? fcumm2(1, df, x * x) : 0;
            EXPECT_NEAR(dunnettprob(1, df, x) / inside, 1, 3e-14) << df << " " << x;
            EXPECT_NEAR(srangeprob(2, df, x * std::sqrt(2.0)) / inside, 1, 3e-14) << df << " " << x;
        }
    EXPECT_NEAR(srangeprob(3, 1e17, 3.5), srangeprob(3, 1e12, 3.5), 1e-11);
    EXPECT_LT(dunnettprob(5, 20, 2), dunnettprob(4, 20, 2));
}

TEST(distlaws, LimitsAreInclusive)
{
    for (double a : {1e-10, 1e17}) {
        EXPECT_LT(gammap2(a, 1), 2);
        EXPECT_LT(ibeta2(a, 2, .5), 2);
        EXPECT_LT(ibetatail2(2, a, .5), 2);
    }
    for (double df : {2e-10, 2e17}) {
        EXPECT_LT(ttail2(df, 1), 2);
        EXPECT_LT(ftail2(df, 3, 1), 2);
        EXPECT_LT(ftail2(3, df, 1), 2);
    }
    EXPECT_LT(chi2cumm2(2e-10, 1), 2);
    EXPECT_LT(poisson2(9007199254740991, 3), 2);
    EXPECT_EQ(poisson2(9007199254740992, 3), misval);
    for (double a : {9.9e-11, 1.1e17}) {
        EXPECT_EQ(gammap2(a, 1), misval);
        EXPECT_EQ(ibeta2(a, 2, .5), misval);
        EXPECT_EQ(ibeta2(2, a, .5), misval);
        EXPECT_EQ(invgammap2(a, .5), misval);
    }
    EXPECT_EQ(chi2tail2(1.9e-10, 1), misval);
    EXPECT_EQ(ttail2(2.1e17, 1), misval);
    EXPECT_EQ(gammap2(1, misval), misval);   // missing before the ends of the domain
    EXPECT_EQ(chi2cumm2(misval, -1), misval);
    EXPECT_EQ(ibeta2(misval, 1, -1), misval);
}

TEST(distlaws, FarTails)
{
    EXPECT_NEAR(ovnormal(-37) / 5.7255712225245316e-300, 1, 1e-13);
    EXPECT_NEAR(ttail2(2, 1e100) / 5e-201, 1, 1e-13);
    EXPECT_NEAR(ovlnnormal(-1e10) / -5e19, 1, 1e-15);
    EXPECT_EQ(ovnormal(-38), 0);
    EXPECT_EQ(gammap2(1e17, 1e16), 0);
    EXPECT_EQ(gammap2(1e17, 1e18), 1);
}

// Weights and parts both underflow on the way to the largest product.
TEST(distlaws, LargeNoncentrality)
{
    for (double L : {1e3, 3e5, 1e7}) {
        double spread = std::sqrt(2 + 4 * L), was = 0;
        for (double z : {-30., -5., -1., 0., 1., 5., 40.}) {
            double p = nchi2(2, L, 2 + L + z * spread);
            EXPECT_NEAR(p, ovnormal(z), .02) << L << " " << z;
            EXPECT_GE(p, was);
            was = p;
            double f = (1 + L / 5) * (1 + z / 100), x = 5 * f / (5 * f + 40);
            EXPECT_NEAR(nftail(5, 40, L, f) + nibeta(2.5, 20, L, x), 1, 1e-9) << L << " " << z;
        }
    }
    EXPECT_NEAR(nftail(3, 40, 1e-6, 2) / ftail2(3, 40, 2), 1, 1e-6);
}
