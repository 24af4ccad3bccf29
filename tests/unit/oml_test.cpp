#include "core/state.h"
#include "output/oml.h"
#include "output/oml_int.h"
#include "output/print.h"
#include <algorithm>
#include <gtest/gtest.h>
#include <fcntl.h>
#include <random>
#include <unistd.h>

namespace
{
int32_t take(const char *text, size_t n, void *arg)
{
    if (text)
        static_cast<std::string *>(arg)->append(text, n);
    return 'q';
}

struct sink {
    oml *o;
    std::string got;
    explicit sink(int width = 79, uint8_t kind = OML_PLAIN) : o(omlopen(kind))
    {
        omlset_user(o, take, &got);
        omlset_maxwidth(o, width);
    }
    ~sink() { omlclose(o); }
    std::string text()
    {
        omlflush(o);
        std::string s = got;
        got.clear();
        return s;
    }
};

std::string rendered(const std::string &markup, int width = 79)
{
    sink s(width);
    omlsend(s.o, markup.c_str());
    return s.text();
}

// A file without a name, for logs.
struct tmpfd {
    int fd;
    tmpfd()
    {
        char name[] = "/tmp/omltestXXXXXX";
        fd = mkstemp(name);
        unlink(name);
    }
    ~tmpfd() { close(fd); }
    std::string text() const
    {
        std::string s(1 << 20, 0);
        ssize_t n = pread(fd, s.data(), s.size(), 0);
        s.resize(n > 0 ? size_t(n) : 0);
        return s;
    }
};
} // namespace

TEST(oml, plain_forms)
{
    static const struct {
        const char *in, *out;
    } rows[] = {
        {"abc\n", "abc\n"},
        {"{res}abc{txt} d\n", "abc d\n"},
        {"a{bf:b{it:c}d}e\n", "abcde\n"},
        {"{hline 2}Break{hline 2}\n", "--Break--\n"},
        {"a{space 3}b\n", "a   b\n"},
        {"a{col 10}b\n", "a        b\n"},
        {"abcdefghijkl{col 10}b\n", "abcdefghijklb\n"},
        {"{search r(198):r(198);}\n", "r(198);\n"},
        {"{help regress##x|y}\n", "regress\n"},
        {"{ovata \"update query\"}\n", "update query\n"},
        {"{ovata \"a:b\":text}\n", "text\n"},
        {"{c -(}x{c )-}{c S|}{c 65}\n", "{x}$A\n"},
        {"{c |}{c TLC}{c -}\n", "|+-\n"},
        {"{&alpha} {c &hellip}&alpha\n", "alpha ...&alpha\n"},
        {"{dtype} {ifin} {weight}\n", "[type] [if] [in] [weight]\n"},
        {"{cmdab:reg:ress}\n", "regress\n"},
        {"{manlink R regress} {manhelp anova R:ANOVA}\n", "[R] regress [R] ANOVA\n"},
        {"a{...}\nb\n", "ab\n"},
        {"{right 6:ab}|{center 6:ab}|{rcenter 5:ab}|{ralign 4:{bf:x}}|\n",
         "    ab|  ab  |  ab |   x|\n"},
        // What is no tag stays.
        {"{nosuch}\n", "{nosuch}\n"},
        {"{nosuch x:a{bf:b}c}d\n", "{nosuch x:abc}d\n"},
        {"{} {:x} { a } }\n", "{} {:x} { a } }\n"},
        {"{c nosuch}{&nosuch}\n", "{c nosuch}{&nosuch}\n"},
        {"{hline 2\n", "{hline 2\n"},
        // A tag left open ends with its line.
        {"{bf:abc\nx}\n", "abc\nx}\n"},
        {"{center 5:abc\nx}\n", " abc \nx}\n"},
        {"{ul on}a{ul off}b{ul}\n", "ab{ul}\n"},
    };
    for (auto &r : rows)
        EXPECT_EQ(rendered(r.in), r.out) << r.in;
}

TEST(oml, pieces_of_a_tag_join)
{
    std::string whole = "{p 0 4}a {bf:word {hline 3}} {ovata \"x:y\":z} {c -(}{p_end}\nq\n";
    for (size_t cut = 0; cut <= whole.size(); cut++) {
        sink s;
        omlsend(s.o, whole.substr(0, cut).c_str());
        omlsend(s.o, whole.substr(cut).c_str());
        EXPECT_EQ(s.text(), "a word --- z {\nq\n") << cut;
    }
    // Raw text in the middle of a tag: it was none.
    sink s;
    omlsend(s.o, "{bf");
    omlsendraw(s.o, ":x}\n");
    EXPECT_EQ(s.text(), "{bf:x}\n");
    // Too long to wait for: no tag, and nothing is lost.
    sink t;
    omlsend(t.o, ("{help " + std::string(600, 'x')).c_str());
    omlsend(t.o, "y}\n");
    std::string got = t.text();
    EXPECT_EQ(got.substr(0, 10), "{help xxxx");
    EXPECT_EQ(std::count(got.begin(), got.end(), 'x'), 600);
}

