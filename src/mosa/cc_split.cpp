// The splitter: a stretch of the token list is cut at its weakest operator and each side is
// compiled in turn; what no operator cuts is a primary.
#include "core/missing.h"
#include "mosa/cc_int.h"
#include <cstring>

struct oprow {
    int32_t tok, op;
    const char *label;
};
// Weakest first. Rows 0 and 1 are the assignment and the conditional.
static const oprow oprows[] = {
    {'=', 0, "="},      {'?', 0, "?"},       {'\\', 74, "\\"},   {T_COLTO, 88, "::"},
    {',', 58, ","},     {T_ROWTO, 87, ".."}, {T_COR, 59, ":|"},  {'|', 43, "|"},
    {T_CAND, 60, ":&"}, {'&', 13, "&"},      {T_CEQ, 64, ":=="}, {T_EQ, 14, "=="},
    {T_CGE, 65, ":>="}, {T_GE, 15, ">="},    {T_CLE, 66, ":<="}, {T_LE, 16, "<="},
    {T_CLT, 67, ":<"},  {'<', 18, "<"},      {T_CGT, 68, ":>"},  {'>', 17, ">"},
    {T_CNE, 69, ":!="}, {T_NE, 19, "!="},    {T_CADD, 70, ":+"}, {'+', 32, "+"},
    {T_CSUB, 61, ":-"}, {'-', 36, "-"},      {T_CMUL, 62, ":*"}, {'*', 21, "*"},
    {'#', 86, "#"},     {T_CDIV, 63, ":/"},  {'/', 73, "/"},     {T_CPOW, 77, ":^"},
    {'^', 23, "^"},
};
static constexpr int32_t noprows = int32_t(sizeof oprows / sizeof oprows[0]);

static cc_tk *tk(int32_t i)
{
    return &m_cc->list.t[i];
}

static int32_t row_of(int32_t tok)
{
    static int8_t rows[256];
    static bool made;
    if (!made) {
        memset(rows, -1, sizeof rows);
        for (int32_t i = 0; i < noprows; i++)
            rows[oprows[i].tok] = int8_t(i);
        made = true;
    }
    return tok >= 0 && tok < 256 ? rows[tok] : -1;
}

// Whether a sign at i stands before its operand rather than between two.
static bool is_unary(int32_t i, int32_t a)
{
    if (i == a)
        return true;
    int32_t prev = tk(i - 1)->tok;
    if (prev == ')' && cc_istypeword(tk(tk(i - 1)->match + 1)->tok)) // a cast
        return true;
    return row_of(prev) >= 0 || prev == ':' || prev == '!';
}

// Position of the weakest operator, the last of its kind, or -1. The first ? of several, so
// that conditionals group to the right.
static int32_t weakest(int32_t a, int32_t b, bool parens, int32_t *row)
{
    int32_t at = -1;
    *row = noprows;
    for (int32_t i = b - 1; i >= a; i--) {
        int32_t t = tk(i)->tok;
        if (tk(i)->match >= 0) {
            i = tk(i)->match;
            continue;
        }
        int32_t r = row_of(t);
        if (r < 0 || (t == ',' && !parens) ||
            ((t == '-' || t == '*' || t == '&') && is_unary(i, a)))
            continue;
        if (r < *row || (r == *row && t == '?')) {
            *row = r;
            at = i;
        }
    }
    return at;
}

int32_t cx_topcomma(int32_t a, int32_t b)
{
    for (int32_t i = a; i < b; i++) {
        if (tk(i)->tok == ',')
            return i;
        if (tk(i)->match > i)
            i = tk(i)->match;
    }
    return b;
}

// ---- conditional

static int32_t matching_colon(int32_t a, int32_t b)
{
    int32_t depth = 0;
    for (int32_t i = a; i < b; i++) {
        if (tk(i)->match > i)
            i = tk(i)->match;
        else if (tk(i)->tok == '?')
            depth++;
        else if (tk(i)->tok == ':' && depth-- == 0)
            return i;
    }
    cc_err("? :  matching ':' not found\n");
}

// What a value of either type can be.
static int32_t common_type(int32_t x, int32_t y)
{
    if (x == y)
        return x;
    const mtyp_entry ex = ty_of(x), ey = ty_of(y);
    if (ex.eltype != ey.eltype || ex.isfcn || ey.isfcn)
        return ty(MT_TRANSMORPHIC, OT_MATRIX);
    if (ex.eltype < MT_POINTER)
        return ty(ex.eltype, OT_MATRIX);
    if (strcmp(mtyp_name(&m_cc->types, x), mtyp_name(&m_cc->types, y)) != 0)
        return ty(MT_TRANSMORPHIC, OT_MATRIX);
    return ty_org(ex.eltype == MT_POINTER && ty_of(ex.ptrto).eltype == MT_TRANSMORPHIC ? y : x,
                  ex.orgtype == ey.orgtype ? int32_t(ex.orgtype) : int32_t(OT_MATRIX));
}

