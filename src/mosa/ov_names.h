// mosa/ov_names.h - names as the functions that read and write the console's stores take them.
//
//   x                     a macro, a scalar, a matrix
//   r(x) e(x) s(x)        stored results; return(x) what the running program is to return
//   c(x)                  a system value, which cannot be written
//   owner[x]              a characteristic of the dataset (_dta) or of a variable
#pragma once
#include "mosa/ov_index.h"

enum ov_where : uint8_t { OVN_PLAIN, OVN_RESULT, OVN_SYSTEM, OVN_CHAR };
struct ov_name {
    ov_where where = OVN_PLAIN;
    int32_t kind = 0; // of stored results, as for gretval_find
    std::string owner, name;
};
// Reads an argument: 3300 for a text that is no name.
bool ov_readname(const matobj *m, ov_name *out);
// The third argument of a write, "visible", "hidden" or "historical", as category 0, 1 or 2.
bool ov_readcategory(int32_t argc, int32_t k, int32_t *cat);
const char *ov_categoryword(int32_t cat);
// A line with its macros expanded, the console and its tokens as they were. 0 or a code.
int32_t ov_expandline(std::string *line);
