// stats/coeftab.h - the table of coefficients of the estimates in e().
#pragma once
#include <cstdint>

struct coeftab {
    double level = 95;
    bool beta = false;       // standardized coefficients in place of the interval
    bool plus = false;       // ends with a line that another table can join
    bool omitted = true;     // shows what was left out
    bool noconstant = false; // (with eform) leaves the constant out
    char eform[13] = "";     // heading of exponentiated coefficients; empty for plain ones
};
// Reads e(b), e(V), e(df_r), e(depvar), e(vcetype). 0, 1, or 301 without estimates.
[[nodiscard]] int32_t coeftab_show(const coeftab *t);
// One line as the table has it, for commands with a single estimate. t or z by df.
struct coefstat {
    double b, se, stat, p, low, high;
};
coefstat coef_stats(double b, double se, double df, double level);
void coeftab_heading(const char *name, const char *what, double level, bool isz, bool beta,
                     const char *setype);
void coeftab_rule(char joint);
void coeftab_line(const char *name, const coefstat *c, const double *beta);
