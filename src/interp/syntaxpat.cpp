#include "interp/syntaxpat.h"
#include "core/numtext.h"
#include "core/rc.h"
#include "interp/messages.h"
#include "interp/numcheck.h"
#include "interp/tokens.h"
#include <cctype>
#include <cstring>

using str = std::string;

const char *syn_closeparen(const char *p)
{
    int32_t depth = 0;
    bool open;
    while (*p) {
        if (p[0] == '`' && p[1] == '"')
            p = pcompoundquotes(const_cast<char *>(p), &open);
        else if (*p == '"')
            p = psimplequotes(const_cast<char *>(p), &open);
        else {
            depth += (*p == '(') - (*p == ')');
            p++;
            if (!depth)
                return p;
        }
    }
    return nullptr;
}

const char *syn_weightword(const str &word)
{
    static const char *const words[] = {"fweight", "aweight", "pweight", "iweight"};
    for (const char *w : words)
        if (word.size() >= 2 && !strncmp(w, word.c_str(), word.size()) && word.size() <= 7)
            return w;
    static const str any = "weight";
    return !word.empty() && any.compare(0, word.size(), word) == 0 ? "weight" : nullptr;
}

namespace {

struct reader {
    const char *p;

    void blanks()
    {
        while (*p == ' ')
            p++;
    }
    str word()
    {
        blanks();
        const char *b = p;
        while (isalnum(uint8_t(*p)) || *p == '_')
            p++;
        return str(b, p);
    }
    // The inside of the parentheses that stand here; none leaves out alone.
    int32_t parens(str *out, bool *has)
    {
        *has = *p == '(';
        if (!*has)
            return 0;
        const char *end = syn_closeparen(p);
        if (!end)
            return required(")");
        *out = str(p + 1, end - 1);
        p = end;
        return 0;
    }
};

int32_t bad() { return error(RC_SYNTAX); }

synkind kind_of(const str &w)
{
    static const struct {
        const char *word;
        synkind kind;
    } rows[] = {{"varlist", SY_VARLIST},       {"varname", SY_VARNAME},
                {"newvarlist", SY_NEWVARLIST}, {"newvarname", SY_NEWVARNAME},
                {"newvar", SY_NEWVARNAME},     {"namelist", SY_NAMELIST},
                {"name", SY_NAME},             {"anything", SY_ANYTHING}};
    for (const auto &r : rows)
        if (w == r.word)
            return r.kind;
    return SY_NONE;
}

int32_t main_part(reader *r, synkind kind, bool optional, synpattern *p)
{
    if (p->kind != SY_NONE)
        return bad();
    p->kind = kind;
    p->required = !optional;
    str args;
    bool has;
    int32_t rc = r->parens(&args, &has);
    return rc || !has ? rc : syn_readlist(args, &p->list);
}

bool slash(reader *r)
{
    if (*r->p != '/')
        return false;
    r->p++;
    return true;
}

// One word before the comma.
int32_t element(reader *r, bool optional, synpattern *p)
{
    uint8_t need = optional ? SC_OPTIONAL : SC_REQUIRED;
    if (*r->p == '=') {
        r->p++;
        p->expbare = slash(r);
        p->exp = need;
        return r->word() == "exp" ? 0 : bad();
    }
    str w = r->word();
    synkind kind = kind_of(w);
    if (kind != SY_NONE)
        return main_part(r, kind, optional, p);
    if ((w == "if" && p->if_) || (w == "in" && p->in) || (w == "using" && p->using_))
        return bad();
    if (w == "if") {
        p->if_ = need;
        p->ifbare = slash(r);
    } else if (w == "in") {
        p->in = need;
        p->inbare = slash(r);
    } else if (w == "using") {
        p->using_ = need;
        p->usingbare = slash(r);
    } else {
        const char *wt = w.empty() ? nullptr : syn_weightword(w);
        if (!wt || !strcmp(wt, "weight"))
            return bad();
        p->weights.emplace_back(wt);
        p->weight = need;
        p->expbare = slash(r) || p->expbare;
    }
    return 0;
}

// Type of an option's argument, from the text in its parentheses.
int32_t option_type(const str &text, synoption *o)
{
    reader r = {text.c_str()};
    str w = r.word();
    r.blanks();
    str rest = r.p;
    while (!rest.empty() && rest.back() == ' ')
        rest.pop_back();
    if (w == "integer" || w == "real") {
        o->type = w == "real" ? SO_REAL : SO_INTEGER;
        if (rest.empty())
            return 0;
        o->hasdefault = true;
        return cnvstoz(rest.c_str(), &o->dflt) ? bad() : 0;
    }
    if (w == "cilevel")
        o->type = SO_CILEVEL;
    else if (w == "string")
        o->type = rest == "asis" ? SO_ASIS : SO_STRING;
    else if (w == "asis")
        o->type = SO_ASIS;
    else if (w == "passthru")
        o->type = SO_PASSTHRU;
    else if (w == "exp")
        o->type = SO_EXP;
    else if (w == "numlist") {
        o->type = SO_NUMLIST;
        o->args = rest;
        return numcheck_opts(rest.c_str());
    } else if ((o->kind = kind_of(w)) != SY_NONE && o->kind != SY_ANYTHING) {
        o->type = SO_LIST;
        return syn_readlist(rest, &o->list);
    } else
        return bad();
    return 0;
}

int32_t option(reader *r, bool optional, synpattern *p)
{
    synoption o;
    str w = r->word();
    if (w.empty())
        return bad();
    str args;
    bool has;
    int32_t rc = r->parens(&args, &has);
    if (rc || (has && (rc = option_type(args, &o))))
        return rc;
    size_t caps = 0;
    bool off = !has && w.size() > 2 && !w.compare(0, 2, "no") && isupper(uint8_t(w[2]));
    size_t from = off ? 2 : 0;
    while (from + caps < w.size() && !islower(uint8_t(w[from + caps])))
        caps++;
    for (char c : w)
        o.name += char(tolower(uint8_t(c)));
    if (off)
        o.type = SO_OFF;
    o.min = from + (caps ? caps : w.size() - from);
    o.local = o.name.substr(from, 31);
    o.required = !optional && !o.hasdefault;
    p->options.push_back(o);
    return 0;
}

int32_t options(reader *r, synpattern *p)
{
    bool optional = false;
    p->hasoptions = true;
    for (;;) {
        r->blanks();
        if (!*r->p)
            return optional ? bad() : 0;
        if (*r->p == '[' || *r->p == ']') {
            if (optional == (*r->p == '['))
                return bad();
            optional = !optional;
            r->p++;
        } else if (*r->p == '*') {
            p->star = true;
            r->p++;
        } else if (int32_t rc = option(r, optional, p))
            return rc;
    }
}

}  // namespace

