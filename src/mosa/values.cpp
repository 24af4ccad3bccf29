// Making, freeing and assigning values, and the pools that make scalars cheap.
#include "mosa/values.h"
#include "core/mem.h"
#include "mosa/classdef.h"
#include "mosa/views.h"
#include "mosa/vm.h"
#include <algorithm>
#include <utility>

int32_t m_level = -1;
int32_t mosa_xeq_depth;
int32_t m_sysclock = 2;
int64_t m_albytes;
const char *m_tname;
void (*mo_classdestroy)(matobj *);
void (*mo_freeclassdef)(matobj *);
void (*mo_clearlinks)(matobj *);

static matobj *free_recs[mo_maxfree];
static void *free_small[mo_maxsmall];
static int32_t nfree_recs, nfree_small;

const char *mateltypestr(int16_t eltype)
{
    static const char *const words[] = {"real",    "complex", "unknown", "string",
                                        "pointer", "struct",  "class"};
    return eltype <= 0 && eltype >= MO_CLASS ? words[-eltype] : "unknown";
}

// ---- pools

void mo_init()
{
    m_sysclock = 2;
    m_level = -1;
}

static void put_block(void *p, int64_t alloc)
{
    if (alloc == 8 && p && nfree_small < mo_maxsmall)
        free_small[nfree_small++] = p;
    else
        safefree(p);
}

static void *take_block(int64_t bytes)
{
    if (bytes == 8 && nfree_small)
        return free_small[--nfree_small];
    return safemalloc(size_t(bytes));
}

static void put_rec(matobj *m)
{
    m->status = 0;
    m->data = nullptr;
    m->alloc = 0;
    if (nfree_recs < mo_maxfree)
        free_recs[nfree_recs++] = m;
    else
        dmrm(m);
}

void mo_reinit()
{
    if (mosa_xeq_depth)
        return;
    while (nfree_recs)
        dmrm(free_recs[--nfree_recs]);
    while (nfree_small)
        safefree(free_small[--nfree_small]);
}

mo_poolinfo mo_rpt()
{
    return {mo_maxsmall, nfree_small, nfree_recs};
}

// ---- making

int64_t mo_elsize(int16_t eltype)
{
    return eltype == MO_COMPLEX ? 16 : eltype == MO_ODD ? 1 : 8;
}

bool m_canmultiply(int64_t size, int64_t rows, int64_t cols, int64_t *bytes)
{
    return rows >= 0 && cols >= 0 && !__builtin_mul_overflow(size, rows, bytes) &&
           !__builtin_mul_overflow(*bytes, cols, bytes);
}

bool m_checkrandc(double rows, double cols)
{
    if (rows < 2147483648.0 && cols < 2147483648.0)
        return false;
    m_xrc = 3300;
    return true;
}

static void no_room(int16_t eltype, const char *name, int32_t rows, int32_t cols)
{
    m_custom_xeqerrf(3900, "unable to allocate %s %s[%d,%d]", mateltypestr(eltype),
                     name && *name ? name
                     : m_tname     ? m_tname
                                   : "<tmp>",
                     rows, cols);
}

// A record with a block of the size; null without words when there is no memory.
static matobj *mo_alloctmpmat(int32_t level, int64_t bytes)
{
    matobj *m;
    if (nfree_recs)
        m = free_recs[--nfree_recs];
    else if (!(m = static_cast<matobj *>(dmadd("", DM_MOSA, 0, sizeof(matobj)))))
        return nullptr;
    m->data = take_block(bytes);
    if (!m->data) {
        put_rec(m);
        return nullptr;
    }
    m->info = nullptr;
    m->alloc = bytes;
    m->links = level == -1;
    m->level = level;
    m->view = 0;
    m->status = 1;
    return m;
}

static matobj *mo_allocglbmat(const char *name, int64_t bytes)
{
    auto *info = static_cast<matinfo *>(safecalloc(sizeof(matinfo)));
    matobj *m = info ? mo_alloctmpmat(-1, bytes) : nullptr;
    if (!m) {
        safefree(info);
        return nullptr;
    }
    memcpy(info->name, name, strnlen(name, 32));
    m->info = info;
    return m;
}

