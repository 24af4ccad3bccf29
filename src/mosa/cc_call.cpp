// Calls of every kind, members of structs and classes, casts and addresses.
#include "mosa/builtins.h"
#include "mosa/cc_int.h"
#include "mosa/classdef.h"
#include <cstdio>
#include <cstring>

static cc_tk *tk(int32_t i)
{
    return &m_cc->list.t[i];
}

static int32_t any_type()
{
    return ty(MT_TRANSMORPHIC, OT_MATRIX);
}

static const char *type_name(int32_t type)
{
    return mtyp_name(&m_cc->types, type);
}

// ---- members of classes

static void emit_this()
{
    mop_add(7, 0);
    m_pgm.thisused = true;
}

static void emit_static(const ce_member &m, const char *name)
{
    mop_add(163);
    mop_add(0, 0, 0);
    mop_add_slit(ce_name(m.def));
    mop_add_slit(name);
    mop_add(m.row);
    mop_add(ce_stamp(m.def));
}

// The instance is on top; the member takes its place.
static void drill_class(const ce_member &m, const char *name)
{
    ce_access(&m, name);
    if (m.kind == CR_STATIC)
        emit_static(m, name);
    else
        mop_add(140, m.row);
    ts_push(m.type);
}

bool cx_classvar(const char *name, bool)
{
    ce_member m;
    if (!m_pgm.classdef || !ce_classvarlookup(m_pgm.classdef, name, &m))
        return false;
    if (m.kind == CR_STATIC)
        mop_add(42);
    else if (m_pgm.isnonstatic)
        emit_this();
    else
        cc_err("%s: static function may not use nonstatic variables\n", name);
    drill_class(m, name);
    return true;
}

static bool is_special(const char *name)
{
    return !strcmp(name, "new") || !strcmp(name, "destroy");
}

// The arguments lie on the stack, with the instance beneath them unless the function is static.
static void emit_member_call(const ce_member &m, const char *name, int32_t n, bool virtually)
{
    bool isstatic = m.flags & CF_STATIC;
    if (virtually && m.kind == CR_VIRT) {
        mop_add(165);
        mop_add_slit(ce_name(m.def));
        mop_add_slit(name);
        mop_add(n + 1, ce_stamp(m.def));
    } else {
        mop_add(164);
        mop_add(0, 0, 0);
        mop_add_slit(ce_name(m.def));
        mop_add_slit(name);
        mop_add(n + !isstatic, ce_stamp(m.def), !isstatic);
    }
    ts_push(m.type);
}

static void push_args(int32_t open, int32_t close, int32_t *n)
{
    int32_t base = m_cc->ntype;
    cx_args(open + 1, close, n);
    m_cc->ntype = base;
}

static void need_public_name(const char *name)
{
    if (is_special(name))
        cc_err("new() and destroy() may not be called by user\n");
}

static ce_member find_member_fcn(const char *cls, const char *name)
{
    ce_member m;
    if (!ce_classfcnlookup(ce_classlookup(cls), name, &m))
        cc_err("%s() not declared in class %s\n", name, cls);
    ce_access(&m, name);
    return m;
}

// super.f(...): the parent's, whatever the instance overrides.
static void call_super(const char *name, int32_t open, int32_t close)
{
    if (!m_pgm.classdef)
        cc_err("super invalid outside of a class\n");
    matobj *parent = ce_parent(m_pgm.classdef);
    if (!parent)
        cc_err("class %s has no parent\n", ce_name(m_pgm.classdef));
    ce_member m = find_member_fcn(ce_name(parent), name);
    bool isstatic = m.flags & CF_STATIC;
    if (!isstatic && !m_pgm.isnonstatic)
        cc_err("%s(): static function may not call nonstatic functions\n", name);
    if (!isstatic)
        emit_this();
    int32_t n;
    push_args(open, close, &n);
    emit_member_call(m, name, n, false);
}

// a.f(...) and p->f(...)
static void call_member(int32_t a, int32_t open, int32_t close)
{
    const char *name = tk(open - 1)->text;
    bool arrow = tk(open - 2)->tok == T_ARROW;
    need_public_name(name);
    if (tk(a)->tok == K_SUPER && open - 2 == a + 1) {
        call_super(name, open, close);
        return;
    }
    int32_t pc = m_pgm.pc, nfix = m_cc->nfix, n;
    cx(a, open - 2, false);
    int32_t base = ts_pop();
    if (arrow) {
        const mtyp_entry e = ty_of(base);
        if (e.eltype != MT_POINTER && e.eltype != MT_TRANSMORPHIC)
            cc_err("pointer or struct expected\n");
        mop_add(112);
        base = e.eltype == MT_POINTER ? e.ptrto : any_type();
        if (ty_of(base).eltype == MT_TRANSMORPHIC) {
            push_args(open, close, &n);
            mop_add(168);
            mop_add_str(name);
            mop_add(n + 1);
            ts_push(any_type());
            return;
        }
    }
    if (ty_of(base).eltype == MT_STRUCT)
        cc_err(".<name>() invalid\n");
    if (ty_of(base).eltype != MT_CLASS)
        cc_err("pointer or struct expected\n");
    char cls[33];
    snprintf(cls, sizeof cls, "%s", type_name(base));
    ce_member m = find_member_fcn(cls, name);
    if (m.flags & CF_STATIC) { // the instance told the class, and is not needed further
        m_pgm.pc = pc;
        m_cc->nfix = nfix;
    }
    push_args(open, close, &n);
    emit_member_call(m, name, n, true);
}

