// mark, marksample, markout, markin: which observations a command uses, as a 0/1 variable.
#include "core/mem.h"
#include "core/missing.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/variables.h"
#include "expr/expr.h"
#include "expr/parse.h"
#include "interp/interp.h"
#include "interp/macros.h"
#include "interp/messages.h"
#include "varlist/terms.h"
#include "output/fmt.h"
#include "output/print.h"
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

using str = std::string;

namespace {

struct sample {
    int32_t first, last;  // observations it may hold
    str if_;              // condition, or empty
    str weight, exp;
    bool zeroweight = false, strok = false, sysmissok = false, noby = false;
};

// The group of a program that by calls once for each, else the whole dataset.
void start(sample *s)
{
    bool group = by_env.on && by_env.recall && !s->noby;
    s->first = group ? by_env.n1 : 1;
    s->last = group ? by_env.n2 : _Nobs;
}

const char *local(const char *name)
{
    const char *p = macptr(name);
    return p ? p : "";
}

const char *behind(const char *text, const char *word)
{
    while (*text == ' ')
        text++;
    size_t n = strlen(word);
    return strncmp(text, word, n) ? text : text + n;
}

int32_t compile(const str &text, xeqpgm *pgm, bool empty)
{
    toktype ti;
    str copy(text);
    ti_settok(&ti, copy.data());
    nobss1 = parinfo->pi_obs1;
    nobss2 = parinfo->pi_obs2;
    if (empty)
        initialize_compexp_shared();
    int32_t rc = ti_compexp(&ti, pgm, W_NUM, false, false, nullptr, 0);
    return rc ? rc : *ti_gettok(&ti, prsestd) ? error(RC_SYNTAX) : 0;
}

int32_t narrow(const str &in, sample *s)
{
    if (in.empty())
        return 0;
    toktype ti;
    str copy(in);
    char text[64];
    int32_t a, b;
    ti_settok(&ti, copy.data());
    int32_t rc = ti_range(&ti, _Nobs, false, &a, &b, text);
    if (rc)
        return rc;
    s->first = a > s->first ? a : s->first;
    s->last = b < s->last ? b : s->last;
    return 0;
}

int32_t make_marker(const char *name, int32_t *var)
{
    // A marker goes with the program that asked for it, so the limit gives way.
    uint32_t limit = sysdsa->K_max;
    if (sysdsa->K >= limit)
        sysdsa->K_max = sysdsa->K + 1;
    *var = addvar(T_BYTE, name);
    sysdsa->K_max = limit;
    if (*var < 0)
        return -*var;
    _i_Kvar = _Kvar;
    for (int32_t i = 1; i <= _Nobs; i++)
        dsa_store(0, sysdsa, uint32_t(*var), uint32_t(i));
    return 0;
}

// Weights that make an observation useless; frequencies must be whole, none may be negative.
int32_t weigh(const sample &s, double w, bool *use)
{
    if (ovismissing(w) || (w == 0 && !s.zeroweight))
        *use = false;
    else if (w < 0 && s.weight != "iweight")
        return error(402);
    else if (s.weight == "fweight" && w != double(int64_t(w)))
        return error(401);
    return 0;
}

int32_t fill(int32_t marker, const sample &s)
{
    static xeqpgm cond, wgt;
    parinfo->pi_obs1 = by_env.on && by_env.recall && !s.noby ? by_env.n1 : 1;
    parinfo->pi_obs2 = by_env.on && by_env.recall && !s.noby ? by_env.n2 : _Nobs;
    bool hasif = !s.if_.empty(), haswgt = !s.exp.empty();
    int32_t rc = hasif ? compile(s.if_, &cond, true) : 0;
    if (!rc && haswgt)
        rc = compile(s.exp, &wgt, !hasif);
    if (rc)
        return rc;
    for (int32_t i = s.first; i <= s.last; i++) {
        if (fault_poll())
            return stopflag;
        bool use = !hasif || pi_xeq(parinfo, &cond, i) != 0;
        if (use && haswgt && (rc = weigh(s, pi_xeq(parinfo, &wgt, i), &use)))
            return rc;
        if (use)
            dsa_store(1, sysdsa, uint32_t(marker), uint32_t(i));
    }
    return 0;
}

// Takes out what is missing in a variable. A string counts when strings are allowed.
void out_missing(int32_t marker, int32_t var, const sample &s)
{
    bool isstr = t_isstr(_typlist[var - 1]);
    char buf[246];
    for (int32_t i = 1; i <= _Nobs; i++) {
        bool gone;
        if (isstr)
            gone = !s.strok || !*dsa_sdata(sysdsa, uint32_t(var), uint32_t(i), buf);
        else {
            double z = dsa_data(sysdsa, uint32_t(var), uint32_t(i));
            gone = ovismissing(z) && !(s.sysmissok && mis_letter(z) == 0);
        }
        if (gone)
            dsa_store(0, sysdsa, uint32_t(marker), uint32_t(i));
    }
}

// Operated variables are out where their value is missing; levels where the variable is.
int32_t out_operated(int32_t marker, const char *names, const sample &s)
{
    fvspec typed;
    int32_t rc = fv_text(names, FV_TS | FV_FACTOR, &typed);
    if (!rc && (typed.has & FV_TS))
        rc = ts_init();
    for (size_t k = 0; k < typed.term.size() && !rc; k++)
        for (const fvatom &a : typed.term[k].part) {
            if (!a.ts.any()) {
                out_missing(marker, a.var, s);
                continue;
            }
            for (int32_t i = 1; i <= _Nobs; i++)
                if (rcpxeq(a.var, a.ts, i) >= misval)
                    dsa_store(0, sysdsa, uint32_t(marker), uint32_t(i));
        }
    return rc;
}

int32_t out_list(int32_t marker, const char *names, const sample &s)
{
    if (fv_needed(names))
        return out_operated(marker, names, s);
    std::unique_ptr<int32_t[]> v(new (std::nothrow) int32_t[size_t(max_theory_k) + 1]);
    if (!v)
        return error(RC_NOMEM);
    int32_t n = 0, rc = vlist_text(names, v.get(), &n, max_theory_k);
    for (int32_t i = 0; i < n && !rc; i++)
        out_missing(marker, v[size_t(i)], s);
    return rc;
}

struct flagword {
    const char *word;
    bool *flag;
};
int32_t flags(std::initializer_list<flagword> words)
{
    const char *tok = ti_gettok(tokinfo, prsestd);
    if (!*tok)
        return 0;
    if (*tok != ',')
        return error(RC_SYNTAX);
    while (*(tok = ti_gettok(tokinfo, prsestd))) {
        bool found = false;
        for (const flagword &w : words)
            if (!strcmp(tok, w.word))
                *w.flag = found = true;
        if (!found)
            return errout(RC_SYNTAX, "option %s not allowed\n", tok_text(tok));
    }
    return 0;
}

int32_t local_name(str *out)
{
    *out = str("_") + ti_gettok(tokinfo, prsestd);
    if (out->size() == 1)
        return required("name");
    return mac_goodname(out->c_str(), out->size()) ? 0 : invalid(out->c_str() + 1);
}

int32_t markvar(int32_t *var)
{
    const char *tok = ti_gettok(tokinfo, prsestd);
    if (!*tok)
        return required("varname");
    *var = findtyped(tok, true);
    return *var < 0 ? -*var : 0;
}

}  // namespace

