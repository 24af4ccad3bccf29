// replace: new values for a variable, whose type widens when one does not fit.
#include "core/mem.h"
#include "core/progress.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/sort.h"
#include "data/variables.h"
#include "expr/generate.h"
#include "expr/parse.h"
#include "expr/rows.h"
#include "interp/messages.h"
#include "output/print.h"
#include <cmath>
#include <cstring>

// Counts over all by groups, and the type the first of them found.
static struct {
    int64_t changed, tomissing, truncated, turned;
    uint8_t oldtype;
} c;

// One run over a group. Rows are done in stretches: a stretch ends where the type changes,
// since the cells have then moved.
struct replacing {
    int32_t var, obs, obs2;
    bool promote, noroom;
    xeqpgm *pgm;
};

// A value that an integer type may hold at once; others take the long way.
template <uint8_t TYPE> inline bool holds(double z)
{
    constexpr double lo = TYPE == T_BYTE ? min_ovbyte : TYPE == T_INT ? min_ovint : min_ovlong;
    constexpr double hi = TYPE == T_BYTE ? max_ovbyte : TYPE == T_INT ? max_ovint : max_ovlong;
    return z >= lo && z <= hi && z == double(int32_t(z));
}

// The long way: widens the variable if that is wanted and possible. True when it did.
static bool storewide(replacing *r, double z)
{
    uint8_t type = _typlist[r->var - 1];
    auto obs = uint32_t(r->obs);
    bool widened = false;
    dsa_store(z, sysdsa, uint32_t(r->var), obs);
    if (r->promote) {
        uint8_t was = type;
        if (doupnum(z, r->var, &type)) {
            r->promote = false;
            r->noroom = !stopflag;
        } else if (type != was) {
            dsa_store(z, sysdsa, uint32_t(r->var), obs);
            widened = true;
        }
    }
    c.tomissing += z >= misval;
    c.changed++;
    if (type >= T_BYTE && type <= T_LONG) {
        double back = dsa_data(sysdsa, uint32_t(r->var), obs);
        if (back != z && back < misval)
            c.truncated++;
        else if (back != z) {
            c.turned++;
            c.tomissing++;
        }
    }
    return widened;
}

template <uint8_t TYPE> static void integers(replacing *r)
{
    rowwalk w;
    rowvalues v;
    rv_open(&v, r->pgm, r->obs2);
    for (; r->obs <= r->obs2; r->obs++) {
        char *at = rw_at(&w, r->var, r->obs);
        if (w.left == 0 && progress_poll("replacing", r->obs, r->obs2)) {
            r->obs = r->obs2 + 1;
            return;
        }
        if (!rv_selected(&v, r->obs))
            continue;
        double z = rv_value(&v, r->obs);
        if (z == num_load<TYPE>(at))
            continue;
        if (holds<TYPE>(z)) {
            num_store<TYPE>(z, at);
            c.changed++;
        } else if (storewide(r, z)) {
            r->obs++;
            return;
        }
    }
}

// A float is compared as stored: what is lost in rounding is no change.
template <uint8_t TYPE> static void reals(replacing *r)
{
    rowwalk w;
    rowvalues v;
    rv_open(&v, r->pgm, r->obs2);
    for (; r->obs <= r->obs2; r->obs++) {
        char *at = rw_at(&w, r->var, r->obs);
        if (w.left == 0 && progress_poll("replacing", r->obs, r->obs2)) {
            r->obs = r->obs2 + 1;
            return;
        }
        if (!rv_selected(&v, r->obs))
            continue;
        double z = rv_value(&v, r->obs), old = num_load<TYPE>(at);
        num_store<TYPE>(z, at);
        z = num_load<TYPE>(at);
        if (z != old) {
            c.changed++;
            c.tomissing += z >= misval;
        }
    }
}

