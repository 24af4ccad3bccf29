// Expressions read whole into a token list, checked for their brackets, handed to the
// splitter, and ended with the increments that were put off.
#include "core/missing.h"
#include "mosa/cc_int.h"
#include <cstring>

char *cc_savetext(const char *text, int32_t len)
{
    auto need = size_t(len) + 1;
    if (need > m_cc->arenaleft) {
        m_cc->arenaleft = need > 16000 ? need : 16000;
        m_cc->arena = static_cast<char *>(cc_alloc(m_cc->arenaleft));
    }
    char *copy = m_cc->arena;
    memcpy(copy, text, size_t(len));
    copy[len] = 0;
    m_cc->arena += need;
    m_cc->arenaleft -= need;
    return copy;
}

static cc_tk *append(int32_t tok, const char *text, int32_t len)
{
    cc_list &list = m_cc->list;
    if (list.n >= cc_maxlist)
        cc_err("expression too long\n");
    cc_tk *t = &list.t[list.n++];
    t->tok = tok;
    t->match = -1;
    t->len = len;
    t->text = text;
    return t;
}

static void append_missing()
{
    append(T_NUM, ".", 1)->num = misval;
}

static void append_current()
{
    bool number = m_tok == T_NUM || m_tok == T_IMAG;
    bool own = m_tok == T_NAME || m_tok == T_STR || m_tok == T_BAD || cc_isword(m_tok);
    const char *text = number ? cc_savetext(m_toktext, int32_t(strlen(m_toktext)))
                       : own  ? cc_savetext(m_toktext, m_toklen)
                              : cc_tokword(m_tok);
    append(m_tok, text, m_toklen)->num = number ? m_toknum : 0;
}

// Tokens after which an expression cannot end.
static bool needs_more(int32_t t)
{
    switch (t) {
    case T_EQ:
    case T_NE:
    case T_LE:
    case T_GE:
    case T_CEQ:
    case T_CGT:
    case T_CGE:
    case T_CLT:
    case T_CLE:
    case T_CNE:
    case T_CDIV:
    case T_CMUL:
    case T_CADD:
    case T_CSUB:
    case T_COR:
    case T_CAND:
    case T_CPOW:
    case T_ROWTO:
    case T_COLTO:
    case T_MEMBER:
    case T_ARROW:
    case '<':
    case '>':
    case '+':
    case '-':
    case '*':
    case '/':
    case '#':
    case '^':
    case '|':
    case '&':
    case '\\':
    case ',':
    case '=':
    case '?':
    case ':':
    case '!': return true;
    default: return false;
    }
}

static bool is_opener(int32_t t)
{
    return t == '(' || t == '[' || t == T_LRANGE;
}

static bool is_closer(int32_t t)
{
    return t == ')' || t == ']' || t == T_RRANGE;
}

// Reserved words that have a place in an expression: values, members, and the types of casts.
static bool word_allowed(int32_t prev)
{
    switch (m_tok) {
    case K_NULL:
    case K_THIS:
    case K_SUPER:
    case K_BIGVOID:
    case K_REALVOID:
    case K_COMPLEXVOID:
    case K_STRINGVOID:
    case K_POINTERVOID: return true;
    case K_NEW: return prev == T_MEMBER || prev == T_ARROW;
    case K_FUNCTION: return prev == '(' || cc_istypeword(prev);
    default: break;
    }
    if (!cc_istypeword(m_tok))
        return false;
    return prev == '(' || cc_istypeword(prev) || prev == T_NAME || prev == ')';
}

// True when the token at hand ends the list.
static bool at_end(int32_t terminator, int32_t depth)
{
    if (m_tok == '{' || m_tok == '}' || m_tok == ';')
        return true;
    return depth == 0 && m_tok == terminator;
}

// Inserted where something was left out: a' b is a' * b, x[,j] and x[i,] take all.
static void insert_missing_parts(int32_t prev)
{
    if (prev == '\'' && (m_tok == T_NAME || m_tok == '(' || m_tok == K_THIS || m_tok == K_SUPER))
        append('*', "*", 1);
    else if ((prev == '[' && m_tok == ',') || (prev == ',' && m_tok == ']'))
        append_missing();
}

