// Types that follow the values: the rules, and a column made anew when it must be.
#include "area.h"
#include "expr/generate.h"
#include "output/print.h"
#include <cmath>

TEST(vartype, promotion_rules)
{
    struct row {
        double z;
        uint8_t from, to;
    } rows[] = {
        {100, T_BYTE, T_BYTE}, {101, T_BYTE, T_INT}, {-127, T_BYTE, T_BYTE}, {-128, T_BYTE, T_INT},
        {32740, T_INT, T_INT}, {32741, T_BYTE, T_LONG}, {-32768, T_INT, T_LONG},
        {2147483620, T_BYTE, T_LONG}, {2147483621, T_LONG, T_DOUBLE}, {-2147483647, T_LONG, T_LONG},
        {2147483648, T_BYTE, T_DOUBLE}, {-2147483648.0, T_BYTE, T_DOUBLE}, {1.5, T_BYTE, T_FLOAT},
        {1.5, T_INT, T_FLOAT}, {1.5, T_LONG, T_DOUBLE}, {1e300, T_FLOAT, T_FLOAT},
        {mis_of(3), T_BYTE, T_BYTE},
    };
    for (const row &r : rows)
        EXPECT_EQ(promoted_vartype(r.z, r.from), r.to) << r.z;
}

// Three variables in segments of a few rows, and a sort list that a change of type keeps.
class changing : public testing::Test
{
  protected:
    void SetUp() override
    {
        fresh_system(true);
        s_outlev = 5;
        add_user(T_BYTE, "a");
        add_user(5, "s");
        add_user(T_INT, "b");
        ASSERT_EQ(dsa_add_obs(sysdsa, 300, true), 0);
        for (uint32_t i = 1; i <= 300; i++) {
            dsa_store(i == 7 ? mis_of(2) : i % 90, sysdsa, 1, i);
            dsa_safe_sstore(sysdsa, 2, i, i % 2 ? "odd" : "even");
            dsa_store(i, sysdsa, 3, i);
        }
        snprintf(_lbllist[0], 33, "lab");
        snprintf(_fmtlist[0], 49, "%%5.1f");
        _srtlist[0] = 3;
        _srtlist[1] = 1;
        _srtlist[2] = 0;
        ASSERT_EQ(charsave("a", "note", "kept"), 0);
    }
    void intact(uint8_t type)
    {
        EXPECT_EQ(dsa_check(sysdsa), 0);
        ASSERT_EQ(_Kvar, 3);
        EXPECT_EQ(_i_Kvar, 3);
        EXPECT_STREQ(_varlist[0], "a");
        EXPECT_EQ(_typlist[0], type);
        EXPECT_STREQ(_fmtlist[0], "%5.1f");
        EXPECT_STREQ(_lbllist[0], "lab");
        EXPECT_EQ(_srtlist[0], 3);
        EXPECT_EQ(_srtlist[1], 1);
        char buf[246];
        EXPECT_EQ(charload("a", "note", buf, sizeof buf), 4);
        for (uint32_t i = 1; i <= 300; i++) {
            ASSERT_EQ(dsa_data(sysdsa, 1, i), i == 7 ? mis_of(2) : i % 90);
            ASSERT_STREQ(dsa_sdata(sysdsa, 2, i, buf), i % 2 ? "odd" : "even");
            ASSERT_EQ(dsa_data(sysdsa, 3, i), i);
        }
    }
};

TEST_F(changing, keeps_all_but_the_type)
{
    for (uint8_t type : {T_INT, T_DOUBLE, T_FLOAT, T_LONG}) {
        ASSERT_EQ(change_vartype(1, type, _Nobs), 0);
        intact(type);
    }
    uint32_t limit = sysdsa->K_max;
    sysdsa->K_max = sysdsa->K;
    ASSERT_EQ(change_vartype(1, T_DOUBLE, _Nobs), 0) << "at the limit of variables";
    sysdsa->K_max = limit;
    intact(T_DOUBLE);
}

TEST_F(changing, leaves_no_trace_when_it_fails)
{
    for (int64_t nth = 1; nth < 40; nth++) {
        fault_arm(F_MEM, nth, false);
        int32_t rc = change_vartype(1, T_DOUBLE, _Nobs);
        if (!fault_disarm()) {
            EXPECT_EQ(rc, 0);
            break;
        }
        intact(rc ? uint8_t(T_BYTE) : uint8_t(T_DOUBLE));
        if (!rc) {
            ASSERT_EQ(change_vartype(1, T_BYTE, _Nobs), 0);
        }
    }
    ASSERT_EQ(change_vartype(1, T_BYTE, _Nobs), 0);
    fault_arm(F_BREAK, 20, false);
    EXPECT_EQ(change_vartype(1, T_DOUBLE, _Nobs), 1);
    fault_disarm();
    stopflag = 0;
    intact(T_BYTE);
}

TEST_F(changing, strings_widen_to_244)
{
    EXPECT_EQ(doupstr(2, 4), 0);
    EXPECT_EQ(_typlist[1], 5);
    EXPECT_EQ(doupstr(2, 12), 0);
    EXPECT_EQ(_typlist[1], 12);
    EXPECT_STREQ(_fmtlist[1], "%12s");
    EXPECT_EQ(doupstr(2, 300), -1);
    EXPECT_EQ(_typlist[1], 244);
    intact(T_BYTE);
    uint8_t type;
    EXPECT_EQ(doupnum(1000, 1, &type), 0);
    EXPECT_EQ(type, T_INT);
}
