// data/umat.cpp - the store of matrices: finding, making, copying, renaming, names of rows
// and columns.
#include "data/umat.h"
#include "core/missing.h"
#include "core/settings.h"
#include "core/state.h"
#include "interp/dm.h"
#include "interp/messages.h"
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

// dm types of numbers, rows and columns. The hold's depend on the level.
struct mktypes {
    int32_t m, row, col;
};
static mktypes types_of(matkind kind)
{
    switch (kind) {
    case MK_E: return {DM_EMATRIX, DM_EMATROWS, DM_EMATCOLS};
    case MK_R: return {DM_RMATRIX, DM_RMATROWS, DM_RMATCOLS};
    case MK_RETURN:
        return {typelmac + DM_TO_RETMATRIX, typelmac + DM_TO_RETROWS, typelmac + DM_TO_RETCOLS};
    default: return {DM_MATRIX, DM_MATROWS, DM_MATCOLS};
    }
}

int32_t mk_type(matkind kind) { return types_of(kind).m; }

static void remove_all(const char *name, const mktypes &t)
{
    for (int32_t type : {t.m, t.row, t.col})
        while (void *p = dmfind0(name, type))
            dmrm(p);
}

bool umat_get(const char *name, matkind kind, matref *out)
{
    mktypes t = types_of(kind);
    uint64_t len, rlen, clen;
    out->m = static_cast<umat *>(dmfind(name, t.m, &len));
    if (!out->m)
        return false;
    out->row = static_cast<umatname *>(dmfind(name, t.row, &rlen));
    out->col = static_cast<umatname *>(dmfind(name, t.col, &clen));
    return out->row && out->col && rlen >= sizeof(umatname) * uint64_t(out->m->rows)
           && clen >= sizeof(umatname) * uint64_t(out->m->cols);
}

bool ismatrixname(const char *name)
{
    matref m;
    return umat_get(name, MK_MAT, &m);
}

void umat_defstripe(umatname *stripe, int32_t n, char letter)
{
    for (int32_t i = 0; i < n; i++) {
        strcpy(stripe[i].eq, "_");
        snprintf(stripe[i].name, sizeof stripe[i].name, "%c%d", letter, i + 1);
        stripe[i].info = 0;
    }
}

int32_t umat_new(const char *name, matkind kind, int32_t rows, int32_t cols, matref *out)
{
    if (rows < 1 || cols < 1)
        return error(503);
    if (rows > set_matsize || cols > set_matsize)
        return error(908);
    mktypes t = types_of(kind);
    uint64_t n = sizeof(umat) + sizeof(double) * (uint64_t(rows) * uint64_t(cols) - 1);
    // The new parts stand before the old ones go, so that a failure changes nothing.
    matref m{};
    m.m = static_cast<umat *>(dmadd(name, t.m, 0, n));
    if (m.m)
        m.row = static_cast<umatname *>(dmadd(name, t.row, 0, sizeof(umatname) * uint64_t(rows)));
    if (m.row)
        m.col = static_cast<umatname *>(dmadd(name, t.col, 0, sizeof(umatname) * uint64_t(cols)));
    if (!m.col) {
        dmrm(m.m);
        dmrm(m.row);
        return 950;
    }
    void *mine[] = {m.m, m.row, m.col};
    int32_t type[] = {t.m, t.row, t.col};
    for (int32_t i = 0; i < 3; i++)
        while (void *old = dmnamenext(mine[i], type[i]))
            dmrm(old);
    m.m->rows = rows;
    m.m->cols = cols;
    umat_defstripe(m.row, rows, 'r');
    umat_defstripe(m.col, cols, 'c');
    *out = m;
    return 0;
}

bool umat_rm(const char *name, matkind kind)
{
    mktypes t = types_of(kind);
    bool found = dmfind0(name, t.m) != nullptr;
    remove_all(name, t);
    return found;
}

int32_t umat_rename(const char *from, const char *to, matkind tokind)
{
    mktypes f = types_of(MK_MAT), t = types_of(tokind);
    void *part[] = {dmfind0(from, f.m), dmfind0(from, f.row), dmfind0(from, f.col)};
    if (!part[0] || !part[1] || !part[2])
        return matnotfound(from);
    if (tokind == MK_MAT && !strcmp(from, to))
        return 0;
    remove_all(to, t);
    int32_t type[] = {t.m, t.row, t.col};
    for (int32_t i = 0; i < 3; i++) {
        dmrename(part[i], to);
        if (tokind != MK_MAT)
            dmretype(part[i], type[i]);
    }
    return 0;
}

int32_t umat_copy(const char *from, matkind fromkind, const char *to, matkind tokind)
{
    if (fromkind == tokind && !strcmp(from, to))
        return 0;
    mktypes t = types_of(tokind);
    matref src;
    if (!umat_get(from, fromkind, &src))
        return matnotfound(from);
    remove_all(to, t);
    int32_t rc = dmcp(src.m, to, t.m);
    if (!rc)
        rc = dmcp(src.row, to, t.row);
    if (!rc)
        rc = dmcp(src.col, to, t.col);
    if (rc)
        remove_all(to, t);
    return rc;
}

// The entry that names the same term, marks and order aside.
static int32_t findterm(const umatname *stripe, int32_t n, const char *text, const char *colon)
{
    termname want, have;
    if (!term_read(colon ? colon + 1 : text, &want))
        return 0;
    size_t neq = colon ? size_t(colon - text) : 0;
    for (int32_t i = 0; i < n; i++) {
        if (colon && (strncmp(stripe[i].eq, text, neq) || (neq < 33 && stripe[i].eq[neq])))
            continue;
        if (strchr(stripe[i].name, '.') && term_read(stripe[i].name, &have) &&
            term_same(want, have))
            return i + 1;
    }
    return 0;
}

int32_t umat_findname(const umatname *stripe, int32_t n, const char *text, bool last)
{
    const char *colon = strchr(text, ':');
    size_t neq = colon ? size_t(colon - text) : 0;
    const char *name = colon ? colon + 1 : text;
    int32_t hit = 0;
    for (int32_t i = 0; i < n; i++) {
        if (colon && (strncmp(stripe[i].eq, text, neq) || (neq < 33 && stripe[i].eq[neq])))
            continue;
        if (*name && strcmp(stripe[i].name, name))
            continue;
        if (!colon && !*name)
            continue;
        hit = i + 1;
        if (!last)
            return hit;
    }
    return hit || !*name ? hit : findterm(stripe, n, text, colon);
}

bool umat_eqspan(const umatname *stripe, int32_t n, const char *text, int32_t *first,
                 int32_t *last)
{
    int32_t want = *text == '#' ? atoi(text + 1) : *text ? 0 : 1, met = 0, i = 0;
    for (; i < n; i++) {
        met += i == 0 || strcmp(stripe[i].eq, stripe[i - 1].eq) != 0;
        if (want ? met == want : !strcmp(stripe[i].eq, text))
            break;
    }
    *first = *last = i;
    while (*last + 1 < n && !strcmp(stripe[*last + 1].eq, stripe[i].eq))
        ++*last;
    return i < n;
}
