// What a maximum likelihood engine with equations spends its time on.
//
// An equation is its variables X (n by k, views too) and cons, 1 (the default) when a constant
// stands behind them; its coefficients are a vector of k + cons. X with no columns is a constant
// alone. Weights are a column or one number. Anything missing makes a sum missing.
#include "core/missing.h"
#include "mosa/bi_kern.h"
#include "mosa/bihandlers.h"
#include "stats/moptkern.h"

namespace
{

bool complete(const bi_in &a)
{
    for (int64_t k = 0, n = a.count(); k < n; k++)
        if (!(a.p[k] < misval))
            return false;
    return true;
}

// Argument k as a constant's flag; 1 when there are fewer arguments.
bool constant(int32_t argc, int32_t k, int32_t *cons)
{
    double z = 1;
    if (k <= argc && !bi_real(bi_arg(argc, k), &z))
        return false;
    *cons = z != 0;
    return true;
}

mopt_eq equation(const bi_in &x, int32_t cons)
{
    return {x.p, x.rows, x.cols, cons};
}

bool column(const bi_in &a, int64_t n)
{
    return (a.cols == 1 && a.rows == n) || bi_fail(3200);
}

void done(int32_t argc, bool good, bi_new &r)
{
    if (good)
        r.result(argc);
    else
        m_xrc = 1;
}

} // namespace

// _mopt_xb(X, b [, cons [, offset]]): the linear index, n by 1.
void bi_mopt_xb(int32_t argc)
{
    m_xeqerrid = "_mopt_xb()";
    bi_in x(bi_arg(argc, 1));
    if (!x)
        return;
    bi_in b(bi_arg(argc, 2));
    int32_t cons;
    if (!b || !constant(argc, 3, &cons))
        return;
    if (b.count() != int64_t(x.cols) + cons || (b.count() && !b.isvector())) {
        m_xrc = 3200;
        return;
    }
    bi_new r(x.rows, 1);
    if (!r)
        return;
    bool whole = complete(b), good = true;
    if (whole && complete(x))
        good = mopt_xb(equation(x, cons), b.p, r.p, 1);
    else
        for (int32_t i = 0; i < x.rows; i++) { // an observation with a gap has no index
            mopt_eq one{x.p + int64_t(i) * x.cols, 1, x.cols, cons};
            bool ok = whole;
            for (int32_t j = 0; j < x.cols; j++)
                ok &= one.x[j] < misval;
            r.p[i] = misval;
            if (ok)
                mopt_xb(one, b.p, r.p + i, 1);
        }
    if (good && argc > 3) {
        bi_in off(bi_arg(argc, 4));
        if (!off)
            return;
        if (off.count() != 1 && !column(off, x.rows))
            return;
        for (int32_t i = 0; i < x.rows; i++) {
            double o = off.p[off.count() == 1 ? 0 : i], z = r.p[i] + o;
            r.p[i] = r.p[i] < misval && o < misval && __builtin_fabs(z) < misval ? z : misval;
        }
    }
    done(argc, good, r);
}

// _mopt_xbmat(X, B [, cons]): a column of indices for each row of B.
void bi_mopt_xbmat(int32_t argc)
{
    m_xeqerrid = "_mopt_xbmat()";
    bi_in x(bi_arg(argc, 1));
    if (!x)
        return;
    bi_in b(bi_arg(argc, 2));
    int32_t cons;
    if (!b || !constant(argc, 3, &cons))
        return;
    if (b.cols != x.cols + cons) {
        m_xrc = 3200;
        return;
    }
    bi_new r(x.rows, b.rows);
    if (!r)
        return;
    bool good = true;
    if (!complete(x) || !complete(b))
        fillwithmissing(r.m);
    else
        for (int32_t q = 0; q < b.rows && good; q++)
            good = mopt_xb(equation(x, cons), b.p + int64_t(q) * b.cols, r.p + q, b.rows);
    done(argc, good, r);
}

// ---- indices kept while one coefficient moves

// _mopt_holdxbi(H, i, xb): H becomes a row of pointers, at least i long, whose i-th leads to a
// copy of xb.
void bi_mopt_holdxbi(int32_t argc)
{
    m_xeqerrid = "_mopt_holdxbi()";
    matobj *h = m_arg(2);
    int32_t i;
    if (!bi_isarray(h) || !bi_int(m_arg(1), 1, 10000, &i))
        return;
    bi_in xb(m_arg(0));
    if (!xb)
        return;
    int32_t have = h->eltype == MO_POINTER && h->rows == 1 ? h->cols : 0;
    matobj *copy = m_dupmat(xb.m);
    if (!copy)
        return;
    if (have < i) {
        matobj *more = m_mktmat(MO_POINTER, 1, i);
        if (!more) {
            mo_freemat(copy);
            return;
        }
        for (int32_t k = 0; k < have; k++)
            if (mo_pel(h)[k])
                pelreplace(more, k, mo_pel(h)[k]);
        m_swapmat(h, more);
        mo_freemat(more);
    }
    pelreplace(h, i - 1, copy);
    bi_void(argc);
}

