// Matrix functions of the library against values of sixty digits, well and ill conditioned.
#include "mosahelp.h"
#include <cmath>

static const struct {
    const char *text;
    double value, tolerance;
} rows[] = {
#include "lineartables.inc"
};

static const char *const matrices = R"(
real matrix base() return((1, 2, .5 \ .25, 3, 1 \ 2, 1, .125))
real matrix spd() return(base() * base()')
real matrix frank(real scalar n)
{
    real scalar i, j
    real matrix F
    F = J(n, n, 0)
    for (i = 1; i <= n; i++) for (j = (i > 1 ? i - 1 : 1); j <= n; j++) F[i, j] = n + 1 - (i > j ? i : j)
    return(F)
}
real matrix powers() return(((0::20) * J(1, 6, 1)) :^ (0..5))
real colvector bent()
{
    real colvector x
    x = 0::20
    return(rowsum(powers()) + (1 :- 2 * mod(x, 2)) :* mod(x, 3))
}
real rowvector wilkinson(real scalar n)
{
    real scalar i
    real rowvector c
    c = 1
    for (i = 1; i <= n; i++) c = polymult(c, (-i, 1))
    return(c)
}
)";

TEST(MosaLinearTables, EveryValue)
{
    ms_begin();
    ASSERT_EQ(ms(matrices), 0) << session_output;
    for (auto &r : rows) {
        double z = ms_value(r.text);
        EXPECT_LE(std::fabs(z - r.value), r.tolerance * std::fabs(r.value))
            << r.text << " is " << z << ", not " << r.value;
    }
}
