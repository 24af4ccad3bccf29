// expr/matmachine.cpp - the matrix operations of the machine, and matrix expressions.
//
// Operands lie on the matrix stack by name. An operation writes into an operand that is a
// temporary, else into a new one, and removes the temporaries it does not need any more.
#include "core/mem.h"
#include "core/missing.h"
#include "core/settings.h"
#include "core/state.h"
#include "expr/machine.h"
#include "interp/messages.h"
#include "stats/results.h"
#include "stats/variates.h"
#include <cstdio>
#include <cstring>

static int32_t tempctr;

static void push_slot(xeqrun *m, char kind, const char *name)
{
    matslot *s = ++m->ms;
    s->kind = kind;
    strncpy(s->name, name, sizeof s->name - 1);
    s->name[sizeof s->name - 1] = 0;
}

static void new_temp(matslot *s)
{
    s->kind = MK_MAT;
    snprintf(s->name, sizeof s->name, "1%d", ++tempctr);
}

static void drop(const matslot *s)
{
    if (s->temp())
        (void)umat_rm(s->name, MK_MAT);
}

// Takes the matrix on top off the stack; null when there is none of that name.
static bool find_slot(xeqrun *m, const matslot *s, matref *out)
{
    if (umat_get(s->name, matkind(s->kind), out))
        return true;
    if (m->strict && !m->rc)
        m->rc = matnotfound(s->name);
    return false;
}

// ---- matrices from matrices

static void unary(xeqrun *m, umat_uop op)
{
    matslot a = *m->ms;
    if (!a.temp())
        new_temp(m->ms);
    m->rc = umat_unary(op, a.name, matkind(a.kind), m->ms->name);
}

static void binary(xeqrun *m, umat_op op)
{
    matslot b = *m->ms--, a = *m->ms;
    bool join = op == UM_ROWJOIN || op == UM_COLJOIN;
    if (join && (!*a.name || !*b.name)) {
        *m->ms = *a.name ? a : b;
        return;
    }
    if (b.temp() && !a.temp())
        *m->ms = b;
    else if (!a.temp())
        new_temp(m->ms);
    m->rc = umat_binary(op, a.name, matkind(a.kind), b.name, matkind(b.kind), m->ms->name);
    if (a.temp() && b.temp())
        drop(&b);
}

static void scale(xeqrun *m, double s)
{
    matslot a = *m->ms;
    if (!a.temp())
        new_temp(m->ms);
    m->rc = umat_scale(a.name, matkind(a.kind), s, m->ms->name);
}

static void number_to_matrix(xeqrun *m)
{
    new_temp(++m->ms);
    m->rc = umat_const(m->ms->name, 1, 1, *m->sp--);
}

static void sweep(xeqrun *m)
{
    matslot a = *m->ms;
    if (!a.temp())
        new_temp(m->ms);
    m->rc = umat_sweep(a.name, matkind(a.kind), *m->sp--, m->ms->name);
}

static void constant(xeqrun *m)
{
    new_temp(++m->ms);
    m->rc = umat_const(m->ms->name, m->sp[0], m->sp[-1], m->sp[-2]);
    m->sp -= 3;
}

static void uniform(xeqrun *m)
{
    new_temp(++m->ms);
    m->rc = umat_const(m->ms->name, m->sp[0], m->sp[-1], 0);
    m->sp -= 2;
    matref a;
    if (m->rc || !umat_get(m->ms->name, MK_MAT, &a))
        return;
    runiform_(a.m->el, int64_t(a.m->rows) * a.m->cols, 1);
}

static int32_t position(double z, int32_t when_missing)
{
    if (z >= misval)
        return when_missing;
    return z >= 0 && z < 2147483647.0 ? int32_t(z) : -1;
}

static void submatrix(xeqrun *m)
{
    matslot a = *m->ms;
    const double *z = m->sp;
    m->sp -= 4;
    matref r;
    if (!find_slot(m, &a, &r))
        return;
    if (!a.temp())
        new_temp(m->ms);
    m->rc = umat_sub(a.name, matkind(a.kind), position(z[0], -1), position(z[-1], r.m->rows),
                     position(z[-2], -1), position(z[-3], r.m->cols), m->ms->name);
}

