// Macros, scalars, characteristics and the results that are texts and numbers.
#include "core/limits.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/labels.h"
#include "data/scalars.h"
#include "data/umat.h"
#include "data/variables.h"
#include "expr/expr.h"
#include "expr/strfun.h"
#include "interp/dm.h"
#include "interp/interp.h"
#include "interp/macros.h"
#include "interp/messages.h"
#include "mosa/bihandlers.h"
#include "mosa/ov_names.h"
#include "stats/esample.h"
#include "stats/results.h"
#include <algorithm>
#include <cstring>
#include <vector>

// ---- names

static bool take_parts(const std::string &text, size_t open, ov_name *out)
{
    std::string before = text.substr(0, open);
    out->name = text.substr(open + 1, text.size() - open - 2);
    if (text[open] == '[') {
        out->where = OVN_CHAR;
        out->owner = before;
        return !chksinglename(before.c_str(), true) && !chksinglename(out->name.c_str(), true);
    }
    static const struct {
        const char *word;
        int32_t kind;
    } kinds[] = {{"r", RK_R}, {"e", RK_E}, {"s", RK_S}, {"return", RK_RETURN}, {"c", 0}};
    out->kind = -1;
    for (const auto &k : kinds)
        if (before == k.word)
            out->kind = k.kind;
    out->where = out->kind ? OVN_RESULT : OVN_SYSTEM;
    return out->kind >= 0 && mac_goodname(out->name.c_str(), out->name.size());
}

bool ov_readname(const matobj *m, ov_name *out)
{
    std::string text;
    if (!ov_string(m, &text))
        return false;
    size_t open = text.find_first_of("([");
    if (open != std::string::npos && open > 0 && text.back() == (text[open] == '(' ? ')' : ']'))
        return take_parts(text, open, out) || bi_fail(3300);
    out->name = text;
    return mac_goodname(text.c_str(), text.size()) || bi_fail(3300);
}

static const char *const categories[] = {"visible", "hidden", "historical"};

bool ov_readcategory(int32_t argc, int32_t k, int32_t *cat)
{
    std::string word;
    *cat = 0;
    if (argc < k)
        return true;
    if (!ov_string(bi_arg(argc, k), &word))
        return false;
    word = word.substr(0, word.find('('));
    for (*cat = 0; *cat < 3; ++*cat)
        if (word == categories[*cat])
            return true;
    return bi_fail(3300);
}

const char *ov_categoryword(int32_t cat)
{
    return categories[cat >= 0 && cat < 3 ? cat : 0];
}

