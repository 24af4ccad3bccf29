// timer: stop-watches.
#include "core/numtext.h"
#include "core/rc.h"
#include "core/state.h"
#include "core/timers.h"
#include "interp/interp.h"
#include "interp/messages.h"
#include "output/print.h"
#include "stats/results.h"
#include <cstdio>
#include <string>

static void show(int32_t i, timer_reading t)
{
    char name[16];
    spout21f("%4d: %10.4f / %8d = %13.4f\n", i, t.seconds, t.runs, t.seconds / t.runs);
    snprintf(name, sizeof name, "t%d", i);
    retval_set_gscalar(t.seconds, name);
    snprintf(name, sizeof name, "nt%d", i);
    retval_set_gscalar(t.runs, name);
}

static int32_t list(int32_t first, int32_t last)
{
    outlev_keep level(0);
    retval_clear();
    for (int32_t i = first; i <= last; i++)
        if (timer_reading t = timer_read(i); t.runs)
            show(i, t);
    return stopflag;
}

int32_t timercmd(int32_t)
{
    std::string what = ti_gettok(tokinfo, prsestd);
    const char *tok = ti_gettok(tokinfo, prsestd);
    int32_t n = 0;
    if (*tok && (cnvstoint4(tok, &n) || n < 1 || n > ntimers))
        return errout(RC_SYNTAX, "timer number must be between 1 and 100\n");
    if (*tok && *ti_gettok(tokinfo, prsestd))
        return error(RC_SYNTAX);
    int32_t first = n ? n : 1, last = n ? n : ntimers;
    if (what == "clear") {
        for (int32_t i = first; i <= last; i++)
            timer_clear(i);
        return 0;
    }
    if (what == "list")
        return list(first, last);
    if ((what != "on" && what != "off") || !n)
        return error(RC_SYNTAX);
    if (what == "on")
        timer_on(n);
    else
        timer_off(n);
    return 0;
}
