// Options: recorded unread, then claimed by name.
#include "core/limits.h"
#include "core/missing.h"
#include "core/numtext.h"
#include "core/rc.h"
#include "core/settings.h"
#include "expr/parse.h"
#include "expr/varlist.h"
#include "interp/messages.h"
#include <cmath>
#include <cstdio>
#include <cstring>

enum : uint8_t { SEEN_CLAIMED = 1, SEEN_BAD = 2 };
int32_t opt_failrc;

// Behind the parenthesis that closes the one at p, strings passed over; null when it is open.
static char *behindparen(char *p)
{
    int32_t depth = 0;
    bool open = false;
    for (; *p; p++) {
        if (*p == '"' || (*p == '`' && p[1] == '"')) {
            p = *p == '"' ? psimplequotes(p, &open) : pcompoundquotes(p, &open);
            if (open)
                return nullptr;
            p--;
        } else if (*p == '(')
            depth++;
        else if (*p == ')' && --depth == 0)
            return p + 1;
    }
    return nullptr;
}

int32_t ti_moveto_opt_arg_end(toktype *ti)
{
    char *p = ti->c_ptr;
    while (*p == ' ')
        p++;
    char *end = behindparen(p);
    if (!end)
        return required(")");
    ti->c_ptr = end;
    ti->lc_ptr = nullptr;
    return 0;
}

int32_t ti_proption(toktype *ti, parinfo_t *pi)
{
    if (pi->pi_opts == PI_NO)
        return notalow("options");
    for (;;) {
        const char *t = ti_gettok(ti, prseopt);
        if (!*t || !strcmp(t, ","))
            return 0;
        if (strchr(prseopt, *t))
            return errout(RC_SYNTAX, "invalid '%s'\n", tok_text(t));
        if (pi->pi_nopt >= pi_maxopt)
            return errout(1003, "too many options\n");
        pi->pi_optat[pi->pi_nopt] = ti->lc_ptr;
        pi->pi_optseen[pi->pi_nopt++] = 0;
        if (ti_peektok_chr(ti) != '(')
            continue;
        if (int32_t rc = ti_moveto_opt_arg_end(ti))
            return rc;
    }
}

// The name at an option's text, and its argument: the inside of the parentheses, or null.
struct optview {
    char name[namelen + 1];
    size_t namelength;
    const char *arg;
    size_t arglen;
};

static void viewopt(char *at, optview *v)
{
    v->namelength = strcspn(at, prseopt);
    snprintf(v->name, sizeof v->name, "%.*s", int(v->namelength), at);
    char *p = at + v->namelength;
    while (*p == ' ')
        p++;
    v->arg = nullptr;
    v->arglen = 0;
    char *end = *p == '(' ? behindparen(p) : nullptr;
    if (end) {
        v->arg = p + 1;
        v->arglen = size_t(end - 1 - v->arg);
    }
}

static bool abbreviates(const optview &v, const char *full, int32_t min, bool lc)
{
    size_t n = v.namelength;
    if (n > namelen || n < size_t(min) || n > strlen(full))
        return false;
    for (size_t i = 0; i < n; i++) {
        char c = v.name[i];
        if (lc && c >= 'A' && c <= 'Z')
            c |= 0x20;
        if (c != full[i])
            return false;
    }
    return true;
}

enum argwish : uint8_t { ARG_NONE, ARG_MUST, ARG_ANY };

// The index of the first recorded option of that name, or -1. An option without arguments is
// not claimed where it has one. One that must have an argument starts as malformed.
static int32_t findbase(parinfo_t *pi, const char *name, int32_t min, argwish wish, bool lc,
                        optview *v)
{
    for (int32_t i = 0; i < pi->pi_nopt; i++) {
        viewopt(pi->pi_optat[i], v);
        if (!abbreviates(*v, name, min, lc) || (wish == ARG_NONE && v->arg))
            continue;
        pi->pi_optseen[i] = wish == ARG_MUST ? SEEN_BAD : SEEN_CLAIMED;
        return i;
    }
    return -1;
}