namespace
{

// ---- macros

bool text_of(const ov_name &n, std::string *text)
{
    const char *p = nullptr;
    double z;
    char word[512];
    switch (n.where) {
    case OVN_CHAR: p = charfind(n.owner.c_str(), n.name.c_str(), nullptr); break;
    case OVN_SYSTEM:
        if (cfcnstr(n.name.c_str(), word))
            p = word;
        break;
    case OVN_RESULT:
        switch (gretval_find(n.kind, n.name.c_str())) {
        case DM_LOCAL: p = retval_get_strptr(); break;
        case DM_SCALAR:
            z = retval_get_as_double();
            mac_numtext(z, word);
            p = word;
            break;
        default: break;
        }
        break;
    default:
        // A name with a line in front is a local's.
        if (n.name[0] == '_')
            return bi_fail(3300);
        p = macptr(n.name.c_str());
    }
    *text = p ? p : "";
    return true;
}

bool fits(const std::string &text)
{
    return text.size() < size_t(macrolen) || bi_fail(3492);
}

// 0, or a code of the host; false with m_xrc set for what cannot be written at all.
bool put_text(const ov_name &n, const std::string &text, int32_t cat, int32_t *rc)
{
    *rc = 0;
    switch (n.where) {
    case OVN_SYSTEM: return bi_fail(3300);
    case OVN_CHAR:
        if (n.owner != "_dta" && !sysfindvar(n.owner.c_str())) {
            *rc = varnotfound(n.owner.c_str());
            return true;
        }
        *rc = charsave(n.owner.c_str(), n.name.c_str(), text.c_str());
        s_updata = true;
        return true;
    case OVN_RESULT:
        if (!fits(text))
            return false;
        *rc = retval_put_macro(n.kind, n.name.c_str(), text.c_str(), cat);
        return true;
    default:
        if (n.name[0] == '_')
            return bi_fail(3300);
        if (!fits(text))
            return false;
        *rc = macresave(n.name.c_str(), text.c_str());
        return true;
    }
}

// ov_global(name [, text [, category]])
void global(int32_t argc, const char *id, bool code)
{
    m_xeqerrid = id;
    ov_name n;
    std::string text;
    int32_t cat, rc;
    if (!ov_readname(bi_arg(argc, 1), &n))
        return;
    if (argc == 1) {
        if (text_of(n, &text))
            ov_text(argc, text);
        return;
    }
    ov_end end(code, code);
    if (!end || !ov_string(bi_arg(argc, 2), &text) || !ov_readcategory(argc, 3, &cat))
        return;
    {
        ov_hush keep(code);
        if (!put_text(n, text, cat, &rc))
            return;
    }
    if (!code && ov_failed(rc))
        return;
    if (code)
        *mo_re(end.result) = rc;
    end.done(argc);
}

// The word for how an item is kept; empty when it is not of that sort.
void category_of(int32_t argc, const char *id, int32_t sort)
{
    m_xeqerrid = id;
    ov_name n;
    if (!ov_readname(m_arg(0), &n))
        return;
    const char *word = "";
    if (n.where == OVN_RESULT && gretval_find(n.kind, n.name.c_str()) == sort)
        word = ov_categoryword(retval_get_rvcat());
    ov_text(argc, word);
}

// ---- scalars

bool find_number(const ov_name &n, double *z)
{
    char word[512];
    switch (n.where) {
    case OVN_SYSTEM: return cfcn(n.name.c_str(), word, z) == 1;
    case OVN_RESULT:
        if (gretval_find(n.kind, n.name.c_str()) != DM_SCALAR)
            return false;
        *z = retval_get_as_double();
        return true;
    case OVN_PLAIN: return sclrld(n.name.c_str(), z);
    default: return false;
    }
}

// A scalar takes no name of a matrix, nor a word that means something.
int32_t check_scalar(const char *name)
{
    if (int32_t rc = chkreskeywrds(name))
        return rc;
    return ismatrixname(name) ? errout(507, "%s already defined as a matrix\n", name) : 0;
}

int32_t put_number(const ov_name &n, double z, int32_t cat)
{
    if (n.where == OVN_RESULT)
        return retval_put_scalar(n.kind, n.name.c_str(), z, cat);
    int32_t rc = check_scalar(n.name.c_str());
    return rc ? rc : sclrsv(n.name.c_str(), z);
}

// Only results and plain names can be written; s() holds no numbers.
bool may_write(const ov_name &n)
{
    return (n.where == OVN_PLAIN || (n.where == OVN_RESULT && n.kind != RK_S)) || bi_fail(3300);
}

// Nothing where a value stands means: no such item any more.
bool is_nothing(const matobj *m)
{
    return bi_ismatrix(m) && m->rows == 0 && m->cols == 0;
}

void drop_scalar(const ov_name &n)
{
    if (n.where == OVN_PLAIN)
        sclrrm(n.name.c_str());
    else if (gretval_find(n.kind, n.name.c_str()) == DM_SCALAR)
        retval_take_away(n.kind, n.name.c_str());
}

// ---- names of what there is

void add_records(std::vector<std::string> *out, int32_t type, int32_t aux, const char *skip)
{
    char name[33];
    for (void *p = nullptr; (p = dmnext(p, name, type, nullptr));)
        if ((aux < 0 || dm_rec(p)->aux == aux) && !mac_hidden(name))
            out->emplace_back(name + (*skip && !strncmp(name, skip, strlen(skip))));
}

void add_words(std::vector<std::string> *out, const std::string &text)
{
    for (size_t at = 0, end; at < text.size(); at = end + 1) {
        end = std::min(text.find(' ', at), text.size());
        if (end > at)
            out->push_back(text.substr(at, end - at));
    }
}

bool results_of(std::vector<std::string> *out, int32_t kind, const std::string &what)
{
    int32_t cat = 0;
    std::string sort = what;
    for (int32_t c = 1; c < 3; c++)
        if (what.starts_with(std::string(categories[c]) + " ")) {
            cat = c;
            sort = what.substr(strlen(categories[c]) + 1);
        }
    int32_t want = sort == "numscalar" ? DM_SCALAR : sort == "macro" ? DM_LOCAL : DM_MATRIX;
    if (want == DM_MATRIX && sort != "matrix")
        return bi_fail(3300);
    std::string all;
    (void)!retval_names(kind, want, &all);
    std::vector<std::string> names;
    add_words(&names, all);
    for (const auto &n : names)
        if (gretval_find(kind, n.c_str()) == want && retval_get_rvcat() == cat)
            out->push_back(n);
    return true;
}

void add_chars(std::vector<std::string> *out, const std::string &owner)
{
    char o[33], name[33];
    for (const void *p = nullptr; (p = charnext(p, o, name, nullptr));)
        if (owner == o)
            out->emplace_back(name);
}

bool list_names(const std::string &where, const std::string &what, std::vector<std::string> *out)
{
    static const struct {
        const char *where;
        int32_t kind;
    } results[] = {{"r()", RK_R}, {"e()", RK_E}, {"s()", RK_S}, {"return()", RK_RETURN}};
    for (const auto &r : results)
        if (where == r.where)
            return results_of(out, r.kind, what);
    if (where == "local" && what == "macro")
        add_records(out, typelmac, -1, "_");
    else if (where == "global" && what == "macro")
        add_records(out, DM_GLOBAL, -1, "");
    else if (where == "global" && what == "numscalar")
        add_records(out, DM_SCALAR, 0, "");
    else if (where == "global" && what == "strscalar")
        add_records(out, DM_SCALAR, 1, "");
    else if (where == "global" && what == "matrix")
        add_records(out, DM_MATRIX, -1, "");
    else if (where == "char")
        add_chars(out, what);
    else
        return bi_fail(3300);
    return true;
}

void column_of(int32_t argc, const std::vector<std::string> &names)
{
    matobj *r = m_mktmat(MO_STRING, int32_t(names.size()), 1);
    for (size_t k = 0; r && k < names.size(); k++)
        if (selreplace(r, int64_t(k), names[k].data(), int64_t(names[k].size()))) {
            mo_freemat(r);
            return;
        }
    if (r)
        m_result(argc, r);
}

// How a name would be written for ov_global and its kin.
std::string adorned(const std::string &where, const std::string &what, const std::string &name)
{
    if (where == "char")
        return what + "[" + name + "]";
    return where.back() == ')' ? where.substr(0, where.size() - 1) + name + ")" : name;
}

} // namespace

