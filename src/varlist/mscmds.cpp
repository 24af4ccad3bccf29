// Commands about the stripes of matrices: which columns are omitted, empty, of which term.
// MATRIX is a matrix, e(NAME) or r(NAME); without one it is e(b). Columns are meant, or rows
// with option row.
//
//   _ms_omit_info _ms_empty_info _ms_op_info [MATRIX]    r(omit) r(k_omit), r(empty) r(k_empty),
//   ... _ms_eq_info [, matrix(M) row]                r(k_eq), r(eq#), r(k#) _ms_element_info [,
//   matrix(M) element(#) equation(#) row]   r(type) r(term) r(level) r(note) ... _ms_display [,
//   matrix(M) element(#) equation(#) row first]  its place left of the bar _ms_eq_display [,
//   matrix(M) equation(#) row] _ms_extract_varlist LIST [, matrix(M) row equation(#) nofatal]
//   r(varlist) _ms_check_varlist LIST [, matrix(M) row] _ms_omit_unset MATRIX, _ms_findomitted B V,
//   _ms_build_info MATRIX [if] [in] [weight]
#include "core/missing.h"
#include "core/rc.h"
#include "core/state.h"
#include "core/text.h"
#include "data/dsa.h"
#include "data/umat.h"
#include "data/variables.h"
#include "expr/parse.h"
#include "interp/messages.h"
#include "output/print.h"
#include "stats/coefrows.h"
#include "stats/crossprod.h"
#include "stats/results.h"
#include "stats/statparse.h"
#include "varlist/stripes.h"
#include <cstring>

bool ms_find(const std::string &text, matref *m)
{
    size_t open = text.find('(');
    if (open == std::string::npos)
        return umat_get(text.c_str(), MK_MAT, m);
    if (text.size() < open + 3 || text.back() != ')')
        return false;
    std::string kind = text.substr(0, open), name = text.substr(open + 1, text.size() - open - 2);
    if (kind == "r")
        return umat_get(name.c_str(), MK_R, m);
    if (kind == "return")
        return umat_get(name.c_str(), MK_RETURN, m);
    if (kind != "e")
        return false;
    const char *special = find_e_of_specialname(name.c_str());
    return umat_get(special ? special : name.c_str(), MK_E, m);
}

std::string ms_word()
{
    const char *from = ti_wheretok(tokinfo);
    from += strspn(from, " ");
    const char *p = from + strcspn(from, " ,");
    gettok_state at{const_cast<char *>(p), nullptr};
    ti_resettok(tokinfo, &at);
    return std::string(from, p);
}

std::string ms_text()
{
    const char *from = ti_wheretok(tokinfo), *p = from;
    for (int depth = 0; *p && (*p != ',' || depth > 0); p++)
        depth += (*p == '(') - (*p == ')');
    gettok_state at{const_cast<char *>(p), nullptr};
    ti_resettok(tokinfo, &at);
    return std::string(from, p);
}

