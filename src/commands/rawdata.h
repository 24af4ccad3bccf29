// commands/rawdata.h - rows read from text into a new dataset: what infile and infix share.
//
//   rawdata r;                        the variables are listed, then
//   raw_begin(&r, quals)              memory is emptied, they are made, if and in are compiled
//   raw_row(&r)                       a row of missing values
//   raw_put(&r, k, text, n)           field k of it
//   raw_keep(&r)                      the row stays when if and in let it; false: enough read
//   raw_end(&r, rc)
#pragma once
#include <cstdint>
#include <string>
#include <vector>

struct rawvar {
    uint8_t type = 0;     // 0: what generate would make
    std::string name, label, vallab;
    bool trim = true;     // blanks around a text do not count
    int32_t decimals = 0; // implied, when the text has no point
};
struct rawdata {
    std::vector<rawvar> vars;
    std::string file;
    bool automatic = false;   // texts in labelled numbers become labels
    int32_t row = 0;          // of the file, the one under way
    int32_t bad = 0;          // texts that were no numbers
    int64_t cut = 0;          // texts longer than their variable
    std::string quals;
};
// The clauses of a line: from the word using to the end of its options; before is what stands
// before it. 0 or a code; parinfo then holds the options, to be claimed by the caller.
struct rawline {
    std::string before, file, quals, opts;
};
bool raw_using();  // the line has a using
[[nodiscard]] int32_t raw_split(rawline *l);
[[nodiscard]] int32_t raw_options(rawline *l);  // parses opts into parinfo
// Checks the names and types of the list; 100, 103 or 198 with words.
[[nodiscard]] int32_t raw_check(const rawdata *r);
[[nodiscard]] int32_t raw_begin(rawdata *r);
[[nodiscard]] int32_t raw_row(rawdata *r);
// obs 0 is the row under way.
void raw_put(rawdata *r, size_t k, const char *text, size_t n, int32_t obs = 0);
bool raw_keep(rawdata *r);
int32_t raw_end(rawdata *r, int32_t rc);
