// Numbers and texts in buffers: string scalars that hold the bytes of binary files.
//
//   %8z %4z         IEEE numbers of 8 or 4 bytes
//   %4b %2b %1b     whole numbers; an s behind says signed, which is understood, a u unsigned
//   %20s            text in 20 bytes, filled with NULs, which end it in reading
//   %20S            20 bytes as they are
//
// The control vector has the byte order, 1 most significant first or 2 least, and the version of
// the system whose missing values are meant; missing says that numbers are only numbers.
#include "core/bytes.h"
#include "core/missing.h"
#include "mosa/bi_int.h"
#include "mosa/bihandlers.h"
#include <cfloat>
#include <cmath>

namespace
{

struct bfmt {
    char kind; // z b u s S
    int32_t length;
};

struct control {
    byteorder order;
    enum { NONE, OLD, NEW } missing;
};

bool get_format(const matobj *m, bfmt *f)
{
    const char *p;
    int32_t n;
    if (!bi_string(m, &p, &n))
        return false;
    int64_t length = 0;
    int32_t k = 1;
    for (; k < n && p[k] >= '0' && p[k] <= '9' && length < INT32_MAX; k++)
        length = 10 * length + (p[k] - '0');
    bool good = n >= 3 && p[0] == '%' && k > 1 && length > 0 && length <= INT32_MAX - 16 && k < n;
    f->kind = good ? p[k++] : '?';
    f->length = int32_t(length);
    if (f->kind == 'b' && k < n && (p[k] == 's' || p[k] == 'u'))
        f->kind = p[k++] == 'u' ? 'u' : 'b';
    switch (f->kind) {
    case 'z': good = good && (length == 4 || length == 8); break;
    case 'b':
    case 'u': good = good && (length == 1 || length == 2 || length == 4); break;
    case 's':
    case 'S': break;
    default: good = false;
    }
    return (good && k == n) || bi_fail(3302);
}

bool is_text(const bfmt &f)
{
    return f.kind == 's' || f.kind == 'S';
}

bool get_control(const matobj *m, control *c)
{
    if (!bi_isreal(m))
        return false;
    if (mo_count(m) < 1 || (m->rows != 1 && m->cols != 1))
        return bi_fail(3201);
    double order = m->view ? v_el1(m, 0) : mo_re(m)[0], version = 12;
    if (mo_count(m) > 1)
        version = m->view ? v_el1(m, 1) : mo_re(m)[1];
    if (order != 1 && order != 2)
        return bi_fail(3300);
    c->order = byteorder(int32_t(order));
    c->missing = ovismissing(version) ? control::NONE : version < 8 ? control::OLD : control::NEW;
    return true;
}

// ---- whole numbers

// The span of numbers of a signed form, and its missing values.
struct span {
    double low, high; // with missing values
    int64_t first, old, whole;
};

const span &span_of(int32_t length)
{
    static const span spans[] = {{min_ovbyte, max_ovbyte, 101, bytemis_110, 128},
                                 {min_ovint, max_ovint, 32741, intmis_110, 32768},
                                 {min_ovlong, max_ovlong, 2147483621, longmis_110, 2147483648}};
    return spans[length == 1 ? 0 : length == 2 ? 1 : 2];
}

// The whole number that is stored for z; false when there is none.
bool to_whole(double z, const bfmt &f, const control &c, int64_t *n)
{
    bool missing = ovismissing(z);
    double low = 0, high = std::ldexp(1.0, 8 * f.length) - 1;
    if (f.kind == 'b') {
        const span &s = span_of(f.length);
        low = c.missing ? s.low : double(-s.whole);
        high = c.missing == control::NEW ? s.high : double(s.whole - 1 - (c.missing ? 1 : 0));
        if (c.missing && (missing || std::trunc(z) < low || std::trunc(z) > high)) {
            int32_t letter = missing && mis_letter(z) <= 26 ? mis_letter(z) : 0;
            *n = c.missing == control::OLD ? s.old : s.first + letter;
            return true;
        }
    }
    z = missing ? z : std::trunc(z);
    *n = missing ? 0 : int64_t(z);
    return !missing && z >= low && z <= high;
}

double from_whole(uint32_t bits, const bfmt &f, const control &c)
{
    if (f.kind == 'u')
        return bits;
    const span &s = span_of(f.length);
    int64_t n = int64_t(bits) >= s.whole ? int64_t(bits) - 2 * s.whole : int64_t(bits);
    if (c.missing == control::NEW && n >= s.first)
        return mis_of(int32_t(n - s.first));
    return c.missing == control::OLD && n == s.old ? misval : double(n);
}

// ---- IEEE numbers

uint64_t to_bits(double z, int32_t length, const control &c)
{
    bool missing = ovismissing(z);
    int32_t letter = missing && mis_letter(z) <= 26 ? mis_letter(z) : 0;
    if (length == 8) {
        if (missing && c.missing == control::OLD)
            z = misval_110;
        return std::bit_cast<uint64_t>(z);
    }
    if (!missing && std::fabs(z) <= (c.missing ? max_ovfloat : double(FLT_MAX)))
        return std::bit_cast<uint32_t>(float(z));
    if (c.missing == control::OLD)
        return std::bit_cast<uint32_t>(fltmis_110);
    return 0x7f000000u | uint32_t(letter) << 11;
}

double from_bits(uint64_t bits, int32_t length, const control &c)
{
    double z =
        length == 8 ? std::bit_cast<double>(bits) : double(std::bit_cast<float>(uint32_t(bits)));
    if (!(std::fabs(z) <= DBL_MAX))
        return misval;
    if (length == 8)
        return c.missing == control::OLD && z >= misval_110 ? misval : z;
    if (c.missing == control::OLD)
        return z >= double(fltmis_110) ? misval : z;
    uint32_t over = uint32_t(bits) - 0x7f000000u;
    if (c.missing == control::NEW && z > max_ovfloat)
        return over % 2048 == 0 && over / 2048 <= 26 ? mis_of(int32_t(over / 2048)) : misval;
    return z;
}

// ---- one element at a place

bool put_number(char *p, double z, const bfmt &f, const control &c)
{
    if (f.kind == 'z') {
        uint64_t bits = to_bits(z, f.length, c);
        f.length == 8 ? put64(p, bits, c.order) : put32(p, uint32_t(bits), c.order);
        return true;
    }
    int64_t n;
    if (!to_whole(z, f, c, &n))
        return bi_fail(3300);
    if (f.length == 1)
        *p = char(n);
    else
        f.length == 2 ? put16(p, uint16_t(n), c.order) : put32(p, uint32_t(n), c.order);
    return true;
}

double get_number(const char *p, const bfmt &f, const control &c)
{
    if (f.kind == 'z')
        return from_bits(f.length == 8 ? get64(p, c.order) : get32(p, c.order), f.length, c);
    return from_whole(f.length == 1   ? uint8_t(*p)
                      : f.length == 2 ? get16(p, c.order)
                                      : get32(p, c.order),
                      f, c);
}

void put_text(char *p, const char *bytes, int32_t n, int32_t length)
{
    n = n < length ? n : length;
    memmove(p, bytes, size_t(n)); // a buffer may be put into itself
    memset(p + n, 0, size_t(length - n));
}

// Whether so many elements fit into the buffer behind an offset, which goes into *at.
bool fits(const matobj *buffer, const matobj *offset, int64_t bytes, int64_t *at)
{
    double z;
    if (!bi_real(offset, &z))
        return false;
    int64_t n = sel_len(*mo_sel(buffer));
    if (!(z >= 0 && z <= double(n)) || bytes > n - int64_t(z))
        return bi_fail(3300);
    *at = int64_t(z);
    return true;
}

// A buffer is a string scalar, and no view.
bool is_buffer(const matobj *m)
{
    return bi_isarray(m) && bi_isstring(m) && bi_isscalar(m);
}

} // namespace

