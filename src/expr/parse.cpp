// The record, its allow bytes, and the clauses of a command line. Options have a file of
// their own (options.cpp), as has the parse kept for by (byparse.cpp).
#include "expr/parse.h"
#include "core/mem.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/variables.h"
#include "expr/varlist.h"
#include "interp/messages.h"
#include "output/print.h"
#include "varlist/terms.h"
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <initializer_list>

parinfo_t parinfo_rec;
vl_mode pi_vlmode;
uint8_t pi_newtype;

#define ROW(field, value) {#field, value, uint16_t(offsetof(parinfo_t, field))}
const pi_default pi_defaults[] = {
    ROW(pi_unused0, 3),     ROW(pi_fvok, 3),
    ROW(pi_vlflag2, 0),     ROW(pi_vlflag3, 0),
    ROW(pi_vlflag4, 0),     ROW(pi_in, PI_NO),
    ROW(pi_if, PI_NO),      ROW(pi_vlist, PI_NO),
    ROW(pi_wgt, PI_NO),     ROW(pi_using, PI_NO),
    ROW(pi_exp, PI_NO),     ROW(pi_by, PI_NO),
    ROW(pi_opts, PI_NO),    ROW(pi_wgtmask, W_AW | W_FW),
    ROW(pi_blankall, 1),    ROW(pi_orin, 0),
    ROW(pi_stopunknown, 0), ROW(pi_pad11, 0),
    ROW(pi_exptype, W_NUM),
};
const int32_t npi_defaults = int32_t(sizeof pi_defaults / sizeof *pi_defaults);

void pi_allow_reset(parinfo_t *pi)
{
    for (const pi_default &d : pi_defaults)
        reinterpret_cast<uint8_t *>(pi)[d.at] = d.value;
    pi_vlmode = VL_OLD;
}

void pi_zap(parinfo_t *pi)
{
    *pi = parinfo_t{};
}

// A block that lives as long as the record; label tells whose memory is missing.
static void *allocfixed(size_t size, const char *label)
{
    void *p = safecalloc(size);
    if (!p)
        (void)errout(RC_DMMEM, "insufficient memory for %s\n", label);
    return p;
}

int32_t pi_init(parinfo_t *pi)
{
    pi_zap(pi);
    pi_allow_reset(pi);
    pi->ifpgm = static_cast<xeqpgm *>(allocfixed(sizeof(xeqpgm), "ifpgm"));
    pi->wepgm = static_cast<xeqpgm *>(allocfixed(sizeof(xeqpgm), "wepgm"));
    pi->vl_vr = static_cast<int32_t *>(allocfixed(sizeof(int32_t) * maxvlist, "vl_vr"));
    pi->vl_rcp = static_cast<vlrecipe *>(allocfixed(sizeof(vlrecipe) * maxvlist, "vl_rcp"));
    if (pi->ifpgm && pi->wepgm && pi->vl_vr && pi->vl_rcp) {
        pi->ifpgm->ncode = pi->ifpgm->nsum = pi->wepgm->ncode = pi->wepgm->nsum = -1;
        return 0;
    }
    pi_free(pi);
    return RC_DMMEM;
}

void pi_free(parinfo_t *pi)
{
    safefree(pi->ifpgm);
    safefree(pi->wepgm);
    safefree(pi->vl_vr);
    safefree(pi->vl_rcp);
    pi->ifpgm = pi->wepgm = nullptr;
    pi->vl_vr = nullptr;
    pi->vl_rcp = nullptr;
}

void pi_initialize_xeq(parinfo_t *pi)
{
    for (xeqpgm *pgm : {pi->ifpgm, pi->wepgm})
        memset(pgm->sums, 0, sizeof pgm->sums);
}

void pi_initialize_compexp_xeq(parinfo_t *pi)
{
    initialize_compexp_shared();
    pi_initialize_xeq(pi);
}

// ---- in

static char *skipblanks(char *p)
{
    while (*p == ' ')
        p++;
    return p;
}

