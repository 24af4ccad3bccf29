// Lists of words in macros, held against plain set and sequence work on vectors of words, and
// the extended functions and references, each with its text worked out by hand.
#include "../session.h"
#include "core/rc.h"
#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <set>
#include <vector>

namespace {

using words = std::vector<std::string>;

std::mt19937 rng(4711);

words some(bool distinct)
{
    static const char *const pool[] = {"a", "b", "B", "ab", "a b", "c", "10", "9", "x y z", "_", "a.b", "-"};
    words w;
    for (int n = int(rng() % 8); n > 0; n--) {
        std::string s = pool[rng() % std::size(pool)];
        if (!distinct || std::find(w.begin(), w.end(), s) == w.end())
            w.push_back(s);
    }
    return w;
}

std::string text(const words &w)
{
    std::string s;
    for (const std::string &x : w)
        s += (s.empty() ? "" : " ") + (x.find(' ') == x.npos ? x : "\"" + x + "\"");
    return s;
}

bool has(const words &w, const std::string &x) { return std::find(w.begin(), w.end(), x) != w.end(); }

std::string value(const char *name)
{
    const char *p = macptr(name);
    return p ? p : "";
}

std::string list(const std::string &what)
{
    EXPECT_EQ(run("global OUT : list " + what), 0) << what;
    return value("OUT");
}

// Texts of the two lists, for the message of a failure.
std::string both(const words &a, const words &b) { return "a: " + text(a) + "   b: " + text(b); }

TEST(macrolists, one_list)
{
    session();
    for (int round = 0; round < 300; round++) {
        words a = some(false), uniq, dups;
        for (const std::string &x : a)
            (has(uniq, x) ? dups : uniq).push_back(x);
        ASSERT_EQ(macresave("_a", text(a).c_str()), 0);
        EXPECT_EQ(list("uniq a"), text(uniq)) << text(a);
        EXPECT_EQ(list("dups a"), text(dups)) << text(a);
        EXPECT_EQ(list("sizeof a"), std::to_string(a.size())) << text(a);
        EXPECT_EQ(list("retokenize a"), text(a));
        words sorted = a;
        std::sort(sorted.begin(), sorted.end());
        EXPECT_EQ(list("sort a"), text(sorted));
        EXPECT_EQ(list("clean a"), text(a));
        for (const char *x : {"a b", "9", "B"}) {
            auto at = std::find(a.begin(), a.end(), x);
            std::string want = at == a.end() ? "0" : std::to_string(at - a.begin() + 1);
            EXPECT_EQ(list("posof \"" + std::string(x) + "\" in a"), want) << text(a);
        }
    }
}

TEST(macrolists, two_lists)
{
    session();
    for (int round = 0; round < 300; round++) {
        words a = some(true), b = some(true), join = a, meet, less;
        if (round % 3 == 0) {
            b = a;
            std::shuffle(b.begin(), b.end(), rng);
        }
        for (const std::string &x : b)
            if (!has(a, x))
                join.push_back(x);
        for (const std::string &x : a)
            (has(b, x) ? meet : less).push_back(x);
        ASSERT_EQ(macresave("_a", text(a).c_str()), 0);
        ASSERT_EQ(macresave("b", text(b).c_str()), 0);     // a global on the right
        EXPECT_EQ(list("a | global(b)"), text(join)) << both(a, b);
        EXPECT_EQ(list("a & global(b)"), text(meet)) << both(a, b);
        EXPECT_EQ(list("a - global(b)"), text(less)) << both(a, b);
        EXPECT_EQ(list("a in global(b)"), less.empty() ? "1" : "0") << both(a, b);
        EXPECT_EQ(list("a == global(b)"), a == b ? "1" : "0") << both(a, b);
        bool same = std::set<std::string>(a.begin(), a.end()) == std::set<std::string>(b.begin(), b.end());
        EXPECT_EQ(list("a === global(b)"), same ? "1" : "0") << both(a, b);
    }
    run("macro drop b");
}

TEST(macrolists, malformed)
{
    session();
    ASSERT_EQ(run("local a x y"), 0);
    for (const char *bad : {"", "nosuch a", "a ! a", "posof a", "posof \"x\" a", "a |", "| a",
                            "uniq a a", "a & a a", "a in"})
        EXPECT_NE(run("local z : list " + std::string(bad)), 0) << bad;
    EXPECT_EQ(list("nothere | a"), "x y");      // an absent macro is an empty list
    EXPECT_EQ(list("sizeof nothere"), "0");
}

// The line with its macros put in, then run.
int32_t runx(const std::string &line)
{
    session();
    memcpy(console, line.c_str(), line.size() + 1);
    int32_t rc = macexp();
    return rc ? rc : run(std::string(console));
}

struct row {
    const char *line, *want;
};

void check(const row *r, size_t n)
{
    for (; n > 0; n--, r++) {
        EXPECT_EQ(runx(std::string("global OUT `\"") + r->line + "\"'"), 0) << r->line << session_output;
        EXPECT_EQ(value("OUT"), r->want) << r->line;
    }
}

TEST(macrolists, functions_on_text)
{
    session();
    for (const char *l : {"local s one two  three", "local q a \"b c\" `\"d \"e\" f\"' g", "local k 3",
                          "local n 2", "local w2 second", "global G ab"})
        ASSERT_EQ(run(l), 0);
    static const row rows[] = {
        {"`: word count `s''", "3"},
        {"`: word 2 of `s''", "two"},
        {"`: word 4 of `s''", ""},
        {"`: word `k' of `s''", "three"},
        {"`: word count `q''", "4"},
        {"`: word 2 of `q''", "b c"},
        {"`: word 3 of `q''", "d \"e\" f"},
        {"`: word `: word count `s'' of `s''", "three"},
        {"`: length local s'", "14"},
        {"`: length global G'", "2"},
        {"`: length local nothere'", "0"},
        {"`: copy global G'", "ab"},
        {"`: subinstr local s \"o\" \"0\", all'", "0ne tw0  three"},
        {"`: subinstr local s \"one\" \"\", word'", " two  three"},
        {"`: subinstr local s \"t\" \"T\", word all'", "one two  three"},
        {"`: subinstr global G \"b\" \"bb\", all'", "abb"},
        {"`: subinstr local s \"e\" \"ee\", all'", "onee two  threeee"},
        {"`: display %6.2f 3.14159'", "  3.14"},
        {"`: display %td 366'", "01jan1961"},
        {"`: display 1+1'", "2"},
        {"`w`n''", "second"},
        {"`w`=1+1''", "second"},
        {"`w`: word 2 of 1 2 3''", "second"},
        {"${G}c $G", "abc ab"},
        {"`=strlen(\"`s'\")'", "14"},
        {"`=cond(`k'>`n', \"more\", \"less\")'", "more"},
        {"`=`k'^`n''", "9"},
        {"`=-1/4'", "-.25"},
        {"`=1e-5'", ".00001"},
        {"`=2^53'", "9007199254740992"},
        {"`=.'|`=.z'", ".|.z"},
        {"`=d(1jan1960)'", "0"},
        {"\\`s' \\$G", "`s' $G"},
    };
    check(rows, std::size(rows));
    run("macro drop G OUT");
}

TEST(macrolists, functions_on_data)
{
    session();
    for (const char *l : {"clear", "set obs 4", "gen byte sex = mod(_n, 2)", "gen str5 name = \"x\"",
                          "gen double pay = 10 * (5 - _n)", "label variable pay \"Weekly pay\"",
                          "label define mf 0 \"man\" 1 \"woman\" 12 \"far away\"", "label values sex mf",
                          "format pay %12.2fc", "char pay[note] in euros", "char _dta[src] survey",
                          "scalar zz1 = 5", "scalar zz2 = 6", "matrix M = (1, 2 \\ 3, 4)",
                          "matrix rownames M = r1 eq:r2", "matrix colnames M = c1 c2"})
        ASSERT_EQ(run(l), 0) << l << session_output;
    static const row rows[] = {
        {"`: variable label pay'", "Weekly pay"},
        {"`: variable label sex'", ""},
        {"`: value label sex'|`: value label pay'", "mf|"},
        {"`: label mf 1'", "woman"},
        {"`: label (sex) 0'", "man"},
        {"`: label mf 5'", "5"},             // no text: the number itself
        {"`: label mf 12 3'", "far"},
        {"`: label mf maxlength'", "8"},
        {"`: type pay' `: type name' `: type sex'", "double str5 byte"},
        {"`: format pay' `: format name'", "%12.2fc %9s"},
        {"`: char pay[note]'|`: char _dta[src]'|`: char sex[none]'", "in euros|survey|"},
        {"`pay[note]'", "in euros"},
        {"`: rownames M'", "r1 r2"},
        {"`: roweq M'", "_ eq"},
        {"`: rowfullnames M'", "r1 eq:r2"},
        {"`: colnames M'|`: colfullnames M'", "c1 c2|c1 c2"},
        {"`: all scalars zz*'", "zz1 zz2"},
        {"`: sortedby'", ""},
    };
    check(rows, std::size(rows));
    ASSERT_EQ(run("sort sex pay"), 0);
    static const row sorted[] = {{"`: sortedby'", "sex pay"}, {"`=pay[1]' `=pay[_N]'", "10 40"}};
    check(sorted, 2);
    EXPECT_NE(run("local x : variable label nosuch"), 0);
    EXPECT_NE(run("local x : rownames NOSUCH"), 0);
    EXPECT_EQ(run("local x : type nosuch"), RC_NOTFOUND);
    EXPECT_EQ(run("clear"), 0);
    run("scalar drop zz1 zz2");
    run("matrix drop M");
}

// A value is stored whole whichever of the forms writes it, and comes back through any reference.
TEST(macrolists, values_survive)
{
    session();
    static const char alphabet[] = "ab \"'{}$\\`()[],;:=*/+-%#@!~.9";
    for (int round = 0; round < 400; round++) {
        std::string v = "x";
        for (int n = int(rng() % 40); n > 0; n--)
            v += alphabet[rng() % (sizeof alphabet - 1)];
        v += "y";
        ASSERT_EQ(macresave("_v", v.c_str()), 0);
        ASSERT_EQ(run("local c : copy local v"), 0) << v;
        EXPECT_EQ(value("_c"), v);
        ASSERT_EQ(run("local n : length local v"), 0) << v;
        EXPECT_EQ(value("_n"), std::to_string(v.size())) << v;
        if (v.find_first_of("`$\\'\"") != v.npos)
            continue;
        ASSERT_EQ(runx("local d `v'"), 0) << v;
        EXPECT_EQ(value("_d"), v);
        ASSERT_EQ(runx("local d = \"`v'\""), 0) << v;
        EXPECT_EQ(value("_d"), v);
    }
}

// tokenize and gettoken against a splitter written here: a separator is a token of its own,
// but for the blank.
TEST(macrolists, splitting)
{
    session();
    for (int round = 0; round < 300; round++) {
        std::string line;
        for (int n = int(rng() % 20); n > 0; n--)
            line += "ab+, c="[rng() % 7];
        std::string seps = round % 2 ? " +,=" : " ";
        words want;
        std::string word;
        for (char c : line + " ") {
            if (seps.find(c) == seps.npos) {
                word += c;
                continue;
            }
            if (!word.empty())
                want.push_back(word);
            word.clear();
            if (c != ' ')
                want.push_back(std::string(1, c));
        }
        ASSERT_EQ(run("tokenize `\"" + line + "\"', parse(\"" + seps + "\")"), 0) << line;
        for (size_t i = 0; i <= want.size(); i++)
            EXPECT_EQ(value(("_" + std::to_string(i + 1)).c_str()), i < want.size() ? want[i] : "") << line;
    }
    static const struct {
        const char *text, *options, *first, *rest;
    } rows[] = {
        {"one two three", "", "one", " two three"},
        {"  one", "", "one", ""},
        {"", "", "", ""},
        {"a,b,c", ", parse(\",\")", "a", ",b,c"},
        {",b,c", ", parse(\",\")", ",", "b,c"},
        {"a+b c", ", parse(\" +\")", "a", "+b c"},
        {"\"a b\" c", "", "a b", " c"},
        {"\"a b\" c", ", quotes", "\"a b\"", " c"},
        {"(a b) c", ", bind", "(a b)", " c"},
        {"(a b) c", ", match(m)", "a b", " c"},
        {"f(a, b)[1 2] c", ", bind", "f(a, b)[1 2]", " c"},
    };
    for (const auto &r : rows) {
        ASSERT_EQ(macresave("_t", r.text), 0);
        ASSERT_EQ(run(std::string("gettoken first rest : t") + r.options), 0) << r.text;
        EXPECT_EQ(value("_first"), r.first) << r.text << r.options;
        EXPECT_EQ(value("_rest"), r.rest) << r.text << r.options;
        EXPECT_EQ(value("_t"), r.text);
    }
}

} // namespace
