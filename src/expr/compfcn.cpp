// expr/compfcn.cpp - function calls: the table of plain functions, then the names that are
// handled one by one, then date literals.
//
// Arguments are compiled last to first, so that the machine finds the first one on top.
#include "core/missing.h"
#include "core/numtext.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/labels.h"
#include "data/variables.h"
#include "expr/comp.h"
#include "interp/messages.h"
#include "output/dates.h"
#include "stats/results.h"
#include <bit>
#include <cstring>

static constexpr int32_t maxargs = 255;

struct callinfo {
    const char *name;
    span in;       // between the parentheses
    int32_t n;     // arguments
    int32_t code;  // of the row that was found
    uint16_t at[maxargs + 1];  // where each begins within in; behind the last, its end
    span arg(int32_t i) const { return {in.b + at[i], in.b + at[i + 1] - 1}; }
};

static void split_args(callinfo *c)
{
    c->n = 0;
    c->at[0] = 0;
    if (c->in.b == c->in.e)
        return;
    int32_t depth = 0;
    for (const char *p = c->in.b; p <= c->in.e;) {
        if (p < c->in.e && quote_at(p, c->in.e)) {
            p = skip_quoted(p, c->in.e);
            continue;
        }
        if (p == c->in.e || (*p == ',' && !depth)) {
            if (c->n == maxargs)
                comp_fail(errout(RC_TOOLONG, "expression too long\n"));
            c->at[++c->n] = uint16_t(p - c->in.b + 1);
        } else if (*p == '(' || *p == '[')
            depth++;
        else if (*p == ')' || *p == ']')
            depth--;
        p++;
    }
}

static void need(const callinfo *c, int32_t low, int32_t high)
{
    if (c->n < low || c->n > high)
        comp_error(RC_SYNTAX);
}

static void arg(span s, comptype t)
{
    comp_subspan(s);
    want_top(t);
}

static void matarg(span s)
{
    compflags_keep keep;
    cfl.varsallowed = false;
    cfl.scalarcontext = true;
    cfl.matliteral = false;
    comp(s);
    if (top() == CT_STR) {
        emit(OP_MATSTR);
        pop();
        push(CT_MAT);
    }
    want_top(CT_MAT);
}

static void done(int32_t nargs, int32_t op, comptype result)
{
    emit(op);
    popn(nargs);
    push(result);
}

static void done_counted(int32_t nargs, int32_t op, comptype result)
{
    emit(op);
    emit(nargs);
    popn(nargs);
    push(result);
}

[[noreturn]] static void later() { comp_fail(errout(RC_UNKNOWNFCN, "%s", fcn_later_words)); }
[[noreturn]] static void unknown(const char *name)
{
    comp_fail(errout(RC_UNKNOWNFCN, "unknown function %s()\n", name));
}

// All arguments numbers, low to high of them.
static void numbers(callinfo *c, int32_t low, int32_t high)
{
    need(c, low, high);
    for (int32_t i = c->n - 1; i >= 0; i--)
        arg(c->arg(i), CT_NUM);
}

// ---- the names, one by one

static void bn_counted(callinfo *c)
{
    int32_t low = c->code == OP_RECODE ? 3 : c->code == OP_ROUND ? 1 : 2;
    numbers(c, low, c->code == OP_ROUND ? 2 : maxargs);
    done_counted(c->n, c->code, CT_NUM);
}

static void bn_matscalar(callinfo *c)
{
    need(c, 1, 1);
    matarg(c->arg(0));
    done(1, c->code, CT_NUM);
}

// Matrices from numbers: I(n), J(r,c,z), matuniform(r,c).
static void bn_matmake(callinfo *c)
{
    if (!cfl.matcontext)
        unknown(c->name);
    int32_t n = c->code == OP_MATIDENT ? 1 : c->code == OP_MATCONST ? 3 : 2;
    numbers(c, n, n);
    cfr->pgm->hasmatop = 1;
    done(n, c->code, CT_MAT);
}

