// data/oldtypes.cpp - the single-missing types of old files, made modern after reading.
#include "core/mem.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa_int.h"
#include "data/labels.h"
#include "data/variables.h"
#include <vector>

uint8_t dsa_modernvartype(uint8_t type)
{
    return type >= T_BYTE110 && type <= T_DOUBLE110 ? uint8_t(type + (T_BYTE - T_BYTE110)) : type;
}

void dsa_map_vartypes_to_old(uint8_t *types, int32_t k)
{
    for (int32_t i = 0; i < k; i++)
        if (types[i] >= T_BYTE)
            types[i] = uint8_t(types[i] - (T_BYTE - T_BYTE110));
}

// Gives variable var another type: a new column at the end takes its values, its labels and
// its place.
static int32_t promote(uint32_t var, uint8_t type)
{
    dsa_area *d = sysdsa;
    char name[33], fmt[49], lbl[33], varlab[81];
    memcpy(name, d->name[var - 1], 33);
    memcpy(fmt, d->fmt[var - 1], 49);
    memcpy(lbl, d->lbl[var - 1], 33);
    getvarlab(int32_t(var), varlab);
    uint32_t limit = d->K_max;
    if (d->K >= limit)
        d->K_max = d->K + 1;
    int32_t rc = dsa_add_var(d, type, "", fmt);
    d->K_max = limit;
    if (rc)
        return rc;
    uint32_t to = d->K;
    for (uint32_t i = 1; i < d->_No_; i++) {
        dsa_store(dsa_data(d, var, i), d, to, i);
        if ((i & 4095) == 0 && fault_poll()) {
            dsa_truncate_var(d, to - 1, false);
            return RC_BREAK;
        }
    }
    // Characteristics and the label go by name, which the new column takes over.
    bool insort = false;
    std::vector<int16_t> list;
    for (uint32_t i = 0; d->srt[i]; i++) {
        list.push_back(d->srt[i]);
        insort |= uint32_t(d->srt[i]) == var;
    }
    (void)!dsa_drop_one_var(d, var, false);
    uint32_t at = d->K;
    memcpy(d->name[at - 1], name, 33);
    memcpy(d->lbl[at - 1], lbl, 33);
    (void)!pi_dsa_mvvar(d, at, var, nullptr);
    if (insort) {
        // Same values in the same order: the sort list stands as it was.
        memcpy(d->srt, list.data(), list.size() * sizeof(int16_t));
        d->srt[list.size()] = 0;
    }
    _i_Kvar = _Kvar;
    return putvarlab(int32_t(var), varlab);
}

static void rewrite_missing(uint32_t var, uint32_t obs, uint8_t old)
{
    dsa_area *d = sysdsa;
    d->typ[var - 1] = dsa_modernvartype(old);
    dsa_store(misval, d, var, obs);
    d->typ[var - 1] = old;
}

static int32_t fix_integer(uint32_t var, uint8_t old)
{
    static const double most[] = {max_ovbyte, max_ovint, max_ovlong};
    static const uint8_t wider[] = {T_INT, T_LONG, T_DOUBLE};
    dsa_area *d = sysdsa;
    bool missing = false;
    for (uint32_t i = 1; i < d->_No_; i++) {
        double z = dsa_data(d, var, i);
        if (ovismissing(z))
            missing = true;
        else if (z > most[old - T_BYTE110])
            return promote(var, wider[old - T_BYTE110]);
    }
    for (uint32_t i = 1; missing && i < d->_No_; i++)
        if (ovismissing(dsa_data(d, var, i)))
            rewrite_missing(var, i, old);
    d->typ[var - 1] = dsa_modernvartype(old);
    return 0;
}

static void fix_real(uint32_t var, uint8_t old)
{
    dsa_area *d = sysdsa;
    double most = old == T_FLOAT110 ? max_ovfloat : max_ovdouble;
    for (uint32_t i = 1; i < d->_No_; i++)
        // A pattern that is no number fails the comparison too.
        if (!(dsa_data(d, var, i) <= most))
            rewrite_missing(var, i, old);
    d->typ[var - 1] = dsa_modernvartype(old);
}

int32_t dsa_fix_old_vartypes()
{
    for (uint32_t k = 1; k <= sysdsa->K; k++) {
        uint8_t old = sysdsa->typ[k - 1];
        int32_t rc = 0;
        if (old == T_FLOAT110 || old == T_DOUBLE110)
            fix_real(k, old);
        else if (old >= T_BYTE110 && old <= T_LONG110)
            rc = fix_integer(k, old);
        if (rc)
            return rc;
    }
    return 0;
}
