// gettoken and tokenize: text taken apart; numlist, _unab, unabcmd, confirm.
#include "core/files.h"
#include "core/missing.h"
#include "core/numtext.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/umat.h"
#include "data/variables.h"
#include "expr/parse.h"
#include "interp/dm.h"
#include "interp/interp.h"
#include "interp/macros.h"
#include "interp/messages.h"
#include "interp/numcheck.h"
#include "interp/programs.h"
#include "interp/syntaxpat.h"
#include "output/fmt.h"
#include "output/print.h"
#include "stats/results.h"
#include <charconv>
#include <cmath>
#include <cstring>
#include <memory>
#include <string>

using str = std::string;

namespace {

// ---- tokens of a text

struct piece {
    str text;
    bool quoted, paren;
    const char *next;
};
struct how {
    str parse = " ";
    bool quotes = false, bind = false, match = false;
};

const char *skip_quoted(const char *p, size_t *delim)
{
    bool open;
    *delim = *p == '"' ? 1 : 2;
    const char *end = *p == '"' ? psimplequotes(const_cast<char *>(p), &open)
                                : pcompoundquotes(const_cast<char *>(p), &open);
    if (open)
        *delim = *delim | 4;
    return end;
}

bool isquote(const char *p) { return *p == '"' || (p[0] == '`' && p[1] == '"'); }

// Behind a stretch in brackets that the options keep together; null when none starts here.
const char *bound_end(const how &h, const char *p)
{
    if (*p == '(')
        return h.match || h.bind ? syn_closeparen(p) : nullptr;
    if (*p != '[' || !h.bind)
        return nullptr;
    bool open;
    const char *end = pbrackets(const_cast<char *>(p), &open);
    return open ? nullptr : end;
}

// One token: a parse character alone, a quoted string, or what stands before the next of them.
bool next_piece(const char *p, const how &h, piece *out)
{
    while (*p == ' ')
        p++;
    if (!*p)
        return false;
    *out = {"", false, false, p};
    size_t delim;
    if (isquote(p)) {
        const char *end = skip_quoted(p, &delim);
        size_t d = delim & 3;
        out->quoted = true;
        out->text = h.quotes ? str(p, end) : str(p + d, delim & 4 ? end : end - d);
        out->next = end;
        return true;
    }
    if (const char *end = bound_end(h, p)) {
        out->paren = h.match && *p == '(';
        out->text = out->paren ? str(p + 1, end - 1) : str(p, end);
        out->next = end;
        return true;
    }
    if (h.parse.find(*p) != str::npos) {
        out->text = *p;
        out->next = p + 1;
        return true;
    }
    const char *b = p;
    while (*p && h.parse.find(*p) == str::npos) {
        const char *end = h.bind ? bound_end(h, p) : nullptr;
        p = end ? end : isquote(p) ? skip_quoted(p, &delim) : p + 1;
    }
    out->text = str(b, p);
    out->next = p;
    return true;
}

// NAME, (local) NAME, (global) NAME, local NAME, global NAME: the store's name.
int32_t macro_name(str *out)
{
    str tok = ti_gettok(tokinfo, prsestd);
    bool global = false;
    if (tok == "(") {
        tok = ti_gettok(tokinfo, prsestd);
        if (tok != "local" && tok != "global")
            return error(RC_SYNTAX);
        global = tok == "global";
        if (ti_gtokis(tokinfo, ')'))
            return RC_SYNTAX;
        tok = ti_gettok(tokinfo, prsestd);
    } else if (tok == "local" || tok == "global") {
        char c = ti_peektok_chr(tokinfo);
        if (c && c != ':' && c != ',') {
            global = tok == "global";
            tok = ti_gettok(tokinfo, prsestd);
        }
    }
    *out = global ? tok : "_" + tok;
    if (tok.empty() || !mac_goodname(out->c_str(), out->size()))
        return tok.empty() ? error(RC_SYNTAX) : invalid(tok_text(tok.c_str()));
    return 0;
}

// The words of parse(), each quoted, run together.
int32_t parse_chars(const str &arg, str *out)
{
    char word[macrolen];
    out->clear();
    const char *p = arg.c_str();
    while ((p = mac_item(p, word, macrolen, nullptr)))
        *out += word;
    if (out->empty())
        *out = " ";
    return 0;
}

struct argopt {
    const char *word;
    str *arg;    // null for a flag
    bool *flag;
};

int32_t read_options(const char *p, std::initializer_list<argopt> rows)
{
    while (*p) {
        while (*p == ' ')
            p++;
        if (!*p)
            break;
        const char *b = p;
        p += strcspn(p, " (,");
        str word(b, p), arg;
        bool has = *p == '(';
        if (has) {
            const char *end = syn_closeparen(p);
            if (!end)
                return required(")");
            arg = str(p + 1, end - 1);
            p = end;
        }
        const argopt *hit = nullptr;
        for (const argopt &r : rows)
            if (word == r.word && has == (r.arg != nullptr))
                hit = &r;
        if (!hit)
            return errout(RC_SYNTAX, "option %s%s not allowed\n", word.c_str(), has ? "()" : "");
        if (hit->arg)
            *hit->arg = arg;
        if (hit->flag)
            *hit->flag = true;
    }
    return 0;
}

int32_t set_named(const str &name, const str &text)
{
    if (name.empty())
        return 0;
    str n = "_" + name;
    if (!mac_goodname(n.c_str(), n.size()))
        return invalid(name.c_str());
    return macresave(n.c_str(), text.c_str());
}

str trim(str s)
{
    while (!s.empty() && s.back() == ' ')
        s.pop_back();
    size_t b = s.find_first_not_of(' ');
    return b == str::npos ? "" : s.substr(b);
}

}  // namespace

