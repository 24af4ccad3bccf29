// data/dsa_repart.cpp - moving all rows to another width, with one spare segment of memory.
//
// Checks come first: once copying has begun nothing can fail.
#include "core/rc.h"
#include "data/dsa_int.h"
#include <utility>

// Rows as they stand, one after another in either direction.
struct rowcursor {
    char *const *segs;
    uint64_t width;
    uint32_t n, seg, row;
    char *at() const { return segs[seg] + row * width; }
    void next()
    {
        if (++row == n) {
            row = 0;
            seg++;
        }
    }
    void prev()
    {
        if (row-- == 0) {
            row = n - 1;
            seg--;
        }
    }
};

static void narrower(dsa_area *d, uint64_t w, uint32_t n)
{
    rowcursor from = {d->segment_table, d->width, d->n_per_S, 0, 0};
    char *to = d->spare;
    uint32_t slot = 0, row = 0;
    for (uint32_t i = 0; i < d->_No_; i++, from.next()) {
        if (row == n) {
            std::swap(to, d->segment_table[slot++]);
            row = 0;
        }
        memcpy(to + row++ * w, from.at(), d->lrec);
    }
    std::swap(to, d->segment_table[slot]);
    d->spare = to;
}

// First pass: all rows packed against the end of the chain.
static void wider_back(dsa_area *d, uint64_t w, uint32_t n)
{
    uint32_t last = d->_No_ - 1;
    rowcursor from = {d->segment_table, d->width, d->n_per_S, last / d->n_per_S,
                      last % d->n_per_S};
    char *to = d->spare;
    uint32_t slot = d->S - 1, row = n;
    for (uint32_t i = d->_No_;;) {
        if (row == 0) {
            std::swap(to, d->segment_table[slot--]);
            row = n;
        }
        memcpy(to + --row * w, from.at(), d->lrec);
        if (--i == 0)
            break;
        from.prev();
    }
    std::swap(to, d->segment_table[slot]);
    d->spare = to;
}

// Second pass: down to the front, each segment put together from one or two of the packed ones.
static void wider_forward(dsa_area *d, uint64_t w, uint32_t n)
{
    uint64_t at = uint64_t(d->S) * n - d->_No_;
    if (at == 0)
        return;
    uint32_t left = d->_No_;
    for (uint32_t slot = 0; left; slot++) {
        uint32_t here = left < n ? left : n;
        for (uint32_t row = 0; row < here;) {
            uint32_t src = uint32_t(at % n), run = n - src;
            if (run > here - row)
                run = here - row;
            memcpy(d->spare + row * w, d->segment_table[at / n] + src * w, run * w);
            row += run;
            at += run;
        }
        std::swap(d->spare, d->segment_table[slot]);
        left -= here;
    }
}

int32_t dsa_repartition(dsa_area *d, uint64_t w, bool wider)
{
    if (w == 0)
        return 9609;
    if (d->lrec > w)
        return 9610;
    if (wider && w > d->width_max)
        return 9611;
    uint32_t n = uint32_t(d->segment_size / w);
    if (uint64_t(n) * d->S < d->_No_)
        return 9612;
    if (d->_No_ && d->lrec) {
        if (wider) {
            wider_back(d, w, n);
            wider_forward(d, w, n);
        } else {
            narrower(d, w, n);
        }
    }
    d->width = w;
    d->n_per_S = n;
    return 0;
}
