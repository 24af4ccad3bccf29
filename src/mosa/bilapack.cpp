// LA_*: routines of LAPACK under their own names.
//
// The arguments are those of the routine, in its order, info last; nothing is returned. Arrays
// stand by columns, as _flopin() lays them. Sizes are looked at here before the routine sees
// them; scratch is ours, whatever stands in its place. With a missing value among the arrays
// everything that would be written is missing and info is 0.
#include "mosa/bihandlers.h"
#include "mosa/lapack.h"
#include <algorithm>
#include <utility>
#include <vector>

// The library reports a wrong argument here as well as in info; its own way of doing so would
// write past the console.
extern "C" void xerbla_(const char *, const int *, size_t) {}

bool la_anymissing(const matobj *m)
{
    const double *p = mo_re(m);
    int64_t n = mo_count(m) * (m->eltype == MO_COMPLEX ? 2 : 1);
    return std::any_of(p, p + n, [](double z) { return z >= misval; });
}
void la_keep(double *p, int64_t n)
{
    for (int64_t i = 0; i < n; i++)
        p[i] = la_kept(p[i]);
}

namespace
{

constexpr int la_most = 26;

struct la_argument {
    char kind;
    const char *size; // null for a scalar
    matobj *m;
    int64_t count;
    int64_t nz; // elements of z
    void *p;    // what the routine gets
    int whole;
    double number;
    std::unique_ptr<cplx[]> z;
    std::unique_ptr<int[]> ints;
    std::unique_ptr<double[]> reals;
};

struct la_run {
    la_argument a[la_most];
    int n = 0;
    bool complex = false;
    bool missing = false;
    int lwork = -1, liwork = -1; // places of their arguments
};

// Arguments a to y by position and numbers, taken from the left.
int64_t size_of(const la_run &r, const char *s)
{
    int64_t total = 0;
    char op = '+';
    for (; *s && *s != ' '; s++) {
        if (*s == '+' || *s == '-' || *s == '*') {
            op = *s;
            continue;
        }
        int64_t v = *s <= '9' ? *s - '0' : r.a[*s - 'a'].whole;
        total = op == '+' ? total + v : op == '-' ? total - v : total * v;
    }
    return std::max<int64_t>(total, 0);
}

bool read_form(la_run &r, const char *form, int32_t argc)
{
    for (const char *s = form; *s;) {
        la_argument &a = r.a[r.n];
        a.kind = *s;
        a.size = s[1] == ':' ? s + 2 : nullptr;
        a.m = bi_arg(argc, ++r.n);
        a.p = nullptr;
        a.count = 0;
        a.whole = 0;
        a.number = 0;
        if (a.kind == 'L')
            r.lwork = r.n - 1;
        if (a.kind == 'M')
            r.liwork = r.n - 1;
        while (*s && *s != ' ')
            s++;
        while (*s == ' ')
            s++;
    }
    return r.n == argc || bi_fail(3001);
}

bool read_scalar(la_argument &a)
{
    const char *s;
    int32_t n;
    switch (a.kind) {
    case 'c':
        if (!bi_string(a.m, &s, &n))
            return false;
        a.whole = n ? *s : ' '; // the option's letter in the lowest byte
        break;
    case 'l':
        if (!bi_real(a.m, &a.number))
            return false;
        a.whole = a.number != 0;
        break;
    case 'i':
    case 'L':
    case 'M':
        if (!bi_int(a.m, -1 << 30, 1 << 30, &a.whole))
            return false;
        break;
    case 'd':
        if (!bi_real(a.m, &a.number))
            return false;
        a.p = &a.number;
        return true;
    case 'o':
    case 'e':
    case 'z':
        if (!bi_isarray(a.m))
            return false;
        a.p = a.kind == 'e' ? static_cast<void *>(&a.number) : &a.whole;
        return true;
    default: return true;
    }
    a.p = &a.whole;
    return true;
}

// Shapes and types only: nothing is changed yet.
bool check_array(la_run &r, la_argument &a)
{
    a.count = size_of(r, a.size);
    if (a.kind == 'w' || a.kind == 'v' || a.kind == 'n')
        return bi_isarray(a.m);
    if (!bi_isarray(a.m))
        return false;
    bool given = strchr("xrpb", a.kind);
    if (!given && a.kind != 'y')
        return true;
    bool wide = r.complex && (a.kind == 'x' || a.kind == 'y');
    bool numeric = wide ? bi_isnumeric(a.m) : a.kind == 'y' || bi_isreal(a.m);
    if (!numeric)
        return false;
    bool fits = mo_count(a.m) >= a.count;
    if (given && a.kind != 'b' && !fits)
        return bi_fail(3200);
    if (given || (fits && a.m->eltype <= MO_REAL && a.m->eltype >= MO_COMPLEX))
        r.missing |= la_anymissing(a.m);
    return true;
}

// Scale factors of balancing: outside ilo to ihi they are the rows that were exchanged.
bool check_exchanges(const la_run &r, const la_argument &a)
{
    int n = r.a[2].whole, lo = r.a[3].whole, hi = r.a[4].whole;
    for (int64_t i = 0; i < a.count; i++)
        if ((i + 1 < lo || i + 1 > hi) && !(mo_re(a.m)[i] >= 1 && mo_re(a.m)[i] < n + 1.0))
            return bi_fail(3300);
    return true;
}

// An array made anew is a column, or square where its size is a product of two equal ones.
bool remake(la_argument &a, bool complex)
{
    int64_t root = int64_t(std::sqrt(double(a.count)) + .5);
    int64_t rows = a.size[1] == '*' && root * root == a.count ? root : a.count;
    int64_t cols = rows ? a.count / rows : 0;
    if (rows > INT32_MAX)
        return bi_fail(3900);
    if (m_remkmat(a.m, complex ? MO_COMPLEX : MO_REAL, 0, int32_t(rows), int32_t(cols)))
        return false;
    std::fill_n(mo_re(a.m), a.count * (complex ? 2 : 1), 0.0);
    return true;
}

bool prepare_numbers(la_run &r, la_argument &a)
{
    bool complex = r.complex && (a.kind == 'x' || a.kind == 'y');
    bool fits = mo_count(a.m) >= a.count && a.m->eltype <= MO_REAL &&
                a.m->eltype >= (complex ? MO_COMPLEX : MO_REAL);
    if ((a.kind == 's' || (a.kind == 'y' && !fits)) && !remake(a, complex))
        return false;
    if (!complex) {
        a.p = mo_re(a.m);
        return true;
    }
    int64_t n = mo_count(a.m);
    a.z = la_scratch<cplx>(n);
    if (!a.z)
        return false;
    a.nz = n;
    for (int64_t i = 0; i < n; i++)
        a.z[size_t(i)] = cplx(mo_re(a.m)[i], a.m->eltype == MO_COMPLEX ? mo_im(a.m)[i] : 0);
    a.p = a.z.get();
    return true;
}

bool prepare_whole(la_argument &a)
{
    a.ints = la_scratch<int>(a.count);
    if (!a.ints)
        return false;
    a.p = a.ints.get();
    for (int64_t i = 0; i < a.count; i++)
        a.ints[size_t(i)] = a.kind == 'b' && i < mo_count(a.m) && mo_re(a.m)[i] != 0;
    return true;
}

bool scratch_of(const la_run &r, la_argument &a, int64_t n)
{
    if (a.kind == 'w' && r.complex) {
        a.z = la_scratch<cplx>(n);
        a.p = a.z.get();
    } else if (a.kind == 'n') {
        a.ints = la_scratch<int>(n);
        a.p = a.ints.get();
    } else {
        a.reals = la_scratch<double>(n);
        a.p = a.reals.get();
    }
    return a.p;
}

// ---- the selector of a Schur form: a function of the language over an eigenvalue

matobj *selector;

bool ask_selector(int32_t argc)
{
    double z = 0;
    if (!m_xrc)
        m_callfcn(selector, argc);
    if (m_xrc)
        return false;
    bool chosen = bi_real(m_arg(0), &z) && z != 0 && z < misval;
    m_drop();
    return chosen;
}
int select_real(const double *re, const double *im)
{
    pushdbl(*re);
    pushdbl(*im);
    return ask_selector(2);
}
int select_complex(const cplx *w)
{
    matobj *m = m_mktmat(MO_COMPLEX, 1, 1);
    if (!m)
        return 0;
    *mo_re(m) = w->real();
    *mo_im(m) = w->imag();
    m_push(m);
    return ask_selector(1);
}
// A pointer to a function; anything else where no sorting is wanted.
bool prepare_selector(la_run &r, int at)
{
    la_argument &a = r.a[at];
    selector = nullptr;
    if ((r.a[at - 1].whole | 0x20) == 's') {
        if (!bi_isarray(a.m))
            return false;
        if (a.m->eltype != MO_POINTER)
            return bi_fail(3257);
        if (!bi_isscalar(a.m))
            return false;
        selector = *mo_pel(a.m);
        if (!selector || !mo_isfcn(selector))
            return bi_fail(selector ? 3101 : 3010);
    }
    a.p = r.complex ? reinterpret_cast<void *>(select_complex)
                    : reinterpret_cast<void *>(select_real);
    return true;
}

bool prepare(la_run &r)
{
    for (int i = 0; i < r.n; i++) // outputs first: one variable may stand twice
        if (r.a[i].size && strchr("sy", r.a[i].kind) && !prepare_numbers(r, r.a[i]))
            return false;
    for (int i = 0; i < r.n; i++) {
        la_argument &a = r.a[i];
        bool ok = true;
        switch (a.kind) {
        case 'f': ok = prepare_selector(r, i); break;
        case 'p': ok = check_exchanges(r, a); [[fallthrough]];
        case 'x':
        case 'y':
        case 'r':
        case 's': {
            // Remade under another name meanwhile?
            if (ok && mo_count(a.m) < a.count)
                return bi_fail(3002);
            if (a.kind == 's')
                a.p = mo_re(a.m);
            else
                ok = ok && prepare_numbers(r, a);
            break;
        }
        case 'b':
        case 'k': ok = prepare_whole(a); break;
        case 'w':
        case 'v':
        case 'n': ok = scratch_of(r, a, a.count); break;
        default: break;
        }
        if (!ok)
            return false;
    }
    return true;
}

// ---- the call

template <size_t... I> void call_with(void *f, const la_run &r, std::index_sequence<I...>)
{
    auto g =
        reinterpret_cast<void (*)(decltype(static_cast<void>(I), static_cast<void *>(nullptr))...,
                                  size_t, size_t, size_t, size_t)>(f);
    g(r.a[I].p..., 1, 1, 1, 1);
}
template <size_t N> void call_counted(void *f, const la_run &r)
{
    if constexpr (N < la_most) {
        if (r.n == int(N))
            call_with(f, r, std::make_index_sequence<N>());
        else
            call_counted<N + 1>(f, r);
    }
}

double first_of(const la_run &r, const la_argument &work)
{
    return r.complex ? work.z[0].real() : work.reals[0];
}

// The routine says what scratch it would like. False on a failure.
bool ask_sizes(la_run &r, void *f)
{
    la_argument &l = r.a[r.lwork];
    l.whole = -1;
    if (r.liwork >= 0)
        r.a[r.liwork].whole = -1;
    call_counted<8>(f, r);
    if (r.a[r.n - 1].whole < 0)
        return true; // an argument it will not have: it says so again
    la_argument &w = r.a[r.lwork - 1];
    double want = first_of(r, w);
    if (!(want < 2147483647))
        return bi_fail(3900);
    l.whole = std::max(int(want), 1);
    if (!scratch_of(r, w, l.whole))
        return false;
    if (r.liwork >= 0) {
        la_argument &iw = r.a[r.liwork - 1];
        r.a[r.liwork].whole = std::max(iw.ints[0], 1);
        return scratch_of(r, iw, r.a[r.liwork].whole);
    }
    return true;
}

// ---- results

bool put_number(matobj *m, double z)
{
    if (m_remkmat(m, MO_REAL, 0, 1, 1))
        return false;
    *mo_re(m) = la_kept(z);
    return true;
}

bool put_array(la_argument &a)
{
    if (a.kind == 'k') {
        if (a.count > INT32_MAX || m_remkmat(a.m, MO_REAL, 0, int32_t(a.count), 1))
            return false;
        for (int64_t i = 0; i < a.count; i++)
            mo_re(a.m)[i] = a.ints[size_t(i)];
        return true;
    }
    if (!a.z) {
        la_keep(mo_re(a.m), mo_count(a.m));
        return true;
    }
    int64_t n = std::min(mo_count(a.m), a.nz);
    if (a.m->eltype != MO_COMPLEX && m_remkmat(a.m, MO_COMPLEX, 0, a.m->rows, a.m->cols))
        return false;
    for (int64_t i = 0; i < n; i++)
        colmat<cplx>::put(a.m, i, a.z[size_t(i)]);
    return true;
}

bool put_results(la_run &r)
{
    for (int i = 0; i < r.n; i++) {
        la_argument &a = r.a[i];
        bool ok = true;
        if (strchr("xysk", a.kind)) {
            if (r.missing)
                fillwithmissing(a.m);
            else
                ok = put_array(a);
        } else if (a.kind == 'o' || a.kind == 'z')
            ok = put_number(a.m, r.missing && a.kind == 'o' ? misval : a.whole);
        else if (a.kind == 'e')
            ok = put_number(a.m, r.missing ? misval : a.number);
        else if (a.kind == 'w' && i == r.lwork - 1)
            ok = put_number(a.m, r.missing ? misval : first_of(r, a));
        if (!ok)
            return false;
    }
    return true;
}

void run(int32_t argc, const char *id, const char *routine, const char *form)
{
    m_xeqerrid = id;
    la_run r;
    r.complex = routine[0] == 'z';
    if (!read_form(r, form, argc))
        return;
    for (int i = 0; i < r.n; i++)
        if (!r.a[i].size && !read_scalar(r.a[i]))
            return;
    for (int i = 0; i < r.n; i++)
        if (r.a[i].size && !check_array(r, r.a[i]))
            return;
    // Scratch whose size is asked of the routine stands before L and M without one of its own.
    for (int i : {r.lwork, r.liwork})
        if (i > 0) {
            r.a[i - 1].count = 1;
            if (!bi_isarray(r.a[i - 1].m) || !scratch_of(r, r.a[i - 1], 1))
                return;
        }
    bool query = r.lwork >= 0 && r.a[r.lwork].whole == -1;
    void *f = blas_find(routine);
    if (!f) {
        m_xrc = 3022;
        return;
    }
    if (!prepare(r))
        return;
    if (!r.missing) {
        if (r.lwork >= 0 && !ask_sizes(r, f))
            return;
        if (!query)
            call_counted<8>(f, r);
        if (m_xrc)
            return;
    }
    if (query && !r.missing) {
        if (put_number(r.a[r.lwork - 1].m, r.a[r.lwork].whole) &&
            put_number(r.a[r.n - 1].m, r.a[r.n - 1].whole))
            la_void(argc);
        return;
    }
    if (put_results(r))
        la_void(argc);
}

} // namespace

