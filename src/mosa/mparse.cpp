// Lists of names for commands such as mosa drop.
//
//   x            a matrix               x*           matrices by pattern
//   f()          a function             f*()         functions by pattern
//   c::f()       a member function      c::*()       all of a class
//
// A pattern may find nothing; a name must be there.
#include "core/mem.h"
#include "core/text.h"
#include "mosa/compiler.h"
#include "output/print.h"
#include <cstdio>
#include <cstring>

enum : int32_t { MP_REQUIRED = 100, MP_NOTALLOWED = 101, MP_SYNTAX = 198, MP_NOTFOUND = 3499 };

int32_t mparseinit(m_namelist *list)
{
    list->n = 0;
    list->obj = static_cast<matobj **>(safemalloc(size_t(mo_cnt() + 1000) * sizeof(matobj *)));
    if (list->obj)
        return 0;
    spout21at(3, "insufficient memory\n");
    return 950;
}

void mparsefree(m_namelist *list)
{
    safefree(list->obj);
    list->obj = nullptr;
    list->n = 0;
}

// A text of letters, *, which is any run, and ?, which is any letter.
static bool fits(const char *pattern, const char *name)
{
    const char *star = nullptr, *from = nullptr;
    while (*name) {
        if (*pattern == '*') {
            star = pattern++;
            from = name;
        } else if (*pattern == *name || *pattern == '?') {
            pattern++;
            name++;
        } else if (star) {
            pattern = star + 1;
            name = ++from;
        } else
            return false;
    }
    while (*pattern == '*')
        pattern++;
    return !*pattern;
}

struct mp_name {
    char text[70]; // without "()"
    bool isfcn, ispattern;
};

static void add(m_namelist *list, matobj *m)
{
    for (int32_t i = 0; i < list->n; i++)
        if (list->obj[i] == m)
            return;
    list->obj[list->n++] = m;
}

// The names of functions as a list writes them; those of statements are none.
static bool fcn_text(const matobj *f, char *text)
{
    if (f->info->name[0] == '<' || f->info->inclass)
        return false;
    snprintf(text, 70, "%s%s%s", f->info->name, *f->info->subname ? "::" : "", f->info->subname);
    return true;
}

static void find_functions(m_namelist *list, const mp_name &name)
{
    char text[70];
    for (matobj *f = mo_nextfcn(nullptr); f; f = mo_nextfcn(f))
        if (fcn_text(f, text) && fits(name.text, text))
            add(list, f);
}

static void find_matrices(m_namelist *list, const mp_name &name)
{
    for (matobj *m = mo_nextmat(nullptr); m; m = mo_nextmat(m))
        if (m_isvisible(m) && fits(name.text, mo_name(m)))
            add(list, m);
}

static bool is_namechar(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
           c == '*' || c == '?';
}

// One name from *at, which is left behind it; false where there is none.
static bool get_name(const char **at, mp_name *name)
{
    const char *p = *at;
    size_t n = 0;
    while (is_namechar(p[n]) || (p[n] == ':' && p[n + 1] == ':' && is_namechar(p[n + 2])))
        n += p[n] == ':' ? 2 : 1;
    if (!n || n >= sizeof name->text || (p[0] >= '0' && p[0] <= '9'))
        return false;
    memcpy(name->text, p, n);
    name->text[n] = 0;
    name->ispattern = strpbrk(name->text, "*?") != nullptr;
    p += n;
    const char *q = p + strspn(p, " ");
    name->isfcn = *q == '(' && q[1 + strspn(q + 1, " ")] == ')';
    if (name->isfcn)
        p = strchr(q, ')') + 1;
    if (*p && *p != ' ' && *p != ',')
        return false;
    *at = p;
    return true;
}

static int32_t bad_name(const char *p)
{
    char word[80];
    size_t n = strcspn(p, " ");
    snprintf(word, sizeof word, "%.*s", int(n > 79 ? 79 : n), p);
    spout21fat(3, "%s%sfound where name expected\n", word, " ");
    return MP_SYNTAX;
}

int32_t mparse(m_namelist *list, const char *text, int32_t allow)
{
    const char *p = text;
    bool any = false;
    for (;; any = true) {
        p += strspn(p, " ,");
        if (!*p)
            break;
        mp_name name;
        if (!get_name(&p, &name))
            return bad_name(p);
        if (!(allow & (name.isfcn ? MP_FUNCTIONS : MP_MATRICES))) {
            spout21at(3, name.isfcn ? "functions not allowed\n" : "matrices not allowed\n");
            return MP_NOTALLOWED;
        }
        int32_t before = list->n;
        name.isfcn ? find_functions(list, name) : find_matrices(list, name);
        if (list->n == before && !name.ispattern) {
            spout21fat(3, "%s%snot found\n", name.text, name.isfcn ? "() " : " ");
            return MP_NOTFOUND;
        }
    }
    if (any)
        return 0;
    spout21at(3, "name(s) required\n");
    return MP_REQUIRED;
}
