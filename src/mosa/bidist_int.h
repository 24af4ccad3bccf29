// mosa/bidist_int.h - walking several real arguments of different shapes side by side.
#pragma once
#include "core/missing.h"
#include "mosa/values.h"
#include "mosa/views.h"

// The shape that n real arguments make together, and the number of the first that has all of
// it; -1 with 3200 in m_xrc when they do not go together.
int32_t bi_shapes(matobj *const *a, int32_t n, int32_t *rows, int32_t *cols);

// One argument, repeated along the rows or columns it does not have.
struct ew_arg {
    const matobj *view = nullptr;
    const double *p = nullptr;
    int64_t byrow = 0, bycol = 0;
    ew_arg() = default;
    explicit ew_arg(const matobj *m)
        : view(m->view ? m : nullptr), p(m->view ? nullptr : mo_re(m)), byrow(m->rows == 1 ? 0
                                                                              : m->view    ? 1
                                                                                        : m->cols),
          bycol(m->cols == 1 ? 0 : 1)
    {
    }
    double at(int32_t i, int32_t j) const
    {
        return p ? p[i * byrow + j * bycol] : v_el(view, int32_t(i * byrow), int32_t(j * bycol));
    }
};
