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

vltable *vladdlab(vltable *table, int32_t value, const char *text)
{
    if (!table)
        return fail(9270);
    size_t len = strlen(text) + 1;
    int32_t textlen;
    if (table->n > vl_maxn || len > INT32_MAX ||
        __builtin_add_overflow(table->txtlen, int32_t(len), &textlen))
        return fail(134);
    tablename name(table);
    int32_t n = table->n, at = place(table, value);
    if (at >= 0) {
        // A value has one text: the new one takes the place of the old.
        if (!(table = vlrmlab(table, value)))
            return nullptr;
        return vladdlab(table, value, text);
    }
    at = -1 - at;
    if (n == 0)
        at = 0;
    vltable *t = vlallocate(name.s, n + 1, textlen);
    if (!t)
        return nullptr;
    memcpy(t->off(), table->off(), size_t(at) * 4);
    memcpy(t->val(), table->val(), size_t(at) * 4);
    t->off()[at] = table->txtlen;
    t->val()[at] = value;
    memcpy(t->off() + at + 1, table->off() + at, size_t(n - at) * 4);
    memcpy(t->val() + at + 1, table->val() + at, size_t(n - at) * 4);
    memcpy(t->txt(), table->txt(), size_t(table->txtlen));
    memcpy(t->txt() + table->txtlen, text, len);
    dmrm(table);
    upValLabel = true;
    vlstatus = 0;
    return vlfind(name.s);
}

vltable *vlrmlab(vltable *table, int32_t value)
{
    if (!table)
        return fail(9270);
    int32_t n = table->n, at = place(table, value);
    if (at < 0 || n == 0)
        return table;
    tablename name(table);
    int32_t gone = table->off()[at];
    auto len = int32_t(strlen(table->txt() + gone) + 1);
    vltable *t = vlallocate(name.s, n - 1, table->txtlen - len);
    if (!t)
        return nullptr;
    for (int32_t i = 0, to = 0; i < n; i++) {
        if (i == at)
            continue;
        int32_t off = table->off()[i];
        t->off()[to] = off > gone ? off - len : off;
        t->val()[to++] = table->val()[i];
    }
    memcpy(t->txt(), table->txt(), size_t(gone));
    memcpy(t->txt() + gone, table->txt() + gone + len, size_t(table->txtlen - gone - len));
    dmrm(table);
    upValLabel = true;
    vlstatus = 0;
    return vlfind(name.s);
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
vltable *vlbuild(const char *name, const vlpair *pairs, int32_t n)
{
    auto order = static_cast<int32_t *>(safemalloc(size_t(n) * 4 + 4));
    if (!order)
        return fail(RC_DMMEM);
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
            return fail(RC_DMMEM);
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
