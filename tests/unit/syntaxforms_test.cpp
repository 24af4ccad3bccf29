// The syntax command: patterns against argument lines, with the locals that come out or the
// code of the refusal.
#include "../session.h"
#include "core/rc.h"
#include <gtest/gtest.h>

namespace {

std::string value(const char *name)
{
    const char *p = macptr(name);
    return p ? p : "";
}

int32_t load(const std::string &text)
{
    FILE *f = fopen("body.do", "w");
    fputs(text.c_str(), f);
    fclose(f);
    return run("run body.do");
}

struct row {
    const char *args, *want;    // want: the text of the locals shown, or "r(code)"
};

struct syntaxforms : testing::Test {
    static void SetUpTestSuite()
    {
        session();
        for (const char *l : {"clear", "set obs 6", "gen x1 = _n", "gen x2 = 7 - _n", "gen int n = 1",
                              "gen str4 name = \"a\"", "gen double weight = 2", "gen date = _n"})
            ASSERT_EQ(run(l), 0) << l;
    }
    static void TearDownTestSuite()
    {
        run("clear");
        run("macro drop OUT");
    }
    // A program with the pattern; what it shows is the text with its locals put in.
    template <size_t N> void check(const char *pattern, const char *show, const row (&rows)[N])
    {
        ASSERT_EQ(load(std::string("capture program drop t\nprogram t\nversion 12\nsyntax ") + pattern +
                       "\nglobal OUT `\"" + show + "\"'\nend\n"), 0) << pattern;
        for (const row &r : rows) {
            run("global OUT");
            int32_t rc = run(std::string("t ") + r.args);
            std::string got = rc ? "r(" + std::to_string(rc) + ")" : value("OUT");
            EXPECT_EQ(got, r.want) << pattern << " <- " << r.args << "\n" << session_output;
        }
    }
};

TEST_F(syntaxforms, variables)
{
    const std::string all = "x1 x2 n name weight date";
    check("varlist", "`varlist'", {{"x1", "x1"}, {"x*", "x1 x2"}, {"x1-name", "x1 x2 n name"},
          {"_all", all.c_str()}, {"na", "name"}, {"", "r(100)"}, {"x3", "r(111)"}, {"x", "r(111)"},
          {"x1 x1", "x1 x1"}, {"x?  n", "x1 x2 n"}, {"n x1, foo", "r(101)"}, {"x1 if 1", "r(101)"},
          {"x1 in 1", "r(101)"}, {"x1 = 5", "r(101)"}, {"x1 [fw=n]", "r(101)"}, {"x1 using f", "r(101)"}});
    check("[varlist]", "`varlist'", {{"", all.c_str()}, {"x2", "x2"}});
    check("[varlist(default=none)]", "|`varlist'|", {{"", "||"}, {"n", "|n|"}});
    check("varname", "`varlist'", {{"x1", "x1"}, {"x1 x2", "r(103)"}, {"x*", "r(103)"}, {"", "r(100)"}});
    check("varlist(min=2 max=3)", "`varlist'", {{"x1", "r(102)"}, {"x1 n", "x1 n"}, {"x1-name", "r(103)"}});
    check("varlist(numeric)", "`varlist'", {{"x1 n", "x1 n"}, {"x1 name", "r(109)"}});
    check("varlist(string)", "`varlist'", {{"name", "name"}, {"n", "r(109)"}});
    check("varname(string)", "`varlist'", {{"name", "name"}, {"x1", "r(109)"}});
    check("newvarname", "`typlist' `varlist'", {{"z", "float z"}, {"str7 z", "str7 z"}, {"x1", "r(110)"},
          {"y z", "r(103)"}, {"1z", "r(198)"}, {"if", "r(101)"}});
    check("newvarlist(min=2 max=3)", "`typlist' | `varlist'", {{"y z", "float float | y z"},
          {"byte y double z", "byte double | y z"}, {"z1-z3", "float float float | z1 z2 z3"},
          {"y", "r(102)"}, {"a1-a4", "r(103)"}});
    check("namelist(min=1 max=2)", "`namelist'", {{"a b", "a b"}, {"a_1", "a_1"}, {"a b c", "r(103)"},
          {"2a", "r(198)"}, {"a+b", "r(198)"}});
    check("name(name=which)", "`which'", {{"abc", "abc"}});
}

TEST_F(syntaxforms, clauses)
{
    check("[if] [in]", "`if'|`in'", {{"", "|"}, {"if x1 > 2", "if x1 > 2|"}, {"in 2/4", "|in 2/4"},
          {"in 2/3 if x1==2", "if x1==2|in 2/3"}, {"if x1>1 in f/l", "if x1>1|in f/l"},
          {"if x1 if x2", "r(198)"}, {"if", "r(198)"}, {"in 9", "r(198)"}, {"in 0", "r(198)"},
          {"if name == \"in 3\"", "if name == \"in 3\"|"}, {"if (x1 == 2)", "if (x1 == 2)|"}});
    check("[if/] [in/]", "`if'|`in'", {{"if x1 > 2 in 3", "x1 > 2|3"}, {"", "|"}});
    check("varname if", "`if'", {{"n if 1", "if 1"}, {"n", "r(100)"}});
    check("using/ [if]", "`using'|`if'", {{"using a.txt", "a.txt|"}, {"using \"a b.txt\" if 1", "a b.txt|if 1"},
          {"", "r(100)"}});
    check("[using]", "`using'", {{"using a.txt", "using `\"a.txt\"'"}, {"", ""}});
    check("varname =exp", "`exp'", {{"n = x1 + 2", "= x1 + 2"}, {"n", "r(100)"}});
    check("varname =/exp", "`exp'", {{"n = x1 + 2", "x1 + 2"}});
    check("[varlist] [fweight aweight]", "`weight'`exp'", {{"n [fw=n]", "fweight= n"}, {"n", ""},
          {"n [aw = x1*2]", "aweight= x1*2"}, {"n [fweight=n]", "fweight= n"}, {"n [weight=n]", "fweight= n"},
          {"n [pw=n]", "r(101)"}});
    check("[varlist] [pweight/]", "`weight' `exp'", {{"n [pw=weight]", "pweight weight"}, {"n [aw=n]", "r(101)"}});
    check("[anything] [if] [, *]", "`anything'|`if'|`options'",
          {{"a (b c) \"d e\" if 1, x y(2)", "a (b c) \"d e\"|if 1|x y(2)"}, {", q", "||q"},
           {"a=b", "r(101)"}, {"(a, b) c, d", "(a, b) c||d"}, {"\"a, b\" c", "\"a, b\" c||"}});
    check("anything(equalok)", "`anything'", {{"a = b", "a = b"}, {"", "r(100)"}});
    check("anything(everything)", "`anything'", {{"a = b if c in d using e", "a = b if c in d using e"}});
}

TEST_F(syntaxforms, options)
{
    check("[, Detail noHEADer]", "`detail'|`header'", {{"", "|"}, {", detail", "detail|"}, {", d", "detail|"},
          {", det nohead", "detail|noheader"}, {", noheader", "|noheader"}, {", nohea", "r(198)"},
          {", detailx", "r(198)"}, {", D", "r(198)"}, {"detail", "r(101)"}, {", detail(3)", "r(198)"}});
    check("[, Mean(real 0) N(integer 5)]", "`mean' `n'", {{"", "0 5"}, {", mean(2.5)", "2.5 5"},
          {", m(-1e3) n(7)", "-1000 7"}, {", n(2.5)", "r(198)"}, {", n(abc)", "r(198)"}, {", n()", "r(198)"},
          {", n(1 2)", "r(198)"}, {", mean(x1)", "r(198)"}, {", n", "r(198)"}, {", n(-2)", "0 -2"}});
    check(", N(integer)", "`n'", {{", n(3)", "3"}, {"", "r(100)"}, {",", "r(100)"}});
    check(", Title(string) [Sub(string asis)]", "|`title'|`sub'|", {{", t(a b)", "|a b||"},
          {", title(\"a b\")", "|a b||"}, {", t(x) s(\"q\")", "|x|\"q\"|"}, {", t(a(b)c)", "|a(b)c||"},
          {", t( pad )", "|pad||"}, {", s(x)", "r(100)"}, {", t(a", "r(100)"}});
    check("[, Values(numlist)]", "`values'", {{", v(1 2 3)", "1 2 3"}, {", v(1/4)", "1 2 3 4"},
          {", v(2(2)8)", "2 4 6 8"}, {", v(a)", "r(121)"}});
    check("[, V(numlist integer >0 max=3 sort)]", "`v'", {{", v(3 1 2)", "1 2 3"}, {", v(1/4)", "r(123)"},
          {", v(0 1)", "r(125)"}, {", v(1.5)", "r(126)"}});
    check("[, V(numlist ascending min=2)]", "`v'", {{", v(1 2)", "1 2"}, {", v(2 1)", "r(124)"}, {", v(1)", "r(122)"}});
    check("[, V(numlist missingokay)]", "`v'", {{", v(1 .)", "1 ."}});
    check("[, V(numlist)]", "`v'", {{", v(1 .)", "r(127)"}});
    check("[, BY(varlist) G(varname numeric)]", "`by'|`g'", {{", by(x*)", "x1 x2|"}, {", g(n)", "|n"},
          {", g(name)", "r(109)"}, {", by(zz)", "r(111)"}, {", g(x1 x2)", "r(103)"}});
    check("[, GENerate(name) New(newvarname)]", "`generate'|`new'", {{", gen(z)", "z|"}, {", gen(1z)", "r(198)"},
          {", new(z)", "|z"}, {", new(x1)", "r(110)"}, {", gen(a b)", "r(103)"}});
    check("[, Level(passthru) Opt(string)]", "`level'|`opt'", {{", l(90)", "level(90)|"}, {", level(9) o(1)", "level(9)|1"}});
    check("[, Level(cilevel)]", "`level'", {{"", "95"}, {", level(90)", "90"}, {", l(99.9)", "99.9"}, {", l(5)", "r(198)"},
          {", l(100)", "r(198)"}});
    check("[, A B *]", "`a'|`b'|`options'", {{", a c b d(1 2)", "a|b|c d(1 2)"}, {", a a", "a||a"}, {"", "||"}});
    check("[, AB ABC]", "`ab'|`abc'", {{", ab", "ab|"}, {", abc", "|abc"}});
    check("[, One TWO(string)]", "`one'|`two'", {{", o two(x, y)", "one|x, y"}, {", two(\"(\")", "|("}, {", tw(1)", "r(198)"}});
}

TEST_F(syntaxforms, bad_patterns_are_refused)
{
    for (const char *pattern : {"[varlist", "varlist]", "nosuch", "[, A(nosuch)]", "[, A(integer)", "varlist varname",
                                "varlist(min=x)", "[if] [if]", "[in] [if] [in/]"}) {
        ASSERT_EQ(load(std::string("capture program drop t\nprogram t\nversion 12\nsyntax ") + pattern + "\nend\n"), 0);
        EXPECT_NE(run("t"), 0) << pattern;
        EXPECT_NE(run("t x1"), 0) << pattern;
    }
}

TEST_F(syntaxforms, programs)
{
    EXPECT_EQ(load("capture program drop _all\nprogram p1\nargs a b c\nglobal OUT `a'|`b'|`c'|`0'|`*'\nend\n"), 0);
    const row rows[] = {{"1 2 3", "1|2|3|1 2 3|1 2 3"}, {"1", "1|||1|1"}, {"\"a b\" c", "a b|c||\"a b\" c|a b c"},
                        {"a, b", "a,|b||a, b|a, b"}, {"", "||||"}, {"1 2 3 4", "1|2|3|1 2 3 4|1 2 3 4"},
                        {"  x   y", "x|y||x   y|x y"}, {"`\"q \"r\" s\"' t", "q \"r\" s|t||`\"q \"r\" s\"' t|q \"r\" s t"}};
    for (const row &r : rows) {
        EXPECT_EQ(run(std::string("p1 ") + r.args), 0) << r.args;
        EXPECT_EQ(value("OUT"), r.want) << r.args;
    }
    EXPECT_EQ(load("program define p1\nend\n"), RC_EXISTS);
    EXPECT_EQ(load("program define p2\nexit 7\ndisplay \"no\"\nend\n"), 0);
    EXPECT_EQ(run("p2"), 7);
    EXPECT_EQ(session_output, "");
    EXPECT_EQ(load("program p3\np2\nglobal OUT not reached\nend\n"), 0);
    run("global OUT");
    EXPECT_EQ(run("p3"), 7);
    EXPECT_EQ(value("OUT"), "");
    EXPECT_EQ(load("program p4\nlocal n = `1' - 1\nif `n' > 0 {\np4 `n'\n}\nglobal OUT $OUT `1'\nend\n"), 0);
    run("global OUT");
    EXPECT_EQ(run("p4 5"), 0);
    EXPECT_EQ(value("OUT"), "1 2 3 4 5");
    EXPECT_EQ(load("program p5\n"), 612);           // the body never ends
    EXPECT_EQ(run("p5"), RC_UNRECOGNIZED);
    EXPECT_EQ(run("program drop p1 p2"), 0);
    EXPECT_EQ(run("p1"), RC_UNRECOGNIZED);
    EXPECT_EQ(run("p4 1"), 0);
    EXPECT_EQ(run("program drop _all"), 0);
    EXPECT_EQ(run("p4 1"), RC_UNRECOGNIZED);
    EXPECT_EQ(load("program 1bad\nend\n"), RC_SYNTAX);
    EXPECT_EQ(load("program p6, nosuchoption\nend\n"), RC_SYNTAX);
    EXPECT_EQ(load("program p7, rclass\nreturn scalar a = 2.5\nreturn local b \"t u\"\nmatrix A = (1,2)\n"
                   "return matrix M = A\nend\np7\n"), 0);
    EXPECT_EQ(load("global OUT = string(r(a)) + \"`r(b)'\" + string(el(r(M), 1, 2))\n"), 0);
    EXPECT_EQ(value("OUT"), "2.5t u2");
    EXPECT_EQ(run("program drop _all"), 0);
}

} // namespace
