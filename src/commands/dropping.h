// commands/dropping.h - what drop and keep do, for others that drop.
#pragma once
#include <cstdint>

// Drops the variables whose flag is 1 (one byte each, from dsa_drop_open). The hidden sample
// variable goes when nothing else is left, and without variables there are no observations.
[[nodiscard]] int32_t drop_vars(uint8_t *flags);
// Deletes the observations that h's variable marks, n of them, unless rc says otherwise already,
// and closes h. Returns rc or a code.
struct dsa_delhandle;
[[nodiscard]] int32_t drop_marked(const dsa_delhandle *h, int32_t n, int32_t rc);
