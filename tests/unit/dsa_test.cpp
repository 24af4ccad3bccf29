// The storage area: what is in it survives every growth, move and shrink.
#include "area.h"
#include "core/clock.h"
#include <map>

// A second, plain account of the same data: text or number for each cell.
struct model {
    std::vector<uint8_t> types;
    std::vector<std::vector<std::string>> rows;
};

static std::string cell(const dsa_area *d, uint32_t var, uint32_t obs)
{
    const char *p = dsa_varobsptr(d, var, obs);
    return std::string(p, size_t(dsa_bytlenc(d->typ[var - 1])));
}

static void compare(const dsa_area *d, const model &m)
{
    ASSERT_EQ(dsa_check(d), 0);
    ASSERT_EQ(d->K, m.types.size());
    ASSERT_EQ(d->_No_ ? d->_No_ - 1 : 0, m.rows.size());
    for (uint32_t i = 1; i <= m.rows.size(); i++)
        for (uint32_t k = 1; k <= d->K; k++)
            ASSERT_EQ(cell(d, k, i), m.rows[i - 1][k - 1]) << "row " << i << " var " << k;
}

static const uint8_t alltypes[] = {1, 7, 40, 244, T_BYTE, T_INT, T_LONG, T_FLOAT, T_DOUBLE};

static void fill_column(dsa_area *d, model *m, uint32_t var, lcg &rnd)
{
    size_t w = size_t(dsa_bytlenc(d->typ[var - 1]));
    for (uint32_t i = 1; i < d->_No_; i++) {
        std::string s(w, 0);
        for (char &c : s)
            c = char(rnd(256));
        memcpy(dsa_varobsptr(d, var, i), s.data(), w);
        m->rows[i - 1][var - 1] = s;
    }
}

static void step(dsa_area *d, model *m, lcg &rnd)
{
    uint32_t N = uint32_t(m->rows.size());
    switch (rnd(9)) {
    case 0:
    case 1: {
        uint8_t t = alltypes[rnd(9)];
        char name[16];
        snprintf(name, sizeof name, "v%u", rnd(1000000));
        if (dsa_add_var(d, t, name, "%9.0g"))
            return;
        m->types.push_back(t);
        for (auto &r : m->rows)
            r.emplace_back();
        return fill_column(d, m, d->K, rnd);
    }
    case 2:
    case 3: {
        uint32_t n = 1 + rnd(60);
        if (dsa_add_obs(d, n, true))
            return;
        for (uint32_t i = 0; i < n; i++) {
            m->rows.emplace_back();
            for (uint32_t k = 1; k <= d->K; k++)
                m->rows.back().push_back(cell(d, k, N + i + 1));
        }
        for (uint32_t k = 1; k <= d->K; k++) {
            if (t_isstr(d->typ[k - 1]))
                EXPECT_EQ(*dsa_varobsptr(d, k, N + n), 0);
            else
                EXPECT_EQ(dsa_data(d, k, N + n), misval);
            fill_column(d, m, k, rnd);
        }
        return;
    }
    case 4:
        if (rnd(3) || N == 0)
            return;
        dsa_truncate_obs(d, N = rnd(N));
        m->rows.resize(N);
        return;
    case 5: {
        uint8_t *flags = dsa_drop_open(d, 0);
        model was = *m;
        m->types.clear();
        for (auto &r : m->rows)
            r.clear();
        for (uint32_t k = 0; k < d->K; k++) {
            flags[k] = rnd(4) == 0;
            if (flags[k])
                continue;
            m->types.push_back(was.types[k]);
            for (size_t i = 0; i < was.rows.size(); i++)
                m->rows[i].push_back(was.rows[i][k]);
        }
        EXPECT_EQ(dsa_drop(d, flags, true), 0);
        return dsa_drop_close(d, flags);
    }
    case 6: {
        dsa_delhandle h = dsa_delete_open(d, 0);
        if (h.var < 0)
            return;
        std::vector<std::vector<std::string>> left;
        for (uint32_t i = 1; i <= N; i++) {
            uint8_t flag = rnd(5) == 0;
            dsa_bstore(flag, d, uint32_t(h.var), i);
            if (!flag)
                left.push_back(m->rows[i - 1]);
        }
        EXPECT_EQ(dsa_delete(d, h.var), 0);
        dsa_delete_close(d, &h);
        m->rows = left;
        return;
    }
    case 7: {
        if (d->K < 2)
            return;
        uint32_t from = rnd(d->K), to = rnd(d->K);
        EXPECT_EQ(pi_dsa_mvvar(d, from + 1, to + 1, nullptr), 0);
        auto move = [&](auto &v) {
            auto x = v[from];
            v.erase(v.begin() + from);
            v.insert(v.begin() + to, x);
        };
        move(m->types);
        for (auto &r : m->rows)
            move(r);
        return;
    }
    default: {
        uint64_t w = d->lrec + rnd(uint32_t(d->width_max - d->lrec) + 1);
        uint64_t was = dsa_hash(d);
        (void)!dsa_sys_adjust_width(d, w ? w : 1);
        EXPECT_EQ(dsa_fsa_update(d), 0);
        EXPECT_EQ(dsa_hash(d), was);
        EXPECT_EQ(dsa_downsize(d), 0);
        EXPECT_EQ(dsa_hash(d), was);
    }
    }
}

