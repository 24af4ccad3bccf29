// Blocks, conditions and loops. They work on the lines of the running program: a loop goes
// back by setting the next line. At the prompt and in do-files a loop is lifted into a
// temporary program first.
#include "core/mem.h"
#include "core/missing.h"
#include "core/numtext.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/variables.h"
#include "expr/expr.h"
#include "expr/parse.h"
#include "expr/varlist.h"
#include "interp/dm.h"
#include "interp/interp.h"
#include "interp/macros.h"
#include "interp/messages.h"
#include "interp/programs.h"
#include "output/print.h"
#include <cstdio>
#include <cstring>
#include <string>

// ---- text

static const char *skipblanks(const char *p)
{
    while (*p == ' ')
        p++;
    return p;
}

char *bracefind(char *text)
{
    bool simple = false;
    int32_t compound = 0, depth = 0;
    for (char *p = text; *p; p++) {
        if (!simple && p[0] == '`' && p[1] == '"') {
            compound++;
            p++;
        } else if (compound && p[0] == '"' && p[1] == '\'') {
            compound--;
            p++;
        } else if (compound)
            continue;
        else if (*p == '"')
            simple = !simple;
        else if (simple)
            continue;
        else if (*p == '(' || *p == '[')
            depth++;
        else if (*p == ')' || *p == ']')
            depth--;
        else if (*p == '{' && depth <= 0)
            return p;
    }
    return nullptr;
}

// The { that ends the line, or before version 8 the first that opens a block; or null.
static char *blockbrace(char *text)
{
    size_t n = strlen(text);
    while (n && text[n - 1] == ' ')
        n--;
    if (n && text[n - 1] == '{')
        return text + n - 1;
    return vernum < 800 ? bracefind(text) : nullptr;
}

// ---- blocks

static int32_t strayafter(const char *which)
{
    return errout(RC_SYNTAX, "program error:  code follows on the same line as %s brace\n", which);
}

// After each line of a block: a failure leaves the rest dead and its code stands.
static void took(int32_t *rc)
{
    if (globalrc && !*rc) {
        *rc = globalrc;
        procflg = false;
    }
}

static void notebreak(int32_t *rc)
{
    if (!stopflag)
        return;
    stopflag = 0;
    procflg = false;
    *rc = RC_BREAK;
}

// The program that runs was dropped by its own line: it ends quietly.
static bool programgone() { return runprog && !sys_pgmloc; }

// The lines up to the } that stands at the start of one.
static int32_t run_block()
{
    bool live = procflg, elsewas = syselseflg;
    uint8_t detail = breakdetail;
    int32_t rc = 0;
    for (;;) {
        notebreak(&rc);
        if (getreq(true, false)) {
            notebreak(&rc);
            if (programgone())
                exitflg = true;
            else
                rc = rc ? rc : nomatchbrace();
            break;
        }
        const char *p = skipblanks(console);
        if (*p == '}') {
            if (*skipblanks(p + 1) && !rc)
                rc = strayafter("close");
            break;
        }
        if (!*p)
            continue;
        if (!doreq()) {
            exitflg = true;
            break;
        }
        took(&rc);
    }
    procflg = live && breakdetail == detail;
    syselseflg = elsewas;
    return rc;
}

// The } that closes the block a text is in, or null.
static char *unmatched(char *text)
{
    bool quoted = false;
    int32_t depth = 0;
    for (char *p = text; *p; p++) {
        if (*p == '"')
            quoted = !quoted;
        else if (quoted)
            continue;
        else if (*p == '{')
            depth++;
        else if (*p == '}' && --depth < 0)
            return p;
    }
    return nullptr;
}

static bool run_text(const char *text)
{
    if (text != console)
        memmove(console, text, strlen(text) + 1);
    if (!*skipblanks(console)) {
        globalrc = 0;
        return true;
    }
    ti_settok(tokinfo, console);
    return doreq();
}

// The block form of the first versions: code may share its lines with the braces. first is
// what follows the open brace.
static int32_t run_oldblock(std::string first)
{
    bool live = procflg, elsewas = syselseflg, closed = false;
    uint8_t detail = breakdetail;
    int32_t rc = 0;
    std::string behind;
    snprintf(console, conslen, "%s", first.c_str());
    for (;;) {
        notebreak(&rc);
        if (char *close = unmatched(console)) {
            behind = close + 1;
            *close = 0;
            closed = true;
        }
        if (!run_text(console)) {
            exitflg = true;
            break;
        }
        took(&rc);
        if (closed)
            break;
        if (getreq(true, false)) {
            if (programgone())
                exitflg = true;
            else
                rc = rc ? rc : nomatchbrace();
            break;
        }
    }
    procflg = live && breakdetail == detail;
    syselseflg = elsewas;
    if (closed && !exitflg && *skipblanks(behind.c_str())) {
        if (!run_text(behind.c_str()))
            exitflg = true;
        took(&rc);
        procflg = live && breakdetail == detail;
    }
    return rc;
}

