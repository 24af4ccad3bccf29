#include "mosa/ov_index.h"
#include "core/mem.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/variables.h"
#include "expr/parse.h"
#include "expr/varlist.h"
#include "stats/esample.h"
#include "varlist/terms.h"
#include <cmath>
#include <vector>

template <class T> ov_list<T>::~ov_list()
{
    safefree(at);
}

template <class T> bool ov_list<T>::add(T x)
{
    if (n == room) {
        int64_t more = room ? 2 * room : 16;
        auto *p = static_cast<T *>(saferealloc(at, size_t(more) * sizeof(T)));
        if (!p)
            return bi_fail(3900);
        at = p;
        room = more;
    }
    at[n++] = x;
    return true;
}
template struct ov_list<int32_t>;
template struct ov_list<ov_run>;

int32_t ov_varnumber(const std::string &name, bool abbrev)
{
    int32_t k = ovata_findvar(name.c_str(), 11, !abbrev);
    return k >= 1 && k <= _Kvar && strcmp(_varlist[k - 1], esample_hidden_name) != 0 ? k : 0;
}

bool ov_findvar(const std::string &name, int32_t *var)
{
    *var = ov_varnumber(name, ovata_varabbrev);
    if (*var)
        return true;
    m_custom_xeqerrf(3500, "variable %s not found", name.c_str());
    return false;
}

static bool number_of(double z, int32_t *var)
{
    if (!(z >= 1 && z < double(_Kvar) + 1))
        return bi_fail(3300);
    *var = int32_t(z);
    return true;
}

// A list with signs of its own: ranges, patterns.
static bool add_varlist(const std::string &text, ov_list<int32_t> *vars)
{
    std::vector<int32_t> list(size_t(maxvlist) + 1);
    int32_t n = 0, rc = vlist_text(text.c_str(), list.data(), &n, maxvlist);
    if (rc)
        return bi_fail(rc == RC_BREAK ? 1 : 3500);
    for (int32_t k = 0; k < n; k++)
        if (!vars->add(list[size_t(k)]))
            return false;
    return true;
}

// A string element: names with blanks between, or any other list of variables.
static bool add_names(const std::string &text, ov_list<int32_t> *vars)
{
    if (text.find_first_of("*?-~") != std::string::npos || text == "_all")
        return add_varlist(text, vars);
    std::string word;
    for (size_t i = 0; i <= text.size(); i++) {
        if (i < text.size() && text[i] != ' ') {
            word += text[i];
            continue;
        }
        int32_t k = 0;
        if (!word.empty() && (!ov_findvar(word, &k) || !vars->add(k)))
            return false;
        word.clear();
    }
    return true;
}

static bool add_all(ov_list<int32_t> *vars)
{
    std::vector<int32_t> all(size_t(_Kvar) + 1);
    int32_t n = vlist_all(all.data());
    for (int32_t k = 0; k < n; k++)
        if (!vars->add(all[size_t(k)]))
            return false;
    return true;
}

bool ov_readvars(const matobj *j, ov_list<int32_t> *vars)
{
    if (!bi_isarray(j))
        return false;
    if (j->eltype != MO_REAL && j->eltype != MO_STRING)
        return bi_fail(3255);
    if (j->rows != 1 && mo_count(j))
        return bi_fail(3202);
    if (j->eltype == MO_REAL && mo_is1by1(j) && ovismissing(*mo_re(j)))
        return add_all(vars);
    for (int32_t c = 0; c < j->cols && mo_count(j); c++) {
        int32_t k = 0;
        if (j->eltype == MO_STRING ? !add_names(ov_element(j, c), vars)
                                   : !number_of(mo_re(j)[c], &k) || !vars->add(k))
            return false;
    }
    return true;
}

bool ov_readvar(const matobj *m, int32_t *var)
{
    if (!bi_ismatrix(m))
        return false;
    if (m->eltype != MO_REAL && m->eltype != MO_STRING)
        return bi_fail(3255);
    if (!bi_isscalar(m))
        return false;
    if (m->eltype == MO_STRING)
        return ov_findvar(ov_element(m, 0), var);
    return number_of(m_el(m, 0, 0), var);
}

