// commands/pctile.cpp - _pctile: percentiles of a variable into r(r1), r(r2), ...
//
//   _pctile varname [if] [in] [weight] [, percentiles(numlist) | nquantiles(#)] [altdef]
#include "commands/stattab.h"
#include "core/missing.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "expr/parse.h"
#include "interp/messages.h"
#include "stats/results.h"
#include "stats/statparse.h"
#include <cmath>
#include <cstdio>

namespace {

constexpr int32_t most = 1000;

struct pctcmd {
    bool altdef;
    int32_t n = 0;
    double p[most];
};

int32_t parse(pctcmd *c)
{
    statline line;
    line.vlist = PI_REQ;
    line.weights = W_AW | W_FW | W_PW;
    line.weightdflt = W_AW;
    int32_t rc = stat_parse(line);
    if (rc)
        return rc;
    if (parinfo->pi_nvar > 1)
        return error(RC_TOOMANYVARS);
    if (t_isstr(_typlist[parinfo->vl_vr[0] - 1]))
        return error(RC_TYPE);
    int32_t nq = ti_pi_findopta(tokinfo, parinfo, "nquantiles", 1, 0);
    c->altdef = stat_option("altdef", 3);
    c->n = ti_pi_findoptv(tokinfo, parinfo, "percentiles", 1, c->p, most, 0);
    if ((rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    if (c->n && nq)
        return errout(RC_SYNTAX, "options percentiles() and nquantiles() may not be combined\n");
    if (c->altdef && parinfo->pi_hasexp)
        return errout(RC_NOTALLOWED, "weights not allowed with altdef\n");
    if (!c->n) {
        nq = nq ? nq : 2;
        if ((rc = chkrange("nquantiles()", nq, 2, most + 1)))
            return rc;
        c->n = nq - 1;
        for (int32_t i = 0; i < c->n; i++)
            c->p[i] = 100.0 * (i + 1) / nq;
    }
    for (int32_t i = 0; i < c->n; i++)
        if (!(c->p[i] > 0 && c->p[i] < 100))
            return errout(RC_SYNTAX, "percentiles() must be between 0 and 100\n");
    return 0;
}

// Between the two order statistics around (n + 1) p / 100.
double interpolated(const sample *s, double p)
{
    double at = (double(s->n) + 1) * p / 100, low = std::floor(at);
    auto i = int64_t(low);
    if (i < 1)
        return s->x[0];
    if (i >= s->n)
        return s->x[s->n - 1];
    return s->x[i - 1] + (at - low) * (s->x[i] - s->x[i - 1]);
}

}  // namespace

int32_t pctilecmd(int32_t);
int32_t pctilecmd(int32_t)
{
    static pctcmd c;
    c.n = 0;
    int32_t rc = parse(&c);
    if (rc)
        return rc;
    sample s;
    if ((rc = sample_read(&s, parinfo->vl_vr[0])) || (rc = sample_sort(&s)))
        return rc;
    double sum = 0;
    for (int64_t i = 0; i < s.n; i++)
        sum += s.w ? s.w[i] : 1;
    retval_clear();
    for (int32_t i = 0; i < c.n; i++) {
        char name[16];
        snprintf(name, sizeof name, "r%d", i + 1);
        double z = !s.n ? misval : c.altdef ? interpolated(&s, c.p[i]) : sample_pctile(&s, sum, c.p[i]);
        retval_set_gscalar(z, name);
    }
    return 0;
}
