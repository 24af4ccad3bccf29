#include "exprhelp.h"
#include "data/variables.h"
#include <gtest/gtest.h>
#include <cmath>
#include <vector>

struct numrow {
    const char *text;
    double want;
};
static void check(const std::vector<numrow> &rows)
{
    for (auto &r : rows) {
        double z = number(r.text);
        if (r.want >= misval)
            EXPECT_EQ(z, r.want) << r.text;
        else
            EXPECT_NEAR(z, r.want, 1e-12 * (1 + std::fabs(r.want))) << r.text;
    }
}

TEST(machine, MissingValuesInArithmeticAndComparison)
{
    double a = mis_of(1);
    check({{".a+1", misval}, {".a*0", misval}, {"-.a", misval}, {"1/0", misval}, {"0/0", misval},
           {".a>.", 1}, {".a==.a", 1}, {".a==.b", 0}, {".<.a", 1}, {"5<.", 1}, {".z>=.z", 1},
           {".|0", 1}, {".&1", 1}, {"!.", 0}, {"1e308*10", misval}, {"8e307+8e307", misval},
           {"-8e307-8e307", misval}, {"sqrt(-1)", misval}, {"log(0)", misval},
           {"exp(1000)", misval}, {"int(.a)", a}, {"floor(.a)", a}, {"ceil(.a)", a},
           {"trunc(.a)", a}, {"round(.a)", a}, {"chop(.a,1)", a}, {"clip(.a,0,1)", a},
           {"recode(.a,1,2)", a}, {"autocode(.a,2,0,1)", a}, {"abs(.a)", misval},
           {"max(.,.a)", misval}, {"min(.a,.b)", misval}, {"mod(.a,2)", misval},
           {"irecode(.a,1)", misval}, {"float(.a)", a}, {".a", a}});
    mvmodern = false;
    check({{".a==.b", 1}, {".a>.", 0}, {"inlist(.a,.b)", 1}});
    mvmodern = true;
}

TEST(machine, PowersAndRounding)
{
    check({{"0^0", 1}, {"0^-1", misval}, {"0^2", 0}, {".^0", misval}, {"(-8)^(1/3)", misval},
           {"(-2)^3", -8}, {"(-2)^65", -36893488147419103232.0}, {"2^64", 18446744073709551616.0},
           {"2^-64", 5.421010862427522e-20}, {"2^0.5", std::sqrt(2.0)}, {"10^400", misval},
           {"round(-2.5)", -2}, {"round(2.5)", 3}, {"round(7.3,0.5)", 7.5}, {"round(5,0)", 5},
           {"round(5,.)", misval}, {"int(-2.7)", -2}, {"floor(-2.7)", -3}, {"ceil(-2.7)", -2},
           {"chop(3.0001,.001)", 3}, {"chop(3.01,.001)", 3.01}, {"clip(5,1,3)", 3},
           {"clip(5,7,.)", 7}, {"clip(5,3,1)", misval}, {"mod(-1,3)", 2}, {"mod(1,0)", misval},
           {"mod(1,-3)", misval}, {"float(.1)", double(.1f)}, {"float(1e300)", misval},
           {"sign(-3)", -1}, {"sign(0)", 0}, {"sign(.)", misval}});
}

TEST(machine, ChoosingFunctions)
{
    check({{"cond(.,1,2)", 1}, {"cond(.,1,2,3)", 3}, {"cond(0,1,2,3)", 2}, {"cond(5,1,2)", 1},
           {"max(.,1)", 1}, {"max(3,1,2)", 3}, {"min(3,.,2)", 2}, {"recode(2,1,3,5)", 3},
           {"recode(9,1,3,5)", 5}, {"recode(2,3,1)", misval}, {"irecode(2,1,2,3)", 1},
           {"irecode(9,1,2,3)", 3}, {"irecode(0,1,2)", 0}, {"autocode(5,4,0,8)", 6},
           {"autocode(99,4,0,8)", 8}, {"autocode(1,0,0,8)", misval}, {"inrange(5,1,.)", 1},
           {"inrange(.,1,.)", 0}, {"inrange(0,1,9)", 0}, {"inlist(3,1,2,3)", 1},
           {"inlist(4,1,2,3)", 0}, {"inlist(.a,1,.a)", 1}, {"inrange(\"b\",\"\",\"c\")", 1},
           {"inrange(\"\",\"\",\"\")", 0}, {"inlist(\"b\",\"a\",\"b\")", 1},
           {"missing(1,.)", 0}, {"missing(.,\"\",.a)", 1}, {"mi(\"\")", 1},
           {"missing(\"a\",.)", 0}, {"group(.)", misval}, {"reldif(1,1)", 0}, {"comb(5,2)", 10}});
    EXPECT_EQ(text_of("cond(1,\"yes\",\"no\")"), "yes");
    EXPECT_EQ(text_of("cond(.,\"yes\",\"no\",\"mis\")"), "mis");
    EXPECT_EQ(text_of("cond(0,\"yes\",\"no\")+\"!\""), "no!");
}

