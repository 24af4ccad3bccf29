// interp/mainloop.cpp - a line is fetched, expanded and run.
#include "core/clock.h"
#include "core/rc.h"
#include "core/settings.h"
#include "core/text.h"
#include "data/dsa.h"
#include "interp/interp.h"
#include "interp/messages.h"
#include "interp/macros.h"
#include "interp/programs.h"
#include "interp/trace.h"
#include "output/log.h"
#include "output/print.h"
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

double rmsgtime;          // seconds the last command took, when set rmsg is on
int32_t doreq_nest;
static double started;    // of the line under way, -1 when nobody asked

static int32_t read_request(bool fromprogram, bool newlinefirst, bool all)
{
    if (fromprogram && runprog) {
        if (pgm_getline())
            return 1;
        if (set_trace && procflg)
            trace_line(console);
        return 0;
    }
    for (;;) {
        if (dofilep && stopflag)
            return 1;
        if (readcons(conslen, true, false, newlinefirst) || doeof)
            return 1;
        if (stopflag && !dofilep && realbusy)
            return 1;
        const char *p = console;
        while (*p == ' ')
            p++;
        if (all || (*p && *p != '*'))
            break;
    }
    ti_settok(tokinfo, console);
    return 0;
}

int32_t getreq(bool fromprogram, bool newlinefirst)
{
    return read_request(fromprogram, newlinefirst, false);
}

int32_t getreq_raw() { return read_request(true, false, true); }

// Is this the head of a loop, behind prefixes? A loop must see its own text unexpanded.
static bool prefix_peek()
{
    toktype ti;
    ti_settok(&ti, console);
    const char *word = ti_gettok(&ti, prsestd);
    while (cmdcmp(word, "capture", 3) || cmdcmp(word, "noisily", 1) ||
           cmdcmp(word, "quietly", 1)) {
        word = ti_gettok(&ti, prsestd);
        if (!strcmp(word, ":"))
            word = ti_gettok(&ti, prsestd);
    }
    return cmdcmp(word, "forvalues", 4) || cmdcmp(word, "foreach", 7) || cmdcmp(word, "while", 2);
}

// Dead lines are not expanded wherever they come from: what they name may not exist.
static int32_t expand()
{
    mac_expanded = false;
    if (!procflg || (!runprog && prefix_peek()))
        return 0;
    mac_expanded = !runprog;
    if (!runprog || !set_trace || !set_traceexpand)
        return macexp();
    int32_t was = cmdhash(console);
    int32_t rc = macexp();
    if (!rc && cmdhash(console) != was)
        trace_expanded(console);
    return rc;
}

bool rc_shown;

void show_rc_line()
{
    if (runprog || (!globalrc && !set_rmsg))
        return;
    // The line of an included file that failed has said it.
    if (globalrc && rc_shown)
        return;
    rc_shown = globalrc != 0;
    if (globalrc == RC_BREAK) {
        c_outlev = 3;
        spoutsml("{err}{hline 2}Break{hline 2}\n");
    }
    c_outlev = 2;
    if (globalrc)
        spoutsmlf("{txt}{search r(%d):r(%d);}", globalrc, globalrc);
    else
        spout21("r;");
    if (!set_rmsg) {
        newline();
        return;
    }
    double took = started < 0 ? 0 : clock_secs() - started;
    wallclock w = clock_wall();
    rmsgtime = took;
    spout21f(" t=%d.%02d %d:%02d:%02d\n", int(took), int(took * 100) % 100, w.hour, w.minute,
             w.second);
}

#ifdef OVATA_DEV
static void check_area()
{
    int32_t rule = dsa_check(sysdsa);
    if (!rule)
        return;
    fprintf(stderr, "storage area breaks rule %d after: %s\n", rule, console);
    abort();
}
#endif

int32_t doreq()
{
    // Under nobreak a waiting break is kept for the end of the prefix.
    if (!altstopflag_val)
        altstopflag = 0;
    // One that came since the line before looked, while this one was fetched, is not lost.
    bool broken = stopflag && (runprog || dofilep);
    if (!broken)
        stopflag = 0;
    rc_shown = false;
    byvar = 0;
    // Lines without a range of their own, local and scalar among them, see all observations.
    nobss1 = 1;
    nobss2 = _Nobs;
    lastby = true;
    exitflg = false;
    double outer = started;
    started = set_rmsg ? clock_secs() : -1;
    doreq_nest++;
    globalrc = broken ? int32_t(RC_BREAK) : expand();
    if (!globalrc)
        globalrc = run_next();
    doreq_nest--;
    log_check();
    if (leavesignal)
        sexit(128 + int32_t(leavesignal));
#ifdef OVATA_DEV
    if (sysdsa)
        check_area();
#endif
    // The code of a line inside a block is told once, by the line around it.
    bool leave = exitflg;
    if (leave && gexitflg)
        sexit(0);
    exitflg = false;
    if (!leave && !doreq_nest)
        show_rc_line();
    started = outer;
    return !leave;
}

// A line or the arguments of a program in the console, with what stood there put back behind.
template <class Body> static int32_t with_console(const char *line, Body body)
{
    constexpr int32_t most = 64; // as many as programs nest
    static std::string saved[most];
    static int32_t depth;
    if (depth == most || strlen(line) > size_t(conslen))
        return error(RC_LIMIT);
    char cmdwas[sizeof cmd];
    toktype tokens;
    saved[depth] = console;
    memcpy(cmdwas, cmd, sizeof cmd);
    ti_borrow_gettok(tokinfo, &tokens);
    depth++;
    memmove(console, line, strlen(line) + 1);
    ti_settok(tokinfo, console);
    int32_t rc = body();
    depth--;
    memcpy(console, saved[depth].c_str(), saved[depth].size() + 1);
    memcpy(cmd, cmdwas, sizeof cmd);
    ti_return_gettok(tokinfo, &tokens);
    return rc;
}

int32_t run_line(const char *line)
{
    return with_console(line, run_next);
}

static int32_t enter_owned(const char *name, const char *owner)
{
    char was[sizeof sys_pgmclass];
    memcpy(was, sys_pgmclass, sizeof was);
    strcut(sys_pgmclass, sizeof sys_pgmclass, owner);
    strcut(cmd, sizeof cmd, name);
    int32_t rc = godo(GD_PROGRAM, false);
    memcpy(sys_pgmclass, was, sizeof was);
    return rc;
}

int32_t run_program(const char *name, const char *owner, const char *args, bool keep)
{
    if (keep)
        return with_console(args, [=] { return enter_owned(name, owner); });
    if (strlen(args) > size_t(conslen))
        return error(RC_LIMIT);
    memmove(console, args, strlen(args) + 1);
    ti_settok(tokinfo, console);
    return enter_owned(name, owner);
}
