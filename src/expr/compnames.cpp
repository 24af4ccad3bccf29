// expr/compnames.cpp - what a name stands for: system names, variables, matrices, scalars,
// coefficients, stored results and system values. Whatever cannot change while the command
// runs becomes a constant here.
#include "core/missing.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/scalars.h"
#include "data/umat.h"
#include "data/variables.h"
#include "expr/comp.h"
#include "interp/messages.h"
#include "stats/results.h"
#include "varlist/terms.h"
#include <cmath>
#include <cstring>
#include <initializer_list>

static bool isnamechar(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || (c >= '0' && c <= '9');
}

// True after emitting one of the names that the system gives itself.
static bool system_name(const char *name)
{
    static const struct {
        const char *name;
        int16_t op;
    } rows[] = {{"_n", OP_OBS}, {"_N", OP_NOBS}, {"_cons", OP_CONS}, {"_rc", OP_RC}, {"_pi", 0}};
    for (auto &r : rows)
        if (!strcmp(name, r.name)) {
            if (!r.op)
                push_num(M_PI);
            else {
                emit(r.op);
                push(CT_NUM);
            }
            return true;
        }
    return false;
}

static bool is_system_name(const char *name)
{
    for (const char *s : {"_n", "_N", "_cons", "_rc", "_pi"})
        if (!strcmp(name, s))
            return true;
    return false;
}

void comp_variable(int32_t var)
{
    bool str = t_isstr(_typlist[var - 1]);
    emit(str ? OP_SVAR : OP_VAR);
    emit(var);
    push(str ? CT_STR : CT_NUM);
}

bool comp_findvar(const char *name, int32_t *var)
{
    const xeqpgm *p = cfr->pgm;
    if (p->nvars <= 0 || !p->varlist)
        return false;
    *var = findvar_in_list(name, p->varlist, p->nvars, !ovata_varabbrev);
    if (*var < 0)
        comp_fail(error2(4, name));
    return *var > 0;
}

// A name with a point: an operator over a variable. A sign inside may be one of arithmetic
// that the test for numbers took for an exponent's.
static bool pointed_name(span s, const char *name)
{
    termname t;
    if (term_read(name, &t)) {
        if (int32_t rc = ti_fv_findvar(name, &t))
            comp_fail(rc);
        comp_term(t);
        return true;
    }
    for (char op : {'-', '+'}) {
        const char *at = nullptr;
        for (const char *p = s.b + 1; p < s.e - 1; p++)
            if (*p == op)
                at = p;
        if (at) {
            comp_split(s, at, op);
            return true;
        }
    }
    const char *point = strrchr(name, '.');
    if (!point || point == name || !isnamechar(point[1]) || !isnamechar(name[0]) || strpbrk(name, ",\"'"))
        return false;
    fvspec typed;
    if (int32_t rc = fv_text(name, FV_TS | FV_FACTOR, &typed))
        comp_fail(rc);
    comp_fail(errout(RC_SYNTAX, "%s: a level must be told\n", name));
}

static void push_matrix(const char *name, opcode op)
{
    emit(op);
    emit(strlit(name, int64_t(strlen(name))));
    push(CT_MAT);
}

[[noreturn]] static void unresolved(const char *name)
{
    for (const char *p = name; *p; p++)
        if (opchar(*p) || strchr("\\,\"'`()[]{}", *p))
            comp_error(RC_SYNTAX);
    comp_fail(gnrnotfound(name));
}

void comp_name(span s, const char *name)
{
    if (system_name(name))
        return;
    int32_t var;
    if (cfl.varsallowed) {
        if (strpbrk(name, ".#")) {
            if (pointed_name(s, name))
                return;
        } else if (comp_findvar(name, &var)) {
            comp_variable(var);
            return;
        }
    }
    if ((cfl.matcontext || cfl.scalarcontext) && ismatrixname(name)) {
        push_matrix(name, OP_MAT);
        return;
    }
    double z;
    if (sclrld(name, &z)) {
        push_num(z);
        return;
    }
    if (const char *text = ssclrld(name)) {
        push_str(text, int64_t(strlen(text)));
        return;
    }
    unresolved(name);
}

// ---- coefficients

static matref stored_estimates(const char *which)
{
    matref m;
    const char *name = find_e_of_specialname(which);
    if (!name || !umat_get(name, MK_E, &m))
        if (!name || !umat_get(name, MK_MAT, &m))
            return {nullptr, nullptr, nullptr};
    return m;
}

