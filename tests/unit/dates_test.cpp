#include "core/missing.h"
#include "output/dates.h"
#include "output/fmt.h"
#include <gtest/gtest.h>
#include <string>

static std::string shown(double z, const char *fmt)
{
    char buf[300];
    fmtnumtrim(buf, sizeof buf, z, fmt);
    return buf;
}

TEST(dates, every_day_of_two_centuries)
{
    double day = dt_mdy(1, 1, 1900);
    EXPECT_EQ(day, -21914);
    int dow = int(dt_dow(day)), doy = 0, lasty = 1899;
    for (; dt_year(day) <= 2100; day++, dow = (dow + 1) % 7) {
        int32_t y, m, d;
        dt_ymd(day, &y, &m, &d);
        ASSERT_EQ(dt_mdy(m, d, y), day);
        doy = y == lasty ? doy + 1 : 1;
        lasty = y;
        ASSERT_EQ(dt_doy(day), doy);
        ASSERT_EQ(dt_dow(day), dow);
        for (char u : {'w', 'm', 'q', 'h', 'y'}) {
            double k = dt_fromday(day, u), first = dt_today(k, u);
            ASSERT_LE(first, day);
            ASSERT_EQ(dt_fromday(first, u), k);
            ASSERT_TRUE(dt_fromday(first - 1, u) == k - 1);
        }
        std::string text = shown(day, "%td");
        ASSERT_EQ(ovclock(text.c_str(), "DMY", misval, 'd'), day) << text;
    }
    EXPECT_EQ(dt_dow(0), 5);
}

TEST(dates, impossible_ones_are_missing)
{
    EXPECT_EQ(dt_mdy(2, 29, 2023), misval);
    EXPECT_EQ(dt_mdy(2, 29, 2024), 23435);
    EXPECT_EQ(dt_mdy(2, 29, 1900), misval);
    EXPECT_EQ(dt_mdy(13, 1, 2000), misval);
    EXPECT_EQ(dt_mdy(1, 1, 99), misval);
    EXPECT_EQ(dt_mdy(12.9, 31.5, 9999.5), dt_mdy(12, 31, 9999));
    EXPECT_EQ(dt_year(misval), misval);
    EXPECT_EQ(dt_year(dt_mdy(12, 31, 9999) + 1), misval);
    EXPECT_EQ(dt_dhms(0, 24, 0, 0), misval);
    EXPECT_EQ(dt_dhms(0, 0, 0, 60), misval);
    EXPECT_EQ(dt_yw(2000, 53), misval);
    EXPECT_EQ(dt_today(1e300, 'm'), misval);
    EXPECT_EQ(dt_hh(misval), misval);
    EXPECT_EQ(dt_week(dt_mdy(12, 31, 2024)), 52);
}

TEST(dates, leap_seconds)
{
    // The first of 27, at the end of June 1972, and the last.
    double first = dt_dhms(dt_mdy(7, 1, 1972), 0, 0, 0),
           last = dt_dhms(dt_mdy(1, 1, 2017), 0, 0, 0);
    EXPECT_EQ(dt_Cofc(first - 1), first - 1);
    EXPECT_EQ(dt_Cofc(first), first + 1000);
    EXPECT_EQ(dt_Cofc(last - 1), last - 1 + 26000);
    EXPECT_EQ(dt_Cofc(last), last + 27000);
    double in = dt_Cdhms(dt_mdy(12, 31, 2016), 23, 59, 60.5);
    EXPECT_EQ(in, last + 26500);
    EXPECT_EQ(dt_dofC(in), dt_mdy(12, 31, 2016));
    EXPECT_EQ(dt_hhC(in), 23);
    EXPECT_EQ(dt_mmC(in), 59);
    EXPECT_EQ(dt_ssC(in), 60.5);
    EXPECT_EQ(dt_Cdhms(dt_mdy(12, 31, 2017), 23, 59, 60), misval);
    EXPECT_EQ(dt_Cdhms(dt_mdy(12, 31, 2016), 22, 59, 60), misval);
    EXPECT_EQ(shown(in, "%tC"), "31dec2016 23:59:60");
    EXPECT_EQ(ovclock("31dec2016 23:59:60", "DMYhms", misval, 'C'), last + 26000);
    for (double c = first - 5000; c < first + 5000; c += 250) {
        EXPECT_EQ(dt_cofC(dt_Cofc(c)), c);
        EXPECT_EQ(dt_ssC(dt_Cofc(c)), dt_ss(c));
    }
}

