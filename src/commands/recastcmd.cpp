// commands/recastcmd.cpp - _recast: a named storage type.
#include "core/mem.h"
#include "core/progress.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/sort.h"
#include "expr/generate.h"
#include "expr/parse.h"
#include "interp/messages.h"
#include "output/fmt.h"
#include "output/print.h"
#include <cstdio>
#include <cstring>

namespace {

// Values that would come back different from a type.
int32_t losses(uint32_t var, uint8_t type)
{
    char buf[246];
    int32_t n = 0;
    for (int32_t obs = 1; obs <= _Nobs && !progress_poll("checking", obs, _Nobs); obs++) {
        if (t_isstr(type)) {
            n += strlen(dsa_sdata(sysdsa, var, uint32_t(obs), buf)) > type;
            continue;
        }
        double z = dsa_data(sysdsa, var, uint32_t(obs));
        alignas(8) char cell[8];
        cell_store(z, type, cell);
        n += cell_data(type, cell) != z;
    }
    return n;
}

int32_t recast(int32_t var, uint8_t type, bool force)
{
    if (_typlist[var - 1] == type)
        return 0;
    int32_t n = losses(uint32_t(var), type);
    if (stopflag)
        return stopflag;
    if (n && !force) {
        spout21fat(1, "%s:  %d value%s would be changed; not changed\n", _varlist[var - 1], n,
                   plural(n));
        return 0;
    }
    int32_t rc = change_vartype_fmt(var, type);
    if (!rc && n) {
        pi_chksort(var);
        spout21fat(1, "%s:  %d value%s changed\n", _varlist[var - 1], n, plural(n));
    }
    return rc;
}

int32_t recastall(uint8_t type, bool force)
{
    for (int32_t i = 0; i < parinfo->pi_nvar; i++)
        if (t_isstr(_typlist[parinfo->vl_vr[i] - 1]) != t_isstr(type))
            return error(RC_TYPE);
    for (int32_t i = 0; i < parinfo->pi_nvar; i++)
        if (int32_t rc = recast(parinfo->vl_vr[i], type, force))
            return rc;
    return 0;
}

}  // namespace

int32_t recastcmd(int32_t)
{
    char word[504];
    snprintf(word, sizeof word, "%s", tok_text(ti_gettok(tokinfo, prsestd)));
    uint8_t type = type_ofword(word);
    if (!type)
        return *word ? errout(RC_SYNTAX, "%s is not a storage type\n", word) : error(RC_SYNTAX);
    parinfo->pi_vlist = PI_REQ;
    parinfo->pi_opts = PI_OK;
    int32_t rc = ti_pi_parse(tokinfo, parinfo);
    if (rc)
        return rc;
    bool force = ti_pi_findopt(tokinfo, parinfo, "force", 5, 0) == 1;
    if ((rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    return recastall(type, force);
}
