#include "mosa/bi_int.h"
#include "core/missing.h"
#include "mosa/bi_map.h"

bool bi_fail(int32_t code)
{
    m_xrc = code;
    return false;
}

bool bi_ismatrix(const matobj *m)
{
    return !mo_isfcn(m) || bi_fail(3102);
}
bool bi_isarray(const matobj *m)
{
    return bi_ismatrix(m) && (m->view == 0 || bi_fail(3103));
}
bool bi_isreal(const matobj *m)
{
    return bi_ismatrix(m) && (m->eltype == MO_REAL || bi_fail(3253));
}
bool bi_isnumeric(const matobj *m)
{
    return bi_ismatrix(m) && (m->eltype == MO_REAL || m->eltype == MO_COMPLEX || bi_fail(3251));
}
bool bi_isstring(const matobj *m)
{
    return bi_ismatrix(m) && (m->eltype == MO_STRING || bi_fail(3254));
}
bool bi_isscalar(const matobj *m)
{
    return bi_ismatrix(m) && (mo_is1by1(m) || bi_fail(3204));
}

bool bi_distinct(int32_t argc)
{
    for (int32_t i = 2; i <= argc; i++)
        for (int32_t j = 1; j < i; j++)
            if (bi_arg(argc, i) == bi_arg(argc, j))
                return bi_fail(3002);
    return true;
}

bool bi_real(const matobj *m, double *z)
{
    if (!bi_isreal(m) || !bi_isscalar(m))
        return false;
    *z = m->view ? v_el(m, 0, 0) : *mo_re(m);
    return true;
}

bool bi_int(const matobj *m, int32_t low, int32_t high, int32_t *n)
{
    double z;
    if (!bi_real(m, &z))
        return false;
    if (!(z >= low && z <= high))
        return bi_fail(3300);
    *n = int32_t(z);
    return true;
}

bool bi_string(const matobj *m, const char **bytes, int32_t *n)
{
    static char buffer[256];
    if (!bi_isstring(m) || !bi_isscalar(m))
        return false;
    if (m->view) {
        *n = v_sel(m, 0, 0, buffer);
        *bytes = buffer;
        return true;
    }
    *n = sel_len(*mo_sel(m));
    *bytes = sel_text(*mo_sel(m));
    return true;
}

matobj *bi_target(matobj *m, int16_t eltype)
{
    if (m_isfree(m) && m->eltype == eltype)
        return m;
    return m_mktmat(eltype, m->rows, m->cols);
}

matobj *bi_array(matobj *m)
{
    if (!m->view)
        return m;
    matobj *copy = m_mktmat(m->eltype, m->rows, m->cols);
    if (copy && matcpy_x_x(copy, m)) {
        mo_freemat(copy);
        return nullptr;
    }
    return copy;
}

bool bi_conform(int32_t argc, int32_t first, int32_t last, int32_t *rows, int32_t *cols)
{
    matobj shape = {};
    shape.rows = bi_arg(argc, first)->rows;
    shape.cols = bi_arg(argc, first)->cols;
    for (int32_t k = first + 1; k <= last; k++)
        if (m_colonshape(&shape, bi_arg(argc, k), &shape.rows, &shape.cols) == CC_NONE)
            return bi_fail(3200);
    *rows = shape.rows;
    *cols = shape.cols;
    return true;
}

void bi_mapreal(int32_t argc, const char *id, double (*f)(const double *))
{
    m_xeqerrid = id;
    for (int32_t k = 1; k <= argc; k++)
        if (!bi_isreal(bi_arg(argc, k)))
            return;
    int32_t rows, cols;
    if (!bi_conform(argc, 1, argc, &rows, &cols))
        return;
    matobj *r = argc == 1 ? bi_target(m_arg(0), MO_REAL) : m_mktmat(MO_REAL, rows, cols);
    if (!r)
        return;
    double *to = mo_re(r), x[bi_mapmost];
    int64_t count = 0;
    for (int32_t i = 0; i < rows; i++)
        for (int32_t j = 0; j < cols; j++) {
            if (bi_stop(count++))
                return;
            bool missing = false;
            for (int32_t k = 0; k < argc; k++) {
                x[k] = bi_elc(m_stak[k + 1 - argc], i, j);
                missing |= x[k] >= misval;
            }
            *to++ = missing ? misval : bi_inrange(f(x));
        }
    m_result(argc, r);
}
