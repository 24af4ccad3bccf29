// What stands behind ":" in a definition of a macro: one row a keyword.
#include "core/files.h"
#include "core/numtext.h"
#include "core/rc.h"
#include "core/regexp.h"
#include "core/settings.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/labels.h"
#include "data/umat.h"
#include "data/variables.h"
#include "expr/expr.h"
#include "expr/strfun.h"
#include "interp/dm.h"
#include "interp/interp.h"
#include "interp/macros.h"
#include "interp/messages.h"
#include "interp/programs.h"
#include "output/fmt.h"
#include "output/log.h"
#include "output/oml.h"
#include "output/print.h"
#include "stats/results.h"
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <string>
#include <vector>

using str = std::string;

// ---- reading

static const char *rest()
{
    const char *p = ti_wheretok(tokinfo);
    while (*p == ' ')
        p++;
    return p;
}

// The rest of the line, blanks and one enclosing pair of quotes taken off.
static int32_t rest_text(str *out)
{
    str s(rest());
    while (!s.empty() && s.back() == ' ')
        s.pop_back();
    char *p = s.data();
    size_t n = s.size();
    int32_t rc = mac_unquote(&p, &n);
    if (!rc)
        *out = str(p, n);
    return rc;
}

// The next blank-delimited or quoted word; false at the end.
static bool next_item(str *out)
{
    char buf[macrolen];
    const char *next = mac_item(ti_wheretok(tokinfo), buf, macrolen, nullptr);
    if (!next)
        return false;
    ti_settok(tokinfo, ti_wheretok(tokinfo) + (next - ti_wheretok(tokinfo)));
    *out = buf;
    return true;
}

static str next_tok() { return ti_gettok(tokinfo, prsestd); }
static int32_t at_end() { return *ti_gettok(tokinfo, prsestd) ? error(RC_SYNTAX) : 0; }

// "local NAME" or "global NAME": the store's name of the macro.
static int32_t macref(str *name)
{
    str kind = next_tok(), n = next_tok();
    if (kind != "local" && kind != "global")
        return error(RC_SYNTAX);
    *name = (kind == "local" ? "_" : "") + n;
    if (n.empty() || !mac_goodname(name->c_str(), name->size()))
        return n.empty() ? error(RC_SYNTAX) : invalid(tok_text(n.c_str()));
    return 0;
}

static bool peek_macref()
{
    const char *p = rest();
    for (const char *w : {"local ", "global "})
        if (!strncmp(p, w, strlen(w)))
            return true;
    return false;
}

static int32_t variable(int32_t *var)
{
    str name = next_tok();
    if (name.empty())
        return error(RC_SYNTAX);
    *var = findtyped(name.c_str(), false);
    return *var < 0 ? -*var : 0;
}

static str joined(const std::vector<str> &v)
{
    str s;
    for (const str &w : v) {
        bool q = w.empty() || w.find(' ') != str::npos;
        s += (s.empty() ? "" : " ") + (q ? '"' + w + '"' : w);
    }
    return s;
}

// ---- words and text

static int32_t f_word(str *out)
{
    str which = ti_gettok(tokinfo, prsenum);
    int32_t n = 0;
    if (which == "count") {
        char buf[macrolen];
        for (const char *p = rest(); (p = mac_item(p, buf, macrolen, nullptr));)
            n++;
        *out = std::to_string(n);
        return 0;
    }
    if (cnvstoint4(which.c_str(), &n))
        return error(RC_SYNTAX);
    str of = next_tok();
    if (of != "of")
        return error(RC_SYNTAX);
    if (n < 0) {  // from the end
        char buf[macrolen];
        int32_t k = 0;
        for (const char *p = rest(); (p = mac_item(p, buf, macrolen, nullptr));)
            k++;
        n = k + 1 + n;
    }
    while (n-- > 0)
        if (!next_item(out)) {
            out->clear();
            return 0;
        }
    return 0;
}

static int32_t f_copy(str *out)
{
    str name;
    int32_t rc = macref(&name);
    if (rc || (rc = at_end()))
        return rc;
    if (const char *p = macptr(name.c_str()))
        *out = p;
    return 0;
}

