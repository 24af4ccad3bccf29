// Values of operated variables. The time variable, the panel and the unit stand in
// characteristics of the dataset: _TStvar, _TSpanel, _TSdelta.
#include "core/mem.h"
#include "core/missing.h"
#include "core/numtext.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/labels.h"
#include "data/variables.h"
#include "interp/messages.h"
#include "varlist/terms.h"
#include <cmath>

static struct {
    int32_t tvar, pvar;
    double delta;
} ts;

static double cell(int32_t var, int32_t obs)
{
    return dsa_data(sysdsa, uint32_t(var), uint32_t(obs));
}

static int32_t check_order()
{
    double t0 = misval, p0 = misval;
    for (int32_t i = 1; i <= _Nobs; i++) {
        if ((i & 0xffff) == 0 && fault_poll())
            return stopflag;
        double t = cell(ts.tvar, i), p = ts.pvar ? cell(ts.pvar, i) : 0;
        if (i > 1 && (p < p0 || (p == p0 && t < t0)))
            return error(5);
        if (i > 1 && p == p0 && t == t0 && t < misval)
            return errout(451, ts.pvar ? "repeated time values within panel\n"
                                       : "repeated time values\n");
        t0 = t;
        p0 = p;
    }
    return 0;
}

int32_t ts_init()
{
    const char *t = charfind("_dta", "_TStvar", nullptr);
    if (!t || !*t)
        return errout(RC_NOTFOUND, "time variable not set\n");
    const char *p = charfind("_dta", "_TSpanel", nullptr);
    const char *d = charfind("_dta", "_TSdelta", nullptr);
    ts.tvar = sysfindvar(t);
    ts.pvar = p && *p ? sysfindvar(p) : 0;
    if (!ts.tvar)
        return varnotfound(t);
    if (p && *p && !ts.pvar)
        return varnotfound(p);
    if (t_isstr(_typlist[ts.tvar - 1]) || (ts.pvar && t_isstr(_typlist[ts.pvar - 1])))
        return error(RC_TYPE);
    if (!d || cnvstoz(d, &ts.delta) || !(ts.delta > 0) || ts.delta >= misval)
        ts.delta = 1;
    return check_order();
}

void ts_renumber(int32_t n)
{
    if (ts.tvar == n || ts.pvar == n)
        ts.tvar = ts.pvar = 0;
    ts.tvar -= ts.tvar > n;
    ts.pvar -= ts.pvar > n;
}

// The observation lag units before obs in its panel, 0 when there is none.
static int32_t find(int32_t obs, int32_t lag)
{
    if (!lag)
        return obs;
    if (ts.tvar < 1 || ts.tvar > _Kvar || ts.pvar > _Kvar)
        return 0;
    double t = cell(ts.tvar, obs);
    if (t >= misval)
        return 0;
    double want = t - lag * ts.delta, p = ts.pvar ? cell(ts.pvar, obs) : 0;
    int32_t step = lag > 0 ? -1 : 1;
    // Units are never nearer than one to another, but the unit may be finer than the spacing.
    for (int32_t i = obs + step; i >= 1 && i <= _Nobs; i += step) {
        if (ts.pvar && cell(ts.pvar, i) != p)
            return 0;
        double z = cell(ts.tvar, i);
        if (z == want)
            return i;
        if (step < 0 ? z < want : z > want)
            return 0;
    }
    return 0;
}

static double lagged(int32_t var, int32_t obs, int32_t lag)
{
    int32_t at = find(obs, lag);
    return at ? cell(var, at) : misval;
}

// The difference of a given order: alternating binomials over the lags.
static double differences(int32_t var, int32_t obs, int32_t lag, int32_t order)
{
    if (!order)
        return lagged(var, obs, lag);
    double sum = 0, c = 1;
    for (int32_t j = 0; j <= order; j++) {
        double z = lagged(var, obs, lag + j);
        if (z >= misval)
            return misval;
        sum += c * z;
        c = -c * (order - j) / (j + 1);
    }
    return sum;
}

double ts_value(int32_t var, const tsops &o, int32_t obs)
{
    if (!o.any())
        return cell(var, obs);
    if (obs < 1 || obs > _Nobs)
        return misval;
    double sum = 0;
    int32_t n = o.span[1] ? 4 : o.span[0] ? 2 : 1;
    for (int32_t k = 0; k < n; k++) {
        int32_t lag = o.lag + (k & 1 ? o.span[0] : 0) + (k & 2 ? o.span[1] : 0);
        double z = differences(var, obs, lag, o.diff);
        if (z >= misval)
            return misval;
        sum += k == 1 || k == 2 ? -z : z;
    }
    return std::fabs(sum) < misval ? sum : misval;
}
