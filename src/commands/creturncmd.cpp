// commands/creturncmd.cpp - creturn list, and what c() shows of the interpreter.
#include "expr/expr.h"
#include "interp/interp.h"
#include "interp/macros.h"
#include "interp/messages.h"

static const char *global_of(const char *name) { return macptr(name); }

static bool fill()
{
    creturn_above = {sysdir_of, global_of, &rmsgtime};
    return true;
}
[[maybe_unused]] static const bool filled = fill();

int32_t creturncmd(int32_t)
{
    if (!cmdcmp(ti_gettok(tokinfo, prsestd), "list", 1) || *ti_gettok(tokinfo, prsestd))
        return error(198);
    return creturn_list();
}
