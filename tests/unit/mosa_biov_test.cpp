// The functions of the matrix language that reach the dataset.
#include "../mosa_asm.h"
#include "core/mem.h"
#include "mosabi.h"
#include <iterator>

namespace
{

void host(const char *line)
{
    ASSERT_EQ(run(line), 0) << line << "\n" << session_output;
}

// id 1..6, x = 10 id with x[2] missing, b a byte, s a str3.
void begin()
{
    ms_begin();
    for (const char *line : {"clear", "mosa_clear", "set obs 6", "generate double id = _n",
                             "generate float x = 10*_n if _n != 2", "generate byte b = mod(_n, 2)",
                             "generate str3 s = \"s\" + string(_n)"})
        ASSERT_NO_FATAL_FAILURE(host(line));
}

// What a failed call left: the dataset as it was.
template <size_t N> void refuse_all(const called (&rows)[N])
{
    for (auto &r : rows) {
        uint64_t was = dsa_hash(sysdsa);
        EXPECT_EQ(value(r.text), r.want) << r.text << "\n" << session_output;
        EXPECT_EQ(dsa_hash(sysdsa), was) << r.text;
        EXPECT_EQ(dsa_check(sysdsa), 0) << r.text;
    }
}

} // namespace

TEST(MosaOv, DataAreCopied)
{
    begin();
    static const called rows[] = {
        {"ov_data(., \"id x\")", "R6,2:1 10 2 . 3 30 4 40 5 50 6 60"},
        {"ov_data((2\\5), (1, 3))", "R2,2:2 0 5 1"},
        {"ov_data((2, 3 \\ 6, .), \"x\")", "R3,1:. 30 60"},
        {"ov_data((5\\5\\1), 1)", "R3,1:5 5 1"},
        {"ov_data(., (1, 2), 0)", "R5,2:1 10 3 30 4 40 5 50 6 60"},
        {"ov_data(., 2, \"b\")", "R3,1:10 30 50"},
        {"ov_data((1, 4), 1, 3)", "R2,1:1 3"},
        {"ov_data(., 1, .)", "R6,1:1 2 3 4 5 6"},
        {"ov_data(., 1, \"\")", "R6,1:1 2 3 4 5 6"},
        {"ov_data(1, .)", "R1,4:1 10 1 ."},
        {"ov_data(J(0, 1, .), (1, 2))", "R0,2:"},
        {"ov_data((1, 2), J(1, 0, .))", "R2,0:"},
        {"ov_data(6, \"i-x\")", "R1,2:6 60"},
        {"ov_sdata((1 \\ 6), \"s\")", "S2,1:s1|s6"},
        {"ov_sdata(2, (\"s\", \"id\"))", "S1,2:s2|"},
        {"ov_sdata(., 4, \"b\")", "S3,1:s1|s3|s5"},
        {"_ov_data(3, 2)", "R1,1:30"},
        {"_ov_data(3, \"x\")", "R1,1:30"},
        {"_ov_data(7, 1)", "R1,1:."},
        {"_ov_data(1, 9)", "R1,1:."},
        {"_ov_data(1, 4)", "R1,1:."},
        {"_ov_sdata(3, 4)", "S1,1:s3"},
        {"_ov_sdata(0, 4)", "S1,1:"},
    };
    try_all(rows);
    static const called bad[] = {
        {"ov_data(7, 1)", "3300"},          {"ov_data(0, 1)", "3300"},
        {"ov_data(1, 5)", "3300"},          {"ov_data((4, 2), 1)", "3300"},
        {"ov_data(1, \"none\")", "3500"},   {"ov_data(\"1\", 1)", "3253"},
        {"ov_data(J(1, 3, 1), 1)", "3203"}, {"ov_data(1, (1 \\ 2))", "3202"},
        {"ov_data(1, 1i)", "3255"},         {"ov_data(1, 1, (1, 2))", "3204"},
        {"_ov_data(1, \"none\")", "3500"},  {"_ov_data((1, 2), 1)", "3204"},
    };
    refuse_all(bad);
}

