// mosa/bi_kern.h - arguments and results of numerical kernels, released when a handler returns.
#pragma once
#include "core/mem.h"
#include "mosa/bi_int.h"

// A real argument as an array: itself, or a copy of what a view shows. False after a failure.
struct bi_in {
    matobj *m = nullptr;
    const double *p = nullptr;
    int32_t rows = 0, cols = 0;
    explicit bi_in(matobj *arg) : given(arg)
    {
        if (!bi_isreal(arg) || !(m = bi_array(arg)))
            return;
        p = mo_re(m);
        rows = m->rows;
        cols = m->cols;
    }
    bi_in(const bi_in &) = delete;
    bi_in &operator=(const bi_in &) = delete;
    ~bi_in()
    {
        if (m && m != given)
            mo_freemat(m);
    }
    explicit operator bool() const { return m != nullptr; }
    int64_t count() const { return int64_t(rows) * cols; }
    bool isvector() const { return rows == 1 || cols == 1; }

  private:
    matobj *given;
};

// A new real matrix, which becomes the result or the contents of an argument, or is dropped.
struct bi_new {
    matobj *m;
    double *p;
    bi_new(int32_t rows, int32_t cols) : m(m_mktmat(MO_REAL, rows, cols)), p(m ? mo_re(m) : nullptr)
    {
    }
    bi_new(const bi_new &) = delete;
    bi_new &operator=(const bi_new &) = delete;
    ~bi_new()
    {
        if (m)
            mo_freemat(m);
    }
    explicit operator bool() const { return m != nullptr; }
    void zero() const
    {
        for (int64_t k = 0, n = mo_count(m); k < n; k++)
            p[k] = 0;
    }
    void give(matobj *target) const { m_swapmat(m, target); } // the old contents go with this
    void result(int32_t argc)
    {
        matobj *r = m;
        m = nullptr;
        m_result(argc, r);
    }
};

// Numbers of a built-in's own while it runs. A count that does not fit leaves it false, 3900 in
// m_xrc.
struct bi_doubles {
    double *p;
    explicit bi_doubles(int64_t n)
        : p(static_cast<double *>(n < (int64_t(1) << 60) ? safemalloc(size_t(n) * 8) : nullptr))
    {
        if (!p)
            m_xrc = 3900;
    }
    bi_doubles(const bi_doubles &) = delete;
    bi_doubles &operator=(const bi_doubles &) = delete;
    ~bi_doubles() { safefree(p); }
    explicit operator bool() const { return p != nullptr; }
    double &operator[](int64_t i) const { return p[i]; }
};

inline void bi_void(int32_t argc)
{
    m_result(argc, m_mktmat(MO_REAL, 0, 0));
}
// Finite numbers and nothing else: 3351 (has missing values) otherwise.
inline bool bi_nomissing(const bi_in &a)
{
    for (int64_t k = 0, n = a.count(); k < n; k++)
        if (!(a.p[k] < misval))
            return bi_fail(3351);
    return true;
}
