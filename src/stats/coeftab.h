// stats/coeftab.h - the table of coefficients of the estimates in e().
#pragma once
#include "core/limits.h"
#include <cstdint>

struct coeftab {
    double level = 95;
    const char *extra = ""; // a row of e() shown in place of the interval: beta, means
    bool plus = false;      // ends with a line that another table can join
    bool omitted = true;    // shows what was left out
    bool empty = true;      // and cells without observations
    uint8_t base = 0;       // shows base levels: 1 of factors, 2 of products too
    bool squish = false;    // no blank lines around terms
    bool labels = true;     // levels by their value labels
    int32_t neq = 0;        // equations to show, 0 all
    char eform[13] = "";    // heading of exponentiated coefficients; empty for plain ones
    char cformat[fmtlen + 1] = "", pformat[fmtlen + 1] = "", sformat[fmtlen + 1] = "";
};
// Claims level(), plus, noomitted, noemptycells, baselevels, allbaselevels, vsquish, nofvlabel, first, neq(), eform(), cformat(), pformat() and sformat() of the
// parsed line; formats not given come from the settings. 0, or 120 or 198 with words.
[[nodiscard]] int32_t coeftab_options(coeftab *t);
// Reads e(b), e(V), e(df_r), e(depvar), e(vcetype). 0, 1, or 301 without estimates.
[[nodiscard]] int32_t coeftab_show(const coeftab *t);
// One line as the table has it, for commands with a single estimate. t or z by df.
struct coefstat {
    double b, se, stat, p, low, high;
};
coefstat coef_stats(double b, double se, double df, double level);
coefstat coef_exp(const coefstat *c); // exponentiated
void coeftab_heading(const coeftab *t, const char *name, const char *what, bool isz,
                     const char *setype);
void coeftab_rule(char joint);
void coeftab_line(const coeftab *t, const char *name, const coefstat *c, double extra);
