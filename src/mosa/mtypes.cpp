#include "mosa/mtypes.h"
#include "mosa/values.h"
#include "output/print.h"
#include <cstdio>
#include <cstring>

const char *readableeltype(int32_t eltype)
{
    static const char *const words[] = {"classdef", "structdef", "transmorphic", "real",   "string",
                                        "complex",  "numeric",   "pointer",      "struct", "class"};
    static char broken[24];
    if (eltype >= MT_CLASSDEF && eltype <= MT_CLASS)
        return words[eltype - MT_CLASSDEF];
    snprintf(broken, sizeof broken, "BROKEN%d", eltype);
    return broken;
}

const char *readableorgtype(int32_t orgtype)
{
    static const char *const words[] = {"matrix",    "scalar",    "vector",
                                        "rowvector", "colvector", "void"};
    return orgtype >= 0 && orgtype <= OT_VOID ? words[orgtype] : "BROKEN";
}

int16_t mt_storage(int32_t eltype)
{
    switch (eltype) {
    case MT_STRING: return MO_STRING;
    case MT_COMPLEX: return MO_COMPLEX;
    case MT_POINTER: return MO_POINTER;
    case MT_STRUCT: return MO_STRUCT;
    case MT_CLASS: return MO_CLASS;
    default: return MO_REAL;
    }
}

void mt_shape(int32_t orgtype, int32_t *rows, int32_t *cols)
{
    *rows = orgtype == OT_SCALAR || orgtype == OT_VECTOR || orgtype == OT_ROWVECTOR;
    *cols = orgtype == OT_SCALAR || orgtype == OT_COLVECTOR;
}

// ---- the table of one compilation

static int32_t pool_name(mtyp_table *t, const char *name)
{
    for (int32_t at = 0; at < t->poolused; at += int32_t(strlen(t->pool + at)) + 1)
        if (!strcmp(t->pool + at, name))
            return at;
    auto n = int32_t(strlen(name)) + 1;
    if (t->poolused + n > mtyp_poolmax) {
        spout21at(3, "no room to record more structure names\n");
        return -1;
    }
    memcpy(t->pool + t->poolused, name, size_t(n));
    t->poolused += n;
    return t->poolused - n;
}

static int32_t append(mtyp_table *t, const mtyp_entry &e)
{
    if (t->n >= mtyp_max) {
        spout21at(3, "no room to add more types\n");
        return -1;
    }
    t->e[t->n] = e;
    return t->n++;
}

const char *mtyp_name(const mtyp_table *t, int32_t type)
{
    return t->e[type].nameoff < 0 ? "" : t->pool + t->e[type].nameoff;
}

int32_t mtyp_addany(mtyp_table *t, int32_t eltype, int32_t orgtype, bool isfcn, const char *name)
{
    bool named = eltype == MT_STRUCT || eltype == MT_CLASS;
    for (int32_t i = 0; i < t->n && eltype != MT_POINTER; i++) {
        const mtyp_entry &e = t->e[i];
        if (e.eltype == eltype && e.orgtype == orgtype && e.isfcn == int8_t(isfcn) &&
            (!named || !strcmp(mtyp_name(t, i), name ? name : "")))
            return i;
    }
    mtyp_entry e{int8_t(eltype), int8_t(orgtype), int8_t(isfcn), -1, -1};
    if (named && name && (e.nameoff = pool_name(t, name)) < 0)
        return -1;
    return append(t, e);
}

int32_t mtyp_add(mtyp_table *t, int32_t eltype, int32_t orgtype)
{
    int32_t at = mtyp_addany(t, eltype, orgtype, false, nullptr);
    if (at >= 0 && eltype == MT_POINTER) {
        int32_t target = mtyp_addany(t, MT_TRANSMORPHIC, OT_MATRIX, false, nullptr);
        if (target < 0)
            return -1;
        t->e[at].ptrto = target;
    }
    return at;
}

void mtyp_replto(mtyp_table *t, int32_t pointer, int32_t target)
{
    t->e[pointer].ptrto = target;
}

int32_t mtyp_refcn(mtyp_table *t, int32_t type)
{
    mtyp_entry e = t->e[type];
    e.isfcn = 1;
    if (e.eltype == MT_POINTER)
        return append(t, e);
    return mtyp_addany(t, e.eltype, e.orgtype, true, mtyp_name(t, type));
}

bool mtyp_isequal(const mtyp_table *t, int32_t a, int32_t b)
{
    for (int32_t steps = 0; steps <= t->n; steps++) {
        if (a == b)
            return true;
        if (a < 0 || b < 0)
            return false;
        const mtyp_entry &x = t->e[a], &y = t->e[b];
        if (x.eltype != y.eltype || x.orgtype != y.orgtype || x.isfcn != y.isfcn ||
            strcmp(mtyp_name(t, a), mtyp_name(t, b)) != 0)
            return false;
        if (x.eltype != MT_POINTER)
            return true;
        a = x.ptrto;
        b = y.ptrto;
    }
    return true; // both chains run in the same circle
}