static void conditional(int32_t a, int32_t q, int32_t b, bool parens)
{
    int32_t colon = matching_colon(q + 1, b);
    cx(a, q, parens);
    if (ty_of(ts_top()).eltype != MT_POINTER)
        cc_needs(MT_NUMERIC, "?");
    ts_pop();
    int32_t toelse = mop_add_paddr(28);
    cx(q + 1, colon, parens);
    int32_t x = ts_pop();
    int32_t toend = mop_add_paddr(1);
    mop_fix_paddr(toelse);
    cx(colon + 1, b, parens);
    int32_t y = ts_pop();
    mop_fix_paddr(toend);
    ts_push(common_type(x, y));
    m_cc->list.alias = true;
}

// ---- assignment

static void strip(int32_t *a, int32_t *b)
{
    while (*b - *a >= 2 && tk(*a)->tok == '(' && tk(*a)->match == *b - 1) {
        ++*a;
        --*b;
    }
}

static bool is_subscripted(int32_t a, int32_t b)
{
    int32_t t = tk(b - 1)->tok;
    return (t == ']' || t == T_RRANGE) && tk(b - 1)->match > a;
}

static bool is_member(int32_t a, int32_t b)
{
    if (b - a < 3 || (tk(b - 1)->tok != T_NAME && tk(b - 1)->tok != K_NEW))
        return false;
    return tk(b - 2)->tok == T_MEMBER || tk(b - 2)->tok == T_ARROW;
}

// Pushes what the brackets from open to close hold; the number of indices, 0 for a range.
static int32_t push_indices(int32_t open, int32_t close, bool *scalar)
{
    *scalar = true;
    if (tk(open)->tok == T_LRANGE) {
        cx(open + 1, close, true);
        cc_needs(MT_REAL, "[| |] (subscripts)");
        ts_pop();
        *scalar = false;
        return 0;
    }
    int32_t n = 0;
    for (int32_t at = open + 1;; n++) {
        int32_t comma = cx_topcomma(at, close);
        if (n == 2)
            cc_err("too many subscripts\n");
        cx(at, comma, false);
        cc_needs(MT_REAL, "[] (subscripts)");
        const cc_tk &only = *tk(at);
        bool all = comma == at + 1 && only.tok == T_NUM && !(only.num < misval);
        const mtyp_entry &e = ty_of(ts_pop());
        *scalar &= !all && e.eltype == MT_REAL && e.orgtype == OT_SCALAR;
        if (comma == close)
            return n + 1;
        at = comma + 1;
    }
}

// Slot of a name that is a variable of the frame, or -1 with nothing emitted.
static int32_t frame_variable(int32_t i)
{
    if (tk(i)->tok != T_NAME)
        return -1;
    const char *name = tk(i)->text;
    int32_t s = st_find(name, SK_VAR);
    if (s >= 0)
        return s;
    ce_member m;
    if (m_pgm.classdef && ce_classvarlookup(m_pgm.classdef, name, &m))
        return -1;
    return st_findoradd(name, SK_VAR, ST_FIND);
}

static void store_subscripted(int32_t a, int32_t b)
{
    int32_t open = tk(b - 1)->match, close = b - 1;
    bool scalar;
    int32_t slot = open == a + 1 ? frame_variable(a) : -1;
    if (slot >= 0) {
        st_mark(slot, ST_READ);
        st_mark(slot, ST_SET);
        int32_t n = push_indices(open, close, &scalar);
        mop_add(n == 0 ? 24 : n == 1 ? 94 : 92, slot);
        return;
    }
    int32_t x = a, y = open;
    strip(&x, &y);
    bool good = y > x && (tk(x)->tok == '*' || is_member(x, y) || (y - x == 1));
    if (!good || (y - x == 1 && tk(x)->tok != T_NAME))
        cc_err("invalid subscripted lval\n");
    cx(x, y, false);
    ts_pop();
    int32_t n = push_indices(open, close, &scalar);
    mop_add(n == 0 ? 115 : n == 1 ? 117 : 116);
}

static void refuse_target(int32_t a, int32_t b)
{
    for (int32_t i = a; i < b; i++) {
        if (tk(i)->match > i)
            i = tk(i)->match;
        else if (tk(i)->tok == '?')
            cc_err("? ... : ... not allowed\n");
    }
    int32_t t = tk(a)->tok;
    bool fixed = t == K_THIS || t == K_SUPER || (t >= K_NULL && t <= K_POINTERVOID);
    if (fixed && b - a == 1)
        cc_err("may not change %s\n", tk(a)->text);
}

