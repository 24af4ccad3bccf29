// Types: how they are written, which operators take them, and what is said when they differ.
#include "mosa/cc_int.h"
#include "output/print.h"
#include <cstdio>
#include <cstring>

// ---- entries

static int32_t checked(int32_t type)
{
    if (type < 0)
        throw cc_abort{}; // the table told of it
    return type;
}

int32_t ty(int32_t eltype, int32_t orgtype)
{
    if (eltype == MT_POINTER) // to what is not told
        return ty_ptr(orgtype, ty(MT_TRANSMORPHIC, OT_MATRIX));
    return checked(mtyp_addany(&m_cc->types, eltype, orgtype, false, nullptr));
}

int32_t ty_named(int32_t eltype, int32_t orgtype, const char *name)
{
    return checked(mtyp_addany(&m_cc->types, eltype, orgtype, false, name));
}

// Pointers are shared here as well: none is patched once it is in use.
int32_t ty_ptr(int32_t orgtype, int32_t target)
{
    mtyp_table *t = &m_cc->types;
    for (int32_t i = 0; i < t->n; i++)
        if (t->e[i].eltype == MT_POINTER && t->e[i].orgtype == orgtype && !t->e[i].isfcn &&
            mtyp_isequal(t, t->e[i].ptrto, target))
            return i;
    int32_t p = checked(mtyp_add(t, MT_POINTER, orgtype));
    mtyp_replto(t, p, target);
    return p;
}

int32_t ty_org(int32_t type, int32_t orgtype)
{
    const mtyp_entry e = ty_of(type);
    if (e.eltype == MT_POINTER)
        return ty_ptr(orgtype, e.ptrto);
    return ty_named(e.eltype, orgtype, mtyp_name(&m_cc->types, type));
}

const char *ty_text(int32_t type, char *buffer)
{
    const mtyp_entry &e = ty_of(type);
    const char *name = mtyp_name(&m_cc->types, type);
    snprintf(buffer, 200, "%s%s%s %s%s", readableeltype(e.eltype), *name ? " " : "", name,
             readableorgtype(e.orgtype), e.isfcn ? " function" : "");
    return buffer;
}

// ---- the type stack

void ts_push(int32_t type)
{
    if (m_cc->ntype >= cc_maxtypes)
        cc_err("expression too long\n");
    m_cc->type[m_cc->ntype++] = type;
}

int32_t ts_pop()
{
    if (m_cc->ntype < 1)
        cc_err("sysfail 41\n");
    return m_cc->type[--m_cc->ntype];
}

// ---- syntax. The words come from the scanner or from a token list.

static bool is_elword(int32_t t)
{
    return t == K_TRANSMORPHIC || t == K_REAL || t == K_STRING || t == K_COMPLEX ||
           t == K_NUMERIC || t == K_POINTER || t == K_STRUCT || t == K_CLASS;
}

static int32_t org_of(int32_t t)
{
    switch (t) {
    case K_MATRIX: return OT_MATRIX;
    case K_SCALAR: return OT_SCALAR;
    case K_VECTOR: return OT_VECTOR;
    case K_ROWVECTOR: return OT_ROWVECTOR;
    case K_COLVECTOR: return OT_COLVECTOR;
    case K_VOID: return OT_VOID;
    default: return -1;
    }
}

static int32_t el_of(int32_t t)
{
    switch (t) {
    case K_REAL: return MT_REAL;
    case K_STRING: return MT_STRING;
    case K_COMPLEX: return MT_COMPLEX;
    case K_NUMERIC: return MT_NUMERIC;
    default: return MT_TRANSMORPHIC;
    }
}

bool cc_istypeword(int32_t t)
{
    return is_elword(t) || org_of(t) >= 0;
}

struct type_source {
    int32_t *at; // null: the scanner
    int32_t end;
};

static int32_t src_tok(const type_source &s)
{
    if (!s.at)
        return m_tok;
    return *s.at < s.end ? m_cc->list.t[*s.at].tok : int32_t(T_EOL);
}

static void src_next(const type_source &s)
{
    if (s.at)
        ++*s.at;
    else
        m_gettok();
}

static const char *src_text(const type_source &s)
{
    return s.at ? m_cc->list.t[*s.at].text : m_toktext;
}