TEST(MosaOv, DataAreStored)
{
    begin();
    static const called rows[] = {
        {"ov_store((1 \\ 2), (1, 2), (7, 8 \\ 9, 10)); ov_data((1, 2), (1, 2))", "R2,2:7 8 9 10"},
        {"ov_store(., \"id\", (1::6)); ov_data(., 1)", "R6,1:1 2 3 4 5 6"},
        {"ov_store(., \"x\", \"b\", (-1 \\ -2 \\ -3)); ov_data(., 2)", "R6,1:-1 10 -2 40 -3 60"},
        {"ov_store(1, 2, .c); ov_data(1, 2) == .c", "R1,1:1"},
        {"_ov_store(6, 2, 61); _ov_data(6, 2)", "R1,1:61"},
        {"ov_sstore((1 \\ 3), 4, (\"a\" \\ \"\")); ov_sdata((1, 3), 4)", "S3,1:a|s2|"},
        {"_ov_sstore(2, \"s\", \"zz\"); _ov_sdata(2, 4)", "S1,1:zz"},
        // A view of the same cells is read before they are written.
        {"ov_view(V = ., (1, 3), 1); ov_store((4\\3\\2), 1, V); ov_data(., 1)", "R6,1:1 3 2 1 5 6"},
    };
    try_all(rows);
    static const called bad[] = {
        {"ov_store(., 1, (1 \\ 2))", "3200"},        {"ov_store(1, (1, 2), 5)", "3200"},
        {"ov_store(1, 1, \"a\")", "3253"},           {"ov_store(1, 4, 5)", "3253"},
        {"ov_sstore(1, 1, \"a\")", "3254"},          {"ov_sstore(1, 4, 5)", "3254"},
        {"ov_store((1 \\ 7), 1, (1 \\ 2))", "3300"}, {"_ov_store(7, 1, 1)", "3300"},
        {"ov_store(1, \"nix\", 1)", "3500"},         {"_ov_store(1, 1, (1, 2))", "3204"},
    };
    refuse_all(bad);
}

// As replace: the type follows the values, and views keep seeing their variables.
TEST(MosaOv, StoringWidensTheType)
{
    begin();
    host("sort b id");
    ASSERT_EQ(ms("ov_view(V=., ., (1,2,3))\nov_sview(S=., ., 4)"), 0);
    ASSERT_EQ(ms("ov_store(1, 3, 200)"), 0) << session_output;
    EXPECT_EQ(_typlist[2], T_INT);
    EXPECT_EQ(_srtlist[0], 0) << "the data are not in order any more";
    ASSERT_EQ(ms("ov_store((1, 2), 3, (1.5 \\ 40000))"), 0);
    EXPECT_EQ(_typlist[2], T_FLOAT);
    ASSERT_EQ(ms("ov_sstore(6, \"s\", \"a longer text\")"), 0);
    EXPECT_EQ(_typlist[3], 13);
    EXPECT_STREQ(_fmtlist[3], "%13s");
    EXPECT_EQ(ms_value("V[1,3] == 1.5 & V[2,3] == 40000 & S[6] == \"a longer text\""), 1);
    host("replace b = 1e10 in 1");
    host("quietly recast double b");
    EXPECT_EQ(ms_value("all(ov_viewvars(V) :== (1,2,3)) & ov_viewvars(S) == 4"), 1);
    // A view keeps the type: what does not fit is cut or missing.
    host("generate byte c = 1");
    ASSERT_EQ(ms("ov_view(W=., ., 5)\nW[1] = 1.5\nW[2] = 1000\nW[3] = .b"), 0);
    EXPECT_EQ(_typlist[4], T_BYTE);
    EXPECT_EQ(value("(W[1], W[2], W[3] == .b)"), "R1,3:1 . 1");
    EXPECT_EQ(dsa_check(sysdsa), 0);
}

// Value after value, the command and the function come to the same types and cells.
TEST(MosaOv, StoresAsReplaceDoes)
{
    static const char *const values[] = {"1",     "-127", "-128",     "100",        "101",  "32740",
                                         "32741", "1.5",  "16777217", "2147483620", "1e10", ".b",
                                         "-0.1",  "3e9",  "-32768",   "2147483621", "."};
    constexpr size_t n = std::size(values);
    for (const char *type : {"byte", "int", "long", "float", "double"})
        for (size_t start = 0; start < n; start++) {
            ms_begin();
            host("clear");
            host("set obs 6");
            host((std::string("quietly generate ") + type + " a = 0").c_str());
            host((std::string("quietly generate ") + type + " b = 0").c_str());
            std::string all;
            for (size_t k = 0; k < 6; k++) {
                const char *v = values[(start + k * (start % 5 + 1)) % n];
                host(("quietly replace a = " + std::string(v) + " in " + std::to_string(k + 1))
                         .c_str());
                all += (k ? "\\" : "") + std::string(v);
            }
            ASSERT_EQ(ms("ov_store(., \"b\", (" + all + "))"), 0) << all;
            EXPECT_EQ(_typlist[0], _typlist[1]) << type << " " << all;
            for (uint32_t i = 1; i <= 6; i++)
                EXPECT_EQ(dsa_data(sysdsa, 1, i), dsa_data(sysdsa, 2, i)) << type << " " << all;
        }
}