// One end of a range: a whole number, f or l. Returns the position behind, or null.
static char *rangeend(char *p, int32_t N, int64_t *obs)
{
    if ((*p | 0x20) == 'f' || (*p | 0x20) == 'l') {
        *obs = (*p | 0x20) == 'f' ? 1 : N;
        p++;
    } else {
        bool neg = *p == '-';
        p += neg;
        if (*p < '0' || *p > '9')
            return nullptr;
        int64_t v = 0;
        for (; *p >= '0' && *p <= '9'; p++)
            v = v > INT32_MAX ? v : v * 10 + (*p - '0');
        *obs = neg ? N + 1 - v : v;
    }
    return *p && strchr(" /,[=", *p) ? p : *p ? nullptr : p;
}

int32_t ti_range(toktype *ti, int32_t N, bool wide, int32_t *obs1, int32_t *obs2, char *text)
{
    char *start = skipblanks(ti->c_ptr);
    int64_t a, b;
    char *p = rangeend(start, N, &a);
    if (!p)
        return error(RC_SYNTAX);
    b = a;
    char *q = skipblanks(p);
    if (*q == '/' && !(p = rangeend(skipblanks(q + 1), N, &b)))
        return error(RC_SYNTAX);
    ti->c_ptr = p;
    ti->lc_ptr = nullptr;
    if (text)
        snprintf(text, 32, "%.*s", int(p - start), start);
    if (a < 1 || b < a || b > max_theory_N || (b > N && !wide))
        return errout(RC_SYNTAX, "Obs. nos. out of range\n");
    *obs1 = int32_t(a);
    *obs2 = int32_t(b);
    return 0;
}

static int32_t parse_in(toktype *ti, parinfo_t *pi, bool *seen)
{
    if (pi->pi_in == PI_NO)
        return notalow("in range");
    if (byvar)
        return errout(RC_BY, "'in' may not be combined with 'by'\n");
    if (*seen)
        return error(RC_SYNTAX);
    *seen = true;
    int32_t rc = ti_range(ti, _Nobs, pi->pi_in == PI_WIDE, &pi->pi_obs1, &pi->pi_obs2,
                          pi->pi_intext);
    pi->pi_hasin = !rc;
    return rc;
}

// ---- weights

static const struct {
    const char *word;
    uint8_t min, kind;
} weightwords[] = {
    {"weight", 1, 0},     {"cellsize", 4, W_AW}, {"frequency", 4, W_FW}, {"fweight", 2, W_FW},
    {"aweight", 2, W_AW}, {"pweight", 2, W_PW},  {"iweight", 2, W_IW},
};

void wgtkeyword(char *buf, int32_t kind)
{
    const char *word = kind == W_AW   ? "aweight"
                       : kind == W_FW ? "fweight"
                       : kind == W_PW ? "pweight"
                       : kind == W_IW ? "iweight"
                                      : "";
    strcpy(buf, word);
}

void pi_wgtdflt(parinfo_t *pi, int32_t kind)
{
    if (pi->pi_wtype_typed || pi->pi_wtype || !pi->pi_hasexp)
        return;
    pi->pi_wtype = uint8_t(kind);
    if (runprog || byvar == 2)
        return;
    const char *word = kind == W_AW   ? "analytic"
                       : kind == W_FW ? "frequency"
                       : kind == W_PW ? "sampling"
                                      : "importance";
    spout21fat(1, "(%s weights assumed)\n", word);
}

static int32_t weightkind(const char *word, uint8_t mask, uint8_t *kind)
{
    size_t n = strlen(word);
    for (const auto &w : weightwords) {
        if (n < w.min || strncmp(word, w.word, n))
            continue;
        *kind = w.kind;
        if (!w.kind || (w.kind & mask))
            return 0;
        char full[16];
        wgtkeyword(full, w.kind);
        return notalow(full);
    }
    return errout(RC_SYNTAX, "%s unknown weight type\n", word);
}

// Behind the opening bracket.
static int32_t parse_weight(toktype *ti, parinfo_t *pi, bool *seen)
{
    if (!strcmp(ti_gettok(ti, prsestd), "]"))
        return 0;
    if (pi->pi_wgt == PI_NO)
        return notalow("weights");
    if (*seen || pi->pi_hasexp)
        return errout(RC_SYNTAX, "too many weights\n");
    *seen = true;
    uint8_t kind = 0;
    int32_t rc = weightkind(ti->token, pi->pi_wgtmask, &kind);
    if (rc)
        return rc;
    if ((rc = ti_gtokis(ti, '=')))
        return rc;
    rc = ti_compexp(ti, pi->wepgm, W_NUM, true, false, pi->pi_altvarlist, pi->pi_altnvars);
    if (rc)
        return rc;
    if ((rc = ti_gtokis(ti, ']')))
        return rc;
    pi->pi_wtype = pi->pi_wtype_typed = kind;
    pi->pi_hasexp = 1;
    return 0;
}