// nullmat(name) is the matrix or nothing; get(name) one of the last estimates.
static void named(xeqrun *m)
{
    bool get = *m->pc++;
    char name[33];
    strncpy(name, *m->ss--, 32);
    name[32] = 0;
    matref r;
    if (!get) {
        push_slot(m, MK_MAT, umat_get(name, MK_MAT, &r) ? name : "");
        return;
    }
    const char *which = !strcmp(name, "_b") ? "b" : !strcmp(name, "VCE") ? "V" : "";
    const char *real = *which ? find_e_of_specialname(which) : nullptr;
    push_slot(m, MK_E, real ? real : name);
    if (real && !umat_get(real, MK_E, &r))
        m->ms->kind = MK_MAT;
    (void)find_slot(m, m->ms, &r);
}

// ---- numbers from matrices

static double shape_number(xeqrun *m, int32_t op, const matref *a)
{
    int32_t rc = 0;
    double z = misval;
    bool square = a->m->rows == a->m->cols;
    switch (op) {
    case OP_ROWSOF: return a->m->rows;
    case OP_COLSOF: return a->m->cols;
    case OP_MATMISSING: return umat_missing(a);
    case OP_ISSYM: return umat_issym(a);
    default: break;
    }
    if (!square && !m->strict)
        return misval;
    if (op == OP_TRACE)
        z = umat_trace(a, &rc);
    else if (op == OP_DET)
        z = umat_det(a, &rc);
    else
        z = umat_diag0cnt(a, &rc);
    if (m->strict)
        m->rc = rc;
    return z;
}

static void number(xeqrun *m, int32_t op)
{
    matslot a = *m->ms--;
    matref r;
    double z = find_slot(m, &a, &r) ? shape_number(m, op, &r) : misval;
    *++m->sp = z;
    drop(&a);
}

static void mreldif(xeqrun *m)
{
    matslot b = *m->ms--, a = *m->ms--;
    matref ra, rb;
    int32_t rc = 0;
    double z = misval;
    if (find_slot(m, &a, &ra) && find_slot(m, &b, &rb)) {
        bool fit = ra.m->rows == rb.m->rows && ra.m->cols == rb.m->cols;
        if (fit || m->strict)
            z = umat_mreldif(&ra, &rb, &rc);
    }
    if (rc && m->strict)
        m->rc = rc;
    *++m->sp = z;
    drop(&a);
    drop(&b);
}

// Row on top of the stack, the column below it.
static void element(xeqrun *m)
{
    double row = m->sp[0], col = m->sp[-1], z = misval;
    matslot a = *m->ms--;
    matref r;
    if (find_slot(m, &a, &r) && row >= 1 && row < r.m->rows + 1.0 && col >= 1
        && col < r.m->cols + 1.0)
        z = umat_el(r.m, int32_t(row), int32_t(col));
    *--m->sp = z;
    drop(&a);
}

// The position a string names in the matrix on top, which stays there when keep is set.
static void name_position(xeqrun *m, int32_t side, bool last, bool keep)
{
    matref r;
    double z = misval;
    if (find_slot(m, m->ms, &r)) {
        int32_t at = side == 1 ? umat_findname(r.row, r.m->rows, *m->ss, last)
                               : umat_findname(r.col, r.m->cols, *m->ss, last);
        if (at)
            z = at;
    }
    m->ss--;
    *++m->sp = z;
    if (!keep)
        drop(m->ms--);
}

