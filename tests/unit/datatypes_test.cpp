// compress, recast, encode and decode against what types can hold, told a second way.
#include "frame.h"
#include <cmath>
#include <set>

namespace {

struct Types : with_data {};

// Range of the integer types, from their bits: 2^(bits-1) less the missing values.
bool fits(double z, uint8_t type)
{
    static const int bits[] = {8, 16, 32};
    if (type >= T_FLOAT)
        return type == T_DOUBLE || ovismissing(z) || double(float(z)) == z;
    if (ovismissing(z))
        return true;
    double half = std::ldexp(1.0, bits[type - T_BYTE] - 1);
    return z == std::floor(z) && z >= -(half - 1) && z <= half - 28;
}

uint8_t least_type(const column &c)
{
    if (c.text()) {
        size_t n = 1;
        for (const std::string &s : c.str)
            n = std::max(n, s.size());
        return uint8_t(n);
    }
    // Only integers shrink, and a float never to a long, which is no smaller.
    for (uint8_t t = T_BYTE; t < c.type && t < T_FLOAT; t++) {
        if (t == T_LONG && c.type == T_FLOAT)
            continue;
        if (std::all_of(c.num.begin(), c.num.end(), [t](double z) { return fits(z, t); }))
            return t;
    }
    return c.type;
}

// A column whose values are near the edges of some type that may be smaller than its own.
column edge_column(lcg &rnd, const std::string &name, size_t n)
{
    static const double edges[] = {0,     1,     -1,     100,        101,        -127,  -128, 32740,
                                   32741, -32767, -32768, 2147483620, 2147483621, -2147483647,
                                   0.5,   0.1,   16777217};
    column c = {name, any_numtype(rnd)};
    uint32_t span = 1 + rnd(17);
    for (size_t i = 0; i < n; i++) {
        double z = rnd(5) ? edges[rnd(span)] : mis_of(int(rnd(27)));
        if (!fits(z, c.type) && c.type < T_FLOAT)
            z = 1;
        c.num.push_back(kept(z, c.type));
    }
    return c;
}

TEST_F(Types, CompressTakesTheLeastTypeAndKeepsEveryValue)
{
    for (uint64_t seed = 1; seed <= 200; seed++) {
        SCOPED_TRACE(seed);
        lcg rnd(seed);
        frame f;
        size_t n = 1 + rnd(12);
        for (int k = 0; k < 6; k++)
            f.push_back(k % 3 == 2 ? any_column(rnd, "t" + std::to_string(k), n, true)
                                   : edge_column(rnd, "v" + std::to_string(k), n));
        to_memory(f);
        ASSERT_EQ(run("compress"), 0);
        frame got = memory_frame();
        EXPECT_EQ(all_text(got), all_text(f));
        for (size_t v = 0; v < f.size(); v++)
            EXPECT_EQ(int(got[v].type), int(least_type(f[v]))) << all_text({f[v]});
        ASSERT_EQ(dsa_check(sysdsa), 0);
        // Nothing is left to do.
        uint64_t was = dsa_hash(sysdsa);
        ASSERT_EQ(run("compress"), 0);
        EXPECT_EQ(dsa_hash(sysdsa), was);
    }
}

TEST_F(Types, RecastRefusesLossUnlessForced)
{
    static const char *words[] = {"byte", "int", "long", "float", "double"};
    for (uint64_t seed = 1; seed <= 200; seed++) {
        SCOPED_TRACE(seed);
        lcg rnd(seed);
        frame f = {edge_column(rnd, "a", 1 + rnd(9))};
        uint8_t to = any_numtype(rnd);
        int lost = 0;
        for (double z : f[0].num)
            lost += !fits(z, to);
        std::string line = std::string("_recast ") + words[to - T_BYTE] + " a";
        to_memory(f);
        ASSERT_EQ(run(line), 0);
        bool stays = lost && to != f[0].type;
        EXPECT_EQ(int(_typlist[0]), int(stays ? f[0].type : to)) << lost << all_text(f);
        EXPECT_EQ(all_text(memory_frame()), all_text(f));
        std::string said = std::to_string(lost) + " value";
        EXPECT_EQ(session_output.find(said) != std::string::npos, stays) << session_output;
        ASSERT_EQ(run(line + ", force"), 0);
        frame got = memory_frame();
        EXPECT_EQ(int(got[0].type), int(to));
        for (size_t i = 0; i < f[0].size(); i++) {
            double z = f[0].num[i];
            if (fits(z, to))
                EXPECT_EQ(num_text(got[0].num[i]), num_text(z));
            else if (to < T_FLOAT && fits(std::trunc(z), to))
                EXPECT_EQ(got[0].num[i], std::trunc(z));
            else if (to < T_FLOAT)
                EXPECT_EQ(num_text(got[0].num[i]), ".") << z;
            else
                EXPECT_EQ(got[0].num[i], double(float(z)));
        }
    }
}

TEST_F(Types, RecastOfTextsCutsOnlyWhenForced)
{
    expect_ran({"set obs 3", "gen str8 s = substr(\"abcdefgh\", 1, 2*_n + 2)", "sort s",
                "_recast str6 s"});
    EXPECT_EQ(_typlist[0], 8);
    expect_ran({"_recast str5 s, force"});
    EXPECT_EQ(memory_frame()[0].str, (std::vector<std::string>{"abcd", "abcde", "abcde"}));
    expect_ran({"_recast str244 s"});
    EXPECT_EQ(_typlist[0], 244);
    expect_ran({"compress s"});
    EXPECT_EQ(_typlist[0], 5);
    expect_refused({{"_recast byte s", 109},
                    {"_recast str245 s", 198},
                    {"_recast str0 s", 198},
                    {"_recast str5 nosuch", 111},
                    {"_recast str5", 100}});
}

// ---- encode and decode

std::set<std::string> selected_texts(const column &c, size_t upto)
{
    std::set<std::string> s(c.str.begin(), c.str.begin() + long(upto));
    s.erase("");
    return s;
}

TEST_F(Types, EncodeNumbersTextsInTheirOrder)
{
    for (uint64_t seed = 1; seed <= 60; seed++) {
        SCOPED_TRACE(seed);
        lcg rnd(seed);
        size_t n = 2 + rnd(40), upto = 1 + rnd(uint32_t(n));
        column c = {"s", 9};
        for (size_t i = 0; i < n; i++)
            c.str.push_back(any_text(rnd, 2, "ab{\"`'"));
        to_memory({c});
        ASSERT_EQ(run("label variable s \"where from\""), 0);
        ASSERT_EQ(run("encode s in 1/" + std::to_string(upto) + ", generate(e)"), 0);
        std::map<std::string, double> number;
        for (const std::string &s : selected_texts(c, upto))
            number.emplace(s, double(number.size() + 1));
        frame got = memory_frame();
        ASSERT_EQ(got.size(), 2u);
        for (size_t i = 0; i < n; i++)
            EXPECT_EQ(got[1].num[i], i < upto && !c.str[i].empty() ? number[c.str[i]] : misval);
        char label[81];
        getvarlab(2, label);
        EXPECT_STREQ(label, "where from");
        const vltable *t = vlfind("e");
        ASSERT_EQ(vlgetcount(t), int32_t(number.size()));
        for (const auto &e : number) {
            char text[64];
            ASSERT_GE(vlfindval(t, e.second, text, sizeof text), 0);
            EXPECT_EQ(text, e.first);
        }
        // And back again, as far as there is a label.
        if (number.empty())
            continue;
        ASSERT_EQ(run("decode e, generate(back)"), 0) << session_output;
        got = memory_frame();
        size_t widest = 1;
        for (size_t i = 0; i < n; i++)
            EXPECT_EQ(got[2].str[i], i < upto ? c.str[i] : "");
        for (const auto &e : number)
            widest = std::max(widest, e.first.size());
        EXPECT_EQ(got[2].type, widest);
    }
}

TEST_F(Types, EncodeExtendsALabelBehindItsLargestValue)
{
    expect_ran({"set obs 4", "gen str5 s = word(\"red blue green blue\", _n)",
                "label define c 7 blue 3 red -2 pink .a none", "encode s, generate(e) label(c)"});
    EXPECT_EQ(memory_frame()[1].num, (std::vector<double>{3, 7, 8, 7}));
    EXPECT_EQ(vlgetcount(vlfind("c")), 5);
    EXPECT_STREQ(_lbllist[1], "c");
    expect_ran({"replace s = \"new\" in 1"});
    int32_t before = vlgetcount(vlfind("c"));
    expect_refused({{"encode s, generate(f) label(c) noextend", 180},
                    {"encode s, generate(e)", 110},
                    {"encode s, generate(2x)", 198},
                    {"encode s s, generate(f)", 103},
                    {"encode e, generate(f)", 107},
                    {"encode s", 100},
                    {"decode s, generate(f)", 108},
                    {"decode e, generate(s)", 110},
                    {"decode e, generate(f) maxlength(0)", 198},
                    {"decode e, generate(f) maxlength(245)", 198}});
    EXPECT_EQ(vlgetcount(vlfind("c")), before);
    expect_ran({"decode e, generate(f) maxlength(3)"});
    EXPECT_EQ(memory_frame()[2].str, (std::vector<std::string>{"red", "blu", "gre", "blu"}));
    EXPECT_EQ(_typlist[2], 3);
}

}  // namespace
