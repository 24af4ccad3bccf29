// commands/formatcmd.cpp - format: varlist %fmt, %fmt varlist, or a listing.
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "expr/parse.h"
#include "expr/varlist.h"
#include "interp/messages.h"
#include "output/fmt.h"
#include "output/print.h"
#include <algorithm>
#include <cstdio>
#include <cstring>

namespace {

// A format up to the next blank. Empty when none stands there.
void takefmt(char *fmt, size_t room)
{
    ti_trimtokwhite(tokinfo);
    const char *p = tokinfo->c_ptr;
    size_t n = *p == '%' ? strcspn(p, " ") : 0;
    snprintf(fmt, room, "%.*s", int(n), p);
    tokinfo->c_ptr += n;
    tokinfo->lc_ptr = nullptr;
}

int32_t badfmt()
{
    return errout(120, "invalid %%format\n");
}

int32_t setformats(const char *fmt)
{
    fmtinfo f;
    if (strlen(fmt) > fmtlen || chkfmt(fmt, &f) || f.width < 1)
        return badfmt();
    for (int32_t i = 0; i < parinfo->pi_nvar; i++)
        if (t_isstr(_typlist[parinfo->vl_vr[i] - 1]) != (f.kind == 's'))
            return error(RC_TYPE);
    for (int32_t i = 0; i < parinfo->pi_nvar; i++)
        strcpy(_fmtlist[parinfo->vl_vr[i] - 1], fmt);
    s_updata = upFormat = true;
    return 0;
}

int32_t listformats()
{
    int32_t width = 13;
    for (int32_t i = 0; i < parinfo->pi_nvar; i++)
        width = std::max(width, int32_t(strlen(_varlist[parinfo->vl_vr[i] - 1])));
    spout21fat(1, "\n  %-*s  display format\n  ", width, "variable name");
    for (int32_t i = 0; i < width + 16; i++)
        spout21at(1, "-");
    spout21at(1, "\n");
    for (int32_t i = 0; i < parinfo->pi_nvar && !stopflag; i++) {
        int32_t v = parinfo->vl_vr[i] - 1;
        spout21fat(1, "  %-*s  ", width, _varlist[v]);
        spout21fat(0, "%s\n", _fmtlist[v]);
    }
    return stopflag;
}

}  // namespace

int32_t formatcmd(int32_t)
{
    char fmt[504];
    takefmt(fmt, sizeof fmt);
    int32_t rc = ti_ssvlist(tokinfo, parinfo->vl_vr, &parinfo->pi_nvar);
    if (rc)
        return rc;
    if (!*fmt)
        takefmt(fmt, sizeof fmt);
    ti_trimtokwhite(tokinfo);
    if (*tokinfo->c_ptr)
        return errout(RC_SYNTAX, "invalid '%s'\n", tok_text(ti_gettok(tokinfo, prsestd)));
    if (*fmt)
        return parinfo->pi_nvar ? setformats(fmt) : required("varlist");
    if (!parinfo->pi_nvar)
        parinfo->pi_nvar = vlist_all(parinfo->vl_vr);
    return listformats();
}
