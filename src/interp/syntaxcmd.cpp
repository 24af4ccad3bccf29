// syntax: what the user typed (`_0') is read by the pattern on the line and put into locals.
#include "core/missing.h"
#include "core/numtext.h"
#include "core/rc.h"
#include "core/settings.h"
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
#include "interp/numcheck.h"
#include "interp/syntaxpat.h"
#include "output/fmt.h"
#include "output/print.h"
#include "varlist/terms.h"
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>

using str = std::string;

namespace {

int32_t set_local(const str &name, const str &text)
{
    str n = "_" + name.substr(0, 31);
    if (text.size() < size_t(macrolen))
        return macresave(n.c_str(), text.c_str());
    return macresave(n.c_str(), text.substr(0, macrolen - 1).c_str());
}

str trim(str s)
{
    while (!s.empty() && s.back() == ' ')
        s.pop_back();
    s.erase(0, s.find_first_not_of(' ') == str::npos ? s.size() : s.find_first_not_of(' '));
    return s;
}

str unquoted(str s)
{
    if (s.size() >= 4 && s[0] == '`' && s[1] == '"' && s.compare(s.size() - 2, 2, "\"'") == 0) {
        bool open;
        if (pcompoundquotes(s.data(), &open) == s.data() + s.size() && !open)
            return s.substr(2, s.size() - 4);
    }
    if (s.size() >= 2 && s[0] == '"' && s.find('"', 1) == s.size() - 1)
        return s.substr(1, s.size() - 2);
    return s;
}

// ---- the names of a list

int32_t check_type(const synlist &l, int32_t var)
{
    bool isstr = t_isstr(_typlist[var - 1]);
    if (l.numeric && isstr)
        return errout(RC_TYPE, "string variables not allowed in varlist;\n"
                               "%s is a string variable\n", _varlist[var - 1]);
    if (l.string && !isstr)
        return errout(RC_TYPE, "numeric variables not allowed in varlist;\n"
                               "%s is a numeric variable\n", _varlist[var - 1]);
    return 0;
}

int32_t check_count(const synlist &l, synkind kind, int32_t n)
{
    bool one = kind == SY_VARNAME || kind == SY_NEWVARNAME || kind == SY_NAME;
    int32_t max = l.max >= 0 ? l.max : one ? 1 : -1;
    if (n < l.min)
        return error(RC_TOOFEWVARS);
    if (max >= 0 && n > max)
        return error(RC_TOOMANYVARS);
    return 0;
}

// All variables, or those among them of the type asked for where there are such.
int32_t all_fitting(const synlist &l, int32_t *v)
{
    int32_t n = vlist_all(v), kept = 0;
    if (l.numeric == l.string)
        return n;
    auto fits = [&](int32_t var) { return t_isstr(_typlist[var - 1]) == l.string; };
    bool any = false;
    for (int32_t i = 0; i < n; i++)
        any = any || fits(v[i]);
    for (int32_t i = 0; i < n && any; i++)
        if (fits(v[i]))
            v[kept++] = v[i];
    return any ? kept : n;
}

// A list with operators: its terms, with names and products written out.
int32_t operated(synkind kind, const synlist &l, const str &text, str *out)
{
    fvspec s;
    uint8_t allow = uint8_t((l.ts ? FV_TS : 0) | (l.fv ? FV_FACTOR : 0));
    int32_t rc = fv_text(text.c_str(), allow, &s);
    if (rc || (rc = check_count(l, kind, int32_t(s.term.size()))))
        return rc;
    for (const fvterm &t : s.term)
        for (const fvatom &a : t.part)
            if ((rc = check_type(l, a.var)))
                return rc;
    *out = fv_write(s);
    return 0;
}

int32_t existing(synkind kind, const synlist &l, const str &text, str *out)
{
    if ((l.ts || l.fv) && fv_needed(text.c_str()))
        return operated(kind, l, text, out);
    std::unique_ptr<int32_t[]> v(new (std::nothrow) int32_t[size_t(maxvlist)]);
    if (!v)
        return error(RC_NOMEM);
    int32_t n = 0, rc = 0;
    if (text.empty() && !l.defnone)
        n = all_fitting(l, v.get());
    else if (!text.empty())
        rc = vlist_text(text.c_str(), v.get(), &n, max_theory_k);
    if (rc || (rc = check_count(l, kind, n)))
        return rc;
    out->clear();
    for (int32_t i = 0; i < n; i++) {
        if ((rc = check_type(l, v[size_t(i)])))
            return rc;
        *out += (i ? " " : "");
        *out += _varlist[v[size_t(i)] - 1];
    }
    return 0;
}

int32_t newnames(synkind kind, const synlist &l, const str &text, str *out, str *types)
{
    toktype ti;
    str copy(text);
    ti_settok(&ti, copy.data());
    pi_newtype = 0;
    int32_t rc = ti_newvlist(&ti);
    if (rc)
        return rc;
    if (*ti_gettok(&ti, prsestd))
        return invalid(tok_text(ti.token));
    if ((rc = check_count(l, kind, pi_nnew)))
        return rc;
    uint8_t plain = type_ofword(set_type);
    for (int32_t i = 0; i < pi_nnew; i++) {
        char buf[16];
        int32_t var = ovata_findvar(pi_new[i].name, 0, true);
        if (var < 0)
            return -var;
        *out += (i ? " " : "") + str(pi_new[i].name);
        *types += (i ? " " : "") + str(type_word(pi_new[i].type ? pi_new[i].type : plain, buf));
    }
    return 0;
}

int32_t plain_names(synkind kind, const synlist &l, const str &text, str *out)
{
    char word[macrolen];
    int32_t n = 0, rc;
    for (const char *p = text.c_str(); (p = mac_item(p, word, macrolen, nullptr)); n++) {
        if ((rc = chkname(word, false)))
            return rc;
        *out += (n ? " " : "") + str(word);
    }
    int32_t max = l.max >= 0 ? l.max : kind == SY_NAME ? 1 : -1;
    if (n < l.min)
        return errout(RC_TOOFEWVARS, "too few names specified\n");
    if (max >= 0 && n > max)
        return errout(RC_TOOMANYVARS, "too many names specified\n");
    return 0;
}

// The names a text holds, checked by their kind.
int32_t names_of(synkind kind, const synlist &l, const str &text, str *out, str *types)
{
    switch (kind) {
    case SY_VARLIST:
    case SY_VARNAME:
        return existing(kind, l, text, out);
    case SY_NEWVARLIST:
    case SY_NEWVARNAME:
        return newnames(kind, l, text, out, types);
    default:
        return plain_names(kind, l, text, out);
    }
}

// ---- before the comma

bool is_weight(const char *p)
{
    p++;
    while (*p == ' ')
        p++;
    const char *b = p;
    while (*p >= 'a' && *p <= 'z')
        p++;
    str word(b, p);
    while (*p == ' ')
        p++;
    return *p == '=' && (syn_weightword(word) || word == "cellsize" || word == "frequency");
}

bool is_clause(const char *p)
{
    for (const char *w : {"if", "in", "using"}) {
        size_t n = strlen(w);
        if (!strncmp(p, w, n) && (p[n] == ' ' || !p[n]))
            return true;
    }
    return !strncmp(p, "using\"", 6) || !strncmp(p, "using`\"", 7) || !strncmp(p, "if(", 3);
}

// Where the names end: a clause, a weight, = or the options.
const char *main_end(const char *text, const synlist &l, bool names)
{
    bool open, start = true;
    for (const char *p = text; *p;) {
        if (*p == ',')
            return p;
        if (!l.everything) {
            if (start && is_clause(p))
                return p;
            if ((*p == '=' && !l.equalok) || (*p == '[' && (names || is_weight(p))))
                return p;
        }
        start = *p == ' ' || *p == ')';
        if (p[0] == '`' && p[1] == '"')
            p = pcompoundquotes(const_cast<char *>(p), &open);
        else if (*p == '"')
            p = psimplequotes(const_cast<char *>(p), &open);
        else if (*p == '(') {
            const char *end = syn_closeparen(p);
            if (!end)
                return text + strlen(text);
            p = end;
        } else
            p++;
    }
    return text + strlen(text);
}

struct typed {
    str main, if_, in, using_, exp, weight;
    bool hasif = false, hasin = false, hasusing = false, hasexp = false, hasweight = false;
    const char *options = nullptr;
};

int32_t expression(toktype *ti, int32_t wanted, bool bracket, str *out)
{
    static xeqpgm pgm;
    const char *b = ti_wheretok(ti);
    initialize_compexp_shared();
    int32_t rc = ti_compexp(ti, &pgm, wanted, bracket, false, nullptr, 0);
    if (!rc)
        *out = trim(str(b, const_cast<const char *>(ti_wheretok(ti))));
    return rc;
}

int32_t weight_clause(toktype *ti, const synpattern &p, typed *t)
{
    if (ti_peektok_chr(ti) == ']') {
        ti_gettok(ti, prsestd);
        return 0;
    }
    if (t->hasweight)
        return errout(RC_SYNTAX, "too many weights\n");
    if (p.weights.empty())
        return notalow("weights");
    str word = ti_gettok(ti, prsestd);
    const char *kind = word == "cellsize" ? "aweight" : word == "frequency" ? "fweight"
                                                                           : syn_weightword(word);
    if (!kind)
        return errout(RC_SYNTAX, "%s unknown weight type\n", word.c_str());
    t->weight = kind;
    if (t->weight == "weight") {
        t->weight = p.weights[0];
        if (!runprog)
            spout21fat(1, "(%ss assumed)\n", t->weight.c_str());
    } else {
        bool ok = false;
        for (const str &w : p.weights)
            ok = ok || w == t->weight;
        if (!ok)
            return notalow((t->weight + "s").c_str());
    }
    int32_t rc = ti_gtokis(ti, '=');
    if (rc || (rc = expression(ti, W_NUM, true, &t->exp)))
        return rc;
    t->hasweight = true;
    return ti_gtokis(ti, ']');
}

int32_t range_clause(toktype *ti, typed *t)
{
    if (by_env.on)
        return errout(RC_BY, "'in' may not be combined with 'by'\n");
    char text[64];
    int32_t a, b;
    t->hasin = true;
    int32_t rc = ti_range(ti, _Nobs, false, &a, &b, text);
    t->in = trim(text);
    return rc;
}

int32_t using_clause(toktype *ti, typed *t)
{
    char name[filenamelen + 1];
    t->hasusing = true;
    int32_t rc = ti_gettokfn(ti, name);
    t->using_ = name;
    return rc ? error(rc) : 0;
}

int32_t clause(toktype *ti, const synpattern &p, typed *t)
{
    const char *tok = ti->token;
    if (!strcmp(tok, "[")) {
        return weight_clause(ti, p, t);
    }
    if (!strcmp(tok, "=")) {
        if (p.exp == SC_NO)
            return notalow("=exp");
        if (t->hasexp)
            return error(RC_SYNTAX);
        t->hasexp = true;
        return expression(ti, W_ANY, false, &t->exp);
    }
    if (!strcmp(tok, "if")) {
        if (p.if_ == SC_NO)
            return notalow("if");
        if (t->hasif)
            return error(RC_SYNTAX);
        t->hasif = true;
        return expression(ti, W_NUM, false, &t->if_);
    }
    if (!strcmp(tok, "in")) {
        if (p.in == SC_NO)
            return notalow("in range");
        return t->hasin ? error(RC_SYNTAX) : range_clause(ti, t);
    }
    if (!strcmp(tok, "using")) {
        if (p.using_ == SC_NO)
            return notalow("using");
        return t->hasusing ? error(RC_SYNTAX) : using_clause(ti, t);
    }
    return errout(RC_SYNTAX, "invalid '%s'\n", tok_text(tok));
}

int32_t missing_parts(const synpattern &p, const typed &t)
{
    static const char *const names[] = {"",        "varlist",  "varname", "newvarlist",
                                        "newvarname", "namelist", "name",    "something"};
    if (p.kind != SY_NONE && p.required && t.main.empty())
        return required(p.list.id.empty() ? p.kind == SY_ANYTHING ? names[7] : names[p.kind]
                                          : p.list.id.c_str());
    if (p.if_ == SC_REQUIRED && !t.hasif)
        return required("if");
    if (p.in == SC_REQUIRED && !t.hasin)
        return required("in range");
    if (p.using_ == SC_REQUIRED && !t.hasusing)
        return required("using");
    if (p.exp == SC_REQUIRED && !t.hasexp)
        return required("=exp");
    if (p.weight == SC_REQUIRED && !t.hasweight)
        return required("weight");
    return 0;
}

int32_t read_typed(str &text, const synpattern &p, typed *t)
{
    // Among names a bracket can only open a weight.
    const char *end = main_end(text.c_str(), p.list, p.kind != SY_ANYTHING);
    t->main = trim(str(text.c_str(), end));
    if (p.kind == SY_NONE && !t->main.empty()) {
        str word = t->main.substr(0, t->main.find(' '));
        return p.if_ || p.in || p.using_ ? errout(RC_SYNTAX, "invalid '%s'\n", word.c_str())
                                         : notalow("varlist");
    }
    toktype ti;
    ti_settok(&ti, text.data() + (end - text.c_str()));
    while (*ti_gettok(&ti, prsestd)) {
        if (!strcmp(ti.token, ",")) {
            t->options = ti_wheretok(&ti);
            break;
        }
        int32_t rc = clause(&ti, p, t);
        if (rc)
            return rc;
    }
    return missing_parts(p, *t);
}

int32_t store_main(const synpattern &p, const typed &t)
{
    if (p.kind == SY_NONE)
        return 0;
    if (p.kind == SY_ANYTHING)
        return set_local(p.list.local.empty() ? "anything" : p.list.local, t.main);
    synlist l = p.list;
    bool vars = p.kind == SY_VARLIST || p.kind == SY_VARNAME;
    // One variable is not guessed from all of them.
    if (p.kind == SY_VARNAME && !l.defgiven)
        l.defnone = true;
    str names, types;
    bool nothing = t.main.empty() && (!vars || l.defnone);
    if (!nothing) {
        int32_t rc = names_of(p.kind, l, t.main, &names, &types);
        if (rc)
            return rc;
    }
    if (p.kind == SY_NAME || p.kind == SY_NAMELIST)
        return set_local(l.local.empty() ? "namelist" : l.local, names);
    int32_t rc = set_local(l.local.empty() ? "varlist" : l.local, names);
    return rc || types.empty() ? rc : set_local("typlist", types);
}

int32_t store_clauses(const synpattern &p, const typed &t)
{
    int32_t rc = store_main(p, t);
    if (!rc && t.hasif)
        rc = set_local("if", p.ifbare ? t.if_ : "if " + t.if_);
    if (!rc && t.hasin)
        rc = set_local("in", p.inbare ? t.in : "in " + t.in);
    if (!rc && t.hasusing)
        rc = set_local("using", p.usingbare ? t.using_ : "using `\"" + t.using_ + "\"'");
    if (!rc && t.hasweight)
        rc = set_local("weight", t.weight);
    if (!rc && (t.hasweight || t.hasexp))
        rc = set_local("exp", p.expbare ? t.exp : "= " + t.exp);
    return rc;
}

// ---- options

int32_t wrong(const synoption &o)
{
    return errout(RC_SYNTAX, "option %s() incorrectly specified\n", o.name.c_str());
}

// A level is written into headings, so it takes the short text: 99.9 and no further digits.
void number_text(const synoption &o, double z, char (&num)[32])
{
    if (o.type == SO_CILEVEL)
        fmtnumtrim(num, sizeof num, z, "%9.0g");
    else
        mac_numtext(z, num);
}

int32_t store_number(const synoption &o, const str &arg)
{
    double z;
    char num[32];
    bool whole = o.type == SO_INTEGER;
    if (cnvstoz(arg.c_str(), &z) || (whole && (ovismissing(z) || z != std::trunc(z))))
        return wrong(o);
    if (o.type == SO_CILEVEL && (z < 10 || z > 99.99))
        return errout(RC_SYNTAX, "level() must be between 10 and 99.99 inclusive\n");
    number_text(o, z, num);
    return set_local(o.local, num);
}

int32_t store_option(const synoption &o, const str &arg, const str &whole)
{
    str out, types;
    int32_t rc;
    switch (o.type) {
    case SO_INTEGER:
    case SO_REAL:
    case SO_CILEVEL:
        return store_number(o, trim(arg));
    case SO_STRING:
        return set_local(o.local, unquoted(trim(arg)));
    case SO_ASIS:
        return set_local(o.local, arg);
    case SO_PASSTHRU:
        return set_local(o.local, whole);
    case SO_NUMLIST:
        if (trim(arg).empty())
            return errornumlist(122);
        rc = numcheck_text(trim(arg).c_str(), o.args.c_str(), &out);
        return rc ? rc : set_local(o.local, out);
    case SO_EXP: {
        str copy(arg);
        toktype ti;
        ti_settok(&ti, copy.data());
        rc = expression(&ti, W_ANY, false, &out);
        return rc ? rc : set_local(o.local, out);
    }
    default:
        if (trim(arg).empty())
            return wrong(o);
        rc = names_of(o.kind, o.list, trim(arg), &out, &types);
        return rc ? rc : set_local(o.local, out);
    }
}

int32_t claim(const synpattern &p, const str &name, std::vector<bool> *seen)
{
    int32_t hit = -1;
    for (size_t i = 0; i < p.options.size(); i++) {
        const synoption &o = p.options[i];
        if ((*seen)[i] || name.size() < o.min || o.name.compare(0, name.size(), name) != 0)
            continue;
        if (name.size() == o.name.size())
            return int32_t(i);  // a whole name goes before an abbreviation
        if (hit < 0)
            hit = int32_t(i);
    }
    return hit;
}

int32_t one_option(const synpattern &p, const str &name, const str *arg, std::vector<bool> *seen,
                   str *others)
{
    int32_t i = claim(p, name, seen);
    const synoption *o = i < 0 ? nullptr : &p.options[size_t(i)];
    bool flag = o && (o->type == SO_ON || o->type == SO_OFF);
    if (!o || (flag && arg)) {
        if (!p.star || (o && arg))
            return errout(RC_SYNTAX, "option %s%s not allowed\n", name.c_str(), arg ? "()" : "");
        *others += (others->empty() ? "" : " ") + name + (arg ? "(" + *arg + ")" : "");
        return others->size() >= size_t(macrolen) ? errout(RC_SYNTAX, "options too long\n") : 0;
    }
    (*seen)[size_t(i)] = true;
    if (flag)
        return set_local(o->local, o->name);
    if (!arg)
        return errout(RC_SYNTAX, "option %s() incorrectly specified\n", o->name.c_str());
    return store_option(*o, *arg, o->name + "(" + *arg + ")");
}

int32_t read_options(const synpattern &p, const char *at, std::vector<bool> *seen, str *others)
{
    while (*at) {
        while (*at == ' ')
            at++;
        if (!*at)
            break;
        const char *b = at;
        at += strcspn(at, " (,\"`");
        str name(b, at);
        if (name.empty())
            return errout(RC_SYNTAX, "invalid '%.1s'\n", at);
        const char *q = at + strspn(at, " ");
        str arg;
        bool has = *q == '(';
        if (has) {
            const char *end = syn_closeparen(q);
            if (!end)
                return required(")");
            arg = str(q + 1, end - 1);
            at = end;
        }
        int32_t rc = one_option(p, name, has ? &arg : nullptr, seen, others);
        if (rc)
            return rc;
    }
    return 0;
}

int32_t options(const synpattern &p, const typed &t)
{
    std::vector<bool> seen(p.options.size());
    str others;
    int32_t rc = 0;
    if (t.options) {
        if (!p.hasoptions && *trim(t.options).c_str())
            return notalow("options");
        rc = read_options(p, t.options, &seen, &others);
    }
    for (size_t i = 0; i < seen.size() && !rc; i++) {
        const synoption &o = p.options[i];
        if (seen[i])
            continue;
        if (o.required)
            return required(("option " + o.name + (o.type == SO_ON || o.type == SO_OFF ? "" : "()"))
                                .c_str());
        char num[32];
        if (o.hasdefault || o.type == SO_CILEVEL) {
            number_text(o, o.hasdefault ? o.dflt : set_level, num);
            rc = set_local(o.local, num);
        }
    }
    if (!rc && p.star)
        rc = set_local("options", others);
    return rc;
}

void clear_locals(const synpattern &p)
{
    for (const char *name : {"_varlist", "_namelist", "_typlist", "_anything", "_if", "_in",
                             "_using", "_exp", "_weight", "_options"})
        macerase(name);
    if (!p.list.local.empty())
        macerase(("_" + p.list.local.substr(0, 31)).c_str());
    for (const synoption &o : p.options)
        macerase(("_" + o.local).c_str());
}

}  // namespace

int32_t ovsyntax(int32_t)
{
    synpattern p;
    int32_t rc = syn_read(ti_wheretok(tokinfo), &p);
    if (rc)
        return rc;
    const char *given = macptr("_0");
    str text(given ? given : "");
    typed t;
    clear_locals(p);
    if ((rc = read_typed(text, p, &t)) || (rc = store_clauses(p, t)))
        return rc;
    return options(p, t);
}

// args: names for the words of the call.
int32_t ovargs(int32_t)
{
    char name[64] = "_", from[16] = "_";
    for (int32_t i = 1; *ti_gettok(tokinfo, prsestd); i++) {
        size_t n = strnlen(tokinfo->token, 60);
        memcpy(name + 1, tokinfo->token, n);
        name[n + 1] = 0;
        if (!mac_goodname(name, n + 1))
            return invalid(tok_text(tokinfo->token));
        *std::to_chars(from + 1, from + 15, i).ptr = 0;
        const char *v = macptr(from);
        int32_t rc = macresave(name, v ? v : "");
        if (rc)
            return rc;
    }
    return 0;
}
