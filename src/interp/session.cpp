// interp/session.cpp - the life of a session once it started, and its end.
#include "core/files.h"
#include "core/settings.h"
#include "data/dsa.h"
#include "interp/dm.h"
#include "interp/interp.h"
#include "interp/keyboard.h"
#include "interp/programs.h"
#include "interp/startup.h"
#include "output/log.h"
#include "output/oml.h"
#include "output/print.h"
#include <cstdio>
#include <cstdlib>
#include <cstring>

char sysprofilefn[500], profilefn[500];

// Runs a start-up file if there is one. A command that waits in console is set aside in the
// store meanwhile.
static void run_profile(const char *name, bool usesys, char *found)
{
    char path[500];
    if (srchfile(name, usesys, path) && srchadofile(name, path))
        return;
    memcpy(found, path, sizeof path);
    bool waiting = *console != 0;
    if (waiting && dmsave("0", DM_PARKED, 0, console, strlen(console) + 1))
        return;
    c_outlev = 1;
    spout21f("running %s ...\n", path);
    snprintf(console, sizeof console, "run \"%s\"", path);
    ti_settok(tokinfo, console);
    doreq();
    *console = 0;
    ti_settok(tokinfo, console);
    if (!waiting)
        return;
    uint64_t length;
    if (dmuse("0", DM_PARKED, &length, console, sizeof console))
        *console = 0;
    dmrm(dmfind0("0", DM_PARKED));
}

void run_session(bool command)
{
    run_profile("sysprofile.do", true, sysprofilefn);
    run_profile("profile.do", false, profilefn);
    if (command) {
        if (batchmode != 2) {
            c_outlev = 4;
            spout21(". ");
            spout21(console);
            spout21("\n");
        }
        ti_settok(tokinfo, console);
        realbusy = true;
        doreq();
    }
    if (batchmode)
        sexit(0);
    newline();
    *console = 0;
    do {
        realbusy = false;
        getreq(false, true);
        realbusy = true;
    } while (doreq());
    sexit(0);
}

void sexit(int32_t code)
{
    static bool leaving;
    if (leaving)
        _exit(code);
    leaving = true;
    setbreak(false);   // nothing below may be cut short
    preserve_shutdown();
    log_closeall();
    if (sysdsa) {
        dsa_shutdown(sysdsa);
        dsa_close(sysdsa);
    }
    if (sinit_state > 3 && oml_reswin) {
        omlflush(oml_reswin);
        close_batchlog();
    }
    if (sinit_state >= 8 && kb_terminal.close)
        kb_terminal.close();
    if (sinit_state > 0) {
        write_prefs();
        close_prefs();
    }
    rmtmpfn(0);
    exit(code);
}
