// Text to dates.
#include "core/missing.h"
#include "output/dates.h"
#include <algorithm>
#include <cmath>
#include <cstring>
#include <initializer_list>

static bool isdig(char c) { return c >= '0' && c <= '9'; }
static char lowered(char c) { return c >= 'A' && c <= 'Z' ? char(c | 0x20) : c; }
static bool isalpha_(char c) { return lowered(c) >= 'a' && lowered(c) <= 'z'; }

// One part of a mask: D M Y h m s, one of the units H Q W, or # for a part passed over.
struct maskpart {
    char what;
    int32_t century;  // 19 or 20 before Y, else -1
};
struct mask {
    maskpart part[16];
    int32_t n;
};

// What was read; parts not in the mask keep the first of their kind.
struct parts {
    double y = 1960, m = 1, d = 1, unit = 1, h = 0, mi = 0, s = 0;
    bool four = false;  // a year in a run of digits has four of them
};

static bool readmask(mask *k, const char *text, const char *letters)
{
    k->n = 0;
    int32_t century = -1;
    for (const char *p = text; *p; p++) {
        if (strchr(" []_", *p))
            continue;
        if (isdig(*p) && isdig(p[1])) {
            century = (*p - '0') * 10 + (p[1] - '0');
            p++;
            continue;
        }
        if (!strchr(letters, *p) || k->n == 16 || (century >= 0 && *p != 'Y'))
            return false;
        for (int32_t i = 0; i < k->n; i++)
            if (*p != '#' && k->part[i].what == *p)
                return false;
        k->part[k->n++] = {*p, century};
        century = -1;
    }
    return k->n > 0 && century < 0;
}

// At most max digits.
static bool digits(const char **p, int32_t max, double *out)
{
    if (!isdig(**p))
        return false;
    double v = 0;
    for (; max > 0 && isdig(**p); max--)
        v = v * 10 + (*(*p)++ - '0');
    *out = v;
    return true;
}

static int32_t rundigits(const char *p)
{
    int32_t n = 0;
    while (isdig(p[n]))
        n++;
    return n;
}

// A month's name, or three letters of it or more, in either case.
static bool monthname(const char **p, double *out)
{
    size_t n = 0;
    while (isalpha_((*p)[n]))
        n++;
    if (n < 3)
        return false;
    for (int m = 0; m < 12; m++) {
        const char *name = dt_months[m];
        size_t i = 0;
        while (i < n && name[i] && lowered((*p)[i]) == lowered(name[i]))
            i++;
        if (i == n) {
            *p += n;
            *out = m + 1;
            return true;
        }
    }
    return false;
}

// A year. In a run of digits that holds later parts too, it has two digits when that is what
// makes all parts two long and four is not asked for, else four. Two digits need a century:
// the mask's, or the one that brings the year to the pivot at the latest.
static bool year(const char **p, int32_t partsleft, int32_t century, double pivot, bool four,
                 double *out)
{
    int32_t run = rundigits(*p), take = run;
    if (run > 4)
        take = run == 2 * partsleft && !four ? 2 : 4;
    if (!digits(p, take, out))
        return false;
    if (take > 2)
        return true;
    if (century >= 0) {
        *out += century * 100;
        return true;
    }
    if (!(pivot < misval))
        return false;
    double last = std::floor(pivot), base = std::floor(last / 100) * 100;
    *out += base;
    if (*out > last)
        *out -= 100;
    return true;
}

static bool seconds(const char **p, double *out)
{
    if (!digits(p, 2, out))
        return false;
    if (**p == '.' && isdig((*p)[1])) {
        double scale = 1, frac = 0;
        for ((*p)++; isdig(**p); (*p)++)
            if (scale < 1e9) {
                frac = frac * 10 + (**p - '0');
                scale *= 10;
            }
        *out += frac / scale;
    }
    return true;
}

// Signs and blanks between parts.
static void between(const char **p)
{
    while (**p && !isdig(**p) && !isalpha_(**p))
        (*p)++;
}

static bool day(const char **p, double *out)
{
    if (!digits(p, 2, out))
        return false;
    for (const char *th : {"st", "nd", "rd", "th"})
        if (lowered(**p) == th[0] && lowered((*p)[1]) == th[1] && !isalpha_((*p)[2])) {
            *p += 2;
            break;
        }
    return true;
}