static void src_demand(const type_source &s, int32_t t)
{
    if (src_tok(s) == t)
        return;
    if (!s.at)
        m_nottoken(t);
    cc_err(t == T_NAME ? "'%.200s' found where %s expected\n"
                       : "'%.200s' found where '%s' expected\n",
           *s.at < s.end ? m_cc->list.t[*s.at].text : cc_tokword(T_EOL), cc_tokword(t));
}

static int32_t parse_type(const type_source &s, bool voidok);

static int32_t parse_target(const type_source &s)
{
    src_next(s);
    int32_t target = ty(MT_TRANSMORPHIC, OT_MATRIX);
    if (cc_istypeword(src_tok(s)))
        target = parse_type(s, true);
    if (src_tok(s) == K_FUNCTION) {
        src_next(s);
        target = checked(mtyp_refcn(&m_cc->types, target));
    }
    src_demand(s, ')');
    src_next(s);
    return target;
}

static int32_t parse_type(const type_source &s, bool voidok)
{
    int32_t eltype = MT_TRANSMORPHIC, target = -1;
    char name[33] = "";
    int32_t t = src_tok(s);
    if (t == K_STRUCT || t == K_CLASS) {
        eltype = t == K_STRUCT ? MT_STRUCT : MT_CLASS;
        src_next(s);
        if (src_tok(s) != T_NAME)
            src_demand(s, T_NAME);
        snprintf(name, sizeof name, "%.32s", src_text(s));
        src_next(s);
    } else if (t == K_POINTER) {
        eltype = MT_POINTER;
        src_next(s);
        target = src_tok(s) == '(' ? parse_target(s) : ty(MT_TRANSMORPHIC, OT_MATRIX);
    } else if (is_elword(t)) {
        eltype = el_of(t);
        src_next(s);
    }
    int32_t orgtype = OT_MATRIX;
    if (int32_t o = org_of(src_tok(s)); o >= 0 && (o != OT_VOID || voidok)) {
        orgtype = o;
        src_next(s);
    }
    return eltype == MT_POINTER ? ty_ptr(orgtype, target) : ty_named(eltype, orgtype, name);
}

int32_t match_type(bool inheader)
{
    return parse_type({nullptr, 0}, inheader);
}

int32_t match_type_list(int32_t *at, int32_t end)
{
    return parse_type({at, end}, false);
}

// ---- rules

void cc_mismatch(const char *label, const char *found, const char *expected)
{
    outlev_keep keep(3);
    spoutsmlf("{err}{p}\ntype mismatch:\n%s:\n%s\nfound where\n%s\nexpected\n{p_end}\n", label,
              found, expected);
    throw cc_abort{};
}

static bool is_num(int32_t el)
{
    return el == MT_REAL || el == MT_COMPLEX || el == MT_NUMERIC;
}

void cc_needs(int32_t eltype, const char *label)
{
    char found[200];
    const mtyp_entry &e = ty_of(ts_top());
    if (e.eltype == MT_TRANSMORPHIC || e.eltype == eltype)
        return;
    if ((eltype == MT_NUMERIC && is_num(e.eltype)) || (eltype == MT_REAL && e.eltype == MT_NUMERIC))
        return;
    cc_mismatch(label, ty_text(ts_top(), found), readableeltype(eltype));
}

// Shape of the result of an element-wise or scalar operation.
static int32_t org_both(int32_t a, int32_t b)
{
    if (a == OT_SCALAR)
        return b;
    return b == OT_SCALAR || a == b ? a : int32_t(OT_MATRIX);
}

static int32_t el_num(int32_t a, int32_t b)
{
    if (a == MT_REAL && b == MT_REAL)
        return MT_REAL;
    if (a == MT_TRANSMORPHIC || b == MT_TRANSMORPHIC)
        return MT_TRANSMORPHIC;
    return a == MT_COMPLEX || b == MT_COMPLEX ? MT_COMPLEX : MT_NUMERIC;
}

struct pair {
    int32_t a, b, ela, elb, orga, orgb;
    const char *label;
};

[[noreturn]] static void refuse(const pair &p, bool left, const char *expected)
{
    char found[200];
    cc_mismatch(p.label, ty_text(left ? p.a : p.b, found), expected);
}