static void bn_matfcn(callinfo *c)
{
    if (!cfl.matcontext)
        unknown(c->name);
    int32_t n = c->code == OP_HADAMARD ? 2 : 1;
    need(c, n, n);
    for (int32_t i = 0; i < n; i++)  // the first matrix below the second, as under an operator
        matarg(c->arg(i));
    cfr->pgm->hasmatop = 1;
    done(n, c->code, CT_MAT);
}

static void bn_sweep(callinfo *c)
{
    if (!cfl.matcontext)
        unknown(c->name);
    need(c, 2, 2);
    arg(c->arg(1), CT_NUM);
    matarg(c->arg(0));
    cfr->pgm->hasmatop = 1;
    done(2, OP_SWEEP, CT_MAT);
}

// nullmat(name) and get(name) take their text as it stands.
static void bn_namedmat(callinfo *c)
{
    if (!cfl.matcontext)
        unknown(c->name);
    char name[33];
    copy_name(c->in, name, 32);
    if (!*name)
        comp_error(RC_SYNTAX);
    push_str(name, int64_t(strlen(name)));
    emit_mat(OP_NAMEDMAT);
    emit(*c->name == 'g');
    pop();
    push(CT_MAT);
}

static void bn_cond(callinfo *c)
{
    need(c, 3, 4);
    comp_subspan(c->arg(c->n - 1));
    comptype t = top();
    if (t == CT_MAT)
        comp_error(RC_TYPE);
    for (int32_t i = c->n - 2; i >= 1; i--)
        arg(c->arg(i), t);
    arg(c->arg(0), CT_NUM);
    done_counted(c->n, t == CT_STR ? OP_CONDSTR : OP_COND, t);
}

// Functions told by a word of types: the result, then each argument, s or n; code + the count
// of arguments beyond the least when op steps.
struct typed {
    const char *name, *types;
    uint8_t least;
    bool step;     // an opcode for each count
    bool counted;  // the count is an operand
};
static const typed typedrows[] = {
    {"string", "sns", 1, false, true},   {"strofreal", "sns", 1, false, true},
    {"substr", "ssnn", 3, false, false}, {"word", "ssn", 2, false, false},
    {"abbrev", "ssn", 2, false, false},  {"subinstr", "ssssn", 4, false, false},
    {"subinword", "ssssn", 4, false, false},
    {"plural", "snss", 2, true, false},  {"date", "nssn", 2, true, false},
    {"daily", "nssn", 2, true, false},   {"clock", "nssn", 2, true, false},
    {"Clock", "nssn", 2, true, false},   {"yearly", "nssn", 2, true, false},
    {"halfyearly", "nssn", 2, true, false}, {"quarterly", "nssn", 2, true, false},
    {"monthly", "nssn", 2, true, false}, {"weekly", "nssn", 2, true, false},
};

static void bn_typed(callinfo *c)
{
    const typed *t = typedrows;
    while (strcmp(t->name, c->name))
        t++;
    need(c, t->least, int32_t(strlen(t->types)) - 1);
    for (int32_t i = c->n - 1; i >= 0; i--)
        arg(c->arg(i), t->types[i + 1] == 's' ? CT_STR : CT_NUM);
    int32_t op = c->code + (t->step ? c->n - t->least : 0);
    if (c->code == OP_DATE && vernum < 1000)
        op = c->n == 2 ? OP_DATE_OLD : OP_DATE_OLD3;
    comptype result = *t->types == 's' ? CT_STR : CT_NUM;
    if (t->counted)
        done_counted(c->n, op, result);
    else
        done(c->n, op, result);
}

static void bn_strtoname(callinfo *c)
{
    need(c, 1, 2);
    if (c->n == 2)
        arg(c->arg(1), CT_NUM);
    else
        push_num(1);
    arg(c->arg(0), CT_STR);
    done(2, OP_STRTONAME, CT_STR);
}

static void bn_later(callinfo *) { later(); }

static void bn_namepos(callinfo *c)
{
    need(c, 2, 2);
    arg(c->arg(1), CT_STR);
    matarg(c->arg(0));
    done(2, c->code, CT_NUM);
}

