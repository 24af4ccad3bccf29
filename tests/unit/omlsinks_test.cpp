// The renderer's sinks: widths over random mark-up, the marks for other writers, streams of
// mark-up, output past the logs.
#include "core/state.h"
#include "output/oml.h"
#include "output/oml_int.h"
#include "output/translate.h"
#include <gtest/gtest.h>
#include <cerrno>
#include <random>
#include <unistd.h>

namespace
{
int32_t take(const char *text, size_t n, void *arg)
{
    if (text)
        static_cast<std::string *>(arg)->append(text, n);
    return 0;
}

struct filefd {
    char name[24] = "/tmp/omlsinkXXXXXX";
    int fd = mkstemp(name);
    ~filefd()
    {
        close(fd);
        unlink(name);
    }
    std::string text() const
    {
        std::string s(size_t(lseek(fd, 0, SEEK_END)), 0);
        return pread(fd, s.data(), s.size(), 0) == ssize_t(s.size()) ? s : "short read";
    }
};

int columns(const std::string &s)
{
    int n = 0;
    for (char c : s)
        n += (uint8_t(c) & 0xc0) != 0x80;
    return n;
}

// A line may be longer than the width only by one word that nothing could break.
void expect_fits(const std::string &text, int width, const std::string &from)
{
    for (size_t at = 0; at < text.size();) {
        size_t nl = std::min(text.find('\n', at), text.size());
        std::string line = text.substr(at, nl - at);
        at = nl + 1;
        if (columns(line) <= width)
            continue;
        size_t b = line.find_first_not_of(' ');
        EXPECT_EQ(line.find(' ', b), line.npos) << width << " [" << line << "]\nfrom " << from;
    }
}
} // namespace

TEST(omlsinks, lines_fit_the_width)
{
    static const char *const parts[] = {
        "word ",
        "two words ",
        "{bf:bold} ",
        "{it:{bf:x}y} ",
        "\n",
        "\n\n",
        "{p 4 8 2}",
        "{p 10 2}",
        "{p}",
        "{p_end}\n",
        "{break}",
        "{hline}",
        "{hline 30}",
        "{space 7}",
        "{col 33}",
        "{center:middle}",
        "{right:r}",
        "{ralign 12:right}",
        "{dup 9:ab }",
        "{c TLC}{c -}",
        "{&alpha}",
        "{p2colset 3 20 22 2}{p2col:first}",
        "{p2col:a first that is long}",
        "{p2line}",
        "{synoptset 14}",
        "{synopthdr}",
        "{synopt:{cmd:opt}}does ",
        "{synoptline}\n",
        "{syntab:T}",
        "{help x:link} ",
        "{dtype} ",
        "{ifin} ",
        "{manlink R reg} ",
        "{cmdab:reg:ress} ",
        "{nosuch} ",
        "{...}\n",
        "a-word-of-many-characters-without-a-blank ",
        "caf\xc3\xa9 ",
        "{c -(}",
        "}",
        "{",
    };
    std::mt19937 rng(20261122);
    for (int round = 0; round < 3000; round++) {
        int width = 40 + int(rng() % 60);
        std::string markup, got;
        for (int n = int(rng() % 25); n >= 0; n--)
            markup += parts[rng() % std::size(parts)];
        oml *o = omlopen(OML_PLAIN);
        omlset_user(o, take, &got);
        omlset_maxwidth(o, width);
        for (size_t at = 0; at < markup.size();) {
            size_t k = 1 + rng() % 40;
            rng() % 8 ? omlsend(o, markup.substr(at, k).c_str())
                      : omlsendraw(o, markup.substr(at, k).c_str());
            at += k;
        }
        omlsendraw(o, "\n");
        omlsend(o, "{p_end}\n");
        omlclose(o);
        expect_fits(got, width, markup);
        if (HasFailure())
            break;
    }
}

