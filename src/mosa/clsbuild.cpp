// Structs and classes at run time: definitions prepared, instances built, copied and ended.
#include "core/mem.h"
#include "mosa/classdef.h"
#include "mosa/vmint.h"

namespace
{

// What preparing a class made; its address stands in the definition.
struct cls_rt {
    matobj *parent; // prepared, or null
    cls_rt *prev, *next;
    int32_t nrows; // of an instance
};
cls_rt *prepared; // all of them

cls_rt *runtime(const matobj *def)
{
    cls_rt *rt;
    memcpy(&rt, mo_code(def) + CW_RUNTIME, sizeof rt);
    return dm_rec(def)->a == 1 ? rt : nullptr;
}

matobj *live_value(const int32_t *rec)
{
    matobj *m;
    memcpy(&m, rec + 5, sizeof m);
    return m;
}

void set_live(int32_t *rec, matobj *m)
{
    memcpy(rec + 5, &m, sizeof m);
}

} // namespace

void m_ac_zapclassdef(int32_t *code)
{
    memset(code + CW_RUNTIME, 0, 8);
    for (int32_t k = 0; k < code[CW_NSTATICS]; k++)
        set_live(code + code[CW_STATICS] + 7 * k, nullptr);
    for (int32_t k = 0; k < code[CW_NFCNS]; k++) {
        int32_t *rec = code + code[CW_FCNS] + 9 * k;
        memset(rec + (rec[0] == CR_VIRT ? 6 : 7), 0, rec[0] == CR_VIRT ? 12 : 8);
    }
}

namespace
{

// An image is looked at once; addresses that came with it are forgotten.
bool believed(matobj *def)
{
    dmrec *r = dm_rec(def);
    if (r->a == 1)
        return true;
    int32_t *code = mo_code(def);
    bool cls = def->cols == MT_CLASSDEF;
    if (int64_t(def->rows) * 4 > def->alloc ||
        (cls ? cls_check(code, def->rows) : sd_check(code, def->rows))) {
        m_xrc = 3999;
        return false;
    }
    if (cls)
        m_ac_zapclassdef(code);
    r->a = 1;
    return true;
}

// A member of the declared type, links 0; the names of types are texts of the same image.
matobj *make_member(const int32_t *code, const int32_t *type, int32_t depth)
{
    int32_t eltype = type[1], orgtype = type[2], rows, cols;
    const char *name = cls_text(code, type[4]);
    if (orgtype == OT_SCALAR && eltype == MT_STRUCT)
        return m_mkstructfromname(name, depth + 1);
    if (orgtype == OT_SCALAR && eltype == MT_CLASS)
        return m_mktclassobjfromname(name, depth + 1);
    mt_shape(orgtype, &rows, &cols);
    matobj *m = m_mktmat(mt_storage(eltype), rows, cols);
    if (m && orgtype == OT_SCALAR && is_num(m))
        fillwithmissing(m);
    return m;
}

bool too_deep(int32_t depth, int32_t code)
{
    if (depth <= mo_structdepth)
        return false;
    m_xrc = code;
    return true;
}

matobj *find_definition(const char *name, int32_t kind, const char *notfound, const char *notkind)
{
    matobj *def = emo_find(sys_pgmclass, name, "");
    if (def && def->cols == kind)
        return def;
    m_custom_xeqerrf(3499, def ? notkind : notfound, name);
    return nullptr;
}

} // namespace

// ---- structs

matobj *rt_findstruct(const char *name)
{
    return find_definition(name, MT_STRUCTDEF, "struct %s not found", "%s() not struct definition");
}

matobj *m_mkstruct(const matobj *definition, int32_t depth)
{
    if (too_deep(depth, 3304) || !believed(const_cast<matobj *>(definition)))
        return nullptr;
    const int32_t *code = mo_code(definition);
    matobj *instance = m_mktmat(MO_POINTER, code[SD_N], 1);
    if (!instance)
        return nullptr;
    for (int32_t k = 0; k < code[SD_N]; k++) {
        matobj *member = make_member(code, code + code[SD_FIRST + 3 * k + 1], depth);
        if (!member) {
            mo_free(instance);
            return nullptr;
        }
        pelreplace(instance, k, member);
    }
    return instance;
}

