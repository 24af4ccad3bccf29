#include "stats/estpost.h"
#include "core/missing.h"
#include "core/state.h"
#include "interp/messages.h"
#include "stats/esample.h"
#include "stats/results.h"
#include <cmath>
#include <cstring>

int32_t est_post(const estpost *p)
{
    auto n = int32_t(p->names->size());
    matref m;
    estval_clear();
    int32_t rc = umat_new("b", MK_E, 1, n, &m);
    if (rc)
        return rc;
    memcpy(m.m->el, p->b, sizeof(double) * size_t(n));
    memcpy(m.col, p->names->data(), sizeof(umatname) * size_t(n));
    strcpy(m.row[0].name, "y1");
    if (p->V) {
        if ((rc = umat_new("V", MK_E, n, n, &m)))
            return rc;
        memcpy(m.m->el, p->V, sizeof(double) * size_t(n) * size_t(n));
        memcpy(m.col, p->names->data(), sizeof(umatname) * size_t(n));
        memcpy(m.row, p->names->data(), sizeof(umatname) * size_t(n));
    }
    lastest = true;
    return 0;
}

static int32_t check_b(const char *name, matref *b)
{
    if (!umat_get(name, MK_MAT, b))
        return matnotfound(name);
    if (b->m->rows != 1)
        return error(503);
    return umat_missing(b) ? error(504) : 0;
}

static int32_t check_V(const char *name, int32_t n, matref *v)
{
    if (!umat_get(name, MK_MAT, v))
        return matnotfound(name);
    if (v->m->rows != n || v->m->cols != n)
        return error(503);
    if (umat_missing(v))
        return error(504);
    for (int32_t i = 1; i <= n; i++)
        for (int32_t j = 1; j < i; j++) {
            double a = umat_el(v->m, i, j), c = umat_el(v->m, j, i);
            if (std::fabs(a - c) > 1e-8 * (std::fabs(a) + std::fabs(c)))
                return error(505);
        }
    return 0;
}

static bool same_names(const umatname *a, const umatname *b, int32_t n)
{
    for (int32_t i = 0; i < n; i++)
        if (strcmp(a[i].eq, b[i].eq) || strcmp(a[i].name, b[i].name))
            return false;
    return true;
}

static int32_t name_conflict() { return errout(507, "name conflict\n"); }

int32_t est_post_named(const char *bname, const char *vname)
{
    matref b, v;
    int32_t rc = check_b(bname, &b);
    if (rc)
        return rc;
    if (*vname) {
        if ((rc = check_V(vname, b.m->cols, &v)))
            return rc;
        if (!same_names(b.col, v.col, b.m->cols) || !same_names(v.row, v.col, b.m->cols))
            return name_conflict();
    }
    estval_clear();
    if ((rc = umat_rename(bname, "b", MK_E)) || (*vname && (rc = umat_rename(vname, "V", MK_E))))
        return rc;
    if (umat_get("b", MK_E, &b))
        strcpy(b.row[0].name, "y1");
    lastest = true;
    return 0;
}

int32_t est_repost_named(const char *bname, const char *vname, bool rename)
{
    matref old, b, v;
    if (!lastest || !umat_get("b", MK_E, &old))
        return regrnotfound();
    int32_t n = old.m->cols, rc = 0;
    const umatname *names = old.col;
    if (*bname) {
        if ((rc = check_b(bname, &b)))
            return rc;
        if (b.m->cols != n)
            return error(503);
        if (!rename && !same_names(b.col, old.col, n))
            return name_conflict();
        names = b.col;
    }
    if (*vname) {
        if ((rc = check_V(vname, n, &v)))
            return rc;
        if (!rename && (!same_names(names, v.col, n) || !same_names(v.row, v.col, n)))
            return name_conflict();
    }
    std::vector<umatname> keep(names, names + n);
    if ((*bname && (rc = umat_rename(bname, "b", MK_E)))
        || (*vname && (rc = umat_rename(vname, "V", MK_E))))
        return rc;
    if (rename && umat_get("V", MK_E, &v)) {
        memcpy(v.col, keep.data(), sizeof(umatname) * size_t(n));
        memcpy(v.row, keep.data(), sizeof(umatname) * size_t(n));
    }
    return 0;
}
