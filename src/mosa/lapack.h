// mosa/lapack.h - what the functions above LAPACK share.
//
// Arrays of the language stand by rows and keep complex numbers in two planes; LAPACK wants
// columns and pairs. colmat is such an array: it reads one of ours and writes one back. Work
// that cannot be had sets 3900, a routine that cannot be found 3022.
#pragma once
#include "core/missing.h"
#include "mosa/bi_int.h"
#include "mosa/blas.h"
#include <cmath>
#include <complex>
#include <memory>
#include <new>

using cplx = std::complex<double>;

// Scratch space whose size comes from the data: null means 3900. Never of 0 elements.
template <class T> std::unique_ptr<T[]> la_scratch(int64_t n)
{
    if (n < 1)
        n = 1;
    std::unique_ptr<T[]> p;
    if (n < int64_t(1) << 40)
        p.reset(new (std::nothrow) T[size_t(n)]);
    if (!p)
        m_xrc = 3900;
    return p;
}

// Calls a routine by its name. Lengths of character arguments stand behind all others; a
// routine with fewer of them leaves the rest alone. False with 3022 when it cannot be found.
template <class... A> bool la_call(const char *name, A... args)
{
    auto f = reinterpret_cast<void (*)(A..., size_t, size_t, size_t)>(blas_find(name));
    if (!f)
        return bi_fail(3022);
    f(args..., 1, 1, 1);
    return true;
}
// The routine of the element type: "d" or "z" before the rest of the name.
template <class T> const char *la_name(const char *real, const char *complex)
{
    return sizeof(T) == sizeof(double) ? real : complex;
}

inline double la_kept(double z)
{
    return std::isfinite(z) && z < misval ? z : misval;
}
// A number out of range takes the whole array along: what LAPACK made of it means nothing.
bool la_anymissing(const matobj *m);
void la_keep(double *p, int64_t n); // NaN and infinity become missing, each by itself

template <class T> struct colmat {
    std::unique_ptr<T[]> p;
    int r = 0, c = 0, ld = 1;

    bool make(int rows, int cols)
    {
        r = rows;
        c = cols;
        ld = rows > 1 ? rows : 1;
        p = la_scratch<T>(int64_t(rows) * cols);
        return bool(p);
    }
    T &at(int64_t i, int64_t j) { return p[size_t(j * ld + i)]; }
    // From a numeric array; a real one may be read as complex.
    bool load(const matobj *m)
    {
        if (!make(m->rows, m->cols))
            return false;
        for (int64_t i = 0; i < r; i++)
            for (int64_t j = 0; j < c; j++)
                if constexpr (sizeof(T) == sizeof(double))
                    at(i, j) = mo_re(m)[i * c + j];
                else
                    at(i, j) =
                        T(mo_re(m)[i * c + j], m->eltype == MO_COMPLEX ? mo_im(m)[i * c + j] : 0);
        return !row_break();
    }
    // Its first rows and cols into an array, remade for them.
    bool store(matobj *m, int32_t rows, int32_t cols)
    {
        bool real = sizeof(T) == sizeof(double);
        if (m_remkmat(m, real ? MO_REAL : MO_COMPLEX, 0, rows, cols))
            return false;
        for (int64_t i = 0; i < rows; i++)
            for (int64_t j = 0; j < cols; j++)
                put(m, i * cols + j, at(i, j));
        return true;
    }
    bool store(matobj *m) { return store(m, r, c); }
    static void put(matobj *m, int64_t k, T z)
    {
        if constexpr (sizeof(T) == sizeof(double))
            mo_re(m)[k] = la_kept(z);
        else {
            bool ok = la_kept(z.real()) < misval && la_kept(z.imag()) < misval;
            mo_re(m)[k] = ok ? z.real() : misval;
            mo_im(m)[k] = ok ? z.imag() : misval;
        }
    }
};

// What LAPACK reported: 0, or 3360 (no convergence) or 3930 in m_xrc.
inline bool la_ok(int info)
{
    return info == 0 || bi_fail(info > 0 ? 3360 : 3930);
}
inline void la_scalar(int32_t argc, double z)
{
    m_result(argc, m_mktsmatsto(z));
}
inline void la_void(int32_t argc)
{
    m_result(argc, m_mktmat(MO_REAL, 0, 0));
}

// The complex kin of the functions of bila.cpp, reached when the argument is complex.
void lz_lud(int32_t argc);
void lz_luinv(int32_t argc);
void lz_lusolve(int32_t argc);
void lz_svd(int32_t argc);
void lz_symeigen(int32_t argc);
void lz_cholesky(int32_t argc);
