// main.cpp - the start-up order, nothing else.
#include "core/files.h"
#include "core/settings.h"
#include "expr/parse.h"
#include "interp/dm.h"
#include "interp/interp.h"
#include "interp/startup.h"
#include "terminal/terminal.h"
#include <cstdio>
#include <cstring>
#include <sys/resource.h>

// Blocks and levels nest as calls do: let the stack grow as far as their limits may need.
static void widen_stack()
{
    rlimit r;
    const rlim_t want = rlim_t{64} << 20;
    if (getrlimit(RLIMIT_STACK, &r) || r.rlim_cur == RLIM_INFINITY || r.rlim_cur >= want)
        return;
    r.rlim_cur = r.rlim_max == RLIM_INFINITY || r.rlim_max >= want ? want : r.rlim_max;
    setrlimit(RLIMIT_STACK, &r);
}

int main(int argc, char **argv)
{
    widen_stack();
    memset(tokinfo, 0, sizeof *tokinfo);
    pi_zap(parinfo);
    if (edition_choose(argc > 0 ? argv[0] : nullptr))
        fputs("OVATA_EDITION names no edition: full is used\n", stderr);
    dminit();
    init_tmp();
    terminal_init();
    open_prefs();
    int32_t started = sinit0(argc, argv);
    if (started < 0)
        sexit(0);
    run_session(started == 1);
}