int32_t ov_expandline(std::string *line)
{
    if (line->size() > size_t(conslen))
        return errout(RC_TOOLONG, "command too long\n");
    std::string was = console;
    toktype saved;
    ti_borrow_gettok(tokinfo, &saved);
    memcpy(console, line->c_str(), line->size() + 1);
    int32_t rc = macexp();
    *line = console;
    memcpy(console, was.c_str(), was.size() + 1);
    ti_return_gettok(tokinfo, &saved);
    return rc;
}

void biov_local(int32_t argc)
{
    m_xeqerrid = "ov_local()";
    std::string name, text;
    if (!ov_string(bi_arg(argc, 1), &name))
        return;
    name = "_" + name;
    if (name.size() < 2 || !mac_goodname(name.c_str(), name.size())) {
        m_xrc = 3300;
        return;
    }
    if (argc == 1) {
        const char *p = macptr(name.c_str());
        return ov_text(argc, p ? p : "");
    }
    ov_end end;
    if (end && ov_string(bi_arg(argc, 2), &text) && fits(text) &&
        !ov_failed(macresave(name.c_str(), text.c_str())))
        end.done(argc);
}

void biov_global(int32_t argc)
{
    global(argc, "ov_global()", false);
}
void bi_ov_global(int32_t argc)
{
    global(argc, "_ov_global()", argc > 1);
}
void biov_global_hcat(int32_t argc)
{
    category_of(argc, "ov_global_hcat()", DM_LOCAL);
}
void biov_numscalar_hcat(int32_t argc)
{
    category_of(argc, "ov_numscalar_hcat()", DM_SCALAR);
}
void biov_matrix_hcat(int32_t argc)
{
    category_of(argc, "ov_matrix_hcat()", DM_MATRIX);
}

// ov_numscalar(name [, z [, category]]): nothing when there is none; nothing takes it away.
void biov_numscalar(int32_t argc)
{
    m_xeqerrid = "ov_numscalar()";
    ov_name n;
    double z;
    int32_t cat;
    if (!ov_readname(bi_arg(argc, 1), &n))
        return;
    if (argc == 1) {
        if (find_number(n, &z))
            ov_real(argc, z);
        else
            ov_void(argc);
        return;
    }
    ov_end end;
    if (!end || !may_write(n))
        return;
    if (is_nothing(bi_arg(argc, 2)))
        drop_scalar(n);
    else if (!bi_real(bi_arg(argc, 2), &z) || !ov_readcategory(argc, 3, &cat) ||
             ov_failed(put_number(n, z, cat)))
        return;
    end.done(argc);
}

