#include "data/umateig.h"
#include "core/mem.h"
#include "core/rc.h"
#include "core/state.h"
#include "interp/messages.h"
#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>
#include <vector>

static constexpr double eps = std::numeric_limits<double>::epsilon();
static constexpr int sweeps = 60;

// ---- symmetric

// The rotation that makes the off-diagonal p, q of [app apq; apq aqq] zero.
static void rotation(double app, double aqq, double apq, double *c, double *s)
{
    double theta = (aqq - app) / (2 * apq), t;
    if (std::fabs(theta) > 1e150)
        t = 1 / (2 * theta);
    else
        t = (theta < 0 ? -1 : 1) / (std::fabs(theta) + std::sqrt(theta * theta + 1));
    *c = 1 / std::sqrt(t * t + 1);
    *s = t * *c;
}

static void rotate_sym(double *a, double *v, int64_t n, int64_t p, int64_t q)
{
    double apq = a[p * n + q], c, s;
    rotation(a[p * n + p], a[q * n + q], apq, &c, &s);
    for (int64_t k = 0; k < n; k++) {
        double x = a[k * n + p], y = a[k * n + q];
        a[k * n + p] = c * x - s * y;
        a[k * n + q] = s * x + c * y;
    }
    for (int64_t k = 0; k < n; k++) {
        double x = a[p * n + k], y = a[q * n + k];
        a[p * n + k] = c * x - s * y;
        a[q * n + k] = s * x + c * y;
    }
    a[p * n + q] = a[q * n + p] = 0;
    for (int64_t k = 0; k < n; k++) {  // rows of v are the vectors until the end
        double x = v[p * n + k], y = v[q * n + k];
        v[p * n + k] = c * x - s * y;
        v[q * n + k] = s * x + c * y;
    }
}

int32_t eig_symmetric(double *a, int32_t n, double *values, double *v)
{
    int64_t N = n;
    for (int64_t i = 0; i < N; i++)
        for (int64_t j = 0; j < N; j++)
            v[i * N + j] = i == j;
    for (int sweep = 0; sweep < sweeps; sweep++) {
        bool any = false;
        for (int64_t p = 0; p < N; p++) {
            if (fault_poll())
                return stopflag;
            for (int64_t q = p + 1; q < N; q++) {
                double off = std::fabs(a[p * N + q]);
                double least = eps * 0.5 * std::sqrt(std::fabs(a[p * N + p])) *
                               std::sqrt(std::fabs(a[q * N + q]));
                if (off <= least || off < 1e-300) {
                    a[p * N + q] = a[q * N + p] = 0;
                    continue;
                }
                any = true;
                rotate_sym(a, v, N, p, q);
            }
        }
        if (!any)
            break;
    }
    std::vector<int32_t> order(static_cast<size_t>(n));
    for (int32_t i = 0; i < n; i++)
        order[size_t(i)] = i;
    std::stable_sort(order.begin(), order.end(), [&](int32_t x, int32_t y) {
        return a[x * N + x] > a[y * N + y];
    });
    std::vector<double> rows(v, v + N * N);
    for (int64_t j = 0; j < N; j++) {
        const double *row = rows.data() + order[size_t(j)] * N;
        values[j] = a[order[size_t(j)] * (N + 1)];
        int64_t big = 0;
        for (int64_t k = 1; k < N; k++)
            if (std::fabs(row[k]) > std::fabs(row[big]) * (1 + 1e-12))
                big = k;
        double sign = row[big] < 0 ? -1 : 1;
        for (int64_t k = 0; k < N; k++)
            v[k * N + j] = sign * row[k];
    }
    return 0;
}

// ---- singular values

