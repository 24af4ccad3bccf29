#include "core/limits.h"
#include "core/rc.h"
#include "interp/tokens.h"
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

// All tokens of a text; a quoted string keeps its mark.
std::vector<std::string> all(std::string text, const char *parse)
{
    toktype ti;
    ti_settok(&ti, text.data());
    std::vector<std::string> out;
    while (*ti_gettok(&ti, parse) && out.size() < 100)
        out.push_back(ti.token);
    return out;
}
using words = std::vector<std::string>;

TEST(tokens, words_and_joined_operators)
{
    EXPECT_EQ(all("a==b", prsestd), (words{"a", "==", "b"}));
    EXPECT_EQ(all("a!=b ~=c <=d>=e", prsestd),
              (words{"a", "!=", "b", "~=", "c", "<=", "d", ">=", "e"}));
    EXPECT_EQ(all("a+=b", prsestd), (words{"a", "+", "=", "b"}));
    EXPECT_EQ(all("x-=1 *=&=", prsestd), (words{"x", "-", "=", "1", "*", "=", "&", "="}));
    EXPECT_EQ(all("a\tb c", prsestd), (words{"a\tb", "c"}));
    EXPECT_EQ(all("", prsestd), words{});
    EXPECT_EQ(all("   ", prsestd), words{});
    // Joining asks for a parse character: under prsefls ! and ~ stay in words.
    EXPECT_EQ(all("!=a", prsefls), (words{"!", "=", "a"}));
    EXPECT_EQ(all("~=a", prsevar), (words{"~", "=", "a"}));
}

TEST(tokens, quotes)
{
    EXPECT_EQ(all("\"a b\"c", prsestd), (words{"\"a b", "c"}));
    EXPECT_EQ(all("\"abc", prsestd), (words{"\"abc"}));
    EXPECT_EQ(all("`\"a \"b\" c\"'x", prsestd), (words{"\"a \"b\" c", "x"}));
    EXPECT_EQ(all("`\"a `\"b\"' c\"'", prsestd), (words{"\"a `\"b\"' c"}));
    EXPECT_EQ(all("`\"open `\"b\"'", prsestd), (words{"\"open `\"b\"'"}));
    EXPECT_EQ(all("`a'", prsestd), (words{"`", "a", "'"}));
    // Where ` is no parse character it begins a word.
    EXPECT_EQ(all("`a b", prseeqn), (words{"`a", "b"}));
    EXPECT_EQ(all("\"\" x", prsestd), (words{"\"", "x"}));
}

TEST(tokens, parse_strings_differ_as_told)
{
    EXPECT_EQ(all("-1+2", prsenum), (words{"-1+2"}));
    EXPECT_EQ(all("-1+2", prsestd), (words{"-", "1", "+", "2"}));
    EXPECT_EQ(all("a.b", prsestdot), (words{"a", ".", "b"}));
    EXPECT_EQ(all("f(x)", prsestdnp), (words{"f(x)"}));
    EXPECT_EQ(all("a<b", prsestdnoangle), (words{"a<b"}));
    EXPECT_EQ(all("a~b?", prsevar), (words{"a~b", "?"}));
    EXPECT_EQ(all("a~b?c*d", prsestd2), (words{"a~b?c*d"}));
    EXPECT_EQ(all("a#b*c", prse_fvstd), (words{"a#b", "*", "c"}));
    EXPECT_EQ(all("/a/b.do,c:\\d-e|f", prsefls), (words{"/a/b.do", ",", "c:\\d-e", "|", "f"}));
    EXPECT_EQ(all(".a.b[1]:c", prseclsvar), (words{".a.b[1]", ":", "c"}));
    EXPECT_EQ(all(".a:c", prseclsvnoc), (words{".a:c"}));
    EXPECT_EQ(all("a-b#c=[d", prseeqn), (words{"a-b", "#", "c", "=", "[", "d"}));
    EXPECT_STREQ(prseopt, prsenum);
    // A caller's own string, changed between two calls.
    char own[] = " x";
    EXPECT_EQ(all("axb", own), (words{"a", "x", "b"}));
    own[1] = 'b';
    EXPECT_EQ(all("axb", own), (words{"ax", "b"}));
}

TEST(tokens, long_ones_leave_their_rest)
{
    std::string whole(tokenlen, 'w');
    EXPECT_EQ(all(whole, prsestd), words{whole});
    EXPECT_EQ(all(whole + "xy", prsestd), (words{whole, "xy"}));
    EXPECT_EQ(all("\"" + std::string(tokenlen - 1, 'q') + "\" z", prsestd),
              (words{"\"" + std::string(tokenlen - 1, 'q'), "z"}));
    auto cut = all("\"" + std::string(tokenlen, 'q') + "\" z", prsestd);
    EXPECT_EQ(cut[0].size(), size_t(tokenlen));
    EXPECT_EQ(cut[1], "q");
    // A pair of nested marks is not torn apart at the end of the room.
    for (int n = tokenlen - 4; n < tokenlen + 2; n++) {
        std::string text = "`\"" + std::string(size_t(n), 'a') + "`\"b\"'\"'";
        for (auto &t : all(text, prsestd))
            EXPECT_LE(t.size(), size_t(tokenlen));
    }
}

