// data/dsa.cpp - the life of an area: opening, checking the settings, starting, closing.
#include "data/dsa.h"
#include "core/clock.h"
#include "core/mem.h"
#include "core/rc.h"
#include "data/dsa_int.h"
#include "interp/messages.h"
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

dsa_area *sysdsa;
int32_t _Kvar, _i_Kvar, _Nobs;
uint8_t *_typlist;
char (*_varlist)[33];
char (*_fmtlist)[49];
char (*_lbllist)[33];
int16_t *_srtlist;
int32_t maxmaxvar = 120;
void (*dsa_onvarsgone)(const char *name);
void (*dsa_ondropall)();
void (*dsa_onrenumber)(uint32_t k);

uint64_t dsa_segsize_floor = 1048576;
static const double waits[11] = {1800, 1200, 900, 600, 300, 60, 30, 1, 0.5, 0.125, 0};

void dsa_hist_add(dsa_area *d, int32_t event, int64_t arg)
{
    dsa_hist *h = &d->hist;
    if (!h->on)
        return;
    h->ring[h->pos] = {++h->seq, event, arg, d->width, d->S, d->_No_,
                       d->lrec};
    h->pos = (h->pos + 1) % dsa_nhist;
}

void dsa_publish(const dsa_area *d)
{
    if (!d->issys)
        return;
    _Kvar = int32_t(d->K);
    if (_i_Kvar > _Kvar)
        _i_Kvar = _Kvar;
    _Nobs = d->_No_ ? int32_t(d->_No_ - 1) : 0;
    _typlist = d->typ;
    _varlist = d->name;
    _fmtlist = d->fmt;
    _lbllist = d->lbl;
    _srtlist = d->srt;
}

dsa_area *dsa_open(uint8_t issys, uint8_t noisy)
{
    auto d = static_cast<dsa_area *>(safecalloc(sizeof(dsa_area)));
    if (!d)
        return nullptr;
    d->state = 1;
    d->issys = issys;
    d->noisy = noisy;
    d->memory_min_S = 1;
    d->K_max = dsa_K_low;
    d->_N_max = 2147483647;
    d->pfull_up_trigger = 90;
    d->pfull_up_target = 85;
    d->pfull_dn_trigger = 80;
    d->niceness = 5;
    memcpy(d->waittab, waits, sizeof waits);
    d->vartab = {20, 200, 32767, 100, 100};
    d->segtab = {100, 500, 51200, 50, 50};
    d->segsize_min = 1048576;
    d->segsize_suggested = 33554432;
    d->preallocate = 1;
    d->width_max = 1048576;
    d->width_suggested = 4000;
    d->width_free_big = 1600;
    d->hist.on = true;
    dsa_hist_add(d, DE_INIT, 0);
    if (issys)
        sysdsa = d;
    return d;
}

void dsa_set_UPint(dsa_area *d, uint32_t *field, uint32_t v)
{
    if (d->state == 1)
        *field = v;
}
void dsa_set_Hint(dsa_area *d, uint64_t *field, uint64_t v)
{
    if (d->state == 1)
        *field = v;
}
void dsa_set_UNint(dsa_area *d, int64_t *field, int64_t v)
{
    if (d->state == 1)
        *field = v;
}
void dsa_set_boolean(dsa_area *d, uint8_t *field, uint8_t v)
{
    if (d->state == 1)
        *field = v != 0;
}

int32_t dsa_check_memory_parms(dsa_area *d, uint64_t mingoal, uint64_t maxgoal, uint64_t segsize,
                               int32_t *minS, int32_t *maxS)
{
    int32_t bad = 0;
    if (segsize < dsa_segsize_floor)
        bad = 1;
    else if (segsize > dsa_segsize_top)
        bad = 2;
    else if (mingoal && maxgoal && mingoal > maxgoal)
        bad = 3;
    else if (maxgoal && maxgoal < segsize)
        bad = 4;
    else if (mingoal / segsize > dsa_S_top)
        bad = 5;
    if (bad) {
        dsa_say_parms(d, bad, mingoal, maxgoal, segsize);
        return RC_SYNTAX;
    }
    uint64_t lo = mingoal / segsize, hi = maxgoal / segsize;
    if (minS)
        *minS = lo < 1 ? 1 : int32_t(lo);
    if (maxS)
        *maxS = hi > dsa_S_top ? int32_t(dsa_S_top) : int32_t(hi);
    return 0;
}

