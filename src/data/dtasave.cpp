// data/dtasave.cpp - the dataset in memory into a file. The same data give the same bytes,
// apart from the stamp.
#include "core/clock.h"
#include "core/files.h"
#include "core/mem.h"
#include "core/progress.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/dtafmt.h"
#include "data/labels.h"
#include "data/sort.h"
#include "data/variables.h"
#include "interp/dm.h"
#include "interp/messages.h"
#include "output/print.h"
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>
#include <unistd.h>

namespace {
struct freer {
    void operator()(void *p) const { safefree(p); }
};
}  // namespace
template <class T> using block = std::unique_ptr<T[], freer>;
template <class T> static block<T> getblock(uint64_t n)
{
    return block<T>(static_cast<T *>(safemalloc(n * sizeof(T))));
}

char dta_stamp[18];

struct savejob {
    int32_t fd, K, N;
    uint64_t width;
    const dtalayout *lay;
    const dta_saveopts *o;
    block<char> buf;
    int64_t many;  // rows the buffer holds
    bool broken;   // a break ended the writing
};

int32_t wrhdr(int32_t fd, const dtahdr *h, bool use_label)
{
    const dtalayout *lay = dta_layout(h->release);
    if (!lay || h->release < 110 || h->release == 112)
        return RC_SYNTAX;
    dtahdr w = *h;
    char stamp[24];
    w.order = B_LITTLE;
    w.filetype = 1;
    w.reserved = 0;
    memset(w.label, 0, sizeof w.label);
    if (use_label)
        memcpy(w.label, datalbl, sizeof w.label);
    getstamp(stamp);
    memcpy(w.stamp, stamp, 17);
    w.stamp[17] = 0;
    memcpy(dta_stamp, w.stamp, sizeof dta_stamp);
    uint8_t b[128];
    dta_puthdr(lay, &w, b);
    return wr(fd, b, lay->hdrlen);
}

// One text in a field of w bytes, zeros behind it.
static int32_t wr_text(const savejob *j, const char *text, size_t w)
{
    char field[96] = {};
    memcpy(field, text, strnlen(text, w - 1));
    return wr(j->fd, field, int64_t(w));
}

static int32_t wr_section(const savejob *j, uint8_t which)
{
    size_t w = j->lay->width[which];
    char text[96];
    bool ended = false;
    if (which == DS_TYPES)
        return wr(j->fd, _typlist, j->K);
    for (int32_t k = 0; k < j->K; k++) {
        uint8_t two[2];
        switch (which) {
        case DS_NAMES:
            (void)!wr_text(j, _varlist[k], w);
            break;
        case DS_SORT:
            // Behind the end, and from the first variable that is left out, all zeros.
            ended |= _srtlist[k] == 0 || _srtlist[k] > j->K;
            put16(two, ended ? uint16_t(0) : uint16_t(_srtlist[k]), B_LITTLE);
            (void)!wr(j->fd, two, 2);
            break;
        case DS_FMTS:
            if (w == 12)
                get113fmt(text, _fmtlist[k]);
            (void)!wr_text(j, w == 12 ? text : _fmtlist[k], w);
            break;
        case DS_LBLS:
            (void)!wr_text(j, _lbllist[k], w);
            break;
        default:
            getvarlab(k + 1, text);
            (void)!wr_text(j, text, w);
        }
    }
    return wr(j->fd, "\0", which == DS_SORT ? 2 : 0);
}

// ---- characteristics: the dataset's first, then by variable, each owner's by name

struct charref {
    int32_t owner;
    char ownername[33], name[33];
    const char *text;
};

static int32_t wr_chars(const savejob *j)
{
    char owner[33], name[33];
    const char *text;
    uint64_t n = 0;
    for (const void *p = nullptr; (p = charnext(p, owner, name, &text));)
        n++;
    auto refs = getblock<charref>(n + 1);
    if (!refs)
        return RC_NOMEM;
    n = 0;
    for (const void *p = nullptr; (p = charnext(p, owner, name, &text));) {
        charref r = {0, {}, {}, text};
        r.owner = strcmp(owner, "_dta") ? sysfindvar(owner) : -1;
        if (r.owner == 0 || r.owner > j->K)
            continue;
        snprintf(r.ownername, 33, "%s", owner);
        snprintf(r.name, 33, "%s", name);
        refs[n++] = r;
    }
    std::sort(refs.get(), refs.get() + n, [](const charref &a, const charref &b) {
        return a.owner != b.owner ? a.owner < b.owner : strcmp(a.name, b.name) < 0;
    });
    for (uint64_t i = 0; i < n; i++) {
        uint8_t head[5] = {1};
        size_t len = strlen(refs[i].text) + 1;
        put32(head + 1, uint32_t(66 + len), B_LITTLE);
        (void)!wr(j->fd, head, 5);
        (void)!wr_text(j, refs[i].ownername, 33);
        (void)!wr_text(j, refs[i].name, 33);
        (void)!wr(j->fd, refs[i].text, int64_t(len));
    }
    return wr(j->fd, "\0\0\0\0\0", 5);
}

// ---- rows

// What stands behind the end of a text is not data.
static void clean_row(const savejob *j, char *row)
{
    for (int32_t k = 0; k < j->K; k++) {
        uint8_t t = _typlist[k];
        char *p = row + sysdsa->offset[k];
        if (!t_isstr(t)) {
            if (b_native != B_LITTLE)
                std::reverse(p, p + dsa_bytlenc(t));
            continue;
        }
        size_t n = strnlen(p, t);
        memset(p + n, 0, t - n);
    }
}