static void set_shape(matobj *m, int16_t eltype, int8_t view, int32_t rows, int32_t cols)
{
    m->eltype = eltype;
    m->view = view;
    m->rows = rows;
    m->cols = cols;
    if (!view && m->alloc && eltype <= MO_STRING)
        memset(m->data, 0, size_t(m->alloc));
}

matobj *m_mktmat(int16_t eltype, int32_t rows, int32_t cols)
{
    int64_t bytes;
    matobj *m = m_canmultiply(mo_elsize(eltype), rows, cols, &bytes)
                    ? mo_alloctmpmat(m_level, bytes)
                    : nullptr;
    if (!m) {
        no_room(eltype, nullptr, rows, cols);
        return nullptr;
    }
    m->links = 0;
    set_shape(m, eltype, 0, rows, cols);
    return m;
}

matobj *m_mkmat(const char *name, int16_t eltype, int32_t rows, int32_t cols)
{
    if (!*name)
        return m_mktmat(eltype, rows, cols);
    int64_t bytes;
    matobj *m = m_canmultiply(mo_elsize(eltype), rows, cols, &bytes) ? mo_allocglbmat(name, bytes)
                                                                     : nullptr;
    if (!m) {
        no_room(eltype, name, rows, cols);
        return nullptr;
    }
    m->links = m_level <= 0;
    set_shape(m, eltype, 0, rows, cols);
    return m;
}

matobj *m_mkglobalmat(const char *name, int16_t eltype, int32_t rows, int32_t cols)
{
    matobj *m = m_mkmat(name, eltype, rows, cols);
    if (m) {
        m->links = 1;
        m->level = -1;
    }
    return m;
}

matobj *m_mktview(int16_t eltype, int8_t kind, int32_t rows, int32_t cols)
{
    int64_t bytes = v_length(kind, rows, cols);
    matobj *m = mo_alloctmpmat(m_level, bytes ? bytes : 8);
    if (!m) {
        no_room(eltype, nullptr, rows, cols);
        return nullptr;
    }
    m->links = 0;
    set_shape(m, eltype, kind, rows, cols);
    return m;
}

matobj *m_mktsmat()
{
    matobj *m = mo_alloctmpmat(m_level, 8);
    if (!m) {
        no_room(MO_REAL, nullptr, 1, 1);
        return nullptr;
    }
    m->links = 0;
    m->eltype = MO_REAL;
    m->rows = m->cols = 1;
    return m;
}

matobj *m_mktsmatsto(double z)
{
    matobj *m = m_mktsmat();
    if (m)
        *mo_re(m) = z;
    return m;
}

matobj *m_mktodd(int64_t bytes)
{
    matobj *m = mo_alloctmpmat(m_level, bytes ? bytes : 8);
    if (!m) {
        m_custom_xeqerrf(3900, "unable to allocate <tmp> of %lld bytes",
                         static_cast<long long>(bytes));
        return nullptr;
    }
    m->links = 0;
    set_shape(m, MO_ODD, 0, 1, 1);
    return m;
}

matobj *m_mktstr(const char *bytes, int64_t length)
{
    matobj *m = m_mktmat(MO_STRING, 1, 1);
    if (m && selreplace(m, 0, bytes, length)) {
        mo_freemat(m);
        return nullptr;
    }
    return m;
}

matobj *m_dupmat(const matobj *src)
{
    matobj *m = m_mktmat(src->eltype, src->rows, src->cols);
    if (m && matcpy_x_x(m, src)) {
        mo_freemat(m);
        return nullptr;
    }
    return m;
}

int32_t mo_resize(matobj *m, int64_t bytes)
{
    if (m->view == 0 && m->data) {
        if (mo_isptrlike(m->eltype))
            mo_subptrfree(m);
        else
            selfree(m);
    } else if (m->view > 2)
        v_fvfree(m);
    if (m->alloc == bytes && m->data)
        return 0;
    put_block(m->data, m->alloc);
    m->data = nullptr;
    m->alloc = 0;
    m->data = take_block(bytes);
    if (!m->data)
        return 1;
    m->alloc = bytes;
    return 0;
}

