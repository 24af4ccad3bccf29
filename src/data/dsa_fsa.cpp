// data/dsa_fsa.cpp - observation to segment: the division by n_per_S, paid once in a table.
#include "core/clock.h"
#include "core/mem.h"
#include "core/rc.h"
#include "data/dsa_int.h"

void dsa_preset_fsa(dsa_area *d) { d->fsa = {}; }

static uint32_t blocks_for(uint32_t rows)
{
    return uint32_t((uint64_t(rows ? rows : 1) + fsa_perblock - 1) >> fsa_shift);
}

int32_t dsa_setup_fsa(dsa_area *d)
{
    dsa_preset_fsa(d);
    d->fsa.block = static_cast<uint16_t **>(safecalloc(fsa_nblock * sizeof(uint16_t *)));
    if (!d->fsa.block)
        return dsa_fail_fsa(d, 1, 1);
    d->fsa.cap = fsa_nblock;
    return dsa_fsa_advise(d, 1);
}

void dsa_shutdown_fsa(dsa_area *d)
{
    for (uint32_t b = 0; b < d->fsa.nblock; b++)
        safefree(d->fsa.block[b]);
    safefree(d->fsa.block);
    dsa_preset_fsa(d);
}

// Blocks for n rows. The table keeps what it says; blocks are only added.
int32_t dsa_fsa_advise(dsa_area *d, uint32_t n)
{
    uint32_t need = blocks_for(n), was = d->fsa.nblock;
    if (need <= was)
        return 0;
    constexpr uint64_t bytes = fsa_perblock * sizeof(uint16_t);
    uint64_t held = uint64_t(d->S) * d->segment_size;
    if (need > d->fsa.cap || held + need * bytes > dsa_machine_bytes())
        return dsa_fail_fsa(d, need - was, n);
    while (d->fsa.nblock < need) {
        auto p = static_cast<uint16_t *>(safemalloc(bytes));
        if (!p) {
            while (d->fsa.nblock > was)
                safefree(d->fsa.block[--d->fsa.nblock]);
            return dsa_fail_fsa(d, need - was, n);
        }
        d->fsa.block[d->fsa.nblock++] = p;
    }
    return 0;
}

// Numbers from..to-1, in runs of one segment: a division starts a block, then none is done.
static void fill(dsa_area *d, uint32_t from, uint32_t to)
{
    while (from < to) {
        uint32_t b = from >> fsa_shift;
        uint64_t end = (uint64_t(b) + 1) << fsa_shift;
        if (end > to)
            end = to;
        uint16_t *p = d->fsa.block[b];
        uint32_t s = from / d->n_per_S;
        uint64_t change = (uint64_t(s) + 1) * d->n_per_S;
        while (from < end) {
            uint64_t stop = change < end ? change : end;
            for (; from < stop; from++)
                p[from & (fsa_perblock - 1)] = uint16_t(s);
            s++;
            change += d->n_per_S;
        }
    }
}

int32_t dsa_fsa_update2(dsa_area *d, uint32_t n, bool force)
{
    dsa_fsa *f = &d->fsa;
    if (!force && n == f->No && d->n_per_S == f->n_per_S)
        return 0;
    int32_t rc = dsa_fsa_advise(d, n);
    if (rc)
        return rc;
    for (uint32_t need = blocks_for(n); f->nblock > need;) {
        safefree(f->block[--f->nblock]);
        f->block[f->nblock] = nullptr;
    }
    if (d->n_per_S != f->n_per_S || force)
        fill(d, 0, n);
    else if (n > f->No)
        fill(d, f->No, n);
    f->n_per_S = d->n_per_S;
    f->No = n;
    return 0;
}

int32_t dsa_fsa_update(dsa_area *d) { return dsa_fsa_update2(d, d->_No_, false); }

int32_t dsa_fsa_rebuild(dsa_area *d) { return dsa_fsa_update2(d, d->_No_, true); }

// 9 when some observation is filed under the wrong segment.
int32_t dsa_fsa_debug(const dsa_area *d)
{
    for (uint32_t i = 0; i < d->_No_; i++)
        if (d->fsa.block[i >> fsa_shift][i & (fsa_perblock - 1)] != i / d->n_per_S)
            return 9;
    return 0;
}

double dsa_fsa_speedtest(dsa_area *d, int32_t repeat)
{
    double start = clock_secs();
    for (int32_t i = 0; i < repeat; i++)
        fill(d, 0, d->_No_);
    return clock_secs() - start;
}
