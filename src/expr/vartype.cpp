// Storage types that follow the values.
#include "core/mem.h"
#include "core/progress.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/variables.h"
#include "expr/generate.h"
#include "output/fmt.h"
#include "output/print.h"
#include <cmath>
#include <cstdio>
#include <cstring>
#include <vector>

// The upper ends stop short of a type's own: the codes above are its missing values.
uint8_t promoted_vartype(double value, uint8_t type)
{
    if (type == T_DOUBLE || type == T_FLOAT || ovismissing(value))
        return type;
    if (value != std::trunc(value))
        return type == T_LONG ? T_DOUBLE : T_FLOAT;
    if (std::fabs(value) >= 2147483648.0)
        return T_DOUBLE;
    if (type == T_BYTE && (value < min_ovbyte || value > max_ovbyte))
        type = T_INT;
    if (type == T_INT && (value < min_ovint || value > max_ovint))
        type = T_LONG;
    if (type == T_LONG && (value < min_ovlong || value > max_ovlong))
        type = T_DOUBLE;
    return type;
}

static int32_t copyrows(uint32_t to, uint32_t from, int32_t nobs)
{
    char buf[246];
    bool str = t_isstr(_typlist[to - 1]);
    for (int32_t i = 1; i <= nobs; i++) {
        uint32_t obs = uint32_t(i);
        if (str)
            dsa_safe_sstore(sysdsa, to, obs, dsa_sdata(sysdsa, from, obs, buf));
        else
            dsa_store(dsa_data(sysdsa, from, obs), sysdsa, to, obs);
        if (progress_poll("converting", obs, sysdsa->_No_))
            return stopflag;
    }
    return 0;
}

// What belongs to a variable besides its cells, and the order of the data, which a change of
// type leaves as it is.
namespace {
struct keptvar {
    char name[33], fmt[49], lbl[33];
    std::vector<int16_t> srt;
};
}  // namespace

// The new variable, last in the row, takes the place and the name of the old one.
static int32_t replacevar(uint32_t var, const keptvar &was)
{
    if (int32_t rc = pi_dsa_mvvar(sysdsa, sysdsa->K, var, nullptr))
        return rc;
    // Nobody who holds numbers of variables saw the new one come, so nobody is told of this drop.
    auto tell = dsa_onrenumber;
    dsa_onrenumber = nullptr;
    int32_t rc = dsa_drop_one_var(sysdsa, var + 1, false);
    dsa_onrenumber = tell;
    if (rc) {
        (void)!pi_dsa_mvvar(sysdsa, var, sysdsa->K, nullptr);
        return rc;
    }
    memcpy(_varlist[var - 1], was.name, sizeof was.name);
    memcpy(_fmtlist[var - 1], was.fmt, sizeof was.fmt);
    memcpy(_lbllist[var - 1], was.lbl, sizeof was.lbl);
    return 0;
}

int32_t change_vartype(int32_t var, uint8_t type, int32_t nobs)
{
    uint32_t v = uint32_t(var), limit = sysdsa->K_max;
    int32_t visible = _i_Kvar;
    keptvar was;
    memcpy(was.name, _varlist[v - 1], sizeof was.name);
    memcpy(was.fmt, _fmtlist[v - 1], sizeof was.fmt);
    memcpy(was.lbl, _lbllist[v - 1], sizeof was.lbl);
    for (const int16_t *s = _srtlist; *s; s++)
        was.srt.push_back(*s);
    char tmp[9];
    mktmpvn(tmp);
    // The extra variable is there for a moment only, so the limit gives way.
    sysdsa->K_max = (sysdsa->K >= limit ? sysdsa->K : limit) + 1;
    int32_t rc = dsa_add_var(sysdsa, type, tmp, was.fmt);
    if (!rc) {
        rc = copyrows(sysdsa->K, v, nobs);
        if (!rc)
            rc = replacevar(v, was);
        if (rc)
            dsa_truncate_var(sysdsa, sysdsa->K - 1, false);
    }
    sysdsa->K_max = limit;
    _i_Kvar = visible;
    if (!rc) {
        for (size_t i = 0; i < was.srt.size(); i++)
            _srtlist[i] = was.srt[i];
        _srtlist[was.srt.size()] = 0;
    }
    return rc;
}

int32_t change_vartype_fmt(int32_t var, uint8_t type)
{
    uint8_t old = _typlist[var - 1];
    char dflt[8];
    bool plain = t_isstr(old) && !strcmp(_fmtlist[var - 1], fmt_default(old, dflt));
    int32_t rc = change_vartype(var, type, _Nobs);
    if (rc)
        return rc;
    if (plain)
        strcpy(_fmtlist[var - 1], fmt_default(type, dflt));
    s_updata = newdata = upFormat = true;
    return 0;
}

int32_t doupstr(int32_t var, int32_t newlen)
{
    uint8_t old = _typlist[var - 1];
    int32_t len = newlen > T_STRMAX ? int32_t(T_STRMAX) : newlen;
    if (len > old)
        if (int32_t rc = change_vartype_fmt(var, uint8_t(len)))
            return rc;
    return newlen > T_STRMAX ? -1 : 0;
}

int32_t doupnum(double value, int32_t var, uint8_t *typeout)
{
    uint8_t old = _typlist[var - 1], type = promoted_vartype(value, old);
    *typeout = old;
    if (type == old)
        return 0;
    int32_t rc = change_vartype(var, type, _Nobs);
    if (!rc)
        *typeout = type;
    return rc;
}

const char *plural(int64_t n)
{
    return n == 1 ? "" : "s";
}

void missmsg(int32_t n, bool newline_after)
{
    if (!n)
        return;
    spout21fat(1, "(%d missing value%s generated)", n, plural(n));
    if (newline_after)
        newline();
}

void tmsg(const char *name, uint8_t oldtype, uint8_t newtype)
{
    char word[8];
    spout21fat(1, "%s was ", name);
    spout21at(0, type_word(oldtype, word));
    spout21at(1, " now ");
    spout21at(0, type_word(newtype, word));
    spout21at(1, "\n");
}

void nvalues(int32_t n)
{
    spout21fat(1, "(%d value%s ", n, plural(n));
}
