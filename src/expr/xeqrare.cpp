// expr/xeqrare.cpp - the operations of the machine over strings, and the plain functions that
// are not worth a place in the inner loop. First arguments lie on top.
#include "core/missing.h"
#include "core/regexp.h"
#include "core/state.h"
#include "expr/machine.h"
#include "expr/strfun.h"
#include "interp/dm.h"
#include "output/fmt.h"
#include "output/print.h"
#include "stats/normal.h"
#include "stats/random.h"
#include "stats/results.h"
#include "stats/variates.h"
#include <cmath>
#include <cstring>

double (*xeq_byquery)(xq_byask ask);

// ---- functions of one number where a missing argument is misval

static double log10_of(double x)
{
    return x > 0 ? std::log(x) / std::log(10.0) : misval;
}

static bool guarded(xeqrun *m, int32_t op)
{
    double x = *m->sp, z;
    switch (op) {
    case OP_NORMAL: z = ovnormal(x); break;
    case OP_INVNORMAL: z = ovinvnormal(x); break;
    case OP_LNNORMAL: z = vernum < 1000 ? old_lnnormal(x) : ovlnnormal(x); break;
    case OP_NORMALDEN1: z = ovnormalden(x); break;
    case OP_ATAN: z = std::atan(x); break;
    case OP_SIN: z = std::sin(x); break;
    case OP_COS: z = std::cos(x); break;
    case OP_TAN: z = std::tan(x); break;
    case OP_ASIN: z = std::asin(x); break;
    case OP_ACOS: z = std::acos(x); break;
    case OP_SINH: z = std::sinh(x); break;
    case OP_COSH: z = std::cosh(x); break;
    case OP_TANH: z = std::tanh(x); break;
    case OP_ASINH: z = std::asinh(x); break;
    case OP_ACOSH: z = std::acosh(x); break;
    case OP_ATANH: z = std::atanh(x); break;
    case OP_SIGN: z = ovsign(x); break;
    case OP_LOG10: z = log10_of(x); break;
    case OP_LNGAMMA: z = ovlngamma(x); break;
    case OP_DIGAMMA: z = ovdigamma(x); break;
    case OP_TRIGAMMA: z = ovtrigamma(x); break;
    case OP_LNFACTORIAL: z = ovlnfactorial(x); break;
    case OP_LOGIT: z = ovlogit(x); break;
    case OP_INVLOGIT: z = ovinvlogit(x); break;
    case OP_CLOGLOG: z = ovcloglog(x); break;
    case OP_INVCLOGLOG: z = ovinvcloglog(x); break;
    default: return false;
    }
    *m->sp = x < misval ? xq_fin(z) : misval;
    return true;
}

// Two or three numbers, any of them missing gives misval.
static bool several(xeqrun *m, int32_t op)
{
    const double *a = m->sp;
    int32_t n = 2;
    double z = misval;
    switch (op) {
    case OP_ATAN2: z = std::atan2(a[0], a[-1]); break;
    case OP_COMB: z = ovcomb(a[0], a[-1]); break;
    case OP_NORMALDEN2: z = ovnormalden3(a[0], 0, a[-1]); break;
    case OP_LNNORMALDEN2: z = ovlnnormalden3(a[0], 0, a[-1]); break;
    case OP_LNNORMALDEN1: z = ovlnnormalden3(a[0], 0, 1); n = 1; break;
    case OP_NORMALDEN3: z = ovnormalden3(a[0], a[-1], a[-2]); n = 3; break;
    case OP_LNNORMALDEN3: z = ovlnnormalden3(a[0], a[-1], a[-2]); n = 3; break;
    default: return false;
    }
    bool missing = false;
    for (int32_t i = 0; i < n; i++)
        missing |= !(a[-i] < misval);
    m->sp -= n - 1;
    *m->sp = missing ? misval : xq_fin(z);
    return true;
}

// ---- functions with rules of their own for missing values

static double old_missing(double z) { return !mvmodern && z >= misval ? misval : z; }

static void group(xeqrun *m)
{
    double n = *m->sp, z = misval;
    if (n < misval) {
        if (m->obs1 == m->obs2)
            z = 1;
        else if (n > 0 && m->obs2 > m->obs1)
            z = std::floor(1 + double(m->obs - m->obs1)
                               * ((n - 0.000001) / double(m->obs2 - m->obs1)));
    }
    *m->sp = z;
}

