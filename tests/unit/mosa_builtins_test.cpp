// The built-in functions called from the language: values reckoned by hand or with another
// program's arithmetic, wrong arguments, and the rows that are not built yet.
#include "../mosa_asm.h"
#include "mosa/compiler.h"
#include "mosa/bihandlers.h"
#include "mosabi.h"
#include "mosahelp.h"
#include <filesystem>
#include <fstream>

static const called arithmetic[] = {
    {"abs((-1.5, 2, .))", "R1,3:1.5 2 ."},
    {"abs(3 - 4i)", "R1,1:5"},
    {"exp((0, 1, 1000, .))", "R1,4:1 2.718281828 . ."},
    {"exp(1i * 3.14159265358979324 / 2) :- 1i :+ 1", "C1,1:1+0i"},
    {"log((1, 10, 0, .))", "R1,4:0 2.302585093 . ."},
    {"ln(8) / ln(2)", "R1,1:3"},
    {"ln(C(-1))", "C1,1:0+3.141592654i"},
    {"sqrt((16, 2, -1))", "R1,3:4 1.414213562 ."},
    {"sqrt(C(-4))", "C1,1:0+2i"},
    {"sqrt(3 + 4i)", "C1,1:2+1i"},
    {"factorial((0, 5, 10))", "R1,3:1 120 3628800"},
    {"lnfactorial(170)", "R1,1:706.5730622"},
    {"lngamma((1, 5.5))", "R1,2:0 3.957813968"},
    {"digamma(1)", "R1,1:-0.5772156649"},
    {"trigamma(1)", "R1,1:1.644934067"},
    {"sin((0, 1))", "R1,2:0 0.8414709848"},
    {"cos((0, 1))", "R1,2:1 0.5403023059"},
    {"tan(1)", "R1,1:1.557407725"},
    {"sinh(1)", "R1,1:1.175201194"},
    {"cosh(1)", "R1,1:1.543080635"},
    {"sin(1i)", "C1,1:0+1.175201194i"},
    {"asinr((1, 2))", "R1,2:1.570796327 ."},
    {"acosr((1, 0))", "R1,2:0 1.570796327"},
    {"atanr(1)", "R1,1:0.7853981634"},
    {"trunc((-1.7, 1.7, .))", "R1,3:-1 1 ."},
    {"floor((-1.7, 1.7))", "R1,2:-2 1"},
    {"ceil((-1.7, 1.7))", "R1,2:-1 2"},
    {"round((2.5, -2.5, 3.14159, .))", "R1,4:3 -2 3 ."},
    {"round(3.14159, .01)", "R1,1:3.14"},
    {"mod((7, -7, 7.5), 3)", "R1,3:1 2 1.5"},
    {"reldif(10, 11)", "R1,1:0.08333333333"},
    {"mreldif((1, 2), (1, 3))", "R1,1:0.25"},
    {"normal((0, 1.959963984540054))", "R1,2:0.5 0.975"},
    {"invnormal(.975)", "R1,1:1.959963985"},
    {"normalden(0)", "R1,1:0.3989422804"},
    {"Re((1 + 2i, 3))", "R1,2:1 3"},
    {"Im((1 + 2i, 3))", "R1,2:2 0"},
    {"C(1, -2)", "C1,1:1-2i"},
    {"C((1, 2))", "C1,2:1+0i 2+0i"},
    {"conj(1 + 2i)", "C1,1:1-2i"},
    {"arg(1i)", "R1,1:1.570796327"},
    {"epsilon(1) * 2 ^ 52", "R1,1:1"},
    {"mindouble() < -1e307", "R1,1:1"},
    {"maxdouble() < .", "R1,1:1"},
    {"smallestdouble() > 0", "R1,1:1"},
};

