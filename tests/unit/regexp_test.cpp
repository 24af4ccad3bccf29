#include "core/regexp.h"
#include <gtest/gtest.h>
#include <string>

static std::string sub(int n)
{
    char buf[64];
    regx_sub(n, buf, sizeof buf);
    return buf;
}

TEST(regexp, leftmost_longest_with_pieces)
{
    char why[80];
    EXPECT_EQ(regx_match("xab", "a|ab", why, sizeof why), 1);
    EXPECT_EQ(sub(0), "ab");
    EXPECT_EQ(regx_match("tel 555-1234", "([0-9]+)-([[:digit:]]*)(z)?", why, sizeof why), 1);
    EXPECT_EQ(sub(1), "555");
    EXPECT_EQ(sub(2), "1234");
    EXPECT_EQ(sub(3), "");
    EXPECT_EQ(regx_nsub(), 3);
    EXPECT_EQ(regx_match("abc", "^b", why, sizeof why), 0);
    EXPECT_EQ(sub(1), "555") << "a failed match leaves the last one";
    char buf[8] = "x";
    EXPECT_EQ(regx_sub(4, buf, sizeof buf), 2);
    EXPECT_STREQ(buf, "");
}

TEST(regexp, bad_patterns_and_hard_ones)
{
    char why[80];
    EXPECT_EQ(regx_match("a", "(", why, sizeof why), -1);
    EXPECT_NE(*why, '\0');
    std::string text(200, 'a'), pattern;
    for (int i = 0; i < 60; i++)
        pattern += "a?";
    EXPECT_EQ(regx_match((text + "b").c_str(), ("(" + pattern + ")*c").c_str(), why, sizeof why),
              0);
    EXPECT_EQ(regx_match("\xe9t\xe9", "^.t.$", why, sizeof why), 1);
}

TEST(regexp, replaces_the_first_match)
{
    char out[16];
    regx_replace("abcabc", "b(c)", "[\\1\\0\\\\]", out, sizeof out);
    EXPECT_STREQ(out, "a[cbc\\]abc");
    regx_replace("abc", "(", "x", out, sizeof out);
    EXPECT_STREQ(out, "abc");
    regx_replace("abc", "b", "0123456789012345", out, 6);
    EXPECT_STREQ(out, "a0123");
}
