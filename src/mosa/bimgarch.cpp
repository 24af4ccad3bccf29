// Conditional variances of several series, and normal log likelihoods with correlations that are
// constant or move. E and H are a period a row, a series a column: errors and their variances.
// What is not a variance or a correlation matrix makes the likelihood missing.
#include "core/missing.h"
#include "mosa/bi_kern.h"
#include "mosa/bihandlers.h"
#include "stats/ghk.h"
#include <algorithm>
#include <cmath>

// _mgarch_loop_u(E, w, A, B, h0): for each series h = w + sum of A[j] e^2 of j periods ago + sum of
// B[j] h of j periods ago, h0 standing for both before the first (Bollerslev, Journal of
// Econometrics 31 (1986) 307). w and h0 are rows, A and B a row for each lag.
void bi_mgarch_loop_u(int32_t argc)
{
    m_xeqerrid = "_mgarch_loop_u()";
    bi_in e(m_arg(4)), w(m_arg(3)), a(m_arg(2)), b(m_arg(1)), h0(m_arg(0));
    if (!e || !w || !a || !b || !h0)
        return;
    int32_t k = e.cols;
    if (w.cols != k || w.rows != 1 || h0.cols != k || h0.rows != 1 || (a.rows && a.cols != k) ||
        (b.rows && b.cols != k)) {
        m_xrc = 3200;
        return;
    }
    bi_new r(e.rows, k);
    if (!r || !bi_nomissing(e) || !bi_nomissing(w) || !bi_nomissing(a) || !bi_nomissing(b) ||
        !bi_nomissing(h0))
        return;
    for (int64_t t = 0; t < e.rows; t++) {
        if (bi_stop(t))
            return;
        for (int32_t c = 0; c < k; c++) {
            double h = w.p[c];
            for (int64_t j = 0; j < a.rows; j++) {
                double z = t > j ? e.p[(t - j - 1) * k + c] : 0;
                h += a.p[j * k + c] * (t > j ? z * z : h0.p[c]);
            }
            for (int64_t j = 0; j < b.rows; j++)
                h += b.p[j * k + c] * (t > j ? r.p[(t - j - 1) * k + c] : h0.p[c]);
            r.p[t * k + c] = std::fabs(h) < misval ? h : misval;
        }
    }
    r.result(argc);
}

namespace
{

struct series {
    int64_t n;
    int32_t k;
    const double *e, *h, *r;
    double *z, *now, *root, *q; // k; k k; k k; k k
};

// One period under correlations now: misval when they are none or a variance is not above 0.
double period(const series &s, int64_t t)
{
    double sum = s.k * 1.8378770664093454836; // ln 2 pi
    if (!ghk_root(s.now, s.k, s.root))
        return misval;
    for (int32_t i = 0; i < s.k; i++) {
        double h = s.h[t * s.k + i];
        if (!(h > 0))
            return misval;
        double u = s.z[i] = s.e[t * s.k + i] / std::sqrt(h);
        double *y = s.q + i; // solves root y = z as it goes
        for (int32_t j = 0; j < i; j++)
            u -= s.root[i * s.k + j] * s.q[j];
        *y = u / s.root[i * s.k + i];
        sum += *y * *y + std::log(h) + 2 * std::log(s.root[i * s.k + i]);
    }
    return -sum / 2;
}

// The sum over periods; move(t) makes the correlations of period t + 1 from what is known at t.
template <class F> bool total(const series &s, double *lnf, F move)
{
    *lnf = 0;
    std::copy(s.r, s.r + s.k * s.k, s.now);
    for (int64_t t = 0; t < s.n; t++) {
        if (t % 256 == 0 && row_break())
            return false;
        double one = period(s, t);
        *lnf = one < misval && std::fabs(*lnf + one) < misval ? *lnf + one : misval;
        if (*lnf >= misval)
            return true;
        move(t);
    }
    return true;
}

// The arguments E, H, R from the first on, and what a period works in.
struct likelihood {
    bi_in e, h, r;
    bi_doubles work;
    series s;
    bool good;
    explicit likelihood(int32_t argc)
        : e(bi_arg(argc, 1)), h(bi_arg(argc, 2)), r(bi_arg(argc, 3)),
          work(e ? 5 * int64_t(e.cols) * e.cols + 2 * int64_t(e.cols) : 0), s{}, good(false)
    {
        if (!e || !h || !r || !work)
            return;
        int32_t k = e.cols, kk = k * k;
        if (!k || k > 1000 || h.rows != e.rows || h.cols != k || r.rows != k || r.cols != k) {
            m_xrc = 3200;
            return;
        }
        if (!bi_nomissing(e) || !bi_nomissing(h) || !bi_nomissing(r))
            return;
        double *w = work.p;
        s = {e.rows, k, e.p, h.p, r.p, w, w + 2 * k, w + 2 * k + kk, w + 2 * k + 2 * kk};
        good = true;
    }
    double *spare() const { return s.q + s.k * s.k; } // two more of k by k
};

bool weights(int32_t argc, double *l1, double *l2, bool *inside)
{
    if (!bi_real(bi_arg(argc, 4), l1) || !bi_real(bi_arg(argc, 5), l2))
        return false;
    *inside = *l1 >= 0 && *l2 >= 0 && *l1 + *l2 < 1;
    return true;
}

} // namespace

