// commands/compresscmd.cpp - compress: the smallest type that holds every value. With to() it
// gives a type that is named, as recast asks for.
#include "core/mem.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/sort.h"
#include "expr/generate.h"
#include "expr/parse.h"
#include "interp/messages.h"
#include "output/fmt.h"
#include "output/print.h"
#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

// A missing value that the integer types can hold too.
bool plainmissing(double z)
{
    int k = mis_letter(z);
    return k <= 26 && mis_of(k) == z;
}

uint8_t smallestnum(uint32_t var, uint8_t type)
{
    uint8_t need = T_BYTE;
    for (int32_t obs = 1; obs <= _Nobs && need < type; obs++) {
        double z = dsa_data(sysdsa, var, uint32_t(obs));
        if (z >= misval ? !plainmissing(z) : z != std::trunc(z) || (z == 0 && std::signbit(z)))
            return type;
        need = promoted_vartype(z, need);
        if (fault_poll())
            return type;
    }
    return std::min(need, type);
}

uint8_t smalleststr(uint32_t var)
{
    char buf[246];
    size_t need = 1;
    for (int32_t obs = 1; obs <= _Nobs && need < _typlist[var - 1]; obs++) {
        need = std::max(need, strlen(dsa_sdata(sysdsa, var, uint32_t(obs), buf)));
        if (fault_poll())
            return _typlist[var - 1];
    }
    return uint8_t(need);
}

// A format nobody chose follows the width of the strings.
int32_t retype(int32_t var, uint8_t type)
{
    uint8_t old = _typlist[var - 1];
    char dflt[8];
    bool plain = t_isstr(old) && !strcmp(_fmtlist[var - 1], fmt_default(old, dflt));
    int32_t rc = change_vartype(var, type, _Nobs);
    if (rc)
        return rc;
    if (plain)
        strcpy(_fmtlist[var - 1], fmt_default(type, dflt));
    s_updata = newdata = true;
    return 0;
}

int32_t shrink(int32_t var)
{
    uint8_t old = _typlist[var - 1];
    uint8_t type = t_isstr(old) ? smalleststr(uint32_t(var)) : smallestnum(uint32_t(var), old);
    if (stopflag)
        return stopflag;
    // A float that holds a long's values keeps them; the long would be no smaller.
    if (type == old || (old == T_FLOAT && type == T_LONG))
        return 0;
    int32_t rc = retype(var, type);
    if (!rc)
        tmsg(_varlist[var - 1], old, type);
    return rc;
}

// Values that would come back different from a type.
int32_t losses(uint32_t var, uint8_t type)
{
    char buf[246];
    int32_t n = 0;
    for (int32_t obs = 1; obs <= _Nobs && !fault_poll(); obs++) {
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
    int32_t rc = retype(var, type);
    if (!rc && n) {
        pi_chksort(var);
        spout21fat(1, "%s:  %d value%s changed\n", _varlist[var - 1], n, plural(n));
    }
    return rc;
}

int32_t recastall(const char *word, bool force)
{
    uint8_t type = type_ofword(word);
    if (!type)
        return errout(RC_SYNTAX, "%s is no storage type\n", word);
    for (int32_t i = 0; i < parinfo->pi_nvar; i++)
        if (t_isstr(_typlist[parinfo->vl_vr[i] - 1]) != t_isstr(type))
            return error(RC_TYPE);
    for (int32_t i = 0; i < parinfo->pi_nvar; i++)
        if (int32_t rc = recast(parinfo->vl_vr[i], type, force))
            return rc;
    return 0;
}

}  // namespace

int32_t compresscmd(int32_t)
{
    parinfo->pi_vlist = parinfo->pi_opts = PI_OK;
    int32_t rc = ti_pi_parse(tokinfo, parinfo);
    if (rc)
        return rc;
    char word[33];
    bool to = ti_pi_findargn(tokinfo, parinfo, "to", 2, word, sizeof word, 1) == 1;
    bool force = to && ti_pi_findopt(tokinfo, parinfo, "force", 5, 0) == 1;
    if ((rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    if (to)
        return recastall(word, force);
    for (int32_t i = 0; i < parinfo->pi_nvar; i++)
        if ((rc = shrink(parinfo->vl_vr[i])))
            return rc;
    return 0;
}