// Texts, tags and escapes laid across every boundary of the buffers.
TEST(omlsinks, buffers_are_crossed)
{
    for (size_t at = omlbuflen - 30; at < omlbuflen + 6; at++)
        for (const char *what : {"{bf:x}", "{hline 3}", "{c -(}", "{ovata \"a:b\":y}", "\n"}) {
            std::string before(at, 'w'), a, b;
            oml *one = omlopen(OML_PLAIN), *two = omlopen(OML_PLAIN);
            omlset_user(one, take, &a);
            omlset_user(two, take, &b);
            for (oml *o : {one, two})
                omlsend(o, "{p 2 4}");
            omlsend(one, (before + what + "end {p_end}\n").c_str());
            omlsend(two, before.c_str());
            for (const char *p = what; *p; p++) {
                char c[2] = {*p, 0};
                omlsend(two, c);
            }
            omlsend(two, "end {p_end}\n");
            omlclose(one);
            omlclose(two);
            EXPECT_EQ(a, b) << at << what;
            EXPECT_EQ(size_t(std::count(a.begin(), a.end(), 'w')), at);
        }
}

TEST(omlsinks, marks_come_apart_again)
{
    struct reader : markreader {
        std::string got, last;
        void run(uint8_t style, const std::string &link, const char *p, size_t n) override
        {
            std::string head = "[" + std::to_string(style) + link + ":";
            if (head != last || got.empty() || got.back() == '/')
                got += head;
            else
                got.pop_back();
            last = head;
            got += std::string(p, n) + "]";
        }
        void lineend() override { got += "/"; }
    };
    auto read = [](const char *markup, size_t pieces) {
        std::string bytes;
        oml *o = omlsend_genascii_begin(60, true, take, &bytes);
        omlsend_genascii(o, markup);
        omlclose(o);
        reader r;
        for (size_t at = 0; at < bytes.size(); at += pieces)
            r.take(bytes.data() + at, std::min(pieces, bytes.size() - at));
        return r.got;
    };
    for (size_t pieces : {1, 2, 3, 1000}) {
        EXPECT_EQ(read("a{res}b{txt}{bf:c}\nd\n", pieces), "[0:a][1:b][4:c]/[0:d]/");
        EXPECT_EQ(read("{help merge:x} {help list}\n", pieces), "[32merge:x][0: ][32list:list]/");
        EXPECT_EQ(read("{p 1 1}{help by##z|w:join} {it:i}{p_end}\n", pieces),
                  "[0: ][32by:join][0: ][8:i]/")
            << pieces;
    }
    EXPECT_EQ(utf8_at("\xc3\xa9", 2), 2u);
    for (const char *bad :
         {"\xc3", "\xc0\x80", "\xed\xa0\x80", "\xf5\x80\x80\x80", "\x80", "\xe0\x80\x80"})
        EXPECT_EQ(utf8_at(bad, strlen(bad)), 0u);
}

TEST(omlsinks, streams_of_markup_and_past_the_logs)
{
    std::string got;
    filefd plain, marked;
    oml *o = omlopen(OML_PLAIN);
    omlset_user(o, take, &got);
    int32_t a = omlset_log_output(o, plain.fd, 79), b = omlset_log_input(o, marked.fd);
    omlsendscreen(o, "{bf:only here}\n");
    omlsend(o, "both\n");
    omlsendlog(o, b, "{it:there}\n");
    omllog_pause(o, a, true);
    omlsendlog(o, a, "{bf:even so}\n");
    omlsend(o, "not there\n");
    EXPECT_EQ(omllog_close(o, a) + omllog_close(o, b), 0);
    EXPECT_EQ(plain.text(), "both\neven so\n");
    EXPECT_EQ(marked.text(), "{omcl}\n{txt}both\n{it:there}\nnot there\n");
    omlflush(o);
    EXPECT_EQ(got, "only here\nboth\nnot there\n");
    got.clear();
    omlomclset(o, true);
    omlsend(o, "{bf:x}");
    omlsendraw(o, "{");
    omlomclset(o, false);
    omlsend(o, "{bf:y}");
    omlomclsetweak(o, true);
    omlsend(o, "{bf:z}");
    omlflush(o);
    EXPECT_EQ(got, "{omcl}\n{bf:x}{c -(}y{bf:z}");
    EXPECT_FALSE(omlcolorset(o, true));
    EXPECT_TRUE(omlcolorset(o, false));
    omlclose(o);
    EXPECT_TRUE(omlpromptset("{hline 1}go on?{hline 1}\n"));
    EXPECT_STREQ(oml_moreform(), "-go on?-");
    EXPECT_TRUE(omlpromptset("{clearmore:{hline 2}more{hline 2}}\n"));
    EXPECT_STREQ(oml_moreform(), "--more--");
}