TEST(machine, Strings)
{
    const std::vector<std::pair<const char *, const char *>> rows = {
        {"substr(\"abc\",-2,.)", "bc"}, {"substr(\"abc\",0,1)", ""}, {"substr(\"abc\",2,1)", "b"},
        {"substr(\"abc\",-4,2)", ""}, {"substr(\"abc\",1,-1)", ""}, {"substr(\"abc\",.,1)", ""},
        {"subinstr(\"abc\",\"\",\"x\",.)", ""}, {"subinstr(\"aXbXc\",\"X\",\"--\",1)", "a--bXc"},
        {"subinstr(\"aXbXc\",\"X\",\"\",.)", "abc"},
        {"subinword(\"this is\",\"is\",\"x\",.)", "this x"}, {"word(\"a b c\",-1)", "c"},
        {"word(\"a b c\",2)", "b"}, {"word(\"a b c\",4)", ""}, {"string(3.5)", "3.5"},
        {"string(3.14159,\"%5.2f\")", "3.14"}, {"string(1,\"bad\")", ""}, {"char(65)", "A"},
        {"char(256)", ""}, {"upper(\"abC\")", "ABC"}, {"trim(\"  a b \")", "a b"},
        {"ltrim(\" a \")+\"|\"", "a |"}, {"itrim(\"a   b\")", "a b"}, {"reverse(\"abc\")", "cba"},
        {"proper(\"ab cd\")", "Ab Cd"}, {"regexr(\"abc\",\"b+\",\"X\")", "aXc"},
        {"strtoname(\"1a b\")", "_1a_b"}, {"plural(2,\"dog\")", "dogs"},
        {"plural(1,\"dog\")", "dog"}, {"\"a\"+\"b\"+\"c\"", "abc"},
    };
    for (auto &[text, want] : rows)
        EXPECT_EQ(text_of(text), want) << text;
    std::string big(200, 'x');
    EXPECT_EQ(text_of("\"" + big + "\"+\"" + big + "\"").size(), 244u);
    check({{"\"a\"<\"b\"", 1}, {"\"a\">=\"b\"", 0}, {"\"a\"!=\"b\"", 1}, {"\"\"<\"a\"", 1},
           {"length(\"abc\")", 3}, {"strpos(\"abc\",\"c\")", 3}, {"strpos(\"abc\",\"z\")", 0},
           {"real(\" 12.5 \")", 12.5}, {"real(\"x\")", misval}, {"wordcount(\" a  b \")", 2},
           {"strmatch(\"abc\",\"a*\")", 1}, {"regexm(\"abc123\",\"[0-9]+\")", 1},
           {"fmtwidth(\"%9.2f\")", 9}, {"indexnot(\"aab\",\"a\")", 3}});
    ASSERT_EQ(number("regexm(\"abc123\",\"([a-z]+)([0-9]+)\")"), 1);
    EXPECT_EQ(text_of("regexs(2)"), "123");
}

TEST(machine, ElementaryFunctionsAndConstants)
{
    check({{"_pi", M_PI}, {"exp(1)", M_E}, {"log10(1000)", 3}, {"atan2(1,1)", M_PI / 4},
           {"asinh(1)", std::asinh(1.0)}, {"tanh(.5)", std::tanh(0.5)}, {"normal(0)", 0.5},
           {"normal(1.96)", 0.9750021048517795}, {"normal(-38)", 0},
           {"invnormal(.975)", 1.959963984540054}, {"invnormal(1)", misval},
           {"lnnormal(-40)", -804.6084420137538}, {"normalden(0)", 0.3989422804014327},
           {"normalden(0,2)", 0.19947114020071635}, {"normalden(1,1,2)", 0.19947114020071635},
           {"lnnormalden(0)", -0.9189385332046727}, {"lngamma(10)", 12.801827480081469},
           {"lnfactorial(5)", std::log(120.0)}, {"logit(.5)", 0}, {"invlogit(0)", .5},
           {"maxbyte()", 100}, {"minlong()", -2147483647}, {"byteorder()", 2},
           {"epsfloat()", 0x1p-23}, {"_caller()", 12.1}, {"_by()", 0}, {"_byindex()", 1},
           {"_bylastcall()", 1}, {"_byn1()", 1}, {"_result(21)", misval}, {"_cons", 1},
           {"r(nosuch)", misval}, {"e(sample)", 0}, {"has_eprop(b)", 0}});
}

