// commands/summarize.cpp - summarize: count, mean, deviation and range of each variable, or
// with detail its percentiles and shape.
#include "commands/stattab.h"
#include "core/mem.h"
#include "core/missing.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/labels.h"
#include "data/variables.h"
#include "expr/parse.h"
#include "expr/strfun.h"
#include "interp/messages.h"
#include "output/fmt.h"
#include "output/print.h"
#include "stats/results.h"
#include "stats/statparse.h"
#include <cmath>
#include <cstdio>
#include <cstring>

namespace {

struct sumopts {
    bool detail, meanonly, format;
    int32_t separator;
};

constexpr double pcts[] = {1, 5, 10, 25, 50, 75, 90, 95, 99};

int32_t parse(sumopts *o)
{
    statline line;
    line.blankall = true;
    line.weights = W_AW | W_FW | W_IW;
    line.weightdflt = W_AW;
    int32_t rc = stat_parse(line);
    if (rc)
        return rc;
    o->detail = stat_option("detail", 1);
    o->meanonly = stat_option("meanonly", 4);
    o->format = stat_option("format", 1);
    o->separator = ti_pi_findopta(tokinfo, parinfo, "separator", 3, 5);
    if ((rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    if (o->detail && o->meanonly)
        return errout(RC_SYNTAX, "options detail and meanonly may not be combined\n");
    if (o->detail && parinfo->pi_hasexp && parinfo->pi_wtype == W_IW)
        return errout(RC_NOTALLOWED, "iweights not allowed with detail option\n");
    return 0;
}

// The variance divides by what the weights stand for: observations for analytic weights
// (which are scaled to sum to them), the sum of weights otherwise.
double variance_of(const moments *m)
{
    if (parinfo->pi_hasexp && parinfo->pi_wtype == W_AW) {
        if (m->n < 2)
            return misval;
        return m->m2 * (double(m->n) / m->sum_w) / double(m->n - 1);
    }
    return m->sum_w > 1 ? m->m2 / (m->sum_w - 1) : misval;
}

double count_of(const moments *m)
{
    return parinfo->pi_hasexp && parinfo->pi_wtype == W_FW ? m->sum_w : double(m->n);
}

void post(const moments *m, const sumopts *o)
{
    double var = variance_of(m);
    retval_clear();
    retval_set_gscalar(count_of(m), "N");
    retval_set_gscalar(m->sum_w, "sum_w");
    retval_set_gscalar(m->n ? m->mean : misval, "mean");
    if (!o->meanonly) {
        retval_set_gscalar(var, "Var");
        retval_set_gscalar(var < misval ? std::sqrt(var) : misval, "sd");
    }
    retval_set_gscalar(m->min, "min");
    retval_set_gscalar(m->max, "max");
    retval_set_gscalar(m->sum, "sum");
}

// ---- the table

void heading(bool weighted)
{
    newline();
    spout21at(1, weighted
                     ? "    Variable |     Obs      Weight        Mean   Std. Dev.       Min        Max\n"
                     : "    Variable |       Obs        Mean    Std. Dev.       Min        Max\n");
}

void rule(bool weighted)
{
    spout21at(1, weighted
                     ? "-------------+-----------------------------------------------------------------\n"
                     : "-------------+---------------------------------------------------------\n");
}

const char *numfmt(const sumopts *o, int32_t var, char *buf)
{
    fmtinfo f;
    const char *fmt = _fmtlist[var - 1];
    if (o->format && !chkfmt(fmt, &f) && f.kind != 't' && f.kind != 's' && f.width <= 10) {
        snprintf(buf, 49, "%s", fmt);
        return buf;
    }
    return "%9.0g";
}

void row(const sumopts *o, int32_t var, const moments *m)
{
    char name[246], n[64], mean[64], sd[64], lo[64], hi[64], fmt[49], w[64];
    const char *f = numfmt(o, var, fmt);
    bool weighted = parinfo->pi_hasexp && parinfo->pi_wtype != W_FW;
    double v = variance_of(m);
    str_abbrev(name, _varlist[var - 1], 12);
    spout21fat(1, "%12s |", name);
    fmtnumtrim(n, sizeof n, count_of(m), "%10.0g");
    if (!m->n) {
        spout21fat(0, weighted ? "%8s%12s\n" : "%10s\n", n, "0");
        return;
    }
    fmtnumtrim(mean, sizeof mean, m->mean, f);
    fmtnumtrim(sd, sizeof sd, v < misval ? std::sqrt(v) : misval, f);
    fmtnumtrim(lo, sizeof lo, m->min, f);
    fmtnumtrim(hi, sizeof hi, m->max, f);
    if (weighted) {
        fmtnumtrim(w, sizeof w, m->sum_w, "%11.0g");
        spout21fat(0, "%8s%12s%12s%12s%10s%11s\n", n, w, mean, sd, lo, hi);
    } else {
        spout21fat(0, "%10s%12s%13s%10s%11s\n", n, mean, sd, lo, hi);
    }
}

// ---- detail

struct shape {
    double pct[9], skew, kurt;
};

void shape_of(const sample *s, const moments *m, shape *h)
{
    for (int i = 0; i < 9; i++)
        h->pct[i] = sample_pctile(s, m->sum_w, pcts[i]);
    double v = m->n ? m->m2 / m->sum_w : 0;
    h->skew = v > 0 ? m->m3 / m->sum_w / std::pow(v, 1.5) : misval;
    h->kurt = v > 0 ? m->m4 / m->sum_w / (v * v) : misval;
}

void post_shape(const shape *h)
{
    retval_set_gscalar(h->skew, "skewness");
    retval_set_gscalar(h->kurt, "kurtosis");
    for (int i = 0; i < 9; i++) {
        char name[8];
        snprintf(name, sizeof name, "p%d", int(pcts[i]));
        retval_set_gscalar(h->pct[i], name);
    }
}

struct detline {
    int pct;            // index of the percentile, -1 none
    int low;            // rank from the bottom, 0 none; negative: from the top
    const char *label;  // of the number at the right
    int stat;           // 0 none, 1 obs, 2 weight, 3 mean, 4 sd, 5 variance, 6 skew, 7 kurt
};
constexpr detline detlines[] = {
    {0, 1, "", 0},          {1, 2, "", 0},          {2, 3, "Obs", 1},
    {3, 4, "Sum of Wgt.", 2}, {-1, 0, "", 0},       {4, 0, "Mean", 3},
    {-1, 0, "Std. Dev.", 4}, {5, -4, "", 0},        {6, -3, "Variance", 5},
    {7, -2, "Skewness", 6}, {8, -1, "Kurtosis", 7},
};

void detail(const sumopts *o, int32_t var, const sample *s, const moments *m, const shape *h)
{
    char fmt[49], label[81], a[64], b[64], c[64];
    const char *f = numfmt(o, var, fmt);
    getvarlab(var, label);
    const char *title = *label ? label : _varlist[var - 1];
    int32_t w = int32_t(strlen(title));
    newline();
    spout21fat(1, "%*s\n", w < 61 ? (61 + w) / 2 : w, title);
    spout21at(1, "-------------------------------------------------------------\n");
    if (!m->n) {
        spout21at(1, "no observations\n");
        return;
    }
    spout21at(1, "      Percentiles      Smallest\n");
    double v = variance_of(m);
    const double stat[] = {0, count_of(m), m->sum_w, m->mean, v < misval ? std::sqrt(v) : misval,
                           v, h->skew, h->kurt};
    for (const detline &d : detlines) {
        if (d.pct < 0 && !d.stat) {
            newline();
            continue;
        }
        *a = *b = *c = 0;
        if (d.pct >= 0)
            fmtnumtrim(a, sizeof a, h->pct[d.pct], f);
        int64_t i = d.low > 0 ? d.low - 1 : s->n + d.low;
        if (d.low && i >= 0 && i < s->n)
            fmtnumtrim(b, sizeof b, s->x[i], f);
        if (d.stat)
            fmtnumtrim(c, sizeof c, stat[d.stat], d.stat < 3 ? "%10.0g" : "%9.0g");
        if (d.pct >= 0)
            spout21fat(1, "%2d%%", int(pcts[d.pct]));
        else
            spout21at(1, "   ");
        if (d.stat == 4)
            spout21at(1, "                     Largest");
        else
            spout21fat(0, "%10s%15s", a, b);
        if (d.stat) {
            spout21fat(1, "       %-11s", d.label);
            spout21fat(0, "%14s", c);
        }
        newline();
    }
}

}  // namespace

int32_t summarize(int32_t);
int32_t summarize(int32_t)
{
    sumopts o = {};
    int32_t rc = parse(&o);
    if (rc)
        return rc;
    outlev_keep keep(1);
    bool weighted = parinfo->pi_hasexp && parinfo->pi_wtype != W_FW;
    sample s;
    for (int32_t i = 0; i < parinfo->pi_nvar; i++) {
        int32_t var = parinfo->vl_vr[i];
        moments m;
        if (t_isstr(_typlist[var - 1]))
            s.n = 0;
        else if ((rc = sample_read(&s, var)))
            return rc;
        // Only now: reading the first column refuses bad weights.
        if (i == 0 && !o.detail && !o.meanonly)
            heading(weighted);
        moments_of(&s, &m, o.detail);
        post(&m, &o);
        if (o.detail) {
            shape h;
            if ((rc = sample_sort(&s)))
                return rc;
            shape_of(&s, &m, &h);
            if (m.n)
                post_shape(&h);
            detail(&o, var, &s, &m, &h);
        } else if (!o.meanonly) {
            if (o.separator > 0 ? i % o.separator == 0 : i == 0)
                rule(weighted);
            row(&o, var, &m);
        }
        if (fault_poll())
            return stopflag;
    }
    return stopflag;
}
