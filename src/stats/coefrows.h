// stats/coefrows.h - how the rows of a table of coefficients are grouped: a term with factors
// has a heading of its own and a row for each level, apart from the rows around it.
#pragma once
#include "data/umat.h"
#include <string>
#include <vector>

enum coefclass : uint8_t { CR_PLAIN, CR_BASE, CR_OMITTED, CR_EMPTY };
struct coefrow {
    coefclass what = CR_PLAIN;
    bool factor = false;
    std::string key;                  // equal for the columns of one term; empty without factors
    std::vector<std::string> heading; // lines of at most 12 characters
    std::string label;                // what stands left of the bar
};
// Describes a column. zero tells that it has neither a coefficient nor a variance.
coefrow coefrow_of(const umatname &name, bool zero, bool labels);
// The levels of a name, with their value labels when asked for, in width characters.
std::string coefrow_levels(const termname &t, bool labels, int32_t width);