static void bn_el(callinfo *c)
{
    need(c, 3, 3);
    arg(c->arg(2), CT_NUM);
    arg(c->arg(1), CT_NUM);
    matarg(c->arg(0));
    done(3, OP_EL, CT_NUM);
}

static void bn_mreldif(callinfo *c)
{
    need(c, 2, 2);
    matarg(c->arg(0));
    matarg(c->arg(1));
    done(2, OP_MRELDIF, CT_NUM);
}

static void bn_sum(callinfo *c)
{
    need(c, 1, 1);
    arg(c->arg(0), CT_NUM);
    if (cfr->pgm->nsum + 1 >= xq_nsum)
        comp_fail(errout(RC_TOOLONG, "too many sum() functions\n"));
    emit(OP_SUM);
    emit(++cfr->pgm->nsum);
}

// scalar(), matrix() and variable() choose among the meanings of a name.
static void bn_context(callinfo *c)
{
    compflags_keep keep;
    cfl.varsallowed = *c->name == 'v';
    cfl.scalarcontext = *c->name != 'v';
    cfl.matliteral = false;
    comp(c->in);
    if (top() == CT_MAT && !keep.was.matcontext && !keep.was.scalarcontext)
        comp_fail(errout(RC_MATCONTEXT,
            "matrix operators that return matrices not allowed in this context\n"));
}

static void bn_stored(callinfo *c) { comp_stored(c->code, c->in); }
static void bn_cvalue(callinfo *c) { comp_cvalue(c->in); }
static void bn_eprop(callinfo *c) { comp_has_eprop(c->in); }

static void bn_missing(callinfo *c)
{
    if (cfl.missingnest)
        comp_fail(errout(RC_SYNTAX, "missing() may not be nested within missing()\n"));
    need(c, 1, maxargs);
    compflags_keep keep;
    cfl.missingnest = true;
    emit(OP_MISSBEGIN);
    for (int32_t i = c->n - 1; i >= 0; i--) {
        comp_subspan(c->arg(i));
        if (top() == CT_MAT)
            comp_error(RC_TYPE);
        emit(pop() == CT_STR ? OP_MISSSTR : OP_MISSNUM);
    }
    emit(OP_MISSEND);
    push(CT_NUM);
}

static void bn_density(callinfo *c)
{
    static constexpr int16_t plain[] = {OP_NORMALDEN1, OP_NORMALDEN2, OP_NORMALDEN3};
    numbers(c, 1, 3);
    done(c->n, c->code ? c->code + c->n - 1 : plain[c->n - 1], CT_NUM);
}

static void bn_rnormal(callinfo *c)
{
    numbers(c, 0, 2);
    done(c->n, c->code + c->n, CT_NUM);
}
static void bn_one(callinfo *c)
{
    if ((!strcmp(c->name, "normd") && vernum >= 1000))
        unknown(c->name);
    numbers(c, 1, 1);
    done(1, c->code, CT_NUM);
}

static void bn_binomial_old(callinfo *c)
{
    if (vernum > 1000)
        unknown(c->name);
    numbers(c, 3, 3);
    done(3, OP_BINOMIAL_UPPER, CT_NUM);
}

// inrange and inlist over numbers or over strings; the string form is the next opcode.
static void bn_in(callinfo *c)
{
    bool range = c->code == OP_INRANGE;
    need(c, range ? 3 : 2, range ? 3 : maxargs);
    comp_subspan(c->arg(c->n - 1));
    comptype t = top();
    if (t == CT_MAT)
        comp_error(RC_TYPE);
    for (int32_t i = c->n - 2; i >= 0; i--)
        arg(c->arg(i), t);
    int32_t op = c->code + (t == CT_STR);
    if (range)
        done(3, op, CT_NUM);
    else
        done_counted(c->n, op, CT_NUM);
}