// gettoken NAME [NAME] : NAME [, parse("") quotes qed(local) match(local) bind]
int32_t gettokencmd(int32_t)
{
    str first, second, from, parse, qed, match;
    int32_t rc = macro_name(&first);
    if (rc)
        return rc;
    if (ti_peektok_chr(tokinfo) != ':' && (rc = macro_name(&second)))
        return rc;
    if ((rc = ti_gtokis(tokinfo, ':')) || (rc = macro_name(&from)))
        return rc;
    how h;
    bool hasparse = false;
    const char *tok = ti_gettok(tokinfo, prsestd);
    if (*tok && *tok != ',')
        return error(RC_SYNTAX);
    if (*tok && (rc = read_options(ti_wheretok(tokinfo),
                                   {{"parse", &parse, &hasparse}, {"quotes", nullptr, &h.quotes},
                                    {"qed", &qed, nullptr}, {"match", &match, &h.match},
                                    {"bind", nullptr, &h.bind}})))
        return rc;
    if (hasparse && (rc = parse_chars(parse, &h.parse)))
        return rc;
    const char *value = macptr(from.c_str());
    str text(value ? value : "");
    piece t = {"", false, false, ""};
    if (!next_piece(text.c_str(), h, &t))
        t.next = "";
    if ((rc = macresave(first.c_str(), t.text.c_str())))
        return rc;
    if (!second.empty() && (rc = macresave(second.c_str(), t.next)))
        return rc;
    if ((rc = set_named(trim(qed), t.quoted ? "1" : "0")))
        return rc;
    return set_named(trim(match), t.paren ? "(" : "");
}

// tokenize [string] [, parse("")]: the words of a text in `1', `2', ...
int32_t tokenizecmd(int32_t)
{
    how h;
    str text, parse;
    bool hasparse = false;
    const char *p = ti_wheretok(tokinfo), *b = p;
    size_t delim;
    while (*p && *p != ',')
        p = isquote(p) ? skip_quoted(p, &delim) : p + 1;
    text = trim(str(b, p));
    if (*p == ',') {
        int32_t rc = read_options(p + 1, {{"parse", &parse, &hasparse}});
        if (rc || (hasparse && (rc = parse_chars(parse, &h.parse))))
            return rc;
    }
    char *inside = text.data();
    size_t n = text.size();
    int32_t rc = mac_unquote(&inside, &n);
    if (rc)
        return rc;
    inside[n] = 0;
    char name[16] = "_";
    int32_t i = 1;
    piece t;
    for (const char *at = inside; next_piece(at, h, &t) && !rc; i++) {
        *std::to_chars(name + 1, name + 15, i).ptr = 0;
        at = t.next;
        rc = macresave(name, t.text.c_str());
    }
    // Words left from before would look like words of this text.
    for (;; i++) {
        *std::to_chars(name + 1, name + 15, i).ptr = 0;
        if (!macptr(name))
            break;
        macerase(name);
    }
    return rc;
}

