// commands/countcmd.cpp - count and assert: how many observations are so.
#include "core/mem.h"
#include "core/progress.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "expr/generate.h"
#include "expr/parse.h"
#include "expr/rows.h"
#include "interp/messages.h"
#include "output/print.h"
#include "stats/results.h"

// Observations of the range that the condition selects; a break ends the count.
static int32_t selected()
{
    int32_t n = 0;
    rowvalues v;
    rv_open(&v, nullptr, parinfo->pi_obs2);
    for (int32_t obs = parinfo->pi_obs1; obs <= parinfo->pi_obs2; obs++) {
        n += rv_selected(&v, obs);
        if ((obs & 0xfff) == 0 && progress_poll("counting", obs, parinfo->pi_obs2))
            break;
    }
    return n;
}

int32_t countcmd(int32_t)
{
    parinfo->pi_if = parinfo->pi_in = parinfo->pi_by = PI_OK;
    int32_t rc = ti_pi_parse(tokinfo, parinfo);
    if (rc)
        return rc;
    int32_t n = selected();
    if (stopflag)
        return stopflag;
    retval_clear();
    retval_set_gscalar(n, "N");
    spout21fat(0, "%5d\n", n);
    return 0;
}

int32_t assertcmd(int32_t)
{
    parinfo->pi_in = parinfo->pi_by = parinfo->pi_opts = PI_OK;
    parinfo->pi_if = PI_OK;
    parinfo->pi_exp = PI_REQ;
    parinfo->pi_exptype = W_NUM;
    parinfo->pi_vlist = PI_NO;
    // What is asserted stands without the sign that marks an expression.
    if (byvar < 2)
        ti_pushtok(tokinfo, "=");
    int32_t rc = ti_pi_parse(tokinfo, parinfo);
    if (rc)
        return rc;
    if (byvar)
        pi_resetopt(parinfo);
    bool rc0 = ti_pi_findopt(tokinfo, parinfo, "rc0", 3, 0) == 1;
    bool null = ti_pi_findopt(tokinfo, parinfo, "null", 1, 0) == 1;
    bool fast = ti_pi_findopt(tokinfo, parinfo, "fast", 1, 0) == 1;
    if ((rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    int32_t all = 0, bad = 0;
    for (int32_t obs = parinfo->pi_obs1; obs <= parinfo->pi_obs2; obs++) {
        if ((obs & 0xfff) == 0 && progress_poll("counting", obs, parinfo->pi_obs2))
            return stopflag;
        if (!selobs(obs))
            continue;
        all++;
        bad += pi_xeq(parinfo, parinfo->wepgm, obs) == 0;
    }
    if (null && all < 1)
        return rc0 ? 0 : errout(8, "assertion is null\n");
    if (!bad)
        return 0;
    if (!fast)
        spout21fat(3, "%d contradiction%s in %d observation%s\n", bad, plural(bad), all,
                   plural(all));
    rc = errout(9, "assertion is false\n");
    return rc0 ? 0 : rc;
}
