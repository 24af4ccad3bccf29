#include "stats/coeftab.h"
#include "core/missing.h"
#include "core/rc.h"
#include "core/settings.h"
#include "core/state.h"
#include "core/text.h"
#include "data/umat.h"
#include "expr/strfun.h"
#include "interp/messages.h"
#include "output/fmt.h"
#include "output/print.h"
#include "stats/coefrows.h"
#include "stats/dist.h"
#include "stats/normal.h"
#include "stats/results.h"
#include "stats/statparse.h"
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstring>

coefstat coef_stats(double b, double se, double df, double level)
{
    coefstat c = {b, se, misval, misval, misval, misval};
    if (!(se > 0) || se >= misval) {
        c.se = misval;
        return c;
    }
    bool isz = df >= misval;
    c.stat = b / se;
    double tail = (1 - level / 100) / 2, q;
    if (isz) {
        c.p = 2 * ovnormal(-std::fabs(c.stat));
        q = -ovinvnormal(tail);
    } else {
        c.p = 2 * ttail2(df, std::fabs(c.stat));
        q = invttail2(df, tail);
    }
    c.low = b - q * se;
    c.high = b + q * se;
    return c;
}

void coeftab_rule(char joint)
{
    spout21fat(1,
               "-------------%c----------------------------------------------------------------\n",
               joint);
}

static int32_t format_option(const char *name, const char *setting, const char *plain, char *fmt)
{
    if (!ti_pi_findargn(tokinfo, parinfo, name, 5, fmt, fmtlen, 1))
        strcut(fmt, fmtlen + 1, *setting ? setting : plain);
    fmtinfo f;
    if (chkfmt(fmt, &f) || f.kind == 's' || f.kind == 't')
        return errout(120, "invalid %%format\n");
    if (f.width > 9)
        return errout(RC_SYNTAX, "%s() must have a width of at most 9\n", name);
    return 0;
}

int32_t coeftab_options(coeftab *t)
{
    t->level = ti_pi_findlevel(tokinfo, parinfo, 1);
    t->plus = stat_option("plus", 4);
    t->omitted = stat_option("omitted", 4, strcmp(set_showomitted, "off") != 0);
    t->empty = stat_option("emptycells", 5, strcmp(set_showemptycells, "off") != 0);
    t->base = !strcmp(set_showbaselevels, "all") ? 2 : !strcmp(set_showbaselevels, "on");
    if (stat_option("baselevels", 4, t->base > 0))
        t->base = t->base ? t->base : 1;
    else
        t->base = 0;
    if (stat_option("allbaselevels", 7, t->base == 2))
        t->base = 2;
    t->squish = stat_option("vsquish", 7);
    t->labels = stat_option("fvlabel", 7, true);
    t->neq = ti_pi_findopta(tokinfo, parinfo, "neq", 3, stat_option("first", 5) ? 1 : 0);
    if (!ti_pi_findargasis(tokinfo, parinfo, "eform", 2, t->eform, 12))
        *t->eform = 0;
    int32_t rc = format_option("cformat", set_cformat, "%9.0g", t->cformat);
    if (!rc)
        rc = format_option("pformat", set_pformat, "%5.3f", t->pformat);
    return rc ? rc : format_option("sformat", set_sformat, "%8.2f", t->sformat);
}

void coeftab_heading(const coeftab *t, const char *name, const char *what, bool isz,
                     const char *setype)
{
    char shown[246], lev[24], interval[48];
    if (*setype)
        spout21fat(1, "%12s |%11s%12s\n", "", "", setype);
    fmtnumtrim(lev, sizeof lev, t->level, "%9.0g");
    snprintf(interval, sizeof interval, "[%s%% Conf. Interval]", lev);
    if (*t->extra) {
        strcut(interval, sizeof interval, t->extra);
        *interval = char(toupper(*interval));
    }
    str_abbrev(shown, name, 12);
    spout21fat(1, "%12s |%11s   Std. Err.%7s%9s%25s\n", shown, what, isz ? "z" : "t",
               isz ? "P>|z|" : "P>|t|", interval);
}

static const char *cell(char *buf, double z, const char *fmt)
{
    fmtnumtrim(buf, 64, z, fmt);
    return buf;
}

void coeftab_line(const coeftab *t, const char *name, const coefstat *c, double extra)
{
    char shown[246], b[64], se[64], st[64], p[64], lo[64], hi[64];
    str_abbrev(shown, name, 12);
    spout21fat(1, "%12s |", shown);
    cell(b, c->b, t->cformat);
    cell(se, c->se, t->cformat);
    cell(st, c->stat, t->sformat);
    cell(p, c->p, t->pformat);
    if (*t->extra) {
        cell(hi, extra, t->cformat);
        spout21fat(0, "%11s%11s%9s%8s%25s\n", b, se, st, p, hi);
        return;
    }
    cell(lo, c->low, t->cformat);
    cell(hi, c->high, t->cformat);
    spout21fat(0, "%11s%11s%9s%8s%13s%12s\n", b, se, st, p, lo, hi);
}