// A break that comes while values are looked at: all or nothing.
TEST(MosaOv, BreaksLeaveAll)
{
    for (const char *call : {"ov_store(., (3, 2), Y)", "X = ov_data(., (1, 2), 0)",
                             "ov_dropobsif(Y[., 1])", "ov_view(X, ., ., \"b\")"})
        for (int64_t n = 1; n < 20; n++) {
            begin();
            host("quietly set obs 6000");
            ASSERT_EQ(ms("X = .\nY = (J(6000,1,300), J(6000,1,1e9))"), 0);
            uint64_t was = dsa_hash(sysdsa);
            fault_arm(F_BREAK, n, false);
            int32_t rc = ms(call);
            int64_t hits = fault_disarm();
            stopflag = 0;
            altstopflag = 0;
            EXPECT_EQ(dsa_check(sysdsa), 0) << call << n;
            if (hits == 0)
                break;
            EXPECT_TRUE(rc == 1 || rc == 3000) << call << n << " " << rc;
            EXPECT_EQ(dsa_hash(sysdsa), was) << call << n;
        }
}

TEST(MosaOv, FailedStoresLeaveAll)
{
    begin();
    for (const char *call : {"ov_store(., (3,2), Y)", "ov_sstore(., 4, T)", "_ov_store(1, 3, 500)",
                             "ov_addobs(100000)", "N = ov_addvar(\"double\", (\"p\",\"q\"))"})
        for (int64_t n = 1; n < 30; n++) {
            begin();
            ASSERT_EQ(ms("Y = (J(6,1,300), J(6,1,1e9))\nT = J(6,1,\"0123456789\")\nN = 0"), 0);
            uint64_t was = dsa_hash(sysdsa);
            fault_arm(F_MEM, n, true);
            int32_t rc = ms(call);
            int64_t hits = fault_disarm();
            EXPECT_EQ(dsa_check(sysdsa), 0) << call << n;
            // The machine itself may want memory after the call was over.
            bool after = session_output.find("<istmt>:  3900") != std::string::npos;
            EXPECT_TRUE(!rc || after || dsa_hash(sysdsa) == was) << call << n << session_output;
            if (!hits)
                break;
        }
}

TEST(MosaOv, SizeOfTheData)
{
    begin();
    static const called rows[] = {
        {"(ov_nvar(), ov_nobs())", "R1,2:4 6"},
        {"ov_addobs(2); (ov_nobs(), missing(ov_data((7, 8), 1)))", "R1,2:8 2"},
        {"_ov_addobs(1)", "R1,1:0"},
        {"_ov_sdata(9, 4)", "S1,1:"},
        {"ov_addvar(\"int\", \"n1\")", "R1,1:5"},
        {"missing(ov_data(., 5))", "R1,1:9"},
        {"ov_addvar((\"str5\", \"double\"), (\"t\", \"d\"))", "R1,2:6 7"},
        {"ov_addvar(7, \"u\")", "R1,1:8"},
        {"(ov_sdata(1, \"t\") == \"\", missing(ov_data(1, \"d\")))", "R1,2:1 1"},
        {"_ov_addvar(\"byte\", \"d\")", "R1,1:-110"},
        {"_ov_addvar(\"byte\", (\"new1\", \"1bad\"))", "R1,1:-198"},
        {"ov_nvar()", "R1,1:8"},
        {"ov_dropvar((\"t\", \"u\")); ov_nvar()", "R1,1:6"},
        {"ov_keepvar(\"id x b s\"); ov_nvar()", "R1,1:4"},
        {"ov_dropobsin((8, .)); ov_nobs()", "R1,1:7"},
        {"ov_dropobsif(ov_data(., 1) :>= .); ov_nobs()", "R1,1:6"},
        {"ov_keepobsif(ov_data(., 3)); ov_data(., 1)", "R3,1:1 3 5"},
        {"ov_keepobsin((1 \\ 3)); ov_data(., 1)", "R2,1:1 5"},
        {"ov_updata(0); ov_updata()", "R1,1:0"},
        {"ov_dropobsin(2); ov_updata()", "R1,1:1"},
    };
    try_all(rows);
    EXPECT_EQ(_typlist[2], T_BYTE);
    static const called bad[] = {
        {"ov_addvar(\"byte\", \"id\")", "3598"},
        {"ov_addvar(\"nine\", \"z\")", "3300"},
        {"ov_addvar((\"byte\", \"int\"), \"z\")", "3200"},
        {"ov_dropobsin(9)", "3300"},
        {"ov_dropobsif((1 \\ 2 \\ 3))", "3200"},
        {"ov_dropvar(\"zz\")", "3500"},
        {"ov_addobs(-1)", "3300"},
        {"ov_addobs(1e15)", "3300"},
        {"ov_keepobsin(\"1\")", "3253"},
    };
    refuse_all(bad);
    EXPECT_EQ(value("ov_keepvar(J(1, 0, .)); (ov_nvar(), ov_nobs())"), "R1,2:0 0");
    EXPECT_EQ(value("ov_addobs(3); (ov_nvar(), ov_nobs())"), "R1,2:0 3");
}