// ---- the other clauses

static int32_t parse_if(toktype *ti, parinfo_t *pi)
{
    if (pi->pi_if == PI_NO)
        return notalow("if");
    if (pi->pi_hasif)
        return error(RC_SYNTAX);
    int32_t visible = _i_Kvar;
    if (pi->pi_in == PI_WIDE)
        _i_Kvar = _Kvar;
    int32_t rc = ti_compexp(ti, pi->ifpgm, W_NUM, false, pi->pi_if == PI_FIND, pi->pi_altvarlist,
                            pi->pi_altnvars);
    _i_Kvar = visible;
    pi->pi_hasif = !rc;
    return rc;
}

static int32_t parse_using(toktype *ti, parinfo_t *pi)
{
    if (pi->pi_using == PI_NO)
        return notalow("using");
    if (*pi->pi_using_name)
        return error(RC_SYNTAX);
    char next = ti_peektok_chr(ti);
    if (pi->pi_using == PI_WIDE && (!next || next == ','))
        return 0;
    int32_t rc = ti_gettokfn(ti, pi->pi_using_name);
    return rc ? error(rc) : 0;
}

static int32_t parse_exp(toktype *ti, parinfo_t *pi)
{
    uint8_t wanted = pi->pi_exptype;
    bool old = pi->pi_exp == PI_NO;
    if (old && pi->pi_wgt == PI_NO)
        return notalow("=exp");
    if (pi->pi_hasexp)
        return error(RC_SYNTAX);
    if (old) {  // =exp for a weight, as it was once written
        pi->pi_oldwgt = 1;
        pi->pi_wtype = 0;
        pi->pi_exptype = wanted = W_NUM;
    }
    int32_t rc =
        ti_compexp(ti, pi->wepgm, wanted, false, false, pi->pi_altvarlist, pi->pi_altnvars);
    if (rc)
        return rc;
    pi->pi_hasexp = 1;
    if (!old)
        return 0;
    if (vernum >= 300)
        return error(RC_SYNTAX);
    if (!runprog)
        spout21at(1, "(please avoid =exp old-style weight syntax)\n");
    return 0;
}

static int32_t parse_varlist(toktype *ti, parinfo_t *pi)
{
    pi->pi_nvar = 0;
    pi->pi_hasvlist = 0;
    pi_nnew = 0;
    if (pi->pi_vlist == PI_NO)
        return 0;
    int32_t rc;
    if (pi_vlmode == VL_OLD && pi->pi_fvok == 1 && !ti->ugetflg && fv_needed(ti->c_ptr)) {
        static fvspec typed;
        if ((rc = ti_fv_parse(ti, FV_TS | FV_FACTOR, &typed)))
            return rc;
        pi->pi_hasvlist = !typed.term.empty();
        if (pi->pi_hasvlist)
            pi->pi_fvtoc = &typed;
    } else if (pi_vlmode == VL_OLD) {
        if ((rc = ti_ssvlist(ti, pi->vl_vr, &pi->pi_nvar)))
            return rc;
        pi->pi_hasvlist = pi->pi_nvar > 0;
    } else {
        if ((rc = ti_newvlist(ti)))
            return rc;
        pi->pi_hasvlist = pi_nnew > 0;
        if (pi_vlmode == VL_NEW1 && pi_nnew != 1)
            return error(pi_nnew ? RC_TOOMANYVARS : RC_TOOFEWVARS);
        if (pi_vlmode != VL_NAMES && (rc = vlist_make(pi->vl_vr, &pi->pi_nvar)))
            return rc;
    }
    if (pi->pi_hasvlist)
        return 0;
    if (pi->pi_vlist == PI_REQ)
        return required("varlist");
    if (pi->pi_blankall && pi_vlmode == VL_OLD)
        pi->pi_nvar = vlist_all(pi->vl_vr);
    return 0;
}

