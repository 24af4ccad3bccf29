#include "data/dtafmt.h"
#include <cstring>

#define AT(f) offsetof(dtahdr, f)
static constexpr dtafld hdr102[] = {
    {"release", 0, 1, 'u', AT(release)},   {"unused1", 1, 1, 'u', AT(reserved)},
    {"filetype", 2, 1, 'u', AT(filetype)}, {"unused3", 3, 1, 'u', AT(reserved)},
    {"K", 4, 2, 'i', AT(K)},               {"N", 6, 2, 'i', AT(N)},
    {"label", 8, 32, 't', AT(label)},      {},
};
static constexpr dtafld hdr104[] = {
    {"release", 0, 1, 'u', AT(release)},   {"order", 1, 1, 'u', AT(order)},
    {"filetype", 2, 1, 'u', AT(filetype)}, {"reserved", 3, 1, 'u', AT(reserved)},
    {"K", 4, 2, 'i', AT(K)},               {"N", 6, 4, 'i', AT(N)},
    {"label", 10, 32, 't', AT(label)},     {},
};
static constexpr dtafld hdr105[] = {
    {"release", 0, 1, 'u', AT(release)},   {"order", 1, 1, 'u', AT(order)},
    {"filetype", 2, 1, 'u', AT(filetype)}, {"reserved", 3, 1, 'u', AT(reserved)},
    {"K", 4, 2, 'i', AT(K)},               {"N", 6, 4, 'i', AT(N)},
    {"label", 10, 32, 't', AT(label)},     {"stamp", 42, 18, 't', AT(stamp)},
    {},
};
static constexpr dtafld hdr115[] = {
    {"release", 0, 1, 'u', AT(release)},   {"order", 1, 1, 'u', AT(order)},
    {"filetype", 2, 1, 'u', AT(filetype)}, {"reserved", 3, 1, 'u', AT(reserved)},
    {"K", 4, 2, 'i', AT(K)},               {"N", 6, 4, 'i', AT(N)},
    {"label", 10, 81, 't', AT(label)},     {"stamp", 91, 18, 't', AT(stamp)},
    {},
};
#undef AT

template <size_t n> static constexpr int total(const dtafld (&rows)[n])
{
    int at = 0;
    for (size_t i = 0; i + 1 < n; i++)
        at = rows[i].at == at ? at + rows[i].width : -10000;
    return at;
}
static_assert(total(hdr102) == 40 && total(hdr104) == 42 && total(hdr105) == 60 &&
                  total(hdr115) == 109,
              "gap or overlap");

const dtasection dtasections[] = {
    {"types", DS_TYPES},        {"names", DS_NAMES},           {"sort list", DS_SORT},
    {"formats", DS_FMTS},       {"label names", DS_LBLS},      {"variable labels", DS_VARLABS},
    {nullptr, 0},
};

const dtalayout dtalayouts[] = {
    {102, 40, hdr102, true, {1, 9, 2, 7, 9, 32}, 0, 0},
    {103, 42, hdr104, true, {1, 9, 2, 7, 9, 32}, 0, 0},
    {104, 42, hdr104, true, {1, 9, 2, 7, 9, 32}, 0, 0},
    {105, 60, hdr105, true, {1, 9, 2, 12, 9, 32}, 3, 0},
    {106, 60, hdr105, true, {1, 9, 2, 12, 9, 32}, 3, 9},
    {107, 109, hdr115, true, {1, 9, 2, 12, 9, 81}, 3, 9},
    {108, 109, hdr115, true, {1, 9, 2, 12, 9, 81}, 3, 9},
    {110, 109, hdr115, true, {1, 33, 2, 12, 33, 81}, 5, 33},
    {111, 109, hdr115, false, {1, 33, 2, 12, 33, 81}, 5, 33},
    {112, 109, hdr115, true, {1, 33, 2, 12, 33, 81}, 5, 33},
    {113, 109, hdr115, false, {1, 33, 2, 12, 33, 81}, 5, 33},
    {114, 109, hdr115, false, {1, 33, 2, 49, 33, 81}, 5, 33},
    {115, 109, hdr115, false, {1, 33, 2, 49, 33, 81}, 5, 33},
    {},
};

const dtalayout *dta_layout(uint8_t release)
{
    for (const dtalayout *l = dtalayouts; l->release; l++)
        if (l->release == release)
            return l;
    return nullptr;
}

void dta_takehdr(const dtalayout *lay, const uint8_t *bytes, dtahdr *h)
{
    *h = {};
    // Release 102 does not tell its order.
    h->order = lay->release == 102 ? uint8_t(B_LITTLE) : bytes[1];
    byteorder o = dta_order(h);
    for (const dtafld *f = lay->hdr; f->name; f++) {
        char *to = reinterpret_cast<char *>(h) + f->to;
        const uint8_t *p = bytes + f->at;
        if (f->kind == 'u')
            *to = char(*p);
        else if (f->kind == 't')
            memcpy(to, p, f->width);
        else if (f->to == offsetof(dtahdr, K))
            h->K = int16_t(get16(p, o));
        else
            h->N = f->width == 2 ? int16_t(get16(p, o)) : int32_t(get32(p, o));
    }
    h->label[lay->hdr == hdr115 ? 80 : 31] = 0;
}

void dta_puthdr(const dtalayout *lay, const dtahdr *h, uint8_t *bytes)
{
    byteorder o = dta_order(h);
    memset(bytes, 0, lay->hdrlen);
    for (const dtafld *f = lay->hdr; f->name; f++) {
        const char *from = reinterpret_cast<const char *>(h) + f->to;
        uint8_t *p = bytes + f->at;
        if (f->kind == 'u')
            *p = uint8_t(*from);
        else if (f->kind == 't')
            strncpy(reinterpret_cast<char *>(p), from, size_t(f->width) - 1);
        else if (f->to == offsetof(dtahdr, K))
            put16(p, uint16_t(h->K), o);
        else if (f->width == 2)
            put16(p, uint16_t(h->N), o);
        else
            put32(p, uint32_t(h->N), o);
    }
}

// A format as the twelve bytes of older files can hold it. Date formats lose their codes, and
// those the older releases did not have become numbers.
void get113fmt(char *out, const char *format)
{
    static const struct {
        char letter;
        const char *format;
    } dates[] = {{'C', "%15.0g"}, {'c', "%15.0g"}, {'d', "%d"},  {'h', "%th"}, {'m', "%tm"},
                 {'q', "%tq"},    {'w', "%tw"},    {'y', "%ty"}, {'b', "%9.0g"}};
    memset(out, 0, 12);
    if (!strncmp(format, "%d", 2)) {
        strncpy(out, "%d", 11);
        return;
    }
    if (strncmp(format, "%t", 2)) {
        strncpy(out, format, 11);
        return;
    }
    const char *to = "%10.0g";
    for (auto &d : dates)
        if (format[2] == d.letter)
            to = d.format;
    strncpy(out, to, 11);
}

void cnv110to111vtype(uint8_t *types, int32_t K)
{
    for (int32_t k = 0; k < K; k++)
        switch (types[k]) {
        case 'b': types[k] = 251; break;
        case 'i': types[k] = 252; break;
        case 'l': types[k] = 253; break;
        case 'f': types[k] = 254; break;
        case 'd': types[k] = 255; break;
        default: types[k] = uint8_t(types[k] - 127);
        }
}
