// data/dtadict.cpp - reading a file's header and dictionary. Nothing a file says about its
// lengths is believed before it was compared with what is left of it.
#include "core/files.h"
#include "core/mem.h"
#include "core/rc.h"
#include "data/dsa.h"
#include "data/dtafmt.h"
#include "data/variables.h"
#include "interp/messages.h"
#include "output/print.h"
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

namespace {
struct freer {
    void operator()(void *p) const { safefree(p); }
};
}  // namespace
using bytes = std::unique_ptr<uint8_t[], freer>;
static bytes getbytes(uint64_t n) { return bytes(static_cast<uint8_t *>(safemalloc(n))); }

dtadict::dtadict() { memset(static_cast<void *>(this), 0, sizeof *this); }
dtadict::~dtadict()
{
    safefree(types);
    safefree(names);
    safefree(srt);
    safefree(fmts);
    safefree(lbls);
    safefree(varlabs);
}

// ---- header

static int32_t newer(const char *name)
{
    std::string safe;
    for (const char *p = name; *p; p++)
        safe += *p == '{' ? "{c -(}" : *p == '}' ? "{c )-}" : std::string(1, *p);
    outlev_keep keep(3);
    spoutsml("{p 0 4 4}\n");
    spoutsml(("{err}file " + safe + " from more recent version of Ovata;\n").c_str());
    spoutsml("type {ovata \"update query\"} to see if an \n"
             "update to Ovata is available and look at \n"
             "the home page of Ovata to see whether a \n"
             "new version of Ovata is available.\n{p_end}\n");
    return 610;
}

static int32_t refuse(int32_t fd, int32_t rc)
{
    ov_close(fd);
    return rc;
}

int32_t rdhdr(int32_t fd, dtahdr *h, const char *name)
{
    uint8_t b[128] = {};
    if (ovata_read(fd, b, 1) < 1)
        return refuse(fd, fierr(610, name));
    if (b[0] == 116 || b[0] == 117)
        return refuse(fd, newer(name));
    const dtalayout *lay = dta_layout(b[0]);
    if (!lay || ovata_read(fd, b + 1, lay->hdrlen - 1) < lay->hdrlen - 1)
        return refuse(fd, fierr(610, name));
    dta_takehdr(lay, b, h);
    if (h->filetype != 1)
        return refuse(fd, fierr(609, name));
    if (h->stamp[17])
        return refuse(fd, fierr(610, name));
    if (h->K < 0 || h->N < 0)
        return refuse(fd, fierr(RC_CORRUPT, name));
    if (h->release == 103)
        h->release = 104;
    return 0;
}

// ---- storage types

static int32_t bad_types(int32_t zeros, int32_t others, const char *name)
{
    (void)!fierr(610, name);
    outlev_keep keep(3);
    int32_t n = zeros + others;
    spout21(".dta file contains\n");
    spout21f("%d invalid storage-type code%s\n", n, n == 1 ? "" : "s");
    spout21(zeros == 0    ? "File uses invalid codes other than code 0.\n"
            : others == 0 ? "File uses code 0.\n"
                          : "File uses code 0 and other invalid codes.\n");
    return 610;
}

static int32_t check_types(const dtadict *d, const char *name)
{
    int32_t zeros = 0, others = 0;
    for (int32_t k = 0; k < d->K; k++) {
        uint8_t t = d->types[k];
        if (d->lay->letters) {
            zeros += t == 127;
            others += t < 127 && (t == 0 || !strchr("bilfd", t));
        } else {
            zeros += t == 0;
            others += t >= 245 && t <= 250;
        }
    }
    return zeros + others ? bad_types(zeros, others, name) : 0;
}

static void widen_types(dtadict *d)
{
    if (d->lay->letters)
        cnv110to111vtype(d->types, d->K);
    if (d->h.release < 112)
        dsa_map_vartypes_to_old(d->types, d->K);
    d->width = 0;
    for (int32_t k = 0; k < d->K; k++)
        d->width += uint64_t(dsa_bytlenc(d->types[k]));
}

// ---- dictionary

template <class T> static bool take(T **p, uint64_t n)
{
    *p = static_cast<T *>(safecalloc(n * sizeof(T)));
    return *p != nullptr;
}

// K texts of w bytes in the file to cells of W bytes, terminated and clean behind the end.
template <size_t W>
static void texts(char (*to)[W], const uint8_t *from, int32_t K, size_t w)
{
    for (int32_t k = 0; k < K; k++, from += w) {
        size_t n = strnlen(reinterpret_cast<const char *>(from), w);
        memcpy(to[k], from, n < W ? n : W - 1);
    }
}

static void section(dtadict *d, uint8_t which, const uint8_t *b)
{
    size_t w = d->lay->width[which];
    byteorder o = dta_order(&d->h);
    switch (which) {
    case DS_TYPES:
        memcpy(d->types, b, size_t(d->K));
        break;
    case DS_NAMES:
        return texts(d->names, b, d->K, w);
    case DS_SORT:
        for (int32_t i = 0; i <= d->K; i++)
            d->srt[i] = int16_t(get16(b + 2 * i, o));
        d->srt[d->K] = 0;
        break;
    case DS_FMTS:
        return texts(d->fmts, b, d->K, w);
    case DS_LBLS:
        return texts(d->lbls, b, d->K, w);
    default:
        return texts(d->varlabs, b, d->K, w);
    }
}

int32_t dta_readdict(int32_t fd, dtadict *d, const char *name)
{
    d->lay = dta_layout(d->h.release);
    d->K = d->h.K;
    d->N = d->h.N;
    uint64_t K = uint64_t(d->K), need = 2;
    for (uint8_t w : d->lay->width)
        need += K * w;
    int64_t left = ov_left(fd);
    if (left >= 0 && uint64_t(left) < need)
        return fierr(RC_IOREAD, name);
    bytes buf = getbytes(K * 81 + 2);
    if (!buf || !take(&d->types, K + 1) || !take(&d->names, K + 1) || !take(&d->srt, K + 1) ||
        !take(&d->fmts, K + 1) || !take(&d->lbls, K + 1) || !take(&d->varlabs, K + 1))
        return error(RC_NOMEM);
    for (const dtasection *s = dtasections; s->name; s++) {
        auto n = int64_t(K * d->lay->width[s->which] + (s->which == DS_SORT ? 2 : 0));
        if (lovata_read(fd, buf.get(), n) < n)
            return fierr(RC_IOREAD, name);
        section(d, s->which, buf.get());
        if (s->which != DS_TYPES)
            continue;
        int32_t rc = check_types(d, name);
        if (rc)
            return rc;
        widen_types(d);
    }
    return 0;
}

int32_t dta_peek(const char *name, dtadict *d)
{
    int32_t fd = ov_open(name, OV_READ);
    if (fd < 0)
        return fierr(fd, name);
    int32_t rc = rdhdr(fd, &d->h, name);
    if (rc)
        return rc;
    rc = dta_readdict(fd, d, name);
    ov_close(fd);
    return rc;
}
