// Log likelihoods of logit, probit, ordered and multinomial models, with derivatives by the
// indices (e2) or by the coefficients (d2). What has no likelihood makes it missing, and the
// derivatives with it: an engine steps back then.
//
//   _mopt_logit_e2(todo, y, XB, lnf, s, H)          also probit, mlogit
//   _mopt_ologit_e2(todo, y, xb, cuts, lnf, s, H)   also oprobit
//   _mopt_logit_d2(todo, y, X, b, f, g, H [, w [, offset [, cons]]])   all five
//
// todo 0 makes lnf or f, 1 also s or g, 2 also H. The e2 forms give the total, and an observation a
// row: s by the indices, H by their lower triangle, row by row. In the d2 forms f is the total, g a
// row, H square. y: 0 or not; 1 to K with K - 1 cuts, which b has behind the coefficients; 0, the
// base, to m, with m sets of coefficients in b.
#include "core/missing.h"
#include "mosa/bi_kern.h"
#include "mosa/bihandlers.h"
#include "stats/moptkern.h"

namespace
{

bool ordered(mopt_model model)
{
    return model == MOPT_OLOGIT || model == MOPT_OPROBIT;
}

bool target(const matobj *m)
{
    return bi_ismatrix(m);
}

struct e2_out {
    double *lnf, *s, *h;
};

// Every observation; the total, misval when one has none. False on a break.
bool observations(mopt_model model, int32_t todo, const bi_in &y, const bi_in &xb,
                  const bi_in *cuts, int32_t m, const e2_out &to, double *total)
{
    int32_t nh = m * (m + 1) / 2;
    bi_doubles work(2 * int64_t(m) + nh);
    if (!work)
        return false;
    double *eta = work.p, *s = eta + m, *h = s + m;
    *total = 0;
    for (int64_t i = 0; i < y.rows; i++) {
        if (i % 1024 == 0 && row_break())
            return false;
        bool ok = y.p[i] < misval;
        for (int32_t q = 0; q < m; q++) {
            eta[q] = cuts && q ? cuts->p[q - 1] : xb.p[i * xb.cols + q];
            ok &= eta[q] < misval;
        }
        double ln = ok ? mopt_obs(model, y.p[i], eta, m, s, h) : misval;
        ok = __builtin_fabs(ln) < misval;
        to.lnf[i] = ok ? ln : misval;
        *total = ok && *total < misval ? *total + ln : misval;
        for (int32_t q = 0; todo > 0 && q < m; q++)
            to.s[i * m + q] = ok ? s[q] : misval;
        for (int32_t q = 0; todo > 1 && q < nh; q++)
            to.h[i * nh + q] = ok ? h[q] : misval;
    }
    return true;
}

void e2(int32_t argc, const char *id, mopt_model model)
{
    m_xeqerrid = id;
    int32_t todo;
    if (!bi_int(bi_arg(argc, 1), 0, 2, &todo))
        return;
    bi_in y(bi_arg(argc, 2));
    if (!y)
        return;
    bi_in xb(bi_arg(argc, 3));
    if (!xb)
        return;
    bi_in cuts(bi_arg(argc, ordered(model) ? 4 : 3));
    if (!cuts || !target(m_arg(2)) || !target(m_arg(1)) || !target(m_arg(0)))
        return;
    int64_t m = ordered(model) ? cuts.count() + 1 : xb.cols;
    bool one = model == MOPT_LOGIT || model == MOPT_PROBIT || ordered(model);
    if (y.cols != 1 || xb.rows != y.rows || xb.cols < 1 || (one && xb.cols != 1) || m > 1000 ||
        (ordered(model) && !cuts.isvector())) {
        m_xrc = 3200;
        return;
    }
    auto k = int32_t(m);
    bi_new lnf(y.rows, 1), s(todo > 0 ? y.rows : 0, k), h(todo > 1 ? y.rows : 0, k * (k + 1) / 2);
    double total;
    if (!lnf || !s || !h ||
        !observations(model, todo, y, xb, ordered(model) ? &cuts : nullptr, k, {lnf.p, s.p, h.p},
                      &total))
        return;
    lnf.give(m_arg(2));
    if (todo > 0)
        s.give(m_arg(1));
    if (todo > 1)
        h.give(m_arg(0));
    m_result(argc, m_mktsmatsto(total));
}

bool all_there(const bi_in &a)
{
    for (int64_t k = 0, n = a.count(); k < n; k++)
        if (!(a.p[k] < misval))
            return false;
    return true;
}

// One number or a column of n, or a code.
bool spread(const bi_in &a, int64_t n)
{
    return a.count() == 1 || (a.cols == 1 && a.rows == n) || bi_fail(3200);
}

// The number of indices by the length of b, 0 when it does not suit the model.
int32_t indices(mopt_model model, int64_t nb, const mopt_eq &e)
{
    if (ordered(model))
        return nb >= e.k && nb - e.k < 1000 ? int32_t(nb - e.k + 1) : 0;
    if (model != MOPT_MLOGIT)
        return nb == e.kc() ? 1 : 0;
    return e.kc() && nb % e.kc() == 0 && nb / e.kc() <= 1000 ? int32_t(nb / e.kc()) : 0;
}

struct d2_in {
    const bi_in &y, &x, &b, &w, &off;
};

void d2_run(int32_t argc, const d2_in &in, int32_t todo, const mopt_data &d, matobj *const *to)
{
    int32_t p = d.params();
    bi_new f(1, 1), g(1, todo > 0 ? p : 0), h(todo > 1 ? p : 0, todo > 1 ? p : 0);
    bi_doubles work(2 * int64_t(d.m) + int64_t(d.m) * (d.m + 1) / 2 + d.e.kc());
    if (!f || !g || !h || !work)
        return;
    *f.p = misval;
    if (all_there(in.y) && all_there(in.x) && all_there(in.b) && all_there(in.w) &&
        all_there(in.off) && !mopt_total(d, todo, f.p, g.p, h.p, work.p)) {
        m_xrc = 1;
        return;
    }
    if (*f.p >= misval) {
        fillwithmissing(g.m);
        fillwithmissing(h.m);
    }
    f.give(to[0]);
    if (todo > 0)
        g.give(to[1]);
    if (todo > 1)
        h.give(to[2]);
    bi_void(argc);
}

void d2(int32_t argc, const char *id, mopt_model model)
{
    m_xeqerrid = id;
    int32_t todo;
    double cons = 1;
    if (!bi_int(bi_arg(argc, 1), 0, 2, &todo))
        return;
    bi_in y(bi_arg(argc, 2));
    if (!y)
        return;
    bi_in x(bi_arg(argc, 3));
    if (!x)
        return;
    bi_in b(bi_arg(argc, 4));
    matobj *to[3] = {bi_arg(argc, 5), bi_arg(argc, 6), bi_arg(argc, 7)};
    if (!b || !target(to[0]) || !target(to[1]) || !target(to[2]))
        return;
    bi_in w(bi_arg(argc, argc > 7 ? 8 : 2));
    if (!w)
        return;
    bi_in off(bi_arg(argc, argc > 8 ? 9 : 2));
    if (!off || (argc > 9 && !bi_real(m_arg(0), &cons)))
        return;
    mopt_eq e{x.p, x.rows, x.cols, cons != 0 && !ordered(model)};
    int32_t m = indices(model, b.count(), e);
    if (y.cols != 1 || x.rows != y.rows || !m || !b.isvector()) {
        m_xrc = 3200;
        return;
    }
    if (!spread(w, y.rows) || !spread(off, y.rows))
        return;
    mopt_data d{
        model,     y.p,        e, m, b.p, argc > 7 ? w.p : nullptr, argc > 8 ? off.p : nullptr,
        w.count(), off.count()};
    d2_run(argc, {y, x, b, w, off}, todo, d, to);
}

} // namespace

#define MODEL(name, model)                                                                         \
    void bi_mopt_##name##_e2(int32_t argc)                                                         \
    {                                                                                              \
        e2(argc, "_mopt_" #name "_e2()", model);                                                   \
    }                                                                                              \
    void bi_mopt_##name##_d2(int32_t argc)                                                         \
    {                                                                                              \
        d2(argc, "_mopt_" #name "_d2()", model);                                                   \
    }
MODEL(logit, MOPT_LOGIT)
MODEL(probit, MOPT_PROBIT)
MODEL(ologit, MOPT_OLOGIT)
MODEL(oprobit, MOPT_OPROBIT)
MODEL(mlogit, MOPT_MLOGIT)
#undef MODEL