// Position of eq:name among the columns, 0 when absent. An equation may be told by number.
static int32_t coef_position(const matref *b, const char *eq, const char *name, const char *shown)
{
    int32_t n = b->m->cols;
    char full[2 * comp_maxname + 2];
    if (!*eq)
        return umat_findname(b->col, n, name, false);
    char text[comp_maxname + 1];
    if (*eq == '#') {
        int32_t want = 0, seen = 0;
        for (const char *p = eq + 1; *p; p++)
            want = *p >= '0' && *p <= '9' && want < 100000 ? want * 10 + *p - '0' : -1;
        for (int32_t i = 0; i < n && seen < want; i++)
            if (!i || strcmp(b->col[i].eq, b->col[i - 1].eq)) {
                seen++;
                strcpy(text, b->col[i].eq);
            }
        if (seen != want || want < 1)
            comp_fail(eqnotfound(shown));
        eq = text;
    }
    strcpy(full, eq);
    strcat(full, ":");
    if (!umat_findname(b->col, n, full, false))
        comp_fail(eqnotfound(shown));
    strcat(full, name);
    return umat_findname(b->col, n, full, false);
}

// kind 'b' a coefficient, 's' its standard error.
static void coefficient(char kind, const char *eq, span inside, span whole)
{
    char name[comp_maxname + 1], shown[2 * comp_maxname + 16];
    copy_name({whole.b, whole.len() > 60 ? whole.b + 60 : whole.e}, shown, 60);
    span in = inside;
    char eqbuf[comp_maxname + 1];
    const char *colon = static_cast<const char *>(memchr(in.b, ':', size_t(in.len())));
    if (colon) {  // _b[eq:name]
        copy_name({in.b, colon}, eqbuf, comp_maxname);
        eq = eqbuf;
        in.b = colon + 1;
    }
    copy_name(in, name, comp_maxname);
    if (compile_for_algebra_only) {
        push_num(0);
        return;
    }
    matref b = stored_estimates("b");
    if (!b.m)
        comp_fail(gnrnotfound(shown));
    int32_t at = coef_position(&b, eq, name, eq);
    if (!at && strcmp(name, "_cons")) {  // abbreviated variables
        std::string full = fv_fullname(name);
        if (full.size() <= size_t(comp_maxname))
            at = coef_position(&b, eq, full.c_str(), eq);
    }
    if (!at)
        comp_fail(gnrnotfound(shown));
    if (kind == 'b') {
        emit(OP_COEF);
        emit(at);
        push_num(umat_el(b.m, 1, at));
        return;
    }
    matref v = stored_estimates("V");
    if (!v.m || at > v.m->rows || at > v.m->cols)
        comp_fail(gnrnotfound(shown));
    push_num(std::sqrt(umat_el(v.m, at, at)));
}

// [eq]_b[x], [eq]_se[x] or [eq]x: open is at the first bracket.
static void equation_form(span s, const char *open)
{
    const char *close = closer_of(open, s.e);
    if (!close || *close != ']' || close + 1 == s.e)
        comp_error(RC_SYNTAX);
    char eq[comp_maxname + 1], word[comp_maxname + 1];
    copy_name({open + 1, close}, eq, comp_maxname);
    const char *p = close + 1, *q = p;
    while (q < s.e && *q != '[')
        q++;
    copy_name({p, q}, word, comp_maxname);
    if (q == s.e) {
        coefficient('b', eq, {p, s.e}, s);
        return;
    }
    bool se = !strcmp(word, "_se");
    if ((!se && strcmp(word, "_b") && strcmp(word, "_coef")) || closer_of(q, s.e) != s.e - 1)
        comp_error(RC_SYNTAX);
    coefficient(se ? 's' : 'b', eq, {q + 1, s.e - 1}, s);
}

// ---- subscripts

static void subscripted_variable(int32_t var, span inside)
{
    comp_subspan(inside);
    want_top(CT_NUM);
    bool str = t_isstr(_typlist[var - 1]);
    pop();
    emit(str ? OP_SVARSUB : OP_VARSUB);
    emit(var);
    push(str ? CT_STR : CT_NUM);
}

static const char *range_dots(span s)
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
        else if (*p == '.' && !depth && p + 1 < s.e && p[1] == '.')
            hit = p;
        p++;
    }
    return hit;
}

// One bound of a subscript as a number on the stack; a string names a row or a column.
static void bound(span s, int32_t side, opcode lookup)
{
    comp_subspan(s);
    if (top() == CT_MAT)
        comp_error(RC_TYPE);
    if (top() == CT_STR) {
        emit_mat(lookup);
        emit(side);
        pop();
        push(CT_NUM);
    }
}

static bool names_equation(span s)
{
    return s.len() >= 3 && s.e[-1] == '"' && s.e[-2] == ':';
}

// Both ends of a side, the upper one first so that the lower ends on top.
static void side_range(span s, int32_t side)
{
    const char *dots = range_dots(s);
    if (dots) {
        span low{s.b, dots}, high{dots + 2, s.e};
        if (high.len() == 0 && low.len() > 1 && low.e[-1] == '.' && low.e[-2] != '.')
            low.e--;  // three dots: the first is none of the lower bound's
        if (high.len() == 0 || (high.len() == 1 && *high.b == '.'))
            push_num(misval);  // to the end
        else
            bound(high, side, OP_NAMEPOSEND);
        bound(low, side, OP_NAMEPOS);
        return;
    }
    if (names_equation(s)) {
        bound(s, side, OP_NAMEPOSEND);
        bound(s, side, OP_NAMEPOS);
        return;
    }
    bound(s, side, OP_NAMEPOS);
    emit(OP_DUP);
    push(CT_NUM);
}

