#include "exprhelp.h"
#include "data/scalars.h"
#include "expr/opcodes.h"
#include <gtest/gtest.h>
#include <cmath>
#include <map>
#include <vector>

// Compiles text and leaves the program in pgm.
static xeqpgm pgm;
static toktype ti;
static std::string line;

static int32_t compile(const std::string &text, int32_t wanted = W_ANY, bool bracket = false)
{
    s_outlev = 5;
    line = text;
    initialize_compexp_shared();
    ti_settok(&ti, line.data());
    return ti_compexp(&ti, &pgm, wanted, bracket, false, nullptr, 0);
}

static std::string rest() { return ti.c_ptr; }

static std::string times(int n, const std::string &item, const std::string &between)
{
    std::string s = item;
    while (--n > 0)
        s += between + item;
    return s;
}

TEST(compile, LooserOperatorOfEveryPairOfRows)
{
    static const char *const rows[] = {"|", "&", "==", ">=", "<=", "<", ">", "!=", "~=", "+",
                                       "-", "*", "/", "^"};
    static const int16_t opcodes[] = {OP_OR, OP_AND, OP_EQ, OP_GE, OP_LE, OP_LT, OP_GT, OP_NE,
                                      OP_NE, OP_ADD, OP_SUB, OP_MUL, OP_DIV, OP_POW};
    for (int i = 0; i < 14; i++)
        for (int j = 0; j < 14; j++) {
            std::string text = std::string("2") + rows[i] + "3" + rows[j] + "4";
            ASSERT_EQ(compile(text), 0) << text;
            // The operator that runs last is the loosest; equal rows group to the left.
            int loosest = i < j ? i : j;
            EXPECT_EQ(pgm.code[pgm.ncode], opcodes[loosest]) << text;
            // What it splits off as its right side is one constant when it is the second.
            bool second = j <= i;
            int right = second ? pgm.code[pgm.ncode - 2] : pgm.code[pgm.ncode - 1];
            EXPECT_EQ(right, second ? int(OP_NUM) : int(opcodes[i < j ? j : i])) << text;
        }
}

TEST(compile, ValuesThatShowTheGrouping)
{
    const std::vector<std::pair<const char *, double>> rows = {
        {"2^3^2", 64}, {"-2^2", -4}, {"1+2-3+4", 4}, {"10-2+3-4", 7}, {"12/2*3", 18},
        {"12*3/2*4", 72}, {"1==2>1", 1}, {"3>2!=0", 1}, {"2>1==1", 1}, {"!-1", 0}, {"!0==0", 0},
        {"5- -3", 8}, {"5--3", 8}, {"2*-3", -6}, {"2^-1", 0.5}, {"-2-3", -5}, {"(2)", 2},
        {"((2+3))*2", 10}, {"+4", 4}, {"2 + - 3", -1}, {"1e-5+1", 1.00001}, {"1E+2-1", 99},
        {"1d2+1", 101}, {"2*1e-1", 0.2}, {"1.8x+3", 12}, {"1.0x-1+1", 1.5}, {"1&0|1", 1},
        {"1|0&0", 1}, {"~0", 1}, {"2~=2", 0},
    };
    for (auto &[text, want] : rows)
        EXPECT_DOUBLE_EQ(number(text), want) << text;
    vernum = 400;
    EXPECT_EQ(number("-2^2"), 4);
    EXPECT_EQ(number("!0^0"), 1);
    vernum = ver_current;
}

TEST(compile, WhereAnExpressionEnds)
{
    const std::vector<std::pair<const char *, const char *>> rows = {
        {"1 2", " 2"}, {"1+ 2 in 1/5", " in 1/5"}, {"3, detail", ", detail"},
        {"x2", ""}, {"1 {", " {"}, {"1{", "{"}, {"2 = 3", "= 3"}, {"1==1 & 2 == 2 if", " if"},
        {"max(1, 2), a", ", a"}, {"\"a b\" == \"a\" , x", ", x"}, {"2 } else", " } else"},
        {"1 <= 2 , y", ", y"},
    };
    ASSERT_EQ(sclrsv("x2", 1), 0);
    for (auto &[text, want] : rows) {
        EXPECT_EQ(compile(text), 0) << text;
        std::string r = rest();
        EXPECT_TRUE(r == want || " " + r == want || r == std::string(" ") + want) << text << "|" << r;
    }
    EXPECT_EQ(compile("2+3]", W_NUM, true), 0);
    EXPECT_EQ(rest(), "]");
    EXPECT_TRUE(sclrrm("x2"));
}