// bufput(C, B, offset, bfmt, X) stores the elements of X by rows into B, in place.
void bibufput(int32_t argc)
{
    m_xeqerrid = "bufput()";
    control c;
    bfmt f;
    int64_t at;
    matobj *b = bi_arg(argc, 2), *x = bi_arg(argc, 5);
    if (!get_control(bi_arg(argc, 1), &c) || !is_buffer(b) || !get_format(bi_arg(argc, 4), &f) ||
        !(is_text(f) ? bi_isstring(x) : bi_isreal(x)))
        return;
    int64_t n = mo_count(x);
    if (n > INT32_MAX || !fits(b, bi_arg(argc, 3), n * f.length, &at)) {
        if (!m_xrc)
            bi_fail(3300);
        return;
    }
    char *p = n ? *mo_sel(b) + 4 + at : nullptr, small[256];
    for (int64_t k = 0; k < n; k++, p += f.length) {
        if (bi_stop(k))
            return;
        if (!is_text(f)) {
            if (!put_number(p, x->view ? v_el1(x, k) : mo_re(x)[k], f, c))
                return;
        } else if (x->view)
            put_text(p, small, v_sel1(x, k, small), f.length);
        else
            put_text(p, sel_text(mo_sel(x)[k]), sel_len(mo_sel(x)[k]), f.length);
    }
    m_result(argc, m_mktmat(MO_REAL, 0, 0));
}

