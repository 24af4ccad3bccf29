// expr/exptext.cpp - an expression in a text at hand: compiled, run once, forgotten.
#include "core/rc.h"
#include "core/state.h"
#include "expr/parse.h"
#include "interp/messages.h"
#include <cstring>

int32_t exp_text(const char *text, int32_t wanted, bool *isstr, double *num, char *str)
{
    litpools pools;
    pools_save(&pools);
    initialize_compexp_shared();
    toktype ti;
    xeqpgm pgm;
    // The scan does not write: the tokeniser's pointer is for callers that do.
    ti_settok(&ti, const_cast<char *>(text));
    int32_t rc = ti_compexp(&ti, &pgm, wanted, false, false, nullptr, 0);
    if (!rc && ti_peektok_chr(&ti))
        rc = error(RC_SYNTAX);
    if (!rc) {
        pgm.obs1 = pgm.obs2 = 1;
        *isstr = pgm.restype == XR_STR;
        if (*isstr) {
            int32_t obs1 = parinfo->pi_obs1, obs2 = parinfo->pi_obs2;
            parinfo->pi_obs1 = parinfo->pi_obs2 = 1;
            sxeq(&pgm, 1, str);
            parinfo->pi_obs1 = obs1;
            parinfo->pi_obs2 = obs2;
        } else
            *num = xeqforby(&pgm, 1);
    }
    pools_restore(&pools);
    return rc;
}