TEST(compile, Refusals)
{
    const std::map<std::string, int32_t> rows = {
        {"1+", 198}, {"", 198}, {"()", 198}, {"(1+)", 198}, {"*2", 198}, {"(1", 132},
        {"1)", 132}, {"1]", 132}, {"[1", 132}, {"\"a", 132}, {"`\"a\"", 132}, {"\"a\"+1", 109},
        {"-\"a\"", 109}, {"!\"a\"", 109}, {"\"a\"-\"b\"", 109}, {"\"a\"|\"b\"", 109},
        {"nosuch(1)", 133}, {"nosuch", 111}, {"abs()", 198}, {"abs(1,2)", 198}, {"abs(1.5,2.5)", 198}, {"mod(1)", 198},
        {"abs(\"a\")", 109}, {"lower(1)", 109}, {"_n[1]", 198}, {"_N[1]", 198}, {"_pi[1]", 198},
        {"missing(missing(1))", 198}, {"c(nosuch)", 133}, {"(1)(2)", 198}, {"abs(1)x", 198},
        {"\"a\"x", 198}, {"d(32jan2000)", 198}, {"I(2)", 133}, {"1,2", 198}, {"(1,2)", 198},
        {"maxbyte(1)", 198}, {"cond(1,2)", 198}, {"cond(1,2,\"a\")", 109}, {"_b[x]", 111},
        {"(2=3)", 198}, {"r(1x)", 198}, {"cond(1,\"a\",2)", 109},
        {"inlist(\"a\",1)", 109}, {"L.x", 111}, {"tin(1,2)", 101},
    };
    for (auto &[text, rc] : rows)
        EXPECT_EQ(code(text), rc) << text;
    EXPECT_EQ(code("1", W_STR), 109);
    EXPECT_EQ(code("\"a\"", W_NUM), 109);
    std::string deep(5000, '-');
    EXPECT_EQ(code(deep + "1"), 130);
    EXPECT_EQ(code(std::string(8000, '(') + "1" + std::string(8000, ')')), 0);
}

TEST(compile, LimitsAreExact)
{
    EXPECT_EQ(compile(times(67, "1", "+")), 0);
    EXPECT_EQ(pgm.ncode, 199);  // 200 words
    EXPECT_EQ(compile(times(67, "1", "+") + "+1"), 130);
    EXPECT_EQ(compile("!" + times(67, "1", "+")), 130);  // 201 words

    std::string fifty;
    for (int i = 1; i <= 50; i++)
        fifty += (i > 1 ? "+" : "") + std::to_string(i);
    EXPECT_EQ(compile(fifty), 0);
    EXPECT_EQ(nsystak, 50);
    EXPECT_EQ(compile(fifty + "+50"), 0);  // an equal number is stored once
    EXPECT_EQ(compile(fifty + "+51"), 130);

    // 244 and 10 characters with their ends fill the 256 bytes.
    std::string a(244, 'a'), b(10, 'b');
    EXPECT_EQ(compile("\"" + a + "\"+\"" + b + "\""), 0);
    EXPECT_EQ(compile("\"" + a + "\"+\"" + b + "b\""), 130);
    EXPECT_EQ(compile("\"" + a + "\"+\"" + a + "\""), 0);
    EXPECT_EQ(text_of("\"" + a + "x\""), a);

    EXPECT_EQ(compile("inlist(" + times(10, "\"a\"", ",") + ")"), 0);
    EXPECT_EQ(compile("inlist(" + times(11, "\"a\"", ",") + ")"), 130);
    EXPECT_EQ(compile(times(5, "sum(1)", "+")), 0);
    EXPECT_EQ(compile(times(6, "sum(1)", "+")), 130);
    EXPECT_EQ(compile(std::string(113, 'q')), 111);
    EXPECT_EQ(compile(std::string(114, 'q')), 198);
    EXPECT_EQ(compile("max(" + times(99, "1", ",") + ")"), 0);
    EXPECT_EQ(compile("max(" + times(100, "1", ",") + ")"), 130);
    EXPECT_EQ(compile("max(" + times(300, "1", ",") + ")"), 130);
}

TEST(compile, ScalarsAreFoldedAndPoolsAreGivenBack)
{
    ASSERT_EQ(sclrsv("sc", 5), 0);
    ASSERT_EQ(ssclrsv("st", "hello"), 0);
    ASSERT_EQ(compile("sc+1"), 0);
    int32_t pool = nsystak;
    ASSERT_EQ(sclrsv("sc", 7), 0);
    EXPECT_EQ(number("sc"), 7);   // compiled now
    EXPECT_EQ(nsystak, pool);     // and the pools of the other program stand
    EXPECT_EQ(xeqforby(&pgm, 1), 6);
    EXPECT_EQ(text_of("st+\"!\""), "hello!");
    EXPECT_EQ(number("scalar(sc)"), 7);
    EXPECT_EQ(code("variable(sc)"), 0);
    EXPECT_EQ(code("variable(nosuch)"), 111);
    EXPECT_TRUE(sclrrm("sc"));
    EXPECT_TRUE(sclrrm("st"));
}

TEST(compile, NestedQuotesAndLabels)
{
    EXPECT_EQ(text_of("`\"a \"b\" c\"'"), "a \"b\" c");
    EXPECT_EQ(text_of("`\"a `\"b\"' c\"'+\"d\""), "a `\"b\"' cd");
    EXPECT_EQ(number("\"a,b)\"==\"a,b)\""), 1);
    EXPECT_GE(number("\"abc\":nolabel"), misval);
}
