// commands/sortcmd.cpp - sort varlist [in range] [, stable _ivec _ivar _swap index(name)].
#include "core/numtext.h"
#include "core/rc.h"
#include "core/settings.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/sort.h"
#include "expr/parse.h"
#include "interp/macros.h"
#include "interp/messages.h"

int32_t sort(int32_t);

// The kept order is told to the program that runs, in a macro of its level.
static int32_t publish(const char *name) { return macresave("__sortindex", name); }
[[maybe_unused]] static const bool published = (sort_onpreserve = publish, true);

// set sortseed #: 0 to 2147483647, as the generator of the shuffle holds it.
static int32_t on_sortseed(const setting *, const char *text)
{
    int32_t seed;
    if (cnvstoint4(text, &seed) || seed < 0)
        return errout(RC_SYNTAX, "sortseed must be an integer between 0 and 2147483647\n");
    setsortseed(uint32_t(seed));
    return 0;
}
[[maybe_unused]] static const bool seeded = (set_hooks[SH_SORTSEED] = on_sortseed, true);

int32_t sort(int32_t)
{
    toktype *ti = tokinfo;
    parinfo_t *pi = parinfo;
    pi->pi_vlist = pi->pi_in = pi->pi_opts = PI_OK;
    pi->pi_if = pi->pi_by = PI_NO;
    int32_t rc = ti_pi_parse(ti, pi);
    if (rc)
        return rc;
    char index[33];
    bool stable = ti_pi_findopt(ti, pi, "stable", 5, 0);
    bool ivec = ti_pi_findopt(ti, pi, "_ivec", 5, 0), ivar = ti_pi_findopt(ti, pi, "_ivar", 5, 0);
    bool swap = ti_pi_findopt(ti, pi, "_swap", 5, 0);
    bool byindex = ti_pi_findargn(ti, pi, "index", 5, index, sizeof index, 1);
    if ((rc = ti_pi_chkopt(ti, pi)))
        return rc;
    if (byindex) {
        if (pi->pi_hasin || stable)
            return error(RC_SYNTAX);
        return sysidxsort(index, true);
    }
    if (!pi->pi_hasvlist || pi->pi_nvar < 1)
        return required("varlist");
    int32_t mode = ivec ? SORT_IVEC : ivar ? SORT_IVAR : swap ? SORT_SWAP : SORT_AUTO;
    // The range is in the dataset's numbers; an empty dataset has nothing to move.
    return sort_obs(pi->vl_vr, pi->pi_nvar, pi->pi_obs1, pi->pi_obs2, stable, mode);
}