static matobj *held(matobj *h, int32_t i)
{
    if (h->eltype != MO_POINTER || h->rows != 1 || i > h->cols || !mo_pel(h)[i - 1]) {
        m_xrc = 3300;
        return nullptr;
    }
    return mo_pel(h)[i - 1];
}

// _mopt_unholdxbi(H, i): lets go of it.
void bi_mopt_unholdxbi(int32_t argc)
{
    m_xeqerrid = "_mopt_unholdxbi()";
    matobj *h = m_arg(1);
    int32_t i;
    if (!bi_isarray(h) || !bi_int(m_arg(0), 1, 10000, &i) || !held(h, i))
        return;
    pelreplace(h, i - 1, nullptr);
    bi_void(argc);
}

// _mopt_xbdelta(H, i, X, j, delta): the index held as i with coefficient j of its equation moved
// by delta, j behind the last variable meaning the constant.
void bi_mopt_xbdelta(int32_t argc)
{
    m_xeqerrid = "_mopt_xbdelta()";
    matobj *h = m_arg(4), *x = m_arg(2);
    int32_t i, j;
    double delta;
    if (!bi_isarray(h) || !bi_int(m_arg(3), 1, 10000, &i) || !bi_isreal(x) ||
        !bi_int(m_arg(1), 1, x->cols + 1, &j) || !bi_real(m_arg(0), &delta))
        return;
    const matobj *xb = held(h, i);
    if (!xb)
        return;
    if (mo_isfcn(xb) || xb->view || xb->eltype != MO_REAL || xb->cols != 1 || xb->rows != x->rows) {
        m_xrc = 3200;
        return;
    }
    bi_new r(x->rows, 1);
    if (!r)
        return;
    for (int32_t k = 0; k < x->rows; k++) {
        if (bi_stop(k))
            return;
        double v = j > x->cols ? 1 : m_el(x, k, j - 1), z = mo_re(xb)[k] + delta * v;
        bool ok = v < misval && delta < misval && mo_re(xb)[k] < misval;
        r.p[k] = ok && __builtin_fabs(z) < misval ? z : misval;
    }
    r.result(argc);
}

// ---- sums

static void vecsum(int32_t argc, const char *id, bool plain)
{
    m_xeqerrid = id;
    bi_in x(bi_arg(argc, 1));
    if (!x)
        return;
    bi_in s(bi_arg(argc, 2));
    int32_t cons;
    if (!s || !constant(argc, 3, &cons) || !column(s, x.rows))
        return;
    bi_in w(bi_arg(argc, argc > 3 ? 4 : 2));
    if (!w || !column(w, x.rows))
        return;
    mopt_eq e = equation(x, cons);
    bi_new r(1, e.kc());
    bi_doubles work(2 * int64_t(e.kc()));
    if (!r || !work)
        return;
    bool good = true;
    if (complete(x) && complete(s) && complete(w))
        good = mopt_vecsum(e, s.p, argc > 3 ? w.p : nullptr, plain, r.p, work.p);
    else
        fillwithmissing(r.m);
    done(argc, good, r);
}

static void matsum_of(int32_t argc, bool plain, const bi_in &x, const bi_in &y, int32_t xcons,
                      int32_t ycons, matobj *factors, matobj *weights)
{
    bi_in s(factors);
    if (!s || !column(s, x.rows) || (y.rows != x.rows && !bi_fail(3200)))
        return;
    bi_in w(weights ? weights : factors);
    if (!w || !column(w, x.rows))
        return;
    mopt_eq a = equation(x, xcons), b = equation(y, ycons);
    int64_t size = int64_t(a.kc()) * b.kc();
    bi_new r(a.kc(), b.kc());
    bi_doubles work(2 * size);
    if (!r || !work)
        return;
    bool good = true;
    if (complete(x) && complete(y) && complete(s) && complete(w))
        good = mopt_matsum(a, b, s.p, weights ? w.p : nullptr, plain, r.p, work.p);
    else
        fillwithmissing(r.m);
    done(argc, good, r);
}