TEST(MosaOv, Variables)
{
    begin();
    host("label variable x \"the x\"");
    static const called rows[] = {
        {"ov_varindex((\"x\", \"s\"))", "R1,2:2 4"},
        {"ov_varindex(\"i\", 1)", "R1,1:1"},
        {"_ov_varindex((\"x\" \\ \"nix\" \\ \"i\"))", "R3,1:2 . ."},
        {"ov_varname((4, 1))", "S1,2:s|id"},
        {"ov_vartype(\"s\") + ov_vartype(1)", "S1,1:str3double"},
        {"(ov_isnumvar(1), ov_isnumvar(\"s\"), ov_isstrvar(4))", "R1,3:1 0 1"},
        {"ov_varlabel(2)", "S1,1:the x"},
        {"ov_varlabel(\"b\", \"a byte\"); ov_varlabel(3)", "S1,1:a byte"},
        {"ov_varlabel(3, \"\"); ov_varlabel(3)", "S1,1:"},
        {"ov_varformat(1, \"%8.2f\"); ov_varformat(\"id\")", "S1,1:%8.2f"},
        {"ov_varvaluelabel(3, \"yn\"); ov_varvaluelabel(\"b\")", "S1,1:yn"},
        {"ov_varvaluelabel(3, \"\"); ov_varvaluelabel(3)", "S1,1:"},
        {"ov_varrename(\"x\", \"z\"); (ov_varname(2), ov_varlabel(\"z\"))", "S1,2:z|the x"},
        {"(ov_isfmt(\"%9.0g\"), ov_isfmt(\"9.0g\"), ov_isnumfmt(\"%td\"), ov_isnumfmt(\"%9s\"))",
         "R1,4:1 0 1 0"},
        {"(ov_isstrfmt(\"%-12s\"), ov_isstrfmt(\"%9.2f\"), ov_isstrfmt(\"\"))", "R1,3:1 0 0"},
        {"(ov_isname(\"a_1\"), ov_isname(\"1a\"), ov_isname(\"\"), ov_isname(\"a b\"))",
         "R1,4:1 0 0 0"},
        {"T = ov_tempname(3); (cols(T), T[1] != T[2], ov_isname(T[3]))", "R1,3:3 1 1"},
        {"F = ov_tempfilename(); strlen(F) > 8", "R1,1:1"},
        {"L = .; (_ov_varlist(L, \"b id-z\"), cols(L))", "R1,2:0 3"},
        {"L", "S1,3:b|id|z"},
        {"(_ov_ivarlist(L, \"s b\"), L)", "R1,3:0 4 3"},
        {"_ov_unab(L, \"_all\"); L", "S1,1:id z b s"},
        {"L = 7; (_ov_varlist(L, \"nix\"), L)", "R1,2:111 7"},
        {"_ov_varlist(L, \"\"); (rows(L), cols(L))", "R1,2:1 0"},
    };
    try_all(rows);
    static const called bad[] = {
        {"ov_varindex(\"nix\")", "3500"},
        {"ov_varindex(\"i\")", "3500"},
        {"ov_varname(5)", "3300"},
        {"ov_varname(.)", "3300"},
        {"ov_varformat(1, \"%9s\")", "3250"},
        {"ov_varformat(1, \"junk\")", "3302"},
        {"ov_varlabel(\"nix\")", "3500"},
        {"ov_varrename(1, \"s\")", "3598"},
        {"ov_varrename(1, \"1x\")", "3598"},
        {"ov_varvaluelabel(4, \"yn\")", "3598"},
        {"ov_tempname(-1)", "3300"},
        {"ov_isname(1)", "3254"},
    };
    refuse_all(bad);
}

