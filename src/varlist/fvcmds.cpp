// Commands over lists with operators.
//
//   fvexpand varlist [if] [in]                    the columns of a list
//   fvrevar  varlist [if] [in] [, list substitute stub(name)]   variables for them
//   tsrevar  varlist [, list substitute]          the same for time-series operators alone
//   unopvarlist varlist                           the variables behind a list
//   _fvparse varlist                              the terms of a list, their levels not looked up
//   _fv_term_info varlist [if] [in]               its terms one by one
//   _fv_check_depvar varlist [, k(#)]             the first k take no operators of factors
//   _fvsum varlist [if] [in] [weight]             means of the columns
//   _fvisclear varlist                            has any of them a base of its own?
#include "core/missing.h"
#include "core/rc.h"
#include "core/state.h"
#include "core/text.h"
#include "data/dsa.h"
#include "data/labels.h"
#include "data/umat.h"
#include "data/variables.h"
#include "interp/messages.h"
#include "output/print.h"
#include "stats/crossprod.h"
#include "stats/results.h"
#include "stats/statparse.h"
#include "varlist/terms.h"
#include <algorithm>
#include <cstring>

namespace
{

// Reads the line; how: 'c' columns over the sample, 't' terms only.
int32_t parse(char how, uint8_t weights = 0)
{
    statline line;
    line.vlist = PI_REQ;
    line.weights = weights;
    line.weightdflt = W_AW;
    line.by = weights != 0;
    line.fv = true;
    parinfo->pi_vlflag2 = how == 'c' && !weights;
    parinfo->pi_vlflag3 = how == 't';
    return stat_parse(line);
}

const fvspec *spec_of_parse()
{
    static fvspec plain;
    if (parinfo->pi_fvtoc)
        return static_cast<const fvspec *>(parinfo->pi_fvtoc);
    plain = fvspec{};
    for (int32_t i = 0; i < parinfo->pi_nvar; i++) {
        fvatom a;
        a.var = parinfo->vl_vr[i];
        plain.term.push_back({{a}});
    }
    return &plain;
}

void say_ops(const fvspec &s)
{
    retval_set_glocal("fvops", s.has & FV_FACTOR ? "true" : "");
    retval_set_glocal("tsops", s.has & FV_TS ? "true" : "");
}

std::string entries()
{
    std::string list;
    for (int32_t i = 0; i < parinfo->pi_nvar; i++)
        list += (i ? " " : "") + std::string(fv_name(parinfo->vl_vr[i]));
    return list;
}

// The variables behind a list, each once.
std::string behind(const fvspec &s)
{
    std::vector<int32_t> seen;
    std::string list;
    for (const fvterm &t : s.term)
        for (const fvatom &a : t.part)
            if (std::find(seen.begin(), seen.end(), a.var) == seen.end()) {
                seen.push_back(a.var);
                list += (list.empty() ? "" : " ") + std::string(_varlist[a.var - 1]);
            }
    return list;
}

// ---- variables for columns

struct revar {
    bool list, substitute;
    char stub[33];
    int32_t made = 0;
};

void new_name(revar *r, char *name)
{
    if (!*r->stub) {
        mktmpvn(name);
        return;
    }
    std::string s = r->stub + std::to_string(++r->made);
    strcut(name, 33, s.c_str());
}

// A variable that holds a column, labelled with its name.
int32_t make_variable(revar *r, const termname &t, int32_t *var)
{
    char name[33];
    new_name(r, name);
    bool flags = true;
    for (int32_t i = 0; i < t.n; i++)
        flags &= t.part[i].kind == TP_LEVEL;
    *var = addvar(flags ? T_BYTE : T_DOUBLE, name);
    if (*var < 0)
        return -*var;
    for (int32_t i = 1; i <= _Nobs; i++) {
        if ((i & 0xffff) == 0 && fault_poll())
            return stopflag;
        double z = fv_xeq(t, i);
        dsa_store(z, sysdsa, uint32_t(*var), uint32_t(i));
    }
    char label[81];
    strcut(label, sizeof label, term_write(t).c_str());
    return putvarlab(*var, label);
}

int32_t make_all(revar *r, const std::vector<termname> &cols, std::string *out)
{
    for (const termname &t : cols) {
        const termpart &p = t.part[0];
        std::string name = p.name;
        if (t.n > 1 || p.kind == TP_LEVEL || p.ts.any() || p.marks) {
            int32_t var = 0, rc = make_variable(r, t, &var);
            if (rc)
                return rc;
            name = _varlist[var - 1];
        }
        *out += (out->empty() ? "" : " ") + name;
    }
    _i_Kvar = _Kvar;
    return 0;
}

int32_t revar_options(revar *r)
{
    r->list = stat_option("list", 4);
    r->substitute = stat_option("substitute", 3);
    if (!ti_pi_findargn(tokinfo, parinfo, "stub", 4, r->stub, 24, 1))
        *r->stub = 0;
    (void)stat_option("tsonly", 6);
    return ti_pi_chkopt(tokinfo, parinfo);
}

// Columns as they stand in the parse, plain variables among them.
std::vector<termname> columns_of_parse()
{
    std::vector<termname> cols;
    for (int32_t i = 0; i < parinfo->pi_nvar; i++) {
        int32_t v = parinfo->vl_vr[i];
        if (v < 0) {
            cols.push_back(fv_current.col[size_t(-v) - 1]);
            continue;
        }
        termname t;
        t.n = 1;
        t.part[0].var = v;
        strcpy(t.part[0].name, _varlist[v - 1]);
        cols.push_back(t);
    }
    return cols;
}

} // namespace

