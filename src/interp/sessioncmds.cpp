// interp/sessioncmds.cpp - exit, error, sleep, beep, about.
#include "core/mem.h"
#include "core/missing.h"
#include "core/numtext.h"
#include "core/rc.h"
#include "expr/parse.h"
#include "interp/interp.h"
#include "interp/messages.h"
#include "output/oml.h"
#include "output/print.h"
#include <cmath>
#include <cstring>
#include <string>
#include <unistd.h>

// Evaluates text as a return code. Codes are held to 100000.
static int32_t code_of(const char *text, int32_t *code)
{
    bool isstr;
    double z;
    char str[246];
    int32_t rc = exp_text(text, W_NUM, &isstr, &z, str);
    if (rc)
        return rc;
    *code = ovismissing(z) || z > 100000 ? 100000 : z < -100000 ? -100000 : int32_t(z);
    return 0;
}

static bool in_group() { return by_env.on && by_env.recall; }

// error #
int32_t errcmd(int32_t)
{
    int32_t code, rc;
    const char *text = ti_wheretok(tokinfo);
    if (!ti_peektok_chr(tokinfo))
        return error(RC_SYNTAX);
    if ((rc = code_of(text, &code)))
        return rc;
    if (!code)
        return 0;
    if ((code == RC_NOOBS || code == RC_FEWOBS) && in_group()) {
        exitflg = true;
        return 0;
    }
    return extended_error(code);
}

static int32_t exit_options(bool toplevel, bool *clear, bool *leave)
{
    parinfo->pi_opts = PI_OK;
    if (*ti_gettok(tokinfo, prsestd) == ',') {
        int32_t rc = ti_proption(tokinfo, parinfo);
        if (rc)
            return rc;
    }
    *clear = ti_pi_findopt(tokinfo, parinfo, "clear", 5, 0) == 1;
    *leave = ti_pi_findopt(tokinfo, parinfo, "OVATA", 5, 0) == 1;
    if (toplevel || *leave)
        ti_pi_findopt(tokinfo, parinfo, "prefs", 4, 0);
    return ti_pi_chkopt(tokinfo, parinfo);
}

// exit [#] [, clear OVATA prefs]
int32_t goexit(int32_t)
{
    bool clear = false, leave = false;
    bool toplevel = !ovata_level && !dofilep;
    char *from = ti_wheretok(tokinfo), *comma = pfindoutside(from, ',');
    std::string text(from, comma);
    int32_t code = 0, rc;
    pi_resetopt(parinfo);
    parinfo->pi_nopt = 0;
    ti_settok(tokinfo, comma);
    if ((rc = exit_options(toplevel, &clear, &leave)))
        return rc;
    if (text.find_first_not_of(' ') != std::string::npos && (rc = code_of(text.c_str(), &code)))
        return rc;
    if (code && !((code == RC_NOOBS || code == RC_FEWOBS) && in_group()))
        return code;
    if (toplevel || leave) {
        if (s_updata && !clear)
            return error(RC_DATACHANGED);
        gexitflg = true;
    }
    exitflg = true;
    return 0;
}

// sleep #, in milliseconds
int32_t sleepcmd(int32_t)
{
    int32_t ms;
    const char *token = ti_gettok(tokinfo, prsenum);
    if (cnvstoint4(token, &ms) || ms < 0 || ti_peektok_chr(tokinfo))
        return error(RC_SYNTAX);
    omlflush(oml_cur);
    while (ms > 0 && !fault_poll()) {
        int32_t slice = ms < 20 ? ms : 20;
        usleep(useconds_t(slice) * 1000);
        ms -= slice;
    }
    return stopflag;
}

int32_t beepcmd(int32_t)
{
    omlflush(oml_cur);
    if (!nokbrd && write(1, "\a", 1) != 1)
        return 0;
    return stopflag;
}

int32_t aboutcmd(int32_t)
{
    c_outlev = 1;
    spout21f("\nOvata %d.%d, %s edition\n", ver_current / 100, ver_current % 100 / 10,
             cur_edition->flavour);
    spout21f("at most %d variables and %u observations\n", cur_edition->maxvar_max,
             cur_edition->N_max - 1);
    return stopflag;
}
