// interp/levels.cpp - levels: a do-file or a program is entered, its lines are run, and what
// it changed is put back on the way out, whatever the way.
#include "core/files.h"
#include "core/progress.h"
#include "core/rc.h"
#include "core/settings.h"
#include "data/sort.h"
#include "data/variables.h"
#include "expr/parse.h"
#include "interp/dm.h"
#include "interp/interp.h"
#include "interp/macros.h"
#include "interp/messages.h"
#include "interp/programs.h"
#include "interp/trace.h"
#include "output/oml.h"
#include "output/print.h"
#include "stats/results.h"
#include <charconv>
#include <cstring>

byenv by_waiting;

namespace {

// What a level finds and must leave as it was.
struct doframe {
    dofile *reader, *dofilep;
    int32_t tmpvctr, delimit, upline, tmpfctr, psvfctr;
    bool more;
    int trace_low;
    bool trace;
    int16_t vernum, caller_vernum;
    uint8_t s_outlev, ls_outlev;
    char pgmname[33], pgmclass[33];
    bool mvmodern, runprog, rmsg;
    uint8_t inuse;        // of the program entered
    bool is_cls, breakallowed;
    bool fhopened, hreturn, estheld;
    bool syselseflg, procflg;
    uint8_t breakdetail;
    bool estrestore;
    uint8_t program_class;
    byenv by;
    bool resort;
    int32_t nest;
    char name[33];        // the program entered
};

// What the command line of a do-file asks for.
struct dorequest {
    dofile *reader = nullptr;
    char args[macrolen];
    bool stop = true;
};

void save(doframe *f)
{
    f->dofilep = ::dofilep;
    f->tmpvctr = ::tmpvctr;
    f->delimit = ::delimit;
    f->upline = sys_upline;
    f->tmpfctr = ::tmpfctr;
    f->psvfctr = ::psvfctr;
    f->more = set_more;
    f->trace_low = ::trace_low;
    f->trace = set_trace;
    f->vernum = ::vernum;
    f->caller_vernum = ::caller_vernum;
    f->s_outlev = ::s_outlev;
    f->ls_outlev = ::ls_outlev;
    memcpy(f->pgmname, sys_pgmname, sizeof f->pgmname);
    memcpy(f->pgmclass, sys_pgmclass, sizeof f->pgmclass);
    f->mvmodern = ::mvmodern;
    f->runprog = ::runprog;
    f->rmsg = set_rmsg;
    f->is_cls = sys_is_cls;
    f->breakallowed = ::breakallowed;
    f->fhopened = hastmp_fhopened;
    f->hreturn = hastmp_hreturn;
    f->estheld = hastmp_estheld;
    f->syselseflg = ::syselseflg;
    f->procflg = ::procflg;
    f->breakdetail = ::breakdetail;
    f->estrestore = ::estrestore;
    f->program_class = ::program_class;
    f->by = by_env;
    f->resort = resort_on_exit;
    f->nest = doreq_nest;
}

pgmrec *entered(const char *name)
{
    return static_cast<pgmrec *>(pgmfind(name, sys_pgmclass, PF_PROGRAM));
}

// One macro for each word of the arguments: _1, _2, ... without its quotes.
int32_t save_words(char *p)
{
    char word[macrolen], name[16] = "_";
    for (int32_t i = 1;; i++) {
        while (*p == ' ')
            p++;
        if (!*p)
            return 0;
        char *start, *end, *next;
        if (*p == '"' || (*p == '`' && p[1] == '"')) {
            bool open, compound = *p == '`';
            next = compound ? pcompoundquotes(p, &open) : psimplequotes(p, &open);
            start = p + (compound ? 2 : 1);
            end = open ? next : next - (compound ? 2 : 1);
        } else {
            start = p;
            end = next = p + strcspn(p, " ");
        }
        size_t n = size_t(end - start);
        if (n >= sizeof word)
            return error(RC_SYNTAX);
        memcpy(word, start, n);
        word[n] = 0;
        *std::to_chars(name + 1, name + 15, i).ptr = 0;
        int32_t rc = n ? macsave(name, word) : macsave0(name);
        if (rc)
            return rc;
        p = next;
    }
}

// A new level of locals with the arguments in it.
int32_t enter_locals(char *text)
{
    while (*text == ' ')
        text++;
    size_t n = strlen(text);
    typelmac++;
    int32_t rc = n < size_t(macrolen) ? macsave("_0", text) : error(RC_LONGCMD);
    if (!rc)
        rc = save_words(text);
    if (!rc && by_waiting.on)
        rc = macsave("__byvars", by_waiting.vars);
    if (rc) {
        dmzap(typelmac);
        typelmac--;
    }
    return rc;
}

int32_t enter_program(doframe *f)
{
    ::psvfctr = -1;
    set_rmsg = false;
    runprog = true;
    memcpy(f->name, cmd, sizeof f->name);
    pgmrec *p = entered(cmd);
    if (!p)
        return errout(RC_UNRECOGNIZED, "unrecognized command:  %s\n", cmd);
    memcpy(sys_pgmname, cmd, sizeof sys_pgmname);
    memcpy(sys_pgmclass, *p->owner ? p->owner : cmd, sizeof sys_pgmclass);
    sys_pgmloc = p;
    sys_upline = 0;
    f->inuse = p->inuse;
    p->inuse = 1;
    p->lastuse = sysclock;
    program_class = p->pgmclass;
    if (program_class == 2) // what an earlier parse left is not this one's
        sretval_clear();
    sys_is_cls = p->isclass;
    resort_on_exit = false;
    if (p->sortpreserve) {
        int32_t rc = sort_preserve();
        if (rc)
            return rc;
        resort_on_exit = true;
    }
    return 0;
}

void enter_dofile(doframe *f, int32_t kind, const dorequest *ask)
{
    f->reader = ::dofilep = ask->reader;
    ::delimit = 0;
    dofile_rc = 0;
    runprog = false;
    if (kind == GD_INCLUDE)
        return;
    ::psvfctr = -1;
    resort_on_exit = false;
    program_class = 0;
    if (kind == GD_RUN && ::s_outlev < 3)
        ::s_outlev = 3;
}

int32_t doprolog(doframe *f, int32_t kind, dorequest *ask)
{
    int32_t rc;
    if (byvar)
        return error(RC_BY);
    if (kind != GD_INCLUDE && ovata_level >= maxlevel)
        return error(RC_LIMIT);
    char *args = kind == GD_PROGRAM ? ti_wheretok(tokinfo) : ask->args;
    if (kind != GD_INCLUDE && (rc = enter_locals(args)))
        return rc;
    save(f);
    f->reader = nullptr;
    *f->name = 0;
    doreq_nest = 0;
    procflg = true;
    rc = 0;
    if (kind == GD_PROGRAM)
        rc = enter_program(f);
    else
        enter_dofile(f, kind, ask);
    if (kind == GD_INCLUDE)
        return 0;
    by_env = by_waiting;
    by_waiting.on = false;
    ::ls_outlev = ::s_outlev;
    hastmp_fhopened = hastmp_hreturn = hastmp_estheld = false;
    ovata_level++;
    ::caller_vernum = ::vernum;
    ::estrestore = false;
    ::breakdetail = 0;
    ::breakallowed = false;
    if (kind == GD_PROGRAM && set_trace)
        trace_enter(f->name);
    return rc;
}

// What an include shares with its caller, and every level puts back.
void leave_shared(const doframe *f)
{
    ::runprog = f->runprog;
    sys_upline = f->upline;
    sys_is_cls = f->is_cls;
    ::syselseflg = f->syselseflg;
    ::procflg = f->procflg;
    by_env = f->by;
    memcpy(sys_pgmname, f->pgmname, sizeof f->pgmname);
    memcpy(sys_pgmclass, f->pgmclass, sizeof f->pgmclass);
    sys_pgmloc = nullptr;   // it may have been dropped meanwhile: found again by name
    doreq_nest = f->nest;
}

void leave_program(const doframe *f)
{
    set_rmsg = f->rmsg;
    pgmrec *p = entered(f->name);
    if (p)
        p->inuse = f->inuse;
}

void leave_dofile(const doframe *f)
{
    dofclos(f->reader);
    ::dofilep = f->dofilep;
    doeof = false;
    dofile_rc = 0;
    ::delimit = f->delimit;
}

void leave_settings(const doframe *f)
{
    ::s_outlev = f->s_outlev;
    ::ls_outlev = f->ls_outlev;
    if (hastmp_fhopened)
        ovfile_autoclose();
    if (::vernum >= 310 && ::tmpfctr != f->tmpfctr)
        rmtmpfn(f->tmpfctr);
    set_trace = f->trace;
    ::trace_low = f->trace_low;
    ::vernum = f->vernum;
    if (set_more != f->more) {
        set_more = f->more;
        sysinitmore(set_more ? 0 : 1);
    }
    ::mvmodern = f->mvmodern;
    ::caller_vernum = f->caller_vernum;
    ::breakallowed = f->breakallowed;
    ::breakdetail = f->breakdetail;
}

void doepilog(doframe *f, int32_t kind)
{
    if (kind == GD_PROGRAM) {
        if (set_trace)
            trace_leave(f->name);
        leave_program(f);
    } else {
        leave_dofile(f);
    }
    if (kind == GD_INCLUDE) {
        leave_shared(f);
        return;
    }
    progress_level(ovata_level - 1);
    rc_shown = false;
    uint8_t pgmclass = program_class;
    leave_settings(f);
    if (::estrestore)
        estirestore();
    if (hastmp_estheld)
        cleanesti();
    if (resort_on_exit) {
        int32_t rc = sort_restore(true);
        if (rc && !globalrc)
            globalrc = rc;
    }
    if (hastmp_hreturn)
        cleanhret();
    ::psvfctr = f->psvfctr;
    if (::tmpvctr != f->tmpvctr)
        rmtmpvn(f->tmpvctr);
    rmtmpdyn(pgmclass);
    program_class = f->program_class;
    resort_on_exit = f->resort;
    hastmp_fhopened = f->fhopened;
    hastmp_hreturn = f->hreturn;
    hastmp_estheld = f->estheld;
    ::estrestore = f->estrestore;
    leave_shared(f);
    ovata_level--;
    typelmac--;
    if (kind != GD_DO)
        return;
    outlev_keep level(1);
    newline();
    spout21("end of do-file\n");
    if (!ovata_level && !batchmode)
        newline();
}

// Runs the lines of the level; the code it ends with.
int32_t run_lines(int32_t kind, bool stop)
{
    for (;;) {
        stopflag = 0;
        if (!altstopflag_val)
            altstopflag = 0;
        if (kind != GD_PROGRAM) {
            outlev_keep level(1);
            newline();
        }
        int32_t end = getreq(true, false);
        if (stopflag)
            return RC_BREAK;
        if (end)
            return kind == GD_PROGRAM ? 0 : dofile_rc;
        if (!doreq())
            return globalrc;
        if (stop && globalrc)
            return globalrc;
        // A break that came while a short command ran, which did not look.
        if (stopflag)
            return RC_BREAK;
    }
}

// The end of the arguments: a comma outside quotes, or the end of the text.
char *args_end(char *p)
{
    bool open;
    while (*p && *p != ',') {
        if (*p == '"')
            p = psimplequotes(p, &open);
        else if (*p == '`' && p[1] == '"')
            p = pcompoundquotes(p, &open);
        else
            p++;
    }
    return p;
}

int32_t do_options(bool *stop)
{
    ti_gettok(tokinfo, prsestd);  // the comma
    parinfo->pi_opts = PI_OK;
    parinfo->pi_nopt = 0;
    int32_t rc = ti_proption(tokinfo, parinfo);
    if (rc)
        return rc;
    *stop = ti_pi_findopt(tokinfo, parinfo, "stop", 4, 1) == 1;
    ti_pi_findopt(tokinfo, parinfo, "delay", 5, 0);
    if ((rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    const char *token = ti_gettok(tokinfo, prsestd);
    return *token ? notalow(token) : 0;
}

// Reads `FILE [words] [, options]` and opens the file.
int32_t do_request(dorequest *ask)
{
    char name[filenamelen + 1];
    int32_t rc = ti_gettokfn(tokinfo, name);
    if (rc)
        return error(rc);
    char *args = ti_wheretok(tokinfo), *end = args_end(args);
    size_t n = size_t(end - args);
    if (n >= sizeof ask->args)
        return error(RC_LONGCMD);
    memcpy(ask->args, args, n);
    while (n && ask->args[n - 1] == ' ')
        n--;
    ask->args[n] = 0;
    ti_settok(tokinfo, end);
    if (*end && (rc = do_options(&ask->stop)))
        return rc;
    std::string file = path_addext(path_expand(name), ".do");
    ask->reader = dofopen(file.c_str(), &rc);
    if (rc == RC_NOMEM)
        return error(rc);
    return rc ? fierr(rc, file.c_str()) : 0;
}

}  // namespace

int32_t godo(int32_t kind, bool)
{
    doframe f;
    static dorequest ask;   // used up before a line of the level runs
    bool stop = true;
    int32_t rc;
    ask.reader = nullptr;
    ask.stop = true;
    if (kind != GD_PROGRAM) {
        if ((rc = do_request(&ask)))
            return rc;
        stop = ask.stop;
    }
    int32_t level = ovata_level;
    rc = doprolog(&f, kind, &ask);
    bool entered_level = kind == GD_INCLUDE ? !rc : ovata_level > level;
    if (rc && !entered_level) {
        by_waiting.on = false;
        dofclos(ask.reader);
        return rc;
    }
    globalrc = rc ? rc : run_lines(kind, stop);
    if (globalrc == RC_BARERETURN)
        globalrc = 0;
    if (kind != GD_INCLUDE && psvfctr != -1)
        globalrc = restore_atend(globalrc);
    rc = globalrc;
    doepilog(&f, kind);
    return globalrc ? globalrc : rc;
}

// do, run and include.
int32_t docmd(int32_t kind) { return godo(kind, false); }
