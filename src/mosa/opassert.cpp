// Assertions about the top of the stack. A matrix is judged by its value, a function by the
// result it was declared to give.
#include "mosa/mtypes.h"
#include "mosa/vmint.h"

// A matrix passes or is named with its shape; a function passes or is named.
static void verdict(bool good, int32_t code, const char *word, const char *fcnword)
{
    if (good)
        return;
    const matobj *m = *m_stak;
    if (mo_isfcn(m))
        m_custom_xeqerrf(code, "%s() does not return %s", fcn_name(m), fcnword);
    else
        m_custom_xeqerrf(code, "%s[%d,%d] found where %s required", tmp_name(m), m->rows, m->cols,
                         word);
}

// The shape a function declares is one of the two, or a scalar.
static bool declares(const matobj *f, int32_t shape, int32_t other)
{
    return f->eltype == shape || f->eltype == other || f->eltype == OT_SCALAR;
}

void opisrvec()
{
    const matobj *m = *m_stak;
    verdict(mo_isfcn(m) ? declares(m, OT_ROWVECTOR, OT_ROWVECTOR) : m->rows == 1, 3202, "rowvector",
            "rowvector");
}

void opiscvec()
{
    const matobj *m = *m_stak;
    verdict(mo_isfcn(m) ? declares(m, OT_COLVECTOR, OT_COLVECTOR) : m->cols == 1, 3203, "colvector",
            "colvector");
}

void opisvec()
{
    const matobj *m = *m_stak;
    bool good = mo_isfcn(m) ? declares(m, OT_ROWVECTOR, OT_COLVECTOR) || m->eltype == OT_VECTOR
                            : m->rows == 1 || m->cols == 1;
    verdict(good, 3201, "vector", "vector");
}

void opisvoid()
{
    const matobj *m = *m_stak;
    verdict(mo_isfcn(m) ? m->eltype == OT_VOID : m->rows == 0 && m->cols == 0, 3258, "void",
            "void");
}

void opisreal()
{
    const matobj *m = *m_stak;
    verdict(mo_isfcn(m) ? m->cols == MT_REAL : m->eltype == MO_REAL, 3253, "real", "real");
}

void opiscx()
{
    const matobj *m = *m_stak;
    verdict(mo_isfcn(m) ? m->cols == MT_COMPLEX : m->eltype == MO_COMPLEX, 3252, "complex",
            "complex");
}

void opisnumer()
{
    const matobj *m = *m_stak;
    bool good = mo_isfcn(m) ? m->cols == MT_REAL || m->cols == MT_COMPLEX || m->cols == MT_NUMERIC
                            : is_num(m);
    verdict(good, 3251, "real or complex", "numeric");
}

// Only real is known not to be a string.
void opisstr()
{
    const matobj *m = *m_stak;
    verdict(mo_isfcn(m) ? m->cols != MT_REAL : m->eltype != MO_REAL, 3254, "string", "string");
}

void opisfcn()
{
    const matobj *m = *m_stak;
    if (!mo_isfcn(m))
        m_custom_xeqerrf(3101, "%s not a function", tmp_name(m));
}
