// Dates to text: the letter codes of date formats.
#include "core/missing.h"
#include "output/dates.h"
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

const char *const dt_mons[12] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                 "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
const char *const dt_months[12] = {"January",   "February", "March",    "April",
                                   "May",       "June",     "July",     "August",
                                   "September", "October",  "November", "December"};
const char *const dt_wdays[7] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
const char *const dt_weekdays[7] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                    "Thursday", "Friday", "Saturday"};

// A moment taken apart.
struct moment {
    int32_t y, m, d, doy, dow, week, quarter, half;
    int32_t hour, minute, ms;  // ms within the minute; past 59999 in a leap second
};

enum codekind : uint8_t { K_NUM, K_NUM0, K_NAME, K_LOWNAME, K_UPNAME, K_FRAC, K_AMPM };
struct coderow {
    const char *code;
    codekind kind;
    uint8_t width;
    int32_t (*num)(const moment &t);           // numbers, or the index of a name
    const char *const *names;
};

static int32_t hour12(const moment &t)
{
    return t.hour % 12 ? t.hour % 12 : 12;
}

#define NUM(e) [](const moment &t) -> int32_t { return e; }
// Longer codes before those they begin with.
static const coderow codes[] = {
    {"DAYNAME", K_UPNAME, 9, NUM(t.dow), dt_weekdays},
    {"Dayname", K_NAME, 9, NUM(t.dow), dt_weekdays},
    {"dayname", K_LOWNAME, 9, NUM(t.dow), dt_weekdays},
    {"MONTH", K_UPNAME, 9, NUM(t.m - 1), dt_months},
    {"Month", K_NAME, 9, NUM(t.m - 1), dt_months},
    {"month", K_LOWNAME, 9, NUM(t.m - 1), dt_months},
    {"A.M.", K_AMPM, 4, nullptr, nullptr},
    {"a.m.", K_AMPM, 4, nullptr, nullptr},
    {"DAY", K_UPNAME, 3, NUM(t.dow), dt_wdays},
    {"Day", K_NAME, 3, NUM(t.dow), dt_wdays},
    {"day", K_LOWNAME, 3, NUM(t.dow), dt_wdays},
    {"MON", K_UPNAME, 3, NUM(t.m - 1), dt_mons},
    {"Mon", K_NAME, 3, NUM(t.m - 1), dt_mons},
    {"mon", K_LOWNAME, 3, NUM(t.m - 1), dt_mons},
    {".sss", K_FRAC, 4, NUM(t.ms % 1000), nullptr},
    {".ss", K_FRAC, 3, NUM(t.ms % 1000 / 10), nullptr},
    {".s", K_FRAC, 2, NUM(t.ms % 1000 / 100), nullptr},
    {"JJJ", K_NUM0, 3, NUM(t.doy), nullptr},
    {"jjj", K_NUM, 3, NUM(t.doy), nullptr},
    {"CC", K_NUM0, 2, NUM(t.y / 100), nullptr},
    {"cc", K_NUM, 2, NUM(t.y / 100), nullptr},
    {"YY", K_NUM0, 2, NUM(t.y % 100), nullptr},
    {"yy", K_NUM, 2, NUM(t.y % 100), nullptr},
    {"NN", K_NUM0, 2, NUM(t.m), nullptr},
    {"nn", K_NUM, 2, NUM(t.m), nullptr},
    {"DD", K_NUM0, 2, NUM(t.d), nullptr},
    {"dd", K_NUM, 2, NUM(t.d), nullptr},
    {"DA", K_UPNAME, 2, NUM(t.dow), dt_wdays},
    {"Da", K_NAME, 2, NUM(t.dow), dt_wdays},
    {"da", K_LOWNAME, 2, NUM(t.dow), dt_wdays},
    {"WW", K_NUM0, 2, NUM(t.week), nullptr},
    {"ww", K_NUM, 2, NUM(t.week), nullptr},
    {"HH", K_NUM0, 2, NUM(t.hour), nullptr},
    {"Hh", K_NUM0, 2, NUM(hour12(t)), nullptr},
    {"hH", K_NUM, 2, NUM(t.hour), nullptr},
    {"hh", K_NUM, 2, NUM(hour12(t)), nullptr},
    {"MM", K_NUM0, 2, NUM(t.minute), nullptr},
    {"mm", K_NUM, 2, NUM(t.minute), nullptr},
    {"SS", K_NUM0, 2, NUM(t.ms / 1000), nullptr},
    {"ss", K_NUM, 2, NUM(t.ms / 1000), nullptr},
    {"AM", K_AMPM, 2, nullptr, nullptr},
    {"am", K_AMPM, 2, nullptr, nullptr},
    {"q", K_NUM, 1, NUM(t.quarter), nullptr},
    {"h", K_NUM, 1, NUM(t.half), nullptr},
    // One letter each, as %d formats were written before the doubled codes.
    {"C", K_NUM0, 2, NUM(t.y / 100), nullptr},
    {"c", K_NUM, 2, NUM(t.y / 100), nullptr},
    {"Y", K_NUM0, 2, NUM(t.y % 100), nullptr},
    {"y", K_NUM, 2, NUM(t.y % 100), nullptr},
    {"M", K_NAME, 9, NUM(t.m - 1), dt_months},
    {"m", K_NAME, 3, NUM(t.m - 1), dt_mons},
    {"L", K_LOWNAME, 9, NUM(t.m - 1), dt_months},
    {"l", K_LOWNAME, 3, NUM(t.m - 1), dt_mons},
    {"N", K_NUM0, 2, NUM(t.m), nullptr},
    {"n", K_NUM, 2, NUM(t.m), nullptr},
    {"D", K_NUM0, 2, NUM(t.d), nullptr},
    {"d", K_NUM, 2, NUM(t.d), nullptr},
    {"J", K_NUM0, 3, NUM(t.doy), nullptr},
    {"j", K_NUM, 3, NUM(t.doy), nullptr},
    {"W", K_NUM0, 2, NUM(t.week), nullptr},
    {"w", K_NUM, 2, NUM(t.week), nullptr},
};
#undef NUM

