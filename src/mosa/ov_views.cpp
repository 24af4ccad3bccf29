// Views: a matrix made to stand for columns and rows of the dataset.
#include "mosa/bihandlers.h"
#include "mosa/ov_index.h"

namespace
{

// The descriptor of a view of columns vars and the observations of the runs.
bool make_view(matobj *v, int16_t eltype, const ov_list<int32_t> &vars, const ov_list<ov_run> &runs,
               int64_t nobs, bool run, fvhandle *terms)
{
    auto kind = int8_t((run ? 1 : 2) + (terms ? 2 : 0));
    if (m_remkmat(v, eltype, kind, int32_t(nobs), int32_t(vars.n)))
        return false;
    auto *to = static_cast<int32_t *>(v->data);
    if (terms) {
        v_fvset(v, terms);
        to += sizeof(fvhandle *) / sizeof *to;
    }
    for (int64_t k = 0; k < vars.n; k++)
        *to++ = vars[k];
    if (run) {
        *to = runs.n ? runs[0].first : 1;
        return true;
    }
    for (int64_t r = 0; r < runs.n; r++)
        for (int32_t n = runs[r].first; n <= runs[r].last; n++)
            *to++ = n;
    return true;
}

// Rows and columns of a view, numbers from 1, become a view; one run of observations stays one.
bool view_of_view(matobj *x, const matobj *v, const ov_list<int32_t> &rows,
                  const ov_list<int32_t> &cols)
{
    ov_list<int32_t> vars;
    ov_list<ov_run> runs;
    for (int64_t k = 0; k < cols.n; k++)
        if (!vars.add(v_var(v, cols[k] - 1)))
            return false;
    for (int64_t k = 0; k < rows.n; k++) {
        int32_t obs = v_obs(v, rows[k] - 1);
        if (runs.n && runs[runs.n - 1].last + 1 == obs)
            runs[runs.n - 1].last = obs;
        else if (!runs.add({obs, obs}))
            return false;
    }
    // The terms outlive the view that is read, should its own place be taken.
    fvhandle *terms = v_fvhandle(v);
    v_fvhold(terms);
    bool good = make_view(x, v->eltype, vars, runs, rows.n, v->view % 2 == 1 && runs.n < 2, terms);
    v_fvlet(terms);
    return good;
}

// ov_view(V, i, j [, s]). Texts read as missing in a view of numbers, numbers as "" in one of
// texts.
void view_call(int32_t argc, const char *id, int16_t eltype)
{
    m_xeqerrid = id;
    ov_cells c;
    matobj *v = bi_arg(argc, 1);
    ov_end end;
    if (end &&
        ov_readterms(bi_arg(argc, 2), bi_arg(argc, 3), argc > 3 ? bi_arg(argc, 4) : nullptr, &c) &&
        bi_ismatrix(v) && (!c.terms || eltype == MO_REAL || bi_fail(3254)) &&
        ov_makeview(v, eltype, c))
        end.done(argc);
}

// Indices into a list of n: all when the index is a missing scalar; ranges by rows with two
// columns (of a column index) or two rows (of a row index).
bool pick(const matobj *index, int32_t n, ov_list<int32_t> *out)
{
    if (!bi_isarray(index) || !bi_isreal(index))
        return false;
    if (mo_is1by1(index) && *mo_re(index) >= misval) {
        for (int32_t k = 1; k <= n; k++)
            if (!out->add(k))
                return false;
        return true;
    }
    bool ranges = index->cols == 2 && index->rows >= 1;
    for (int64_t k = 0; k < mo_count(index); k += ranges ? 2 : 1) {
        double from = mo_re(index)[k], to = ranges ? mo_re(index)[k + 1] : from;
        if (ranges && from >= misval)
            from = 1;
        if (ranges && to >= misval)
            to = n;
        if (!(from >= 1 && from <= to && to <= n))
            return bi_fail(3300);
        for (auto x = int32_t(from); x <= int32_t(to); x++)
            if (!out->add(x))
                return false;
    }
    return true;
}

} // namespace

bool ov_makeview(matobj *v, int16_t eltype, const ov_cells &c)
{
    return make_view(v, eltype, c.vars, c.runs, c.nobs, c.whole, c.terms);
}

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
    ov_list<int32_t> rows, cols;
    ov_end end;
    if (end && pick(m_arg(1), v->rows, &rows) && pick(m_arg(0), v->cols, &cols) &&
        view_of_view(x, v, rows, cols))
        end.done(argc);
}

// Which of n elements of a selection are not 0; all of n when v is null.
static bool chosen(const matobj *v, int32_t n, ov_list<int32_t> *out)
{
    for (int32_t k = 0; k < n; k++)
        if (bi_stop(k))
            return false;
        else if ((!v || (v->view ? v_el1(v, k) : mo_re(v)[k]) != 0) && !out->add(k + 1))
            return false;
    return true;
}

static bool array_of(matobj *a, const matobj *x, const ov_list<int32_t> &rows,
                     const ov_list<int32_t> &cols)
{
    matobj *r = m_mktmat(x->eltype, int32_t(rows.n), int32_t(cols.n));
    bool good = r;
    for (int64_t i = 0; good && i < rows.n; i++)
        for (int64_t j = 0; good && j < cols.n; j++)
            good = !matcpy_el(r, i * cols.n + j, x, int64_t(rows[i] - 1) * x->cols + (cols[j] - 1));
    good = good && !cpymat(a, r, false);
    if (r)
        mo_freemat(r);
    return good;
}

// ov_select(A, X, v): A becomes the rows of X where the column v is not 0, or the columns where
// the row is; a view when X is one.
void biov_select(int32_t argc)
{
    m_xeqerrid = "ov_select()";
    matobj *a = m_arg(2), *x = m_arg(1), *v = m_arg(0);
    if (!bi_ismatrix(a) || !bi_ismatrix(x) || !bi_isreal(v))
        return;
    bool byrow = v->cols == 1 && v->rows == x->rows;
    if (!byrow && !(v->rows == 1 && v->cols == x->cols)) {
        m_xrc = 3200;
        return;
    }
    ov_list<int32_t> rows, cols;
    ov_end end;
    if (end && chosen(byrow ? v : nullptr, x->rows, &rows) &&
        chosen(byrow ? nullptr : v, x->cols, &cols) &&
        (x->view ? view_of_view(a, x, rows, cols) : array_of(a, x, rows, cols)))
        end.done(argc);
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
        mo_re(r)[k] = obs ? v_obs(v, k) : v_var(v, k) > 0 ? v_var(v, k) : misval;
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
