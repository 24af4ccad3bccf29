// data/dsa.h - the storage area: observations by variables, row by row, in equal segments.
//
//   segment_table[s] -> | row 0 | row 1 | ... | row n_per_S-1 |     0 <= s < S
//   one row          -> | var 1 | ... | var K | slack |             lrec <= width
//
// True whenever no dsa_ function is running:
//   R1  lrec is the sum of the variables' widths, and lrec <= width
//   R2  _No_ is 0, or observations + 1 (slot 0 is the scratch row)
//   R3  the fsa gives i / n_per_S for every i < _No_
//   R4  each variable starts in the row where the one before it ends
//   R5  the sort list names existing variables and ends in 0
//   R6  the mirrors of the system area agree with it
// dsa_check tests them. Dev builds run it after each command, tests too, failed ones above all.
//
// The user never sizes memory: the area adds segments, repartitions its rows in place when a
// row must get wider or narrower, and gives memory back after a delay. Observation and
// variable numbers are 1-based. A new column holds whatever its bytes held.
//
// Codes: 0; 900 variables, 901 observations, 902 width, 909 memory; 198 and 4 for settings;
// 9xxx for disagreements within. Words are printed where the failure is seen, and only when
// the area is noisy.
#pragma once
#include "core/missing.h"
#include <cstddef>
#include <cstdint>

struct dsa_tabspec {
    uint64_t min, init, max, incr_amt, decr_threshold;
};
struct dsa_histrec {
    uint64_t seq;
    int32_t event;
    int64_t arg;
    uint64_t width;
    uint32_t S, No;
    uint64_t lrec;
};
inline constexpr int32_t dsa_nhist = 200;
struct dsa_hist {
    int64_t wider_s, longer_s, wider_f, longer_f, incr_s, decr_s, incr_f, decr_f;
    int32_t pos;
    uint64_t seq;
    bool on;
    dsa_histrec ring[dsa_nhist];
};
inline constexpr uint32_t fsa_shift = 19, fsa_perblock = 1u << fsa_shift, fsa_nblock = 4096;
struct dsa_fsa {
    uint32_t n_per_S, No;  // as of the last refresh
    uint32_t cap;
    uint16_t **block;
    uint32_t nblock;
};

struct dsa_area {
    int32_t state;  // 1 opened, 2 starting, 3 running
    uint8_t issys, noisy, repartitioning;
    uint64_t memory_min_goal, memory_max_goal;  // bytes; 0 none
    int32_t memory_min_S, memory_max_S;         // segments; max 0 no limit
    uint32_t K_max, _N_max;
    int64_t pfull_up_trigger, pfull_up_target, pfull_dn_trigger;  // percent
    int64_t niceness;
    double waitsecs;
    double waittab[11];
    dsa_tabspec vartab, segtab;
    uint64_t segsize_min, segsize_suggested;
    uint8_t preallocate;
    uint64_t width_max, width_suggested, width_free_big;
    dsa_hist hist;
    uint8_t downsize_pending;
    double downsize_since;
    uint32_t K;
    uint32_t *offset;
    uint64_t offset_n;
    uint8_t *typ;
    uint64_t typ_n;
    char (*name)[33];
    uint64_t name_n;
    char (*fmt)[49];
    uint64_t fmt_n;
    char (*lbl)[33];
    uint64_t lbl_n;
    int16_t *srt;
    uint64_t srt_n;
    uint32_t _No_;
    uint64_t lrec;
    uint32_t n_per_S;
    uint64_t width;
    uint64_t segment_size;
    char **segment_table;
    uint64_t segtab_n;
    uint32_t S;
    char *spare;
    dsa_fsa fsa;
};

extern dsa_area *sysdsa;
// Mirrors of the system area, read directly by everybody.
extern int32_t _Kvar, _i_Kvar, _Nobs;
extern uint8_t *_typlist;
extern char (*_varlist)[33];
extern char (*_fmtlist)[49];
extern char (*_lbllist)[33];
extern int16_t *_srtlist;
extern int32_t maxmaxvar;  // the limit the user may not pass: set maxvar

