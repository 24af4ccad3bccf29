// Whole programs: a function or a statement from its first token to the stored image.
#include "core/mem.h"
#include "core/settings.h"
#include "core/text.h"
#include "interp/dm.h"
#include "mosa/builtins.h"
#include "mosa/cc_int.h"
#include "mosa/classdef.h"
#include "output/print.h"
#include <cstdio>
#include <cstring>

cc_block *m_cc;
bool cc_wasstmt, cc_failed;

// ---- headers

// Declarations of struct and class scalars as optional arguments: the words say what to do.
static void refuse_optional(int32_t type)
{
    const mtyp_entry &e = ty_of(type);
    if (e.orgtype != OT_SCALAR || (e.eltype != MT_STRUCT && e.eltype != MT_CLASS))
        return;
    const char *what = e.eltype == MT_STRUCT ? "struct" : "class";
    outlev_keep keep(3);
    spoutsmlf("{err}%s scalars may not be received as optional arguments.{break}\n"
              "Remove the qualifier -scalar- from the argument's declaration.\n"
              "Now, if the argument is not passed, you will receive a 0 x 0\n"
              "%s and, if necessary, you can allocate it yourself.\n",
              what, what);
    throw cc_abort{};
}

void cc_farglist()
{
    for (;;) {
        m_skiplines();
        if (m_tok == '|') {
            if (m_pgm.firstopt >= 0)
                m_nottoken(T_NAME);
            m_pgm.firstopt = m_cc->nsym;
            m_gettok();
            m_skiplines();
        }
        int32_t type = cc_istypeword(m_tok) ? match_type(false) : ty(MT_TRANSMORPHIC, OT_MATRIX);
        bool isfcn = m_tokenis(K_FUNCTION);
        if (m_tok != T_NAME)
            m_nottoken(T_NAME);
        char name[33];
        strcut(name, sizeof name, m_toktext);
        m_gettok();
        if (m_tokenis('(')) {
            m_match(')');
            isfcn = true;
        }
        if (m_pgm.firstopt >= 0) {
            if (isfcn)
                cc_err("function arguments cannot be optional\n");
            refuse_optional(type);
        }
        st_add(name, SC_PARAM, isfcn ? SK_FCN : SK_VAR, type);
        m_skiplines();
        if (m_tok == '|')
            continue;
        if (!m_tokenis(','))
            return;
    }
}

static void close_arguments()
{
    m_pgm.nargs = m_cc->nsym;
    if (m_pgm.firstopt == m_pgm.nargs)
        m_pgm.firstopt = -1;
}

static int32_t header_type()
{
    int32_t type = ty(MT_TRANSMORPHIC, OT_MATRIX);
    if (cc_istypeword(m_tok))
        type = match_type(true);
    m_tokenis(K_FUNCTION);
    return type;
}

static void get_fcn_name(char *name)
{
    if (m_tok != T_NAME && m_tok != K_NEW)
        m_nottoken(T_NAME);
    strcut(name, 33, m_toktext);
    m_gettok();
}

// (doppelganger) before the name: a function that stands in for a built-in one.
static bool is_doppelganger()
{
    if (!m_tokenis('('))
        return false;
    if (!m_nameis("doppelganger"))
        m_nottokentext("'doppelganger'");
    m_gettok();
    m_match(')');
    return true;
}

void cc_refuse_existing(const char *name, const char *subname)
{
    char text[128];
    if (!fcnnameavbl(sys_pgmclass, name, subname, text))
        cc_err("%s() already exists\n", text);
}

static void member_type_differs(const char *cls, const char *name, int32_t declared)
{
    char text[200];
    if (ty_of(declared).orgtype == OT_VOID)
        cc_err("%s::%s() previously declared as void\n", cls, name);
    ty_text(declared, text);
    if (char *space = strrchr(text, ' ')) {
        *space = 0;
        cc_err("%s::%s() previously declared as %s %s\n", cls, name, text, space + 1);
    }
}

// class::name - the class must know the member, whose declaration tells how it is built.
static void begin_member(const char *cls)
{
    matobj *def = emo_find(sys_pgmclass, cls, "");
    if (!def)
        cc_err("class %s undefined\n", cls);
    if (def->cols != MT_CLASSDEF)
        cc_err("function %s() is not a class\n", cls);
    char name[33];
    get_fcn_name(name);
    ce_member m;
    if (!ce_classfcnlookup(def, name, &m) || m.def != def)
        cc_err("function %s not found in class %s\n", name, cls);
    if (!mtyp_isequal(&m_cc->types, m.type, m_pgm.result))
        member_type_differs(cls, name, m.type);
    cc_refuse_existing(cls, name);
    strcut(m_pgm.classname, sizeof m_pgm.classname, cls);
    strcut(m_pgm.name, sizeof m_pgm.name, name);
    m_pgm.isclassmember = true;
    m_pgm.isstatic = m.flags & CF_STATIC;
    m_pgm.isnonstatic = !m_pgm.isstatic;
    m_pgm.isvirtual = m.kind == CR_VIRT;
    def->links++; // what is compiled may not take its own class away
    m_pgm.classdef = def;
    if (m_pgm.isnonstatic) {
        st_add("this", SC_PARAM, SK_VAR, ty_named(MT_CLASS, OT_SCALAR, cls));
        m_cc->sym[0].read = m_cc->sym[0].assigned = true;
        m_thisisword = true;
    }
}

