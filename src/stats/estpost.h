// stats/estpost.h - estimates on their way into e().
#pragma once
#include "data/umat.h"
#include <cstdint>
#include <vector>

struct estpost {
    const double *b, *V;               // 1 by n, n by n; V may be null
    const std::vector<umatname> *names;
};
// Clears e() and makes e(b) and e(V). 0 or a code with words.
[[nodiscard]] int32_t est_post(const estpost *p);
// Moves matrices of the user into e(b) and e(V), clearing e() first; V may be empty. Checks
// their shapes and takes the names of V from b.
[[nodiscard]] int32_t est_post_named(const char *b, const char *V);
[[nodiscard]] int32_t est_repost_named(const char *b, const char *V, bool rename);
