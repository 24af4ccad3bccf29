// data/dsa_rows.cpp - adding variables and observations, and cutting them off the end.
#include "core/mem.h"
#include "core/rc.h"
#include "data/dsa_int.h"
#include "data/variables.h"
#include <cstdio>

int32_t dsa_add_var(dsa_area *d, uint8_t type, const char *name, const char *fmt)
{
    if (type == 0)
        type = 1;
    int32_t width = dsa_bytlenc(type), rc;
    if (width == 0)
        return RC_SYNTAX;
    if ((rc = dsa_alloc(d, 1, width, 0)))
        return rc;
    uint32_t k = d->K++;
    d->offset[k] = uint32_t(d->lrec);
    d->typ[k] = type;
    snprintf(d->name[k], sizeof d->name[k], "%s", name);
    snprintf(d->fmt[k], sizeof d->fmt[k], "%s", fmt);
    memset(d->lbl[k], 0, sizeof d->lbl[k]);
    d->lrec += uint64_t(width);
    dsa_publish(d);
    return 0;
}

// Copies the scratch row to rows first..last, segment by segment. Stops at a break.
static int32_t fill_rows(dsa_area *d, uint32_t first, uint32_t last)
{
    const char *row = d->segment_table[0];
    uint64_t lrec = d->lrec, width = d->width;
    if (lrec == 0)
        return 0;
    for (uint64_t i = first; i <= last;) {
        if (fault_poll())
            return RC_BREAK;
        uint64_t s = i / d->n_per_S, end = (s + 1) * d->n_per_S;
        if (end > uint64_t(last) + 1)
            end = uint64_t(last) + 1;
        char *at = d->segment_table[s] + (i - s * d->n_per_S) * width;
        for (; i < end; i++, at += width)
            memcpy(at, row, lrec);
    }
    return 0;
}

int32_t dsa_add_obs(dsa_area *d, int64_t n, bool fill)
{
    if (n < 1)
        return 0;
    bool fresh = d->_No_ == 0;
    if (fresh)
        n++;
    if (n < 0 || int64_t(d->_No_) + n > int64_t(d->_N_max))
        return dsa_fail_obs(d);
    int32_t rc = dsa_alloc(d, 0, 0, n);
    if (rc)
        return rc;
    uint32_t was = d->_No_;
    d->_No_ += uint32_t(n);
    if (dsa_fsa_update(d)) {
        d->_No_ = was;
        return dsa_fatal_fsa(d, 3);
    }
    if (fill) {
        for (uint32_t k = 1; k <= d->K; k++)
            if (t_isstr(d->typ[k - 1]))
                dsa_safe_sstore(d, k, 0, "");
            else
                dsa_store(misval, d, k, 0);
        if ((rc = fill_rows(d, fresh ? 1 : was, d->_No_ - 1)))
            d->_No_ = was;
    }
    dsa_publish(d);
    return rc;
}

static void cut_vars(dsa_area *d, uint32_t k)
{
    d->K = k;
    d->lrec = k ? d->offset[k - 1] + uint64_t(dsa_bytlenc(d->typ[k - 1])) : 0;
    for (uint32_t i = 0; d->srt[i]; i++)
        if (uint32_t(d->srt[i]) > k) {
            d->srt[i] = 0;
            break;
        }
    dsa_publish(d);
}

void dsa_truncate_var(dsa_area *d, uint32_t k, bool clean)
{
    if (k >= d->K)
        return;
    if (clean && d->issys && dsa_onvarsgone) {
        for (uint32_t i = k; i < d->K; i++)
            dsa_onvarsgone(d->name[i]);
        if (k == 0)
            dsa_onvarsgone("_dta");
    }
    cut_vars(d, k);
    (void)!dsa_deferred_shrink(d);
}

void dsa_truncate_var_fast(dsa_area *d, uint32_t k)
{
    if (k < d->K)
        cut_vars(d, k);
}

static void cut_obs(dsa_area *d, uint32_t n)
{
    if (n == 0)
        d->_No_ = 0;
    else if (n < d->_No_)
        d->_No_ = n + 1;
    else if (dsa_alloc(d, 0, 0, 1) == 0) {
        // One row more than there was: it must be there, and be tracked.
        d->_No_ = n + 1;
        if (dsa_fsa_update(d))
            (void)!dsa_fatal_fsa(d, 3);
    }
    dsa_publish(d);
}

void dsa_truncate_obs(dsa_area *d, uint32_t n)
{
    if (n > d->_No_)
        return;
    cut_obs(d, n);
    (void)!dsa_deferred_shrink(d);
}

void dsa_truncate_obs_fast(dsa_area *d, uint32_t n)
{
    if (n <= d->_No_)
        cut_obs(d, n);
}

dsa_chkpt dsa_chkpt_open(dsa_area *d) { return {d->_No_, d->K}; }
void dsa_chkpt_reset(dsa_area *d, dsa_chkpt *point) { *point = {d->_No_, d->K}; }

// The row count is handed on as it was stored, the scratch row with it: when rows were added
// since, one of them stays.
void dsa_chkpt_close(dsa_area *d, const dsa_chkpt *point, bool restore)
{
    if (!restore)
        return;
    dsa_truncate_var(d, point->K, true);
    if (d->_No_ > point->No)
        dsa_truncate_obs(d, point->No);
    if (dsa_fsa_update(d))
        (void)!dsa_fatal_fsa(d, 6);
}