static int32_t text_or_macro(str *out)
{
    return peek_macref() ? f_copy(out) : rest_text(out);
}

static int32_t f_length(str *out)
{
    str s;
    int32_t rc = text_or_macro(&s);
    *out = std::to_string(s.size());
    return rc;
}

static int32_t f__length(str *out)
{
    str s;
    int32_t rc = rest_text(&s);
    *out = std::to_string(s.size());
    return rc;
}

static int32_t f_omcllength(str *out)
{
    str s;
    int32_t rc = text_or_macro(&s);
    *out = std::to_string(lenofomcl(s.c_str()));
    return rc;
}

struct subst {
    bool all, word;
    double limit;    // count(#), misval when not given
    str counter;     // count(local|global name)
};

static int32_t subst_options(subst *o)
{
    str tok = next_tok();
    if (tok.empty())
        return 0;
    if (tok != ",")
        return error(RC_SYNTAX);
    while (!(tok = next_tok()).empty()) {
        if (tok == "all")
            o->all = true;
        else if (tok == "word")
            o->word = true;
        else if (tok == "count") {
            if (next_tok() != "(")
                return error(RC_SYNTAX);
            if (peek_macref()) {
                int32_t rc = macref(&o->counter);
                if (rc)
                    return rc;
            } else if (cnvstoz(ti_gettok(tokinfo, prsenum), &o->limit) || o->limit < 0)
                return invalid(tokinfo->token);
            if (ti_gtokis(tokinfo, ')'))
                return RC_SYNTAX;
        } else
            return error(RC_SYNTAX);
    }
    if (o->limit == 0) {
        spout21at(1, "Setting count to zero prevents all ");
        spout21at(1, "substitutions.  Original string will");
        spout21at(1, " be returned.");
        spout21at(1, "\n");
    }
    return 0;
}

static int32_t f_subinstr(str *out)
{
    str text, from, to;
    if (peek_macref()) {
        str name;
        int32_t rc = macref(&name);
        if (rc)
            return rc;
        if (const char *p = macptr(name.c_str()))
            text = p;
    } else if (!next_item(&text))
        return error(RC_SYNTAX);
    // Quoted texts are short of nothing: they may hold commas and blanks.
    const char *p = rest();
    if (*p != '"' && *p != '`')
        return error(RC_SYNTAX);
    next_item(&from);
    p = rest();
    if ((*p != '"' && *p != '`') || !next_item(&to))
        return error(RC_SYNTAX);
    subst o = {false, false, misval, ""};
    int32_t rc = subst_options(&o);
    if (rc)
        return rc;
    double limit = o.limit < misval ? o.limit : o.all ? 1e9 : 1, done = 0;
    size_t at = 0;
    while (!from.empty() && done < limit) {
        size_t hit = text.find(from, at);
        if (hit == str::npos)
            break;
        size_t end = hit + from.size();
        if (o.word && ((hit > 0 && text[hit - 1] != ' ') ||
                       (end < text.size() && text[end] != ' '))) {
            out->append(text, at, hit + 1 - at);
            at = hit + 1;
            continue;
        }
        out->append(text, at, hit - at);
        *out += to;
        at = end;
        done++;
        if (out->size() > size_t(macrolen))
            break;
    }
    out->append(text, at);
    return o.counter.empty() ? 0 : macresave(o.counter.c_str(), std::to_string(int64_t(done)).c_str());
}

// ---- regular expressions

static int32_t f_regexmatch(str *out)
{
    str text, pattern;
    if (!next_item(&text) || !next_item(&pattern))
        return error(RC_SYNTAX);
    char why[256] = "";
    int32_t r = regx_match(text.c_str(), pattern.c_str(), why, sizeof why);
    if (r < 0)
        spout21fat(3, "regexp: %s\n", why);
    *out = r > 0 ? "1" : "0";
    return at_end();
}