static int32_t check_tabspec(const dsa_area *d, const dsa_tabspec *t, const char *s)
{
    if (t->min == 0 || t->min >= t->max)
        return dsa_invalid(d, "0 <= %s_min <= %s_max required", s, s);
    if (t->init < t->min || t->init > t->max)
        return dsa_invalid(d, "%s_min <= %s_init <= %s_max required", s, s, s);
    if (t->incr_amt == 0 || t->incr_amt >= t->max - t->min)
        return dsa_invalid(d, "1 <= %s_incr_amt <= %s_max-%s-min) required", s, s, s);
    if (t->decr_threshold == 0)
        return dsa_invalid(d, "%s_decr_threshold > 1 required", s);
    return 0;
}

static int32_t validate(dsa_area *d)
{
    int32_t rc;
    if ((rc = dsa_check_memory_parms(d, d->memory_min_goal, d->memory_max_goal,
                                     d->segsize_suggested, nullptr, nullptr)))
        return rc;
    if (d->K_max < dsa_K_low || d->K_max > dsa_K_top)
        return dsa_invalid(d, "%u <= K_max <= %u required", dsa_K_low, dsa_K_top);
    if (d->_N_max >= 2147483648u)
        return dsa_invalid(d, "_N_max < %u required", 2147483648u);
    if (d->pfull_up_trigger < d->pfull_up_target)
        return dsa_invalid(d, "pfull_up_trigger >= pfull_up_target required");
    if (d->pfull_up_target < d->pfull_dn_trigger)
        return dsa_invalid(d, "pfull_dn_trigger <= pfull_up_target required");
    if (d->niceness < 0 || d->niceness > 10)
        return dsa_invalid(d, "0 <= niceness <= 10 required");
    if ((rc = check_tabspec(d, &d->vartab, "vartab")) ||
        (rc = check_tabspec(d, &d->segtab, "segtab")))
        return rc;
    if (d->segsize_min < d->width_max)
        return dsa_invalid(d, "segsize_min >= width_max required");
    if (d->width_free_big > d->width_max)
        return dsa_invalid(d, "width_free_big < width_max required");
    if (d->width_max < 800)
        return dsa_invalid(d, "width_max >= %ld required", 800L);
    return 0;
}

// The first segment: halved until the system gives one.
static int32_t first_segment(dsa_area *d)
{
    uint64_t size = d->segsize_suggested;
    char *p;
    while (!(p = static_cast<char *>(safemalloc(size))) && size / 2 >= d->segsize_min)
        size /= 2;
    if (!p)
        return dsa_fail_alloc(d, size);
    d->segment_size = size;
    d->segment_table[0] = p;
    d->S = 1;
    return 0;
}

static int32_t start_memory(dsa_area *d)
{
    int32_t rc;
    if ((rc = dsa_var_tables(d, 0, true)) || (rc = dsa_seg_table(d, 0)) ||
        (rc = first_segment(d)))
        return rc;
    uint64_t lo = d->memory_min_goal / d->segment_size, hi = d->memory_max_goal / d->segment_size;
    d->memory_min_S = lo < 1 ? 1 : lo > dsa_S_top ? int32_t(dsa_S_top) : int32_t(lo);
    d->memory_max_S = hi > dsa_S_top ? int32_t(dsa_S_top) : int32_t(hi);
    if (d->memory_max_goal && d->memory_max_S < 1)
        d->memory_max_S = 1;
    if (d->preallocate && !(d->spare = static_cast<char *>(safemalloc(d->segment_size))))
        return dsa_fail_alloc(d, d->segment_size);
    d->width = d->width_suggested < d->segment_size ? d->width_suggested : d->segment_size;
    d->n_per_S = uint32_t(d->segment_size / d->width);
    return dsa_setup_fsa(d);
}

