// stats/correlate.cpp - correlate: correlations or covariances of the variables, over the
// observations that have all of them.
#include "core/missing.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/umat.h"
#include "data/variables.h"
#include "expr/strfun.h"
#include "interp/messages.h"
#include "output/fmt.h"
#include "output/oml.h"
#include "output/print.h"
#include "stats/crossprod.h"
#include "stats/results.h"
#include "stats/statparse.h"
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <vector>

namespace {

struct corcmd {
    bool means, covariance, wrap;
    std::vector<int32_t> vars;
    std::vector<double> low, high;
    crossprod p;
    double N = 0, factor = 1;  // factor makes the sums covariances
};

int32_t parse(corcmd *c)
{
    statline line;
    line.blankall = true;
    line.weights = W_AW | W_FW | W_IW | W_PW;
    line.weightdflt = W_AW;
    int32_t rc = stat_parse(line);
    if (rc)
        return rc;
    c->means = stat_option("means", 1);
    c->covariance = stat_option("covariance", 1);
    c->wrap = stat_option("wrap", 1);
    (void)stat_option("format", 4, true);
    if ((rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    for (int32_t i = 0; i < parinfo->pi_nvar; i++) {
        int32_t v = parinfo->vl_vr[i];
        if (!t_isstr(_typlist[v - 1]))
            c->vars.push_back(v);
        else if (parinfo->pi_hasvlist)
            return error(RC_TYPE);
        else
            spout21fat(1, "(%s ignored because string variable)\n", _varlist[v - 1]);
    }
    return c->vars.empty() ? errout(RC_NOOBS, "no observations\n") : 0;
}

int32_t collect(corcmd *c)
{
    auto k = int32_t(c->vars.size());
    datarows d;
    int32_t rc = dr_open(&d, c->vars.data(), k);
    if (rc || (rc = cp_open(&c->p, k, true)))
        return rc;
    c->low.assign(size_t(k), misval);
    c->high.assign(size_t(k), -misval);
    for (;;) {
        if ((rc = dr_next(&d)))
            return rc;
        if (!d.n)
            break;
        cp_block(&c->p, &d);
        if (c->means)
            for (int32_t i = 0; i < d.n; i++)
                for (int32_t j = 0; j < k; j++) {
                    double z = d.x[i * d.ld + j];
                    c->low[size_t(j)] = std::min(c->low[size_t(j)], z);
                    c->high[size_t(j)] = std::max(c->high[size_t(j)], z);
                }
    }
    cp_close(&c->p);
    if (!c->p.n)
        return errout(RC_NOOBS, "no observations\n");
    bool scaled = parinfo->pi_hasexp && (parinfo->pi_wtype & (W_AW | W_PW));
    c->N = scaled || !parinfo->pi_hasexp ? double(c->p.n) : c->p.sum_w;
    double w = scaled ? c->N / c->p.sum_w : 1;
    c->factor = c->N > 1 ? w / (c->N - 1) : misval;
    return 0;
}

double covariance(const corcmd *c, int32_t i, int32_t j)
{
    return c->factor < misval ? cp_el(&c->p, i, j) * c->factor : misval;
}

double correlation(const corcmd *c, int32_t i, int32_t j)
{
    double a = cp_el(&c->p, i, i), b = cp_el(&c->p, j, j);
    if (!(a > 0) || !(b > 0))
        return misval;
    if (i == j)
        return 1;
    if (i > j)
        return correlation(c, j, i);
    double r = cp_el(&c->p, i, j) / std::sqrt(a) / std::sqrt(b);
    return r > 1 ? 1 : r < -1 ? -1 : r;
}

void show_means(const corcmd *c)
{
    spout21("    Variable |        Mean    Std. Dev.         Min         Max\n");
    spout21("-------------+--------------------------------------------------\n");
    for (size_t j = 0; j < c->vars.size(); j++) {
        char name[246], a[64], b[64], lo[64], hi[64];
        double v = covariance(c, int32_t(j), int32_t(j));
        str_abbrev(name, _varlist[c->vars[j] - 1], 12);
        spout21fat(1, "%12s |", name);
        fmtnumtrim(a, sizeof a, cp_mean(&c->p, int32_t(j)), "%9.0g");
        fmtnumtrim(b, sizeof b, v < misval ? std::sqrt(v) : misval, "%9.0g");
        fmtnumtrim(lo, sizeof lo, c->low[j], "%9.0g");
        fmtnumtrim(hi, sizeof hi, c->high[j], "%9.0g");
        spout21fat(0, "%12s%13s%12s%12s\n", a, b, lo, hi);
    }
}

int32_t panel(const corcmd *c, int32_t from, int32_t to)
{
    char name[246], num[64];
    spout21f("\n%12s |", "");
    for (int32_t j = from; j < to; j++) {
        str_abbrev(name, _varlist[c->vars[size_t(j)] - 1], 8);
        spout21f("%9s", name);
    }
    newline();
    std::string rule(size_t(to - from) * 9, '-');
    spout21f("-------------+%s\n", rule.c_str());
    for (int32_t i = from; i < int32_t(c->vars.size()); i++) {
        str_abbrev(name, _varlist[c->vars[size_t(i)] - 1], 12);
        spout21fat(1, "%12s |", name);
        for (int32_t j = from; j <= i && j < to; j++) {
            fmtnumtrim(num, sizeof num, c->covariance ? covariance(c, i, j) : correlation(c, i, j),
                       c->covariance ? "%8.0g" : "%8.4f");
            spout21fat(0, "%9s", num);
        }
        if (newline())
            return stopflag;
    }
    return 0;
}

int32_t post(const corcmd *c)
{
    auto k = int32_t(c->vars.size());
    retval_clear();
    retval_set_gscalar(c->N, "N");
    if (k > 1) {
        if (c->covariance) {
            retval_set_gscalar(covariance(c, 0, 1), "cov_12");
            retval_set_gscalar(covariance(c, 0, 0), "Var_1");
            retval_set_gscalar(covariance(c, 1, 1), "Var_2");
        } else
            retval_set_gscalar(correlation(c, 0, 1), "rho");
    }
    matref m;
    int32_t rc = umat_new("C", MK_R, k, k, &m);
    if (rc)
        return rc;
    retval_mark_dm();
    for (int32_t i = 0; i < k; i++) {
        strcpy(m.row[i].name, _varlist[c->vars[size_t(i)] - 1]);
        m.col[i] = m.row[i];
        for (int32_t j = 0; j < k; j++)
            m.m->el[i * k + j] = c->covariance ? covariance(c, i, j) : correlation(c, i, j);
    }
    return 0;
}

}  // namespace

int32_t correlate(int32_t);
int32_t correlate(int32_t)
{
    corcmd c = {};
    int32_t rc = parse(&c);
    if (rc || (rc = collect(&c)))
        return rc;
    outlev_keep keep(1);
    char n[40];
    if (parinfo->pi_hasexp && (parinfo->pi_wtype & (W_AW | W_PW))) {
        fmtnumtrim(n, sizeof n, c.p.sum_w, "%10.0g");
        spout21f("(sum of wgt is %s)\n", n);
    }
    fmtnumtrim(n, sizeof n, c.N, "%10.0g");
    spout21f("(obs=%s)\n", n);
    if (c.means) {
        newline();
        show_means(&c);
    }
    int32_t k = int32_t(c.vars.size()), room = (omlquery_maxwidth(oml_cur) - 14) / 9;
    room = room < 1 || c.wrap ? k : room;
    for (int32_t from = 0; from < k; from += room)
        if (panel(&c, from, std::min(from + room, k)))
            return stopflag;
    newline();
    return post(&c);
}
