// Results and failures of the operators, from tables of values as text. Each row is run twice:
// on temporaries, which the operator may overwrite, and on variables, which it may not.
#include "../mosa_asm.h"
#include <gtest/gtest.h>

struct oprow {
    const char *op, *a, *b, *want;
};

// A function of two arguments that applies an instruction to copies of them on the stack, or
// to the arguments themselves where they are temporaries.
static std::string apply(const oprow &row, bool temporaries, bool *kept)
{
    matobj *a = value_of(row.a), *b = *row.b ? value_of(row.b) : nullptr;
    assembler s;
    s.op("argc", b ? 2 : 1);
    if (!temporaries) {
        s.op("ld", 0);
        if (b)
            s.op("ld", 1);
    }
    matobj *f = s.op(row.op).op("ret").store("f");
    a->links++;
    if (b)
        b->links++;
    std::string was = show(a) + (b ? show(b) : "");
    if (temporaries) {
        a->links--;
        if (b)
            b->links--;
    }
    std::string got = call_with(f, b ? std::vector{a, b} : std::vector{a});
    *kept = temporaries || show(a) + (b ? show(b) : "") == was;
    if (!temporaries) {
        mo_unlink(a);
        if (b)
            mo_unlink(b);
    }
    mo_freefcn(f);
    return got;
}

static void check(const std::vector<oprow> &rows)
{
    session();
    ASSERT_EQ(mosastakinit(1), 0);
    for (const oprow &row : rows)
        for (bool temporaries : {true, false}) {
            int32_t before = live_matrices();
            bool kept;
            std::string got = apply(row, temporaries, &kept);
            SCOPED_TRACE(std::string(row.op) + " " + row.a + " " + row.b +
                         (temporaries ? " of temporaries" : " of variables"));
            EXPECT_EQ(got, row.want);
            EXPECT_TRUE(kept);
            EXPECT_EQ(live_matrices(), before);
        }
}

TEST(MosaOps, SumsAndDifferences)
{
    check({
        {"plus", "R1,1:1", "R1,1:2", "R1,1:3"},
        {"plus", "R1,1:.", "R1,1:2", "R1,1:."},
        {"plus", "R1,1:8e307", "R1,1:8e307", "R1,1:."},
        {"sub", "R1,1:-1.7e308", "R1,1:1e308", "R1,1:."},
        {"plus", "R2,2:1 2 3 .", "R2,2:10 20 30 40", "R2,2:11 22 33 ."},
        {"plus", "R1,2:1 2", "R1,1:1", "3200"}, // no scalar is spread
        {"plus", "R0,3:", "R0,3:", "R0,3:"},
        {"plus", "C1,2:1+2i 3-1i", "R1,2:1 .", "C1,2:2+2i ."},
        {"sub", "R1,1:1", "C1,1:0+1i", "C1,1:1-1i"},
        {"plus", "S1,2:ab|", "S1,2:c|d", "S1,2:abc|d"},
        {"plus", "S1,2:ab|c", "S2,1:c|d", "3200"},
        {"sub", "S1,1:a", "S1,1:b", "3250"},
        {"plus", "S1,1:a", "R1,1:1", "3250"},
        {"plus", "P1,1:0", "R1,1:1", "3250"},
        {"neg", "R1,3:0 1 .", "", "R1,3:0 -1 ."},
        {"neg", "C1,1:1-2i", "", "C1,1:-1+2i"},
        {"neg", "S1,1:a", "", "3250"},
    });
}

