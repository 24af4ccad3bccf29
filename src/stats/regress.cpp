// stats/regress.cpp - _regress: linear regression by least squares.
//
//   _regress depvar [varlist] [(varlist)] [if] [in] [weight] [, options]
//   with a second list, that of all exogenous variables, by two-stage least squares
//   _regress [, display options]          shows the stored results again
#include "core/missing.h"
#include "core/rc.h"
#include "core/state.h"
#include "core/text.h"
#include "data/dsa.h"
#include "data/variables.h"
#include "interp/dm.h"
#include "interp/messages.h"
#include "output/fmt.h"
#include "output/print.h"
#include "stats/coeftab.h"
#include "stats/dist.h"
#include "stats/esample.h"
#include "stats/estpost.h"
#include "stats/regress_int.h"
#include "stats/results.h"
#include "stats/statparse.h"
#include "varlist/terms.h"
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace
{

struct regcmd {
    bool header, table, anova, bmat, rssmat;
    coeftab tab;
    char depname[33], clustvar[33], absvar[33];
    const fvspec *inst;  // as typed, or null
};

// ---- options

int32_t one_variable(const char *text, int32_t *var)
{
    int32_t list[2], n = 0;
    int32_t rc = vlist_text(text, list, &n, 2);
    if (rc)
        return rc;
    if (n != 1)
        return error(RC_TOOMANYVARS);
    *var = list[0];
    return 0;
}

// A word of at least min letters of full.
bool word_is(const char *word, const char *full, size_t min)
{
    size_t n = strlen(word);
    return n >= min && !strncmp(word, full, n);
}

int32_t read_vce(regjob *r, char *text)
{
    char *state = nullptr;
    const char *kind = strtok_r(text, " ", &state), *rest = strtok_r(nullptr, "", &state);
    if (!kind)
        return error(RC_SYNTAX);
    if (word_is(kind, "cluster", 2)) {
        if (!rest)
            return error(RC_REQUIRED);
        r->vce = RV_CLUSTER;
        return one_variable(rest, &r->cluster.var);
    }
    if (rest)
        return errout(RC_SYNTAX, "vce() invalid\n");
    if (word_is(kind, "robust", 1))
        r->vce = RV_ROBUST;
    else if (!strcmp(kind, "hc2"))
        r->vce = RV_HC2;
    else if (!strcmp(kind, "hc3"))
        r->vce = RV_HC3;
    else if (strcmp(kind, "ols"))
        return errout(RC_SYNTAX, "vcetype %s not allowed\n", kind);
    return 0;
}

int32_t variance_options(regcmd *c, regjob *r)
{
    char text[500];
    int32_t rc = 0, v = 0;
    bool robust = stat_option("robust", 1), hc2 = stat_option("hc2", 3),
         hc3 = stat_option("hc3", 3);
    bool clusters = ti_pi_findargn(tokinfo, parinfo, "cluster", 2, text, 499, 1) != 0;
    if (clusters && (rc = one_variable(text, &v)))
        return rc;
    if (ti_pi_findargasis(tokinfo, parinfo, "vce", 3, text, 499) && (rc = read_vce(r, text)))
        return rc;
    if (hc2 || hc3)
        r->vce = hc2 ? RV_HC2 : RV_HC3;
    else if (robust && r->vce == RV_OLS)
        r->vce = RV_ROBUST;
    if (clusters) {
        r->vce = RV_CLUSTER;
        r->cluster.var = v;
    }
    bool pweights = parinfo->pi_hasexp && parinfo->pi_wtype == W_PW;
    if (pweights && r->vce == RV_OLS)
        r->vce = RV_ROBUST;
    if (r->vce != RV_OLS && parinfo->pi_hasexp && parinfo->pi_wtype == W_IW)
        return errout(RC_NOTALLOWED, "iweights not allowed with robust\n");
    if (c->inst && (r->vce == RV_HC2 || r->vce == RV_HC3))
        return errout(RC_NOTALLOWED, "hc2 and hc3 not allowed with instruments\n");
    if (r->vce == RV_CLUSTER && !strcmp(c->tab.extra, "beta"))
        return errout(184, "options vce(cluster clustvar) and beta may not be combined\n");
    return 0;
}

int32_t display_options(regcmd *c)
{
    c->header = stat_option("header", 4, true);
    c->table = stat_option("table", 3, true);
    bool beta = stat_option("beta", 1), means = stat_option("means", 5);
    if (beta && means)
        return errout(RC_SYNTAX, "options beta and means may not be combined\n");
    c->tab.extra = beta ? "beta" : means ? "means" : "";
    return coeftab_options(&c->tab);
}

int32_t model_options(regcmd *c, regjob *r)
{
    // Of the workings that nobody sees these change nothing here.
    for (const char *word : {"format", "checkorder"})
        (void)stat_option(word, 6, true);
    c->anova = stat_option("AnovaExtras", 11);
    c->bmat = stat_option("bmat", 4);
    c->rssmat = stat_option("rssmat", 6);
    r->optsweep = stat_option("optsweep", 8);
    r->cons = stat_option("constant", 1, true);
    r->hascons = stat_option("hascons", 2);
    r->tsscons = stat_option("tsscons", 2);
    r->mse1 = stat_option("mse1", 4);
    if (r->hascons)
        r->cons = false;
    double dof[1];
    if (ti_pi_findoptv(tokinfo, parinfo, "dof", 3, dof, 1, 0))
        r->dof = dof[0];
    (void)ti_pi_findargn(tokinfo, parinfo, "depname", 3, c->depname, 32, 1);
    char text[500];
    if (ti_pi_findargn(tokinfo, parinfo, "absorb", 6, text, 499, 1)) {
        if (int32_t rc = one_variable(text, &r->absorb.var))
            return rc;
        strcut(c->absvar, sizeof c->absvar, _varlist[r->absorb.var - 1]);
    }
    return variance_options(c, r);
}

// ---- posting

void post_scalars(const regjob *r)
{
    estval_set_gscalar(r->N, "N");
    estval_set_gscalar(r->df_m, "df_m");
    estval_set_gscalar(r->df_r, "df_r");
    estval_set_gscalar(r->F, "F");
    estval_set_gscalar(r->r2, "r2");
    estval_set_gscalar(r->rmse, "rmse");
    estval_set_gscalar(r->mss, "mss");
    estval_set_gscalar(r->rss, "rss");
    estval_set_gscalar(r->r2_a, "r2_a");
    if (r->ll < misval)
        estval_set_gscalar(r->ll, "ll");
    if (r->ll_0 < misval)
        estval_set_gscalar(r->ll_0, "ll_0");
    estval_set_gscalar(r->rank + r->cons, "rank");
    if (r->vce == RV_CLUSTER)
        estval_save_N_clust(r->N_clust);
    if (r->absorb.var) {
        estval_set_gscalar(r->df_a, "df_a");
        estval_set_gscalar(r->tss, "tss");
    }
}

void post_macros(const regcmd *c, const regjob *r)
{
    static const char *const vces[] = {"ols", "robust", "hc2", "hc3", "cluster"};
    static const char *const types[] = {"", "Robust", "Robust HC2", "Robust HC3", "Robust"};
    bool iv = !r->inst.empty();
    estval_set_glocal("title",
                      iv ? "Instrumental variables (2SLS) regression" : "Linear regression");
    estval_set_glocal("depvar", *c->depname ? c->depname : fv_name(r->vars[0]));
    estval_set_glocal("cmd", "regress");
    estval_set_glocal("properties", "b V");
    estval_set_glocal("predict", "regres_p");
    estval_set_glocal("model", iv ? "iv" : "ols");
    if (iv) {
        std::string instd;
        for (int32_t j = 0; j < r->nx; j++)
            if (!r->exog[size_t(j)])
                instd += (instd.empty() ? "" : " ") + std::string(fv_name(r->vars[size_t(j) + 1]));
        std::string insts;
        for (int32_t v : r->inst)
            insts += (insts.empty() ? "" : " ") + std::string(fv_name(v));
        estval_set_glocal("instd", instd.c_str());
        estval_set_glocal("insts", insts.c_str());
    } else
        estval_set_glocal("estat_cmd", "regress_estat");
    estval_set_glocal("vce", vces[r->vce]);
    estval_save_vcetype(types[r->vce]);
    if (r->cluster.var)
        estval_save_clustvar(_varlist[r->cluster.var - 1]);
    estval_set_glocal("absvar", c->absvar);
    if (parinfo->pi_hasexp) {
        static const struct {
            uint8_t bit;
            const char *word;
        } words[] = {{W_AW, "aweight"}, {W_FW, "fweight"}, {W_PW, "pweight"}, {W_IW, "iweight"}};
        for (const auto &w : words)
            if (w.bit == parinfo->pi_wtype)
                estval_set_glocal("wtype", w.word);
        std::string text(parinfo->wepgm->tokbeg, parinfo->wepgm->tokend);
        while (!text.empty() && (text.back() == ' ' || text.back() == ']'))
            text.pop_back();
        estval_set_glocal("wexp", ("= " + text).c_str());
    }
}

// A row of e() that the listing leaves out.
int32_t post_row(const char *name, const double *el, const std::vector<umatname> &names, int32_t n)
{
    matref m;
    if (int32_t rc = umat_new(name, MK_E, 1, n, &m))
        return rc;
    memcpy(m.m->el, el, sizeof(double) * size_t(n));
    memcpy(m.col, names.data(), sizeof(umatname) * size_t(n));
    dm_rec(m.m)->aux = 1;
    return 0;
}

// For analyses of variance: e(L), the products before the sweep, about zero, and e(H) after
// it: the inverse, the coefficients beside it and the residual squares in the corner.
int32_t post_sweep(const regjob *r, const std::vector<umatname> &names)
{
    int32_t p = r->p, n = p + 1;
    matref L, H;
    int32_t rc = umat_new("L", MK_E, n, n, &L);
    if (!rc)
        rc = umat_new("H", MK_E, n, n, &H);
    if (rc || !umat_get("L", MK_E, &L)) {
        estval_clear();
        return rc;
    }
    std::vector<double> inv(size_t(p) * size_t(p));
    reg_inverse(r, inv.data());
    auto mean = [r](int32_t i) { return i <= r->nx ? cp_mean(&r->cp, i) : 1; };
    for (int32_t i = 0; i < n; i++)
        for (int32_t j = 0; j < n; j++) {
            bool c = i > r->nx || j > r->nx;
            double z = c ? 0 : cp_el(&r->cp, i, j) * r->scale;
            L.m->el[i * n + j] = r->cons ? z + r->cp.sum_w * r->scale * mean(i) * mean(j) : z;
            int32_t slope = i > j ? i : j;
            H.m->el[i * n + j] = i && j  ? inv[size_t((i - 1) * p + j - 1)]
                                 : slope ? r->b[size_t(slope) - 1]
                                         : r->rss;
        }
    for (const matref *m : {&L, &H}) {
        for (umatname *side : {m->row, m->col}) {
            strcut(side[0].name, sizeof side[0].name, fv_name(r->vars[0]));
            memcpy(side + 1, names.data(), sizeof(umatname) * size_t(p));
        }
        dm_rec(m->m)->aux = 1;
    }
    return 0;
}

// The parts of the swept products beside the inverse, as matrices that programs can work with
// block by block: e(bmat) has a row for each coefficient and e(rssmat) the residual squares.
int32_t post_blocks(const regcmd *c, const regjob *r, const std::vector<umatname> &names)
{
    matref m;
    int32_t rc = 0;
    if (c->bmat && !(rc = umat_new("bmat", MK_E, r->p, 1, &m))) {
        memcpy(m.m->el, r->b.data(), sizeof(double) * size_t(r->p));
        memcpy(m.row, names.data(), sizeof(umatname) * size_t(r->p));
        strcpy(m.col[0].name, _varlist[r->vars[0] - 1]);
    }
    if (!rc && c->rssmat && !(rc = umat_new("rssmat", MK_E, 1, 1, &m))) {
        m.m->el[0] = r->rss;
        strcpy(m.row[0].name, _varlist[r->vars[0] - 1]);
        strcpy(m.col[0].name, _varlist[r->vars[0] - 1]);
    }
    return rc;
}

// Is the regressor a column of a list that was marked as left out from the first?
bool marked(const regjob *r, int32_t j)
{
    int32_t v = r->vars[size_t(j) + 1];
    return v < 0 && term_isomitted(fv_current.col[size_t(-v) - 1]);
}

bool is_empty(const regjob *r, int32_t j)
{
    int32_t v = r->vars[size_t(j) + 1];
    if (v > 0 || !term_hasfactor(fv_current.col[size_t(-v) - 1]))
        return false;
    const termname &t = fv_current.col[size_t(-v) - 1];
    for (int32_t i = 0; i < t.n; i++)
        if (t.part[i].kind != TP_LEVEL)
            return false;
    return cp_el(&r->cp, j + 1, j + 1) == 0 && cp_mean(&r->cp, j + 1) == 0;
}

// The name of a regressor, marked when it was left out; behind the last the constant.
void name_column(const regjob *r, int32_t j, umatname *out)
{
    *out = umatname{};
    strcpy(out->eq, "_");
    if (j == r->nx) {
        strcpy(out->name, "_cons");
        return;
    }
    const char *name = fv_name(r->vars[size_t(j) + 1]);
    termname t;
    if (r->dropped[size_t(j)] && vernum >= 1100 && term_read(name, &t) && !term_isomitted(t)) {
        term_omit(&t);
        if (is_empty(r, j))
            out->info = UN_EMPTY;
        strcut(out->name, sizeof out->name, term_write(t).c_str());
    } else
        strcut(out->name, sizeof out->name, name);
}

int32_t post(const regcmd *c, const regjob *r)
{
    std::vector<umatname> names(static_cast<size_t>(r->p));
    for (size_t j = 0; j < names.size(); j++)
        name_column(r, int32_t(j), &names[j]);
    estpost e = {r->b.data(), r->V.data(), &names};
    int32_t rc = est_post(&e);
    if (!rc && r->nx)
        rc = post_row("beta", r->beta.data(), names, r->nx);
    if (!rc && r->nx) {
        std::vector<double> means(static_cast<size_t>(r->nx));
        for (int32_t j = 0; j < r->nx; j++)
            means[size_t(j)] = cp_mean(&r->cp, j + 1);
        rc = post_row("means", means.data(), names, r->nx);
    }
    if (!rc && c->anova)
        rc = post_sweep(r, names);
    if (!rc)
        rc = post_blocks(c, r, names);
    if (rc)
        return rc;
    post_scalars(r);
    post_macros(c, r);
    return esample_set(r->used.data());
}

// ---- the header

double e_scalar(const char *name)
{
    return estval_get_double(name);
}

const char *num(char *buf, double z, const char *fmt)
{
    fmtnumtrim(buf, 64, z, fmt);
    return buf;
}

// Degrees of freedom may be a fraction under importance weights.
const char *df_text(char *buf, double df)
{
    return num(buf, df, df == std::floor(df) ? "%9.0g" : "%6.1f");
}

std::string right_side(const char *label, const char *value)
{
    char line[200];
    snprintf(line, sizeof line, "%-13s = %7s", label, value);
    return line;
}

std::string f_line()
{
    char a[64], b[64], f[64], left[140];
    snprintf(left, sizeof left, "F(%3s,%6s)", df_text(a, e_scalar("df_m")),
             df_text(b, e_scalar("df_r")));
    return right_side(left, num(f, e_scalar("F"), "%7.2f"));
}

// What stands at the right ends in column 79, after left of which used are taken.
void right_end(int used, const std::string &right)
{
    int pad = 79 - used - int(right.size());
    spout21fat(1, "%*s%s\n", pad < 1 ? 1 : pad, "", right.c_str());
}

std::string macro_of(const char *name)
{
    return gretval_find(RK_E, name) == 5179 ? retval_get_strptr() : "";
}

void anova_row(const char *name, double ss, double df, const std::string &right)
{
    char a[64], b[64], m[64];
    df_text(b, df);
    int wide = int(strlen(b)) > 5 ? int(strlen(b)) + 1 : 6;
    spout21fat(1, "%12s |", name);
    spout21fat(0, "%12s%*s%*s", num(a, ss, "%10.0g"), wide, b, 19 - wide,
               num(m, df > 0 ? ss / df : misval, "%10.0g"));
    right_end(45, right);
}

double f_tail()
{
    double f = e_scalar("F"), m = e_scalar("df_m"), r = e_scalar("df_r");
    return f < misval && r > 0 && r < misval ? ftail2(m, r, f) : misval;
}

void plain_header()
{
    char v[64];
    double tss = e_scalar("mss") + e_scalar("rss"), df_m = e_scalar("df_m"),
           df_r = e_scalar("df_r"), df_a = e_scalar("df_a");
    double model = df_m + (df_a < misval ? df_a : 0);
    static const char *rule = "-------------+-------------------------------";
    if (macro_of("model") == "iv")
        spout21f("\n%s\n", macro_of("title").c_str());
    spout21("\n      Source |       SS       df       MS    ");
    right_end(45, right_side("Number of obs", fmt_comma(v, e_scalar("N"))));
    spout21(rule);
    right_end(45, f_line());
    anova_row("Model", e_scalar("mss"), model, right_side("Prob > F", num(v, f_tail(), "%6.4f")));
    anova_row("Residual", e_scalar("rss"), df_r,
              right_side("R-squared", num(v, e_scalar("r2"), "%7.4f")));
    spout21(rule);
    right_end(45, right_side("Adj R-squared", num(v, e_scalar("r2_a"), "%7.4f")));
    anova_row("Total", tss, model + df_r,
              right_side("Root MSE", num(v, e_scalar("rmse"), "%7.0g")));
    newline();
}

void robust_header()
{
    char v[64];
    std::string title = macro_of("title");
    spout21f("\n%s", title.c_str());
    right_end(int(title.size()), right_side("Number of obs", fmt_comma(v, e_scalar("N"))));
    right_end(0, f_line());
    right_end(0, right_side("Prob > F", num(v, f_tail(), "%6.4f")));
    right_end(0, right_side("R-squared", num(v, e_scalar("r2"), "%7.4f")));
    right_end(0, right_side("Root MSE", num(v, e_scalar("rmse"), "%7.0g")));
    newline();
}

int32_t show(const regcmd *c)
{
    outlev_keep keep(1);
    if (c->header) {
        if (macro_of("vce") == "ols" || macro_of("vce").empty())
            plain_header();
        else
            robust_header();
    }
    int32_t rc = c->table ? coeftab_show(&c->tab) : 0;
    std::string absvar = macro_of("absvar");
    double df_a = e_scalar("df_a");
    if (!rc && c->table && !absvar.empty() && df_a < misval)
        spout21f("%12s | absorbed, %.0f categories\n", absvar.c_str(), df_a + 1);
    if (!rc && c->table && macro_of("model") == "iv") {
        spout21f("Instrumented:  %s\nInstruments:   %s\n", macro_of("instd").c_str(),
                 macro_of("insts").c_str());
        spout21("------------------------------------------------------------------------------\n");
    }
    return rc ? rc : stopflag;
}

// ---- the command

// Behind the parenthesis that closes the one at p, or null.
char *behind(char *p)
{
    int32_t depth = 0;
    for (; *p; p++) {
        depth += (*p == '(') - (*p == ')');
        if (!depth)
            return p + 1;
    }
    return nullptr;
}

// A list in parentheses that stands alone; operators and products have parentheses of their own.
// Null when there is none before the clauses, or with the code set.
char *alone(char *from, int32_t *rc)
{
    for (char *p = from; *p && !strchr(",[", *p); p++) {
        if (*p == ' ' && (!strncmp(p, " if ", 4) || !strncmp(p, " in ", 4)))
            return nullptr;
        if (*p != '(')
            continue;
        char *end = behind(p);
        if (!end) {
            *rc = errout(RC_PARENS, "too few ')' or ']'\n");
            return nullptr;
        }
        if ((p == from || p[-1] == ' ') && *end != '#')
            return p;
        p = end - 1;
    }
    return nullptr;
}

// The list in parentheses behind the first one, which is blanked for the parse of the rest.
// Groups of by after the first one find the list where it was left.
int32_t take_instruments(const fvspec **inst)
{
    static fvspec found;
    if (byvar < 2) {
        found = fvspec{};
        int32_t rc = 0;
        char *p = alone(ti_wheretok(tokinfo), &rc), *end = p ? behind(p) : nullptr;
        if (!p)
            return rc;
        if ((rc = fv_text(std::string(p + 1, end - 1).c_str(), FV_TS | FV_FACTOR, &found)))
            return rc;
        memset(p, ' ', size_t(end - p));
        for (const fvterm &t : found.term)
            if (t_isstr(_typlist[t.part[0].var - 1]))
                return error(RC_TYPE);
        if (found.term.empty())
            return error(RC_TOOFEWVARS);
    }
    *inst = found.term.empty() ? nullptr : &found;
    return 0;
}

int32_t parse(regcmd *c, regjob *r)
{
    if (int32_t rc = take_instruments(&c->inst))
        return rc;
    statline line;
    line.weights = W_ALL4;
    line.weightdflt = W_AW;
    line.fv = true;
    int32_t rc = stat_parse(line);
    if (rc || (rc = display_options(c)))
        return rc;
    if (parinfo->pi_nvar && (rc = model_options(c, r)))
        return rc;
    return ti_pi_chkopt(tokinfo, parinfo);
}

void tell_dropped(const regjob *r, int32_t j, const char *word)
{
    const char *name = fv_name(r->vars[size_t(j) + 1]);
    if (marked(r, j))
        return;
    if (is_empty(r, j))
        spout21f("note: %s identifies no observations in the sample\n", name);
    else
        spout21f("note: %s %s because of collinearity\n", name, word);
}

void tell(const regjob *r)
{
    const char *word = vernum < 1100 ? "dropped" : "omitted";
    outlev_keep keep(1);
    for (int32_t j = 0; j < r->nx; j++)
        if (r->dropped[size_t(j)])
            tell_dropped(r, j, word);
    if (parinfo->pi_hasexp && (parinfo->pi_wtype & (W_AW | W_PW))) {
        char v[64];
        spout21f("(sum of wgt is %s)\n", num(v, r->cp.sum_w, "%10.0g"));
    }
}

// With instruments, base levels are no regressors. Columns of the instruments that the model has
// too are the same entry.
int32_t instrument_columns(const regcmd *c, regjob *r)
{
    if (!c->inst)
        return 0;
    for (int32_t j = r->nx; j-- > 0;)
        if (marked(r, j)) {
            r->vars.erase(r->vars.begin() + j + 1);
            r->nx--;
        }
    fvlist l;
    if (int32_t rc = fv_expand(*c->inst, nullptr, &l))
        return rc;
    std::vector<termname> &cols = fv_current.col;
    if (!parinfo->pi_fvtoc)
        cols.clear();
    for (const termname &t : l.col) {
        if (term_isomitted(t))
            continue;
        const termpart &p = t.part[0];
        int32_t entry = p.var;
        if (t.n > 1 || p.kind != TP_PLAIN || p.ts.any()) {
            size_t k = 0;
            while (k < cols.size() && !term_same(cols[k], t))
                k++;
            if (k == cols.size())
                cols.push_back(t);
            entry = -int32_t(k) - 1;
        }
        r->inst.push_back(entry);
    }
    return 0;
}

int32_t estimate_model(regcmd *c, regjob *r)
{
    r->vars.assign(parinfo->vl_vr, parinfo->vl_vr + parinfo->pi_nvar);
    r->nx = parinfo->pi_nvar - 1;
    if (!r->nx && !r->cons)
        return error(RC_TOOFEWVARS);
    if (int32_t rc = instrument_columns(c, r))
        return rc;
    for (int32_t v : r->inst)
        if (std::find(r->vars.begin() + 1, r->vars.end(), v) == r->vars.end())
            r->vars.push_back(v);
    if (r->vars[0] < 0 && term_hasfactor(fv_current.col[size_t(-r->vars[0]) - 1]))
        return errout(RC_SYNTAX, "depvar may not be a factor variable\n");
    for (int32_t v : r->vars)
        if (v > 0 && t_isstr(_typlist[v - 1]))
            return errout(RC_NOOBS, "no observations\n");
    int32_t rc = reg_build(r);
    if (rc || (rc = r->inst.empty() ? reg_solve(r) : reg_solve_iv(r)))
        return rc;
    if (r->vce != RV_OLS && (rc = reg_robust(r)))
        return rc;
    tell(r);
    return post(c, r);
}

} // namespace

int32_t regress(int32_t);
int32_t regress(int32_t)
{
    regcmd c = {};
    regjob r;
    int32_t rc = parse(&c, &r);
    if (rc)
        return rc;
    if (!parinfo->pi_nvar) {
        if (macro_of("cmd") != "regress")
            return regrnotfound();
        return show(&c);
    }
    if ((rc = estimate_model(&c, &r)))
        return rc;
    return show(&c);
}