TEST(MosaOv, ValueLabels)
{
    begin();
    host("label drop _all");
    host("label define yn 0 \"no\" 1 \"yes\" .a \"refused\"");
    static const called rows[] = {
        {"(ov_vlexists(\"yn\"), ov_vlexists(\"ny\"))", "R1,2:1 0"},
        {"ov_vlmap(\"yn\", (1, 0, 2, 0.5, ., .a))", "S1,6:yes|no||||refused"},
        {"ov_vlmap(\"ny\", (1, 0))", "S1,2:|"},
        {"ov_vlsearch(\"yn\", (\"yes\" \\ \"maybe\"))", "R2,1:1 ."},
        {"ov_vlsearch(\"yn\", \"refused\") == .a", "R1,1:1"},
        {"V = T = .; ov_vlload(\"yn\", V, T); T", "S3,1:no|yes|refused"},
        {"(V[1], V[2], V[3] == .a)", "R1,3:0 1 1"},
        {"ov_vlmodify(\"yn\", (1, 5), (\"oui\", \"cinq\")); ov_vlmap(\"yn\", (0, 1, 5))",
         "S1,3:no|oui|cinq"},
        {"ov_vlmodify(\"yn\", 0, \"\"); ov_vlload(\"yn\", V, T); T", "S3,1:oui|cinq|refused"},
        {"ov_vlmodify(\"new\", (1 \\ 2), (\"a\" \\ \"b\")); ov_vlmap(\"new\", 2)", "S1,1:b"},
        {"ov_vlmodify(\"new\", (1 \\ 2), (\"\" \\ \"\")); ov_vlexists(\"new\")", "R1,1:0"},
        {"ov_vldrop(\"yn\"); ov_vldrop(\"yn\"); ov_vlexists(\"yn\")", "R1,1:0"},
        {"ov_vlload(\"yn\", V, T); (rows(V), rows(T))", "R1,2:0 0"},
    };
    try_all(rows);
    host("label define yn 0 \"no\"");
    static const called bad[] = {
        {"ov_vlmodify(\"yn\", (0, 1.5), (\"x\", \"y\"))", "3300"},
        {"ov_vlmodify(\"yn\", ., \"x\")", "3300"},
        {"ov_vlmodify(\"yn\", (1, 2), \"x\")", "3200"},
        {"ov_vlmodify(\"a b\", 1, \"x\")", "3598"},
        {"V = 1; ov_vlload(\"yn\", V, V)", "3002"},
    };
    refuse_all(bad);
    EXPECT_EQ(value("ov_vlmap(\"yn\", (0, 1))"), "S1,2:no|");
}

TEST(MosaOv, MacrosAndScalars)
{
    begin();
    host("capture scalar drop _all");
    host("capture matrix drop _all");
    host("global gone");
    static const called rows[] = {
        {"ov_local(\"a\", \"x `\" + \"y'\"); ov_local(\"a\")", "S1,1:x `y'"},
        {"ov_local(\"none\")", "S1,1:"},
        {"ov_global(\"OVG\", \"text\"); ov_global(\"OVG\")", "S1,1:text"},
        {"_ov_global(\"OVG\", \"two\")", "R1,1:0"},
        {"_ov_global(\"nix[c]\", \"two\")", "R1,1:111"},
        {"ov_macroexpand(\"<$\" + \"OVG>\")", "S1,1:<two>"},
        {"S = .; (_ov_macroexpand(S, \"a$\" + \"OVG\"), S == \"atwo\")", "R1,2:0 1"},
        {"ov_global(\"c(N)\")", "S1,1:6"},
        {"ov_global(\"x[why]\", \"because\"); ov_global(\"x[why]\")", "S1,1:because"},
        {"ov_global(\"x[why2]\", \"so\"); ov_char_dir(\"x\")", "S2,1:why|why2"},
        {"ov_dir(\"char\", \"x\", \"*2\", 1)", "S1,1:x[why2]"},
        {"ov_char_rm(\"x\", \"why\"); ov_char_dir(\"x\")", "S1,1:why2"},
        {"ov_char_rm(\"x\"); rows(ov_char_dir(\"x\"))", "R1,1:0"},
        {"ov_numscalar(\"q\", 2.5); ov_numscalar(\"q\")", "R1,1:2.5"},
        {"ov_strscalar(\"w\", \"word\"); ov_strscalar(\"w\")", "S1,1:word"},
        {"ov_dir(\"global\", \"numscalar\", \"*\")", "S1,1:q"},
        {"ov_dir(\"global\", \"strscalar\", \"*\")", "S1,1:w"},
        {"(rows(ov_numscalar(\"w\")), rows(ov_strscalar(\"q\")))", "R1,2:0 0"},
        {"ov_numscalar(\"q\", J(0, 0, .)); rows(ov_numscalar(\"q\"))", "R1,1:0"},
        {"ov_strscalar(\"w\", J(0, 0, \"\")); rows(ov_strscalar(\"w\"))", "R1,1:0"},
        {"ov_numscalar(\"c(k)\")", "R1,1:4"},
        {"ov_dir(\"global\", \"macro\", \"OV?\")", "S1,1:OVG"},
    };
    try_all(rows);
    static const called bad[] = {
        {"ov_local(\"a b\")", "3300"},
        {"ov_local(\"\", \"x\")", "3300"},
        {"ov_local(\"a\", 2)", "3254"},
        {"ov_global(\"_a\", \"x\")", "3300"},
        {"ov_global(\"c(N)\", \"7\")", "3300"},
        {"ov_global(\"q(N)\")", "3300"},
        {"ov_global(\"nix[c]\", \"x\")", "3598"},
        {"ov_global(\"OVG\", 9000 * \"x\")", "3492"},
        {"ov_global(\"r(a)\", \"x\", \"seen\")", "3300"},
        {"ov_numscalar(\"s(a)\", 1)", "3300"},
        {"ov_numscalar(\"1\", 1)", "3300"},
        {"ov_strscalar(\"r(a)\")", "3300"},
        {"ov_macroexpand(\"`=1+\" + \"'\")", "3598"},
        {"ov_dir(\"here\", \"macro\", \"*\")", "3300"},
    };
    refuse_all(bad);
    EXPECT_EQ(value("ov_global(\"OVG\")"), "S1,1:two");
}

