// Order: whatever moves the rows, the result is an ordered permutation of them.
#include "area.h"
#include "core/rc.h"
#include "data/sort.h"
#include <algorithm>

// A row number beside the keys tells where each row came from.
static void make(int32_t N, uint8_t type, uint8_t pad, lcg &rnd, uint32_t range)
{
    fresh_system(false);
    add_user(type, "key");
    add_user(T_LONG, "was");
    if (pad)
        add_user(pad, "pad");
    ASSERT_EQ(dsa_add_obs(sysdsa, N, true), 0);
    for (int32_t i = 1; i <= N; i++) {
        uint32_t r = rnd(range);
        if (t_isstr(type)) {
            char s[12];
            snprintf(s, sizeof s, type > 8 ? "longtext%c%c" : "%c%c", char(200 - r % 100), char('a' + r % 26));
            dsa_safe_sstore(sysdsa, 1, uint32_t(i), s);
        } else {
            dsa_store(r % 11 == 0 ? mis_of(int(r % 27)) : double(r % 200) - 100, sysdsa, 1,
                      uint32_t(i));
        }
        dsa_istore(i, sysdsa, 2, uint32_t(i));
    }
}

static const int32_t key1[] = {1};

static void expect_ordered(int32_t N)
{
    std::vector<int> seen(size_t(N) + 1);
    for (int32_t i = 1; i <= N; i++) {
        int32_t was = dsa_idata(sysdsa, 2, uint32_t(i));
        ASSERT_TRUE(was >= 1 && was <= N && !seen[size_t(was)]++);
        if (i < N) {
            ASSERT_LE(sort_compare(uint32_t(i), uint32_t(i + 1), key1, 1), 0) << i;
        }
    }
    EXPECT_EQ(_srtlist[0], 1);
    EXPECT_EQ(_srtlist[1], 0);
    EXPECT_EQ(dsa_check(sysdsa), 0);
}

static std::vector<int32_t> order(int32_t N)
{
    std::vector<int32_t> v;
    for (int32_t i = 1; i <= N; i++)
        v.push_back(dsa_idata(sysdsa, 2, uint32_t(i)));
    return v;
}

TEST(Sort, EveryModeAndTypeGivesAnOrderedPermutation)
{
    for (uint8_t type : {uint8_t(1), uint8_t(8), uint8_t(20), uint8_t(T_BYTE), uint8_t(T_INT),
                         uint8_t(T_LONG), uint8_t(T_FLOAT), uint8_t(T_DOUBLE)})
        for (int32_t mode : {SORT_AUTO, SORT_IVEC, SORT_IVAR, SORT_SWAP})
            for (int32_t N : {2, 3, 10, 1000, 20000}) {
                SCOPED_TRACE(testing::Message() << int(type) << " mode " << mode << " N " << N);
                lcg rnd(uint64_t(N) + type);
                make(N, type, 0, rnd, uint32_t(N));
                ASSERT_EQ(sort_obs(key1, 1, 1, N, false, mode), 0);
                expect_ordered(N);
                if (mode != SORT_AUTO && N == 20000) {
                    EXPECT_EQ(sort_lastmode, mode);
                }
            }
}

TEST(Sort, TheModeIsChosenByTheWidthOfARow)
{
    lcg rnd(5);
    make(100, T_LONG, 152, rnd, 50);
    ASSERT_EQ(dsa_lrec(sysdsa), 160u);
    ASSERT_EQ(sort_obs(key1, 1, 1, 100, false, SORT_AUTO), 0);
    EXPECT_EQ(sort_lastmode, SORT_SWAP);
    make(100, T_LONG, 153, rnd, 50);
    ASSERT_EQ(sort_obs(key1, 1, 1, 100, false, SORT_AUTO), 0);
    EXPECT_EQ(sort_lastmode, SORT_IVEC);
    expect_ordered(100);
    // Memory refused: the next way is taken, and it still sorts.
    for (int n = 1; n <= 4; n++) {
        make(100, T_LONG, 153, rnd, 50);
        fault_arm(F_MEM, n, true);
        EXPECT_EQ(sort_obs(key1, 1, 1, 100, false, SORT_AUTO), 0);
        fault_disarm();
        expect_ordered(100);
    }
}

TEST(Sort, TiesFollowTheSeedUnlessStable)
{
    std::vector<int32_t> first, other;
    for (int run = 0; run < 3; run++) {
        lcg rnd(9);
        make(500, T_BYTE, 0, rnd, 7);
        setsortseed(run == 2 ? 77 : 1001);
        ASSERT_EQ(sort_obs(key1, 1, 1, 500, false, SORT_IVEC), 0);
        expect_ordered(500);
        if (run == 0)
            first = order(500);
        else if (run == 1)
            EXPECT_EQ(order(500), first);
        else
            EXPECT_NE(order(500), first);
    }
    for (int32_t mode : {SORT_AUTO, SORT_IVEC, SORT_IVAR, SORT_SWAP}) {
        lcg rnd(9);
        make(500, T_BYTE, 0, rnd, 7);
        ASSERT_EQ(sort_obs(key1, 1, 1, 500, true, mode), 0);
        expect_ordered(500);
        auto v = order(500);
        for (uint32_t i = 1; i < 500; i++)
            if (sort_compare(i, i + 1, key1, 1) == 0) {
                ASSERT_LT(v[i - 1], v[i]);
            }
        EXPECT_EQ(_Kvar, 2);
    }
}