static std::string macro_of(const char *name)
{
    return gretval_find(RK_E, name) == 5179 ? retval_get_strptr() : "";
}

static void cluster_note()
{
    std::string clust = macro_of("clustvar");
    double g = estval_get_double("N_clust");
    if (clust.empty() || g >= misval)
        return;
    char n[40], text[200];
    snprintf(text, sizeof text, "(Std. Err. adjusted for %s cluster%s in %s)", fmt_comma(n, g),
             g == 1 ? "" : "s", clust.c_str());
    spout21fat(1, "%78s\n", text);
}

coefstat coef_exp(const coefstat *c)
{
    coefstat e = *c;
    e.b = std::exp(c->b);
    e.se = c->se < misval ? e.b * c->se : misval;
    e.low = c->low < misval ? std::exp(c->low) : misval;
    e.high = c->high < misval ? std::exp(c->high) : misval;
    return e;
}

static bool hidden_row(const coeftab *t, const coefrow &row, const char *name)
{
    switch (row.what) {
    case CR_BASE: return t->base < (strchr(name, '#') ? 2 : 1);
    case CR_OMITTED: return !t->omitted;
    case CR_EMPTY: return !t->empty;
    default: return false;
    }
}

int32_t coeftab_show(const coeftab *t)
{
    matref b, v, extra;
    if (!umat_get("b", MK_E, &b))
        return regrnotfound();
    bool hasv = umat_get("V", MK_E, &v);
    bool hasextra = *t->extra && umat_get(t->extra, MK_E, &extra);
    double df = estval_get_double("df_r");
    bool isz = gretval_find(RK_E, "df_r") == 0;
    std::string depvar = macro_of("depvar"), setype = macro_of("vcetype");
    outlev_keep keep(1);
    cluster_note();
    spout21("------------------------------------------------------------------------------\n");
    coeftab_heading(t, depvar.c_str(), *t->eform ? t->eform : "Coef.", isz, setype.c_str());
    coeftab_rule('+');
    // Where everything fits exactly no variance tells a constant of zero from one left out.
    bool varies = false;
    for (int32_t j = 1; hasv && j <= v.m->cols; j++)
        varies |= umat_el(v.m, j, j) > 0;
    const char *eq = "_";
    int32_t met = 0;
    std::string term;  // of the row above
    bool above = false;
    for (int32_t j = 1; j <= b.m->cols; j++) {
        const umatname &name = b.col[j - 1];
        if ((j == 1 || strcmp(name.eq, b.col[j - 2].eq)) && ++met > t->neq && t->neq > 0)
            break;
        if (strcmp(name.eq, eq)) {
            if (j > 1)
                coeftab_rule('+');
            eq = name.eq;
            char shown[246];
            str_abbrev(shown, eq, 12);
            spout21fat(1, "%-12s |\n", shown);
            above = false;
            term.clear();
        }
        bool constant = !strcmp(name.name, "_cons");
        if (constant && *t->eform)
            continue;
        double z = umat_el(b.m, 1, j), var = hasv ? umat_el(v.m, j, j) : 0;
        coefrow row =
            coefrow_of(name, z == 0 && var == 0 && hasv && (!constant || varies), t->labels);
        if (hidden_row(t, row, name.name))
            continue;
        if (row.key != term) {
            if (above && !t->squish)
                spout21fat(1, "%12s |\n", "");
            for (const std::string &line : row.heading)
                spout21fat(1, "%12s |\n", line.c_str());
            term = row.key;
        }
        above = true;
        if (row.what != CR_PLAIN) {
            static const char *const words[] = {"", "(base)", "(omitted)", "(empty)"};
            spout21fat(1, "%12s |%11s\n", row.label.c_str(), words[row.what]);
            continue;
        }
        coefstat c = coef_stats(z, var > 0 ? std::sqrt(var) : misval, isz ? misval : df, t->level);
        if (*t->eform)
            c = coef_exp(&c);
        bool has = hasextra && !constant && j <= extra.m->cols;
        coeftab_line(t, row.label.c_str(), &c, has ? umat_el(extra.m, 1, j) : misval);
        if (stopflag)
            return stopflag;
    }
    if (t->plus)
        coeftab_rule('+');
    else
        spout21("------------------------------------------------------------------------------\n");
    return stopflag;
}
