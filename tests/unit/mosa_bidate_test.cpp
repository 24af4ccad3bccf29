// Dates and times in the matrix language, against the calendar of another program.
#include "mosabi.h"

TEST(MosaDates, DaysAndTheirParts)
{
    static const called rows[] = {
        {"mdy((9, 12, 2, 2), (17, 31, 29, 29), (2026, 1959, 2000, 1900))", "R1,4:24366 -1 14669 ."},
        {"mdy(1, (1 \\ 2), 1960)", "R2,1:0 1"},
        {"month((24366, -1, .a))", "R1,3:9 12 ."},
        {"day(24366), year(24366), yofd(24366)", "R1,3:17 2026 2026"},
        {"dow((24366, 14975, -1))", "R1,3:4 0 4"},
        {"doy((24366, 14975, -1))", "R1,3:260 366 365"},
        {"week((24366, 14975))", "R1,2:38 52"},
        {"quarter(24366), halfyear(24366)", "R1,2:3 2"},
        {"hofd(24366), qofd(24366), mofd(24366), wofd(24366)", "R1,4:133 266 800 3469"},
        {"dofh(133), dofq(266), dofm(800), dofw(3469)", "R1,4:24288 24288 24350 24366"},
        {"dofy(2026), dofd(24366.9)", "R1,2:24107 24366"},
        {"yw(2026, 38), ym(2026, 9), yq(2026, 3), yh(2026, 2)", "R1,4:3469 800 266 133"},
        {"ym(2026, (0, 13, 12))", "R1,3:. . 803"},
        {"mofd(3000000)", "R1,1:."},
        {"ovatadatepack(2026, 9, 17)", "R1,1:24366"},
        {"strofreal(ovatadatepack(2026, 9, 17, 13, 45, 30, 250), \"%15.0f\")",
         "S1,1:2105271930250"},
        {"ovatadatepack(1960, 1, 1, 0, 0, 1)", "R1,1:1000"},
        {"ovatadatepack(1960, 1, 1, 0)", "3001"},
        {"mdy((1, 2), (1, 2, 3), 1960)", "3200"},
        {"mdy((1, 2), (1 \\ 2), 1960)", "3200"},
        {"month(\"a\")", "3253"},
        {"month(1i)", "3253"},
    };
    try_all(rows);
}

TEST(MosaDates, Times)
{
    static const called rows[] = {
        {"strofreal(mdyhms(9, 17, 2026, 13, 45, 30.25), \"%15.0f\")", "S1,1:2105271930250"},
        {"dhms(24366, 13, 45, 30.25) == mdyhms(9, 17, 2026, 13, 45, 30.25)", "R1,1:1"},
        {"tc = dhms(24366, 13, 45, 30.25); hh(tc), mm(tc), ss(tc)", "R1,3:13 45 30.25"},
        {"dofc(tc), cofd(24366) == tc - 49530250", "R1,2:24366 1"},
        {"tc = Cdhms(24366, 13, 45, 30.25); hhC(tc), mmC(tc), ssC(tc)", "R1,3:13 45 30.25"},
        {"dofC(tc), tc - cofC(tc), Cofc(cofC(tc)) - tc", "R1,3:24366 27000 0"},
        {"Cofd(24366) - cofd(24366)", "R1,1:27000"},
        {"Cmdyhms(9, 17, 2026, 13, 45, 30.25) == tc", "R1,1:1"},
        {"Cmdyhms(6, 30, 1972, 23, 59, 60) - Cmdyhms(7, 1, 1972, 0, 0, 0)", "R1,1:-1000"},
        {"hms(1, 2, 3.5), Chms(1, 2, 3.5)", "R1,2:3723500 3723500"},
        {"hms((23, 24), (59, 0), 59)", "R1,2:86399000 ."},
        {"hours(5400000), minutes(90000), seconds(1500)", "R1,3:1.5 1.5 1.5"},
        {"msofhours(1.5), msofminutes(1.5), msofseconds(1.5)", "R1,3:5400000 90000 1500"},
        {"hours(.b)", "R1,1:."},
        {"msofhours(8e307)", "R1,1:."},
    };
    try_all(rows);
}

TEST(MosaDates, Texts)
{
    static const called rows[] = {
        {"date((\"17sep2026\", \"Feb 29, 1900\"), (\"DMY\", \"MDY\"))", "R1,2:24366 ."},
        {"date(\"3/4/95\", \"MD19Y\")", "R1,1:12846"},
        {"date(\"3/4/95\", \"MDY\", (2000, 2100))", "R1,2:12846 49371"},
        {"date(\"17 September 2026\" :* (1, 0), \"DMY\")", "R1,2:24366 ."},
        {"strofreal(clock(\"2026-09-17 13:45:30.25\", \"YMDhms\"), \"%15.0f\")",
         "S1,1:2105271930250"},
        {"Clock(\"2026-09-17\", \"YMD\") - clock(\"2026-09-17\", \"YMD\")", "R1,1:27000"},
        {"yearly(\"2026\", \"Y\"), halfyearly(\"2026-2\", \"YH\")", "R1,2:2026 133"},
        {"quarterly(\"2026q3\", \"YQ\"), monthly(\"sep 2026\", \"MY\")", "R1,2:266 800"},
        {"weekly(\"2026w38\", \"YW\")", "R1,1:3469"},
        {"monthly(\"9/26\", \"MY\", 2050)", "R1,1:800"},
        {"date(2000 * \" \", \"DMY\")", "R1,1:."},
        {"date(\"1jan1960\" + char(0), \"DMY\")", "R1,1:."},
        {"date(1, \"DMY\")", "3254"},
        {"date(\"1jan1960\", 1)", "3254"},
        {"date(\"1jan1960\", \"DMY\", \"x\")", "3253"},
    };
    try_all(rows);
}

// Below version 10 the mask is read in small letters too.
TEST(MosaDates, OlderMask)
{
    ASSERT_EQ(run("version 9.2"), 0);
    EXPECT_EQ(value("date(\"17sep2026\", \"dmy\")"), "R1,1:24366");
    ASSERT_EQ(run("version 12.1"), 0);
    EXPECT_EQ(value("date(\"17sep2026\", \"dmy\")"), "R1,1:.");
}

TEST(MosaDates, Views)
{
    run("drop _all");
    run("set obs 2");
    run("generate day = _n + 24365");
    run("generate str9 text = \"17sep2026\"");
    static const called rows[] = {
        {"vd = .; ov_view(vd, ., \"day\"); year(vd)", "R2,1:2026 2026"},
        {"dhms(vd, 0, 0, 1) - cofd(vd)", "R2,1:1000 1000"},
        {"vt = .; ov_sview(vt, ., \"text\"); date(vt, \"DMY\") - vd", "R2,1:0 -1"},
    };
    try_all(rows);
}
