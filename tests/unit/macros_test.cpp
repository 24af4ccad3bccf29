#include "../session.h"
#include "core/rc.h"
#include "interp/dm.h"
#include "output/fmt.h"
#include <gtest/gtest.h>

namespace {

struct macros : testing::Test {
    void SetUp() override
    {
        session();
        stopflag = 0;
        s_outlev = 9;
    }
    void TearDown() override
    {
        s_outlev = 0;
        vernum = ver_current;
        dmzap(typelmac);
    }
};

void local(const std::string &name, const std::string &value)
{
    ASSERT_EQ(macresave(("_" + name).c_str(), value.c_str()), 0);
}

std::string got(const std::string &name)
{
    const char *p = macptr(name.c_str());
    return p ? p : "(absent)";
}

int32_t lastrc;
std::string expand(const std::string &line)
{
    procflg = true;
    memcpy(console, line.c_str(), line.size() + 1);
    lastrc = macexp();
    return console;
}

struct row {
    const char *line, *want;
};

TEST_F(macros, references)
{
    local("x", "5");
    local("i", "3");
    local("a3", "deep");
    local("two", "b c");
    local("1", "first");
    local("2", "second");
    local("nest", "<`x'>");
    local("bs", "\\$g");
    ASSERT_EQ(macresave("g", "glob"), 0);
    ASSERT_EQ(macresave("g3", "g-three"), 0);
    ASSERT_EQ(macresave("ptr", "g"), 0);
    const row rows[] = {
        {"a `x' b", "a 5 b"},
        {"[`nosuch']", "[]"},
        {"`\"abc\"'", "`\"abc\"'"},
        {"`\"`x'\"'", "`\"5\"'"},
        {"`a`i''", "deep"},
        {"`a`i'", "`a3"},               // the outer one never closes
        {"$g.", "glob."},
        {"$gx|", "|"},                  // takes all the letters
        {"${g}x", "globx"},
        {"${g`i'}", "g-three"},
        {"$$ptr", "glob"},
        {"${$ptr}", "glob"},
        {"$ 5", "$ 5"},
        {"$5 $", "$5 $"},
        {"${g", "${g"},
        {"\\$g \\`x'", "$g `x'"},
        {"\\\\`x'", "\\5"},
        {"\\\\n", "\\\\n"},
        {"\\n", "\\n"},
        {"`nest'", "<5>"},              // values are scanned as they are put in
        {"`bs'", "$g"},
        {"`*'", "first second"},
        {"$_* $_1 $_x", "first second first 5"},
        {"`x' '`x'' `", "5 '5' `"},
        {"`=2+3*4'", "14"},
        {"`=`x'+`i''", "8"},
        {"`=1/3'", ".3333333333333333"},
        {"`=\"a\"+\"b\"'", "ab"},
        {"`: word 2 of a b c'", "b"},
        {"`: word count `two''", "2"},
        {"`x y'", "`x y'"},             // no name
        {"`'|", "|"},
        {"it's", "it's"},
        {"`foo(bar)'", "`foo(bar)'"},
        {"`c(version)'", "12.1"},
        {"`r(nosuch)'|`e( none )'|", "||"},
        {"`+x' `-x'", "`+x' `-x'"},
    };
    for (const row &r : rows)
        EXPECT_EQ(expand(r.line), r.want) << r.line;
}

TEST_F(macros, counting)
{
    local("n", "1");
    local("t", "text");
    EXPECT_EQ(expand("`++n' `n++' `n' `--n' `n--' `n'"), "2 2 3 2 2 1");
    local("n", "9");
    EXPECT_EQ(expand("`++n'"), "10");
    local("n", "-.5");
    EXPECT_EQ(expand("`++n'"), ".5");
    expand("`++t'");
    EXPECT_EQ(lastrc, RC_TYPE);
    expand("`++nosuch'");
    EXPECT_EQ(lastrc, RC_NOTFOUND);
}

TEST_F(macros, numbers_have_one_text_whichever_way_they_are_made)
{
    const double zs[] = {0, -0.0, 1, -1, 7, 1e5, 123456789, -123456789012345, 999999999999999,
                         -999999999999999, 1e15, 1e16, 123456789012345680, 2147483648};
    for (double z : zs) {
        char fast[32], plain[64];
        mac_numtext(z, fast);
        fmtnumtrim(plain, sizeof plain, z, "%18.0g");
        EXPECT_STREQ(fast, plain);
    }
    ovata_dpc = true;
    char half[32];
    mac_numtext(.5, half);
    ovata_dpc = false;
    EXPECT_STREQ(half, ".5");
}

TEST_F(macros, versions_change_the_rules)
{
    local("x", "5");
    ASSERT_EQ(macresave("abcdefgh", "short"), 0);
    ASSERT_EQ(macresave("abcdefghi", "long"), 0);
    vernum = 600;
    EXPECT_EQ(expand("$abcdefghi"), "shorti");
    EXPECT_EQ(expand("\\\\n"), "\\n");
    vernum = 700;
    EXPECT_EQ(expand("$abcdefghi"), "long");
    vernum = 310;
    EXPECT_EQ(expand("di %_x `%abcdefgh %9.0g"), "di 5 short %9.0g");
    EXPECT_EQ(expand("di %_x $abcdefgh"), "di %_x short");  // a substitution turns it off
    vernum = 320;
    EXPECT_EQ(expand("di %_x"), "di %_x");
}

TEST_F(macros, endless_and_overlong_lines_stop)
{
    local("x", "`x'");
    expand("`x'");
    EXPECT_EQ(lastrc, RC_MACROS);
    local("y", "a`y'");
    expand("`y'");
    EXPECT_EQ(lastrc, RC_MACROS);
    local("big", std::string(5000, 'z'));
    expand("`big'`big'");
    EXPECT_EQ(lastrc, RC_MACROS);
    local("fit", std::string(4348, 'z'));
    EXPECT_EQ(expand("`fit'`fit'").size(), 8696u);
    EXPECT_EQ(lastrc, 0);
    expand("`fit'`fit'x");
    EXPECT_EQ(lastrc, RC_MACROS);
    std::string chain;      // twenty names in a row are the most
    for (int i = 1; i < 20; i++)
        local("c" + std::to_string(i), "`c" + std::to_string(i + 1) + "'");
    local("c20", "end");
    EXPECT_EQ(expand("`c1'"), "end");
    local("c20", "`c21'");
    expand("`c1'");
    EXPECT_EQ(lastrc, RC_MACROS);
    expand(std::string(8000, '`'));
    expand(std::string(4000, '`') + std::string(4000, '\''));
    expand("$" + std::string(8000, '$'));
    procflg = false;
    memcpy(console, "`c1'", 5);
    EXPECT_EQ(macexp(), 0);
    EXPECT_STREQ(console, "`c1'");
    procflg = true;
}

TEST_F(macros, definitions)
{
    const struct {
        const char *line;
        int32_t rc;
        const char *name, *want;
    } rows[] = {
        {"local x   a  b  ", 0, "_x", "a  b"},
        {"local x", 0, "_x", "(absent)"},
        {"local x \"a b\"", 0, "_x", "a b"},
        {"local x \"\"", 0, "_x", "(absent)"},
        {"local x \"a\" \"b\"", 0, "_x", "\"a\" \"b\""},
        {"local x `\"a \"b\" c\"'", 0, "_x", "a \"b\" c"},
        {"local x \"abc", RC_SYNTAX, "_x", nullptr},
        {"local x = 1/3", 0, "_x", ".3333333333333333"},
        {"local x=1e15", 0, "_x", "1000000000000000"},
        {"local x = 1e20", 0, "_x", "1.00000000000e+20"},
        {"local x = \"a\" + \"b\"", 0, "_x", "ab"},
        {"local x = .a", 0, "_x", ".a"},
        {"local x : word 3 of a b \"c d\"", 0, "_x", "c d"},
        {"local x: word 9 of a", 0, "_x", "(absent)"},
        {"global g text", 0, "g", "text"},
        {"global _g text", RC_SYNTAX, "_g", "(absent)"},
        {"local 2x text", 0, "_2x", "text"},
        {"local x.y text", RC_SYNTAX, nullptr, nullptr},
        {"local +x", RC_SYNTAX, nullptr, nullptr},
        {"global ++g", RC_SYNTAX, nullptr, nullptr},
        {"macro define _m 7", 0, "_m", "7"},
        {"local ++m", 0, "_m", "8"},
        {"local ++m 3", RC_SYNTAX, "_m", "8"},
        {"local --m", 0, "_m", "7"},
        {"c_local x 5", RC_SYNTAX, nullptr, nullptr},
        {"local abcdefghijklmnopqrstuvwxyz12345 1", 0, "_abcdefghijklmnopqrstuvwxyz12345", "1"},
        {"local abcdefghijklmnopqrstuvwxyz123456 1", RC_SYNTAX, nullptr, nullptr},
        {"macro drop g", 0, "g", "(absent)"},
    };
    for (const auto &r : rows) {
        EXPECT_EQ(run(r.line), r.rc) << r.line;
        if (r.name && r.want) {
            EXPECT_EQ(got(r.name), r.want) << r.line;
        }
    }
}

TEST_F(macros, shifting_and_dropping)
{
    for (int i = 1; i <= 4; i++)
        local(std::to_string(i), "w" + std::to_string(i));
    EXPECT_EQ(run("macro shift"), 0);
    EXPECT_EQ(got("_1") + got("_3") + got("_4"), "w2w4(absent)");
    EXPECT_EQ(run("macro shift 0"), 0);
    EXPECT_EQ(run("macro shift -1"), RC_SYNTAX);
    EXPECT_EQ(run("macro shift 2"), 0);
    EXPECT_EQ(got("_1") + got("_2"), "w4(absent)");
    EXPECT_EQ(run("macro shift 1000000000"), 0);
    EXPECT_EQ(got("_1"), "(absent)");
    ASSERT_EQ(run("global ab1 x") + run("global ab2 x") + run("global ac x"), 0);
    EXPECT_EQ(run("macro drop ab*"), 0);
    EXPECT_EQ(got("ab1") + got("ab2") + got("ac"), "(absent)(absent)x");
    ASSERT_EQ(run("global S_mine x"), 0);
    std::string path = got("S_ADO");
    EXPECT_EQ(run("macro drop S_*"), 0);
    EXPECT_EQ(got("S_mine"), "(absent)");
    EXPECT_EQ(got("S_ADO"), path);
}

TEST_F(macros, extended_functions)
{
    local("s", "the cat the hat");
    local("a", "a b c \"d e\" a");
    local("b", "c a z");
    setenv("OVATA_TEST_ENV", "here", 1);
    const row rows[] = {
        {"`: word count `\"a b\"' c'", "2"},
        {"`: word 0 of a b'", ""},
        {"`: length local s'", "15"},
        {"`: length  abc de '", "6"},
        {"`: copy local s'", "the cat the hat"},
        {"`: subinstr local s \"the\" \"a\"'", "a cat the hat"},
        {"`: subinstr local s \"the\" \"a\", all'", "a cat a hat"},
        {"`: subinstr local s \"at\" \"og\", all word'", "the cat the hat"},
        {"`: subinstr local s \"the\" \"a\", count(0)'", "the cat the hat"},
        {"`: subinstr local s \"the\" \"\", all count(local n)'`n'", " cat  hat2"},
        {"`: list sizeof a'", "5"},
        {"`: list uniq a'", "a b c \"d e\""},
        {"`: list dups a'", "a"},
        {"`: list sort b'", "a c z"},
        {"`: list posof \"d e\" in a'", "4"},
        {"`: list posof \"q\" in a'", "0"},
        {"`: list a & b'", "a c a"},
        {"`: list a - b'", "b \"d e\""},
        {"`: list b | a'", "c a z b \"d e\""},
        {"`: list b in a' `: list b in b'", "0 1"},
        {"`: list a == b' `: list b == b' `: list b === b'", "0 1 1"},
        {"`: environment OVATA_TEST_ENV'", "here"},
        {"`: adosubdir Regress'", "r"},
        {"`: regexmatch \"abc123\" \"([0-9]+)\"' `: regexsubexp 1'", "1 123"},
        {"`: all scalars zz*'", ""},
        {"`: omcllength \"{bf:bold}\"'", "4"},
        {"`: display %5.2f 2/3'", " 0.67"},
        {"`: permname abc'", "abc"},
    };
    for (const row &r : rows)
        EXPECT_EQ(expand(r.line), r.want) << r.line;
    EXPECT_NE(run("local x : nosuch a"), 0);
    EXPECT_NE(run("local x : regexsubexp 5"), 0);
}

TEST_F(macros, saving_rules)
{
    EXPECT_EQ(macsave("_e", ""), 0);
    EXPECT_EQ(got("_e"), "(absent)");
    EXPECT_EQ(macsave0("_e"), 0);
    EXPECT_EQ(got("_e"), "");
    EXPECT_EQ(macresave("_e", ""), 0);
    EXPECT_EQ(got("_e"), "(absent)");
    EXPECT_EQ(macresaveq("_q", "a \"b\""), 0);
    EXPECT_EQ(got("_q"), "`\"a \"b\"\"'");
    ASSERT_EQ(macresaveq("_q", std::string(9000, 'x').c_str()), 0);
    EXPECT_EQ(got("_q").size(), size_t(macrolen) - 5 + 4);
    uint64_t len;
    ASSERT_EQ(macresave("_l", "abc"), 0);
    EXPECT_STREQ(macfind("_l", &len), "abc");
    EXPECT_EQ(len, 4u);
    char buf[macrolen];
    macuseshort("_l", buf, 2);
    EXPECT_STREQ(buf, "ab");
    macuse("_none", buf);
    EXPECT_STREQ(buf, "");
    // Another level does not see it, and may have its own.
    typelmac++;
    EXPECT_EQ(got("_l"), "(absent)");
    ASSERT_EQ(macresave("_l", "inner"), 0);
    ASSERT_EQ(macresave_c("_l", "from below"), 0);
    dmzap(typelmac);
    typelmac--;
    EXPECT_EQ(got("_l"), "from below");
    fault_arm(F_MEM, 1, true);
    EXPECT_EQ(run("local fresh abc"), RC_DMMEM);
    fault_disarm();
    EXPECT_EQ(got("_fresh"), "(absent)");
}

}  // namespace
