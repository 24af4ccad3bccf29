// Matrices that are views, while the dataset under them changes.
#include "mosahelp.h"

namespace
{

void host(const char *line)
{
    ASSERT_EQ(run(line), 0) << line << "\n" << session_output;
}

// id 1..6, x = 10 id, b a byte, s a string of at most 3 bytes; V sees id, x and b, S sees s.
void begin()
{
    ms_begin();
    for (const char *line : {"drop _all", "mosa_clear", "set obs 6", "generate double id = _n",
                             "generate double x = 10*_n", "generate byte b = mod(_n, 2)",
                             "generate str3 s = \"s\" + string(_n)"})
        ASSERT_NO_FATAL_FAILURE(host(line));
    ASSERT_EQ(ms("ov_view(V=., ., (\"id\",\"x\",\"b\"))\nov_sview(S=., ., \"s\")"), 0)
        << session_output;
}

// What a statement with an error answers.
int32_t code_of(const char *text)
{
    return ms(text);
}

} // namespace

TEST(MosaViews, SeeTheDataAndWriteThem)
{
    begin();
    EXPECT_EQ(ms_value("V[4,2]"), 40);
    host("quietly replace x = -1 in 4");
    EXPECT_EQ(ms_value("V[4,2]"), -1);
    EXPECT_EQ(ms_value("S[2] == \"s2\""), 1);
    host("quietly save seen.dta, replace");
    EXPECT_FALSE(s_updata);
    EXPECT_EQ(ms_value("sum(V[.,1])"), 21);
    EXPECT_FALSE(s_updata) << "reading changes nothing";
    ASSERT_EQ(ms("V[2,1] = 77"), 0);
    EXPECT_TRUE(s_updata);
    EXPECT_EQ(dsa_data(sysdsa, 1, 2), 77);
    host("quietly save seen.dta, replace");
    ASSERT_EQ(ms("S[6] = \"abcdef\""), 0);
    EXPECT_TRUE(s_updata);
    char text[256];
    EXPECT_STREQ(dsa_sdata(sysdsa, 4, 6, text), "abc") << "the variable keeps its width";
    // The store keeps the variable's type; a column and a block go the same way.
    ASSERT_EQ(ms("V[(1\\2),(1,2)] = (1.5,2.5\\3.5,4.5)\nV[.,3] = J(6,1,3)"), 0) << session_output;
    EXPECT_EQ(dsa_data(sysdsa, 2, 2), 4.5);
    EXPECT_EQ(dsa_data(sysdsa, 3, 6), 3);
    EXPECT_EQ(ms_value("V[1,1] + V[2,2]"), 6);
}

TEST(MosaViews, FollowTheVariables)
{
    begin();
    host("drop id");
    EXPECT_EQ(ms_value("all(ov_viewvars(V)[(2,3)] :== (1,2)) & V[3,2] == 30 & V[3,3] == 1"), 1);
    EXPECT_EQ(ms_value("S[3] == \"s3\""), 1) << "the string moved from 4 to 3";
    host("order s");
    EXPECT_EQ(ms_value("missing(V[.,2])"), 6) << "number 1 is text now";
    EXPECT_EQ(ms_value("S[1] == \"\""), 1) << "number 3 is a number now";
    host("order x b s");
    EXPECT_EQ(ms_value("V[3,2]"), 30);
    host("drop _all");
    EXPECT_EQ(ms_value("rows(V) == 6 & cols(V) == 3 & missing(V) == 18"), 1);
    ASSERT_EQ(ms("V[1,1] = 5"), 0) << "nowhere to go, and no harm";
    EXPECT_EQ(_Kvar, 0);
}

TEST(MosaViews, FollowTheObservations)
{
    begin();
    host("quietly drop in 5/6");
    EXPECT_EQ(ms_value("missing(V[(5\\6),.])"), 6);
    EXPECT_EQ(ms_value("V[4,2]"), 40);
    ASSERT_EQ(ms("V[6,2] = 1"), 0);
    EXPECT_EQ(_Nobs, 4);
    EXPECT_EQ(dsa_check(sysdsa), 0);
    host("quietly generate down = -x");
    host("sort down");
    EXPECT_EQ(ms_value("V[1,2]"), 40);
    host("preserve");
    host("drop _all");
    EXPECT_EQ(ms_value("missing(V)"), 18);
    EXPECT_EQ(ms_value("S[2] == \"\""), 1);
    host("restore");
    EXPECT_EQ(ms_value("V[1,2]"), 40);
    EXPECT_EQ(ms_value("S[1] == \"s4\""), 1);
    host("quietly set obs 8");
    EXPECT_EQ(ms_value("missing(V[6,.])"), 3) << "a row come into being again";
}

