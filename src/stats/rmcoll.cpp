// stats/rmcoll.cpp - _rmcoll: takes the variables that follow from others out of a list.
//
//   _rmcoll varlist [if] [in] [weight] [, noconstant collinear forcedrop expand touse(var)
//           logit probit ologit oprobit mlogit asis offset(var) ...]
//
// Leaves r(varlist) and r(k_omitted). With logit and probit the first variable is the outcome:
// regressors that tell it without error go, with the observations they tell, unless asis stands;
// r(n0) and r(n1) are its weighted counts and r(b0) a constant to start from.
#include "core/missing.h"
#include "core/rc.h"
#include "core/settings.h"
#include "core/state.h"
#include "data/variables.h"
#include "interp/messages.h"
#include "output/fmt.h"
#include "output/print.h"
#include "stats/crossprod.h"
#include "stats/normal.h"
#include "stats/perfect.h"
#include "stats/results.h"
#include "stats/statparse.h"
#include "stats/sweep.h"
#include "varlist/terms.h"
#include <cmath>
#include <string>
#include <vector>

namespace
{

struct rmcmd {
    bool constant, collinear, force, expand, skipline, outcome, counts, probit, asis;
    int32_t offset = 0, touse = 0;
    std::vector<int32_t> vars; // the outcome first when there is one
    std::vector<uint8_t> gone;
    std::vector<uint8_t> out; // by observation: not in the sample
    std::vector<perfectrow> perfect;
    double n0 = 0, n1 = 0, offset_sum = 0;
};

int32_t option_var(const char *name, int32_t min, int32_t *var)
{
    char text[81];
    return ti_pi_findargn(tokinfo, parinfo, name, min, text, 80, 1) ? stat_numvar(text, var) : 0;
}

int32_t parse(rmcmd *c)
{
    statline line;
    line.weights = W_ALL4;
    line.weightdflt = W_AW;
    line.by = false;
    line.fv = true;
    int32_t rc = stat_parse(line);
    if (rc)
        return rc;
    c->constant = stat_option("constant", 4, true);
    c->collinear = stat_option("collinear", 4);
    c->force = stat_option("forcedrop", 5);
    c->expand = stat_option("expand", 3);
    c->skipline = stat_option("skipline", 4, true);
    c->probit = stat_option("probit", 6);
    c->counts = stat_option("logit", 5) || c->probit;
    c->outcome = c->counts;
    for (const char *word : {"ologit", "oprobit", "mlogit"})
        c->outcome |= stat_option(word, 6);
    c->asis = stat_option("asis", 4);
    double base;
    (void)ti_pi_findoptv(tokinfo, parinfo, "baseoutcome", 4, &base, 1, 0);
    if ((rc = option_var("offset", 3, &c->offset)) || (rc = option_var("touse", 5, &c->touse)))
        return rc;
    if ((rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    if (c->force && c->expand)
        return errout(RC_SYNTAX, "only one of force or expand is allowed\n");
    if (c->touse && _typlist[c->touse - 1] != T_BYTE)
        return errout(RC_TYPE, "%s not byte\n", _varlist[c->touse - 1]);
    for (int32_t i = 0; i < parinfo->pi_nvar; i++)
        if (parinfo->vl_vr[i] > 0 && t_isstr(_typlist[parinfo->vl_vr[i] - 1]))
            return error(RC_TYPE);
    c->vars.assign(parinfo->vl_vr, parinfo->vl_vr + parinfo->pi_nvar);
    c->gone.assign(c->vars.size(), 0);
    c->out.assign(size_t(_Nobs) + 1, 0);
    for (int32_t i = 1; c->touse && i <= _Nobs; i++)
        c->out[size_t(i)] = dsa_data(sysdsa, uint32_t(c->touse), uint32_t(i)) != 1;
    return 0;
}

// Keeps the rows of the sample and counts the outcomes.
void look(rmcmd *c, datarows *d)
{
    int32_t n = 0;
    for (int32_t i = 0; i < d->n; i++) {
        const double *x = d->x + i * d->ld;
        if (c->out[size_t(d->obs[i])])
            continue;
        if (c->counts)
            (x[0] != 0 ? c->n1 : c->n0) += d->w[i];
        if (c->offset)
            c->offset_sum += d->w[i] * dsa_data(sysdsa, uint32_t(c->offset), uint32_t(d->obs[i]));
        if (n != i) {
            std::copy(x, x + d->k, d->x + n * d->ld);
            d->w[n] = d->w[i];
        }
        n++;
    }
    d->n = n;
}

// Left out from the first, as base levels are.
bool marked(const rmcmd *c, int32_t j)
{
    int32_t v = c->vars[size_t(j)];
    return v < 0 && term_isomitted(fv_current.col[size_t(-v) - 1]);
}

int32_t reduce(rmcmd *c)
{
    auto k = int32_t(c->vars.size());
    datarows d;
    crossprod p;
    int32_t rc = dr_open(&d, c->vars.data(), k);
    if (rc || (rc = cp_open(&p, k, c->constant)))
        return rc;
    for (;;) {
        if ((rc = dr_next(&d)))
            return rc;
        if (!d.n)
            break;
        look(c, &d);
        cp_block(&p, &d);
    }
    cp_close(&p);
    if (!p.n)
        return errout(RC_NOOBS, "no observations\n");
    int32_t first = c->outcome;
    matblock a;
    if ((rc = take_block(&a, k)))
        return rc;
    for (int32_t i = 0; i < k; i++)
        for (int32_t j = 0; j < k; j++)
            a[int64_t(i) * set_matsize + j] =
                c->gone[size_t(i)] || c->gone[size_t(j)] ? 0 : cp_el(&p, i, j);
    double rel = matrind.rel;
    std::vector<int32_t> order;
    if (parinfo->pi_fvtoc) {
        fv_apply_omit_for_anova(c->vars.data() + first, k - first, first, a.get(), set_matsize);
        fv_sweeporder(c->vars.data() + first, k - first, first, &order);
        matrind.rel = matrind.fv;
    }
    rc = matrinf(a.get(), first, k - 1, order.empty() ? nullptr : order.data(), -1);
    matrind.rel = rel;
    if (rc)
        return rc;
    for (int32_t j = first; j < k; j++)
        if (!marked(c, j) && !c->gone[size_t(j)] && a[int64_t(j) * set_matsize + j] == 0)
            c->gone[size_t(j)] = cp_el(&p, j, j) == 0 ? 2 : 1;
    return 0;
}

const char *left_out()
{
    return vernum < 1100 ? "dropped" : "omitted";
}

// Takes perfect predictors out, of the sample of touse() as well.
int32_t predictors(rmcmd *c)
{
    if (!c->counts || c->asis)
        return 0;
    constexpr uint8_t unseen = 9;
    for (size_t j = 0; j < c->vars.size(); j++)
        c->gone[j] = marked(c, int32_t(j)) ? unseen : 0;
    int32_t rc = perfect_search(c->vars, &c->gone, &c->out, &c->perfect);
    if (rc)
        return rc;
    for (uint8_t &g : c->gone)
        g = g && g != unseen ? 3 : 0;
    for (int32_t i = 1; c->touse && i <= _Nobs; i++)
        if (c->out[size_t(i)] && dsa_data(sysdsa, uint32_t(c->touse), uint32_t(i)) == 1)
            dsa_store(0, sysdsa, uint32_t(c->touse), uint32_t(i));
    return 0;
}

void tell_perfect(const rmcmd *c)
{
    outlev_keep keep(1);
    for (const perfectrow &row : c->perfect) {
        const char *name = fv_name(row.var);
        char at[64];
        fmtnumtrim(at, sizeof at, row.at, "%9.0g");
        if (row.isdummy)
            spout21f("\nnote: %s != %s predicts %s perfectly\n", name, at,
                     row.success ? "success" : "failure");
        else
            spout21f("\nnote: outcome = %s %s %s predicts data perfectly except for\n"
                     "      %s == %s subsample:\n",
                     name, row.greater ? ">" : "<", at, name, at);
        spout21f("      %s %s and %d obs not used\n", name, left_out(), row.nout);
    }
}

void tell(const rmcmd *c)
{
    outlev_keep keep(1);
    bool any = false, allzero = true;
    for (size_t j = c->outcome; j < c->vars.size(); j++) {
        allzero &= c->gone[j] == 2;
        if (!c->gone[j] || c->gone[j] == 3)
            continue;
        if (!any && c->skipline)
            newline();
        any = true;
        const char *name = fv_name(c->vars[j]);
        if (c->gone[j] == 2 && c->vars[j] < 0)
            spout21f("note: %s identifies no observations in the sample\n", name);
        else if (c->gone[j] == 2)
            spout21f("note:  %s dropped because of zero variance\n", name);
        else
            spout21f("note: %s %s because of collinearity\n", name, left_out());
    }
    if (any && allzero)
        spout21("all variables dropped because of zero variance\n");
}

// Columns of a list with factors: with expand all of them, marked where they were left out;
// with forcedrop those that stay; otherwise the terms as they were typed.
std::string operated_list(const rmcmd *c)
{
    if (!c->expand && !c->force) {
        fvspec s = *static_cast<const fvspec *>(parinfo->pi_fvtoc);
        if (c->outcome)
            s.term.erase(s.term.begin());
        return fv_write(s);
    }
    std::string list;
    for (size_t j = c->outcome; j < c->vars.size(); j++) {
        if (c->force && (c->gone[j] || marked(c, int32_t(j))))
            continue;
        std::string name = fv_name(c->vars[j]);
        termname t;
        if (c->gone[j] && term_read(name.c_str(), &t)) {
            term_omit(&t);
            name = term_write(t);
        }
        list += (list.empty() ? "" : " ") + name;
    }
    return list;
}

void post(const rmcmd *c)
{
    std::string list;
    int32_t gone = 0;
    for (size_t j = 0; j < c->vars.size(); j++) {
        if (c->gone[j] || (c->outcome && !j)) {
            gone += c->gone[j] != 0;
            continue;
        }
        list += (list.empty() ? "" : " ") + std::string(fv_name(c->vars[j]));
    }
    if (parinfo->pi_fvtoc)
        list = operated_list(c);
    retval_set_glocal("varlist", list.c_str());
    retval_set_gscalar(gone, "k_omitted");
    if (!c->counts)
        return;
    double n = c->n0 + c->n1, p = c->n1 / n, shift = c->offset ? c->offset_sum / n : 0;
    retval_set_gscalar(c->n0, "n0");
    retval_set_gscalar(c->n1, "n1");
    double b0 = p > 0 && p < 1 ? c->probit ? ovinvnormal(p) : std::log(p / (1 - p)) : misval;
    retval_set_gscalar(b0 < misval ? b0 - shift : misval, "b0");
}

} // namespace

int32_t rmcoll(int32_t);
int32_t rmcoll(int32_t)
{
    rmcmd c = {};
    int32_t rc = parse(&c);
    if (rc)
        return rc;
    retval_clear();
    if (c.vars.empty()) {
        if (c.outcome)
            return error(RC_TOOFEWVARS);
        retval_set_gscalar(0, "k_omitted");
        return 0;
    }
    if ((rc = predictors(&c)))
        return rc;
    tell_perfect(&c);
    if ((rc = reduce(&c)))
        return rc;
    if (c.collinear)
        for (uint8_t &g : c.gone)
            g = g == 1 ? 0 : g;
    tell(&c);
    post(&c);
    return stopflag;
}