static const called shapes[] = {
    {"rows(J(2, 3, 1))", "R1,1:2"},
    {"cols(J(2, 3, 1))", "R1,1:3"},
    {"length(J(2, 3, 1))", "R1,1:6"},
    {"sizeof(J(2, 3, 1))", "R1,1:48"},
    {"isreal(1)", "R1,1:1"},
    {"iscomplex(1i)", "R1,1:1"},
    {"isstring(1)", "R1,1:0"},
    {"ispointer(NULL)", "R1,1:1"},
    {"isview(1)", "R1,1:0"},
    {"eltype((1, 2i))", "S1,1:complex"},
    {"orgtype((1 \\ 2))", "S1,1:colvector"},
    {"orgtype(J(0, 0, .))", "S1,1:matrix"},
    {"mosa_representation(1)", "S1,1:Array"},
    {"I(2)", "R2,2:1 0 0 1"},
    {"I(2, 3)", "R2,3:1 0 0 0 1 0"},
    {"J(1, 2, \"ab\")", "S1,2:ab|ab"},
    {"J(0, 2, 1i)", "C0,2:"},
    {"rowshape((1, 2, 3, 4, 5, 6), 2)", "R2,3:1 2 3 4 5 6"},
    {"colshape((1, 2, 3, 4, 5, 6), 2)", "R3,2:1 2 3 4 5 6"},
    {"diagonal((1, 2 \\ 3, 4))", "R2,1:1 4"},
    {"sw1 = 1; sw2 = \"a\"; swap(sw1, sw2); sw1", "S1,1:a"},
    {"issymmetric((1, 2 \\ 2, 1))", "R1,1:1"},
    {"issymmetric((1, 1i \\ 1i, 1))", "R1,1:0"},
    {"issymmetriconly((1, 1i \\ 1i, 1))", "R1,1:1"},
    {"ma = (1, 9 \\ 2, 3); _makesymmetric(ma); ma", "R2,2:1 2 2 3"},
    {"ma = (1, 9 \\ 2, 3); _transpose(ma); ma", "R2,2:1 2 9 3"},
    {"ma = (1, 9); _fillmissing(ma); ma", "R1,2:. ."},
    {"missingof(\"a\")", "S1,1:"},
    {"select((1, 2 \\ 3, 4 \\ 5, 6), (1 \\ 0 \\ 1))", "R2,2:1 2 5 6"},
    {"select((1, 2, 3), (0, 1, 1))", "R1,2:2 3"},
    {"order((3, 1 \\ 1, 2 \\ 3, 0), (1, 2))", "R3,1:2 3 1"},
    {"order((\"b\" \\ \"a\"), 1)", "R2,1:2 1"},
    {"order((3 \\ 1 \\ 2), -1)", "R3,1:1 3 2"},
    {"ma = (10 \\ 20 \\ 30); _collate(ma, (3 \\ 1 \\ 2)); ma", "R3,1:30 10 20"},
    {"lc = 5; sys_linkcount(lc)", "R1,1:2"}, // its name and the statement,
    {"sys_incrlinkcount(lc); sys_linkcount(lc)", "R1,1:3"},
    {"sys_decrlinkcount(lc); sys_linkcount(lc)", "R1,1:2"},
    {"isfleeting(1 + 1)", "R1,1:1"},
};

static const called sums[] = {
    {"sum((1, 2 \\ 3, .))", "R1,1:6"},
    {"sum((1, 2 \\ 3, .), 1)", "R1,1:."},
    {"sum((1, 1i))", "C1,1:1+1i"},
    {"rowsum((1, 2 \\ 3, .))", "R2,1:3 3"},
    {"colsum((1, 2 \\ 3, .))", "R1,2:4 2"},
    {"colsum((1, 2 \\ 3, .), 1)", "R1,2:4 ."},
    {"quadsum((1e16, 1, -1e16))", "R1,1:1"},
    {"quadrowsum((1e16, 1, -1e16))", "R1,1:1"},
    {"quadcolsum((1, 2 \\ 3, 4))", "R1,2:4 6"},
    {"runningsum((1, 2, ., 4))", "R1,4:1 3 3 7"},
    {"minmax((3, ., 1))", "R1,2:1 3"},
    {"rowminmax((3, 1 \\ 5, 9))", "R2,2:1 3 5 9"},
    {"colminmax((3, 1 \\ 5, 9))", "R2,2:3 1 5 9"},
    {"all((1, 2, .))", "R1,1:1"},
    {"all((1, 0))", "R1,1:0"},
    {"any((0, 0))", "R1,1:0"},
    {"any((0, 3))", "R1,1:1"},
    {"allof((2, 2), 2)", "R1,1:1"},
    {"anyof((\"a\", \"b\"), \"c\")", "R1,1:0"},
    {"missing((1, ., .))", "R1,1:2"},
    {"nonmissing((1, ., .))", "R1,1:1"},
    {"rowmissing((1, . \\ 2, 3))", "R2,1:1 0"},
    {"colmissing((1, . \\ 2, 3))", "R1,2:0 1"},
    {"hasmissing((1, .))", "R1,1:1"},
    {"cross((1, 2 \\ 3, 4), (5 \\ 6))", "R2,1:23 34"},
    {"cross((1 \\ 2), 1, (10 \\ 20), (3 \\ 4), 0)", "R2,1:190 110"},
};

