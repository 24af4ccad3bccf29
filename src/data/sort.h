// data/sort.h - the order of the observations.
#pragma once
#include <cstdint>

enum sort_mode : int32_t { SORT_AUTO = 0, SORT_IVEC = 1, SORT_IVAR = 2, SORT_SWAP = 3 };
// Sorts observations first..last ascending on nkeys variables, and writes the sort list when
// the range is the whole dataset. Codes: 0, 1 after a break (the list is then empty), 103.
[[nodiscard]] int32_t sort_obs(const int32_t *keys, int32_t nkeys, int32_t first, int32_t last,
                               bool stable, int32_t mode);
extern int32_t sort_lastmode;  // how the last sort moved rows; 0 when none moved
// Rows to the places that a variable names (1 to N, each once); 459 when it does not.
[[nodiscard]] int32_t sysidxsort(const char *name, bool breakable);
// Rows to the places an array tells: rows[i] is the row that is to stand at place i (from 1; all
// of them, each once). The array is used up and the sort list emptied. No break stops it.
void sort_apply(int32_t *rows);
bool sort_known(const int32_t *keys, int32_t nkeys);  // the sort list begins with the keys
int32_t sort_compare(uint32_t a, uint32_t b, const int32_t *keys, int32_t nkeys);
void sortnints(int32_t *values, int32_t n);
int32_t uniqnints(int32_t *values, int32_t n);  // the new count
// For commands that want an order without moving rows: fills idx[0..count) with the selected
// observations in order, ties as they stand; returns the count or a negated code. sel has a
// byte an observation, the first for observation 1; null selects all.
int32_t sort_index(const int32_t *keys, int32_t nkeys, const uint8_t *sel, int32_t *idx);
// The same with the order in a long work variable, for more rows than an array should hold.
// sortvar makes it: rows first to first + *n - 1 hold the observations for which sel and the
// marker variable (not missing) speak, in order; the others follow. Null and 0 select all. Its
// number, or a negated code. sortvar1 orders rows first to last of one that exists.
// pi_sortvar0 takes keys, range and condition from the parse.
int32_t sortvar(const int32_t *keys, int32_t nkeys, int32_t first, int32_t last,
                bool (*sel)(int32_t obs), int32_t marker, int32_t *n);
[[nodiscard]] int32_t sortvar1(int32_t idx, const int32_t *keys, int32_t nkeys, int32_t first,
                               int32_t last);
int32_t pi_sortvar0(int32_t marker, int32_t *n);
bool sort_holds(const char *name);  // a variable that keeps an order, no business of the user
// The present order kept, level by level, and brought back (or let go). 196 when the
// variables that held it were dropped.
extern int32_t (*sort_onpreserve)(const char *name);  // publishes the name; a code undoes
[[nodiscard]] int32_t sort_preserve();
[[nodiscard]] int32_t sort_restore(bool back);
uint32_t sortseed();
void setsortseed(uint32_t seed);
void srndobs(int32_t lo, int32_t hi);
int32_t rndobs();
void pi_chksort(int32_t var);  // a value of var changed: the list ends before it