static void bn_const(callinfo *c)
{
    static const struct {
        const char *name;
        const double *at;
        double value;
    } rows[] = {
        {"maxdouble", &max_ovdouble, 0},  {"mindouble", &min_ovdouble, 0},
        {"epsdouble", &eps_ovdouble, 0},  {"smallestdouble", &smallest_ovdouble, 0},
        {"maxfloat", &max_ovfloat, 0},    {"minfloat", &min_ovfloat, 0},
        {"epsfloat", &eps_ovfloat, 0},    {"maxlong", nullptr, max_ovlong},
        {"minlong", nullptr, min_ovlong}, {"maxint", nullptr, max_ovint},
        {"minint", nullptr, min_ovint},   {"maxbyte", nullptr, max_ovbyte},
        {"minbyte", nullptr, min_ovbyte},
        // 1 high byte first, 2 low byte first
        {"byteorder", nullptr, std::endian::native == std::endian::little ? 2.0 : 1.0},
    };
    need(c, 0, 0);
    if (!strcmp(c->name, "_caller")) {
        push_num(caller_vernum / 100.0);
        return;
    }
    for (auto &r : rows)
        if (!strcmp(r.name, c->name)) {
            push_num(r.at ? *r.at : r.value);
            return;
        }
}

// ---- time ranges

// The unit letter of a time variable's format: d, c, ... or g.
static char time_unit(const char *fmt)
{
    if (*fmt == '%')
        fmt++;
    if (*fmt == '-' || *fmt == '~')
        fmt++;
    if (*fmt == 'd')
        return 'd';
    if (*fmt == 't' && fmt[1])
        return fmt[1];
    return 'g';
}

static void time_end(span s, char unit, double *out)
{
    *out = misval;
    if (s.len() && (dtranslate(unit, s.b, s.e, out) || *out >= misval))
        comp_fail(RC_SYNTAX);
}

static void bn_tin(callinfo *c)
{
    const char *owner = charfind("_dta", "_TStvar", nullptr);
    if (!owner || !*owner)
        comp_fail(errout(RC_NOTALLOWED, "time-series operators not allowed\n"));
    int32_t var = findvarnoab(owner);
    if (var < 0)
        comp_fail(-var);
    if (t_isstr(_typlist[var - 1]))
        comp_error(RC_TYPE);
    char unit = time_unit(_fmtlist[var - 1]);
    const char *comma = static_cast<const char *>(memchr(c->in.b, ',', size_t(c->in.len())));
    if (!comma)
        comp_error(RC_SYNTAX);
    double low, high;
    time_end({c->in.b, comma}, unit, &low);
    time_end({comma + 1, c->in.e}, unit, &high);
    bool haslow = comma > c->in.b, hashigh = comma + 1 < c->in.e;
    if (haslow) {
        push_num(low);
        comp_variable(var);
        done(2, c->code, CT_NUM);
    }
    if (hashigh) {
        comp_variable(var);
        push_num(high);
        done(2, c->code, CT_NUM);
    }
    if (haslow && hashigh)
        done(2, OP_AND, CT_NUM);
    else if (!haslow && !hashigh)
        push_num(1);
}

// ---- date literals

// Blanks were dropped from the literal, so a year may touch the hour: it has four digits.
static void part_year(const char *b, const char *e, char *out, size_t size)
{
    size_t n = 0;
    int32_t run = 0;
    for (const char *p = b; p < e && n + 3 < size; p++) {
        bool digit = *p >= '0' && *p <= '9';
        if (digit && run == 4)
            out[n++] = ' ';
        run = digit ? run + 1 : 0;
        out[n++] = *p;
    }
    out[n] = 0;
}

int32_t dtranslate(char kind, const char *b, const char *e, double *out)
{
    char text[300];
    if (e - b >= int64_t(sizeof text) / 2)
        e = b + sizeof text / 2 - 1;
    memcpy(text, b, size_t(e - b));
    text[e - b] = 0;
    static constexpr const char *masks[] = {"y", "yh", "yq", "ym", "yw"};
    const char *units = "yhqmw", *u = strchr(units, kind);
    if (kind == 'd')
        *out = vernum < 1000 ? ovdate(text, "dmy", misval) : ovclock(text, "DMY", misval, 'd');
    else if (kind == 'c' || kind == 'C') {
        part_year(b, e, text, sizeof text);
        *out = ovclock(text, "DMYhms", misval, kind);
        if (*out >= misval)
            *out = ovclock(text, "DMYhm", misval, kind);
        if (*out >= misval)
            *out = ovclock(text, "DMY", misval, kind);
    } else if (kind && u)
        *out = ovyhqmwd(text, masks[u - units], misval, kind);
    else if (cnvstoz(text, out))
        *out = misval;
    if (*out < misval)
        return 0;
    text[e - b] = 0;
    memcpy(text, b, size_t(e - b));
    return errout(RC_SYNTAX, "%s invalid\n", text);
}

