// Patterns, words, tokens and hashes in the matrix language.
#include "mosa/tokenize.h"
#include "mosabi.h"
#include <random>

TEST(MosaTexts, RegularExpressions)
{
    static const called rows[] = {
        {"regexm((\"abc123\", \"xyz\"), \"([a-z]+)([0-9]+)\")", "R1,2:1 0"},
        {"rx = regexm(\"abc123\", \"([a-z]+)([0-9]+)\"); (regexs(0), regexs(1), regexs(2))",
         "S1,3:abc123|abc|123"},
        {"regexs(3)", "3300"},
        {"regexm(\"a.c\", (\"a\\.c\", \"^c\"))", "R1,2:1 0"},
        {"regexr((\"one two\", \"none\"), \"o[a-z]*\", \"<\\0>\")", "S1,2:<one> two|n<one>"},
        {"regexr(\"a-b\", \"(.)-(.)\", \"\\2\\2-\\1\")", "S1,1:bb-a"},
        {"rx = regexm(\"x\" * 3000, \".*\"); strlen(regexs(0))", "R1,1:3000"},
        {"regexm(\"a\", \"(\")", "3498"},
        {"regexm(\"a\", 1)", "3254"},
        {"regexm((\"a\", \"b\"), (\"a\" \\ \"b\"))", "3200"},
    };
    try_all(rows);
}

TEST(MosaTexts, WordsAndNames)
{
    static const called rows[] = {
        {"subinword(\"this is his is\", \"is\", \"IS\")", "S1,1:this IS his IS"},
        {"subinword(\"is is is\", \"is\", \"was\", 2)", "S1,1:was was is"},
        {"subinword(\"a ab a\", \"a\", \"\")", "S1,1: ab "},
        {"subinstr(\"aaa\", \"aa\", \"b\")", "S1,1:ba"},
        {"soundex((\"Robert\", \"Ashcraft\", \"\"))", "S1,3:R163|A226|"},
        {"soundex_nara((\"Robert\", \"Ashcraft\"))", "S1,2:R163|A261"},
        {"strtoname((\"3 x-y\", \"ok_1\"))", "S1,2:_3_x_y|ok_1"},
        {"strtoname(\"3x\", 0)", "S1,1:3x"},
        {"abbrev((\"displacement\", \"mpg\"), (8, 8))", "S1,2:displa~t|mpg"},
        {"fmtwidth((\"%9.2f\", \"%-20s\", \"9\", \"%td\"))", "R1,4:9 20 . 9"},
        {"sv = \"abcdef\"; _substr(sv, \"XY\", 5); sv", "S1,1:abcdXY"},
        {"_substr(sv, \"\", 1); sv", "S1,1:abcdXY"},
        {"_substr(sv, \"XY\", 6)", "3300"},
        {"_substr(sv, \"toolongtoo\", 1)", "3300"},
        {"sw = \"\"; _substr(sw, \"a\", 1)", "3300"},
        {"numtobase26((1, 26, 27, 52, 703))", "S1,5:A|Z|AA|AZ|AAA"},
        {"numtobase26(0)", "3300"},
        {"_xlformcolrowlbl((1, 28), 7)", "S1,2:A7|AB7"},
        {"_xlgetcolrowfromlbl(\"AB7\"), _xlgetcolrowfromlbl(\"$a$12\")", "R1,4:28 7 1 12"},
        {"_xlgetcolrowfromlbl(\"7\")", "3300"},
        {"_xlgetcolrowfromlbl(\"AB7x\")", "3300"},
        {"_xlbkcreate(1, 2)", "3022"},
        {"_haver_open_db(\"x\")", "3022"},
        {"_check_for_haver_dll()", "R1,1:0"},
    };
    try_all(rows);
    (void)ms("_xlbksave(1)");
    EXPECT_NE(session_output.find("_xlbksave():  3022"), std::string::npos) << session_output;
}