// The value of super.x is the member the parent knows by that name.
static bool super_variable(int32_t a, int32_t b)
{
    if (tk(a)->tok != K_SUPER || b - a != 3)
        return false;
    const char *name = tk(b - 1)->text;
    matobj *parent = m_pgm.classdef ? ce_parent(m_pgm.classdef) : nullptr;
    ce_member m;
    if (!parent)
        cc_err("super invalid outside of a class\n");
    if (!ce_classvarlookup(parent, name, &m))
        cc_err("%s not found -- class %s contains no such member\n", name, ce_name(parent));
    if (m.kind == CR_STATIC)
        mop_add(42);
    else if (m_pgm.isnonstatic)
        emit_this();
    else
        cc_err("%s: static function may not use nonstatic variables\n", name);
    drill_class(m, name);
    return true;
}

void cx_member(int32_t a, int32_t b)
{
    bool arrow = tk(b - 2)->tok == T_ARROW;
    if (tk(b - 1)->tok != T_NAME)
        cc_err(".<exp> invalid\n");
    const char *name = tk(b - 1)->text;
    if (super_variable(a, b))
        return;
    cx(a, b - 2, false);
    int32_t base = ts_pop();
    if (arrow) {
        const mtyp_entry e = ty_of(base);
        ts_push(base);
        cc_needs(MT_POINTER, "-> (pointing to)");
        ts_pop();
        mop_add(112);
        base = e.eltype == MT_POINTER ? e.ptrto : any_type();
    }
    char cls[33];
    snprintf(cls, sizeof cls, "%s", type_name(base));
    if (ty_of(base).eltype == MT_STRUCT) {
        int32_t row, type;
        if (!ce_structlookup(ce_finddef(cls, false), name, &row, &type))
            cc_err("%s not found -- struct %s contains no such member\n", name, cls);
        mop_add(140, row);
        ts_push(type);
        return;
    }
    if (ty_of(base).eltype != MT_CLASS)
        cc_err("pointer or struct expected\n");
    ce_member m;
    if (!ce_classvarlookup(ce_classlookup(cls), name, &m))
        cc_err("%s not found -- class %s contains no such member\n", name, cls);
    drill_class(m, name);
}

// ---- calls by name

// Type of what calling a definition in memory makes.
void cx_type_of_def(const char *name, int32_t nargs)
{
    const matobj *f = mo_findfcn("", name, "");
    int32_t org = nargs ? OT_MATRIX : OT_SCALAR;
    if (f && f->cols == MT_STRUCTDEF)
        ts_push(ty_named(MT_STRUCT, org, name));
    else if (f && f->cols == MT_CLASSDEF)
        ts_push(ty_named(MT_CLASS, org, name));
    else
        ts_push(any_type());
}

static bool call_own_member(const char *name, int32_t open, int32_t close)
{
    ce_member m;
    if (!m_pgm.classdef || !ce_classfcnlookup(m_pgm.classdef, name, &m))
        return false;
    need_public_name(name);
    ce_access(&m, name);
    if (!(m.flags & CF_STATIC)) {
        if (!m_pgm.isnonstatic)
            cc_err("%s(): static function may not call nonstatic functions\n", name);
        emit_this();
    }
    int32_t n;
    push_args(open, close, &n);
    emit_member_call(m, name, n, true);
    return true;
}

static void call_name(const char *name, int32_t open, int32_t close)
{
    int32_t s = st_find(name, SK_FCN), n;
    bool received = s >= 0 && m_cc->sym[s].cls == SC_PARAM;
    if (!received && call_own_member(name, open, close))
        return;
    int32_t row = received ? -1 : m_findbuiltin(name);
    push_args(open, close, &n);
    if (row >= 0) {
        const m_birow &bi = m_bitable[row];
        if (n < bi.minargs || n > bi.maxargs)
            cc_err("wrong number of arguments for %s()\n", name);
        mop_add(55, bi.id, n);
        ts_push(ty(bi.eltype, bi.orgtype));
        return;
    }
    s = st_findoradd(name, SK_FCN, ST_READ);
    mop_add(25, s, n);
    if (received)
        ts_push(any_type());
    else
        cx_type_of_def(name, n);
}