int32_t numlistcmd(int32_t)
{
    const char *p = ti_wheretok(tokinfo), *b = p;
    size_t delim;
    while (*p && *p != ',')
        p = isquote(p) ? skip_quoted(p, &delim) : p + 1;
    str text = trim(str(b, p)), out;
    char *inside = text.data();
    size_t n = text.size();
    int32_t rc = mac_unquote(&inside, &n);
    if (rc || (rc = numcheck_text(str(inside, n).c_str(), *p ? p + 1 : "", &out)))
        return rc;
    retval_clear();
    retval_set_glocal("numlist", out.c_str());
    return 0;
}

// _unab LOCAL : varlist [, min(#) max(#) name(text)]
int32_t unabvarcmd(int32_t)
{
    str name = str("_") + ti_gettok(tokinfo, prsestd), min, max, word;
    if (!mac_goodname(name.c_str(), name.size()))
        return invalid(name.c_str() + 1);
    int32_t rc = ti_gtokis(tokinfo, ':');
    if (rc)
        return rc;
    const char *b = ti_wheretok(tokinfo), *comma = strchr(b, ',');
    str text = trim(comma ? str(b, comma) : str(b)), out;
    if (comma && (rc = read_options(comma + 1, {{"min", &min, nullptr}, {"max", &max, nullptr},
                                                {"name", &word, nullptr}})))
        return rc;
    std::unique_ptr<int32_t[]> v(new (std::nothrow) int32_t[size_t(max_theory_k) + 1]);
    if (!v)
        return error(RC_NOMEM);
    int32_t n = 0, least = 1, most = max_theory_k;
    if (!text.empty() && (rc = vlist_text(text.c_str(), v.get(), &n, max_theory_k)))
        return rc;
    if ((!min.empty() && cnvstoint4(min.c_str(), &least)) ||
        (!max.empty() && cnvstoint4(max.c_str(), &most)))
        return error(RC_SYNTAX);
    const char *colon = word.empty() ? "" : ":  ";
    if (n < least)
        return errout(RC_TOOFEWVARS, "%s%stoo few variables specified\n", word.c_str(), colon);
    if (n > most)
        return errout(RC_TOOMANYVARS, "%s%stoo many variables specified\n", word.c_str(), colon);
    for (int32_t i = 0; i < n; i++)
        out += (i ? " " : "") + str(_varlist[v[size_t(i)] - 1]);
    return macresave(name.c_str(), out.c_str());
}

int32_t unabcmd(int32_t)
{
    str name = ti_gettok(tokinfo, prsestd);
    if (name.empty())
        return error(RC_SYNTAX);
    const char *full = findbuiltin(name.c_str());
    char path[512];
    if (!full && !pgmfind(name.c_str(), sys_pgmclass, PF_BOTH) &&
        srchado(name.c_str(), "ado", 1, path))
        return errout(RC_UNRECOGNIZED, "unrecognized command:  %s\n", tok_text(name.c_str()));
    retval_clear();
    retval_set_glocal("cmd", full ? full : name.c_str());
    return 0;
}

// ---- confirm

