#include "core/numtext.h"
#include "core/missing.h"
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>

static bool isdig(char c) { return c >= '0' && c <= '9'; }

static int hexval(char c)
{
    if (isdig(c))
        return c - '0';
    c |= 0x20;
    return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

// Text without the blanks around it.
namespace {
struct span {
    const char *at, *end;
};
}  // namespace
static span trimmed(const char *text, size_t n)
{
    span s{text, text + n};
    while (s.at < s.end && (*s.at == ' ' || *s.at == '\t'))
        s.at++;
    while (s.end > s.at && (s.end[-1] == ' ' || s.end[-1] == '\t'))
        s.end--;
    return s;
}

// mant * 2^e2, with sticky telling that bits below were lost; ties go to even. The mantissa
// has at most 62 significant bits, so that one rounding decides, subnormals included.
static double scaled(uint64_t mant, int64_t e2, bool sticky)
{
    if (!mant)
        return 0;
    int64_t top = 63 - __builtin_clzll(mant);  // its leading bit
    int64_t e = top + e2;                      // exponent of the value
    if (e > 1023)
        return HUGE_VAL;
    int64_t keep = e >= -1022 ? 53 : 53 - (-1022 - e);  // bits the result can hold
    int64_t drop = top + 1 - keep;
    if (keep < 0)
        return 0;
    if (drop > 0) {
        uint64_t low = mant & ((uint64_t{1} << drop) - 1), half = uint64_t{1} << (drop - 1);
        mant = drop > 63 ? 0 : mant >> drop;
        if (low > half || (low == half && (sticky || (mant & 1))))
            mant++;
        e2 += drop;
    }
    return std::ldexp(double(mant), int(e2));
}

// 1.8x+3: hexadecimal digits with a point, x or X, a signed hexadecimal exponent of 2.
static bool hexnum(span s, bool neg, double *out)
{
    uint64_t mant = 0;
    int64_t e2 = 0;
    bool sticky = false, point = false, any = false;
    for (; s.at < s.end && (*s.at | 0x20) != 'x'; s.at++) {
        if (*s.at == '.') {
            if (point)
                return false;
            point = true;
            continue;
        }
        int v = hexval(*s.at);
        if (v < 0)
            return false;
        any = true;
        if (mant >> 58) {
            sticky |= v != 0;
            e2 += point ? 0 : 4;
        } else {
            mant = mant << 4 | unsigned(v);
            e2 -= point ? 4 : 0;
        }
    }
    if (!any || s.end - s.at < 3 || (s.at[1] != '+' && s.at[1] != '-'))
        return false;
    bool eneg = s.at[1] == '-';
    int64_t x = 0;
    for (s.at += 2; s.at < s.end; s.at++) {
        int v = hexval(*s.at);
        if (v < 0)
            return false;
        if (x < 0x100000)
            x = x * 16 + v;
    }
    double z = scaled(mant, e2 + (eneg ? -x : x), sticky);
    *out = std::isinf(z) ? misval : neg ? -z : z;
    return true;
}

// Beyond the range on which side? The power of ten of the first digit that counts.
static bool decislarge(span s, const char *mark)
{
    int64_t power = 0;
    bool point = false, seen = false;
    for (const char *p = s.at; p < (mark ? mark : s.end); p++) {
        if (*p == '.')
            point = true;
        else if (seen || *p != '0') {
            seen = true;
            if (!point)
                power++;
            else
                break;
        } else if (point)
            power--;
    }
    int64_t x = 0;
    if (mark) {
        const char *p = mark + 1;
        bool neg = *p == '-';
        for (p += neg || *p == '+'; p < s.end; p++)
            if (x < 1000000000000)
                x = x * 10 + (*p - '0');
        x = neg ? -x : x;
    }
    return seen && power + x > 0;
}

// digits [. digits] [e|d [sign] digits]. Checked here, then converted by the library, which
// rounds correctly; it does not know d for the exponent, hence the copy.
static bool decnum(span s, bool neg, double *out)
{
    const char *p = s.at;
    int digits = 0;
    for (; p < s.end && isdig(*p); p++)
        digits++;
    if (p < s.end && *p == '.')
        for (p++; p < s.end && isdig(*p); p++)
            digits++;
    if (!digits)
        return false;
    const char *mark = nullptr;
    if (p < s.end && ((*p | 0x20) == 'e' || (*p | 0x20) == 'd')) {
        mark = p++;
        if (p < s.end && (*p == '+' || *p == '-'))
            p++;
        if (p == s.end || !isdig(*p))
            return false;
        while (p < s.end && isdig(*p))
            p++;
    }
    if (p != s.end)
        return false;
    char shortbuf[64];
    std::unique_ptr<char[]> longbuf;
    const char *from = s.at;
    if (mark && (*mark | 0x20) == 'd') {
        size_t n = size_t(s.end - s.at);
        char *buf = shortbuf;
        if (n > sizeof shortbuf) {
            longbuf.reset(new (std::nothrow) char[n]);
            if (!(buf = longbuf.get()))
                return false;
        }
        memcpy(buf, s.at, n);
        buf[mark - s.at] = 'e';
        from = buf;
    }
    double z = 0;
    auto r = std::from_chars(from, from + (s.end - s.at), z);
    if (r.ec == std::errc::result_out_of_range)
        z = decislarge(s, mark) ? misval : 0;
    *out = z >= misval ? misval : neg ? -z : z;
    return true;
}

int32_t cnvstozn(const char *text, int32_t n, double *out)
{
    *out = misval;
    span s = trimmed(text, strnlen(text, size_t(n < 0 ? 0 : n)));
    if (s.at == s.end)
        return 1;
    if (*s.at == '.') {  // . and .a to .z
        if (s.end - s.at == 1)
            return 0;
        if (s.end - s.at == 2 && s.at[1] >= 'a' && s.at[1] <= 'z') {
            *out = mis_of(s.at[1] - 'a' + 1);
            return 0;
        }
    }
    bool neg = *s.at == '-';
    if (neg || *s.at == '+')
        s.at++;
    for (const char *p = s.at; p < s.end; p++)
        if ((*p | 0x20) == 'x')
            return !hexnum(s, neg, out);
    return !decnum(s, neg, out);
}

int32_t cnvstoz(const char *text, double *out)
{
    size_t n = strlen(text);
    return cnvstozn(text, n > INT32_MAX ? INT32_MAX : int32_t(n), out);
}

int32_t cnvstoint4(const char *text, int32_t *out)
{
    span s = trimmed(text, strlen(text));
    if (s.at < s.end && *s.at == '+' && s.end - s.at > 1 && isdig(s.at[1]))
        s.at++;
    int32_t v = 0;
    auto r = std::from_chars(s.at, s.end, v);
    if (r.ec != std::errc{} || r.ptr != s.end || s.at == s.end)
        return 1;
    *out = v;
    return 0;
}

char *cnvztos(double z, char *buf)
{
    if (ovismissing(z) || std::isnan(z)) {
        int k = std::isnan(z) || std::isinf(z) ? 0 : mis_letter(z);
        buf[0] = '.';
        buf[1] = k >= 1 && k <= 26 ? char('a' + k - 1) : '\0';
        buf[2] = '\0';
        return buf;
    }
    auto r = std::to_chars(buf, buf + 31, z);
    *r.ptr = '\0';
    return buf;
}
