// Statements. On entry the first token is at hand, on exit the one behind the statement.
#include "core/settings.h"
#include "core/text.h"
#include "mosa/cc_int.h"
#include "mosa/vm.h"
#include <cmath>
#include <cstring>

void cc_stmtend()
{
    if (m_tok == T_EOL || m_tok == '}')
        return;
    if (!m_tokenis(';'))
        m_nottoken(T_EOL);
}

// ---- declarations

void cc_declare(int32_t cls)
{
    if (!cc_istypeword(m_tok) && m_tok != T_NAME)
        m_nottoken(T_NAME);
    int32_t type = cc_istypeword(m_tok) ? match_type(false) : ty(MT_TRANSMORPHIC, OT_MATRIX);
    for (;;) {
        if (m_tok != T_NAME)
            m_nottoken(T_NAME);
        st_add(m_toktext, cls, SK_VAR, type);
        m_gettok();
        if (!m_tokenis(','))
            break;
        m_skiplines();
    }
    cc_stmtend();
}

// ---- loops

struct loop_tags {
    int32_t breaktag = m_cc->breaktag, conttag = m_cc->conttag;
    loop_tags()
    {
        m_cc->breaktag = fu_crtag();
        m_cc->conttag = fu_crtag();
    }
    ~loop_tags()
    {
        m_cc->breaktag = breaktag;
        m_cc->conttag = conttag;
    }
    loop_tags(const loop_tags &) = delete;
    loop_tags &operator=(const loop_tags &) = delete;
};

static void body()
{
    m_skiplines();
    cc_stmt();
}

static void condition(const char *what)
{
    m_skiplines();
    m_match('(');
    if (!cc_expr(')', true))
        cc_err("nothing found where subexp expected\n");
    if (ty_of(ts_top()).eltype != MT_POINTER)
        cc_needs(MT_NUMERIC, what);
    ts_pop();
}

static void if_stmt()
{
    condition("if");
    int32_t toelse = mop_add_paddr(28);
    body();
    if (m_pgm.depth > 0 && m_tok == T_EOL)
        m_skiplines();
    if (!m_tokenis(K_ELSE)) {
        mop_fix_paddr(toelse);
        return;
    }
    int32_t toend = mop_add_paddr(1);
    mop_fix_paddr(toelse);
    body();
    mop_fix_paddr(toend);
}

static void discard(bool there)
{
    if (!there)
        return;
    ts_pop();
    mop_add(2);
}

static void for_stmt()
{
    loop_tags outer;
    m_match('(');
    discard(cc_expr(';', false));
    int32_t loop = m_pgm.pc;
    if (!cc_expr(';', true))
        cc_err("nothing found where subexp expected\n");
    if (ty_of(ts_top()).eltype != MT_POINTER)
        cc_needs(MT_NUMERIC, "for");
    ts_pop();
    mop_add(28, 0);
    fu_reftag(m_pgm.pc - 1, m_cc->breaktag);
    int32_t tobody = mop_add_paddr(1);
    fu_settagadr(m_cc->conttag);
    int32_t step = m_pgm.pc;
    discard(cc_expr(')', false));
    mop_add_saddr(1, loop);
    mop_fix_paddr(tobody);
    body();
    mop_add_saddr(1, step);
    fu_settagadr(m_cc->breaktag);
}

static void while_stmt()
{
    loop_tags outer;
    fu_settagadr(m_cc->conttag);
    int32_t loop = m_pgm.pc;
    condition("while");
    mop_add(28, 0);
    fu_reftag(m_pgm.pc - 1, m_cc->breaktag);
    body();
    mop_add_saddr(1, loop);
    fu_settagadr(m_cc->breaktag);
}

static void do_stmt()
{
    loop_tags outer;
    int32_t loop = m_pgm.pc;
    body();
    m_skiplines();
    m_match(K_WHILE);
    fu_settagadr(m_cc->conttag);
    condition("while");
    mop_add(28, 0);
    fu_reftag(m_pgm.pc - 1, m_cc->breaktag);
    mop_add_saddr(1, loop);
    fu_settagadr(m_cc->breaktag);
    cc_stmtend();
}

static void leave_loop(int32_t tag)
{
    if (tag < 0)
        cc_err("misplaced break or continue\n");
    mop_add_jump(tag);
    cc_stmtend();
}

// ---- the others