TEST(Dsa, WhatIsStoredSurvivesEverything)
{
    for (uint64_t seed = 1; seed <= 150; seed++) {
        SCOPED_TRACE(seed);
        lcg rnd(seed);
        dsa_area *d = tiny_area(false);
        d->preallocate = seed % 3 != 0;
        if (!d->preallocate) {
            safefree(d->spare);
            d->spare = nullptr;
        }
        model m;
        for (int i = 0; i < 60 && !::testing::Test::HasFailure(); i++) {
            step(d, &m, rnd);
            compare(d, m);
        }
        dsa_close(d);
        if (::testing::Test::HasFailure())
            break;
    }
}

TEST(Dsa, RepartitionKeepsRowsAtEveryWidth)
{
    dsa_area *d = tiny_area(false);
    ASSERT_EQ(dsa_add_var(d, T_LONG, "x", "%12.0g"), 0);
    for (uint32_t rows : {1u, 2u, 9u, 100u, 333u}) {
        ASSERT_EQ(dsa_add_obs(d, rows - (d->_No_ ? d->_No_ - 1 : 0), true), 0);
        for (uint32_t i = 1; i <= rows; i++)
            dsa_istore(int32_t(i * 7919), d, 1, i);
        ASSERT_EQ(dsa_sys_adjust_S(d, d->S + 120), 0);
        lcg rnd(rows);
        for (int n = 0; n < 200; n++) {
            if (dsa_sys_adjust_width(d, 4 + rnd(900)))
                continue;
            ASSERT_EQ(dsa_fsa_update(d), 0);
            ASSERT_EQ(dsa_check(d), 0);
            for (uint32_t i = 1; i <= rows; i++)
                ASSERT_EQ(dsa_idata(d, 1, i), int32_t(i * 7919)) << i << " width " << d->width;
        }
    }
    EXPECT_GT(d->hist.wider_s, 100);
    EXPECT_GT(d->hist.longer_s, 100);
    dsa_close(d);
}

TEST(Dsa, CountsAtTheEmptyEnd)
{
    dsa_area *d = tiny_area(false);
    ASSERT_EQ(dsa_add_var(d, T_BYTE, "x", "%8.0g"), 0);
    EXPECT_EQ(d->_No_, 0u);
    ASSERT_EQ(dsa_add_obs(d, 1, true), 0);
    EXPECT_EQ(d->_No_, 2u);
    dsa_delhandle h = dsa_delete_open(d, 1);
    ASSERT_EQ(dsa_delete(d, h.var), 0);
    dsa_delete_close(d, &h);
    EXPECT_EQ(d->_No_, 0u);
    ASSERT_EQ(dsa_add_obs(d, 5, true), 0);
    dsa_delete_all(d);
    EXPECT_EQ(d->_No_, 1u);
    dsa_truncate_obs(d, 1);  // its own slot count: one row more
    EXPECT_EQ(d->_No_, 2u);
    EXPECT_EQ(dsa_check(d), 0);
    dsa_chkpt p = dsa_chkpt_open(d);
    ASSERT_EQ(dsa_add_obs(d, 10, true), 0);
    dsa_chkpt_close(d, &p, true);
    EXPECT_EQ(d->_No_, 3u);
    dsa_close(d);
}