// d(...), td(...) and kin. false when the name is none of them.
static bool date_literal(const callinfo *c)
{
    const char *kind = c->name;
    bool t = *kind == 't' && kind[1];
    if (t)
        kind++;
    if (!*kind || kind[1] || !strchr(t ? "dhmqwycC" : "dhmqwy", *kind))
        return false;
    double z;
    if (int32_t rc = dtranslate(*kind, c->in.b, c->in.e, &z))
        comp_fail(rc);
    push_num(z);
    return true;
}

// ---- the order of the search

struct byname {
    const char *name;
    void (*compile)(callinfo *c);
    int32_t code;
};
#define BYNAMES(B)                                                                             \
    B(recode, bn_counted, OP_RECODE) B(irecode, bn_counted, OP_IRECODE)                        \
    B(max, bn_counted, OP_MAX) B(min, bn_counted, OP_MIN) B(round, bn_counted, OP_ROUND)       \
    B(trace, bn_matscalar, OP_TRACE) B(det, bn_matscalar, OP_DET)                              \
    B(rowsof, bn_matscalar, OP_ROWSOF) B(colsof, bn_matscalar, OP_COLSOF)                      \
    B(diag0cnt, bn_matscalar, OP_DIAG0CNT) B(matmissing, bn_matscalar, OP_MATMISSING)          \
    B(issym, bn_matscalar, OP_ISSYM) B(issymmetric, bn_matscalar, OP_ISSYM)                    \
    B(I, bn_matmake, OP_MATIDENT) B(J, bn_matmake, OP_MATCONST)                                \
    B(matuniform, bn_matmake, OP_MATUNIFORM)                                                   \
    B(syminv, bn_matfcn, OP_SYMINV) B(invsym, bn_matfcn, OP_SYMINV)                            \
    B(corr, bn_matfcn, OP_CORR) B(diag, bn_matfcn, OP_DIAG)                                    \
    B(vecdiag, bn_matfcn, OP_VECDIAG) B(cholesky, bn_matfcn, OP_CHOLESKY)                      \
    B(inv, bn_matfcn, OP_INV) B(hadamard, bn_matfcn, OP_HADAMARD) B(vec, bn_matfcn, OP_VEC)    \
    B(sweep, bn_sweep, 0) B(nullmat, bn_namedmat, 0) B(get, bn_namedmat, 0)                    \
    B(cond, bn_cond, 0) B(string, bn_typed, OP_STRING) B(strofreal, bn_typed, OP_STRING)       \
    B(substr, bn_typed, OP_SUBSTR) B(strtoname, bn_strtoname, 0) B(word, bn_typed, OP_WORD)    \
    B(bofd, bn_later, OP_BOFD) B(dofb, bn_later, OP_DOFB) B(abbrev, bn_typed, OP_ABBREV)       \
    B(rownumb, bn_namepos, OP_ROWNUMB) B(colnumb, bn_namepos, OP_COLNUMB) B(el, bn_el, 0)      \
    B(sum, bn_sum, 0) B(scalar, bn_context, 0) B(matrix, bn_context, 0)                        \
    B(variable, bn_context, 0) B(r, bn_stored, RK_R) B(return, bn_stored, RK_RETURN)           \
    B(e, bn_stored, RK_E) B(s, bn_stored, RK_S) B(_caller, bn_const, 0)                        \
    B(has_eprop, bn_eprop, 0) B(missing, bn_missing, 0) B(mi, bn_missing, 0)                   \
    B(normalden, bn_density, 0) B(normd, bn_one, OP_NORMALDEN1)                                \
    B(lnnormalden, bn_density, OP_LNNORMALDEN1) B(lnormalden, bn_density, OP_LNNORMALDEN1)     \
    B(lnnormald, bn_density, OP_LNNORMALDEN1) B(lnormald, bn_density, OP_LNNORMALDEN1)         \
    B(rnormal, bn_rnormal, OP_RNORMAL0) B(date, bn_typed, OP_DATE) B(daily, bn_typed, OP_DATE)   \
    B(clock, bn_typed, OP_CLOCK) B(Clock, bn_typed, OP_CCLOCK)                                 \
    B(yearly, bn_typed, OP_YEARLY) B(halfyearly, bn_typed, OP_HALFYEARLY)                      \
    B(quarterly, bn_typed, OP_QUARTERLY) B(monthly, bn_typed, OP_MONTHLY)                      \
    B(weekly, bn_typed, OP_WEEKLY) B(tin, bn_tin, OP_LE) B(twithin, bn_tin, OP_LT)             \
    B(subinstr, bn_typed, OP_SUBINSTR) B(subinword, bn_typed, OP_SUBINWORD)                    \
    B(inrange, bn_in, OP_INRANGE) B(inlist, bn_in, OP_INLIST) B(plural, bn_typed, OP_PLURAL)   \
    B(byteorder, bn_const, 0) B(maxdouble, bn_const, 0) B(mindouble, bn_const, 0)              \
    B(epsdouble, bn_const, 0) B(smallestdouble, bn_const, 0) B(maxfloat, bn_const, 0)          \
    B(minfloat, bn_const, 0) B(epsfloat, bn_const, 0) B(maxlong, bn_const, 0)                  \
    B(minlong, bn_const, 0) B(maxint, bn_const, 0) B(minint, bn_const, 0)                      \
    B(maxbyte, bn_const, 0) B(minbyte, bn_const, 0) B(c, bn_cvalue, 0)                         \
    B(mreldif, bn_mreldif, 0) B(invnorm, bn_one, OP_INVNORMAL) B(norm, bn_one, OP_NORMAL)      \
    B(lnfact, bn_one, OP_LNFACTORIAL) B(Binomial, bn_binomial_old, OP_BINOMIAL_UPPER)