// A record that lost its block is left 0 by 0, so that whoever holds it can still read it.
static int32_t lost_block(matobj *m, int16_t eltype)
{
    m->rows = m->cols = 0;
    m->view = 0;
    m->eltype = eltype;
    m_xrc = 3900;
    return 1;
}

int32_t m_remkmat(matobj *m, int16_t eltype, int8_t view, int32_t rows, int32_t cols)
{
    int64_t bytes;
    if (view)
        bytes = v_length(view, rows, cols);
    else if (!m_canmultiply(mo_elsize(eltype), rows, cols, &bytes)) {
        m_xrc = 3900;
        return 1;
    }
    if (mo_resize(m, bytes ? bytes : 8))
        return lost_block(m, eltype);
    set_shape(m, eltype, view, rows, cols);
    return 0;
}

void m_swapmat(matobj *a, matobj *b)
{
    std::swap(a->data, b->data);
    std::swap(a->status, b->status);
    std::swap(a->alloc, b->alloc);
    std::swap(a->rows, b->rows);
    std::swap(a->cols, b->cols);
    std::swap(a->view, b->view);
    std::swap(a->eltype, b->eltype);
}

void fillwithmissing(matobj *m)
{
    int64_t n = mo_count(m) * (m->eltype == MO_COMPLEX ? 2 : 1);
    if (m->eltype == MO_REAL || m->eltype == MO_COMPLEX)
        for (int64_t i = 0; i < n; i++)
            mo_re(m)[i] = misval;
    else if (m->eltype == MO_STRING)
        selfree(m);
    else if (mo_isptrlike(m->eltype))
        mo_subptrfree(m);
}

int32_t remakemiss(matobj *m, int16_t eltype, int32_t rows, int32_t cols)
{
    if (m_remkmat(m, eltype, 0, rows, cols))
        return 1;
    fillwithmissing(m);
    return 0;
}

// ---- copying

// Whether the members of one instance may go into another's, one by one. A class instance keeps
// its definition in row 0.
static bool same_members(const matobj *to, const matobj *from)
{
    return to->links == 1 && to->eltype == from->eltype && to->rows == from->rows &&
           (to->eltype != MO_CLASS || mo_pel(to)[0] == mo_pel(from)[0]);
}

// An instance assigned: what is there takes the members, so that nothing is built or ended for
// it; otherwise a copy takes its place.
static int32_t copy_instance(matobj *dest, int64_t di, matobj *from)
{
    matobj *to = mo_pel(dest)[di];
    if (from == to)
        return 0;
    if (!from || !to || !same_members(to, from)) {
        matobj *copy = from ? m_dupinstance(from) : nullptr;
        if (from && !copy)
            return 1;
        pelreplace(dest, di, copy);
        return 0;
    }
    int32_t rc = 0;
    from->links++; // it may be a part of what is overwritten
    to->links++;
    for (int32_t k = from->eltype == MO_CLASS; k < from->rows && !rc; k++)
        if (mo_pel(to)[k] && mo_pel(from)[k])
            rc = cpymat(mo_pel(to)[k], mo_pel(from)[k], false);
    mo_unlink(to);
    mo_unlink(from);
    return rc;
}

int32_t matcpy_el(matobj *dest, int64_t di, const matobj *src, int64_t si)
{
    switch (src->eltype) {
    case MO_REAL: mo_re(dest)[di] = mo_re(src)[si]; return 0;
    case MO_COMPLEX:
        mo_re(dest)[di] = mo_re(src)[si];
        mo_im(dest)[di] = mo_im(src)[si];
        return 0;
    case MO_STRING:
        return selreplace(dest, di, sel_text(mo_sel(src)[si]), sel_len(mo_sel(src)[si]));
    case MO_POINTER: pelreplace(dest, di, mo_pel(src)[si]); return 0;
    case MO_STRUCT:
    case MO_CLASS: return copy_instance(dest, di, mo_pel(src)[si]);
    default: memcpy(dest->data, src->data, size_t(std::min(dest->alloc, src->alloc))); return 0;
    }
}

