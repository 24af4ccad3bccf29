// Distributions and variates as the matrix language calls them. Values were reckoned from
// integrals and series with forty digits, by other routines than those that are called.
#include "mosabi.h"
#include <cmath>

static const called distributions[] = {
    {"lnnormal(-10)", "R1,1:-53.23128515"},
    {"gammap(2.5, 3)", "R1,1:0.6937810816"},
    {"gammaptail(2.5, 3)", "R1,1:0.3062189184"},
    {"invgammap(2.5, .3)", "R1,1:1.499954066"},
    {"invgammaptail(2.5, .3)", "R1,1:3.032214992"},
    {"gammaden(2, 1.5, .5, 3)", "R1,1:0.2098617809"},
    {"dgammapda(2.5, 3)", "R1,1:-0.2275485513"},
    {"dgammapdx(2.5, 3)", "R1,1:0.1946086933"},
    {"dgammapdada(2.5, 3)", "R1,1:-0.03980498725"},
    {"dgammapdadx(2.5, 3)", "R1,1:0.07695910693"},
    {"dgammapdxdx(2.5, 3)", "R1,1:-0.09730434666"},
    {"chi2(3, 4)", "R1,1:0.7385358701"},
    {"chi2tail(3, 4)", "R1,1:0.2614641299"},
    {"invchi2(3, .9)", "R1,1:6.251388631"},
    {"invchi2tail(3, .9)", "R1,1:0.5843743742"},
    {"nchi2(3, 2, 4)", "R1,1:0.4838813584"},
    {"invnchi2(3, 2, .5)", "R1,1:4.137515123"},
    {"npnchi2(3, 4, .5)", "R1,1:1.854458751"},
    {"ttail(7, 1.2)", "R1,1:0.1345859684"},
    {"invttail(7, .05)", "R1,1:1.894578605"},
    {"tden(7, 1.2)", "R1,1:0.1821685742"},
    {"F(3, 10, 2.5)", "R1,1:0.8809604373"},
    {"Ftail(3, 10, 2.5)", "R1,1:0.1190395627"},
    {"Fden(3, 10, 2.5)", "R1,1:0.09254817169"},
    {"invF(3, 10, .9)", "R1,1:2.727673141"},
    {"invFtail(3, 10, .9)", "R1,1:0.1911895544"},
    {"nFtail(3, 10, 2, 2.5)", "R1,1:0.2774491188"},
    {"nFden(3, 10, 2, 2.5)", "R1,1:0.1558105708"},
    {"invnFtail(3, 10, 2, .2)", "R1,1:3.09357065"},
    {"ibeta(2, 3.5, .4)", "R1,1:0.5984490867"},
    {"ibetatail(2, 3.5, .4)", "R1,1:0.4015509133"},
    {"betaden(2, 3.5, .4)", "R1,1:1.756785246"},
    {"invibeta(2, 3.5, .3)", "R1,1:0.2421784659"},
    {"invibetatail(2, 3.5, .3)", "R1,1:0.4612955859"},
    {"nibeta(2, 3.5, 1, .4)", "R1,1:0.499997318"},
    {"nbetaden(2, 3.5, 1, .4)", "R1,1:1.795881918"},
    {"invnibeta(2, 3.5, 1, .3)", "R1,1:0.2880365859"},
    {"binormal(.5, -.3, .5)", "R1,1:0.3303585062"},
    {"binomial(10, 3, .4)", "R1,1:0.3822806016"},
    {"binomialtail(10, 3, .4)", "R1,1:0.8327102464"},
    {"binomialp(10, 3, .4)", "R1,1:0.214990848"},
    {"invbinomial(10, 3, .4)", "R1,1:0.3929951231"},
    {"invbinomialtail(10, 3, .4)", "R1,1:0.2255150013"},
    {"nbinomial(2.5, 3, .4)", "R1,1:0.5558019216"},
    {"nbinomialtail(2.5, 3, .4)", "R1,1:0.5876389931"},
    {"nbinomialp(2.5, 3, .4)", "R1,1:0.1434409147"},
    {"invnbinomial(2.5, 3, .4)", "R1,1:0.3233505437"},
    {"invnbinomialtail(2.5, 3, .4)", "R1,1:0.5051296436"},
    {"poisson(3.3, 4)", "R1,1:0.7625903757"},
    {"poissontail(3.3, 4)", "R1,1:0.4196618025"},
    {"poissonp(3.3, 4)", "R1,1:0.1822521782"},
    {"invpoisson(4, .3)", "R1,1:5.890361314"},
    {"invpoissontail(4, .3)", "R1,1:2.763711043"},
    {"hypergeometricp(20, 8, 6, 2)", "R1,1:0.3575851393"},
    {"hypergeometric(20, 8, 6, 2)", "R1,1:0.5448916409"},
    {"srangeprob(3, 10, 3.5)", "R1,1:0.9228966892"},
    {"tukeyprob(3, 10, 3.5)", "R1,1:0.9228966892"},
    {"dunnettprob(3, 10, 2.5)", "R1,1:0.9234643871"},
    {"invsrangeprob(3, 10, srangeprob(3, 10, 3.5))", "R1,1:3.5"},
    {"invtukeyprob(3, 10, srangeprob(3, 10, 3.5))", "R1,1:3.5"},
    {"invdunnettprob(3, 10, dunnettprob(3, 10, 2.5))", "R1,1:2.5"},
    {"normalden(1, 2)", "R1,1:0.1760326634"},
    {"normalden(3, 1, 2)", "R1,1:0.1209853623"},
    {"lnnormalden((100, 2))", "R1,2:-5000.918939 -2.918938533"},
    {"lnnormalden(1, 2)", "R1,1:-1.737085714"},
    {"lnnormalden(3, 1, 2)", "R1,1:-2.112085714"},
};

