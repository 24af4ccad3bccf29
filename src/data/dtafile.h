// data/dtafile.h - dataset files. docs/dataset-format.md has the layout.
#pragma once
#include <cstdint>

struct dtahdr {
    uint8_t release, order, filetype, reserved;
    int16_t K;
    int32_t N;
    char label[81];
    char stamp[18];
};
[[nodiscard]] int32_t rdhdr(int32_t fd, dtahdr *h, const char *name);
[[nodiscard]] int32_t wrhdr(int32_t fd, const dtahdr *h, bool use_label);

extern char dta_stamp[18];  // of the file last read or written
struct dta_saveopts {
    bool replace, label, orphans, oldformat, all, emptyok;
    const char *esample;  // the estimation-sample variable, or null: left out unless all
};
// Writes the dataset in memory. A failed write removes the file. Prints its words and notes.
[[nodiscard]] int32_t dta_save(const char *name, const dta_saveopts *o);

// Reading, with a place for what the command layer decides about rows.
struct dta_useopts {
    bool nolabel;
    // Called once, after the variables stand: parse the qualifiers. Null without any.
    int32_t (*begin)(void *arg, int32_t N);
    // Asked for each row after it was stored as observation obs (file row: filerow).
    bool (*keep)(void *arg, int32_t obs, int32_t filerow);
    void *arg;
    const uint8_t *wanted;  // one byte a file variable, or null for all
};
// A bad header leaves the data in memory alone; after a later failure memory is empty.
[[nodiscard]] int32_t dta_use(const char *name, const dta_useopts *o);
