// Fourier transforms of vectors of any length.
//
// A length that is a power of 2 goes through passes of radix 4 that sort as they go (Stockham;
// see Van Loan 1992, "Computational Frameworks for the Fast Fourier Transform", 1.7); any other
// becomes a convolution of the next such length (Bluestein 1970, IEEE Trans. Audio 18).
#include "mosa/bihandlers.h"
#include "mosa/lapack.h"
#include <algorithm>
#include <numbers>

namespace
{

struct planes {
    double *re, *im;
};

// cos and sin of 2 pi k / n by the eighth of the circle they lie in, so that quarter turns are
// exact and no angle is large.
void turn(int64_t k, int64_t n, double *c, double *s)
{
    k %= n;
    int64_t eighth = 8 * k / n;
    // The angle from the nearest multiple of a quarter turn, in units of 2 pi / (4 n).
    int64_t quarter = (eighth + 1) / 2;
    double t = std::numbers::pi / 2 * double(4 * k - quarter * n) / double(n);
    double x = std::cos(t), y = std::sin(t);
    switch (quarter & 3) {
    case 0: *c = x, *s = y; break;
    case 1: *c = -y, *s = x; break;
    case 2: *c = -x, *s = -y; break;
    default: *c = y, *s = -x; break;
    }
}

struct twiddles {
    int64_t n = 0;
    std::unique_ptr<double[]> c, s; // of -2 pi k / n
    bool make(int64_t length)
    {
        n = length;
        c = la_scratch<double>(n);
        s = la_scratch<double>(n);
        if (!c || !s)
            return false;
        for (int64_t k = 0; k < n; k++) {
            if (bi_stop(k))
                return false;
            turn(k, n, &c[size_t(k)], &s[size_t(k)]);
            s[size_t(k)] = -s[size_t(k)];
        }
        return true;
    }
};

// One pass: n1 groups of four points, each of stride elements.
void radix4(const planes x, const planes y, int64_t n1, int64_t stride, const twiddles &w)
{
    int64_t step = w.n / (4 * n1), quarter = n1 * stride;
    for (int64_t p = 0; p < n1; p++) {
        const double c1 = w.c[size_t(p * step)], s1 = w.s[size_t(p * step)];
        const double c2 = w.c[size_t(2 * p * step)], s2 = w.s[size_t(2 * p * step)];
        const double c3 = w.c[size_t(3 * p * step)], s3 = w.s[size_t(3 * p * step)];
        const double *__restrict xr = x.re + p * stride, *__restrict xi = x.im + p * stride;
        double *__restrict yr = y.re + 4 * p * stride, *__restrict yi = y.im + 4 * p * stride;
        for (int64_t q = 0; q < stride; q++) {
            double ar = xr[q], ai = xi[q], br = xr[q + quarter], bi = xi[q + quarter];
            double cr = xr[q + 2 * quarter], ci = xi[q + 2 * quarter];
            double dr = xr[q + 3 * quarter], di = xi[q + 3 * quarter];
            double pr = ar + cr, pi = ai + ci, mr = ar - cr, mi = ai - ci;
            double ur = br + dr, ui = bi + di, vr = di - bi, vi = br - dr; // i (b - d)
            yr[q] = pr + ur;
            yi[q] = pi + ui;
            double z1r = mr - vr, z1i = mi - vi, z2r = pr - ur, z2i = pi - ui;
            double z3r = mr + vr, z3i = mi + vi;
            yr[q + stride] = z1r * c1 - z1i * s1;
            yi[q + stride] = z1r * s1 + z1i * c1;
            yr[q + 2 * stride] = z2r * c2 - z2i * s2;
            yi[q + 2 * stride] = z2r * s2 + z2i * c2;
            yr[q + 3 * stride] = z3r * c3 - z3i * s3;
            yi[q + 3 * stride] = z3r * s3 + z3i * c3;
        }
    }
}

void radix2(const planes x, const planes y, int64_t stride)
{
    for (int64_t q = 0; q < stride; q++) {
        double ar = x.re[q], ai = x.im[q], br = x.re[q + stride], bi = x.im[q + stride];
        y.re[q] = ar + br;
        y.im[q] = ai + bi;
        y.re[q + stride] = ar - br;
        y.im[q + stride] = ai - bi;
    }
}

// x, of w.n points, a power of 2, becomes its transform; y is scratch of the same size.
bool power_of_2(planes x, planes y, const twiddles &w)
{
    planes from = x, to = y;
    int64_t n = w.n, stride = 1;
    for (; n > 1 && !row_break(); std::swap(from, to)) {
        if (n == 2) {
            radix2(from, to, stride);
            n = 1;
        } else {
            radix4(from, to, n / 4, stride, w);
            n /= 4;
            stride *= 4;
        }
    }
    if (m_xrc)
        return false;
    if (from.re != x.re) {
        std::copy_n(from.re, w.n, x.re);
        std::copy_n(from.im, w.n, x.im);
    }
    return true;
}

bool any_length(planes x, int64_t n)
{
    int64_t m = 1;
    while (m < 2 * n - 1)
        m *= 2;
    twiddles w, chirp; // chirp: exp(-i pi k k / n), k k taken modulo 2 n
    auto space = la_scratch<double>(6 * m);
    if (!space || !w.make(m) || !chirp.make(2 * n))
        return false;
    double *s = space.get();
    planes a{s, s + m}, b{s + 2 * m, s + 3 * m}, t{s + 4 * m, s + 5 * m};
    std::fill_n(s, 4 * m, 0.0);
    auto at = [&](int64_t k) {
        auto i = size_t(uint64_t(k) * uint64_t(k) % uint64_t(2 * n));
        return cplx(chirp.c[i], chirp.s[i]);
    };
    for (int64_t k = 0; k < n; k++) {
        cplx z = at(k), v = cplx(x.re[k], x.im[k]) * z;
        a.re[k] = v.real();
        a.im[k] = v.imag();
        for (int64_t j : {k, (m - k) % m}) {
            b.re[j] = z.real();
            b.im[j] = -z.imag();
        }
    }
    if (!power_of_2(a, t, w) || !power_of_2(b, t, w))
        return false;
    for (int64_t k = 0; k < m; k++) { // the product, turned round for the way back
        double re = a.re[k] * b.re[k] - a.im[k] * b.im[k];
        a.im[k] = a.re[k] * b.im[k] + a.im[k] * b.re[k];
        a.re[k] = re;
    }
    if (!power_of_2({a.im, a.re}, t, w))
        return false;
    for (int64_t k = 0; k < n; k++) {
        cplx v = cplx(a.re[k], a.im[k]) * at(k) / double(m);
        x.re[k] = v.real();
        x.im[k] = v.imag();
    }
    return true;
}

// Short vectors by the definition.
bool by_definition(planes x, int64_t n)
{
    twiddles w;
    auto space = la_scratch<double>(2 * n);
    if (!space || !w.make(n))
        return false;
    double *re = space.get(), *im = re + n;
    for (int64_t j = 0; j < n; j++) {
        re[j] = im[j] = 0;
        for (int64_t k = 0; k < n; k++) {
            auto t = size_t(j * k % n);
            re[j] += x.re[k] * w.c[t] - x.im[k] * w.s[t];
            im[j] += x.re[k] * w.s[t] + x.im[k] * w.c[t];
        }
    }
    std::copy_n(re, n, x.re);
    std::copy_n(im, n, x.im);
    return true;
}

bool transform(planes x, int64_t n)
{
    if (n < 2)
        return true;
    if (n < 48 && (n & (n - 1)))
        return by_definition(x, n);
    if (n & (n - 1))
        return any_length(x, n);
    twiddles w;
    auto space = la_scratch<double>(2 * n);
    return space && w.make(n) && power_of_2(x, {space.get(), space.get() + n}, w);
}

void fourier(int32_t argc, bool back)
{
    matobj *h = m_arg(0);
    if (!bi_isarray(h) || !bi_isnumeric(h))
        return;
    if (h->rows != 1 && h->cols != 1 && mo_count(h)) {
        m_xrc = 3201;
        return;
    }
    int64_t n = mo_count(h);
    bool missing = la_anymissing(h), real = h->eltype == MO_REAL;
    if (h->eltype == MO_REAL) {
        matobj *z = m_mktmat(MO_COMPLEX, h->rows, h->cols);
        if (!z)
            return;
        std::copy_n(mo_re(h), n, mo_re(z));
        std::fill_n(mo_im(z), n, 0.0);
        m_swapmat(h, z);
        mo_freemat(z);
    }
    if (missing) {
        fillwithmissing(h);
        la_void(argc);
        return;
    }
    planes x{mo_re(h), mo_im(h)};
    if (!transform(back ? planes{x.im, x.re} : x, n))
        return;
    for (int64_t k = 0; real && k <= n - k; k++) { // conjugate pairs, to the last digit
        int64_t j = k ? n - k : 0;
        if (j == n)
            break;
        x.re[j] = x.re[k];
        x.im[j] = j == k ? 0 : -x.im[k];
    }
    for (int64_t k = 0; k < n; k++) {
        double re = la_kept(back ? x.re[k] / double(n) : x.re[k]);
        double im = la_kept(back ? x.im[k] / double(n) : x.im[k]);
        bool bad = re >= misval || im >= misval;
        x.re[k] = bad ? misval : re;
        x.im[k] = bad ? misval : im;
    }
    la_void(argc);
}

} // namespace

// _fft(h): the vector h becomes the complex vector of sums over k of h[k] exp(-2 pi i j k / n),
// j and k from 0. Any length; lengths with a power of 2 are fastest.
void bi_fft(int32_t argc)
{
    m_xeqerrid = "_fft()";
    fourier(argc, false);
}
// _invfft(H): undoes _fft().
void bi_invfft(int32_t argc)
{
    m_xeqerrid = "_invfft()";
    fourier(argc, true);
}