TEST(MosaDist, Values)
{
    session();
    vernum = 1210;
    try_all(distributions);
    EXPECT_EQ(value("Binomial(10, 3, .4)"), "3499"); // a name of old versions
    vernum = 900;
    EXPECT_EQ(value("Binomial(10, 3, .4)"), "R1,1:0.8327102464");
    vernum = 1210;
}

// Shapes that go together, missing values, views, arguments that are no numbers.
TEST(MosaDist, ShapesAndRefusals)
{
    session();
    vernum = 1210;
    ASSERT_EQ(run("drop _all"), 0);
    ASSERT_EQ(run("set obs 3"), 0);
    ASSERT_EQ(run("generate x = _n / 4"), 0);
    static const called rows[] = {
        {"chi2tail((1 \\ 2), (0, 3))", "3200"},
        {"chi2tail((1 \\ 2), (0, 3 \\ 1, .))", "R2,2:1 0.08326451666 0.6065306597 ."},
        {"chi2tail((1, 2), 3)", "R1,2:0.08326451666 0.2231301601"},
        {"binomialp((2, 2 \\ 3, 3), (1 \\ 2), (.5, .25))", "R2,2:0.5 0.375 0.375 0.140625"},
        {"binomialp(2, 1, J(0, 3, 1))", "R0,3:"},
        {"poissonp(J(2, 0, 1), 1)", "R2,0:"},
        {"poissonp((1, 2), (1, 2, 3))", "3200"},
        {"invchi2(3, (-.1, 0, 1, 2, .a))", "R1,5:. 0 . . ."},
        {"gammap(J(2, 1, 1), 1 :+ J(2, 1, 0))", "R2,1:0.6321205588 0.6321205588"},
        {"V = .; ov_view(V, ., \"x\"); W = ibeta(1, 1, V); V[1] = .75; W, ibeta(V, 1, .25)",
         "R3,2:0.25 0.3535533906 0.5 0.5 0.75 0.3535533906"},
        {"a = (1, 2); b = poisson(a, 0); a", "R1,2:1 2"},
        {"chi2(\"a\", 1)", "3253"},
        {"chi2(1, 1i)", "3253"},
        {"chi2(1)", "3000"},
        {"hypergeometric(20, 8, 6)", "3000"},
    };
    try_all(rows);
    EXPECT_EQ(ms("poisson(J(100, 100, 1), J(1, 99, 1))"), 3200);
    EXPECT_NE(session_output.find("poisson():"), std::string::npos) << session_output;
}

