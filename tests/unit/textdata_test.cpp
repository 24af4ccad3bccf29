// Tables of text: fields, numbers, types found from the data, and the way out and in again.
#include "../session.h"
#include "commands/textdata.h"
#include "core/numtext.h"
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace {

std::vector<std::string> fields(std::string line, char delim, bool *unclosed = nullptr)
{
    std::vector<std::string> out;
    char *p = line.data(), *end = p + line.size();
    while (p <= end) {
        textfield f = text_field(&p, end, delim);
        out.emplace_back(f.at, size_t(f.n));
        if (unclosed)
            *unclosed |= f.unclosed;
    }
    return out;
}

using list = std::vector<std::string>;

void write_file(const char *name, const std::string &text)
{
    session();
    FILE *f = fopen(name, "wb");
    ASSERT_TRUE(f);
    fwrite(text.data(), 1, text.size(), f);
    fclose(f);
}

std::string type_of(int32_t var)
{
    static const char *const words[] = {"byte", "int", "long", "float", "double"};
    uint8_t t = _typlist[var - 1];
    return t >= T_BYTE ? words[t - T_BYTE] : "str" + std::to_string(t);
}

}  // namespace

TEST(TextFields, AreTakenAsPeopleWriteThem)
{
    EXPECT_EQ(fields("a,b,c", ','), (list{"a", "b", "c"}));
    EXPECT_EQ(fields(" a , b ,", ','), (list{"a", "b", ""}));
    EXPECT_EQ(fields("", ','), (list{""}));
    EXPECT_EQ(fields(",,", ','), (list{"", "", ""}));
    EXPECT_EQ(fields("\"a,b\",c", ','), (list{"a,b", "c"}));
    EXPECT_EQ(fields("\"say \"\"x\"\"\",y", ','), (list{"say \"x\"", "y"}));
    EXPECT_EQ(fields("\"\",x", ','), (list{"", "x"}));
    EXPECT_EQ(fields("\" kept \" dropped,x", ','), (list{" kept ", "x"}));
    EXPECT_EQ(fields("a\"b,c", ','), (list{"a\"b", "c"}));
    EXPECT_EQ(fields("a b\tc,d", '\t'), (list{"a b", "c,d"}));
    bool unclosed = false;
    EXPECT_EQ(fields("x,\"a,b", ',', &unclosed), (list{"x", "a,b"}));
    EXPECT_TRUE(unclosed);
}

TEST(TextFields, NumbersAgreeWithTheGeneralReader)
{
    static const char *const texts[] = {
        "0",        "-0",         "1",       "-1",     "0.1",     "123456789012345", ".5",
        "5.",       "-.25",       "1e3",     "1e-400", "1e400",   "1234567890123456", "3.14159",
        "0.0000001", "-99999.999", "999999999999999", "00012", "1.000000000000001", ".a", ".",
    };
    for (const char *t : texts) {
        textfield f = {t, int32_t(strlen(t)), false, false};
        double quick, slow;
        bool is = text_number(&f, &quick);
        ASSERT_EQ(is, !cnvstoz(t, &slow)) << t;
        EXPECT_EQ(quick, slow) << t;
    }
    for (const char *t : {"", "-", ".-", "1-2", "1.2.3", "1,2", "abc", "1x", "--1", "+-1", "e5"}) {
        textfield f = {t, int32_t(strlen(t)), false, false};
        double z;
        EXPECT_FALSE(text_number(&f, &z)) << t;
    }
    std::mt19937_64 draw(7);
    for (int i = 0; i < 20000; i++) {
        char t[40];
        int64_t m = int64_t(draw() % 1000000000000000u);
        int n = snprintf(t, sizeof t, "%s%lld", draw() & 1 ? "-" : "", (long long)m);
        int point = int(draw() % size_t(n));
        if (point > 1) {
            memmove(t + point + 1, t + point, size_t(n - point + 1));
            t[point] = '.';
        }
        textfield f = {t, int32_t(strlen(t)), false, false};
        double quick, slow;
        ASSERT_TRUE(text_number(&f, &quick)) << t;
        ASSERT_EQ(cnvstoz(t, &slow), 0) << t;
        ASSERT_EQ(quick, slow) << t;
    }
}

TEST(Insheet, FindsTheSmallestTypeThatLosesNothing)
{
    static const struct {
        const char *column;
        const char *type;
    } rows[] = {
        {"1\n100\n-127\n", "byte"},    {"101\n", "int"},
        {"-128\n", "int"},             {"32740\n", "int"},
        {"32741\n", "long"},           {"2147483620\n", "long"},
        {"2147483621\n", "double"},    {"1.5\n2\n", "float"},
        {"0.1234567\n", "float"},      {"1.23456789\n", "double"},
        {"1e39\n", "double"},          {"1.5e300\n", "double"},
        {".\n\".a\"\n", "byte"},       {"1\nx\n", "str1"},
        {"1\n\"two words\"\n", "str9"}, {"\"\"\n\"\"\n", "byte"},
    };
    for (auto &r : rows) {
        write_file("t.csv", std::string("v\n") + r.column);
        ASSERT_EQ(run("insheet using t.csv, clear names"), 0) << session_output;
        EXPECT_EQ(type_of(1), r.type) << r.column;
    }
}

