// Definitions of classes, looking into them, and who may use which member.
#include "core/text.h"
#include "mosa/cc_int.h"
#include "mosa/classdef.h"
#include "output/print.h"
#include <cstring>
#include <ctime>

static constexpr int32_t maxfcn = 400, maxvar = 400;
struct cd_member {
    char name[33];
    bool isvirtual;
    int32_t type, access, flags, vindex;
};
struct cd_class {
    char name[33];
    matobj *parent;
    int32_t access; // of the section
    int32_t nfcn, nvar, nvirtual, firstslot;
    cd_member fcn[maxfcn], var[maxvar];
};

// ---- one member

static bool is_special(const char *name)
{
    return !strcmp(name, "new") || !strcmp(name, "destroy");
}

static void check_special(const cd_member &m)
{
    const char *wrong = m.flags & CF_STATIC ? "static" : m.isvirtual ? "virtual" : "final";
    if (m.flags || m.isvirtual)
        cc_err("%s() may not be %s\n", m.name, wrong);
    if (ty_of(m.type).orgtype != OT_VOID)
        cc_err("%s() must be void\n", m.name);
}

// What the parents say about a function of that name.
static void check_overriding(cd_class *c, cd_member *m)
{
    ce_member p;
    if (c->parent && ce_classfcnlookup(c->parent, m->name, &p)) {
        if (p.kind == CR_VIRT) {
            if (p.flags & CF_FINAL)
                cc_err("%s():  virtual function declared final may not be modified\n", m->name);
            if (!mtyp_isequal(&m_cc->types, p.type, m->type))
                cc_err("%s():  virtual function type mismatch\n", m->name);
            m->isvirtual = true;
            m->vindex = p.vindex;
        } else if (p.flags & CF_FINAL)
            cc_err("%s():  function declared final may not be modified\n", m->name);
    }
    if (m->isvirtual && (m->flags & CF_STATIC))
        cc_err("virtual functions may not be static\n");
    if (m->isvirtual && m->vindex < 0)
        m->vindex = c->nvirtual++;
}

static void add_function(cd_class *c, cd_member m)
{
    for (int32_t i = 0; i < c->nfcn; i++)
        if (!strcmp(c->fcn[i].name, m.name))
            cc_err("symbol %s multiply defined\n", m.name);
    if (c->nfcn >= maxfcn)
        cc_err("too many class member functions\n");
    if (is_special(m.name))
        check_special(m);
    else
        check_overriding(c, &m);
    c->fcn[c->nfcn++] = m;
}

static void add_variable(cd_class *c, const cd_member &m)
{
    if (m.isvirtual)
        cc_err("%s:  variables may not be virtual\n", m.name);
    for (int32_t i = 0; i < c->nvar; i++)
        if (!strcmp(c->var[i].name, m.name))
            cc_err("symbol %s multiply defined\n", m.name);
    if (c->nvar >= maxvar)
        cc_err("no room to add more symbols\n");
    ce_member p;
    if (c->parent && ce_classvarlookup(c->parent, m.name, &p) && (p.flags & CF_FINAL))
        cc_err("%s:  %svariable declared final may not be redefined\n", m.name,
               p.kind == CR_STATIC ? "static " : "");
    c->var[c->nvar++] = m;
}

// Arguments are told where the function is defined; here they are passed over.
static void skip_arguments()
{
    for (int32_t depth = 1; depth > 0; m_gettok()) {
        m_skiplines();
        depth += (m_tok == '(') - (m_tok == ')');
        if (m_tok == '{' || m_tok == '}')
            m_nottoken(')');
    }
}

// ---- lines of a definition

static int32_t access_of(int32_t t)
{
    return t == K_PUBLIC      ? int32_t(CA_PUBLIC)
           : t == K_PROTECTED ? int32_t(CA_PROTECTED)
           : t == K_PRIVATE   ? int32_t(CA_PRIVATE)
                              : -1;
}

static bool is_final_word()
{
    if (!m_nameis("final"))
        return false;
    int32_t next = m_nexttok();
    return next == T_NAME || cc_isword(next);
}

static void get_flags(cd_member *m)
{
    for (;; m_gettok()) {
        if (m_tok == K_STATIC)
            m->flags |= CF_STATIC;
        else if (m_tok == K_VIRTUAL)
            m->isvirtual = true;
        else if (is_final_word())
            m->flags |= CF_FINAL;
        else
            return;
    }
}

static void get_declaration(cd_class *c, int32_t access)
{
    cd_member m{};
    m.access = access;
    get_flags(&m);
    m.type = cc_istypeword(m_tok) ? match_type(true) : ty(MT_TRANSMORPHIC, OT_MATRIX);
    m_tokenis(K_FUNCTION);
    for (;;) {
        m.vindex = -1;
        if (m_tok != T_NAME && m_tok != K_NEW)
            m_nottoken(T_NAME);
        strcut(m.name, sizeof m.name, m_toktext);
        m_gettok();
        if (m_tokenis('(')) {
            skip_arguments();
            add_function(c, m);
        } else
            add_variable(c, m);
        if (!m_tokenis(','))
            break;
        m_skiplines();
    }
    cc_stmtend();
}