static int32_t f_regexreplace(str *out)
{
    str text, pattern, to;
    if (!next_item(&text) || !next_item(&pattern) || !next_item(&to))
        return error(RC_SYNTAX);
    char buf[macrolen];
    regx_replace(text.c_str(), pattern.c_str(), to.c_str(), buf, macrolen - 1);
    *out = buf;
    return at_end();
}

static int32_t f_regexsubexp(str *out)
{
    int32_t n;
    if (cnvstoint4(ti_gettok(tokinfo, prsenum), &n))
        return error(RC_SYNTAX);
    char buf[macrolen];
    int32_t r = n < 0 ? (regx_nsub() < 0 ? 1 : 2) : regx_sub(n, buf, macrolen - 1);
    if (r == 1)
        return errout(RC_SYNTAX, "a regular expression match function must be "
                                 "executed prior to retrieving a subexpression\n");
    if (r == 2)
        return errout(RC_SYNTAX, "subexpression out of range\n");
    *out = buf;
    return at_end();
}

// ---- the dataset

static int32_t f_type(str *out)
{
    int32_t var, rc = variable(&var);
    char buf[16];
    if (rc || (rc = at_end()))
        return rc;
    *out = type_word(_typlist[var - 1], buf);
    return 0;
}

static int32_t f_format(str *out)
{
    int32_t var, rc = variable(&var);
    if (rc || (rc = at_end()))
        return rc;
    *out = _fmtlist[var - 1];
    return 0;
}

static int32_t f_sortedby(str *out)
{
    for (int32_t i = 0; _srtlist && i < _i_Kvar && _srtlist[i] > 0; i++)
        *out += (i ? " " : "") + str(_varlist[_srtlist[i] - 1]);
    return at_end();
}

static int32_t f_variable(str *out)
{
    int32_t var;
    if (next_tok() != "label")
        return error(RC_SYNTAX);
    int32_t rc = variable(&var);
    if (rc || (rc = at_end()))
        return rc;
    char buf[81];
    getvarlab(var, buf);
    *out = buf;
    return 0;
}

static int32_t f_value(str *out)
{
    int32_t var;
    if (next_tok() != "label")
        return error(RC_SYNTAX);
    int32_t rc = variable(&var);
    if (rc || (rc = at_end()))
        return rc;
    *out = _lbllist[var - 1];
    return 0;
}

static int32_t f_data(str *out)
{
    if (next_tok() != "label")
        return error(RC_SYNTAX);
    *out = datalbl;
    return at_end();
}

// label NAME|(variable) # [#] [, strict]   label NAME|(variable) maxlength
static int32_t f_label(str *out)
{
    str name = next_tok();
    if (name == "(") {
        int32_t var, rc = variable(&var);
        if (rc || (rc = ti_gtokis(tokinfo, ')')))
            return rc;
        name = _lbllist[var - 1];
    } else if (name.empty())
        return error(RC_SYNTAX);
    const vltable *t = name.empty() ? nullptr : vlfind(name.c_str());
    str tok = ti_gettok(tokinfo, prsenum);
    if (tok == "maxlength") {
        *out = std::to_string(t ? vlmaxlen(t) : 0);
        return at_end();
    }
    double z;
    int32_t cut = vl_maxtext;
    if (cnvstoz(tok.c_str(), &z))
        return invalid(tok.c_str());
    str shown = tok;
    tok = ti_gettok(tokinfo, prsenum);
    if (!tok.empty() && tok != ",") {
        if (cnvstoint4(tok.c_str(), &cut) || cut < 1)
            return invalid(tok.c_str());
        tok = next_tok();
    }
    bool strict = false;
    if (tok == ",") {
        tok = next_tok();
        strict = tok == "strict";
        if (!strict && !tok.empty())
            return error(RC_SYNTAX);
    } else if (!tok.empty())
        return error(RC_SYNTAX);
    str text(size_t(vl_maxtext) + 1, '\0');
    if (t && vlfindval(t, z, text.data(), vl_maxtext) >= 0)
        *out = text.c_str();
    else if (!strict)
        *out = shown;
    if (out->size() > size_t(cut))
        out->resize(size_t(cut));
    return at_end();
}

