// Values changed where they stand, extremes, sums that run, and what the machine tells of itself.
#include "core/clock.h"
#include "mosabi.h"

TEST(MosaValues, Numbers)
{
    static const called rows[] = {
        {"asinhr((1, -1, .)), acoshr((2, .5))", "R1,5:0.881373587 -0.881373587 . 1.316957897 ."},
        {"comb((50, 5, 3), (7, 5, 4))", "R1,3:99884400 1 ."},
        {"floatround((.1, 1, .b, 1e300)) :- (.1, 1, 0, 0)", "R1,4:1.490116114e-09 0 . ."},
        {"floatround(.b) == .b", "R1,1:1"},
        {"chebyeval((1, 2, 3.5), (0, .3, -2))", "R1,3:-2.5 -1.27 21.5"},
        {"chebyeval(7, (0 \\ .))", "R2,1:7 ."},
        {"chebyeval((1, .), .5)", "R1,1:."},
        {"chebyeval(J(2, 2, 1), .5)", "3201"},
        {"mreldifsym((1, 2 \\ 3, 4)), mreldifsym((1, 1i \\ -1i, 2))", "R1,2:0.3333333333 0"},
        {"mreldifsym((1, 2))", "3205"},
        {"mreldifre((3 + 4i, 2)), mreldifre((1, 2))", "R1,2:0.6666666667 0"},
        {"isrealvalues((1, 2)), isrealvalues(C(1)), isrealvalues(1i)", "R1,3:1 1 0"},
        {"isrealvalues(\"a\")", "3251"},
        {"rownonmissing((1, . \\ ., .))", "R2,1:1 0"},
        {"colnonmissing((\"a\", \"\" \\ \"b\", \"\"))", "R1,2:2 0"},
        {"rowmaxabs((1, -3 \\ ., 2 \\ ., .))", "R3,1:3 2 ."},
        {"colmaxabs((3 + 4i, -1))", "R1,2:5 1"},
        {"J2(2, 2, (1, 2))", "R2,4:1 2 1 2 1 2 1 2"},
        {"J2(1, 2, (\"a\" \\ \"b\"))", "S2,2:a|a|b|b"},
        {"J2(0, 3, (1, 2))", "R0,6:"},
        {"rseed(5); ua = runiform(1, 2); uniformseed(5); ua == uniform(1, 2)", "R1,1:1"},
        {"us = uniformseed(); ua = uniform(1, 1); uniformseed(us); ua == uniform(1, 1)", "R1,1:1"},
        {"quadrunningsum((1e16, 1, -1e16, .))", "R1,4:1e+16 1e+16 1 1"},
        {"rs = .; _runningsum(rs, (1, ., 3), 1); rs", "R1,3:1 . ."},
        {"_quadrunningsum(rs, (1 \\ 2)); rs", "R2,1:1 3"},
    };
    try_all(rows);
}

TEST(MosaValues, InPlace)
{
    static const called rows[] = {
        {"ma = (1, . \\ .a, 4); _editmissing(ma, 9); ma", "R2,2:1 9 9 4"},
        {"ma = (1i, C(.)); _editmissing(ma, 2); ma", "C1,2:0+1i 2+0i"},
        {"ma = (1, .); _editmissing(ma, 1i)", "3250"},
        {"ma = (1, 2, 1); _editvalue(ma, 1, .); ma", "R1,3:. 2 ."},
        {"ma = (\"a\", \"bb\"); _editvalue(ma, \"bb\", \"\"); ma", "S1,2:a|"},
        {"ma = (1, 2, 3); _replacevalues(ma, (1, 2), (2, 1)); ma", "R1,3:2 1 3"},
        {"_replacevalues(ma, (1, 2), (2, 1, 3))", "3200"},
        {"_editvalue(ma, \"a\", \"b\")", "3250"},
        {"ma = (1, -2, .b); _negate(ma); ma[3] == .b, ma[|1 \\ 2|]", "R1,3:1 -1 2"},
        {"ma = (1 + 2i, 3); _negate(ma); _conj(ma); ma", "C1,2:-1+2i -3+0i"},
        {"ma = (1 + 2i, 3); _transposeonly(ma); ma", "C2,1:1+2i 3+0i"},
        {"ma = (\"a\", \"b\"); _transposeonly(ma); ma", "S2,1:a|b"},
        {"ma = J(2, 3, 0); _diag(ma, (1, 2)); ma", "R2,3:1 0 0 0 2 0"},
        {"_diag(ma, 7); ma", "R2,3:7 0 0 0 7 0"},
        {"_diag(ma, (1, 2, 3))", "3200"},
        {"_diag(ma, 1i)", "3250"},
    };
    try_all(rows);
}