namespace
{

// A stripe, with what the options say about the part of it that is meant.
struct stripe {
    matref m = {};
    umatname *name = nullptr;
    int32_t n = 0;
    int32_t first = 0, last = -1; // of the equation
};

int32_t open_stripe(const std::string &word, bool row, stripe *s)
{
    if (!ms_find(word.empty() ? "e(b)" : word, &s->m))
        return word.empty() ? regrnotfound() : matnotfound(word.c_str());
    s->name = row ? s->m.row : s->m.col;
    s->n = row ? s->m.m->rows : s->m.m->cols;
    s->last = s->n - 1;
    return 0;
}

// matrix(), row and equation() behind the comma; the caller checks the rest.
int32_t stripe_options(stripe *s, bool *isrow)
{
    parinfo->pi_opts = PI_OK;
    int32_t rc = ti_pi_parse(tokinfo, parinfo);
    if (rc)
        return rc;
    char text[81] = "", eq[81] = "";
    bool row = stat_option("row", 3);
    if (!ti_pi_findargasis(tokinfo, parinfo, "matrix", 3, text, 80))
        *text = 0;
    if ((rc = open_stripe(text, row, s)))
        return rc;
    if (isrow)
        *isrow = row;
    if (!ti_pi_findargn(tokinfo, parinfo, "equation", 2, eq, 80, 1))
        return 0;
    std::string want = eq[0] >= '0' && eq[0] <= '9' ? std::string("#") + eq : eq;
    return umat_eqspan(s->name, s->n, want.c_str(), &s->first, &s->last) ? 0 : eqnotfound(eq);
}

// The stripe of a command that has nothing but a matrix on its line.
int32_t only_stripe(stripe *s)
{
    std::string word = ms_word();
    parinfo->pi_opts = PI_OK;
    int32_t rc = ti_pi_parse(tokinfo, parinfo);
    bool row = !rc && stat_option("row", 3);
    if (rc || (rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    return open_stripe(word, row, s);
}

bool omitted(const umatname &name)
{
    termname t;
    return term_read(name.name, &t) && term_isomitted(t);
}

// A row of flags over a stripe as a matrix of r(). The stripe may be one of r() itself.
int32_t flags(const char *name, const std::vector<umatname> &names, const std::vector<bool> &flag)
{
    matref m;
    auto n = int32_t(names.size());
    if (int32_t rc = umat_new(name, MK_R, 1, n, &m))
        return rc;
    for (int32_t j = 0; j < n; j++) {
        m.m->el[j] = flag[size_t(j)];
        m.col[j] = names[size_t(j)];
    }
    retval_mark_dm();
    return 0;
}

int32_t flag_command(const char *name, const char *count, bool (*is)(const umatname &))
{
    stripe s;
    int32_t rc = only_stripe(&s), k = 0;
    if (rc)
        return rc;
    std::vector<umatname> names(s.name, s.name + s.n);
    std::vector<bool> flag;
    for (const umatname &u : names) {
        flag.push_back(is(u));
        k += flag.back();
    }
    retval_clear();
    if ((rc = flags(name, names, flag)))
        return rc;
    retval_set_gscalar(k, count);
    return 0;
}

bool is_empty(const umatname &name)
{
    return name.info & UN_EMPTY;
}

// ---- elements

struct element {
    stripe s;
    int32_t at = 0; // from 0 in the whole stripe
    coefrow row;
};

int32_t find_element(element *e, bool *first)
{
    int32_t rc = stripe_options(&e->s, nullptr);
    if (rc)
        return rc;
    int32_t k = ti_pi_findopta(tokinfo, parinfo, "element", 2, 1);
    bool told = stat_option("first", 5);
    if ((rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    if (k < 1 || e->s.first + k - 1 > e->s.last)
        return errout(RC_SYNTAX, "element %d is not there\n", k);
    e->at = e->s.first + k - 1;
    e->row = coefrow_of(e->s.name[e->at], false, true);
    bool starts = e->at == e->s.first;
    if (!starts)
        starts = coefrow_of(e->s.name[e->at - 1], false, true).key != e->row.key;
    *first = told || starts;
    return 0;
}

// How many columns from the first of its term the term has.
void term_span(const element &e, int32_t *from, int32_t *to)
{
    *from = *to = e.at;
    if (e.row.key.empty())
        return;
    while (*from > e.s.first && coefrow_of(e.s.name[*from - 1], false, true).key == e.row.key)
        --*from;
    while (*to < e.s.last && coefrow_of(e.s.name[*to + 1], false, true).key == e.row.key)
        ++*to;
}

std::string term_text(const termname &t)
{
    std::string s;
    for (int32_t i = 0; i < t.n; i++) {
        const termpart &p = t.part[i];
        std::string ops = p.kind == TP_CONT ? "c" : p.kind == TP_LEVEL ? "i" : "";
        ops += ts_text(p.ts);
        s += (i ? "#" : "") + ops + (ops.empty() ? "" : ".") + p.name;
    }
    return s;
}

} // namespace

const char *ms_type(const termname &t)
{
    bool factor = false, cont = false;
    for (int32_t i = 0; i < t.n; i++)
        (t.part[i].kind == TP_LEVEL ? factor : cont) = true;
    return t.n == 1 ? factor ? "factor" : "variable" : factor ? "interaction" : "product";
}

int32_t msomitinfo(int32_t);
int32_t msomitinfo(int32_t)
{
    return flag_command("omit", "k_omit", omitted);
}
int32_t msemptyinfo(int32_t);
int32_t msemptyinfo(int32_t)
{
    return flag_command("empty", "k_empty", is_empty);
}

int32_t msopinfo(int32_t);
int32_t msopinfo(int32_t)
{
    stripe s;
    if (int32_t rc = only_stripe(&s))
        return rc;
    bool fv = false, ts = false;
    for (int32_t j = 0; j < s.n; j++) {
        termname t;
        if (!term_read(s.name[j].name, &t))
            continue;
        fv |= term_hasfactor(t);
        for (int32_t i = 0; i < t.n; i++) {
            ts |= t.part[i].ts.any();
            fv |= t.part[i].marks != 0;
        }
    }
    retval_clear();
    retval_set_gscalar(fv, "fvops");
    retval_set_gscalar(ts, "tsops");
    return 0;
}

int32_t mseqinfo(int32_t);
int32_t mseqinfo(int32_t)
{
    stripe s;
    int32_t rc = stripe_options(&s, nullptr);
    if (rc || (rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    retval_clear();
    int32_t k = 0, from = 0;
    for (int32_t j = 1; j <= s.n; j++) {
        if (j < s.n && !strcmp(s.name[j].eq, s.name[from].eq))
            continue;
        std::string no = std::to_string(++k);
        retval_set_glocal(("eq" + no).c_str(), s.name[from].eq);
        retval_set_gscalar(j - from, ("k" + no).c_str());
        from = j;
    }
    retval_set_gscalar(k, "k_eq");
    return 0;
}

int32_t mselementinfo(int32_t);
int32_t mselementinfo(int32_t)
{
    static const char *const notes[] = {"", "(base)", "(omitted)", "(empty)"};
    element e;
    bool first;
    int32_t rc = find_element(&e, &first), from, to;
    if (rc)
        return rc;
    term_span(e, &from, &to);
    termname t;
    std::string name = e.s.name[e.at].name, eq = e.s.name[e.at].eq;
    bool term = term_read(name.c_str(), &t);
    retval_clear();
    retval_set_glocal("name", name.c_str());
    retval_set_glocal("eq", eq.c_str());
    retval_set_glocal("type", term ? ms_type(t) : "error");
    retval_set_glocal("term", term ? term_text(t).c_str() : name.c_str());
    retval_set_glocal("level", term ? coefrow_levels(t, true, 80).c_str() : "");
    retval_set_glocal("note", notes[e.row.what]);
    retval_set_gscalar(e.at - from + 1, "k_pos");
    retval_set_gscalar(to - from + 1, "k_term");
    retval_set_gscalar(first, "first");
    return 0;
}

int32_t msdisplay(int32_t);
int32_t msdisplay(int32_t)
{
    element e;
    bool first;
    if (int32_t rc = find_element(&e, &first))
        return rc;
    outlev_keep keep(1);
    if (first)
        for (const std::string &line : e.row.heading)
            spout21fat(1, "%12s |\n", line.c_str());
    spout21fat(1, "%12s |", e.row.label.c_str());
    return stopflag;
}

int32_t mseqdisplay(int32_t);
int32_t mseqdisplay(int32_t)
{
    stripe s;
    int32_t rc = stripe_options(&s, nullptr);
    if (rc || (rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    const char *eq = s.name[s.first].eq;
    outlev_keep keep(1);
    spout21fat(1, "%-12.12s |\n", strcmp(eq, "_") ? eq : "");
    return stopflag;
}

// ---- lists

static int32_t list_command(std::string *found)
{
    std::string text = ms_text();
    stripe s;
    int32_t rc = stripe_options(&s, nullptr);
    if (rc)
        return rc;
    bool fatal = stat_option("fatal", 3, true);
    if ((rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    fvspec typed;
    std::string plain;
    // The constant is no variable, but a list may name it.
    for (size_t at = 0; at < text.size();) {
        size_t e = text.find(' ', at);
        std::string w = text.substr(at, e == std::string::npos ? e : e - at);
        at = e == std::string::npos ? text.size() : e + 1;
        if (w != "_cons")
            plain += w + " ";
    }
    bool cons = text.find("_cons") != std::string::npos;
    if ((rc = fv_text(plain.c_str(), FV_TS | FV_FACTOR, &typed)))
        return rc;
    int32_t missed, n = s.last - s.first + 1;
    for (int32_t j : fv_columns_of(typed, s.name + s.first, n, &missed))
        *found += (found->empty() ? "" : " ") + std::string(s.name[s.first + j].name);
    if (missed >= 0 && fatal)
        return notfound(fv_write(typed.term[size_t(missed)]).c_str());
    for (int32_t j = s.first; cons && j <= s.last; j++)
        if (!strcmp(s.name[j].name, "_cons"))
            *found += (found->empty() ? "" : " ") + std::string("_cons");
    return 0;
}

int32_t msextract(int32_t);
int32_t msextract(int32_t)
{
    std::string found;
    if (int32_t rc = list_command(&found))
        return rc;
    retval_clear();
    retval_set_glocal("varlist", found.c_str());
    return 0;
}

int32_t mscheck(int32_t);
int32_t mscheck(int32_t)
{
    std::string found;
    return list_command(&found);
}

// ---- changes

int32_t msomitunset(int32_t);
int32_t msomitunset(int32_t)
{
    stripe s;
    if (int32_t rc = only_stripe(&s))
        return rc;
    for (int32_t j = 0; j < s.n; j++) {
        termname t;
        if (!term_read(s.name[j].name, &t))
            continue;
        for (int32_t i = 0; i < t.n; i++)
            t.part[i].marks &= uint8_t(~TM_OMIT);
        strcut(s.name[j].name, sizeof s.name[j].name, term_write(t).c_str());
    }
    return 0;
}

int32_t msfindomitted(int32_t);
int32_t msfindomitted(int32_t)
{
    std::string bname = ms_word(), vname = ms_word();
    int32_t rc = ti_pi_parse(tokinfo, parinfo);
    matref b, v;
    if (rc)
        return rc;
    if (!ms_find(bname, &b))
        return matnotfound(bname.c_str());
    if (!ms_find(vname, &v))
        return matnotfound(vname.c_str());
    if (v.m->rows != b.m->cols || v.m->cols != b.m->cols)
        return error(503);
    for (int32_t j = 0; j < b.m->cols; j++) {
        termname t;
        umatname *u = &b.col[j];
        if (umat_el(v.m, j + 1, j + 1) != 0 || b.m->el[j] != 0 || !term_read(u->name, &t) ||
            term_isomitted(t) || !strcmp(u->name, "_cons"))
            continue;
        term_omit(&t);
        strcut(u->name, sizeof u->name, term_write(t).c_str());
    }
    return 0;
}

// Which columns are zero in the sample: cells that nobody is in.
int32_t msbuildinfo(int32_t);
int32_t msbuildinfo(int32_t)
{
    std::string word = ms_word();
    statline line;
    line.weights = W_ALL4;
    line.weightdflt = W_AW;
    line.by = false;
    parinfo->pi_blankall = 0;
    int32_t rc = stat_parse(line);
    bool row = !rc && stat_option("row", 3);
    stripe s;
    if (rc || (rc = ti_pi_chkopt(tokinfo, parinfo)) || (rc = open_stripe(word, row, &s)))
        return rc;
    std::vector<termname> cols(static_cast<size_t>(s.n));
    for (int32_t j = 0; j < s.n; j++) {
        termname &t = cols[size_t(j)];
        s.name[j].info &= uint8_t(~UN_EMPTY);
        if (!term_read(s.name[j].name, &t) || !term_hasfactor(t) || !fv_findvars(&t, false))
            t.n = 0;
    }
    std::vector<bool> seen(size_t(s.n));
    rowvalues v;
    rv_open(&v, parinfo->pi_hasexp ? parinfo->wepgm : nullptr, parinfo->pi_obs2);
    for (int32_t obs = parinfo->pi_obs1; obs <= parinfo->pi_obs2; obs++) {
        if ((obs & 0xfff) == 0 && fault_poll())
            return stopflag;
        if (!rv_selected(&v, obs) || (v.exp && !(rv_value(&v, obs) != 0)))
            continue;
        for (size_t j = 0; j < cols.size(); j++) {
            if (seen[j] || !cols[j].n)
                continue;
            bool in = true;
            for (int32_t i = 0; i < cols[j].n; i++) {
                const termpart &p = cols[j].part[i];
                double z = rcpxeq(p.var, p.ts, obs);
                in &= p.kind == TP_LEVEL ? z == p.level : z < misval;
            }
            seen[j] = in;
        }
    }
    for (size_t j = 0; j < cols.size(); j++)
        if (cols[j].n && !seen[j])
            s.name[j].info |= UN_EMPTY;
    return 0;
}
