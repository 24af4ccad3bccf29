// Value labels and characteristics through their commands, against maps.
#include "frame.h"
#include "core/rc.h"
#include "stats/results.h"

namespace {

struct LabelCommands : with_data {};

using table = std::map<int32_t, std::string>;

// As labels number them: the letters stand at the end of a long's range.
int32_t code_of(const std::string &value)
{
    if (value[0] == '.')
        return 2147483621 + (value.size() > 1 ? value[1] - 'a' + 1 : 0);
    return atoi(value.c_str());
}

table table_in_memory(const char *name)
{
    table t;
    const vltable *v = vlfind(name);
    for (int32_t i = 0; v && i < vlgetcount(v); i++) {
        const char *text;
        int32_t value;
        vlgetofi(v, i, &text, &value);
        t[value] = text;
    }
    return t;
}

std::string any_value(lcg &rnd)
{
    if (rnd(4) == 0)
        return std::string(".") + char('a' + rnd(26));
    return std::to_string(int32_t(rnd(13)) - 6);
}

// Refused when the table, or one of the values, is there and the option does not allow it.
TEST_F(LabelCommands, DefineAgreesWithAMap)
{
    static const char *options[] = {"", ", add", ", modify", ", replace"};
    for (uint64_t seed = 1; seed <= 40; seed++) {
        SCOPED_TRACE(seed);
        lcg rnd(seed);
        (void)run("label drop _all");
        table want;
        for (int step = 0; step < 25; step++) {
            uint32_t how = rnd(4);
            std::string line = "label define T";
            table now = how == 3 ? table() : want;
            int32_t code = how == 0 && !want.empty() ? RC_EXISTS : 0;
            for (uint32_t n = 1 + rnd(3); n; n--) {
                std::string value = any_value(rnd), text = any_text(rnd, 8, "ab {}'$x");
                // Blanks around a text, and an empty one, are tested below.
                text = "t" + text + "t";
                if (text.find('$') != std::string::npos)
                    text = "dollar";
                line += " " + value + " \"" + text + "\"";
                if (how == 1 && want.count(code_of(value)))  // within a line the last one counts
                    code = 180;
                now[code_of(value)] = text;
            }
            int32_t rc = run(line + options[how]);
            ASSERT_EQ(rc, code) << line << options[how] << session_output;
            if (!rc)
                want = now;
            ASSERT_EQ(table_in_memory("T"), want) << line << options[how];
        }
        // A file keeps the whole of it.
        expect_ran({"drop _all", "set obs 1", "gen byte x = 1", "label values x T",
                    "quietly save labelled, replace", "drop _all", "label drop _all"});
        EXPECT_FALSE(vlfind("T"));
        expect_ran({"use labelled, clear"});
        EXPECT_EQ(table_in_memory("T"), want);
    }
}

TEST_F(LabelCommands, RefusalsKeepTheTable)
{
    expect_ran({"set obs 2", "gen x = _n", "gen str3 s = \"a\"", "label define T 1 one 2 two",
                "label values x T"});
    table was = table_in_memory("T");
    expect_refused({{"label define T 3 three", 110},
                    {"label define T 2 zwei 3 drei, add", 180},
                    {"label define T 3", 198},
                    {"label define 1T 3 three", 198},
                    {"label define T 1.5 half, modify", 198},
                    {"label define T 3 three, frob", 198},
                    {"label drop nosuch", 111},
                    {"label values nosuch T", 111},
                    {"label variable x \"a\" \"b\"", 198},
                    {"label list nosuch", 111}});
    EXPECT_EQ(table_in_memory("T"), was);
    EXPECT_NE(run("label values s T"), 0);
    EXPECT_STREQ(_lbllist[1], "");
}

TEST_F(LabelCommands, CharacteristicsAgreeWithAMap)
{
    std::map<std::string, std::string> want;
    lcg rnd(5);
    expect_ran({"set obs 2", "gen x = 1", "gen yy = 1", "gen z = 1"});
    const char *owners[] = {"_dta", "x", "yy", "z"};
    auto key = [](const std::string &owner, int name) {
        return owner + "[k" + std::to_string(name) + "]";
    };
    for (int step = 0; step < 400; step++) {
        std::string owner = owners[rnd(4)], to = owners[rnd(4)], line;
        int name = int(rnd(4));
        if (rnd(8) == 0 && owner != to) {
            bool taken = false;
            for (int k = 0; k < 4; k++)
                taken = taken || want.count(key(to, k));
            bool over = rnd(2);
            line = "char rename " + owner + " " + to + (over ? ", replace" : "");
            ASSERT_EQ(run(line), taken && !over ? 110 : 0) << line;
            for (int k = 0; k < 4 && over; k++)  // the whole set is replaced
                want.erase(key(to, k));
            for (int k = 0; k < 4 && (over || !taken); k++) {
                auto at = want.find(key(owner, k));
                if (at == want.end())
                    continue;
                want[key(to, k)] = at->second;
                want.erase(at);
            }
        } else {
            std::string text = any_text(rnd, 12, "ab {}'");
            while (!text.empty() && text.back() == ' ')
                text.pop_back();
            line = "char " + key(owner, name) + " \"" + text + "\"";
            ASSERT_EQ(run(line), 0) << line;
            want[key(owner, name)] = text;
            if (text.empty())
                want.erase(key(owner, name));
        }
        std::map<std::string, std::string> got;
        char o[33], n[33];
        const char *text;
        for (const void *p = nullptr; (p = charnext(p, o, n, &text));)
            got[std::string(o) + "[" + n + "]"] = text;
        ASSERT_EQ(got, want) << line;
    }
}

// What describe returns is counted another way.
TEST_F(LabelCommands, DescribeCountsTheData)
{
    for (uint64_t seed = 1; seed <= 20; seed++) {
        lcg rnd(seed);
        size_t n = 1 + rnd(30), width = 0;
        frame f;
        for (uint32_t k = 1 + rnd(8); k; k--)
            f.push_back(any_column(rnd, "v" + std::to_string(k), n, rnd(2)));
        static const size_t bytes[] = {1, 2, 4, 4, 8};
        for (const column &c : f)
            width += c.text() ? c.type : bytes[c.type - T_BYTE];
        to_memory(f);
        ASSERT_EQ(run("sort " + f.back().name), 0);
        auto r = [](const char *name) {
            return gretval_find(RK_R, name) == 15 ? retval_get_as_double() : -1;
        };
        s_updata = true;
        for (const char *line : {"describe", "describe using counted"}) {
            if (strstr(line, "using"))
                expect_ran({"quietly save counted, replace", "drop _all"});
            ASSERT_EQ(run(line), 0);
            EXPECT_EQ(r("N"), double(n)) << line;
            EXPECT_EQ(r("k"), double(f.size())) << line;
            EXPECT_EQ(r("width"), double(width)) << line;
            for (const column &c : f)
                EXPECT_NE(session_output.find(c.name), std::string::npos);
        }
    }
}

}  // namespace
