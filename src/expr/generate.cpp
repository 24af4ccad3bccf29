// generate: a new variable and the observation loop that fills it.
#include "expr/generate.h"
#include "core/mem.h"
#include "core/progress.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/variables.h"
#include "expr/parse.h"
#include "expr/rows.h"
#include "expr/varlist.h"
#include "interp/messages.h"
#include "output/fmt.h"
#include "output/print.h"
#include <cstring>

int32_t byKvaronexit = -1;

// What the first by group settles, for all of them.
static struct {
    bool strplain;  // str without a width: as wide as the values need
    bool typed;     // a type was typed
    int64_t nmiss;
} g;

// Looks one token ahead for a type. str alone is taken; the parser reads the others.
static void lookfortype(toktype *ti)
{
    g.strplain = g.typed = false;
    gettok_state at;
    ti_stattok(ti, &at);
    const char *word = ti_gettok(ti, prsestd);
    char next = ti_peektok_chr(ti);
    if (!strcmp(word, "str") && next != '=' && next) {
        g.strplain = g.typed = true;
        return;
    }
    g.typed = next != '=' && type_ofword(word) != 0;
    ti_resettok(ti, &at);
}

// Makes the last variable again as a string of one character, under its name.
static int32_t remakestr(int32_t *var)
{
    char name[33];
    strcpy(name, _varlist[*var - 1]);
    dsa_truncate_var(sysdsa, uint32_t(*var - 1), false);
    int32_t made = addvar(1, name);
    if (made < 0)
        return -made;
    *var = made;
    parinfo->vl_vr[0] = made;
    return 0;
}

// Brings the type of the variable and that of the expression together.
static int32_t settletype(int32_t *var)
{
    bool strexp = parinfo->wepgm->restype == XR_STR, strvar = t_isstr(_typlist[*var - 1]);
    if (g.strplain)
        return strexp ? remakestr(var) : error(RC_TYPE);
    if (strexp == strvar)
        return 0;
    if (g.typed || strvar || vernum < 800)
        return error(RC_TYPE);
    g.strplain = true;
    return remakestr(var);
}

static void fillmissing(int32_t var, int32_t from, int32_t to)
{
    uint8_t type = _typlist[var - 1];
    rowwalk w;
    for (int32_t obs = from; obs <= to; obs++) {
        char *at = rw_at(&w, var, obs);
        if (t_isstr(type))
            memset(at, 0, type);
        else
            cell_store(misval, type, at);
    }
    if (to >= from)
        g.nmiss += int64_t(to) - from + 1;
}

// The loop for one type. Everything that does not change from row to row is outside; a break
// is looked for at each new run of rows.
template <uint8_t TYPE> static void fillnum(int32_t var, int32_t obs1, int32_t obs2)
{
    int64_t nmiss = 0;
    rowwalk w;
    rowvalues v;
    rv_open(&v, parinfo->wepgm, obs2);
    for (int32_t obs = obs1; obs <= obs2; obs++) {
        char *at = rw_at(&w, var, obs);
        double z = rv_selected(&v, obs) ? rv_value(&v, obs) : misval;
        nmiss += z >= misval;
        num_store<TYPE>(z, at);
        if (w.left == 0 && progress_poll("generating", obs, obs2))
            break;
    }
    g.nmiss += nmiss;
}

static void fillnumber(int32_t var, int32_t obs1, int32_t obs2)
{
    switch (_typlist[var - 1]) {
    case T_BYTE: return fillnum<T_BYTE>(var, obs1, obs2);
    case T_INT: return fillnum<T_INT>(var, obs1, obs2);
    case T_LONG: return fillnum<T_LONG>(var, obs1, obs2);
    case T_FLOAT: return fillnum<T_FLOAT>(var, obs1, obs2);
    default: return fillnum<T_DOUBLE>(var, obs1, obs2);
    }
}

static int32_t fillstring(int32_t var, int32_t obs1, int32_t obs2)
{
    char buf[246];
    for (int32_t obs = obs1; obs <= obs2; obs++) {
        if (selobs(obs))
            sxeq(parinfo->wepgm, obs, buf);
        else
            *buf = '\0';
        if (!*buf)
            g.nmiss++;
        if (g.strplain) {
            auto len = int32_t(strlen(buf));
            int32_t rc = len > _typlist[var - 1] ? doupstr(var, len) : 0;
            if (rc > 0)
                return rc;
        }
        dsa_safe_sstore(sysdsa, uint32_t(var), uint32_t(obs), buf);
        if ((obs & 0xfff) == 0 && progress_poll("generating", obs, obs2))
            break;
    }
    return 0;
}

static int32_t parsegen()
{
    parinfo->pi_vlist = parinfo->pi_if = parinfo->pi_in = parinfo->pi_by = parinfo->pi_opts = PI_OK;
    parinfo->pi_exp = PI_REQ;
    parinfo->pi_exptype = W_ANY;
    parinfo->pi_blankall = 0;
    pi_vlmode = VL_NEW1;
    int32_t rc = ti_pi_parse(tokinfo, parinfo);
    return rc ? rc : ti_pi_chkopt(tokinfo, parinfo);
}

int32_t gen(int32_t)
{
    if (byvar == 1)
        byKvaronexit = _Kvar;
    if (byvar < 2)
        lookfortype(tokinfo);
    int32_t rc = parsegen();
    if (rc)
        return rc;
    int32_t var = parinfo->vl_vr[0];
    if (byvar < 2 && (rc = settletype(&var)))
        return rc;
    s_updata = true;
    int32_t obs1 = parinfo->pi_obs1, obs2 = parinfo->pi_obs2;
    if (byvar < 2)
        g.nmiss = 0;
    if (!byvar) {
        fillmissing(var, 1, obs1 - 1);
        fillmissing(var, obs2 + 1, _Nobs);
    }
    if (t_isstr(_typlist[var - 1]))
        rc = fillstring(var, obs1, obs2);
    else
        fillnumber(var, obs1, obs2);
    if (rc)
        return rc;
    if (stopflag)
        return stopflag;
    _i_Kvar = _Kvar;
    if (out_shown(2) && (!byvar || lastby))
        missmsg(int32_t(g.nmiss), true);
    newdata = true;
    return 0;
}
