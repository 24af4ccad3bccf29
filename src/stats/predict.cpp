// stats/predict.cpp - _predict: what the estimates in e() say about each observation.
//
//   _predict [type] newvar [if] [in] [, statistic equation(name)]
#include "core/mem.h"
#include "core/missing.h"
#include "core/numtext.h"
#include "core/progress.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/labels.h"
#include "data/umat.h"
#include "data/variables.h"
#include "expr/generate.h"
#include "expr/parse.h"
#include "expr/rows.h"
#include "interp/messages.h"
#include "output/print.h"
#include "stats/groups.h"
#include "stats/normal.h"
#include "stats/results.h"
#include "stats/statparse.h"
#include "varlist/terms.h"
#include <cmath>
#include <cstdio>
#include <cstring>
#include <vector>

namespace
{

enum pstat : int32_t {
    PS_XB,
    PS_RESID,
    PS_DRESID,
    PS_D,
    PS_XBD,
    PS_PR,
    PS_E,
    PS_YSTAR,
    PS_STDP,
    PS_STDF,
    PS_STDR,
    PS_HAT,
    PS_RSTANDARD,
    PS_RSTUDENT,
    PS_COOKSD,
    PS_DFITS,
    PS_COVRATIO,
    PS_WELSCH,
    PS_DFBETA,
};
struct statrow {
    const char *word;
    int32_t min;
    pstat what;
    const char *label;
};
// Rows from stdf on need the variance of the residuals; from rstandard on, the sample too.
constexpr statrow stats[] = {
    {"xb", 2, PS_XB, "Linear prediction"},
    {"residuals", 1, PS_RESID, "Residuals"},
    {"scores", 2, PS_RESID, "Scores"},
    {"d", 1, PS_D, "Effect of the group"},
    {"xbd", 3, PS_XBD, "Prediction with the effect of the group"},
    {"dresiduals", 2, PS_DRESID, "Residuals with the effect of the group"},
    {"stdp", 4, PS_STDP, "S.E. of the prediction"},
    {"stdf", 4, PS_STDF, "S.E. of the forecast"},
    {"stdr", 4, PS_STDR, "S.E. of the residual"},
    {"hat", 1, PS_HAT, "Leverage"},
    {"leverage", 1, PS_HAT, "Leverage"},
    {"rstandard", 3, PS_RSTANDARD, "Standardized residuals"},
    {"rstudent", 3, PS_RSTUDENT, "Studentized residuals"},
    {"cooksd", 1, PS_COOKSD, "Cook's D"},
    {"dfits", 2, PS_DFITS, "Dfits"},
    {"covratio", 3, PS_COVRATIO, "Covratio"},
    {"welsch", 1, PS_WELSCH, "Welsch distance"},
};

// Those of the bounds of an interval, which are numbers or variables.
constexpr statrow interval_stats[] = {
    {"pr", 2, PS_PR, "Probability of the interval"},
    {"e", 1, PS_E, "Expected value within the interval"},
    {"ystar", 2, PS_YSTAR, "Expected value cut to the interval"},
};

struct bound {
    double z = misval;
    int32_t var = 0;
    double at(int32_t obs) const
    {
        return var ? dsa_data(sysdsa, uint32_t(var), uint32_t(obs)) : z;
    }
};

struct predcmd {
    pstat what = PS_XB;
    const char *label = "";
    matref b, V;
    int32_t first, n;         // columns of the equation
    std::vector<int32_t> var; // 0 for the constant, -k for term k, left_out for nothing
    std::vector<termname> terms;
    std::vector<double> x;
    int32_t dep = 0, sample = 0;
    tsops depts;
    bound low, high;
    char beta[33] = ""; // dfbeta(): the coefficient
    int32_t betacol = 0;
    groupids groups;            // absorbed
    std::vector<double> effect; // by group
    double s = misval, df_r = misval, N = misval, k = 0, rss = misval;
};

std::string macro_of(const char *name)
{
    return gretval_find(RK_E, name) == 5179 ? retval_get_strptr() : "";
}

int32_t read_bound(const std::string &text, bound *b)
{
    return cnvstoz(text.c_str(), &b->z) ? stat_numvar(text.c_str(), &b->var) : 0;
}

int32_t read_interval(predcmd *c, const char *text)
{
    std::string both;
    for (const char *p = text; *p; p++)
        if (*p != ' ')
            both += *p;
    size_t comma = both.find(',');
    if (comma == std::string::npos)
        return errout(RC_SYNTAX, "two bounds, as in pr(0,1), are required\n");
    int32_t rc = read_bound(both.substr(0, comma), &c->low);
    return rc ? rc : read_bound(both.substr(comma + 1), &c->high);
}

// The statistics that take something in parentheses.
int32_t parse_arguments(predcmd *c, const statrow **found, bool *twice)
{
    char text[500];
    static constexpr statrow dfbeta = {"dfbeta", 3, PS_DFBETA, "Dfbeta"};
    for (const statrow &s : interval_stats)
        if (ti_pi_findargasis(tokinfo, parinfo, s.word, s.min, text, 499)) {
            *twice |= *found != nullptr;
            *found = &s;
            if (int32_t rc = read_interval(c, text))
                return rc;
        }
    if (ti_pi_findargn(tokinfo, parinfo, dfbeta.word, dfbeta.min, c->beta, 32, 1)) {
        *twice |= *found != nullptr;
        *found = &dfbeta;
    }
    return 0;
}

int32_t parse(predcmd *c, char *eq)
{
    parinfo->pi_in = parinfo->pi_if = parinfo->pi_by = parinfo->pi_opts = PI_OK;
    parinfo->pi_vlist = PI_REQ;
    pi_vlmode = VL_NEW1;
    int32_t rc = ti_pi_parse(tokinfo, parinfo);
    if (rc)
        return rc;
    const statrow *found = nullptr;
    bool twice = false;
    for (const statrow &s : stats)
        if (ti_pi_findopt(tokinfo, parinfo, s.word, s.min, 0)) {
            twice |= found != nullptr;
            found = &s;
        }
    if ((rc = parse_arguments(c, &found, &twice)))
        return rc;
    if (twice)
        return errout(RC_SYNTAX, "only one statistic may be predicted\n");
    if (!ti_pi_findargn(tokinfo, parinfo, "equation", 2, eq, 32, 1))
        *eq = 0;
    if ((rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    if (!found && out_shown(1))
        spout21at(1, "(option xb assumed; fitted values)\n");
    c->what = found ? found->what : PS_XB;
    c->label = found ? found->label : "Fitted values";
    return 0;
}

constexpr int32_t left_out = INT32_MIN;

// A column that was left out takes no part.
int32_t find_term(predcmd *c, const char *name, int32_t *var)
{
    termname t;
    if (term_read(name, &t) && term_isomitted(t)) {
        *var = left_out;
        return 0;
    }
    int32_t rc = ti_fv_findvar(name, &t);
    if (rc)
        return rc;
    bool had = false, ts = false;
    for (const termname &u : c->terms)
        for (int32_t i = 0; i < u.n; i++)
            had |= u.part[i].ts.any();
    for (int32_t i = 0; i < t.n; i++)
        ts |= t.part[i].ts.any();
    c->terms.push_back(t);
    *var = -int32_t(c->terms.size());
    return ts && !had ? ts_init() : 0;
}

int32_t find_columns(predcmd *c, const char *eq)
{
    if (!umat_get("b", MK_E, &c->b))
        return regrnotfound();
    int32_t last;
    if (!umat_eqspan(c->b.col, c->b.m->cols, eq, &c->first, &last))
        return eqnotfound(eq);
    const char *own = c->b.col[c->first].eq;
    for (int32_t j = c->first; j <= last; j++) {
        const char *name = c->b.col[j].name;
        int32_t var = 0;
        if (strchr(name, '.')) {
            if (int32_t rc = find_term(c, name, &var))
                return rc;
        } else if (strcmp(name, "_cons")) {
            var = sysfindvar(name);
            if (!var)
                return varnotfound(name);
            if (t_isstr(_typlist[var - 1]))
                return error(RC_TYPE);
        }
        c->var.push_back(var);
    }
    if (c->what == PS_DFBETA) {
        std::string full = std::string(own) + ":" + c->beta;
        c->betacol = umat_findname(c->b.col, c->b.m->cols, full.c_str(), false) - c->first;
        if (c->betacol < 1)
            return notfound(c->beta);
    }
    c->n = int32_t(c->var.size());
    c->x.resize(size_t(c->n));
    return 0;
}

int32_t need(predcmd *c)
{
    if (c->what >= PS_STDP && !umat_get("V", MK_E, &c->V))
        return errout(RC_NOTFOUND, "e(V) not found\n");
    if (c->what >= PS_STDF) {
        if (macro_of("vce") != "ols" && !macro_of("vce").empty())
            return errout(RC_NOTALLOWED, "option not allowed after robust estimation\n");
        if (c->what >= PS_STDR && macro_of("model") == "iv")
            return errout(RC_NOTALLOWED, "option not allowed after instrumental variables\n");
        if (macro_of("wtype") == "aweight" && c->what >= PS_HAT)
            return errout(RC_NOTALLOWED, "option not allowed after analytic weights\n");
        c->s = estval_get_double("rmse");
        c->df_r = estval_get_double("df_r");
        c->N = estval_get_double("N");
        c->rss = estval_get_double("rss");
        c->k = c->N - c->df_r;
    }
    if (c->what >= PS_PR && c->what <= PS_YSTAR)
        c->s = estval_get_double("rmse");
    bool absorbed = !macro_of("absvar").empty();
    if (!absorbed && c->what >= PS_D && c->what <= PS_XBD)
        return errout(RC_NOTALLOWED, "option allowed after absorbed groups only\n");
    if (absorbed && c->what >= PS_STDF)
        return errout(RC_NOTALLOWED, "option not allowed after absorbed groups\n");
    if ((c->what >= PS_RESID && c->what <= PS_XBD) || c->what >= PS_RSTANDARD) {
        std::string name = macro_of("depvar");
        if (name.find('.') != std::string::npos) {
            termname t;
            int32_t rc = ti_fv_findvar(name.c_str(), &t);
            if (rc || (rc = ts_init()))
                return rc;
            c->dep = t.part[0].var;
            c->depts = t.part[0].ts;
        } else if (!(c->dep = sysfindvar(name.c_str())))
            return varnotfound(name.c_str());
    }
    if (c->what >= PS_RSTANDARD)
        c->sample = *esamplename ? sysfindvar(esamplename) : 0;
    return 0;
}

double quadratic(const predcmd *c)
{
    double q = 0;
    for (int32_t i = 0; i < c->n; i++) {
        double t = 0;
        for (int32_t j = 0; j < c->n; j++)
            t += umat_el(c->V.m, c->first + i + 1, c->first + j + 1) * c->x[size_t(j)];
        q += t * c->x[size_t(i)];
    }
    return q > 0 ? q : 0;
}

// Normal errors with the standard deviation of the residuals. A missing bound is none.
double interval_value(const predcmd *c, double xb, int32_t obs)
{
    double low = c->low.at(obs), high = c->high.at(obs), s = c->s;
    bool below = low < misval, above = high < misval;
    if (!(s > 0) || s >= misval || (below && above && low > high))
        return misval;
    double a = below ? (low - xb) / s : -40, b = above ? (high - xb) / s : 40;
    double p = a > 0 ? ovnormal(-a) - ovnormal(-b) : ovnormal(b) - ovnormal(a);
    if (c->what == PS_PR)
        return p;
    double inside = xb * p + s * (ovnormalden(a) - ovnormalden(b));
    if (c->what == PS_E)
        return p > 0 ? inside / p : misval;
    return inside + (below ? low * ovnormal(a) : 0) + (above ? high * ovnormal(-b) : 0);
}

// How far the coefficient moves without the observation, in its standard errors then.
double dfbeta(const predcmd *c, double e, double left, double without)
{
    double t = 0, var = umat_el(c->V.m, c->first + c->betacol, c->first + c->betacol);
    for (int32_t j = 0; j < c->n; j++)
        t += umat_el(c->V.m, c->first + c->betacol, c->first + j + 1) * c->x[size_t(j)];
    return var > 0 ? t * e / (c->s * left * std::sqrt(without * var)) : misval;
}

double influence(const predcmd *c, double e, double h)
{
    double left = 1 - h;
    if (!(left > 1e-14) || c->s >= misval)
        return misval;
    if (c->what == PS_RSTANDARD)
        return e / (c->s * std::sqrt(left));
    if (c->what == PS_COOKSD) {
        double r = e / (c->s * std::sqrt(left));
        return r * r * h / left / c->k;
    }
    double without = (c->rss - e * e / left) / (c->df_r - 1); // variance without this one
    if (!(c->df_r > 1) || !(without > 0))
        return misval;
    double t = e / std::sqrt(without * left);
    switch (c->what) {
    case PS_RSTUDENT: return t;
    case PS_DFBETA: return dfbeta(c, e, left, without);
    case PS_DFITS: return t * std::sqrt(h / left);
    case PS_COVRATIO: return std::pow(without / (c->s * c->s), c->k) / left;
    default: return t * std::sqrt(h / left) * std::sqrt((c->N - 1) / left);
    }
}

// The linear prediction, and the row of x with it; misval where one of them is missing.
double linear(predcmd *c, int32_t obs)
{
    double xb = 0;
    for (int32_t j = 0; j < c->n; j++) {
        int32_t v = c->var[size_t(j)];
        double z = v > 0            ? dsa_data(sysdsa, uint32_t(v), uint32_t(obs))
                   : v == left_out ? 0
                   : v             ? fv_xeq(c->terms[size_t(-v) - 1], obs)
                                   : 1;
        if (z >= misval)
            return misval;
        c->x[size_t(j)] = z;
        xb += z * umat_el(c->b.m, 1, c->first + j + 1);
    }
    return xb;
}

// What the estimation sample leaves over in each absorbed group, on the average.
int32_t group_effects(predcmd *c)
{
    std::string name = macro_of("absvar"), weight = macro_of("wexp");
    if (!(c->groups.var = sysfindvar(name.c_str())))
        return varnotfound(name.c_str());
    int32_t sample = *esamplename ? sysfindvar(esamplename) : 0;
    litpools pools;
    pools_save(&pools);
    initialize_compexp_shared();
    toktype ti;
    xeqpgm pgm;
    int32_t rc = 0;
    if (!weight.empty()) { // "= exp"
        ti_settok(&ti, weight.data() + 1);
        rc = ti_compexp(&ti, &pgm, W_NUM, false, false, nullptr, 0);
        pgm.obs1 = 1;
        pgm.obs2 = _Nobs;
    }
    std::vector<double> sum_w;
    for (int32_t obs = 1; !rc && obs <= _Nobs; obs++) {
        if ((obs & 0xfff) == 0 && fault_poll()) {
            rc = stopflag;
            break;
        }
        if (sample && dsa_data(sysdsa, uint32_t(sample), uint32_t(obs)) != 1)
            continue;
        int32_t g = group_at(&c->groups, obs);
        double y = rcpxeq(c->dep, c->depts, obs), xb = linear(c, obs);
        double w = weight.empty() ? 1 : xeqforby(&pgm, obs);
        if (g < 0 || y >= misval || xb >= misval || w >= misval)
            continue;
        if (size_t(g) >= sum_w.size()) {
            sum_w.resize(size_t(g) + 1);
            c->effect.resize(size_t(g) + 1);
        }
        sum_w[size_t(g)] += w;
        c->effect[size_t(g)] += w * (y - xb);
    }
    for (size_t g = 0; g < sum_w.size(); g++)
        c->effect[g] = sum_w[g] != 0 ? c->effect[g] / sum_w[g] : misval;
    pools_restore(&pools);
    return rc;
}

double effect_at(predcmd *c, int32_t obs)
{
    int32_t g = group_at(&c->groups, obs);
    return g < 0 || size_t(g) >= c->effect.size() ? misval : c->effect[size_t(g)];
}

double value_at(predcmd *c, int32_t obs)
{
    if (c->sample && dsa_data(sysdsa, uint32_t(c->sample), uint32_t(obs)) != 1)
        return misval;
    double xb = linear(c, obs), d = 0;
    if (xb >= misval)
        return misval;
    if (c->groups.var && c->what != PS_DRESID && (d = effect_at(c, obs)) >= misval)
        return misval;
    if (c->what == PS_D || c->what == PS_XBD)
        return c->what == PS_D ? d : xb + d;
    if (c->what == PS_XB)
        return xb;
    if (c->what <= PS_YSTAR && c->what >= PS_PR)
        return interval_value(c, xb, obs);
    double y = c->dep ? rcpxeq(c->dep, c->depts, obs) : 0;
    if (y >= misval)
        return misval;
    if (c->what == PS_RESID || c->what == PS_DRESID)
        return y - xb - d;
    double q = quadratic(c), s2 = c->s * c->s;
    if (c->what == PS_STDP)
        return std::sqrt(q);
    if (c->s >= misval)
        return misval;
    switch (c->what) {
    case PS_STDF: return std::sqrt(s2 + q);
    case PS_STDR: return s2 > q ? std::sqrt(s2 - q) : 0;
    case PS_HAT: return s2 > 0 ? q / s2 : misval;
    default: return s2 > 0 ? influence(c, y - xb, q / s2) : misval;
    }
}

} // namespace

int32_t predictcmd(int32_t);
int32_t predictcmd(int32_t)
{
    predcmd c;
    char eq[33];
    int32_t rc = parse(&c, eq);
    if (rc || (rc = find_columns(&c, eq)) || (rc = need(&c)))
        return rc;
    if (c.what >= PS_RESID && c.what <= PS_XBD && !macro_of("absvar").empty() &&
        (rc = group_effects(&c)))
        return rc;
    int32_t var = parinfo->vl_vr[0], missing = 0;
    if (t_isstr(_typlist[var - 1]))
        return error(RC_TYPE);
    rowvalues v;
    rv_open(&v, nullptr, parinfo->pi_obs2);
    for (int32_t obs = 1; obs <= _Nobs; obs++) {
        if ((obs & 0xfff) == 0 && progress_poll("predicting", obs, _Nobs))
            return stopflag;
        bool in = obs >= parinfo->pi_obs1 && obs <= parinfo->pi_obs2 && rv_selected(&v, obs);
        double z = in ? value_at(&c, obs) : misval;
        z = std::fabs(z) < misval ? z : misval;
        dsa_store(z, sysdsa, uint32_t(var), uint32_t(obs));
        missing += z >= misval;
    }
    if ((rc = putvarlab(var, c.label)))
        return rc;
    _i_Kvar = _Kvar;
    s_updata = newdata = true;
    if (out_shown(2))
        missmsg(missing, true);
    return 0;
}
