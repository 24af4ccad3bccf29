// expr/xeqblock.cpp - a numeric program over a run of observations at once: each operation
// goes down a column of values, so that its dispatch is paid once a block. For programs that
// look at nothing but their own row and leave no trace; pi_xeq gives the same bits.
#include "core/missing.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/variables.h"
#include "expr/machine.h"
#include "expr/parse.h"
#include "expr/strfun.h"
#include <cmath>
#include <cstring>

static constexpr int32_t maxdepth = 16;
using column = double[xq_block];

// Words that an operation takes and what it does to the depth; false when it has no place here.
static bool shape(int16_t op, int32_t *words, int32_t *grow)
{
    *words = 1;
    *grow = 0;
    switch (op) {
    case OP_NUM: case OP_VAR: *words = 2; *grow = 1; return true;
    case OP_COEF: *words = 2; return true;
    case OP_OBS: case OP_NOBS: case OP_CONS: case OP_RC: *grow = 1; return true;
    case OP_NOT: case OP_ABS: case OP_NEG: case OP_LOG: case OP_EXP: case OP_SQRT: case OP_INT:
    case OP_FLOOR: case OP_CEIL: case OP_FLOAT: return true;
    default:
        *grow = -1;
        return op >= OP_OR && op <= OP_DIV;
    }
}

bool xeq_can_block(const xeqpgm *pgm)
{
    int32_t depth = 0, words, grow;
    for (int32_t i = 0; i <= pgm->ncode; i += words) {
        if (!shape(pgm->code[i], &words, &grow))
            return false;
        depth += grow;
        if (depth > maxdepth)
            return false;
    }
    return pgm->restype == XR_NUM;
}

template <class T, class F> static void gather(const char *at, uint64_t width, int32_t n,
                                               double *out, F value)
{
    for (int32_t i = 0; i < n; i++, at += width) {
        T v;
        memcpy(&v, at, sizeof v);
        out[i] = value(v);
    }
}

// n cells of a variable, in rows of one segment.
static void read_run(uint8_t type, const char *at, uint64_t width, int32_t n, double *out)
{
    switch (type) {
    case T_BYTE:
        gather<int8_t>(at, width, n, out,
                       [](int8_t v) { return v <= 100 ? v : ovdouble_of_stbyte(v); });
        break;
    case T_INT:
        gather<int16_t>(at, width, n, out,
                        [](int16_t v) { return v <= 32740 ? v : ovdouble_of_stint(v); });
        break;
    case T_LONG:
        gather<int32_t>(at, width, n, out,
                        [](int32_t v) { return v <= 2147483620 ? v : ovdouble_of_ovlong(v); });
        break;
    case T_FLOAT:
        gather<float>(at, width, n, out, [](float v) {
            return v < 0x1p127f ? double(v) : ovdouble_of_ovfloatp(&v);
        });
        break;
    case T_DOUBLE:
        gather<double>(at, width, n, out, [](double v) { return v; });
        break;
    default:
        for (int32_t i = 0; i < n; i++)
            out[i] = cell_data(type, at + uint64_t(i) * width);
    }
}

static void read_column(int32_t var, int32_t obs, int32_t n, double *out)
{
    uint32_t per = sysdsa->n_per_S, have = sysdsa->_No_;
    while (n > 0) {
        uint32_t o = uint32_t(obs);
        int32_t run = n;
        if (o >= have) {
            while (n-- > 0)
                *out++ = misval;
            return;
        }
        if (uint32_t(run) > per - o % per)
            run = int32_t(per - o % per);
        if (uint32_t(run) > have - o)
            run = int32_t(have - o);
        read_run(_typlist[var - 1], dsa_varobsptr(sysdsa, uint32_t(var), o), sysdsa->width, run,
                 out);
        obs += run;
        out += run;
        n -= run;
    }
}

template <class F> [[gnu::optimize("O3")]] static void each(double *a, int32_t n, F f)
{
    for (int32_t i = 0; i < n; i++)
        a[i] = f(a[i]);
}

template <class F> [[gnu::optimize("O3")]] static void pairwise(double *l, const double *r,
                                                              int32_t n, F f)
{
    for (int32_t i = 0; i < n; i++)
        l[i] = f(l[i], r[i]);
}

// Arithmetic: a missing side makes misval, and so does a result out of range.
template <class F> static void arith(double *l, const double *r, int32_t n, F f)
{
    const double mis = misval;
    pairwise(l, r, n, [=](double x, double y) {
        double z = f(x, y);
        return (x < mis) & (y < mis) & (std::fabs(z) < mis) ? z : mis;
    });
}

