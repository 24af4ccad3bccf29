// data/dsa_int.h - what the files of the storage area share among themselves.
#pragma once
#include "data/dsa.h"
#include <cstring>

extern uint64_t dsa_segsize_floor;    // least segment size; tests lower it
inline constexpr uint64_t dsa_segsize_top = uint64_t{1} << 35;
inline constexpr uint32_t dsa_S_top = 51200, dsa_K_low = 120, dsa_K_top = 32767;

enum dsa_event : int32_t {
    DE_HISTON = 1, DE_HISTOFF = 2, DE_INIT = 4, DE_START = 5, DE_STARTED = 6, DE_NOISY = 7,
    DE_NICENESS = 8, DE_MINGOAL = 9, DE_MAXGOAL = 10, DE_DROPOPEN = 11, DE_DROP = 12,
    DE_DROPCLOSE = 13, DE_TRUNCS = 14, DE_ADDS = 15, DE_ADDSNECS = 16, DE_ADDSDES = 17,
    DE_WIDTH = 18, DE_ADJS = 19, DE_SHUTDOWN = 20,
};
void dsa_hist_add(dsa_area *d, int32_t event, int64_t arg);
void dsa_publish(const dsa_area *d);  // the mirrors of the system area

// 0 or 198; the two counts may be null.
int32_t dsa_check_memory_parms(dsa_area *d, uint64_t mingoal, uint64_t maxgoal, uint64_t segsize,
                               int32_t *minS, int32_t *maxS);
// Bytes this machine can hold at all; asking for more is refused without trying.
uint64_t dsa_machine_bytes();

// ---- dsa_grow.cpp
enum tabrule : uint8_t { TAB_KEEP, TAB_SIZE, TAB_FULL };
tabrule dsa_tab_rule(const dsa_tabspec *t, uint64_t max, uint64_t na, uint64_t n, int64_t k,
                     uint64_t *least, uint64_t *want);
int32_t dsa_var_tables(dsa_area *d, int64_t k, bool start);
int32_t dsa_seg_table(dsa_area *d, int64_t k);
int32_t dsa_add_segs(dsa_area *d, uint32_t n, bool undo);
void dsa_release_S(dsa_area *d, uint32_t s);
uint64_t dsa_choose_width(const dsa_area *d, uint64_t w, uint64_t r, uint64_t S);
uint64_t dsa_wanted_S(const dsa_area *d);
int32_t dsa_deferred_shrink(dsa_area *d);
int32_t dsa_shrink(dsa_area *d);
int32_t dsa_repartition(dsa_area *d, uint64_t w, bool wider);

// ---- dsa_msgs.cpp: each prints when the area is noisy, and returns its code
int32_t dsa_fail_vars(const dsa_area *d);
int32_t dsa_fail_obs(const dsa_area *d);
int32_t dsa_fail_width(const dsa_area *d);
int32_t dsa_fail_alloc(const dsa_area *d, uint64_t bytes);
int32_t dsa_fail_overflow(const dsa_area *d);
int32_t dsa_fail_maxgoal(const dsa_area *d, uint64_t asked);
int32_t dsa_fail_segtab(const dsa_area *d);
int32_t dsa_fail_within(const dsa_area *d);
int32_t dsa_fail_fsa(const dsa_area *d, uint32_t blocks, uint32_t No);
int32_t dsa_fatal_fsa(const dsa_area *d, int32_t subcode);
void dsa_note_mingoal(const dsa_area *d, uint64_t bytes);
void dsa_say_parms(const dsa_area *d, int32_t which, uint64_t mingoal, uint64_t maxgoal,
                   uint64_t segsize);
void dsa_say_segsize_lost(const dsa_area *d, bool limping);
[[gnu::format(printf, 2, 3)]] int32_t dsa_invalid(const dsa_area *d, const char *fmt, ...);