matobj *m_mkstructfromname(const char *name, int32_t depth)
{
    if (too_deep(depth, 3304))
        return nullptr;
    matobj *def = rt_findstruct(name);
    matobj *instance = def ? m_mkstruct(def, depth) : nullptr;
    matobj *m = instance ? m_mktmat(MO_STRUCT, 1, 1) : nullptr;
    if (m)
        pelreplace(m, 0, instance);
    else if (instance)
        mo_free(instance);
    return m;
}

matobj *m_mkstructarray(const matobj *definition, int32_t rows, int32_t cols)
{
    matobj *m = m_mktmat(MO_STRUCT, rows, cols);
    for (int64_t k = 0, n = m ? mo_count(m) : 0; k < n; k++) {
        matobj *instance = row_break() ? nullptr : m_mkstruct(definition, 0);
        if (!instance) {
            mo_free(m);
            return nullptr;
        }
        pelreplace(m, k, instance);
    }
    return m;
}

// ---- definitions of classes

matobj *rt_findclassdef(const char *name)
{
    return find_definition(name, MT_CLASSDEF, "class %s not found", "%s() not class definition");
}

static int32_t prepare(matobj *def, int32_t depth);

// The parent's definition, prepared, when the class names one. False with m_xrc set.
static bool find_parent(const int32_t *code, int32_t depth, matobj **parent)
{
    *parent = nullptr;
    if (code[CW_PARENT] < 0)
        return true;
    matobj *p = rt_findclassdef(cls_text(code, code[CW_PARENT]));
    if (!p || prepare(p, depth + 1))
        return false;
    const int32_t *pcode = mo_code(p);
    if (pcode[CW_STAMP] != code[CW_PARENTSTAMP] || runtime(p)->nrows != code[CW_FIRSTSLOT]) {
        m_xrc = 3020;
        return false;
    }
    *parent = p;
    return true;
}

static int32_t prepare(matobj *def, int32_t depth)
{
    if (!believed(def) || too_deep(depth, 3305))
        return 1;
    if (runtime(def))
        return 0;
    int32_t *code = mo_code(def);
    matobj *parent;
    if (!find_parent(code, depth, &parent))
        return 1;
    auto *rt = static_cast<cls_rt *>(safecalloc(sizeof(cls_rt)));
    if (!rt) {
        m_xrc = 3900;
        return 1;
    }
    rt->nrows = code[CW_FIRSTSLOT] + code[CW_NVARS];
    if ((rt->parent = parent))
        parent->links++;
    if ((rt->next = prepared))
        prepared->prev = rt;
    prepared = rt;
    memcpy(code + CW_RUNTIME, &rt, sizeof rt);
    for (int32_t k = 0; k < code[CW_NSTATICS]; k++) {
        int32_t *rec = code + code[CW_STATICS] + 7 * k;
        matobj *value = make_member(code, code + rec[1], depth);
        if (!value) {
            m_rt_freeclassdef(def);
            return 1;
        }
        value->links++;
        value->level = -1;
        set_live(rec, value);
    }
    return 0;
}

int32_t m_rt_prepareclassdef(matobj *definition)
{
    return prepare(definition, 0);
}

void m_rt_freeclassdef(matobj *definition)
{
    if (dm_rec(definition)->a != 1)
        return;
    cls_rt *rt = runtime(definition);
    if (!rt)
        return;
    int32_t *code = mo_code(definition);
    memset(code + CW_RUNTIME, 0, 8);
    for (int32_t k = 0; k < code[CW_NSTATICS]; k++) {
        int32_t *rec = code + code[CW_STATICS] + 7 * k;
        matobj *value = live_value(rec);
        set_live(rec, nullptr);
        if (value)
            mo_unlink(value);
    }
    matobj *parent = rt->parent;
    (rt->prev ? rt->prev->next : prepared) = rt->next;
    if (rt->next)
        rt->next->prev = rt->prev;
    safefree(rt);
    if (parent)
        mo_unlink(parent);
}