void cc_function()
{
    m_pgm.isfunc = true;
    m_pgm.result = header_type();
    bool stands_in = is_doppelganger();
    char name[33];
    get_fcn_name(name);
    if (m_tokenis(T_COLTO))
        begin_member(name);
    else {
        strcut(m_pgm.name, sizeof m_pgm.name, name);
        if (m_tok != '(')
            m_nottoken('(');
        bool builtin = ismosabuiltin(name);
        if (stands_in && !builtin)
            cc_err("%s() is not built-in\n", name);
        if (!stands_in && builtin)
            cc_err("%s() is built-in\n", name);
        cc_refuse_existing(name, "");
    }
    m_match('(');
    m_skiplines();
    if (m_tok != ')')
        cc_farglist();
    m_match(')');
    close_arguments();
    m_skiplines();
    cc_stmt();
}

// ---- the prologue

static int32_t org_letter(int32_t orgtype)
{
    switch (orgtype) {
    case OT_VECTOR:
    case OT_ROWVECTOR: return 1;
    case OT_COLVECTOR: return 2;
    case OT_SCALAR: return 3;
    default: return 0;
    }
}

static int32_t olc_op(const mtyp_entry &e)
{
    int32_t org = org_letter(e.orgtype);
    switch (e.eltype) {
    case MT_COMPLEX: return 126 + org;
    case MT_STRING: return 130 + org;
    case MT_POINTER: return 134 + org;
    case MT_STRUCT: return org == 3 ? 155 : 147 + org;
    case MT_CLASS: return org == 3 ? 155 : 160 + org;
    default: return 122 + org;
    }
}

static int32_t alc_op(const mtyp_entry &e)
{
    int32_t org = org_letter(e.orgtype);
    switch (e.eltype) {
    case MT_COMPLEX: return 100 + org;
    case MT_STRING: return 104 + org;
    case MT_POINTER: return 108 + org;
    case MT_STRUCT: return 143 + org;
    case MT_CLASS: return 156 + org;
    default: return org ? 96 + org : 37;
    }
}

static void count_arguments()
{
    if (m_pgm.firstopt < 0) {
        mop_add(4, m_pgm.nargs);
        return;
    }
    mop_add(35, m_pgm.firstopt, m_pgm.nargs);
    for (int32_t i = m_pgm.firstopt; i < m_pgm.nargs; i++) {
        const cc_sym &s = m_cc->sym[i];
        mop_add(olc_op(ty_of(s.type)), i + 1);
        mop_add_str(s.name);
    }
}

static void check_arguments()
{
    for (int32_t i = m_pgm.isnonstatic; i < m_pgm.nargs; i++) {
        const cc_sym &s = m_cc->sym[i];
        mop_add(7, i);
        if (s.kind == SK_FCN)
            mop_add(56);
        else {
            mop_add(11);
            cc_assert(s.type);
        }
        mop_add(2);
    }
}

static void emit_external(const cc_sym &s)
{
    static const int8_t shapes[] = {1, 5, 2, 3, 4, 1};
    const mtyp_entry &e = ty_of(s.type);
    if (e.eltype == MT_STRUCT || e.eltype == MT_CLASS) { // not made out of nothing
        mop_add(34, 0);
        mop_add_str(s.name);
        return;
    }
    int32_t el = e.eltype == MT_COMPLEX   ? 2
                 : e.eltype == MT_STRING  ? 3
                 : e.eltype == MT_POINTER ? 4
                                          : 1;
    mop_add(120, el * 256 + shapes[e.orgtype]);
    mop_add_str(s.name);
    cc_assert(s.type);
}

static void emit_symbols()
{
    for (int32_t i = m_pgm.nargs; i < m_cc->nsym; i++) {
        const cc_sym &s = m_cc->sym[i];
        if (s.kind == SK_FCN)
            mop_add_findf(s.name);
        else if (s.cls == SC_LOCAL) {
            mop_add(alc_op(ty_of(s.type)));
            mop_add_str(s.name);
        } else if (s.declared)
            emit_external(s);
        else {
            mop_add(34, s.symiscr);
            mop_add_str(s.name);
        }
    }
}

static bool is_constructed(const cc_sym &s)
{
    const mtyp_entry &e = ty_of(s.type);
    return s.cls == SC_LOCAL && s.kind == SK_VAR && e.orgtype == OT_SCALAR &&
           (e.eltype == MT_STRUCT || e.eltype == MT_CLASS);
}

// The definitions behind struct and class scalars are linked as functions are.
static void construct_scalars()
{
    int32_t n = m_cc->nsym;
    for (int32_t i = m_pgm.nargs; i < n; i++)
        if (is_constructed(m_cc->sym[i]))
            st_findoradd(mtyp_name(&m_cc->types, m_cc->sym[i].type), SK_FCN, ST_READ);
    emit_symbols();
    for (int32_t i = m_pgm.nargs; i < n; i++) {
        const cc_sym &s = m_cc->sym[i];
        if (!is_constructed(s))
            continue;
        mop_add(25, st_find(mtyp_name(&m_cc->types, s.type), SK_FCN), 0);
        mop_add(5, i);
        mop_add(2);
    }
}

