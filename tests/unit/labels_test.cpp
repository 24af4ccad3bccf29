// Value labels, characteristics, variable labels: records of the dm store.
#include "area.h"
#include <map>

static std::string text_of(const vltable *t, int32_t value)
{
    std::string out(40000, 0);
    return vlfindval(t, value, out.data(), 39999) < 0 ? "<none>" : std::string(out.c_str());
}

TEST(Labels, TableAgreesWithAMapThroughAddsAndRemovals)
{
    fresh_system(true);
    vltable *t = vlallocate("lab", 0, 0);
    EXPECT_EQ(vlfindval(t, 3, nullptr, 0), -1);
    EXPECT_EQ(vlfindval(nullptr, 3, nullptr, 0), -1);
    std::map<int32_t, std::string> m;
    lcg rnd(11);
    for (int i = 0; i < 3000; i++) {
        int32_t v = int32_t(rnd(60)) - 30;
        if (rnd(3)) {
            std::string s(rnd(30), char('a' + rnd(26)));
            m[v] = s;
            ASSERT_TRUE(t = vladdlab(t, v, s.c_str()));
        } else {
            m.erase(v);
            ASSERT_TRUE(t = vlrmlab(t, v));
        }
        ASSERT_EQ(t, vlfind("lab"));
        ASSERT_EQ(vlgetcount(t), int32_t(m.size()));
        int32_t at = 0;
        for (auto &[value, s] : m) {
            const char *got;
            int32_t val;
            vlgetofi(t, at, &got, &val);
            ASSERT_EQ(val, value);
            ASSERT_EQ(got, s);
            ASSERT_EQ(vlfindval(t, value, nullptr, 0), at++);
        }
        auto next = m.lower_bound(v);
        if (!m.count(v)) {
            ASSERT_EQ(vlfindval(t, v, nullptr, 0), -1 - int32_t(std::distance(m.begin(), next)));
        }
    }
    EXPECT_EQ(vldrop("lab"), 0);
    EXPECT_EQ(vlfind("lab"), nullptr);
}

TEST(Labels, BuildingAtOnceGivesTheSameBlock)
{
    fresh_system(true);
    lcg rnd(2);
    std::vector<std::string> texts;
    std::vector<vlpair> pairs;
    for (int i = 0; i < 300; i++)
        texts.push_back("text" + std::to_string(rnd(50)));
    for (int i = 0; i < 300; i++)
        pairs.push_back({(i * 7) % 300, texts[size_t(i)].c_str()});
    vltable *one = vlallocate("one", 0, 0);
    for (auto &p : pairs)
        one = vladdlab(one, p.value, p.text);
    vltable *all = vlbuild("all", pairs.data(), 300);
    ASSERT_TRUE(all);
    ASSERT_EQ(dm_rec(one)->len, dm_rec(all)->len);
    EXPECT_EQ(memcmp(one, all, dm_rec(all)->len), 0);
    pairs.push_back({7, "later"});
    all = vlbuild("again", pairs.data(), 301);
    EXPECT_EQ(text_of(all, 7), "later");
    EXPECT_EQ(vlgetcount(all), 300);
}

TEST(Labels, BoundsAndRepeatedTexts)
{
    fresh_system(true);
    std::vector<vlpair> pairs;
    for (int32_t i = 0; i < vl_maxn; i++)
        pairs.push_back({i, "x"});
    vltable *t = vlbuild("big", pairs.data(), vl_maxn);
    ASSERT_TRUE(t);
    EXPECT_EQ(vladdlab(t, vl_maxn, "y"), nullptr);
    EXPECT_EQ(vlwhy(), 134);
    EXPECT_EQ(vlgetcount(vlfind("big")), vl_maxn);
    EXPECT_EQ(vladdlab(nullptr, 1, "y"), nullptr);
    EXPECT_EQ(vlwhy(), 9270);
    int32_t v = 0;
    t = vladdlab(vladdlab(vladdlab(vlallocate("s", 0, 0), 9, "same"), 4, "same"), -1, "other");
    EXPECT_EQ(vlfindtxt(t, "same", &v), 0);
    EXPECT_EQ(v, 4);
    EXPECT_EQ(vlfindtxt(t, "sam", &v), 1);
    t = vladdlab(t, ovlong_of_ovdouble(mis_of(1)), "refused");
    char out[5];
    EXPECT_EQ(vlfindval(t, mis_of(1), out, 5), 3);
    EXPECT_STREQ(out, "refu");
    std::string s(35000, 'q');
    t = vladdlab(t, 100, s.c_str());
    EXPECT_EQ(text_of(t, 100), s);
    EXPECT_EQ(vlmaxlen(t), 35000);
}