static int32_t f_char(str *out)
{
    str owner = next_tok(), name;
    if (owner != "_dta") {
        int32_t var = findtyped(owner.c_str(), false);
        if (var < 0)
            return -var;
        owner = _varlist[var - 1];
    }
    int32_t rc = ti_gtokis(tokinfo, '[');
    if (rc)
        return rc;
    name = next_tok();
    if (name != "]") {
        if ((rc = ti_gtokis(tokinfo, ']')) || (rc = at_end()))
            return rc;
        if (const char *text = charfind(owner.c_str(), name.c_str(), nullptr))
            *out = text;
        return 0;
    }
    char whose[33], cname[33];
    const char *text;
    std::vector<str> names;
    for (const void *at = nullptr; (at = charnext(at, whose, cname, &text));)
        if (owner == whose)
            names.emplace_back(cname);
    *out = joined(names);
    return at_end();
}

// A variable name near the one asked for that is not taken.
static int32_t f_permname(str *out)
{
    str base = next_tok(), tok = next_tok();
    int32_t len = namelen;
    if (base.empty() || !mac_goodname(base.c_str(), base.size()))
        return base.empty() ? error(RC_SYNTAX) : invalid(base.c_str());
    if (tok == ",") {
        if (next_tok() != "length" || next_tok() != "(" ||
            cnvstoint4(ti_gettok(tokinfo, prsenum), &len) || len < 1 || len > namelen ||
            next_tok() != ")")
            return error(RC_SYNTAX);
    } else if (!tok.empty())
        return error(RC_SYNTAX);
    *out = base.substr(0, size_t(len));
    for (int32_t i = 1; sysfindvar(out->c_str()); i++) {
        str digits = std::to_string(i);
        if (digits.size() >= size_t(len))
            return error2(3, base.c_str());
        *out = base.substr(0, size_t(len) - digits.size()) + digits;
    }
    return at_end();
}

// ---- matrices

enum { SN_ROW = 1, SN_NAME = 2, SN_EQ = 4 };

static int32_t stripe(str *out, int32_t what)
{
    str name = next_tok();
    matref m;
    matkind kind = MK_MAT;
    if ((name == "e" || name == "r" || name == "return") && ti_peektok_chr(tokinfo) == '(') {
        kind = name == "e" ? MK_E : name == "r" ? MK_R : MK_RETURN;
        next_tok();
        name = next_tok();
        int32_t rc = ti_gtokis(tokinfo, ')');
        if (rc)
            return rc;
        const char *special = kind == MK_E ? find_e_of_specialname(name.c_str()) : nullptr;
        if (special)
            name = special;
    }
    if (!umat_get(name.c_str(), kind, &m))
        return matnotfound(name.c_str());
    const umatname *s = what & SN_ROW ? m.row : m.col;
    int32_t n = what & SN_ROW ? m.m->rows : m.m->cols;
    std::vector<str> names;
    for (int32_t i = 0; i < n; i++) {
        bool eq = s[i].eq[0] && strcmp(s[i].eq, "_");
        str one;
        if ((what & SN_EQ) && !(what & SN_NAME))
            one = s[i].eq[0] ? s[i].eq : "_";
        else
            one = ((what & SN_EQ) && eq ? str(s[i].eq) + ":" : str()) + s[i].name;
        names.push_back(one);
    }
    *out = joined(names);
    return at_end();
}
static int32_t f_rownames(str *out) { return stripe(out, SN_ROW | SN_NAME); }
static int32_t f_colnames(str *out) { return stripe(out, SN_NAME); }
static int32_t f_roweq(str *out) { return stripe(out, SN_ROW | SN_EQ); }
static int32_t f_coleq(str *out) { return stripe(out, SN_EQ); }
static int32_t f_rowfullnames(str *out) { return stripe(out, SN_ROW | SN_NAME | SN_EQ); }
static int32_t f_colfullnames(str *out) { return stripe(out, SN_NAME | SN_EQ); }

// ---- what exists

