#include "output/fmt.h"
#include "core/missing.h"
#include "core/state.h"
#include "output/dates.h"
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>

// The text of one number before it is padded. The longest: 308 digits, 243 decimals and the
// commas of the former.
struct numbuf {
    char s[700];
    int32_t n;
};

static void setlen(numbuf *b)
{
    b->n = int32_t(strlen(b->s));
}

static void fixed(numbuf *b, double z, int dec)
{
    auto r = std::to_chars(b->s, b->s + sizeof b->s - 1, z, std::chars_format::fixed, dec);
    *r.ptr = '\0';
    b->n = int32_t(r.ptr - b->s);
    // -0.00 says nothing more than 0.00.
    if (*b->s == '-' && strspn(b->s + 1, "0.") == size_t(b->n - 1))
        memmove(b->s, b->s + 1, size_t(b->n--));
}

static void scientific(numbuf *b, double z, int dec)
{
    auto r = std::to_chars(b->s, b->s + sizeof b->s - 1, z, std::chars_format::scientific, dec);
    *r.ptr = '\0';
    b->n = int32_t(r.ptr - b->s);
}

// Separates thousands of the whole part. commas are turned into points later where the
// decimal sign is a comma.
static void thousands(numbuf *b)
{
    char *start = b->s + (*b->s == '-');
    auto digits = int(strspn(start, "0123456789"));
    for (int at = digits - 3; at > 0; at -= 3) {
        memmove(start + at + 1, start + at, strlen(start + at) + 1);
        start[at] = ',';
    }
    setlen(b);
}

// 1.2500 becomes 1.25, and 0.5 becomes .5.
static void shorten(numbuf *b, bool keepzero)
{
    char *point = static_cast<char *>(memchr(b->s, '.', size_t(b->n)));
    if (point) {
        char *end = b->s + b->n;
        while (end[-1] == '0')
            end--;
        if (end - 1 == point)
            end--;
        *end = '\0';
        b->n = int32_t(end - b->s);
    }
    char *start = b->s + (*b->s == '-');
    if (!keepzero && start[0] == '0' && start[1] == '.') {
        memmove(start, start + 1, strlen(start));
        b->n--;
    }
}

// The power of ten of z's first digit once it is rounded to digits of them.
static int power10(double z, int digits)
{
    char t[48];
    auto r = std::to_chars(t, t + sizeof t - 1, z, std::chars_format::scientific, digits - 1);
    *r.ptr = '\0';
    const char *e = strchr(t, 'e');
    return e ? atoi(e + 1) : 0;
}

// Scientific with as many digits as leave room for a sign and fit in width.
static int general_e(numbuf *b, double z, int width, int maxdec)
{
    int epart = std::abs(power10(z, 1)) >= 100 || std::abs(power10(z, 16)) >= 100 ? 5 : 4;
    int dec = std::clamp(width - 1 - epart - 2, 0, maxdec);
    scientific(b, z, dec);
    return width - 1 - epart - 2;
}

// The general form: as many digits as fit, a column kept for the sign and one for the point.
// Large numbers, and small ones that would show fewer digits so, are in scientific form.
static void general(numbuf *b, double z, const fmtinfo &f)
{
    int w = f.width, p = std::max(1, w - 2);
    if (z == 0) {
        strcpy(b->s, "0");
        b->n = 1;
        return;
    }
    bool whole = std::fabs(z) < 1e17 && z == std::trunc(z);
    // 16 digits are what a double holds of any number; 17, which tell two doubles apart
    // whatever they are, are shown where they are asked for.
    int digits = std::min({p, f.dec > 0 ? int(f.dec) : 16, 17});
    int ex = whole ? power10(z, 17) : power10(z, digits);
    int edec = f.dec > 0 ? std::min(16, f.dec - 1) : 15;
    if (ex >= p || ex < -5 || (!whole && ex >= 16)) {
        int room = general_e(b, z, w, edec);
        if (room > 0 || ex < 0)
            return;
        // A narrow column: plain digits say more, if they fit or are no longer.
        numbuf plain;
        fixed(&plain, z, 0);
        if (plain.n <= std::max(w, b->n - 1) && std::fabs(z) < 1e16)
            *b = plain;
        return;
    }
    int dec = whole ? 0 : std::clamp(digits - 1 - ex, 0, p);
    if (f.dec == 0 && ex < 0)
        dec = std::min(dec, w - 2);
    if (f.dec > 0 && ex < 0)
        dec = std::min(dec, std::max(0, w - 2));
    fixed(b, z, std::max(dec, 0));
    shorten(b, false);
    if (!f.commas || ex < 3)
        return;
    numbuf sep;
    for (; dec >= 0; dec--) {
        fixed(&sep, z, dec);
        shorten(&sep, false);
        thousands(&sep);
        if (sep.n <= w) {
            *b = sep;
            return;
        }
    }
}

static void fixedform(numbuf *b, double z, const fmtinfo &f)
{
    fixed(b, z, f.dec);
    if (f.commas) {
        numbuf plain = *b;
        thousands(b);
        if (b->n > f.width)
            *b = plain;
    }
    for (int dec = f.dec - 1; b->n > f.width && dec >= 0; dec--)
        fixed(b, z, dec);
    if (b->n > f.width) {
        fmtinfo g = f;
        g.dec = 0;
        g.commas = false;
        general(b, z, g);
    }
}