TEST(MosaOv, Results)
{
    begin();
    host("capture scalar drop _all");
    host("summarize id");
    static const called rows[] = {
        {"ov_numscalar(\"r(mean)\")", "R1,1:3.5"},
        {"ov_global(\"r(N)\")", "S1,1:6"},
        {"ov_rclear(); rows(ov_numscalar(\"r(mean)\"))", "R1,1:0"},
        {"ov_numscalar(\"r(a)\", 1); ov_global(\"r(b)\", \"two\"); ov_numscalar(\"r(a)\")",
         "R1,1:1"},
        {"ov_matrix(\"r(M)\", (1, 2)); ov_matrix(\"r(M)\")", "R1,2:1 2"},
        // A name is of one sort: a number takes the place of a matrix.
        {"ov_numscalar(\"r(M)\", 5); (rows(ov_matrix(\"r(M)\")), ov_numscalar(\"r(M)\"))",
         "R1,2:0 5"},
        {"ov_global(\"r(a)\", \"text\", \"historical\"); ov_global_hcat(\"r(a)\")",
         "S1,1:historical"},
        {"ov_numscalar(\"r(h)\", 1, \"hidden\"); ov_numscalar_hcat(\"r(h)\")", "S1,1:hidden"},
        {"ov_matrix(\"r(H)\", I(2), \"hidden\"); ov_matrix_hcat(\"r(H)\")", "S1,1:hidden"},
        {"ov_numscalar_hcat(\"r(M)\") + ov_numscalar_hcat(\"r(a)\")", "S1,1:visible"},
        {"ov_dir(\"r()\", \"macro\", \"*\")", "S1,1:b"},
        {"ov_dir(\"r()\", \"hidden matrix\", \"*\", 1)", "S1,1:r(H)"},
        {"ov_global(\"r(b)\", \"\"); ov_dir(\"r()\", \"macro\", \"*\")", "S0,1:"},
        {"ov_global(\"s(x)\", \"sx\"); ov_global(\"s(x)\")", "S1,1:sx"},
        {"ov_sclear(); ov_global(\"s(x)\")", "S1,1:"},
        {"ov_numscalar(\"e(z)\", 4); ov_numscalar(\"e(z)\")", "R1,1:4"},
        {"ov_eclear(); rows(ov_numscalar(\"e(z)\"))", "R1,1:0"},
    };
    try_all(rows);
    // More than the table beside the store holds.
    for (int32_t k = 1; k <= 30; k++)
        ASSERT_EQ(ms("ov_numscalar(\"r(n" + std::to_string(k) + ")\", " + std::to_string(k) + ")"),
                  0);
    EXPECT_EQ(value("(ov_numscalar(\"r(n1)\"), ov_numscalar(\"r(n30)\"))"), "R1,2:1 30");
    ASSERT_EQ(ms("ov_numscalar(\"r(n1)\", 101)\nov_numscalar(\"r(n29)\", 129)"), 0);
    EXPECT_EQ(value("(ov_numscalar(\"r(n1)\"), ov_numscalar(\"r(n29)\"))"), "R1,2:101 129");
    // What a program returns through Mosa, and what it leaves to itself.
    for (const char *line :
         {"program ovret, rclass", "mosa: ov_numscalar(\"return(back)\", 42)",
          "mosa: ov_local(\"inside\", \"yes\")", "return local in `inside'", "end"})
        run(line);
    host("ovret");
    EXPECT_EQ(value("(ov_global(\"r(back)\"), ov_global(\"r(in)\"), ov_local(\"inside\"))"),
              "S1,3:42|yes|");
}