TEST(machine, DatesFromLiteralsAndParts)
{
    check({{"d(1jan1960)", 0}, {"td(31dec1959)", -1}, {"mdy(1,1,2000)", 14610},
           {"tm(1960m2)", 1}, {"tq(1961q1)", 4}, {"tw(1960w3)", 2}, {"th(1960h2)", 1},
           {"ty(1985)", 1985}, {"tc(01jan1960 00:00:01)", 1000}, {"year(d(21nov2026))", 2026},
           {"dow(d(21nov2026))", 6}, {"mofd(d(1mar1960))", 2}, {"dofm(2)", 60},
           {"hours(7200000)", 2}, {"msofminutes(2)", 120000}, {"hh(tc(02jan1960 05:06:07))", 5},
           {"date(\"21 nov 2026\",\"DMY\")", 24431}, {"dhms(1,0,0,1)", 86401000},
           {"mdyhms(1,2,1960,0,0,1)", 86401000}, {"ym(1960,3)", 2}, {"quarterly(\"1960q2\",\"YQ\")", 1},
           {"mdy(2,30,2000)", misval}, {"year(.)", misval}, {"doy(d(31dec2000))", 366}});
}

// ---- over a dataset

class MachineData : public ::testing::Test {
protected:
    static constexpr int32_t n = 9;
    xeqpgm pgm;
    toktype ti;
    std::string line;
    parinfo_t pi{};

    void SetUp() override
    {
        if (!sysdsa) {
            ASSERT_EQ(sinit0_dsa(), 0);
        }
        drop_all();
        ASSERT_EQ(dsa_add_obs(sysdsa, n, true), 0);
        const struct {
            uint8_t type;
            const char *name;
        } vars[] = {{T_BYTE, "b"}, {T_INT, "i"}, {T_LONG, "l"}, {T_FLOAT, "f"}, {T_DOUBLE, "d"},
                    {5, "name"}};
        for (auto &v : vars)
            ASSERT_GT(addvar(v.type, v.name), 0);
        _i_Kvar = _Kvar;
        for (int32_t obs = 1; obs <= n; obs++) {
            for (int32_t v = 1; v <= 5; v++)
                dsa_store(obs == 4 ? mis_of(2) : obs * 10 + v, sysdsa, uint32_t(v), uint32_t(obs));
            dsa_safe_sstore(sysdsa, 6, uint32_t(obs), obs == 7 ? "whole" : obs == 4 ? "" : "ab");
        }
        nobss1 = 1;
        nobss2 = n;
        pi.pi_obs1 = 1;
        pi.pi_obs2 = n;
        s_outlev = 5;
    }
    void TearDown() override
    {
        drop_all();
        nobss1 = nobss2 = 0;
    }
    int32_t compile(const std::string &text)
    {
        line = text;
        initialize_compexp_shared();
        ti_settok(&ti, line.data());
        return ti_compexp(&ti, &pgm, W_ANY, false, false, nullptr, 0);
    }
    double at(const std::string &text, int32_t obs)
    {
        int32_t rc = compile(text);
        return rc ? -98765 - rc : pi_xeq(&pi, &pgm, obs);
    }
    std::string sat(const std::string &text, int32_t obs)
    {
        char buffer[246];
        return compile(text) ? "?" : sxeq(&pgm, obs, buffer);
    }
};

TEST_F(MachineData, VariablesOfEveryType)
{
    for (const char *v : {"b", "i", "l", "f", "d"}) {
        EXPECT_EQ(at(v, 3), 30 + (strchr("bilfd", *v) - "bilfd") % 5 + 1) << v;
        EXPECT_EQ(at(v, 4), mis_of(2)) << v;
        EXPECT_EQ(at(std::string(v) + ">.a", 4), 1) << v;
    }
    EXPECT_EQ(sat("name", 7), "whole");
    EXPECT_EQ(sat("nam+\"!\"", 1), "ab!");  // abbreviated
    ovata_varabbrev = false;
    EXPECT_EQ(compile("nam"), 111);
    ovata_varabbrev = true;
    EXPECT_EQ(at("missing(b,name)", 4), 1);
    EXPECT_EQ(at("length(name)", 7), 5);
}

