// mosa/bi_int.h - what the handlers of built-in functions share.
//
// Each checks its arguments with the wants below, in the order store type, view, type, shape;
// a want that fails has set m_xrc, and the handler returns with the stack as it was.
#pragma once
#include "mosa/builtins.h"
#include "mosa/views.h"
#include "mosa/vm.h"

bool row_break();              // of the machine: true with 1 in m_xrc when a stop is asked
inline bool bi_stop(int64_t k) // the same for element k, looked at now and then
{
    return (k & 4095) == 0 && row_break();
}

// The k-th of argc arguments, from 1.
inline matobj *bi_arg(int32_t argc, int32_t k)
{
    return m_stak[k - argc];
}
bool bi_fail(int32_t code); // sets m_xrc; always false

bool bi_ismatrix(const matobj *m);  // 3102 for a function
bool bi_isarray(const matobj *m);   // and 3103 for a view
bool bi_isreal(const matobj *m);    // 3253
bool bi_isnumeric(const matobj *m); // 3251
bool bi_isstring(const matobj *m);  // 3254
bool bi_isscalar(const matobj *m);  // 3204
bool bi_distinct(int32_t argc);     // no argument twice, where one becomes a result: 3002
// A real scalar's value, from an array or a view.
bool bi_real(const matobj *m, double *z);
// A real scalar that is a whole number from low to high, else 3300.
bool bi_int(const matobj *m, int32_t low, int32_t high, int32_t *n);
// A string scalar as bytes; stays good until the next call, or as long as the argument.
bool bi_string(const matobj *m, const char **bytes, int32_t *n);
// An array to write the result of an element-wise function into: the argument itself when
// only the stack holds it, else a new one of the same shape.
[[nodiscard]] matobj *bi_target(matobj *m, int16_t eltype);
// The argument as an array: itself, or a temporary with the elements of the view.
[[nodiscard]] matobj *bi_array(matobj *m);
