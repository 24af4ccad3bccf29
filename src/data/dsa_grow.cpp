// data/dsa_grow.cpp - making room, giving it back, and moving rows to another width in place.
#include "core/clock.h"
#include "core/mem.h"
#include "core/rc.h"
#include "data/dsa_int.h"
#include <cmath>

// ---- tables

// How large a table of na entries, n of them used, must (least) and should (want) be for k more.
tabrule dsa_tab_rule(const dsa_tabspec *t, uint64_t max, uint64_t na, uint64_t n, int64_t k,
                     uint64_t *least, uint64_t *want)
{
    if (na == 0) {
        *least = t->min;
        *want = t->init;
        return TAB_SIZE;
    }
    if (k <= 0) {
        if (na - n < t->decr_threshold)
            return TAB_KEEP;
        *least = n;
        *want = n + t->incr_amt < max ? n + t->incr_amt : max;
        return TAB_SIZE;
    }
    *least = n + uint64_t(k);
    if (*least > max)
        return TAB_FULL;
    if (*least <= na)
        return TAB_KEEP;
    *want = *least + t->incr_amt < max ? *least + t->incr_amt : max;
    return TAB_SIZE;
}

template <class T>
static int32_t tab_resize(dsa_area *d, T **at, uint64_t *na, uint64_t used, uint64_t least,
                          uint64_t want)
{
    if (want == *na)
        return 0;
    uint64_t n = want, extra = want - least;
    void *p = safemalloc(n * sizeof(T));
    while (!p && extra > 0) {
        extra /= 2;
        n = least + extra;
        p = safemalloc(n * sizeof(T));
    }
    if (!p)
        return dsa_fail_alloc(d, least * sizeof(T));
    T *to = static_cast<T *>(p);
    if (used > n)
        used = n;
    if (used)
        memcpy(static_cast<void *>(to), *at, used * sizeof(T));
    memset(static_cast<void *>(to + used), 0, (n - used) * sizeof(T));
    safefree(*at);
    *at = to;
    *na = n;
    return 0;
}

// The six variable tables for k more variables, or smaller ones for none. The sort list is
// one entry longer than the others, for its end.
int32_t dsa_var_tables(dsa_area *d, int64_t k, bool start)
{
    // Work variables may stand past the limit of the table while they last.
    uint64_t max = d->vartab.max > d->K_max ? d->vartab.max : d->K_max;
    auto one = [&](auto **at, uint64_t *na, uint64_t extra) -> int32_t {
        uint64_t least = 0, want = 0, have = *na ? *na - extra : 0;
        tabrule r = dsa_tab_rule(&d->vartab, max, start ? 0 : have, d->K, k, &least, &want);
        if (r == TAB_FULL)
            return dsa_fail_vars(d);
        if (r == TAB_KEEP)
            return 0;
        return tab_resize(d, at, na, *na ? d->K + extra : 0, least + extra, want + extra);
    };
    int32_t rc;
    if ((rc = one(&d->offset, &d->offset_n, 0)) || (rc = one(&d->typ, &d->typ_n, 0)) ||
        (rc = one(&d->name, &d->name_n, 0)) || (rc = one(&d->fmt, &d->fmt_n, 0)) ||
        (rc = one(&d->lbl, &d->lbl_n, 0)) || (rc = one(&d->srt, &d->srt_n, 1))) {
        dsa_publish(d);
        return rc;
    }
    dsa_publish(d);
    return 0;
}

int32_t dsa_seg_table(dsa_area *d, int64_t k)
{
    uint64_t least = 0, want = 0;
    tabrule r = dsa_tab_rule(&d->segtab, d->segtab.max, d->segtab_n, d->S, k, &least, &want);
    if (r == TAB_FULL)
        return 9203;
    if (r == TAB_KEEP)
        return 0;
    if (d->segtab_n == 0)
        want = least;
    return tab_resize(d, &d->segment_table, &d->segtab_n, d->S, least, want);
}

// ---- segments

static uint64_t held(const dsa_area *d)
{
    return (uint64_t(d->S) + (d->preallocate ? 1 : 0)) * d->segment_size;
}

