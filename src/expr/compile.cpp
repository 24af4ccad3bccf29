// expr/compile.cpp - the compiler: extent of an expression, recursion by the loosest operator,
// literal pools, and the entry points.
#include "core/mem.h"
#include "core/missing.h"
#include "core/numtext.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/labels.h"
#include "expr/comp.h"
#include "interp/messages.h"
#include "output/print.h"
#include <cstring>
#include <initializer_list>

double systak[systak_n];
int32_t nsystak;
char ssystak[ssystak_n];
int32_t nssystak;
bool compile_for_algebra_only;

compframe *cfr;
compflags cfl;

// No program of 200 words needs spans nested deeper than this; it bounds the recursion.
static constexpr int32_t maxnest = 600;

void comp_fail(int32_t rc) { throw compfailure{rc}; }
void comp_error(int32_t rc) { comp_fail(error(rc)); }

// ---- pools

void initialize_compexp_shared() { nsystak = nssystak = 0; }

void pools_save(litpools *p)
{
    p->nnum = nsystak;
    p->nstr = nssystak;
    memcpy(p->num, systak, sizeof(double) * size_t(nsystak));
    memcpy(p->str, ssystak, size_t(nssystak));
}

void pools_restore(const litpools *p)
{
    nsystak = p->nnum;
    nssystak = p->nstr;
    memcpy(systak, p->num, sizeof(double) * size_t(nsystak));
    memcpy(ssystak, p->str, size_t(nssystak));
}

[[noreturn]] static void pool_full()
{
    comp_fail(errout(RC_TOOLONG, "too many literals\n"));
}

static int32_t numlit(double z)
{
    for (int32_t i = 0; i < nsystak; i++)
        if (systak[i] == z)
            return i + 1;
    if (nsystak == systak_n)
        pool_full();
    systak[nsystak++] = z;
    return nsystak;
}

int32_t strlit(const char *text, int64_t n)
{
    for (int32_t at = 0; at < nssystak; at += int32_t(strlen(ssystak + at)) + 1)
        if (!strncmp(ssystak + at, text, size_t(n)) && !ssystak[at + n])
            return at;
    if (n + 1 > ssystak_n - nssystak)
        pool_full();
    int32_t at = nssystak;
    memcpy(ssystak + at, text, size_t(n));
    ssystak[at + n] = 0;
    nssystak += int32_t(n) + 1;
    return at;
}

// ---- output

[[noreturn]] static void too_long()
{
    comp_fail(errout(RC_TOOLONG, "expression too long\n"));
}

void emit(int32_t word)
{
    xeqpgm *p = cfr->pgm;
    if (p->ncode + 1 >= xq_ncode)
        too_long();
    p->code[++p->ncode] = int16_t(word);
}

void emit_mat(int32_t word)
{
    cfr->pgm->hasmatop = 1;
    emit(word);
}

void push(comptype t)
{
    cfr->nstr += t == CT_STR;
    cfr->nmat += t == CT_MAT;
    if (cfr->depth == xq_typestack || cfr->nstr > xq_strings || cfr->nmat > xq_mats)
        too_long();
    cfr->type[cfr->depth++] = t;
}

comptype pop()
{
    comptype t = comptype(cfr->type[--cfr->depth]);
    cfr->nstr -= t == CT_STR;
    cfr->nmat -= t == CT_MAT;
    return t;
}

void popn(int32_t n)
{
    while (n-- > 0)
        pop();
}

void want_top(comptype t)
{
    if (top() != t)
        comp_error(RC_TYPE);
}

void push_num(double z)
{
    emit(OP_NUM);
    emit(numlit(z));
    push(CT_NUM);
}

void push_str(const char *text, int64_t n)
{
    emit(OP_STR);
    emit(strlit(text, n > strlen_max ? strlen_max : n));
    push(CT_STR);
}

// ---- scanning

const char *skip_quoted(const char *p, const char *e)
{
    if (*p == '"') {
        for (p++; p < e && *p != '"'; p++)
            ;
        return p < e ? p + 1 : e;
    }
    int32_t depth = 0;
    while (p + 1 < e) {
        if (*p == '`' && p[1] == '"') {
            depth++;
            p += 2;
        } else if (*p == '"' && p[1] == '\'') {
            p += 2;
            if (!--depth)
                return p;
        } else
            p++;
    }
    return e;
}

