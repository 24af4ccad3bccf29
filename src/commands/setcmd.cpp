// commands/setcmd.cpp - set and query, over the table of settings.
//
//   set NAME VALUE [, permanently]          query [SECTION]
#include "core/limits.h"
#include "core/missing.h"
#include "core/numtext.h"
#include "core/progress.h"
#include "core/rc.h"
#include "core/settings.h"
#include "core/state.h"
#include "expr/expr.h"
#include "interp/interp.h"
#include "interp/messages.h"
#include "output/fmt.h"
#include "output/oml.h"
#include "output/print.h"
#include "stats/random.h"
#include <cstdio>
#include <cstring>
#include <string>

// ---- set seed
// "'word' found where number expected", the word held to 20 characters.
static int32_t expected(const char *word, const char *wanted)
{
    char text[32];
    size_t n = strlen(word);
    if (n > 20)
        snprintf(text, sizeof text, "%.14s...%s", word, word + n - 3);
    else
        snprintf(text, sizeof text, "%s", word);
    outlev_keep keep(3);
    spoutsml("{p 0 4 4}\n");
    spout21f(*word ? "'%s'" : "nothing", text);
    spoutsml(" found where\n");
    spoutsmlf("%s\nexpected\n{p_end}\n", wanted);
    return stopflag ? 1 : RC_SYNTAX;
}

int32_t setseed()
{
    char word[504];
    int32_t seed;
    snprintf(word, sizeof word, "%s", tok_text(ti_gettok(tokinfo, prsenum)));
    if (!*word || strlen(word) >= 246)
        return expected(word, "number");
    if (*ti_gettok(tokinfo, prsestd))
        return error(RC_SYNTAX);
    if (*word == 'X') {
        if (seturnseed(word))
            return errout(RC_SYNTAX, "\"%s\" is an invalid set-seed code\n", word);
        return 0;
    }
    if (cnvstoint4(word, &seed))
        return expected(word, "integer < 2^31-1");
    seturnseed_i4(seed);
    return 0;
}

// ---- settings that act at once
static int32_t on_seed(const setting *, const char *) { return setseed(); }

static int32_t on_matsize(const setting *, const char *text)
{
    int32_t n;
    if (cur_edition->matsize_max == cur_edition->matsize)
        return errout(RC_SYNTAX, "matsize cannot be changed in this version of Ovata\n");
    if (cnvstoint4(text, &n) || n < 10 || n > cur_edition->matsize_max)
        return errout(RC_SYNTAX, "matsize must be between 10 and %d\n", cur_edition->matsize_max);
    set_matsize = n;
    return 0;
}

static int32_t on_linesize(const setting *, const char *text)
{
    int32_t n = 79;
    cnvstoint4(text, &n);
    linesize_chosen = true;
    omlset_maxwidth(oml_cur, n);
    omllog_widths(oml_cur, n);
    return 0;
}

static int32_t on_pagesize(const setting *, const char *text)
{
    int32_t n = 23;
    cnvstoint4(text, &n);
    pagesize_chosen = true;
    omlset_pagelen(oml_cur, n);
    return 0;
}

static int32_t on_more(const setting *, const char *text)
{
    sysinitmore(!strcmp(text, "off"));
    return 0;
}

static int32_t on_charset(const setting *, const char *text)
{
    omlset_chars(oml_cur, !strcmp(text, "utf8"));
    return 0;
}

static int32_t on_dp(const setting *, const char *text)
{
    ovata_dpc = !strcmp(text, "comma");
    return 0;
}

static int32_t on_format(const setting *s, const char *text)
{
    fmtinfo f;
    if (!*text)
        return 0;
    if (chkfmt(text, &f) || f.kind == 's' || f.kind == 't')
        return errout(120, "invalid %%format\n");
    if (f.width > 9 && *s->name != 's')
        return errout(RC_SYNTAX, "%s must have a width of at most 9\n", s->name);
    return 0;
}

static bool fill_hooks()
{
    set_hooks[SH_SEED] = on_seed;
    set_hooks[SH_MATSIZE] = on_matsize;
    set_hooks[SH_LINESIZE] = on_linesize;
    set_hooks[SH_PAGESIZE] = on_pagesize;
    set_hooks[SH_MORE] = on_more;
    set_hooks[SH_CHARSET] = on_charset;
    set_hooks[SH_DP] = on_dp;
    set_hooks[SH_FORMAT] = on_format;
    return true;
}
[[maybe_unused]] static const bool hooked = fill_hooks();

// ---- set
static void trim(std::string *s)
{
    while (!s->empty() && s->back() == ' ')
        s->pop_back();
    size_t from = s->find_first_not_of(' ');
    s->erase(0, from == s->npos ? s->size() : from);
}

