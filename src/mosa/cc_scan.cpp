// Text to tokens. One token is at hand; lookahead saves the place, reads and comes back.
// A comment that runs over lines draws the next line in behind what was read already, so that
// saved places stay good.
#include "core/mem.h"
#include "core/missing.h"
#include "core/numtext.h"
#include "core/text.h"
#include "mosa/cc_int.h"
#include "output/print.h"
#include <cstdarg>
#include <cstdio>
#include <cstring>

char m_src[8704];
int32_t m_srcpos;
bool m_mayreadcons;
bool (*m_getline)();
int32_t cc_lineno;

int32_t m_tok = T_EOL;
double m_toknum;
char m_toktext[8704];
int32_t m_toklen, m_tokpos;
bool m_thisisword;

void m_setline(const char *line)
{
    strcut(m_src, sizeof m_src, line);
    m_srcpos = 0;
}

void cc_err(const char *fmt, ...)
{
    char text[1024];
    va_list ap;
    va_start(ap, fmt);
    vsnprintf(text, sizeof text, fmt, ap);
    va_end(ap);
    spout21at(3, text);
    throw cc_abort{};
}

void breakout()
{
    if (fault_poll())
        cc_err("--Break--\n");
}

static bool is_alpha(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

static bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}

static bool is_alnum(char c)
{
    return is_alpha(c) || is_digit(c);
}

