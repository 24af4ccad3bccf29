#include "core/state.h"
#include "interp/interp.h"
#include <cstring>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <vector>

namespace {

struct at_version {
    int16_t was = vernum;
    explicit at_version(int16_t v) { vernum = v; }
    ~at_version() { vernum = was; }
};

std::string found(const std::string &word)
{
    const char *full = findbuiltin(word.c_str());
    return full ? full : "";
}

// A version at which the row is in force.
int16_t version_for(const cmdrow &row)
{
    return row.below <= ver_current ? int16_t(row.below - 1) : ver_current;
}

TEST(commands, every_row_at_its_least_length_and_one_below)
{
    ASSERT_EQ(ncmdtable, 306);
    for (int32_t i = 0; i < ncmdtable; i++) {
        const cmdrow &row = cmdtable[i];
        at_version v(version_for(row));
        std::string least(row.word, row.min), less(row.word, size_t(row.min - 1));
        if (!strcmp(row.word, "HELPCHK")) {
            EXPECT_EQ(found(row.word), "");
            continue;
        }
        // An earlier row may own the abbreviation; a later one never does.
        auto index = [](const std::string &word) -> const cmdrow * {
            return cmd_row(word.c_str(), 0);
        };
        EXPECT_TRUE(index(least) && index(least) <= &row) << row.word;
        EXPECT_EQ(found(row.word), row.word);
        EXPECT_NE(found(less), row.word) << less;
        EXPECT_NE(found(std::string(row.word) + "s"), row.word);
    }
}

TEST(commands, order_breaks_ties)
{
    const char *const pairs[][2] = {
        {"g", "generate"}, {"ge", "generate"}, {"gl", "global"},     {"l", "list"},
        {"ls", "ls"},      {"lo", "lookup"},   {"log", "log"},       {"loc", "local"},
        {"s", ""},         {"su", "summarize"}, {"lists", ""},       {"q", "query"},
        {"qui", "quietly"}, {"m", "m"},        {"n", "noisily"},     {"e", "exit"},
        {"d", ""},         {"di", "display"},  {"t", ""},            {"ta", "tabulate"},
        {"mosa", "mosa"},  {"b", ""},          {"bys", "bysort"},    {"_", ""},
        {"List", ""},      {"", ""},           {"{", ""},            {"HELPCHK", ""},
    };
    for (auto &p : pairs)
        EXPECT_EQ(found(p[0]), p[1]) << p[0];
}

TEST(commands, version_gates)
{
    const struct {
        const char *word, *full;
        int16_t v;
        bool there;
    } rows[] = {
        {"rename", "rename", 1199, true},     {"rename", "rename", 1200, false},
        {"predict", "predict", 599, true},    {"predict", "predict", 600, false},
        {"gr", "graph", 799, true},           {"gr", "graph", 800, false},
        {"gph", "gph", 799, true},            {"gph", "gph", 800, false},
        {"estimates", "estimates", 799, true}, {"estimates", "estimates", 800, false},
        {"numlist", "numlist", 599, false},   {"numlist", "numlist", 600, true},
        {"cp", "cp", 599, false},             {"cp", "cp", 600, true},
        {"_estimates", "_estimates", 799, false}, {"_estimates", "_estimates", 800, true},
    };
    for (auto &r : rows) {
        at_version v(r.v);
        EXPECT_EQ(found(r.word) == r.full, r.there) << r.word << ' ' << r.v;
    }
}

// While a block is skipped eighteen words are looked at, and the brace.
TEST(commands, rows_of_dead_lines)
{
    const std::set<std::string> want = {
        "while", "version", "varabbrev", "quietly", "noisily", "nobreak",
        "novarabbrev", "m", "mosa", "if", "foreach", "forvalues", "else",
        "capture", "class", "break", "_byobs", "_cls"};
    std::set<std::string> have;
    for (int32_t i = 0; i < ncmdtable; i++)
        if (cmdtable[i].flags & C_DEAD)
            have.insert(cmdtable[i].word);
    EXPECT_EQ(have, want);
    auto dead = [](const char *word) {
        const cmdrow *row = cmd_row(word, C_DEAD);
        return std::string(row ? row->word : "");
    };
    {
        at_version v(800);
        EXPECT_EQ(dead("q"), "quietly");
    }
    at_version v(799);
    EXPECT_EQ(dead("qu"), "");
    EXPECT_EQ(dead("qui"), "quietly");
    EXPECT_EQ(dead("list"), "");
}

TEST(commands, comparing_words)
{
    EXPECT_TRUE(cmdcmp("gen", "generate", 1));
    EXPECT_FALSE(cmdcmp("generated", "generate", 1));
    EXPECT_FALSE(cmdcmp("", "generate", 1));
    EXPECT_FALSE(cmdcmp("ge", "generate", 3));
    EXPECT_FALSE(cmdcmp("Gen", "generate", 1));
    EXPECT_TRUE(cmdcmp_lc("GeN", "generate", 1));
    EXPECT_FALSE(cmdcmp_lc("gex", "generate", 1));
    EXPECT_EQ(cmdhash(""), 0);
    EXPECT_EQ(cmdhash("ab"), 97 * 31 + 98);
    EXPECT_EQ(cmdhash("\xff"), 255);
    // 31^7 runs past 32 bits: the sum wraps before the remainder is taken.
    uint32_t h = 0;
    for (char c : std::string("zzzzzzzzzz"))
        h = h * 31 + uint8_t(c);
    EXPECT_EQ(cmdhash("zzzzzzzzzz"), int32_t(h % 1997333137u));
    EXPECT_STREQ(findbyablebuiltin("su"), "summarize");
    EXPECT_EQ(findbyablebuiltin("save"), nullptr);
    EXPECT_EQ(findbyablebuiltin("l"), findbuiltin("l"));
}

// The rows still to be built. Take a row out of this list when its handler lands.
TEST(commands, rows_not_built)
{
    std::vector<std::string> words;
    for (int32_t i = 0; i < ncmdtable; i++)
        if (cmdtable[i].handler == notbuilt)
            words.push_back(cmdtable[i].word);
    std::string all;
    for (auto &w : words)
        all += w + "\n";
    RecordProperty("not_built", int(words.size()));
#include "notbuilt_rows.inc"
    EXPECT_EQ(all, want);
}

}  // namespace