// ---- life
dsa_area *dsa_open(uint8_t issys, uint8_t noisy);
[[nodiscard]] int32_t dsa_start(dsa_area *d);
void dsa_shutdown(dsa_area *d);
void dsa_close(dsa_area *d);
[[nodiscard]] int32_t sinit0_dsa();  // opens and starts the system area for cur_edition
void dsa_set_UPint(dsa_area *d, uint32_t *field, uint32_t v);
void dsa_set_Hint(dsa_area *d, uint64_t *field, uint64_t v);
void dsa_set_UNint(dsa_area *d, int64_t *field, int64_t v);
void dsa_set_boolean(dsa_area *d, uint8_t *field, uint8_t v);
void dsa_reset_issys(dsa_area *d, uint8_t issys);
uint8_t dsa_reset_noisy(dsa_area *d, uint8_t noisy);  // the old value
[[nodiscard]] int32_t dsa_reset_K_max(dsa_area *d, int64_t k);
[[nodiscard]] int32_t dsa_reset_niceness(dsa_area *d, int64_t niceness);
[[nodiscard]] int32_t dsa_reset_memory_min_goal(dsa_area *d, uint64_t bytes);
[[nodiscard]] int32_t dsa_reset_memory_max_goal(dsa_area *d, uint64_t bytes);
[[nodiscard]] int32_t dsa_reset_seg_size(dsa_area *d, uint64_t bytes);
uint64_t dsa_cur_segsize_min(const dsa_area *d);
uint64_t dsa_cur_segsize_max(const dsa_area *d);
uint64_t dsa_cur_min_memory_min(const dsa_area *d);
uint64_t dsa_cur_min_memory_max(const dsa_area *d);
uint64_t dsa_cur_max_memory_min(const dsa_area *d);
uint64_t dsa_cur_max_memory_max(const dsa_area *d);
uint64_t dsa_memory_max_goal_adj(const dsa_area *d);
uint64_t dsa_memory_min_goal_adj(const dsa_area *d);

// ---- growth and shrink
[[nodiscard]] int32_t dsa_alloc(dsa_area *d, int64_t nvars, int64_t addwidth, int64_t nobs);
[[nodiscard]] int32_t dsa_add_var(dsa_area *d, uint8_t type, const char *name, const char *fmt);
[[nodiscard]] int32_t dsa_add_obs(dsa_area *d, int64_t n, bool fill);
void dsa_truncate_var(dsa_area *d, uint32_t k, bool clean);
void dsa_truncate_obs(dsa_area *d, uint32_t n);
void dsa_truncate_var_fast(dsa_area *d, uint32_t k);
void dsa_truncate_obs_fast(dsa_area *d, uint32_t n);
struct dsa_delhandle {
    uint32_t K_max;
    int32_t var;  // the flag variable; below 0 a negated code
};
// Deleting observations: a byte work variable holds 1 where a row goes. It is lifted over the
// variable limit; dsa_delete_close drops it again.
dsa_delhandle dsa_delete_open(dsa_area *d, int32_t initial);
[[nodiscard]] int32_t dsa_delete(dsa_area *d, int32_t var);
void dsa_delete_close(dsa_area *d, const dsa_delhandle *h);
void dsa_delete_all(dsa_area *d);
// Dropping variables: one flag byte each, 0 or 1. Null without memory.
uint8_t *dsa_drop_open(dsa_area *d, uint8_t initial);
[[nodiscard]] int32_t dsa_drop(dsa_area *d, uint8_t *flags, bool clean);
void dsa_drop_close(dsa_area *d, uint8_t *flags);
[[nodiscard]] int32_t dsa_drop_one_var(dsa_area *d, uint32_t var, bool clean);
[[nodiscard]] int32_t dsa_downsize(dsa_area *d);
uint32_t dsa_maxS_avbl(dsa_area *d);
struct dsa_chkpt {
    uint32_t No, K;
};
dsa_chkpt dsa_chkpt_open(dsa_area *d);
void dsa_chkpt_reset(dsa_area *d, dsa_chkpt *point);
void dsa_chkpt_close(dsa_area *d, const dsa_chkpt *point, bool restore);
[[nodiscard]] int32_t dsa_sys_adjust_width(dsa_area *d, uint64_t w);
[[nodiscard]] int32_t dsa_sys_adjust_S(dsa_area *d, uint32_t s);
// Moves a variable within the row; with renumber, fix is called for each variable number that
// others hold (the parse record's list) so that they follow.
[[nodiscard]] int32_t pi_dsa_mvvar(dsa_area *d, uint32_t from, uint32_t to,
                                   void (*renumber)(uint32_t from, uint32_t to));