// The clauses in whatever order, to the end or to a token that starts none. left tells
// whether there was one; it is then the next token.
static int32_t clauses(toktype *ti, parinfo_t *pi, bool *left)
{
    bool hadin = false, hadweight = false;
    *left = false;
    for (;;) {
        const char *t = ti_gettok(ti, prsestd);
        int32_t rc;
        if (!*t)
            return 0;
        if (!strcmp(t, "if") && !(pi->pi_hasif && pi->pi_stopunknown))
            rc = parse_if(ti, pi);
        else if (!strcmp(t, "in"))
            rc = parse_in(ti, pi, &hadin);
        else if (!strcmp(t, "using"))
            rc = parse_using(ti, pi);
        else if (!strcmp(t, "="))
            rc = parse_exp(ti, pi);
        else if (!strcmp(t, ","))
            rc = ti_proption(ti, pi);
        else if (!strcmp(t, "["))
            rc = parse_weight(ti, pi, &hadweight);
        else {
            *left = true;
            return 0;
        }
        if (rc)
            return rc;
    }
}

static int32_t finalchecks(toktype *ti, parinfo_t *pi, bool left)
{
    if (pi->pi_orin && !pi->pi_hasin && !pi->pi_hasvlist && !pi->pi_hasif)
        return required("varlist or in range");
    if (pi->pi_in == PI_REQ && !pi->pi_hasin)
        return required("in range");
    if (pi->pi_using == PI_REQ && !*pi->pi_using_name)
        return required("using");
    if (pi->pi_exp == PI_REQ && !pi->pi_hasexp)
        return required("=exp");
    if (!left)
        return 0;
    if (pi->pi_stopunknown) {
        ti_ungettok(ti);
        return 0;
    }
    return errout(RC_SYNTAX, "invalid '%s'\n", tok_text(ti->token));
}

int32_t ti_parse1(toktype *ti, parinfo_t *pi)
{
    pi->pi_wtype = pi->pi_wtype_typed = pi->pi_oldwgt = 0;
    if (pi->pi_if == 2)
        pi->pi_if = PI_OK;
    if (byvar) {
        if (pi->pi_by == PI_NO)
            return error(RC_BY);
        pi->pi_obs1 = nobss1;
        pi->pi_obs2 = nobss2;
    } else {
        pi->pi_obs1 = 1;
        pi->pi_obs2 = _Nobs;
        nobss1 = 1;
        nobss2 = _Nobs;
    }
    pi->pi_hasin = byvar != 0;
    initialize_compexp_shared();
    pi->pi_hasif = pi->pi_hasexp = pi->pi_hasvlist = 0;
    pi->pi_using_name[0] = pi->pi_intext[0] = '\0';
    pi->pi_nopt = 0;
    opt_failrc = 0;
    bool left;
    int32_t rc = parse_varlist(ti, pi);
    if (!rc && !(rc = clauses(ti, pi, &left)))
        rc = finalchecks(ti, pi, left);
    return rc;
}

int32_t ti_parse_ifinopts(toktype *ti, parinfo_t *pi)
{
    pi->pi_vlist = pi->pi_exp = pi->pi_wgt = pi->pi_using = PI_NO;
    return ti_parse1(ti, pi);
}

// ---- helpers

int32_t chkrange(const char *name, int32_t value, int32_t low, int32_t high)
{
    if (value >= low && value <= high)
        return 0;
    return errout(RC_SYNTAX, "%s must be between %d and %d\n", name, low, high);
}

int32_t dchkrange(const char *name, double value, double low, double high)
{
    if (value >= low && value <= high)
        return 0;
    return errout(RC_SYNTAX, "%s must be between %.10g and %.10g\n", name, low, high);
}

void ti_pfixeq(toktype *ti)
{
    if (ti->ugetflg)
        return;
    char c = ti_peektok_chr(ti);
    if (c && c != ',' && c != '=')
        ti_pushtok(ti, "=");
}

void ti_optionallyclear(toktype *ti)
{
    gettok_state at;
    ti_stattok(ti, &at);
    int32_t depth = 0;
    bool comma = false, clear = false;
    for (const char *t = ti_gettok(ti, prseopt); *t && !clear; t = ti_gettok(ti, prseopt)) {
        depth += (*t == '(') - (*t == ')');
        comma |= depth == 0 && !strcmp(t, ",");
        clear = comma && depth == 0 && !strcmp(t, "clear");
    }
    ti_resettok(ti, &at);
    if (clear)
        drop_all();
}