int32_t opbrace()
{
    const char *rest = skipblanks(ti_wheretok(tokinfo));
    if (vernum < 800)
        return run_oldblock(rest);
    if (*rest) {
        // A block may open and close in one line; when it stays open its lines are dead.
        std::string text(rest);
        bool live = procflg, closed = unmatched(text.data());
        int32_t rc = live ? strayafter("open") : 0;
        procflg = false;
        int32_t rc2 = closed ? 0 : run_block();
        procflg = live;
        return rc ? rc : rc2;
    }
    return run_block();
}

// A head in dead code: only its block counts.
static int32_t dead_head()
{
    char *brace = blockbrace(ti_wheretok(tokinfo));
    if (!brace)
        return 0;
    ti_settok(tokinfo, brace + 1);
    return opbrace();
}

// A head that failed: its block must not run as if it stood alone.
static int32_t fail_head(char *text, int32_t rc)
{
    char *brace = blockbrace(text);
    if (!brace || !rc)
        return rc;
    bool live = procflg;
    ti_settok(tokinfo, brace + 1);
    procflg = false;
    int32_t ignored = opbrace();
    procflg = live;
    return ignored == RC_BREAK ? ignored : rc;
}

// Takes the { that must come next, here or at the start of the next line.
static int32_t take_brace()
{
    char c = ti_peektok_chr(tokinfo);
    if (!c) {
        if (getreq(true, false))
            return nomatchbrace();
        if (*skipblanks(console) != '{' || !bracefind(console))
            return required("{");
        ti_settok(tokinfo, console);
        c = '{';
    }
    if (c != '{')
        return required("{");
    ti_gettok(tokinfo, prsestd);
    return 0;
}

// ---- if, else, while

// A condition from the tokens, at the first observation. Missing is true.
static int32_t condition(bool *yes)
{
    static xeqpgm pgm;
    nobss1 = 1;
    nobss2 = _Nobs;
    parinfo->pi_obs1 = 1;
    parinfo->pi_obs2 = _Nobs;
    initialize_compexp_shared();
    int32_t rc = ti_compexp(tokinfo, &pgm, W_NUM, false, false, nullptr, 0);
    if (rc)
        return rc;
    *yes = pi_xeq(parinfo, &pgm, 1) != 0;
    return 0;
}

static int32_t if_command(bool yes)
{
    gettok_state at;
    ti_stattok(tokinfo, &at);
    const char *tok = ti_gettok(tokinfo, prsestd);
    bool nested = !strcmp(tok, "if");
    if (cmdcmp(tok, "else", 4))
        return errout(RC_SYNTAX, "if may not be immediately followed by else\n");
    syselseflg = yes;
    if (!yes)
        return 0;
    ti_resettok(tokinfo, &at);
    mac_expanded = false;
    int32_t rc = run_next();
    if (!nested)
        syselseflg = yes;
    return rc;
}

static int32_t if_block(bool yes)
{
    uint8_t detail = breakdetail;
    bool live = procflg;
    int32_t rc = take_brace();
    if (rc)
        return rc;
    procflg = live && yes;
    syselseflg = yes;
    rc = opbrace();
    procflg = live && breakdetail == detail;
    return rc;
}

static int32_t lift(const char *word);

static int32_t whilecmd()
{
    if (!runprog)
        return lift("while");
    int32_t head = sys_upline - 1;
    bool yes, allowed = breakallowed;
    uint8_t detail = breakdetail;
    char *text = ti_wheretok(tokinfo);
    int32_t rc = condition(&yes);
    if (rc || (rc = take_brace()))
        return fail_head(text, rc);
    procflg = yes;
    breakallowed = true;
    breakdetail = 0;
    rc = opbrace();
    bool again = yes && !rc && breakdetail != 2 && !exitflg;
    procflg = true;
    breakallowed = allowed;
    breakdetail = detail;
    if (again)
        sys_upline = head;
    return rc;
}

