// Raw text: what outfile writes comes back through infile, and infix and infile read what a
// second reader reads.
#include "frame.h"
#include <cmath>
#include <fstream>
#include <sstream>

namespace {

struct Words : with_data {};

void put(const std::string &name, const std::string &text)
{
    std::ofstream(name, std::ios::binary) << text;
}

std::string get(const std::string &name)
{
    std::ifstream f(name, std::ios::binary);
    std::stringstream s;
    s << f.rdbuf();
    return s.str();
}

// Numbers with 17 digits, texts without the quote that would end them.
std::string random_words(lcg &rnd, frame *f)
{
    size_t n = 1 + rnd(15);
    std::string list;
    for (int v = 0; v < 5; v++) {
        column c = any_column(rnd, "v" + std::to_string(v), n, v > 2);
        for (std::string &s : c.str) {  // blanks around a text are not its own
            s = any_text(rnd, c.type, "ab, 'c|.-1");
            s.erase(0, s.find_first_not_of(' '));
            s.erase(s.find_last_not_of(' ') + 1);
        }
        static const char *words[] = {"byte", "int", "long", "float", "double"};
        list += c.text() ? " str" + std::to_string(c.type)
                         : std::string(" ") + words[c.type - T_BYTE];
        list += " " + c.name;
        f->push_back(c);
    }
    return list;
}

TEST_F(Words, OutfileThenInfileGivesTheSameData)
{
    static const char *options[] = {"", "wide", "comma", "rjs", "fjs wide"};
    for (uint64_t seed = 1; seed <= 100; seed++) {
        SCOPED_TRACE(seed);
        lcg rnd(seed);
        frame f;
        std::string list = random_words(rnd, &f);
        to_memory(f);
        ASSERT_EQ(run("format v0 v1 v2 %24.0g"), 0);
        // A missing value at the end of a line with commas is told by nothing but the comma.
        ASSERT_EQ(run(std::string("outfile using words, replace ") + options[seed % 5]), 0);
        ASSERT_EQ(run("infile" + list + " using words, clear"), 0) << session_output;
        frame got = memory_frame();
        ASSERT_EQ(got.size(), f.size());
        for (size_t v = 0; v < f.size(); v++) {
            EXPECT_EQ(int(got[v].type), int(f[v].type));
            ASSERT_EQ(got[v].size(), f[v].size()) << get("words.raw");
            for (size_t i = 0; i < f[v].size(); i++)
                EXPECT_TRUE(got[v].at(i) == f[v].at(i) ||
                            (!f[v].text() && std::fabs(got[v].num[i] / f[v].num[i] - 1) < 1e-14))
                    << got[v].at(i) << " for " << f[v].at(i) << "\n" << get("words.raw");
        }
    }
}

TEST_F(Words, OutfileWithADictionaryDescribesItself)
{
    expect_ran({"set obs 3", "gen byte g = _n", "gen str6 t = \"a\" + string(_n) + \" z\"",
                "gen double x = 1/_n", "format x %21.17g", "label variable t \"some text\"",
                "label define g 1 one 2 two", "label values g g",
                "quietly outfile x t g using words, dictionary nolabel replace",
                "infile using words, clear"});
    frame f = memory_frame();
    ASSERT_EQ(f.size(), 3u);
    EXPECT_EQ(f[0].name + f[1].name + f[2].name, "xtg");
    EXPECT_EQ(f[0].type, T_DOUBLE);
    EXPECT_EQ(f[1].type, 6);
    EXPECT_EQ(f[2].type, T_BYTE);
    for (size_t i = 0; i < 3; i++) {
        EXPECT_NEAR(f[0].num[i], 1.0 / double(i + 1), 1e-15);
        EXPECT_EQ(f[1].str[i], "a" + std::to_string(i + 1) + " z");
        EXPECT_EQ(f[2].num[i], double(i + 1));
    }
    char label[81];
    getvarlab(2, label);
    EXPECT_STREQ(label, "some text");
}

// ---- words

struct wordrow {
    const char *text, *line, *want;  // columns of the result, cells with |, columns with ;
};

std::string cells()
{
    std::string s;
    frame f = memory_frame();
    for (const column &c : f) {
        s += c.name == f[0].name ? "" : ";";
        for (size_t i = 0; i < c.size(); i++)
            s += (i ? "|" : "") + c.at(i);
    }
    return s;
}

TEST_F(Words, InfileTakesWordsWhateverTheLines)
{
    static const wordrow rows[] = {
        {"1 2\n3\n\n4", "infile a b using w, clear", "1|3;2|4"},
        {"1 2\r\n3 4\r\n", "infile a b using w, clear", "1|3;2|4"},
        {"1\t2 3", "infile a b using w, clear", "1|3;2|."},
        {"1,2,,4", "infile a b using w, clear", "1|.;2|4"},
        {"1 . .a .z", "infile a b using w, clear", "1|.a;.|.z"},
        {"1 2 3 4 5 6", "infile a _skip b using w, clear", "1|4;3|6"},
        {"1 2 3 4 5 6", "infile a _skip(2) using w, clear", "1|4"},
        {"1 2 3 4 5 6", "infile a b using w, byvariable(3) clear", "1|2|3;4|5|6"},
        {"1 2 3 4 5 6", "infile a b using w in 2/3, clear", "3|5;4|6"},
        {"1 2 3 4 5 6", "infile a b using w if a > 1 & b < 6, clear", "3;4"},
        {"x1 'y z' \"u v\" w", "infile str3 a str9 b using w, clear", "x1|u v;y z|w"},
        {"1e3 -2.5e-1 +7 12x", "infile double(a b) using w, clear", "1000|7;-0.25|."},
        {"abcdef 1", "infile str3 a b using w, clear", "abc;1"},
        {"300 1.5", "infile byte a int b using w, clear", ".;1"},
        {"", "infile a b using w, clear", ";"},
    };
    for (const wordrow &r : rows) {
        put("w.raw", r.text);
        EXPECT_EQ(run(r.line), 0) << r.line << session_output;
        EXPECT_EQ(cells(), r.want) << r.line << " of " << r.text;
        EXPECT_EQ(dsa_check(sysdsa), 0);
    }
}

// ---- columns

TEST_F(Words, InfixReadsColumnsAsASecondReader)
{
    for (uint64_t seed = 1; seed <= 80; seed++) {
        SCOPED_TRACE(seed);
        lcg rnd(seed);
        struct piece {
            int from, to;
            bool text;
        };
        std::vector<piece> p;
        std::string line = "infix", file, name;
        int perrow = 1 + int(rnd(2)), rows = 1 + int(rnd(8)), at = 1, second = 0;
        if (perrow == 2)
            line += " 2 lines";
        for (int v = 0; v < 5; v++) {
            if (perrow == 2 && v == 3) {
                line += rnd(2) ? " 2:" : " /";
                second = v;
                at = 1;
            }
            int from = at + int(rnd(3)), to = from + int(rnd(5));
            at = rnd(4) ? to + 1 : from;  // columns may be read twice
            p.push_back({from, to, rnd(2) == 0});
            line += p.back().text ? " str v" : " double v";
            line += std::to_string(v) + " " + std::to_string(from);
            if (to > from || rnd(2))
                line += (rnd(2) ? "-" : " - ") + std::to_string(to);
        }
        std::vector<std::string> lines;
        for (int i = 0; i < rows * perrow; i++) {
            lines.push_back(any_text(rnd, 26, "0123 45 x-."));
            file += lines.back() + "\n";
        }
        put("w.raw", file);
        ASSERT_EQ(run(line + " using w, clear"), 0) << line << session_output;
        frame got = memory_frame();
        ASSERT_EQ(got.size(), 5u);
        for (size_t v = 0; v < 5; v++) {
            ASSERT_EQ(got[v].text(), p[v].text) << line;
            ASSERT_EQ(got[v].size(), size_t(rows));
            for (size_t i = 0; i < size_t(rows); i++) {
                std::string s = lines[i * size_t(perrow) + (second && int(v) >= second)];
                s.resize(40, ' ');
                s = s.substr(size_t(p[v].from) - 1, size_t(p[v].to - p[v].from + 1));
                s.erase(0, s.find_first_not_of(' '));
                s.erase(s.find_last_not_of(' ') + 1);
                if (!p[v].text) {
                    char *end;
                    double z = strtod(s.c_str(), &end);
                    bool letter = s == ".x";  // the one missing letter these lines can hold
                    s = letter ? ".x" : s.empty() || *end || s.find('x') + 1 ? "." : num_text(z);
                }
                EXPECT_EQ(got[v].at(i), s) << line << "\n" << file;
            }
        }
        ASSERT_EQ(dsa_check(sysdsa), 0);
    }
}

TEST_F(Words, RefusalsKeepTheDataAndTheFiles)
{
    put("w.raw", "1 2 3 4");
    put("bad.dct", "infile dictionary using w.raw {\n byte a\n");
    put("no.dct", "1 2 3\n");
    expect_ran({"set obs 3", "gen a = _n", "gen str3 s = \"x\"", "sort a"});
    expect_refused({{"infile a b using w", 18},
                    {"infix a 1-2 using w", 18},
                    {"infile a b using nosuch, clear", 601},
                    {"infix a 1-2 using nosuch, clear", 601},
                    {"infile a a using w, clear", 110},
                    {"infile 1a using w, clear", 198},
                    {"infile byte using w, clear", 100},
                    {"infix a 3-1 using w, clear", 198},
                    {"infix a using w, clear", 198},
                    {"infile a _skip(0) using w, clear", 198},
                    {"infile using no, clear", 198},
                    {"outfile using w.raw", 602},
                    {"outfile nosuch using w.raw, replace", 111},
                    {"outfile a using w.raw, replace runtogether", 109},
                    {"outfile using w.raw, replace rjs fjs", 184},
                    {"outfile using w.raw, replace comma rjs", 184},
                    {"outfile using nosuch/w.raw", 603}});
    EXPECT_EQ(get("w.raw"), "1 2 3 4");
    EXPECT_NE(run("infile using bad, clear"), 0);
    EXPECT_EQ(dsa_check(sysdsa), 0);
}

}  // namespace
