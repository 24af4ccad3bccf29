#include "interp/tokens.h"
#include "core/limits.h"
#include "core/rc.h"
#include "core/state.h"
#include "interp/messages.h"
#include "output/print.h"
#include <cstring>

toktype tokinfo_rec;

const char prsestd[] = " \\\"'`~:;,<>/?!@|#$%^&*()-+=[]{}";
const char prsestdot[] = " \\\"'`~:;,<>/?!@|#$%^&*()-+=[]{}.";
const char prsenum[] = " \\\"'`~:;,<>/?!@|#$%^&*()=[]{}";
const char prseopt[] = " \\\"'`~:;,<>/?!@|#$%^&*()=[]{}";
const char prsestdnp[] = " \\\"'`~:;,<>/?!@|#$%^&*-+=[]{}";
const char prsestdnoangle[] = " \\\"'`~:;,/?!@|#$%^&*()-+=[]{}";
const char prsevar[] = " \\\"'`:;,<>/?!@|#$%^&*()-+=[]{}";
const char prsestd2[] = " \\\"'`:;,<>/!@|#$%^&()-+=[]{}";
const char prse_fvstd[] = " \\\"'`~:;,<>/?!@|$%^&*()-+=[]{}";
const char prsefls[] = " \"'`;,<>()=[]{}|";
const char prseclsvar[] = " \\\"'`:;,={}";
const char prseclsvnoc[] = " \\\"'`;,={}";
const char prseeqn[] = " #=[]";

const char prse_op[] = "BCDEFILOSbcdefilos";
const char prse_coding[] = "AGHJPQRUVaghjpqruv";
const char prse_coding2[] = "RWrw";
const char prse_opnum[] = "0123456789";
const char prse_opnlist[] = " ,/-0123456789";
const char prse_opterm[] = " ,#)";

namespace {

// A parse string as a set. The strings above are turned into sets once; a caller's own string
// is turned into one on each call.
struct charset {
    const char *of;
    bool built;
    bool has[256];
};
charset known[] = {{prsestd, false, {}},        {prsenum, false, {}},    {prsevar, false, {}},
                   {prsefls, false, {}},        {prsestdot, false, {}},  {prseopt, false, {}},
                   {prsestdnp, false, {}},      {prsestd2, false, {}},   {prsestdnoangle, false, {}},
                   {prse_fvstd, false, {}},     {prseclsvar, false, {}}, {prseclsvnoc, false, {}},
                   {prseeqn, false, {}}};

void build(charset *s, const char *chars)
{
    memset(s->has, 0, sizeof s->has);
    for (; *chars; chars++)
        s->has[uint8_t(*chars)] = true;
    s->built = true;
}

const bool *set_of(const char *chars)
{
    for (charset &s : known)
        if (s.of == chars) {
            if (!s.built)
                build(&s, chars);
            return s.has;
        }
    static charset own;
    build(&own, chars);
    return own.has;
}

inline bool opens_compound(const char *p) { return p[0] == '`' && p[1] == '"'; }
inline bool closes_compound(const char *p) { return p[0] == '"' && p[1] == '\''; }
inline bool joins(char c) { return c == '<' || c == '=' || c == '>' || c == '!' || c == '~'; }

// A token under construction: the destination and the room left, less the NUL.
struct sink {
    char *at;
    char *last;  // where the NUL would stand in a full buffer
    bool put(char c)
    {
        if (at == last)
            return false;
        *at++ = c;
        return true;
    }
};

// Copies the inside of `"..."', p behind the opener. Returns where the scan goes on.
char *take_compound(char *p, sink *out)
{
    int32_t depth = 1;
    while (*p) {
        if (opens_compound(p) || closes_compound(p)) {
            bool opening = *p == '`';
            if (!opening && depth == 1)
                return p + 2;
            if (out->last - out->at < 2)
                return p;
            depth += opening ? 1 : -1;
            out->put(*p++);
            out->put(*p++);
        } else if (out->put(*p)) {
            p++;
        } else {
            return p;
        }
    }
    return p;
}

char *take_simple(char *p, sink *out)
{
    while (*p && *p != '"') {
        if (!out->put(*p))
            return p;
        p++;
    }
    return *p ? p + 1 : p;
}

// What both forms of the get share: everything but a word.
// Returns true when the token is complete, else p stands at the first character of a word.
bool take_nonword(toktype *ti, char *p, sink *out, const bool *has)
{
    if (!*p) {
        ti->c_ptr = p;
    } else if (opens_compound(p)) {
        out->put('"');
        ti->c_ptr = take_compound(p + 2, out);
    } else if (*p == '"') {
        out->put('"');
        ti->c_ptr = take_simple(p + 1, out);
    } else if (has[uint8_t(*p)]) {
        out->put(*p);
        if (joins(*p) && p[1] == '=')
            out->put(*++p);
        ti->c_ptr = p + 1;
    } else {
        return false;
    }
    *out->at = 0;
    return true;
}

}  // namespace