// Takes ", permanently" off the value. A code when something else stands behind the comma.
static int32_t takeperm(const setting *s, std::string *value, bool *perm)
{
    size_t comma = value->rfind(',');
    *perm = false;
    if (comma == value->npos)
        return 0;
    std::string word = value->substr(comma + 1);
    trim(&word);
    if (word.size() < 4 || !cmdcmp(word.c_str(), "permanently", 4))
        return s->kind == SK_TEXT ? 0 : error(RC_SYNTAX);
    if (!s->perm)
        return notalow("permanently");
    *perm = true;
    value->erase(comma);
    trim(value);
    return 0;
}

static void unquote(std::string *v)
{
    size_t n = v->size();
    if (n >= 2 && v->front() == '"' && v->back() == '"')
        *v = v->substr(1, n - 2);
    else if (n >= 4 && v->compare(0, 2, "`\"") == 0 && v->compare(n - 2, 2, "\"'") == 0)
        *v = v->substr(2, n - 4);
}

static int32_t change(const setting *s, const std::string &value)
{
    char range[500];
    int32_t bad = setting_put(s, value.c_str(), false);
    if (bad)
        return errout(RC_SYNTAX, "%s must be %s\n", s->name, setting_range(s, range));
    if (set_fn hook = set_hooks[s->hook]) {
        int32_t rc = hook(s, value.c_str());
        if (rc)
            return rc;
    }
    setting_put(s, value.c_str(), true);
    return 0;
}

static int32_t query_sections(const char *which);

// Two numbers in place of on or off: a program tells how far its own repetitions came.
static bool progress_step(const char *text)
{
    double done, total;
    int end = 0;
    if (sscanf(text, "%lf %lf %n", &done, &total, &end) < 2 || text[end])
        return false;
    progress_task(done, total, ovata_level);
    return true;
}

int32_t setcmd(int32_t)
{
    const char *word = ti_gettok(tokinfo, prsestd);
    if (!*word)
        return query_sections("");
    const setting *s = setting_find(word);
    if (!s)
        return errout(RC_SYNTAX, "invalid syntax: no setting is called %s\n", tok_text(word));
    if (s->hook == SH_SEED)
        return setseed();
    std::string value = ti_wheretok(tokinfo);
    bool perm;
    trim(&value);
    int32_t rc = takeperm(s, &value, &perm);
    if (rc)
        return rc;
    unquote(&value);
    if (s->hook == SH_PROGRESS && progress_step(value.c_str()))
        return 0;
    if (value.empty() && s->kind != SK_TEXT && !(s->kind == SK_WORD && *s->choices == '|'))
        return error(RC_SYNTAX);
    if ((rc = change(s, value)))
        return rc;
    if (perm && !sprefs_put(s->name, value.c_str()))
        spout21fat(1, "(set %s preference recorded)\n", s->name);
    return 0;
}

// ---- query
static void section_head(const char *name)
{
    outlev_keep keep(1);
    spoutsmlf("{hline}\n    %s\n{hline}\n", name);
}

// Sizes of memory read as they are typed: 32m.
static bool memory_text(const setting *s, char *out)
{
    double z;
    char text[246];
    if (s->hook != SH_SEGSIZE && s->hook != SH_MINMEM && s->hook != SH_MAXMEM)
        return false;
    if (cfcn(s->name, text, &z) != 1 || z >= misval)
        return false;
    sprint_memsize(out, uint64_t(z));
    return true;
}

static void show_setting(const setting *s)
{
    char value[500], range[500];
    outlev_keep keep(1);
    spout_setcoloroflev();
    spoutsmlf("      set %s {col 28}", s->name);
    if (!memory_text(s, value) && !cfcnstr(s->name, value))
        setting_text(s, value);
    spout21at(0, *value ? value : "(not set)");
    c_outlev = 1;
    if (*setting_range(s, range) && s->kind != SK_TEXT) {
        spoutsml("{txt}{col 46}");
        spout21(range);
    }
    newline();
}

static int32_t query_sections(const char *which)
{
    const char *last = "";
    bool any = false;
    for (int32_t i = 0; i < nsettings && !stopflag; i++) {
        const setting *s = &settings[i];
        if (!s->section || (*which && !cmdcmp_lc(which, s->section, 3)))
            continue;
        if (strcmp(last, s->section) != 0)
            section_head(last = s->section);
        show_setting(s);
        any = true;
    }
    if (!any)
        return error(RC_SYNTAX);
    outlev_keep keep(1);
    return spoutsml("{hline}\n");
}

int32_t querycmd(int32_t)
{
    char which[33];
    snprintf(which, sizeof which, "%.32s", ti_gettok(tokinfo, prsestd));
    if (*which && *ti_gettok(tokinfo, prsestd))
        return error(RC_SYNTAX);
    return query_sections(which);
}

// ---- more
int32_t morecmd(int32_t)
{
    if (*ti_gettok(tokinfo, prsestd))
        return error(RC_SYNTAX);
    if (byvar)
        return error(RC_BY);
    omlmore(oml_cur);
    return stopflag;
}
