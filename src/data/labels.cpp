// data/labels.cpp - value-label tables and variable labels.
//
// A table is one block, the same in memory and in a file:
//
//   n  txtlen  off[n]  val[n]  txt[txtlen]
//
// val ascends, texts stand in the order they were added. A table never grows in place: a
// change makes a new record and removes the old one last, so that a failure keeps it.
#include "data/labels.h"
#include "core/mem.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/variables.h"
#include "interp/dm.h"
#include "interp/messages.h"
#include <algorithm>
#include <cstdio>
#include <cstring>

struct vltable {
    int32_t n, txtlen;
    int32_t body[1];
    int32_t *off() { return body; }
    const int32_t *off() const { return body; }
    int32_t *val() { return body + n; }
    const int32_t *val() const { return body + n; }
    char *txt() { return reinterpret_cast<char *>(body + 2 * int64_t(n)); }
    const char *txt() const { return reinterpret_cast<const char *>(body + 2 * int64_t(n)); }
};

static int32_t vlstatus;

int32_t vlwhy() { return vlstatus == 134 ? error(134) : vlstatus; }

static vltable *fail(int32_t why)
{
    vlstatus = why;
    return nullptr;
}

static vltable *refused()
{
    return fail(errout(RC_DMMEM, "op. sys. refuses to provide memory\n"));
}

vltable *vlfind(const char *name)
{
    char cut[33];
    snprintf(cut, sizeof cut, "%s", name);
    int32_t h = int32_t(dm_hash(cut) % dm_nhash);
    dmrec *r = dm_hname[h];
    while (r && (r->type != DM_VALLABEL || strcmp(r->name, cut)))
        r = r->nnext;
    if (!r)
        return nullptr;
    // Tables in steady use drift to the front of their chain.
    if (++r->flag > 10) {
        r->flag = 0;
        if (r != dm_hname[h]) {
            r->nprev->nnext = r->nnext;
            if (r->nnext)
                r->nnext->nprev = r->nprev;
            r->nprev = nullptr;
            r->nnext = dm_hname[h];
            dm_hname[h]->nprev = r;
            dm_hname[h] = r;
        }
    }
    return static_cast<vltable *>(dm_payload(r));
}

static uint64_t blocksize(int32_t n, int32_t textlen)
{
    return uint64_t(n) * 8 + uint64_t(textlen) + 8;
}

vltable *vlallocate(const char *name, int32_t n, int32_t textlen)
{
    if (n < 0 || n > vl_maxn || textlen < 0)
        return fail(134);
    auto t = static_cast<vltable *>(dmadd(name, DM_VALLABEL, 0, blocksize(n, textlen)));
    if (!t)
        return fail(RC_DMMEM);
    t->n = n;
    t->txtlen = textlen;
    return t;
}

// 0-based place of a value, or -1 minus the place where it would stand.
static int32_t place(const vltable *t, int32_t value)
{
    if (!t || t->n <= 0)
        return -1;
    const int32_t *v = t->val(), *at = std::lower_bound(v, v + t->n, value);
    int32_t i = int32_t(at - v);
    return i < t->n && *at == value ? i : -1 - i;
}

int32_t vlfindval(const vltable *table, double value, char *out, int32_t maxlen)
{
    int32_t i = place(table, ovlong_of_ovdouble(value));
    if (i < 0 || !out)
        return i;
    const char *text = table->txt() + table->off()[i];
    if (maxlen > vl_maxtext)
        strcpy(out, text);
    else if (maxlen > 0)
        snprintf(out, size_t(maxlen), "%s", text);
    return i;
}

int32_t vlfindtxt(const vltable *table, const char *text, int32_t *value)
{
    for (int32_t i = 0; table && i < table->n; i++)
        if (!strcmp(table->txt() + table->off()[i], text)) {
            if (value)
                *value = table->val()[i];
            return 0;
        }
    return 1;
}

void vlgetofi(const vltable *table, int32_t i, const char **text, int32_t *value)
{
    if (text)
        *text = table->txt() + table->off()[i];
    if (value)
        *value = table->val()[i];
}

int32_t vlgetcount(const vltable *table) { return table ? table->n : 0; }

int32_t vlmaxlen(const vltable *table)
{
    size_t most = 0;
    for (int32_t i = 0; table && i < table->n; i++)
        most = std::max(most, strlen(table->txt() + table->off()[i]));
    return int32_t(most);
}

// The record's name, kept while the record is replaced.
struct tablename {
    char s[33];
    explicit tablename(const vltable *t) { memcpy(s, dm_rec(t)->name, sizeof s); }
};

// A new record with the entries of table, but for number gone (-1 none), and room for more.
static vltable *copied(const vltable *table, int32_t gone, int32_t more, int32_t moretext)
{
    tablename name(table);
    int32_t cut = gone < 0 ? 0 : int32_t(strlen(table->txt() + table->off()[gone]) + 1);
    int32_t from = gone < 0 ? table->txtlen : table->off()[gone];
    int32_t left = gone < 0 ? table->n : table->n - 1, textlen;
    if (__builtin_add_overflow(table->txtlen - cut, moretext, &textlen))
        return fail(134);
    vltable *t = vlallocate(name.s, left + more, textlen);
    if (!t)
        return nullptr;
    for (int32_t i = 0, to = 0; i < table->n; i++) {
        if (i == gone)
            continue;
        int32_t off = table->off()[i];
        t->off()[to] = off > from ? off - cut : off;
        t->val()[to++] = table->val()[i];
    }
    memcpy(t->txt(), table->txt(), size_t(from));
    memcpy(t->txt() + from, table->txt() + from + cut, size_t(table->txtlen - from - cut));
    return t;
}