static void get_lines(cd_class *c)
{
    for (;;) {
        m_skiplines();
        if (m_tokenis('}'))
            return;
        int32_t access = access_of(m_tok);
        if (access >= 0) {
            m_gettok();
            if (m_tokenis(':')) {
                c->access = access;
                continue;
            }
        }
        get_declaration(c, access >= 0 ? access : c->access);
    }
}

// ---- the image

static int32_t new_stamp(const char *name)
{
    static uint32_t serial;
    uint32_t h = uint32_t(time(nullptr)) * 2654435761u + ++serial * 40503u;
    for (; *name; name++)
        h = h * 31 + static_cast<unsigned char>(*name);
    h &= 0x7fffffff;
    return h ? int32_t(h) : 1;
}

bool m_official;

// The same for the same definition, so that official libraries come out alike wherever they
// are made.
static int32_t content_stamp(const cc_image *im)
{
    uint32_t h = 2166136261u;
    for (int32_t i = 0; i < im->n; i++)
        h = (h ^ uint32_t(im->w[i])) * 16777619u;
    h &= 0x7fffffff;
    return h ? int32_t(h) : 1;
}

// Records of one kind in a run; their types and names follow when all runs stand.
static int32_t add_record(cc_image *im, const cd_member &m, int32_t kind, int32_t more)
{
    int32_t at = ci_add(im, kind);
    ci_add(im, 0);
    ci_add(im, 0);
    ci_add(im, m.access);
    ci_add(im, m.flags | (m.isvirtual ? int32_t(CF_VIRTUAL) : 0));
    for (int32_t i = 0; i < more; i++)
        ci_add(im, 0);
    return at;
}

static void add_names(cc_image *im, const cd_member &m, int32_t at)
{
    int32_t type = ci_type(im, m.type, true), text = ci_text(im, m.name, true);
    im->w[at + 1] = type;
    im->w[at + 2] = text;
}

static int32_t add_variables(cc_image *im, const cd_class *c, bool statics, int32_t *n)
{
    int32_t first = im->n;
    *n = 0;
    for (int32_t i = 0; i < c->nvar; i++)
        if (statics == ((c->var[i].flags & CF_STATIC) != 0)) {
            add_record(im, c->var[i], statics ? CR_STATIC : CR_VAR, statics ? 2 : 0);
            ++*n;
        }
    return first;
}

static void name_variables(cc_image *im, const cd_class *c, bool statics)
{
    int32_t at = im->w[statics ? CW_STATICS : CW_VARS];
    for (int32_t i = 0; i < c->nvar; i++)
        if (statics == ((c->var[i].flags & CF_STATIC) != 0)) {
            add_names(im, c->var[i], at);
            at += statics ? 7 : 5;
        }
}

static void add_functions(cc_image *im, const cd_class *c)
{
    im->w[CW_NEW] = im->w[CW_DESTROY] = -1;
    im->w[CW_FCNS] = im->n;
    im->w[CW_NFCNS] = c->nfcn;
    for (int32_t i = 0; i < c->nfcn; i++) {
        const cd_member &m = c->fcn[i];
        int32_t at = add_record(im, m, m.isvirtual ? CR_VIRT : CR_FCN, 4);
        im->w[at + 5] = m.isvirtual ? m.vindex : -1;
        im->w[at + 6] = m.isvirtual ? 0 : -1;
        if (is_special(m.name))
            im->w[m.name[0] == 'n' ? CW_NEW : CW_DESTROY] = at;
    }
}

static cc_image *lay_out(const cd_class *c)
{
    cc_image *im = ci_new();
    for (int32_t i = 0; i < CW_HEAD; i++)
        ci_add(im, 0);
    int32_t *w = im->w;
    w[CW_FORMAT] = m_format;
    w[CW_VERSION] = vernum < 900 ? 900 : vernum;
    w[CW_MARK] = cls_mark;
    w[CW_PARENT] = -1;
    w[CW_FIRSTSLOT] = c->firstslot;
    w[CW_NVIRTUALS] = c->nvirtual;
    w[CW_VARS] = add_variables(im, c, false, &w[CW_NVARS]);
    w[CW_STATICS] = add_variables(im, c, true, &w[CW_NSTATICS]);
    add_functions(im, c);
    name_variables(im, c, false);
    name_variables(im, c, true);
    for (int32_t i = 0; i < c->nfcn; i++)
        add_names(im, c->fcn[i], w[CW_FCNS] + 9 * i);
    w[CW_NAME] = ci_text(im, c->name, true);
    if (c->parent) {
        w[CW_PARENT] = ci_text(im, ce_name(c->parent), true);
        w[CW_PARENTSTAMP] = ce_stamp(c->parent);
    }
    ci_add(im, CR_END);
    im->w[CW_WORDS] = im->n;
    im->w[CW_STAMP] = m_official ? content_stamp(im) : new_stamp(c->name);
    return im;
}