static int32_t start_mingoal(dsa_area *d)
{
    if (d->memory_min_S <= 1 || uint32_t(d->memory_min_S) <= d->S)
        return 0;
    uint8_t was = d->noisy;
    d->noisy = 0;
    int32_t rc = dsa_sys_adjust_S(d, uint32_t(d->memory_min_S));
    d->noisy = was;
    if (rc) {
        uint64_t asked = d->memory_min_goal;
        d->memory_min_goal = 0;
        d->memory_min_S = 1;
        dsa_note_mingoal(d, asked);
    }
    return 0;
}

int32_t dsa_start(dsa_area *d)
{
    if (!d)
        return 9620;
    if (d->state != 1)
        return 9621;
    dsa_hist_add(d, DE_START, 0);
    int32_t rc = validate(d);
    if (rc)
        return rc;
    d->waitsecs = d->waittab[d->niceness];
    d->downsize_pending = 0;
    d->_No_ = 0;
    d->lrec = 0;
    d->K = 0;
    d->state = 2;
    if (!(rc = start_memory(d))) {
        d->state = 3;
        dsa_publish(d);
        rc = start_mingoal(d);
    }
    if (!rc)
        rc = dsa_fsa_update(d);
    if (rc) {
        dsa_shutdown(d);
        return RC_NOMEM;
    }
    dsa_hist_add(d, DE_STARTED, 0);
    return 0;
}

template <class T> static void wipe(T **p, uint64_t *n)
{
    safefree(*p);
    *p = nullptr;
    *n = 0;
}

void dsa_shutdown(dsa_area *d)
{
    if (!d || d->state == 1)
        return;
    dsa_hist_add(d, DE_SHUTDOWN, 0);
    dsa_shutdown_fsa(d);
    for (uint32_t s = 0; s < d->S; s++)
        safefree(d->segment_table[s]);
    safefree(d->spare);
    d->spare = nullptr;
    wipe(&d->segment_table, &d->segtab_n);
    wipe(&d->offset, &d->offset_n);
    wipe(&d->typ, &d->typ_n);
    wipe(&d->name, &d->name_n);
    wipe(&d->fmt, &d->fmt_n);
    wipe(&d->lbl, &d->lbl_n);
    wipe(&d->srt, &d->srt_n);
    d->S = d->K = d->_No_ = d->n_per_S = 0;
    d->lrec = d->width = d->segment_size = 0;
    d->downsize_pending = 0;
    d->state = 1;
    dsa_publish(d);
}

void dsa_close(dsa_area *d)
{
    if (!d)
        return;
    dsa_shutdown(d);
    if (d->issys && sysdsa == d)
        sysdsa = nullptr;
    safefree(d);
}

void dsa_reset_issys(dsa_area *d, uint8_t issys)
{
    d->issys = issys;
    if (issys)
        sysdsa = d;
    dsa_publish(d);
}

uint8_t dsa_reset_noisy(dsa_area *d, uint8_t noisy)
{
    uint8_t was = d->noisy;
    dsa_hist_add(d, DE_NOISY, noisy);
    d->noisy = noisy;
    return was;
}

uint64_t dsa_machine_bytes()
{
    static uint64_t bytes;
    if (bytes)
        return bytes;
    long pages = sysconf(_SC_PHYS_PAGES), size = sysconf(_SC_PAGESIZE);
    bytes = pages > 0 && size > 0 ? uint64_t(pages) * uint64_t(size) : uint64_t{1} << 62;
    // A container may be held to less than the machine has.
    if (FILE *f = fopen("/sys/fs/cgroup/memory.max", "r")) {
        unsigned long long held;
        if (fscanf(f, "%llu", &held) == 1 && held > 0 && held < bytes)
            bytes = held;
        fclose(f);
    }
    return bytes;
}

uint32_t dsa__N_max_calc(const dsa_area *d, bool current)
{
    uint64_t b = (d->lrec ? d->lrec : 1) + 1, n = d->_N_max;
    if (current)
        n = (d->segment_size / b ? d->segment_size / b : 1) * d->S;
    else if (d->memory_max_S)
        n = uint64_t(d->memory_max_S) * d->segment_size / b;
    return n < d->_N_max ? uint32_t(n) : d->_N_max;
}
