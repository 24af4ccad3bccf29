// interp/preserve.h - the whole dataset set aside and brought back: rows, variables, labels,
// characteristics, order and names. preserve and restore use it, and so do snapshots.
#pragma once
#include <cstdint>

struct keptdata;
keptdata *data_keep(int32_t *rc);  // null and a code on failure; stays in memory
[[nodiscard]] int32_t data_bring(keptdata *k);
void data_forget(keptdata *k);