static int32_t one_segment(dsa_area *d)
{
    if (d->S + 1 > d->segtab.max)
        return dsa_fail_segtab(d);
    if (d->memory_max_S && d->S + 1 > uint32_t(d->memory_max_S))
        return dsa_fail_maxgoal(d, d->segment_size);
    if (held(d) + d->segment_size > dsa_machine_bytes())
        return dsa_fail_alloc(d, d->segment_size);
    int32_t rc = dsa_seg_table(d, 1);
    if (rc)
        return rc;
    auto p = static_cast<char *>(safemalloc(d->segment_size));
    if (!p)
        return dsa_fail_alloc(d, d->segment_size);
    d->segment_table[d->S++] = p;
    return 0;
}

// Adds n segments. With undo a refusal takes back those added before it.
int32_t dsa_add_segs(dsa_area *d, uint32_t n, bool undo)
{
    uint32_t was = d->S;
    dsa_hist_add(d, DE_ADDS, int64_t(was) + n);
    for (uint32_t i = 0; i < n; i++) {
        int32_t rc = one_segment(d);
        if (!rc)
            continue;
        while (undo && d->S > was)
            safefree(d->segment_table[--d->S]);
        return rc;
    }
    return 0;
}

void dsa_release_S(dsa_area *d, uint32_t s)
{
    if (s < 1 || s >= d->S)
        return;
    dsa_hist_add(d, DE_TRUNCS, s);
    for (uint32_t i = d->S; i > s; i--)
        safefree(d->segment_table[i - 1]);
    d->S = s;
    uint8_t was = d->noisy;
    d->noisy = 0;
    // A table that cannot be made smaller stays as it is.
    (void)!dsa_seg_table(d, 0);
    d->noisy = was;
}

int32_t dsa_sys_adjust_S(dsa_area *d, uint32_t s)
{
    dsa_hist_add(d, DE_ADJS, s);
    if (s == d->S)
        return 0;
    if (s > d->S) {
        d->downsize_pending = 0;
        int32_t rc = dsa_add_segs(d, s - d->S, true);
        (rc ? d->hist.incr_f : d->hist.incr_s)++;
        return rc;
    }
    if (s < 1 || d->_No_ > uint64_t(d->n_per_S) * s) {
        d->hist.decr_f++;
        return s < 1 ? 9613 : 9614;
    }
    dsa_release_S(d, s);
    d->hist.decr_s++;
    return 0;
}

// ---- width

// Between what is needed and what could be had: half of it stays free for the next variables.
// 0 when S segments cannot hold r rows of w bytes.
uint64_t dsa_choose_width(const dsa_area *d, uint64_t w, uint64_t r, uint64_t S)
{
    if (d->segment_size / w * S < r)
        return 0;
    uint64_t top = w + d->width_free_big < d->width_max ? w + d->width_free_big : d->width_max;
    uint64_t fit = S * d->segment_size / (r ? r : 1);
    for (uint64_t best = fit < top ? fit : top; best > w; best--)
        if (d->segment_size / best * S >= r)
            return (w + best) / 2;
    return w;
}

int32_t dsa_sys_adjust_width(dsa_area *d, uint64_t w)
{
    dsa_hist_add(d, DE_WIDTH, int64_t(w));
    if (w == d->width)
        return 0;
    if (d->repartitioning)
        return 9602;
    bool wider = w > d->width;
    if (w < d->lrec || w == 0 || d->segment_size / w * d->S < d->_No_) {
        (wider ? d->hist.wider_f : d->hist.longer_f)++;
        return 9625;
    }
    bool temporary = !d->spare;
    if (temporary && !(d->spare = static_cast<char *>(safemalloc(d->segment_size)))) {
        (wider ? d->hist.wider_f : d->hist.longer_f)++;
        return dsa_fail_alloc(d, d->segment_size);
    }
    d->repartitioning = 1;
    int32_t rc = dsa_repartition(d, w, wider);
    d->repartitioning = 0;
    if (temporary) {
        safefree(d->spare);
        d->spare = nullptr;
    }
    int64_t *ok = wider ? &d->hist.wider_s : &d->hist.longer_s;
    int64_t *bad = wider ? &d->hist.wider_f : &d->hist.longer_f;
    ++*(rc ? bad : ok);
    return rc;
}