TEST(Dsa, LimitsHaveTheirCodesAndChangeNothing)
{
    dsa_area *d = tiny_area(false);
    ASSERT_EQ(dsa_add_obs(d, 50, true), 0);
    for (int i = 0; i < 4; i++)
        ASSERT_EQ(dsa_add_var(d, 244, "s", "%9s"), 0);
    ASSERT_EQ(dsa_add_var(d, 24, "t", "%9s"), 0);
    EXPECT_EQ(d->lrec, d->width_max);
    uint64_t was = dsa_hash(d);
    EXPECT_EQ(dsa_add_var(d, 1, "u", "%9s"), 902);
    EXPECT_EQ(dsa_add_obs(d, 3000000000, true), 901);
    EXPECT_EQ(dsa_hash(d), was);
    EXPECT_EQ(dsa_check(d), 0);
    while (d->K > 1)
        dsa_truncate_var(d, d->K - 1, true);
    while (d->K < d->K_max)
        ASSERT_EQ(dsa_add_var(d, T_BYTE, "b", "%8.0g"), 0);
    EXPECT_EQ(dsa_add_var(d, T_BYTE, "b", "%8.0g"), 900);
    dsa_delhandle h = dsa_delete_open(d, 0);
    EXPECT_EQ(h.var, 121);
    dsa_delete_close(d, &h);
    EXPECT_EQ(d->K, 120u);
    dsa_close(d);
}

// Widths worked out by hand: room for 1,000 rows in one segment of 4 MiB allows rows of
// 4,190 bytes, so a row of w bytes gets (w + min(w + 1600, 4190)) / 2.
TEST(Dsa, GrowthChoosesTheToldWidths)
{
    dsa_segsize_floor = 1048576;
    dsa_area *d = dsa_open(0, 0);
    d->segsize_suggested = 4194304;
    d->width_suggested = 800;
    ASSERT_EQ(dsa_start(d), 0);
    ASSERT_EQ(dsa_add_obs(d, 1000, true), 0);
    EXPECT_EQ(d->width, 800u);
    const uint64_t want[12] = {800,  800,  800,  1776, 1776, 1776, 1776,
                               2752, 2752, 2752, 2752, 3559};
    for (int i = 0; i < 12; i++) {
        ASSERT_EQ(dsa_add_var(d, 244, "s", "%9s"), 0);
        EXPECT_EQ(d->width, want[i]) << i;
        EXPECT_EQ(dsa_check(d), 0);
    }
    EXPECT_EQ(d->hist.wider_s, 3);
    dsa_close(d);
}

TEST(Dsa, ShrinkWaitsForItsTime)
{
    dsa_area *d = tiny_area(false);
    ASSERT_EQ(dsa_reset_niceness(d, 5), 0);
    ASSERT_EQ(dsa_add_var(d, T_DOUBLE, "x", "%10.0g"), 0);
    ASSERT_EQ(dsa_add_obs(d, 5000, true), 0);
    uint32_t S = d->S;
    EXPECT_GT(S, 8u);
    dsa_truncate_obs(d, 10);
    EXPECT_EQ(d->S, S);
    EXPECT_EQ(d->downsize_pending, 1);
    clock_shift(59);
    ASSERT_EQ(dsa_alloc(d, 0, 0, 0), 0);
    EXPECT_EQ(d->S, S);
    clock_shift(2);
    ASSERT_EQ(dsa_alloc(d, 0, 0, 0), 0);
    EXPECT_EQ(d->S, 1u);
    EXPECT_EQ(dsa_check(d), 0);
    EXPECT_EQ(dsa_reset_niceness(d, 11), 198);
    dsa_close(d);
}

