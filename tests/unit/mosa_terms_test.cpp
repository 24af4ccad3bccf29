// Views whose columns are terms, and what the names of rows and columns say.
#include "../mosa_asm.h"
#include "core/mem.h"
#include "mosabi.h"

namespace
{

// g 1 2 3 1 2 3, x 1 .. 6 with the last missing
void begin()
{
    ms_begin();
    for (const char *line :
         {"clear", "mosa_clear", "set obs 6", "generate byte g = 1 + mod(_n - 1, 3)",
          "generate double x = _n if _n < 6", "generate z = 7", "generate t = _n",
          "char _dta[_TStvar] t"})
        ASSERT_EQ(run(line), 0) << line << "\n" << session_output;
}

} // namespace

TEST(MosaTerms, ViewsOfTerms)
{
    begin();
    static const called rows[] = {
        {"ov_view(V=., ., \"i.g\"); V", "R6,3:1 0 0 0 1 0 0 0 1 1 0 0 0 1 0 0 0 1"},
        {"mosa_representation(V)", "S1,1:View3"},
        {"ov_view(V=., (1, 2), \"x 2.g#c.x\"); V", "R2,2:1 0 2 2"},
        {"ov_viewvars(V)", "R1,2:2 ."},
        {"ov_view(V=., ., (\"i.g\", \"x\"), 0); V", "R5,4:1 0 0 1 0 1 0 2 0 0 1 3 1 0 0 4 0 1 0 5"},
        {"mosa_representation(V)", "S1,1:View4"},
        {"ov_view(V=., (5 \\ 2), \"ib2.g\"); V", "R2,1:1 1"},
        {"ov_view(V=., ., \"L.x\"); V'", "R1,6:. 1 2 3 4 5"},
        {"ov_view(V=., ., \"i.g#c.x\"); V[6, .]", "R1,3:. . ."},
        {"ov_view(V=., ., \"i.g x\"); ov_subview(W=., V, (2 \\ 3), (2 \\ 4)); W", "R2,2:1 2 0 3"},
        {"mosa_representation(W)", "S1,1:View3"},
        {"ov_subview(V, V, (4, 5), 1); V", "R2,1:1 0"},
        {"sum(W)", "R1,1:6"},
        {"V[1, 1] = 3; 1", "3206"},
        {"W[., .] = J(2, 2, 0); 1", "3206"},
        {"ov_view(V=., ., \"i.nosuch\"); 1", "3500"},
        {"ov_view(V=., ., \"i.(g\"); 1", "3598"},
        {"ov_view(V=., 9, \"i.g\"); 1", "3300"},
        {"ov_sview(V=., ., \"i.g\"); 1", "3254"},
    };
    try_all(rows);
}

// What was expanded follows its variables, and ends with the dataset, not with one of its views.
TEST(MosaTerms, LivesOfViews)
{
    begin();
    ASSERT_EQ(ms("ov_view(V=., ., \"i.g x\"); ov_subview(W=., V, ., (1 \\ 4)); U = V"), 0);
    ASSERT_EQ(run("order z"), 0);
    ASSERT_EQ(ms("ov_view(V=., ., \"i.g x\"); ov_subview(W=., V, ., (1 \\ 4)); A = V"), 0);
    ASSERT_EQ(run("drop z"), 0);
    EXPECT_EQ(value("V[2, .]"), "R1,4:0 1 0 2");
    ASSERT_EQ(ms("V = 1"), 0);
    EXPECT_EQ(value("W[4, .]"), "R1,2:1 4");
    ASSERT_EQ(run("drop g"), 0);
    EXPECT_EQ(value("W[4, .]"), "R1,2:. 4");
    EXPECT_EQ(value("A[2, .]"), "R1,4:0 1 0 2"); // a copy
    ASSERT_EQ(run("drop _all"), 0);
    EXPECT_EQ(value("W[1, .]"), "R1,2:. .");
    ASSERT_EQ(ms("W = 1"), 0);
    // Without its time variable a lag cannot be copied out.
    begin();
    ASSERT_EQ(ms("ov_view(V=., ., \"L.x\")"), 0);
    ASSERT_EQ(run("drop t"), 0);
    EXPECT_EQ(ms("A = V + V"), 3598);
    EXPECT_EQ(value("V[2, 1]"), "R1,1:.");
}

TEST(MosaTerms, NamesOfTerms)
{
    begin();
    ASSERT_EQ(run("matrix M = J(1, 6, 0)"), 0);
    ASSERT_EQ(run("matrix colnames M = 1b.g 2.g 1b.g#co.x 2.g#c.x x _cons"), 0) << session_output;
    ASSERT_EQ(run("matrix N = M'"), 0);
    static const called rows[] = {
        {"ov_matrixcolstripe_fvinfo(\"M\")",
         "R6,4:1 1 1 0 1 0 0 0 1 0 1 0 1 0 0 0 0 0 0 0 0 0 0 0"},
        {"ov_matrixcolstripe_term_index(\"M\")'", "R1,6:1 1 2 2 3 4"},
        {"ov_matrixcolstripe_term_size(\"M\")'", "R1,4:2 2 1 1"},
        {"ov_matrixcolstripe_term_omit(\"M\")'", "R1,4:1 1 0 0"},
        {"ov_matrixcolstripe_term_levels(\"M\")", "R6,2:1 . 2 . 1 . 2 . . . . ."},
        {"ov_matrixcolstripe_split(\"M\", 6)", "S6,2:|1b.g||2.g|1b.g#|co.x|2.g#|c.x||x||_cons"},
        {"ov_matrixcolstripe_abbrev(\"M\", 8)[3, .]", "S1,2:|1b.g#c~x"},
        {"ov_matrixrowstripe_term_size(\"M\")", "R1,1:1"},
        {"ov_matrixrowstripe_fvinfo(\"N\") == ov_matrixcolstripe_fvinfo(\"M\")", "R1,1:1"},
        {"ov_matrixrowstripe_term_index(\"N\")'", "R1,6:1 1 2 2 3 4"},
        {"ov_matrixrowstripe_term_size(\"N\")'", "R1,4:2 2 1 1"},
        {"ov_matrixrowstripe_term_omit(\"N\")'", "R1,4:1 1 0 0"},
        {"ov_matrixrowstripe_term_levels(\"N\")[4, .]", "R1,2:2 ."},
        {"ov_matrixrowstripe_split(\"N\", 12)[(2::3), .]", "S2,1:2.g|1b.g#co.x"},
        {"ov_matrixrowstripe_abbrev(\"N\", 8)[3, .]", "S1,2:|1b.g#c~x"},
        {"ov_matrixcolstripe_term_size(\"nosuch\")", "3499"},
        {"ov_matrixcolstripe_split(\"M\", 1)", "3300"},
    };
    try_all(rows);
}