int32_t ifcmd(int32_t isloop)
{
    if (!procflg)
        return dead_head();
    if (isloop)
        return whilecmd();
    bool yes = false;
    char *text = ti_wheretok(tokinfo);
    int32_t rc = condition(&yes);
    if (rc)
        return fail_head(text, rc);
    char c = ti_peektok_chr(tokinfo);
    return c && c != '{' ? if_command(yes) : if_block(yes);
}

int32_t elsecmd(int32_t)
{
    bool live = procflg;
    uint8_t detail = breakdetail;
    int32_t rc = 0;
    if (syselseflg)
        procflg = false;
    if (!ti_peektok_chr(tokinfo) && live) {
        rc = take_brace();
        if (!rc)
            rc = opbrace();
    } else {
        mac_expanded = false;
        rc = run_next();
    }
    if (breakdetail == detail)
        procflg = live;
    return rc;
}

int32_t continuecmd(int32_t)
{
    if (!breakallowed)
        return error(RC_CONTEXT);
    uint8_t detail = 1;
    const char *tok = ti_gettok(tokinfo, prsestd);
    if (*tok == ',') {
        tok = ti_gettok(tokinfo, prsestd);
        if (cmdcmp(tok, "break", 2)) {
            detail = 2;
            tok = ti_gettok(tokinfo, prsestd);
        }
    }
    if (*tok)
        return notalow(tok_text(tok));
    breakdetail = detail;
    procflg = false;
    return 0;
}

// ---- loops outside programs

static int32_t run_temporary(const char *name)
{
    char pgmname[33], pgmclass[33];
    int32_t upline = sys_upline, rc = 0;
    bool is_cls = sys_is_cls, allowed = breakallowed;
    uint8_t detail = breakdetail;
    memcpy(pgmname, sys_pgmname, sizeof pgmname);
    memcpy(pgmclass, sys_pgmclass, sizeof pgmclass);
    snprintf(sys_pgmname, sizeof sys_pgmname, "%s", name);
    sys_pgmloc = nullptr;
    sys_upline = 0;
    sys_is_cls = false;
    runprog = true;
    bool leave = false;
    while (!leave && !rc && !getreq(true, false)) {
        leave = !doreq();
        rc = globalrc;
        if (stopflag && !rc)
            rc = RC_BREAK;
    }
    exitflg = leave;
    runprog = false;
    memcpy(sys_pgmname, pgmname, sizeof pgmname);
    memcpy(sys_pgmclass, pgmclass, sizeof pgmclass);
    sys_pgmloc = nullptr;
    sys_upline = upline;
    sys_is_cls = is_cls;
    breakallowed = allowed;
    breakdetail = detail;
    return rc;
}

static int32_t lift(const char *word)
{
    static int32_t busy;
    if (mac_expanded) {
        outlev_keep level(3);
        spout21(word);
        spout21(" command may not result from a macro expansion ");
        spout21("interactively or in do files\n");
        return fail_head(ti_wheretok(tokinfo), RC_SYNTAX);
    }
    char *text = ti_wheretok(tokinfo);
    if (busy >= 1000)
        return fail_head(text, error(RC_SYNTAX));
    if (!blockbrace(text) && !bracefind(text))
        return required("{");
    std::string head = std::string(word) + text;
    char name[33];
    snprintf(name, sizeof name, "%d%s", ++busy, word);
    pgmopts o = {};
    int32_t rc = pgmdefine(name, sys_pgmclass, &o, head.c_str());
    if (!rc) {
        rc = run_temporary(name);
        dmrm(pgmfind(name, sys_pgmclass, PF_PROGRAM));
    }
    busy--;
    return rc;
}

// ---- forvalues and foreach share the pass