matobj *cls_parent(const matobj *definition)
{
    const cls_rt *rt = runtime(definition);
    return rt ? rt->parent : nullptr;
}

bool cls_isa(const matobj *definition, const char *cls)
{
    for (; definition; definition = cls_parent(definition))
        if (!strcmp(cls_text(mo_code(definition), mo_code(definition)[CW_NAME]), cls))
            return true; // by the image: a dropped definition has lost its name
    return false;
}

// The record of a member in one class, or null.
static int32_t *find_record(const matobj *def, int32_t first, int32_t count, int32_t length,
                            const char *member)
{
    int32_t *code = mo_code(def);
    for (int32_t k = 0; k < count; k++) {
        int32_t *rec = code + first + length * k;
        if (!strcmp(cls_text(code, rec[2]), member))
            return rec;
    }
    return nullptr;
}

static int32_t *find_fcn(const matobj *def, const char *member)
{
    const int32_t *code = mo_code(def);
    return find_record(def, code[CW_FCNS], code[CW_NFCNS], 9, member);
}

bool cls_declares(const matobj *definition, const char *member)
{
    return find_fcn(definition, member) != nullptr;
}

matobj *cls_static(const matobj *definition, const char *member)
{
    for (; definition; definition = cls_parent(definition)) {
        const int32_t *code = mo_code(definition);
        if (const int32_t *rec =
                find_record(definition, code[CW_STATICS], code[CW_NSTATICS], 7, member))
            return live_value(rec);
    }
    return nullptr;
}

matobj *cls_virtual(const matobj *definition, const char *member)
{
    for (const matobj *d = definition; d; d = cls_parent(d)) {
        int32_t *rec = find_fcn(d, member);
        if (!rec)
            continue;
        if (rec[0] == CR_VIRT && rec[6] == m_sysclock)
            return static_cast<matobj *>(m_linkget(rec + 6));
        matobj *f = emo_find(mo_program(d), mo_name(d), member);
        if (f && rec[0] == CR_VIRT)
            m_linkput(rec + 6, m_sysclock, f);
        return f;
    }
    return nullptr;
}

// ---- instances of classes

// Runs new() or destroy() of one class for an instance. False with m_xrc set.
static bool run_special(matobj *def, const char *member, matobj *instance)
{
    if (mosastakinit(1)) {
        m_xrc = 9801;
        return false;
    }
    matobj *f = findloadfcn(def, member, false);
    matobj *self = f ? m_mktmat(MO_CLASS, 1, 1) : nullptr;
    if (!self)
        return false;
    matobj **top = m_stak;
    matobj *rt = m_rt;
    pelreplace(self, 0, instance);
    m_push(self);
    if (m_xrc) {
        mo_free(self);
        return false;
    }
    m_rt = def;
    m_callfcn(f, 1);
    m_rt = rt;
    while (m_stak > top)
        drop_top();
    return m_xrc == 0;
}

static bool fill_members(matobj *instance, const matobj *def, int32_t depth)
{
    const matobj *parent = cls_parent(def);
    if (parent && !fill_members(instance, parent, depth))
        return false;
    const int32_t *code = mo_code(def);
    for (int32_t k = 0; k < code[CW_NVARS]; k++) {
        const int32_t *rec = code + code[CW_VARS] + 5 * k;
        matobj *member = make_member(code, code + rec[1], depth);
        if (!member)
            return false;
        pelreplace(instance, code[CW_FIRSTSLOT] + k, member);
    }
    return true;
}

// new() of the eldest first.
static bool construct(matobj *instance, matobj *def)
{
    matobj *parent = cls_parent(def);
    if (parent && !construct(instance, parent))
        return false;
    return mo_code(def)[CW_NEW] < 0 || run_special(def, "new", instance);
}

