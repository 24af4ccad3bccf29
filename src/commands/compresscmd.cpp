// commands/compresscmd.cpp - compress: the smallest type that holds every value.
#include "core/mem.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "expr/generate.h"
#include "expr/parse.h"
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

int32_t shrink(int32_t var)
{
    uint8_t old = _typlist[var - 1];
    uint8_t type = t_isstr(old) ? smalleststr(uint32_t(var)) : smallestnum(uint32_t(var), old);
    if (stopflag)
        return stopflag;
    // A float that holds a long's values keeps them; the long would be no smaller.
    if (type == old || (old == T_FLOAT && type == T_LONG))
        return 0;
    int32_t rc = change_vartype_fmt(var, type);
    if (!rc)
        tmsg(_varlist[var - 1], old, type);
    return rc;
}

}  // namespace

int32_t compresscmd(int32_t)
{
    parinfo->pi_vlist = PI_OK;
    int32_t rc = ti_pi_parse(tokinfo, parinfo);
    if (rc)
        return rc;
    for (int32_t i = 0; i < parinfo->pi_nvar; i++)
        if ((rc = shrink(parinfo->vl_vr[i])))
            return rc;
    return 0;
}
