// data/dtachars.cpp - the expansion fields of a dataset file: characteristics, and records of
// other kinds, which are read past.
#include "core/files.h"
#include "core/mem.h"
#include "core/rc.h"
#include "data/dtafmt.h"
#include "data/labels.h"
#include "data/variables.h"
#include "interp/messages.h"
#include <memory>

namespace {
struct freer {
    void operator()(void *p) const { safefree(p); }
};
}  // namespace
using block = std::unique_ptr<uint8_t[], freer>;

static bool skip(int32_t fd, int64_t n)
{
    char piece[1024];
    for (; n > 0; n -= 1024) {
        int32_t want = n < 1024 ? int32_t(n) : 1024;
        if (ovata_read(fd, piece, want) < want)
            return false;
    }
    return true;
}

// The record's bytes b hold owner and name in w bytes each, then the text.
static int32_t one_char(uint8_t *b, size_t n, size_t w, dta_charfn each, void *arg)
{
    if (n <= 2 * w)
        return 0;
    b[w - 1] = b[2 * w - 1] = b[n] = 0;
    auto owner = reinterpret_cast<const char *>(b), name = owner + w;
    return chkname(name, true) ? 0 : each(arg, owner, name, owner + 2 * w);
}

int32_t getgchar(int32_t fd, const dtadict *d, const char *file, dta_charfn each, void *arg)
{
    int32_t head = d->lay->expansion;
    size_t w = head == 3 ? 9 : 33;
    if (head == 0)
        return 0;
    constexpr int64_t most = 66 + char_maxlen + 1;
    byteorder order = dta_order(&d->h);
    block buf(static_cast<uint8_t *>(safemalloc(size_t(most) + 1)));
    if (!buf)
        return error(RC_NOMEM);
    for (;;) {
        uint8_t b[5] = {};
        if (ovata_read(fd, b, head) < head)
            return fierr(RC_IOREAD, file);
        int64_t len = head == 3 ? int64_t(get16(b + 1, order))
                                : int64_t(int32_t(get32(b + 1, order)));
        if (b[0] == 0 && (head == 3 || len == 0))
            return 0;
        int64_t left = ov_left(fd);
        if (len < 0 || (left >= 0 && len > left))
            return fierr(RC_CORRUPT, file);
        int64_t take = b[0] != 1 ? 0 : len < most ? len : most;
        if (ovata_read(fd, buf.get(), int32_t(take)) < take || !skip(fd, len - take))
            return fierr(RC_IOREAD, file);
        int32_t rc = take ? one_char(buf.get(), size_t(take), w, each, arg) : 0;
        if (rc)
            return rc;
    }
}