static matobj *make_instance(matobj *def, int32_t depth)
{
    if (too_deep(depth, 3305) || m_rt_prepareclassdef(def))
        return nullptr;
    matobj *instance = m_mktmat(MO_CLASS, runtime(def)->nrows, 1);
    if (!instance)
        return nullptr;
    instance->links = 1;
    pelreplace(instance, 0, def);
    if (fill_members(instance, def, depth) && construct(instance, def)) {
        instance->links--;
        return instance;
    }
    instance->status = 2; // never whole: no destroy()
    mo_unlink(instance);
    return nullptr;
}

static matobj *make_objects(matobj *def, int32_t rows, int32_t cols, int32_t depth)
{
    matobj *m = m_mktmat(MO_CLASS, rows, cols);
    if (!m)
        return nullptr;
    m->links = 1;
    for (int64_t k = 0, n = mo_count(m); k < n; k++) {
        matobj *instance = row_break() ? nullptr : make_instance(def, depth);
        if (!instance) {
            mo_unlink(m);
            return nullptr;
        }
        pelreplace(m, k, instance);
    }
    m->links = 0;
    return m;
}

matobj *m_mktclassobj(matobj *definition, int32_t rows, int32_t cols)
{
    return make_objects(definition, rows, cols, 0);
}

matobj *m_mktclassobjfromname(const char *name, int32_t depth)
{
    if (too_deep(depth, 3305))
        return nullptr;
    matobj *def = rt_findclassdef(name);
    return def ? make_objects(def, 1, 1, depth) : nullptr;
}

// destroy() of the youngest first, whatever state the machine is in: a failure or break that
// is being unwound waits meanwhile.
void rt_clsdestroy(matobj *instance)
{
    matobj *def = mo_pel(instance)[0];
    const cls_rt *made = runtime(def);
    if (!made || made->nrows != instance->rows)
        return;
    int32_t xrc = m_xrc, cond = m_condflag, stop = stopflag;
    const char *id = m_xeqerrid;
    def->links++;
    for (matobj *d = def; d; d = cls_parent(d)) {
        if (mo_code(d)[CW_DESTROY] < 0 || !d->info->name[0]) // dropped, its functions with it
            continue;
        m_xrc = 0;
        if (stop)
            stopflag = 0;
        if (!run_special(d, "destroy", instance) && !xrc)
            xrc = m_xrc;
    }
    m_xrc = xrc;
    m_condflag = cond;
    m_xeqerrid = id;
    if (stop)
        stopflag = stop;
    mo_unlink(def);
}

// ---- copies

matobj *m_dupinstance(const matobj *instance)
{
    if (m_nativefull()) {
        m_xrc = instance->eltype == MO_CLASS ? 3305 : 3304;
        return nullptr;
    }
    matobj *copy = m_mktmat(instance->eltype, instance->rows, instance->cols);
    if (!copy)
        return nullptr;
    bool cls = instance->eltype == MO_CLASS;
    copy->links = 1;
    for (int64_t k = 0, n = mo_count(instance); k < n; k++) {
        matobj *member = mo_pel(instance)[k];
        matobj *m = !member || (cls && k == 0) ? member : m_dupmat(member);
        if (member && !m) {
            copy->status = 2;
            mo_unlink(copy);
            return nullptr;
        }
        pelreplace(copy, k, m);
    }
    if (cls)
        copy->status = 2; // no new() ran for it, so no destroy() will
    copy->links = 0;
    return copy;
}

// ---- what the values below are told

static void clear_links(matobj *f)
{
    if (f->cols == MT_STRUCTDEF)
        return;
    int32_t *code = mo_code(f);
    if (f->cols != MT_CLASSDEF)
        return m_cleanpgm(code, f->rows);
    if (dm_rec(f)->a != 1)
        return;
    for (int32_t k = 0; k < code[CW_NFCNS]; k++) {
        int32_t *rec = code + code[CW_FCNS] + 9 * k;
        if (rec[0] == CR_VIRT)
            rec[6] = 0;
    }
}

static const bool hooked = [] {
    mo_classdestroy = rt_clsdestroy;
    mo_freeclassdef = m_rt_freeclassdef;
    mo_clearlinks = clear_links;
    return true;
}();
