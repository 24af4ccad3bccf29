// mosa/bi_map.h - what element-wise functions of several arguments share.
//
// Arguments go together as operands of the colon operators do: 1 by 1 spreads over all, a row
// over the rows and a column over the columns of the other shape.
#pragma once
#include "mosa/bi_int.h"
#include <string_view>

// Shape of the result over arguments first to last of argc, which are matrices; else 3200.
bool bi_conform(int32_t argc, int32_t first, int32_t last, int32_t *rows, int32_t *cols);

// The element of a real argument, array or view, that goes with (i, j) of the result.
inline double bi_elc(const matobj *m, int32_t i, int32_t j)
{
    return m_el(m, m->rows == 1 ? 0 : i, m->cols == 1 ? 0 : j);
}

inline constexpr size_t bi_textroom = 256; // the bytes a text of a view may take
// The same of a string argument; the text of a view stays in buffer.
inline std::string_view bi_textc(const matobj *m, int32_t i, int32_t j, char *buffer)
{
    i = m->rows == 1 ? 0 : i;
    j = m->cols == 1 ? 0 : j;
    if (m->view)
        return {buffer, size_t(v_sel(m, i, j, buffer))};
    const char *block = mo_sel(m)[int64_t(i) * m->cols + j];
    return {sel_text(block), size_t(sel_len(block))};
}

// Element k, from 0, of a string array becomes t. False when memory ran out, with 3900.
inline bool bi_puttext(matobj *r, int64_t k, std::string_view t)
{
    return !selreplace(r, k, t.data(), int64_t(t.size()));
}

// A number that left the range of numbers is missing.
inline double bi_inrange(double z)
{
    return z < misval && z > -misval ? z : misval;
}

// f over all arguments, real and at most so many; one that is missing makes the result missing.
inline constexpr int32_t bi_mapmost = 7;
void bi_mapreal(int32_t argc, const char *id, double (*f)(const double *));