void cc_program()
{
    mop_add(m_format);
    mop_add(vernum < 900 ? 900 : vernum);
    int32_t toprologue = mop_add_paddr(1);
    int32_t start = m_pgm.pc;
    if (cc_istypeword(m_tok) || m_tok == K_FUNCTION)
        cc_function();
    else
        cc_stmt();
    mop_add(30);
    if (m_pgm.exittag >= 0) {
        fu_settagadr(m_pgm.exittag);
        if (m_pgm.isfunc)
            cc_assert(m_pgm.result);
        mop_add(3);
    }
    mop_fix_paddr(toprologue);
    count_arguments();
    check_arguments();
    if (m_pgm.isfunc) {
        st_undeclared();
        st_notes();
    }
    construct_scalars();
    mop_add_saddr(1, start);
    fu_fixtags();
    if (set_mosaoptimize && !set_mosalnum)
        cc_optimize();
    cc_stofunc();
}

// ---- storing

matobj *m_mkfcn(const char *cls, const char *name, const char *subname, int32_t words,
                int32_t eltype, int32_t orgtype)
{
    matobj *f = mo_allocfcn(cls, name, subname, int64_t(words) * 4);
    if (!f) {
        spout21fat(3, "cannot create %s%s%s():  insufficient memory\n", name, *subname ? "::" : "",
                   subname);
        return nullptr;
    }
    f->rows = words;
    f->cols = eltype;
    f->eltype = int16_t(orgtype);
    return f;
}

void cc_stofunc()
{
    const char *cls = m_pgm.isfunc ? sys_pgmclass : "";
    const char *name = !m_pgm.isfunc         ? name_istmt()
                       : m_pgm.isclassmember ? m_pgm.classname
                                             : m_pgm.name;
    int32_t words = m_pgm.pc + fu_poolwords();
    const mtyp_entry &e = ty_of(m_pgm.result);
    matobj *f =
        m_mkfcn(cls, name, m_pgm.isclassmember ? m_pgm.name : "", words, e.eltype, e.orgtype);
    if (!f)
        throw cc_abort{};
    memcpy(mo_code(f), m_pgm.code, size_t(m_pgm.pc) * 4);
    fu_reflit(mo_code(f));
    cc_wasstmt = !m_pgm.isfunc;
}

void cc_freeistmt(const char *name)
{
    if (matobj *f = mo_findfcn("", name, ""))
        mo_freefcn(f);
}

// ---- one compilation

static void begin()
{
    m_cc = static_cast<cc_block *>(safecalloc(sizeof(cc_block)));
    if (!m_cc)
        cc_err("opsys refused to provide memory\n");
    m_cc->breaktag = m_cc->conttag = -1;
    m_pgm.firstopt = m_pgm.exittag = -1;
    m_pgm.indecl = true;
    m_pgm.result = ty(MT_TRANSMORPHIC, OT_MATRIX);
    m_thisisword = false;
    cc_freeistmt(name_istmt());
}

// struct NAME and class NAME begin a definition unless the line goes on as a function's header.
static bool is_definition()
{
    m_tokstate s;
    m_gettoksave(&s);
    bool cls = m_tok == K_CLASS, yes = false;
    if (m_gettok() == T_NAME) {
        m_gettok();
        yes = m_tok == '{' || m_tok == T_EOL;
        bool result = m_tok == T_NAME || m_tok == K_FUNCTION || m_tok == '(' ||
                      cc_istypeword(m_tok); // the type of a function
        yes |= cls && (!result || m_nameis("extends"));
    }
    m_gettokrestore(&s);
    return yes;
}

static int32_t compile()
{
    m_tok = T_EOL;
    if (m_gettok() == T_EOL)
        return 1;
    if ((m_tok == K_STRUCT || m_tok == K_CLASS) && is_definition()) {
        m_tok == K_STRUCT ? cc_structdef() : cc_classdef();
        return 0;
    }
    m_pgm.code = static_cast<int32_t *>(cc_alloc(size_t(m_maxpgmsize) * 4));
    cc_program();
    return 0;
}

static void finish(int32_t oldstate)
{
    if (m_cc && m_pgm.classdef)
        mo_unlink(m_pgm.classdef);
    dmzap(DM_MOSASCRATCH);
    safefree(m_cc);
    m_cc = nullptr;
    m_thisisword = false;
    mosa_state = oldstate;
}

int32_t cc_compile()
{
    int32_t oldstate = mosa_state, rc = 1;
    mosa_state = 2;
    cc_wasstmt = cc_failed = false;
    try {
        begin();
        rc = compile();
        m_srcpos = m_tokpos;
    } catch (const cc_abort &) {
        cc_failed = true;
        m_srcpos = int32_t(strlen(m_src));
    }
    finish(oldstate);
    return rc;
}