const char *closer_of(const char *p, const char *e)
{
    int32_t depth = 0;
    while (p < e) {
        if (quote_at(p, e)) {
            p = skip_quoted(p, e);
            continue;
        }
        if (*p == '(' || *p == '[')
            depth++;
        else if ((*p == ')' || *p == ']') && !--depth)
            return p;
        p++;
    }
    return nullptr;
}

const char *last_comma(span s)
{
    const char *hit = nullptr;
    int32_t depth = 0;
    for (const char *p = s.b; p < s.e;) {
        if (quote_at(p, s.e)) {
            p = skip_quoted(p, s.e);
            continue;
        }
        if (*p == '(' || *p == '[')
            depth++;
        else if (*p == ')' || *p == ']')
            depth--;
        else if (*p == ',' && !depth)
            hit = p;
        p++;
    }
    return hit;
}

void copy_name(span s, char *out, int32_t max)
{
    if (s.len() > max)
        comp_error(RC_SYNTAX);
    memcpy(out, s.b, size_t(s.len()));
    out[s.len()] = 0;
}

bool opchar(char c) { return c && strchr("|&=><+-*/^:!~#", c); }

// ---- the extent of an expression

struct extent {
    const char *p;        // in the text
    char *out, *o;        // copy without blanks
    int32_t paren, bracket;
    bool literal;
    bool deep() const { return paren || bracket; }
    bool isop(char c) const
    {
        return opchar(c) || (literal && (c == ',' || c == '\\'));
    }
    char prev() const { return o > out ? o[-1] : 0; }
};

static int32_t too_few(const char *what) { return errout(RC_PARENS, "too few %s\n", what); }
static const char *const parenwords = "')' or ']'";

// Copies a quoted string whole. false when it does not end.
static bool take_quoted(extent *x)
{
    const char *end = x->p + strlen(x->p);
    const char *q = skip_quoted(x->p, end);
    bool compound = *x->p == '`';
    bool closed = compound ? q - x->p >= 4 && q[-1] == '\'' && q[-2] == '"'
                           : q - x->p >= 2 && q[-1] == '"';
    if (closed && compound && q == end) {
        // The scan also stops at the end of the text: count what was really closed.
        int32_t depth = 0;
        for (const char *r = x->p; r + 1 < q; r++)
            if (*r == '`' && r[1] == '"')
                depth++, r++;
            else if (*r == '"' && r[1] == '\'')
                depth--, r++;
        closed = !depth;
    }
    if (!closed)
        return false;
    memcpy(x->o, x->p, size_t(q - x->p));
    x->o += q - x->p;
    x->p = q;
    return true;
}

// Takes a bracket. 0 go on, -1 it ends the expression, else a code.
static int32_t take_bracket(extent *x, bool closebracket)
{
    switch (*x->p) {
    case '(': x->paren++; break;
    case '[': x->bracket++; break;
    case ']':
        if (closebracket && !x->deep())
            return -1;
        if (--x->bracket < 0)
            return errout(RC_PARENS, "too many %s\n", parenwords);
        break;
    default:
        if (--x->paren < 0)
            return errout(RC_PARENS, "too many %s\n", parenwords);
    }
    *x->o++ = *x->p++;
    return 0;
}

// True when a run of blanks at p lies between two operands and so ends the expression.
static bool blanks_end(extent *x)
{
    const char *q = x->p;
    while (*q == ' ' || *q == '\t')
        q++;
    if (!x->deep() && x->prev() && !x->isop(x->prev()) && !x->isop(*q) && *q != '\'' && *q)
        return true;
    x->p = q;
    return false;
}

