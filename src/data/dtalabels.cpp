// data/dtalabels.cpp - value-label tables of a file: each is checked whole, then built anew.
//
//   early form   n (2)  name (10)  n values (2)  n texts (8)
//   later form   len (4)  name (9 or 33)  3 bytes  table of len bytes
#include "core/files.h"
#include "core/mem.h"
#include "core/rc.h"
#include "data/dtafmt.h"
#include "data/labels.h"
#include "data/variables.h"
#include "interp/messages.h"
#include "output/print.h"
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>

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

static void note(const char *before, const char *name, const char *behind)
{
    outlev_keep keep(1);
    spout21f("%s%s%s\n", before, name, behind);
}

static bool skip(int32_t fd, int64_t n)
{
    char piece[1024];
    while (n > 0) {
        int32_t want = n < 1024 ? int32_t(n) : 1024;
        if (ovata_read(fd, piece, want) < want)
            return false;
        n -= want;
    }
    return true;
}

// Pairs of a table, in the order of their texts. False when the block contradicts itself.
static bool check_table(const uint8_t *b, int64_t len, byteorder o, block<vlpair> *pairs,
                        int32_t *n, bool *nomem)
{
    if (len < 8)
        return false;
    int64_t count = int32_t(get32(b, o)), textlen = int32_t(get32(b + 4, o));
    if (count < 0 || count > vl_maxn || textlen < 0 || 8 + 8 * count + textlen > len)
        return false;
    const uint8_t *off = b + 8, *val = off + 4 * count;
    auto txt = reinterpret_cast<const char *>(val + 4 * count);
    if (!(*pairs = getblock<vlpair>(uint64_t(count) + 1))) {
        *nomem = true;
        return false;
    }
    for (int64_t i = 0; i < count; i++) {
        int64_t at = int32_t(get32(off + 4 * i, o));
        auto v = int32_t(get32(val + 4 * i, o));
        if (at < 0 || at >= textlen || !memchr(txt + at, 0, size_t(textlen - at)))
            return false;
        if (i > 0 && (*pairs)[size_t(i) - 1].value >= v)
            return false;
        (*pairs)[size_t(i)] = {v, txt + at};
    }
    *n = int32_t(count);
    std::stable_sort(pairs->get(), pairs->get() + count,
                     [](const vlpair &x, const vlpair &y) { return x.text < y.text; });
    return true;
}

static int32_t store(const char *name, const vlpair *pairs, int32_t n)
{
    for (int32_t i = 0; i < n; i++)
        if (strlen(pairs[i].text) > size_t(vl_maxtext)) {
            note("value label ", name, " contains labels longer than 32000 characters");
            return 0;
        }
    return vlbuild(name, pairs, n) ? 0 : vlwhy();
}

// 1 when the table is to be read.
static bool want_table(const char *name, bool (*wanted)(const char *name))
{
    if (chkname(name, true)) {
        note("(value label with an invalid name left out)", "", "");
        return false;
    }
    if (vlfind(name)) {
        note("(label ", name, " already defined)");
        return false;
    }
    return !wanted || wanted(name);
}

static void take_name(char *name, const uint8_t *from, size_t n)
{
    size_t len = strnlen(reinterpret_cast<const char *>(from), n < 33 ? n : 32);
    memcpy(name, from, len);
    name[len] = 0;
}

// 0 go on, -1 the end, or a code.
static int32_t one_table(int32_t fd, const dtadict *d, bool (*wanted)(const char *name))
{
    byteorder o = dta_order(&d->h);
    uint8_t head[40];
    int32_t headlen = 4 + d->lay->labname + 3;
    int32_t got = ovata_read(fd, head, headlen);
    auto len = got >= 4 ? int32_t(get32(head, o)) : 0;
    if (got < headlen || len <= 0)
        return -1;
    char name[33];
    take_name(name, head + 4, d->lay->labname);
    int64_t left = ov_left(fd);
    if (left >= 0 && len > left) {
        note("(value label ", name, " is damaged; left out)");
        return -1;
    }
    if (!want_table(name, wanted))
        return skip(fd, len) ? 0 : -1;
    auto b = getblock<uint8_t>(uint64_t(len));
    if (!b)
        return error(RC_NOMEM);
    if (ovata_read(fd, b.get(), len) < len)
        return -1;
    block<vlpair> pairs;
    int32_t n = 0;
    bool nomem = false;
    if (!check_table(b.get(), len, o, &pairs, &n, &nomem)) {
        if (nomem)
            return error(RC_NOMEM);
        note("(value label ", name, " is damaged; left out)");
        return 0;
    }
    return store(name, pairs.get(), n);
}

static int32_t one_early(int32_t fd, const dtadict *d, bool (*wanted)(const char *name))
{
    byteorder o = dta_order(&d->h);
    uint8_t head[12];
    if (ovata_read(fd, head, 12) < 12)
        return -1;
    uint32_t n = get16(head, o);
    char name[33];
    take_name(name, head + 2, 10);
    auto b = getblock<uint8_t>(uint64_t(n) * 10 + 1);
    auto pairs = getblock<vlpair>(uint64_t(n) + 1);
    auto texts = getblock<char>(uint64_t(n) * 9 + 1);
    if (!b || !pairs || !texts)
        return error(RC_NOMEM);
    if (ovata_read(fd, b.get(), int32_t(n * 10)) < int32_t(n * 10)) {
        note("(value label ", name, " is damaged; left out)");
        return -1;
    }
    if (!want_table(name, wanted))
        return 0;
    for (uint32_t i = 0; i < n; i++) {
        // A text may fill its eight bytes.
        char *t = texts.get() + 9 * i;
        memcpy(t, b.get() + 2 * n + 8 * i, 8);
        t[8] = 0;
        pairs[i] = {int16_t(get16(b.get() + 2 * i, o)), t};
    }
    return store(name, pairs.get(), int32_t(n));
}

int32_t loadlab(int32_t fd, const dtadict *dict, bool (*wanted)(const char *name))
{
    for (;;) {
        int32_t rc = dict->lay->labname ? one_table(fd, dict, wanted)
                                        : one_early(fd, dict, wanted);
        if (rc)
            return rc < 0 ? 0 : rc;
    }
}
