// commands/filevars.h - a list of variables that speaks of a dataset file, not of memory.
#pragma once
#include "data/dtafmt.h"
#include <cstdint>
#include <string>
#include <vector>

// Names, a-b, a*, a?b, a~b, _all into one byte a file variable. Prints its words.
[[nodiscard]] int32_t filevars_pick(const dtadict *d, const std::string &list,
                                    std::vector<uint8_t> *wanted);