static const char *defaultcodes(char unit)
{
    switch (unit) {
    case 'c':
    case 'C': return "DDmonCCYY_HH:MM:SS";
    case 'w': return "CCYY!www";
    case 'm': return "CCYY!mnn";
    case 'q': return "CCYY!qq";
    case 'h': return "CCYY!hh";
    case 'y': return "CCYY";
    default: return "DDmonCCYY";
    }
}

// The row at p, or null: then p is a sign that stands for itself, or nothing known.
static const coderow *rowat(const char *p)
{
    for (const coderow &r : codes)
        if (*r.code == *p && !strncmp(p, r.code, strlen(r.code)))
            return &r;
    return nullptr;
}

// One step through the codes at *p: a row, or a sign to print (NUL for none). False when the
// codes are wrong.
static bool step(const char **p, const coderow **row, char *sign)
{
    *sign = '\0';
    if ((*row = rowat(*p))) {
        *p += strlen((*row)->code);
        return true;
    }
    char c = *(*p)++;
    if (c == '!' || c == '\\') {
        if (!**p)
            return false;
        *sign = *(*p)++;
    } else if (c == '_')
        *sign = ' ';
    else if (strchr(".,:-/; ", c))
        *sign = c;
    else if (c != '+')
        return false;
    return true;
}

int32_t dt_fmtwidth(char unit, const char *text)
{
    const char *p = *text ? text : defaultcodes(unit);
    int32_t width = 0;
    while (*p) {
        const coderow *row;
        char sign;
        if (!step(&p, &row, &sign))
            return 0;
        width += row ? row->width : sign != '\0';
    }
    return width;
}

static bool takeapart(double z, char unit, moment *t)
{
    bool leapform = unit == 'C', clock = leapform || unit == 'c';
    double day = leapform ? dt_dofC(z) : clock ? dt_dofc(z) : dt_today(z, unit);
    if (!(day < misval))
        return false;
    dt_ymd(day, &t->y, &t->m, &t->d);
    t->doy = int32_t(dt_doy(day));
    t->dow = int32_t(dt_dow(day));
    t->week = std::min(52, (t->doy - 1) / 7 + 1);
    t->quarter = (t->m - 1) / 3 + 1;
    t->half = (t->m - 1) / 6 + 1;
    t->hour = t->minute = t->ms = 0;
    if (clock) {
        t->hour = int32_t(leapform ? dt_hhC(z) : dt_hh(z));
        t->minute = int32_t(leapform ? dt_mmC(z) : dt_mm(z));
        t->ms = int32_t(std::lround((leapform ? dt_ssC(z) : dt_ss(z)) * 1000));
    }
    return true;
}

// A number, filled with zeros to width.
static void digits(char *out, int32_t n, int32_t width)
{
    char rev[12];
    int32_t len = 0;
    for (; n > 0 || len < width; n /= 10)
        rev[len++] = char('0' + n % 10);
    while (len)
        *out++ = rev[--len];
    *out = '\0';
}

static void codetext(char *out, size_t room, const coderow &r, const moment &t)
{
    switch (r.kind) {
    case K_NUM: digits(out, r.num(t), 1); return;
    case K_NUM0: digits(out, r.num(t), r.width); return;
    case K_FRAC: snprintf(out, room, ".%0*d", int(r.width) - 1, r.num(t)); return;
    case K_AMPM:
        snprintf(out, room, "%s", r.code);
        if (t.hour >= 12)
            *out = *out == 'a' ? 'p' : 'P';
        return;
    default: break;
    }
    snprintf(out, std::min(room, size_t(r.width) + 1), "%s", r.names[r.num(t)]);
    for (char *p = out; *p && r.kind != K_NAME; p++)
        *p = char(r.kind == K_UPNAME ? *p & ~0x20 : *p | 0x20);
}

int32_t dt_format(char *out, size_t n, double z, char unit, const char *text)
{
    char buf[256];
    size_t used = 0;
    moment t;
    if (z >= misval || z_allexp(z)) {
        int k = z_allexp(z) ? 0 : mis_letter(z);
        used = size_t(snprintf(buf, sizeof buf, k >= 1 && k <= 26 ? ".%c" : ".", 'a' + k - 1));
    } else if (!takeapart(z, unit, &t)) {
        used = size_t(snprintf(buf, sizeof buf, "%.10g", z));  // no such date
    } else {
        const char *p = *text ? text : defaultcodes(unit);
        while (*p && used < sizeof buf - 12) {
            const coderow *row;
            char sign;
            if (!step(&p, &row, &sign))
                break;
            buf[used] = sign;
            buf[used + (sign != '\0')] = '\0';
            if (row)
                codetext(buf + used, 12, *row, t);
            used += strlen(buf + used);
        }
    }
    if (!n)
        return 0;
    used = std::min(used, n - 1);
    memcpy(out, buf, used);
    out[used] = '\0';
    return int32_t(used);
}