TEST(MosaOv, Matrices)
{
    begin();
    host("capture matrix drop _all");
    host("capture scalar drop _all");
    host("scalar taken = 1");
    static const called rows[] = {
        {"ov_matrix(\"A\", (1, 2 \\ 3, .)); ov_matrix(\"A\")", "R2,2:1 2 3 ."},
        {"ov_matrixcolstripe(\"A\")", "S2,2:|c1||c2"},
        {"ov_matrixrowstripe(\"A\", (\"eq\", \"a\" \\ \"\", \"b\")); ov_matrixrowstripe(\"A\")",
         "S2,2:eq|a||b"},
        {"ov_replacematrix(\"A\", (5, 6 \\ 7, 8)); (ov_matrix(\"A\")[2,1])", "R1,1:7"},
        {"ov_matrixrowstripe(\"A\")", "S2,2:eq|a||b"},
        {"ov_matrix(\"A\", 9); ov_matrixrowstripe(\"A\")", "S1,2:|r1"},
        {"ov_view(V = ., (1, 2), (1, 3)); ov_matrix(\"A\", V); ov_matrix(\"A\")", "R2,2:1 1 2 0"},
        {"ov_matrix(\"A\", J(0, 0, .)); rows(ov_matrix(\"A\"))", "R1,1:0"},
        {"ov_matrixrowstripe(\"A\")", "S0,2:"},
        {"X = (1, 2, 3 \\ 4, 5, 6); Y = .; ov_select(Y, X, (1, 0, 1)); Y", "R2,2:1 3 4 6"},
        {"ov_select(X, X, (0 \\ 1)); X", "R1,3:4 5 6"},
        {"ov_view(V, ., (1, 2, 3)); ov_select(W = ., V, V[., 3]); (isview(W), rows(W), W[2, 1])",
         "R1,3:1 3 3"},
        {"W[1, 2] = 99; ov_data(1, \"x\")", "R1,1:99"},
        {"ov_select(W, V, (0, 1, 1)); ov_viewvars(W)", "R1,2:2 3"},
        {"mosa_representation(W)", "S1,1:View1"},
    };
    try_all(rows);
    static const called bad[] = {
        {"ov_matrix(\"taken\", 1)", "3598"},
        {"ov_matrix(\"A\", \"x\")", "3253"},
        {"ov_matrix(\"A\", 1i)", "3253"},
        {"ov_replacematrix(\"none\", 1)", "3598"},
        {"ov_matrix(\"c(N)\")", "3300"},
        {"ov_matrixrowstripe(\"none\", (\"\", \"\"))", "3598"},
        {"ov_matrix(\"B\", J(1, 5000, 0))", "3598"},
        {"ov_select(Y, X, (1, 1))", "3200"},
        {"ov_matrixcolstripe(\"B2\", 5)", "3598"},
    };
    refuse_all(bad);
    ASSERT_EQ(ms("ov_matrix(\"B\", I(2))"), 0);
    static const called worse[] = {
        {"ov_replacematrix(\"B\", (1, 2))", "3200"},
        {"ov_matrixrowstripe(\"B\", (\"a\", \"b\"))", "3200"},
        {"ov_matrixrowstripe(\"B\", (\"a\", \"b\" \\ \"c:\", \"d\"))", "3300"},
        {"ov_matrixrowstripe(\"B\", (\"a\", \"b\" \\ \"c\", 129 * \"d\"))", "3300"},
        {"ov_matrixrowstripe(\"B\", (1, 2 \\ 3, 4))", "3254"},
    };
    refuse_all(worse);
    EXPECT_EQ(value("ov_matrixrowstripe(\"B\")"), "S2,2:|r1||r2");
}

TEST(MosaOv, Estimates)
{
    begin();
    host("ereturn clear");
    EXPECT_EQ(value("(ov_sys_lastest(), ov_estversion())"), "R1,2:0 .");
    EXPECT_EQ(value("ov_sys_getusb()"), "3598");
    EXPECT_EQ(value("ov_sys_putusb((1, 2))"), "3598");
    host("quietly replace x = 20 in 2");
    host("label variable id \"number\"");
    host("quietly regress x id");
    static const called rows[] = {
        {"round(ov_sys_getusb(), 1e-6)", "R1,2:10 0"},
        {"ov_sys_getusbstripe()", "S2,2:|id||_cons"},
        {"ov_sys_getusbvlab()", "S2,1:number|"},
        {"(ov_sys_lastest(), ov_estversion())", "R1,2:1 12.1"},
        {"ov_sys_putusb((3, 4)); ov_matrix(\"e(b)\")", "R1,2:3 4"},
        {"ov_sys_putusbstripe((\"q\", \"u\" \\ \"q\", \"v\")); ov_matrixcolstripe(\"e(V)\")",
         "S2,2:q|u|q|v"},
        {"ov_sys_putusbvlab((\"p\" \\ \"r\")); ov_varlabel(\"id\")", "S1,1:number"},
        {"ov_sys_putematrix(\"V\", I(2)); ov_sys_getematrix(\"V\")", "R2,2:1 0 0 1"},
        {"ov_matrixrowstripe(\"e(V)\")", "S2,2:q|u|q|v"},
        {"ov_sys_putematrix(\"extra\", (7, 8)); ov_matrix(\"e(extra)\")", "R1,2:7 8"},
        {"rows(ov_sys_getematrix(\"none\"))", "R1,1:0"},
        // The sample is no variable of the user, though it stands among the columns.
        {"cols(ov_data(1, .))", "R1,1:4"},
        {"ov_keepvar(\"x\"); ov_varname(1)", "S1,1:x"},
    };
    try_all(rows);
    EXPECT_EQ(value("ov_sys_putusb((1, 2, 3))"), "3200");
    EXPECT_EQ(value("ov_sys_getusb()"), "R1,2:3 4");
    EXPECT_EQ(value("ov_dropvar(\"x\"); ov_nvar()"), "R1,1:0") << "the sample went too";
}

