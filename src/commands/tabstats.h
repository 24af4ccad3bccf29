// commands/tabstats.h - tests and measures of association of a two-way table.
#pragma once
#include <cstdint>

struct tabstats {
    bool chi2, lrchi2, exact, v, gamma, taub;
};
void tabstats_options(tabstats *t);  // claims chi2 lrchi2 exact V gamma taub all
inline bool tabstats_any(const tabstats *t)
{
    return t->chi2 || t->lrchi2 || t->exact || t->v || t->gamma || t->taub;
}
// Prints what is asked for and leaves it in r(). cells has nr rows of nc frequencies.
[[nodiscard]] int32_t tabstats_show(const tabstats *t, const double *cells, int32_t nr, int32_t nc);