TEST(tokens, unget_push_and_state)
{
    char text[] = "one two three";
    toktype ti;
    ti_settok(&ti, text);
    ti_gettok(&ti, prsestd);
    ti_ungettok(&ti);
    ti_ungettok(&ti);
    EXPECT_STREQ(ti_gettok(&ti, prsestd), "one");
    gettok_state state;
    ti_stattok(&ti, &state);
    EXPECT_STREQ(ti_gettok(&ti, prsestd), "two");
    ti_pushtok(&ti, "if");
    EXPECT_STREQ(ti_gettok(&ti, prsestd), "if");
    ti_ungettok(&ti);
    EXPECT_STREQ(ti_gettok(&ti, prsestd), "if");
    EXPECT_STREQ(ti_gettok(&ti, prsestd), "three");
    ti_pushtok(&ti, "lost");
    ti_resettok(&ti, &state);
    EXPECT_STREQ(ti_gettok(&ti, prsestd), "two");
    EXPECT_EQ(ti_peektok_chr(&ti), 't');
    EXPECT_EQ(ti_gettok_next_char(&ti), ' ');
    EXPECT_STREQ(ti_gettok(&ti, prsestd), "three");
    EXPECT_EQ(ti_gettok_next_char(&ti), 0);
    EXPECT_EQ(ti_gettok_next_char(&ti), 0);
    ti_pushtok(&ti, std::string(600, 'p').c_str());
    EXPECT_EQ(strlen(ti_gettok(&ti, prsestd)), size_t(tokenlen));
}

TEST(tokens, long_form_keeps_quotes_and_brackets_in_words)
{
    static char buf[macrolen];
    char text[] = "a\"b c\"d`\"e \"f\" g\"'h i(j k) l";
    toktype ti;
    ti_settok(&ti, text);
    EXPECT_STREQ(ti_gettoklong(&ti, buf, prsestd, false), "a\"b c\"d`\"e \"f\" g\"'h");
    EXPECT_STREQ(ti_gettoklong(&ti, buf, prsestd, true), "i(j k)");
    std::string big = "x\"" + std::string(size_t(macrolen), 'y') + "\"z";
    ti_settok(&ti, big.data());
    EXPECT_EQ(strlen(ti_gettoklong(&ti, buf, prsestd, false)), size_t(macrolen - 1));
    EXPECT_EQ(ti_peektok_chr(&ti), 'y');
}

TEST(tokens, file_names)
{
    auto name = [](std::string text, std::string *out) {
        toktype ti;
        char buf[filenamelen + 1];
        ti_settok(&ti, text.data());
        int32_t rc = ti_gettokfn(&ti, buf);
        *out = buf;
        return rc;
    };
    std::string out;
    EXPECT_EQ(name("\"my file.do\" x", &out), 0);
    EXPECT_EQ(out, "my file.do");
    EXPECT_EQ(name("~/a-b:c.do,x", &out), 0);
    EXPECT_EQ(out, "~/a-b:c.do");
    EXPECT_EQ(name(std::string(filenamelen, 'f'), &out), 0);
    for (std::string bad : {std::string(), std::string(", replace"), std::string(")"),
                            std::string("\"\""), std::string(500, 'f')}) {
        EXPECT_EQ(name(bad, &out), RC_BADFILENAME) << bad;
        EXPECT_EQ(out, "");
    }
}

TEST(tokens, skipping_stretches)
{
    auto rest = [](char *(*fn)(char *, bool *), std::string text, bool *open) {
        return std::string(fn(text.data(), open));
    };
    bool open;
    EXPECT_EQ(rest(pbrackets, "(a[b) \")\" (c]) d", &open), " d");
    EXPECT_FALSE(open);
    EXPECT_EQ(rest(pbrackets, "(a \"open) d", &open), "");
    EXPECT_TRUE(open);
    EXPECT_EQ(rest(pbrackets, "((a)", &open), "");
    EXPECT_TRUE(open);
    EXPECT_EQ(rest(pcompoundquotes, "`\"a`\"b\"'c\"'d", &open), "d");
    EXPECT_EQ(rest(psimplequotes, "\"a\"b", &open), "b");
    EXPECT_EQ(rest(psimplequotes, "\"ab", &open), "");
    EXPECT_TRUE(open);
}

TEST(tokens, quoted_string_is_located)
{
    char text[] = "x `\"in \"side\"' after";
    toktype ti;
    char *start, *end, *next;
    ti_settok(&ti, text);
    ti_gettok(&ti, prsestd);
    EXPECT_EQ(ti_parse_quoted_string(&ti, nullptr, &start, &end, &next), 1);
    EXPECT_EQ(start, nullptr);
    ti_gettok(&ti, prsestd);
    EXPECT_EQ(ti_parse_quoted_string(&ti, nullptr, &start, &end, &next), 0);
    EXPECT_EQ(std::string(start, end), "in \"side");
    EXPECT_STREQ(ti_gettok(&ti, prsestd), "after");
    char open[] = "\"never closed";
    EXPECT_EQ(ti_parse_quoted_string(&ti, open, &start, &end, &next), 1);
    EXPECT_EQ(next, nullptr);
}

}  // namespace
