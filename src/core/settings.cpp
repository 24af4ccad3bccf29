#include "core/settings.h"
#include "core/numtext.h"
#include "core/state.h"
#include <cstdio>
#include <cstring>
#include <iterator>
#include <string_view>

bool set_more = true, set_rmsg, set_trace, set_graphics = true, set_progress = true;
bool linesize_chosen, pagesize_chosen;
int32_t set_linesize = 79, set_pagesize = 23, set_matsize = 400, set_maxvar = 5000,
        set_tracedepth = 32000, set_maxiter = 16000, set_adosize = 1000, set_niceness = 5;
bool set_tracesep = true, set_traceindent = true, set_traceexpand = true, set_tracenumber;
double set_level = 95;
char set_type[33] = "float", set_logtype[33] = "omcl", set_dp[33] = "period";
bool set_mosastrict, set_mosalnum, set_mosaoptimize = true;
bool set_checksum, set_httpproxy, set_httpproxyauth;
int32_t set_linegap = 1, set_scrollbufsize = 200000, set_textsize = 100, set_timeout1 = 30,
        set_timeout2 = 180, set_httpproxyport = 80, set_mosacache = 400, set_maxdb = 50;
char set_showbaselevels[33], set_showemptycells[33], set_showomitted[33], set_lstretch[33],
    set_coeftabresults[33] = "on", set_charset[33] = "ascii", set_printcolor[33] = "automatic",
    set_mosafavor[33] = "space";
char set_cformat[500], set_pformat[500], set_sformat[500], set_scheme[500] = "standard",
    set_httpproxyhost[500], set_httpproxyuser[500], set_httpproxypw[500], set_tracehilite[500],
    set_mosalibs[500], set_odbcmgr[500];

#define SET(name, min, kind, at, low, high, choices, section, hook, perm)                      \
    {name, min, kind, at, low, high, choices, section, hook, perm},
const setting settings[] = {
#include "core/settings.def"
};
#undef SET
const int32_t nsettings = int32_t(std::size(settings));
set_fn set_hooks[SH_N];

const setting *setting_find(const char *word)
{
    size_t n = strlen(word);
    for (const setting &s : settings)
        if (n >= s.min && !strncmp(s.name, word, n))
            return &s;
    return nullptr;
}

const setting *setting_exact(const char *name)
{
    for (const setting &s : settings)
        if (!strcmp(s.name, name))
            return &s;
    return nullptr;
}

static bool onechoice(const char *choices, std::string_view text)
{
    std::string_view all(choices);
    for (size_t at = 0;;) {
        size_t bar = all.find('|', at);
        if (all.substr(at, bar - at) == text)
            return true;
        if (bar == all.npos)
            return false;
        at = bar + 1;
    }
}

int32_t setting_put(const setting *s, const char *text, bool store)
{
    bool on;
    int32_t i;
    double z;
    switch (s->kind) {
    case SK_BOOL:
        on = !strcmp(text, "on");
        if (!on && strcmp(text, "off") != 0)
            return 1;
        if (store)
            *static_cast<bool *>(s->at) = on;
        return 0;
    case SK_INT:
        if (cnvstoint4(text, &i))
            return 1;
        if (i < s->low || i > s->high)
            return 2;
        if (store)
            *static_cast<int32_t *>(s->at) = i;
        return 0;
    case SK_NUM:
        if (cnvstoz(text, &z))
            return 1;
        if (!(z >= s->low && z <= s->high))
            return 2;
        if (store)
            *static_cast<double *>(s->at) = z;
        return 0;
    case SK_WORD:
        if (strlen(text) > 32 || !onechoice(s->choices, text))
            return 1;
        if (store)
            snprintf(static_cast<char *>(s->at), 33, "%s", text);
        return 0;
    case SK_TEXT:
        if (strlen(text) >= 500)
            return 2;
        if (store)
            snprintf(static_cast<char *>(s->at), 500, "%s", text);
        return 0;
    case SK_ACT:
        break;
    }
    return 0;
}

char *setting_text(const setting *s, char *buf)
{
    *buf = 0;
    switch (s->kind) {
    case SK_BOOL: strcpy(buf, *static_cast<bool *>(s->at) ? "on" : "off"); break;
    case SK_INT: snprintf(buf, 500, "%d", *static_cast<int32_t *>(s->at)); break;
    case SK_NUM: snprintf(buf, 500, "%.6g", *static_cast<double *>(s->at)); break;
    case SK_WORD:
    case SK_TEXT: snprintf(buf, 500, "%s", static_cast<char *>(s->at)); break;
    case SK_ACT: break;
    }
    return buf;
}

char *setting_range(const setting *s, char *buf)
{
    *buf = 0;
    if (s->kind == SK_BOOL)
        strcpy(buf, "on or off");
    if (s->kind == SK_INT || s->kind == SK_NUM)
        snprintf(buf, 500, "between %.10g and %.10g", s->low, s->high);
    if (s->kind == SK_TEXT)
        strcpy(buf, "a text of at most 499 characters");
    if (s->kind != SK_WORD)
        return buf;
    const char *p = *s->choices == '|' ? s->choices + 1 : s->choices;
    for (const char *q; (q = strchr(p, '|')); p = q + 1)
        snprintf(buf + strlen(buf), 500 - strlen(buf), "%.*s%s", int(q - p), p,
                 strchr(q + 1, '|') ? ", " : " or ");
    snprintf(buf + strlen(buf), 500 - strlen(buf), "%s", p);
    return buf;
}
