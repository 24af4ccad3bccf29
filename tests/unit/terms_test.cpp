// Lists with operators: what they expand to, what is refused, names of terms, and what the
// estimation commands make of them.
#include "../session.h"
#include "data/umat.h"
#include "stats/results.h"
#include "varlist/terms.h"
#include <gtest/gtest.h>

namespace
{

std::string result(const char *name)
{
    return gretval_find(RK_R, name) == 5179 ? retval_get_strptr() : "";
}

struct row {
    const char *typed, *want; // the columns, or "r(code)"
};

struct terms : testing::Test {
    // g 1 2 3, h 0 1, x and y continuous, t the time with a gap at 5, n negative, s a text
    static void SetUpTestSuite()
    {
        session();
        for (const char *l :
             {"clear", "set obs 12", "gen byte g = 1 + mod(_n, 3)", "gen byte h = _n > 6",
              "gen double x = _n^2", "gen double y = sqrt(_n) + mod(7*_n, 5)",
              "gen int t = _n + (_n > 4)", "gen n = -_n", "gen str4 s = \"a\"",
              "gen long big = 70000*h", "char _dta[_TStvar] t"})
            ASSERT_EQ(run(l), 0) << l;
    }
    static void TearDownTestSuite() { run("clear"); }
    template <size_t N> void expand(const row (&rows)[N])
    {
        for (auto &r : rows) {
            int32_t rc = run(std::string("fvexpand ") + r.typed);
            EXPECT_EQ(rc ? "r(" + std::to_string(rc) + ")" : result("varlist"), r.want)
                << r.typed << "\n"
                << session_output;
        }
    }
};

} // namespace

TEST_F(terms, levels_and_bases)
{
    static const row rows[] = {
        {"i.g", "1b.g 2.g 3.g"},
        {"I.g", "1b.g 2.g 3.g"},
        {"ib2.g", "1.g 2b.g 3.g"},
        {"b3.g", "1.g 2.g 3b.g"},
        {"ib(last).g ib(first).h", "1.g 2.g 3b.g 0b.h 1.h"},
        {"ib(#2).g", "1.g 2b.g 3.g"},
        {"ib(freq).g if _n > 1 & _n != 3", "1.g 2.g 3b.g"}, // 3 is the one left whole
        {"ibn.g", "1bn.g 2.g 3.g"},
        {"2.g", "2.g"},
        {"i2.g 3.g", "2.g 3.g"},
        {"i(1 3).g", "1b.g 3.g"},
        {"i(2/3).g", "2.g 3.g"},
        {"io2.g", "1b.g 2o.g 3.g"},
        {"io(2 3).g", "1b.g 2o.g 3o.g"},
        {"o.x", "o.x"},
        {"1b.g 2.g 3o.g", "1b.g 2.g 3o.g"},
        {"i.g if g > 1", "2b.g 3.g"},
        {"i.g in 1/2", "2b.g 3.g"},
        {"i.big", "0b.big 70000.big"},
        {"x y", "x y"},
        {"c.x", "x"},
        {"i.(g h)", "1b.g 2.g 3.g 0b.h 1.h"},
        {"i.g i.g", "1b.g 2.g 3.g"},
    };
    expand(rows);
}

