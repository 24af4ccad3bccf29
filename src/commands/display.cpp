// commands/display.cpp - display: texts and values, item by item.
//
//   display [%fmt] [=]exp | "text" | as STYLE | in STYLE | _newline[(#)] | _skip(#) |
//           _column(#) | _dup(#) | _char(#) | _asis | _continue | _request(name) | , | ,,
//
// Texts are the user's own mark-up; values of expressions go out raw. An item's literals need
// not outlive it, so the pools are emptied for each.
#include "core/missing.h"
#include "core/numtext.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "expr/parse.h"
#include "interp/interp.h"
#include "interp/keyboard.h"
#include "interp/macros.h"
#include "interp/messages.h"
#include "output/fmt.h"
#include "output/oml.h"
#include "output/print.h"
#include <algorithm>
#include <cstring>
#include <string>

namespace
{
struct dispstate {
    char fmt[fmtlen + 1]; // of the next item, empty for none
    int32_t dup;          // times the next item is shown
    bool asis, more;      // _asis, _continue
};
} // namespace

// Where the items go when they are wanted as text; null for the output.
static std::string *sink;

static int32_t put(const char *text)
{
    if (!sink)
        return spout21(text);
    *sink += text;
    return stopflag;
}

static char *skipblanks()
{
    ti_trimtokwhite(tokinfo);
    return ti_wheretok(tokinfo);
}

// ---- values
static int32_t show_number(const dispstate *d, double z)
{
    char text[300];
    if (*d->fmt)
        fmtnum(text, sizeof text, z, d->fmt);
    else
        fmtnumtrim(text, sizeof text, z, "%9.0g");
    return put(text);
}

static int32_t show_string(const dispstate *d, const char *s)
{
    char text[600];
    if (!*d->fmt)
        return put(s);
    fmtstr(text, sizeof text, s, d->fmt);
    return put(text);
}

static int32_t show_exp(dispstate *d)
{
    static xeqpgm pgm;
    initialize_compexp_shared();
    int32_t rc = ti_compexp(tokinfo, &pgm, W_ANY, false, false, nullptr, 0);
    if (rc)
        return rc;
    bool isstr = pgm.restype == XR_STR;
    if (*d->fmt && isstr != fmt_isstr(d->fmt))
        return error(RC_TYPE);
    char text[256];
    double z = 0;
    parinfo->pi_obs1 = nobss1;
    parinfo->pi_obs2 = nobss2;
    if (isstr)
        sxeq(&pgm, nobss1, text);
    else
        z = pi_xeq(parinfo, &pgm, nobss1);
    for (int32_t i = d->dup; i > 0 && !stopflag; i--)
        isstr ? show_string(d, text) : show_number(d, z);
    return stopflag;
}

// A text in quotes that no string operator follows.
static bool isliteral(char *p)
{
    bool open;
    if (*p == '"')
        p = psimplequotes(p, &open);
    else if (*p == '`' && p[1] == '"')
        p = pcompoundquotes(p, &open);
    else
        return false;
    while (*p == ' ')
        p++;
    if (*p == '+' || *p == '<' || *p == '>' || *p == ':')
        return false;
    return !((*p == '=' || *p == '!' || *p == '~') && p[1] == '=');
}

static int32_t show_literal(const dispstate *d)
{
    char *start, *end, *next;
    ti_gettok(tokinfo, prsestd);
    if (ti_parse_quoted_string(tokinfo, nullptr, &start, &end, &next))
        return unbalanced_quotes();
    std::string text(start, size_t(end - start));
    if (*d->fmt) {
        if (!fmt_isstr(d->fmt))
            return error(RC_TYPE);
        for (int32_t i = d->dup; i > 0 && !stopflag; i--)
            show_string(d, text.c_str());
        return stopflag;
    }
    for (int32_t i = d->dup; i > 0 && !stopflag; i--) {
        if (d->asis || sink) {
            put(text.c_str());
            continue;
        }
        if (!out_shown(c_outlev))
            break;
        spout_setcoloroflev();
        spoutsml(text.c_str());
    }
    return stopflag;
}