static void both_numeric(const pair &p, bool pointers)
{
    for (int32_t left = 1; left >= 0; left--) {
        int32_t el = left ? p.ela : p.elb;
        if (el != MT_TRANSMORPHIC && !is_num(el) && !(pointers && el == MT_POINTER))
            refuse(p, left, "numeric");
    }
}

// Numbers with numbers or strings with strings; the element type of the result.
static int32_t same_kind(const pair &p)
{
    if (p.ela == MT_STRING || p.elb == MT_STRING) {
        if (p.elb != MT_STRING && p.elb != MT_TRANSMORPHIC)
            refuse(p, false, "string");
        if (p.ela != MT_STRING && p.ela != MT_TRANSMORPHIC)
            refuse(p, false, readableeltype(p.ela));
        return p.ela == p.elb ? int32_t(MT_STRING) : int32_t(MT_TRANSMORPHIC);
    }
    both_numeric(p, false);
    return el_num(p.ela, p.elb);
}

static int32_t type_join(const pair &p, int32_t op)
{
    int32_t row = op == 58 ? OT_ROWVECTOR : OT_COLVECTOR;
    bool line = (p.orga == OT_SCALAR || p.orga == row) && (p.orgb == OT_SCALAR || p.orgb == row);
    int32_t org = line ? row : int32_t(OT_MATRIX);
    if (p.ela == MT_TRANSMORPHIC || p.elb == MT_TRANSMORPHIC)
        return ty(MT_TRANSMORPHIC, org);
    if (is_num(p.ela) && is_num(p.elb))
        return ty(el_num(p.ela, p.elb), org);
    if (p.ela != p.elb)
        refuse(p, false, readableeltype(p.ela));
    return ty_org(p.a, org);
}

static int32_t type_times(const pair &p, bool colon)
{
    if (p.ela == MT_STRING || p.elb == MT_STRING) {
        int32_t other = p.ela == MT_STRING ? p.elb : p.ela;
        if (other != MT_REAL && other != MT_NUMERIC && other != MT_TRANSMORPHIC)
            refuse(p, p.elb == MT_STRING, "real");
        return ty(MT_STRING, org_both(p.orga, p.orgb));
    }
    both_numeric(p, false);
    bool scalar = p.orga == OT_SCALAR || p.orgb == OT_SCALAR;
    return ty(el_num(p.ela, p.elb),
              colon || scalar ? org_both(p.orga, p.orgb) : int32_t(OT_MATRIX));
}

static int32_t type_range(const pair &p, int32_t op)
{
    for (int32_t left = 1; left >= 0; left--) {
        int32_t el = left ? p.ela : p.elb;
        if (el != MT_TRANSMORPHIC && el != MT_REAL && el != MT_NUMERIC)
            refuse(p, left, "real");
    }
    return ty(MT_REAL, op == 87 ? OT_ROWVECTOR : OT_COLVECTOR);
}

static int32_t type_binary(const pair &p, int32_t op)
{
    int32_t both = org_both(p.orga, p.orgb);
    switch (op) {
    case 58:
    case 74: return type_join(p, op);
    case 87:
    case 88: return type_range(p, op);
    case 43:
    case 13: both_numeric(p, true); return ty(MT_REAL, OT_SCALAR);
    case 59:
    case 60: both_numeric(p, false); return ty(MT_REAL, both);
    case 14:
    case 19: return ty(MT_REAL, OT_SCALAR);
    case 64:
    case 69: return ty(MT_REAL, both);
    case 15:
    case 16:
    case 17:
    case 18:
    case 65:
    case 66:
    case 67:
    case 68:
        // Pointers have an error of their own when they are compared.
        if (p.ela != MT_POINTER && p.elb != MT_POINTER)
            same_kind(p);
        return op < 64 ? ty(MT_REAL, OT_SCALAR) : ty(MT_REAL, both);
    case 32:
    case 70: return ty(same_kind(p), both);
    case 21:
    case 62: return type_times(p, op == 62);
    case 86: {
        both_numeric(p, false);
        bool scalars = p.orga == OT_SCALAR && p.orgb == OT_SCALAR;
        return ty(el_num(p.ela, p.elb), scalars ? OT_SCALAR : OT_MATRIX);
    }
    default: break;
    }
    both_numeric(p, false);
    int32_t el = el_num(p.ela, p.elb);
    return ty(el, op == 73 && p.orgb == OT_SCALAR ? p.orga : both);
}