static int32_t copy_view(matobj *dest, const matobj *src)
{
    char buffer[256];
    for (int32_t i = 0; i < src->rows; i++) {
        if (fault_poll()) {
            m_xrc = 1;
            return 1;
        }
        if (src->eltype == MO_REAL && !dest->view) {
            v_row(src, i, mo_re(dest) + int64_t(i) * src->cols);
            continue;
        }
        for (int32_t j = 0; j < src->cols; j++) {
            if (src->eltype == MO_STRING) {
                int32_t n = v_sel(src, i, j, buffer);
                if (dest->view)
                    v_sto_sel(buffer, n, dest, i, j);
                else if (selreplace(dest, int64_t(i) * src->cols + j, buffer, n))
                    return 1;
            } else
                v_sto_el(v_el(src, i, j), dest, i, j);
        }
    }
    return 0;
}

static int32_t store_view(matobj *dest, const matobj *src)
{
    for (int64_t k = 0, n = mo_count(src); k < n; k++) {
        int32_t i = int32_t(k / src->cols), j = int32_t(k % src->cols);
        if (src->eltype == MO_STRING)
            v_sto_sel(sel_text(mo_sel(src)[k]), sel_len(mo_sel(src)[k]), dest, i, j);
        else
            v_sto_el(mo_re(src)[k], dest, i, j);
    }
    return 0;
}

int32_t matcpy_x_x(matobj *dest, const matobj *src)
{
    if (src->view)
        return copy_view(dest, src);
    if (dest->view)
        return store_view(dest, src);
    if (src->eltype == MO_REAL || src->eltype == MO_COMPLEX) {
        memcpy(dest->data, src->data, size_t(mo_count(src) * mo_elsize(src->eltype)));
        return 0;
    }
    for (int64_t k = 0, n = src->eltype == MO_ODD ? 1 : mo_count(src); k < n; k++)
        if (matcpy_el(dest, k, src, k))
            return 1;
    return 0;
}

// A view turned into the array it shows.
static int32_t materialise(matobj *m)
{
    matobj *v = m_mktview(m->eltype, m->view, m->rows, m->cols);
    if (!v)
        return 1;
    if (v->alloc != m->alloc) {
        v->view = 1;
        mo_freemat(v);
        m_xrc = 3999;
        return 1;
    }
    std::swap(v->data, m->data);
    m->view = 0; // what it holds now is a block, not a handle
    m->eltype = MO_REAL;
    int32_t rc = m_remkmat(m, v->eltype, 0, v->rows, v->cols);
    if (!rc)
        rc = copy_view(m, v);
    mo_freemat(v);
    return rc;
}

// Instances that something else holds too must be copied, not handed over.
static bool may_steal(const matobj *src)
{
    if (src->eltype != MO_STRUCT && src->eltype != MO_CLASS)
        return true;
    for (int64_t i = 0, n = mo_count(src); i < n; i++)
        if (mo_pel(src)[i] && mo_pel(src)[i]->links != 1)
            return false;
    return true;
}

int32_t cpymat(matobj *dest, matobj *src, bool steal)
{
    if (dest == src)
        return src->view ? materialise(src) : 0;
    if (steal && !src->view && src->links == 1 && may_steal(src)) {
        m_swapmat(dest, src);
        return 0;
    }
    if ((dest->view || dest->rows != src->rows || dest->cols != src->cols ||
         dest->eltype != src->eltype || (src->eltype == MO_ODD && dest->alloc != src->alloc)) &&
        m_remkmat(dest, src->eltype, 0, src->rows, src->cols))
        return 1;
    if (!src->view && (src->eltype == MO_REAL || src->eltype == MO_COMPLEX)) {
        memcpy(dest->data, src->data, size_t(mo_count(src) * mo_elsize(src->eltype)));
        return 0;
    }
    return matcpy_x_x(dest, src);
}

// ---- freeing

static void release_targets(matobj *m)
{
    for (int64_t i = 0, n = mo_count(m); i < n; i++) {
        matobj *target = mo_pel(m)[i];
        mo_pel(m)[i] = nullptr;
        if (target)
            mo_unlink(target);
    }
}

