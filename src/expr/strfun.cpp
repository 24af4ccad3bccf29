#include "expr/strfun.h"
#include "core/limits.h"
#include "core/missing.h"
#include "core/numtext.h"
#include "core/state.h"
#include "output/fmt.h"
#include <algorithm>
#include <cstdio>
#include <cstring>

static constexpr size_t maxlen = strlen_max;

static char lowered(char c) { return c >= 'A' && c <= 'Z' ? char(c | 0x20) : c; }
static char uppered(char c) { return c >= 'a' && c <= 'z' ? char(c & ~0x20) : c; }
static bool letter(char c) { return lowered(c) >= 'a' && lowered(c) <= 'z'; }

static char *copied(char *out, const char *s, size_t n)
{
    n = std::min(n, maxlen);
    memmove(out, s, n);
    out[n] = '\0';
    return out;
}

// Cut toward zero; far values are held to what an int can tell apart.
static int32_t whole(double z)
{
    return int32_t(std::clamp(z, -1e9, 1e9));
}

char *str_substr(char *out, const char *s, double n1, double n2)
{
    auto len = int32_t(strlen(s));
    *out = '\0';
    if (n1 >= misval)
        return out;
    int32_t from = whole(n1), count = n2 > 246 ? 246 : whole(n2);
    if (from < 0)
        from = len + 1 + from;
    if (from < 1 || from > len || count < 1)
        return out;
    return copied(out, s + from - 1, size_t(std::min(count, len - from + 1)));
}

// Replaces from the left while limit lasts and the result fits; wordonly asks for blanks or
// ends on both sides.
static char *substitute(char *out, const char *s, const char *from, const char *to, double n,
                        bool wordonly)
{
    size_t flen = strlen(from), tlen = strlen(to), used = 0;
    *out = '\0';
    if (!flen)
        return out;
    int32_t limit = n >= misval ? INT32_MAX : whole(n);
    const char *p = s;
    while (*p && used < maxlen) {
        bool hit = limit > 0 && !strncmp(p, from, flen);
        if (hit && wordonly)
            hit = (p == s || p[-1] == ' ') && (!p[flen] || p[flen] == ' ');
        if (!hit) {
            out[used++] = *p++;
            continue;
        }
        limit--;
        size_t room = std::min(tlen, maxlen - used);
        memcpy(out + used, to, room);
        used += room;
        p += flen;
    }
    out[used] = '\0';
    return out;
}

char *str_subinstr(char *out, const char *s, const char *from, const char *to, double n)
{
    return substitute(out, s, from, to, n, false);
}

char *str_subinword(char *out, const char *s, const char *from, const char *to, double n)
{
    return substitute(out, s, from, to, n, true);
}

char *str_word(char *out, const char *s, double n)
{
    *out = '\0';
    int32_t want = n >= misval ? 0 : whole(n), count = int32_t(str_wordcount(s));
    if (want < 0)
        want = count + 1 + want;
    if (want < 1 || want > count)
        return out;
    for (;; s += strcspn(s, " ")) {
        s += strspn(s, " ");
        if (--want == 0)
            return copied(out, s, strcspn(s, " "));
    }
}

double str_wordcount(const char *s)
{
    double n = 0;
    for (s += strspn(s, " "); *s; n++) {
        s += strcspn(s, " ");
        s += strspn(s, " ");
    }
    return n;
}

double str_pos(const char *s, const char *what)
{
    const char *p = *what ? strstr(s, what) : nullptr;
    return p ? double(p - s + 1) : 0;
}

double str_indexnot(const char *s, const char *set)
{
    size_t n = strspn(s, set);
    return s[n] ? double(n + 1) : 0;
}

char *str_lower(char *s)
{
    for (char *p = s; *p; p++)
        *p = lowered(*p);
    return s;
}

char *str_upper(char *s)
{
    for (char *p = s; *p; p++)
        *p = uppered(*p);
    return s;
}

// A capital at the start and behind anything that is no letter.
char *str_proper(char *s)
{
    bool inside = false;
    for (char *p = s; *p; p++) {
        *p = inside ? lowered(*p) : uppered(*p);
        inside = letter(*p);
    }
    return s;
}

char *str_ltrim(char *s)
{
    const char *p = s + strspn(s, " ");
    memmove(s, p, strlen(p) + 1);
    return s;
}

char *str_rtrim(char *s)
{
    size_t n = strlen(s);
    while (n && s[n - 1] == ' ')
        n--;
    s[n] = '\0';
    return s;
}

