// Estimates from samples with a design, beside formulas worked by hand and the regression.
#include "../mosa_asm.h"
#include "mosabi.h"

namespace
{

// The arguments behind the first seven: designs of the stages given, then the results.
std::string svy(const std::string &head, const std::string &design, int32_t given)
{
    std::string call = "_svy(" + head;
    call += given ? ", " + design : "";
    for (int32_t k = 3 * given; k < 15; k++)
        call += ", Z";
    return call + ", b, V, S, h, u, n, g)";
}

void begin()
{
    ms_begin();
    ASSERT_EQ(ms("Z = J(0, 0, .)\nb = V = S = h = u = n = g = ."), 0) << session_output;
}

} // namespace

TEST(MosaSvy, StrataAndStages)
{
    begin();
    // Two strata: N^2 (1 - f) s^2 / n is 16 * .5 * 2 / 2 and 81 * 2/3 * 4 / 3.
    ASSERT_EQ(ms("y = (1 \\ 3 \\ 2 \\ 6 \\ 4)\nw = (2 \\ 2 \\ 3 \\ 3 \\ 3)\n"
                 "a = (1 \\ 1 \\ 2 \\ 2 \\ 2)\nN = (4 \\ 4 \\ 9 \\ 9 \\ 9)"),
              0);
    EXPECT_EQ(value(svy("\"total\", y, Z, w, Z, \"missing\", 0", "a, Z, N", 1)), "R1,1:0")
        << session_output;
    EXPECT_EQ(value("(b, V, h, u, g)"), "R1,5:44 80 2 5 0");
    EXPECT_EQ(value("n"), "R1,4:5 5 13 13");
    // As a simple sample: N^2 (1 - n/N) / n times n/(n-1) of the weighted mean square.
    EXPECT_EQ(ms_value("reldif(S, 13 * (1 - 5 / 13) / 4 * sum(w :* (y :- 44 / 13):^2)) < 1e-14"),
              1);
    // The same strata by the shares drawn.
    EXPECT_EQ(value(svy("\"total\", y, Z, w, Z, \"missing\", 0",
                        "a, Z, (.5 \\ .5 \\ 1 / 3 \\ 1 / 3 \\ 1 / 3)", 1)),
              "R1,1:0");
    EXPECT_EQ(ms_value("reldif(V, 80) < 1e-14"), 1);
    // Two of 4 clusters, 2 of 3 and 2 of 2 rows in them: 72 between, (4/2) * 9 * 1/3 * 2/2 within.
    ASSERT_EQ(ms("y = (1 \\ 3 \\ 5 \\ 7)\nw = (3 \\ 3 \\ 2 \\ 2)\nc = (1 \\ 1 \\ 2 \\ 2)"), 0);
    EXPECT_EQ(value(svy("\"total\", y, Z, w, Z, \"missing\", 0",
                        "Z, c, (4 \\ 4 \\ 4 \\ 4), Z, Z, (3 \\ 3 \\ 2 \\ 2)", 2)),
              "R1,1:0");
    EXPECT_EQ(value("(b, h, u)"), "R1,3:36 1 2");
    EXPECT_EQ(ms_value("reldif(V, 78) < 1e-14"), 1);
}

TEST(MosaSvy, StrataOfOneUnit)
{
    begin();
    ASSERT_EQ(ms("y = (1 \\ 3 \\ 2 \\ 6)\na = (1 \\ 1 \\ 2 \\ 3)"), 0);
    const struct {
        const char *how, *want;
    } rows[] = {
        {"missing", "R1,2:. 2"},
        {"certainty", "R1,2:4 2"}, // 2 * ((1 - 2)^2 + (3 - 2)^2)
        {"scaled", "R1,2:12 2"},   // three strata, one of which tells
        {"centered", "R1,2:14 2"}, // and (2 - 3)^2 + (6 - 3)^2
    };
    for (const auto &r : rows) {
        EXPECT_EQ(
            value(svy("\"total\", y, Z, Z, Z, \"" + std::string(r.how) + "\", 0", "a, Z, Z", 1)),
            "R1,1:0");
        EXPECT_EQ(value("(V, g)"), r.want) << r.how;
    }
}

