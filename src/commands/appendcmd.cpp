// commands/appendcmd.cpp - _append using FILE [, keep(varlist) generate(name) nolabel nonotes
// force]: the rows of a file behind those in memory.
//
// Variables are matched by name. What only one side has is missing in the rows of the other;
// where both have a label or a characteristic, memory's stands.
#include "commands/sidejoin.h"
#include "core/mem.h"
#include "core/progress.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/variables.h"
#include "expr/parse.h"
#include "interp/messages.h"
#include <cstring>

namespace {

struct appendopts {
    bool label, notes, force;
    char source[33];  // variable that tells where a row came from, or empty
};

// Options are claimed before the file is opened, but what they list is the file's.
int32_t parse(appendopts *o)
{
    parinfo->pi_vlist = parinfo->pi_if = parinfo->pi_in = parinfo->pi_exp = parinfo->pi_wgt =
        PI_NO;
    parinfo->pi_using = PI_REQ;
    parinfo->pi_opts = PI_OK;
    int32_t rc = ti_pi_parse(tokinfo, parinfo);
    if (rc)
        return rc;
    char list[macrolen];
    o->label = ti_pi_findopt(tokinfo, parinfo, "label", 3, 1);
    o->notes = ti_pi_findopt(tokinfo, parinfo, "notes", 4, 1);
    o->force = ti_pi_findopt(tokinfo, parinfo, "force", 5, 0);
    *o->source = 0;
    ti_pi_findargn(tokinfo, parinfo, "generate", 3, o->source, sizeof o->source, 1);
    ti_pi_findargasis(tokinfo, parinfo, "keep", 4, list, sizeof list);
    if ((rc = ti_pi_chkopt(tokinfo, parinfo)) || !*o->source)
        return rc;
    return sysfindvar(o->source) ? error2(3, o->source) : chkname(o->source, false);
}

int32_t add_source(const char *name, int32_t before)
{
    int32_t var = addvar(T_BYTE, name);
    if (var < 0)
        return -var;
    _i_Kvar = _Kvar;
    for (int32_t i = 1; i <= _Nobs; i++)
        dsa_store(i > before, sysdsa, uint32_t(var), uint32_t(i));
    return 0;
}

int32_t rows(const dtaside *u, const std::vector<joinvar> &list, int32_t before)
{
    if (u->d.N == 0)
        return 0;
    int32_t rc = dsa_add_obs(sysdsa, u->d.N, true);
    if (rc)
        return rc;
    _srtlist[0] = 0;
    upSort = true;
    for (int32_t i = 0; i < u->d.N; i++) {
        for (const joinvar &v : list)
            join_put(u, &v, i, before + i + 1);
        if ((i & 0xfff) == 0 && progress_poll("appending", i, u->d.N))
            return RC_BREAK;
    }
    return 0;
}

int32_t append(dtaside *u, const appendopts &o)
{
    std::vector<uint8_t> wanted;
    std::vector<joinvar> list;
    int32_t K = _Kvar, N = _Nobs;
    int32_t rc = join_wanted(&u->d, "keep", &wanted);
    if (!rc)
        rc = join_match(u, wanted, o.force, &list);
    if (!rc)
        rc = join_room(u, list, *o.source, u->d.N);
    if (rc)
        return rc;
    int16_t sorted = _Kvar ? _srtlist[0] : int16_t(0);
    if (!(rc = join_ready(u, &list)) && !(rc = rows(u, list, N)) && *o.source)
        rc = add_source(o.source, N);
    if (rc) {
        // Back to the rows and variables there were.
        dsa_truncate_obs(sysdsa, uint32_t(N));
        dsa_truncate_var(sysdsa, uint32_t(K), true);
        _i_Kvar = _Kvar;
        if (K)
            _srtlist[0] = sorted;
        return rc;
    }
    s_updata = newdata = true;
    if (!(rc = join_chars(u, list, o.notes)) && o.label)
        rc = join_labels(u);
    return rc;
}

}  // namespace

int32_t appendcmd(int32_t);
int32_t appendcmd(int32_t)
{
    appendopts o;
    int32_t rc = parse(&o);
    if (rc)
        return rc;
    dtaside u;
    rc = side_load(join_file().c_str(), &u);
    return rc ? rc : append(&u, o);
}
