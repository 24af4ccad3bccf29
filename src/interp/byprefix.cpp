// interp/byprefix.cpp - by and bysort: a command for each group of observations.
//
//   by g1 g2 (h1 h2) [, sort]: command
//
// Groups are runs of equal g in data sorted by g and h. A built-in is parsed once and called
// for each group with byvar, lastby and the range set; a program is called once (onecall) or
// once for each group (recall) with the by-environment.
#include "core/mem.h"
#include "core/missing.h"
#include "core/rc.h"
#include "data/dsa.h"
#include "data/labels.h"
#include "data/sort.h"
#include "expr/generate.h"
#include "expr/parse.h"
#include "interp/interp.h"
#include "interp/messages.h"
#include "interp/programs.h"
#include "output/fmt.h"
#include "output/print.h"
#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr int32_t maxnest = 100;
int32_t nest;
int32_t group;   // number of the group a built-in works on

struct bylist {
    std::vector<int32_t> keys;  // by variables, then those in parentheses
    int32_t nby = 0;
    bool rc0 = false;   // a group that fails does not keep the others from being looked at
    bool sort = false;
    std::string vars;
};

// Copies up to one of the stop characters outside parentheses and moves the scan there.
std::string take_upto(const char *stops)
{
    char *from = ti_wheretok(tokinfo), *p = from;
    while (*p && !strchr(stops, *p))
        p++;
    ti_settok(tokinfo, p);
    return std::string(from, p);
}

int32_t add_vars(bylist *by, const std::string &text)
{
    if (text.find_first_not_of(' ') == std::string::npos)
        return required("varlist");
    std::vector<int32_t> list(size_t(_Kvar) + 1);
    int32_t n = 0;
    int32_t rc = vlist_text(text.c_str(), list.data(), &n, _Kvar);
    if (rc)
        return rc;
    by->keys.insert(by->keys.end(), list.begin(), list.begin() + n);
    return 0;
}

int32_t by_options(bylist *by)
{
    for (;;) {
        const char *token = ti_gettok(tokinfo, prsestd);
        if (!strcmp(token, ":") || !*token) {
            ti_ungettok(tokinfo);
            return 0;
        }
        if (cmdcmp(token, "sort", 1))
            by->sort = true;
        else if (!strcmp(token, "rc0"))
            by->rc0 = true;
        else
            return errout(RC_SYNTAX, "option %s not allowed\n", tok_text(token));
    }
}

int32_t parse_bylist(bylist *by)
{
    int32_t rc = add_vars(by, take_upto("(,:"));
    if (rc)
        return rc;
    by->nby = int32_t(by->keys.size());
    const char *token = ti_gettok(tokinfo, prsestd);
    if (!strcmp(token, "(")) {
        if ((rc = add_vars(by, take_upto("):"))) || (rc = ti_gtokis(tokinfo, ')')))
            return rc;
        token = ti_gettok(tokinfo, prsestd);
    }
    if (!strcmp(token, ",")) {
        if ((rc = by_options(by)))
            return rc;
        token = ti_gettok(tokinfo, prsestd);
    }
    if (strcmp(token, ":"))
        return error(RC_SYNTAX);
    for (int32_t i = 0; i < by->nby; i++)
        by->vars += std::string(i ? " " : "") + _varlist[by->keys[size_t(i)] - 1];
    return 0;
}

int32_t order(const bylist &by)
{
    int32_t n = int32_t(by.keys.size());
    if (sort_known(by.keys.data(), n))
        return 0;
    if (!by.sort)
        return error(5);
    return sort_obs(by.keys.data(), n, 1, _Nobs, false, SORT_AUTO);
}

// The last observation of the group that begins at first.
int32_t group_end(const bylist &by, int32_t first)
{
    int32_t last = first;
    while (last < _Nobs &&
           !sort_compare(uint32_t(last), uint32_t(last + 1), by.keys.data(), by.nby))
        last++;
    return last;
}

// "g = value": the value as the variable is displayed.
void show_value(int32_t var, int32_t obs)
{
    char buf[512], text[246];
    spout21f("%s = ", _varlist[var - 1]);
    if (t_isstr(_typlist[var - 1])) {
        spout21(dsa_sdata(sysdsa, uint32_t(var), uint32_t(obs), text));
        return;
    }
    double z = dsa_data(sysdsa, uint32_t(var), uint32_t(obs));
    const char *label = _lbllist[var - 1];
    if (*label) {
        const vltable *t = vlfind(label);
        if (t && vlfindval(t, z, buf, int32_t(sizeof buf)) >= 0) {
            spout21(buf);
            return;
        }
    }
    fmtnumtrim(buf, sizeof buf, z, _fmtlist[var - 1]);
    spout21(buf);
}

int32_t show_header(const bylist &by, int32_t obs)
{
    c_outlev = 1;
    spoutsml("\n{txt}{hline}\n");
    spout21("-> ");
    for (int32_t i = 0; i < by.nby; i++) {
        if (i)
            spout21(", ");
        show_value(by.keys[size_t(i)], obs);
    }
    newline();
    c_outlev = 0;
    return stopflag;
}

// Commands that change data, and the internal ones, say nothing for each group.
bool has_header(const cmdrow *row)
{
    static const char *const silent[] = {"generate", "replace", "assert", "expand", "predict"};
    if (*row->word == '_' && strcmp(row->word, "_regress"))
        return false;
    for (const char *word : silent)
        if (!strcmp(word, row->word))
            return false;
    return true;
}

void end_of_groups()
{
    byvar = 0;
    lastby = true;
    nobss1 = 1;
    nobss2 = _Nobs;
    rmvlist();
}