TEST(Dsa, MemoryGoalsAreCheckedAsGiven)
{
    dsa_area *d = tiny_area(false);
    EXPECT_EQ(dsa_reset_memory_max_goal(d, 2 * 4096 - 1), 198);
    EXPECT_EQ(dsa_reset_memory_max_goal(d, 2 * 4096), 0);
    EXPECT_EQ(dsa_memory_max_goal_adj(d), 2u * 4096);
    EXPECT_EQ(d->memory_max_S, 1);
    ASSERT_EQ(dsa_add_var(d, T_DOUBLE, "x", "%10.0g"), 0);
    EXPECT_EQ(dsa_add_obs(d, 500, true), 0);
    uint64_t was = dsa_hash(d);
    EXPECT_EQ(dsa_add_obs(d, 500, true), 909);
    EXPECT_EQ(dsa_hash(d), was);
    EXPECT_EQ(dsa_check(d), 0);
    EXPECT_EQ(dsa_reset_memory_max_goal(d, 0), 4);
    EXPECT_EQ(dsa_reset_seg_size(d, 8192), 4);
    dsa_truncate_var(d, 0, true);
    dsa_truncate_obs(d, 0);
    EXPECT_EQ(dsa_reset_memory_max_goal(d, 0), 0);
    EXPECT_EQ(dsa_reset_memory_min_goal(d, 5 * 4096), 0);
    EXPECT_EQ(d->S, 5u);
    EXPECT_EQ(dsa_reset_memory_min_goal(d, 0), 0);
    EXPECT_EQ(d->S, 1u);
    EXPECT_EQ(dsa_reset_seg_size(d, 8192), 0);
    EXPECT_EQ(d->segment_size, 8192u);
    EXPECT_EQ(dsa_check(d), 0);
    dsa_close(d);
}

// Refuse each allocation in turn: the data stay, the rules hold, nothing is lost.
TEST(Dsa, RefusedMemoryLeavesTheDataAlone)
{
    for (int stay = 0; stay <= 1; stay++)
        for (int n = 1;; n++) {
            mem_use before = mem_live();
            dsa_area *d = tiny_area(false);
            ASSERT_EQ(dsa_add_var(d, T_LONG, "x", "%12.0g"), 0);
            ASSERT_EQ(dsa_add_obs(d, 900, true), 0);
            uint64_t was = dsa_hash(d);
            fault_arm(F_MEM, n, stay);
            int32_t rc = dsa_add_var(d, 200, "s", "%9s");
            int64_t hits = fault_disarm();
            EXPECT_EQ(dsa_check(d), 0);
            EXPECT_TRUE(rc == 0 || rc == 909) << rc;
            if (rc) {
                EXPECT_EQ(dsa_hash(d), was);
            }
            dsa_close(d);
            EXPECT_EQ(mem_live().blocks, before.blocks);
            if (!hits) {
                EXPECT_EQ(rc, 0);
                break;
            }
        }
    for (int n = 1; n < 14; n++) {
        mem_use before = mem_live();
        dsa_area *d = dsa_open(0, 0);
        fault_arm(F_MEM, n, true);
        int32_t rc = dsa_start(d);
        if (fault_disarm()) {
            EXPECT_EQ(rc, 909);
        }
        dsa_close(d);
        EXPECT_EQ(mem_live().blocks, before.blocks);
    }
}

TEST(Dsa, SortListFollowsTheVariables)
{
    fresh_system(true);
    for (const char *n : {"a", "b", "c", "d"})
        add_user(T_BYTE, n);
    auto sorted_by = [](std::vector<int16_t> v) {
        v.push_back(0);
        memcpy(_srtlist, v.data(), v.size() * 2);
    };
    auto list = [] {
        std::vector<int16_t> v;
        for (int i = 0; _srtlist[i]; i++)
            v.push_back(_srtlist[i]);
        return v;
    };
    sorted_by({4, 2, 3});
    ASSERT_EQ(dsa_drop_one_var(sysdsa, 1, true), 0);
    EXPECT_EQ(list(), (std::vector<int16_t>{3, 1, 2}));
    ASSERT_EQ(pi_dsa_mvvar(sysdsa, 3, 1, nullptr), 0);
    EXPECT_EQ(list(), (std::vector<int16_t>{1, 2, 3}));
    ASSERT_EQ(dsa_drop_one_var(sysdsa, 2, true), 0);
    EXPECT_EQ(list(), (std::vector<int16_t>{1}));
    EXPECT_STREQ(_varlist[0], "d");
    EXPECT_EQ(_i_Kvar, 2);
    EXPECT_EQ(dsa_check(sysdsa), 0);
}
