// commands/oneway.cpp - oneway: one-way analysis of variance.
//
//   oneway y group [if] [in] [weight] [, tabulate [no]means [no]standard [no]freq noanova
//          missing nolabel bonferroni scheffe sidak]
#include "commands/categories.h"
#include "commands/groupmeans.h"
#include "core/missing.h"
#include "core/progress.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/labels.h"
#include "expr/strfun.h"
#include "interp/messages.h"
#include "output/fmt.h"
#include "output/print.h"
#include "stats/dist.h"
#include "stats/results.h"
#include "stats/statparse.h"
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

namespace {

constexpr int32_t most_groups = 376;

struct anova {
    bool tabulate, means, standard, freq, table, missing, nolabel;
    bool bonferroni, scheffe, sidak;
    int32_t y;
    categories g;
    std::vector<groupsum> groups;  // by the number met
    double N, ssb, ssw, sst, dfb, dfw, mse, F, scale;
};

int32_t parse(anova *a)
{
    statline line;
    line.vlist = PI_REQ;
    line.weights = W_AW | W_FW;
    line.weightdflt = W_AW;
    int32_t rc = stat_parse(line);
    if (rc)
        return rc;
    a->tabulate = stat_option("tabulate", 1);
    a->means = stat_option("means", 2, true);
    a->standard = stat_option("standard", 2, true);
    a->freq = stat_option("freq", 1, true);
    a->table = stat_option("anova", 1, true);
    a->missing = stat_option("missing", 4);
    a->nolabel = !stat_option("label", 1, true);
    a->bonferroni = stat_option("bonferroni", 1);
    a->scheffe = stat_option("scheffe", 3);
    a->sidak = stat_option("sidak", 2);
    if ((rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    if (parinfo->pi_nvar != 2)
        return error(parinfo->pi_nvar < 2 ? RC_TOOFEWVARS : RC_TOOMANYVARS);
    a->y = parinfo->vl_vr[0];
    return t_isstr(_typlist[a->y - 1]) ? error(RC_TYPE) : 0;
}

int32_t collect(anova *a)
{
    category_open(&a->g, parinfo->vl_vr[1]);
    for (int32_t obs = parinfo->pi_obs1; obs <= parinfo->pi_obs2; obs++) {
        if ((obs & 0xfff) == 0 && progress_poll("computing", obs, parinfo->pi_obs2))
            return stopflag;
        if (!selobs(obs))
            continue;
        double w = parinfo->pi_hasexp ? pi_xeq(parinfo, parinfo->wepgm, obs) : 1;
        double y = dsa_data(sysdsa, uint32_t(a->y), uint32_t(obs));
        if (y >= misval || w >= misval || w == 0)
            continue;
        if (w < 0)
            return error(402);
        bool counts = parinfo->pi_hasexp && parinfo->pi_wtype == W_FW;
        if (counts && w != std::floor(w))
            return error(401);
        int32_t k = category_at(&a->g, obs, a->missing, most_groups);
        if (k == -1)
            continue;
        if (k < 0)
            return error(134);
        if (size_t(k) >= a->groups.size())
            a->groups.resize(size_t(k) + 1);
        gs_add(&a->groups[size_t(k)], y, w, counts);
    }
    category_sort(&a->g);
    return a->groups.empty() ? errout(RC_NOOBS, "no observations\n") : 0;
}

void analyse(anova *a)
{
    double w = 0, mean = 0;
    a->N = a->ssw = a->ssb = 0;
    for (const groupsum &g : a->groups) {
        a->N += g.n;
        w += g.w;
        mean += (g.mean - mean) * g.w / w;
        a->ssw += g.m2;
    }
    a->scale = a->N / w;
    for (const groupsum &g : a->groups)
        a->ssb += g.w * (g.mean - mean) * (g.mean - mean);
    a->ssb *= a->scale;
    a->ssw *= a->scale;
    a->sst = a->ssb + a->ssw;
    a->dfb = double(a->groups.size()) - 1;
    a->dfw = a->N - double(a->groups.size());
    a->mse = a->dfw > 0 ? a->ssw / a->dfw : misval;
    a->F = a->dfb > 0 && a->mse > 0 && a->mse < misval ? a->ssb / a->dfb / a->mse : misval;
}

// ---- printing

const char *num(char *buf, double z, const char *fmt)
{
    fmtnumtrim(buf, 64, z, fmt);
    return buf;
}

std::string name_of(const anova *a, size_t rank, double width)
{
    char buf[246];
    std::string s = category_text(&a->g, int32_t(rank), a->nolabel);
    return str_abbrev(buf, s.substr(0, 240).c_str(), width);
}

void summary(const anova *a)
{
    char name[246];
    meanscolumns c;
    c.means = a->means;
    c.standard = a->standard;
    c.freq = a->freq;
    c.scaled = parinfo->pi_hasexp && parinfo->pi_wtype == W_AW;
    gs_heading(c, str_abbrev(name, _varlist[a->g.var - 1], 11), "");
    groupsum all;
    for (size_t r = 0; r < a->groups.size(); r++) {
        const groupsum &g = a->groups[size_t(a->g.order[r])];
        gs_row(c, name_of(a, r, 11), g);
        gs_join(&all, g);
    }
    gs_rule(c);
    gs_row(c, "Total", all);
}

// Bartlett's test (1937) of equal variances, where every group has one.
void bartlett(const anova *a)
{
    double logs = 0, inv = 0;
    for (const groupsum &g : a->groups) {
        double v = g.n > 1 ? g.m2 / (g.n - 1) : 0;
        if (!(v > 0))
            return;
        logs += (g.n - 1) * std::log(v);
        inv += 1 / (g.n - 1);
    }
    if (a->dfb < 1)
        return;
    double c = 1 + (inv - 1 / a->dfw) / (3 * a->dfb);
    double stat = (a->dfw * std::log(a->mse) - logs) / c;
    char b[64], p[64];
    spout21f("\nBartlett's test for equal variances:  chi2(%.0f) = %8s  Prob>chi2 = %s\n", a->dfb,
             num(b, stat, "%8.4f"), num(p, chi2tail2(a->dfb, stat), "%5.3f"));
    retval_set_gscalar(stat, "chi2bart");
    retval_set_gscalar(a->dfb, "df_bart");
}

void source(const char *name, double ss, double df, bool f, const anova *a)
{
    char s[64], d[64], m[64], st[64], p[64];
    spout21fat(1, "%-15s", name);
    spout21fat(0, "%13s%8s%14s", num(s, ss, "%10.0g"), num(d, df, "%9.0g"),
               num(m, df > 0 ? ss / df : misval, "%10.0g"));
    if (f)
        spout21fat(0, "%11s%11s", num(st, a->F, "%8.2f"),
                   num(p, a->F < misval ? ftail2(a->dfb, a->dfw, a->F) : misval, "%6.4f"));
    newline();
}

void anova_table(const anova *a)
{
    static const char *rule = "------------------------------------------------------------------------\n";
    spout21("\n                        Analysis of Variance\n");
    spout21("    Source             SS         df         MS             F     Prob > F\n");
    spout21(rule);
    source("Between groups", a->ssb, a->dfb, true, a);
    source(" Within groups", a->ssw, a->dfw, false, a);
    spout21(rule);
    source("    Total", a->sst, a->N - 1, false, a);
    if (!parinfo->pi_hasexp || parinfo->pi_wtype != W_AW)
        bartlett(a);
}

// ---- comparisons of all pairs of means

enum method { BONFERRONI, SCHEFFE, SIDAK };

double adjusted(const anova *a, method m, double t)
{
    double k = double(a->groups.size()), pairs = k * (k - 1) / 2, p = 2 * ttail2(a->dfw, t);
    if (m == SCHEFFE)
        return ftail2(a->dfb, a->dfw, t * t / a->dfb);
    if (m == BONFERRONI)
        return std::min(1.0, p * pairs);
    return -std::expm1(pairs * std::log1p(-p));
}

int32_t compare(const anova *a, method m)
{
    static const char *const titles[] = {"Bonferroni", "Scheffe", "Sidak"};
    size_t k = a->groups.size(), room = 6;
    char b[64];
    spout21f("\n%20s Comparison of %s by %s\n%35s(%s)\n", "", _varlist[a->y - 1],
             _varlist[a->g.var - 1], "", titles[m]);
    for (size_t from = 0; from + 1 < k; from += room) {
        size_t to = std::min(from + room, k - 1);
        spout21("Row Mean-|\nCol Mean |");
        for (size_t j = from; j < to; j++)
            spout21f("%11s", name_of(a, j, 9).c_str());
        spout21f("\n---------+%s\n", std::string((to - from) * 11, '-').c_str());
        for (size_t i = from + 1; i < k; i++) {
            const groupsum &gi = a->groups[size_t(a->g.order[i])];
            size_t end = std::min(i, to);
            spout21f("%8s |", name_of(a, i, 8).c_str());
            for (size_t j = from; j < end; j++)
                spout21fat(0, "%11s", num(b, gi.mean - a->groups[size_t(a->g.order[j])].mean, "%8.0g"));
            spout21("\n         |");
            for (size_t j = from; j < end; j++) {
                const groupsum &gj = a->groups[size_t(a->g.order[j])];
                double se = std::sqrt(a->mse * (1 / gi.n + 1 / gj.n));
                double p = a->mse < misval && se > 0
                               ? adjusted(a, m, std::fabs(gi.mean - gj.mean) / se)
                               : misval;
                spout21fat(0, "%11s", num(b, p, "%5.3f"));
            }
            newline();
            if (i + 1 < k && spout21("         |\n"))
                return stopflag;
        }
        newline();
    }
    return stopflag;
}

}  // namespace

int32_t oneway(int32_t);
int32_t oneway(int32_t)
{
    anova a = {};
    int32_t rc = parse(&a);
    if (rc || (rc = collect(&a)))
        return rc;
    analyse(&a);
    outlev_keep keep(1);
    retval_clear();
    retval_set_gscalar(a.N, "N");
    retval_set_gscalar(a.F, "F");
    retval_set_gscalar(a.dfw, "df_r");
    retval_set_gscalar(a.ssb, "mss");
    retval_set_gscalar(a.dfb, "df_m");
    retval_set_gscalar(a.ssw, "rss");
    if (a.tabulate)
        summary(&a);
    if (a.table)
        anova_table(&a);
    const bool on[] = {a.bonferroni, a.scheffe, a.sidak};
    for (int m = 0; m < 3; m++)
        if (on[m] && compare(&a, method(m)))
            return stopflag;
    return stopflag;
}
