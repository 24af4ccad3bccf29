// order, move, rename, drop and keep of variables: whatever the names and places, each column
// keeps its cells, its labels and its characteristics, and the order of the rows is still known.
#include "frame.h"

namespace {

struct Columns : with_data {};

// Every column is recognised by what it holds, so a name that strays from its data shows.
struct owned {
    std::string name;
    int id;
};

void ten_columns(std::vector<owned> *model)
{
    drop_all();
    for (int v = 1; v <= 10; v++) {
        std::string name = "v" + std::to_string(v), id = std::to_string(v);
        uint8_t type = v % 3 == 0 ? uint8_t(v) : uint8_t(T_BYTE + v % 5);
        ASSERT_GT(add_user(type, name.c_str()), 0);
        ASSERT_EQ(putvarlab(_Kvar, ("label " + id).c_str()), 0);
        ASSERT_EQ(charsave(name.c_str(), "id", id.c_str()), 0);
        snprintf(_lbllist[_Kvar - 1], 33, "L%d", v);
        model->push_back({name, v});
    }
    ASSERT_EQ(dsa_add_obs(sysdsa, 5, true), 0);
    for (uint32_t v = 1; v <= 10; v++)
        for (uint32_t i = 1; i <= 5; i++)
            if (t_isstr(_typlist[v - 1]))
                dsa_safe_sstore(sysdsa, v, i, std::to_string(v * 9 + i).c_str());
            else
                dsa_store(v * 9 + i, sysdsa, v, i);
}

void expect_columns(const std::vector<owned> &model, const std::vector<int> &sorted)
{
    frame f = memory_frame();
    ASSERT_EQ(f.size(), model.size());
    for (size_t v = 0; v < f.size(); v++) {
        int id = model[v].id;
        std::string text = std::to_string(id);
        ASSERT_EQ(f[v].name, model[v].name);
        for (size_t i = 0; i < f[v].size(); i++)
            ASSERT_EQ(f[v].at(i), std::to_string(id * 9 + int(i) + 1)) << f[v].name;
        char label[81];
        getvarlab(int32_t(v) + 1, label);
        ASSERT_EQ(label, "label " + text);
        const char *c = charfind(f[v].name.c_str(), "id", nullptr);
        ASSERT_TRUE(c) << f[v].name;
        ASSERT_EQ(c, text);
        ASSERT_EQ(_lbllist[v], "L" + text);
    }
    size_t n = 0;
    for (; n < sorted.size(); n++)
        ASSERT_EQ(_srtlist[n] ? model[size_t(_srtlist[n]) - 1].id : 0, sorted[n]);
    ASSERT_EQ(n < f.size() ? _srtlist[n] : 0, 0);
    ASSERT_EQ(dsa_check(sysdsa), 0);
    int32_t chars = 0;
    for (const void *p = nullptr; (p = charnext(p, nullptr, nullptr, nullptr));)
        chars++;
    ASSERT_EQ(chars, int32_t(model.size()));
}

size_t place(const std::vector<owned> &m, const std::string &name)
{
    return size_t(std::find_if(m.begin(), m.end(), [&](const owned &o) { return o.name == name; }) -
                  m.begin());
}

// Some distinct names of the model, in an order of their own.
std::vector<std::string> some(lcg &rnd, const std::vector<owned> &m, size_t n)
{
    std::vector<std::string> all;
    for (const owned &o : m)
        all.push_back(o.name);
    for (size_t i = all.size(); i > 1; i--)
        std::swap(all[i - 1], all[rnd(uint32_t(i))]);
    all.resize(std::min(n, all.size()));
    return all;
}

std::string joined(const std::vector<std::string> &v)
{
    std::string s;
    for (const std::string &x : v)
        s += " " + x;
    return s;
}

std::string step_order(lcg &rnd, std::vector<owned> *m)
{
    std::vector<std::string> names = some(rnd, *m, 1 + rnd(4));
    uint32_t where = rnd(5);
    std::string line = "_order" + joined(names), target = some(rnd, *m, 1)[0];
    bool inlist = std::find(names.begin(), names.end(), target) != names.end();
    if (where > 2 && inlist)
        where = 0;
    static const char *how[] = {"", ", first", ", last", ", before(", ", after("};
    line += how[where] + (where > 2 ? target + ")" : std::string());
    std::vector<owned> moved, rest;
    for (const std::string &n : names)
        moved.push_back((*m)[place(*m, n)]);
    for (const owned &o : *m)
        if (std::find(names.begin(), names.end(), o.name) == names.end())
            rest.push_back(o);
    size_t at = where == 2 ? rest.size() : where < 2 ? 0 : place(rest, target) + (where == 4);
    rest.insert(rest.begin() + long(at), moved.begin(), moved.end());
    *m = rest;
    return line;
}

std::string step_move(lcg &rnd, std::vector<owned> *m)
{
    std::vector<std::string> two = some(rnd, *m, 2);
    size_t from = place(*m, two[0]), to = place(*m, two[1]);
    owned o = (*m)[from];
    m->erase(m->begin() + long(from));
    m->insert(m->begin() + long(to), o);
    return "move" + joined(two);
}

// A circle of names, so that each new name is still in use by another.
std::string step_circle(lcg &rnd, std::vector<owned> *m)
{
    std::vector<std::string> olds = some(rnd, *m, 2 + rnd(3)), news = olds;
    std::rotate(news.begin(), news.begin() + 1, news.end());
    std::vector<owned> was = *m;
    for (size_t i = 0; i < olds.size(); i++)
        (*m)[place(was, olds[i])].name = news[i];
    return "rename (" + joined(olds) + ") (" + joined(news) + ")";
}

std::string step_rename(lcg &rnd, std::vector<owned> *m)
{
    static int fresh;
    std::string old = some(rnd, *m, 1)[0], name = "n" + std::to_string(++fresh);
    (*m)[place(*m, old)].name = name;
    return (rnd(2) ? "_rename " : "rename ") + old + " " + name;
}

TEST_F(Columns, KeepWhatIsTheirsWhereverTheyGo)
{
    for (uint64_t seed = 1; seed <= 25; seed++) {
        SCOPED_TRACE(seed);
        lcg rnd(seed);
        std::vector<owned> m;
        ten_columns(&m);
        if (HasFatalFailure())
            return;
        ASSERT_EQ(run("sort v7 v3 v10"), 0);
        std::vector<int> sorted = {7, 3, 10};
        for (int step = 0; step < 25 && m.size() > 1; step++) {
            uint32_t kind = rnd(10);
            std::string line;
            if (kind < 9 || m.size() < 4) {
                line = kind < 3   ? step_order(rnd, &m)
                       : kind < 6 ? step_move(rnd, &m)
                       : kind < 8 ? step_circle(rnd, &m)
                                  : step_rename(rnd, &m);
            } else {
                // What stands behind a dropped key in the sort list goes as well.
                std::string gone = some(rnd, m, 1)[0];
                int id = m[place(m, gone)].id;
                auto at = std::find(sorted.begin(), sorted.end(), id);
                sorted.erase(at, sorted.end());
                m.erase(m.begin() + long(place(m, gone)));
                line = "drop " + gone;
                if (rnd(2)) {
                    line = "keep";
                    for (const owned &o : m)
                        line += " " + o.name;
                }
            }
            ASSERT_EQ(run(line), 0) << line << "\n" << session_output;
            SCOPED_TRACE(line);
            expect_columns(m, sorted);
            if (HasFatalFailure())
                return;
        }
    }
}

TEST_F(Columns, RefusalsLeaveNamesAndPlaces)
{
    std::vector<owned> m;
    ten_columns(&m);
    ASSERT_EQ(run("sort v1"), 0);
    expect_refused({{"_rename v1 v2", 110},
                    {"_rename v1 _all", 198},
                    {"_rename v1 byte", 198},
                    {"_rename v1 abcdefghijklmnopqrstuvwxyz0123456", 198},
                    {"_rename nosuch x", 111},
                    {"_rename v1 x y", 198},
                    {"rename (v1 v2) (a a)", 110},
                    {"rename (v1 v2) (v3 z)", 110},
                    {"rename (v1 v2 v3) (a b)", 198},
                    {"_order v1 nosuch", 111},
                    {"_order v1, first last", 198},
                    {"_order v1, before(v2) after(v3)", 198},
                    {"_order v1, after(nosuch)", 111},
                    {"move v1", 102},
                    {"move v1 v2 v3", 103},
                    {"move v1 nosuch", 111},
                    {"drop v1 nosuch", 111},
                    {"drop v1 in 1", 198},
                    {"keep v1 if v2 > 3", 198},
                    {"drop in 6", 198},
                    {"drop in 3/2", 198},
                    {"char v1[1x] text", 198},
                    {"char nosuch[a] text", 111},
                    {"char rename v1 v2", 110},
                    {"label variable nosuch \"x\"", 111},
                    {"label values nosuch L", 111},
                    {"format v1 %9s", 109},
                    {"format v1 %9.9q", 120}});
}

TEST_F(Columns, DropAndKeepOfRowsAgreeWithAFilter)
{
    for (uint64_t seed = 1; seed <= 60; seed++) {
        SCOPED_TRACE(seed);
        lcg rnd(seed);
        size_t n = 1 + rnd(300);
        frame f = {{"id", T_INT}, any_column(rnd, "x", n, false), any_column(rnd, "t", n, true)};
        for (size_t i = 0; i < n; i++)
            f[0].num.push_back(double(i + 1));
        to_memory(f);
        ASSERT_EQ(run("sort id"), 0);
        bool keep = rnd(2), all = rnd(4) == 0;
        size_t a = 1 + rnd(uint32_t(n)), b = a + rnd(uint32_t(n - a + 1));
        double cut = f[1].num[rnd(uint32_t(n))];
        std::string line = keep ? "keep" : "drop";
        dsa_store(cut, sysdsa, 2, 1);
        f[1].num[0] = cut;
        if (!all)
            line += " if x >= x[1]";
        line += " in " + std::to_string(a) + "/" + std::to_string(b);
        frame want = f;
        for (column &c : want) {
            c.num.clear();
            c.str.clear();
        }
        for (size_t i = 0; i < n; i++) {
            bool hit = i + 1 >= a && i + 1 <= b && (all || f[1].num[i] >= cut);
            for (size_t v = 0; v < 3 && hit == keep; v++)
                if (f[v].text())
                    want[v].str.push_back(f[v].str[i]);
                else
                    want[v].num.push_back(f[v].num[i]);
        }
        ASSERT_EQ(run(line), 0) << line;
        EXPECT_EQ(all_text(memory_frame()), all_text(want)) << line;
        EXPECT_EQ(_srtlist[0], 1);
        size_t gone = n - want[0].size();
        std::string said = "(" + std::to_string(gone) + " observation" + (gone == 1 ? "" : "s") +
                           " deleted)\n";
        EXPECT_EQ(session_output, said);
        ASSERT_EQ(dsa_check(sysdsa), 0);
    }
}

}  // namespace