TEST(MosaOps, ProductsAndQuotients)
{
    check({
        {"mult", "R2,2:1 2 3 4", "R2,2:5 6 7 8", "R2,2:19 22 43 50"},
        {"mult", "R2,2:. 2 3 4", "R2,1:0 1", "R2,1:. 4"}, // missing times nothing is missing
        {"mult", "R1,2:0 1", "R2,2:. 2 3 4", "R1,2:. 4"},
        {"mult", "R1,2:1 2", "R1,2:1 2", "3200"},
        {"mult", "R2,0:", "R0,2:", "R2,2:0 0 0 0"},
        {"mult", "R1,1:2", "R2,2:1 2 3 .", "R2,2:2 4 6 ."},
        {"mult", "R2,1:1 2", "R1,1:5e307", "R2,1:5e+307 ."},
        {"mult", "C1,1:0+1i", "C1,1:0+1i", "C1,1:-1+0i"},
        {"mult", "C1,2:1+1i 2-1i", "R2,1:1 1", "C1,1:3+0i"},
        {"mult", "C1,2:1+1i .", "C2,1:0+0i 1+0i", "C1,1:."},
        {"mult", "S1,1:ab", "R1,1:2.9", "S1,1:abab"},
        {"mult", "R1,1:-3", "S1,2:ab|c", "S1,2:|"},
        {"mult", "S1,1:ab", "R1,1:.", "3492"},
        {"mult", "S1,1:", "R1,1:.", "S1,1:"},
        {"mult", "S1,1:a", "S1,1:b", "3250"},
        {"div", "R1,3:1 2 .", "R1,1:4", "R1,3:0.25 0.5 ."},
        {"div", "R1,1:1", "R1,1:0", "R1,1:."},
        {"div", "R1,1:1", "R1,2:1 2", "3204"},
        {"div", "C1,1:4+2i", "C1,1:1+1i", "C1,1:3-1i"},
        {"div", "C1,1:4+2i", "R1,1:0", "C1,1:."},
        {"power", "R1,1:-8", "R1,1:3", "R1,1:-512"},
        {"power", "R1,1:-8", "R1,1:0.5", "R1,1:."},
        {"power", "R1,1:0", "R1,1:0", "R1,1:1"},
        {"power", "R1,1:.", "R1,1:0", "R1,1:."},
        {"power", "C1,1:0+1i", "R1,1:2", "C1,1:-1+0i"},
        {"power", "C1,1:3+4i", "R1,1:0.5", "C1,1:2+1i"},
        {"power", "R1,2:1 2", "R1,1:2", "3204"},
        {"dmult", "R1,2:1 2", "R2,1:3 .", "R2,2:3 6 . ."},
        {"dmult", "C1,1:0+1i", "R1,2:1 2", "C1,2:0+1i 0+2i"},
        {"dmult", "S1,1:a", "R1,1:1", "3250"},
    });
}

TEST(MosaOps, ColonShapes)
{
    check({
        {"cadd", "R2,2:1 2 3 4", "R1,2:10 20", "R2,2:11 22 13 24"},
        {"csub", "R2,2:1 2 3 4", "R2,1:1 2", "R2,2:0 1 1 2"},
        {"csub", "R1,2:1 2", "R2,2:1 2 3 4", "R2,2:0 0 -2 -2"},
        {"cdiv", "R2,1:12 24", "R2,2:1 2 3 4", "R2,2:12 6 8 6"},
        {"cmult", "R2,2:1 2 3 .", "R1,1:2", "R2,2:2 4 6 ."},
        {"cpower", "R1,1:2", "R1,3:1 2 .", "R1,3:2 4 ."},
        {"cadd", "R1,3:1 2 3", "R3,1:1 2 3", "3200"}, // no outer sum
        {"cadd", "R0,2:", "R1,2:1 2", "R0,2:"},
        {"cadd", "R1,1:1", "R0,0:", "R0,0:"},
        {"cadd", "C2,1:1+1i 2+2i", "R1,1:1", "C2,1:2+1i 3+2i"},
        {"cmult", "R1,2:1 2", "C2,2:1+1i 2+0i 3+0i .", "C2,2:1+1i 4+0i 3+0i ."},
        {"cadd", "S2,1:a|b", "S1,1:x", "S2,1:ax|bx"},
        {"cmult", "S1,2:a|b", "R2,1:1 2", "3200"},
        {"cmult", "S1,2:a|b", "R1,2:1 2", "S1,2:a|bb"},
        {"csub", "S1,1:a", "S1,1:a", "3250"},
        {"cor", "R1,3:0 1 .", "R1,3:0 0 0", "R1,3:0 1 1"},
        {"cand", "R1,3:0 1 .", "R1,1:1", "R1,3:0 1 1"},
        {"cand", "C1,1:0+1i", "R1,1:1", "3250"},
    });
}

