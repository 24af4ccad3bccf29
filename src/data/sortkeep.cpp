// data/sortkeep.cpp - the order of the rows, set aside and brought back.
//
// The order is kept as a variable with the row numbers, which travels with the rows, and the
// sort list as names. Each level of keeping has a variable of its own.
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/sort.h"
#include "data/variables.h"
#include "interp/messages.h"
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

int32_t (*sort_onpreserve)(const char *name);

struct keptorder {
    char name[33];
    std::vector<std::string> keys;
};
static std::vector<keptorder> kept;

static void index_name(char *out, size_t level)
{
    snprintf(out, 33, "__sort%d", int(level));
}

bool sort_holds(const char *name)
{
    for (const keptorder &k : kept)
        if (!strcmp(k.name, name))
            return true;
    return false;
}

int32_t sort_preserve()
{
    keptorder k;
    index_name(k.name, kept.size() + 1);
    for (int32_t i = 0; _srtlist[i]; i++)
        k.keys.emplace_back(_varlist[_srtlist[i] - 1]);
    // One that came in with a dataset is nobody's.
    if (int32_t stray = sysfindvar(k.name))
        (void)!dsa_drop_one_var(sysdsa, uint32_t(stray), false);
    if (_Kvar > 0) {
        int32_t var = addwrkvar(T_LONG, 1);
        if (var < 0)
            return -var;
        snprintf(_varlist[var - 1], 33, "%s", k.name);
        for (int32_t i = 1; i <= _Nobs; i++)
            dsa_istore(i, sysdsa, uint32_t(var), uint32_t(i));
        _i_Kvar = _Kvar;
    }
    int32_t rc = sort_onpreserve ? sort_onpreserve(k.name) : 0;
    if (rc) {
        if (int32_t var = sysfindvar(k.name))
            (void)!dsa_drop_one_var(sysdsa, uint32_t(var), false);
        return rc;
    }
    kept.push_back(k);
    return 0;
}

int32_t sort_restore(bool back)
{
    if (kept.empty())
        return error(9196);
    keptorder k = kept.back();
    kept.pop_back();
    int32_t var = sysfindvar(k.name);
    if (var == 0)
        return back && _Kvar > 0 ? error(196) : 0;
    int32_t rc = 0;
    if (back) {
        rc = sort_obs(&var, 1, 1, _Nobs, false, SORT_AUTO);
        int32_t n = 0;
        _srtlist[0] = 0;
        // As much of the list as still names variables.
        for (const std::string &name : k.keys) {
            int32_t key = rc ? 0 : sysfindvar(name.c_str());
            if (key == 0)
                break;
            _srtlist[n++] = int16_t(key);
            _srtlist[n] = 0;
        }
    }
    int32_t dropped = dsa_drop_one_var(sysdsa, uint32_t(var), false);
    return rc ? rc : dropped;
}
