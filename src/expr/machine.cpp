// expr/machine.cpp - runs compiled expressions, once an observation. The inner loop of
// generate, replace and if: it allocates nothing and sets up no more than it must.
#include "core/missing.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/variables.h"
#include "expr/machine.h"
#include "expr/parse.h"
#include "expr/strfun.h"
#include <cmath>
#include <cstring>

// ---- cells

static inline double read_cell(uint8_t type, const char *at)
{
    switch (type) {
    case T_BYTE: {
        int8_t v = int8_t(*at);
        return v <= 100 ? v : ovdouble_of_stbyte(v);
    }
    case T_INT: {
        int16_t v;
        memcpy(&v, at, 2);
        return v <= 32740 ? v : ovdouble_of_stint(v);
    }
    case T_LONG: {
        int32_t v;
        memcpy(&v, at, 4);
        return v <= 2147483620 ? v : ovdouble_of_ovlong(v);
    }
    case T_FLOAT: {
        float v;
        memcpy(&v, at, 4);
        return v < 0x1p127f ? double(v) : ovdouble_of_ovfloatp(&v);
    }
    case T_DOUBLE: {
        double v;
        memcpy(&v, at, 8);
        return v;
    }
    default:
        return cell_data(type, at);
    }
}

static inline double read_var(const char *row, int32_t var)
{
    return row ? read_cell(_typlist[var - 1], row + sysdsa->offset[var - 1]) : misval;
}

static inline const char *row_of(int32_t obs)
{
    return sysdsa && uint32_t(obs) < sysdsa->_No_ ? dsa_obsptr(sysdsa, uint32_t(obs)) : nullptr;
}

// The row that a subscript means, within the group; null when there is none.
static const char *row_at(const xeqrun *m, double subscript)
{
    if (!(subscript >= zminlong && subscript <= zmaxlong))
        return nullptr;
    int64_t obs = int64_t(m->n1) - 1 + int64_t(subscript);
    return obs < m->n1 || obs > m->n2 ? nullptr : row_of(int32_t(obs));
}

static void read_string(char *out, const char *row, int32_t var)
{
    if (!row) {
        *out = 0;
        return;
    }
    size_t n = _typlist[var - 1];
    memcpy(out, row + sysdsa->offset[var - 1], n);
    out[n] = 0;
}

// ---- comparison

// Out-of-range operands are missing; under old versions all missing values are one.
static double cmp_value(double z)
{
    if (z_allexp(z) || (!mvmodern && ovismissing(z)))
        return misval;
    return z;
}

#define COMPARE(op)                                                                            \
    do {                                                                                       \
        double l = sp[-1], r = *sp;                                                            \
        if (!(std::fabs(l) < misval && std::fabs(r) < misval)) {                               \
            l = cmp_value(l);                                                                  \
            r = cmp_value(r);                                                                  \
        }                                                                                      \
        *--sp = l op r;                                                                        \
    } while (0)

// A missing operand, and a result out of range, make misval.
#define ARITH(expr)                                                                            \
    do {                                                                                       \
        double l = sp[-1], r = *sp;                                                            \
        *--sp = l < misval && r < misval ? xq_fin(expr) : misval;                              \
    } while (0)

#define GUARDED(expr)                                                                          \
    do {                                                                                       \
        double x = *sp;                                                                        \
        *sp = x < misval ? xq_fin(expr) : misval;                                              \
    } while (0)