void ti_settok(toktype *ti, char *text)
{
    ti->c_ptr = text;
    ti->lc_ptr = nullptr;
    ti->ugetflg = ti->ugotflg = 0;
}

char *ti_gettok(toktype *ti, const char *parsechars)
{
    if (ti->ugetflg) {
        ti->ugetflg = 0;
        ti->ugotflg = 1;
        return ti->token;
    }
    ti->ugotflg = 0;
    char *p = ti->c_ptr;
    while (*p == ' ')
        p++;
    ti->lc_ptr = p;
    const bool *has = set_of(parsechars);
    sink out{ti->token, ti->token + tokenlen};
    if (take_nonword(ti, p, &out, has))
        return ti->token;
    while (*p && !has[uint8_t(*p)] && out.put(*p))
        p++;
    *out.at = 0;
    ti->c_ptr = p;
    return ti->token;
}

char *ti_gettoklong(toktype *ti, char *buffer, const char *parsechars, bool bracketed)
{
    if (ti->ugetflg) {
        ti->ugetflg = 0;
        ti->ugotflg = 1;
        memcpy(buffer, ti->token, strlen(ti->token) + 1);
        return buffer;
    }
    ti->ugotflg = 0;
    char *p = ti->c_ptr;
    while (*p == ' ')
        p++;
    ti->lc_ptr = p;
    const bool *has = set_of(parsechars);
    sink out{buffer, buffer + macrolen - 1};
    bool stretch = bracketed && (*p == '(' || *p == '[');
    if (!stretch && take_nonword(ti, p, &out, has))
        return buffer;
    while (*p) {
        char *end = p + 1;
        bool open;
        if (opens_compound(p))
            end = pcompoundquotes(p, &open);
        else if (*p == '"')
            end = psimplequotes(p, &open);
        else if (bracketed && (*p == '(' || *p == '['))
            end = pbrackets(p, &open);
        else if (has[uint8_t(*p)])
            break;
        while (p < end && out.put(*p))
            p++;
        if (p < end)
            break;
    }
    *out.at = 0;
    ti->c_ptr = p;
    return buffer;
}

int32_t ti_gettokfn(toktype *ti, char *buffer)
{
    const char *token = ti_gettok(ti, prsefls);
    const char *text = tok_text(token);
    size_t n = strlen(text);
    *buffer = 0;
    // A name too long is refused whole: cut, it would be the name of another file.
    if (!n || n > size_t(filenamelen) || !strcmp(token, ",") || !strcmp(token, ")"))
        return RC_BADFILENAME;
    memcpy(buffer, text, n + 1);
    return 0;
}

int32_t ti_gtokis(toktype *ti, char ch)
{
    const char *token = ti_gettok(ti, prsestd);
    if (token[0] == ch && !token[1])
        return stopflag;
    return error(RC_SYNTAX);
}

void ti_pushtok(toktype *ti, const char *text)
{
    if (text != ti->token) {
        size_t n = strnlen(text, tokenlen);
        memmove(ti->token, text, n);
        ti->token[n] = 0;
    }
    ti->ugetflg = 1;
}