TEST_F(terms, products)
{
    static const row rows[] = {
        {"c.x#c.x", "c.x#c.x"},
        {"g#h", "1b.g#0b.h 1b.g#1.h 2.g#0b.h 2.g#1.h 3.g#0b.h 3.g#1.h"},
        {"i.h#c.x", "0b.h#c.x 1.h#c.x"},
        {"c.x i.h#c.x", "x 0b.h#co.x 1.h#c.x"},
        {"i.h##c.x", "0b.h 1.h x 0b.h#co.x 1.h#c.x"},
        {"i.g i.g#i.h", "1b.g 2.g 3.g 1b.g#0b.h 1b.g#1.h 2o.g#0b.h 2.g#1.h 3o.g#0b.h 3.g#1.h"},
        {"h##ib2.g",
         "0b.h 1.h 1.g 2b.g 3.g 0b.h#1o.g 0b.h#2b.g 0b.h#3o.g 1.h#1.g 1o.h#2b.g 1.h#3.g"},
        {"2.g#c.x", "2.g#c.x"},
        {"i.h#c.(x y)", "0b.h#c.x 1.h#c.x 0b.h#c.y 1.h#c.y"},
        {"(c.x i.h)#c.y", "c.x#c.y 0b.h#c.y 1.h#c.y"},
        {"i.h#i.h", "0b.h 1.h"},
        {"c.x##c.x##c.x", "x c.x#c.x c.x#c.x#c.x"},
        {"x#x#x#x#x#x#x#x#x", "r(198)"},
        {"c.x#c.x#c.x#c.x#c.x#c.x#c.x#c.x", "c.x#c.x#c.x#c.x#c.x#c.x#c.x#c.x"},
    };
    expand(rows);
}

TEST_F(terms, times)
{
    static const row rows[] = {
        {"L.x L1.x", "L.x L.x"},
        {"L2D.x", "L2D.x"},
        {"L.D.x F2.L3.x", "LD.x L.x"},
        {"S1.x S4.x", "D.x S4.x"},
        {"L(0/2).x", "x L.x L2.x"},
        {"L(-1/1).x", "F.x x L.x"},
        {"L.(x y)", "L.x L.y"},
        {"iL.g", "1bL.g 2L.g 3L.g"},
        {"i.h#cL.x", "0b.h#cL.x 1.h#cL.x"},
        {"D.x#i.h", "0b.h#cD.x 1.h#cD.x"},
    };
    expand(rows);
    // A gap in time is a gap in the lags.
    ASSERT_EQ(run("gen double l = L.x"), 0) << session_output;
    EXPECT_EQ(run("assert l == cond(_n == 1 | _n == 5, ., (_n - 1)^2)"), 0);
    ASSERT_EQ(run("gen double d = S3D2.x"), 0);
    EXPECT_EQ(run("assert d == 0 if _n >= 10"), 0);
    EXPECT_EQ(run("assert d == . if _n < 10"), 0);
    EXPECT_EQ(run("assert F.x == L.F2.x"), 0);
    EXPECT_EQ(run("assert 2.g#c.x == (g == 2)*x & 1.h == h & 3L.g == (L.g == 3) | L.g == ."), 0);
    run("drop l d");
    ASSERT_EQ(run("sort n"), 0);
    EXPECT_EQ(run("gen double l = L.x"), 5);
    run("sort t");
}

TEST_F(terms, refusals)
{
    static const row rows[] = {
        {"i.nosuch", "r(111)"}, {"i.s", "r(109)"},         {"i.n", "r(452)"},
        {"i.y", "r(452)"},      {"q.g", "r(198)"},         {"i.", "r(198)"},
        {"i.g#", "r(198)"},     {"i.g##", "r(198)"},       {"(i.g", "r(132)"},
        {"i(1 2.g", "r(111)"},  {"ib.g", "r(198)"},        {"ib(x).g", "r(198)"},
        {"ic.g", "r(198)"},     {"c.i.g", "r(198)"},       {"L.s", "r(109)"},
        {"iD.g", "r(198)"},     {"i-1.g", "r(111)"},       {"i99999999999.g", "r(175)"},
        {"()#i.g", "r(198)"},   {"L(1/9999).x", "r(198)"},
    };
    expand(rows);
    EXPECT_EQ(run("summarize i.g"), 101);
    EXPECT_EQ(run("summarize L.x"), 101);
    EXPECT_EQ(run("summarize g#h"), 101);
    EXPECT_EQ(run("regress i.g x"), 198);
    EXPECT_EQ(run("regress g#h x"), 198);
    EXPECT_EQ(run("regress y i.n"), 452);
    run("char _dta[_TStvar]");
    EXPECT_EQ(run("regress y L.x"), 111);
    run("char _dta[_TStvar] t");
}

