// Pointers, members, increments of what an expression yields, and the calls of class members.
#include "mosa/classdef.h"
#include "mosa/vmint.h"
#include <cstdio>

static const char *pool_text(int32_t word)
{
    return reinterpret_cast<const char *>(m_ops + word + 1);
}

// The top gives way to an object that something else already holds.
static void replace_top(matobj *m)
{
    matobj *old = *m_stak;
    m->links++;
    *m_stak = m;
    mo_unlink(old);
}

// ---- pointers

void opderef()
{
    const matobj *p = *m_stak;
    if (no_mat(p))
        return;
    if (p->eltype != MO_POINTER)
        return fail(3257);
    if (!mo_is1by1(p))
        return fail(3204);
    if (!mo_pel(p)[0])
        return fail(3010);
    replace_top(mo_pel(p)[0]);
}

void opref()
{
    matobj *p = m_mktmat(MO_POINTER, 1, 1);
    if (!p)
        return;
    pelreplace(p, 0, *m_stak);
    put_result(1, p);
}

// ---- members

static bool is_objects(const matobj *m)
{
    return m->eltype == MO_STRUCT || m->eltype == MO_CLASS;
}

// The member in a row of an object or an instance; null with m_xrc set.
static matobj *member_of(const matobj *m, int32_t row)
{
    m_xrc = 3261;
    if (mo_isfcn(m) || !is_objects(m) || m->view)
        return nullptr;
    m_xrc = m->eltype == MO_STRUCT ? 3259 : 3260;
    const matobj *instance = m;
    if (!mo_isinstance(m)) {
        if (!mo_is1by1(m) || !mo_pel(m)[0])
            return nullptr;
        instance = mo_pel(m)[0];
    }
    int32_t first = m->eltype == MO_CLASS ? 1 : 0;
    if (mo_isfcn(instance) || !mo_isptrlike(instance->eltype) || row < first ||
        row >= instance->rows || !mo_pel(instance)[row])
        return nullptr;
    m_xrc = 0;
    return mo_pel(instance)[row];
}

void opdrill()
{
    matobj *member = member_of(*m_stak, m_vm.pc[1]);
    if (!member)
        return;
    m_vm.pc++;
    replace_top(member);
}

void opldmatd()
{
    matobj *member = member_of(m_vm.frame[m_vm.pc[1]], m_vm.pc[2]);
    if (!member)
        return;
    m_push(member);
    m_vm.pc += 2;
}

void opldmatdd()
{
    matobj *member = member_of(m_vm.frame[m_vm.pc[1]], m_vm.pc[2]);
    if (member)
        member = member_of(member, m_vm.pc[3]);
    if (!member)
        return;
    m_push(member);
    m_vm.pc += 3;
}

// ---- ++ and -- of what an expression yields

static void step_top(double by, bool post)
{
    matobj *m = *m_stak;
    if (no_mat(m))
        return;
    if (m->view)
        return fail(3103);
    if (m->eltype != MO_REAL)
        return fail(3253);
    if (!mo_is1by1(m))
        return fail(3204);
    matobj *old = post ? rs_new(*mo_re(m)) : nullptr;
    if (post && !old)
        return;
    *mo_re(m) = z_add(*mo_re(m), by);
    if (post)
        put_result(1, old);
}

void oppreinc()
{
    step_top(1, false);
}
void oppredec()
{
    step_top(-1, false);
}
void oppostinc()
{
    step_top(1, true);
}
void oppostdec()
{
    step_top(-1, true);
}

// ---- classes

// The definition of the object an argument is; null with 3260.
static matobj *definition_of(const matobj *m)
{
    m_xrc = 3260;
    if (mo_isfcn(m) || m->eltype != MO_CLASS || m->view)
        return nullptr;
    const matobj *instance = m;
    if (!mo_isinstance(m)) {
        if (!mo_is1by1(m) || !mo_pel(m)[0])
            return nullptr;
        instance = mo_pel(m)[0];
    }
    if (!mo_isinstance(instance))
        return nullptr;
    m_xrc = 0;
    return mo_pel(instance)[0];
}

void opcastp()
{
    const matobj *p = *m_stak;
    if (no_mat(p))
        return;
    if (p->eltype != MO_POINTER)
        return fail(3257);
    if (!mo_is1by1(p))
        return fail(3204);
    if (mo_pel(p)[0])
        definition_of(mo_pel(p)[0]);
}