TEST(dates, formats)
{
    double day = dt_mdy(11, 21, 2026), c = dt_dhms(day, 3, 17, 59.25);
    struct row {
        double z;
        const char *fmt, *want;
    } rows[] = {
        {day, "%td", "21nov2026"}, {day, "%d", "21nov2026"},
        {dt_mdy(1, 2, 1960), "%td", "02jan1960"},
        {c, "%tc", "21nov2026 03:17:59"}, {dt_fromday(day, 'w'), "%tw", "2026w47"},
        {dt_fromday(day, 'm'), "%tm", "2026m11"}, {dt_fromday(day, 'q'), "%tq", "2026q4"},
        {dt_fromday(day, 'h'), "%th", "2026h2"}, {2026, "%ty", "2026"},
        {dt_ym(1960, 3), "%tm", "1960m3"}, {-1, "%tq", "1959q4"},
        {day, "%tdDayname,_Month_dd,_CCYY", "Saturday, November 21, 2026"},
        {day, "%tdDAY_da_MON_yy", "SAT sa NOV 26"}, {dt_mdy(3, 4, 2005), "%tdNN/DD/YY", "03/04/05"},
        {dt_mdy(3, 4, 2005), "%tdnn-dd-yy_JJJ+jjj", "3-4-5 06363"}, {day, "%td!D!!\\D", "D!D"},
        {c, "%tcHH:MM:SS.sss", "03:17:59.250"}, {c, "%tchh:mm_a.m.", "3:17 a.m."},
        {c + 12 * 3600000, "%tcHh:MM:SS.s_AM", "03:17:59.2 PM"},
        {dt_dhms(0, 0, 5, 0), "%tchh:MMam", "12:05am"}, {dt_dhms(0, 0, 5, 0), "%tchH", "0"},
        {misval, "%td", "."}, {mis_of(2), "%tc", ".b"}, {1e9, "%td", "1000000000"},
        {-.5, "%td", "31dec1959"},
    };
    for (const row &r : rows)
        EXPECT_EQ(shown(r.z, r.fmt), r.want) << r.fmt;
    EXPECT_EQ(fmtwidth("%td"), 9);
    EXPECT_EQ(fmtwidth("%tc"), 18);
    EXPECT_EQ(fmtwidth("%tw"), 7);
    EXPECT_EQ(fmtwidth("%tdX"), 0);
    char buf[64];
    fmtnum(buf, sizeof buf, 12, "%-tq");
    EXPECT_STREQ(buf, "1963q1");
}

TEST(dates, reading)
{
    double day = dt_mdy(11, 21, 2026), at = dt_dhms(day, 15, 17, 59);
    struct row {
        const char *text, *mask;
        double pivot, want;
    } rows[] = {
        {"21nov2026", "DMY", misval, day}, {"November 21st, 2026", "MDY", misval, day},
        {"11/21/2026", "MDY", misval, day}, {"2026-11-21", "YMD", misval, day},
        {"20261121", "YMD", misval, day}, {"112126", "MD20Y", misval, day},
        {"112126", "MDY", 2030, day}, {"21.11.26", "DMY", 2030, day},
        {"21/11/26", "DMY", 2025, dt_mdy(11, 21, 1926)}, {"21/11/26", "DMY", misval, misval},
        {"21/11/26", "DM19Y", misval, dt_mdy(11, 21, 1926)},
        {"2026", "Y", misval, dt_mdy(1, 1, 2026)},
        {"Sat 21 nov 2026", "#DMY", misval, day}, {"31feb2026", "DMY", misval, misval},
        {"21nov2026 x", "DMY", misval, misval}, {"21no2026", "DMY", misval, misval},
        {"21nov2026", "DMX", misval, misval}, {"21nov2026", "DDY", misval, misval},
        {"", "DMY", misval, misval},
    };
    for (const row &r : rows)
        EXPECT_EQ(ovclock(r.text, r.mask, r.pivot, 'd'), r.want) << r.text << " " << r.mask;
    row clocks[] = {
        {"21nov2026 15:17:59", "DMYhms", misval, at}, {"21nov202615:17:59", "DMYhms", misval, at},
        {"3:17:59 pm 21nov2026", "hmsDMY", misval, at}, {"2026112115:17:59", "YMDhms", misval, at},
        {"20261121151759", "YMDhms", misval, at}, {"21nov2026 3:17:59 p.m.", "DMYhms", misval, at},
        {"21nov2026 15:17:59.5", "DMYhms", misval, at + 500},
        {"21nov2026 13:00 pm", "DMYhm", misval, misval},
        {"20261121 15:17:59", "YMDhms", misval, at}, {"20261121 15", "YMDh", 2030, at - 1079000},
        {"12:30 am", "hm", misval, 1800000}, {"25:00", "hm", misval, misval},
    };
    for (const row &r : clocks)
        EXPECT_EQ(ovclock(r.text, r.mask, r.pivot, 'c'), r.want) << r.text << " " << r.mask;
    EXPECT_EQ(ovdate("21/11/26", "dm[20]y", misval), day);
    EXPECT_EQ(ovdate("nov 21 2026", "mdy", misval), day);
    EXPECT_EQ(ovyhqmwd("2026q4", "yq", misval, 'q'), dt_yq(2026, 4));
    EXPECT_EQ(ovyhqmwd("4-26", "q20y", misval, 'q'), dt_yq(2026, 4));
    EXPECT_EQ(ovyhqmwd("nov2026", "MY", misval, 'm'), dt_ym(2026, 11));
    EXPECT_EQ(ovyhqmwd("2026m11", "ym", misval, 'm'), dt_ym(2026, 11));
    EXPECT_EQ(ovyhqmwd("202647", "yw", misval, 'w'), dt_yw(2026, 47));
    EXPECT_EQ(ovyhqmwd("2026h3", "yh", misval, 'h'), misval);
    EXPECT_EQ(ovyhqmwd("2026", "y", misval, 'y'), 2026);
}

// The codes of one letter, as older formats write them.
TEST(Dates, OneLetterCodes)
{
    static const struct {
        const char *codes, *want;
    } rows[] = {{"D_m_CY", "04 Oct 2014"}, {"DlCY", "04oct2014"}, {"N/D/Y", "10/04/14"},
                {"d_M_CY", "4 October 2014"}, {"CYJ", "2014277"}, {"DDMonCCYY", "04Oct2014"}};
    for (auto &r : rows) {
        char out[64];
        dt_format(out, sizeof out, 20000, 'd', r.codes);
        EXPECT_STREQ(out, r.want) << r.codes;
    }
}