TEST(MosaValues, LeastOfAVector)
{
    static const called rows[] = {
        {"mi = mw = .; minindex((3, 1, 2, 1, .), 2, mi, mw); mi'", "R1,3:2 4 3"},
        {"mw", "R2,2:1 2 3 1"},
        {"minindex((3 \\ 1 \\ 2 \\ 1), ., mi, mw); mi'", "R1,4:2 4 3 1"},
        {"minindex((3, 1, 2, 1), -1, mi, mw); mi, mw", "R1,3:2 1 1"},
        {"minindex((., .), 2, mi, mw); rows(mi), cols(mi), rows(mw)", "R1,3:0 1 0"},
        {"minindex(J(2, 2, 1), 1, mi, mw)", "3201"},
        {"mv = runiform(1, 100000); minindex(mv, ., mi, mw); mv[mi]' == mv[order(mv', 1)]'",
         "R1,1:1"},
    };
    try_all(rows);
}

TEST(MosaValues, Views)
{
    run("drop _all");
    run("set obs 3");
    run("generate x = cond(_n == 2, ., _n)");
    run("generate y = 0");
    static const called rows[] = {
        {"vx = vy = .; ov_view(vx, ., \"x\"); ov_view(vy, ., \"y\"); _runningsum(vy, vx); vy",
         "R3,1:1 1 4"},
        {"_editmissing(vx, 5); vx", "R3,1:1 5 3"},
        {"_negate(vx); _diag(vy, 9); (vx, vy)", "R3,2:-1 9 -5 1 -3 4"},
        {"J2(1, 2, vx)", "R3,2:-1 -1 -5 -5 -3 -3"},
        {"_runningsum(vy, (1, 2))", "3200"},
        {"_transposeonly(vx)", "3103"},
        {"rowmaxabs(vx)'", "R1,3:1 5 3"},
    };
    try_all(rows);
}

TEST(MosaValues, Timers)
{
    static const called before[] = {
        {"timer_clear(); timer_value(3)", "R1,2:0 0"},
        {"timer_on(3); timer_value(3)[2]", "R1,1:1"},
    };
    try_all(before);
    clock_shift(10);
    static const called after[] = {
        {"timer_off(3); tv = timer_value(3); round(tv)", "R1,2:10 1"},
        {"timer_on(3); timer_on(3); timer_off(3); timer_value(3)[2]", "R1,1:2"},
        {"timer_clear(3); timer_value(3)", "R1,2:0 0"},
        {"timer_on(101)", "3300"},
        {"timer_value(0)", "3300"},
    };
    try_all(after);
    EXPECT_EQ(ms("timer_on(7)"), 0);
    clock_shift(5);
    EXPECT_EQ(run("timer list 7"), 0); // one set of watches
    EXPECT_NE(session_output.find("   7:     5.00"), std::string::npos) << session_output;
}

TEST(MosaValues, Paging)
{
    ASSERT_EQ(ms("real scalar pg() {\n setmoreonexit(setmore())\nsetmore(0)\nreturn(setmore())\n}"),
              0);
    static const called rows[] = {
        {"setmore(1); pg(), setmore()", "R1,2:0 1"},
        {"setmore(0); more(); setmore()", "R1,1:0"},
        {"setmore(\"on\")", "3253"},
        {"oc = opcount(); I(2) * I(2); opcount() > oc", "R1,1:1"},
        {"sm = sys_memory(); big = J(1000, 1000, 0); sys_memory() - sm >= 8000000", "R1,1:1"},
    };
    try_all(rows);
}