TEST(MosaOps, Comparisons)
{
    check({
        {"ee", "R1,1:.", "R1,1:.", "R1,1:1"},
        {"lt", "R1,1:1e300", "R1,1:.", "R1,1:1"},
        {"ee", "R1,2:1 2", "R1,2:1 2", "R1,1:1"}, // whole values
        {"ee", "R1,2:1 2", "R2,1:1 2", "R1,1:0"},
        {"ee", "S1,1:1", "R1,1:1", "R1,1:0"},
        {"ne", "C1,2:1+0i 2+0i", "R1,2:1 2", "R1,1:0"},
        {"ee", "C1,1:1+1i", "R1,1:1", "R1,1:0"},
        {"ee", "C1,1:.", "R1,1:.", "R1,1:1"},
        {"gt", "R1,2:2 3", "R1,2:1 3", "R1,1:0"},
        {"ge", "R1,2:2 3", "R1,2:1 3", "R1,1:1"},
        {"ge", "R1,2:2 3", "R1,1:1", "3200"},
        {"lt", "S1,1:ab", "S1,1:abc", "R1,1:1"},
        {"lt", "S1,1:a", "R1,1:1", "3250"},
        {"gt", "P1,1:0", "P1,1:0", "3012"},
        {"ee", "P1,1:0", "P1,1:0", "R1,1:1"},
        {"ne", "P1,1:1", "P1,1:0", "R1,1:1"},
        {"cee", "R1,3:1 2 .", "R1,3:1 3 .", "R1,3:1 0 1"},
        {"cge", "C1,2:1+9i 2+0i", "R1,1:2", "R1,2:0 1"},
        {"cee", "C1,2:1+9i 2+0i", "R1,2:1 2", "R1,2:0 1"},
        {"clt", "S1,3:|a|b", "S1,1:a", "R1,3:1 0 0"},
        {"cne", "P1,2:1 0", "P1,1:0", "R1,2:1 0"},
        {"cgt", "P1,1:0", "P1,1:0", "3012"},
        {"cee", "S1,1:a", "R1,1:1", "3250"},
        {"and", "R1,1:1", "R1,1:.", "R1,1:1"},
        {"or", "R1,1:0", "P1,1:0", "R1,1:0"},
        {"and", "R1,2:1 1", "R1,1:1", "3250"},
        {"or", "S1,1:a", "R1,1:1", "3250"},
        {"not", "R1,3:0 2 .", "", "R1,3:1 0 0"},
        {"not", "P1,1:0", "", "R1,1:1"},
        {"not", "S1,1:a", "", "3250"},
    });
}

TEST(MosaOps, JoinsRangesTransposes)
{
    check({
        {"addc", "R2,1:1 2", "R2,2:3 4 5 6", "R2,3:1 3 4 2 5 6"},
        {"addr", "R1,2:1 2", "R2,2:3 4 5 6", "R3,2:1 2 3 4 5 6"},
        {"addc", "R0,0:", "S1,1:a", "S1,1:a"},
        {"addr", "R1,2:1 2", "R0,0:", "R1,2:1 2"},
        {"addr", "R1,2:1 2", "R0,2:", "R1,2:1 2"},
        {"addc", "R2,1:1 2", "R1,1:3", "3200"},
        {"addc", "R1,1:1", "C1,1:0+1i", "C1,2:1+0i 0+1i"},
        {"addr", "S1,1:a", "S1,1:b", "S2,1:a|b"},
        {"addc", "S1,1:a", "R1,1:1", "3250"},
        {"addc", "P1,1:1", "P1,1:0", "P1,2:1 0"},
        {"rowto", "R1,1:3", "R1,1:1", "R1,3:3 2 1"},
        {"colto", "R1,1:1.5", "R1,1:3.2", "R2,1:1.5 2.5"},
        {"rowto", "R1,1:.", "R1,1:1", "R1,1:."},
        {"rowto", "R1,1:0", "R1,1:1e10", "3300"},
        {"colto", "R1,2:0 1", "R1,1:1", "3204"},
        {"colto", "C1,1:0+1i", "R1,1:1", "3253"},
        {"trans", "R2,3:1 2 3 4 5 6", "", "R3,2:1 4 2 5 3 6"},
        {"trans", "C1,2:1+2i .", "", "C2,1:1-2i ."},
        {"trans", "S1,2:a|b", "", "S2,1:a|b"},
        {"trans", "R0,3:", "", "R3,0:"},
    });
}

