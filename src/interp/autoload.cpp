// A command nobody knows may stand in a file of its name: the file is run and the command
// looked up again.
#include "core/rc.h"
#include "core/state.h"
#include "data/variables.h"
#include "expr/parse.h"
#include "interp/dm.h"
#include "interp/interp.h"
#include "interp/messages.h"
#include "interp/programs.h"
#include "output/print.h"
#include <cstdio>
#include <cstring>
#include <string>

// What a load changes of its caller; the line it stood in follows.
struct loadsave {
    int32_t sysldtime;
    gettok_state at;
    bool reading_cls;
    char pgmclass[33], cmd[33];
    char line[1];
};

static int32_t ti_alprolog(toktype *ti, int32_t depth, bool isclass)
{
    char name[16];
    snprintf(name, sizeof name, "%d", depth);
    size_t n = strlen(console) + 1;
    // Behind a terminator that a parser put in, the rest of the line still counts.
    if (ti->c_ptr >= console && ti->c_ptr <= console + conslen) {
        size_t upto = size_t(ti->c_ptr - console) + strlen(ti->c_ptr) + 1;
        n = upto > n ? upto : n;
    }
    auto s = static_cast<loadsave *>(
        dmadd(name, DM_CMDBUFFER, int32_t(n), offsetof(loadsave, line) + n));
    if (!s)
        return RC_DMMEM;
    s->sysldtime = sysldtime;
    ti_stattok(ti, &s->at);
    s->reading_cls = reading_cls_pgm;
    memcpy(s->pgmclass, sys_pgmclass, sizeof s->pgmclass);
    memcpy(s->cmd, cmd, sizeof s->cmd);
    memcpy(s->line, console, n);
    reading_cls_pgm = isclass;
    memcpy(sys_pgmclass, cmd, sizeof sys_pgmclass);
    sysldtime = sysclock ? sysclock : 1;
    return 0;
}

static int32_t ti_alepilog(toktype *ti, int32_t depth)
{
    char name[16];
    snprintf(name, sizeof name, "%d", depth);
    auto s = static_cast<loadsave *>(dmfind0(name, DM_CMDBUFFER));
    if (!s)
        return 9403;
    sysldtime = s->sysldtime;
    reading_cls_pgm = s->reading_cls;
    memcpy(sys_pgmclass, s->pgmclass, sizeof s->pgmclass);
    memcpy(cmd, s->cmd, sizeof s->cmd);
    memcpy(console, s->line, size_t(dm_rec(s)->aux));
    ti_resettok(ti, &s->at);
    dmrm(s);
    return 0;
}

static int32_t unknown(const char *behind)
{
    outlev_keep level(3);
    spout21("unrecognized command:  ");
    spout21(cmd);
    spout21(behind);
    return RC_UNRECOGNIZED;
}

static int32_t run_file(const char *path)
{
    bool not_was = not_autoload;
    bool proc_was = procflg;
    snprintf(console, conslen, "\"%s\"", path);
    ti_settok(tokinfo, console);
    load_depth++;
    not_autoload = false;
    int32_t rc = godo(GD_RUN, false);
    not_autoload = not_was;
    procflg = proc_was;
    load_depth--;
    return rc;
}

int32_t autoload(const char *extension, bool mustdefine)
{
    char path[512];
    bool isclass = !strcmp(extension, "class");
    if (chkname(cmd, true))
        return unknown(isclass ? "\n" : " invalid command name\n");
    if (srchado(cmd, extension, 1, path))
        return unknown("\n");
    int32_t depth = load_depth;
    if (ti_alprolog(tokinfo, depth, isclass)) {
        outlev_keep level(3);
        spout21("...meaning insufficient memory to load ado-file\n");
        return RC_UNRECOGNIZED;
    }
    int32_t rc = run_file(path), rc2 = ti_alepilog(tokinfo, depth);
    pi_allow_reset(parinfo);
    if (rc2)
        return rc2;
    globalrc = 0;
    if (rc) {
        spout21fat(4, "(error occurred while loading %s.%s)\n", cmd, extension);
        pgm_discard_loaded();
        return rc;
    }
    if (!mustdefine || pgmfind(cmd, sys_pgmclass, PF_BOTH))
        return 0;
    outlev_keep level(3);
    spout21("unrecognized command:  ");
    spout21(cmd);
    spout21(" not defined by ");
    spout21(cmd);
    spout21f(".%s\n", extension);
    return RC_UNRECOGNIZED;
}
