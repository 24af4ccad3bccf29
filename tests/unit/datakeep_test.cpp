// Data that are set aside and brought back: preserve, snapshot, files and parts of files; and
// what an edition has no room for.
#include "frame.h"
#include <fstream>

namespace {

struct Keep : with_data {};

void rich_data(lcg &rnd)
{
    size_t n = 1 + rnd(30);
    frame f;
    for (int v = 0; v < 5; v++)
        f.push_back(any_column(rnd, "v" + std::to_string(v), n, v == 2));
    to_memory(f);
    expect_ran({"label variable v1 \"the second\"", "format v1 %12.3f", "char v2[a] of v2",
                "char _dta[b] of the data", "label define L 1 one 2 two .a none",
                "label values v0 L", "label data \"a title\""});
    ASSERT_EQ(run(rnd(2) ? "sort v3 v2" : "sort v4"), 0);
}

// Changes of every kind; which of them, and how often, the seed says.
void disturb(lcg &rnd)
{
    static const char *lines[] = {
        "replace v1 = 1 in 1", "drop v3", "drop in 1", "gen new = _n", "char v2[a] changed",
        "label data \"\"", "label define L 1 uno, modify", "label drop L", "_rename v1 w",
        "_recast double v4", "_order v4", "expand 3", "char _dta[b]", "format v4 %9.1f",
        "label variable v1", "sort v2 v1", "label values v0", "drop _all", "set obs 70",
        "compress", "label define M 3 three", "encode v2, gen(e)", "_recast str100 v2",
    };
    for (uint32_t n = 1 + rnd(6); n; n--)
        (void)run(std::string("quietly ") + lines[rnd(sizeof lines / sizeof *lines)]);
}

std::string labels_account()
{
    (void)run("label list");
    return session_output;
}

TEST_F(Keep, PreserveAndSnapshotsBringEverythingBack)
{
    expect_ran({"snapshot erase _all"});
    for (uint64_t seed = 1; seed <= 60; seed++) {
        SCOPED_TRACE(seed);
        lcg rnd(seed);
        rich_data(rnd);
        bool shot = seed % 2;
        std::string labels = labels_account(), was = whole_account();
        expect_ran({shot ? "snapshot save, label(kept)" : "preserve"});
        EXPECT_EQ(whole_account(), was);
        for (int again = 0; again < 2; again++) {
            disturb(rnd);
            ASSERT_EQ(dsa_check(sysdsa), 0);
            ASSERT_EQ(run(shot ? "snapshot restore 1" : again ? "restore" : "restore, preserve"), 0)
                << session_output;
            EXPECT_EQ(whole_account(), was);
            EXPECT_EQ(labels_account(), labels);
            ASSERT_EQ(dsa_check(sysdsa), 0);
        }
        if (shot)
            expect_ran({"snapshot erase 1"});
    }
    expect_refused({{"restore", 622},
                    {"restore, not", 622},
                    {"snapshot restore 1", 111},
                    {"snapshot restore", 100},
                    {"snapshot erase 1", 111},
                    {"snapshot frob", 198}});
}

TEST_F(Keep, ProgramsGiveTheDataBackHoweverTheyEnd)
{
    std::ofstream("spoil.do") << "program spoil\npreserve\ndrop in 2/4\nreplace x = 0\n"
                                 "if `0' == 1 {\nexit 9\n}\nif `0' == 2 {\nrestore\n}\n"
                                 "if `0' == 3 {\nrestore, not\n}\nend\n";
    expect_ran({"set obs 5", "gen x = _n", "sort x", "capture program drop spoil",
                "quietly run spoil"});
    std::string was = whole_account();
    static const refusal rows[] = {{"spoil 0", 0}, {"spoil 1", 9}, {"spoil 2", 0}};
    for (const refusal &r : rows) {
        EXPECT_EQ(run(r.line), r.rc) << r.line;
        EXPECT_EQ(whole_account(), was) << r.line;
    }
    EXPECT_EQ(run("spoil 3"), 0);
    EXPECT_EQ(_Nobs, 2);
    expect_ran({"preserve"});
    EXPECT_EQ(run("preserve"), 621);
    // Each level keeps its own copy, and an error within gives it back too.
    EXPECT_EQ(run("spoil 0"), 198);
    EXPECT_EQ(_Nobs, 2);
    expect_ran({"drop _all", "restore"});
    EXPECT_EQ(_Nobs, 2);
}

TEST_F(Keep, PartsOfAFileAreWhatDropAndKeepLeave)
{
    static const char *const parts[][3] = {
        {"use v3 v1 using part, clear", "keep v1 v3", ""},
        {"use v* if v1 >= v4 using part, clear", "keep if v1 >= v4", ""},
        {"use v0-v2 in 2/l using part, clear", "keep v0-v2", "drop in 1"},
        {"use if v2 != \"\" using part, clear", "drop if v2 == \"\"", ""},
        {"use v2 v4 if v4 < . in -3/l using part, clear", "keep if v4 < . & _n > _N - 3",
         "keep v2 v4"},
    };
    for (uint64_t seed = 1; seed <= 60; seed++) {
        SCOPED_TRACE(seed);
        lcg rnd(seed);
        do
            rich_data(rnd);
        while (_Nobs < 3);
        std::string was = whole_account();
        expect_ran({"quietly save part, replace"});
        const auto &p = parts[seed % 5];
        ASSERT_EQ(run(std::string("quietly ") + p[1]), 0) << p[1] << session_output;
        if (*p[2]) {
            ASSERT_EQ(run(std::string("quietly ") + p[2]), 0) << p[2] << session_output;
        }
        std::string want = _Nobs ? all_text(memory_frame()) : "";
        ASSERT_EQ(run(p[0]), 0) << p[0] << session_output;
        EXPECT_EQ(_Nobs ? all_text(memory_frame()) : "", want) << p[0];
        ASSERT_EQ(dsa_check(sysdsa), 0);
        ASSERT_EQ(run("use part, clear"), 0);
        EXPECT_EQ(whole_account(), was);
    }
    expect_refused({{"use nosuch using part, clear", 111},
                    {"use v1 using nosuch, clear", 601},
                    {"save part", 602},
                    {"save nosuch/part", 603}});
    expect_ran({"replace v1 = 5 in 1"});
    expect_refused({{"use part", 4}, {"use v1 using part", 4}});
}

TEST_F(Keep, ExpandMakesTheCopiesAndPutsThemLast)
{
    for (uint64_t seed = 1; seed <= 60; seed++) {
        SCOPED_TRACE(seed);
        lcg rnd(seed);
        size_t n = 1 + rnd(20);
        frame f = {{"c", T_DOUBLE}, any_column(rnd, "t", n, true)};
        static const double counts[] = {0, 1, 2, 3, 2.9, -1, 0.5, 5};
        for (size_t i = 0; i < n; i++)
            f[0].num.push_back(rnd(6) ? counts[rnd(8)] : mis_of(int(rnd(27))));
        frame want = f;
        column flag = {"dup", T_BYTE};
        flag.num.assign(n, 0);
        bool part = rnd(2);
        for (size_t i = 0; i < n; i++) {
            double z = f[0].num[i];
            if (part && i % 2)
                continue;
            for (int k = 1; !ovismissing(z) && k < int(z); k++) {
                want[0].num.push_back(z);
                want[1].str.push_back(f[1].str[i]);
                flag.num.push_back(1);
            }
        }
        want.push_back(flag);
        to_memory(f);
        expect_ran({"sort c in 1"});
        ASSERT_EQ(run(part ? "expand c if mod(_n, 2), gen(dup)" : "expand = c, gen(dup)"), 0);
        EXPECT_EQ(all_text(memory_frame()), all_text(want));
        if (size_t(_Nobs) > n) {
            EXPECT_EQ(_srtlist[0], 0);
        }
        ASSERT_EQ(dsa_check(sysdsa), 0);
    }
}

// ---- an edition without room: 120 variables, 7,000 observations

TEST_F(Keep, MoreRowsThanTheEditionHoldsAreRefused)
{
    if (sysdsa->_N_max != 7001)  // with the scratch row
        GTEST_SKIP();
    expect_ran({"set obs 4000", "gen long id = _n + 3500", "gen x = 1", "gen extra = 1", "quietly save many, replace", "drop _all",
                "set obs 7000", "gen int id = _n", "gen double x = .", "sort id"});
    expect_refused({{"set obs 7001", 901},
                    {"_append using many", 901},
                    {"_merge 1:1 id using many", 901},
                    {"_merge 1:1 id using many, update replace nogen", 901},
                    {"expand 2 in 1", 901},
                    {"expand 2000000000", 901}});
    // One row of room is enough for one row.
    expect_ran({"drop in 1", "expand 2 in 1"});
    EXPECT_EQ(_Nobs, 7000);
    expect_refused({{"expand 2 in 1", 901}});
}

TEST_F(Keep, MoreVariablesThanTheEditionHoldsAreRefused)
{
    if (sysdsa->K_max != 120)
        GTEST_SKIP();
    expect_ran({"set obs 6", "gen id = _n", "gen extra = 1", "gen double v4 = 0.5", "quietly save wide, replace",
                "drop _all", "set obs 3", "gen id = _n", "gen str3 s = \"a\" + string(_n)",
                "gen byte g = 1", "label define g 1 one", "label values g g"});
    for (int v = 4; v <= 120; v++)
        ASSERT_EQ(run("quietly gen byte v" + std::to_string(v) + " = " + std::to_string(v % 90)), 0);
    ASSERT_EQ(run("sort id"), 0);
    // The last of these would have updated memory before it found no room for its flag.
    expect_refused({{"gen one = 1", 900},
                    {"encode s, gen(e)", 900},
                    {"decode g, gen(e)", 900},
                    {"_append using wide", 900},
                    {"_append using wide, keep(id) gen(src)", 900},
                    {"_merge 1:1 id using wide", 900},
                    {"_merge 1:1 id using wide, keepusing(id)", 900},
                    {"expand 2, gen(dup)", 900},
                    {"_merge 1:1 id using wide, keepusing(v4) update replace", 900}});
    // What needs a column for a moment only, or none, works at the limit.
    expect_ran({"drop if id == 2", "_recast double v4", "compress", "sort v5 id, stable",
                "_append using wide, keep(id)", "_merge m:1 id using wide, keepusing(id) nogen",
                "_order v120", "_rename v5 w", "expand 2 in 1"});
    EXPECT_EQ(_Kvar, 120);
    EXPECT_STREQ(_varlist[0], "v120");
}

}  // namespace
