// data/scalars.h - named scalars, numeric (dm type 15, aux 0) and string (aux 1).
#pragma once
#include <cstdint>

bool sclrld(const char *name, double *out);               // false when absent or a string
const char *ssclrld(const char *name);                    // text, or null
[[nodiscard]] int32_t sclrsv(const char *name, double z); // 0 or 950
[[nodiscard]] int32_t ssclrsv(const char *name, const char *text);
bool sclrrm(const char *name);                            // false when absent