static bool odd_rows(int32_t obs) { return obs % 2; }

// The order in a work variable is the one sort_index finds; what is not selected stands behind.
TEST(Sort, AnIndexInAWorkVariable)
{
    for (int32_t N : {1, 2, 9, 5000}) {
        lcg rnd(3);
        make(N, T_LONG, 0, rnd, 500);
        std::vector<uint8_t> sel;
        for (int32_t i = 1; i <= N; i++)
            sel.push_back(odd_rows(i));
        std::vector<int32_t> want(size_t(N) + 1);
        int32_t m = sort_index(key1, 1, sel.data(), want.data()), n = 0;
        int32_t var = sortvar(key1, 1, 1, N, odd_rows, 0, &n);
        ASSERT_GT(var, 0);
        ASSERT_EQ(n, m);
        std::vector<bool> seen(size_t(N) + 1);
        for (int32_t i = 1; i <= N; i++) {
            int32_t at = dsa_idata(sysdsa, uint32_t(var), uint32_t(i));
            if (i <= n) {
                ASSERT_EQ(sort_compare(uint32_t(at), uint32_t(want[size_t(i) - 1]), key1, 1), 0);
                ASSERT_TRUE(odd_rows(at));
            }
            ASSERT_FALSE(seen[size_t(at)]);
            seen[size_t(at)] = true;
        }
        // Turned around, it is found to be descending and turned back.
        for (int32_t i = 1; i <= n; i++)
            dsa_istore(want[size_t(n - i)], sysdsa, uint32_t(var), uint32_t(i));
        uint32_t seed = sortseed();
        ASSERT_EQ(sortvar1(var, key1, 1, 1, n), 0);
        EXPECT_EQ(sortseed(), seed);
        for (int32_t i = 1; i <= n; i++)
            ASSERT_EQ(dsa_idata(sysdsa, uint32_t(var), uint32_t(i)), want[size_t(i) - 1]);
    }
}

TEST(Sort, TheGeneratorDrawsAsTold)
{
    setsortseed(1001);
    srndobs(1, 100);
    uint64_t state = 1001;
    for (int i = 0; i < 1000; i++) {
        state = state * 68969 % (uint64_t{1} << 31);
        auto want = 1 + int32_t(double(state) / 2147483646.0 * 99 + 0.5);
        ASSERT_EQ(rndobs(), std::min(want, 100));
    }
    EXPECT_EQ(sortseed(), uint32_t(state));
}

TEST(Sort, OrderedDataStayAndDescendingDataTurnAround)
{
    fresh_system(false);
    add_user(T_INT, "key");
    add_user(T_LONG, "was");
    ASSERT_EQ(dsa_add_obs(sysdsa, 9, true), 0);
    const int down[] = {9, 7, 7, 7, 5, 5, 3, 2, 1};
    for (uint32_t i = 1; i <= 9; i++) {
        dsa_store(down[i - 1], sysdsa, 1, i);
        dsa_istore(int32_t(i), sysdsa, 2, i);
    }
    setsortseed(1001);
    ASSERT_EQ(sort_obs(key1, 1, 1, 9, false, SORT_AUTO), 0);
    EXPECT_EQ(order(9), (std::vector<int32_t>{9, 8, 7, 6, 5, 4, 3, 2, 1}));
    expect_ordered(9);
    ASSERT_EQ(sort_obs(key1, 1, 1, 9, false, SORT_AUTO), 0);
    EXPECT_EQ(order(9), (std::vector<int32_t>{9, 8, 7, 6, 5, 4, 3, 2, 1}));
    EXPECT_EQ(sortseed(), 1001u);
    EXPECT_TRUE(sort_known(key1, 1));
    pi_chksort(1);
    EXPECT_EQ(_srtlist[0], 0);
    const int32_t was[] = {2};
    ASSERT_EQ(sort_obs(was, 1, 1, 8, false, SORT_AUTO), 0);
    EXPECT_EQ(_srtlist[0], 0) << "a part says nothing about the whole";
    EXPECT_EQ(order(9), (std::vector<int32_t>{2, 3, 4, 5, 6, 7, 8, 9, 1}));
}