void xeq_matrix(xeqrun *m, int32_t op)
{
    switch (op) {
    case OP_MATSTR: push_slot(m, MK_MAT, *m->ss--); break;
    case OP_MAT: push_slot(m, MK_MAT, ssystak + *m->pc++); break;
    case OP_MATE: push_slot(m, MK_E, ssystak + *m->pc++); break;
    case OP_MATR: push_slot(m, MK_R, ssystak + *m->pc++); break;
    case OP_MATRETURN: push_slot(m, MK_RETURN, ssystak + *m->pc++); break;
    case OP_MATIDENT: new_temp(++m->ms); m->rc = umat_ident(m->ms->name, *m->sp--); break;
    case OP_MATCONST: constant(m); break;
    case OP_MATUNIFORM: uniform(m); break;
    case OP_MATNEG: unary(m, UM_NEG); break;
    case OP_NUMPLUSMAT: number_to_matrix(m); if (!m->rc) binary(m, UM_ADD); break;
    case OP_MATADD: binary(m, UM_ADD); break;
    case OP_NUM2MAT: number_to_matrix(m); break;
    case OP_MATMUL: binary(m, UM_MUL); break;
    case OP_RECIPROCAL:
        if (*m->sp == 0 || *m->sp >= misval)
            m->rc = error(504);
        else
            *m->sp = 1 / *m->sp;
        break;
    case OP_MATSCALE: scale(m, *m->sp--); break;
    case OP_TRANSPOSE: unary(m, UM_TRANSPOSE); break;
    case OP_COLJOIN: binary(m, UM_COLJOIN); break;
    case OP_ROWJOIN: binary(m, UM_ROWJOIN); break;
    case OP_KRON: binary(m, UM_KRON); break;
    case OP_SYMINV: unary(m, UM_SYMINV); break;
    case OP_CORR: unary(m, UM_CORR); break;
    case OP_DIAG: unary(m, UM_DIAG); break;
    case OP_VECDIAG: unary(m, UM_VECDIAG); break;
    case OP_CHOLESKY: unary(m, UM_CHOLESKY); break;
    case OP_INV: unary(m, UM_INV); break;
    case OP_VEC: unary(m, UM_VEC); break;
    case OP_HADAMARD: binary(m, UM_HADAMARD); break;
    case OP_SWEEP: sweep(m); break;
    case OP_NAMEDMAT: named(m); break;
    case OP_NAMEPOS: name_position(m, *m->pc++, false, true); break;
    case OP_NAMEPOSEND: name_position(m, *m->pc++, true, true); break;
    case OP_ROWNUMB: name_position(m, 1, false, false); break;
    case OP_COLNUMB: name_position(m, 2, false, false); break;
    case OP_SUBMATRIX: submatrix(m); break;
    case OP_MATEL: case OP_EL: element(m); break;
    case OP_MRELDIF: mreldif(m); break;
    case OP_TRACE: case OP_DET: case OP_ROWSOF: case OP_COLSOF: case OP_DIAG0CNT:
    case OP_MATMISSING: case OP_ISSYM: number(m, op); break;
    default: m->rc = error(198); break;
    }
}

// ---- matrix expressions

static void drop_temps(int32_t since)
{
    char name[33];
    while (tempctr > since) {
        snprintf(name, sizeof name, "1%d", tempctr--);
        (void)umat_rm(name, MK_MAT);
    }
}

static int32_t keep_result(const xeqrun *m, const char *name, char namekind, double *valueout)
{
    if (m->pgm->restype != XR_MAT) {
        *valueout = z_allexp(m->num[1]) ? misval : m->num[1];
        return 0;
    }
    const matslot *s = &m->mat[1];
    if (!*s->name)
        return matnotfound(name);
    if (s->temp())
        return umat_rename(s->name, name, matkind(namekind));
    return umat_copy(s->name, matkind(s->kind), name, matkind(namekind));
}

int32_t xeqmat_g(xeqpgm *pgm, const char *name, char namekind, double *valueout)
{
    double *scratch_was = umat_scratch, *scratch = nullptr;
    if (pgm->hasmatop) {
        scratch = static_cast<double *>(
            safemalloc(sizeof(double) * size_t(set_matsize) * size_t(set_matsize)));
        if (!scratch)
            return error(909);
        umat_scratch = scratch;
    }
    int32_t temps = tempctr;
    xeqrun m;
    ov_fpeerror = 0;
    pgm->obs1 = pgm->obs2 = 1;
    pgm->nobss1 = nobss1;
    pgm->nobss2 = nobss2;
    xeq_start(&m, pgm, 1);
    m.strict = true;
    xeq_run(&m);
    if (!m.rc && ov_fpeerror)
        m.rc = error(504);
    if (!m.rc)
        m.rc = keep_result(&m, name, namekind, valueout);
    drop_temps(temps);
    umat_scratch = scratch_was;
    safefree(scratch);
    return m.rc;
}

int32_t xeqmat_mat(xeqpgm *pgm, const char *name, char namekind)
{
    double z = misval;
    int32_t rc = xeqmat_g(pgm, name, namekind, &z);
    if (rc || pgm->restype == XR_MAT)
        return rc;
    if (vernum < 800 && z >= misval)
        return error(504);
    matref m;
    rc = umat_new(name, matkind(namekind), 1, 1, &m);
    if (!rc)
        m.m->el[0] = z;
    return rc;
}