// ---- growth

static bool satisfied(const dsa_area *d, uint64_t w, uint64_t r)
{
    // Against lrec, not width: a request that fits walks on, and finds nothing to do.
    return w <= d->lrec && r <= uint64_t(d->n_per_S) * d->S;
}

// Segments beyond need, so that the next few requests find room. Refusals do not matter.
static bool grow_headroom(dsa_area *d, uint64_t w, uint64_t r)
{
    double room = double(100 - d->pfull_up_trigger) / 100 * double(r);
    if (double(d->segment_size / w * d->S) >= room + double(r))
        return false;
    double want = std::ceil(double(r) * double(w) /
                            (double(d->pfull_up_target) / 100 * double(d->segment_size)));
    if (d->memory_max_S && want > d->memory_max_S)
        want = d->memory_max_S;
    if (want > double(d->segtab.max))
        want = double(d->segtab.max);
    if (want > 0x1p63 / double(d->segment_size))
        want = std::floor(0x1p63 / double(d->segment_size)) - 1;
    if (want <= d->S)
        return false;
    dsa_hist_add(d, DE_ADDSDES, int64_t(want));
    uint32_t was = d->S;
    uint8_t noisy = d->noisy;
    d->noisy = 0;
    (void)!dsa_add_segs(d, uint32_t(want) - d->S, false);
    d->noisy = noisy;
    return d->S > was;
}

// A request that cannot succeed is refused at once, rather than after taking all that there is.
static int32_t refuse_segs(dsa_area *d, uint64_t need)
{
    uint64_t ask = (need - d->S) * d->segment_size;
    int32_t rc = 0;
    if (need > d->segtab.max)
        rc = dsa_fail_segtab(d);
    else if (d->memory_max_S && need > uint64_t(d->memory_max_S))
        rc = dsa_fail_maxgoal(d, ask);
    else if (need * d->segment_size > dsa_machine_bytes())
        rc = dsa_fail_alloc(d, ask);
    if (rc)
        d->hist.incr_f++;
    return rc;
}

static int32_t grow(dsa_area *d, int64_t width, uint64_t r, uint64_t floor)
{
    if (r > d->_N_max)
        return dsa_fail_obs(d);
    if (width < 0 || uint64_t(width) > d->width_max)
        return dsa_fail_width(d);
    uint64_t w = uint64_t(width);
    if (w < floor)
        w = floor;
    if (w < 1)
        w = 1;
    if (r < 1)
        r = 1;
    if (satisfied(d, w, r))
        return 0;
    uint64_t product;
    if (__builtin_mul_overflow(w, r, &product))
        return dsa_fail_overflow(d);
    uint64_t p = d->segment_size / w;
    if (p == 0)
        return dsa_fail_width(d);
    if (d->S * p < r) {
        uint64_t need = (r + p - 1) / p;
        dsa_hist_add(d, DE_ADDSNECS, int64_t(need));
        int32_t rc = refuse_segs(d, need);
        if (rc || (rc = dsa_sys_adjust_S(d, uint32_t(need))))
            return rc;
        if (satisfied(d, w, r))
            return 0;
    }
    if (grow_headroom(d, w, r) && satisfied(d, w, r))
        return 0;
    uint64_t to = dsa_choose_width(d, w, r, d->S);
    return to ? dsa_sys_adjust_width(d, to) : dsa_fail_within(d);
}