static bool read_selection(const matobj *s, int32_t *sel)
{
    *sel = ov_selnone;
    if (!bi_isarray(s) || !bi_isscalar(s))
        return false;
    if (s->eltype == MO_STRING) {
        std::string name = ov_element(s, 0);
        return name.empty() || ov_findvar(name, sel);
    }
    double z;
    if (!bi_real(s, &z))
        return false;
    if (z >= misval)
        return true;
    if (z == 0) {
        *sel = ov_selnomissing;
        return true;
    }
    return number_of(z, sel);
}

static bool selected(int32_t sel, const ov_list<int32_t> &vars, int32_t obs)
{
    if (sel != ov_selnomissing)
        return !ov_isstring(sel) && dsa_data(sysdsa, uint32_t(sel), uint32_t(obs)) != 0;
    for (int64_t k = 0; k < vars.n; k++) {
        const char *at = dsa_varobsptr(sysdsa, uint32_t(vars[k]), uint32_t(obs));
        uint8_t type = _typlist[vars[k] - 1];
        if (t_isstr(type) ? !*at : cell_data(type, at) >= misval)
            return false;
    }
    return true;
}

// One row of the ranges; false for a bad one.
static bool one_range(const matobj *i, int32_t r, double *first, double *last)
{
    *first = mo_re(i)[int64_t(r) * i->cols];
    *last = mo_re(i)[int64_t(r) * i->cols + i->cols - 1];
    bool open = *first >= misval;
    *first = open ? 1 : trunc(*first);
    *last = *last >= misval ? _Nobs : trunc(*last);
    if (open && *last < *first && *last == _Nobs)
        return true; // an empty dataset has no rows
    return *first >= 1 && *first <= *last && *last <= _Nobs;
}

bool ov_readruns(const matobj *i, ov_list<ov_run> *runs)
{
    if (!bi_isarray(i) || !bi_isreal(i))
        return false;
    if (i->cols < 1 || i->cols > 2)
        return bi_fail(3203);
    for (int32_t r = 0; r < i->rows; r++) {
        double first, last;
        if (!one_range(i, r, &first, &last))
            return bi_fail(3300);
        if (bi_stop(r))
            return false;
        // Neighbours become one run, which is read at a stretch.
        if (runs->n && (*runs)[runs->n - 1].last + 1 == int32_t(first) && first <= last)
            (*runs)[runs->n - 1].last = int32_t(last);
        else if (first <= last && !runs->add({int32_t(first), int32_t(last)}))
            return false;
    }
    return true;
}

static bool select_runs(int32_t sel, const ov_list<int32_t> &vars, const ov_list<ov_run> &from,
                        ov_list<ov_run> *to)
{
    for (int64_t r = 0; r < from.n; r++)
        for (int32_t n = from[r].first; n <= from[r].last; n++) {
            if (bi_stop(n))
                return false;
            if (!selected(sel, vars, n))
                continue;
            if (to->n && (*to)[to->n - 1].last + 1 == n)
                (*to)[to->n - 1].last = n;
            else if (!to->add({n, n}))
                return false;
        }
    return true;
}

bool ov_readcells(const matobj *i, const matobj *j, const matobj *s, ov_cells *out)
{
    int32_t sel = ov_selnone;
    if (!ov_readvars(j, &out->vars) || (s && !read_selection(s, &sel)))
        return false;
    if (sel == ov_selnone) {
        if (!ov_readruns(i, &out->runs))
            return false;
    } else {
        ov_list<ov_run> all;
        if (!ov_readruns(i, &all) || !select_runs(sel, out->vars, all, &out->runs))
            return false;
    }
    for (int64_t r = 0; r < out->runs.n; r++)
        out->nobs += int64_t(out->runs[r].last) - out->runs[r].first + 1;
    out->whole = i->rows == 1 && sel == ov_selnone;
    // Rows and columns are counted in 31 bits.
    return (out->nobs <= INT32_MAX && out->vars.n <= INT32_MAX) || bi_fail(3900);
}

// ---- names with operators

static bool has_operators(const matobj *j)
{
    for (int64_t k = 0; j->eltype == MO_STRING && !j->view && k < mo_count(j); k++)
        if (ov_element(j, k).find_first_of(".#(") != std::string::npos)
            return true;
    return false;
}

static bool mark_runs(const ov_list<ov_run> &runs, int32_t sel, std::vector<uint8_t> *use)
{
    for (int64_t r = 0; r < runs.n; r++)
        for (int32_t n = runs[r].first; n <= runs[r].last; n++) {
            if (bi_stop(n))
                return false;
            (*use)[size_t(n)] =
                sel < 1 || (!ov_isstring(sel) && dsa_data(sysdsa, uint32_t(sel), uint32_t(n)) != 0);
        }
    return true;
}

