// stats/rows.h - the selected observations of some variables, in blocks of rows, for commands
// that walk over the data more than once.
//
// An observation with a missing value or no weight is left out. Weights come as typed: the
// caller scales them.
#pragma once
#include "expr/rows.h"
#include <cstdint>

struct fvcolumns;

inline constexpr int32_t block_rows = 128;

struct datarows {
    int32_t k = 0, ld = 0;   // columns, and their stride (k rounded up to a multiple of 4)
    const int32_t *vars = nullptr;  // entries of a parsed list: -j is column j of fv_current
    fvcolumns *fv = nullptr;        // its columns, where there are any
    double *x = nullptr;     // block_rows by ld
    double w[block_rows];
    int32_t obs[block_rows];
    int32_t n = 0;           // rows in the block
    int32_t next = 0;        // observation to look at
    bool keepmissing = false;  // rows with missing values stay
    bool zeromarked = false;   // columns that are left out from the first hold zeros
    rowvalues rv;
    datarows() = default;
    datarows(const datarows &) = delete;
    datarows &operator=(const datarows &) = delete;
    ~datarows();
};
// Uses the condition, range and weight of the parse. 0 or 909 with words.
[[nodiscard]] int32_t dr_open(datarows *d, const int32_t *vars, int32_t k);
void dr_rewind(datarows *d);
// The next block. n is 0 at the end. 0, 1 after a break, or a code with words (401, 402).
[[nodiscard]] int32_t dr_next(datarows *d);