TEST(oml, paragraphs)
{
    EXPECT_EQ(rendered("{p 2 4 4}\none two three four five six seven eight nine ten\n{p_end}\nx\n", 40),
              "  one two three four five six seven\n    eight nine ten\nx\n");
    EXPECT_EQ(rendered("{p}a\nb\n\nc\n"), "a b\n\nc\n");
    EXPECT_EQ(rendered("{p 0 2}a{break}b{p_end}\nx\n"), "a\n  b\nx\n");
    EXPECT_EQ(rendered("x{p 1 1}a{p_end}y\n"), "x\n a\ny\n");
    std::string word(60, 'w');
    EXPECT_EQ(rendered("{p}a " + word + " b{p_end}\n", 40), "a\n" + word + "\nb\n");
    word.assign(700, 'w');
    EXPECT_EQ(rendered("{p}a " + word + " b{p_end}\n", 40), "a\n" + word + "\nb\n");
    // Raw text takes part in the wrap, and its braces are text.
    sink s(40);
    omlsend(s.o, "{p 0 4}\n");
    omlsendraw(s.o, "{bf:aaaaaaaaaaaaaaaaa bbbbbbbbbbbbbbbbb ccccccccccc}");
    omlsend(s.o, "{p_end}\n");
    EXPECT_EQ(s.text(), "{bf:aaaaaaaaaaaaaaaaa bbbbbbbbbbbbbbbbb\n    ccccccccccc}\n");
}

TEST(oml, tables)
{
    EXPECT_EQ(rendered("{p2colset 2 10 12 2}{p2col:ab}text{p_end}\n{p2col:longerword}text{p_end}\n"),
              "  ab      text\n  longerword\n          text\n");
    EXPECT_EQ(rendered("{synoptset 10}{synopthdr:opts}\n{synopt:{bf:x}}does{p_end}\n", 40),
              "  opts       Description\n  " + std::string(38, '-') + "\n  x          does\n");
    EXPECT_EQ(rendered("{p2line 4 4}\nx\n", 40), "    " + std::string(32, '-') + "\nx\n");
}

TEST(oml, plain_text_wraps_and_never_exceeds)
{
    EXPECT_EQ(rendered(std::string(40, 'a') + "\n", 40), std::string(40, 'a') + "\n");
    EXPECT_EQ(rendered(std::string(45, 'a') + "\n", 40),
              std::string(40, 'a') + "\n> " + std::string(5, 'a') + "\n");
    EXPECT_EQ(rendered(std::string(39, 'a') + "\xc3\xa9" + "b\n", 40),
              std::string(39, 'a') + "\xc3\xa9" + "\n> b\n");
    EXPECT_EQ(rendered("{hline}\n{right:ab}\n{center:ab}\n", 40),
              std::string(40, '-') + "\n" + std::string(38, ' ') + "ab\n" +
                  std::string(19, ' ') + "ab\n");
}

TEST(oml, width_is_clamped)
{
    sink s;
    EXPECT_EQ(omlset_maxwidth(s.o, 39), 40);
    EXPECT_EQ(omlset_maxwidth(s.o, 256), 255);
    EXPECT_EQ(omlset_maxwidth(s.o, -1), 40);
    EXPECT_EQ(omlset_maxwidth(s.o, 100), 100);
    EXPECT_EQ(omlquery_maxwidth(s.o), 100);
}

TEST(oml, lengths)
{
    EXPECT_EQ(lenofomcl("a{bf:bc}{hline 3}"), 6);
    EXPECT_EQ(lenofomcl("{center 9:ab}"), 9);
    EXPECT_EQ(omltext("a{bf:bc}"), "abc");
    // Measuring within measuring is bounded.
    std::string deep;
    for (int i = 0; i < 400; i++)
        deep += "{center 3:";
    deep += std::string(400, '}');
    EXPECT_GT(lenofomcl(deep.c_str()), 0);
}