TEST(Sort, ABreakLeavesSoundDataAndNoOrder)
{
    for (int32_t mode : {SORT_IVEC, SORT_IVAR, SORT_SWAP})
        for (int n = 1; n < 40; n++) {
            lcg rnd(uint64_t(n) * 3);
            make(3000, T_LONG, 0, rnd, 3000);
            ASSERT_EQ(sort_obs(key1, 1, 1, 2, false, SORT_AUTO), 0);
            fault_arm(F_BREAK, n, false);
            int32_t rc = sort_obs(key1, 1, 1, 3000, true, mode);
            int64_t hits = fault_disarm();
            stopflag = 0;
            EXPECT_EQ(dsa_check(sysdsa), 0);
            EXPECT_EQ(_Kvar, 2);
            EXPECT_EQ(rc, hits ? RC_BREAK : 0);
            if (rc) {
                EXPECT_EQ(_srtlist[0], 0);
            }
            auto v = order(3000);
            std::sort(v.begin(), v.end());
            ASSERT_TRUE(v.front() == 1 && v.back() == 3000 &&
                        std::adjacent_find(v.begin(), v.end()) == v.end());
        }
}

TEST(Sort, PatternsThatAreNoNumbersKeepTheirPlace)
{
    fresh_system(false);
    add_user(T_DOUBLE, "key");
    add_user(T_LONG, "was");
    ASSERT_EQ(dsa_add_obs(sysdsa, 600, true), 0);
    lcg rnd(3);
    for (uint32_t i = 1; i <= 600; i++) {
        uint64_t bits = uint64_t(rnd(0x7fffffff)) << 33 | rnd(0x7fffffff);
        if (i % 3 == 0)
            bits |= uint64_t{0x7ff} << 52;
        memcpy(dsa_varobsptr(sysdsa, 1, i), &bits, 8);
        dsa_istore(int32_t(i), sysdsa, 2, i);
    }
    for (int32_t mode : {SORT_IVEC, SORT_SWAP}) {
        ASSERT_EQ(sort_obs(key1, 1, 1, 600, false, mode), 0);
        expect_ordered(600);
    }
}

TEST(Sort, IndexSelectsAndKeepsTies)
{
    lcg rnd(4);
    make(1000, T_BYTE, 0, rnd, 9);
    std::vector<uint8_t> sel(1000);
    for (auto &b : sel)
        b = rnd(2) != 0;
    std::vector<int32_t> idx(1001);
    for (int refuse = 0; refuse < 2; refuse++) {
        if (refuse)
            fault_arm(F_MEM, 1, true);
        int32_t n = sort_index(key1, 1, sel.data(), idx.data());
        fault_disarm();
        ASSERT_EQ(n, int32_t(std::count(sel.begin(), sel.end(), 1)));
        for (int32_t i = 1; i < n; i++) {
            uint32_t a = uint32_t(idx[size_t(i) - 1]), b = uint32_t(idx[size_t(i)]);
            int c = sort_compare(a, b, key1, 1);
            ASSERT_TRUE(c < 0 || (c == 0 && a < b));
            ASSERT_TRUE(sel[b - 1]);
        }
    }
    int32_t v[] = {3, 1, 3, 2, 1, 1};
    EXPECT_EQ(uniqnints(v, 6), 3);
    EXPECT_EQ(v[0] * 100 + v[1] * 10 + v[2], 123);
}

TEST(Sort, AnOrderIsKeptAndBroughtBack)
{
    lcg rnd(8);
    make(200, T_INT, 0, rnd, 100);
    ASSERT_EQ(sort_obs(key1, 1, 1, 200, false, SORT_AUTO), 0);
    auto was = order(200);
    ASSERT_EQ(sort_preserve(), 0);
    const int32_t by_was[] = {2};
    ASSERT_EQ(sort_obs(by_was, 1, 1, 200, false, SORT_AUTO), 0);
    ASSERT_EQ(sort_preserve(), 0);
    ASSERT_EQ(sort_obs(key1, 1, 1, 200, false, SORT_AUTO), 0);
    ASSERT_EQ(sort_restore(true), 0);
    EXPECT_TRUE(sort_known(by_was, 1));
    ASSERT_EQ(sort_restore(true), 0);
    EXPECT_EQ(order(200), was);
    EXPECT_TRUE(sort_known(key1, 1));
    EXPECT_EQ(_Kvar, 2);
    ASSERT_EQ(sort_preserve(), 0);
    dsa_truncate_var(sysdsa, 2, true);
    EXPECT_EQ(sort_restore(true), 196);
    // Places told by a variable; a variable that is none is refused.
    ASSERT_EQ(sort_obs(by_was, 1, 1, 200, false, SORT_AUTO), 0);
    for (uint32_t i = 1; i <= 200; i++)
        dsa_store(201 - double(i), sysdsa, 1, i);
    ASSERT_EQ(sysidxsort("key", true), 0);
    EXPECT_EQ(order(200).front(), 200);
    EXPECT_EQ(_srtlist[0], 0);
    dsa_store(2, sysdsa, 1, 1);
    EXPECT_EQ(sysidxsort("key", false), 459);
    EXPECT_EQ(sysidxsort("nosuch", false), 111);
}
