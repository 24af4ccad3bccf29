// expr/xeqterms.cpp - operated variables, levels and products of them in expressions.
//
// Operands of the four operations: the number of parts, then for each its variable, whether it
// is an indicator, its level in two words, and the four numbers of its time-series operators.
#include "expr/comp.h"
#include "expr/machine.h"
#include "varlist/terms.h"

void comp_term(const termname &t)
{
    bool ts = false, factor = false;
    for (int32_t i = 0; i < t.n; i++) {
        ts |= t.part[i].ts.any();
        factor |= t.part[i].kind == TP_LEVEL;
    }
    if (ts)
        if (int32_t rc = ts_init())
            comp_fail(rc);
    emit(t.n > 1 ? OP_FVINTERACTION : factor && ts ? OP_FVFACTOR : factor ? OP_FVTERM : OP_FVVAR);
    emit(t.n);
    for (int32_t i = 0; i < t.n; i++) {
        const termpart &p = t.part[i];
        emit(p.var);
        emit(p.kind == TP_LEVEL);
        emit(int16_t(p.level & 0xffff));
        emit(p.level >> 16);
        emit(p.ts.lag);
        emit(p.ts.diff);
        emit(p.ts.span[0]);
        emit(p.ts.span[1]);
    }
    push(CT_NUM);
}

bool xeq_terms(xeqrun *m, int32_t op)
{
    if (op != OP_FVVAR && op != OP_FVFACTOR && op != OP_FVTERM && op != OP_FVINTERACTION)
        return false;
    double v = 1;
    for (int32_t n = *m->pc++; n > 0; n--, m->pc += 8) {
        const int16_t *w = m->pc;
        tsops ts;
        ts.lag = w[4];
        ts.diff = w[5];
        ts.span[0] = w[6];
        ts.span[1] = w[7];
        double z = m->row ? rcpxeq(w[0], ts, m->obs) : misval;
        if (z < misval && w[1])
            z = z == (int32_t(uint16_t(w[2])) | int32_t(w[3]) << 16);
        v = v < misval && z < misval ? v * z : misval;
    }
    *++m->sp = xq_fin(v);
    return true;
}