// Finds the end of the expression at x->p and copies it to x->out. 0 or a code.
static int32_t find_extent(extent *x, bool closebracket)
{
    while (char c = *x->p) {
        if (c == ' ' || c == '\t') {
            if (blanks_end(x))
                break;
            continue;
        }
        if (c == '"' || (c == '`' && x->p[1] == '"')) {
            if (!take_quoted(x))
                return too_few("quotes");
            continue;
        }
        if (strchr("()[]", c)) {
            int32_t rc = take_bracket(x, closebracket);
            if (rc < 0)
                break;
            if (rc)
                return rc;
            continue;
        }
        if (!x->deep()) {
            if (c == '{' || c == '}' || (c == ',' && !x->literal))
                break;
            if (c == '=' && x->p[1] != '=' && !x->isop(x->prev()))
                break;
        }
        if (c == '=' && x->p[1] == '=')
            *x->o++ = *x->p++;
        *x->o++ = *x->p++;
    }
    *x->o = 0;
    if (x->deep())
        return too_few(parenwords);
    return x->prev() && x->isop(x->prev()) ? error(RC_SYNTAX) : 0;
}

// ---- operators

// Rows in the order in which they are searched: the order is the precedence.
enum oprow {
    R_OR, R_AND, R_EQ, R_GE, R_LE, R_LT, R_GT, R_NE, R_NE2, R_ADD, R_SUB, R_MUL, R_DIV,
    R_KRON, R_POW, R_ROWJOIN, R_COLJOIN, R_N,
};
struct opinfo {
    uint8_t len;
    int16_t num, str;  // operation over numbers and over strings, 0 none
};
static constexpr opinfo ops[R_DIV + 1] = {
    {1, OP_OR, 0},       {1, OP_AND, 0},      {2, OP_EQ, OP_SEQ}, {2, OP_GE, OP_SGE},
    {2, OP_LE, OP_SLE},  {1, OP_LT, OP_SLT},  {1, OP_GT, OP_SGT}, {2, OP_NE, OP_SNE},
    {2, OP_NE, OP_SNE},  {1, OP_ADD, OP_CAT}, {1, OP_SUB, 0},     {1, OP_MUL, 0},
    {1, OP_DIV, 0},
};

