// _parse: command text taken apart into its pieces and put together again, for programs whose
// command line holds several commands: "(a, x) (b) if c, y" or "a, x || b || if c, y".
#include "core/rc.h"
#include "expr/parse.h"
#include "interp/interp.h"
#include "interp/macros.h"
#include "interp/messages.h"
#include "interp/syntaxpat.h"
#include "output/print.h"
#include "varlist/terms.h"
#include <cctype>
#include <charconv>
#include <cstring>
#include <string>
#include <vector>

using str = std::string;

namespace
{

constexpr int32_t maxpieces = 1000;

str trim(const str &s)
{
    size_t b = s.find_first_not_of(' '), e = s.find_last_not_of(' ');
    return b == str::npos ? "" : s.substr(b, e - b + 1);
}

str local_text(const str &name)
{
    const char *v = macptr(("_" + name).c_str());
    return v ? v : "";
}

int32_t set_local(const str &name, const str &text)
{
    str n = "_" + name;
    if (!mac_goodname(n.c_str(), n.size()))
        return invalid(name.c_str());
    if (text.size() >= size_t(macrolen))
        return error(RC_LONGCMD);
    return macresave(n.c_str(), text.c_str());
}

// The next token as the name of a local.
int32_t local_name(str *out)
{
    *out = tok_text(ti_gettok(tokinfo, prsestd));
    str n = "_" + *out;
    if (out->empty())
        return error(RC_SYNTAX);
    return mac_goodname(n.c_str(), n.size()) ? 0 : invalid(out->c_str());
}

// ---- the options of a piece

struct optionword {
    str name, arg;
    bool hasarg;
    str text() const { return hasarg ? name + "(" + arg + ")" : name; }
};
using optionwords = std::vector<optionword>;

// Text without its comma, or with it.
int32_t read_words(const str &text, optionwords *out)
{
    const char *p = text.c_str();
    for (;;) {
        while (*p == ' ' || *p == ',')
            p++;
        if (!*p)
            return 0;
        const char *b = p;
        p += strcspn(p, " (,");
        optionword o = {str(b, p), "", *p == '('};
        if (o.hasarg) {
            const char *end = syn_closeparen(p);
            if (!end)
                return required(")");
            o.arg = str(p + 1, end - 1);
            p = end;
        }
        out->push_back(o);
    }
}

str join(const optionwords &list)
{
    str out;
    for (const optionword &o : list)
        out += (out.empty() ? "" : " ") + o.text();
    return out;
}

// A name whose capitals are its least abbreviation, as in a line of syntax.
bool is_option(const str &typed, const str &pattern)
{
    str name = pattern.substr(0, pattern.find('('));
    size_t least = 0;
    while (least < name.size() && isupper(uint8_t(name[least])))
        least++;
    if (!least)
        least = name.size();
    for (char &c : name)
        c = char(tolower(uint8_t(c)));
    return typed.size() >= least && name.compare(0, typed.size(), typed) == 0;
}

bool in_list(const str &typed, const optionwords &patterns)
{
    for (const optionword &p : patterns)
        if (is_option(typed, p.name))
            return true;
    return false;
}

void split_comma(const str &text, str *before, str *behind)
{
    str copy(text);
    size_t at = size_t(pfindoutside(copy.data(), ',') - copy.data());
    *before = text.substr(0, at);
    *behind = text.substr(at);
}

// ---- if, in and weights in front of the options

struct globals {
    str if_, in, wt;
    optionwords options;
};

bool word_at(const char *p, const char *word)
{
    size_t n = strlen(word);
    return !strncmp(p, word, n) && (!p[n] || p[n] == ' ' || p[n] == '(');
}

// Start of the next clause from p on, or the end of the text.
const char *next_clause(const char *p)
{
    bool open, start = true;
    while (*p) {
        if (start && (word_at(p, "if") || word_at(p, "in")))
            return p;
        if (*p == '[')
            return p;
        start = *p == ' ' || *p == ')';
        char *q = const_cast<char *>(p);
        p = *p == '"'                    ? psimplequotes(q, &open)
            : p[0] == '`' && p[1] == '"' ? pcompoundquotes(q, &open)
            : *p == '('                  ? pbrackets(q, &open)
                                         : p + 1;
        start = start || p[-1] == ')';
    }
    return p;
}

int32_t read_globals(const str &text, globals *g)
{
    str clauses, options;
    split_comma(text, &clauses, &options);
    const char *p = clauses.c_str();
    while (*p == ' ')
        p++;
    if (*p && next_clause(p) != p)
        return errout(RC_SYNTAX, "invalid '%s'\n", str(p, strcspn(p, " ")).c_str());
    while (*p) {
        bool open;
        const char *end = *p == '[' ? pbrackets(const_cast<char *>(p), &open) : next_clause(p + 2);
        str *part = *p == '[' ? &g->wt : word_at(p, "if") ? &g->if_ : &g->in;
        if (!part->empty())
            return error(RC_SYNTAX);
        *part = trim(str(p, end));
        p = end;
        while (*p == ' ')
            p++;
    }
    return read_words(options, &g->options);
}

// ---- the pieces of a text

struct cutting {
    std::vector<str> pieces;
    str rest; // what concerns them all
};

bool is_global(const str &piece)
{
    const char *p = piece.c_str();
    return *p == ',' || word_at(p, "if") || word_at(p, "in") || *p == '[';
}

const char *find_bars(char *p)
{
    while (*(p = pfindoutside(p, '|')) && p[1] != '|')
        p++;
    return p;
}

int32_t cut_bars(str text, cutting *c)
{
    char *p = text.data();
    for (;;) {
        const char *end = find_bars(p);
        str piece = trim(str(const_cast<const char *>(p), end));
        if (!*end && !c->pieces.empty() && is_global(piece))
            c->rest = piece;
        else if (!piece.empty())
            c->pieces.push_back(piece);
        if (!*end)
            return 0;
        p = const_cast<char *>(end) + 2;
    }
}

int32_t cut_parens(const str &text, cutting *c)
{
    const char *p = text.c_str();
    while (*p == '(') {
        const char *end = syn_closeparen(p);
        if (!end)
            return required(")");
        c->pieces.push_back(trim(str(p + 1, end - 1)));
        p = end;
        while (*p == ' ')
            p++;
    }
    c->rest = p;
    return 0;
}

int32_t cut(const str &text, cutting *c)
{
    str copy(text);
    if (*find_bars(copy.data()))
        return cut_bars(text, c);
    if (text[0] == '(')
        return cut_parens(text, c);
    if (!text.empty())
        c->pieces.push_back(text);
    return 0;
}

// Takes the options named in common, and with weights a weight, out of a piece.
int32_t lift(str *piece, const optionwords &common, bool weights, globals *g)
{
    str before, behind;
    split_comma(*piece, &before, &behind);
    const char *w = weights ? next_clause(before.c_str()) : "";
    while (*w && *w != '[')
        w = next_clause(w + 2);
    if (*w) {
        bool open;
        const char *end = pbrackets(const_cast<char *>(w), &open);
        str wt(w, end);
        if (!g->wt.empty() && g->wt != wt)
            return errout(RC_SYNTAX, "weights must be the same for all the commands\n");
        g->wt = wt;
        before = trim(str(before.c_str(), w) + end);
    }
    optionwords all, mine;
    int32_t rc = read_words(behind, &all);
    if (rc)
        return rc;
    for (const optionword &o : all)
        (in_list(o.name, common) ? g->options : mine).push_back(o);
    *piece = mine.empty() ? trim(before) : trim(before) + ", " + join(mine);
    return 0;
}

str numbered(const str &stub, int32_t i)
{
    char num[16];
    return stub + "_" + str(num, std::to_chars(num, num + 16, i).ptr);
}

// ---- options of _parse itself, behind its comma

int32_t own_options(const str &text, std::initializer_list<const char *> allowed, optionwords *out)
{
    int32_t rc = read_words(text, out);
    for (const optionword &o : *out) {
        bool ok = false;
        for (const char *a : allowed)
            ok = ok || o.name == a;
        if (!rc && !ok)
            rc = errout(RC_SYNTAX, "option %s%s not allowed\n", o.name.c_str(),
                        o.hasarg ? "()" : "");
    }
    return rc;
}

const optionword *find_option(const optionwords &list, const char *name)
{
    for (const optionword &o : list)
        if (o.name == name)
            return &o;
    return nullptr;
}

// What may stand at the end: nothing, or a comma and options.
int32_t line_end(std::initializer_list<const char *> allowed, optionwords *out)
{
    const char *tok = ti_gettok(tokinfo, prsestd);
    if (!*tok)
        return 0;
    return strcmp(tok, ",") ? error(RC_SYNTAX) : own_options(ti_wheretok(tokinfo), allowed, out);
}

// _parse comma LHS RHS : NAME - the text before the first comma, and the text from it on.
int32_t parse_comma()
{
    str lhs, rhs, from, before, behind;
    optionwords none;
    int32_t rc;
    if ((rc = local_name(&lhs)) || (rc = local_name(&rhs)) || (rc = ti_gtokis(tokinfo, ':')) ||
        (rc = local_name(&from)) || (rc = line_end({}, &none)))
        return rc;
    split_comma(local_text(from), &before, &behind);
    rc = set_local(lhs, trim(before));
    return rc ? rc : set_local(rhs, behind);
}

// _parse expand CMD GLOB : NAME [, common(options) gweight] - CMD_n and CMD_1, ...; what
// concerns all of them in GLOB_if, GLOB_in, GLOB_wt and GLOB_op.
int32_t parse_expand()
{
    str cmds, glob, from;
    optionwords mine, common;
    int32_t rc;
    if ((rc = local_name(&cmds)) || (rc = local_name(&glob)) || (rc = ti_gtokis(tokinfo, ':')) ||
        (rc = local_name(&from)) || (rc = line_end({"common", "gweight", "weight"}, &mine)))
        return rc;
    if (const optionword *o = find_option(mine, "common"))
        if ((rc = read_words(o->arg, &common)))
            return rc;
    bool weights = find_option(mine, "gweight") || find_option(mine, "weight");
    cutting c;
    globals g;
    if ((rc = cut(trim(local_text(from)), &c)) || (rc = read_globals(c.rest, &g)))
        return rc;
    if (c.pieces.size() > size_t(maxpieces))
        return error(RC_LIMIT);
    int32_t n = 0;
    for (str &piece : c.pieces)
        if ((rc = lift(&piece, common, weights, &g)) ||
            (rc = set_local(numbered(cmds, ++n), piece)))
            return rc;
    char num[16];
    if ((rc = set_local(cmds + "_n", str(num, std::to_chars(num, num + 16, n).ptr))) ||
        (rc = set_local(glob + "_if", g.if_)) || (rc = set_local(glob + "_in", g.in)) ||
        (rc = set_local(glob + "_wt", g.wt)))
        return rc;
    return set_local(glob + "_op", join(g.options));
}

// _parse canonicalize NAME : CMD GLOB - the pieces in parentheses with what concerns all.
int32_t parse_canonicalize()
{
    str to, cmds, glob;
    optionwords none;
    int32_t rc, n = 0;
    if ((rc = local_name(&to)) || (rc = ti_gtokis(tokinfo, ':')) || (rc = local_name(&cmds)) ||
        (rc = local_name(&glob)) || (rc = line_end({}, &none)))
        return rc;
    str count = local_text(cmds + "_n"), out;
    std::from_chars(count.data(), count.data() + count.size(), n);
    for (int32_t i = 1; i <= n && i <= maxpieces; i++)
        out += (i > 1 ? " (" : "(") + local_text(numbered(cmds, i)) + ")";
    for (const char *part : {"_if", "_in", "_wt"}) {
        str text = local_text(glob + part);
        out += text.empty() ? "" : " " + text;
    }
    str options = local_text(glob + "_op");
    return set_local(to, options.empty() ? out : out + ", " + options);
}

void combine(optionword *into, const optionword &o, bool opsin)
{
    str a, b, aopt, bopt;
    if (!opsin) {
        into->arg = trim(into->arg + " " + o.arg);
        return;
    }
    split_comma(into->arg, &a, &aopt);
    split_comma(o.arg, &b, &bopt);
    str tail =
        trim((aopt.empty() ? "" : aopt.substr(1)) + " " + (bopt.empty() ? "" : bopt.substr(1)));
    into->arg = trim(trim(a) + " " + trim(b)) + (tail.empty() ? "" : ", " + tail);
}

// _parse combop NAME : NAME, option(OPTION) [opsin rightmost] - an option given more than once
// becomes one that holds the arguments of all, or with rightmost the last of them.
int32_t parse_combop()
{
    str to, from;
    optionwords mine, list, out;
    int32_t rc;
    if ((rc = local_name(&to)) || (rc = ti_gtokis(tokinfo, ':')) || (rc = local_name(&from)) ||
        (rc = line_end({"option", "opsin", "rightmost"}, &mine)))
        return rc;
    const optionword *which = find_option(mine, "option");
    if (!which)
        return required("option()");
    bool opsin = find_option(mine, "opsin"), rightmost = find_option(mine, "rightmost");
    str text = local_text(from), lead = text[0] == ',' ? ", " : "";
    if ((rc = read_words(text, &list)))
        return rc;
    size_t at = str::npos;
    for (const optionword &o : list) {
        if (!is_option(o.name, which->arg)) {
            out.push_back(o);
        } else if (at == str::npos) {
            at = out.size();
            out.push_back(o);
        } else if (rightmost)
            out[at] = o;
        else
            combine(&out[at], o, opsin);
    }
    return set_local(to, out.empty() ? "" : lead + join(out));
}

// _parse factor NAME : LIST - the terms of a list with operators: NAME_n of them, NAME_1 ...
int32_t parse_factor()
{
    str to;
    int32_t rc;
    if ((rc = local_name(&to)) || (rc = ti_gtokis(tokinfo, ':')))
        return rc;
    fvspec s;
    if ((rc = fv_text(ti_wheretok(tokinfo), FV_TS | FV_FACTOR, &s)))
        return rc;
    rc = set_local(to + "_n", std::to_string(s.term.size()));
    for (size_t i = 0; i < s.term.size() && !rc; i++)
        rc = set_local(to + "_" + std::to_string(i + 1), fv_write(s.term[i]));
    return rc;
}

} // namespace

// _parse comma | expand | canonicalize | combop | factor
int32_t parsecmd(int32_t)
{
    str w = ti_gettok(tokinfo, prsestd);
    if (cmdcmp(w.c_str(), "comma", 5))
        return parse_comma();
    if (cmdcmp(w.c_str(), "expand", 3))
        return parse_expand();
    if (cmdcmp(w.c_str(), "canonicalize", 5))
        return parse_canonicalize();
    if (cmdcmp(w.c_str(), "combop", 6) || cmdcmp(w.c_str(), "combine", 7))
        return parse_combop();
    if (cmdcmp(w.c_str(), "factor", 6))
        return parse_factor();
    return errout(RC_SYNTAX, "invalid '%s'\n", tok_text(w.c_str()));
}
