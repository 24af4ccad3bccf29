// commands/dropcmd.cpp - drop and keep: variables, or observations.
#include "commands/dropping.h"
#include "core/mem.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/variables.h"
#include "expr/generate.h"
#include "expr/parse.h"
#include "expr/rows.h"
#include "expr/varlist.h"
#include "interp/messages.h"
#include "output/print.h"
#include "stats/results.h"
#include <cstring>
#include <vector>

namespace {

// Without variables there are no observations.
void allgone()
{
    dsa_truncate_var(sysdsa, 0, true);
    dsa_delete_all(sysdsa);
    s_updata = newdata = true;
}

int32_t dropvars(bool keep)
{
    uint8_t *flags = dsa_drop_open(sysdsa, 0);
    if (!flags)
        return error(RC_NOMEM);
    if (keep) {  // the hidden sample variable stays
        std::vector<int32_t> all(size_t(_i_Kvar) + 1);
        int32_t n = vlist_all(all.data());
        for (int32_t i = 0; i < n; i++)
            flags[all[size_t(i)] - 1] = 1;
    }
    for (int32_t i = 0; i < parinfo->pi_nvar; i++)
        flags[parinfo->vl_vr[i] - 1] = !keep;
    int32_t rc = drop_vars(flags);
    dsa_drop_close(sysdsa, flags);
    return rc;
}

// Marks the rows that go; returns how many.
int32_t markrows(uint32_t flag, bool keep)
{
    int32_t n = keep ? _Nobs : 0;
    rowvalues v;
    rv_open(&v, nullptr, parinfo->pi_obs2);
    for (int32_t obs = parinfo->pi_obs1; obs <= parinfo->pi_obs2; obs++) {
        if (rv_selected(&v, obs)) {
            dsa_bstore(!keep, sysdsa, flag, uint32_t(obs));
            n += keep ? -1 : 1;
        }
        if ((obs & 0xfff) == 0 && fault_poll())
            break;
    }
    return n;
}

int32_t droprows(bool keep)
{
    dsa_delhandle h = dsa_delete_open(sysdsa, keep);
    if (h.var < 0)
        return -h.var;
    int32_t n = markrows(uint32_t(h.var), keep), rc = drop_marked(&h, n, stopflag);
    if (rc)
        return rc;
    spout21fat(1, "(%d observation%s deleted)\n", n, plural(n));
    return 0;
}

}  // namespace

int32_t drop_vars(uint8_t *flags)
{
    // The hidden variable alone is no dataset.
    int32_t rc = 0, left = 0, hidden = *esamplename ? sysfindvar(esamplename) : 0;
    for (int32_t v = 1; v <= _Kvar; v++)
        left += !flags[v - 1] && v != hidden;
    if (hidden && !left)
        flags[hidden - 1] = 1;
    if (memchr(flags, 0, size_t(_Kvar)))
        rc = memchr(flags, 1, size_t(_Kvar)) ? dsa_drop(sysdsa, flags, true) : 0;
    else
        allgone();
    s_updata = newdata = true;
    return rc;
}

int32_t drop_marked(const dsa_delhandle *h, int32_t n, int32_t rc)
{
    if (!rc && n)
        rc = dsa_delete(sysdsa, h->var);
    dsa_delete_close(sysdsa, h);
    if (!rc && n)
        s_updata = newdata = true;
    return rc;
}

int32_t drop(int32_t keep)
{
    // Emptying or keeping all of an empty memory is nothing to complain about.
    if (!_Kvar && byvar < 2) {
        gettok_state at;
        ti_stattok(tokinfo, &at);
        bool all = !strcmp(ti_gettok(tokinfo, prsevar), "_all") && !*ti_gettok(tokinfo, prsevar);
        if (all && !keep)
            allgone();
        if (all)
            return 0;
        ti_resettok(tokinfo, &at);
    }
    parinfo->pi_vlist = parinfo->pi_if = parinfo->pi_in = PI_OK;
    parinfo->pi_blankall = 0;
    parinfo->pi_orin = 1;
    int32_t rc = ti_pi_parse(tokinfo, parinfo);
    if (rc)
        return rc;
    if (parinfo->pi_hasvlist && (parinfo->pi_hasif || parinfo->pi_hasin))
        return error(RC_SYNTAX);
    return parinfo->pi_hasvlist ? dropvars(keep != 0) : droprows(keep != 0);
}