static const byname bynames[] = {
#define B(name, fn, code) {#name, fn, code},
    BYNAMES(B)
#undef B
};
const char *const fcn_byname[] = {
#define B(name, fn, code) #name,
    BYNAMES(B)
#undef B
    nullptr,
};

static void table_call(callinfo *c, const fcnrow *row)
{
    if (row->later)
        later();
    static constexpr comptype typeof_arg[] = {CT_NUM, CT_STR, CT_MAT};
    if (row->nargs == 1) {
        arg(c->in, typeof_arg[row->argtype]);
    } else {
        split_args(c);
        need(c, row->nargs, row->nargs);
        for (int32_t i = c->n - 1; i >= 0; i--)
            arg(c->arg(i), typeof_arg[row->argtype]);
    }
    int32_t op = row->opcode;
    if (op == OP_RUNIFORM && vernum < 320)
        op = OP_UNIFORM0;
    done(row->nargs, op, typeof_arg[row->restype]);
}

void comp_call(span in, const char *name)
{
    callinfo c;
    c.name = name;
    c.in = in;
    if (const fcnrow *row = fcn_find(name)) {
        table_call(&c, row);
        return;
    }
    if (vernum <= 600 && (!strcmp(name, "invchi") || !strcmp(name, "invt"))) {
        split_args(&c);
        numbers(&c, 2, 2);
        done(2, name[3] == 'c' ? OP_INVCHI : OP_INVT, CT_NUM);
        return;
    }
    for (const byname &b : bynames)
        if (!strcmp(b.name, name)) {
            c.code = b.code;
            split_args(&c);
            b.compile(&c);
            return;
        }
    if (!date_literal(&c))
        unknown(name);
}