TEST(Labels, EveryEleventhHitMovesATableToTheFront)
{
    fresh_system(true);
    ASSERT_TRUE(vlallocate("lab", 0, 0));
    int32_t h = int32_t(dm_hash("lab") % dm_nhash);
    ASSERT_TRUE(dmadd("lab", DM_CHAR, 0, 40));
    for (int i = 0; i < 10; i++)
        vlfind("lab");
    EXPECT_EQ(dm_hname[h]->type, DM_CHAR);
    vlfind("lab");
    EXPECT_EQ(dm_hname[h]->type, DM_VALLABEL);
    EXPECT_EQ(dm_hname[h]->flag, 0);
    EXPECT_EQ(dm_hname[h]->nnext->type, DM_CHAR);
    EXPECT_EQ(dm_hname[h]->nnext->nprev, dm_hname[h]);
}

TEST(Labels, RefusedMemoryKeepsTheTable)
{
    fresh_system(true);
    vltable *t = vladdlab(vlallocate("lab", 0, 0), 1, "one");
    fault_arm(F_MEM, 1, true);
    EXPECT_EQ(vladdlab(t, 2, "two"), nullptr);
    EXPECT_EQ(vlwhy(), 950);
    EXPECT_EQ(vladdlab(t, 1, "two"), nullptr);
    EXPECT_EQ(charsave("_dta", "note1", "text"), 950);
    fault_disarm();
    EXPECT_EQ(text_of(vlfind("lab"), 1), "one");
}

TEST(Chars, AreStoredReplacedCutAndRemoved)
{
    fresh_system(true);
    std::string longer(67790, 'c');
    EXPECT_EQ(charsave("x", "a", longer.c_str()), 0);
    uint64_t n;
    ASSERT_TRUE(charfind("x", "a", &n));
    EXPECT_EQ(n, uint64_t(char_maxlen));
    EXPECT_EQ(charsave("x", "a", "short"), 0);
    EXPECT_EQ(charsave("x", "b", "other"), 0);
    EXPECT_EQ(charsave("_dta", "a", "of data"), 0);
    EXPECT_STREQ(charfind("x", "a", &n), "short");
    EXPECT_EQ(charcopy("x", "y"), 0);
    EXPECT_STREQ(charfind("y", "b", &n), "other");
    EXPECT_EQ(charsave("x", "a", ""), 0);
    EXPECT_EQ(charfind("x", "a", &n), nullptr);
    EXPECT_EQ(n, 0u);
    EXPECT_EQ(charrename("x", "z"), 0);
    EXPECT_EQ(charfind("x", "b", &n), nullptr);
    EXPECT_STREQ(charfind("z", "b", nullptr), "other");
    int count = 0;
    char owner[33], name[33];
    const char *text;
    for (const void *p = nullptr; (p = charnext(p, owner, name, &text));)
        count++;
    EXPECT_EQ(count, 4);
    charrm("y");
    EXPECT_EQ(charfind("y", "a", nullptr), nullptr);
    charrm(nullptr);
    EXPECT_EQ(charnext(nullptr, owner, name, &text), nullptr);
}

TEST(Chars, GoWithTheirVariable)
{
    fresh_system(true);
    add_user(T_BYTE, "a");
    add_user(T_BYTE, "b");
    add_user(T_BYTE, "c");
    for (const char *v : {"a", "b", "c", "_dta"})
        ASSERT_EQ(charsave(v, "n", "t"), 0);
    ASSERT_EQ(putvarlab(1, std::string(90, 'l').c_str()), 0);
    char lab[81];
    getvarlab(1, lab);
    EXPECT_EQ(strlen(lab), 80u);
    ASSERT_EQ(dsa_drop_one_var(sysdsa, 1, true), 0);
    EXPECT_EQ(charfind("a", "n", nullptr), nullptr);
    EXPECT_TRUE(charfind("b", "n", nullptr));
    add_user(T_BYTE, "a");
    getvarlab(3, lab);
    EXPECT_STREQ(lab, "");
    dsa_truncate_var(sysdsa, 0, true);
    EXPECT_EQ(charfind("_dta", "n", nullptr), nullptr);
}