// A name is read and written alike; without marks it is the same column.
TEST_F(terms, names)
{
    for (const char *name :
         {"x", "_cons", "L2.x", "FD.x", "o.x", "oL.x", "2.g", "1b.g", "1bn.g", "3o.g", "2L.g",
          "1bL2.g", "2.g#c.x", "0b.h#co.x", "c.x#cL.x", "1.a#2.b#3.c#c.d"}) {
        termname t;
        ASSERT_TRUE(term_read(name, &t)) << name;
        EXPECT_EQ(term_write(t), name);
    }
    for (const char *name :
         {"", ".x", "2.", "i.g", "q.x", "2.g#", "#2.g", "x#c.y", "2.g#x", "2..g", "a-b", "2.g##c.x",
          "99999999999.g", "1.a#1.a#1.a#1.a#1.a#1.a#1.a#1.a#1.a"}) {
        termname t;
        EXPECT_FALSE(term_read(name, &t)) << name;
    }
    auto is = [](const char *a, const char *b) {
        termname s, t;
        return term_read(a, &s) && term_read(b, &t) && term_same(s, t);
    };
    EXPECT_TRUE(is("1b.g", "1.g"));
    EXPECT_TRUE(is("2.g#c.x", "c.x#2o.g"));
    EXPECT_TRUE(is("o.x", "x"));
    EXPECT_FALSE(is("2.g", "3.g"));
    EXPECT_FALSE(is("2.g", "2L.g"));
    EXPECT_FALSE(is("c.x#c.x", "c.x#c.y"));
}

// Rank, fit and omitted columns of models with empty cells and collinear parts, against what
// the same model gives with variables made by hand.
TEST_F(terms, models)
{
    struct model {
        const char *terms, *hand;
    };
    for (const char *l : {"gen byte g2 = g == 2", "gen byte g3 = g == 3", "gen double hx = h*x",
                          "gen byte g2h = g2*h", "gen byte g3h = g3*h", "gen double x2 = x*x",
                          "gen double g2x = g2*x", "gen double g3x = g3*x", "gen double w = 1 + g"})
        ASSERT_EQ(run(l), 0) << l;
    static const model models[] = {
        {"i.g", "g2 g3"},
        {"i.g x i.g", "g2 g3 x"},
        {"i.h##c.x", "h x hx"},
        {"i.g##i.h", "g2 g3 h g2h g3h"},
        {"g#h", "g2 g3 h g2h g3h"},
        {"ib3.g##ib1.h", "g2 g3 h g2h g3h"},
        {"c.x##c.x i.g", "x x2 g2 g3"},
        {"i.g#c.x", "x g2x g3x"},
        {"i.g i.g#c.x h", "g2 g3 x g2x g3x h"},
        {"x g2 g3 i.g", "x g2 g3"},
    };
    for (const model &m : models)
        for (const char *options : {"", ", vce(robust)", " [aw=w]", ", vce(cluster g)"}) {
            ASSERT_EQ(run(std::string("quietly regress y ") + m.hand + options), 0);
            double rss = estval_get_double("rss"), F = estval_get_double("F"),
                   df = estval_get_double("df_m"), rank = estval_get_double("rank");
            ASSERT_EQ(run(std::string("quietly predict double p1")), 0);
            ASSERT_EQ(run("quietly predict double s1, stdp"), 0);
            ASSERT_EQ(run(std::string("quietly regress y ") + m.terms + options), 0) << m.terms;
            EXPECT_NEAR(estval_get_double("rss"), rss, 1e-9) << m.terms << options;
            EXPECT_EQ(estval_get_double("df_m"), df) << m.terms << options;
            EXPECT_EQ(estval_get_double("rank"), rank);
            if (!strstr(options, "cluster")) {
                EXPECT_NEAR(estval_get_double("F"), F, 1e-7 * F) << m.terms << options;
            }
            ASSERT_EQ(run("quietly predict double p2"), 0) << session_output;
            ASSERT_EQ(run("quietly predict double s2, stdp"), 0);
            EXPECT_EQ(run("assert reldif(p1, p2) < 1e-9 & reldif(s1, s2) < 1e-6"), 0)
                << m.terms << options;
            run("drop p1 p2 s1 s2");
        }
    run("drop g2 g3 hx g2h g3h x2 g2x g3x w");
}