namespace {

struct loop {
    char macro[64];       // store name of the loop's macro
    int32_t start;        // the block's first line
    std::string first;    // what follows the brace, before version 8
    bool old, allowed;
    uint8_t detail;
};

int32_t loop_name(loop *l)
{
    const char *tok = ti_gettok(tokinfo, prsestd);
    if (!*tok || *tok == '"')
        return error(RC_SYNTAX);
    snprintf(l->macro, sizeof l->macro, "_%.60s", tok);
    return mac_goodname(l->macro, strlen(l->macro)) ? 0 : invalid(tok);
}

int32_t loop_open(loop *l)
{
    int32_t rc = take_brace();
    if (rc)
        return rc;
    const char *rest = skipblanks(ti_wheretok(tokinfo));
    l->old = vernum < 800;
    if (*rest && !l->old)
        return strayafter("open");
    l->first = rest;
    l->start = sys_upline;
    l->allowed = breakallowed;
    l->detail = breakdetail;
    return 0;
}

int32_t loop_block(loop *l) { return l->old ? run_oldblock(l->first) : run_block(); }

// One pass; *more tells whether another may follow.
int32_t loop_pass(loop *l, bool *more)
{
    sys_upline = l->start;
    breakallowed = true;
    breakdetail = 0;
    procflg = true;
    int32_t rc = loop_block(l);
    *more = !rc && breakdetail != 2 && !exitflg && !programgone();
    return rc;
}

// No pass was made: the block is read so that its end is found.
int32_t loop_skip(loop *l)
{
    procflg = false;
    int32_t rc = loop_block(l);
    procflg = true;
    return rc;
}

void loop_close(loop *l)
{
    macerase(l->macro);
    procflg = true;
    breakallowed = l->allowed;
    breakdetail = l->detail;
}

int32_t number(double *z)
{
    const char *tok = ti_gettok(tokinfo, prsenum);
    if (!*tok || *tok == '"' || cnvstoz(tok, z) || ovismissing(*z))
        return error(RC_SYNTAX);
    return 0;
}

// a(d)b   a/b   a b to c   a b : c
int32_t range(double *a, double *step, double *b)
{
    int32_t rc = number(a);
    if (rc)
        return rc;
    const char *tok = ti_gettok(tokinfo, prsenum);
    if (*tok == '(') {
        if ((rc = number(step)) || (rc = ti_gtokis(tokinfo, ')')))
            return rc;
    } else if (*tok == '/') {
        *step = 1;
    } else {
        double second;
        ti_ungettok(tokinfo);
        if ((rc = number(&second)))
            return rc;
        tok = ti_gettok(tokinfo, prsenum);
        if (strcmp(tok, "to") && strcmp(tok, ":"))
            return error(RC_SYNTAX);
        *step = second - *a;
    }
    if ((rc = number(b)))
        return rc;
    return *step == 0 ? errout(RC_SYNTAX, "forvalues:  increment may not be zero\n") : 0;
}

int32_t forvals_head(loop *l, double *a, double *step, double *b)
{
    int32_t rc = loop_name(l);
    if (rc || (rc = ti_gtokis(tokinfo, '=')) || (rc = range(a, step, b)))
        return rc;
    return 0;
}

int32_t forvals_run(loop *l, double a, double step, double b)
{
    bool more = true, any = false;
    int32_t rc = 0;
    for (double z = a; more && (step > 0 ? z <= b : z >= b); z += step) {
        char text[32];
        mac_numtext(z, text);
        if ((rc = macresave(l->macro, text)))
            break;
        any = true;
        rc = loop_pass(l, &more);
        if (z + step == z)
            break;
    }
    return any || rc ? rc : loop_skip(l);
}

}  // namespace

int32_t forvals(int32_t)
{
    if (!procflg)
        return dead_head();
    if (!runprog)
        return lift("forvalues");
    loop l;
    double a, step, b;
    char *text = ti_wheretok(tokinfo);
    int32_t rc = forvals_head(&l, &a, &step, &b);
    if (!rc && (ti_peektok_chr(tokinfo) != '{' && ti_peektok_chr(tokinfo)))
        rc = error(RC_SYNTAX);
    if (rc || (rc = loop_open(&l)))
        return fail_head(text, rc);
    rc = forvals_run(&l, a, step, b);
    loop_close(&l);
    return rc;
}

// ---- foreach

