// data/dtadump.cpp - the fields of a dataset file by name and offset, for looking into files
// that something is wrong with.
#include "core/files.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/dtafmt.h"
#include "data/labels.h"
#include "interp/messages.h"
#include "output/print.h"
#include <cinttypes>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <unistd.h>

static void head(uint64_t at, uint64_t n) { spout21f("%10" PRIu64 " %9" PRIu64 "  ", at, n); }

static void dump_field(const dtahdr *h, const dtafld *f)
{
    const char *p = reinterpret_cast<const char *>(h) + f->to;
    head(f->at, f->width);
    spout21f("%-16s ", f->name);
    if (f->kind == 't')
        spout21f("%s\n", p);
    else
        spout21f("%d\n", f->kind == 'u'                    ? int(uint8_t(*p))
                         : f->to == offsetof(dtahdr, K) ? int(h->K)
                                                           : h->N);
}

// Records of the expansion fields; where the rows begin is what follows them.
static int32_t dump_expansion(int32_t fd, const dtadict *d, uint64_t *at)
{
    int32_t len = d->lay->expansion;
    byteorder o = dta_order(&d->h);
    while (len && !stopflag) {
        uint8_t b[5 + 66] = {};
        if (ovata_read(fd, b, len) < len)
            return 1;
        int64_t n = len == 3 ? int64_t(get16(b + 1, o)) : int64_t(int32_t(get32(b + 1, o)));
        bool end = b[0] == 0 && (len == 3 || n == 0);
        int32_t w = len == 3 ? 9 : 33, take = b[0] == 1 && n > 2 * w ? 2 * w : 0;
        if (n < 0 || n > ov_left(fd) || ovata_read(fd, b + 5, take) < take)
            return 1;
        head(*at, uint64_t(len + (end ? 0 : n)));
        if (take)
            spout21f("characteristic %.*s[%.*s]\n", w - 1, reinterpret_cast<char *>(b + 5), w - 1,
                     reinterpret_cast<char *>(b + 5 + w));
        else
            spout21f("expansion field, type %d\n", b[0]);
        *at += uint64_t(len) + (end ? 0 : uint64_t(n));
        if (end)
            return 0;
        if (lseek(fd, off_t(*at), SEEK_SET) < 0)
            return 1;
    }
    return 0;
}

static int32_t dump_tables(int32_t fd, const dtadict *d, uint64_t at)
{
    byteorder o = dta_order(&d->h);
    int32_t w = d->lay->labname, len = w ? 4 + w + 3 : 12;
    while (!stopflag) {
        uint8_t b[48] = {};
        if (lseek(fd, off_t(at), SEEK_SET) < 0 || ovata_read(fd, b, len) < len)
            return 0;
        int64_t n = w ? int64_t(int32_t(get32(b, o))) : int64_t(get16(b, o)) * 10;
        int64_t left = ov_left(fd);
        head(at, uint64_t(len) + uint64_t(n < 0 ? 0 : n));
        spout21f("value label %.*s", w ? w - 1 : 10, reinterpret_cast<char *>(b + (w ? 4 : 2)));
        uint8_t c[8] = {};
        if (w && n >= 8 && ovata_read(fd, c, 8) == 8)
            spout21f(", n %d, txtlen %d", int32_t(get32(c, o)), int32_t(get32(c + 4, o)));
        spout21(n > left ? ", longer than the file\n" : "\n");
        if (n <= 0 || n > left)
            return 0;
        at += uint64_t(len + n);
    }
    return 0;
}

static int32_t dump_rest(int32_t fd, const dtadict *d, uint64_t at)
{
    if (lseek(fd, off_t(at), SEEK_SET) < 0 || dump_expansion(fd, d, &at)) {
        head(at, 0);
        spout21("damaged from here\n");
        return stopflag;
    }
    uint64_t rows = d->width * uint64_t(d->N);
    head(at, rows);
    spout21f("rows, %" PRIu64 " bytes each\n", d->width);
    uint64_t row = 0;
    for (int32_t k = 0; k < d->K && !stopflag; k++) {
        int32_t w = dsa_bytlenc(d->types[k]);
        spout21f("%9s%" PRIu64 " %9d    %-16s type %d format %s\n", "+", row, w, d->names[k],
                 d->types[k], d->fmts[k]);
        row += uint64_t(w);
    }
    return dump_tables(fd, d, at + rows);
}

int32_t dta_dump(const char *name)
{
    dtadict d;
    int32_t rc = dta_peek(name, &d);
    if (rc)
        return rc;
    spout21("    offset     bytes  field\n");
    for (const dtafld *f = d.lay->hdr; f->name; f++)
        dump_field(&d.h, f);
    uint64_t at = d.lay->hdrlen;
    for (const dtasection *s = dtasections; s->name; s++) {
        uint64_t n = uint64_t(d.K) * d.lay->width[s->which] + (s->which == DS_SORT ? 2 : 0);
        head(at, n);
        spout21f("%s\n", s->name);
        at += n;
    }
    int32_t fd = ov_open(name, OV_READ);
    if (fd < 0)
        return fierr(fd, name);
    rc = dump_rest(fd, &d, at);
    ov_close(fd);
    return rc ? rc : stopflag;
}
