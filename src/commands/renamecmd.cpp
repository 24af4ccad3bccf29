// commands/renamecmd.cpp - rename: one variable.
#include "commands/renaming.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/labels.h"
#include "data/variables.h"
#include "interp/messages.h"
#include "interp/tokens.h"
#include <cstdio>
#include <cstring>

int32_t rename_variable(int32_t var, const char *to)
{
    int32_t rc = chkname(to, false);
    if (rc || (!sysflag && (rc = chkreskeywrds(to))))
        return rc;
    if (!strcmp(to, "_all")) // in a list it means all of them
        return error2(1, to);
    char from[33];
    strcpy(from, _varlist[var - 1]);
    if (!strcmp(from, to))
        return 0;
    if (sysfindvar(to))
        return error2(3, to);
    if ((rc = charrename(from, to)))
        return rc;
    renamevarlab(from, to);
    strcpy(_varlist[var - 1], to);
    s_updata = newdata = true;
    return 0;
}

int32_t renvar(int32_t)
{
    char to[504];
    snprintf(to, sizeof to, "%s", ti_gettok(tokinfo, prsevar));
    int32_t rc, var = findtyped(to, !ovata_varabbrev);
    if (var < 0)
        return -var;
    snprintf(to, sizeof to, "%s", ti_gettok(tokinfo, prsevar));
    if ((rc = chkname(to, false)))
        return rc;
    if (*ti_gettok(tokinfo, prsevar))
        return error(RC_SYNTAX);
    return rename_variable(var, to);
}
