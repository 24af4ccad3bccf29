#include "exprhelp.h"
#include "core/settings.h"
#include "data/umat.h"
#include "interp/dm.h"
#include <gtest/gtest.h>
#include <cmath>
#include <vector>

static std::string line;

// matrix NAME = text, as the command does it.
static int32_t mat(const char *name, const std::string &text)
{
    s_outlev = 5;
    xeqpgm pgm;
    line = text;
    initialize_compexp_shared();
    ti_settok(tokinfo, line.data());
    int32_t rc = compmatexp(&pgm, W_NUMMAT, false, false, false);
    return rc ? rc : xeqmat_mat(&pgm, name, MK_MAT);
}

static int32_t temporaries()
{
    int32_t n = 0;
    char name[33];
    for (void *p = nullptr; (p = dmnext(p, name, DM_MATRIX, nullptr));)
        n += *name == '1';
    return n;
}

static void expect(const char *text, std::vector<std::vector<double>> rows, double tol = 1e-12)
{
    ASSERT_EQ(mat("T", text), 0) << text;
    EXPECT_EQ(temporaries(), 0) << text;
    matref m;
    ASSERT_TRUE(umat_get("T", MK_MAT, &m)) << text;
    ASSERT_EQ(m.m->rows, int32_t(rows.size())) << text;
    ASSERT_EQ(m.m->cols, int32_t(rows[0].size())) << text;
    for (size_t i = 0; i < rows.size(); i++)
        for (size_t j = 0; j < rows[i].size(); j++)
            EXPECT_NEAR(umat_el(m.m, int32_t(i) + 1, int32_t(j) + 1), rows[i][j], tol)
                << text << " " << i << "," << j;
}

class Umat : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (set_matsize < 40)
            set_matsize = 40;
        ASSERT_EQ(mat("A", "(1,2\\3,4)"), 0);
        ASSERT_EQ(mat("S", "(4,2,6\\2,5,7\\6,7,13)"), 0);  // the third row is the sum of the others
        ASSERT_EQ(mat("v", "(1,2,3)"), 0);
    }
};

TEST_F(Umat, LiteralsAndArithmetic)
{
    expect("A", {{1, 2}, {3, 4}});
    expect("A+A", {{2, 4}, {6, 8}});
    expect("A-(1,1\\1,1)", {{0, 1}, {2, 3}});
    expect("A*A", {{7, 10}, {15, 22}});
    expect("2*A", {{2, 4}, {6, 8}});
    expect("A*2", {{2, 4}, {6, 8}});
    expect("A/2", {{.5, 1}, {1.5, 2}});
    expect("-A", {{-1, -2}, {-3, -4}});
    expect("A'", {{1, 3}, {2, 4}});
    expect("A'*A'", {{7, 15}, {10, 22}});
    expect("(1)+2", {{3}});
    expect("(A,A\\A,A)", {{1, 2, 1, 2}, {3, 4, 3, 4}, {1, 2, 1, 2}, {3, 4, 3, 4}});
    expect("(1,2)#A", {{1, 2, 2, 4}, {3, 4, 6, 8}});
    expect("I(2)+J(2,2,3)", {{4, 3}, {3, 4}});
    expect("hadamard(A,A)", {{1, 4}, {9, 16}});
    expect("diag(v)", {{1, 0, 0}, {0, 2, 0}, {0, 0, 3}});
    expect("vecdiag(A)", {{1, 4}});
    expect("vec(A)", {{1}, {3}, {2}, {4}});
    expect("(nullmat(nosuch),1)", {{1}});
    expect("(nullmat(A)\\5,6)", {{1, 2}, {3, 4}, {5, 6}});
}

TEST_F(Umat, Inverses)
{
    expect("inv(A)", {{-2, 1}, {1.5, -.5}});
    expect("inv((0,1\\1,0))", {{0, 1}, {1, 0}});
    expect("inv(A)*A", {{1, 0}, {0, 1}});
    expect("cholesky((4,2\\2,5))", {{2, 0}, {1, 2}});
    expect("corr((4,2\\2,9))", {{1, 1 / 3.0}, {1 / 3.0, 1}});
    expect("syminv((4,2\\2,5))", {{5 / 16.0, -2 / 16.0}, {-2 / 16.0, 4 / 16.0}});
    // A row that depends on the ones before it becomes zeros and is counted.
    expect("syminv((1,2\\2,4))", {{1, 0}, {0, 0}});
    EXPECT_EQ(number("diag0cnt(T)"), 1);
    expect("S*syminv(S)*S", {{4, 2, 6}, {2, 5, 7}, {6, 7, 13}}, 1e-9);
    expect("sweep(sweep(A,1),2)", {{-2, 1}, {1.5, -.5}});
    expect("sweep(sweep(S,1),1)", {{4, 2, 6}, {2, 5, 7}, {6, 7, 13}}, 1e-9);
    EXPECT_EQ(mat("T", "inv((1,2\\2,4))"), 506);
    EXPECT_EQ(mat("T", "cholesky((1,2\\2,1))"), 506);
    EXPECT_EQ(mat("T", "syminv((1,2\\3,4))"), 505);
    EXPECT_EQ(mat("T", "inv((1,.\\3,4))"), 504);
    EXPECT_EQ(temporaries(), 0);
}