// A mean is a regression on a constant, one of a part likewise, and a ratio has residuals.
TEST(MosaSvy, MeansAndRatios)
{
    ms_begin();
    for (const char *line :
         {"clear", "set obs 40", "generate double y = mod(7 * _n, 13)",
          "generate double x = 1 + mod(3 * _n, 5)", "generate double w = 1 + mod(_n, 4)",
          "generate c = int((_n - 1) / 5)", "generate p = mod(_n, 3) > 0",
          "quietly regress y [pweight = w], vce(cluster c)"})
        ASSERT_EQ(run(line), 0) << line << session_output;
    begin();
    ASSERT_EQ(ms("D = ov_data(., (\"y\", \"x\", \"w\", \"c\", \"p\"))\ny = D[., 1]\nx = D[., 2]\n"
                 "w = D[., 3]\nc = D[., 4]\np = D[., 5]"),
              0);
    EXPECT_EQ(value(svy("\"mean\", y, Z, w, Z, \"missing\", 0", "Z, c, Z", 1)), "R1,1:0");
    EXPECT_EQ(ms_value("reldif(b, ov_matrix(\"e(b)\")) < 1e-13 & "
                       "reldif(V, ov_matrix(\"e(V)\")) < 1e-12"),
              1);
    EXPECT_EQ(value(svy("\"mean\", (y, x), Z, w, p, \"missing\", 1", "Z, c, Z", 1)), "R1,1:0");
    ASSERT_EQ(ms("W = sum(w :* p)\nm = sum(w :* p :* y) / W\ne = w :* p :* (y :- m) / W\n"
                 "t = J(8, 1, 0)\nfor (i = 1; i <= 40; i++) t[c[i] + 1] = t[c[i] + 1] + e[i]"),
              0);
    EXPECT_EQ(ms_value("reldif(b[1], m) < 1e-13 & reldif(V[1, 1], 8 / 7 * sum(t:^2)) < 1e-12"), 1);
    EXPECT_EQ(ms_value("n[2] == sum(p) & reldif(n[4], W) < 1e-14 & V[1, 2] == V[2, 1]"), 1);
    EXPECT_EQ(value(svy("\"ratio\", y, x, w, Z, \"missing\", 0", "Z, Z, Z", 1)), "R1,1:0");
    ASSERT_EQ(ms("r = sum(w :* y) / sum(w :* x)\ne = w :* (y - r * x) / sum(w :* x)"), 0);
    EXPECT_EQ(ms_value("reldif(b, r) < 1e-13 & reldif(V, 40 / 39 * sum(e:^2)) < 1e-12 & u == 40"),
              1);
}

TEST(MosaSvy, WhatCannotBe)
{
    begin();
    ASSERT_EQ(ms("y = (1 \\ 2 \\ .)\nb = 7"), 0);
    const struct {
        std::string head, design;
        const char *want;
    } rows[] = {
        {"\"total\", y, Z, Z, Z, \"missing\", 0", "Z, Z, (-1 \\ -1 \\ -1)", "R1,1:460"},
        {"\"total\", y, Z, Z, Z, \"missing\", 0", "Z, Z, (3 \\ 4 \\ 3)", "R1,1:461"},
        {"\"total\", y, Z, Z, Z, \"missing\", 0", "Z, Z, (1.5 \\ 1.5 \\ 1.5)", "R1,1:462"},
        {"\"total\", y, Z, Z, (0 \\ 0 \\ 1), \"missing\", 0", "Z, Z, Z", "R1,1:2000"},
        {"\"mean\", y, Z, (0 \\ 0 \\ 0), Z, \"missing\", 0", "Z, Z, Z", "R1,1:463"},
        {"\"median\", y, Z, Z, Z, \"missing\", 0", "Z, Z, Z", "3300"},
        {"\"ratio\", y, Z, Z, Z, \"missing\", 0", "Z, Z, Z", "3200"},
        {"\"total\", y, Z, (1 \\ 2), Z, \"missing\", 0", "Z, Z, Z", "3200"},
        {"\"total\", \"y\", Z, Z, Z, \"missing\", 0", "Z, Z, Z", "3253"},
    };
    for (const auto &r : rows) {
        EXPECT_EQ(value(svy(r.head, r.design, 1)), r.want) << r.head << r.design;
        EXPECT_EQ(value("b"), "R1,1:7") << "results stay as they were";
    }
}
