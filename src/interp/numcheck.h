// interp/numcheck.h - a numlist held against what is asked of it.
#pragma once
#include <cstdint>
#include <string>

// opts holds the words of `numlist`: ascending, descending, integer, missingokay, sort,
// min(#) or min=#, max, range(op# [op#]) or bare op#. out is the list written out.
[[nodiscard]] int32_t numcheck_text(const char *list, const char *opts, std::string *out);
// Whether opts can be read at all: 0, or the code with its words said.
[[nodiscard]] int32_t numcheck_opts(const char *opts);
