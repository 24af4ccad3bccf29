// Calls, links to functions and globals, the slots a frame begins with, and literals.
#include "core/mem.h"
#include "core/settings.h"
#include "mosa/builtins.h"
#include "mosa/classdef.h"
#include "mosa/vmint.h"
#include "output/oml.h"
#include "output/print.h"

matobj *(*m_autoload)(const char *cls, const char *name);

static const char *inline_text(const int32_t *w)
{
    return reinterpret_cast<const char *>(w + 1);
}

// ---- calls

// Rows and columns from the arguments on the stack; true on failure.
static bool wanted_shape(int32_t argc, int32_t *rows, int32_t *cols)
{
    *rows = *cols = 1;
    if (argc > 2) {
        m_xrc = 3001;
        return true;
    }
    double size[2] = {1, 1};
    for (int32_t i = 0; i < argc; i++) {
        const matobj *m = m_arg(argc - 1 - i);
        if (no_mat(m))
            return true;
        if (m->eltype != MO_REAL)
            m_xrc = 3253;
        else if (!mo_is1by1(m))
            m_xrc = 3204;
        if (m_xrc)
            return true;
        size[argc == 1 ? 1 : i] = m_el(m, 0, 0);
    }
    if (m_checkrandc(size[0], size[1]))
        return true;
    if (size[0] < 0 || size[1] < 0) {
        m_xrc = 3300;
        return true;
    }
    *rows = int32_t(size[0]);
    *cols = int32_t(size[1]);
    return false;
}

// A struct or class definition called: one argument asks for a row of them, two for a matrix.
static void call_definition(matobj *def, int32_t argc)
{
    int32_t rows, cols;
    m_vm.curfcn = def;
    m_vm.pc = nullptr;
    if (!wanted_shape(argc, &rows, &cols)) {
        matobj *made = nullptr;
        if (def->cols == MT_STRUCTDEF)
            made = m_mkstructarray(def, rows, cols);
        else if (!m_rt_prepareclassdef(def))
            made = m_mktclassobj(def, rows, cols);
        if (made) {
            if (argc)
                put_result(argc, made);
            else {
                m_push(made);
                if (m_xrc) // left to the sweep, its destructor would begin all over
                    mo_free(made);
            }
        } else if (!m_xrc)
            m_xrc = 3900;
    }
    if (!m_xrc)
        return;
    if (!m_xrc_first)
        m_xrc_first = m_xrc;
    m_xeqerrstd();
    if (m_xrc > 2)
        m_xrc = 2;
}

void m_callfcn(matobj *fcn, int32_t argc)
{
    if (!mo_isfcn(fcn)) {
        m_xrc = 3101;
        return;
    }
    m_machine saved = m_vm;
    int32_t *ops = m_ops;
    matobj *rt = m_rt;
    fcn->links++;
    if (fcn->cols == MT_STRUCTDEF || fcn->cols == MT_CLASSDEF)
        call_definition(fcn, argc);
    else if (fault_poll())
        m_xrc = 1;
    else {
        m_vm.line = 0;
        m_vm.moreflag = 0;
        m_vm.inclass = fcn->info && fcn->info->subname[0];
        if (m_vm.level < 0)
            m_vm.level = 0; // from outside any statement
        m_xeq(fcn, argc);
        if (m_vm.moreflag && set_more != (m_vm.moresave != 0)) {
            set_more = m_vm.moresave != 0;
            sysinitmore(set_more ? 0 : 1);
        }
        m_xeqerrid = nullptr;
        if (stopflag && !m_xrc)
            m_xrc = 1;
    }
    m_vm = saved;
    m_level = saved.level;
    m_ops = ops;
    m_rt = rt;
    mo_unlink(fcn);
}

void opcall()
{
    int32_t slot = m_vm.pc[1], argc = m_vm.pc[2];
    m_vm.pc += 2;
    m_callfcn(m_vm.frame[slot], argc);
}

void opcallind()
{
    int32_t argc = m_vm.pc[1];
    matobj *f = *m_stak;
    if (!mo_isfcn(f))
        return fail(3101);
    m_vm.pc += 1;
    f->links++; // dropped from the stack, held for the call
    drop_top();
    m_callfcn(f, argc);
    mo_unlink(f);
}

