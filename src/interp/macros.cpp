#include "interp/macros.h"
#include "core/numtext.h"
#include "core/rc.h"
#include "core/state.h"
#include "interp/dm.h"
#include "interp/messages.h"
#include "output/fmt.h"
#include "output/print.h"
#include <charconv>
#include <cstdio>
#include <cstring>

char space_for_macexp[macrolen];

static int32_t mactype(const char *name) { return *name == '_' ? typelmac : int32_t(DM_GLOBAL); }

char *macptr(const char *name) { return static_cast<char *>(dmfind0(name, mactype(name))); }

char *macfind(const char *name, uint64_t *length)
{
    return static_cast<char *>(dmfind(name, mactype(name), length));
}

void macload(const char *payload, uint64_t length, char *buffer)
{
    if (length > uint64_t(macrolen))
        length = macrolen;
    if (length)
        memcpy(buffer, payload, length);
    buffer[length ? length - 1 : 0] = 0;
}

void macuse(const char *name, char *buffer) { macuseshort(name, buffer, macrolen - 1); }

void macuseshort(const char *name, char *buffer, int32_t max)
{
    const char *p = macptr(name);
    size_t n = p ? strnlen(p, size_t(max)) : 0;
    if (n)
        memcpy(buffer, p, n);
    buffer[n] = 0;
}

static int32_t store(const char *name, int32_t type, const char *value, size_t n)
{
    return dmresave(name, type, 0, value, n + 1);
}

int32_t macsave(const char *name, const char *value)
{
    return *value ? dmsave(name, mactype(name), 0, value, strlen(value) + 1) : 0;
}

int32_t macsave0(const char *name) { return dmsave(name, mactype(name), 0, "", 1); }

int32_t macresave(const char *name, const char *value)
{
    if (!*value) {
        macerase(name);
        return 0;
    }
    return store(name, mactype(name), value, strlen(value));
}

int32_t macresaveq(const char *name, const char *value)
{
    char buf[macrolen];
    size_t n = strnlen(value, macrolen - 5);
    memcpy(buf, "`\"", 2);
    memcpy(buf + 2, value, n);
    memcpy(buf + 2 + n, "\"'", 3);
    return store(name, mactype(name), buf, n + 4);
}

int32_t macresave_c(const char *name, const char *value)
{
    if (typelmac <= DM_LOCAL)
        return error(RC_SYNTAX);
    typelmac--;
    int32_t rc = macresave(name, value);
    typelmac++;
    return rc;
}

void macerase(const char *name) { dmrm(macptr(name)); }

char *macnext(const char *payload, char *name)
{
    return static_cast<char *>(dmnext(const_cast<char *>(payload), name, DM_GLOBAL, nullptr));
}

int32_t mac_numtext(double z, char *buf)
{
    // Whole numbers of up to 15 digits are their digits; most of what macros hold is.
    if (z > -1e15 && z < 1e15 && z == double(int64_t(z))) {
        char *e = std::to_chars(buf, buf + 31, int64_t(z)).ptr;
        *e = 0;
        return int32_t(e - buf);
    }
    bool dpc = ovata_dpc;
    ovata_dpc = false;
    int32_t n = fmtnumtrim(buf, 32, z, "%18.0g");
    ovata_dpc = dpc;
    return n;
}

int32_t macincr(const char *name, char op, char *buffer, int32_t when)
{
    uint64_t len;
    char *p = macfind(name, &len);
    if (!p)
        return macnotfound(*name == '_' ? name + 1 : name);
    double z;
    if (len > 40 || cnvstoz(p, &z))
        return error(RC_TYPE);
    if (when < 0)
        memcpy(buffer, p, len);
    char text[32];
    size_t n = size_t(mac_numtext(op == '-' ? z - 1 : z + 1, text));
    int32_t rc = 0;
    if (n + 1 == len)
        memcpy(p, text, n);
    else
        rc = store(name, mactype(name), text, n);
    if (when > 0)
        memcpy(buffer, text, n + 1);
    return rc;
}

bool mac_goodname(const char *name, size_t n)
{
    if (n < 1 || n > size_t(namelen) || (*name >= '0' && *name <= '9'))
        return false;
    for (size_t i = 0; i < n; i++) {
        char c = name[i];
        if (!((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
              c == '_'))
            return false;
    }
    return true;
}

// ---- words

// Behind the `" at p: the "' that closes it, or null.
static const char *closecompound(const char *p)
{
    int depth = 1;
    for (p += 2; *p; p++) {
        if (p[0] == '`' && p[1] == '"') {
            depth++;
            p++;
        } else if (p[0] == '"' && p[1] == '\'') {
            if (--depth == 0)
                return p;
            p++;
        }
    }
    return nullptr;
}

// The word at p (no blank there): its inside and the place behind it.
static const char *word_at(const char *p, const char **begin, const char **end, bool *quoted)
{
    *quoted = true;
    if (p[0] == '`' && p[1] == '"') {
        const char *q = closecompound(p);
        *begin = p + 2;
        *end = q ? q : p + strlen(p);
        return q ? q + 2 : *end;
    }
    if (*p == '"') {
        const char *q = strchr(p + 1, '"');
        *begin = p + 1;
        *end = q ? q : p + strlen(p);
        return q ? q + 1 : *end;
    }
    *quoted = false;
    *begin = p;
    while (*p && *p != ' ')
        p++;
    return *end = p;
}

const char *mac_item(const char *text, char *buf, int32_t max, bool *quoted)
{
    while (*text == ' ')
        text++;
    if (!*text)
        return nullptr;
    const char *begin, *end;
    bool q;
    const char *next = word_at(text, &begin, &end, &q);
    size_t n = size_t(end - begin);
    if (n >= size_t(max))
        n = size_t(max) - 1;
    memcpy(buf, begin, n);
    buf[n] = 0;
    if (quoted)
        *quoted = q;
    return next;
}

int32_t mac_unquote(char **text, size_t *n)
{
    char *p = *text;
    size_t len = *n;
    if (len && p[0] == '"') {
        char *q = static_cast<char *>(memchr(p + 1, '"', len - 1));
        if (!q)
            return error(RC_SYNTAX);
        if (q == p + len - 1) {
            *q = 0;
            *text = p + 1;
            *n = len - 2;
        }
        return 0;
    }
    if (len > 1 && p[0] == '`' && p[1] == '"') {
        const char *q = closecompound(p);
        if (!q)
            return error(RC_SYNTAX);
        if (q == p + len - 2) {
            p[len - 2] = 0;
            *text = p + 2;
            *n = len - 4;
        }
    }
    return 0;
}
