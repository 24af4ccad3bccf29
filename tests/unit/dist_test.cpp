// Values computed to 30 digits from the definitions, with another program.
#include "exprhelp.h"
#include <gtest/gtest.h>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <vector>

TEST(dist, ValuesByDefinition)
{
    const std::vector<std::pair<const char *, double>> rows = {
        {"gammap(10,3)", 0.0011024881301154797},
        {"gammaptail(10,30)", 7.1217508628155771e-6},
        {"gammaptail(.001,.1)", 0.0018219902620497243},
        {"chi2(3,7.81)", 0.94989394364999407},
        {"chi2tail(1,3.84)", 0.050043521248705099},
        {"ibeta(2,3,.3)", 0.3483},
        {"ibetatail(10,200,.03)", 0.89949164762855172},
        {"ttail(5,2.5)", 0.027245049671188121},
        {"tprob(5,2.5)", 0.054490099342376241},
        {"tden(5,2.5)", 0.033326238887022831},
        {"Ftail(3,20,3.1)", 0.049924533045678784},
        {"F(3,20,3.1)", 0.95007546695432122},
        {"binomial(10,3,.4)", 0.3822806016},
        {"binomialp(10,3,.4)", 0.214990848},
        {"binomialtail(10,3,.4)", 0.8327102464},
        {"poisson(3.5,2)", 0.32084719886213407},
        {"poissonp(3.5,2)", 0.18495897346170082},
        {"poissontail(3.5,2)", 0.86411177459956675},
        {"nbinomial(4,3,.4)", 0.289792},
        {"nbinomialp(4,3,.4)", 0.110592},
        {"nbinomialtail(4,3,.4)", 0.8208},
        {"hypergeometric(50,10,8,2)", 0.81222709265864828},
        {"hypergeometricp(50,10,8,2)", 0.32172465789056801},
        {"nchi2(3,2,5)", 0.59340518008315563},
        {"nbetaden(2,3,4,.4)", 1.3226714908523302},
        {"nibeta(2,3,4,.4)", 0.22838713745508931},
        {"nFtail(3,7,4,1.5)", 0.65996899373816134},
        {"Fden(3,7,1.5)", 0.2339761241306171},
        {"binormal(1.0,-0.5,0.9)", 0.30851925963385503},
        {"binormal(2.0,2.0,0.99)", 0.97421137875231053},
        {"binormal(-1.0,2.0,-0.7)", 0.14021985419403971},
        {"binormal(1.0,1.001,0.9999)", 0.84009777010641636},
        {"gammaden(2.5,3,1,7)", 0.09598394046788987},
        {"betaden(2,3,.4)", 1.728},
    };
    for (auto &[text, want] : rows)
        EXPECT_NEAR(number(text) / want, 1, 2e-13) << text;
}

TEST(dist, EdgesOfTheDomains)
{
    const std::vector<std::pair<const char *, double>> rows = {
        {"gammap(1,0)", 0}, {"gammap(0,1)", misval}, {"gammaptail(1,-1)", 1},
        {"chi2tail(1e-10,1)", misval}, {"chi2(1,-1)", 0}, {"ibeta(1,1,.5)", .5},
        {"ibeta(2,3,0)", 0}, {"ibeta(2,3,1)", 1}, {"ibeta(0,3,.5)", misval}, {"ttail(0,10)", misval},
        {"ttail(10,0)", .5}, {"Ftail(1,1,-1)", 1}, {"binomial(5,-1,.5)", 0}, {"binomial(5,9,.5)", 1},
        {"binomial(5,2,1.5)", misval}, {"poisson(0,1)", misval}, {"poissontail(2,0)", 1},
        {"hypergeometric(10,5,3,5)", 1}, {"hypergeometricp(10,5,3,4)", 0}, {"invchi2(1,1)", misval},
        {"invchi2(1,0)", 0}, {"invttail(3,0)", misval}, {"invttail(3,.5)", 0},
        {"invbinomial(5,5,.1)", misval}, {"chi2(.,1)", misval}, {"binormal(0,0,1)", .5},
        {"binormal(0,0,-1)", 0}, {"binormal(0,0,2)", misval},
    };
    for (auto &[text, want] : rows)
        EXPECT_NEAR(number(text), want, want >= misval ? 0 : 1e-15) << text;
}

TEST(dist, InversesLeadBack)
{
    const char *const pairs[][2] = {
        {"gammap(%s,invgammap(%s,%s))", "2"}, {"gammaptail(%s,invgammaptail(%s,%s))", ".3"},
        {"chi2(%s,invchi2(%s,%s))", "7"}, {"chi2tail(%s,invchi2tail(%s,%s))", "1"},
        {"ttail(%s,invttail(%s,%s))", "4.5"}, {"F(%s,invF(%s,%s))", "3,9"},
        {"Ftail(%s,invFtail(%s,%s))", "1,30"}, {"ibeta(%s,invibeta(%s,%s))", ".5,20"},
        {"ibetatail(%s,invibetatail(%s,%s))", "30,2"},
        {"binomial(%s,invbinomial(%s,%s))", "20,7"},
        {"binomialtail(%s,invbinomialtail(%s,%s))", "20,7"},
        {"nbinomial(%s,invnbinomial(%s,%s))", "5,7"},
        {"nbinomialtail(%s,invnbinomialtail(%s,%s))", "5,7"},
        {"nchi2(%s,invnchi2(%s,%s))", "3,4"}, {"nibeta(%s,invnibeta(%s,%s))", "2,3,4"},
        {"nFtail(%s,invnFtail(%s,%s))", "3,9,2"},
    };
    for (auto &[form, parm] : pairs)
        for (const char *p : {"1e-8", ".01", ".3", ".5", ".77", ".999"}) {
            char text[200];
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
            snprintf(text, sizeof text, form, parm, parm, p);
#pragma GCC diagnostic pop
            EXPECT_NEAR(number(text) / atof(p), 1, 1e-10) << text;
        }
    EXPECT_NEAR(number("poisson(invpoisson(4,.3),4)"), .3, 1e-12);
    EXPECT_NEAR(number("nchi2(3,npnchi2(3,5,.3),5)"), .3, 1e-10);
}