void opbuiltin()
{
    int32_t id = m_vm.pc[1], argc = m_vm.pc[2];
    m_bihandler handler = m_bihandlers[id];
    if (!handler)
        return fail(3996);
    if (argc < m_biargs[id][0] || argc > m_biargs[id][1])
        return fail(3001);
    m_vm.pc += 2;
    handler(argc);
    if (stopflag && !m_xrc)
        m_xrc = 1;
}

void opstop()
{
    pushvoid();
    if (!m_xrc)
        m_xrc = 10000;
}

void opargcrange()
{
    int32_t least = m_vm.pc[1], most = m_vm.pc[2];
    if (m_vm.argc < least || m_vm.argc > most) {
        m_custom_xeqerrf(3001, "expected %d to %d arguments but received %d", least, most,
                         m_vm.argc);
        return;
    }
    m_vm.pc += 2;
}

void opversion()
{
    m_vm.version = *++m_vm.pc;
}

void opelim()
{
    m_vm.pc++;
}

// ---- links

matobj *emo_find(const char *cls, const char *name, const char *subname)
{
    matobj *f = mo_findfcn(cls, name, subname);
    if (!f && m_autoload)
        f = *subname ? m_autoload(name, subname) : m_autoload("", name);
    return f;
}

// Pushes the function whose link is behind pc, from the cache when that still holds. The
// instruction's cursor is left on its last word by the caller.
static bool push_cached(int32_t *cache)
{
    if (cache[0] != m_sysclock)
        return false;
    m_push(static_cast<matobj *>(m_linkget(cache)));
    return true;
}

// Functions of a program's file find each other wherever they are called from.
static const char *program_at_hand()
{
    const matobj *f = m_vm.curfcn;
    return f && f->info && f->info->inclass ? mo_program(f) : sys_pgmclass;
}

void opfindf()
{
    int32_t *cache = m_vm.pc + 1;
    const int32_t *text = m_vm.pc + 4;
    if (!push_cached(cache)) {
        matobj *f = emo_find(program_at_hand(), inline_text(text), "");
        if (!f) {
            m_custom_xeqerrf(3499, "%s() not found", inline_text(text));
            return;
        }
        m_linkput(cache, m_sysclock, f);
        m_push(f);
    }
    m_vm.pc += 4 + text[0];
}

// "class::name" split; false when it is not of that form.
static bool split_member(const char *text, char cls[33], char member[33])
{
    const char *colons = strstr(text, "::");
    if (!colons || colons - text > 32 || strlen(colons + 2) > 32)
        return false;
    memcpy(cls, text, size_t(colons - text));
    cls[colons - text] = 0;
    memcpy(member, colons + 2, strlen(colons + 2) + 1);
    return true;
}

// The definition of a class, prepared, of the compilation that the code was compiled against.
static matobj *linked_class(const char *name, int32_t stamp)
{
    matobj *def = rt_findclassdef(name);
    if (!def || m_rt_prepareclassdef(def))
        return nullptr;
    if (stamp && mo_code(def)[CW_STAMP] != stamp) {
        m_xrc = 3021;
        return nullptr;
    }
    return def;
}

void opfindf2()
{
    int32_t *cache = m_vm.pc + 1;
    const int32_t *text = m_vm.pc + 4;
    if (!push_cached(cache)) {
        char cls[33], member[33];
        if (!split_member(inline_text(text), cls, member))
            return fail(3999);
        matobj *def = linked_class(cls, text[1 + text[0]]);
        matobj *f = def ? findloadfcn(def, member, false) : nullptr;
        if (!f)
            return;
        m_linkput(cache, m_sysclock, f);
        m_push(f);
    }
    m_vm.pc += 5 + text[0];
}

void opfind()
{
    int32_t kind = m_vm.pc[1];
    const int32_t *text = m_vm.pc + 2;
    const char *name = inline_text(text);
    matobj *m = nullptr;
    if (kind != 2)
        m = m_level == 0 ? findlvl0mat(name) : findglobalmat(name);
    if (!m && kind == 1)
        m = m_mkglobalmat(name, MO_REAL, 0, 0);
    else if (!m) {
        m = emo_find(program_at_hand(), name, "");
        if (!m)
            m_custom_xeqerrf(3499, kind == 2 ? "%s() not found" : "%s not found", name);
    }
    if (!m)
        return;
    m_push(m);
    m_vm.pc += 2 + text[0];
}

