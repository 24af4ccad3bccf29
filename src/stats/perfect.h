// stats/perfect.h - regressors that tell a two-valued outcome without error.
//
// A model of logits or probits has no estimate for such a regressor: its coefficient runs off to
// infinity. The search takes it out of the model, and out of the sample the observations that it
// tells, and goes on until what is left overlaps.
#pragma once
#include <cstdint>
#include <vector>

struct perfectrow {
    int32_t var = 0;      // variable number
    bool isdummy = false; // two values in the sample
    double at = 0;        // the value told apart, or the bound
    bool greater = false; // beyond the bound, not below it
    bool success = false; // what is told
    bool tie = false;     // observations at the bound are left
    int32_t nout = 0;     // observations taken out
};

// vars[0] is the outcome, success where it is not 0; gone marks variables that are not looked at
// and gets a 1 for each found; out, by observation (_Nobs + 1), has the observations that are not
// looked at and gets those taken out. rows tells what was found, in order. 0, 1 after a break,
// 909, or 2000 with words where the outcome is told everywhere.
[[nodiscard]] int32_t perfect_search(const std::vector<int32_t> &vars, std::vector<uint8_t> *gone,
                                     std::vector<uint8_t> *out, std::vector<perfectrow> *rows);
