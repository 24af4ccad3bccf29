// Views: a matrix made to stand for columns and rows of the dataset.
#include "core/mem.h"
#include "data/dsa.h"
#include "data/variables.h"
#include "mosa/bi_int.h"
#include "mosa/bihandlers.h"
#include <cmath>
#include <string>
#include <vector>

namespace
{

constexpr int32_t SEL_NONE = -1, SEL_NOMISSING = 0; // else the number of a variable

bool find_variable(const std::string &name, int32_t *k)
{
    *k = ovata_findvar(name.c_str(), 10, false);
    if (*k >= 1 && *k <= _Kvar)
        return true;
    m_custom_xeqerrf(3500, "variable %s not found", name.c_str());
    return false;
}

// A string element: names with blanks between.
bool add_names(const char *text, size_t n, std::vector<int32_t> *vars)
{
    std::string word;
    for (size_t i = 0; i <= n; i++) {
        if (i < n && text[i] != ' ') {
            word += text[i];
            continue;
        }
        int32_t k;
        if (!word.empty()) {
            if (!find_variable(word, &k))
                return false;
            vars->push_back(k);
        }
        word.clear();
    }
    return true;
}

bool read_vars(const matobj *j, std::vector<int32_t> *vars)
{
    if (!bi_isarray(j))
        return false;
    if (j->eltype != MO_REAL && j->eltype != MO_STRING)
        return bi_fail(3255);
    if (j->rows != 1 && mo_count(j))
        return bi_fail(3202);
    if (j->eltype == MO_REAL && mo_is1by1(j) && ovismissing(*mo_re(j))) {
        for (int32_t k = 1; k <= _Kvar; k++)
            vars->push_back(k);
        return true;
    }
    for (int32_t c = 0; c < j->cols; c++) {
        if (j->eltype == MO_STRING) {
            const char *block = mo_sel(j)[c];
            if (!add_names(sel_text(block), size_t(sel_len(block)), vars))
                return false;
            continue;
        }
        double z = mo_re(j)[c];
        if (!(z >= 1 && z <= _Kvar))
            return bi_fail(3300);
        vars->push_back(int32_t(z));
    }
    return true;
}

bool read_selection(const matobj *s, int32_t *sel)
{
    *sel = SEL_NONE;
    if (!bi_isscalar(s) || !bi_isarray(s))
        return false;
    if (s->eltype == MO_STRING) {
        std::string name(sel_text(*mo_sel(s)), size_t(sel_len(*mo_sel(s))));
        return name.empty() || find_variable(name, sel);
    }
    double z;
    if (!bi_real(s, &z))
        return false;
    if (z >= misval)
        return true;
    if (z == 0) {
        *sel = SEL_NOMISSING;
        return true;
    }
    if (!(z >= 1 && z <= _Kvar))
        return bi_fail(3300);
    *sel = int32_t(z);
    return true;
}

bool is_string(int32_t k)
{
    return t_isstr(_typlist[k - 1]);
}

bool selected(int32_t sel, const std::vector<int32_t> &vars, int32_t obs)
{
    if (sel == SEL_NONE)
        return true;
    if (sel != SEL_NOMISSING)
        return !is_string(sel) && dsa_data(sysdsa, uint32_t(sel), uint32_t(obs)) != 0;
    char text[256];
    for (int32_t k : vars)
        if (is_string(k) ? !*dsa_sdata(sysdsa, uint32_t(k), uint32_t(obs), text)
                         : dsa_data(sysdsa, uint32_t(k), uint32_t(obs)) >= misval)
            return false;
    return true;
}

// One row of the ranges; false for a bad one.
bool one_range(const matobj *i, int32_t r, double *first, double *last)
{
    *first = mo_re(i)[int64_t(r) * i->cols];
    *last = mo_re(i)[int64_t(r) * i->cols + i->cols - 1];
    bool open = *first >= misval;
    *first = open ? 1 : trunc(*first);
    *last = *last >= misval ? _Nobs : trunc(*last);
    if (open && *last < *first)
        return true; // an empty dataset has no rows
    return *first >= 1 && *first <= *last && *last <= _Nobs;
}

// The observations of the ranges that the selection keeps; *run tells one range in full.
bool read_obs(const matobj *i, int32_t sel, const std::vector<int32_t> &vars,
              std::vector<int32_t> *obs, bool *run)
{
    if (!bi_isarray(i) || !bi_isreal(i))
        return false;
    if (i->cols < 1 || i->cols > 2)
        return bi_fail(3203);
    *run = i->rows == 1 && sel == SEL_NONE;
    for (int32_t r = 0; r < i->rows; r++) {
        double first, last;
        if (!one_range(i, r, &first, &last))
            return bi_fail(3300);
        for (double n = first; n <= last; n++) {
            if (fault_poll())
                return bi_fail(1);
            if (selected(sel, vars, int32_t(n)))
                obs->push_back(int32_t(n));
        }
    }
    return true;
}

bool make_view(matobj *v, int16_t eltype, const std::vector<int32_t> &vars,
               const std::vector<int32_t> &obs, bool run)
{
    if (m_remkmat(v, eltype, run ? 1 : 2, int32_t(obs.size()), int32_t(vars.size())))
        return false;
    auto *to = static_cast<int32_t *>(v->data);
    for (int32_t k : vars)
        *to++ = k;
    if (run)
        *to = obs.empty() ? 1 : obs[0];
    else
        for (int32_t n : obs)
            *to++ = n;
    return true;
}

// ov_view(V, i, j [, s])
void view_call(int32_t argc, const char *id, int16_t eltype)
{
    m_xeqerrid = id;
    std::vector<int32_t> vars, obs;
    int32_t sel = SEL_NONE;
    bool run = false;
    matobj *v = bi_arg(argc, 1);
    if (!read_vars(bi_arg(argc, 3), &vars) ||
        (argc > 3 && !read_selection(bi_arg(argc, 4), &sel)) ||
        !read_obs(bi_arg(argc, 2), sel, vars, &obs, &run) || !bi_ismatrix(v))
        return;
    for (int32_t k : vars)
        if (is_string(k) != (eltype == MO_STRING)) {
            m_xrc = eltype == MO_STRING ? 3254 : 3253;
            return;
        }
    if (make_view(v, eltype, vars, obs, run))
        m_result(argc, m_mktmat(MO_REAL, 0, 0));
}

// Indices into a list of n: all when the index is a missing scalar; ranges by rows with two
// columns (of a column index) or two rows (of a row index).
bool pick(const matobj *index, int32_t n, std::vector<int32_t> *out)
{
    if (!bi_isarray(index) || !bi_isreal(index))
        return false;
    bool tall = index->cols <= 2 && index->rows >= 1 && (index->rows > 1 || index->cols == 2);
    bool ranges = tall && index->cols == 2;
    if (mo_is1by1(index) && *mo_re(index) >= misval) {
        for (int32_t k = 1; k <= n; k++)
            out->push_back(k);
        return true;
    }
    for (int64_t k = 0; k < mo_count(index); k += ranges ? 2 : 1) {
        double from = mo_re(index)[k], to = ranges ? mo_re(index)[k + 1] : from;
        if (ranges && from >= misval)
            from = 1;
        if (ranges && to >= misval)
            to = n;
        if (!(from >= 1 && from <= to && to <= n))
            return bi_fail(3300);
        for (double x = from; x <= to; x++)
            out->push_back(int32_t(x));
    }
    return true;
}

} // namespace