// bufget(C, B, offset, bfmt [, r [, c]]) makes an r by c matrix, 1 by 1 when not told, of what
// lies in B.
void bibufget(int32_t argc)
{
    m_xeqerrid = "bufget()";
    control c;
    bfmt f;
    int64_t at;
    int32_t rows = 1, cols = 1;
    const matobj *b = bi_arg(argc, 2);
    if (!get_control(bi_arg(argc, 1), &c) || !is_buffer(b) || !get_format(bi_arg(argc, 4), &f) ||
        (argc > 4 && !bi_int(bi_arg(argc, 5), 0, INT32_MAX, &rows)) ||
        (argc > 5 && !bi_int(bi_arg(argc, 6), 0, INT32_MAX, &cols)))
        return;
    int64_t n = int64_t(rows) * cols;
    if (n > INT32_MAX || !fits(b, bi_arg(argc, 3), n * f.length, &at)) {
        if (!m_xrc)
            bi_fail(3300);
        return;
    }
    matobj *m = m_mktmat(is_text(f) ? MO_STRING : MO_REAL, rows, cols);
    const char *p = n ? *mo_sel(b) + 4 + at : nullptr;
    for (int64_t k = 0; m && k < n; k++, p += f.length) {
        auto length = int64_t(f.kind == 's' ? strnlen(p, size_t(f.length)) : size_t(f.length));
        if (!is_text(f))
            mo_re(m)[k] = get_number(p, f, c);
        if (bi_stop(k) || (is_text(f) && selreplace(m, k, p, length))) {
            mo_free(m);
            return;
        }
    }
    m_result(argc, m);
}

void bibufbfmtlen(int32_t argc)
{
    m_xeqerrid = "bufbfmtlen()";
    bfmt f;
    if (get_format(m_arg(0), &f))
        m_result(argc, m_mktsmatsto(f.length));
}

void bibufbfmtisnum(int32_t argc)
{
    m_xeqerrid = "bufbfmtisnum()";
    bfmt f;
    if (get_format(m_arg(0), &f))
        m_result(argc, m_mktsmatsto(!is_text(f)));
}

// bufsub(B, offset, n): n bytes of a buffer.
void bibufsub(int32_t argc)
{
    m_xeqerrid = "bufsub()";
    const matobj *b = bi_arg(argc, 1);
    int32_t n;
    int64_t at;
    if (!is_buffer(b) || !bi_int(bi_arg(argc, 3), 0, INT32_MAX, &n) ||
        !fits(b, bi_arg(argc, 2), n, &at))
        return;
    m_result(argc, m_mktstr(sel_text(*mo_sel(b)) + at, n));
}