static void block()
{
    m_pgm.depth++;
    for (;;) {
        m_skiplines();
        if (m_tok == '}')
            break;
        cc_stmt();
    }
    m_pgm.depth--;
    m_gettok();
}

static void goto_stmt()
{
    if (m_tok != T_NAME)
        m_nottoken(T_NAME);
    mop_add_jump(fu_find_or_cr_tag(m_toktext));
    m_gettok();
    cc_stmtend();
}

// return() is return.
static void skip_empty_parens()
{
    if (m_tok != '(' || m_nexttok() != ')')
        return;
    int32_t behind = m_nextnexttok();
    if (behind != T_EOL && behind != ';' && behind != '}')
        return;
    m_gettok();
    m_gettok();
}

static void return_stmt()
{
    skip_empty_parens();
    if (cc_expr(T_EOL, true)) {
        int32_t type = ts_pop();
        if (m_pgm.isfunc)
            cc_settle(type, m_pgm.result, "return", false);
    } else
        mop_add(42);
    if (m_pgm.exittag < 0)
        m_pgm.exittag = fu_crtag();
    mop_add_jump(m_pgm.exittag);
    cc_stmtend();
}

static void version_stmt()
{
    double n = m_tok == T_NUM ? std::floor(m_toknum * 100 + .5) : 0;
    if (n < 890 || n > 1210)
        cc_err("version number invalid\n");
    mop_add(121, int32_t(n));
    m_gettok();
    cc_stmtend();
}

static void pragma_stmt()
{
    bool unused = m_nameis("unused");
    if (!unused && !m_nameis("unset"))
        cc_err("invalid pragma\n");
    m_gettok();
    if (m_tok != T_NAME)
        m_nottoken(T_NAME);
    int32_t s = st_find(m_toktext, SK_VAR | SK_FCN);
    if (s < 0)
        cc_err("%s not found\n", m_toktext);
    if (unused)
        m_cc->sym[s].read = true;
    else
        st_mark(s, ST_SET);
    m_gettok();
    cc_stmtend();
}

static void expression_stmt()
{
    if (!cc_expr(T_EOL, false)) {
        if (m_tok == '}' || m_tok == ';' || m_tok == T_EOL)
            cc_err("nothing found where subexp expected\n");
        m_nottoken(T_ANY);
    }
    if (!m_cc->list.assigned)
        mop_add(41);
    ts_pop();
    mop_add(2);
    cc_stmtend();
}

// A declaration; true when there was one.
static bool declaration()
{
    if (m_tok != K_EXTERNAL && !cc_istypeword(m_tok))
        return false;
    if (!m_pgm.indecl)
        m_nottoken(T_ANY);
    bool external = m_tokenis(K_EXTERNAL);
    cc_declare(external ? SC_EXTERNAL : SC_LOCAL);
    return true;
}

static bool keyword_stmt()
{
    switch (m_tok) {
    case K_IF:
        m_gettok();
        if_stmt();
        return true;
    case K_FOR:
        m_gettok();
        for_stmt();
        return true;
    case K_WHILE:
        m_gettok();
        while_stmt();
        return true;
    case K_DO:
        m_gettok();
        do_stmt();
        return true;
    case K_BREAK:
        m_gettok();
        leave_loop(m_cc->breaktag);
        return true;
    case K_CONTINUE:
        m_gettok();
        leave_loop(m_cc->conttag);
        return true;
    case K_GOTO:
        m_gettok();
        goto_stmt();
        return true;
    case K_RETURN:
        m_gettok();
        return_stmt();
        return true;
    default: return false;
    }
}

void cc_stmt()
{
    breakout();
    if (m_nativefull())
        cc_err("program too long\n");
    if (m_tok == '{') {
        m_gettok();
        block();
        return;
    }
    if (m_tokenis(';'))
        return;
    if (m_tok == K_PRAGMA || m_tok == K_VERSION) { // these may stand among declarations
        bool pragma = m_tok == K_PRAGMA;
        m_gettok();
        pragma ? pragma_stmt() : version_stmt();
        return;
    }
    if (declaration())
        return;
    m_pgm.indecl = false;
    if (set_mosalnum && cc_lineno > 0)
        mop_add(89, cc_lineno);
    if (m_tok == T_NAME && m_nexttok() == ':') {
        fu_settagadr(fu_find_or_cr_tag(m_toktext));
        m_gettok();
        m_gettok();
        return;
    }
    if (!keyword_stmt())
        expression_stmt();
}