// Blocks and name given back, the record to the pool.
static void free_record(matobj *m)
{
    put_block(m->data, m->alloc);
    safefree(m->info);
    m->info = nullptr;
    put_rec(m);
}

// Targets go depth first, so that destructors run in the order of the nesting. A chain longer
// than this is taken apart link by link instead, which costs no native stack; what waits is
// strung together through the place of the name. Instances do not wait while there is room: a
// destructor that makes another object, and so on, must come to an end by a full stack.
static constexpr int32_t free_nesting = 200;
static int32_t free_depth;
static matobj *free_later;

static bool must_wait(const matobj *m)
{
    return free_depth >= free_nesting && (m->eltype != MO_CLASS || m_nativefull(1 << 20));
}

static void free_targets(matobj *m)
{
    if (must_wait(m)) {
        safefree(m->info);
        m->info = reinterpret_cast<matinfo *>(free_later);
        m->status = 0;
        free_later = m;
        return;
    }
    free_depth++;
    release_targets(m);
    free_record(m);
    while (free_depth == free_nesting && free_later) {
        matobj *next = free_later;
        free_later = reinterpret_cast<matobj *>(next->info);
        next->info = nullptr;
        release_targets(next);
        free_record(next);
    }
    free_depth--;
}

static void free_parts(matobj *m, bool walk)
{
    if (mo_isptrlike(m->eltype) && m->view == 0) {
        m->links = mo_maxlinks; // a cycle back to this record must not free it again
        if (walk && m->data)
            return free_targets(m);
    } else if (m->view == 0)
        selfree(m);
    else if (m->view > 2)
        v_fvfree(m);
    free_record(m);
}

// True when destroy() left a link to the instance, which then goes on living.
static bool kept_by_destroy(matobj *m)
{
    constexpr int32_t base = 1 << 30;
    m->status = 2;
    m->links = base;
    if (mo_classdestroy)
        mo_classdestroy(m);
    m->links -= base;
    return m->links > 0;
}

void mo_freemat(matobj *m)
{
    if (!m->status)
        return;
    if (m->eltype == MO_CLASS && m->status != 2 && m->view == 0 && mo_isinstance(m) &&
        kept_by_destroy(m))
        return;
    free_parts(m, true);
}

void mo_freemat_no_destroy(matobj *m)
{
    if (m->status)
        free_parts(m, true);
}

static void drop_fcn(matobj *f)
{
    safefree(f->info);
    safefree(f->data);
    f->info = nullptr;
    f->data = nullptr;
    dmrm(f);
}

void mo_freefcn_forado(matobj *f)
{
    drop_fcn(f);
}

void mo_freefcn_force(matobj *f)
{
    if (f->view)
        m_albytes -= f->alloc;
    drop_fcn(f);
}

void mo_freefcn(matobj *f)
{
    if (f->cols == MT_CLASSDEF && mo_freeclassdef)
        mo_freeclassdef(f);
    mo_freefcn_force(f);
}

void mo_free(matobj *m)
{
    if (mo_isfcn(m))
        mo_freefcn(m);
    else
        mo_freemat(m);
}

void mo_free_force(matobj *m)
{
    if (mo_isfcn(m))
        mo_freefcn_force(m);
    else if (m->status)
        free_parts(m, false);
}

void mo_subptrfree(matobj *m)
{
    int32_t saved = m->links;
    m->links = mo_maxlinks;
    release_targets(m);
    m->links = saved + (m->links - mo_maxlinks);
    if (m->links < 0)
        m->links = 0;
}

void m_freeunlinkedmats()
{
    if (mosa_xeq_depth >= 2)
        return;
    // As many as there are now may run destructors: those may leave others behind.
    int64_t due = 0;
    for (matobj *m = mo_nextmat(nullptr); m; m = mo_nextmat(m))
        due += m->links < 1;
    for (matobj *m = mo_nextmat(nullptr); m;) {
        if (m->links < 1) {
            due-- > 0 ? mo_freemat(m) : mo_freemat_no_destroy(m);
            m = mo_nextmat(nullptr);
        } else
            m = mo_nextmat(m);
    }
}
