#include "data/umateig.h"
#include <cmath>
#include <complex>
#include <gtest/gtest.h>
#include <random>
#include <vector>

using vec = std::vector<double>;

static vec noise(size_t n, unsigned seed)
{
    std::mt19937 g(seed);
    std::uniform_real_distribution<double> u(-1, 1);
    vec v(n);
    for (double &z : v)
        z = u(g);
    return v;
}

TEST(umateig, SymmetricOnesComeApartAndTogether)
{
    for (int n : {1, 2, 7, 40}) {
        auto N = size_t(n);
        vec a = noise(N * N, unsigned(n));
        for (size_t i = 0; i < N; i++)
            for (size_t j = 0; j < i; j++)
                a[i * N + j] = a[j * N + i];
        vec work = a, w(N), v(N * N);
        ASSERT_EQ(eig_symmetric(work.data(), n, w.data(), v.data()), 0);
        for (size_t i = 0; i < N; i++) {
            EXPECT_TRUE(!i || w[i] <= w[i - 1]);
            for (size_t j = 0; j < N; j++) {
                double back = 0, dot = 0;
                for (size_t k = 0; k < N; k++) {
                    back += v[i * N + k] * w[k] * v[j * N + k];
                    dot += v[k * N + i] * v[k * N + j];
                }
                EXPECT_NEAR(back, a[i * N + j], 2e-14 * n);
                EXPECT_NEAR(dot, i == j, 1e-14 * n);
            }
        }
    }
    // Graded matrices keep their small values.
    vec g = {1e10, 1, 1, 1e-10 + 1e-10}, w(2), v(4);
    ASSERT_EQ(eig_symmetric(g.data(), 2, w.data(), v.data()), 0);
    EXPECT_NEAR(w[1] / 1e-10, 1, 1e-9);
}

TEST(umateig, SingularValues)
{
    for (auto [m, n] : {std::pair{1, 1}, {3, 2}, {9, 9}, {50, 20}}) {
        auto M = size_t(m), N = size_t(n);
        vec a = noise(M * N, unsigned(m * n)), u = a, w(N), v(N * N);
        ASSERT_EQ(svd_jacobi(u.data(), m, n, w.data(), v.data()), 0);
        for (size_t i = 0; i < M; i++)
            for (size_t j = 0; j < N; j++) {
                double back = 0;
                for (size_t k = 0; k < N; k++)
                    back += u[i * N + k] * w[k] * v[j * N + k];
                EXPECT_NEAR(back, a[i * N + j], 1e-14 * m);
            }
        for (size_t k = 1; k < N; k++)
            EXPECT_LE(w[k], w[k - 1]);
    }
    vec r = {1, 2, 2, 4, 3, 6}, w(2), v(4);  // rank one
    ASSERT_EQ(svd_jacobi(r.data(), 3, 2, w.data(), v.data()), 0);
    EXPECT_NEAR(w[0], std::sqrt(70), 1e-14);
    EXPECT_NEAR(w[1], 0, 1e-14);
}

// Sum and product of the eigenvalues, and A - zI that has no inverse.
TEST(umateig, GeneralOnes)
{
    vec c = {0, 0, 6, 1, 0, -11, 0, 1, 6}, re(3), im(3);  // companion of (x-1)(x-2)(x-3)
    ASSERT_EQ(eig_general(c.data(), 3, re.data(), im.data()), 0);
    for (int i = 0; i < 3; i++) {
        EXPECT_NEAR(re[size_t(i)], 3 - i, 1e-12);
        EXPECT_EQ(im[size_t(i)], 0);
    }
    vec p = {0, 1, 0, 0, 0, 1, 1, 0, 0};  // a permutation: cube roots of one
    ASSERT_EQ(eig_general(p.data(), 3, re.data(), im.data()), 0);
    for (int i = 0; i < 3; i++)
        EXPECT_NEAR(std::abs(std::pow(std::complex<double>(re[size_t(i)], im[size_t(i)]), 3) - 1.0), 0,
                    1e-12);
    for (int n : {2, 5, 12, 40}) {
        auto N = size_t(n);
        vec a = noise(N * N, unsigned(100 + n)), work = a, r(N), s(N);
        ASSERT_EQ(eig_general(work.data(), n, r.data(), s.data()), 0);
        double trace = 0;
        std::complex<double> sum = 0;
        for (size_t i = 0; i < N; i++) {
            trace += a[i * N + i];
            sum += std::complex<double>(r[i], s[i]);
        }
        EXPECT_NEAR(sum.real(), trace, 1e-12 * n);
        EXPECT_NEAR(sum.imag(), 0, 1e-12 * n);
        for (size_t e = 0; e < N; e += 3) {  // elimination of A - zI meets a zero
            std::complex<double> z(r[e], s[e]);
            std::vector<std::complex<double>> m(a.begin(), a.end());
            for (size_t i = 0; i < N; i++)
                m[i * N + i] -= z;
            double least = 1e300;
            for (size_t k = 0; k < N; k++) {
                size_t best = k;
                for (size_t i = k; i < N; i++)
                    if (std::abs(m[i * N + k]) > std::abs(m[best * N + k]))
                        best = i;
                for (size_t j = 0; j < N; j++)
                    std::swap(m[k * N + j], m[best * N + j]);
                least = std::min(least, std::abs(m[k * N + k]));
                for (size_t i = k + 1; i < N && std::abs(m[k * N + k]) > 1e-13; i++) {
                    auto f = m[i * N + k] / m[k * N + k];
                    for (size_t j = k; j < N; j++)
                        m[i * N + j] -= f * m[k * N + j];
                }
            }
            EXPECT_LT(least, 1e-10) << n << " " << e;
        }
    }
}