static bool is_blank(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

// ---- lines

bool m_nlokay()
{
    breakout();
    if (!m_mayreadcons || !m_getline)
        return false;
    m_srcpos = 0;
    if (!m_getline()) {
        breakout();
        m_src[0] = 0;
        m_tok = T_EOL;
        m_toktext[0] = 0;
        m_toklen = 0;
        return false;
    }
    m_srcpos = 0;
    m_tok = T_EOL; // a dot that comes first is a number
    m_gettok();
    return true;
}

void m_skiplines()
{
    while (m_tok == T_EOL)
        if (!m_nlokay())
            cc_err("unexpected end of text\n");
}

// The next line drawn in at m_srcpos, in the place of what is left of this one.
static bool draw_line()
{
    static char kept[sizeof m_src];
    int32_t at = m_srcpos;
    memcpy(kept, m_src, size_t(at));
    if (!m_mayreadcons || !m_getline || !m_getline()) {
        breakout();
        m_setline("");
        return false;
    }
    size_t n = strlen(m_src);
    if (size_t(at) + n + 1 > sizeof m_src)
        cc_err("line too long\n");
    memmove(m_src + at, m_src, n + 1);
    memcpy(m_src, kept, size_t(at));
    m_srcpos = at;
    return true;
}

// Passes over a comment that begins at m_srcpos; false at its missing end.
static bool skip_comment()
{
    int32_t begin = m_srcpos;
    m_srcpos += 2;
    for (;;) {
        breakout();
        if (const char *end = strstr(m_src + m_srcpos, "*/")) {
            m_srcpos = int32_t(end - m_src) + 2;
            return true;
        }
        m_srcpos = begin;
        m_src[begin] = ' ';
        if (!draw_line())
            return false;
        begin = m_srcpos;
    }
}

static void skip_blanks()
{
    for (;;) {
        const char *p = m_src + m_srcpos;
        if (is_blank(*p))
            m_srcpos++;
        else if (p[0] == '/' && p[1] == '/') {
            bool on = p[2] == '/';
            if (!on)
                m_srcpos += int32_t(strlen(p));
            if (!on || !draw_line())
                return;
        } else if (p[0] == '/' && p[1] == '*') {
            if (!skip_comment())
                cc_err("unexpected end of text\n");
        } else
            return;
    }
}

bool m_lineended()
{
    const char *p = m_src + m_srcpos;
    for (;;) {
        while (is_blank(*p))
            p++;
        if (!*p || (p[0] == '/' && p[1] == '/' && p[2] != '/'))
            return true;
        const char *end = p[0] == '/' && p[1] == '*' ? strstr(p + 2, "*/") : nullptr;
        if (!end)
            return false;
        p = end + 2;
    }
}

// ---- words, numbers, strings, operators

static const char *const reserved[] = {
#define MW(token, word) word,
#include "mosa/words.def"
#undef MW
};

static void take(int32_t n)
{
    memcpy(m_toktext, m_src + m_srcpos, size_t(n));
    m_toktext[n] = 0;
    m_toklen = n;
    m_srcpos += n;
}

static int32_t get_word()
{
    const char *p = m_src + m_srcpos;
    int32_t n = 0;
    while (is_alnum(p[n]))
        n++;
    take(n);
    for (int32_t i = 0; i < int32_t(sizeof reserved / sizeof reserved[0]); i++)
        if (reserved[i][0] == m_toktext[0] && !strcmp(reserved[i], m_toktext)) {
            int32_t word = K_FIRST + 1 + i;
            return word == K_THIS && !m_thisisword ? int32_t(T_NAME) : word;
        }
    return n > 32 ? T_BAD : T_NAME;
}

static bool is_explet(char c)
{
    return c == 'e' || c == 'E' || c == 'd' || c == 'D' || c == 'x' || c == 'X';
}

static int32_t get_number()
{
    const char *p = m_src + m_srcpos;
    int32_t n = 0;
    while ((is_alnum(p[n]) || (p[n] == '.' && p[n + 1] != '.')) && n < 129)
        n++;
    if (n && is_explet(p[n - 1]) && (p[n] == '+' || p[n] == '-') && is_alnum(p[n + 1])) {
        n++;
        while (is_alnum(p[n]) && n < 129)
            n++;
    }
    take(n);
    bool isnum = is_digit(m_toktext[0]) || (m_toktext[0] == '.' && is_digit(m_toktext[1]));
    bool imag = isnum && m_toktext[n - 1] == 'i';
    if (n >= 129 || cnvstozn(m_toktext, imag ? n - 1 : n, &m_toknum))
        return T_BAD;
    return imag ? T_IMAG : T_NUM;
}

static int32_t get_string()
{
    const char *p = m_src + m_srcpos;
    const char *text, *end;
    if (*p == '"') {
        text = p + 1;
        end = strchr(text, '"');
        if (!end)
            cc_err("mismatched quotes\n");
        m_srcpos = int32_t(end - m_src) + 1;
    } else {
        int32_t depth = 1;
        text = end = p + 2;
        for (;; end++) {
            if (!*end)
                cc_err("mismatched quotes\n");
            if (end[0] == '`' && end[1] == '"') {
                depth++;
                end++;
            } else if (end[0] == '"' && end[1] == '\'') {
                if (--depth == 0)
                    break;
                end++;
            }
        }
        m_srcpos = int32_t(end - m_src) + 2;
    }
    m_toklen = int32_t(end - text);
    memcpy(m_toktext, text, size_t(m_toklen));
    m_toktext[m_toklen] = 0;
    return T_STR;
}

struct opword {
    const char *text;
    int32_t tok;
};
// Longer spellings first.
static const opword opwords[] = {
    {":==", T_CEQ},   {":!=", T_CNE},       {":~=", T_CNE},    {":>=", T_CGE},  {":<=", T_CLE},
    {"==", T_EQ},     {"!=", T_NE},         {"~=", T_NE},      {"<=", T_LE},    {">=", T_GE},
    {"++", T_INC},    {"--", T_DEC},        {"->", T_ARROW},   {"&&", '&'},     {"||", '|'},
    {":>", T_CGT},    {":<", T_CLT},        {":!", T_CNOT},    {":~", T_CNOT},  {":/", T_CDIV},
    {":*", T_CMUL},   {":+", T_CADD},       {":-", T_CSUB},    {":|", T_COR},   {":&", T_CAND},
    {":^", T_CPOW},   {":=", T_COLONSET},   {"::", T_COLTO},   {"..", T_ROWTO}, {"[|", T_LRANGE},
    {"|]", T_RRANGE}, {"*/", T_ENDCOMMENT}, {"/*", T_COMMENT},
};

const char *cc_tokword(int32_t t)
{
    static char ones[256][2]; // texts are kept by those who asked
    if (cc_isword(t))
        return reserved[t - K_FIRST - 1];
    for (const opword &w : opwords)
        if (w.tok == t && t > 127)
            return w.text;
    switch (t) {
    case T_EOL: return "nothing";
    case T_NUM: return "number";
    case T_NAME: return "name";
    case T_STR: return "string";
    case T_ANY: return "something else";
    case T_MEMBER: return ".";
    default: break;
    }
    char *one = ones[t & 255];
    one[0] = char(t);
    return one;
}

static int32_t get_operator()
{
    const char *p = m_src + m_srcpos;
    for (const opword &w : opwords)
        if (!strncmp(p, w.text, strlen(w.text))) {
            // "||]" ends a range behind an "|", and "[||]" is empty: the bracket goes first.
            if (w.tok == '|' && p[2] == ']')
                continue;
            take(int32_t(strlen(w.text)));
            return w.tok;
        }
    take(1);
    auto c = static_cast<unsigned char>(m_toktext[0]);
    return c < 32 || c > 126 ? int32_t(T_BAD) : c;
}

static bool dot_is_member(int32_t prev)
{
    return prev == T_NAME || prev == ')' || prev == ']' || prev == T_RRANGE || prev == K_SUPER ||
           prev == K_THIS;
}

int32_t m_gettok()
{
    int32_t prev = m_tok;
    skip_blanks();
    m_tokpos = m_srcpos;
    const char *p = m_src + m_srcpos;
    if (!*p) {
        m_toktext[0] = 0;
        m_toklen = 0;
        return m_tok = T_EOL;
    }
    if (is_alpha(*p))
        return m_tok = get_word();
    if (*p == '"' || (p[0] == '`' && p[1] == '"'))
        return m_tok = get_string();
    if (*p == '.' && p[1] != '.' && dot_is_member(prev)) {
        take(1);
        return m_tok = T_MEMBER;
    }
    if (is_digit(*p) || (*p == '.' && p[1] != '.'))
        return m_tok = get_number();
    return m_tok = get_operator();
}

// The token at hand is read again when the place is gone back to.
void m_gettoksave(m_tokstate *s)
{
    s->pos = m_tokpos;
    s->prev = m_tok == T_MEMBER ? T_NAME : T_EOL;
}

void m_gettokrestore(const m_tokstate *s)
{
    m_srcpos = s->pos;
    m_tok = s->prev;
    m_gettok();
}

int32_t m_nexttok()
{
    m_tokstate s;
    m_gettoksave(&s);
    int32_t next = m_gettok();
    m_gettokrestore(&s);
    return next;
}

int32_t m_nextnexttok()
{
    m_tokstate s;
    m_gettoksave(&s);
    int32_t next = m_gettok();
    if (next != T_EOL)
        next = m_gettok();
    m_gettokrestore(&s);
    return next;
}

// ---- checks

void m_nottokentext(const char *wanted)
{
    const char *found = m_tok == T_EOL ? cc_tokword(T_EOL) : m_toktext;
    cc_err("'%.200s' found where %s expected\n", found, wanted);
}

void m_nottoken(int32_t wanted)
{
    char text[40];
    bool plain = wanted == T_EOL || (wanted >= T_NUM && wanted <= T_STR) || wanted == T_ANY;
    snprintf(text, sizeof text, plain ? "%s" : "'%s'", cc_tokword(wanted));
    m_nottokentext(text);
}

void m_match(int32_t t)
{
    if (m_tok != t)
        m_nottoken(t);
    m_gettok();
}

bool m_tokenis(int32_t t)
{
    if (m_tok != t)
        return false;
    m_gettok();
    return true;
}

bool m_nameis(const char *word)
{
    return m_tok == T_NAME && !strcmp(m_toktext, word);
}