#define LA(handler, id, routine, form)                                                             \
    void handler(int32_t argc)                                                                     \
    {                                                                                              \
        run(argc, id, routine, form);                                                              \
    }
#include "mosa/lapack.def"
#undef LA

// LA_DLAMCH(option): a constant of the machine's arithmetic by its letter.
void biLA_DLAMCH(int32_t argc)
{
    m_xeqerrid = "LA_DLAMCH()";
    const char *s;
    int32_t n;
    if (!bi_string(m_arg(0), &s, &n))
        return;
    auto f = reinterpret_cast<double (*)(const char *, size_t)>(blas_find("dlamch_"));
    if (!f) {
        m_xrc = 3022;
        return;
    }
    char option = n ? *s : ' ';
    la_scalar(argc, la_kept(f(&option, 1)));
}

// LA_DGBMV(trans, m, n, kl, ku, alpha, A, lda, x, incx, beta, y, incy): y becomes
// alpha A x + beta y, A an m by n matrix of kl lower and ku upper diagonals in LAPACK's form.
void biLA_DGBMV(int32_t argc)
{
    m_xeqerrid = "LA_DGBMV()";
    const char *s;
    int32_t length, whole[7];
    static const int places[] = {2, 3, 4, 5, 8, 10, 13};
    double alpha, beta;
    if (!bi_string(bi_arg(argc, 1), &s, &length) || !bi_real(bi_arg(argc, 6), &alpha) ||
        !bi_real(bi_arg(argc, 11), &beta))
        return;
    char trans = length ? *s : ' ';
    for (int i = 0; i < 7; i++)
        if (!bi_int(bi_arg(argc, places[i]), -1 << 30, 1 << 30, &whole[i]))
            return;
    auto [m, n, kl, ku, lda, incx, incy] = whole;
    matobj *a = bi_arg(argc, 7), *x = bi_arg(argc, 9), *y = bi_arg(argc, 12);
    for (matobj *v : {a, x, y})
        if (!bi_isarray(v) || !bi_isreal(v))
            return;
    bool plain = (trans | 0x20) == 'n';
    if (!plain && (trans | 0x20) != 't' && (trans | 0x20) != 'c') {
        m_xrc = 3300;
        return;
    }
    if (m < 0 || n < 0 || kl < 0 || ku < 0 || lda < int64_t(kl) + ku + 1 || !incx || !incy) {
        m_xrc = 3300;
        return;
    }
    auto needs = [](int64_t k, int64_t step) { return k ? 1 + (k - 1) * std::abs(step) : 0; };
    if (mo_count(a) < int64_t(lda) * n || mo_count(x) < needs(plain ? n : m, incx) ||
        mo_count(y) < needs(plain ? m : n, incy)) {
        m_xrc = 3200;
        return;
    }
    if (alpha >= misval || beta >= misval || la_anymissing(a) || la_anymissing(x) ||
        la_anymissing(y))
        fillwithmissing(y);
    else if (!la_call("dgbmv_", &trans, &m, &n, &kl, &ku, &alpha, mo_re(a), &lda, mo_re(x), &incx,
                      &beta, mo_re(y), &incy))
        return;
    la_keep(mo_re(y), mo_count(y));
    la_void(argc);
}