// The value on top, whose type is on the type stack, goes where the stretch tells and stays.
void cx_store(int32_t a, int32_t b)
{
    if (a >= b)
        cc_err("invalid lval\n");
    strip(&a, &b);
    if (a >= b)
        cc_err("invalid lval\n");
    refuse_target(a, b);
    int32_t row, from = ts_top();
    if (weakest(a, b, true, &row) >= 0)
        cc_err("invalid lval\n");
    int32_t slot = b - a == 1 ? frame_variable(a) : -1;
    if (slot >= 0) {
        cc_settle(from, m_cc->sym[slot].type, "=", true);
        mop_add(5, slot);
        st_mark(slot, ST_SET);
        return;
    }
    bool deref = tk(a)->tok == '*';
    if (!deref && tk(a)->tok != '-' && tk(a)->tok != '!' && is_subscripted(a, b)) {
        store_subscripted(a, b);
        return;
    }
    bool plain = is_member(a, b) || (b - a == 1 && tk(a)->tok == T_NAME);
    if ((!deref && !plain) || tk(b - 1)->tok == '\'')
        cc_err("invalid lval\n");
    int32_t begin = m_pgm.pc;
    cx(a, b, false);
    int32_t end = m_pgm.pc;
    cc_settle(from, ts_pop(), "=", true);
    mop_bringforward(begin, end);
    mop_add(118);
}

static void assignment(int32_t a, int32_t at, int32_t b, bool parens)
{
    cx(at + 1, b, parens);
    for (;;) {
        int32_t k = at - 1;
        while (k >= a && tk(k)->tok != '=')
            k = tk(k)->match >= 0 ? tk(k)->match - 1 : k - 1;
        cx_store(k + 1, at);
        if (k < a)
            break;
        at = k;
    }
}

// ---- primaries

static void need_single(int32_t a, int32_t b)
{
    if (b - a != 1)
        cc_err("invalid expression\n");
}

static void load_slot(int32_t slot, int32_t mode)
{
    mop_add(7, slot);
    st_mark(slot, mode);
    ts_push(m_cc->sym[slot].type);
}

static void name_value(int32_t i, int32_t mode)
{
    const char *name = tk(i)->text;
    int32_t s = st_find(name, SK_VAR);
    if (s < 0) { // a function that was received may be handed on
        s = st_find(name, SK_FCN);
        if (s >= 0 && m_cc->sym[s].cls != SC_PARAM)
            s = -1;
    }
    if (s < 0 && cx_classvar(name, false))
        return;
    load_slot(s >= 0 ? s : st_findoradd(name, SK_VAR, ST_FIND), mode);
}

void cx_args(int32_t a, int32_t b, int32_t *n)
{
    *n = 0;
    if (a >= b)
        return;
    for (int32_t at = a;; ++*n) {
        int32_t comma = cx_topcomma(at, b);
        if (comma == at + 1 && tk(at)->tok == T_NAME)
            name_value(at, ST_REF);
        else
            cx(at, comma, false);
        if (comma == b)
            break;
        at = comma + 1;
    }
    ++*n;
}

static void increment(int32_t a, int32_t b)
{
    cc_list &list = m_cc->list;
    if (b - a != 2 || tk(a)->tok != T_NAME)
        cc_err("invalid use of ++ or --\n");
    if (list.ninc >= cc_maxinc)
        cc_err("too many postponed ++ or --\n");
    int32_t dir = tk(b - 1)->tok == T_INC ? 1 : -1;
    name_value(a, ST_READ);
    cc_needs(MT_REAL, dir > 0 ? "++ (increment)" : "-- (decrement)");
    int32_t slot = frame_variable(a);
    if (slot >= 0)
        st_mark(slot, ST_SET);
    list.inc[list.ninc].at = a;
    list.inc[list.ninc].dir = dir;
    list.inc[list.ninc++].slot = slot;
}

static void negation(int32_t a, int32_t b)
{
    const cc_tk &t = *tk(a + 1);
    if (b - a == 2 && t.tok == T_NUM && t.num <= misval) {
        mop_add_num(t.num == misval ? misval : -t.num);
        ts_push(ty(MT_REAL, OT_SCALAR));
        return;
    }
    if (b - a == 2 && t.tok == T_IMAG && t.num < misval) {
        mop_add(84, 0);
        fu_refdlit(m_pgm.pc - 1, -t.num);
        ts_push(ty(MT_COMPLEX, OT_SCALAR));
        return;
    }
    cx(a + 1, b, false);
    cc_needs(MT_NUMERIC, "- (negation)");
    mop_add(71);
}

