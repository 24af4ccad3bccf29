// data/dsa_set.cpp - settings of a running area, and the bounds that `set` and c() report.
#include "core/mem.h"
#include "core/rc.h"
#include "core/settings.h"
#include "data/dsa_int.h"
#include "interp/messages.h"
#include "output/print.h"
#include <cstdio>

static bool has_data(const dsa_area *d) { return d->K > 0 || d->_No_ > 1; }

static void say(const dsa_area *d, const char *markup)
{
    if (!d->noisy)
        return;
    outlev_keep keep(3);
    spoutsmlf("{err}%s\n", markup);
}

static int32_t refuse_data(const dsa_area *d)
{
    return d->noisy ? error(RC_DATACHANGED) : RC_DATACHANGED;
}

int32_t dsa_reset_K_max(dsa_area *d, int64_t k)
{
    char line[100];
    if (k < int64_t(d->K)) {
        say(d, "{bf:set maxvar} out of range");
        snprintf(line, sizeof line, "%d variables already exist.", int(d->K));
        say(d, line);
        return RC_SYNTAX;
    }
    if (k < int64_t(dsa_K_low) || k > int64_t(dsa_K_top)) {
        snprintf(line, sizeof line, "{bf:maxvar} must be between %u and %u", dsa_K_low, dsa_K_top);
        say(d, line);
        return RC_SYNTAX;
    }
    d->K_max = uint32_t(k);
    if (d->issys)
        maxmaxvar = int32_t(k);
    return 0;
}

int32_t dsa_reset_niceness(dsa_area *d, int64_t niceness)
{
    if (niceness < 0 || niceness > 10) {
        say(d, "{bf:niceness} out of range");
        say(d, "{bf:niceness} must be between 0 and 10");
        return RC_SYNTAX;
    }
    dsa_hist_add(d, DE_NICENESS, niceness);
    d->niceness = niceness;
    d->waitsecs = d->waittab[niceness];
    return 0;
}

int32_t dsa_reset_memory_min_goal(dsa_area *d, uint64_t bytes)
{
    if (has_data(d))
        return refuse_data(d);
    int32_t rc, S = 1, wasS = d->memory_min_S;
    uint64_t was = d->memory_min_goal;
    if (bytes &&
        (rc = dsa_check_memory_parms(d, bytes, d->memory_max_goal, d->segment_size, &S, nullptr)))
        return rc;
    dsa_hist_add(d, DE_MINGOAL, int64_t(bytes));
    d->memory_min_goal = bytes;
    d->memory_min_S = S;
    if ((rc = dsa_sys_adjust_S(d, uint32_t(S)))) {
        say(d, "{bf:min_memory} not reset");
        d->memory_min_goal = was;
        d->memory_min_S = wasS;
    }
    if (dsa_fsa_update(d))
        return dsa_fatal_fsa(d, 1);
    return rc;
}

// What the user's figure leaves for data: the spare segment counts against it.
static uint64_t maxgoal_inside(const dsa_area *d, uint64_t bytes, uint64_t segsize)
{
    if (!bytes || !d->preallocate)
        return bytes;
    return bytes <= segsize ? 1 : bytes - segsize;
}

int32_t dsa_reset_memory_max_goal(dsa_area *d, uint64_t bytes)
{
    if (has_data(d))
        return refuse_data(d);
    int32_t rc, S = 0;
    bytes = maxgoal_inside(d, bytes, d->segment_size);
    if ((rc = dsa_check_memory_parms(d, d->memory_min_goal, bytes, d->segment_size, nullptr, &S)))
        return rc;
    dsa_hist_add(d, DE_MAXGOAL, int64_t(bytes));
    d->memory_max_goal = bytes;
    d->memory_max_S = 0;
    if (S && d->S > uint32_t(S))
        dsa_release_S(d, uint32_t(S));
    d->memory_max_S = S;
    if (dsa_fsa_update(d))
        return dsa_fatal_fsa(d, 2);
    return 0;
}

int32_t dsa_reset_seg_size(dsa_area *d, uint64_t bytes)
{
    if (has_data(d))
        return refuse_data(d);
    int32_t rc;
    uint64_t given = dsa_memory_max_goal_adj(d), wasmax = d->memory_max_goal;
    uint64_t inside = maxgoal_inside(d, given, bytes);
    if ((rc = dsa_check_memory_parms(d, d->memory_min_goal, inside, bytes, nullptr, nullptr)))
        return rc;
    uint64_t was = d->segsize_suggested;
    uint8_t noisy = d->noisy;
    dsa_shutdown(d);
    d->segsize_suggested = bytes;
    d->memory_max_goal = inside;
    d->noisy = 0;
    rc = dsa_start(d);
    if (!rc && d->segment_size < bytes) {
        // Less than was asked for is a refusal here.
        dsa_shutdown(d);
        rc = RC_NOMEM;
    }
    if (!rc) {
        d->noisy = noisy;
        return 0;
    }
    d->segsize_suggested = was;
    d->memory_max_goal = wasmax;
    int32_t again = dsa_start(d);
    d->noisy = noisy;
    if (!again)
        return noisy ? dsa_fail_alloc(d, bytes) : rc;
    d->segsize_suggested = d->segsize_min;
    d->memory_min_goal = 0;
    d->noisy = 0;
    again = dsa_start(d);
    d->noisy = noisy;
    if (noisy)
        dsa_say_segsize_lost(d, again == 0);
    return 913;
}

// ---- bounds

uint64_t dsa_memory_max_goal_adj(const dsa_area *d)
{
    return d->memory_max_goal && d->preallocate ? d->memory_max_goal + d->segment_size
                                                : d->memory_max_goal;
}
uint64_t dsa_memory_min_goal_adj(const dsa_area *d) { return d->memory_min_goal; }
uint64_t dsa_cur_segsize_min(const dsa_area *) { return dsa_segsize_floor; }
uint64_t dsa_cur_segsize_max(const dsa_area *d)
{
    uint64_t most = dsa_memory_max_goal_adj(d) / (d->preallocate ? 2 : 1);
    return d->memory_max_goal && most < dsa_segsize_top ? most : dsa_segsize_top;
}
uint64_t dsa_cur_min_memory_min(const dsa_area *) { return 0; }
uint64_t dsa_cur_min_memory_max(const dsa_area *d)
{
    uint64_t most = (uint64_t(dsa_S_top) + 1) * d->segment_size - 1;
    return d->memory_max_goal && d->memory_max_goal < most ? d->memory_max_goal : most;
}
uint64_t dsa_cur_max_memory_min(const dsa_area *d)
{
    uint64_t extra = d->preallocate ? d->segment_size : 0;
    uint64_t least = d->memory_min_goal > d->segment_size ? d->memory_min_goal : d->segment_size;
    return least + extra;
}
uint64_t dsa_cur_max_memory_max(const dsa_area *d)
{
    return (uint64_t(dsa_S_top) + (d->preallocate ? 1 : 0)) * d->segment_size;
}
