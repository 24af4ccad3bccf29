#include "../session.h"
#include "core/missing.h"
#include "core/rc.h"
#include "interp/dm.h"
#include "interp/programs.h"
#include "stats/results.h"
#include <gtest/gtest.h>

namespace {

struct results : testing::Test {
    void SetUp() override
    {
        session();
        retval_zap();
        estval_clear();
        sretval_clear();
    }
    void TearDown() override
    {
        SetUp();
        program_class = 0;
        typelmac = DM_LOCAL;
    }
};

double number(int32_t kind, const char *name)
{
    return gretval_find(kind, name) == DM_SCALAR ? retval_get_as_double() : misval;
}
std::string text(int32_t kind, const char *name)
{
    return gretval_find(kind, name) == DM_LOCAL ? retval_get_strptr() : "(none)";
}

TEST_F(results, thirty_scalars_are_found_listed_and_cleared_alike)
{
    for (int32_t kind : {RK_R, RK_E}) {
        for (int i = 1; i <= 30; i++) {
            std::string n = "s" + std::to_string(i);
            kind == RK_R ? retval_set_gscalar(i, n.c_str()) : estval_set_gscalar(i, n.c_str());
        }
        for (int i = 1; i <= 30; i++)
            EXPECT_EQ(number(kind, ("s" + std::to_string(i)).c_str()), i);
        std::string names;
        retval_names(kind, DM_SCALAR, &names);
        EXPECT_EQ(names.substr(0, 6), "s1 s2 ");
        EXPECT_EQ(names.substr(names.size() - 8), " s29 s30");
        session_output.clear();
        retvals_dir(kind);
        omlflush(oml_cur);
        EXPECT_NE(session_output.find("(s30) =  30\n"), std::string::npos);
        kind == RK_R ? retval_clear() : estval_clear();
        EXPECT_EQ(gretval_find(kind, "s1"), 0);
        EXPECT_EQ(gretval_find(kind, "s30"), 0);
    }
}

TEST_F(results, replacing_and_erasing)
{
    retval_set_gscalar(1, "a");
    retval_set_gscalar(2, "b");
    retval_set_gscalar(3, "c");
    retval_reset_gscalar(20, "b");
    retval_erase("a");
    EXPECT_EQ(gretval_find(RK_R, "a"), 0);
    EXPECT_EQ(number(RK_R, "b"), 20);
    EXPECT_EQ(number(RK_R, "c"), 3);
    retval_set_glocal("m", "");
    EXPECT_EQ(gretval_find(RK_R, "m"), 0);
    retval_set_glocal("m", "12");
    double z;
    EXPECT_EQ(gretval_find(RK_R, "m"), DM_LOCAL);
    EXPECT_EQ(retval_get_as_double_any(&z), 0);
    EXPECT_EQ(z, 12);
    // One kind takes the name from the others.
    EXPECT_EQ(estval_reset_gscalar(4, "x"), 0);
    EXPECT_EQ(estval_reset_glocal("x", "text"), 0);
    EXPECT_EQ(text(RK_E, "x"), "text");
    EXPECT_EQ(estval_reset_gscalar(5, "x"), 0);
    EXPECT_EQ(number(RK_E, "x"), 5);
}

TEST_F(results, hold_of_a_level_becomes_r_at_its_end)
{
    retval_set_gscalar(1, "old");
    typelmac++;
    ASSERT_EQ(myretval_reset_gscalar(2, "x", 0), 0);
    ASSERT_EQ(myretval_reset_glocal("x", "now text", 0), 0);
    ASSERT_EQ(myretval_reset_gscalar(3, "y", 0), 0);
    EXPECT_EQ(number(RK_R, "old"), 1);
    EXPECT_EQ(gretval_find(RK_R, "y"), 0);
    EXPECT_EQ(number(RK_RETURN, "y"), 3);
    rmtmpdyn(1);
    typelmac--;
    EXPECT_EQ(gretval_find(RK_R, "old"), 0);
    EXPECT_EQ(text(RK_R, "x"), "now text");
    EXPECT_EQ(number(RK_R, "y"), 3);
    // Nothing returned empties r(); a plain program leaves it.
    typelmac++;
    rmtmpdyn(0);
    EXPECT_EQ(number(RK_R, "y"), 3);
    rmtmpdyn(1);
    EXPECT_EQ(gretval_find(RK_R, "y"), 0);
    EXPECT_EQ(retval_flag, 0);
}

TEST_F(results, return_add_keeps_what_the_program_set)
{
    typelmac++;
    retval_set_gscalar(1, "mean");
    retval_set_gscalar(2, "N");
    retval_set_glocal("v", "name");
    ASSERT_EQ(myretval_reset_gscalar(99, "N", 0), 0);
    ASSERT_EQ(myretval_add(), 0);
    EXPECT_EQ(gretval_find(RK_R, "mean"), 0);
    EXPECT_EQ(number(RK_RETURN, "mean"), 1);
    EXPECT_EQ(number(RK_RETURN, "N"), 99);
    EXPECT_EQ(text(RK_RETURN, "v"), "name");
    rmtmpdyn(1);
    EXPECT_EQ(number(RK_R, "N"), 99);
}

TEST_F(results, lack_of_memory_leaves_the_table)
{
    for (int i = 1; i <= 10; i++)
        retval_set_gscalar(i, ("s" + std::to_string(i)).c_str());
    for (int64_t n = 1; n <= 10; n++) {
        s_outlev = 9;
        fault_arm(F_MEM, n, true);
        EXPECT_EQ(retval_internal_to_dynamic(), RC_DMMEM);
        fault_disarm();
        s_outlev = 0;
        for (int i = 1; i <= 10; i++)
            EXPECT_EQ(number(RK_R, ("s" + std::to_string(i)).c_str()), i);
        EXPECT_EQ(dm_dtyp[DM_RSCALAR], nullptr);
    }
    EXPECT_EQ(retval_internal_to_dynamic(), 0);
    EXPECT_EQ(number(RK_R, "s10"), 10);
}

TEST_F(results, commands_keep_to_their_class)
{
    const struct {
        const char *line;
        int32_t rc[4];
    } rows[] = {
        {"return scalar x = 1", {151, 0, 151, 151}},
        {"return local x a b", {151, 0, 151, 151}},
        {"return", {151, 9999, 151, 151}},
        {"return list", {0, 0, 0, 0}},
        {"return list x", {101, 101, 101, 101}},
        {"ereturn scalar x = 1", {152, 152, 152, 0}},
        {"ereturn local x a", {152, 152, 152, 0}},
        {"sreturn local x a", {153, 153, 0, 153}},
        {"sreturn list", {0, 0, 0, 0}},
    };
    for (const auto &r : rows)
        for (uint8_t c = 0; c < 4; c++) {
            program_class = c;
            EXPECT_EQ(run(r.line), r.rc[c]) << r.line << " in class " << int(c);
        }
    EXPECT_EQ(text(RK_S, "x"), "a");
    EXPECT_EQ(text(RK_E, "x"), "a");
    EXPECT_EQ(text(RK_RETURN, "x"), "a b");
    myretval_clear();
}

TEST_F(results, sets_are_held_and_come_back)
{
    retval_set_gscalar(1, "a");
    retval_set_glocal("m", "t");
    EXPECT_EQ(run("_return hold one"), 0);
    EXPECT_EQ(gretval_find(RK_R, "a"), 0);
    retval_set_gscalar(2, "a");
    EXPECT_EQ(run("_return hold one"), RC_EXISTS);
    EXPECT_EQ(run("_return restore one, hold"), 0);
    EXPECT_EQ(number(RK_R, "a"), 1);
    EXPECT_EQ(text(RK_R, "m"), "t");
    EXPECT_EQ(run("_return drop one"), 0);
    EXPECT_EQ(run("_return restore one"), RC_NOTFOUND);
    EXPECT_EQ(number(RK_R, "a"), 1);
    estval_set_glocal("cmd", "fit");
    EXPECT_EQ(run("_estimates hold h"), 0);
    EXPECT_EQ(gretval_find(RK_E, "cmd"), 0);
    EXPECT_EQ(run("_estimates unhold h"), 0);
    EXPECT_EQ(text(RK_E, "cmd"), "fit");
}

TEST_F(results, estimation_clears_old_names)
{
    ASSERT_EQ(run("global S_E_depv y") + run("scalar S_E_x = 1") + run("global S_other z"), 0);
    estval_clear();
    EXPECT_EQ(macptr("S_E_depv"), nullptr);
    EXPECT_EQ(dmfind0("S_E_x", DM_SCALAR), nullptr);
    EXPECT_NE(macptr("S_other"), nullptr);
}

}  // namespace