void cx_call(int32_t a, int32_t open, int32_t close)
{
    if (open == a + 1 && tk(a)->tok == T_NAME) {
        call_name(tk(a)->text, open, close);
        return;
    }
    if (open - a >= 3 && (tk(open - 2)->tok == T_MEMBER || tk(open - 2)->tok == T_ARROW)) {
        if (tk(open - 1)->tok != T_NAME && tk(open - 1)->tok != K_NEW)
            cc_err(".<exp> invalid\n");
        call_member(a, open, close);
        return;
    }
    if (tk(open - 1)->tok == T_MEMBER || tk(open - 1)->tok == T_ARROW)
        cc_err(".<exp> invalid\n");
    if (tk(a)->tok != '(' || tk(a)->match != open - 1)
        cc_err("invalid expression\n");
    int32_t n;
    push_args(open, close, &n);
    cx(a, open, false);
    ts_pop();
    mop_add(119, n);
    ts_push(any_type());
}

// ---- addresses

static void address_of_function(const char *name)
{
    int32_t result = any_type(), s = st_find(name, SK_FCN);
    ce_member m;
    if (s >= 0 && m_cc->sym[s].cls == SC_PARAM) {
        mop_add(7, s);
        st_mark(s, ST_READ);
    } else if (m_pgm.classdef && ce_classfcnlookup(m_pgm.classdef, name, &m)) {
        char text[70];
        snprintf(text, sizeof text, "%s::%s", ce_name(m.def), name);
        mop_add(166);
        mop_add(0, 0, 0);
        mop_add_str(text);
        mop_add(ce_stamp(m.def));
    } else {
        if (m_findbuiltin(name) >= 0)
            cc_err("%s() built-in, may not evaluate address\n", name);
        mop_add_findf(name);
    }
    mop_add(113);
    int32_t fcn = mtyp_refcn(&m_cc->types, result);
    if (fcn < 0)
        throw cc_abort{};
    ts_push(ty_ptr(OT_SCALAR, fcn));
}

void cx_address(int32_t a, int32_t b)
{
    if (b - a == 4 && tk(a + 1)->tok == T_NAME && tk(a + 2)->tok == '(' &&
        tk(a + 2)->match == b - 1) {
        address_of_function(tk(a + 1)->text);
        return;
    }
    int32_t n; // a variable that is pointed to may be set from elsewhere
    cx_args(a + 1, b, &n);
    if (n != 1)
        cc_err("invalid expression\n");
    mop_add(113);
    ts_push(ty_ptr(OT_SCALAR, ts_pop()));
}

// ---- casts

// Whether one class is another or comes from it.
static bool comes_from(const char *cls, const char *ancestor)
{
    if (!strcmp(cls, ancestor))
        return true;
    matobj *def = ce_classlookup(cls);
    for (int32_t depth = 0; def && depth < ce_maxdepth; depth++) {
        if (!strcmp(ce_name(def), ancestor))
            return true;
        def = ce_parent(def);
    }
    return false;
}

bool cc_comesfrom(int32_t type, int32_t ancestor)
{
    char cls[33], of[33];
    snprintf(cls, sizeof cls, "%s", type_name(type));
    snprintf(of, sizeof of, "%s", type_name(ancestor));
    return comes_from(cls, of);
}

// What is not known of the value is asserted; a class may be seen as any of its ancestors.
void cx_cast(int32_t a, int32_t b)
{
    int32_t close = tk(a)->match, at = a + 1;
    int32_t to = match_type_list(&at, close);
    if (at != close)
        cc_err("'%.200s' found where ')' expected\n", tk(at)->text);
    cx(close + 1, b, false);
    int32_t from = ts_pop();
    const mtyp_entry ef = ty_of(from), et = ty_of(to);
    char name[33];
    snprintf(name, sizeof name, "%s", type_name(to));
    bool known = false;
    if (et.eltype == MT_CLASS && ef.eltype == MT_CLASS) {
        char was[33];
        snprintf(was, sizeof was, "%s", type_name(from));
        known = comes_from(was, name);
    }
    bool settled = !known && !(et.eltype == MT_CLASS && ef.eltype == MT_CLASS);
    if (settled)
        cc_settle(from, to, "(cast)", true);
    if (et.eltype == MT_CLASS && !known && !(settled && et.orgtype == OT_SCALAR)) {
        mop_add(167);
        mop_add_slit(name);
        mop_add(0); // NULL is no instance
    } else if (et.eltype == MT_POINTER && ty_of(et.ptrto).eltype == MT_CLASS &&
               ef.eltype != MT_POINTER)
        mop_add(154);
    ts_push(to);
}