// The text of a mark-up log is what a text log of the same output held.
TEST(omlsinks, translation_equals_the_text_log)
{
    std::mt19937 rng(20261123);
    for (int round = 0; round < 60; round++) {
        filefd plain, marked, made;
        std::string got;
        oml *o = omlopen(OML_PLAIN);
        omlset_user(o, take, &got);
        int32_t a = omlset_log_output(o, plain.fd, 79), b = omlset_log_input(o, marked.fd);
        for (int n = int(rng() % 400); n > 0; n--) {
            std::string text;
            for (int k = int(rng() % 90); k > 0; k--)
                text += "ab {}:\n\t&hline c-("[rng() % 18];
            rng() % 2 ? omlsendraw(o, text.c_str()) : omlsend(o, text.c_str());
        }
        omlsendraw(o, "");
        omlsend(o, "{p_end}");
        EXPECT_EQ(omllog_close(o, a) + omllog_close(o, b), 0);
        omlclose(o);
        trans_how how = {TR_TEXT, true, 79, "", false, 9, 8.5, 11, 1, 1, 1, 1};
        EXPECT_EQ(translate_file(marked.name, made.name, true, how), 0);
        EXPECT_TRUE(made.text() == plain.text()) << round;
    }
}

TEST(omlsinks, html_escapes_and_pages_are_made)
{
    filefd in, out;
    std::string text =
        "{omcl}\n{err:<&>\"} {help a b:l} {help javascript{c -(}x:m} \x01\xff caf\xc3\xa9\n";
    text += "{p}alone on its page{newpage}\n";
    for (int i = 0; i < 200; i++)
        text += "line {bf:" + std::to_string(i) + "}\n";
    ASSERT_EQ(write(in.fd, text.data(), text.size()), ssize_t(text.size()));
    trans_how how = {TR_HTML, true, 79, "<t>", true, 9, 8.5, 11, 1, 1, 1, 1};
    ASSERT_EQ(translate_file(in.name, out.name, true, how), 0);
    std::string html = out.text();
    EXPECT_NE(html.find("<title>&lt;t&gt;</title>"), html.npos);
    EXPECT_NE(html.find("<span class=\"e\">&lt;&amp;&gt;&quot;</span> <a href=\"a_b.html\">l</a>"),
              html.npos)
        << html;
    EXPECT_NE(html.find("?\xef\xbf\xbd caf\xc3\xa9\n"), html.npos);
    EXPECT_EQ(html.substr(html.size() - 15), "/body>\n</html>\n");
    for (trans_kind kind : {TR_PS, TR_PDF}) {
        how.kind = kind;
        ASSERT_EQ(translate_file(in.name, out.name, true, how), 0);
        std::string page = out.text();
        EXPECT_EQ(page.substr(0, 4), kind == TR_PS ? "%!PS" : "%PDF");
        EXPECT_TRUE(kind == TR_PDF || page.find("%%Pages: 5") != page.npos); // 201 lines, 58 each
    }
    EXPECT_EQ(translate_file(in.name, out.name, false, how), 602);
    EXPECT_EQ(translate_file(in.name, (std::string("/tmp/.") + (in.name + 4)).c_str(), true, how), 602);
    EXPECT_EQ(translate_file("/nosuch/in", out.name, true, how), 601);
    how.kind = TR_TEXT;
    ASSERT_TRUE(!symlink("/dev/full", "full.txt") || errno == EEXIST);
    EXPECT_EQ(translate_file(in.name, "full.txt", true, how), 693);
    unlink("full.txt");
}
