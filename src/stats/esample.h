// stats/esample.h - e(sample): which observations the estimates come from.
//
// A byte variable of 0 and 1 that the user neither sees nor counts. Its name is one that no
// command can type. When estimates are set aside under a name it becomes the ordinary
// variable _est_NAME, and it is hidden again when they come back.
#pragma once
#include <cstdint>

inline constexpr const char *esample_hidden_name = "e(sample)";

// Sets the sample: mark[obs] for observations 1 to _Nobs. 0 or a storage code.
[[nodiscard]] int32_t esample_set(const uint8_t *mark);
// Takes over a variable of the dataset, which disappears from the user's sight.
[[nodiscard]] int32_t esample_take(int32_t var);
void esample_drop();            // no sample any more; its variable goes
int32_t esample_count();        // hidden variables: 0 or 1
