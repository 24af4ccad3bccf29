// commands/expandcmd.cpp - expand [=]exp [if] [in] [, generate(name)]: so many rows of each.
//
// Under by the counts of all groups are gathered and the rows made with the last one, so that
// the groups still to come are not disturbed.
#include "core/mem.h"
#include "core/progress.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/variables.h"
#include "expr/generate.h"
#include "expr/parse.h"
#include "interp/messages.h"
#include "output/print.h"
#include <cstring>
#include <vector>

namespace {

struct {
    std::vector<int32_t> copies;  // rows to add for each observation, from 0
    char flag[33];
    int64_t nmissing, nlow, added;
} e;

int32_t parse(bool first)
{
    ti_pfixeq(tokinfo);
    parinfo->pi_vlist = PI_NO;
    parinfo->pi_exp = PI_REQ;
    parinfo->pi_if = parinfo->pi_in = parinfo->pi_opts = parinfo->pi_by = PI_OK;
    int32_t rc = ti_pi_parse(tokinfo, parinfo);
    if (rc)
        return rc;
    char flag[33];
    ti_pi_findargn(tokinfo, parinfo, "generate", 3, flag, sizeof flag, 1);
    if ((rc = ti_pi_chkopt(tokinfo, parinfo)) || !first)
        return rc;
    e = {};
    strcpy(e.flag, flag);
    e.copies.assign(size_t(_Nobs) + 1, 0);
    if (*flag && sysfindvar(flag))
        return error2(3, flag);
    return *flag ? chkname(flag, false) : 0;
}

int32_t count_group()
{
    for (int32_t obs = parinfo->pi_obs1; obs <= parinfo->pi_obs2; obs++) {
        if ((obs & 0xfff) == 0 && fault_poll())
            return RC_BREAK;
        if (!selobs(obs))
            continue;
        double z = pi_xeq(parinfo, parinfo->wepgm, obs);
        if (ovismissing(z)) {
            e.nmissing++;
        } else if (z < 1) {
            e.nlow++;
        } else {
            z = z < 2147483647 ? z : 2147483647;
            e.copies[size_t(obs)] = int32_t(z) - 1;
            e.added += int32_t(z) - 1;
        }
    }
    return 0;
}

void notes()
{
    if (e.nmissing)
        spout21fat(1, "(%lld missing count%s ignored; observation%s kept)\n",
                   (long long)e.nmissing, plural(e.nmissing), plural(e.nmissing));
    if (e.nlow)
        spout21fat(1, "(%lld count%s below 1 ignored; observation%s kept)\n", (long long)e.nlow,
                   plural(e.nlow), plural(e.nlow));
    spout21fat(1, "(%lld observation%s created)\n", (long long)e.added, plural(e.added));
}

int32_t make_rows()
{
    int32_t N = _Nobs, to = N;
    if (e.added > 2147483646 - int64_t(N))
        return error(RC_NOOBSROOM);
    // Room for all of it first, so that a refusal leaves no half of it behind.
    int32_t rc = dsa_alloc(sysdsa, *e.flag != 0, *e.flag != 0, e.added);
    if (!rc && e.added)
        rc = dsa_add_obs(sysdsa, e.added, false);
    if (rc)
        return rc;
    for (int32_t obs = 1; obs <= N; obs++)
        for (int32_t i = e.copies[size_t(obs)]; i > 0; i--) {
            dsa_cp_obs(sysdsa, uint32_t(++to), uint32_t(obs));
            if ((to & 0xfff) == 0 && progress_poll("expanding", obs, N)) {
                dsa_truncate_obs(sysdsa, uint32_t(N));
                return RC_BREAK;
            }
        }
    if (e.added) {
        _srtlist[0] = 0;
        s_updata = newdata = upSort = true;
    }
    if (!*e.flag)
        return 0;
    int32_t var = addvar(T_BYTE, e.flag);
    if (var < 0)
        return -var;
    _i_Kvar = _Kvar;
    for (int32_t obs = 1; obs <= _Nobs; obs++)
        dsa_bstore(obs > N, sysdsa, uint32_t(var), uint32_t(obs));
    s_updata = newdata = true;
    return 0;
}

}  // namespace

int32_t expandcmd(int32_t)
{
    int32_t rc = parse(byvar < 2);
    if (rc || (rc = count_group()) || (byvar && !lastby))
        return rc;
    if (!(rc = make_rows()))
        notes();
    return rc;
}