int32_t fvexpand(int32_t);
int32_t fvexpand(int32_t)
{
    int32_t rc = parse('c');
    if (rc || (rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    retval_clear();
    say_ops(*spec_of_parse());
    retval_set_glocal("varlist", entries().c_str());
    return 0;
}

int32_t fvrevar(int32_t);
int32_t fvrevar(int32_t)
{
    revar r;
    int32_t rc = parse('c');
    if (rc || (rc = revar_options(&r)))
        return rc;
    std::string out;
    const fvspec *s = spec_of_parse();
    if (r.list || r.substitute)
        out = behind(*s);
    else if ((rc = make_all(&r, columns_of_parse(), &out)))
        return rc;
    retval_clear();
    say_ops(*s);
    retval_set_glocal("varlist", out.c_str());
    return 0;
}

int32_t tsrevar(int32_t);
int32_t tsrevar(int32_t)
{
    revar r;
    int32_t rc = parse('t');
    if (rc || (rc = revar_options(&r)))
        return rc;
    const fvspec *s = spec_of_parse();
    if (s->has & FV_FACTOR)
        return error(6102);
    fvlist l;
    std::string out;
    if (r.list || r.substitute)
        out = behind(*s);
    else if ((rc = fv_expand(*s, nullptr, &l)) || (rc = make_all(&r, l.col, &out)))
        return rc;
    retval_clear();
    say_ops(*s);
    retval_set_glocal("varlist", out.c_str());
    return 0;
}

int32_t unopvarlist(int32_t);
int32_t unopvarlist(int32_t)
{
    int32_t rc = parse('t');
    if (rc || (rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    const fvspec *s = spec_of_parse();
    retval_clear();
    say_ops(*s);
    retval_set_glocal("varlist", behind(*s).c_str());
    return 0;
}

int32_t fvparsecmd(int32_t);
int32_t fvparsecmd(int32_t)
{
    int32_t rc = parse('t');
    if (rc || (rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    const fvspec *s = spec_of_parse();
    retval_clear();
    retval_set_gscalar(double(s->term.size()), "k_terms");
    say_ops(*s);
    retval_set_glocal("varlist", fv_write(*s).c_str());
    return 0;
}

int32_t fvterminfo(int32_t);
int32_t fvterminfo(int32_t)
{
    int32_t rc = parse('c');
    if (rc || (rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    const fvspec *s = spec_of_parse();
    fvlist plain;
    const fvlist *l = &fv_current;
    if (!parinfo->pi_fvtoc) {
        if ((rc = fv_expand(*s, nullptr, &plain)))
            return rc;
        l = &plain;
    }
    retval_clear();
    retval_set_gscalar(l->nterm, "k_terms");
    retval_set_gscalar(double(l->col.size()), "k");
    for (int32_t k = 0; k < l->nterm; k++) {
        int32_t size = 0, omitted = 0;
        for (size_t j = 0; j < l->col.size(); j++)
            if (l->term[j] == k) {
                size++;
                omitted += term_isomitted(l->col[j]);
            }
        const fvterm &t = s->term[size_t(k)];
        std::string n = std::to_string(k + 1);
        retval_set_gscalar(size, ("size" + n).c_str());
        retval_set_gscalar(omitted, ("omit" + n).c_str());
        retval_set_glocal(("term" + n).c_str(), fv_write(t).c_str());
        retval_set_glocal(("type" + n).c_str(), t.part.size() > 1       ? "interaction"
                                                : t.part[0].kind == 'i' ? "factor"
                                                                        : "variable");
    }
    return 0;
}

int32_t fvcheckdepvar(int32_t);
int32_t fvcheckdepvar(int32_t)
{
    int32_t rc = parse('t');
    if (rc)
        return rc;
    int32_t k = ti_pi_findopta(tokinfo, parinfo, "k", 1, 1);
    if ((rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    const fvspec *s = spec_of_parse();
    for (int32_t i = 0; i < k && size_t(i) < s->term.size(); i++) {
        const fvterm &t = s->term[size_t(i)];
        if (t.part.size() > 1)
            return errout(RC_SYNTAX, "depvar may not be an interaction\n");
        if (t.part[0].kind == 'i')
            return errout(RC_SYNTAX, "depvar may not be a factor variable\n");
    }
    return 0;
}

int32_t fvsum(int32_t);
int32_t fvsum(int32_t)
{
    int32_t rc = parse('c', W_ALL4);
    if (rc || (rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    std::vector<int32_t> vars(parinfo->vl_vr, parinfo->vl_vr + parinfo->pi_nvar);
    auto k = int32_t(vars.size());
    for (int32_t v : vars)
        if (v > 0 && t_isstr(_typlist[v - 1]))
            return error(RC_TYPE);
    datarows d;
    crossprod p;
    if ((rc = dr_open(&d, vars.data(), k)) || (rc = cp_open(&p, k, true)))
        return rc;
    for (;;) {
        if ((rc = dr_next(&d)))
            return rc;
        if (!d.n)
            break;
        cp_block(&p, &d);
    }
    cp_close(&p);
    if (!p.n)
        return errout(RC_NOOBS, "no observations\n");
    retval_clear();
    matref m;
    if ((rc = umat_new("mean", MK_R, 1, k, &m)))
        return rc;
    for (int32_t j = 0; j < k; j++) {
        m.m->el[j] = cp_mean(&p, j);
        strcut(m.col[j].name, sizeof m.col[j].name, fv_name(vars[size_t(j)]));
    }
    strcpy(m.row[0].name, "mean");
    retval_mark_dm();
    retval_set_gscalar(double(p.n), "N");
    retval_set_gscalar(p.sum_w, "sum_w");
    retval_set_glocal("varlist", entries().c_str());
    return 0;
}

int32_t fvisclear(int32_t);
int32_t fvisclear(int32_t)
{
    int32_t rc = parse('t');
    if (rc || (rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    bool clear = true;
    for (const fvterm &t : spec_of_parse()->term)
        for (const fvatom &a : t.part)
            for (const char *name : {"_fv_base", "_fv_design"}) {
                const char *text = charfind(_varlist[a.var - 1], name, nullptr);
                clear &= !text || !*text;
            }
    retval_clear();
    retval_set_gscalar(clear, "clear");
    return 0;
}