static void read_list(int32_t terminator)
{
    cc_list &list = m_cc->list;
    int32_t depth = 0, prev = T_EOL;
    for (;;) {
        breakout();
        if (m_tok == T_EOL) {
            bool more = depth > 0 || terminator != T_EOL || (list.n && needs_more(prev));
            if (!more || !m_nlokay())
                return;
            continue;
        }
        if (at_end(terminator, depth))
            return;
        if (cc_isword(m_tok) && !word_allowed(prev))
            m_nottoken(T_ANY);
        if (m_tok == T_BAD || m_tok == T_COLONSET || m_tok == T_CNOT || m_tok == '~' ||
            m_tok == T_ENDCOMMENT)
            m_nottoken(T_ANY);
        insert_missing_parts(prev);
        depth += is_opener(m_tok) - is_closer(m_tok);
        append_current();
        prev = m_tok;
        m_gettok();
    }
}

static int32_t closer_of(int32_t opener)
{
    return opener == '(' ? ')' : opener == '[' ? ']' : int32_t(T_RRANGE);
}

// Pairs the brackets of the list.
static void check_nesting()
{
    cc_list &list = m_cc->list;
    int32_t open[499], n = 0;
    for (int32_t i = 0; i < list.n; i++) {
        cc_tk &t = list.t[i];
        if (is_opener(t.tok)) {
            if (n >= 499)
                cc_err("expression too long\n");
            open[n++] = i;
        }
        if (!is_closer(t.tok))
            continue;
        if (n == 0)
            cc_err("too many '%s'\n", t.text);
        int32_t wanted = closer_of(list.t[open[--n]].tok);
        if (wanted != t.tok) {
            char found[4];
            strcpy(found, t.tok == T_RRANGE ? "|]" : t.tok == ')' ? ")" : "]");
            cc_err("%s found where %s expected\n", found, cc_tokword(wanted));
        }
        t.match = open[n];
        list.t[open[n]].match = i;
    }
    if (n)
        cc_err("too many '(', '[', or '['\n");
}

// A variable of a class is put up by a value and a store.
static void increment_member(int32_t at, int32_t dir)
{
    cx(at, at + 1, false);
    mop_add(80);
    mop_add(dir > 0 ? 32 : 36);
    cx_store(at, at + 1);
    ts_pop();
    mop_add(2);
}

static void postponed()
{
    cc_list &list = m_cc->list;
    for (int32_t i = 0; i < list.ninc; i++) {
        if (list.inc[i].slot >= 0)
            mop_add(list.inc[i].dir > 0 ? 8 : 9, list.inc[i].slot);
        else
            increment_member(list.inc[i].at, list.inc[i].dir);
    }
}

// What the list begins with "(void)" is not for display.
static int32_t skip_void()
{
    const cc_list &list = m_cc->list;
    bool there =
        list.n > 3 && list.t[0].tok == '(' && list.t[1].tok == K_VOID && list.t[2].tok == ')';
    return there ? 3 : 0;
}

// i++ alone leaves a reference to i, which must not move with it where the value is used.
static bool is_bare_increment(int32_t a, int32_t b)
{
    const cc_list &list = m_cc->list;
    while (b - a > 2 && list.t[a].tok == '(' && list.t[a].match == b - 1) {
        a++;
        b--;
    }
    return b - a == 2 && (list.t[b - 1].tok == T_INC || list.t[b - 1].tok == T_DEC);
}

bool cc_expr(int32_t terminator, bool used)
{
    cc_list &list = m_cc->list;
    list.n = list.ninc = 0;
    list.assigned = list.alias = false;
    read_list(terminator);
    check_nesting();
    if (terminator != T_EOL)
        m_match(terminator);
    if (list.n == 0)
        return false;
    int32_t base = m_cc->ntype;
    int32_t begin = skip_void();
    cx(begin, list.n, terminator == ')');
    if (m_cc->ntype != base + 1)
        cc_err("expr. stack misaligned, n=%d\n", m_cc->ntype - base);
    bool bare = list.ninc && is_bare_increment(begin, list.n);
    if (list.ninc && !list.assigned && (bare || list.alias) && used) {
        mop_add(79); // a value of its own
        mop_add(32);
    }
    bool assigned = list.assigned || bare || begin > 0;
    postponed();
    list.assigned = assigned;
    return true;
}