// The prepared definition of the class in a literal; null with m_xrc set.
static matobj *class_at(int32_t word, int32_t stamp)
{
    matobj *def = rt_findclassdef(pool_text(word));
    if (!def || m_rt_prepareclassdef(def))
        return nullptr;
    if (stamp && mo_code(def)[CW_STAMP] != stamp) {
        m_xrc = 3021;
        return nullptr;
    }
    return def;
}

// The object on top, or what the pointer on top points to, is of the class or of one that
// extends it.
void opcastcls()
{
    const matobj *m = *m_stak;
    if (no_mat(m))
        return;
    if (m->eltype == MO_POINTER && mo_is1by1(m) && mo_pel(m)[0])
        m = mo_pel(m)[0];
    matobj *def = definition_of(m);
    if (!def || !class_at(m_vm.pc[1], m_vm.pc[2]))
        return;
    if (!cls_isa(def, pool_text(m_vm.pc[1])))
        return fail(3260);
    m_vm.pc += 2;
}

void opldstatic()
{
    int32_t *pc = m_vm.pc;
    matobj *value;
    if (pc[1] == m_sysclock)
        value = static_cast<matobj *>(m_linkget(pc + 1));
    else {
        matobj *def = class_at(pc[4], pc[7]);
        if (!def)
            return;
        value = cls_static(def, pool_text(pc[5]));
        if (!value) {
            m_custom_xeqerrf(3499, "member %s::%s not found", pool_text(pc[4]), pool_text(pc[5]));
            return;
        }
        m_linkput(pc + 1, m_sysclock, value);
    }
    replace_top(value);
    m_vm.pc += 7;
}

matobj *findloadfcn(matobj *definition, const char *member, bool isvirtual)
{
    for (matobj *def = definition; def; def = cls_parent(def))
        if (cls_declares(def, member)) {
            matobj *f = emo_find(mo_program(def), def->info->name, member);
            if (f)
                return f;
            break;
        }
    m_custom_xeqerrf(3499, isvirtual ? "virtual %s::%s() not found" : "member %s::%s() not found",
                     definition->info->name, member);
    return nullptr;
}

static void call_member(matobj *definition, matobj *f, int32_t argc)
{
    matobj *rt = m_rt;
    m_rt = definition;
    m_callfcn(f, argc);
    m_rt = rt;
}

void opcallmfcn()
{
    int32_t *pc = m_vm.pc, argc = pc[6];
    matobj *f, *def = nullptr;
    if (pc[8] && argc < 1)
        return fail(3999);
    if (pc[1] == m_sysclock)
        f = static_cast<matobj *>(m_linkget(pc + 1));
    else {
        matobj *named = class_at(pc[4], pc[7]);
        f = named ? findloadfcn(named, pool_text(pc[5]), false) : nullptr;
        if (!f)
            return;
        m_linkput(pc + 1, m_sysclock, f);
    }
    if (pc[8]) {
        def = definition_of(m_arg(argc - 1));
        if (!def)
            return;
        if (!cls_isa(def, pool_text(pc[4])))
            return fail(3260);
    }
    m_vm.pc += 8;
    call_member(def, f, argc);
}

// Calls what the class of 'this' has under the name.
static void call_virtual(const char *member, int32_t argc, int32_t words)
{
    if (argc < 1)
        return fail(3999);
    matobj *def = definition_of(m_arg(argc - 1));
    if (!def || m_rt_prepareclassdef(def))
        return;
    matobj *f = cls_virtual(def, member);
    if (!f && !(f = findloadfcn(def, member, true)))
        return;
    m_vm.pc += words;
    call_member(def, f, argc);
}

void opcallvfcn()
{
    int32_t *pc = m_vm.pc;
    if (pc[4] && pc[3] >= 1) {
        matobj *named = class_at(pc[1], pc[4]);
        if (!named)
            return;
    }
    call_virtual(pool_text(pc[2]), pc[3], 4);
}

void opcallvfcn_ptr()
{
    const int32_t *text = m_vm.pc + 1;
    call_virtual(reinterpret_cast<const char *>(text + 1), text[1 + text[0]], 2 + text[0]);
}