TEST(MosaDist, BreakAndMemory)
{
    session();
    for (const char *text : {"x = nibeta(2, 3, 1, J(50, 50, .5))", "x = rt(100, 100, J(1, 100, 2))",
                             "x = rdiscrete(100, 100, (.5, .5))", "x = rpoisson(100, 100, 3)"}) {
        int64_t before = mo_cnt();
        bool stopped = false, refused = false;
        for (int k = 1; k < 400; k++) {
            fault_arm(F_BREAK, k, false);
            int32_t rc = ms(text);
            EXPECT_EQ(rc != 0, fault_disarm() > 0) << text << k;
            stopped |= rc == 1;
            stopflag = 0;
        }
        for (int k = 1; k < 12; k++) {
            fault_arm(F_MEM, k, false);
            int32_t rc = ms(text);
            EXPECT_EQ(rc != 0, fault_disarm() > 0) << text << k;
            refused |= rc == 3900;
        }
        EXPECT_TRUE(stopped) << text;
        EXPECT_TRUE(refused) << text;
        ms("ms__v = 1");
        EXPECT_LE(mo_cnt(), before + 2) << text;
    }
}

// ---- variates: moments, reproducible draws, shapes

static const called variates[] = {
    {"rseed(7); x = rpoisson(2, 3, 4); rseed(7); y = rpoisson(3, 2, 4); colshape(x, 1) == "
     "colshape(y, 1)",
     "R1,1:1"},
    {"rseed(7); x = rgamma(2, 2, 1, 3); rseed(7); y = rgamma(2, 2, J(2, 2, 1), (3, 3)); x == y",
     "R1,1:1"},
    {"rseed(7); x = rnormal(2, 2, (0, 100), (1 \\ 1e-9)); "
     "(abs(x[2, 1]) < 1e-7, abs(x[2, 2] - 100) < 1e-7, x[1, 2] > 90)",
     "R1,3:1 1 1"},
    {"x = rbinomial(1, 4, (10, 0, 10, .), (.5, .5, 2, .5)); x[1] < 11, missing(x)", "R1,2:1 3"},
    {"x = rhypergeometric(1, 20, 10, 9, 4); all(x :== 3 :| x :== 4), missing(x)", "R1,2:1 0"},
    {"rnbinomial(1, 2, 3, 1)", "R1,2:0 0"},
    {"missing(rbeta(2, 2, -1, 1))", "R1,1:4"},
    {"rdiscrete(1, 3, (0, 1, 0))", "R1,3:2 2 2"},
    {"x = rdiscrete(20000, 1, (.2 \\ 0 \\ .5 \\ .3)); a = (sum(x :== 1), sum(x :== 2), sum(x :== "
     "3), sum(x :== 4)) / 20000; "
     "all(abs(a - (.2, 0, .5, .3)) :< .015)",
     "R1,1:1"},
    {"x = rt(20000, 1, 5); abs(sum(x) / 20000) < .04 & abs(cross(x, x) / 20000 - 5 / 3) < .12",
     "R1,1:1"},
    {"x = rgamma(20000, 1, 2, 3); abs(sum(x) / 20000 - 6) < .12", "R1,1:1"},
    {"x = rbeta(20000, 1, 2, 3); abs(sum(x) / 20000 - .4) < .006", "R1,1:1"},
    {"x = rnbinomial(20000, 1, 3, .4); abs(sum(x) / 20000 - 4.5) < .1", "R1,1:1"},
    {"x = rhypergeometric(20000, 1, 50, 20, 10); abs(sum(x) / 20000 - 4) < .05", "R1,1:1"},
    {"rows(rpoisson(0, 3, 1))", "R1,1:0"},
    {"rpoisson(-1, 3, 1)", "3300"},
    {"rpoisson(2, 3, (1, 2))", "3200"},
    {"rpoisson(2, 3, \"a\")", "3253"},
    {"rdiscrete(1, 1, (.5, .4))", "3300"},
    {"rdiscrete(1, 1, (1.5, -.5))", "3300"},
    {"rdiscrete(1, 1, (.5, .5 \\ 0, 0))", "3201"},
    {"rdiscrete(1, 1, J(1, 0, .))", "3300"},
};

TEST(MosaDist, Variates)
{
    session();
    try_all(variates);
}