// Sets what a fresh 1 by 1 of numbers holds.
static void fill_scalar(matobj *m)
{
    if (mo_is1by1(m) && is_num(m))
        fillwithmissing(m);
}

void opextern()
{
    static const int16_t types[] = {MO_POINTER, MO_REAL, MO_COMPLEX, MO_STRING};
    static const int8_t shapes[][2] = {{0, 0}, {0, 0}, {1, 0}, {1, 0}, {0, 1}, {1, 1}};
    int32_t type = m_vm.pc[1] / 256, shape = m_vm.pc[1] % 256;
    const int32_t *text = m_vm.pc + 2;
    const char *name = inline_text(text);
    matobj *m = findglobalmat(name);
    if (!m) {
        int16_t eltype = type >= 1 && type <= 3 ? types[type] : types[0];
        const int8_t *rc = shapes[shape >= 1 && shape <= 5 ? shape : 0];
        m = m_mkglobalmat(name, eltype, rc[0], rc[1]);
        if (!m)
            return;
        fill_scalar(m);
    }
    m_push(m);
    m_vm.pc += 2 + text[0];
}

// ---- slots of a frame

// Element type and shape (m, r, c, s) of an allocating instruction.
static void alloc_kind(int32_t op, int16_t *eltype, int32_t *shape)
{
    static const int16_t types[] = {MO_REAL, MO_COMPLEX, MO_STRING, MO_POINTER};
    int32_t k = op == 37 ? 0 : op <= 111 ? op - 96 : op >= 122 && op <= 137 ? op - 122 : -1;
    if (k >= 0) {
        *eltype = types[k / 4];
        *shape = k % 4;
        return;
    }
    bool cls = op >= 156;
    *eltype = cls ? int16_t(MO_CLASS) : int16_t(MO_STRUCT);
    *shape = op - (op >= 160 ? 160 : op >= 156 ? 156 : op >= 147 ? 147 : 143);
}

static void alloc_slot(int32_t op, const char *name)
{
    static const int8_t shapes[4][2] = {{0, 0}, {1, 0}, {0, 1}, {1, 1}};
    int16_t eltype;
    int32_t shape;
    alloc_kind(op, &eltype, &shape);
    if (m_level == 0)
        if (matobj *old = findlvl0mat(name))
            m_rmobject(old); // declared again at the top: the name starts anew
    matobj *m = m_mkmat(name, eltype, shapes[shape][0], shapes[shape][1]);
    if (!m)
        return;
    m->level = m_level;
    fill_scalar(m);
    m_push(m);
}

void opalc()
{
    const int32_t *text = m_vm.pc + 1;
    alloc_slot(m_vm.pc[0], inline_text(text));
    if (!m_xrc)
        m_vm.pc += 1 + text[0];
}

void opolc()
{
    const int32_t *text = m_vm.pc + 2;
    if (m_vm.argc < m_vm.pc[1])
        alloc_slot(m_vm.pc[0], inline_text(text));
    if (!m_xrc)
        m_vm.pc += 2 + text[0];
}

void opolc_stcs()
{
    m_xrc = 3999;
}

// ---- literals and display

void opldstr()
{
    pushstr(inline_text(m_ops + m_vm.pc[1]));
    m_vm.pc++;
}

void opldimag()
{
    matobj *m = m_mktmat(MO_COMPLEX, 1, 1);
    if (!m)
        return;
    mo_re(m)[0] = 0;
    memcpy(mo_re(m) + 1, m_ops + m_vm.pc[1], sizeof(double));
    m_push(m);
    m_vm.pc++;
}

void opldvoid()
{
    pushvoid();
}

void opldnull()
{
    if (matobj *m = m_mktmat(MO_POINTER, 1, 1))
        m_push(m);
}

void oplist2()
{
    const matobj *m = *m_stak;
    if (mo_isfcn(m)) {
        outlev_keep keep(3);
        spout21f("%s is not a matrix\n", fcn_name(m));
        return;
    }
    if (m->rows == 0 || m->cols == 0 || !out_shown(c_outlev))
        return;
    mo_display(m);
    if (stopflag)
        m_xrc = 1;
}