// _mgarch_ll_ccc_u(E, H, R): correlations R (Bollerslev, Review of Economics and Statistics 72
// (1990) 498).
void bi_mgarch_ll_ccc_u(int32_t argc)
{
    m_xeqerrid = "_mgarch_ll_ccc_u()";
    likelihood a(argc);
    double lnf;
    if (a.good && total(a.s, &lnf, [](int64_t) {}))
        m_result(argc, m_mktsmatsto(lnf));
}

// _mgarch_ll_dcc_u(E, H, R, l1, l2): Q = (1 - l1 - l2) R + l1 z z' + l2 Q, begun at R, made into
// correlations (Engle, Journal of Business and Economic Statistics 20 (2002) 339).
void bi_mgarch_ll_dcc_u(int32_t argc)
{
    m_xeqerrid = "_mgarch_ll_dcc_u()";
    likelihood a(argc);
    double l1, l2, lnf = misval;
    bool inside;
    if (!a.good || !weights(argc, &l1, &l2, &inside))
        return;
    const series &s = a.s;
    double *q = a.spare();
    int32_t k = s.k;
    std::copy(s.r, s.r + k * k, q);
    auto move = [&](int64_t) {
        for (int32_t i = 0; i < k; i++)
            for (int32_t j = 0; j < k; j++)
                q[i * k + j] =
                    (1 - l1 - l2) * s.r[i * k + j] + l1 * s.z[i] * s.z[j] + l2 * q[i * k + j];
        for (int32_t i = 0; i < k; i++)
            for (int32_t j = 0; j < k; j++)
                s.now[i * k + j] =
                    i == j ? 1 : q[i * k + j] / std::sqrt(q[i * k + i] * q[j * k + j]);
    };
    if (inside && !total(s, &lnf, move))
        return;
    m_result(argc, m_mktsmatsto(lnf));
}

// _mgarch_ll_vcc_u(E, H, R, l1, l2 [, m]): R[t] = (1 - l1 - l2) R + l1 S + l2 R[t - 1], S the
// correlations about 0 of the m periods before, k + 1 if not given, and R while there are fewer
// (Tse and Tsui, Journal of Business and Economic Statistics 20 (2002) 351).
void bi_mgarch_ll_vcc_u(int32_t argc)
{
    m_xeqerrid = "_mgarch_ll_vcc_u()";
    likelihood a(argc);
    double l1, l2, lnf = misval;
    bool inside;
    if (!a.good || !weights(argc, &l1, &l2, &inside))
        return;
    const series &s = a.s;
    int32_t k = s.k, m = k + 1;
    if (argc > 5 && !bi_int(bi_arg(argc, 6), 1, 1000000, &m))
        return;
    bi_doubles past(int64_t(m) * k);
    if (!past)
        return;
    double *sum = a.spare();
    auto move = [&](int64_t t) {
        std::copy(s.z, s.z + k, past.p + t % m * k);
        bool enough = t + 1 >= m;
        if (enough)
            for (int32_t i = 0; i < k; i++)
                for (int32_t j = 0; j <= i; j++) {
                    double z = 0;
                    for (int64_t l = 0; l < m; l++)
                        z += past[l * k + i] * past[l * k + j];
                    sum[i * k + j] = z;
                }
        for (int32_t i = 0; i < k; i++)
            for (int32_t j = 0; j < i; j++) {
                double scale = enough ? std::sqrt(sum[i * k + i] * sum[j * k + j]) : 0;
                double of = scale > 0 ? sum[i * k + j] / scale : s.r[i * k + j];
                s.now[i * k + j] = s.now[j * k + i] =
                    (1 - l1 - l2) * s.r[i * k + j] + l1 * of + l2 * s.now[i * k + j];
            }
    };
    if (inside && !total(s, &lnf, move))
        return;
    m_result(argc, m_mktsmatsto(lnf));
}
