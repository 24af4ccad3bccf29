// commands/renaming.h - what rename does to one variable, for others that rename.
#pragma once
#include <cstdint>

// Variable var gets a name, its label and characteristics with it. 0, 198 or 110 with words.
[[nodiscard]] int32_t rename_variable(int32_t var, const char *to);
