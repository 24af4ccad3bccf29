#include "core/text.h"
#include "core/rc.h"
#include "core/settings.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/sort.h"
#include "data/variables.h"
#include "expr/parse.h"
#include "expr/varlist.h"
#include "interp/messages.h"
#include "output/fmt.h"
#include "stats/results.h"
#include <cstdio>
#include <cstring>

newvar pi_new[maxnewvar];
int32_t pi_nnew;

bool iskey(const char *word)
{
    if (!*word)
        return true;
    for (const char *const *k = keyword; strcmp(*k, " "); k++)
        if (!strcmp(word, *k))
            return true;
    return false;
}

bool iskeyorb(const char *word)
{
    return iskey(word) || !strcmp(word, "[");
}

// Characters of a name or a pattern, as they may stand in a list.
static bool wordchar(char c)
{
    return c && !strchr(" \t\\!@#$%^&()-+=[]{}:;,'\"<>/|`", c);
}

static const char *blanks(const char *p)
{
    while (*p == ' ' || *p == '\t')
        p++;
    return p;
}

// Takes a word of at most 70 characters at p; returns the position behind it.
static const char *takeword(const char *p, char *word, size_t room)
{
    size_t n = 0;
    for (; wordchar(*p); p++)
        if (n < room - 1)
            word[n++] = *p;
    word[n] = '\0';
    return p;
}

// * any stretch, ? one character, ~ any stretch. Linear but for the last star.
static bool fits(const char *name, const char *pat)
{
    const char *star = nullptr, *back = nullptr;
    while (*name) {
        if (*pat == '*' || *pat == '~') {
            star = ++pat;
            back = name;
        } else if (*pat == '?' || (*pat == *name && *pat)) {
            pat++;
            name++;
        } else if (star) {
            pat = star;
            name = ++back;
        } else
            return false;
    }
    while (*pat == '*' || *pat == '~')
        pat++;
    return !*pat;
}

struct listout {
    int32_t *list, *n, max;
};

static int32_t put(const listout *o, int32_t var)
{
    if (*o->n >= o->max)
        return error(RC_TOOMANYVARS);
    o->list[(*o->n)++] = var;
    return 0;
}

static bool hiddenvar(int32_t var)
{
    const char *name = _varlist[var - 1];
    if (*esamplename && !strcmp(name, esamplename))
        return true;
    return name[0] == '_' && name[1] == '_' && name[2] == 's' && sort_holds(name);
}

int32_t vlist_all(int32_t *list)
{
    int32_t n = 0;
    for (int32_t v = 1; v <= _i_Kvar; v++)
        if (!hiddenvar(v))
            list[n++] = v;
    return n;
}

// A pattern: every variable that fits, in the order of the dataset. One that is written with
// ~ must mean a single variable.
static int32_t putpattern(const listout *o, const char *pat)
{
    bool all = !strcmp(pat, "_all") || !strcmp(pat, "*"), single = strchr(pat, '~');
    int32_t hits = 0, rc;
    for (int32_t v = 1; v <= _i_Kvar; v++) {
        if (hiddenvar(v) || (!all && !fits(_varlist[v - 1], pat)))
            continue;
        if (++hits > 1 && single)
            return error2(4, pat);
        if ((rc = put(o, v)))
            return rc;
    }
    return hits || all ? 0 : varnotfound(pat);
}

static bool ispattern(const char *word)
{
    return strpbrk(word, "*?~") || !strcmp(word, "_all");
}

static int32_t lookup(const char *word)
{
    if (strchr(word, '.')) {
        // A prefix in front of the point is an operator; which kind decides the words.
        bool factor = strchr("ibcnIBCN", *word) != nullptr && word[1] == '.';
        return -error(factor ? 6102 : 6101);
    }
    if (chkname(word, true))
        return -errout(RC_SYNTAX, "%s invalid name\n", word);
    return ovata_findvar(word, 1, !ovata_varabbrev);
}

// One element at *at, a name, pattern or range. Moves *at behind it.
static int32_t element(const char **at, const char *word, const listout *o)
{
    if (ispattern(word))
        return putpattern(o, word);
    int32_t from = lookup(word);
    if (from < 0)
        return -from;
    const char *p = blanks(*at);
    if (*p != '-')
        return put(o, from);
    char last[71];
    p = takeword(blanks(p + 1), last, sizeof last);
    *at = p;
    if (!*last || ispattern(last))
        return invalid("variable range");
    int32_t to = lookup(last), rc;
    if (to < 0)
        return -to;
    if (to < from)
        return errout(RC_NOTFOUND, "variables out of order\n");
    for (int32_t v = from; v <= to; v++)
        if (!hiddenvar(v) && (rc = put(o, v)))
            return rc;
    return 0;
}

int32_t vlist_element(const char **at, int32_t *list, int32_t *n, int32_t max)
{
    char word[71];
    listout o{list, n, max};
    *at = takeword(blanks(*at), word, sizeof word);
    return *word ? element(at, word, &o) : error(RC_SYNTAX);
}

bool vlist_begins(const char *at)
{
    char word[71];
    takeword(blanks(at), word, sizeof word);
    return !iskeyorb(word);
}