TEST(MosaViews, FormsOfSelection)
{
    begin();
    host("quietly replace x = . in 2");
    const struct {
        const char *made, *check;
    } rows[] = {
        {"ov_view(U=., ., .)", "cols(U)==4 & U[2,1]==2 & missing(U[.,4])==6"}, // s is text
        {"ov_sview(U=., ., (\"x\",\"s\"))", "U[3,1]==\"\" & U[3,2]==\"s3\""},
        {"ov_view(U=., ., \"i-b\")", "cols(U)==3"},
        {"ov_view(U=., ., \"*d b\")", "all(ov_viewvars(U) :== (1,3))"},
        {"ov_view(U=., (2,4), (1,2))", "rows(U)==3 & U[1,1]==2 & U[3,2]==40"},
        {"ov_view(U=., (2\\5), \"id x\")", "rows(U)==2 & cols(U)==2 & U[2,1]==5"},
        {"ov_view(U=., (.,2\\5,.), 1)", "all(ov_viewobs(U) :== (1\\2\\5\\6))"},
        {"ov_view(U=., ., (1,2), \"b\")", "all(U[.,1] :== (1\\3\\5))"},
        {"ov_view(U=., ., (1,2), 3)", "all(U[.,1] :== (1\\3\\5))"},
        {"ov_view(U=., ., (1,2), 0)", "all(U[.,1] :== (1\\3\\4\\5\\6))"},
        {"ov_view(U=., ., (1,2), .)", "rows(U)==6"},
        {"ov_subview(U=., V, (2,4), (3\\1))", "rows(U)==3 & U[1,2]==2 & U[2,1]==1"},
        {"ov_subview(U=., V, (6\\1), 2)", "U[1]==60 & U[2]==10"},
        {"V2 = V", "isview(V) & !isview(V2) & V2[6,2]==60"},
        {"ov_view(U=., ., 1)\nU = U", "!isview(U) & U[6]==6"},
        {"ov_view(U=., ., (1,2))\nov_view(W=., ., (2,1))\nkeep = V[.,(1,2)]\nU[.,.] = W",
         "V[.,(2,1)]==keep"}, // two views of the same observations
        {"U[.,.] = W", "V[.,(1,2)]==keep"},
    };
    for (const auto &r : rows) {
        ASSERT_EQ(ms(r.made), 0) << r.made << "\n" << session_output;
        EXPECT_EQ(ms_value(r.check), 1) << r.made << " " << session_output;
    }
    const struct {
        const char *text;
        int32_t code;
    } bad[] = {
        {"ov_view(U=., 7, 1)", 3300},
        {"ov_view(U=., 0, 1)", 3300},
        {"ov_view(U=., (4,2), 1)", 3300},
        {"ov_view(U=., ., 5)", 3300},
        {"ov_view(U=., ., (1\\2))", 3202},
        {"ov_view(U=., (1,2,3), 1)", 3203},
        {"ov_view(U=., ., 1, (1,2))", 3204},
        {"ov_view(U=., ., \"none\")", 3500},
        {"ov_view(U=., ., \"n*\")", 3500},
        {"ov_view(U=., ., 1+1i)", 3255},
        {"ov_subview(U=., 5, 1, 1)", 3104},
        {"V++", 3103},
    };
    for (const auto &b : bad)
        EXPECT_EQ(code_of(b.text), b.code) << b.text << "\n" << session_output;
    EXPECT_EQ(ms_value("V[6,2]"), 60);
}

// Results through views agree with results through copies.
TEST(MosaViews, CountLikeCopies)
{
    begin();
    ASSERT_EQ(ms("W = V\nT = S"), 0);
    for (const char *e : {"V'V == W'W",
                          "V*W' == W*V'",
                          "V:+1 == W:+1",
                          "V + V == W + W",
                          "(V,W) == (W,V)",
                          "(V\\V) == (W\\W)",
                          "V[|2,1\\4,2|] == W[|2,1\\4,2|]",
                          "V[(3\\1),.] == W[(3\\1),.]",
                          "-V == -W",
                          "V :> 3 == W :> 3",
                          "sum(V) == sum(W)",
                          "exp(V:/100) == exp(W:/100)",
                          "cross(V,V) == cross(W,W)",
                          "minmax(V) == minmax(W)",
                          "(S,T) == (T,S)",
                          "(S:+\"x\") == (T:+\"x\")",
                          "strupper(S) == strupper(T)",
                          "order(V,-1) == order(W,-1)",
                          "V' == W'",
                          "V :== V"})
        EXPECT_EQ(ms_value(std::string("all(") + e + ")"), 1) << e << "\n" << session_output;
}