static bool passover(const char **p)
{
    const char *start = *p;
    bool number = isdig(*start);
    while (number ? isdig(**p) : isalpha_(**p))
        (*p)++;
    return *p > start;
}

// am, pm, a.m. or p.m. behind the time.
static bool noon(const char **p, double *h)
{
    const char *q = *p;
    between(&q);
    char c = lowered(*q);
    if (c != 'a' && c != 'p')
        return true;
    q++;
    if (*q == '.')
        q++;
    if (lowered(*q) != 'm' || isalpha_(q[1]))
        return true;
    q++;
    if (*q == '.')
        q++;
    *p = q;
    if (*h < 1 || *h > 12)
        return false;
    *h = std::fmod(*h, 12) + (c == 'p' ? 12 : 0);
    return true;
}

static bool readpart(const char **p, const maskpart &k, int32_t left, double pivot, parts *v)
{
    // The letter of a unit may stand before its number, as in 2026q4.
    if (strchr("HQWM", k.what) && lowered(**p) == lowered(k.what) && isdig((*p)[1]))
        (*p)++;
    switch (k.what) {
    case 'D': return day(p, &v->d);
    case 'M': return isdig(**p) ? digits(p, 2, &v->m) : monthname(p, &v->m);
    case 'Y': return year(p, left, k.century, pivot, v->four, &v->y);
    case 'h': return digits(p, 2, &v->h);
    case 'm': return digits(p, 2, &v->mi);
    case 's': return seconds(p, &v->s);
    case '#': return passover(p);
    default: return digits(p, 2, &v->unit);
    }
}

static bool readtext(const char *text, const mask &k, double pivot, parts *v)
{
    const char *p = text;
    bool clock = false;
    for (int32_t i = 0; i < k.n; i++) {
        between(&p);
        if (!readpart(&p, k.part[i], k.n - i, pivot, v))
            return false;
        clock |= k.part[i].what == 'h';
        bool last = i + 1 == k.n || !strchr("hms", k.part[i + 1].what);
        if (clock && last && !noon(&p, &v->h))
            return false;
        clock &= !last;
    }
    between(&p);
    return !*p;
}

static double moment(const parts &v, char kind)
{
    double date = dt_mdy(v.m, v.d, v.y);
    if (kind == 'd')
        return date;
    return kind == 'C' ? dt_Cdhms(date, v.h, v.mi, v.s) : dt_dhms(date, v.h, v.mi, v.s);
}

double ovclock(const char *text, const char *masktext, double pivot, char kind)
{
    mask k;
    if (!readmask(&k, masktext, "DMYhms#"))
        return misval;
    double z = misval;
    for (int pass = 0; pass < 2 && z >= misval; pass++) {
        parts v;
        v.four = pass == 1;
        if (readtext(text, k, pivot, &v))
            z = moment(v, kind);
    }
    return z;
}

// The mask in capitals, cut at 32 characters.
static void capitals(char *out, const char *text)
{
    size_t n = std::min<size_t>(strlen(text), 32);
    for (size_t i = 0; i < n; i++)
        out[i] = lowered(text[i]) == text[i] && isalpha_(text[i]) ? char(text[i] & ~0x20) : text[i];
    out[n] = '\0';
}

double ovdate(const char *text, const char *masktext, double pivot)
{
    char up[33];
    capitals(up, masktext);
    return ovclock(text, up, pivot, 'd');
}

double ovyhqmwd(const char *text, const char *masktext, double pivot, char unit)
{
    char up[33];
    mask k;
    parts v;
    capitals(up, masktext);
    if (!readmask(&k, up, "YHQMW#") || !readtext(text, k, pivot, &v))
        return misval;
    switch (unit) {
    case 'h': return dt_yh(v.y, v.unit);
    case 'q': return dt_yq(v.y, v.unit);
    case 'm': return dt_ym(v.y, v.m);
    case 'w': return dt_yw(v.y, v.unit);
    case 'y': return dt_year(dt_mdy(1, 1, v.y));
    default: return misval;
    }
}