static const called texts[] = {
    {"strlen((\"abc\", \"\"))", "R1,2:3 0"},
    {"substr(\"abcdef\", 2, 3)", "S1,1:bcd"},
    {"substr(\"abcdef\", -2)", "S1,1:ef"},
    {"substr(\"abcdef\", 3, .)", "S1,1:cdef"},
    {"substr(\"abc\", 9, 1)", "S1,1:"},
    {"ascii(\"aZ\")", "R1,2:97 90"},
    {"char((97, 66))", "S1,1:aB"},
    {"strpos((\"hello\", \"xx\"), \"l\")", "R1,2:3 0"},
    {"indexnot(\"aab\", \"a\")", "R1,1:3"},
    {"strlower(\"AbC\")", "S1,1:abc"},
    {"strupper(\"AbC\")", "S1,1:ABC"},
    {"strproper(\"joan o'neil\")", "S1,1:Joan O'Neil"},
    {"strreverse(\"abc\")", "S1,1:cba"},
    {"strtrim(\"  a  b \")", "S1,1:a  b"},
    {"strltrim(\"  a \")", "S1,1:a "},
    {"strrtrim(\"  a \")", "S1,1:  a"},
    {"stritrim(\"a   b\")", "S1,1:a b"},
    {"strmatch((\"abc\", \"xbc\"), \"a*\")", "R1,2:1 0"},
    {"strmatch(\"abcabd\", \"*b?\")", "R1,1:1"},
    {"subinstr(\"banana\", \"a\", \"o\")", "S1,1:bonono"},
    {"subinstr(\"banana\", \"a\", \"oo\", 2)", "S1,1:boonoona"},
    {"tokens(\" one  two\")", "S1,2:one|two"},
    {"tokens(\"a+b\", \"+\")", "S1,3:a|+|b"},
    {"strofreal((1.5, .))", "S1,2:1.5|."},
    {"strofreal(2 / 3, \"%6.3f\")", "S1,1:0.667"},
    {"sr = .; sn = _strtoreal((\"1e3\", \"x\"), sr); (sn, sr)", "R1,3:1 1000 ."},
    {"sprintf(\"%s=%5.2f%%\", \"a\", 1.236)", "S1,1:a= 1.24%"},
};

static const called algebra[] = {
    {"ma = (4, 2 \\ 2, 5); _cholesky(ma); ma", "R2,2:2 0 1 2"},
    {"ma = (1, 2 \\ 2, 1); _cholesky(ma); ma", "R2,2:. . . ."},
    {"invsym((2, 0 \\ 0, 4))", "R2,2:0.5 0 0 0.25"},
    {"invsym((4, 2 \\ 2, 5)) * 16", "R2,2:5 -2 -2 4"},
    {"invsym((1, 1 \\ 1, 1))", "R2,2:1 0 0 0"},
    {"ma = (2, 0 \\ 0, 4); _invsym(ma); ma", "R2,2:0.5 0 0 0.25"},
    {"ma = (0, 1 \\ 2, 3); lp = .; _lud2_la(ma, lp); ma", "R2,2:2 3 0 1"},
    {"lp", "R2,1:2 2"},
    {"ma = (1, 2 \\ 3, 4); _luinv_la(ma); ma", "R2,2:-2 1 1.5 -0.5"},
    {"ma = (1, 2 \\ 2, 4); _luinv_la(ma)", "R1,1:1"},
    {"ma = (1, 2 \\ 3, 4); mb = (5 \\ 6); _lusolve_la(ma, mb); mb", "R2,1:-4 4.5"},
    {"ma = (3, 0 \\ 0, -4); sv = mv = .; _svd_la(ma, sv, mv); sv", "R2,1:4 3"},
    {"round(ma * (sv :* mv), 1e-9)", "R2,2:3 0 0 -4"},
    {"ma = (2, 1 \\ 1, 2); ex = el = .; _symeigen_la(ma, ex, el); el", "R1,2:3 1"},
    {"round(ex * (el' :* ex'), 1e-9)", "R2,2:2 1 1 2"},
};

