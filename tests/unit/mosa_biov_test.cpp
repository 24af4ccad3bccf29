// The functions of the matrix language that reach the dataset.
#include "../mosa_asm.h"
#include "core/mem.h"
#include "mosabi.h"

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