TEST(MosaOps, SubscriptsRead)
{
    check({
        {"lsubscr1", "R1,3:7 8 9", "R1,1:2", "R1,1:8"},
        {"lsubscr1", "R3,1:7 8 9", "R1,2:3 1", "R2,1:9 7"},
        {"lsubscr1", "R1,3:7 8 9", "R1,1:.", "R1,3:7 8 9"},
        {"lsubscr1", "R1,3:7 8 9", "R1,1:4", "3301"},
        {"lsubscr1", "R1,3:7 8 9", "R1,1:0", "3301"},
        {"lsubscr1", "R1,3:7 8 9", "R1,1:3.9", "R1,1:9"},
        {"lsubscr1", "R2,2:1 2 3 4", "R1,1:1", "3301"},
        {"lsubscr1", "R1,3:7 8 9", "R2,2:1 1 1 1", "3301"},
        {"lsubscr1", "R1,3:7 8 9", "R1,0:", "R1,0:"},
        {"lsubscr1", "R1,1:5", "R3,1:1 1 1", "R3,1:5 5 5"},
        {"lsubscr1", "S1,2:a|b", "R1,1:2", "S1,1:b"},
        {"lsubscr1", "R1,3:7 8 9", "S1,1:a", "3253"},
        {"lsubscr1", "C1,2:1+1i 2+2i", "R1,1:2", "C1,1:2+2i"},
        {"rsubscr", "R3,2:1 2 3 4 5 6", "R2,2:1 1 2 .", "R2,2:1 2 3 4"},
        {"rsubscr", "R3,2:1 2 3 4 5 6", "R1,2:3 2", "R1,1:6"},
        {"rsubscr", "R1,4:1 2 3 4", "R1,2:2 .", "R1,3:2 3 4"},
        {"rsubscr", "R4,1:1 2 3 4", "R2,1:. 2", "R2,1:1 2"},
        {"rsubscr", "R1,4:1 2 3 4", "R1,1:3", "R1,1:3"},
        {"rsubscr", "R1,4:1 2 3 4", "R1,2:3 2", "3301"},
        {"rsubscr", "R1,4:1 2 3 4", "R1,2:3 5", "3301"},
        {"rsubscr", "R3,2:1 2 3 4 5 6", "R1,1:1", "3301"},
        {"rsubscr", "R1,4:1 2 3 4", "R1,3:1 2 3", "3301"},
    });
}

// value = x[i, j], and x[i, j] = value, with x in slot 0.
static std::string subscript2(const char *x, const char *i, const char *j)
{
    assembler s;
    matobj *f = s.op("argc", 3).op("lsubscr").op("ret").store("f");
    std::string got = call_values(f, {x, i, j});
    mo_freefcn(f);
    return got;
}

static std::string store(const char *op, const char *x, const std::vector<std::string> &rest)
{
    assembler s;
    s.op("argc", 1 + rest.size());
    for (size_t k = 0; k < rest.size(); k++)
        s.op("ld", 1 + k);
    matobj *f = s.op(op, 0).op("pop").op("ld", 0).op("ret").store("f");
    std::vector<std::string> all{x};
    all.insert(all.end(), rest.begin(), rest.end());
    std::string got = call_values(f, all);
    mo_freefcn(f);
    return got;
}

TEST(MosaOps, SubscriptsOfTwoAndStores)
{
    session();
    EXPECT_EQ(subscript2("R2,3:1 2 3 4 5 6", "R1,1:.", "R1,1:2"), "R2,1:2 5");
    EXPECT_EQ(subscript2("R2,3:1 2 3 4 5 6", "R1,2:2 1", "R1,2:3 3"), "R2,2:6 6 3 3");
    EXPECT_EQ(subscript2("R2,3:1 2 3 4 5 6", "R1,1:3", "R1,1:1"), "3301");
    EXPECT_EQ(subscript2("S1,2:a|b", "R1,1:1", "R1,1:2"), "S1,1:b");
    std::string many = "R1,150:";
    for (int i = 0; i < 150; i++)
        many += i ? " 1" : "1";
    EXPECT_EQ(subscript2("R2,2:1 2 3 4", many.c_str(), "R1,1:2").substr(0, 12), "R150,1:2 2 2");

    EXPECT_EQ(store("lstosmat1", "R1,3:1 2 3", {"R1,1:9", "R1,1:2"}), "R1,3:1 9 3");
    EXPECT_EQ(store("lstosmat1", "R1,3:1 2 3", {"R1,2:8 9", "R1,2:3 1"}), "R1,3:9 2 8");
    EXPECT_EQ(store("lstosmat1", "R1,3:1 2 3", {"R2,1:8 9", "R1,2:3 1"}), "3301");
    EXPECT_EQ(store("lstosmat1", "R1,3:1 2 3", {"R1,1:9", "R1,1:4"}), "3301");
    EXPECT_EQ(store("lstosmat1", "R1,3:1 2 3", {"S1,1:a", "R1,1:1"}), "3250");
    EXPECT_EQ(store("lstosmat1", "R1,2:1 2", {"C1,1:1+1i", "R1,1:1"}), "3250");
    EXPECT_EQ(store("lstosmat1", "C1,2:1+1i 2+2i", {"R1,1:5", "R1,1:1"}), "C1,2:5+0i 2+2i");
    EXPECT_EQ(store("lstosmat1", "S1,2:a|b", {"S1,1:xyz", "R1,1:1"}), "S1,2:xyz|b");
    EXPECT_EQ(store("lstosmat2", "R2,2:1 2 3 4", {"R1,1:9", "R1,1:2", "R1,1:1"}), "R2,2:1 2 9 4");
    EXPECT_EQ(store("lstosmat2", "R2,2:1 2 3 4", {"R1,2:8 9", "R1,1:2", "R1,1:."}), "R2,2:1 2 8 9");
    EXPECT_EQ(store("rstosmat", "R2,2:1 2 3 4", {"R2,1:8 9", "R2,2:1 2 2 2"}), "R2,2:1 8 3 9");
}

