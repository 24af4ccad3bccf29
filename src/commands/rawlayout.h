// commands/rawlayout.h - where in the lines of a text the fields of an observation stand, and
// the walk that reads them: dictionaries of infile, and the columns of infix.
//
// An observation is a number of lines. Steps move a cursor (line, column) or take a field
// where it stands: so many columns, or with width 0 the next word, which quotes may hold
// together.
#pragma once
#include "commands/rawdata.h"
#include "commands/textdata.h"
#include <cstdint>
#include <string>
#include <vector>

enum rawstep_kind : uint8_t { RS_FIELD, RS_COLUMN, RS_SKIP, RS_LINE, RS_NEWLINE };
struct rawstep {
    rawstep_kind kind;
    int32_t n;        // width of a field, or what is moved to or by
    int32_t var;      // of a field
};
struct rawlayout {
    std::vector<rawstep> steps;
    int32_t lines = 0;      // per observation; 0 as many as the steps visit
    int32_t firstline = 1;  // of the file, where data begin
    int32_t lrecl = 0;      // bytes of a line in files without line ends
};
// Reads all observations between from and to of a text.
[[nodiscard]] int32_t layout_read(const rawlayout *l, rawdata *r, const textfile *t, char *from);
// What stands between the braces of a dictionary: into the variables and the steps.
[[nodiscard]] int32_t infile_dictionary(const std::string &text, rawlayout *l, rawdata *r);
[[nodiscard]] int32_t infix_dictionary(const std::string &text, rawlayout *l, rawdata *r);
// Splits a dictionary file: the word before "dictionary" (infile or infix, may be missing), the
// file it names, its body, and where data may follow. 0 or a code with words; notdict is set
// when the text does not begin like one.
struct dictparts {
    std::string kind, file, body;
    char *data;
    bool notdict;
};
[[nodiscard]] int32_t dictionary_split(const textfile *t, const char *name, dictparts *d);
// The rest of infile and infix alike: reads the data and ends.
[[nodiscard]] int32_t layout_run(const rawlayout *l, rawdata *r, const textfile *t, char *from);