static vltable *replaced(vltable *old)
{
    tablename name(old);
    dmrm(old);
    upValLabel = true;
    vlstatus = 0;
    return vlfind(name.s);
}

vltable *vladdlab(vltable *table, int32_t value, const char *text)
{
    if (!table)
        return fail(9270);
    size_t len = strlen(text) + 1;
    if (table->n > vl_maxn || len > INT32_MAX)
        return fail(134);
    int32_t at = place(table, value), gone = at;
    // A value has one text: an old one goes, and its place stays.
    if (at < 0)
        at = -1 - at, gone = -1;
    vltable *t = copied(table, gone, 1, int32_t(len));
    if (!t)
        return nullptr;
    size_t behind = size_t(t->n - 1 - at) * 4;
    memmove(t->off() + at + 1, t->off() + at, behind);
    memmove(t->val() + at + 1, t->val() + at, behind);
    t->off()[at] = t->txtlen - int32_t(len);
    t->val()[at] = value;
    memcpy(t->txt() + t->off()[at], text, len);
    return replaced(table);
}

vltable *vlrmlab(vltable *table, int32_t value)
{
    if (!table)
        return fail(9270);
    int32_t at = place(table, value);
    if (at < 0)
        return table;
    return copied(table, at, 0, 0) ? replaced(table) : nullptr;
}

int32_t vldrop(const char *name)
{
    vltable *t = vlfind(name);
    if (!t)
        return labnotfound(name);
    dmrm(t);
    upValLabel = true;
    return 0;
}

// The layout is that of adding the pairs one by one: texts in the order of the last pair of
// each value, values ascending.
bool vl_inuse(const char *name, int32_t nvars)
{
    for (int32_t k = 0; k < nvars; k++)
        if (!strcmp(_lbllist[k], name))
            return true;
    char owner[33], what[33];
    const char *text;
    for (const void *p = nullptr; (p = charnext(p, owner, what, &text));)
        if (!strncmp(what, vl_waiting, sizeof vl_waiting - 1) && !strcmp(text, name))
            return true;
    return false;
}

vltable *vlbuild(const char *name, const vlpair *pairs, int32_t n)
{
    auto order = static_cast<int32_t *>(safemalloc(size_t(n) * 4 + 4));
    if (!order)
        return refused();
    for (int32_t i = 0; i < n; i++)
        order[i] = i;
    std::sort(order, order + n, [pairs](int32_t a, int32_t b) {
        return pairs[a].value != pairs[b].value ? pairs[a].value < pairs[b].value : a < b;
    });
    int32_t kept = 0;
    uint64_t bytes = 0;
    for (int32_t i = 0; i < n; i++) {
        if (i + 1 < n && pairs[order[i]].value == pairs[order[i + 1]].value)
            continue;
        order[kept++] = order[i];
        bytes += strlen(pairs[order[kept - 1]].text) + 1;
    }
    vltable *t = bytes > INT32_MAX ? fail(134) : vlallocate(name, kept, int32_t(bytes));
    if (t) {
        for (int32_t i = 0; i < kept; i++) {
            t->val()[i] = pairs[order[i]].value;
            t->off()[i] = order[i];
        }
        // off holds the pair's number until its text has a place.
        std::sort(order, order + kept);
        int32_t at = 0;
        auto where = static_cast<int32_t *>(safemalloc(size_t(n) * 4 + 4));
        if (!where) {
            dmrm(t);
            safefree(order);
            return refused();
        }
        for (int32_t i = 0; i < kept; i++) {
            const char *text = pairs[order[i]].text;
            size_t len = strlen(text) + 1;
            where[order[i]] = at;
            memcpy(t->txt() + at, text, len);
            at += int32_t(len);
        }
        for (int32_t i = 0; i < kept; i++)
            t->off()[i] = where[t->off()[i]];
        safefree(where);
        upValLabel = true;
        vlstatus = 0;
    }
    safefree(order);
    return t;
}

// ---- variable labels

static char *varlab(const char *name)
{
    return static_cast<char *>(dmfind0(name, DM_VARLABEL));
}

void getvarlab(int32_t var, char *out)
{
    const char *text = varlab(_varlist[var - 1]);
    snprintf(out, size_t(varlablen) + 1, "%s", text ? text : "");
}

int32_t putvarlab(int32_t var, const char *text)
{
    const char *name = _varlist[var - 1];
    char *old = varlab(name);
    if (!*text) {
        dmrm(old);
        return 0;
    }
    char cut[varlablen + 1];
    snprintf(cut, sizeof cut, "%s", text);
    int32_t rc = dmsave(name, DM_VARLABEL, 0, cut, strlen(cut) + 1);
    if (!rc)
        dmrm(old);
    return rc;
}

void rmvarlab(const char *name) { dmrm(varlab(name)); }

void renamevarlab(const char *oldname, const char *newname)
{
    char *text = varlab(oldname);
    if (text) {
        rmvarlab(newname);
        dmrename(text, newname);
    }
}
