// expr/rows.h - walking one variable down the rows, for loops that run per observation.
#pragma once
#include "data/dsa.h"
#include <cmath>
#include <cstring>

// The place of a cell in a run of rows of one segment: looked up once a run, then stepped.
struct rowwalk {
    char *at = nullptr;
    uint32_t left = 0;  // rows of the run behind this one
};

// The cell of var at obs. Observations are asked for one after the other; after anything that
// may move rows, left must be set to 0 first.
inline char *rw_at(rowwalk *w, int32_t var, int32_t obs)
{
    if (w->left) {
        w->left--;
        return w->at += sysdsa->width;
    }
    auto o = uint32_t(obs);
    w->left = sysdsa->n_per_S - 1 - o % sysdsa->n_per_S;
    if (w->left > 0xfff)  // short enough for a break to be seen soon
        w->left = 0xfff;
    return w->at = dsa_varobsptr(sysdsa, uint32_t(var), o);
}

template <uint8_t TYPE> inline double num_load(const char *at)
{
    if constexpr (TYPE == T_DOUBLE) {
        double z;
        memcpy(&z, at, sizeof z);
        return z;
    } else
        return cell_data(TYPE, at);
}

// As cell_store, with the common case of each type done here.
template <uint8_t TYPE> inline void num_store(double z, char *at)
{
    if constexpr (TYPE == T_DOUBLE)
        memcpy(at, &z, sizeof z);
    else if constexpr (TYPE == T_FLOAT) {
        double a = std::fabs(z);
        if (!(a < 1e30 && (a > 1e-30 || z == 0)))
            return cell_store(z, TYPE, at);
        float f = float(z) + 0.0f;  // no negative zero in a column
        memcpy(at, &f, sizeof f);
    } else
        cell_store(z, TYPE, at);
}
