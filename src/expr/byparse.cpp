// The parse of the first by group, kept for the groups after it.
#include "core/rc.h"
#include "core/state.h"
#include "core/limits.h"
#include "expr/parse.h"
#include "interp/dm.h"
#include "interp/messages.h"
#include "varlist/terms.h"
#include <cstdint>
#include <cstring>
#include <initializer_list>

// Everything of one parse that the text decided, in one block; behind it stand the variable
// numbers, the recipes and the text of the options. Positions of options are offsets into
// that text, so that nothing here points into the command line.
struct keptparse {
    int32_t ntsop, nvar, nopt, textlen;
    int32_t optat[pi_maxopt];
    uint8_t optseen[pi_maxopt];
    void *fvtoc;
    uint8_t hasvlist, hasif, hasexp, wtype, wtype_typed, oldwgt;
    xeqpgm ifpgm, wepgm;
    litpools pools;
    char using_name[500];
};
static const char keptname[] = "symbol";

// The options of a replayed parse point here.
static char opttext[conslen + 1];

void rmvlist()
{
    while (void *p = dmfind0(keptname, DM_VARLIST))
        dmrm(p);
}

static int32_t keepparse(const toktype *ti, const parinfo_t *pi)
{
    rmvlist();
    const char *base = pi->pi_nopt ? pi->pi_optat[0] : ti->c_ptr;
    size_t textlen = pi->pi_nopt ? strnlen(base, conslen) : 0;
    size_t vrlen = sizeof(int32_t) * size_t(pi->pi_nvar);
    size_t rcplen = sizeof(vlrecipe) * size_t(pi->pi_nvar);
    void *block = dmadd(keptname, DM_VARLIST, 0, sizeof(keptparse) + vrlen + rcplen + textlen + 1);
    if (!block)
        return RC_DMMEM;
    auto k = static_cast<keptparse *>(block);
    k->ntsop = pi->pi_ntsop;
    k->nvar = pi->pi_nvar;
    k->nopt = pi->pi_nopt;
    k->textlen = int32_t(textlen);
    for (int32_t i = 0; i < pi->pi_nopt; i++)
        k->optat[i] = int32_t(pi->pi_optat[i] - base);
    memcpy(k->optseen, pi->pi_optseen, sizeof k->optseen);
    k->fvtoc = pi->pi_fvtoc;
    k->hasvlist = pi->pi_hasvlist;
    k->hasif = pi->pi_hasif;
    k->hasexp = pi->pi_hasexp;
    k->wtype = pi->pi_wtype;
    k->wtype_typed = pi->pi_wtype_typed;
    k->oldwgt = pi->pi_oldwgt;
    k->ifpgm = *pi->ifpgm;
    k->wepgm = *pi->wepgm;
    for (xeqpgm *pgm : {&k->ifpgm, &k->wepgm})
        pgm->tokbeg = pgm->tokend = nullptr;
    pools_save(&k->pools);
    memcpy(k->using_name, pi->pi_using_name, sizeof k->using_name);
    char *tail = reinterpret_cast<char *>(k + 1);
    memcpy(tail, pi->vl_vr, vrlen);
    memcpy(tail + vrlen, pi->vl_rcp, rcplen);
    memcpy(tail + vrlen + rcplen, base, textlen);
    return 0;
}

static int32_t pi_loadvlist(parinfo_t *pi)
{
    auto k = static_cast<const keptparse *>(dmfind0(keptname, DM_VARLIST));
    if (!k)
        return error(RC_BY);
    size_t vrlen = sizeof(int32_t) * size_t(k->nvar), rcplen = sizeof(vlrecipe) * size_t(k->nvar);
    const char *tail = reinterpret_cast<const char *>(k + 1);
    pi->pi_ntsop = k->ntsop;
    pi->pi_nvar = k->nvar;
    pi->pi_fvtoc = k->fvtoc;
    pi->pi_hasvlist = k->hasvlist;
    pi->pi_hasif = k->hasif;
    pi->pi_hasexp = k->hasexp;
    pi->pi_wtype = k->wtype;
    pi->pi_wtype_typed = k->wtype_typed;
    pi->pi_oldwgt = k->oldwgt;
    *pi->ifpgm = k->ifpgm;
    *pi->wepgm = k->wepgm;
    pools_restore(&k->pools);
    memcpy(pi->pi_using_name, k->using_name, sizeof k->using_name);
    memcpy(pi->vl_vr, tail, vrlen);
    memcpy(pi->vl_rcp, tail + vrlen, rcplen);
    memcpy(opttext, tail + vrlen + rcplen, size_t(k->textlen));
    opttext[k->textlen] = '\0';
    pi->pi_nopt = k->nopt;
    for (int32_t i = 0; i < k->nopt; i++)
        pi->pi_optat[i] = opttext + k->optat[i];
    memcpy(pi->pi_optseen, k->optseen, sizeof k->optseen);
    pi->pi_obs1 = nobss1;
    pi->pi_obs2 = nobss2;
    pi->pi_hasin = 1;
    return 0;
}

int32_t ti_pi_parse(toktype *ti, parinfo_t *pi)
{
    pi_initialize_xeq(pi);
    pi->pi_fvtoc = nullptr;
    if (byvar == 2) {
        int32_t rc = pi_loadvlist(pi);
        if (lastby)
            rmvlist();
        return rc || !pi->pi_fvtoc ? rc : pi_fvexpand(pi);
    }
    int32_t rc = ti_parse1(ti, pi);
    if (!rc && byvar && !lastby)
        rc = keepparse(ti, pi);
    // Each group has its own levels, so that terms are written out anew.
    return rc || !pi->pi_fvtoc ? rc : pi_fvexpand(pi);
}