void biov_view(int32_t argc)
{
    view_call(argc, "ov_view()", MO_REAL);
}
void biov_sview(int32_t argc)
{
    view_call(argc, "ov_sview()", MO_STRING);
}

// ov_subview(X, V, i, j): X becomes a view of rows i and columns j of the view V.
void biov_subview(int32_t argc)
{
    m_xeqerrid = "ov_subview()";
    matobj *x = m_arg(3), *v = m_arg(2);
    if (!bi_ismatrix(x) || !bi_ismatrix(v))
        return;
    if (!v->view) {
        m_xrc = 3104;
        return;
    }
    std::vector<int32_t> rows, cols, vars, obs;
    if (!pick(m_arg(1), v->rows, &rows) || !pick(m_arg(0), v->cols, &cols))
        return;
    bool run = v->view == 1;
    for (int32_t c : cols)
        vars.push_back(v_var(v, c - 1));
    for (int32_t r : rows)
        obs.push_back(v_obs(v, r - 1));
    for (size_t k = 1; k < obs.size(); k++)
        run = run && obs[k] == obs[k - 1] + 1;
    if (make_view(x, v->eltype, vars, obs, run))
        m_result(argc, m_mktmat(MO_REAL, 0, 0));
}

static void parts_of(int32_t argc, const char *id, bool obs)
{
    m_xeqerrid = id;
    const matobj *v = m_arg(0);
    if (!bi_ismatrix(v))
        return;
    if (!v->view) {
        m_xrc = 3104;
        return;
    }
    matobj *r = m_mktmat(MO_REAL, obs ? v->rows : 1, obs ? 1 : v->cols);
    for (int32_t k = 0, n = r ? int32_t(mo_count(r)) : 0; k < n; k++)
        mo_re(r)[k] = obs ? v_obs(v, k) : v_var(v, k);
    if (r)
        m_result(argc, r);
}

void biov_viewvars(int32_t argc)
{
    parts_of(argc, "ov_viewvars()", false);
}
void biov_viewobs(int32_t argc)
{
    parts_of(argc, "ov_viewobs()", true);
}