// Views act as the arrays they show, and what is stored through them reaches the dataset.
TEST(MosaOps, Views)
{
    run("set obs 3");
    run("gen double x = _n");
    run("gen double y = 10*_n in 1/2");
    ASSERT_EQ(mosastakinit(1), 0);
    check({
        {"cadd", "V3,2:1", "R1,2:1 2", "R3,2:2 12 3 22 4 ."},
        {"plus", "V3,1:1", "V3,1:2", "R3,1:11 22 ."},
        {"mult", "R1,3:1 1 1", "V3,2:1", "R1,2:6 ."},
        {"ee", "V3,1:1", "R3,1:1 2 3", "R1,1:1"},
        {"clt", "V3,1:1", "R1,1:2", "R3,1:1 0 0"},
        {"trans", "V3,1:1", "", "R1,3:1 2 3"},
        {"addc", "V3,1:1", "V3,1:1", "R3,2:1 1 2 2 3 3"},
        {"lsubscr1", "V3,1:2", "R1,2:2 1", "R2,1:20 10"},
        {"lsubscr1", "R1,3:7 8 9", "V3,1:1", "R1,3:7 8 9"},
        {"rsubscr", "R1,3:7 8 9", "V2,1:1", "3103"},
        {"rsubscr", "V3,2:1", "R2,2:2 1 3 1", "R2,1:2 3"},
        {"and", "V1,1:1", "R1,1:1", "R1,1:1"},
    });
    EXPECT_EQ(store("lstosmat2", "V3,2:1", {"R1,1:99", "R1,1:3", "R1,1:2"}), "R3,2:1 10 2 20 3 99");
    run("display y[3]");
    EXPECT_EQ(session_output, "99\n");
    // x = x turns the view into an array of its own.
    assembler s;
    matobj *f = s.op("argc", 1).op("ld", 0).op("stopop", 0).op("ld", 0).op("ret").store("f");
    matobj *v = value_of("V3,1:1");
    v->links++;
    EXPECT_EQ(call_with(f, {v}), "R3,1:1 2 3");
    EXPECT_EQ(v->view, 0);
    mo_unlink(v);
}

// Large products agree with the plain sum, and missing values stay where they belong.
TEST(MosaOps, LargeProducts)
{
    session();
    constexpr int n = 70;
    std::vector<double> a(n * n), b(n * n), c(n * n);
    for (int i = 0; i < n * n; i++) {
        a[size_t(i)] = (i * 37 % 101) - 50;
        b[size_t(i)] = (i * 53 % 97) - 48;
    }
    a[3 * n + 5] = misval;
    b[6 * n + 4] = misval;
    multrc_ra_ra(c.data(), a.data(), b.data(), n, n, n);
    for (int i = 0; i < n; i++)
        for (int j = 0; j < n; j++) {
            double sum = 0;
            for (int k = 0; k < n; k++)
                sum += a[size_t(i * n + k)] * b[size_t(k * n + j)];
            EXPECT_EQ(c[size_t(i * n + j)], i == 3 || j == 4 ? misval : sum);
        }
}
