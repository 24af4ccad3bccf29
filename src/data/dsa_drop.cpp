// data/dsa_drop.cpp - deleting observations, dropping and moving variables.
#include "core/mem.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa_int.h"
#include "data/variables.h"

// ---- observations

dsa_delhandle dsa_delete_open(dsa_area *d, int32_t initial)
{
    dsa_hist_add(d, DE_DROPOPEN, initial);
    dsa_delhandle h = {d->K_max, 0};
    char name[9];
    mktmpvn(name);
    d->K_max = (d->K >= d->K_max ? d->K : d->K_max) + 1;
    int32_t rc = dsa_add_var(d, T_BYTE, name, "%8.0g");
    if (rc) {
        d->K_max = h.K_max;
        h.var = -rc;
        return h;
    }
    h.var = int32_t(d->K);
    for (uint32_t i = 1; i < d->_No_; i++)
        dsa_bstore(uint8_t(initial), d, d->K, i);
    return h;
}

// Keeps the rows whose flag is 0, moved up over the others.
int32_t dsa_delete(dsa_area *d, int32_t var)
{
    dsa_hist_add(d, DE_DROP, var);
    uint32_t k = uint32_t(var), to = 1;
    while (to < d->_No_ && !dsa_bdata(d, k, to))
        to++;
    for (uint32_t from = to; from < d->_No_; from++)
        if (!dsa_bdata(d, k, from))
            dsa_cp_obs(d, to++, from);
    d->_No_ = to < 2 ? 0 : to;
    if (dsa_fsa_update(d))
        return dsa_fatal_fsa(d, 3);
    dsa_publish(d);
    return dsa_deferred_shrink(d);
}

void dsa_delete_close(dsa_area *d, const dsa_delhandle *h)
{
    dsa_hist_add(d, DE_DROPCLOSE, h->var);
    if (h->var > 0)
        (void)!dsa_drop_one_var(d, uint32_t(h->var), false);
    d->K_max = h->K_max;
}

void dsa_delete_all(dsa_area *d)
{
    d->_No_ = 1;
    if (dsa_fsa_update2(d, 1, true))
        (void)!dsa_fatal_fsa(d, 3);
    dsa_publish(d);
}

// ---- variables

struct dsa_keeprun {
    uint32_t from, to; // 0-based, half open
};

uint8_t *dsa_drop_open(dsa_area *d, uint8_t initial)
{
    auto flags = static_cast<uint8_t *>(safemalloc(d->K ? d->K : 1));
    if (flags)
        memset(flags, initial, d->K);
    return flags;
}

void dsa_drop_close(dsa_area *, uint8_t *flags)
{
    safefree(flags);
}

static uint32_t list_runs(const uint8_t *flags, uint32_t K, dsa_keeprun *runs)
{
    uint32_t n = 0;
    for (uint32_t k = 0; k < K;) {
        if (flags[k] == 1) {
            k++;
            continue;
        }
        uint32_t from = k;
        while (k < K && flags[k] != 1)
            k++;
        if (runs)
            runs[n] = {from, k};
        n++;
    }
    return n;
}

static void compact_rows(dsa_area *d, const dsa_keeprun *runs, uint32_t n)
{
    for (uint32_t i = 1; i < d->_No_; i++) {
        char *row = dsa_obsptr(d, i);
        uint64_t at = 0;
        for (uint32_t r = 0; r < n; r++) {
            uint64_t from = d->offset[runs[r].from];
            uint64_t end = runs[r].to < d->K ? d->offset[runs[r].to] : d->lrec;
            if (at != from)
                memmove(row + at, row + from, end - from);
            at += end - from;
        }
    }
}

template <class T> static void compact_table(T *table, const dsa_keeprun *runs, uint32_t n)
{
    uint32_t at = 0;
    for (uint32_t r = 0; r < n; at += runs[r].to - runs[r].from, r++)
        memmove(static_cast<void *>(table + at), table + runs[r].from,
                (runs[r].to - runs[r].from) * sizeof(T));
}

// The sort list after a drop: new numbers, up to the first variable that is gone.
static void renumber_sort(dsa_area *d, const uint8_t *flags)
{
    for (uint32_t i = 0; d->srt[i]; i++) {
        uint32_t var = uint32_t(d->srt[i]), gone = 0;
        if (flags[var - 1] == 1) {
            d->srt[i] = 0;
            return;
        }
        for (uint32_t k = 0; k < var - 1; k++)
            gone += flags[k] == 1;
        d->srt[i] = int16_t(var - gone);
    }
}

// Drops the variables whose flag is 1; runs are what stays.
static void drop_but(dsa_area *d, const uint8_t *flags, const dsa_keeprun *runs, uint32_t n,
                     bool clean)
{
    uint32_t drops = 0;
    for (uint32_t k = 0; k < d->K; k++) {
        if (flags[k] != 1)
            continue;
        drops++;
        if (clean && d->issys && dsa_onvarsgone)
            dsa_onvarsgone(d->name[k]);
    }
    for (uint32_t k = d->K; k > 0 && d->issys && dsa_onrenumber; k--)
        if (flags[k - 1] == 1)
            dsa_onrenumber(k);
    compact_rows(d, runs, n);
    compact_table(d->typ, runs, n);
    compact_table(d->name, runs, n);
    compact_table(d->fmt, runs, n);
    compact_table(d->lbl, runs, n);
    renumber_sort(d, flags);
    d->K -= drops;
    dsa_rebuild_offsettab(d);
}