// ov_strscalar(name [, text])
void biov_strscalar(int32_t argc)
{
    m_xeqerrid = "ov_strscalar()";
    ov_name n;
    std::string text;
    if (!ov_readname(bi_arg(argc, 1), &n))
        return;
    if (n.where != OVN_PLAIN) {
        m_xrc = 3300;
        return;
    }
    if (argc == 1) {
        const char *p = ssclrld(n.name.c_str());
        if (p)
            ov_text(argc, p);
        else if (matobj *r = m_mktmat(MO_STRING, 0, 0))
            m_result(argc, r);
        return;
    }
    ov_end end;
    if (!end)
        return;
    if (is_nothing(bi_arg(argc, 2))) {
        if (ssclrld(n.name.c_str()))
            sclrrm(n.name.c_str());
    } else if (!ov_string(bi_arg(argc, 2), &text) || !fits(text) ||
               ov_failed(check_scalar(n.name.c_str())) ||
               ov_failed(ssclrsv(n.name.c_str(), text.c_str())))
        return;
    end.done(argc);
}

void biov_macroexpand(int32_t argc)
{
    m_xeqerrid = "ov_macroexpand()";
    std::string line;
    if (ov_string(m_arg(0), &line) && !ov_failed(ov_expandline(&line)))
        ov_text(argc, line);
}

// _ov_macroexpand(S, text): S becomes the text expanded; the code is the result.
void bi_ov_macroexpand(int32_t argc)
{
    m_xeqerrid = "_ov_macroexpand()";
    std::string line;
    ov_end end(1, 1);
    if (!end || !bi_ismatrix(m_arg(1)) || !ov_string(m_arg(0), &line))
        return;
    int32_t rc;
    {
        ov_hush keep(true);
        rc = ov_expandline(&line);
    }
    if (rc == RC_BREAK) {
        m_xrc = 1;
        return;
    }
    if (!rc) {
        matobj *text = m_mktstr(line.data(), int64_t(line.size()));
        bool bad = !text || cpymat(m_arg(1), text, false);
        if (text)
            mo_freemat(text);
        if (bad)
            return;
    }
    *mo_re(end.result) = rc;
    end.done(argc);
}

// ov_dir(where, what, pattern [, adorn])
void biov_dir(int32_t argc)
{
    m_xeqerrid = "ov_dir()";
    std::string where, what, pattern;
    double adorn = 0;
    std::vector<std::string> all, names;
    if (!ov_string(bi_arg(argc, 1), &where) || !ov_string(bi_arg(argc, 2), &what) ||
        !ov_string(bi_arg(argc, 3), &pattern) || (argc > 3 && !bi_real(bi_arg(argc, 4), &adorn)) ||
        !list_names(where, what, &all))
        return;
    std::sort(all.begin(), all.end());
    for (const auto &n : all)
        if (str_match(n.c_str(), pattern.c_str()) != 0)
            names.push_back(adorn != 0 ? adorned(where, what, n) : n);
    column_of(argc, names);
}

// ov_char_dir(owner) and ov_char_rm(owner [, name]); the owner is _dta or a variable.
void biov_char_dir(int32_t argc)
{
    m_xeqerrid = "ov_char_dir()";
    std::string owner;
    std::vector<std::string> names;
    if (!ov_string(m_arg(0), &owner))
        return;
    add_chars(&names, owner);
    std::sort(names.begin(), names.end());
    column_of(argc, names);
}

void biov_char_rm(int32_t argc)
{
    m_xeqerrid = "ov_char_rm()";
    std::string owner, name;
    ov_end end;
    if (!end || !ov_string(bi_arg(argc, 1), &owner) ||
        (argc > 1 && !ov_string(bi_arg(argc, 2), &name)))
        return;
    if (owner.empty()) {
        m_xrc = 3300;
        return;
    }
    if (argc == 1)
        charrm(owner.c_str());
    else if (ov_failed(charsave(owner.c_str(), name.c_str(), "")))
        return;
    s_updata = true;
    end.done(argc);
}

void biov_rclear(int32_t argc)
{
    ov_end end;
    if (!end)
        return;
    retval_clear();
    end.done(argc);
}
void biov_eclear(int32_t argc)
{
    ov_end end;
    if (!end)
        return;
    estval_clear();
    esample_drop();
    end.done(argc);
}
void biov_sclear(int32_t argc)
{
    ov_end end;
    if (!end)
        return;
    sretval_clear();
    end.done(argc);
}