static void matrix_subscript(const char *name, span inside, const char *comma)
{
    span row{inside.b, comma}, col{comma + 1, inside.e};
    bool range = range_dots(row) || range_dots(col) || names_equation(row) || names_equation(col);
    if (range && !cfl.matcontext)
        comp_fail(errout(RC_MATCONTEXT,
            "matrix operators that return matrices not allowed in this context\n"));
    push_matrix(name, OP_MAT);
    if (!range) {
        bound(col, 2, OP_NAMEPOS);
        bound(row, 1, OP_NAMEPOS);
        emit(OP_MATEL);
        popn(3);
        push(CT_NUM);
        return;
    }
    side_range(col, 2);
    side_range(row, 1);
    emit_mat(OP_SUBMATRIX);
    popn(5);
    push(CT_MAT);
}

void comp_bracket(span s, const char *name, const char *open)
{
    if (is_system_name(name))
        comp_error(RC_SYNTAX);
    if (!*name) {
        equation_form(s, open);
        return;
    }
    if (closer_of(open, s.e) != s.e - 1 || s.e[-1] != ']')
        comp_error(RC_SYNTAX);
    span inside{open + 1, s.e - 1};
    bool b = !strcmp(name, "_b") || !strcmp(name, "_coef");
    if (b || !strcmp(name, "_se")) {
        coefficient(b ? 'b' : 's', "", inside, s);
        return;
    }
    const char *comma = last_comma(inside);
    int32_t var;
    if (comma) {
        if (!ismatrixname(name))
            comp_fail(gnrnotfound(name));
        matrix_subscript(name, inside, comma);
        return;
    }
    if (!comp_findvar(name, &var)) {
        if (ismatrixname(name))
            comp_error(RC_SYNTAX);
        unresolved(name);
    }
    subscripted_variable(var, inside);
}

// ---- stored results and system values

static void stored_matrix(opcode op, const char *name)
{
    if (!cfl.matcontext && !cfl.scalarcontext)
        comp_fail(errout(RC_MATCONTEXT,
            "matrix operators that return matrices not allowed in this context\n"));
    push_matrix(name, op);
}

// e(sample), e(b) and e(V) are no items of the store.
static bool special_result(const char *name)
{
    if (!strcmp(name, "sample")) {
        int32_t var = lastest && *esamplename ? sysfindvar(esamplename) : 0;
        if (var > 0) {  // observations that came later hold missing there
            comp_variable(var);
            push_num(1);
            emit(OP_EQ);
            pop();
        } else
            push_num(0);
        return true;
    }
    if (strcmp(name, "b") && strcmp(name, "V"))
        return false;
    const char *dmname = find_e_of_specialname(name);
    if (!dmname)
        return false;
    matref m;
    stored_matrix(umat_get(dmname, MK_E, &m) ? OP_MATE : OP_MAT, dmname);
    return true;
}

void comp_stored(int32_t kind, span arg)
{
    char name[comp_maxname + 1], text[strlen_max + 1];
    copy_name(arg, name, comp_maxname);
    if (kind == RK_E && special_result(name))
        return;
    switch (gretval_find(kind, name)) {
    case 15:
        push_num(retval_get_as_double());
        return;
    case 5179:
        retval_get_as_string(text, strlen_max);
        push_str(text, int64_t(strlen(text)));
        return;
    case 9:
        stored_matrix(kind == RK_E ? OP_MATE : kind == RK_R ? OP_MATR : OP_MATRETURN, name);
        return;
    default:
        if (int32_t rc = chkname(name, false))
            comp_fail(rc);
        push_num(misval);
    }
}

void comp_cvalue(span arg)
{
    char name[comp_maxname + 1], text[512];
    copy_name(arg, name, comp_maxname);
    double z = misval;
    switch (cfcn(name, text, &z)) {
    case 1:
        push_num(z);
        return;
    case 2:
        push_str(text, int64_t(strlen(text)));
        return;
    default:
        comp_fail(errout(RC_UNKNOWNFCN, "c(%s) undefined\n", name));
    }
}

void comp_has_eprop(span arg)
{
    if (arg.len() >= 2 && *arg.b == '"' && arg.e[-1] == '"')
        arg = {arg.b + 1, arg.e - 1};
    char word[comp_maxname + 1], text[512];
    copy_name(arg, word, comp_maxname);
    bool found = false;
    if (*word && gretval_find(RK_E, "properties") == 5179) {
        retval_get_as_string(text, sizeof text - 1);
        char *state = nullptr;
        for (char *w = strtok_r(text, " ", &state); w; w = strtok_r(nullptr, " ", &state))
            found |= !strcmp(w, word);
    }
    if (!strcmp(word, "b") || !strcmp(word, "V"))
        found = found && find_e_of_specialname(word);
    push_num(found);
}