static bool keep_marked(const ov_list<ov_run> &from, const std::vector<uint8_t> &use,
                        ov_list<ov_run> *to)
{
    for (int64_t r = 0; r < from.n; r++)
        for (int32_t n = from[r].first; n <= from[r].last; n++) {
            if (!use[size_t(n)])
                continue;
            if (to->n && (*to)[to->n - 1].last + 1 == n)
                (*to)[to->n - 1].last = n;
            else if (!to->add({n, n}))
                return false;
        }
    return true;
}

// The columns as numbers of variables, where they are no more, and places in the terms.
static bool number_terms(const fvlist &l, ov_list<int32_t> *vars)
{
    for (size_t k = 0; k < l.col.size(); k++) {
        const termpart &p = l.col[k].part[0];
        bool plain = l.col[k].n == 1 && p.kind == TP_PLAIN && !p.marks && !p.ts.any();
        if (!vars->add(plain ? p.var : -int32_t(k) - 1))
            return false;
    }
    return true;
}

bool ov_readterms(const matobj *i, const matobj *j, const matobj *s, ov_cells *out)
{
    if (!bi_isarray(j))
        return false;
    if (!has_operators(j))
        return ov_readcells(i, j, s, out);
    if (j->rows != 1)
        return bi_fail(3202);
    int32_t sel = ov_selnone;
    ov_list<ov_run> all;
    if ((s && !read_selection(s, &sel)) || !ov_readruns(i, &all))
        return false;
    std::string text;
    for (int32_t c = 0; c < j->cols; c++)
        text += (c ? " " : "") + ov_element(j, c);
    fvspec typed;
    fvlist list;
    int32_t rc = fv_text(text.c_str(), FV_TS | FV_FACTOR, &typed);
    if (rc == RC_NOTFOUND)
        return bi_fail(3500);
    std::vector<uint8_t> use(size_t(_Nobs) + 1);
    if (ov_failed(rc) || !mark_runs(all, sel, &use))
        return false;
    if (ov_failed(sel == ov_selnomissing ? fv_markout(typed, use.data()) : 0) ||
        ov_failed(fv_expand(typed, use.data(), &list)) || !number_terms(list, &out->vars) ||
        !keep_marked(all, use, &out->runs))
        return false;
    for (int64_t r = 0; r < out->runs.n; r++)
        out->nobs += int64_t(out->runs[r].last) - out->runs[r].first + 1;
    out->whole = i->rows == 1 && sel == ov_selnone;
    out->terms = v_fvnew(std::move(list));
    return out->terms && (out->nobs <= INT32_MAX || bi_fail(3900));
}

bool ov_allof(const ov_list<int32_t> &vars, bool strings)
{
    for (int64_t k = 0; k < vars.n; k++)
        if (ov_isstring(vars[k]) != strings)
            return bi_fail(strings ? 3254 : 3253);
    return true;
}

// ---- what the handlers share

void ov_void(int32_t argc)
{
    if (matobj *r = m_mktmat(MO_REAL, 0, 0))
        m_result(argc, r);
}
void ov_real(int32_t argc, double z)
{
    if (matobj *r = m_mktsmatsto(z))
        m_result(argc, r);
}
void ov_text(int32_t argc, const std::string &text)
{
    if (matobj *r = m_mktstr(text.data(), int64_t(text.size())))
        m_result(argc, r);
}

bool ov_failed(int32_t rc)
{
    if (!rc)
        return false;
    m_xrc = rc == RC_BREAK ? 1 : rc == RC_NOMEM || rc == RC_DMMEM ? 3900 : 3598;
    return true;
}

bool ov_string(const matobj *m, std::string *out)
{
    const char *p;
    int32_t n;
    if (!bi_string(m, &p, &n))
        return false;
    out->assign(p, strnlen(p, size_t(n)));
    return true;
}

std::string ov_element(const matobj *m, int64_t k)
{
    char buffer[256];
    if (m->view) {
        int32_t n = v_sel1(m, k, buffer);
        return {buffer, size_t(n)};
    }
    const char *block = mo_sel(m)[k];
    return {sel_text(block), strnlen(sel_text(block), size_t(sel_len(block)))};
}