template <class F> static void compare(double *l, const double *r, int32_t n, F f)
{
    const double mis = misval;
    if (mvmodern)
        pairwise(l, r, n, [=](double x, double y) {
            x = z_allexp(x) ? mis : x;
            y = z_allexp(y) ? mis : y;
            return double(f(x, y));
        });
    else
        pairwise(l, r, n, [=](double x, double y) {
            x = z_allexp(x) || x >= mis ? mis : x;
            y = z_allexp(y) || y >= mis ? mis : y;
            return double(f(x, y));
        });
}

template <class F> static void guarded(double *a, int32_t n, F f)
{
    const double mis = misval;
    each(a, n, [=](double x) { return x < mis ? xq_fin(f(x)) : mis; });
}

static void two_sided(int16_t op, double *l, const double *r, int32_t n)
{
    switch (op) {
    case OP_OR:
        pairwise(l, r, n, [](double x, double y) { return double((x != 0) | (y != 0)); });
        break;
    case OP_AND:
        pairwise(l, r, n, [](double x, double y) { return double((x != 0) & (y != 0)); });
        break;
    case OP_EQ: compare(l, r, n, [](double x, double y) { return x == y; }); break;
    case OP_NE: compare(l, r, n, [](double x, double y) { return x != y; }); break;
    case OP_GE: compare(l, r, n, [](double x, double y) { return x >= y; }); break;
    case OP_LE: compare(l, r, n, [](double x, double y) { return x <= y; }); break;
    case OP_LT: compare(l, r, n, [](double x, double y) { return x < y; }); break;
    case OP_GT: compare(l, r, n, [](double x, double y) { return x > y; }); break;
    case OP_ADD: arith(l, r, n, [](double x, double y) { return x + y; }); break;
    case OP_SUB: arith(l, r, n, [](double x, double y) { return x - y; }); break;
    case OP_MUL: arith(l, r, n, [](double x, double y) { return x * y; }); break;
    case OP_DIV: arith(l, r, n, [](double x, double y) { return x / y; }); break;
    default: arith(l, r, n, [](double x, double y) { return ovpow(x, y); }); break;
    }
}

static void one_sided(int16_t op, double *a, int32_t n)
{
    switch (op) {
    case OP_NOT: each(a, n, [](double x) { return double(x == 0); }); break;
    case OP_ABS: guarded(a, n, [](double x) { return std::fabs(x); }); break;
    case OP_NEG: guarded(a, n, [](double x) { return -x; }); break;
    case OP_LOG: guarded(a, n, [](double x) { return x > 0 ? std::log(x) : misval; }); break;
    case OP_EXP: guarded(a, n, [](double x) { return std::exp(x); }); break;
    case OP_SQRT: guarded(a, n, [](double x) { return std::sqrt(x); }); break;
    case OP_INT: each(a, n, ovint); break;
    case OP_FLOOR: each(a, n, ovfloor); break;
    case OP_CEIL: each(a, n, ovceil); break;
    default: each(a, n, xq_float); break;
    }
}

static void fill(double *out, int32_t n, double z)
{
    for (int32_t i = 0; i < n; i++)
        out[i] = z;
}

void xeq_block(parinfo_t *pi, xeqpgm *pgm, int32_t obs, int32_t n, double *out)
{
    column stack[maxdepth];
    int32_t depth = -1;
    pgm->obs1 = pi->pi_obs1;
    pgm->obs2 = pi->pi_obs2;
    const int16_t *pc = pgm->code, *end = pc + pgm->ncode + 1;
    while (pc < end) {
        int16_t op = *pc++;
        switch (op) {
        case OP_NUM: fill(stack[++depth], n, systak[*pc++ - 1]); break;
        case OP_VAR: read_column(*pc++, obs, n, stack[++depth]); break;
        case OP_COEF: pc++; break;
        case OP_NOBS: fill(stack[++depth], n, nobss2 - nobss1 + 1); break;
        case OP_CONS: fill(stack[++depth], n, 1); break;
        case OP_RC: fill(stack[++depth], n, captrc); break;
        case OP_OBS: {
            double first = obs - nobss1 + 1;
            double *a = stack[++depth];
            for (int32_t i = 0; i < n; i++)
                a[i] = first + i;
            break;
        }
        default:
            if (op <= OP_DIV) {
                two_sided(op, stack[depth - 1], stack[depth], n);
                depth--;
            } else
                one_sided(op, stack[depth], n);
        }
    }
    for (int32_t i = 0; i < n; i++)
        out[i] = z_allexp(stack[0][i]) ? misval : stack[0][i];
}
