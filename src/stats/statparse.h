// stats/statparse.h - what the lines of statistical commands have in common, and the blocks of
// numbers that they sweep.
#pragma once
#include "core/mem.h"
#include "expr/parse.h"
#include <memory>

struct statline {
    uint8_t vlist = PI_OK;  // PI_OK or PI_REQ
    uint8_t weights = 0;    // kinds allowed, W_AW and so on
    uint8_t weightdflt = 0; // the kind meant where only [exp] is written
    bool blankall = false;  // no variables stand for all
    bool by = true;         // may run under by
    bool fv = false;        // the list may hold operators
};
// Reads [varlist] [if] [in] [weight] [, options] into parinfo. A code with words, or 0.
[[nodiscard]] int32_t stat_parse(const statline &line);
// Claims an option without argument; min letters will do. dflt is what holds without it.
bool stat_option(const char *word, int32_t min, bool dflt = false);
// A variable named by text, which must be numeric. A code with words, or 0.
[[nodiscard]] int32_t stat_numvar(const char *text, int32_t *var);

struct freeblock {
    void operator()(double *p) const { safefree(p); }
};
using matblock = std::unique_ptr<double[], freeblock>;
// A block of rows of matsize zeros each: 908 beyond matsize, 909 without memory, with words.
[[nodiscard]] int32_t take_block(matblock *m, int32_t rows);