static void eform(numbuf *b, double z, const fmtinfo &f)
{
    int dec = f.dec;
    do
        scientific(b, z, dec);
    while (b->n > f.width && dec-- > 0);
}

// +1.8000000000000X+003, whatever the bits: missing values show theirs.
static void hexform(numbuf *b, double z)
{
    uint64_t u = std::bit_cast<uint64_t>(z), frac = u & ((uint64_t{1} << 52) - 1);
    int e = int(u >> 52 & 0x7ff);
    bool normal = e != 0;
    e = normal ? e - 1023 : frac ? -1022 : -1023;
    b->n = snprintf(b->s, sizeof b->s, "%c%d.%013llxX%c%03x", u >> 63 ? '-' : '+', int(normal),
                    static_cast<unsigned long long>(frac), e < 0 ? '-' : '+',
                    unsigned(std::abs(e)));
}

// The bytes of the double (16 digits) or of its float (8), most or least significant first.
static void byteform(numbuf *b, double z, const fmtinfo &f)
{
    int bytes = f.width / 2;
    uint64_t u = std::bit_cast<uint64_t>(z);
    if (bytes == 4) {
        if (ovismissing(z))
            u = 0x7F000000u | uint32_t(mis_letter(z)) << 11;
        else
            u = std::fabs(z) > max_ovfloat ? 0x7F000000u : std::bit_cast<uint32_t>(float(z));
    }
    for (int i = 0; i < bytes; i++) {
        int shift = 8 * (f.kind == 'H' ? bytes - 1 - i : i);
        snprintf(b->s + 2 * i, 3, "%02x", unsigned(u >> shift & 0xff));
    }
    b->n = 2 * bytes;
}

static void missing(numbuf *b, double z)
{
    int k = z_allexp(z) ? 0 : mis_letter(z);
    b->n = 1 + (k >= 1 && k <= 26);
    b->s[0] = '.';
    b->s[1] = char('a' + k - 1);
    b->s[b->n] = '\0';
}

static void decimalcomma(numbuf *b)
{
    for (char *p = b->s; *p; p++)
        *p = *p == '.' ? ',' : *p == ',' ? '.' : *p;
}

// Text of z by f, not padded.
static void numtext(numbuf *b, double z, const fmtinfo &f)
{
    bool ismis = z >= misval || z_allexp(z);
    switch (f.kind) {
    case 't':
        if (f.date != 'b' && f.date != 'g') {
            b->n = dt_format(b->s, sizeof b->s, z, f.date, f.codes);
            return;
        }
        break;
    case 'x': return hexform(b, z);
    case 'H':
    case 'L': return byteform(b, z, f);
    default: break;
    }
    if (ismis)
        return missing(b, z);
    switch (f.kind) {
    case 'f': fixedform(b, z, f); break;
    case 'e': eform(b, z, f); break;
    default: general(b, z, f); break;
    }
    if (f.dpcomma || ovata_dpc)
        decimalcomma(b);
}

// Copies text padded to width; the whole is cut at n - 1.
static int32_t pad(char *out, size_t n, const char *text, int32_t len, int32_t width, char align)
{
    int32_t blanks = std::max(0, width - len);
    int32_t before = align == 'l' ? 0 : align == 'c' ? blanks / 2 : blanks;
    auto room = n ? int32_t(std::min<size_t>(n - 1, 1 << 20)) : 0;
    int32_t total = std::min(len + blanks, room);
    for (int32_t i = 0; i < total; i++)
        out[i] = i >= before && i < before + len ? text[i - before] : ' ';
    if (n)
        out[total] = '\0';
    return total;
}

static void parsed(const char *fmt, fmtinfo *f)
{
    if (!chkfmt(fmt, f) && f->kind != 's')
        return;
    int16_t w = f->kind == 's' && f->width ? f->width : int16_t(9);
    bool left = f->left;
    (void)chkfmt("%9.0g", f);
    f->width = w;
    f->left = left;
}

int32_t fmtnum(char *out, size_t n, double z, const char *fmt)
{
    fmtinfo f;
    parsed(fmt, &f);
    numbuf b;
    numtext(&b, z, f);
    bool ismis = z >= misval || z_allexp(z);
    if (f.zero && b.n < f.width && !ismis && !f.left && f.kind != 't') {
        int32_t sign = *b.s == '-';
        memmove(b.s + sign + (f.width - b.n), b.s + sign, size_t(b.n - sign));
        memset(b.s + sign, '0', size_t(f.width - b.n));
        b.n = f.width;
    }
    return pad(out, n, b.s, b.n, f.width, f.left ? 'l' : 'r');
}

int32_t fmtnumtrim(char *out, size_t n, double z, const char *fmt)
{
    fmtinfo f;
    parsed(fmt, &f);
    if (f.zero)
        return fmtnum(out, n, z, fmt);
    numbuf b;
    numtext(&b, z, f);
    return pad(out, n, b.s, b.n, 0, 'l');
}

int32_t fmtstr(char *out, size_t n, const char *text, const char *fmt)
{
    fmtinfo f;
    if (chkfmt(fmt, &f)) {
        f = fmtinfo{};
        f.width = 9;
    }
    auto len = int32_t(strnlen(text, size_t(f.width ? f.width : 1 << 20)));
    return pad(out, n, text, len, f.width, f.left ? 'l' : f.center ? 'c' : 'r');
}