static const called system_calls[] = {
    {"callersversion()", "R1,1:12.1"}, // the console
    {"bt_caller()", "R1,1:12.1"},
    {"args()", "R1,1:0"},
    {"byteorder()", "R1,1:2"},
    {"ovataversion()", "R1,1:1210"},
    {"ovatasetversion(); ovatasetversion()", "R1,1:1210"},
    {"favorspeed() :* 0", "R1,1:0"},
    {"c(\"N\")", "R1,1:3"},
    {"c(\"nothing\")", "3300"},
    {"querybreakintr()", "R1,1:1"},
    {"setbreakintr(0)", "R1,1:1"},
    {"setbreakintr(1)", "R1,1:0"},
    {"breakkeyreset(); breakkey()", "R1,1:0"},
    {"crexternal(\"glob\") == NULL", "R1,1:0"},
    {"crexternal(\"glob\") == NULL", "R1,1:1"},
    {"*findexternal(\"glob\") = 77; valofexternal(\"glob\")", "R1,1:77"},
    {"nameexternal(findexternal(\"glob\"))", "S1,1:glob"},
    {"direxternal(\"gl*\")", "S1,1:glob"},
    {"rmexternal(\"glob\"); findexternal(\"glob\") == NULL", "R1,1:1"},
    {"valofexternal(\"glob\")", "R0,0:"},
    {"rseed(1); ra = runiform(2, 3); rseed(1); ra == runiform(2, 3)", "R1,1:1"},
    {"ra = runiform(1, 1000); minmax(ra) :- .5 :> 0", "R1,2:0 1"},
    {"abs(sum(rnormal(1, 10000, 5, 1)) / 10000 - 5) < .05", "R1,1:1"},
    {"ov_nobs(), ov_nvar()", "R1,2:3 2"},
    {"vv = .; ov_view(vv, ., 1); vv", "R3,1:1 2 3"},
    {"ov_viewvars(vv)", "R1,1:1"},
    {"ov_viewobs(vv)", "R3,1:1 2 3"},
    {"ov_view(vv, (2 \\ 3), \"u\"); mosa_representation(vv)", "S1,1:View2"},
    {"vw = .; ov_subview(vw, vv, 2, .); vw", "R1,1:3"},
    {"ov_sview(vw, 1, \"t\"); vw", "S1,1:n1"},
    {"ov_view(vv, ., 1, \"u\"); rows(vv)", "R1,1:3"},
    {"ovata(\"replace u = 9 in 1\", 1); vv[1]", "R1,1:9"},
    {"_ovata(\"nosuch\", 1)", "R1,1:199"},
    {"error(0)", "R1,1:0"},
    {"_error(3352)", "3352"},
    {"_error(\"text\")", "3498"},
    {"exit(7); 1", "7"},
    {"printf(\"x\"); errprintf(\"x\"); display(\"x\"); displayas(\"result\"); displayflush(); 1",
     "R1,1:1"},
    {"atan2(1, 1)", "R1,1:0.7853981634"},
};

static void make_data()
{
    run("drop _all");
    run("set obs 3");
    run("generate u = _n");
    run("generate str4 t = \"n\" + string(_n)");
}

TEST(MosaBuiltins, Arithmetic)
{
    try_all(arithmetic);
}
TEST(MosaBuiltins, Shapes)
{
    try_all(shapes);
}
TEST(MosaBuiltins, Sums)
{
    try_all(sums);
}
TEST(MosaBuiltins, Texts)
{
    try_all(texts);
}
TEST(MosaBuiltins, Algebra)
{
    try_all(algebra);
}
TEST(MosaBuiltins, SystemAndData)
{
    make_data();
    ASSERT_EQ(ms("real scalar bt_caller() return(callersversion())"), 0);
    try_all(system_calls);
}

