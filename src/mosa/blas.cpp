#include "mosa/blas.h"
#include "core/mem.h"
#include <dlfcn.h>
#include <initializer_list>

static void *library;

void *blas_find(const char *name)
{
    static bool tried;
    if (!tried) {
        tried = true;
        for (const char *file : {"libopenblas.so.0", "libopenblas.so", "libblas.so.3"})
            if ((library = dlopen(file, RTLD_NOW | RTLD_LOCAL)))
                break;
    }
    return library ? dlsym(library, name) : nullptr;
}

using dgemm_fn = void (*)(int order, int transa, int transb, int m, int n, int k, double alpha,
                          const double *a, int lda, const double *b, int ldb, double beta,
                          double *c, int ldc);

// Rows of the left operand against the whole of the right one, four terms of the inner sum at
// a time, so that c is read and written a quarter as often.
static void own_rows(int64_t n, int64_t k, int64_t m, double alpha, const double *a,
                     const double *b, double beta, double *c)
{
    for (int64_t i = 0; i < n; i++) {
        double *row = c + i * m;
        for (int64_t j = 0; j < m; j++)
            row[j] = beta == 0 ? 0 : beta * row[j];
        const double *x = a + i * k;
        int64_t l = 0;
        for (; l + 4 <= k; l += 4) {
            const double x0 = alpha * x[l], x1 = alpha * x[l + 1], x2 = alpha * x[l + 2],
                         x3 = alpha * x[l + 3];
            const double *y = b + l * m;
            for (int64_t j = 0; j < m; j++)
                row[j] += x0 * y[j] + x1 * y[j + m] + x2 * y[j + 2 * m] + x3 * y[j + 3 * m];
        }
        for (; l < k; l++) {
            const double x0 = alpha * x[l];
            const double *y = b + l * m;
            for (int64_t j = 0; j < m; j++)
                row[j] += x0 * y[j];
        }
    }
}

bool gemm(int64_t n, int64_t k, int64_t m, double alpha, const double *a, const double *b,
          double beta, double *c)
{
    constexpr int64_t worth = 40 * 40 * 40; // multiplications that pay for a call outside
    constexpr int64_t piece = 1 << 28;      // multiplications between two looks at the break
    static auto dgemm = dgemm_fn(nullptr);
    bool large = double(n) * double(k) * double(m) >= double(worth);
    if (large && !dgemm)
        dgemm = reinterpret_cast<dgemm_fn>(blas_find("cblas_dgemm"));
    double per_row = double(k) * double(m);
    int64_t step = per_row < 1 ? n : int64_t(double(piece) / per_row);
    if (step < 64)
        step = 64;
    for (int64_t i = 0; i < n; i += step) {
        int64_t rows = n - i < step ? n - i : step;
        if (fault_poll())
            return true;
        if (large && dgemm && k > 0 && m > 0)
            dgemm(101, 111, 111, int(rows), int(m), int(k), alpha, a + i * k, int(k), b, int(m),
                  beta, c + i * m, int(m));
        else
            own_rows(rows, k, m, alpha, a + i * k, b, beta, c + i * m);
    }
    return false;
}