static void numbers(replacing *r)
{
    while (r->obs <= r->obs2)
        switch (_typlist[r->var - 1]) {
        case T_BYTE: integers<T_BYTE>(r); break;
        case T_INT: integers<T_INT>(r); break;
        case T_LONG: integers<T_LONG>(r); break;
        case T_FLOAT: reals<T_FLOAT>(r); break;
        default: reals<T_DOUBLE>(r); break;
        }
}

static void strings(replacing *r)
{
    char now[246], old[246];
    auto var = uint32_t(r->var);
    for (; r->obs <= r->obs2; r->obs++) {
        auto obs = uint32_t(r->obs);
        if ((obs & 0xfff) == 0 && progress_poll("replacing", r->obs, r->obs2))
            return;
        if (!selobs(r->obs))
            continue;
        sxeq(r->pgm, r->obs, now);
        if (!strcmp(now, dsa_sdata(sysdsa, var, obs, old)))
            continue;
        auto len = int32_t(strlen(now));
        if (r->promote && len > _typlist[var - 1]) {
            int32_t rc = doupstr(r->var, len);
            if (rc)
                r->promote = false;
            if (rc > 0 && !stopflag)
                r->noroom = true;
        }
        dsa_safe_sstore(sysdsa, var, obs, now);
        if (strcmp(now, dsa_sdata(sysdsa, var, obs, old)))
            c.truncated++;
        c.changed++;
    }
}

static void report(int32_t var)
{
    uint8_t type = _typlist[var - 1];
    if (t_isstr(type) ? type > c.oldtype : type != c.oldtype)
        tmsg(_varlist[var - 1], c.oldtype, type);
    spout21fat(1, "(%d real change%s made", int32_t(c.changed), plural(c.changed));
    if (c.tomissing)
        spout21fat(1, ", %d to missing", int32_t(c.tomissing));
    spout21at(1, ")\n");
    const struct {
        int64_t n;
        const char *what;
    } losses[] = {{c.truncated, "truncated"}, {c.turned, "changed to missing"}};
    for (const auto &l : losses)
        if (l.n) {
            nvalues(int32_t(l.n));
            spout21fat(1, "%s because of storage type)\n", l.what);
        }
}

static int32_t parsereplace(bool *promote)
{
    parinfo->pi_if = parinfo->pi_in = parinfo->pi_by = parinfo->pi_opts = PI_OK;
    parinfo->pi_vlist = parinfo->pi_exp = PI_REQ;
    parinfo->pi_exptype = W_ANY;
    parinfo->pi_blankall = 0;
    int32_t rc = ti_pi_parse(tokinfo, parinfo);
    if (rc)
        return rc;
    if (byvar)
        pi_resetopt(parinfo);
    *promote = ti_pi_findopt(tokinfo, parinfo, "promote", 1, vernum >= 320);
    if ((rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    if (parinfo->pi_nvar != 1)
        return error(RC_TOOMANYVARS);
    bool strvar = t_isstr(_typlist[parinfo->vl_vr[0] - 1]);
    return strvar == (parinfo->wepgm->restype == XR_STR) ? 0 : error(RC_TYPE);
}

int32_t replace(int32_t)
{
    bool promote = true;
    int32_t rc = parsereplace(&promote);
    if (rc)
        return rc;
    replacing r{parinfo->vl_vr[0], parinfo->pi_obs1, parinfo->pi_obs2, promote, false,
                parinfo->wepgm};
    if (byvar < 2) {
        c = {};
        c.oldtype = _typlist[r.var - 1];
    }
    // Want of room is told once, after the report.
    uint8_t noisy = dsa_reset_noisy(sysdsa, 0);
    if (t_isstr(c.oldtype))
        strings(&r);
    else
        numbers(&r);
    dsa_reset_noisy(sysdsa, noisy);
    if (c.changed) {
        s_updata = true;
        pi_chksort(r.var);
    }
    if (out_shown(2) && (!byvar || lastby))
        report(r.var);
    if (r.noroom)
        return error(RC_NOPROMOTE);
    return runprog ? int32_t(stopflag) : 0;
}
