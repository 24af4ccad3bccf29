// mosa/bihandlers.h - the handlers that the rows of builtins.def name, declared from those rows.
#pragma once
#include <cstdint>

#define BI(name, id, eltype, orgtype, minargs, maxargs, handler) void handler(int32_t argc);
#define BX(name, id)
#include "mosa/builtins.def"
#undef BI
#undef BX