// Every row of the table, in the forms a page may use it, and a reader that goes on after it.
TEST(oml, every_tag)
{
    for (int32_t i = 0; i < nomltags; i++) {
        std::string name = omltags[i].name;
        EXPECT_EQ(oml_tag(name.data(), name.size()), &omltags[i]) << name;
        for (std::string args : {"", " 3", " R regress", " on", " \"a:b\""})
            for (std::string body : {"", ":x{bf:y}", ":"}) {
                sink s(40);
                omlsend(s.o, ("{" + name + args + body + "}{p_end}\n").c_str());
                omlsend(s.o, "{txt}{ul off}\nlast\n");
                std::string got = s.text();
                EXPECT_EQ(got.substr(got.size() - 5), "last\n") << name << args << body;
                for (size_t at = 0; at < got.size();) {
                    size_t nl = got.find('\n', at);
                    EXPECT_LE(nl - at, 40u) << name << args << body;
                    at = nl + 1;
                }
                bool shows = body == ":x{bf:y}" && omltags[i].form == OF_OPEN;
                EXPECT_TRUE(!shows || got.find("xy") != got.npos) << name << args << got;
            }
    }
    for (int32_t i = 0; i < nomlentities; i++) {
        std::string name = omlentities[i].name;
        EXPECT_EQ(rendered("{&" + name + "}\n"), std::string(omlentities[i].ascii) + "\n");
        sink s;
        omlset_chars(s.o, 1);
        omlsend(s.o, ("{c &" + name + "}\n").c_str());
        EXPECT_NE(s.text(), "\n") << name;
    }
}

// What was printed raw comes back from a mark-up log byte for byte, and the plain log of the
// session equals the plain rendering of the mark-up log.
TEST(oml, raw_text_survives_a_markup_log)
{
    std::mt19937 rng(20261121);
    static const char telling[] = "{}{}:&\" bfchline23()-p\n\n";
    for (int round = 0; round < 400; round++) {
        sink s;
        tmpfd in, out;
        int32_t idin = omlset_log_input(s.o, in.fd), idout = omlset_log_output(s.o, out.fd, 79);
        std::string all;
        for (int k = int(rng() % 6); k >= 0; k--) {
            std::string raw;
            for (int n = int(rng() % 60); n > 0; n--)
                raw += rng() % 3 ? telling[rng() % (sizeof telling - 1)] : char(1 + rng() % 255);
            if (rng() % 3 == 0)
                omlsend(s.o, rng() % 2 ? "{res}{bf:" : rng() % 2 ? "{hline 3}{c -" : "{p 0 4}");
            omlsendraw(s.o, raw.c_str());
            all += raw;
        }
        omlsend(s.o, "{p_end}\n");
        EXPECT_EQ(omllog_close(s.o, idin), 0);
        EXPECT_EQ(omllog_close(s.o, idout), 0);
        std::string log = in.text();
        ASSERT_EQ(log.substr(0, 7), "{omcl}\n");
        EXPECT_EQ(rendered(log.substr(7)), out.text()) << "round " << round;
        EXPECT_EQ(s.text(), out.text());
    }
    sink s(255);
    std::string raw = "a{bf:b} {c -(} {";
    tmpfd in;
    int32_t id = omlset_log_input(s.o, in.fd);
    omlsendraw(s.o, raw.c_str());
    EXPECT_EQ(omllog_close(s.o, id), 0);
    EXPECT_EQ(rendered(in.text().substr(7), 255), raw);
}

TEST(oml, failed_log_writes_are_kept)
{
    sink s;
    int full = open("/dev/full", O_WRONLY);
    ASSERT_GE(full, 0);
    int32_t id = omlset_log_output(s.o, full, 79);
    omlsendraw(s.o, "text\n");
    omlflush(s.o);
    EXPECT_EQ(oml_query_log_err(s.o), 693);
    EXPECT_EQ(omllog_close(s.o, id), 693);
    EXPECT_EQ(oml_query_log_err(s.o), 0);
    close(full);
}

TEST(print, levels_styles_and_break)
{
    sink s(79, OML_MARKUP);
    oml *was = oml_cur;
    oml_cur = s.o;
    static const char *const tags[] = {"{res}", "", "", "{err}", "{com}", ""};
    for (uint8_t level = 0; level <= 5; level++) {
        s.o->style = ST_TXT;
        spout21at(level, "x{");
        EXPECT_EQ(s.text(), std::string(tags[level]) + "x{c -(}") << int(level);
    }
    s_outlev = 3;
    stopflag = 1;
    EXPECT_EQ(spout21at(2, "hidden"), 1);
    EXPECT_EQ(s.text(), "");
    stopflag = 0;
    s_outlev = 0;
    c_outlev = 0;
    spoutsml("{bf:a}");
    EXPECT_EQ(s.text(), "{bf:a}");
    oml_cur = was;
}