static void good(parinfo_t *pi, int32_t i)
{
    pi->pi_optseen[i] = SEEN_CLAIMED | SEEN_BAD;
}

// Copies an argument without the blanks around it. False when it does not fit.
static bool copyarg(const optview &v, char *buf, size_t room)
{
    const char *p = v.arg, *end = v.arg + v.arglen;
    while (p < end && *p == ' ')
        p++;
    while (end > p && end[-1] == ' ')
        end--;
    if (size_t(end - p) >= room)
        return false;
    memcpy(buf, p, size_t(end - p));
    buf[end - p] = '\0';
    return true;
}

static int32_t findflag(parinfo_t *pi, const char *name, int32_t min, int32_t dflt, bool lc)
{
    optview v;
    if (findbase(pi, name, min, ARG_NONE, lc, &v) >= 0)
        return 1;
    char no[64];
    snprintf(no, sizeof no, "no%s", name);
    return findbase(pi, no, min + 2, ARG_NONE, lc, &v) >= 0 ? 0 : dflt;
}

int32_t ti_pi_findopt(toktype *, parinfo_t *pi, const char *name, int32_t min, int32_t dflt)
{
    return findflag(pi, name, min, dflt, false);
}

int32_t ti_findopt_lc(toktype *, const char *name, int32_t min, int32_t dflt)
{
    return findflag(parinfo, name, min, dflt, true);
}

int32_t ti_pi_findscal(toktype *ti, parinfo_t *pi, int32_t kind, int32_t min)
{
    pi_wgtdflt(pi, kind);
    return ti_pi_findopt(ti, pi, "scale", min, 0);
}

bool ti_pi_hasopt(toktype *, parinfo_t *pi, const char *name, int32_t min)
{
    optview v;
    return findbase(pi, name, min, ARG_ANY, false, &v) >= 0;
}

int32_t ti_pi_findopta(toktype *, parinfo_t *pi, const char *name, int32_t min, int32_t dflt)
{
    optview v;
    int32_t i = findbase(pi, name, min, ARG_MUST, false, &v);
    char text[64];
    double z;
    if (i < 0 || !v.arg || !copyarg(v, text, sizeof text) || cnvstoz(text, &z))
        return dflt;
    if (z < zminlong || z > zmaxlong || z != std::trunc(z))
        return dflt;
    good(pi, i);
    return int32_t(z);
}

static int32_t findnumbers(parinfo_t *pi, const char *name, int32_t min, double *values, int32_t n,
                           int32_t flag, bool lc)
{
    optview v;
    int32_t i = findbase(pi, name, min, ARG_MUST, lc, &v), got = 0;
    char text[macrolen];
    if (i < 0 || !v.arg || !copyarg(v, text, sizeof text))
        return 0;
    if (numlist_read(text, values, &got, n, flag != 0) || !got)
        return 0;
    good(pi, i);
    return got;
}

int32_t ti_pi_findoptv(toktype *, parinfo_t *pi, const char *name, int32_t min, double *values,
                       int32_t n, int32_t flag)
{
    return findnumbers(pi, name, min, values, n, flag, false);
}

int32_t ti_findoptv_lc(toktype *, const char *name, int32_t min, double *values, int32_t n,
                       int32_t flag)
{
    return findnumbers(parinfo, name, min, values, n, flag, true);
}

// Words of a text, a quoted string counting as one.
static int32_t countwords(char *text)
{
    int32_t n = 0;
    for (char *p = text; *p; n++) {
        while (*p == ' ')
            p++;
        if (!*p)
            break;
        bool open = false;
        while (*p && *p != ' ' && !open)
            if (*p == '"')
                p = psimplequotes(p, &open);
            else if (*p == '`' && p[1] == '"')
                p = pcompoundquotes(p, &open);
            else
                p++;
    }
    return n;
}