[[nodiscard]] int32_t dsa_mvesvartoend(dsa_area *d, const char *name);
// A size in bytes, or with b, k, m or g behind it; a missing value gives 0. Returns 0 or 198.
int32_t dsa_sizetext(const char *text, uint64_t *bytes);
void drop_all();  // empties the dataset: variables, rows, labels, characteristics, datalbl

// ---- cells. Numbers are not checked: callers hand in what exists.
inline char *dsa_obsptr(const dsa_area *d, uint32_t obs)
{
    uint32_t s = d->fsa.block[obs >> fsa_shift][obs & (fsa_perblock - 1)];
    return d->segment_table[s] + uint64_t(obs - s * d->n_per_S) * d->width;
}
inline char *dsa_obs_adr(const dsa_area *d, uint32_t obs) { return dsa_obsptr(d, obs); }
inline char *dsa_varobsptr(const dsa_area *d, uint32_t var, uint32_t obs)
{
    return dsa_obsptr(d, obs) + d->offset[var - 1];
}
double dsa_data(const dsa_area *d, uint32_t var, uint32_t obs);
void dsa_store(double value, dsa_area *d, uint32_t var, uint32_t obs);
// A cell at an address, for loops that walk rows of one segment.
double cell_data(uint8_t type, const char *at);
void cell_store(double value, uint8_t type, char *at);
// The text with its terminator (buffer holds 245 bytes); empty for a number. Returns buffer.
char *dsa_sdata(const dsa_area *d, uint32_t var, uint32_t obs, char *buffer);
void dsa_sstore(dsa_area *d, uint32_t var, uint32_t obs, const char *text);       // N bytes
void dsa_safe_sstore(dsa_area *d, uint32_t var, uint32_t obs, const char *text);  // to its NUL
int32_t dsa_idata(const dsa_area *d, uint32_t var, uint32_t obs);
void dsa_istore(int32_t v, dsa_area *d, uint32_t var, uint32_t obs);
uint8_t dsa_bdata(const dsa_area *d, uint32_t var, uint32_t obs);
void dsa_bstore(uint8_t v, dsa_area *d, uint32_t var, uint32_t obs);
void dsa_exchange_obs(dsa_area *d, uint32_t a, uint32_t b);
void dsa_cp_obs(dsa_area *d, uint32_t to, uint32_t from);
void dsa_getdtaobs(const dsa_area *d, char *buffer, uint32_t obs, int64_t length);  // -1 lrec
void dsa_putdtaobs(dsa_area *d, const char *buffer, uint32_t obs, int64_t length);
inline uint64_t dsa_lrec(const dsa_area *d) { return d->lrec; }
int32_t dsa_bytlenc(uint8_t type);  // width of a type; 0 when it is none
void dsa_rebuild_offsettab(dsa_area *d);
uint32_t dsa__N_max_calc(const dsa_area *d, bool current);

// ---- fast access: observation to segment without a division
[[nodiscard]] int32_t dsa_setup_fsa(dsa_area *d);
void dsa_preset_fsa(dsa_area *d);
void dsa_shutdown_fsa(dsa_area *d);
[[nodiscard]] int32_t dsa_fsa_advise(dsa_area *d, uint32_t n);
[[nodiscard]] int32_t dsa_fsa_update(dsa_area *d);
[[nodiscard]] int32_t dsa_fsa_update2(dsa_area *d, uint32_t n, bool force);
[[nodiscard]] int32_t dsa_fsa_rebuild(dsa_area *d);
[[nodiscard]] int32_t dsa_fsa_debug(const dsa_area *d);
double dsa_fsa_speedtest(dsa_area *d, int32_t repeat);

// 0 when R1 to R6 hold, else the number of the first rule broken.
int32_t dsa_check(const dsa_area *d);
// A number over names, types, formats, sort list and cells, for tests of "nothing changed".
uint64_t dsa_hash(const dsa_area *d);

// What the area calls upward: characteristics of variables that go.
extern void (*dsa_onvarsgone)(const char *name);           // a variable dropped for good
extern void (*dsa_ondropall)();  // the dataset is about to be emptied
extern void (*dsa_onrenumber)(uint32_t k);  // variable k is gone, those behind it move down