TEST_F(Umat, NumbersFromMatrices)
{
    EXPECT_EQ(number("det(A)"), -2);
    EXPECT_EQ(number("trace(A)"), 5);
    EXPECT_EQ(number("rowsof(v)"), 1);
    EXPECT_EQ(number("colsof(\"v\")"), 3);
    EXPECT_EQ(number("A[2,1]"), 3);
    EXPECT_EQ(number("A[\"r2\",\"c1\"]"), 3);
    EXPECT_EQ(number("el(A,1,2)"), 2);
    EXPECT_EQ(number("colnumb(A,\"c2\")"), 2);
    EXPECT_GE(number("A[3,1]"), misval);
    EXPECT_GE(number("rownumb(A,\"zz\")"), misval);
    EXPECT_GE(number("det(v)"), misval);
    EXPECT_EQ(number("issymmetric(S)"), 1);
    EXPECT_EQ(number("issym(A)"), 0);
    EXPECT_EQ(number("matmissing(A)"), 0);
    EXPECT_EQ(number("mreldif(A,A)"), 0);
    EXPECT_EQ(code("A*A"), 111);  // outside a matrix context the name is no operand
    EXPECT_EQ(code("det(A*A)"), 509);
    EXPECT_EQ(code("scalar(A)"), 509);
}

TEST_F(Umat, SubmatricesAndNames)
{
    expect("S[1..2,2...]", {{2, 6}, {5, 7}});
    expect("S[2,1..3]", {{2, 5, 7}});
    expect("S[\"r2\"..\"r3\",1..1]", {{2}, {6}});
    EXPECT_EQ(mat("T", "S[1..4,1]"), 503);
    ASSERT_EQ(mat("T", "v'*v"), 0);
    matref m;
    ASSERT_TRUE(umat_get("T", MK_MAT, &m));
    EXPECT_STREQ(m.row[2].name, "c3");
    EXPECT_STREQ(m.col[0].name, "c1");
    ASSERT_EQ(mat("T", "A\\A"), 198);
    ASSERT_EQ(mat("T", "(A\\A)"), 0);
    ASSERT_TRUE(umat_get("T", MK_MAT, &m));
    EXPECT_STREQ(m.row[3].name, "r4");
    strcpy(m.col[0].eq, "eq1");
    strcpy(m.col[1].eq, "eq1");
    EXPECT_EQ(umat_findname(m.col, 2, "eq1:", true), 2);
    EXPECT_EQ(umat_findname(m.col, 2, "eq1:c2", false), 2);
    EXPECT_EQ(umat_findname(m.col, 2, "eq2:c2", false), 0);
    expect("T[1..2,\"eq1:\"]", {{1, 2}, {3, 4}});
}

TEST_F(Umat, FailuresLeaveNothingBehind)
{
    EXPECT_EQ(mat("T", "A*v"), 503);
    EXPECT_EQ(mat("T", "A+S"), 503);
    EXPECT_EQ(mat("T", "(A,v)"), 503);
    EXPECT_EQ(mat("T", "A/0"), 504);
    EXPECT_EQ(mat("T", "A/A"), 109);
    EXPECT_EQ(mat("T", "A==A"), 109);
    EXPECT_EQ(mat("T", "A+\"a\""), 109);
    EXPECT_EQ(mat("T", "!A"), 109);
    EXPECT_EQ(mat("T", "nosuch"), 111);
    EXPECT_EQ(mat("T", "I(2)*(I(2)*v)"), 503);
    EXPECT_EQ(mat("T", "J(100000,1,0)"), 908);
    EXPECT_EQ(mat("T", "J(0,1,0)"), 503);
    EXPECT_EQ(temporaries(), 0);
    EXPECT_EQ(umat_scratch, nullptr);
    // The destination may be an operand.
    EXPECT_EQ(mat("A", "A*A'"), 0);
    EXPECT_EQ(number("A[1,2]"), 11);
    EXPECT_EQ(umat_copy("A", MK_MAT, "B", MK_R), 0);
    EXPECT_EQ(umat_rename("A", "A2", MK_MAT), 0);
    EXPECT_FALSE(ismatrixname("A"));
    EXPECT_TRUE(umat_rm("B", MK_R));
    EXPECT_TRUE(umat_rm("A2", MK_MAT));
}