void cc_binarytype(int32_t op, const char *label)
{
    int32_t b = ts_pop(), a = ts_pop();
    const mtyp_entry &ea = ty_of(a), &eb = ty_of(b);
    pair p{a, b, ea.eltype, eb.eltype, ea.orgtype, eb.orgtype, label};
    if (ea.isfcn || eb.isfcn) // told when it runs
        p.ela = p.elb = MT_TRANSMORPHIC;
    if (p.orga == OT_VOID)
        p.orga = OT_MATRIX;
    if (p.orgb == OT_VOID)
        p.orgb = OT_MATRIX;
    ts_push(type_binary(p, op));
}

// ---- assertions

static int32_t el_assertion(int32_t eltype)
{
    switch (eltype) {
    case MT_REAL: return 75;
    case MT_STRING: return 76;
    case MT_COMPLEX: return 83;
    case MT_NUMERIC: return 85;
    default: return 0;
    }
}

static int32_t org_assertion(int32_t orgtype)
{
    switch (orgtype) {
    case OT_SCALAR: return 12;
    case OT_VECTOR: return 29;
    case OT_ROWVECTOR: return 26;
    case OT_COLVECTOR: return 27;
    case OT_VOID: return 90;
    default: return 0;
    }
}

static bool is_class_scalar(int32_t type)
{
    const mtyp_entry &e = ty_of(type);
    return e.eltype == MT_CLASS && e.orgtype == OT_SCALAR;
}

// The top is an instance of the class or of one that comes from it.
static void assert_class(int32_t type)
{
    mop_add(167);
    mop_add_slit(mtyp_name(&m_cc->types, type));
    mop_add(0);
}

void cc_assert(int32_t type)
{
    const mtyp_entry &e = ty_of(type);
    if (int32_t op = el_assertion(e.eltype))
        mop_add(op);
    if (int32_t op = org_assertion(e.orgtype))
        mop_add(op);
    if (is_class_scalar(type))
        assert_class(type);
}

// 1 fits, 0 cannot be told, -1 never fits.
static int32_t el_fits(int32_t from, int32_t to)
{
    const mtyp_entry &f = ty_of(from), &t = ty_of(to);
    if (t.eltype == MT_TRANSMORPHIC)
        return 1;
    if (f.eltype == MT_TRANSMORPHIC || f.isfcn)
        return 0;
    if (t.eltype == MT_NUMERIC)
        return is_num(f.eltype) ? 1 : -1;
    if (f.eltype == MT_NUMERIC)
        return t.eltype == MT_REAL || t.eltype == MT_COMPLEX ? 0 : -1;
    if (f.eltype != t.eltype)
        return -1;
    if (t.eltype == MT_STRUCT &&
        strcmp(mtyp_name(&m_cc->types, from), mtyp_name(&m_cc->types, to)) != 0)
        return -1;
    return 1;
}

static bool org_fits(int32_t from, int32_t to)
{
    if (to == OT_MATRIX || from == to)
        return true;
    if (to == OT_VOID)
        return false;
    return from == OT_SCALAR || (to == OT_VECTOR && (from == OT_ROWVECTOR || from == OT_COLVECTOR));
}

void cc_settle(int32_t from, int32_t to, const char *label, bool emit)
{
    char found[200], expected[200];
    int32_t el = el_fits(from, to);
    const mtyp_entry &f = ty_of(from), &t = ty_of(to);
    bool void_differs = (f.orgtype == OT_VOID) != (t.orgtype == OT_VOID) &&
                        f.eltype != MT_TRANSMORPHIC && t.orgtype == OT_VOID;
    if (el < 0 || void_differs)
        cc_mismatch(label, ty_text(from, found), ty_text(to, expected));
    if (!emit)
        return;
    if (int32_t op = el_assertion(t.eltype); op && !el)
        mop_add(op);
    if (int32_t op = org_assertion(t.orgtype); op && !org_fits(f.orgtype, t.orgtype))
        mop_add(op);
    if (is_class_scalar(to) && (!el || !cc_comesfrom(from, to)))
        assert_class(to);
}