int32_t syn_readlist(const str &text, synlist *l)
{
    reader r = {text.c_str()};
    for (;;) {
        r.blanks();
        if (!*r.p)
            return 0;
        str w = r.word(), value;
        if (w.empty())
            return bad();
        r.blanks();
        if (*r.p == '=') {
            r.p++;
            r.blanks();
            const char *b = r.p;
            bool open;
            if (*r.p == '"' || *r.p == '`') {
                r.p = *r.p == '"' ? psimplequotes(const_cast<char *>(r.p), &open)
                                  : pcompoundquotes(const_cast<char *>(r.p), &open);
                size_t cut = *b == '"' ? 1 : 2;
                value = r.p >= b + 2 * cut ? str(b + cut, r.p - cut) : "";
            } else {
                while (*r.p && *r.p != ' ')
                    r.p++;
                value = str(b, r.p);
            }
        }
        if (w == "min" || w == "max") {
            if (cnvstoint4(value.c_str(), w == "min" ? &l->min : &l->max))
                return bad();
        } else if (w == "numeric")
            l->numeric = true;
        else if (w == "string")
            l->string = true;
        else if (w == "default") {
            if (value != "none" && value != "empty" && value != "all")
                return bad();
            l->defgiven = true;
            l->defnone = value != "all";
        } else if (w == "equalok")
            l->equalok = true;
        else if (w == "everything")
            l->everything = true;
        else if (w == "name")
            l->local = value;
        else if (w == "id")
            l->id = value;
        else if (w == "ts")
            l->ts = true;
        else if (w == "fv" || w == "fvanova")
            l->fv = true;
        else if (w != "local" && w != "opt" && w != "empty" && w != "none" && w != "all" && w != "required")
            return bad();
    }
}

int32_t syn_read(const char *text, synpattern *p)
{
    reader r = {text};
    bool optional = false;
    for (;;) {
        r.blanks();
        if (!*r.p || *r.p == ',')
            break;
        if (*r.p == '[' || *r.p == ']') {
            if (optional == (*r.p == '['))
                return bad();
            optional = !optional;
            r.p++;
            // The comma of optional options stands inside their brackets.
            r.blanks();
            if (optional && *r.p == ',') {
                str rest(r.p + 1);
                size_t end = rest.rfind(']');
                if (end == str::npos)
                    return bad();
                str inside = "[" + rest.substr(0, end) + "]" + rest.substr(end + 1);
                reader sub = {inside.c_str()};
                return options(&sub, p);
            }
        } else if (int32_t rc = element(&r, optional, p))
            return rc;
    }
    if (optional)
        return bad();
    if (*r.p == ',') {
        r.p++;
        return options(&r, p);
    }
    return 0;
}
