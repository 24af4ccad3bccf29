#include "core/state.h"
#include "interp/messages.h"
#include "output/oml.h"
#include "output/print.h"
#include <cstring>
#include <gtest/gtest.h>
#include <string>

namespace
{
std::string got;
int32_t take(const char *text, size_t n, void *)
{
    if (text)
        got.append(text, n);
    return 0;
}

struct messages : testing::Test {
    oml *was = oml_cur;
    void SetUp() override
    {
        oml_cur = omlopen(OML_PLAIN);
        omlset_user(oml_cur, take, nullptr);
        omlset_maxwidth(oml_cur, 255);
        got.clear();
    }
    void TearDown() override
    {
        omlclose(oml_cur);
        oml_cur = was;
        s_outlev = c_outlev = 0;
        byvar = 0;
    }
    static std::string said()
    {
        omlflush(oml_cur);
        std::string s = got;
        got.clear();
        return s;
    }
};
} // namespace

// Every row: its words once, at its level, with what it reports; silence below the threshold.
TEST_F(messages, whole_table)
{
    int32_t last = 0;
    for (int32_t i = 0; i < nmsgtable; i++) {
        const msgrow &r = msgtable[i];
        EXPECT_GT(r.code, last);
        last = r.code;
        c_outlev = 2;
        EXPECT_EQ(error(r.code), r.reported) << r.code;
        EXPECT_EQ(c_outlev, 2);
        EXPECT_EQ(said(), omltext(r.text) + "\n") << r.code;
        s_outlev = uint8_t(r.level + 1);
        EXPECT_EQ(error(r.code), r.reported);
        EXPECT_EQ(said(), "") << r.code;
        s_outlev = r.level;
        EXPECT_EQ(error(r.code), r.reported);
        EXPECT_NE(said(), "") << r.code;
        s_outlev = 0;
    }
    EXPECT_GE(nmsgtable, 190);
}

TEST_F(messages, words_and_reports)
{
    static const struct {
        int32_t code, reported;
        const char *words;
    } rows[] = {
        {0, 0, ""},
        {1, 1, ""},
        {198, 198, "invalid syntax\n"},
        {199, 199, "unrecognized command\n"},
        {2, 2, "connection timed out -- see help r(2) for troubleshooting\n"},
        {141, 141, "repeated term\n"},
        {614, 614, "dictionary invalid\n"},
        {1002, 1002, "too many \n"},
        {2000, 0, "no observations\n"},
        {2001, 2001, "insufficient observations\n"},
        {3000, 3000, "Mosa compile-time error\n"},
        {3001, 3001, "Mosa run-time error\n"},
        {3999, 3999, "Mosa run-time error\n"},
        {5101, 101, "iweights not allowed with robust\n"},
        {6104, 101, "factor variables and time-series operators not allowed\n"},
        {7196, 180, "attempt to modify label\n"},
        {7197, 198, "invalid file name\n"},
        {7198, 198, "multiple by's not allowed\n"},
        {8001, 0, "irrelevant under Unix\n"},
        {4028, 4028, "target of assigment no longer available\n"},
        {77, 77, ""},
        {100, 100, ""},
    };
    for (auto &r : rows) {
        EXPECT_EQ(error(r.code), r.reported) << r.code;
        EXPECT_EQ(said(), r.words);
    }
    // Under by too few observations are a remark on the group.
    byvar = 2;
    s_outlev = 3;
    EXPECT_EQ(error(2001), 2001);
    EXPECT_EQ(said(), "");
}

TEST_F(messages, from_a_command)
{
    static const struct {
        int32_t code;
        const char *words;
    } rows[] = {
        {100, "invalid syntax\n"}, {133, "invalid syntax\n"}, {106, "type mismatch\n"},
        {170, "unable to chdir\n"}, {601, "file not found\n"}, {2000, "no observations\n"},
    };
    for (auto &r : rows) {
        EXPECT_EQ(extended_error(r.code), r.code == 6101 ? 101 : r.code);
        EXPECT_EQ(said(), r.words) << r.code;
    }
    // Codes that pass between functions come out as the ones that users know.
    EXPECT_EQ(extended_error(6101), 101);
    EXPECT_EQ(said(), "time-series operators not allowed\n");
    EXPECT_EQ(extended_error(7196), 180);
    EXPECT_EQ(said(), "attempt to modify label\n");
    byvar = 1;
    exitflg = false;
    EXPECT_EQ(extended_error(2001), 0);
    EXPECT_TRUE(exitflg);
    exitflg = false;
    EXPECT_EQ(said(), "");
}

TEST_F(messages, names_go_out_raw)
{
    EXPECT_EQ(fierr(-601, "a{bf:b}%s.dta"), 601);
    EXPECT_EQ(said(), "file a{bf:b}%s.dta not found\n");
    EXPECT_EQ(fierr(661, "x"), 661);
    EXPECT_EQ(said(), "host or file x not found\n");
    EXPECT_EQ(fierr(697, "x.dta"), 0);
    EXPECT_EQ(fierr(698, "x.dta"), 0);
    EXPECT_EQ(said(), "file x.dta saved\n(file x.dta not found)\n");
    EXPECT_EQ(fierr(650, "x"), 650);
    EXPECT_EQ(said(), "file x error 650\n");
    EXPECT_EQ(error2(3, "x"), 110);
    EXPECT_EQ(error2(5, "{y}"), 111);
    EXPECT_EQ(error2(6, "2z"), 182);
    EXPECT_EQ(said(), "x already defined\n{y} not found\n2z invalid name\n");
    EXPECT_EQ(notalow("weights"), 101);
    EXPECT_EQ(required("varlist"), 100);
    EXPECT_EQ(nomatchbrace(), 198);
    EXPECT_EQ(said(), "weights not allowed\nvarlist required\nmatching close brace not found\n");
}

TEST(messageblock, entries)
{
    char text[256];
    for (int32_t i = -1; i < 100; i++) {
        loadmsg(text, i);
        bool full = (i >= 50 && i <= 53) || (i >= 57 && i <= 62);
        EXPECT_EQ(*text != 0, full) << i;
    }
    EXPECT_STREQ(loadmsg(text, 57), "repeated categorical variable in term");
    EXPECT_STREQ(loadmsg(text, 53), "dictionary invalid");
    EXPECT_STREQ(loadstr(text, 1000), "");
}