TEST(Insheet, LimitsAreRefusedBeforeMemoryIsGivenUp)
{
    ASSERT_EQ(run("drop _all"), 0);
    ASSERT_EQ(run("set obs 3"), 0);
    ASSERT_EQ(run("generate keep = 7"), 0);
    std::string wide = "1", tall = "1,2\n";
    for (int32_t i = 0; i < maxmaxvar; i++)
        wide += ",1";
    for (uint32_t i = 0; i < sysdsa->_N_max; i++)
        tall += "1,2\n";
    write_file("wide.csv", wide);
    write_file("tall.csv", tall);
    uint64_t was = dsa_hash(sysdsa);
    EXPECT_EQ(run("insheet using wide.csv, clear"), 900);
    EXPECT_EQ(run("insheet using tall.csv, clear"), 901);
    EXPECT_EQ(run("insheet using nosuch.csv, clear"), 601);
    EXPECT_EQ(run("insheet using t.csv, clear delimiter()"), 198);
    EXPECT_EQ(run("insheet using wide.csv"), 18);
    EXPECT_EQ(dsa_hash(sysdsa), was);
}

TEST(Insheet, LongLinesAndLongTextAreCutWithANote)
{
    write_file("long.csv", "a,b\n" + std::string(5000, 'x') + ",1\n" + std::string(244, 'y') + ",2\n");
    ASSERT_EQ(run("insheet using long.csv, clear"), 0);
    EXPECT_EQ(type_of(1), "str244");
    EXPECT_NE(session_output.find("(1 text longer than 244 characters cut)"), std::string::npos);
}

// Whatever numbers and texts a dataset holds, writing it out and reading it gives them back.
TEST(Outsheet, ThenInsheetGivesTheSameValues)
{
    for (uint32_t seed = 1; seed <= 60; seed++) {
        SCOPED_TRACE(seed);
        std::mt19937_64 draw(seed);
        ASSERT_EQ(run("drop _all"), 0);
        ASSERT_EQ(run("set obs 25"), 0);
        ASSERT_EQ(run("generate double d = ."), 0);
        ASSERT_EQ(run("generate float f = ."), 0);
        ASSERT_EQ(run("generate long l = ."), 0);
        ASSERT_EQ(run("generate str20 s = \"x\""), 0);
        for (uint32_t obs = 1; obs <= 25; obs++) {
            double z = std::bit_cast<double>(draw());
            if (!(z > -1e300 && z < 1e300))
                z = mis_of(int(draw() % 27));
            dsa_store(z, sysdsa, 1, obs);
            dsa_store(double(int64_t(draw() % 2000001) - 1000000) / 997, sysdsa, 2, obs);
            dsa_store(double(int32_t(draw() >> 33)) - 1e9, sysdsa, 3, obs);
            char text[21] = {};
            size_t n = 1 + draw() % 19;
            for (size_t i = 0; i < n; i++)
                text[i] = "ab,\"; '`$9."[draw() % 11];
            // Blanks at the ends and texts that look like numbers are the reader's to judge.
            text[0] = 'q';
            text[n - 1] = 'z';
            dsa_sstore(sysdsa, 4, obs, text);
        }
        char want[25][4][64];
        for (uint32_t obs = 1; obs <= 25; obs++)
            for (uint32_t v = 1; v <= 4; v++)
                if (v == 4)
                    dsa_sdata(sysdsa, v, obs, want[obs - 1][3]);
                else
                    snprintf(want[obs - 1][v - 1], 64, "%a", dsa_data(sysdsa, v, obs));
        ASSERT_EQ(run("outsheet using trip.csv, comma replace"), 0) << session_output;
        ASSERT_EQ(run("insheet using trip.csv, clear"), 0) << session_output;
        ASSERT_EQ(_Nobs, 25);
        for (uint32_t obs = 1; obs <= 25; obs++)
            for (uint32_t v = 1; v <= 4; v++) {
                char got[256];
                if (v == 4)
                    dsa_sdata(sysdsa, v, obs, got);
                else if (v == 2)  // written as a float, read at whatever type the column has
                    snprintf(got, sizeof got, "%a", double(float(dsa_data(sysdsa, v, obs))));
                else
                    snprintf(got, sizeof got, "%a", dsa_data(sysdsa, v, obs));
                ASSERT_STREQ(got, want[obs - 1][v - 1]) << "obs " << obs << " var " << v;
            }
    }
}
