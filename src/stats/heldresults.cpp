// Whole sets of results set aside under a name. A set is a slot of types among those of held
// objects: the seven of its store, four more of estimates, and a record that names the set.
#include "core/rc.h"
#include "core/state.h"
#include "interp/dm.h"
#include "data/dsa.h"
#include "data/variables.h"
#include "output/print.h"
#include "stats/esample.h"
#include "stats/results.h"
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

static constexpr int32_t slotlen = 12, nslot = (DM_HELD_LAST - DM_HELD_FIRST + 1) / slotlen;
static constexpr int32_t rtypes[slotlen] = {DM_RSCALAR, DM_RMACRO, DM_RMATRIX, DM_RMATROWS,
                                            DM_RMATCOLS, DM_RAUX1, DM_RAUX2, -1, -1, -1, -1, -1};
static constexpr int32_t etypes[slotlen] = {
    DM_ESCALAR, DM_EMACRO, DM_EMATRIX,   DM_EMATROWS, DM_EMATCOLS, DM_EAUX1,
    DM_EAUX2,   DM_ESTIMATES, DM_ESTMAT, DM_ESTAUX1,  DM_ESTAUX2,  -1};

// The naming record: level in aux, kind in a; its payload is the name of the e(sample)
// variable and lastest.
struct heldinfo {
    char sample[33];
    uint8_t lastest;
};

static int32_t slot_type(int32_t slot) { return DM_HELD_FIRST + slot * slotlen; }
static dmrec *slot_rec(int32_t slot) { return dm_dtyp[slot_type(slot) + slotlen - 1]; }

static int32_t find_slot(const char *name, int32_t kind)
{
    for (int32_t s = 0; s < nslot; s++) {
        dmrec *r = slot_rec(s);
        if (r && r->a == kind && !strcmp(r->name, name))
            return s;
    }
    return -1;
}

static void empty_slot(int32_t slot)
{
    for (int32_t i = 0; i < slotlen; i++)
        dmzap(slot_type(slot) + i);
}

// ---- the sample variable of a set: _est_NAME while it is held

static int32_t sample_name(const char *name, char out[33])
{
    *out = 0;
    if (!*esamplename || !sysfindvar(esamplename))
        return 0;
    snprintf(out, 33, "_est_%.27s", name);
    return sysfindvar(out) ? RC_EXISTS : 0;
}

static void sample_hide(const char *name)
{
    int32_t var = *esamplename ? sysfindvar(esamplename) : 0;
    if (var > 0 && *name) {
        memcpy(_varlist[var - 1], name, 33);
        newdata = true;
    }
    *esamplename = 0;
}

static int32_t sample_back(const char *name, bool keep)
{
    int32_t var = *name ? sysfindvar(name) : 0;
    if (!var) {
        esample_drop();
        return 0;
    }
    if (!keep)
        return esample_take(var);
    std::vector<uint8_t> mark(size_t(_Nobs) + 1);
    for (int32_t obs = 1; obs <= _Nobs; obs++)
        mark[size_t(obs)] = dsa_data(sysdsa, uint32_t(var), uint32_t(obs)) == 1;
    return esample_set(mark.data());
}

static void drop_slot(int32_t slot)
{
    dmrec *r = slot_rec(slot);
    if (r->a == RK_E) {
        auto info = static_cast<const heldinfo *>(dm_payload(r));
        int32_t var = *info->sample ? sysfindvar(info->sample) : 0;
        if (var && dsa_drop_one_var(sysdsa, uint32_t(var), true))
            var = 0;
    }
    empty_slot(slot);
}

int32_t held_hold(int32_t kind, const char *name, bool permanent)
{
    char sample[33] = "";
    if (kind == RK_E && sample_name(name, sample))
        return RC_EXISTS;
    if (find_slot(name, kind) >= 0)
        return RC_EXISTS;
    int32_t slot = 0;
    while (slot < nslot && slot_rec(slot))
        slot++;
    if (slot == nslot)
        return RC_LIMIT;
    if (kind == RK_R ? retval_internal_to_dynamic() : estval_internal_to_dynamic())
        return RC_DMMEM;
    heldinfo info = {};
    if (kind == RK_E) {
        memcpy(info.sample, sample, sizeof info.sample);
        info.lastest = lastest;
    }
    if (dmsave23(name, slot_type(slot) + slotlen - 1, permanent ? 0 : typelmac, int16_t(kind), -1, &info,
                 sizeof info))
        return RC_DMMEM;
    const int32_t *types = kind == RK_R ? rtypes : etypes;
    for (int32_t i = 0; i < slotlen - 1; i++)
        if (types[i] >= 0)
            dmretypeall(types[i], slot_type(slot) + i);
    if (kind == RK_R)
        retval_zap();
    else {
        sample_hide(sample);
        estval_clear();
    }
    return 0;
}

int32_t held_restore(int32_t kind, const char *name, bool keep)
{
    int32_t slot = find_slot(name, kind);
    if (slot < 0)
        return RC_NOTFOUND;
    auto info = static_cast<heldinfo *>(dm_payload(slot_rec(slot)));
    const int32_t *types = kind == RK_R ? rtypes : etypes;
    if (kind == RK_R)
        retval_zap();
    else
        estval_clear();
    for (int32_t i = 0; i < slotlen - 1; i++) {
        if (types[i] < 0)
            continue;
        if (!keep) {
            dmretypeall(slot_type(slot) + i, types[i]);
            continue;
        }
        std::vector<dmrec *> oldest_first;  // new ones come to stand in front
        for (dmrec *r = dm_dtyp[slot_type(slot) + i]; r; r = r->tnext)
            oldest_first.insert(oldest_first.begin(), r);
        for (dmrec *r : oldest_first)
            if (dmcp(dm_payload(r), r->name, types[i]))
                return RC_DMMEM;
    }
    if (kind == RK_R)
        retval_mark_dm();
    else {
        lastest = info->lastest;
        if (int32_t rc = sample_back(info->sample, keep))
            return rc;
    }
    if (!keep)
        empty_slot(slot);
    return 0;
}

int32_t held_drop(int32_t kind, const char *name)
{
    int32_t found = RC_NOTFOUND;
    bool all = !strcmp(name, "_all");
    for (int32_t s = 0; s < nslot; s++) {
        dmrec *r = slot_rec(s);
        if (r && r->a == kind && (all || !strcmp(r->name, name))) {
            drop_slot(s);
            found = 0;
        }
    }
    return all ? 0 : found;
}

void held_droplevel(int32_t kind, int32_t level)
{
    for (int32_t s = 0; s < nslot; s++) {
        dmrec *r = slot_rec(s);
        if (r && r->a == kind && r->aux >= level)
            drop_slot(s);
    }
}

int32_t held_dir(int32_t kind)
{
    outlev_keep level(0);
    std::string permanent;
    for (int32_t s = 0; s < nslot; s++) {
        dmrec *r = slot_rec(s);
        if (!r || r->a != kind)
            continue;
        if (r->aux == 0)
            permanent += (permanent.empty() ? "" : " ") + std::string(r->name);
        if (spout21f("%12s%s\n", "", r->name))
            return stopflag;
    }
    if (kind == RK_E) {
        retval_clear();
        retval_set_glocal("names", permanent.c_str());
    }
    return 0;
}

bool held_last(int32_t kind, int32_t level, char *name)
{
    for (int32_t s = nslot - 1; s >= 0; s--) {
        dmrec *r = slot_rec(s);
        if (r && r->a == kind && r->aux == level) {
            memcpy(name, r->name, sizeof r->name);
            return true;
        }
    }
    return false;
}