static bool isdig(char c) { return c >= '0' && c <= '9'; }
static bool isalph(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
static bool ishex(char c)
{
    return isdig(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

// Is the sign at p the sign of an exponent, as in 1e-5 or 1.8x+3?
static bool sign_of_exponent(const char *b, const char *p, const char *e)
{
    if (p - b < 2 || p + 1 >= e)
        return false;
    char mark = p[-1];
    const char *k = p - 2;
    if (mark == 'x' || mark == 'X') {
        if (!ishex(p[1]))
            return false;
        while (k >= b && ishex(*k))
            k--;
        if (k <= b || *k != '.' || (k[-1] != '0' && k[-1] != '1'))
            return false;
        k -= 2;
        return k < b || (!isalph(*k) && !isdig(*k) && *k != '.');
    }
    if (!strchr("eEdD", mark) || !isdig(p[1]))
        return false;
    bool digits = false;
    for (; k >= b && (isdig(*k) || *k == '.'); k--)
        digits |= isdig(*k);
    return digits && (k < b || !isalph(*k));
}

static bool binary_sign(span s, const char *p)
{
    return !opchar(p[-1]) && p[-1] != '\\' && p[-1] != ',' && !sign_of_exponent(s.b, p, s.e);
}

// The rightmost place of each row at depth zero, never at the first or last character.
static void scan_ops(span s, const char **hit)
{
    for (int32_t i = 0; i < R_N; i++)
        hit[i] = nullptr;
    int32_t depth = 0;
    const char *last = s.e - 1;
    for (const char *p = s.b; p < last;) {
        if (quote_at(p, s.e)) {
            p = skip_quoted(p, s.e);
            continue;
        }
        char c = *p;
        bool here = !depth && p > s.b, eq = here && p + 1 < last && p[1] == '=';
        switch (c) {
        case '(': case '[': depth++; break;
        case ')': case ']': depth--; break;
        default:
            if (!here)
                break;
            switch (c) {
            case '|': hit[R_OR] = p; break;
            case '&': hit[R_AND] = p; break;
            case '=': if (eq) hit[R_EQ] = p; break;
            case '>': hit[eq ? R_GE : R_GT] = p; break;
            case '<': hit[eq ? R_LE : R_LT] = p; break;
            case '!': if (eq) hit[R_NE] = p; break;
            case '~': if (eq) hit[R_NE2] = p; break;
            case '+': if (binary_sign(s, p)) hit[R_ADD] = p; break;
            case '-': if (binary_sign(s, p)) hit[R_SUB] = p; break;
            case '*': hit[R_MUL] = p; break;
            case '/': hit[R_DIV] = p; break;
            case '#': hit[R_KRON] = p; break;
            case '^': hit[R_POW] = p; break;
            case '\\': hit[R_ROWJOIN] = p; break;
            case ',': hit[R_COLJOIN] = p; break;
            default: break;
            }
        }
        p++;
    }
}

// + and - where at least one side is a matrix; the right side is already negated.
static void matrix_sum(comptype l, comptype r)
{
    if (l == CT_STR || r == CT_STR)
        comp_error(RC_TYPE);
    if (l == CT_MAT && r == CT_MAT)
        emit_mat(OP_MATADD);
    else if (l == CT_MAT) {
        emit_mat(OP_NUM2MAT);
        emit_mat(OP_MATADD);
    } else
        emit_mat(OP_NUMPLUSMAT);
}

static void matrix_binary(oprow row, comptype l, comptype r)
{
    if (!cfl.matcontext)
        comp_fail(errout(RC_MATCONTEXT,
            "matrix operators that return matrices not allowed in this context\n"));
    switch (row) {
    case R_SUB:
        if (r == CT_STR)
            comp_error(RC_TYPE);
        emit_mat(r == CT_MAT ? OP_MATNEG : OP_NEG);
        matrix_sum(l, r);
        break;
    case R_ADD:
        matrix_sum(l, r);
        break;
    case R_MUL:
        if (l == CT_STR || r == CT_STR)
            comp_error(RC_TYPE);
        emit_mat(l == CT_MAT && r == CT_MAT ? OP_MATMUL : OP_MATSCALE);
        break;
    case R_DIV:
        if (l != CT_MAT || r != CT_NUM)
            comp_error(RC_TYPE);
        emit_mat(OP_RECIPROCAL);
        emit_mat(OP_MATSCALE);
        break;
    default:
        comp_error(RC_TYPE);
    }
    popn(2);
    push(CT_MAT);
}

static void binary(span s, oprow row, const char *at)
{
    comp({s.b, at});
    comp({at + ops[row].len, s.e});
    comptype r = top(), l = comptype(cfr->type[cfr->depth - 2]);
    if (l == CT_MAT || r == CT_MAT) {
        matrix_binary(row, l, r);
        return;
    }
    bool str = r == CT_STR && ops[row].str;
    if (l != r || (r == CT_STR && !str))
        comp_error(RC_TYPE);
    emit(str ? ops[row].str : ops[row].num);
    popn(2);
    push(str && row == R_ADD ? CT_STR : CT_NUM);
}

void comp_split(span s, const char *at, char op) { binary(s, op == '+' ? R_ADD : R_SUB, at); }

// , and \ of a literal: a number counts as a 1 by 1 matrix.
static void join(span s, const char *at, opcode op)
{
    for (span side : {span{s.b, at}, span{at + 1, s.e}}) {
        comp(side);
        if (top() == CT_STR)
            comp_error(RC_TYPE);
        if (top() == CT_NUM) {
            emit_mat(OP_NUM2MAT);
            pop();
            push(CT_MAT);
        }
    }
    emit_mat(op);
    pop();
}

static void kron(span s, const char *at)
{
    for (span side : {span{s.b, at}, span{at + 1, s.e}}) {
        comp(side);
        want_top(CT_MAT);
    }
    emit_mat(OP_KRON);
    pop();
}

static bool unary(span s)
{
    char c = *s.b;
    if (!strchr("!~-+", c))
        return false;
    comp({s.b + 1, s.e});
    if (top() == CT_STR || (top() == CT_MAT && (c == '!' || c == '~')))
        comp_error(RC_TYPE);
    if (c == '-' && top() == CT_MAT)
        emit_mat(OP_MATNEG);
    else if (c != '+')
        emit(c == '-' ? OP_NEG : OP_NOT);
    return true;
}

static bool power(span s, const char *at)
{
    if (!at)
        return false;
    for (span side : {span{s.b, at}, span{at + 1, s.e}}) {
        comp(side);
        want_top(CT_NUM);
    }
    emit(OP_POW);
    pop();
    return true;
}

// ---- operands

// "text":label is the value that the label gives to the text.
static void label_value(const char *text, span label)
{
    char name[comp_maxname + 1];
    copy_name(label, name, comp_maxname);
    int32_t value;
    vltable *table = vlfind(name);
    if (table && !vlfindtxt(table, text, &value)) {
        push_num(value);
        return;
    }
    spout21fat(1, "(value label %s not found)\n", text);
    push_num(misval);
}

static void literal_string(span s)
{
    const char *after = skip_quoted(s.b, s.e);
    int32_t q = *s.b == '"' ? 1 : 2;
    if (after - s.b < 2 * q)
        comp_error(RC_SYNTAX);
    span inside{s.b + q, after - q};
    if (after == s.e) {
        push_str(inside.b, inside.len());
        return;
    }
    if (*after != ':' || after + 1 == s.e)
        comp_error(RC_SYNTAX);
    char text[strlen_max + 1];
    int32_t n = inside.len() > strlen_max ? strlen_max : inside.len();
    memcpy(text, inside.b, size_t(n));
    text[n] = 0;
    label_value(text, {after + 1, s.e});
}

static void operand(span s)
{
    if (quote_at(s.b, s.e)) {
        literal_string(s);
        return;
    }
    double z;
    if (s.len() < 30 && !cnvstozn(s.b, s.len(), &z)) {
        // A literal too large to be a number is plain missing.
        push_num(ovismissing(z) && (mis_letter(z) > 26 || z != mis_of(mis_letter(z))) ? misval : z);
        return;
    }
    const char *open = s.b;
    while (open < s.e && *open != '(' && *open != '[')
        open++;
    char name[comp_maxname + 1];
    copy_name({s.b, open}, name, comp_maxname);
    if (open == s.e) {
        comp_name(s, name);
        return;
    }
    if (*open == '[') {
        comp_bracket(s, name, open);
        return;
    }
    if (closer_of(open, s.e) != s.e - 1 || s.e[-1] != ')' || open == s.b)
        comp_error(RC_SYNTAX);
    comp_call({open + 1, s.e - 1}, name);
}

// ---- the recursion

static void comp_span(span s)
{
    bool paren = false;
    while (s.len() >= 2 && (*s.b == '(' || *s.b == '[') && closer_of(s.b, s.e) == s.e - 1) {
        if ((*s.b == '(') != (s.e[-1] == ')'))
            comp_error(RC_SYNTAX);
        paren |= *s.b == '(';
        s.b++;
        s.e--;
    }
    if (cfl.matcontext && paren && !cfl.matliteral) {
        cfl.matliteral = true;
        comp(s);
        cfl.matliteral = false;
        return;
    }
    if (s.len() <= 0)
        comp_error(RC_SYNTAX);

    const char *hit[R_N];
    scan_ops(s, hit);
    if (cfl.matliteral) {
        for (oprow row : {R_ROWJOIN, R_COLJOIN})
            if (hit[row]) {
                join(s, hit[row], row == R_ROWJOIN ? OP_ROWJOIN : OP_COLJOIN);
                return;
            }
    }
    for (int32_t row = 0; row <= R_DIV; row++)
        if (hit[row]) {
            binary(s, oprow(row), hit[row]);
            return;
        }
    if (cfl.matcontext && hit[R_KRON]) {
        kron(s, hit[R_KRON]);
        return;
    }
    bool done = vernum >= 500 ? unary(s) || power(s, hit[R_POW]) : power(s, hit[R_POW]) || unary(s);
    if (done)
        return;
    if (cfl.matcontext && s.len() > 1 && s.e[-1] == '\'' && s.e[-2] != '"') {
        comp({s.b, s.e - 1});
        if (top() == CT_STR)
            comp_error(RC_TYPE);
        if (top() == CT_MAT)
            emit_mat(OP_TRANSPOSE);
        return;
    }
    operand(s);
}

void comp(span s)
{
    if (++cfr->nest > maxnest)
        too_long();
    comp_span(s);
    cfr->nest--;
}

void comp_subspan(span s)
{
    compflags_keep keep;
    cfl.matliteral = false;
    comp(s);
}

// ---- entry points

static void set_restype(xeqpgm *pgm, int32_t wanted)
{
    if (cfr->depth != 1)
        comp_error(RC_SYNTAX);
    static constexpr uint8_t of[] = {XR_NUM, XR_STR, XR_MAT};
    pgm->restype = of[top()];
    bool ok = pgm->restype == wanted;
    if (wanted == W_ANY)
        ok = pgm->restype == XR_NUM || pgm->restype == XR_STR;
    else if (wanted == W_NUMMAT)
        ok = pgm->restype == XR_NUM || pgm->restype == XR_MAT;
    if (!ok)
        comp_error(RC_TYPE);
}

// Compiles text without blanks; everything a compilation changes is back on return.
static int32_t compile_text(span s, xeqpgm *pgm, int32_t wanted, bool literal,
                            const char (*varlist)[33], int32_t nvars)
{
    compframe frame, *was = cfr;
    compflags_keep keep;
    frame.pgm = pgm;
    frame.depth = frame.nstr = frame.nmat = frame.nest = 0;
    pgm->ncode = pgm->nsum = -1;
    pgm->hasmatop = 0;
    pgm->restype = XR_NUM;
    pgm->nobss1 = nobss1;
    pgm->nobss2 = nobss2;
    pgm->varlist = varlist ? varlist : _varlist;
    pgm->nvars = varlist ? nvars : _i_Kvar;
    memset(pgm->sums, 0, sizeof pgm->sums);
    bool mat = wanted == W_MAT || wanted == W_NUMMAT;
    cfl = {!mat, mat, false, literal, false};
    cfr = &frame;
    int32_t rc = 0;
    try {
        comp(s);
        set_restype(pgm, wanted);
    } catch (const compfailure &f) {
        rc = f.rc;
    }
    cfr = was;
    pgm->varlist = nullptr;
    pgm->nvars = 0;
    return rc;
}

static int32_t compexp(toktype *ti, xeqpgm *pgm, int32_t wanted, bool closebracket,
                       bool parseonly, bool literal, const char (*varlist)[33], int32_t nvars)
{
    char *text = ti->c_ptr;
    if (ti->ugetflg && ti->lc_ptr)  // a word handed back is part of the expression
        text = ti->lc_ptr;
    ti->ugetflg = ti->ugotflg = 0;
    char *buf = static_cast<char *>(safemalloc(strlen(text) + 2));
    if (!buf)
        return errout(9710, "op. sys. refuses to provide memory\n");
    extent x{text, buf, buf, 0, 0, literal};
    int32_t rc = find_extent(&x, closebracket);
    ti->lc_ptr = text;
    ti->c_ptr = text + (x.p - text);
    if (pgm) {
        pgm->tokbeg = text;
        pgm->tokend = ti->c_ptr;
    }
    if (!rc && !parseonly)
        rc = compile_text({buf, x.o}, pgm, wanted, literal, varlist, nvars);
    safefree(buf);
    return rc;
}

int32_t ti_compexp(toktype *ti, xeqpgm *pgm, int32_t wanted, bool closebracket, bool parseonly,
                   const char (*varlist)[33], int32_t nvars)
{
    return compexp(ti, pgm, wanted, closebracket, parseonly, false, varlist, nvars);
}

int32_t compmatexp(xeqpgm *pgm, int32_t wanted, bool closebracket, bool parseonly, bool literal)
{
    return compexp(tokinfo, pgm, wanted, closebracket, parseonly, literal, nullptr, 0);
}

int32_t compalgonly(toktype *ti, xeqpgm *pgm, int32_t wanted, bool closebracket, bool parseonly,
                    const char (*varlist)[33], int32_t nvars)
{
    bool was = compile_for_algebra_only;
    compile_for_algebra_only = true;
    int32_t rc = ti_compexp(ti, pgm, wanted, closebracket, parseonly, varlist, nvars);
    compile_for_algebra_only = was;
    return rc;
}