static void not_value(int32_t a, int32_t b)
{
    cx(a + 1, b, false);
    if (ty_of(ts_top()).eltype != MT_POINTER)
        cc_needs(MT_NUMERIC, "! (not)");
    mop_add(20);
    int32_t org = ty_of(ts_pop()).orgtype;
    ts_push(ty(MT_REAL, org == OT_VOID ? int32_t(OT_MATRIX) : org));
}

static void dereference(int32_t a, int32_t b)
{
    cx(a + 1, b, false);
    cc_needs(MT_POINTER, "* (deref.)");
    mop_add(112);
    const mtyp_entry e = ty_of(ts_pop());
    ts_push(e.eltype == MT_POINTER ? e.ptrto : ty(MT_TRANSMORPHIC, OT_MATRIX));
}

static void literal(const cc_tk &t)
{
    if (t.tok == T_STR) {
        mop_add_longstr(t.text, t.len);
        ts_push(ty(MT_STRING, OT_SCALAR));
    } else if (t.tok == T_NUM) {
        mop_add_num(t.num);
        ts_push(ty(MT_REAL, OT_SCALAR));
    } else {
        mop_add(84, 0);
        fu_refdlit(m_pgm.pc - 1, t.num);
        ts_push(ty(MT_COMPLEX, OT_SCALAR));
    }
}

static void subscript(int32_t a, int32_t b)
{
    int32_t open = tk(b - 1)->match;
    bool scalar;
    cx(a, open, false);
    int32_t n = push_indices(open, b - 1, &scalar);
    mop_add(n == 0 ? 22 : n == 1 ? 93 : 91);
    int32_t base = ts_pop();
    if (ty_of(base).isfcn)
        base = ty(MT_TRANSMORPHIC, OT_MATRIX);
    ts_push(ty_org(base, scalar ? OT_SCALAR : OT_MATRIX));
}

// By the first token; false when the last one tells.
static bool by_first(int32_t a, int32_t b)
{
    switch (tk(a)->tok) {
    case T_STR:
    case T_NUM:
    case T_IMAG:
        need_single(a, b);
        literal(*tk(a));
        return true;
    case '-': negation(a, b); return true;
    case '!': not_value(a, b); return true;
    case '*': dereference(a, b); return true;
    case '&': cx_address(a, b); return true;
    case T_INC:
    case T_DEC: cc_err("invalid use of ++ or --\n");
    case K_NULL:
        need_single(a, b);
        mop_add(114);
        ts_push(ty_ptr(OT_SCALAR, ty(MT_TRANSMORPHIC, OT_MATRIX)));
        return true;
    default: break;
    }
    if (tk(a)->tok == '(' && a + 1 < b && cc_istypeword(tk(a + 1)->tok)) {
        cx_cast(a, b);
        return true;
    }
    return false;
}

static void this_value()
{
    mop_add(7, 0);
    m_pgm.thisused = true;
    ts_push(m_cc->sym[0].type);
}

static void by_last(int32_t a, int32_t b)
{
    int32_t last = tk(b - 1)->tok;
    if (is_subscripted(a, b))
        subscript(a, b);
    else if (last == ')' && tk(b - 1)->match > a)
        cx_call(a, tk(b - 1)->match, b - 1);
    else if (b - a >= 2 && (tk(b - 2)->tok == T_MEMBER || tk(b - 2)->tok == T_ARROW))
        cx_member(a, b);
    else if (last == T_INC || last == T_DEC)
        increment(a, b);
    else if (b - a == 1 && tk(a)->tok == T_NAME)
        name_value(a, ST_READ);
    else if (b - a == 1 && tk(a)->tok == K_THIS)
        this_value();
    else
        cc_err("invalid expression\n");
}

void cx(int32_t a, int32_t b, bool parens)
{
    breakout();
    while (b - a >= 2 && tk(a)->tok == '(' && tk(a)->match == b - 1) {
        a++;
        b--;
        parens = true;
    }
    if (a >= b)
        cc_err("nothing found where subexp expected\n");
    int32_t row, at = weakest(a, b, parens, &row);
    if (at >= 0 && row == 0)
        assignment(a, at, b, parens);
    else if (at >= 0 && row == 1)
        conditional(a, at, b, parens);
    else if (at >= 0) {
        cx(a, at, parens);
        cx(at + 1, b, parens);
        mop_add(oprows[row].op);
        cc_binarytype(oprows[row].op, oprows[row].label);
    } else if (tk(b - 1)->tok == '\'') {
        cx(a, b - 1, false);
        mop_add(72);
        int32_t t = ts_pop(), org = ty_of(t).orgtype;
        ts_push(ty_org(t, org == OT_ROWVECTOR   ? int32_t(OT_COLVECTOR)
                          : org == OT_COLVECTOR ? int32_t(OT_ROWVECTOR)
                                                : org));
    } else if (!by_first(a, b))
        by_last(a, b);
    m_cc->list.assigned = at >= 0 && row == 0;
}