int32_t svd_jacobi(double *a, int32_t m, int32_t n, double *w, double *v)
{
    int64_t M = m, N = n;
    std::vector<double> u(static_cast<size_t>(M * N)), t(static_cast<size_t>(N * N));  // by columns
    for (int64_t i = 0; i < M; i++)
        for (int64_t j = 0; j < N; j++)
            u[size_t(j * M + i)] = a[i * N + j];
    for (int64_t j = 0; j < N; j++)
        t[size_t(j * N + j)] = 1;
    for (int sweep = 0; sweep < sweeps; sweep++) {
        bool any = false;
        for (int64_t p = 0; p < N; p++) {
            if (fault_poll())
                return stopflag;
            for (int64_t q = p + 1; q < N; q++) {
                double *x = &u[size_t(p * M)], *y = &u[size_t(q * M)], xx = 0, yy = 0, xy = 0;
                for (int64_t i = 0; i < M; i++) {
                    xx += x[i] * x[i];
                    yy += y[i] * y[i];
                    xy += x[i] * y[i];
                }
                if (std::fabs(xy) <= eps * std::sqrt(xx * yy) || xy == 0)
                    continue;
                any = true;
                double c, s;
                rotation(xx, yy, xy, &c, &s);
                auto turn = [&](double *f, double *g, int64_t len) {
                    for (int64_t i = 0; i < len; i++) {
                        double h = f[i];
                        f[i] = c * h - s * g[i];
                        g[i] = s * h + c * g[i];
                    }
                };
                turn(x, y, M);
                turn(&t[size_t(p * N)], &t[size_t(q * N)], N);
            }
        }
        if (!any)
            break;
    }
    std::vector<std::pair<double, int64_t>> order;
    for (int64_t j = 0; j < N; j++) {
        double s = 0;
        for (int64_t i = 0; i < M; i++)
            s = std::hypot(s, u[size_t(j * M + i)]);
        order.push_back({s, j});
    }
    std::stable_sort(order.begin(), order.end(), [](auto &x, auto &y) { return x.first > y.first; });
    double floor = order.empty() ? 0 : order[0].first * eps;
    for (int64_t k = 0; k < N; k++) {
        auto [s, j] = order[size_t(k)];
        w[k] = s;
        for (int64_t i = 0; i < M; i++)
            a[i * N + k] = s > floor ? u[size_t(j * M + i)] / s : 0;
        for (int64_t i = 0; i < N; i++)
            v[i * N + k] = t[size_t(j * N + i)];
    }
    return 0;
}

// ---- general

// Scales rows and columns by powers of two until they are alike in size.
static void balance(double *a, int64_t n)
{
    for (bool done = false; !done;) {
        done = true;
        for (int64_t i = 0; i < n; i++) {
            double r = 0, c = 0, f = 1;
            for (int64_t j = 0; j < n; j++)
                if (j != i) {
                    c += std::fabs(a[j * n + i]);
                    r += std::fabs(a[i * n + j]);
                }
            if (c == 0 || r == 0)
                continue;
            double s = c + r;
            while (c < r / 2) {
                f *= 2;
                c *= 4;
            }
            while (c > r * 2) {
                f /= 2;
                c /= 4;
            }
            if ((c + r) / f >= 0.95 * s)
                continue;
            done = false;
            for (int64_t j = 0; j < n; j++)
                a[i * n + j] /= f;
            for (int64_t j = 0; j < n; j++)
                a[j * n + i] *= f;
        }
    }
}

static void hessenberg(double *a, int64_t n)
{
    for (int64_t m = 1; m < n - 1; m++) {
        int64_t p = m;
        for (int64_t j = m + 1; j < n; j++)
            if (std::fabs(a[j * n + m - 1]) > std::fabs(a[p * n + m - 1]))
                p = j;
        double x = a[p * n + m - 1];
        if (x == 0)
            continue;
        if (p != m) {
            for (int64_t j = m - 1; j < n; j++)
                std::swap(a[p * n + j], a[m * n + j]);
            for (int64_t j = 0; j < n; j++)
                std::swap(a[j * n + p], a[j * n + m]);
        }
        for (int64_t i = m + 1; i < n; i++) {
            double y = a[i * n + m - 1] / x;
            if (y == 0)
                continue;
            a[i * n + m - 1] = 0;
            for (int64_t j = m; j < n; j++)
                a[i * n + j] -= y * a[m * n + j];
            for (int64_t j = 0; j < n; j++)
                a[j * n + m] += y * a[j * n + i];
        }
    }
}