void xeq_run(xeqrun *m)
{
    const int16_t *pc = m->pc, *end = m->end;
    double *sp = m->sp;
    while (pc < end) {
        int16_t op = *pc++;
        switch (op) {
        case OP_NUM: *++sp = systak[*pc++ - 1]; break;
        case OP_VAR: *++sp = read_var(m->row, *pc++); break;
        case OP_VARSUB: *sp = read_var(row_at(m, *sp), *pc++); break;
        case OP_OBS: *++sp = m->obs - m->n1 + 1; break;
        case OP_NOBS: *++sp = m->n2 - m->n1 + 1; break;
        case OP_CONS: *++sp = 1; break;
        case OP_RC: *++sp = captrc; break;
        case OP_COEF: pc++; break;
        case OP_OR: sp--; *sp = *sp != 0 || sp[1] != 0; break;
        case OP_AND: sp--; *sp = *sp != 0 && sp[1] != 0; break;
        case OP_NOT: *sp = *sp == 0; break;
        case OP_EQ: COMPARE(==); break;
        case OP_NE: COMPARE(!=); break;
        case OP_GE: COMPARE(>=); break;
        case OP_LE: COMPARE(<=); break;
        case OP_LT: COMPARE(<); break;
        case OP_GT: COMPARE(>); break;
        case OP_ADD: ARITH(l + r); break;
        case OP_SUB: ARITH(l - r); break;
        case OP_MUL: ARITH(l * r); break;
        case OP_DIV: ARITH(r == 0 ? misval : l / r); break;
        case OP_POW: ARITH(ovpow(l, r)); break;
        case OP_NEG: GUARDED(-x); break;
        case OP_ABS: GUARDED(std::fabs(x)); break;
        case OP_LOG: GUARDED(x > 0 ? std::log(x) : misval); break;
        case OP_EXP: GUARDED(std::exp(x)); break;
        case OP_SQRT: GUARDED(std::sqrt(x)); break;
        case OP_INT: *sp = ovint(*sp); break;
        case OP_FLOOR: *sp = ovfloor(*sp); break;
        case OP_CEIL: *sp = ovceil(*sp); break;
        case OP_DUP: sp[1] = *sp; sp++; break;
        case OP_SUM: {
            double &total = m->pgm->sums[*pc++];
            if (*sp < misval)
                total += *sp;
            *sp = xq_fin(total);
            break;
        }
        case OP_FLOAT: *sp = xq_float(*sp); break;
        case OP_SVAR: read_string(*++m->ss, m->row, *pc++); break;
        case OP_SVARSUB: read_string(*++m->ss, row_at(m, *sp--), *pc++); break;
        case OP_STR: strcpy(*++m->ss, ssystak + *pc++); break;
        case OP_SEQ: m->ss -= 2; *++sp = !strcmp(m->ss[1], m->ss[2]); break;
        case OP_SNE: m->ss -= 2; *++sp = !!strcmp(m->ss[1], m->ss[2]); break;
        case OP_SGE: m->ss -= 2; *++sp = strcmp(m->ss[1], m->ss[2]) >= 0; break;
        case OP_SLE: m->ss -= 2; *++sp = strcmp(m->ss[1], m->ss[2]) <= 0; break;
        case OP_SLT: m->ss -= 2; *++sp = strcmp(m->ss[1], m->ss[2]) < 0; break;
        case OP_SGT: m->ss -= 2; *++sp = strcmp(m->ss[1], m->ss[2]) > 0; break;
        case OP_MISSBEGIN: m->allmissing = true; break;
        case OP_MISSNUM: m->allmissing &= *sp >= misval; sp--; break;
        case OP_MISSSTR: m->allmissing &= !**m->ss; m->ss--; break;
        case OP_MISSEND: *++sp = m->allmissing; break;
        default:
            m->pc = pc;
            m->sp = sp;
            xeq_rare(m, op);
            pc = m->pc;
            sp = m->sp;
            if (m->rc)
                return;
        }
    }
    m->sp = sp;
}

// ---- entries

static inline void start(xeqrun *m, xeqpgm *pgm, int32_t obs)
{
    m->pgm = pgm;
    m->pc = pgm->code;
    m->end = pgm->code + pgm->ncode + 1;
    m->obs = obs;
    m->obs1 = pgm->obs1;
    m->obs2 = pgm->obs2;
    m->n1 = pgm->nobss1;
    m->n2 = pgm->nobss2;
    m->row = row_of(obs);
    m->sp = m->num;
    m->ss = m->str;
    m->ms = m->mat;
    m->strict = false;
    m->rc = 0;
    if (obs == pgm->obs1)
        for (int32_t i = 0; i <= pgm->nsum; i++)
            pgm->sums[i] = 0;
}

void xeq_start(xeqrun *m, xeqpgm *pgm, int32_t obs) { start(m, pgm, obs); }

static inline void ranges_of(const parinfo_t *pi, xeqpgm *pgm)
{
    pgm->obs1 = pi->pi_obs1;
    pgm->obs2 = pi->pi_obs2;
    pgm->nobss1 = nobss1;
    pgm->nobss2 = nobss2;
}

double xeqforby(xeqpgm *pgm, int32_t obs)
{
    xeqrun m;
    ov_fpeerror = 0;
    start(&m, pgm, obs);
    xeq_run(&m);
    double z = m.num[1];
    return ov_fpeerror || z_allexp(z) ? misval : z;
}

double pi_xeq(parinfo_t *pi, xeqpgm *pgm, int32_t obs)
{
    ranges_of(pi, pgm);
    return xeqforby(pgm, obs);
}

char *sxeq(xeqpgm *pgm, int32_t obs, char *buffer)
{
    xeqrun m;
    ranges_of(parinfo, pgm);
    start(&m, pgm, obs);
    xeq_run(&m);
    strcpy(buffer, m.str[1]);
    return buffer;
}
