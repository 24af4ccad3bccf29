// varlist/stripes.h - what the commands about stripes of matrices share.
#pragma once
#include "data/umat.h"
#include "varlist/terms.h"

// A matrix as a line names it: NAME, e(NAME), r(NAME), return(NAME).
bool ms_find(const std::string &text, matref *m);
std::string ms_word(); // the next word of the line, up to a blank or a comma
std::string ms_text(); // all up to the comma of the options
// "variable", "factor", "interaction" (with a factor) or "product".
const char *ms_type(const termname &t);