TEST_F(MachineData, SubscriptsStayInTheGroup)
{
    EXPECT_GE(at("b[0]", 1), misval);
    EXPECT_GE(at("b[_N+1]", 1), misval);
    EXPECT_GE(at("b[.]", 1), misval);
    EXPECT_EQ(at("b[2.9]", 1), 21);
    EXPECT_EQ(at("b[b[1]-9]", 1), 21);
    EXPECT_EQ(at("b[_n-1]", 3), 21);
    EXPECT_EQ(sat("name[_N+1]", 1), "");
    EXPECT_EQ(sat("name[7]", 1), "whole");
    nobss1 = 5;
    nobss2 = 8;
    EXPECT_EQ(at("b[1]", 6), 51);
    EXPECT_EQ(at("_n", 6), 2);
    EXPECT_EQ(at("_N", 6), 4);
    EXPECT_GE(at("b[0]", 6), misval);
    EXPECT_GE(at("b[5]", 6), misval);
}

TEST_F(MachineData, SumsRestartAtTheFirstObservation)
{
    ASSERT_EQ(compile("sum(1)+sum(b)"), 0);
    for (int pass = 0; pass < 2; pass++) {
        double total = 0;
        for (int32_t obs = 1; obs <= n; obs++) {
            total += 1 + (obs == 4 ? 0 : obs * 10 + 1);
            EXPECT_EQ(pi_xeq(&pi, &pgm, obs), total) << obs;
        }
    }
    pi.pi_obs1 = 3;
    ASSERT_EQ(compile("group(4)"), 0);
    EXPECT_EQ(pi_xeq(&pi, &pgm, 3), 1);
    EXPECT_EQ(pi_xeq(&pi, &pgm, 9), 4);
    EXPECT_EQ(at("group(-1)", 5), misval);
}

TEST_F(MachineData, NothingBeyondTheDataIsRead)
{
    drop_all();
    nobss1 = 1;
    nobss2 = 0;
    EXPECT_EQ(compile("b"), 111);
    ASSERT_GT(addvar(T_FLOAT, "x"), 0);
    ASSERT_GT(addvar(4, "s"), 0);
    _i_Kvar = _Kvar;
    EXPECT_GE(at("x", 1), misval);
    EXPECT_GE(at("x[1]", 1), misval);
    EXPECT_EQ(sat("s", 1), "");
    EXPECT_EQ(at("_N", 1), 0);
}

TEST_F(MachineData, BlocksGiveTheBitsOfSingleRuns)
{
    dsa_store(0, sysdsa, 5, 2);
    dsa_store(-3.5, sysdsa, 5, 3);
    for (const char *text :
         {"b", "d*i+l/f-2", "d>.a", "d==f|b<20&!i", "sqrt(d)", "log(d-b)", "exp(d)", "int(d/3)",
          "floor(d)", "ceil(-d)", "float(d/7)", "-d", "abs(d)", "d^2", "(d/b)^-.5", "1/d", "_n*_N",
          "d>=_n", "d<=.", "d~=.b", "d*1e307", "_cons+_rc", "(1+(2+(3+(4+d))))"}) {
        ASSERT_EQ(compile(text), 0) << text;
        ASSERT_TRUE(xeq_can_block(&pgm)) << text;
        for (bool modern : {true, false}) {
            mvmodern = modern;
            double out[n + 2];
            xeq_block(&pi, &pgm, 1, n + 2, out);  // the last two rows do not exist
            for (int32_t obs = 1; obs <= n + 2; obs++) {
                double one = pi_xeq(&pi, &pgm, obs);
                EXPECT_EQ(memcmp(&one, &out[obs - 1], 8), 0) << text << " " << obs;
            }
        }
        mvmodern = true;
    }
    for (const char *text : {"sum(b)", "b[_n-1]", "runiform()", "name==\"ab\"", "name", "max(b,1)"}) {
        ASSERT_EQ(compile(text), 0) << text;
        EXPECT_FALSE(xeq_can_block(&pgm)) << text;
    }
}