// A function that has come to life without a call in any of the tables shows up here.
TEST(MosaBuiltins, EveryBuiltFunctionIsTried)
{
    std::string all;
    for (const char *dir : {"/tests/unit", "/tests/scripts"})
        for (auto &f : std::filesystem::directory_iterator(OVATA_SOURCE_DIR + std::string(dir))) {
            if (!f.path().filename().string().starts_with("mosa"))
                continue;
            std::ifstream in(f.path());
            all.append(std::istreambuf_iterator<char>(in), {});
        }
    for (int32_t i = 0; i < m_nbuiltin; i++) {
        std::string call = std::string(m_bitable[i].name) + "(";
        size_t at = 0;
        auto handler = m_bitable[i].handler;
        bool found = !handler || handler == bi_xl || handler == bi_haver; // they only refuse
        while (!found && (at = all.find(call, at)) != std::string::npos)
            found = !isalnum(uint8_t(all[at++ - 1])) && all[at - 2] != '_';
        EXPECT_TRUE(found) << call;
    }
}

TEST(MosaBuiltins, WrongArguments)
{
    static const called rows[] = {
        {"abs(\"a\")", "3251"},
        {"rowshape((1, 2, 3), 2)", "3200"},
        {"sqrt(NULL)", "3251"},
        {"Re(\"a\")", "3251"},
        {"mod((1, 2), (1, 2, 3))", "3200"},
        {"mod(1i, 2)", "3253"},
        {"diagonal(\"a\")", "3251"},
        {"select((1, 2), (1, 0, 1))", "3200"},
        {"order((1 \\ 2), 2)", "3300"},
        {"char(300)", "3300"},
        {"ascii(1)", "3254"},
        {"strlen(1)", "3254"},
        {"substr(\"a\", \"b\")", "3253"},
        {"tokens((\"a\", \"b\"))", "3204"},
        {"strofreal(1, \"%q\")", "3302"},
        {"sprintf(\"%g\")", "3001"},
        {"sprintf(\"%g\", 1, 2)", "3001"},
        {"sprintf(\"%g\", \"a\")", "3253"},
        {"J(1, 1, (1, 2))", "3204"},
        {"I(-1)", "3300"},
        {"ma = (1, 2); _cholesky(ma)", "3205"},
        {"cross((1, 2), (1 \\ 2))", "3200"},
        {"ma = (2, 1 \\ 1, 2); mb = .; _symeigen_la(ma, mb, mb)", "3002"},
        {"ma = (2, 1 \\ 1, 2); _svd_la(ma, ma, ma)", "3002"},
        {"ma = (2, 1 \\ 1, 2); _lusolve_la(ma, ma)", "3002"},
        {"sum(\"a\")", "3251"},
        {"ov_viewvars(1)", "3104"},
        {"vv = .; ov_view(vv, 5, 1)", "3300"},
        {"ov_view(vv, ., \"zz\")", "3500"},
        {"rseed((1, 2))", "3204"},
        {"runiform(-1, 1)", "3300"},
        {"runiform(.5i, 1)", "3253"},
        {"findexternal(\"\")", "3300"},
        {"nameexternal(1)", "3257"},
        {"_error(0)", "3300"},
        {"abs()", "3000"}, // counted by the compiler
        {"sqrt(1, 2)", "3000"},
    };
    make_data();
    try_all(rows);
}

// One row each way round: what is built is told from what answers 3996.
TEST(MosaBuiltins, RowsNotBuilt)
{
    static const char *const want =
#include "notbuilt_functions.inc"
        ;
    std::string found;
    for (int32_t i = 0; i < m_nbuiltin; i++)
        if (!m_bitable[i].handler)
            found += std::string(m_bitable[i].name) + "\n";
    EXPECT_EQ(found, want);
    EXPECT_EQ(m_nbuiltin, 722);
    if (!found.empty()) {
        EXPECT_EQ(value(found.substr(0, found.find('\n')) + "()"), "3996");
    }
}

// A record whose code never came is told from one whose code is damaged.
TEST(MosaBuiltins, RecordsWithoutCode)
{
    session();
    ASSERT_NE(m_mkfcn("", "hollow", "", 0, MT_REAL, OT_SCALAR), nullptr);
    EXPECT_EQ(ms("hollow()"), 3995);
}