namespace {

int32_t found_where(const char *text, const char *what)
{
    if (!*text)
        return errout(7, "nothing found where %s expected\n", what);
    return errout(7, "'%s' found where %s expected\n", text, what);
}

int32_t confirm_file(bool isnew)
{
    char name[filenamelen + 1];
    int32_t rc = ti_gettokfn(tokinfo, name);
    if (rc)
        return error(rc);
    bool there = path_isfile(path_expand(name));
    if (isnew)
        return there ? fierr(RC_FILEEXISTS, name) : 0;
    return there ? 0 : fierr(RC_FILENOTFOUND, name);
}

int32_t confirm_format(const str &kind)
{
    const char *tok = ti_gettok(tokinfo, prsestdnp);
    str fmt(tok_text(tok));
    if (fmt == "%")
        fmt += str(ti_wheretok(tokinfo)).substr(0, strcspn(ti_wheretok(tokinfo), " "));
    fmtinfo f;
    str what = kind.empty() ? "format" : kind + " format";
    bool good = !chkfmt(fmt.c_str(), &f);
    if (good && kind == "string")
        good = f.kind == 's';
    else if (good && kind == "numeric")
        good = f.kind != 's';
    else if (good && kind == "date")
        good = f.kind == 't';
    return good ? 0 : found_where(fmt.c_str(), what.c_str());
}

int32_t confirm_number(bool whole)
{
    str text(tok_text(ti_gettok(tokinfo, prsenum)));
    double z;
    bool good = !text.empty() && !cnvstoz(text.c_str(), &z) && !ovismissing(z);
    if (good && whole && z != std::trunc(z))
        good = false;
    return good ? 0 : found_where(text.c_str(), whole ? "integer" : "number");
}

int32_t confirm_names()
{
    char word[macrolen];
    const char *p = ti_wheretok(tokinfo);
    int32_t n = 0;
    for (; (p = mac_item(p, word, macrolen, nullptr)); n++)
        if (!mac_goodname(word, strlen(word)))
            return found_where(word, "name");
    return n ? 0 : found_where("", "name");
}

int32_t confirm_newvars()
{
    int32_t n = 0;
    while (*ti_gettok(tokinfo, prsestd) && strcmp(tokinfo->token, ",")) {
        const char *tok = tok_text(tokinfo->token);
        int32_t rc = chksinglename(tok, false);
        if (rc || (rc = chkreskeywrds(tok)))
            return rc;
        if (sysfindvar(tok))
            return error2(3, tok);
        n++;
    }
    return n ? 0 : found_where("", "newvarname");
}

bool type_fits(const str &kind, uint8_t type)
{
    char word[16];
    if (kind.empty())
        return true;
    if (kind == "numeric")
        return !t_isstr(type);
    if (kind == "string" || kind == "str")
        return t_isstr(type);
    return kind == type_word(type, word);
}

int32_t confirm_vars(const str &kind)
{
    str text(ti_wheretok(tokinfo));
    bool exact = false;
    size_t comma = text.find(',');
    if (comma != str::npos) {
        str opt = trim(text.substr(comma + 1));
        if (!opt.empty() && opt.size() < 2)
            return error(RC_SYNTAX);
        exact = !opt.empty() && !str("exact").compare(0, opt.size(), opt);
        if (!opt.empty() && !exact)
            return errout(RC_SYNTAX, "option %s not allowed\n", opt.c_str());
        text.resize(comma);
    }
    text = trim(text);
    str what = kind.empty() ? "variable" : kind + " variable";
    if (text.empty())
        return found_where("", what.c_str());
    bool abbrev = ovata_varabbrev;
    ovata_varabbrev = abbrev && !exact;
    std::unique_ptr<int32_t[]> v(new (std::nothrow) int32_t[size_t(max_theory_k) + 1]);
    int32_t n = 0, rc = v ? vlist_text(text.c_str(), v.get(), &n, max_theory_k) : error(RC_NOMEM);
    ovata_varabbrev = abbrev;
    for (int32_t i = 0; i < n && !rc; i++)
        if (!type_fits(kind, _typlist[v[size_t(i)] - 1]))
            rc = found_where(_varlist[v[size_t(i)] - 1], what.c_str());
    return rc;
}

int32_t confirm_object(const str &kind)
{
    str name(tok_text(ti_gettok(tokinfo, prsestd)));
    bool there = kind == "scalar" ? dmfind0(name.c_str(), DM_SCALAR) != nullptr
                                  : ismatrixname(name.c_str());
    if (there)
        return 0;
    return kind == "matrix" ? matnotfound(name.c_str())
                            : errout(RC_NOTFOUND, "scalar %s not found\n", name.c_str());
}

}  // namespace

int32_t confirmcmd(int32_t)
{
    str w = ti_gettok(tokinfo, prsestd), kind;
    auto is = [&](const char *full, int32_t min) { return cmdcmp(w.c_str(), full, min) != 0; };
    if (is("existence", 1))
        return ti_peektok_chr(tokinfo) ? 0
                                       : errout(6, "nothing found where something expected\n");
    if (w == "matrix" || w == "scalar")
        return confirm_object(w);
    bool isnew = w == "new", whole = is("integer", 3), typed = false;
    if (isnew || whole || is("numeric", 3) || is("string", 3) || is("date", 2) ||
        type_ofword(w.c_str()) || w == "str") {
        typed = !isnew && !whole;
        if (typed)
            kind = is("numeric", 3) ? "numeric" : is("string", 4) ? "string" : w;
        w = ti_gettok(tokinfo, prsestd);
    }
    if (is("file", 1) && !typed && !whole)
        return confirm_file(isnew);
    if (is("format", 4) && !isnew && !whole)
        return confirm_format(kind);
    if (is("number", 3) && !isnew && !typed)
        return confirm_number(whole);
    if (is("names", 1) && !isnew && !typed && !whole)
        return confirm_names();
    if (is("variable", 1) && !whole)
        return isnew ? confirm_newvars() : confirm_vars(kind);
    return error(RC_SYNTAX);
}
