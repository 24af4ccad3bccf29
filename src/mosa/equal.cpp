// Whether two values are the same.
#include "mosa/classdef.h"
#include "mosa/elwise.h"
#include "mosa/views.h"

static double part(const matobj *m, int64_t k)
{
    return m->view ? v_el1(m, k) : mo_re(m)[k];
}

static bool numbers_equal(const matobj *a, const matobj *b)
{
    for (int64_t k = 0, n = mo_count(a); k < n && !el_break(k); k++) {
        double x = part(a, k), y = part(b, k);
        if (x != y)
            return false;
        double xi = a->eltype == MO_COMPLEX ? mo_im(a)[k] : 0;
        double yi = b->eltype == MO_COMPLEX ? mo_im(b)[k] : 0;
        if (xi != yi && x < misval)
            return false;
    }
    return true;
}

static bool strings_equal(const matobj *a, const matobj *b)
{
    char x[256], y[256];
    for (int64_t k = 0, n = mo_count(a); k < n && !el_break(k); k++) {
        if (!a->view && !b->view) {
            if (exstrcmp(mo_sel(a)[k], mo_sel(b)[k]) != 0)
                return false;
            continue;
        }
        const char *p = x, *q = y;
        int32_t np =
            a->view ? v_sel1(a, k, x) : (p = sel_text(mo_sel(a)[k]), sel_len(mo_sel(a)[k]));
        int32_t nq =
            b->view ? v_sel1(b, k, y) : (q = sel_text(mo_sel(b)[k]), sel_len(mo_sel(b)[k]));
        if (np != nq || memcmp(p, q, size_t(np)) != 0)
            return false;
    }
    return true;
}

static bool instances_equal(const matobj *a, const matobj *b)
{
    if (a == b)
        return true;
    if (!a || !b)
        return false;
    if (m_nativefull()) {
        m_xrc = 3998;
        return false;
    }
    return a->eltype == MO_CLASS ? classequal(a, b) : structequal(a, b);
}

bool matricesequal(const matobj *a, const matobj *b)
{
    if (a == b)
        return true;
    if (mo_isfcn(a) || mo_isfcn(b) || a->rows != b->rows || a->cols != b->cols)
        return false;
    if (is_num(a) && is_num(b))
        return numbers_equal(a, b);
    if (a->eltype != b->eltype)
        return false;
    switch (a->eltype) {
    case MO_STRING: return strings_equal(a, b);
    case MO_POINTER:
        return mo_count(a) == 0 || !memcmp(mo_pel(a), mo_pel(b), size_t(mo_count(a)) * 8);
    case MO_STRUCT:
    case MO_CLASS:
        if (mo_isinstance(a) || mo_isinstance(b))
            return mo_isinstance(a) && mo_isinstance(b) && classequal(a, b);
        for (int64_t k = 0, n = mo_count(a); k < n; k++)
            if (!instances_equal(mo_pel(a)[k], mo_pel(b)[k]))
                return false;
        return true;
    default: return a->alloc == b->alloc && !memcmp(a->data, b->data, size_t(a->alloc));
    }
}

// Members from row first on, pair by pair.
static bool members_equal(const matobj *a, const matobj *b, int64_t first)
{
    if (a->rows != b->rows)
        return false;
    for (int64_t k = first; k < a->rows; k++) {
        const matobj *x = mo_pel(a)[k], *y = mo_pel(b)[k];
        if (x != y && (!x || !y || !matricesequal(x, y)))
            return false;
    }
    return true;
}

bool structequal(const matobj *a, const matobj *b)
{
    return members_equal(a, b, 0);
}

bool classequal(const matobj *a, const matobj *b)
{
    return a == b ||
           (a->rows > 0 && b->rows > 0 && mo_pel(a)[0] == mo_pel(b)[0] && members_equal(a, b, 1));
}
