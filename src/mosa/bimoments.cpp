// Variances of scores and of samples.
#include "core/missing.h"
#include "mosa/bi_kern.h"
#include "mosa/bihandlers.h"
#include <algorithm>

namespace
{

// The rows of n in rising order of g, equal ones as they came; null after a failure.
bool in_order(const bi_in &g, bi_doubles &order)
{
    for (int64_t i = 0; i < g.rows; i++)
        order[i] = double(i);
    std::stable_sort(order.p, order.p + g.rows,
                     [&](double a, double b) { return g.p[int64_t(a)] < g.p[int64_t(b)]; });
    return !row_break();
}

// to += u'u, the lower triangle.
void add_square(double *to, const double *u, int32_t k, double f)
{
    for (int32_t r = 0; r < k; r++)
        for (int32_t c = 0; c <= r; c++)
            to[int64_t(r) * k + c] += f * u[r] * u[c];
}

void mirror(double *to, int32_t k, double divisor)
{
    for (int64_t r = 0; r < k; r++)
        for (int64_t c = 0; c <= r; c++) {
            double z = to[r * k + c] / divisor;
            to[r * k + c] = to[c * k + r] = __builtin_fabs(z) < misval ? z : misval;
        }
}

} // namespace

// _robust_work(S [, g]): the sum over clusters, rows with equal g, of the squares u'u of their
// summed rows of S; without g each row is one (Huber, Fifth Berkeley Symposium 1 (1967) 221).
void bi_robust_work(int32_t argc)
{
    m_xeqerrid = "_robust_work()";
    bi_in s(bi_arg(argc, 1));
    if (!s)
        return;
    bi_in g(bi_arg(argc, argc > 1 ? 2 : 1));
    if (!g)
        return;
    if (argc > 1 && (g.cols != 1 || g.rows != s.rows)) {
        m_xrc = 3200;
        return;
    }
    if (!bi_nomissing(s))
        return;
    int32_t k = s.cols;
    bi_new r(k, k);
    bi_doubles order(s.rows), sum(k);
    if (!r || !order || !sum || (argc > 1 && !in_order(g, order)))
        return;
    r.zero();
    std::fill(sum.p, sum.p + k, 0.0);
    for (int64_t i = 0; i < s.rows; i++) {
        if (bi_stop(i))
            return;
        int64_t row = argc > 1 ? int64_t(order[i]) : i;
        for (int32_t c = 0; c < k; c++)
            sum[c] += s.p[row * k + c];
        if (argc > 1 && i + 1 < s.rows && g.p[int64_t(order[i + 1])] == g.p[row])
            continue;
        add_square(r.p, sum.p, k, 1);
        std::fill(sum.p, sum.p + k, 0.0);
    }
    mirror(r.p, k, 1);
    r.result(argc);
}

// Sum of weighted squares about the mean of the rows order[from..to) of x; the weight of them.
static double about_mean(const bi_in &x, const double *w, const double *order, int64_t from,
                         int64_t to, double *mean, double *u, double *out)
{
    int32_t k = x.cols;
    double total = 0;
    std::fill(mean, mean + k, 0.0);
    for (int64_t i = from; i < to; i++) {
        auto row = int64_t(order[i]);
        double f = w ? w[row] : 1;
        total += f;
        for (int32_t c = 0; c < k; c++)
            mean[c] += f * x.p[row * k + c];
    }
    for (int32_t c = 0; c < k; c++)
        mean[c] /= total;
    for (int64_t i = from; i < to && total > 0; i++) {
        auto row = int64_t(order[i]);
        for (int32_t c = 0; c < k; c++)
            u[c] = x.p[row * k + c] - mean[c];
        add_square(out, u, k, w ? w[row] : 1);
    }
    return total;
}

static void covariance(int32_t argc, const char *id, bool many)
{
    m_xeqerrid = id;
    int32_t at = many ? 3 : 2;
    bi_in x(bi_arg(argc, 1));
    if (!x)
        return;
    bi_in g(bi_arg(argc, many ? 2 : 1));
    if (!g)
        return;
    bi_in w(bi_arg(argc, argc >= at ? at : 1));
    if (!w)
        return;
    if ((many && (g.cols != 1 || g.rows != x.rows)) ||
        (argc >= at && (w.cols != 1 || w.rows != x.rows))) {
        m_xrc = 3200;
        return;
    }
    if (!bi_nomissing(x) || (argc >= at && !bi_nomissing(w)))
        return;
    int32_t k = x.cols;
    bi_new r(k, k);
    bi_doubles order(x.rows), work(2 * int64_t(k));
    if (!r || !order || !work)
        return;
    r.zero();
    if (many && !in_order(g, order))
        return;
    for (int64_t i = 0; !many && i < x.rows; i++)
        order[i] = double(i);
    double total = 0;
    for (int64_t i = 0, end; i < x.rows; i = end) {
        if (row_break())
            return;
        end = many ? i + 1 : x.rows;
        while (many && end < x.rows && g.p[int64_t(order[end])] == g.p[int64_t(order[i])])
            end++;
        double weight =
            about_mean(x, argc >= at ? w.p : nullptr, order.p, i, end, work.p, work.p + k, r.p);
        total += weight > 0 ? weight - 1 : 0;
    }
    if (total > 0)
        mirror(r.p, k, total);
    else
        fillwithmissing(r.m);
    r.result(argc);
}

// _cov_ss(X [, w]): covariances of one sample, weights counting how often a row is there.
void bi_cov_ss(int32_t argc)
{
    covariance(argc, "_cov_ss()", false);
}
// _cov_ms(X, g [, w]): covariances about the means of several samples, rows with equal g, over
// the degrees of freedom that all of them leave.
void bi_cov_ms(int32_t argc)
{
    covariance(argc, "_cov_ms()", true);
}