void cc_classdef()
{
    auto *c = static_cast<cd_class *>(cc_alloc(sizeof(cd_class)));
    m_gettok();
    strcut(c->name, sizeof c->name, m_toktext);
    m_gettok();
    c->firstslot = 1;
    if (m_nameis("extends")) {
        m_gettok();
        if (m_tok != T_NAME)
            m_nottoken(T_NAME);
        c->parent = ce_finddef(m_toktext, true);
        const int32_t *code = mo_code(c->parent);
        c->firstslot = code[CW_FIRSTSLOT] + code[CW_NVARS];
        c->nvirtual = code[CW_NVIRTUALS];
        m_gettok();
    } else if (m_tok != '{' && m_tok != T_EOL)
        cc_err("%.200s found where nothing or extends expected\n", m_toktext);
    cc_refuse_existing(c->name, "");
    m_skiplines();
    m_match('{');
    get_lines(c);
    ci_store(lay_out(c), c->name, MT_CLASSDEF);
}

// ---- looking into definitions

const char *ce_name(const matobj *def)
{
    return def->info->name;
}

int32_t ce_stamp(const matobj *def)
{
    return mo_code(def)[CW_STAMP];
}

matobj *ce_classlookup(const char *name)
{
    return ce_finddef(name, true);
}

matobj *ce_parent(const matobj *def)
{
    const int32_t *code = mo_code(def);
    return code[CW_PARENT] < 0 ? nullptr : ce_finddef(cls_text(code, code[CW_PARENT]), true);
}

// The record of a name in a run, or -1.
static int32_t find_record(const int32_t *code, int32_t first, int32_t n, int32_t length,
                           const char *name)
{
    for (int32_t k = 0; k < n; k++)
        if (!strcmp(cls_text(code, code[first + k * length + 2]), name))
            return k;
    return -1;
}

static void fill(ce_member *m, matobj *def, const int32_t *rec)
{
    m->def = def;
    m->kind = rec[0];
    m->type = ce_import(mo_code(def), rec[1], true);
    m->access = rec[3];
    m->flags = rec[4];
    m->vindex = rec[0] == CR_VIRT ? rec[5] : -1;
}

bool ce_classvarlookup(matobj *def, const char *name, ce_member *m)
{
    for (int32_t depth = 0; def && depth < ce_maxdepth; depth++, def = ce_parent(def)) {
        const int32_t *code = mo_code(def);
        int32_t k = find_record(code, code[CW_VARS], code[CW_NVARS], 5, name);
        if (k >= 0) {
            fill(m, def, code + code[CW_VARS] + 5 * k);
            m->row = code[CW_FIRSTSLOT] + k;
            return true;
        }
        k = find_record(code, code[CW_STATICS], code[CW_NSTATICS], 7, name);
        if (k >= 0) {
            fill(m, def, code + code[CW_STATICS] + 7 * k);
            m->row = k;
            return true;
        }
    }
    return false;
}

bool ce_classfcnlookup(matobj *def, const char *name, ce_member *m)
{
    for (int32_t depth = 0; def && depth < ce_maxdepth; depth++, def = ce_parent(def)) {
        const int32_t *code = mo_code(def);
        int32_t k = find_record(code, code[CW_FCNS], code[CW_NFCNS], 9, name);
        if (k < 0)
            continue;
        fill(m, def, code + code[CW_FCNS] + 9 * k);
        m->row = -1;
        return true;
    }
    return false;
}

void ce_access(const ce_member *m, const char *name)
{
    if (m->access == CA_PUBLIC)
        return;
    matobj *from = m_pgm.classdef;
    if (m->access == CA_PRIVATE) {
        if (!from || strcmp(ce_name(from), ce_name(m->def)) != 0)
            cc_err("%s is private to class %s\n", name, ce_name(m->def));
        return;
    }
    for (int32_t depth = 0; from && depth < ce_maxdepth; depth++, from = ce_parent(from))
        if (!strcmp(ce_name(from), ce_name(m->def)))
            return;
    cc_err("%s is protected in class %s\n", name, ce_name(m->def));
}

// ---- whether all declared functions are there

static const char *next_undefined(const matobj *def, int32_t *k, bool *isvirtual)
{
    const int32_t *code = mo_code(def);
    for (; *k < code[CW_NFCNS]; ++*k) {
        const int32_t *rec = code + code[CW_FCNS] + 9 * *k;
        const char *member = cls_text(code, rec[2]);
        *isvirtual = rec[0] == CR_VIRT;
        if (!mo_findfcn(def->info->inclass ? dm_rec(def)->name : "", def->info->name, member))
            return member;
    }
    return nullptr;
}

bool isclassdefcomplete(const matobj *definition)
{
    int32_t k = 0;
    bool isvirtual;
    return !next_undefined(definition, &k, &isvirtual);
}

void dispundefinedclsmbrfcn(const matobj *definition)
{
    int32_t k = 0;
    bool isvirtual;
    for (; const char *member = next_undefined(definition, &k, &isvirtual); k++)
        spout21fat(3,
                   isvirtual ? "%s::%s not implemented\n" : "%s::%s() declared but not defined\n",
                   definition->info->name, member);
}