// One double step of QR over rows low to high of a Hessenberg matrix, by reflections of three.
static void qr_step(double *a, int64_t n, int64_t low, int64_t high, double sum, double prod)
{
    auto A = [&](int64_t i, int64_t j) -> double & { return a[i * n + j]; };
    double x = A(low, low) * A(low, low) + A(low, low + 1) * A(low + 1, low) - sum * A(low, low) + prod;
    double y = A(low + 1, low) * (A(low, low) + A(low + 1, low + 1) - sum);
    double z = low + 2 <= high ? A(low + 1, low) * A(low + 2, low + 1) : 0;
    for (int64_t k = low; k < high; k++) {
        int64_t len = k + 2 <= high ? 3 : 2;
        if (len == 2)
            z = 0;
        double norm = std::sqrt(x * x + y * y + z * z);
        if (norm > 0) {
            if (x < 0)
                norm = -norm;
            double u0 = x + norm, beta = 1 / (norm * u0), u[3] = {u0, y, z};
            for (int64_t j = std::max(low, k - 1); j < n; j++) {
                double s = 0;
                for (int64_t i = 0; i < len; i++)
                    s += u[i] * A(k + i, j);
                s *= beta;
                for (int64_t i = 0; i < len; i++)
                    A(k + i, j) -= s * u[i];
            }
            for (int64_t i = 0; i <= std::min(high, k + 3); i++) {
                double s = 0;
                for (int64_t j = 0; j < len; j++)
                    s += A(i, k + j) * u[j];
                s *= beta;
                for (int64_t j = 0; j < len; j++)
                    A(i, k + j) -= s * u[j];
            }
        }
        if (k + 1 < high) {
            x = A(k + 1, k);
            y = A(k + 2, k);
            z = k + 3 <= high ? A(k + 3, k) : 0;
        } else
            x = y = z = 0;
    }
}

static void pair_of(double a, double b, double c, double d, double *re, double *im)
{
    double p = (a - d) / 2, q = p * p + b * c, mid = (a + d) / 2;
    if (q >= 0) {
        double root = std::sqrt(q), z = p + (p < 0 ? -root : root);
        re[0] = d + z;
        re[1] = z != 0 ? d - b * c / z : d;
        im[0] = im[1] = 0;
        return;
    }
    re[0] = re[1] = mid;
    im[0] = std::sqrt(-q);
    im[1] = -im[0];
}

static int32_t hqr(double *a, int64_t n, double *re, double *im)
{
    auto A = [&](int64_t i, int64_t j) -> double & { return a[i * n + j]; };
    double norm = 0;
    for (int64_t i = 0; i < n * n; i++)
        norm = std::max(norm, std::fabs(a[i]));
    int tries = 0;
    for (int64_t high = n - 1; high >= 0;) {
        if (fault_poll())
            return stopflag;
        int64_t low = high;
        for (; low > 0; low--) {
            double s = std::fabs(A(low - 1, low - 1)) + std::fabs(A(low, low));
            if (std::fabs(A(low, low - 1)) <= eps * (s > 0 ? s : norm)) {
                A(low, low - 1) = 0;
                break;
            }
        }
        if (low == high) {
            re[high] = A(high, high);
            im[high] = 0;
            high--;
            tries = 0;
            continue;
        }
        double a0 = A(high - 1, high - 1), b0 = A(high - 1, high), c0 = A(high, high - 1),
               d0 = A(high, high);
        if (low == high - 1) {
            pair_of(a0, b0, c0, d0, re + high - 1, im + high - 1);
            high -= 2;
            tries = 0;
            continue;
        }
        if (++tries > 100)
            return error(430);
        double sum = a0 + d0, prod = a0 * d0 - b0 * c0;
        if (tries % 10 == 0) {  // a shift out of the ordinary breaks a cycle
            double s = std::fabs(c0) + std::fabs(A(high - 1, high - 2));
            sum = 1.5 * s;
            prod = s * s;
        }
        qr_step(a, n, low, high, sum, prod);
        for (int64_t i = low + 2; i <= high; i++)
            for (int64_t j = low; j <= i - 2; j++)
                A(i, j) = 0;
    }
    return 0;
}

int32_t eig_general(double *a, int32_t n, double *re, double *im)
{
    balance(a, n);
    hessenberg(a, n);
    int32_t rc = hqr(a, n, re, im);
    if (rc)
        return rc;
    std::vector<std::complex<double>> z;
    for (int32_t i = 0; i < n; i++)
        z.emplace_back(re[i], im[i]);
    std::stable_sort(z.begin(), z.end(), [](const auto &x, const auto &y) {
        double p = std::abs(x), q = std::abs(y);
        return std::fabs(p - q) > 1e-13 * (p + q) ? p > q : false;
    });
    for (int32_t i = 0; i < n; i++) {
        re[i] = z[size_t(i)].real();
        im[i] = z[size_t(i)].imag();
    }
    return 0;
}