TEST(MosaTexts, Tokens)
{
    static const called rows[] = {
        {"tokens(`\"x \"a b\" `\"c \"d\"\"' y\"')", "S1,4:x|\"a b\"|`\"c \"d\"\"'|y"},
        {"tokens(\"a,b c\", \",\")", "S1,3:a|,|b c"},
        {"tp = 1; _tokenget(\"  ab+=1\", tp, \" \", (\"+\", \"+=\"), \"\", 0, 0)", "S1,1:ab"},
        {"_tokenget(\"  ab+=1\", tp, \" \", (\"+\", \"+=\"), \"\", 0, 0)", "S1,1:+="},
        {"tp", "R1,1:7"},
        {"tq = _tokenget(\"  ab+=1\", tp, \" \", \"\", \"\", 0, 0); tq, strofreal(tp)", "S1,2:1|8"},
        {"_tokenget(\"  ab+=1\", tp, \" \", \"\", \"\", 0, 0)", "S1,1:"},
        {"tp = 1; _tokenget(\"1.5e-3-2\", tp, \" \", \"-\", \"\", 1, 0)", "S1,1:1.5e-3"},
        {"tp = 1; _tokenget(\"1.5e-3-2\", tp, \" \", \"-\", \"\", 0, 0)", "S1,1:1.5e"},
        {"tp = 1; _tokenget(\"1.8x+3-2\", tp, \" \", (\"-\", \"+\"), \"\", 0, 1)", "S1,1:1.8x+3"},
        {"tp = 1; _tokenget(\".a-2\", tp, \" \", (\"-\", \".\"), \"\", 1, 1)", "S1,1:."},
        {"tp = 1; _tokenget(\"(a (b) c) d\", tp, \" \", \"\", \"()\", 0, 0)", "S1,1:(a (b) c)"},
        {"tp = 1; _tokenget(\"<a b\", tp, \" \", \"\", \"<>\", 0, 0)", "S1,1:<a b"},
        {"tp = 0; _tokenget(\"a\", tp, \" \", \"\", \"\", 0, 0)", "3300"},
        {"tp = 1; _tokenget(\"a\", tp, \" \", \"\", \"odd\", 0, 0)", "3300"},
        {"_tokenget(\"a\", \"b\", \" \", \"\", \"\", 0, 0)", "3253"},
    };
    try_all(rows);
}

TEST(MosaTexts, Hashes)
{
    static const called rows[] = {
        {"hash1(\"\"), hash1(\"\", 100)", "R1,2:0 1"},
        {"strofreal(hash1((\"a\", \"abc\")[2]), \"%12.0f\")", "S1,1:3977453403"},
        {"hash1(\"abc\", 100)", "R1,1:4"},
        {"hash1((\"ab\", \"c\")) == hash1((\"a\", \"bc\"))", "R1,1:0"},
        {"strofreal(hash1(1.5, ., 2), \"%12.0f\")", "S1,1:751516060"},
        {"strofreal(hash1(1.5, ., 1), \"%12.0f\")", "S1,1:4000359819"},
        {"hash1(1.5) == hash1(1.5, ., byteorder())", "R1,1:1"},
        {"hash1(-0) == hash1(0), hash1(.a) == hash1(.)", "R1,2:1 0"},
        {"hash1((1, 2)) == hash1(C(1, 2)), hash1((1, 2)) == hash1((2, 1))", "R1,2:1 0"},
        {"hash1(1, 0)", "3300"},
        {"hash1(1, 10, 3)", "3300"},
        {"hp = &1; hq = &2; hash1(hp) == hash1(hq)", "R1,1:0"},
    };
    try_all(rows);
}

TEST(MosaTexts, Views)
{
    run("drop _all");
    run("set obs 2");
    run("generate str12 s = \"no \" + string(_n) + \" no\"");
    static const called rows[] = {
        {"vs = .; ov_sview(vs, ., \"s\"); regexm(vs, \"o 2\")", "R2,1:0 1"},
        {"regexr(vs, \"no\", \"\\0\" + \"t\")", "S2,1:not 1 no|not 2 no"},
        {"subinword(vs, \"no\", \"yes\", 1)", "S2,1:yes 1 no|yes 2 no"},
        {"hash1(vs) == hash1((\"no 1 no\" \\ \"no 2 no\"))", "R1,1:1"},
        {"_substr(vs, \"x\", 1)", "3103"},
        {"_editvalue(vs, \"no 2 no\", \"gone\"); vs", "S2,1:no 1 no|gone"},
    };
    try_all(rows);
}

// Whatever the text, tokens follow one another with nothing but white between them.
TEST(MosaTexts, TokensCoverEveryText)
{
    const std::string letters = "ab1.eEx+-= \t\"'`()<>";
    std::mt19937 random(11);
    tk_rules rules;
    rules.white = " \t";
    rules.signs = {"+", "+=", "=", "-", ".."};
    rules.quotes = {{"\"", "\""}, {"`\"", "\"'"}, {"(", ")"}};
    for (int turn = 0; turn < 20000; turn++) {
        std::string s;
        for (unsigned n = random() % 24; n; n--)
            s += letters[random() % letters.size()];
        rules.numbers = turn & 1;
        rules.hex = turn & 2;
        size_t at = 0, from = 0;
        for (std::string_view t; !(t = tk_next(s, &at, rules)).empty(); from = at) {
            ASSERT_EQ(size_t(t.data() - s.data()) + t.size(), at) << s;
            std::string gap = s.substr(from, at - t.size() - from);
            ASSERT_EQ(gap.find_first_not_of(rules.white), gap.npos) << s;
        }
        ASSERT_EQ(at, s.size()) << s;
        ASSERT_EQ(s.find_first_not_of(rules.white, from), s.npos) << s;
    }
}
