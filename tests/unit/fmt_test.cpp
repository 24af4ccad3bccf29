#include "core/missing.h"
#include "core/state.h"
#include "output/fmt.h"
#include <cstring>
#include <gtest/gtest.h>
#include <string>

static std::string num(double z, const char *fmt)
{
    char buf[300];
    int32_t n = fmtnum(buf, sizeof buf, z, fmt);
    EXPECT_EQ(size_t(n), strlen(buf));
    return buf;
}

TEST(fmt, numbers)
{
    struct row {
        const char *fmt;
        double z;
        const char *want;
    } rows[] = {
        {"%9.0g", 1.0 / 3, " .3333333"}, {"%9.0g", -1.0 / 3, "-.3333333"},
        {"%9.0g", 1e10, " 1.00e+10"}, {"%9.0g", 123456789, " 1.23e+08"},
        {"%9.0g", 1234567, "  1234567"}, {"%9.0g", double(.1f), "       .1"},
        {"%9.0g", 12345.678, " 12345.68"}, {"%9.0g", 9999999.6, " 1.00e+07"},
        {"%9.0g", .0001, "    .0001"}, {"%9.0g", .00001, "   .00001"},
        {"%9.0g", .0000033, " 3.30e-06"}, {"%9.0g", 0, "        0"},
        {"%9.0g", -0.0, "        0"}, {"%9.0g", 1e-300, " 1.0e-300"},
        {"%10.0g", 123456789, " 1.235e+08"}, {"%12.0g", 2147483647, "  2147483647"},
        {"%18.0g", 1.0 / 3, " .3333333333333333"}, {"%18.0g", .1, "                .1"},
        {"%20.0g", 12345678901234568, "   12345678901234568"},
        {"%3.0g", 12, " 12"}, {"%2.0g", 7, " 7"}, {"%5.0g", 1234, " 1234"},
        {"%9.2g", 3.14159, "      3.1"}, {"%9.3g", 1234.6, "     1235"},
        {"%9.0gc", 1234567, "1,234,567"}, {"%9.0gc", 12345.678, "12,345.68"},
        {"%9.0gc", -1234567, " -1234567"}, {"%-9.0g", 1.5, "1.5      "},
        {"%9.2f", 3.14159, "     3.14"}, {"%9.2f", .5, "     0.50"},
        {"%9.2f", -.001, "     0.00"}, {"%12.2fc", 1234567.891, "1,234,567.89"},
        {"%8.2f", 1234567.5, " 1234568"}, {"%5.2f", 1e9, "1e+09"},
        {"%08.2f", 3.14159, "00003.14"}, {"%08.2f", -3.14159, "-0003.14"},
        {"%9,2f", 3.14159, "     3,14"}, {"%12,2fc", 1234567.891, "1.234.567,89"},
        {"%10.3e", 12345.678, " 1.235e+04"}, {"%6.3e", 12345.678, " 1e+04"},
        {"%9.0f", 2.5, "        2"}, {"%21x", 1.5, "+1.8000000000000X+000"},
        {"%21x", -1024, "-1.0000000000000X+00a"}, {"%21x", 0, "+0.0000000000000X-3ff"},
        {"%21x", .25, "+1.0000000000000X-002"}, {"%16H", 1, "3ff0000000000000"},
        {"%16L", 1, "000000000000f03f"}, {"%8H", 1, "3f800000"}, {"%8L", 1, "0000803f"},
    };
    for (const row &r : rows)
        EXPECT_EQ(num(r.z, r.fmt), r.want) << r.fmt << " " << r.z;
}

TEST(fmt, missing_values_and_the_decimal_setting)
{
    EXPECT_EQ(num(misval, "%9.0g"), "        .");
    EXPECT_EQ(num(mis_of(3), "%-9.2f"), ".c       ");
    EXPECT_EQ(num(mis_of(26), "%08.2f"), "      .z");
    EXPECT_EQ(num(misval, "%21x"), "+1.0000000000000X+3ff");
    EXPECT_EQ(num(mis_of(1), "%8H"), "7f000800");
    ovata_dpc = true;
    EXPECT_EQ(num(1234.5, "%9.1fc"), "  1.234,5");
    EXPECT_EQ(num(misval, "%9.0g"), "        .");
    ovata_dpc = false;
}

TEST(fmt, strings_and_cutting)
{
    char buf[300];
    fmtstr(buf, sizeof buf, "abc", "%6s");
    EXPECT_STREQ(buf, "   abc");
    fmtstr(buf, sizeof buf, "abc", "%-6s");
    EXPECT_STREQ(buf, "abc   ");
    fmtstr(buf, sizeof buf, "abc", "%~7s");
    EXPECT_STREQ(buf, "  abc  ");
    fmtstr(buf, sizeof buf, "abcdef", "%3s");
    EXPECT_STREQ(buf, "abc");
    EXPECT_EQ(fmtnum(buf, 4, 1.0 / 3, "%9.0g"), 3);
    EXPECT_STREQ(buf, " .3");
    fmtnumtrim(buf, sizeof buf, 2, "%9.0g");
    EXPECT_STREQ(buf, "2");
    EXPECT_EQ(fmtnum(buf, sizeof buf, -8e307, "%244.200f"), 244);
    EXPECT_EQ(fmtnum(buf, sizeof buf, -8e307, "%244.243fc"), 244);
}

TEST(fmt, which_texts_are_formats)
{
    for (const char *f : {"%9.0g", "%9.0gc", "%-9.2fc", "%09.2f", "%9.3e", "%21x", "%16H", "%8L",
                          "%12s", "%-12s", "%~12s", "%244s", "%td", "%d", "%-td", "%tcHH:MM:SS",
                          "%tq", "%9,2f", "%9g", "%tg", "%tbnyse:CCYY"})
        EXPECT_EQ(chkfmt(f, nullptr), 0) << f;
    for (const char *f : {"", "9.0g", "%", "%9.0", "%.2f", "%9.9f", "%245.0g", "%9.2gcc", "%9.2ec",
                          "%20x", "%15H", "%0s", "%245s", "%9.0gx", "%tz", "%~9.0g", "%9.0q"})
        EXPECT_EQ(chkfmt(f, nullptr), 1) << f;
    EXPECT_TRUE(fmt_isstr("%-8s"));
    EXPECT_FALSE(fmt_isstr("%td"));
    EXPECT_TRUE(fmt_isdate("%-tm"));
    EXPECT_EQ(fmtwidth("%09.2f"), 9);
}

TEST(fmt, words_of_types_and_sizes)
{
    char buf[40];
    for (int t = 1; t < 256; t++)
        if (t <= T_STRMAX || t >= T_BYTE) {
            EXPECT_EQ(type_ofword(type_word(uint8_t(t), buf)), t);
            EXPECT_EQ(chkfmt(fmt_default(uint8_t(t), buf), nullptr), 0);
        }
    for (const char *w : {"str", "str0", "str245", "str01", "floats", ""})
        EXPECT_EQ(type_ofword(w), 0) << w;
    EXPECT_STREQ(sprint_memsize(buf, 0), "0");
    EXPECT_STREQ(sprint_memsize(buf, 3 << 20), "3m");
    EXPECT_STREQ(sprint_memsize(buf, 1025), "1025");
    EXPECT_STREQ(fmt_comma(buf, 1234567), "1,234,567");
}
