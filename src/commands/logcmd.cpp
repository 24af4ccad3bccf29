// commands/logcmd.cpp - log and cmdlog.
//
//   log using FILE [, text|omcl replace append name(NAME)]     log [query [NAME|_all]]
//   log off|on|close [NAME|_all]        cmdlog using FILE [, replace append] | off|on|close
#include "core/files.h"
#include "core/rc.h"
#include "core/settings.h"
#include "data/variables.h"
#include "interp/interp.h"
#include "interp/messages.h"
#include "output/log.h"
#include "output/print.h"
#include "stats/results.h"
#include <cstdio>
#include <cstring>

namespace
{
struct usingopts {
    char file[500];
    bool text, markup, replace, append;
    char name[33];
};
} // namespace

static int32_t read_name(char *name)
{
    int32_t rc = ti_gtokis(tokinfo, '(');
    if (rc)
        return rc;
    const char *word = ti_gettok(tokinfo, prsestd);
    if ((rc = chkname(word, false)))
        return rc;
    snprintf(name, 33, "%.32s", word);
    return ti_gtokis(tokinfo, ')');
}

static int32_t read_using(usingopts *u, bool cmdlog)
{
    int32_t rc = ti_gettokfn(tokinfo, u->file);
    if (rc)
        return error(rc);
    const char *word = ti_gettok(tokinfo, prsestd);
    if (!*word)
        return 0;
    if (strcmp(word, ",") != 0)
        return invalid("syntax");
    while (*(word = ti_gettok(tokinfo, prsestd))) {
        if (cmdcmp(word, "replace", 3))
            u->replace = true;
        else if (cmdcmp(word, "append", 1))
            u->append = true;
        else if (!cmdlog && cmdcmp(word, "text", 1))
            u->text = true;
        else if (!cmdlog && cmdcmp(word, "omcl", 1))
            u->markup = true;
        else if (!cmdlog && cmdcmp(word, "name", 4)) {
            if ((rc = read_name(u->name)))
                return rc;
        } else
            return errout(RC_SYNTAX, "option %s not allowed\n", tok_text(word));
    }
    if ((u->replace && u->append) || (u->text && u->markup))
        return errout(RC_SYNTAX, "options %s may not be combined\n",
                      u->text ? "text and omcl" : "replace and append");
    return 0;
}

static int32_t log_using()
{
    usingopts u = {};
    int32_t rc = read_using(&u, false);
    if (rc)
        return rc;
    std::string path = u.file, last = path_last(path);
    size_t dot = last.rfind('.');
    std::string ext = dot == last.npos ? "" : last.substr(dot);
    bool markup = !strcmp(set_logtype, "omcl");
    if (ext == ".log" || ext == ".txt")
        markup = false;
    if (ext == ".omcl")
        markup = true;
    if (u.text || u.markup)
        markup = u.markup;
    if (ext.empty())
        path += markup ? ".omcl" : ".log";
    return log_open(u.name, path.c_str(), markup, u.replace, u.append);
}

static int32_t report(const logrow *l)
{
    log_report(l, nullptr);
    retval_clear();
    retval_set_glocal("name", *l->name ? l->name : "<unnamed>");
    retval_set_glocal("filename", l->path);
    retval_set_glocal("status", l->paused ? "off" : "on");
    retval_set_glocal("type", l->markup ? "omcl" : "text");
    return 0;
}

static int32_t log_query(const char *name, bool all)
{
    if (!all) {
        const logrow *l = log_find(name);
        if (!l && *name)
            return error(606);
        if (l)
            return report(l);
        retval_clear();
        spout21at(1, "(log is closed)\n");
        return 0;
    }
    if (!log_nth(0))
        spout21at(1, "(log is closed)\n");
    for (int32_t i = 0; const logrow *l = log_nth(i); i++)
        (void)report(l);
    return 0;
}

enum { L_CLOSE, L_OFF, L_ON };
static int32_t log_one(int32_t what, const char *name)
{
    return what == L_CLOSE ? log_close(name) : log_pause(name, what == L_OFF);
}

static int32_t log_act(int32_t what, const char *name, bool all)
{
    int32_t rc = 0;
    if (!all)
        return log_one(what, name);
    if (what == L_CLOSE) {
        while (const logrow *l = log_nth(0)) {
            char which[33];
            memcpy(which, l->name, sizeof which);
            if ((rc = log_close(which)))
                return rc;
        }
        return 0;
    }
    for (int32_t i = 0; const logrow *l = log_nth(i); i++)
        if ((rc = log_one(what, l->name)))
            return rc;
    return 0;
}

int32_t logcmd(int32_t)
{
    const char *word = ti_gettok(tokinfo, prsestd);
    if (cmdcmp(word, "using", 1))
        return log_using();
    int32_t what = !*word || cmdcmp(word, "query", 1) ? -1
                   : cmdcmp(word, "close", 1)         ? L_CLOSE
                   : !strcmp(word, "off")             ? L_OFF
                   : !strcmp(word, "on")              ? L_ON
                                                      : -2;
    if (what == -2)
        return error(RC_SYNTAX);
    char name[33] = "";
    word = ti_gettok(tokinfo, prsestd);
    bool all = !strcmp(word, "_all");
    if (*word && !all)
        snprintf(name, sizeof name, "%.32s", tok_text(word));
    if (*word && *ti_gettok(tokinfo, prsestd))
        return error(RC_SYNTAX);
    return what < 0 ? log_query(name, all) : log_act(what, name, all);
}

int32_t cmdlogcmd(int32_t)
{
    const char *word = ti_gettok(tokinfo, prsestd);
    if (cmdcmp(word, "using", 1)) {
        usingopts u = {};
        int32_t rc = read_using(&u, true);
        if (rc)
            return rc;
        std::string path = path_addext(u.file, ".txt");
        if ((rc = cmdlog_open(path.c_str(), u.replace, u.append)))
            return rc;
        spout21fat(1, "(cmdlog %s opened)\n", cmdlog_path());
        return 0;
    }
    if (!*word) {
        if (cmdlog_isopen())
            spout21fat(1, "(cmdlog %s is %s)\n", cmdlog_path(), cmdlog_on ? "on" : "off");
        else
            spout21at(1, "(cmdlog is closed)\n");
        return 0;
    }
    bool off = !strcmp(word, "off"), on = !strcmp(word, "on");
    if (!off && !on && !cmdcmp(word, "close", 1))
        return error(RC_SYNTAX);
    if (!cmdlog_isopen())
        return error(607);
    if (off || on) {
        cmdlog_on = on;
        spout21fat(1, "(cmdlog %s is %s)\n", cmdlog_path(), on ? "on" : "off");
        return 0;
    }
    int32_t rc = cmdlog_close();
    if (!rc)
        spout21fat(1, "(cmdlog %s closed)\n", cmdlog_path());
    return rc;
}
