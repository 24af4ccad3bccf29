#include "commands/matrixstat.h"
#include "core/missing.h"
#include "core/rc.h"
#include "core/settings.h"
#include "core/state.h"
#include "core/text.h"
#include "data/umat.h"
#include "data/umateig.h"
#include "data/variables.h"
#include "expr/generate.h"
#include "interp/messages.h"
#include "stats/crossprod.h"
#include "stats/results.h"
#include "stats/statparse.h"
#include <cmath>
#include <cstring>
#include <vector>

namespace {

// NAME ... = : names of matrices up to the equals sign.
int32_t left_side(char (*names)[33], int32_t n)
{
    for (int32_t i = 0; i < n; i++) {
        const char *t = ti_gettok(tokinfo, prsestd);
        if (!*t || *t == '"')
            return required("matrix name");
        if (int32_t rc = chkname(t, false))
            return rc;
        strcut(names[i], 33, t);
    }
    return ti_gtokis(tokinfo, '=');
}

struct accum {
    char name[33], means[33], group[33], glsmat[33], row[33];
    bool constant, deviations;
    std::vector<int32_t> vars;
    double N, scale;
};

int32_t parse(accum *c, bool gls)
{
    statline line;
    line.vlist = PI_REQ;
    line.weights = W_ALL4;
    line.weightdflt = W_FW;
    line.by = false;
    int32_t rc = left_side(&c->name, 1);
    if (rc || (rc = stat_parse(line)))
        return rc;
    c->constant = stat_option("constant", 4, true);
    c->deviations = stat_option("deviations", 1);
    *c->means = *c->group = *c->glsmat = *c->row = 0;
    (void)ti_pi_findargn(tokinfo, parinfo, "means", 1, c->means, 32, 1);
    if (gls) {
        (void)ti_pi_findargn(tokinfo, parinfo, "group", 1, c->group, 32, 1);
        (void)ti_pi_findargn(tokinfo, parinfo, "glsmat", 3, c->glsmat, 32, 1);
        (void)ti_pi_findargn(tokinfo, parinfo, "row", 1, c->row, 32, 1);
    }
    if ((rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    for (int32_t i = 0; i < parinfo->pi_nvar; i++) {
        if (t_isstr(_typlist[parinfo->vl_vr[i] - 1]))
            return error(RC_TYPE);
        c->vars.push_back(parinfo->vl_vr[i]);
    }
    return 0;
}

int32_t collect(accum *c, crossprod *p)
{
    datarows d;
    auto k = int32_t(c->vars.size());
    int32_t rc = dr_open(&d, c->vars.data(), k);
    if (rc || (rc = cp_open(p, k, c->deviations)))
        return rc;
    for (;;) {
        if ((rc = dr_next(&d)))
            return rc;
        if (!d.n)
            break;
        cp_block(p, &d);
    }
    cp_close(p);
    if (!p->n)
        return errout(RC_NOOBS, "no observations\n");
    bool scaled = parinfo->pi_hasexp && (parinfo->pi_wtype & (W_AW | W_PW));
    c->N = scaled || !parinfo->pi_hasexp ? double(p->n) : p->sum_w;
    c->scale = scaled ? c->N / p->sum_w : 1;
    return 0;
}

void name_side(umatname *s, const accum *c, size_t from, bool constant)
{
    size_t n = c->vars.size() - from;
    for (size_t i = 0; i < n; i++)
        strcpy(s[i].name, _varlist[c->vars[from + i] - 1]);
    if (constant)
        strcpy(s[n].name, "_cons");
}

// Sum of w x: nothing of it is left about the means.
double sum_of(const accum *c, const crossprod *p, int32_t j)
{
    return c->deviations ? 0 : cp_mean(p, j) * p->sum_w * c->scale;
}

int32_t leave_means(const accum *c, const crossprod *p)
{
    if (!*c->means)
        return 0;
    auto k = int32_t(c->vars.size());
    matref m;
    int32_t rc = umat_new(c->means, MK_MAT, 1, k + c->constant, &m);
    if (rc)
        return rc;
    name_side(m.col, c, 0, c->constant);
    for (int32_t j = 0; j < k; j++)
        m.m->el[j] = cp_mean(p, j);
    if (c->constant)
        m.m->el[k] = 1;
    strcpy(m.row[0].name, "_cons");
    return 0;
}

// ---- glsaccum

// Rows of one group, with their places in the weighting matrix.
struct glsgroup {
    std::vector<double> x;  // rows of k
    std::vector<int32_t> at;
};

void add_group(const glsgroup &g, size_t k, const matref &W, std::vector<double> *sum)
{
    size_t n = g.at.size();
    for (size_t a = 0; a < n; a++)
        for (size_t b = 0; b < n; b++) {
            double w = umat_el(W.m, g.at[a], g.at[b]);
            if (w == 0)
                continue;
            for (size_t i = 0; i < k; i++)
                for (size_t j = 0; j < k; j++)
                    (*sum)[i * k + j] += g.x[a * k + i] * w * g.x[b * k + j];
        }
}

int32_t one_var(const char *name, int32_t *var)
{
    *var = ovata_findvar(name, 1, !ovata_varabbrev);
    return *var < 0 ? -*var : 0;
}

int32_t gls_sums(const accum *c, const matref &W, int32_t group, int32_t row,
                 std::vector<double> *sum, int64_t *count)
{
    size_t p = c->vars.size(), k = p + c->constant;
    std::vector<int32_t> all(c->vars);
    all.push_back(row);
    all.push_back(group);
    datarows d;
    int32_t rc = dr_open(&d, all.data(), int32_t(all.size()));
    if (rc)
        return rc;
    glsgroup g;
    double now = misval;
    sum->assign(k * k, 0);
    for (;;) {
        if ((rc = dr_next(&d)))
            return rc;
        for (int32_t i = 0; i < d.n; i++) {
            const double *x = d.x + i * d.ld;
            if (x[p + 1] != now) {
                add_group(g, k, W, sum);
                g = {};
                now = x[p + 1];
            }
            if (x[p] < 1 || x[p] > W.m->rows || x[p] != std::floor(x[p]))
                return error(503);
            g.at.push_back(int32_t(x[p]));
            g.x.insert(g.x.end(), x, x + p);
            if (c->constant)
                g.x.push_back(1);
        }
        *count += d.n;
        if (!d.n)
            break;
    }
    add_group(g, k, W, sum);
    return 0;
}

}  // namespace

int32_t mat_accum(int32_t)
{
    accum c = {};
    crossprod p;
    matref m;
    int32_t rc = parse(&c, false);
    if (rc || (rc = collect(&c, &p)))
        return rc;
    auto k = int32_t(c.vars.size()), n = k + c.constant;
    if ((rc = umat_new(c.name, MK_MAT, n, n, &m)))
        return rc;
    for (int32_t i = 0; i < k; i++)
        for (int32_t j = 0; j < k; j++)
            m.m->el[i * n + j] = cp_el(&p, i, j) * c.scale;
    if (c.constant) {
        for (int32_t j = 0; j < k; j++)
            m.m->el[k * n + j] = m.m->el[j * n + k] = sum_of(&c, &p, j);
        m.m->el[k * n + k] = c.N;
    }
    name_side(m.row, &c, 0, c.constant);
    name_side(m.col, &c, 0, c.constant);
    retval_clear();
    retval_set_gscalar(c.N, "N");
    return leave_means(&c, &p);
}

int32_t mat_vecaccum(int32_t)
{
    accum c = {};
    crossprod p;
    matref m;
    int32_t rc = parse(&c, false);
    if (rc)
        return rc;
    if (c.vars.size() < 2 && !c.constant)
        return error(RC_TOOFEWVARS);
    if ((rc = collect(&c, &p)))
        return rc;
    auto k = int32_t(c.vars.size()) - 1;
    if ((rc = umat_new(c.name, MK_MAT, 1, k + c.constant, &m)))
        return rc;
    for (int32_t j = 0; j < k; j++)
        m.m->el[j] = cp_el(&p, 0, j + 1) * c.scale;
    if (c.constant)
        m.m->el[k] = sum_of(&c, &p, 0);
    strcpy(m.row[0].name, _varlist[c.vars[0] - 1]);
    name_side(m.col, &c, 1, c.constant);
    retval_clear();
    retval_set_gscalar(c.N, "N");
    return 0;
}

int32_t mat_glsaccum(int32_t)
{
    accum c = {};
    int32_t rc = parse(&c, true), group = 0, row = 0;
    if (rc)
        return rc;
    if (!*c.group || !*c.glsmat || !*c.row)
        return required("options group(), glsmat() and row()");
    if ((rc = one_var(c.group, &group)) || (rc = one_var(c.row, &row)))
        return rc;
    matref W, m;
    if (!umat_get(c.glsmat, MK_MAT, &W))
        return matnotfound(c.glsmat);
    if (W.m->rows != W.m->cols)
        return error(503);
    std::vector<double> sum;
    int64_t count = 0;
    if ((rc = gls_sums(&c, W, group, row, &sum, &count)))
        return rc;
    if (!count)
        return errout(RC_NOOBS, "no observations\n");
    auto n = int32_t(c.vars.size()) + c.constant;
    if ((rc = umat_new(c.name, MK_MAT, n, n, &m)))
        return rc;
    memcpy(m.m->el, sum.data(), sizeof(double) * sum.size());
    name_side(m.row, &c, 0, c.constant);
    name_side(m.col, &c, 0, c.constant);
    retval_clear();
    retval_set_gscalar(double(count), "N");
    return 0;
}

// ---- decompositions

// The matrix expression behind the equals sign, worked out under a name of its own; the
// caller's names may stand in it.
static int32_t operand(matref *a, std::vector<double> *el)
{
    static const char *const temp = "1operand";
    static xeqpgm pgm;
    initialize_compexp_shared();
    int32_t rc = compmatexp(&pgm, W_NUMMAT, false, false, true);
    if (!rc && *ti_gettok(tokinfo, prsestd))
        rc = error(RC_SYNTAX);
    if (!rc)
        rc = xeqmat_mat(&pgm, temp, MK_MAT);
    if (rc)
        return rc;
    if (!umat_get(temp, MK_MAT, a))
        return matnotfound(temp);
    if (umat_missing(a))
        return error(504);
    el->assign(a->m->el, a->m->el + int64_t(a->m->rows) * a->m->cols);
    return 0;
}

// NAME NAME = A for a square A; its numbers and their order.
static int32_t two_of_square(char (*names)[33], matref *a, std::vector<double> *el, int32_t *n)
{
    int32_t rc = left_side(names, 2);
    if (rc || (rc = operand(a, el)))
        return rc;
    *n = a->m->rows;
    return *n == a->m->cols ? 0 : error(503);
}

static int32_t put(const char *name, int32_t rows, int32_t cols, const double *el,
                   const std::vector<umatname> &row, const std::vector<umatname> &col)
{
    matref m;
    int32_t rc = umat_new(name, MK_MAT, rows, cols, &m);
    if (rc)
        return rc;
    memcpy(m.m->el, el, sizeof(double) * size_t(rows) * size_t(cols));
    if (!row.empty())
        memcpy(m.row, row.data(), sizeof(umatname) * size_t(rows));
    if (!col.empty())
        memcpy(m.col, col.data(), sizeof(umatname) * size_t(cols));
    return 0;
}

static std::vector<umatname> numbered(int32_t n, char letter)
{
    std::vector<umatname> s(static_cast<size_t>(n));
    umat_defstripe(s.data(), n, letter);
    return s;
}

struct operand_gone {
    ~operand_gone() { (void)umat_rm("1operand", MK_MAT); }
};

int32_t mat_svd(int32_t)
{
    operand_gone at_end;
    char name[3][33];
    matref a;
    std::vector<double> u;
    int32_t rc = left_side(name, 3);
    if (rc || (rc = operand(&a, &u)))
        return rc;
    int32_t m = a.m->rows, n = a.m->cols;
    if (m < n)
        return error(503);
    std::vector<umatname> row(a.row, a.row + m), col(a.col, a.col + n), e = numbered(n, 'c');
    std::vector<double> w(static_cast<size_t>(n)), v(size_t(n) * size_t(n));
    if ((rc = svd_jacobi(u.data(), m, n, w.data(), v.data())))
        return rc;
    if ((rc = put(name[0], m, n, u.data(), row, e)) || (rc = put(name[1], 1, n, w.data(), {}, e)))
        return rc;
    return put(name[2], n, n, v.data(), col, e);
}

int32_t mat_symeigen(int32_t)
{
    operand_gone at_end;
    char name[2][33];
    matref a;
    std::vector<double> el;
    int32_t n = 0, rc = two_of_square(name, &a, &el, &n);
    if (rc)
        return rc;
    if (!umat_issym(&a))
        return error(505);
    std::vector<umatname> row(a.row, a.row + n), e = numbered(n, 'e');
    std::vector<double> w(static_cast<size_t>(n)), v(size_t(n) * size_t(n));
    if ((rc = eig_symmetric(el.data(), n, w.data(), v.data()))
        || (rc = put(name[0], n, n, v.data(), row, e)))
        return rc;
    return put(name[1], 1, n, w.data(), {}, e);
}

int32_t mat_eigenvalues(int32_t)
{
    operand_gone at_end;
    char name[2][33];
    matref a;
    std::vector<double> el;
    int32_t n = 0, rc = two_of_square(name, &a, &el, &n);
    if (rc)
        return rc;
    std::vector<umatname> e = numbered(n, 'e'), one = numbered(1, 'r');
    std::vector<double> re(static_cast<size_t>(n)), im(static_cast<size_t>(n));
    if ((rc = eig_general(el.data(), n, re.data(), im.data())))
        return rc;
    strcpy(one[0].name, "real");
    if ((rc = put(name[0], 1, n, re.data(), one, e)))
        return rc;
    strcpy(one[0].name, "complex");
    return put(name[1], 1, n, im.data(), one, e);
}