static int32_t wr_rows(savejob *j)
{
    bool clean = b_native != B_LITTLE;
    for (int32_t k = 0; k < j->K; k++)
        clean |= t_isstr(_typlist[k]);
    for (int32_t i = 1; i <= j->N;) {
        int64_t n = 0;
        for (; i <= j->N && n < j->many; i++, n++) {
            char *row = j->buf.get() + uint64_t(n) * j->width;
            dsa_getdtaobs(sysdsa, row, uint32_t(i), int64_t(j->width));
            if (clean)
                clean_row(j, row);
        }
        if (wr(j->fd, j->buf.get(), n * int64_t(j->width)))
            return 1;
        if (fault_poll()) {
            j->broken = true;
            return RC_BREAK;
        }
        progress("saving", double(i) / j->N);
    }
    return 0;
}

// ---- value labels

static int32_t wr_table(const savejob *j, const char *name, vltable *t)
{
    uint64_t len = dm_rec(t)->len;
    uint8_t b[8] = {};
    put32(b, uint32_t(len), B_LITTLE);
    (void)!wr(j->fd, b, 4);
    (void)!wr_text(j, name, 33);
    (void)!wr(j->fd, "\0\0\0", 3);
    auto p = reinterpret_cast<const char *>(t);
    if (b_native == B_LITTLE)
        return wr(j->fd, p, int64_t(len));
    int32_t n;
    memcpy(&n, p, 4);
    for (int64_t i = 0; i < 2 + 2 * int64_t(n); i++) {
        uint32_t v;
        memcpy(&v, p + 4 * i, 4);
        put32(b, v, B_LITTLE);
        (void)!wr(j->fd, b, 4);
    }
    int64_t at = 8 + 8 * int64_t(n);
    return wr(j->fd, p + at, int64_t(len) - at);
}

struct tabref {
    char name[33];
};

static int32_t wr_labels(const savejob *j)
{
    char name[33];
    uint64_t n = 0;
    for (void *p = nullptr; (p = dmnext(p, name, DM_VALLABEL, nullptr));)
        n++;
    auto refs = getblock<tabref>(n + 1);
    if (!refs)
        return RC_NOMEM;
    n = 0;
    for (void *p = nullptr; (p = dmnext(p, refs[n].name, DM_VALLABEL, nullptr));)
        n += j->o->orphans || vl_inuse(refs[n].name, j->K);
    std::sort(refs.get(), refs.get() + n,
              [](const tabref &a, const tabref &b) { return strcmp(a.name, b.name) < 0; });
    for (uint64_t i = 0; i < n; i++)
        (void)!wr_table(j, refs[i].name, vlfind(refs[i].name));
    return wr(j->fd, "", 0);
}

// ---- the whole

static int32_t wr_all(savejob *j)
{
    dtahdr h = {};
    int32_t rc;
    h.release = j->lay->release;
    h.K = int16_t(j->K);
    h.N = j->N;
    wrinit();
    if ((rc = wrhdr(j->fd, &h, true)))
        return rc;
    for (const dtasection *s = dtasections; s->name; s++)
        (void)!wr_section(j, s->which);
    if ((rc = wr_chars(j)) || (rc = wr_rows(j)))
        return rc;
    return j->o->label ? wr_labels(j) : 0;
}

int32_t dta_save(const char *name, const dta_saveopts *o)
{
    savejob j = {};
    if (_i_Kvar == 0 && !o->emptyok)
        return error(RC_NOTFOUND);
    j.o = o;
    j.K = _i_Kvar;
    j.N = _i_Kvar ? _Nobs : 0;
    j.lay = dta_layout(o->oldformat ? 113 : 115);
    if (j.N == 0) {
        outlev_keep keep(1);
        spout21("(note: dataset contains 0 observations)\n");
    }
    int32_t rc;
    // The estimation sample, and the order a program will go back to, are not written.
    for (int32_t v = j.K; v > 0; v--) {
        bool sample = !o->all && o->esample && !strcmp(_varlist[v - 1], o->esample);
        if (!sample && !sort_holds(_varlist[v - 1]))
            continue;
        if ((rc = pi_dsa_mvvar(sysdsa, uint32_t(v), uint32_t(j.K), nullptr)))
            return rc;
        j.K--;
    }
    j.width = j.K < _Kvar ? sysdsa->offset[j.K] : dsa_lrec(sysdsa);
    j.many = j.width ? int64_t(262144 / j.width) : 1;
    j.many = std::min<int64_t>(std::max<int64_t>(j.many, 2), j.N ? j.N : 1);
    if (!(j.buf = getblock<char>(uint64_t(j.many) * j.width + 2)))
        return error(RC_NOMEM);
    if ((j.fd = ov_open(name, o->replace ? OV_REPLACE : OV_CREATE)) < 0)
        return fierr(j.fd, name);
    rc = wr_all(&j);
    progress_end();
    ov_close(j.fd);
    if (rc) {
        ov_discard(name);
        if (j.broken)
            return RC_BREAK;
        return rc == RC_NOMEM ? error(RC_NOMEM) : fierr(RC_DISKFULL, name);
    }
    s_updata = false;
    return fierr(697, name);
}
