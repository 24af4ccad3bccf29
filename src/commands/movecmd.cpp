// commands/movecmd.cpp - move varname1 varname2: the first takes the place of the second.
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "expr/parse.h"
#include "interp/messages.h"

int32_t movecmd(int32_t);
int32_t movecmd(int32_t)
{
    parinfo->pi_vlist = PI_REQ;
    parinfo->pi_if = parinfo->pi_in = parinfo->pi_opts = PI_NO;
    int32_t rc = ti_pi_parse(tokinfo, parinfo);
    if (rc)
        return rc;
    if (parinfo->pi_nvar != 2)
        return error(parinfo->pi_nvar < 2 ? 102 : 103);
    int32_t from = parinfo->vl_vr[0], to = parinfo->vl_vr[1];
    if (from == to)
        return 0;
    s_updata = newdata = true;
    return pi_dsa_mvvar(sysdsa, uint32_t(from), uint32_t(to), nullptr);
}
