// Data out of the dataset and into it.
//
// What is stored may widen its variable, as replace does it. All types are settled before the
// first cell is written, so that a call that fails has changed nothing.
#include "core/mem.h"
#include "core/state.h"
#include "data/sort.h"
#include "expr/generate.h"
#include "expr/rows.h"
#include "mosa/bihandlers.h"
#include "mosa/ov_index.h"
#include <cstring>

namespace
{

constexpr int32_t chunk = 1024; // rows done before the next column, so that they stay near

// n cells of a column, one row of the storage area behind the other.
template <uint8_t TYPE> void take(const char *at, double *to, int64_t step, int32_t n)
{
    for (int32_t k = 0; k < n; k++, at += sysdsa->width, to += step)
        *to = num_load<TYPE>(at);
}
void take_cells(int32_t var, const char *at, double *to, int64_t step, int32_t n)
{
    switch (_typlist[var - 1]) {
    case T_BYTE: return take<T_BYTE>(at, to, step, n);
    case T_INT: return take<T_INT>(at, to, step, n);
    case T_LONG: return take<T_LONG>(at, to, step, n);
    case T_FLOAT: return take<T_FLOAT>(at, to, step, n);
    case T_DOUBLE: return take<T_DOUBLE>(at, to, step, n);
    default:
        for (int32_t k = 0; k < n; k++, at += sysdsa->width, to += step)
            *to = cell_data(_typlist[var - 1], at);
    }
}

template <uint8_t TYPE> void put(char *at, const double *from, int64_t step, int32_t n)
{
    for (int32_t k = 0; k < n; k++, at += sysdsa->width, from += step)
        num_store<TYPE>(*from, at);
}
void put_cells(int32_t var, char *at, const double *from, int64_t step, int32_t n)
{
    switch (_typlist[var - 1]) {
    case T_BYTE: return put<T_BYTE>(at, from, step, n);
    case T_INT: return put<T_INT>(at, from, step, n);
    case T_LONG: return put<T_LONG>(at, from, step, n);
    case T_FLOAT: return put<T_FLOAT>(at, from, step, n);
    default: return put<T_DOUBLE>(at, from, step, n);
    }
}

// Calls f(first observation, rows, row of the matrix) for pieces that lie in one segment each.
// False after a break or when f says so.
template <class F> bool walk(const ov_cells &c, bool breakable, F f)
{
    int64_t row = 0;
    for (int64_t r = 0; r < c.runs.n; r++)
        for (int64_t obs = c.runs[r].first, n; obs <= c.runs[r].last; obs += n, row += n) {
            n = int64_t(sysdsa->n_per_S) - obs % sysdsa->n_per_S;
            n = n < chunk ? n : chunk;
            if (c.runs[r].last - obs + 1 < n)
                n = c.runs[r].last - obs + 1;
            if (breakable && row_break())
                return false;
            if (!f(int32_t(obs), int32_t(n), row))
                return false;
        }
    return true;
}

char *cell(int32_t var, int32_t obs)
{
    return dsa_varobsptr(sysdsa, uint32_t(var), uint32_t(obs));
}

bool fill_numbers(const ov_cells &c, matobj *m)
{
    return walk(c, true, [&](int32_t obs, int32_t n, int64_t row) {
        double *to = mo_re(m) + row * m->cols;
        for (int64_t k = 0; k < c.vars.n; k++)
            take_cells(c.vars[k], cell(c.vars[k], obs), to + k, m->cols, n);
        return true;
    });
}

bool fill_texts(const ov_cells &c, matobj *m)
{
    char text[256];
    return walk(c, true, [&](int32_t obs, int32_t n, int64_t row) {
        for (int32_t i = 0; i < n; i++)
            for (int64_t k = 0; k < c.vars.n; k++) {
                if (!ov_isstring(c.vars[k]))
                    continue;
                dsa_sdata(sysdsa, uint32_t(c.vars[k]), uint32_t(obs + i), text);
                if (*text && selreplace(m, (row + i) * m->cols + k, text, int64_t(strlen(text))))
                    return false;
            }
        return true;
    });
}

// Columns of names with operators, by way of a view.
matobj *take_terms(const ov_cells &c)
{
    matobj *v = m_mktmat(MO_REAL, 0, 0), *m = nullptr;
    if (v && ov_makeview(v, MO_REAL, c) && !v_fvxeqinit(v))
        m = m_dupmat(v);
    if (v)
        mo_freemat(v);
    return m;
}

// ov_data(i, j [, s]) and ov_sdata(i, j [, s]): what is of the other kind reads as missing.
void data_call(int32_t argc, const char *id, int16_t eltype)
{
    m_xeqerrid = id;
    ov_cells c;
    const matobj *s = argc > 2 ? bi_arg(argc, 3) : nullptr;
    if (!(eltype == MO_STRING ? ov_readcells : ov_readterms)(bi_arg(argc, 1), bi_arg(argc, 2), s,
                                                             &c))
        return;
    if (c.terms) {
        if (matobj *m = take_terms(c))
            m_result(argc, m);
        return;
    }
    matobj *m = m_mktmat(eltype, int32_t(c.nobs), int32_t(c.vars.n));
    if (!m)
        return;
    if (eltype == MO_STRING ? fill_texts(c, m) : fill_numbers(c, m))
        m_result(argc, m);
    else
        mo_freemat(m);
}

// ---- storing

// The types that the values want: what replace would end with, value after value.
bool wanted_types(const matobj *x, const ov_list<int32_t> &vars, ov_list<int32_t> *types)
{
    for (int64_t k = 0; k < vars.n; k++)
        if (!types->add(_typlist[vars[k] - 1]))
            return false;
    for (int32_t i = 0; i < x->rows; i++) {
        if (bi_stop(i))
            return false;
        for (int32_t k = 0; k < x->cols; k++) {
            int32_t &type = (*types)[k];
            if (x->eltype == MO_STRING) {
                auto n = int32_t(ov_element(x, int64_t(i) * x->cols + k).size());
                type = n > type ? (n < T_STRMAX ? n : int32_t(T_STRMAX)) : type;
            } else if (type != T_DOUBLE && type != T_FLOAT)
                type = promoted_vartype(m_el(x, i, k), uint8_t(type));
        }
    }
    return true;
}

// Widens the variables, or none of them. A variable may stand in the list more than once.
bool widen(const ov_list<int32_t> &vars, const ov_list<int32_t> &types)
{
    ov_list<int32_t> was;
    for (int64_t k = 0; k < vars.n; k++)
        if (!was.add(_typlist[vars[k] - 1]))
            return false;
    for (int64_t k = 0; k < vars.n; k++) {
        int32_t now = _typlist[vars[k] - 1];
        if (types[k] <= now) // the codes of numeric types ascend with what they hold
            continue;
        int32_t rc = t_isstr(uint8_t(now)) ? doupstr(vars[k], types[k])
                                           : change_vartype(vars[k], uint8_t(types[k]), _Nobs);
        if (rc <= 0)
            continue;
        while (k-- > 0)
            if (_typlist[vars[k] - 1] != was[k])
                (void)!change_vartype_fmt(vars[k], uint8_t(was[k]));
        return !ov_failed(rc);
    }
    return true;
}

void put_texts(const ov_cells &c, const matobj *x, int32_t obs, int32_t n, int64_t row)
{
    for (int32_t i = 0; i < n; i++)
        for (int64_t k = 0; k < c.vars.n; k++)
            dsa_safe_sstore(sysdsa, uint32_t(c.vars[k]), uint32_t(obs + i),
                            ov_element(x, (row + i) * x->cols + k).c_str());
}

void put_numbers(const ov_cells &c, const matobj *x, int32_t obs, int32_t n, int64_t row)
{
    const double *from = mo_re(x) + row * x->cols;
    for (int64_t k = 0; k < c.vars.n; k++)
        put_cells(c.vars[k], cell(c.vars[k], obs), from + k, x->cols, n);
}

bool store_cells(const ov_cells &c, matobj *x)
{
    ov_list<int32_t> types;
    if (!wanted_types(x, c.vars, &types) || !widen(c.vars, types))
        return false;
    walk(c, false, [&](int32_t obs, int32_t n, int64_t row) {
        x->eltype == MO_STRING ? put_texts(c, x, obs, n, row) : put_numbers(c, x, obs, n, row);
        return true;
    });
    for (int64_t k = 0; k < c.vars.n && c.nobs; k++)
        pi_chksort(c.vars[k]);
    if (c.nobs && c.vars.n)
        s_updata = true;
    return true;
}

// ov_store(i, j [, s], X) and ov_sstore(i, j [, s], X)
void store_call(int32_t argc, const char *id, int16_t eltype)
{
    m_xeqerrid = id;
    matobj *x = bi_arg(argc, argc);
    ov_cells c;
    if (!bi_ismatrix(x) || (eltype == MO_STRING ? !bi_isstring(x) : !bi_isreal(x)))
        return;
    if (!ov_readcells(bi_arg(argc, 1), bi_arg(argc, 2), argc > 3 ? bi_arg(argc, 3) : nullptr, &c) ||
        !ov_allof(c.vars, eltype == MO_STRING))
        return;
    if (c.nobs != x->rows || c.vars.n != x->cols) {
        m_xrc = 3200;
        return;
    }
    // A view onto the same cells is read before anything is written.
    ov_end end;
    matobj *from = !end || v_fvxeqinit(x) ? nullptr : bi_array(x);
    if (!from)
        return;
    bool done = store_cells(c, from);
    if (from != x)
        mo_freemat(from);
    if (done)
        end.done(argc);
}

// ---- one cell

// Observation and variable of the scalar forms: 1 there is such a cell, 0 there is none, -1 the
// arguments are wrong.
int32_t one_cell(const matobj *i, const matobj *j, int32_t *obs, int32_t *var)
{
    double z;
    if (!bi_real(i, &z))
        return -1;
    *obs = z >= 1 && z < double(_Nobs) + 1 ? int32_t(z) : 0;
    if (bi_ismatrix(j) && j->eltype == MO_REAL) {
        if (!bi_real(j, &z))
            return -1;
        *var = z >= 1 && z < double(_Kvar) + 1 ? int32_t(z) : 0;
    } else if (!ov_readvar(j, var))
        return -1;
    return *obs && *var;
}

void store_one(int32_t argc, const char *id, int16_t eltype)
{
    m_xeqerrid = id;
    matobj *x = bi_arg(argc, 3);
    ov_cells c;
    int32_t obs, var;
    if (!bi_ismatrix(x) || (eltype == MO_STRING ? !bi_isstring(x) : !bi_isreal(x)) ||
        !bi_isscalar(x))
        return;
    int32_t there = one_cell(bi_arg(argc, 1), bi_arg(argc, 2), &obs, &var);
    if (there < 0)
        return;
    if (there == 0) {
        m_xrc = 3300;
        return;
    }
    if (!c.vars.add(var) || !c.runs.add({obs, obs}) || !ov_allof(c.vars, eltype == MO_STRING))
        return;
    c.nobs = 1;
    ov_end end;
    matobj *from = end ? bi_array(x) : nullptr;
    if (!from)
        return;
    bool done = store_cells(c, from);
    if (from != x)
        mo_freemat(from);
    if (done)
        end.done(argc);
}

} // namespace

