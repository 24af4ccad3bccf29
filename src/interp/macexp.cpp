// The expansion of a command line, in place.
#include "core/clock.h"
#include "core/mem.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/labels.h"
#include "expr/expr.h"
#include "interp/dm.h"
#include "interp/macros.h"
#include "interp/messages.h"
#include "interp/programs.h"
#include "interp/tokens.h"
#include "output/print.h"
#include "stats/results.h"
#include <charconv>
#include <cstring>

int32_t (*mac_clsxpand)(const char *ref, std::string *result);
int32_t (*mac_graphtext)(const char *fcn, const char *arg, std::string *result);

// What one reference did: nothing, put new text in its place, or a code above 1 that ends the
// expansion. A break has a value of its own, since its code is 1.
static constexpr int32_t X_LEFT = 0, X_DONE = 1, X_BREAK = -1;
static bool failed(int32_t r) { return r > X_DONE || r < X_LEFT; }

static constexpr int32_t maxrounds = 20, maxnest = 1000;
static size_t linelen;   // of console
static int32_t nest;
static bool oldstyle;    // nothing was substituted yet, and %name may still be meant

static int32_t scan_macro_ref(char *p);

static bool isref(char c) { return c == '$' || c == '`'; }
static bool isalpha_(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}
static bool isname(char c) { return isalpha_(c) || (c >= '0' && c <= '9'); }

static int32_t splice(char *p, size_t old, const char *text, size_t n)
{
    if (linelen - old + n >= size_t(conslen))
        return RC_MACROS;
    size_t tail = size_t(console + linelen - (p + old)) + 1;
    memmove(p + n, p + old, tail);
    if (n)
        memcpy(p, text, n);
    linelen += n - old;
    oldstyle = false;
    return X_DONE;
}

// End of the name at p whose first character was looked at, room characters at most.
static char *name_end(char *p, int32_t room)
{
    while (room > 0 && isname(*p)) {
        p++;
        room--;
    }
    return p;
}

static int32_t nameroom() { return vernum < 700 ? 8 : namelen; }

// The closer that matches the opener at p, or null.
static char *closer(char *p, char open, char close)
{
    int32_t depth = 0;
    for (; *p; p++) {
        if (*p == open)
            depth++;
        else if (*p == close && --depth == 0)
            return p;
    }
    return nullptr;
}

static char *copy_name(const char *p, size_t n)
{
    if (n > macrolen - 1)
        n = macrolen - 1;
    memcpy(space_for_macexp, p, n);
    space_for_macexp[n] = 0;
    return space_for_macexp;
}

static int32_t exp_xpand(const char *text, std::string *out)
{
    bool isstr;
    double z;
    char str[256];
    int32_t rc = exp_text(text, W_ANY, &isstr, &z, str);
    if (rc)
        return rc == RC_BREAK ? X_BREAK : rc;
    if (isstr) {
        *out = str;
        return X_DONE;
    }
    char num[32];
    mac_numtext(z, num);
    *out = num;
    return X_DONE;
}

static int32_t extended_xpand(const char *text, std::string *out)
{
    toktype saved;
    ti_borrow_gettok(tokinfo, &saved);
    std::string copy(text);  // the function may look up names of its own
    ti_settok(tokinfo, copy.data());
    int32_t rc = macexfcn(out);
    ti_return_gettok(tokinfo, &saved);
    return rc == RC_BREAK ? X_BREAK : rc ? rc : X_DONE;
}

static int32_t join_args(std::string *out)
{
    char name[16] = "_";
    for (int32_t i = 1;; i++) {
        *std::to_chars(name + 1, name + 15, i).ptr = 0;
        const char *v = macptr(name);
        if (!v)
            return X_DONE;
        if (i > 1)
            *out += ' ';
        *out += v;
        if (out->size() >= size_t(conslen))
            return RC_MACROS;
    }
}

// A member program may run, and expand lines of its own.
static int32_t class_xpand(const char *ref, std::string *out)
{
    size_t len = linelen;
    int32_t depth = nest;
    bool old = oldstyle;
    int32_t r = mac_clsxpand(ref, out);
    linelen = len;
    nest = depth;
    oldstyle = old;
    return r;
}

// Puts the value of the name in space_for_macexp in the place of the reference.
static int32_t put_value(char *p, size_t old)
{
    const char *name = space_for_macexp;
    char c = name[0] == '_' ? name[1] : 0;
    if (c == '*' || c == '.' || c == '=' || c == ':') [[unlikely]] {
        std::string v;
        int32_t r = X_DONE;
        if (c == '*')
            r = join_args(&v);
        else if (c == '=')
            r = exp_xpand(name + 2, &v);
        else if (c == ':')
            r = extended_xpand(name + 2, &v);
        else if (mac_clsxpand)
            r = class_xpand(name + 1, &v);
        if (failed(r))
            return r;
        return splice(p, old, v.data(), strnlen(v.c_str(), macrolen - 1));
    }
    char buf[24];
    const char *v;
    if (*name == 'S' && !strcmp(name, "S_DATE"))
        v = mkwdate(buf);
    else if (*name == 'S' && !strcmp(name, "S_TIME"))
        v = mkwtime(buf);
    else
        v = macptr(name);
    return splice(p, old, v, v ? strlen(v) : 0);
}