// Panels of a time variable with a gap; what the operators give is told by hand.
TEST(MosaOv, OperatedVariables)
{
    begin();
    host("quietly replace x = 20 in 2");
    host("quietly replace id = 7 in 6");
    host("sort id");
    EXPECT_EQ(value("ov_tsrevar(\"L.x\")"), "3598") << "no time variable";
    host("char _dta[_TStvar] id");
    static const called rows[] = {
        {"ov_data(., \"L.x\")", "R6,1:. 10 20 30 40 ."},
        {"ov_data((2, 4), (\"D.x\", \"b\"))", "R3,2:10 0 10 1 10 0"},
        {"ov_view(V = ., ., \"F.x x\"); (mosa_representation(V), strofreal(V[1, .]))",
         "S1,3:View3|20|10"},
        {"k = ov_tsrevar((\"x\", \"L2.x\", \"D.x\")); k", "R1,3:2 5 6"},
        {"ov_data(4, k)", "R1,3:40 20 10"},
        {"ov_varname(k, 1)", "S1,3:x|L2.x|D.x"},
        {"ov_varname(k)[2] == ov_varname(5)", "R1,1:1"},
        {"_ov_tsrevar((\"nix\", \"s\", \"L.s\", \"L.nix\", \"i.b\", \"F.b\"))", "R1,6:. 4 . . . 7"},
        {"ov_nvar()", "R1,1:7"},
    };
    try_all(rows);
    static const called bad[] = {
        {"ov_tsrevar((\"L.x\", \"nix\"))", "3500"},
        {"ov_tsrevar((\"F3.x\", \"L.s\"))", "3598"},
        {"ov_tsrevar(\"L(1/2).x\")", "3598"},
        {"ov_store(., \"L.x\", J(6, 1, 0))", "3500"},
    };
    refuse_all(bad);
}

// Without memory a write of one item changes nothing.
TEST(MosaOv, FailedWritesLeaveTheOldItem)
{
    static const struct {
        const char *before, *call, *check, *want;
    } rows[] = {
        {"ov_numscalar(\"r(a)\", 1)", "ov_matrix(\"r(a)\", I(3))", "ov_numscalar(\"r(a)\")",
         "R1,1:1"},
        {"ov_matrix(\"r(a)\", 4)", "ov_global(\"r(a)\", 200 * \"x\")", "ov_matrix(\"r(a)\")",
         "R1,1:4"},
        {"ov_global(\"e(a)\", \"old\")", "ov_matrix(\"e(a)\", I(3))", "ov_global(\"e(a)\")",
         "S1,1:old"},
        {"ov_matrix(\"A\", (1, 2))", "ov_matrix(\"A\", I(3))", "ov_matrix(\"A\")", "R1,2:1 2"},
        {"ov_strscalar(\"w\", \"old\")", "ov_strscalar(\"w\", 200 * \"x\")", "ov_strscalar(\"w\")",
         "S1,1:old"},
        {"ov_vlmodify(\"fl\", 1, \"one\")", "ov_vlmodify(\"fl\", (1, 2), (\"uno\", \"due\"))",
         "ov_vlmap(\"fl\", (1, 2))", "S1,2:one|"},
        {"ov_global(\"OVG\", \"old\")", "ov_global(\"OVG\", 2000 * \"x\")", "ov_global(\"OVG\")",
         "S1,1:old"},
    };
    for (auto &r : rows)
        for (int64_t n = 1; n < 40; n++) {
            begin();
            ASSERT_EQ(ms("ov_rclear()\nov_eclear()"), 0);
            host("capture matrix drop _all");
            host("capture scalar drop _all");
            host("capture label drop fl");
            ASSERT_EQ(ms(r.before), 0) << r.before << session_output;
            fault_arm(F_MEM, n, true);
            int32_t rc = ms(r.call);
            int64_t hits = fault_disarm();
            bool after = session_output.find("<istmt>:  3900") != std::string::npos;
            if (rc && !after) {
                EXPECT_EQ(value(r.check), r.want) << r.call << n << session_output;
            }
            if (!hits)
                break;
            ASSERT_LT(n, 39);
        }
}