// The arguments behind the first, which lies on top, in their order.
static void rest_of(const xeqrun *m, int32_t n, double *out)
{
    for (int32_t i = 1; i < n; i++)
        out[i - 1] = m->sp[-i];
}

static void counted(xeqrun *m, int32_t op)
{
    int32_t n = *m->pc++;
    double rest[xq_typestack], x = *m->sp, z = misval;
    rest_of(m, n, rest);
    switch (op) {
    case OP_MAX: z = ovmax(m->sp - (n - 1), n); break;
    case OP_MIN: z = ovmin(m->sp - (n - 1), n); break;
    case OP_ROUND: z = ovround(x, n == 2 ? rest[0] : 1); break;
    case OP_RECODE: z = ovrecode(x, rest, n - 1); break;
    case OP_IRECODE: z = ovirecode(x, rest, n - 1); break;
    case OP_COND:
        if (n == 4 && x >= misval)
            z = rest[2];
        else
            z = x != 0 ? rest[0] : rest[1];
        break;
    default:  // OP_INLIST
        z = 0;
        for (int32_t i = 0; i < n - 1; i++)
            z = z != 0 || old_missing(x) == old_missing(rest[i]);
    }
    m->sp -= n - 1;
    *m->sp = z;
}

static void inrange(xeqrun *m)
{
    double x = m->sp[0], a = m->sp[-1], b = m->sp[-2];
    m->sp -= 2;
    *m->sp = x < misval && (a >= misval || x >= a) && (b >= misval || x <= b);
}

static double by_answer(const xeqrun *m, xq_byask ask)
{
    if (xeq_byquery)
        return xeq_byquery(ask);
    switch (ask) {
    case BQ_BY: return byvar != 0;
    case BQ_LASTCALL: return lastby || !byvar;
    case BQ_N1: return m->n1 < 1 ? 1 : m->n1;
    case BQ_N2: return m->n2;
    default: return 1;
    }
}

// replay(): the program that runs was called without a varlist of its own.
static double replaying()
{
    const char *text = static_cast<const char *>(dmfind0("_0", typelmac));
    if (!text)  // an empty line leaves no macro
        return 1;
    while (*text == ' ')
        text++;
    return !*text || *text == ',';
}

static double old_result(double n)
{
    return n >= 0 && n < 21 ? usresult[int32_t(n)] : misval;
}

// ---- strings

static void in_place(xeqrun *m, char *(*f)(char *)) { f(*m->ss); }

static void through(xeqrun *m, char *(*f)(char *, const char *))
{
    char out[xq_slot];
    strcpy(*m->ss, f(out, *m->ss));
}

static void concatenate(xeqrun *m)
{
    char *l = m->ss[-1], *r = m->ss[0];
    size_t nl = strlen(l), nr = strlen(r);
    if (nl + nr > 244)
        nr = 244 - nl;
    memcpy(l + nl, r, nr);
    l[nl + nr] = 0;
    m->ss--;
}

static void string_of(xeqrun *m)
{
    bool hasfmt = *m->pc++ == 2, dpc = ovata_dpc;
    if (!hasfmt)
        strcpy(*++m->ss, "%9.0g");
    char out[xq_slot];
    ovata_dpc = false;
    str_string(out, *m->sp--, *m->ss);
    ovata_dpc = dpc;
    strcpy(*m->ss, out);
}

static void substitute(xeqrun *m, char *(*f)(char *, const char *, const char *, const char *,
                                             double))
{
    char out[xq_slot];
    f(out, m->ss[0], m->ss[-1], m->ss[-2], *m->sp--);
    m->ss -= 2;
    strcpy(*m->ss, out);
}

static void string_number(xeqrun *m, char *(*f)(char *, const char *, double))
{
    char out[xq_slot];
    strcpy(*m->ss, f(out, *m->ss, *m->sp--));
}

static void substring(xeqrun *m)
{
    char out[xq_slot];
    strcpy(*m->ss, str_substr(out, *m->ss, m->sp[0], m->sp[-1]));
    m->sp -= 2;
}

static void plural_of(xeqrun *m, bool third)
{
    char out[xq_slot];
    str_plural(out, *m->sp--, m->ss[0], third ? m->ss[-1] : nullptr);
    m->ss -= third;
    strcpy(*m->ss, out);
}