static void matsum_xx(int32_t argc, const char *id, bool plain)
{
    m_xeqerrid = id;
    bi_in x(bi_arg(argc, 1));
    int32_t cons;
    if (x && constant(argc, 3, &cons))
        matsum_of(argc, plain, x, x, cons, cons, bi_arg(argc, 2),
                  argc > 3 ? bi_arg(argc, 4) : nullptr);
}

static void matsum_xy(int32_t argc, const char *id, bool plain)
{
    m_xeqerrid = id;
    bi_in x(bi_arg(argc, 1));
    if (!x)
        return;
    bi_in y(bi_arg(argc, 2));
    int32_t xcons, ycons;
    if (y && constant(argc, 4, &xcons) && constant(argc, 5, &ycons))
        matsum_of(argc, plain, x, y, xcons, ycons, bi_arg(argc, 3),
                  argc > 5 ? bi_arg(argc, 6) : nullptr);
}

// _mopt_vecsum(X, s [, cons [, w]]): the sum of w s x, a row. The old forms add term by term.
void bi_mopt_vecsum(int32_t argc)
{
    vecsum(argc, "_mopt_vecsum()", false);
}
void bi_mopt_oldvecsum(int32_t argc)
{
    vecsum(argc, "_mopt_oldvecsum()", true);
}
// _mopt_matsum_xx(X, s [, cons [, w]]): the sum of w s x'x.
void bi_mopt_matsum_xx(int32_t argc)
{
    matsum_xx(argc, "_mopt_matsum_xx()", false);
}
void bi_mopt_oldmatsum_xx(int32_t argc)
{
    matsum_xx(argc, "_mopt_oldmatsum_xx()", true);
}
// _mopt_matsum_xy(X, Y, s [, xcons [, ycons [, w]]]): the sum of w s x'y.
void bi_mopt_matsum_xy(int32_t argc)
{
    matsum_xy(argc, "_mopt_matsum_xy()", false);
}
void bi_mopt_oldmatsum_xy(int32_t argc)
{
    matsum_xy(argc, "_mopt_oldmatsum_xy()", true);
}

static void bysum_of(int32_t argc, const bi_in &x, const bi_in &y, int32_t xcons, int32_t ycons,
                     matobj *g_arg, matobj *a_arg, matobj *b_arg, matobj *c_arg)
{
    bi_in g(g_arg), a(a_arg), b(b_arg), c(c_arg);
    int64_t n = x.rows;
    if (!g || !a || !b || !c || !column(g, n) || !column(a, n) || !column(b, n) || !column(c, n) ||
        (y.rows != n && !bi_fail(3200)))
        return;
    mopt_eq e = equation(x, xcons), f = equation(y, ycons);
    bi_new r(e.kc(), f.kc());
    bi_doubles work(int64_t(e.kc()) + f.kc());
    if (!r || !work)
        return;
    bool whole = complete(x) && complete(y) && complete(b) && complete(c), good = true;
    for (int64_t i = 0; whole && i < n; i++) // a counts where groups end
        whole = a.p[i] < misval || (i + 1 < n && g.p[i + 1] == g.p[i]);
    if (whole)
        good = mopt_bysum(e, f, g.p, a.p, b.p, c.p, r.p, work.p);
    else
        fillwithmissing(r.m);
    done(argc, good, r);
}

// _mopt_matbysum_xx(X, g, a, b [, cons]): over groups, which are runs of equal g, the sum of
// a (sum b x)' (sum b x), a taken from the last observation of a group.
void bi_mopt_matbysum_xx(int32_t argc)
{
    m_xeqerrid = "_mopt_matbysum_xx()";
    bi_in x(bi_arg(argc, 1));
    int32_t cons;
    if (x && constant(argc, 5, &cons))
        bysum_of(argc, x, x, cons, cons, bi_arg(argc, 2), bi_arg(argc, 3), bi_arg(argc, 4),
                 bi_arg(argc, 4));
}

// _mopt_matbysum_xy(X, Y, g, a, b, c [, xcons [, ycons]]): the same of a (sum b x)' (sum c y).
void bi_mopt_matbysum_xy(int32_t argc)
{
    m_xeqerrid = "_mopt_matbysum_xy()";
    bi_in x(bi_arg(argc, 1));
    if (!x)
        return;
    bi_in y(bi_arg(argc, 2));
    int32_t xcons, ycons;
    if (y && constant(argc, 7, &xcons) && constant(argc, 8, &ycons))
        bysum_of(argc, x, y, xcons, ycons, bi_arg(argc, 3), bi_arg(argc, 4), bi_arg(argc, 5),
                 bi_arg(argc, 6));
}
