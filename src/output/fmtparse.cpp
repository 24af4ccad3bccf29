#include "core/missing.h"
#include "output/dates.h"
#include "output/fmt.h"
#include <cmath>
#include <cstdio>
#include <cstring>

static const char *const dateunits = "dcCwmqhybg";

static bool isdig(char c) { return c >= '0' && c <= '9'; }

// Up to four digits; -1 when there is none.
static int32_t number(const char **p)
{
    if (!isdig(**p))
        return -1;
    int32_t n = 0;
    for (int i = 0; isdig(**p) && i < 4; i++)
        n = n * 10 + (*(*p)++ - '0');
    return n;
}

// %t and a unit, or %d, each with letter codes behind.
static int32_t parsedate(const char *p, fmtinfo *f)
{
    f->kind = 't';
    if (*p == 't')
        p++;
    if (!*p || !strchr(dateunits, *p))
        return 1;
    f->date = *p++;
    f->codes = p;
    if (f->date == 'b') {  // a calendar's name comes before its codes
        const char *colon = strchr(p, ':');
        f->codes = colon ? colon + 1 : p + strlen(p);
        f->width = 9;
        return *p == '\0' || colon == p;
    }
    if (f->date == 'g') {
        f->width = 9;
        return *p != '\0';
    }
    f->width = int16_t(dt_fmtwidth(f->date, p));
    return f->width < 1 || f->width > T_STRMAX;
}

// w.d and the letter, behind the flags.
static int32_t parsenum(const char *p, fmtinfo *f)
{
    if (*p == '0' && isdig(p[1])) {
        f->zero = true;
        p++;
    }
    int32_t w = number(&p), d = 0;
    if (*p == '.' || *p == ',') {
        f->dpcomma = *p++ == ',';
        if ((d = number(&p)) < 0)
            return 1;
    }
    f->width = int16_t(w);
    f->dec = int16_t(d);
    f->kind = *p ? *p++ : '\0';
    switch (f->kind) {
    case 's':
        if (f->zero || d || f->dpcomma || *p || w == 0 || w > T_STRMAX)
            return 1;
        f->width = int16_t(w < 0 ? 0 : w);
        return 0;
    case 'x': return w != 21 || d || *p || f->center;
    case 'H':
    case 'L': return (w != 16 && w != 8) || d || *p || f->center;
    case 'g':
    case 'f':
        if (*p == 'c') {
            f->commas = true;
            p++;
        }
        break;
    case 'e': break;
    default: return 1;
    }
    return *p || f->center || w < 1 || w > T_STRMAX || d >= w;
}

int32_t chkfmt(const char *fmt, fmtinfo *out)
{
    fmtinfo scratch, *f = out ? out : &scratch;
    *f = fmtinfo{};
    f->codes = "";
    if (*fmt++ != '%' || strlen(fmt) >= 48)
        return 1;
    if (*fmt == '-') {
        f->left = true;
        fmt++;
    } else if (*fmt == '~') {
        f->center = true;
        fmt++;
    }
    if (*fmt == 't' || *fmt == 'd')
        return f->center || parsedate(fmt, f);
    return parsenum(fmt, f);
}

bool fmt_isstr(const char *fmt)
{
    fmtinfo f;
    return !chkfmt(fmt, &f) && f.kind == 's';
}

bool fmt_isdate(const char *fmt)
{
    fmtinfo f;
    return !chkfmt(fmt, &f) && f.kind == 't';
}

int32_t fmtwidth(const char *fmt)
{
    fmtinfo f;
    return chkfmt(fmt, &f) ? 0 : f.width;
}

const char *fmt_default(uint8_t type, char *buf)
{
    switch (type) {
    case T_BYTE:
    case T_INT: return strcpy(buf, "%8.0g");
    case T_LONG: return strcpy(buf, "%12.0g");
    case T_FLOAT: return strcpy(buf, "%9.0g");
    case T_DOUBLE: return strcpy(buf, "%10.0g");
    default:
        snprintf(buf, 8, "%%%ds", t_isstr(type) && type > 9 ? int(type) : 9);
        return buf;
    }
}

static const struct {
    const char *word;
    uint8_t type;
} typewords[] = {
    {"byte", T_BYTE}, {"int", T_INT}, {"long", T_LONG}, {"float", T_FLOAT}, {"double", T_DOUBLE},
};

const char *type_word(uint8_t type, char *buf)
{
    for (const auto &t : typewords)
        if (t.type == type)
            return strcpy(buf, t.word);
    if (t_isstr(type))
        snprintf(buf, 8, "str%d", int(type));
    else
        *buf = '\0';
    return buf;
}

uint8_t type_ofword(const char *word)
{
    for (const auto &t : typewords)
        if (!strcmp(t.word, word))
            return t.type;
    if (strncmp(word, "str", 3))
        return 0;
    const char *p = word + 3;
    int32_t n = *p == '0' ? -1 : number(&p);
    return n >= 1 && n <= T_STRMAX && !*p ? uint8_t(n) : 0;
}

char *sprint_memsize(char *buf, uint64_t bytes)
{
    static const struct {
        uint64_t unit;
        const char *letter;
    } units[] = {{1 << 30, "g"}, {1 << 20, "m"}, {1 << 10, "k"}, {1, ""}};
    for (const auto &u : units)
        if (!bytes || bytes % u.unit == 0) {
            snprintf(buf, 24, "%llu%s", static_cast<unsigned long long>(bytes / u.unit),
                     bytes ? u.letter : "");
            break;
        }
    return buf;
}

char *fmt_comma(char *buf, double z)
{
    fmtnumtrim(buf, 40, z, z == std::floor(z) ? "%39.0fc" : "%39.2fc");
    return buf;
}