static void two_strings(xeqrun *m, double (*f)(const char *, const char *))
{
    double z = f(m->ss[0], m->ss[-1]);
    m->ss -= 2;
    *++m->sp = z;
}

static void condstr(xeqrun *m)
{
    int32_t n = *m->pc++;
    double x = *m->sp--;
    int32_t pick = n == 4 && x >= misval ? 2 : x != 0 ? 0 : 1;
    char keep[xq_slot];
    strcpy(keep, m->ss[-pick]);
    m->ss -= n - 2;
    strcpy(*m->ss, keep);
}

static void inrange_str(xeqrun *m)
{
    const char *x = m->ss[0], *a = m->ss[-1], *b = m->ss[-2];
    m->ss -= 3;
    *++m->sp = *x && (!*a || strcmp(x, a) >= 0) && (!*b || strcmp(x, b) <= 0);
}

static void inlist_str(xeqrun *m)
{
    int32_t n = *m->pc++;
    bool found = false;
    for (int32_t i = 1; i < n; i++)
        found |= !strcmp(m->ss[0], m->ss[-i]);
    m->ss -= n;
    *++m->sp = found;
}

// ---- regular expressions

static void bad_pattern(const xeqrun *m, const char *why)
{
    if (m->obs == m->obs1 || m->obs1 < 1)  // once a command is enough
        spout21fat(3, "regular expression not valid: %s\n", why);
}

static void regex_match(xeqrun *m)
{
    char why[128];
    int32_t rc = regx_match(m->ss[0], m->ss[-1], why, sizeof why);
    if (rc < 0)
        bad_pattern(m, why);
    m->ss -= 2;
    *++m->sp = rc > 0;
}

static void regex_replace(xeqrun *m)
{
    char out[xq_slot];
    regx_replace(m->ss[0], m->ss[-1], m->ss[-2], out, 244);
    out[244] = 0;
    m->ss -= 2;
    strcpy(*m->ss, out);
}

static void regex_sub(xeqrun *m)
{
    double n = *m->sp--;
    char *out = *++m->ss;
    *out = 0;
    bool legal = n >= 0 && n < 10;
    if (regx_sub(legal ? int32_t(n) : 0, out, 244) == 1)
        spout21at(3, "a regular expression match function must be executed prior to retrieving"
                     " a subexpression\n");
    if (!legal)
        *out = 0;
    out[244] = 0;
}

// ---- objects of the class system

int32_t (*xeq_classlook)(const char *path, double *num, char *str);

static void class_value(xeqrun *m, bool wantstr)
{
    double z = misval;
    char text[xq_slot] = "";
    if (xeq_classlook)
        (void)xeq_classlook(*m->ss, &z, wantstr ? text : nullptr);
    if (wantstr)
        strcpy(*m->ss, text);
    else {
        m->ss--;
        *++m->sp = z;
    }
}

static bool string_op(xeqrun *m, int32_t op)
{
    switch (op) {
    case OP_CLS: class_value(m, false); break;
    case OP_SCLS: class_value(m, true); break;
    case OP_CAT: concatenate(m); break;
    case OP_LENGTH: *++m->sp = double(strlen(*m->ss--)); break;
    case OP_REAL: *++m->sp = str_real(*m->ss--); break;
    case OP_STRPOS: two_strings(m, str_pos); break;
    case OP_STRING: string_of(m); break;
    case OP_SUBSTR: substring(m); break;
    case OP_LOWER: in_place(m, str_lower); break;
    case OP_UPPER: in_place(m, str_upper); break;
    case OP_PROPER: in_place(m, str_proper); break;
    case OP_LTRIM: in_place(m, str_ltrim); break;
    case OP_RTRIM: in_place(m, str_rtrim); break;
    case OP_TRIM: in_place(m, str_rtrim); in_place(m, str_ltrim); break;
    case OP_ITRIM: in_place(m, str_itrim); break;
    case OP_STRREVERSE: in_place(m, str_reverse); break;
    case OP_SOUNDEX: through(m, str_soundex); break;
    case OP_SOUNDEX_NARA: through(m, str_soundex_nara); break;
    case OP_STRSUBDP: through(m, str_subdp); break;
    case OP_STRMATCH: two_strings(m, str_match); break;
    case OP_INDEXNOT: two_strings(m, str_indexnot); break;
    case OP_WORDCOUNT: *++m->sp = str_wordcount(*m->ss--); break;
    case OP_WORD: string_number(m, str_word); break;
    case OP_ABBREV: string_number(m, str_abbrev); break;
    case OP_STRTONAME: string_number(m, str_toname); break;
    case OP_SUBINSTR: substitute(m, str_subinstr); break;
    case OP_SUBINWORD: substitute(m, str_subinword); break;
    case OP_PLURAL: plural_of(m, false); break;
    case OP_PLURAL3: plural_of(m, true); break;
    case OP_CHAR: str_char(*++m->ss, *m->sp--); break;
    case OP_CONDSTR: condstr(m); break;
    case OP_INRANGESTR: inrange_str(m); break;
    case OP_INLISTSTR: inlist_str(m); break;
    case OP_REGEXM: regex_match(m); break;
    case OP_REGEXR: regex_replace(m); break;
    case OP_REGEXS: regex_sub(m); break;
    case OP_FMTWIDTH: {
        int32_t w = fmtwidth(*m->ss--);
        *++m->sp = w ? w : misval;
        break;
    }
    default: return false;
    }
    return true;
}