static int32_t names_of(str *out, int32_t type, const str &pattern, int32_t aux)
{
    std::vector<str> names;
    char name[33];
    void *p = nullptr;
    while ((p = dmnext(p, name, type, nullptr)))
        if ((aux < 0 || dm_rec(p)->aux == aux) && !mac_hidden(name) &&
            str_match(name, pattern.c_str()) != 0)
            names.emplace_back(name);
    std::sort(names.begin(), names.end());
    *out = joined(names);
    return 0;
}

// all globals|scalars|matrices [pattern]   all numeric|string scalars [pattern]
static int32_t f_all(str *out)
{
    str what = next_tok(), pattern;
    int32_t aux = -1;
    if (what == "numeric" || what == "string") {
        aux = what == "string";
        what = next_tok();
        if (what != "scalars")
            return error(RC_SYNTAX);
    }
    int32_t type = what == "globals"    ? DM_GLOBAL
                   : what == "scalars"  ? DM_SCALAR
                   : what == "matrices" ? DM_MATRIX
                                        : -1;
    if (type < 0)
        return error(RC_SYNTAX);
    if (!next_item(&pattern))
        pattern = "*";
    return names_of(out, type, pattern, aux);
}

// e(scalars) and kin.
static int32_t stored_names(str *out, int32_t kind)
{
    int32_t rc = ti_gtokis(tokinfo, '(');
    if (rc)
        return rc;
    str what = next_tok();
    if ((rc = ti_gtokis(tokinfo, ')')) || (rc = at_end()))
        return rc;
    int32_t k = what == "scalars"    ? DM_SCALAR
                : what == "macros"   ? DM_LOCAL
                : what == "matrices" ? DM_MATRIX
                                     : 0;
    if (!k)
        return what == "functions" ? retval_names(kind, 0, out) : error(RC_SYNTAX);
    return retval_names(kind, k, out);
}
static int32_t f_e(str *out) { return stored_names(out, RK_E); }
static int32_t f_r(str *out) { return stored_names(out, RK_R); }
static int32_t f_s(str *out) { return stored_names(out, RK_S); }

static int32_t f_constraint(str *out)
{
    str which = next_tok();
    if (which == "dir")
        return names_of(out, DM_CONSTRAINT, "*", -1);
    int32_t n;
    if (cnvstoint4(which.c_str(), &n) || n < 1)
        return error(RC_SYNTAX);
    if (const void *p = dmfind0(which.c_str(), DM_CONSTRAINT))
        *out = static_cast<const char *>(p);
    return at_end();
}

static int32_t f_properties(str *out)
{
    str name = next_tok();
    if (name.empty())
        return error(RC_SYNTAX);
    if (findbuiltin(name.c_str()))
        return at_end();
    auto p = static_cast<const pgmrec *>(pgm_load(name.c_str()));
    if (!p)
        return errout(RC_NOTFOUND, "%s not found\n", name.c_str());
    *out = p->properties;
    return at_end();
}

// ---- the surroundings

static int32_t f_environment(str *out)
{
    str name;
    if (!next_item(&name))
        return error(RC_SYNTAX);
    if (const char *v = getenv(name.c_str()))
        *out = v;
    return 0;
}

static int32_t f_sysdir(str *out)
{
    str word;
    if (!next_item(&word))
        return error(RC_SYNTAX);
    const char *dir = sysdir_of(word.c_str());
    *out = dir ? dir : word;
    return 0;
}

static int32_t f_adosubdir(str *out)
{
    str name;
    if (!next_item(&name))
        return error(RC_SYNTAX);
    if (!name.empty())
        *out = name[0] >= 'A' && name[0] <= 'Z' ? char(name[0] + 32) : name[0];
    return 0;
}

static int32_t f_set(str *out)
{
    str name = next_tok();
    char buf[macrolen];
    if (name.empty())
        return error(RC_SYNTAX);
    const setting *s = setting_find(name.c_str());
    if (cfcnstr(s ? s->name : name.c_str(), buf))
        *out = buf;
    return at_end();
}

static int32_t f_log(str *out)
{
    str name = next_tok();
    if (const logrow *l = log_find(name.c_str()))
        *out = l->path;
    return at_end();
}