void biov_data(int32_t argc)
{
    data_call(argc, "ov_data()", MO_REAL);
}
void biov_sdata(int32_t argc)
{
    data_call(argc, "ov_sdata()", MO_STRING);
}
void biov_store(int32_t argc)
{
    store_call(argc, "ov_store()", MO_REAL);
}
void biov_sstore(int32_t argc)
{
    store_call(argc, "ov_sstore()", MO_STRING);
}

// _ov_data(i, j): missing where there is no such cell, or it holds a text.
void bi_ov_data(int32_t argc)
{
    m_xeqerrid = "_ov_data()";
    int32_t obs, var, there = one_cell(m_arg(1), m_arg(0), &obs, &var);
    if (there >= 0)
        ov_real(argc, there ? dsa_data(sysdsa, uint32_t(var), uint32_t(obs)) : misval);
}

void bi_ov_sdata(int32_t argc)
{
    m_xeqerrid = "_ov_sdata()";
    char text[256] = "";
    int32_t obs, var, there = one_cell(m_arg(1), m_arg(0), &obs, &var);
    if (there < 0)
        return;
    if (there)
        dsa_sdata(sysdsa, uint32_t(var), uint32_t(obs), text);
    ov_text(argc, text);
}

void bi_ov_store(int32_t argc)
{
    store_one(argc, "_ov_store()", MO_REAL);
}
void bi_ov_sstore(int32_t argc)
{
    store_one(argc, "_ov_sstore()", MO_STRING);
}