static bool plain_op(xeqrun *m, int32_t op)
{
    double *a = m->sp;
    switch (op) {
    case OP_GROUP: group(m); break;
    case OP_MOD: a[-1] = ovmod(a[0], a[-1]); m->sp--; break;
    case OP_CHOP: a[-1] = ovchop(a[0], a[-1]); m->sp--; break;
    case OP_RELDIF: a[-1] = ovreldif(a[0], a[-1]); m->sp--; break;
    case OP_CLIP: a[-2] = ovclip(a[0], a[-1], a[-2]); m->sp -= 2; break;
    case OP_AUTOCODE: a[-3] = ovautocode(a[0], a[-1], a[-2], a[-3]); m->sp -= 3; break;
    case OP_MAX: case OP_MIN: case OP_ROUND: case OP_RECODE: case OP_IRECODE: case OP_COND:
    case OP_INLIST: counted(m, op); break;
    case OP_INRANGE: inrange(m); break;
    case OP_RESULT: *a = old_result(*a); break;
    case OP_UNIFORM0: *++m->sp = ovrandom(); break;
    case OP_RUNIFORM: *++m->sp = urnuni(); break;
    case OP_BY: *++m->sp = by_answer(m, BQ_BY); break;
    case OP_BYLASTCALL: *++m->sp = by_answer(m, BQ_LASTCALL); break;
    case OP_BYINDEX: *++m->sp = by_answer(m, BQ_INDEX); break;
    case OP_BYN1: *++m->sp = by_answer(m, BQ_N1); break;
    case OP_BYN2: *++m->sp = by_answer(m, BQ_N2); break;
    case OP_REPLAY: *++m->sp = replaying(); break;
    default: return false;
    }
    return true;
}

// Random variates; a missing parameter draws nothing.
static bool variate(xeqrun *m, int32_t op)
{
    const double *a = m->sp;
    int32_t n = 1;
    double z;
    switch (op) {
    case OP_RNORMAL0: z = rnormal(0, 1); n = 0; break;
    case OP_RNORMAL1: z = rnormal(a[0], 1); break;
    case OP_RNORMAL2: z = rnormal(a[0], a[-1]); n = 2; break;
    case OP_RBETA: z = rbeta(a[0], a[-1]); n = 2; break;
    case OP_RGAMMA: z = rgamma(a[0], a[-1]); n = 2; break;
    case OP_RPOISSON: z = rpoisson(a[0]); break;
    case OP_RBINOMIAL: z = rbinomial(a[0], a[-1]); n = 2; break;
    case OP_RHYPERGEOMETRIC: z = rhypergeometric(a[0], a[-1], a[-2]); n = 3; break;
    case OP_RNBINOMIAL: z = rnbinomial(a[0], a[-1]); n = 2; break;
    case OP_RT: z = rt(a[0]); break;
    case OP_RCHI2: z = rchi2(a[0]); break;
    default: return false;
    }
    m->sp -= n - 1;
    *m->sp = xq_fin(z);
    return true;
}

void xeq_rare(xeqrun *m, int32_t op)
{
    if (plain_op(m, op) || variate(m, op) || guarded(m, op) || string_op(m, op) || several(m, op)
        || xeq_dates(m, op) || xeq_dist(m, op) || xeq_terms(m, op))
        return;
    xeq_matrix(m, op);
}