// Expands the references between an opener at p and its closer, which is looked for again
// after each change. X_LEFT with *end null when the closer is gone.
static int32_t expand_inside(char *p, char open, char close, char **end)
{
    for (char *q = p + 1; q < *end; q++) {
        if (!isref(*q))
            continue;
        int32_t r = scan_macro_ref(q);
        if (failed(r))
            return r;
        *end = closer(p, open, close);
        if (!*end)
            return X_LEFT;
    }
    return X_DONE;
}

static int32_t expand_global(char *p)
{
    if (isref(p[1])) {
        int32_t r = scan_macro_ref(p + 1);
        if (failed(r))
            return r;
    }
    char *begin = p + 1, *end, *behind;
    if (*begin == '{') {
        behind = closer(begin, '{', '}');
        if (!behind)
            return X_LEFT;
        int32_t r = expand_inside(begin, '{', '}', &behind);
        if (r != X_DONE)
            return r;
        begin++;
        end = behind++;
        bool special = end - begin > 1 && *begin == '_' && strchr("=:.", begin[1]);
        bool args = end - begin == 2 && begin[0] == '_' && begin[1] == '*';
        if (!special && !args &&
            (!isalpha_(*begin) || name_end(begin, nameroom()) != end))
            return X_LEFT;
    } else {
        if (!isalpha_(*begin))
            return X_LEFT;
        end = begin[0] == '_' && begin[1] == '*' ? begin + 2 : name_end(begin, nameroom());
        behind = end;
    }
    copy_name(begin, size_t(end - begin));
    return put_value(p, size_t(behind - p));
}

// ---- `name(arg)'

static int32_t stored_text(int32_t kind, const char *name, std::string *out)
{
    int32_t what = gretval_find(kind, name);
    char num[32];
    if (what == DM_SCALAR) {
        mac_numtext(retval_get_as_double(), num);
        *out = num;
    } else if (what == DM_LOCAL)
        *out = retval_get_strptr();
    else if (what == DM_MATRIX)
        *out = "matrix";
    return X_DONE;
}

static int32_t fcn_text(const char *fcn, const char *arg, std::string *out)
{
    struct kindrow {
        const char *word;
        int32_t kind;
    };
    static const kindrow kinds[] = {
        {"r", RK_R}, {"return", RK_RETURN}, {"e", RK_E}, {"s", RK_S}};
    for (const kindrow &k : kinds)
        if (!strcmp(fcn, k.word))
            return stored_text(k.kind, arg, out);
    if (!strcmp(fcn, "c")) {
        char buf[macrolen];
        if (cfcnstr(arg, buf))
            *out = buf;
        return X_DONE;
    }
    if (!strcmp(fcn, "foreach")) {
        char buf[macrolen];
        foreachrest(buf);
        *out = buf;
        return X_DONE;
    }
    if (!strcmp(fcn, "gdi") || !strcmp(fcn, "_gedi") || !strcmp(fcn, "_sedi"))
        return mac_graphtext ? mac_graphtext(fcn, arg, out) : X_DONE;
    return X_LEFT;
}

static std::string trimmed(const char *b, const char *e)
{
    while (b < e && *b == ' ')
        b++;
    while (e > b && e[-1] == ' ')
        e--;
    return std::string(b, e);
}

static int32_t put_fcn(char *p, char *nameend, char *end)
{
    if (end[-1] != ')')
        return X_LEFT;
    std::string fcn(p + 1, nameend), arg = trimmed(nameend + 1, end - 1), v;
    bool dpc = ovata_dpc;
    ovata_dpc = false;
    int32_t r = fcn_text(fcn.c_str(), arg.c_str(), &v);
    ovata_dpc = dpc;
    return r == X_DONE ? splice(p, size_t(end + 1 - p), v.data(), v.size()) : r;
}

static int32_t put_char(char *p, char *nameend, char *end)
{
    if (end[-1] != ']')
        return X_LEFT;
    std::string owner(p + 1, nameend), name = trimmed(nameend + 1, end - 1);
    if (owner.size() > size_t(namelen) || name.empty() || name.size() > size_t(namelen))
        return X_LEFT;
    uint64_t n = 0;
    const char *text = charfind(owner.c_str(), name.c_str(), &n);
    return splice(p, size_t(end + 1 - p), text, text ? strlen(text) : 0);
}