// Drops the quotes of a text that is one quoted string.
static void unquote(char *text)
{
    bool open = false;
    char *end = *text == '"'                       ? psimplequotes(text, &open)
                : *text == '`' && text[1] == '"' ? pcompoundquotes(text, &open)
                                                   : nullptr;
    if (!end || *end || open)
        return;
    size_t mark = *text == '"' ? 1 : 2, n = strlen(text) - 2 * mark;
    memmove(text, text + mark, n);
    text[n] = '\0';
}

int32_t ti_pi_findargn(toktype *, parinfo_t *pi, const char *name, int32_t min, char *buf,
                       int32_t len, int32_t maxwords)
{
    optview v;
    int32_t i = findbase(pi, name, min, ARG_MUST, false, &v);
    char text[macrolen];
    *buf = '\0';
    if (i < 0 || !v.arg || !copyarg(v, text, sizeof text))
        return 0;
    int32_t words = countwords(text);
    unquote(text);
    if (!words || words > maxwords || strlen(text) >= size_t(len))
        return 0;
    strcpy(buf, text);
    good(pi, i);
    return 1;
}

int32_t ti_pi_findargasis(toktype *, parinfo_t *pi, const char *name, int32_t min, char *buf,
                          int32_t len)
{
    optview v;
    int32_t i = findbase(pi, name, min, ARG_MUST, false, &v);
    *buf = '\0';
    if (i < 0 || !v.arg || v.arglen >= size_t(len))
        return 0;
    memcpy(buf, v.arg, v.arglen);
    buf[v.arglen] = '\0';
    good(pi, i);
    return 1;
}

int32_t ti_pi_findvlist(toktype *, parinfo_t *pi, const char *name, int32_t min, int32_t *list,
                        int32_t n)
{
    optview v;
    int32_t i = findbase(pi, name, min, ARG_MUST, false, &v), got = 0;
    char text[macrolen];
    if (i < 0 || !v.arg || !copyarg(v, text, sizeof text) || !*text)
        return 0;
    if (int32_t rc = vlist_text(text, list, &got, n)) {
        opt_failrc = rc;
        return 0;
    }
    good(pi, i);
    return got;
}

// A confidence level: 10 to 99.99.
static int32_t chkcilevel(const char *name, double level)
{
    char shown[48];
    snprintf(shown, sizeof shown, "%s()", name);
    return dchkrange(shown, level, 10, 99.99);
}

double ti_pi_findlevellike(toktype *, parinfo_t *pi, const char *name, int32_t min)
{
    optview v;
    int32_t i = findbase(pi, name, min, ARG_MUST, false, &v);
    char text[64];
    double z;
    if (i < 0 || !v.arg || !copyarg(v, text, sizeof text) || cnvstoz(text, &z))
        return set_level;
    if (int32_t rc = chkcilevel(name, z)) {
        opt_failrc = rc;
        return set_level;
    }
    good(pi, i);
    return z;
}

double ti_pi_findlevel(toktype *ti, parinfo_t *pi, int32_t min)
{
    return ti_pi_findlevellike(ti, pi, "level", min);
}

int32_t ti_pi_findusg(toktype *, parinfo_t *pi, const char *name, int32_t min, char *file)
{
    return ti_pi_findargn(nullptr, pi, name, min, file, filenamelen + 1, INT32_MAX);
}

void pi_resetopt(parinfo_t *pi)
{
    memset(pi->pi_optseen, 0, sizeof pi->pi_optseen);
    opt_failrc = 0;
}

int32_t ti_pi_chkopt(toktype *, parinfo_t *pi)
{
    for (int32_t i = 0; i < pi->pi_nopt; i++) {
        uint8_t seen = pi->pi_optseen[i];
        if (seen & SEEN_CLAIMED)
            continue;
        if (seen == SEEN_BAD && opt_failrc)
            return opt_failrc;
        optview v;
        viewopt(pi->pi_optat[i], &v);
        return errout(RC_SYNTAX, "option %s%s %s\n", v.name, v.arg ? "()" : "",
                      seen & SEEN_BAD ? "incorrectly specified" : "not allowed");
    }
    return 0;
}