static int32_t f_tempvar(str *out)
{
    char buf[16];
    mktmpvn(buf);
    *out = buf;
    return at_end();
}

static int32_t f_tempfile(str *out)
{
    *out = mktmpfn();
    return at_end();
}

static int32_t f_serset(str *out)
{
    out->clear();
    return 0;
}

// dir DIRECTORY files|dirs|other [PATTERN] [, nofail]
static int32_t f_dir(str *out)
{
    str where, what, pattern = "*", tok;
    if (!next_item(&where))
        return error(RC_SYNTAX);
    what = next_tok();
    int32_t kind = what == "files" ? 0 : what == "dirs" ? 1 : what == "other" ? 2 : -1;
    if (kind < 0)
        return error(RC_SYNTAX);
    if (*rest() && *rest() != ',')
        next_item(&pattern);
    bool nofail = next_tok() == "," && next_tok() == "nofail";
    str base = path_expand(where);
    DIR *d = opendir(base.c_str());
    if (!d)
        return errout(RC_FILENOTFOUND, "directory %s not found\n", where.c_str());
    std::vector<str> names;
    while (dirent *e = readdir(d)) {
        str full = path_join(base, e->d_name);
        int32_t is = path_isdir(full) ? 1 : path_isfile(full) ? 0 : 2;
        if (is == kind && strcmp(e->d_name, ".") && strcmp(e->d_name, "..") &&
            str_match(e->d_name, pattern.c_str()) != 0)
            names.push_back('"' + str(e->d_name) + '"');
    }
    closedir(d);
    std::sort(names.begin(), names.end());
    for (const str &n : names)
        *out += (out->empty() ? "" : " ") + n;
    if (out->size() >= size_t(macrolen) && !nofail)
        return errout(RC_SYNTAX, "too many filenames\n");
    return 0;
}

int32_t (*mac_displaytext)(str *result);

// display's items
static int32_t f_display(str *out)
{
    return mac_displaytext ? mac_displaytext(out) : error(RC_SYNTAX);
}

struct exrow {
    const char *word;
    int32_t (*fcn)(str *out);
};
static const exrow rows[] = {
    {"value", f_value},           {"label", f_label},
    {"variable", f_variable},     {"data", f_data},
    {"environment", f_environment}, {"env", f_environment},
    {"tempvar", f_tempvar},       {"tempname", f_tempvar},
    {"tempfile", f_tempfile},     {"rownames", f_rownames},
    {"colnames", f_colnames},     {"roweq", f_roweq},
    {"coleq", f_coleq},           {"rowfullnames", f_rowfullnames},
    {"colfullnames", f_colfullnames}, {"sortedby", f_sortedby},
    {"word", f_word},             {"char", f_char},
    {"regexmatch", f_regexmatch}, {"regexreplace", f_regexreplace},
    {"regexsubexp", f_regexsubexp}, {"set", f_set},
    {"log", f_log},               {"subinstr", f_subinstr},
    {"sysdir", f_sysdir},         {"adosubdir", f_adosubdir},
    {"_length", f__length},       {"length", f_length},
    {"strlen", f_length},         {"omcllength", f_omcllength},
    {"graphomcllength", f_omcllength}, {"properties", f_properties},
    {"serset", f_serset},         {"permname", f_permname},
    {"constraint", f_constraint}, {"all", f_all},
    {"copy", f_copy},             {"list", ti_maclistfcn},
    {"type", f_type},             {"format", f_format},
    {"dir", f_dir},               {"display", f_display},
    {"di", f_display},            {"e", f_e},
    {"r", f_r},                   {"s", f_s},
};

int32_t macexfcn(str *result)
{
    const char *word = ti_gettok(tokinfo, prsestd);
    for (const exrow &r : rows)
        if (!strcmp(r.word, word))
            return r.fcn(result);
    return error(RC_SYNTAX);
}

int32_t mac_extword(int32_t i, const char **word)
{
    if (i < 0 || i >= int32_t(std::size(rows)))
        return 0;
    *word = rows[i].word;
    return 1;
}