int32_t dsa_alloc(dsa_area *d, int64_t nvars, int64_t addwidth, int64_t nobs)
{
    if (nvars < 1 || addwidth < 1)
        nvars = addwidth = 0;
    if (nobs < 1)
        nobs = 0;
    if (!nvars && !nobs)
        return dsa_deferred_shrink(d);
    int32_t rc;
    if (nvars) {
        if (int64_t(d->K) + nvars > int64_t(d->K_max))
            return dsa_fail_vars(d);
        if ((rc = dsa_var_tables(d, nvars, false)))
            return rc;
    }
    uint64_t lrec = d->lrec + uint64_t(addwidth), No = d->_No_ + uint64_t(nobs);
    if (lrec > d->width_max)
        return dsa_fail_width(d);
    if (No > d->_N_max)
        return dsa_fail_obs(d);
    if ((rc = dsa_fsa_advise(d, uint32_t(No))))
        return rc;
    if (uint64_t(d->n_per_S) * d->S >= No && d->width >= lrec)
        return 0;
    rc = grow(d, int64_t(lrec), No, d->K + uint64_t(nvars));
    // Rows may have moved even when the request failed in the end.
    if (dsa_fsa_update2(d, rc ? d->_No_ : uint32_t(No), false))
        return dsa_fatal_fsa(d, 3);
    return rc;
}

// ---- shrink

uint64_t dsa_wanted_S(const dsa_area *d)
{
    uint64_t n = d->segment_size / (d->lrec ? d->lrec : 1);
    uint64_t r = d->_No_ ? d->_No_ : 1;
    double t = double(r) / (double(d->pfull_dn_trigger) / 100) + 0.5;
    uint64_t target = t > double(d->_N_max) ? d->_N_max : uint64_t(t);
    uint64_t want = n ? (target + n - 1) / n : d->S;
    if (d->memory_max_S && want > uint64_t(d->memory_max_S))
        want = uint64_t(d->memory_max_S);
    if (want < uint64_t(d->memory_min_S))
        want = uint64_t(d->memory_min_S);
    if (want > d->segtab.max)
        want = d->segtab.max;
    if (want < 1)
        want = 1;
    return want < d->S ? want : d->S;
}

int32_t dsa_shrink(dsa_area *d)
{
    uint64_t r = d->_No_ ? d->_No_ : 1;
    int32_t rc = 0;
    if (d->S == 1 || d->S == uint32_t(d->memory_min_S))
        return 0;
    uint8_t was = d->noisy;
    d->noisy = 0;
    uint64_t want = dsa_wanted_S(d);
    uint64_t limit = d->S > uint32_t(d->memory_min_S) ? d->S : uint64_t(d->memory_min_S);
    if (want < limit) {
        if (d->n_per_S * want < r) {
            uint64_t w = dsa_choose_width(d, d->lrec ? d->lrec : 1, r, want);
            if (!w)
                return 9627;
            rc = dsa_sys_adjust_width(d, w);
        }
        if (!rc)
            dsa_release_S(d, uint32_t(want));
    }
    if (!rc)
        (void)!dsa_var_tables(d, 0, false);
    d->noisy = was;
    return rc;
}

// Shrinks only when the area was found too large waitsecs ago and is still.
int32_t dsa_deferred_shrink(dsa_area *d)
{
    if (d->S <= dsa_wanted_S(d)) {
        d->downsize_pending = 0;
        return 0;
    }
    if (d->waitsecs != 0) {
        if (!d->downsize_pending) {
            d->downsize_since = clock_secs();
            d->downsize_pending = 1;
            return 0;
        }
        if (clock_secs() - d->downsize_since < d->waitsecs)
            return 0;
    }
    int32_t rc = dsa_shrink(d);
    if (dsa_fsa_update(d))
        return dsa_fatal_fsa(d, 5);
    d->downsize_pending = 0;
    return rc;
}

int32_t dsa_downsize(dsa_area *d)
{
    int32_t rc = dsa_shrink(d);
    if (dsa_fsa_update(d))
        return dsa_fatal_fsa(d, 4);
    d->downsize_pending = 0;
    return rc;
}

// How many segments there could be: takes all that can be had and gives it back.
uint32_t dsa_maxS_avbl(dsa_area *d)
{
    uint32_t was = d->S;
    uint8_t noisy = d->noisy;
    d->noisy = 0;
    while (!one_segment(d)) {
    }
    uint32_t most = d->S;
    dsa_release_S(d, was);
    d->noisy = noisy;
    return most;
}
