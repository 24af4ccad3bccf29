// interp/prefixes.cpp - prefix commands: each changes something, dispatches the rest of the
// line and puts back what it changed, whatever came of it.
#include "core/missing.h"
#include "core/rc.h"
#include "expr/parse.h"
#include "interp/interp.h"
#include "interp/messages.h"
#include "output/dates.h"
#include "output/print.h"
#include "stats/results.h"
#include <cctype>
#include <cstdio>
#include <cstring>

// Day this program was made (21nov2026), against which born() is held.
static const double borndate = dt_mdy(11, 21, 2026);

static void skip_colon()
{
    if (ti_peektok_chr(tokinfo) == ':')
        ti_gettok(tokinfo, prsestd);
}

// quietly (0) and noisily (1).
int32_t quietcmd(int32_t noisily)
{
    uint8_t was = s_outlev, now = was;
    if (procflg) {
        if (noisily)
            now = vernum < 220 ? uint8_t(0) : ls_outlev;
        else if (was != 5)
            now = 3;
    }
    s_outlev = now;
    skip_colon();
    int32_t rc = run_next();
    if (s_outlev == now)
        s_outlev = was;
    return rc;
}

int32_t capturecmd(int32_t)
{
    bool live = procflg;
    uint8_t was = s_outlev;
    s_outlev = 5;
    skip_colon();
    int32_t rc = run_next();
    s_outlev = was;
    if (!live)
        return rc;
    stopflag = 0;
    altstopflag = 0;
    captrc = rc;
    return 0;
}

int32_t setbreak(bool on)
{
    int32_t was = stopflag_val;
    // The values first: a signal that comes between the lines then falls on the right flag.
    stopflag_val = on;
    altstopflag_val = !on;
    if (on && altstopflag) {
        altstopflag = 0;
        stopflag = 1;
    } else if (!on && stopflag) {
        stopflag = 0;
        altstopflag = 1;
    }
    return was;
}

// nobreak (0) and break (1).
int32_t breakprefix(int32_t on)
{
    int32_t was = setbreak(on);
    int32_t rc = run_next();
    setbreak(was);
    return rc ? rc : stopflag;
}

// varabbrev (1) and novarabbrev (0).
int32_t abbrevprefix(int32_t on)
{
    bool was = ovata_varabbrev;
    ovata_varabbrev = on;
    int32_t rc = run_next();
    ovata_varabbrev = was;
    return rc;
}

// ---- version

// "12.1" is 1210, "8" is 800, "4.05" is 405. 0 when text is no version number.
static int32_t version_of(const char *text)
{
    int32_t major = 0, minor = 0, n = 0;
    for (; isdigit(uint8_t(*text)) && n < 3; text++, n++)
        major = major * 10 + (*text - '0');
    if (n < 1 || n > 2)
        return 0;
    if (*text == '.') {
        text++;
        for (n = 0; isdigit(uint8_t(*text)) && n < 3; text++, n++)
            minor = minor * 10 + (*text - '0');
        if (n < 1 || n > 2)
            return 0;
        if (n == 1)
            minor *= 10;
    }
    return *text ? 0 : major * 100 + minor;
}

static const char *version_text(int32_t v, char *buf, size_t n)
{
    if (v % 10)
        snprintf(buf, n, "%d.%02d", v / 100, v % 100);
    else
        snprintf(buf, n, "%d.%d", v / 100, v % 100 / 10);
    return buf;
}

static int32_t version_toonew(int32_t asked)
{
    char have[16], want[16];
    int32_t rc = errout(9, "this is version %s of Ovata; it cannot run version %s programs\n",
                        version_text(ver_current, have, sizeof have),
                        version_text(asked, want, sizeof want));
    if (asked / 100 != ver_current / 100)
        rc = errout(9, "    The latest version of Ovata can be bought from its distributor.\n");
    return rc;
}

static int32_t version_show()
{
    char buf[16];
    c_outlev = 0;
    spout21f("version %s", version_text(vernum, buf, sizeof buf));
    if (vernum < 800 && mvmodern)
        spout21(" (with modern treatment of missing values)");
    spout21("\n");
    retval_clear();
    retval_set_gscalar(vernum / 100.0, "version");
    return stopflag;
}

static int32_t version_options(bool *missing)
{
    int32_t rc;
    char date[80];
    parinfo->pi_opts = PI_OK;
    parinfo->pi_nopt = 0;
    if ((rc = ti_proption(tokinfo, parinfo)))
        return rc;
    *missing = ti_pi_findopt(tokinfo, parinfo, "missing", 3, 0) == 1;
    if (ti_pi_findargasis(tokinfo, parinfo, "born", 4, date, sizeof date)) {
        double born = ovdate(date, "dmy", misval);
        if (ovismissing(born))
            return errout(RC_SYNTAX, "\"%s\" invalid date\n", date);
        if (born > borndate)
            return errout(9, "you must update the Ovata executable to run this program\n");
    }
    return ti_pi_chkopt(tokinfo, parinfo);
}

// The first ':' outside quotes and parentheses, or null.
static char *find_colon(char *p)
{
    p = pfindoutside(p, ':');
    return *p ? p : nullptr;
}

int32_t vercmd(int32_t)
{
    char *colon = find_colon(ti_wheretok(tokinfo));
    if (!procflg) {
        if (!colon)
            return 0;
        ti_settok(tokinfo, colon + 1);
        return run_next();
    }
    const char *token = ti_gettok(tokinfo, prsenum);
    if (!*token)
        return version_show();
    int32_t v = version_of(token), rc;
    if (v < ver_lowest)
        return error(RC_SYNTAX);
    if (v > ver_current)
        return version_toonew(v);
    // The options end at the colon, which may not be taken for part of them.
    bool missing = false;
    if (colon)
        *colon = 0;
    token = ti_gettok(tokinfo, prsestd);
    if (*token == ',')
        rc = version_options(&missing);
    else
        rc = *token ? error(RC_SYNTAX) : 0;
    if (colon)
        *colon = ':';
    if (rc)
        return rc;
    int16_t was = vernum;
    bool mvwas = mvmodern;
    vernum = int16_t(v);
    if (!missing)
        mvmodern = v >= 800;
    if (!colon)
        return 0;
    ti_settok(tokinfo, colon + 1);
    rc = run_next();
    vernum = was;
    mvmodern = mvwas;
    return rc;
}