// Runs of blanks between words become one; those at the ends stay.
char *str_itrim(char *s)
{
    char *to = s + strspn(s, " "), *end = s + strlen(s);
    while (end > to && end[-1] == ' ')
        end--;
    for (const char *p = to; p < end; p++)
        if (*p != ' ' || p[1] != ' ')
            *to++ = *p;
    memmove(to, end, strlen(end) + 1);
    return s;
}

char *str_reverse(char *s)
{
    std::reverse(s, s + strlen(s));
    return s;
}

double str_match(const char *s, const char *pattern)
{
    const char *star = nullptr, *back = nullptr;
    while (*s) {
        if (*pattern == '*') {
            star = ++pattern;
            back = s;
        } else if (*pattern == '?' || (*pattern && *pattern == *s)) {
            pattern++;
            s++;
        } else if (star) {
            pattern = star;
            s = ++back;
        } else
            return 0;
    }
    while (*pattern == '*')
        pattern++;
    return !*pattern;
}

// Codes of the letters a to z by the patent of R. C. Russell (US 1,261,167); 0 has no code.
static const char soundcodes[] = "01230120022455012623010202";

// The letter and three digits. A letter with the code of the one before it is passed over;
// with nara the letters h and w do not come between two such letters, as in the rule that
// the national archives use.
static char *soundex(char *out, const char *s, bool nara)
{
    size_t n = 0;
    char last = '\0';
    for (; *s && n < 4; s++) {
        if (!letter(*s))
            continue;
        char low = lowered(*s), code = soundcodes[low - 'a'];
        bool silent = low == 'h' || low == 'w';
        if (n == 0) {
            out[n++] = uppered(*s);
            last = code;
            continue;
        }
        if (silent && nara)
            continue;
        if (code != '0' && code != last)
            out[n++] = code;
        last = code;
    }
    while (n && n < 4)
        out[n++] = '0';
    out[n] = '\0';
    return out;
}

char *str_soundex(char *out, const char *s)
{
    return soundex(out, s, false);
}

char *str_soundex_nara(char *out, const char *s)
{
    return soundex(out, s, true);
}

char *str_toname(char *out, const char *s, double p)
{
    size_t n = 0;
    if (p != 0 && *s >= '0' && *s <= '9')
        out[n++] = '_';
    for (; *s && n < size_t(namelen); s++)
        out[n++] = letter(*s) || (*s >= '0' && *s <= '9') ? *s : '_';
    out[n] = '\0';
    return out;
}

// All but the last character of what fits, with ~ for what was left out: abcdef~z.
char *str_abbrev(char *out, const char *s, double n)
{
    size_t len = strlen(s);
    auto want = size_t(n >= misval ? namelen : std::clamp(whole(n), 5, namelen));
    if (len <= want)
        return copied(out, s, len);
    char last = s[len - 1];
    copied(out, s, want - 2);
    out[want - 2] = '~';
    out[want - 1] = last;
    out[want] = '\0';
    return out;
}

// t may be the whole plural, +text to append, or -text to take off the end.
char *str_plural(char *out, double n, const char *s, const char *t)
{
    char buf[2 * maxlen + 8];
    bool one = n == 1 || n == -1;
    if (one)
        snprintf(buf, sizeof buf, "%s", s);
    else if (!t)
        snprintf(buf, sizeof buf, "%ss", s);
    else if (*t == '+')
        snprintf(buf, sizeof buf, "%s%s", s, t + 1);
    else if (*t == '-') {
        size_t len = strlen(s), cut = strlen(t + 1);
        bool ends = cut <= len && !strcmp(s + len - cut, t + 1);
        snprintf(buf, sizeof buf, "%.*s", int(ends ? len - cut : len), s);
    } else
        snprintf(buf, sizeof buf, "%s", t);
    return copied(out, buf, strlen(buf));
}

char *str_string(char *out, double z, const char *fmt)
{
    fmtinfo f;
    *out = '\0';
    if (!fmt)
        fmt = "%9.0g";
    if (chkfmt(fmt, &f) || f.kind == 's')
        return out;
    char buf[300];
    fmtnum(buf, sizeof buf, z, fmt);
    const char *p = buf + strspn(buf, " ");
    return copied(out, p, strlen(p));
}

double str_real(const char *s)
{
    double z;
    return cnvstoz(s, &z) ? misval : z;
}

char *str_char(char *out, double n)
{
    out[0] = n >= 1 && n < 256 ? char(uint8_t(n)) : '\0';
    out[1] = '\0';
    return out;
}

char *str_subdp(char *out, const char *s)
{
    copied(out, s, strlen(s));
    if (ovata_dpc)
        std::replace(out, out + strlen(out), '.', ',');
    return out;
}
