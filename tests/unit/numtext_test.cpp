#include "core/missing.h"
#include "core/numtext.h"
#include <cstdlib>
#include <gtest/gtest.h>
#include <random>
#include <string>

TEST(numtext, reads_the_forms)
{
    struct row {
        const char *text;
        double want;
    } rows[] = {
        {"1", 1}, {" -2.5 ", -2.5}, {"+3", 3}, {".5", .5}, {"5.", 5}, {"1e3", 1000},
        {"1d-2", .01}, {"2.5D+1", 25}, {"1E-400", 0}, {"0e999999", 0}, {"-0.0001", -.0001},
        {"1.8x+3", 12}, {"1.8X+3", 12}, {"-1.0x-1", -.5}, {"1.0x+a", 1024},
        {"0.8x+1", 1}, {"1.0000000000001x-3fe", 0x1.0000000000001p-1022},
        {"1.0x-432", 0x1p-1074}, {"0.8x-432", 0}, {"0.8000000000001x-432", 0x1p-1074},
        {"1.8x-432", 0x1p-1073},                         // a tie among subnormals: to even
        {"1.00000000000008x+0", 1},                      // ties to even
        {"1.00000000000018x+0", 0x1.0000000000002p0},
        {"1.000000000000080000000000000000001x+0", 0x1.0000000000001p0},
        {"-1.fffffffffffffX+3ff", -0x1.fffffffffffffp1023},
    };
    for (const row &r : rows) {
        double z;
        EXPECT_EQ(cnvstoz(r.text, &z), 0) << r.text;
        EXPECT_EQ(z, r.want) << r.text;
    }
}

TEST(numtext, missing_values_and_overflow)
{
    const char *large[] = {".", "1e309", "1.0x+3ff", "1.0x+400", "1e99999999999999999999",
                           "-1e400", "9e307"};
    for (const char *t : large) {
        double z = 0;
        EXPECT_EQ(cnvstoz(t, &z), 0) << t;
        EXPECT_EQ(z, misval) << t;
    }
    double z;
    EXPECT_EQ(cnvstoz(".a", &z), 0);
    EXPECT_EQ(z, mis_of(1));
    EXPECT_EQ(cnvstoz("1.01ax+3ff", &z), 0);
    EXPECT_EQ(z, misval_z);
    std::string tiny = "0." + std::string(400, '0') + "1e5", huge = "00" + std::string(400, '9');
    EXPECT_EQ(cnvstoz(tiny.c_str(), &z), 0);
    EXPECT_EQ(z, 0);
    EXPECT_EQ(cnvstoz(huge.c_str(), &z), 0);
    EXPECT_EQ(z, misval);
    EXPECT_EQ(numconst_init(), 0);
}

TEST(numtext, refuses_what_is_no_number)
{
    for (const char *t : {"", " ", "a", "1a", "e5", ".e5", "1e", "1e+", "--1", "1 2", ".A", ".ab",
                          "1.8x3", "1.8x+", "x+3", "0x10", "1..2", "inf", "nan", "-.", "+.a"}) {
        double z = 0;
        EXPECT_EQ(cnvstoz(t, &z), 1) << t;
        EXPECT_EQ(z, misval) << t;
    }
}

TEST(numtext, part_of_a_text_and_integers)
{
    double z;
    EXPECT_EQ(cnvstozn("12345", 2, &z), 0);
    EXPECT_EQ(z, 12);
    int32_t v = 7;
    EXPECT_EQ(cnvstoint4(" -2147483648 ", &v), 0);
    EXPECT_EQ(v, INT32_MIN);
    for (const char *t : {"2147483648", "1.0", "", "+-1", "1 1"})
        EXPECT_EQ(cnvstoint4(t, &v), 1) << t;
}

TEST(numtext, agrees_with_the_c_library_and_reads_back)
{
    std::mt19937_64 rng(1);
    for (int i = 0; i < 20000; i++) {
        double x = std::bit_cast<double>(rng()), z;
        if (!(std::abs(x) < misval))
            continue;
        char buf[64];
        cnvztos(x, buf);
        ASSERT_EQ(cnvstoz(buf, &z), 0) << buf;
        ASSERT_EQ(z, x) << buf;
        snprintf(buf, sizeof buf, "%.*e", int(rng() % 25), x);
        ASSERT_EQ(cnvstoz(buf, &z), 0);
        ASSERT_EQ(z, strtod(buf, nullptr)) << buf;
    }
}
