// expr/varlist.h - what the parser and the readers of variable lists share.
//
// New variables are first read as names with types, so that a list with a bad name makes
// nothing, and then made behind the user's variables.
#pragma once
#include "core/limits.h"
#include "interp/tokens.h"
#include <cstdint>

inline constexpr int32_t maxvlist = max_theory_k + 1;  // entries of a parsed list
inline constexpr int32_t maxnewvar = 4096;

struct newvar {
    uint8_t type;   // 0 when none was typed
    char name[33];
    char label[33]; // value label named behind a colon, or empty
};
extern newvar pi_new[maxnewvar];
extern int32_t pi_nnew;

// [type] name ..., type(name ...), stub1-stub9 into pi_new; pi_newtype is the last type typed.
[[nodiscard]] int32_t ti_newvlist(toktype *ti);
[[nodiscard]] int32_t vlist_make(int32_t *list, int32_t *n);  // adds them to the dataset
// One element at *at: a name, a pattern or a range. Appends; moves *at behind it.
[[nodiscard]] int32_t vlist_element(const char **at, int32_t *list, int32_t *n, int32_t max);
bool vlist_begins(const char *at);  // may an element of a list stand here?
int32_t vlist_all(int32_t *list);  // all the user sees but the hidden sample variable
int32_t cnvnum(const char *text, int32_t *out);  // digits only: 0, or 1 when it is none
// As numlist_text, silent.
[[nodiscard]] int32_t numlist_read(const char *text, double *out, int32_t *n, int32_t max,
                                   bool missingok);
// The code of a finder that printed its words itself; the closing check returns it.
extern int32_t opt_failrc;
