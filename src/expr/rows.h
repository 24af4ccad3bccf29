// expr/rows.h - walking down the rows, for loops that run per observation: the cells of one
// variable, and the values of the condition and the expression of the parse.
#pragma once
#include "data/dsa.h"
#include "expr/parse.h"
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

// The condition and the expression at one observation after the other. Programs that can be
// run for many observations at once are; then a value is the one from before the loop stored
// anything in the rows of the block, which such programs cannot tell from the other.
struct rowvalues {
    xeqpgm *cond, *exp;  // null when there is none
    int32_t last;        // observation the loop ends with
    bool blocked;
    int32_t from = 0, n = 0;
    double sel[xq_block], val[xq_block];
};

inline void rv_open(rowvalues *v, xeqpgm *exp, int32_t last)
{
    v->cond = parinfo->pi_hasif ? parinfo->ifpgm : nullptr;
    v->exp = exp;
    v->last = last;
    v->blocked = (!v->cond || xeq_can_block(v->cond)) && (!exp || xeq_can_block(exp));
    v->from = v->n = 0;
}

inline void rv_fill(rowvalues *v, int32_t obs)
{
    v->from = obs;
    v->n = v->last - obs < xq_block ? v->last - obs + 1 : xq_block;
    bool any = true;
    if (v->cond) {
        xeq_block(parinfo, v->cond, obs, v->n, v->sel);
        any = false;
        for (int32_t i = 0; i < v->n; i++)
            any |= v->sel[i] != 0;
    }
    if (any && v->exp)
        xeq_block(parinfo, v->exp, obs, v->n, v->val);
}

// Is obs selected? To be asked of each observation in turn, before its value.
inline bool rv_selected(rowvalues *v, int32_t obs)
{
    if (!v->blocked)
        return !v->cond || pi_xeq(parinfo, v->cond, obs) != 0;
    if (obs - v->from >= v->n)
        rv_fill(v, obs);
    return !v->cond || v->sel[obs - v->from] != 0;
}

inline double rv_value(rowvalues *v, int32_t obs)
{
    return v->blocked ? v->val[obs - v->from] : pi_xeq(parinfo, v->exp, obs);
}
