#include "data/termname.h"
#include "core/text.h"
#include <cctype>
#include <cstring>

bool ts_join(tsops *t, char letter, int32_t number)
{
    if (number < -9999 || number > 9999)
        return false;
    switch (toupper(uint8_t(letter))) {
    case 'F': number = -number; [[fallthrough]];
    case 'L': t->lag = int16_t(t->lag + number); return true;
    case 'D': break;
    default:
        if (number < 1)
            return false;
        if (number == 1)
            break;
        if (t->span[1])
            return false;
        t->span[t->span[0] ? 1 : 0] = int16_t(number);
        if (t->span[1] && t->span[1] < t->span[0])
            std::swap(t->span[0], t->span[1]);
        return true;
    }
    t->diff = int16_t(t->diff + number);
    return number >= 0 && t->diff <= 99;
}

static std::string numbered(char letter, int32_t n)
{
    return n == 1 ? std::string(1, letter) : letter + std::to_string(n);
}

std::string ts_text(const tsops &t)
{
    std::string s;
    if (t.lag)
        s += t.lag > 0 ? numbered('L', t.lag) : numbered('F', -t.lag);
    if (t.diff)
        s += numbered('D', t.diff);
    for (int16_t k : t.span)
        if (k)
            s += numbered('S', k);
    return s;
}

// ---- reading

static bool digits(const char **p, int32_t *n)
{
    if (!isdigit(uint8_t(**p)))
        return false;
    int64_t v = 0;
    for (; isdigit(uint8_t(**p)); ++*p)
        if ((v = v * 10 + (**p - '0')) > INT32_MAX)
            return false;
    *n = int32_t(v);
    return true;
}

// The operators in front of a point; p is behind it afterwards.
static bool read_ops(const char **p, termpart *t)
{
    if (**p == '.')
        return false;
    if (toupper(uint8_t(**p)) == 'I' && !isdigit(uint8_t(*++*p)))
        return false;
    if (digits(p, &t->level)) {
        t->kind = TP_LEVEL;
        if (**p == 'b' || **p == 'B') {
            ++*p;
            bool none = **p == 'n' || **p == 'N';
            *p += none;
            t->marks |= none ? TM_NOBASE : TM_BASE;
        }
    } else if (**p == 'c' || **p == 'C') {
        t->kind = TP_CONT;
        ++*p;
    }
    if (**p == 'o' || **p == 'O') {
        t->marks |= TM_OMIT;
        ++*p;
    }
    while (**p && **p != '.') {
        char letter = *(*p)++;
        int32_t n = 1;
        if (!strchr("LFDSlfds", letter))
            return false;
        if (isdigit(uint8_t(**p)) && !digits(p, &n))
            return false;
        if (!ts_join(&t->ts, letter, n))
            return false;
    }
    return *(*p)++ == '.';
}

static bool read_part(const char **p, termpart *t)
{
    const char *q = *p;
    for (int32_t points = 0;; points++, q = *p) {
        while (isalnum(uint8_t(*q)) || *q == '_')
            q++;
        if (*q != '.')
            break;
        if (points == 2 || !read_ops(p, t))
            return false;
    }
    q = *p;
    if (!isalpha(uint8_t(*q)) && *q != '_')
        return false;
    while (isalnum(uint8_t(*q)) || *q == '_')
        q++;
    if (q - *p > 32)
        return false;
    memcpy(t->name, *p, size_t(q - *p));
    t->name[q - *p] = 0;
    *p = q;
    return true;
}

bool term_read(const char *text, termname *out)
{
    *out = termname{};
    for (;;) {
        if (out->n == term_maxparts || !read_part(&text, &out->part[out->n]))
            return false;
        out->n++;
        if (!*text)
            break;
        if (*text++ != '#')
            return false;
    }
    if (out->n == 1) {
        if (out->part[0].kind == TP_CONT)
            out->part[0].kind = TP_PLAIN;
        return true;
    }
    for (int32_t i = 0; i < out->n; i++)
        if (out->part[i].kind == TP_PLAIN)
            return false;
    return true;
}

std::string term_write(const termname &t)
{
    std::string s;
    for (int32_t i = 0; i < t.n; i++) {
        const termpart &p = t.part[i];
        std::string ops;
        if (p.kind == TP_LEVEL) {
            ops = std::to_string(p.level);
            ops += p.marks & TM_NOBASE ? "bn" : p.marks & TM_BASE ? "b" : "";
        } else if (t.n > 1)
            ops = "c";
        ops += p.marks & TM_OMIT ? "o" : "";
        ops += ts_text(p.ts);
        s += (i ? "#" : "") + ops + (ops.empty() ? "" : ".") + p.name;
    }
    return s;
}

// ---- comparing

static bool same_part(const termpart &a, const termpart &b, bool levels)
{
    bool la = a.kind == TP_LEVEL, lb = b.kind == TP_LEVEL;
    return la == lb && (!levels || !la || a.level == b.level) && a.ts == b.ts &&
           !strcmp(a.name, b.name);
}

static bool same(const termname &a, const termname &b, bool levels)
{
    if (a.n != b.n)
        return false;
    uint32_t used = 0;
    for (int32_t i = 0; i < a.n; i++) {
        int32_t j = 0;
        while (j < b.n && ((used >> j & 1) || !same_part(a.part[i], b.part[j], levels)))
            j++;
        if (j == b.n)
            return false;
        used |= 1u << j;
    }
    return true;
}

bool term_same(const termname &a, const termname &b)
{
    return same(a, b, true);
}
bool term_sameterm(const termname &a, const termname &b)
{
    return same(a, b, false);
}

bool term_isbase(const termname &t)
{
    for (int32_t i = 0; i < t.n; i++)
        if (t.part[i].kind != TP_LEVEL || !(t.part[i].marks & TM_BASE))
            return false;
    return t.n > 0;
}

bool term_isomitted(const termname &t)
{
    for (int32_t i = 0; i < t.n; i++)
        if (t.part[i].marks & TM_OMIT)
            return true;
    return term_isbase(t);
}

bool term_hasfactor(const termname &t)
{
    return t.n > 1 || (t.n == 1 && t.part[0].kind == TP_LEVEL);
}

void term_omit(termname *t)
{
    bool any = false;
    for (int32_t i = 0; i < t->n; i++) {
        termpart &p = t->part[i];
        if (p.kind == TP_LEVEL && (p.marks & TM_BASE))
            continue;
        p.marks = uint8_t((p.marks & ~TM_NOBASE) | TM_OMIT);
        any = true;
    }
    if (!any && t->n)
        t->part[0].marks |= TM_OMIT;
}
