// append and merge against rows joined by hand.
#include "frame.h"
#include "stats/results.h"

namespace {

struct Join : with_data {};

double r_of(const char *name)
{
    return gretval_find(RK_R, name) == 15 ? retval_get_as_double() : -1;
}

std::string empty_of(const column &c) { return c.text() ? "" : "."; }

TEST_F(Join, AppendPutsRowsBehindRows)
{
    for (uint64_t seed = 1; seed <= 60; seed++) {
        SCOPED_TRACE(seed);
        lcg rnd(seed);
        frame file, mem;
        size_t nf = 1 + rnd(20), nm = 1 + rnd(20);
        for (int k = 0; k < 7; k++) {
            std::string name = "v" + std::to_string(k);
            bool text = rnd(3) == 0;
            uint32_t where = rnd(4);
            if (where != 1)
                file.push_back(any_column(rnd, name, nf, text));
            if (where != 2)
                mem.push_back(any_column(rnd, name, nm, text));
        }
        file.push_back(any_column(rnd, "f", nf, false));
        mem.push_back(any_column(rnd, "m", nm, true));
        to_memory(file);
        ASSERT_EQ(run("quietly save joinfile, replace"), 0);
        to_memory(mem);
        ASSERT_EQ(run("_append using joinfile, generate(src)"), 0) << session_output;
        frame got = memory_frame();
        std::string want, have;
        // Memory's variables first, in their order, then the file's own.
        std::vector<std::string> names;
        for (const column &c : mem)
            names.push_back(c.name);
        for (const column &c : file)
            if (!col_of(mem, c.name))
                names.push_back(c.name);
        ASSERT_EQ(got.size(), names.size() + 1);
        for (size_t v = 0; v < names.size(); v++) {
            const column *a = col_of(mem, names[v]), *b = col_of(file, names[v]);
            ASSERT_EQ(got[v].name, names[v]);
            for (size_t i = 0; i < nm + nf; i++) {
                const column *c = i < nm ? a : b;
                ASSERT_EQ(got[v].at(i), c ? c->at(i < nm ? i : i - nm) : empty_of(got[v]))
                    << names[v] << " " << i;
            }
        }
        for (size_t i = 0; i < nm + nf; i++)
            ASSERT_EQ(got.back().num[i], i >= nm);
        ASSERT_EQ(dsa_check(sysdsa), 0);
    }
}

// ---- merge

struct pairing {
    const char *kind;
    bool manymaster, manyusing;
};
constexpr pairing kinds[] = {
    {"1:1", false, false}, {"m:1", true, false}, {"1:m", false, true}, {"m:m", true, true}};

// Keys k (number) and s (text); unique on request.
void key_columns(lcg &rnd, frame *f, size_t n, bool many, uint8_t type)
{
    column k = {"k", type}, s = {"s", uint8_t(1 + rnd(5))};
    std::map<std::pair<std::string, std::string>, int> seen;
    for (size_t i = 0; i < n;) {
        double z = rnd(9) == 0 ? mis_of(int(rnd(3))) : double(rnd(9)) - 4;
        std::string t(1, "abc"[rnd(3)]);
        if (seen[{num_text(z), t}]++ && !many)
            continue;
        k.num.push_back(z);
        s.str.push_back(t);
        i++;
    }
    f->push_back(k);
    f->push_back(s);
}

using keyof = std::pair<double, std::string>;
using groups = std::map<keyof, std::pair<std::vector<int>, std::vector<int>>>;

groups grouped(const frame &mem, const frame &file)
{
    groups g;
    for (size_t i = 0; i < mem[0].size(); i++)
        g[{mem[0].num[i], mem[1].str[i]}].first.push_back(int(i));
    for (size_t i = 0; i < file[0].size(); i++)
        g[{file[0].num[i], file[1].str[i]}].second.push_back(int(i));
    return g;
}

// Row i of memory (or -1) joined with row j of the file; x is on both sides, y and z on one.
std::string joined(const frame &mem, const frame &file, int i, int j, bool update, bool replace,
                   int *result)
{
    auto a = size_t(i), b = size_t(j);
    std::string x = i >= 0 ? mem[2].at(a) : file[2].at(b);
    *result = i < 0 ? 2 : j < 0 ? 1 : 3;
    if (*result == 3 && update) {
        bool mine = !ovismissing(mem[2].num[a]), theirs = !ovismissing(file[2].num[b]);
        if (theirs && !mine)
            *result = 4;
        else if (theirs && mem[2].num[a] != file[2].num[b])
            *result = 5;
        if (*result == 4 || (*result == 5 && replace))
            x = file[2].at(b);
    }
    return x + "|" + (i >= 0 ? mem[3].at(a) : ".") + "|" + (j >= 0 ? file[3].at(b) : "");
}

void merge_once(lcg &rnd, const pairing &p, bool update, bool replace, uint32_t keep)
{
    frame mem, file;
    size_t nm = 1 + rnd(18), nf = 1 + rnd(18);
    key_columns(rnd, &mem, nm, p.manymaster, any_numtype(rnd));
    key_columns(rnd, &file, nf, p.manyusing, any_numtype(rnd));
    mem.push_back(any_column(rnd, "x", nm, false));
    file.push_back(any_column(rnd, "x", nf, false));
    mem.push_back(any_column(rnd, "y", nm, false));
    file.push_back(any_column(rnd, "z", nf, true));
    std::vector<std::string> want;
    int count[6] = {};
    for (const auto &g : grouped(mem, file)) {
        const auto &a = g.second.first, &b = g.second.second;
        for (size_t i = 0; i < std::max(a.size(), b.size()); i++) {
            int r, ra = a.empty() ? -1 : a[std::min(i, a.size() - 1)],
                   rb = b.empty() ? -1 : b[std::min(i, b.size() - 1)];
            std::string row = joined(mem, file, ra, rb, update, replace, &r);
            if (keep && !(keep >> r & 1))
                continue;
            count[r]++;
            want.push_back(num_text(g.first.first) + "|" + g.first.second + "|" + row + "|" +
                           std::to_string(r));
        }
    }
    to_memory(file);
    ASSERT_EQ(run("quietly save joinfile, replace"), 0);
    to_memory(mem);
    std::string line = std::string("_merge ") + p.kind + " k s using joinfile, noreport";
    line += std::string(update ? " update" : "") + (replace ? " replace" : "");
    if (keep) {
        line += " keep(";
        for (int r = 1; r <= 5; r++)
            if (keep >> r & 1)
                line += " " + std::to_string(r);
        line += ")";
    }
    ASSERT_EQ(run(line), 0) << line << session_output;
    frame got = memory_frame();
    ASSERT_EQ(got.size(), 6u);
    std::vector<std::string> have;
    for (int32_t i = 0; i < _Nobs; i++) {
        std::string row;
        for (const column &c : got)
            row += (row.empty() && &c == &got[0] ? "" : "|") + c.at(size_t(i));
        have.push_back(row);
    }
    ASSERT_EQ(have, want) << line;
    const char *names[] = {"N_master", "N_using", "N_matched", "N_updated", "N_conflict"};
    for (int r = 1; r <= 5; r++)
        ASSERT_EQ(r_of(names[r - 1]), count[r]) << names[r - 1];
    ASSERT_EQ(dsa_check(sysdsa), 0);
}

TEST_F(Join, MergeAgreesWithGroupsOfKeys)
{
    for (uint64_t seed = 1; seed <= 160; seed++) {
        SCOPED_TRACE(seed);
        lcg rnd(seed);
        bool update = rnd(2);
        merge_once(rnd, kinds[seed % 4], update, update && rnd(2), rnd(3) ? 0 : 2 + 2 * rnd(31));
        if (HasFatalFailure())
            return;
    }
}

TEST_F(Join, MergeByNumberSetsRowsSideBySide)
{
    for (int nm : {1, 3, 5}) {
        expect_ran({"clear", "set obs 4", "gen byte u = _n*10", "quietly save joinfile, replace",
                    "clear"});
        ASSERT_EQ(run("set obs " + std::to_string(nm)), 0);
        expect_ran({"gen byte m = _n", "_merge 1:1 _n using joinfile, noreport"});
        ASSERT_EQ(_Nobs, std::max(nm, 4));
        frame f = memory_frame();
        for (int i = 0; i < _Nobs; i++) {
            EXPECT_EQ(f[0].num[size_t(i)], i < nm ? i + 1 : misval);
            EXPECT_EQ(f[1].num[size_t(i)], i < 4 ? 10 * (i + 1) : misval);
            EXPECT_EQ(f[2].num[size_t(i)], i >= nm ? 2 : i >= 4 ? 1 : 3);
        }
    }
}

TEST_F(Join, LabelsFormatsAndCharacteristicsComeAlong)
{
    expect_ran({"set obs 2", "gen id = _n", "gen byte g = _n", "format g %5.1f",
                "label variable g \"from the file\"", "label define G 1 one 2 two",
                "label values g G", "label define both 1 file", "char g[k] theirs",
                "char id[k] theirs", "quietly save joinfile, replace", "clear", "set obs 3",
                "gen id = _n", "label define both 1 mine", "char id[k] mine",
                "label variable id \"an id\"", "_merge 1:1 id using joinfile, noreport nogen"});
    char label[81];
    getvarlab(sysfindvar("g"), label);
    EXPECT_STREQ(label, "from the file");
    getvarlab(sysfindvar("id"), label);
    EXPECT_STREQ(label, "an id");
    EXPECT_STREQ(_fmtlist[sysfindvar("g") - 1], "%5.1f");
    EXPECT_STREQ(_lbllist[sysfindvar("g") - 1], "G");
    EXPECT_STREQ(charfind("g", "k", nullptr), "theirs");
    EXPECT_STREQ(charfind("id", "k", nullptr), "mine");
    ASSERT_TRUE(vlfind("G"));
    EXPECT_EQ(vlgetcount(vlfind("G")), 2);
    char text[80] = "";
    vlfindval(vlfind("both"), 1, text, sizeof text);
    EXPECT_STREQ(text, "mine");
}

TEST_F(Join, RefusalsLeaveMemoryAlone)
{
    expect_ran({"set obs 4", "gen id = ceil(_n/2)", "gen u = _n", "gen str3 t = \"x\"",
                "gen q = 1", "quietly save joinfile, replace", "clear", "set obs 4",
                "gen id = ceil(_n/2)", "gen u = _n", "gen t = 5", "gen own = 2", "sort u"});
    expect_refused({{"_append using nosuch", 601},
                    {"_append using joinfile", 106},  // t is a number here, a text there
                    {"_append using joinfile, keep(nosuch)", 111},
                    {"_append using joinfile, keep(u) generate(own)", 110},
                    {"_append using joinfile, frob", 198},
                    {"_merge 1:1 id using joinfile, keepusing(q)", 459},
                    {"_merge m:1 id using joinfile, keepusing(q)", 459},
                    {"_merge 1:m id using joinfile, keepusing(q)", 459},
                    {"_merge 1:1 own using joinfile", 111},
                    {"_merge 1:1 t using joinfile", 106},
                    {"_merge 1:1 u using joinfile, nogen", 106},
                    {"_merge 1:1 u using joinfile, keepusing(q) generate(own)", 110},
                    {"_merge 1:1 u using joinfile, keepusing(q) replace", 198},
                    {"_merge 1:1 u using joinfile, keepusing(q) keep(6)", 198},
                    {"_merge 2:1 u using joinfile", 198},
                    {"_merge m:1 _n using joinfile", 198},
                    {"_merge 1:1 u", 100}});
    EXPECT_EQ(run("_append using joinfile, force"), 0);
    EXPECT_EQ(_Nobs, 8);
    EXPECT_EQ(run("assert t == cond(_n<5, 5, .)"), 0);
}

}  // namespace