// ---- directives
// The number in parentheses behind a directive; dflt without parentheses.
static int32_t number_arg(int32_t dflt, int32_t *out)
{
    char *p = ti_wheretok(tokinfo);
    *out = dflt;
    if (*p != '(')
        return 0;
    bool open, isstr;
    char *e = pbrackets(p, &open);
    if (open || e[-1] != ')')
        return error(RC_SYNTAX);
    std::string text(p + 1, size_t(e - p - 2));
    ti_settok(tokinfo, e);
    double z;
    char buf[246];
    int32_t rc = exp_text(text.c_str() + (text[0] == '='), W_NUM, &isstr, &z, buf);
    if (rc)
        return rc;
    *out = ovismissing(z) ? 0 : int32_t(std::clamp(z, -1.0, 32000.0));
    return 0;
}

static int32_t style_level(const char *word, bool in, const char **tag)
{
    static const struct {
        const char *as, *in;
        uint8_t level;
        const char *tag;
    } rows[] = {
        {"text", "green", 1, nullptr},    {"txt", nullptr, 1, nullptr},
        {"result", "yellow", 0, nullptr}, {"res", nullptr, 0, nullptr},
        {"error", "red", 3, nullptr},     {"err", nullptr, 3, nullptr},
        {"input", "white", 1, "{com}"},   {"inp", "blue", 1, "{com}"},
        {"com", nullptr, 1, "{com}"},
    };
    for (const auto &r : rows) {
        const char *name = in ? r.in : r.as;
        if (!name || (in ? !cmdcmp(word, name, 1) : strcmp(word, name) != 0))
            continue;
        *tag = r.tag;
        return r.level;
    }
    return -1;
}

static int32_t set_style(bool in)
{
    const char *tag = nullptr;
    const char *word = ti_gettok(tokinfo, prsestd);
    if (in && !strcmp(word, "omcl"))
        return 0;
    int32_t level = style_level(word, in, &tag);
    if (level < 0)
        return error(RC_SYNTAX);
    c_outlev = uint8_t(level);
    if (tag && !sink)
        spoutsml(tag);
    return stopflag;
}

static int32_t request()
{
    char *p = ti_wheretok(tokinfo);
    bool open;
    if (*p != '(')
        return error(RC_SYNTAX);
    char *e = pbrackets(p, &open);
    if (open)
        return error(RC_SYNTAX);
    std::string name(p + 1, size_t(e - p - 2));
    ti_settok(tokinfo, e);
    static char line[macrolen];
    *line = 0;
    omlflush(oml_cur);
    if (!batchmode && kb_line(line, macrolen - 1) == KB_BREAK)
        return 1;
    return macresave(name.c_str(), line);
}

// Blanks, or blanks up to a column; form is the tag that makes them.
static int32_t put_blanks(const char *form, int32_t n, bool column)
{
    if (sink) {
        n -= column ? int32_t(sink->size()) + 1 : 0;
        sink->append(size_t(std::clamp(n, 0, macrolen)), ' ');
        return stopflag;
    }
    return n > 0 ? spoutsmlf(form, n) : int32_t(stopflag);
}

enum { D_NEWLINE, D_SKIP, D_COLUMN, D_DUP, D_CHAR, D_ASIS, D_CONTINUE, D_REQUEST, D_NONE };
static const struct {
    const char *word;
    int32_t min;
} directives[] = {{"_newline", 2}, {"_skip", 2}, {"_column", 4},   {"_dup", 2},
                  {"_char", 5},    {"_asis", 2}, {"_continue", 2}, {"_request", 2}};