void ti_ungettok(toktype *ti)
{
    if (ti->ugotflg) {
        ti->ugetflg = 1;
    } else if (ti->lc_ptr) {
        ti->c_ptr = ti->lc_ptr;
        ti->lc_ptr = nullptr;
    }
}

void ti_stattok(const toktype *ti, gettok_state *state)
{
    state->c_ptr = ti->c_ptr;
    state->lc_ptr = ti->lc_ptr;
}

void ti_resettok(toktype *ti, const gettok_state *state)
{
    ti->c_ptr = state->c_ptr;
    ti->lc_ptr = state->lc_ptr;
    ti->ugetflg = ti->ugotflg = 0;
}

char ti_gettok_next_char(toktype *ti) { return *ti->c_ptr ? *ti->c_ptr++ : 0; }

char ti_peektok_chr(const toktype *ti)
{
    const char *p = ti->c_ptr;
    while (*p == ' ')
        p++;
    return *p;
}

void ti_trimtok(toktype *ti, char ch)
{
    while (*ti->c_ptr && *ti->c_ptr == ch)
        ti->c_ptr++;
}

void ti_trimtokwhite(toktype *ti)
{
    while (*ti->c_ptr == ' ' || *ti->c_ptr == '\t')
        ti->c_ptr++;
}

void ti_borrow_gettok(const toktype *ti, toktype *saved) { *saved = *ti; }
void ti_return_gettok(toktype *ti, const toktype *saved) { *ti = *saved; }

void ti_dumptok(const toktype *ti)
{
    spout21f("ti->token: %s\n", ti->token);
    spout21f("ti->c_ptr: %s\n", ti->c_ptr ? ti->c_ptr : "");
    spout21f("ti->lc_ptr: %s\n", ti->lc_ptr ? ti->lc_ptr : "");
    spout21f("ti->ugetflg: %d\n", ti->ugetflg);
    spout21f("ti->ugotflg: %d\n", ti->ugotflg);
}

char *pcompoundquotes(char *p, bool *open)
{
    int32_t depth = 0;
    *open = false;
    while (*p) {
        if (opens_compound(p)) {
            depth++;
            p += 2;
        } else if (closes_compound(p)) {
            p += 2;
            if (--depth <= 0)
                return p;
        } else {
            p++;
        }
    }
    *open = true;
    return p;
}

char *psimplequotes(char *p, bool *open)
{
    *open = false;
    if (*p)
        p++;
    while (*p && *p != '"')
        p++;
    if (*p)
        return p + 1;
    *open = true;
    return p;
}

char *pbrackets(char *p, bool *open)
{
    int32_t depth = 0;
    *open = false;
    while (*p) {
        if (opens_compound(p) || *p == '"') {
            p = *p == '"' ? psimplequotes(p, open) : pcompoundquotes(p, open);
            if (*open)
                return p;
            continue;
        }
        char c = *p++;
        if (c == '(' || c == '[')
            depth++;
        else if ((c == ')' || c == ']') && --depth <= 0)
            return p;
    }
    *open = true;
    return p;
}

char *pfindoutside(char *p, char ch)
{
    bool open;
    while (*p && *p != ch) {
        if (*p == '"')
            p = psimplequotes(p, &open);
        else if (*p == '`' && p[1] == '"')
            p = pcompoundquotes(p, &open);
        else if (*p == '(' || *p == '[')
            p = pbrackets(p, &open);
        else
            p++;
    }
    return p;
}

int32_t ti_parse_quoted_string(toktype *ti, char *text, char **start, char **end, char **next)
{
    *start = *end = *next = nullptr;
    char *p = text ? text : ti->lc_ptr ? ti->lc_ptr : ti->c_ptr;
    while (*p == ' ')
        p++;
    bool compound = opens_compound(p), open;
    if (!compound && *p != '"')
        return 1;
    char *behind = compound ? pcompoundquotes(p, &open) : psimplequotes(p, &open);
    if (open)
        return 1;
    int32_t mark = compound ? 2 : 1;
    *start = p + mark;
    *end = behind - mark;
    *next = behind;
    if (!text) {
        ti->c_ptr = behind;
        ti->ugetflg = ti->ugotflg = 0;
    }
    return 0;
}