// What of a group's code stops the run.
int32_t group_rc(const bylist &by, int32_t rc)
{
    return rc == RC_NOOBS || rc == RC_FEWOBS || (by.rc0 && rc != RC_BREAK) ? 0 : rc;
}

int32_t over_builtin(const bylist &by, const cmdrow *row)
{
    if (!_Nobs)
        return error(RC_NOOBS);
    gettok_state at;
    ti_stattok(tokinfo, &at);
    bool header = has_header(row);
    bool parsed = false;
    int32_t rc = 0;
    byKvaronexit = -1;
    for (int32_t first = 1, last; first <= _Nobs && !rc; first = last + 1) {
        last = group_end(by, first);
        byvar = parsed ? 2 : 1;
        group = first == 1 ? 1 : group + 1;
        lastby = last >= _Nobs;
        if (header && (rc = show_header(by, first)))
            break;
        nobss1 = parinfo->pi_obs1 = first;
        nobss2 = parinfo->pi_obs2 = last;
        ti_resettok(tokinfo, &at);
        pi_allow_reset(parinfo);
        c_outlev = 0;
        rc = row->handler(row->arg);
        // What failed may not have come to the end of the line: it is read anew.
        parsed = parsed || !rc || rc == RC_NOOBS || rc == RC_FEWOBS;
        rc = group_rc(by, rc);
        if (!rc)
            rc = fault_poll();
        // Rows that the command added behind the last group are none of by's.
        if (lastby)
            break;
    }
    end_of_groups();
    // A variable that only some groups have filled is none.
    if (rc && byKvaronexit >= 0)
        dsa_truncate_var(sysdsa, uint32_t(byKvaronexit), true);
    return rc;
}

int32_t call_program(const bylist &by, const gettok_state *at, const byenv &env,
                     const char *name, const char *line)
{
    memcpy(cmd, name, sizeof cmd);
    memcpy(console, line, strlen(line) + 1);
    ti_resettok(tokinfo, at);
    by_waiting = env;
    by_waiting.on = true;
    by_waiting.vars = by.vars.c_str();
    int32_t rc = godo(GD_PROGRAM, false);
    if (_Kvar > _i_Kvar)
        dsa_truncate_var(sysdsa, uint32_t(_i_Kvar), true);
    return rc;
}

int32_t over_program(const bylist &by, int32_t code)
{
    gettok_state at;
    ti_stattok(tokinfo, &at);
    char name[sizeof cmd];
    memcpy(name, cmd, sizeof name);
    std::string line = console;
    byenv env{};
    if (code == 1) {
        env.index = 1;
        env.lastcall = true;
        env.n1 = 1;
        env.n2 = _Nobs;
        return call_program(by, &at, env, name, line.c_str());
    }
    if (!_Nobs)
        return error(RC_NOOBS);
    env.recall = true;
    int32_t rc = 0;
    for (int32_t first = 1; first <= _Nobs && !rc; first = env.n2 + 1) {
        env.index++;
        env.n1 = first;
        env.n2 = group_end(by, first);
        env.lastcall = env.n2 >= _Nobs;
        if (code == 2 && (rc = show_header(by, first)))
            break;
        rc = group_rc(by, call_program(by, &at, env, name, line.c_str()));
        if (!rc)
            rc = fault_poll();
        // The program may have dropped what the groups are found by.
        for (int32_t key : by.keys)
            if (!rc && key > _Kvar)
                rc = error(RC_NOTFOUND);
    }
    return rc;
}

int32_t refuse(const char *word)
{
    return errout(RC_BY, "%s may not be combined with by\n", word);
}

int32_t dispatch(const bylist &by)
{
    const char *token = ti_gettok(tokinfo, prsestd);
    size_t n = strnlen(token, namelen);
    memcpy(cmd, token, n);
    cmd[n] = 0;
    if (!*cmd)
        return error(RC_SYNTAX);
    const cmdrow *row = cmd_row(cmd, 0);
    if (row && (!strcmp(row->word, "by") || !strcmp(row->word, "bysort")))
        return error(7198);
    if (row && (row->flags & C_BY))
        return over_builtin(by, row);
    if (row || strchr("{!.", *cmd))
        return refuse(row ? row->word : cmd);
    int32_t code = byability(cmd);
    if (code == 9) {
        int32_t rc = autoload("ado", true);
        if (rc)
            return rc;
        if ((code = byability(cmd)) == 9)
            return 9733;
    }
    return code ? over_program(by, code) : refuse(cmd);
}

}  // namespace

double by_query(xq_byask ask)
{
    bool on = byvar || by_env.on;
    switch (ask) {
    case BQ_BY: return on;
    case BQ_LASTCALL: return byvar ? lastby : !on || by_env.lastcall;
    case BQ_INDEX: return byvar ? group : on ? by_env.index : 1;
    case BQ_N1: return byvar ? nobss1 : on ? by_env.n1 : 1;
    case BQ_N2: return byvar ? nobss2 : on ? by_env.n2 : _Nobs;
    }
    return misval;
}

// by (0) and bysort (1).
int32_t byprefix(int32_t sorted)
{
    if (byvar)
        return error(7198);
    if (nest >= maxnest)
        return errout(RC_MACROS, "too many nested by's\n");
    bylist by;
    by.sort = sorted;
    int32_t rc = parse_bylist(&by);
    if (!rc)
        rc = order(by);
    if (rc)
        return rc;
    nest++;
    rc = dispatch(by);
    nest--;
    return rc;
}