namespace {

// The foreach loops under way, innermost first. The list is read from its macro at each pass,
// so that a list over a local follows what the body makes of it.
struct fe_state {
    fe_state *outer;
    char list[64];       // store name of the macro
    size_t at;           // how far the list was read
    int32_t level;       // typelmac of the loop
};
fe_state *fe_top;
int32_t fe_depth;
constexpr int32_t fe_max = 9998;

const char *fe_rest(const fe_state *f)
{
    uint64_t n = 0;
    const char *p = macfind(f->list, &n);
    return p && f->at + 1 < n ? p + f->at : "";
}

bool fe_next(fe_state *f, char *item)
{
    const char *p = fe_rest(f);
    const char *next = mac_item(p, item, macrolen, nullptr);
    if (!next)
        return false;
    f->at += size_t(next - p);
    return true;
}

int32_t numbers_of(const char *text, std::string *out)
{
    constexpr int32_t max = 100000;
    auto z = static_cast<double *>(safemalloc(max * sizeof(double)));
    if (!z)
        return error(RC_NOMEM);
    int32_t n = 0, rc = numlist_text(text, z, &n, max);
    for (int32_t i = 0; i < n && !rc; i++) {
        char num[32];
        mac_numtext(z[i], num);
        *out += (i ? " " : "");
        *out += num;
    }
    safefree(z);
    return rc;
}

int32_t variables_of(const char *text, std::string *out)
{
    auto v = static_cast<int32_t *>(safemalloc(size_t(max_theory_k + 1) * sizeof(int32_t)));
    if (!v)
        return error(RC_NOMEM);
    int32_t n = 0, rc = vlist_text(text, v, &n, max_theory_k);
    for (int32_t i = 0; i < n && !rc; i++) {
        *out += (i ? " " : "");
        *out += _varlist[v[i] - 1];
    }
    safefree(v);
    return rc;
}

int32_t newnames_of(const char *text, std::string *out)
{
    std::string copy(text);
    toktype ti;
    ti_settok(&ti, copy.data());
    int32_t rc = ti_newvlist(&ti);
    if (rc)
        return rc;
    if (*ti_gettok(&ti, prsestd))
        return invalid(tok_text(ti.token));
    for (int32_t i = 0; i < pi_nnew; i++) {
        if (sysfindvar(pi_new[i].name))
            return error2(3, pi_new[i].name);
        *out += (i ? " " : "");
        *out += pi_new[i].name;
    }
    return 0;
}

// "of kind list" or "in list", up to the brace, into the macro of the list.
int32_t fe_list(fe_state *f)
{
    std::string how = ti_gettok(tokinfo, prsestd), kind = "in";
    if (how == "of")
        kind = ti_gettok(tokinfo, prsestd);
    else if (how != "in")
        return error(RC_SYNTAX);
    char *begin = ti_wheretok(tokinfo), *brace = blockbrace(begin);
    if (!brace)
        brace = begin + strlen(begin);
    std::string text(skipblanks(begin), brace < skipblanks(begin) ? skipblanks(begin) : brace), out;
    while (!text.empty() && text.back() == ' ')
        text.pop_back();
    ti_settok(tokinfo, brace);
    if (kind == "local" || kind == "global") {
        snprintf(f->list, sizeof f->list, "%s%.60s", kind == "local" ? "_" : "", text.c_str());
        return mac_goodname(f->list, strlen(f->list)) ? 0 : invalid(text.c_str());
    }
    int32_t rc = 0;
    if (kind == "in" || kind == "any")
        out = text;
    else if (kind == "numlist")
        rc = numbers_of(text.c_str(), &out);
    else if (kind == "varlist")
        rc = variables_of(text.c_str(), &out);
    else if (cmdcmp(kind.c_str(), "newlist", 3))
        rc = newnames_of(text.c_str(), &out);
    else
        return error(RC_SYNTAX);
    if (rc)
        return rc;
    if (fe_depth >= fe_max)
        return error(RC_LIMIT);
    snprintf(f->list, sizeof f->list, "!%dfe", ++fe_depth);
    return dmsave(f->list, DM_GLOBAL, 0, out.c_str(), out.size() + 1);
}

int32_t fe_run(loop *l, fe_state *f)
{
    bool more = true, any = false;
    int32_t rc = 0;
    static char item[macrolen];
    while (more && fe_next(f, item)) {
        if ((rc = macresave(l->macro, item)))
            break;
        any = true;
        rc = loop_pass(l, &more);
    }
    return any || rc ? rc : loop_skip(l);
}

}  // namespace

void foreachrest(char *buffer)
{
    const char *p = fe_top && fe_top->level == typelmac ? skipblanks(fe_rest(fe_top)) : "";
    size_t n = strnlen(p, macrolen - 1);
    memcpy(buffer, p, n);
    buffer[n] = 0;
}

int32_t foreach(int32_t)
{
    if (!procflg)
        return dead_head();
    if (!runprog)
        return lift("foreach");
    loop l;
    fe_state f = {fe_top, "", 0, typelmac};
    int32_t depth = fe_depth;
    char *text = ti_wheretok(tokinfo);
    int32_t rc = loop_name(&l);
    if (!rc)
        rc = fe_list(&f);
    if (rc || (rc = loop_open(&l)))
        rc = fail_head(text, rc);
    else {
        fe_top = &f;
        rc = fe_run(&l, &f);
        fe_top = f.outer;
        loop_close(&l);
    }
    if (fe_depth > depth) {
        dmrm(dmfind0(f.list, DM_GLOBAL));
        fe_depth = depth;
    }
    return rc;
}