static int32_t run_directive(int32_t which, dispstate *d)
{
    int32_t n = 1, rc;
    if (which <= D_CHAR && (rc = number_arg(which == D_CHAR ? 0 : 1, &n)))
        return rc;
    switch (which) {
    case D_NEWLINE:
        for (; n > 0 && !stopflag && !sink; n--)
            newline();
        break;
    case D_SKIP: return put_blanks("{space %d}", std::min(n, 32000), false);
    case D_COLUMN: return put_blanks("{col %d}", n, true);
    case D_DUP: d->dup = n; break;
    case D_CHAR:
        if (n >= 1 && n <= 255) {
            char text[2] = {char(n), 0};
            put(text);
        }
        break;
    case D_ASIS: d->asis = true; break;
    case D_CONTINUE: d->more = true; break;
    default: return request();
    }
    return stopflag;
}

// The directive at p, D_NONE when it is an expression that begins with _.
static int32_t directive_at(const char *p)
{
    char word[34];
    size_t n = strcspn(p, " (),\"`%=+-*/^&|<>!~[]{}:;");
    if (n > 32)
        return D_NONE;
    memcpy(word, p, n);
    word[n] = 0;
    const char *q = p + n;
    if (strchr("=+-*/^&|<>!~[:", *q) && *q)
        return D_NONE;
    for (int32_t i = 0; i < D_NONE; i++)
        if (cmdcmp(word, directives[i].word, directives[i].min))
            return i;
    return D_NONE;
}

static int32_t read_format(dispstate *d, char *p)
{
    size_t n = strcspn(p, " (\"`=");
    if (n > fmtlen)
        n = fmtlen;
    memcpy(d->fmt, p, n);
    d->fmt[n] = 0;
    ti_settok(tokinfo, p + n);
    if (chkfmt(d->fmt, nullptr))
        return errout(120, "invalid %%format\n");
    return 0;
}

static bool wordis(const char *p, const char *word)
{
    size_t n = strlen(word);
    return !strncmp(p, word, n) && p[n] == ' ';
}

static int32_t item(dispstate *d, char *p)
{
    int32_t which, rc;
    if (*p == ',') {
        bool two = p[1] == ',';
        ti_settok(tokinfo, p + 1 + two);
        return two ? int32_t(stopflag) : put(" ");
    }
    if (*p == '%')
        return read_format(d, p);
    if (wordis(p, "as") || wordis(p, "in")) {
        bool in = *p == 'i';
        ti_settok(tokinfo, p + 2);
        return set_style(in);
    }
    if (*p == '_' && (which = directive_at(p)) != D_NONE) {
        ti_settok(tokinfo, p + strcspn(p, " (,\"`%"));
        return run_directive(which, d);
    }
    if (isliteral(p))
        rc = show_literal(d);
    else {
        if (*p == '=')
            ti_settok(tokinfo, p + 1);
        rc = show_exp(d);
        if (!rc && ti_wheretok(tokinfo) == p) // nothing was taken: it will never be
            rc = error(RC_SYNTAX);
    }
    *d->fmt = 0;
    d->dup = 1;
    return rc;
}

static int32_t items(dispstate *d)
{
    d->dup = 1;
    if (!byvar) {
        nobss1 = 1;
        nobss2 = _Nobs;
    }
    for (char *p = skipblanks(); *p; p = skipblanks()) {
        int32_t rc = item(d, p);
        if (rc)
            return rc;
        if (sink && sink->size() >= size_t(macrolen))
            return error(RC_LONGCMD);
    }
    return 0;
}

static int32_t as_text(std::string *out)
{
    dispstate d = {};
    outlev_keep keep(0);
    out->clear();
    sink = out;
    int32_t rc = items(&d);
    sink = nullptr;
    return rc;
}
[[maybe_unused]] static const bool hooked = (mac_displaytext = as_text, true);

int32_t display(int32_t)
{
    dispstate d = {};
    outlev_keep keep(0);
    if (int32_t rc = items(&d))
        return rc;
    return d.more ? int32_t(stopflag) : newline();
}