static int32_t put_incr(char *p, char *end, const char *name, size_t n, char op, int32_t when)
{
    char buf[64];
    space_for_macexp[0] = '_';
    memcpy(space_for_macexp + 1, name, n);
    space_for_macexp[n + 1] = 0;
    int32_t rc = macincr(space_for_macexp, op, buf, when);
    if (rc)
        return rc == RC_BREAK ? X_BREAK : rc;
    return splice(p, size_t(end + 1 - p), buf, strlen(buf));
}

// `+ `- `. `: `= and what follows up to the closing quote.
static int32_t expand_extended(char *p, char *end)
{
    char c = p[1];
    if (c == '+' || c == '-') {
        char *name = p + 3;
        if (p[2] != c || name >= end || name_end(name, nameroom() - 1) != end)
            return X_LEFT;
        return put_incr(p, end, name, size_t(end - name), c, 1);
    }
    copy_name(p, size_t(end - p));
    space_for_macexp[0] = '_';
    return put_value(p, size_t(end + 1 - p));
}

static int32_t expand_local(char *p)
{
    char c = p[1];
    if (c == '"')
        return X_LEFT;
    int32_t room = nameroom() - 1;
    char *end, *e = name_end(p + 1, room);
    if (*e == '\'') [[likely]]
        end = e;
    else {
        end = closer(p, '`', '\'');
        if (!end)
            return X_LEFT;
        bool extended = c == '+' || c == '-' || c == '.' || c == ':' || c == '=';
        int32_t r = expand_inside(p, '`', '\'', &end);
        if (r != X_DONE)
            return r;
        if (extended)
            return expand_extended(p, end);
        e = name_end(p + 1, room);
    }
    if (e == end || (p[1] == '*' && p + 2 == end)) {
        size_t n = size_t(end - p);
        memcpy(space_for_macexp, p, n);
        space_for_macexp[0] = '_';
        space_for_macexp[n] = 0;
        return put_value(p, n + 1);
    }
    if (e == p + 1)
        return X_LEFT;
    if (end - e == 2 && e[0] == e[1] && (e[0] == '+' || e[0] == '-'))
        return put_incr(p, end, p + 1, size_t(e - p - 1), e[0], -1);
    if (*e == '[')
        return put_char(p, e, end);
    if (*e == '(')
        return put_fcn(p, e, end);
    return X_LEFT;
}

// Settles the position p: its reference is replaced until none that can be stands there.
static int32_t scan_macro_ref(char *p)
{
    if (nest >= maxnest)
        return RC_MACROS;
    nest++;
    int32_t r = X_LEFT;
    for (int32_t round = 0; isref(*p); round++) {
        if (round == maxrounds) {
            r = RC_MACROS;
            break;
        }
        r = *p == '$' ? expand_global(p) : expand_local(p);
        if (r != X_DONE)
            break;
        if (fault_poll()) {
            r = X_BREAK;
            break;
        }
    }
    nest--;
    return r;
}

static void unescape(char **at)
{
    char *p = *at;
    char c = p[1];
    if (isref(c)) {
        memmove(p, p + 1, size_t(console + linelen - p));
        linelen--;
        *at = p + 1;
        return;
    }
    if (c == '\\') {
        if (vernum < 900 || isref(p[2])) {
            memmove(p, p + 1, size_t(console + linelen - p));
            linelen--;
            *at = p + 1;
            return;
        }
        *at = p + 2;
        return;
    }
    *at = p + 1;
}

// Programs of the first versions wrote %name.
static int32_t expand_percent()
{
    char *to = console;
    for (char *p = console; *p; p++)
        if (*p != '`')
            *to++ = *p;
    *to = 0;
    linelen = size_t(to - console);
    for (char *p = strchr(console, '%'); p; p = strchr(p, '%')) {
        if (!isalpha_(p[1])) {
            p++;
            continue;
        }
        char *end = name_end(p + 1, nameroom());
        const char *v = macptr(copy_name(p + 1, size_t(end - p - 1)));
        size_t n = v ? strlen(v) : 0;
        int32_t r = splice(p, size_t(end - p), v, n);
        if (failed(r))
            return r;
        p += n;
    }
    return X_DONE;
}

int32_t macexp()
{
    if (!procflg)
        return 0;
    nest = 0;
    oldstyle = vernum < 320;
    int32_t r = X_LEFT;
    char *p = console + strcspn(console, "$`\\");
    if (*p || oldstyle) {
        linelen = size_t(p - console) + strlen(p);
        while (*p) {
            if (*p == '\\')
                unescape(&p);
            else {
                r = scan_macro_ref(p);
                if (failed(r))
                    break;
                if (isref(*p))
                    p++;
            }
            p += strcspn(p, "$`\\");
        }
    }
    if (!failed(r) && oldstyle)
        r = expand_percent();
    ti_settok(tokinfo, console);
    if (r == X_BREAK)
        return RC_BREAK;
    if (r == RC_MACROS) {
        spout21at(3, "too many ");
        spout21at(3, "macros\n");
    }
    return failed(r) ? r : 0;
}