// Without memory for the list of runs the variables go one after the other, from the right: at
// most two runs stay each time.
static void drop_singly(dsa_area *d, uint8_t *flags, bool clean)
{
    dsa_keeprun runs[2];
    for (uint32_t k = 0; k < d->K; k++)
        flags[k] = flags[k] ? 2 : 0;
    for (uint32_t k = d->K; k-- > 0;)
        if (flags[k]) {
            flags[k] = 1;
            uint32_t n = list_runs(flags, d->K, runs);
            drop_but(d, flags, runs, n, clean);
            flags[k] = 0;
        }
}

static bool drop_inner(dsa_area *d, uint8_t *flags, bool clean)
{
    dsa_keeprun few[8], *runs = few;
    uint32_t n = list_runs(flags, d->K, nullptr);
    if (n == 0)
        return false;
    if (n > 8 && !(runs = static_cast<dsa_keeprun *>(safemalloc(n * sizeof(dsa_keeprun))))) {
        drop_singly(d, flags, clean);
        return true;
    }
    list_runs(flags, d->K, runs);
    drop_but(d, flags, runs, n, clean);
    if (runs != few)
        safefree(runs);
    return true;
}

int32_t dsa_drop(dsa_area *d, uint8_t *flags, bool clean)
{
    uint32_t last = d->K, visible = 0;
    bool drops = false;
    for (uint32_t k = 0; k < d->K; k++) {
        flags[k] = flags[k] != 0;
        if (d->issys && flags[k] && int32_t(k) < _i_Kvar)
            visible++;
    }
    int32_t users = _i_Kvar - int32_t(visible);
    while (last > 0 && flags[last - 1])
        last--;
    if (last < d->K)
        dsa_truncate_var(d, last, clean);
    for (uint32_t k = 0; k < d->K && !drops; k++)
        drops = flags[k];
    if (drops && !drop_inner(d, flags, clean))
        return 9603;
    if (d->issys)
        _i_Kvar = users;
    dsa_publish(d);
    return dsa_deferred_shrink(d);
}

int32_t dsa_drop_one_var(dsa_area *d, uint32_t var, bool clean)
{
    if (var < 1 || var > d->K)
        return 0;
    if (var == d->K) {
        dsa_truncate_var(d, var - 1, clean);
        return 0;
    }
    uint8_t *flags = dsa_drop_open(d, 0);
    if (!flags)
        return dsa_fail_alloc(d, d->K);
    flags[var - 1] = 1;
    int32_t rc = dsa_drop(d, flags, clean);
    dsa_drop_close(d, flags);
    return rc;
}

// ---- order within the row

static uint32_t moved(uint32_t var, uint32_t from, uint32_t to)
{
    if (var == from)
        return to;
    if (from < to)
        return var > from && var <= to ? var - 1 : var;
    return var >= to && var < from ? var + 1 : var;
}

template <class T> static void shift_table(T *t, uint32_t from, uint32_t to)
{
    T keep;
    memcpy(static_cast<void *>(&keep), t + from, sizeof(T));
    if (from < to)
        memmove(static_cast<void *>(t + from), t + from + 1, (to - from) * sizeof(T));
    else
        memmove(static_cast<void *>(t + to + 1), t + to, (from - to) * sizeof(T));
    memcpy(static_cast<void *>(t + to), &keep, sizeof(T));
}

int32_t pi_dsa_mvvar(dsa_area *d, uint32_t from, uint32_t to,
                     void (*renumber)(uint32_t from, uint32_t to))
{
    if (from == to || from < 1 || to < 1 || from > d->K || to > d->K)
        return 0;
    uint64_t w = uint64_t(dsa_bytlenc(d->typ[from - 1])), at = d->offset[from - 1];
    uint64_t goal =
        from < to ? d->offset[to - 1] + dsa_bytlenc(d->typ[to - 1]) - w : d->offset[to - 1];
    char *keep = d->segment_table[0];
    for (uint32_t i = 1; i < d->_No_; i++) {
        char *row = dsa_obsptr(d, i);
        memcpy(keep, row + at, w);
        if (at < goal)
            memmove(row + at, row + at + w, goal - at);
        else
            memmove(row + goal + w, row + goal, at - goal);
        memcpy(row + goal, keep, w);
    }
    shift_table(d->name, from - 1, to - 1);
    shift_table(d->fmt, from - 1, to - 1);
    shift_table(d->lbl, from - 1, to - 1);
    shift_table(d->typ, from - 1, to - 1);
    dsa_rebuild_offsettab(d);
    for (uint32_t i = 0; d->srt[i]; i++)
        d->srt[i] = int16_t(moved(uint32_t(d->srt[i]), from, to));
    if (d->issys)
        newdata = true;
    if (renumber)
        renumber(from, to);
    return 0;
}

int32_t dsa_mvesvartoend(dsa_area *d, const char *name)
{
    for (uint32_t k = d->K; k > 0; k--)
        if (!strcmp(d->name[k - 1], name))
            return pi_dsa_mvvar(d, k, d->K, nullptr);
    return 0;
}