// Reads elements at *at until something that cannot belong to a list. first, when not empty,
// is a word that was read already.
static int32_t readlist(const char **at, const char *first, const listout *o)
{
    char word[71];
    snprintf(word, sizeof word, "%s", first);
    for (;;) {
        if (!*word) {
            const char *p = blanks(*at), *behind = takeword(p, word, sizeof word);
            if (iskeyorb(word)) {
                if (*p == '#')
                    return error(6103);
                *at = p;
                return 0;
            }
            *at = behind;
        }
        if (int32_t rc = element(at, word, o))
            return rc;
        *word = '\0';
    }
}

// A word that was pushed back comes first, unless it ends a list. True when it does.
static bool pushedword(toktype *ti, char *word, size_t room)
{
    *word = '\0';
    if (!ti->ugetflg)
        return false;
    const char *t = ti_gettok(ti, prsevar);
    if (iskeyorb(t) || !wordchar(*t)) {
        ti_ungettok(ti);
        return true;
    }
    snprintf(word, room, "%s", t);
    return false;
}

int32_t ti_ssvlist(toktype *ti, int32_t *list, int32_t *n)
{
    char word[71];
    *n = 0;
    if (pushedword(ti, word, sizeof word))
        return 0;
    const char *at = ti->c_ptr;
    listout o{list, n, maxvlist};
    int32_t rc = readlist(&at, word, &o);
    ti->c_ptr += at - ti->c_ptr;
    ti->lc_ptr = nullptr;
    return rc;
}

int32_t vlist_text(const char *text, int32_t *list, int32_t *n, int32_t max)
{
    *n = 0;
    listout o{list, n, max};
    if (int32_t rc = readlist(&text, "", &o))
        return rc;
    if (*text)
        return invalid(text);
    return 0;
}

static int32_t putnew(uint8_t type, const char *word)
{
    if (pi_nnew >= maxnewvar)
        return error(RC_TOOMANYVARS);
    if (strlen(word) > namelen || strpbrk(word, "*?~.") || !strcmp(word, "_all"))
        return errout(RC_SYNTAX, "%s invalid name\n", word);
    newvar *v = &pi_new[pi_nnew++];
    v->type = type;
    snprintf(v->name, sizeof v->name, "%s", word);
    v->label[0] = '\0';
    return 0;
}

// name, name:label or stub1-stub9.
static int32_t newelement(const char **at, uint8_t type, const char *word)
{
    int32_t rc = putnew(type, word);
    if (rc)
        return rc;
    if (**at == ':') {
        char lab[71];
        *at = takeword(*at + 1, lab, sizeof lab);
        if ((rc = chkname(lab, false)))
            return rc;
        strcut(pi_new[pi_nnew - 1].label, sizeof pi_new->label, lab);
        return 0;
    }
    const char *p = blanks(*at);
    if (*p != '-')
        return 0;
    char last[71];
    p = takeword(blanks(p + 1), last, sizeof last);
    *at = p;
    size_t stem = strlen(word);
    while (stem && word[stem - 1] >= '0' && word[stem - 1] <= '9')
        stem--;
    int32_t a, b;
    if (strncmp(word, last, stem) || cnvnum(word + stem, &a) || cnvnum(last + stem, &b) || b < a)
        return invalid("variable range");
    char name[96];
    for (int32_t i = a + 1; i <= b; i++) {
        snprintf(name, sizeof name, "%.*s%d", int(stem), word, i);
        if ((rc = putnew(type, name)))
            return rc;
    }
    return 0;
}

int32_t cnvnum(const char *text, int32_t *out)
{
    int64_t v = 0;
    if (!*text)
        return 1;
    for (; *text; text++) {
        if (*text < '0' || *text > '9' || v > 99999999)
            return 1;
        v = v * 10 + (*text - '0');
    }
    *out = int32_t(v);
    return 0;
}

// [type] name [[type] name ...] and type(name ...).
int32_t ti_newvlist(toktype *ti)
{
    char word[71];
    pi_nnew = 0;
    pi_newtype = 0;
    if (pushedword(ti, word, sizeof word))
        return 0;
    const char *at = ti->c_ptr;
    uint8_t group = 0, type = 0;
    int32_t rc = 0;
    for (;; *word = '\0') {
        if (!*word) {
            at = blanks(at);
            if (group && *at == ')') {
                group = 0;
                at++;
                continue;
            }
            const char *behind = takeword(at, word, sizeof word);
            if (iskeyorb(word))
                break;
            at = behind;
        }
        uint8_t typed = type_ofword(word);
        if (typed && *blanks(at) != '=') {
            pi_newtype = type = typed;
            if (*at == '(') {
                group = typed;
                at++;
            }
            continue;
        }
        if ((rc = newelement(&at, group ? group : type, word)))
            break;
        type = 0;
    }
    if (!rc && group)
        rc = required(")");
    ti->c_ptr += at - ti->c_ptr;
    ti->lc_ptr = nullptr;
    return rc;
}

int32_t vlist_make(int32_t *list, int32_t *n)
{
    uint8_t dflt = type_ofword(set_type);
    *n = 0;
    for (int32_t i = 0; i < pi_nnew; i++) {
        const newvar *v = &pi_new[i];
        int32_t var = addvar(v->type ? v->type : dflt ? dflt : uint8_t(T_FLOAT), v->name);
        if (var < 0)
            return -var;
        if (*v->label)
            snprintf(_lbllist[var - 1], 33, "%s", v->label);
        list[(*n)++] = var;
    }
    return 0;
}