// marksample NAME [, novarlist strok zeroweight noby]
int32_t marksample(int32_t)
{
    str name;
    sample s;
    bool novarlist = false;
    int32_t rc = local_name(&name), var;
    if (rc || (rc = flags({{"novarlist", &novarlist}, {"strok", &s.strok}, {"noby", &s.noby},
                           {"zeroweight", &s.zeroweight}})))
        return rc;
    start(&s);
    s.if_ = behind(local("_if"), "if ");
    s.weight = local("_weight");
    if (!s.weight.empty())
        s.exp = behind(local("_exp"), "=");
    str names = local("_varlist");
    if ((rc = narrow(behind(local("_in"), "in "), &s)))
        return rc;
    char fresh[16];
    mktmpvn(fresh);
    if ((rc = make_marker(fresh, &var)) || (rc = macresave(name.c_str(), fresh)) ||
        (rc = fill(var, s)))
        return rc;
    return novarlist || names.empty() ? 0 : out_list(var, names.c_str(), s);
}

// mark NEWVAR [if] [in] [weight] [, zeroweight noby]
int32_t markcmd(int32_t)
{
    str name = ti_gettok(tokinfo, prsestd);
    sample s;
    int32_t var, rc;
    if (name.empty())
        return required("newvar");
    parinfo->pi_vlist = parinfo->pi_exp = parinfo->pi_using = PI_NO;
    parinfo->pi_if = parinfo->pi_in = parinfo->pi_wgt = parinfo->pi_opts = PI_OK;
    parinfo->pi_wgtmask = W_ALL4;
    parinfo->pi_blankall = 0;
    if ((rc = ti_pi_parse(tokinfo, parinfo)))
        return rc;
    s.zeroweight = ti_pi_hasopt(tokinfo, parinfo, "zeroweight", 4);
    s.noby = ti_pi_hasopt(tokinfo, parinfo, "noby", 4);
    if ((rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    char kind[16] = "";
    if (parinfo->pi_wtype)
        wgtkeyword(kind, parinfo->pi_wtype);
    s.weight = kind;
    start(&s);
    int32_t a = parinfo->pi_obs1 > s.first ? parinfo->pi_obs1 : s.first;
    int32_t b = parinfo->pi_obs2 < s.last ? parinfo->pi_obs2 : s.last;
    if ((rc = make_marker(name.c_str(), &var)))
        return rc;
    for (int32_t i = a; i <= b; i++) {
        bool use = selobs(i);
        if (use && parinfo->pi_hasexp &&
            (rc = weigh(s, pi_xeq(parinfo, parinfo->wepgm, i), &use)))
            return rc;
        if (use)
            dsa_store(1, sysdsa, uint32_t(var), uint32_t(i));
        if (fault_poll())
            return stopflag;
    }
    return 0;
}

// markout MARKVAR [varlist] [, strok sysmissok]
int32_t markout(int32_t)
{
    sample s;
    int32_t marker = 0, rc = markvar(&marker);
    if (rc)
        return rc;
    const char *b = ti_wheretok(tokinfo), *comma = strchr(b, ',');
    str names(b, comma ? comma : b + strlen(b));
    ti_settok(tokinfo, ti_wheretok(tokinfo) + names.size());
    if ((rc = flags({{"strok", &s.strok}, {"sysmissok", &s.sysmissok}})))
        return rc;
    if (names.find_first_not_of(' ') == str::npos)
        return 0;
    return out_list(marker, names.c_str(), s);
}

// markin [if] [in] [, name(local) noby]: the range that holds the sample, into `in'.
int32_t markin(int32_t)
{
    str name = "_in";
    char arg[40] = "";
    sample s;
    parinfo->pi_vlist = parinfo->pi_exp = parinfo->pi_using = parinfo->pi_wgt = PI_NO;
    parinfo->pi_if = parinfo->pi_in = parinfo->pi_opts = PI_OK;
    parinfo->pi_blankall = 0;
    int32_t rc = ti_pi_parse(tokinfo, parinfo);
    if (rc)
        return rc;
    if (ti_pi_findargn(tokinfo, parinfo, "name", 4, arg, 33, 1))
        name = str("_") + arg;
    s.noby = ti_pi_hasopt(tokinfo, parinfo, "noby", 4);
    if ((rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    if (!mac_goodname(name.c_str(), name.size()))
        return invalid(arg);
    start(&s);
    int32_t a = 0, b = 0;
    int32_t lo = parinfo->pi_obs1 > s.first ? parinfo->pi_obs1 : s.first;
    int32_t hi = parinfo->pi_obs2 < s.last ? parinfo->pi_obs2 : s.last;
    for (int32_t i = lo; i <= hi; i++)
        if (selobs(i)) {
            a = a ? a : i;
            b = i;
        }
    str text = a == 0 || (a == 1 && b == _Nobs) ? ""
                                                : "in " + std::to_string(a) + "/" + std::to_string(b);
    return macresave(name.c_str(), text.c_str());
}