TEST_F(terms, coefficients_by_name)
{
    ASSERT_EQ(run("quietly regress y i.g##c.x if !(g == 3 & h)"), 0);
    EXPECT_EQ(run("assert _b[2.g] == _b[2o.g] & _b[2.g] != 0"), 0) << session_output;
    EXPECT_EQ(run("assert _b[1.g] == 0 & _b[c.x#2.g] == _b[2.g#c.x] & _se[2.g#c.x] > 0"), 0);
    EXPECT_EQ(run("display _b[4.g]"), 111);
    EXPECT_EQ(run("display _b[2.g#c.y]"), 111);
    ASSERT_EQ(run("quietly test 2.g 3.g"), 0);
    double F = 0;
    ASSERT_EQ(gretval_find(RK_R, "F"), 15);
    F = retval_get_as_double();
    ASSERT_EQ(run("quietly testparm i.g"), 0) << session_output;
    ASSERT_EQ(gretval_find(RK_R, "F"), 15);
    EXPECT_EQ(retval_get_as_double(), F);
    EXPECT_EQ(run("quietly lincom 2.g + 10*2.g#c.x"), 0);
    EXPECT_EQ(run("assert reldif(r(estimate), _b[2.g] + 10*_b[2.g#c.x]) < 1e-12"), 0);
    EXPECT_EQ(run("test i.h"), 111);
}

// Groups of by have levels of their own; the columns of one do not leak into the next.
TEST_F(terms, groups)
{
    run("sort h t");
    session_output.clear();
    ASSERT_EQ(run("by h: regress y i.g if g != 1 + h, noheader"), 0);
    EXPECT_NE(session_output.find("3  |"), std::string::npos);
    EXPECT_EQ(result("nothing"), "");
    matref b;
    ASSERT_TRUE(umat_get("b", MK_E, &b));
    EXPECT_STREQ(b.col[0].name, "1b.g"); // of the last group, where level 2 is left out
    EXPECT_STREQ(b.col[1].name, "3.g");
    EXPECT_EQ(b.m->cols, 3);
    run("sort t");
}

TEST_F(terms, columns_as_variables)
{
    int32_t before = _Kvar;
    ASSERT_EQ(run("fvrevar i.g##c.x, stub(z)"), 0);
    EXPECT_EQ(result("varlist"), "z1 z2 z3 x z4 z5 z6");
    EXPECT_EQ(run("assert z2 == (g == 2) & z5 == z2*x"), 0);
    run("drop z*");
    ASSERT_EQ(run("fvrevar i.g##c.x, list"), 0);
    EXPECT_EQ(result("varlist"), "g x");
    ASSERT_EQ(run("tsrevar L.x, stub(q)"), 0);
    EXPECT_EQ(run("assert q1 == L.x"), 0);
    run("drop q1");
    EXPECT_EQ(run("tsrevar i.g"), 101);
    EXPECT_EQ(_Kvar, before);
    ASSERT_EQ(run("_rmcoll i.g x i.h if g != 2, expand"), 0);
    EXPECT_EQ(result("varlist"), "1b.g 3.g x 0b.h 1.h");
    ASSERT_EQ(run("_rmcoll x i.g##i.h if !(g == 2 & h), forcedrop"), 0);
    EXPECT_EQ(result("varlist"), "x 2.g 3.g 1.h 3.g#1.h");
}
