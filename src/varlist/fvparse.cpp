// Lists with operators: text to terms.
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/variables.h"
#include "expr/varlist.h"
#include "interp/messages.h"
#include "varlist/terms.h"
#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>
#include <unordered_set>

namespace
{

constexpr int32_t maxnumbers = 1600, maxterms = 20000;

// The operators that stand in front of one point.
struct opset {
    char kind = 0;
    std::vector<int32_t> levels, omits;
    bool listed = false, omit = false;
    fvbase base = FB_DEFAULT;
    int32_t baseno = 0;
    std::vector<tsops> ts{tsops{}};
    bool factor() const { return kind || omit || base != FB_DEFAULT; }
};

constexpr int32_t maxnest = 100;

struct reader {
    const char *p;
    uint8_t allow, has;
    int32_t nest = 0;
};

int32_t bad(const char *text)
{
    return invalid(text);
}

// A number, or numbers in parentheses; nothing leaves out empty. p is behind them.
int32_t numbers(const char **p, std::vector<int32_t> *out, bool negative)
{
    out->clear();
    std::string text;
    if (**p == '(') {
        const char *close = strchr(*p, ')');
        if (!close)
            return errout(RC_PARENS, "too few ')' or ']'\n");
        text.assign(*p + 1, close);
        *p = close + 1;
    } else
        while (isdigit(uint8_t(**p)))
            text += *(*p)++;
    if (text.empty())
        return 0;
    std::vector<double> z(static_cast<size_t>(maxnumbers));
    int32_t n = 0;
    if (numlist_read(text.c_str(), z.data(), &n, maxnumbers, false))
        return bad(text.c_str());
    for (int32_t i = 0; i < n; i++) {
        double v = z[size_t(i)];
        if (v != std::floor(v) || std::fabs(v) > 1e9 || (v < 0 && !negative))
            return negative ? bad(text.c_str()) : error(175);
        out->push_back(int32_t(v));
    }
    return 0;
}

int32_t read_base(const char **p, opset *o)
{
    static const struct {
        const char *word;
        fvbase base;
    } words[] = {{"first", FB_FIRST},   {"last", FB_LAST}, {"freq", FB_FREQ},
                 {"frequent", FB_FREQ}, {"none", FB_NONE}, {"default", FB_FIRST}};
    if (tolower(uint8_t(**p)) == 'n') {
        ++*p;
        o->base = FB_NONE;
        return 0;
    }
    if (**p == '(') {
        const char *close = strchr(*p, ')');
        if (!close)
            return errout(RC_PARENS, "too few ')' or ']'\n");
        std::string w(*p + 1, close);
        for (const auto &r : words)
            if (w == r.word) {
                o->base = r.base;
                *p = close + 1;
                return 0;
            }
        bool order = w[0] == '#';
        if (cnvnum(w.c_str() + order, &o->baseno) || (order && o->baseno < 1))
            return bad(w.c_str());
        o->base = order ? FB_ORDER : FB_LEVEL;
        *p = close + 1;
        return 0;
    }
    std::vector<int32_t> n;
    int32_t rc = numbers(p, &n, false);
    if (rc)
        return rc;
    if (n.empty() && o->levels.size() != 1)
        return errout(RC_SYNTAX, "base level not told\n");
    o->base = FB_LEVEL;
    o->baseno = n.empty() ? o->levels[0] : n[0];
    return 0;
}

int32_t read_tsop(char letter, const char **p, opset *o)
{
    std::vector<int32_t> n;
    int32_t rc = numbers(p, &n, true);
    if (rc)
        return rc;
    if (n.empty())
        n.push_back(1);
    std::vector<tsops> out;
    for (const tsops &t : o->ts)
        for (int32_t k : n) {
            tsops u = t;
            if (!ts_join(&u, letter, k))
                return errout(RC_SYNTAX, "invalid time-series operator\n");
            out.push_back(u);
        }
    o->ts = std::move(out);
    return 0;
}

int32_t set_kind(opset *o, char kind)
{
    if (o->kind && o->kind != kind)
        return errout(RC_SYNTAX, "operators i. and c. may not be combined\n");
    o->kind = kind;
    return 0;
}

int32_t read_levels(const char **p, opset *o, bool listed)
{
    std::vector<int32_t> n;
    int32_t rc = numbers(p, &n, false);
    if (!rc && !n.empty()) {
        o->levels = n;
        o->listed = listed;
    }
    return rc;
}

int32_t read_op(const char **p, opset *o)
{
    char c = char(tolower(uint8_t(**p)));
    if (isdigit(uint8_t(c))) {
        int32_t rc = set_kind(o, 'i');
        return rc ? rc : read_levels(p, o, false);
    }
    ++*p;
    int32_t rc;
    switch (c) {
    case 'i': rc = set_kind(o, 'i'); return rc ? rc : read_levels(p, o, **p == '(');
    case 'c': return set_kind(o, 'c');
    case 'b': rc = set_kind(o, 'i'); return rc ? rc : read_base(p, o);
    case 'o':
        if (!isdigit(uint8_t(**p)) && **p != '(') {
            o->omit = true;
            return 0;
        }
        rc = set_kind(o, 'i');
        return rc ? rc : numbers(p, &o->omits, false);
    case 'l':
    case 'f':
    case 'd':
    case 's': return read_tsop(c, p, o);
    default: return errout(RC_SYNTAX, "%.1s. is no operator\n", *p - 1);
    }
}

// Where the operators at p end, at their point; null when a name begins there.
const char *op_end(const char *p)
{
    if (!isalnum(uint8_t(*p)))
        return nullptr;
    while (isalnum(uint8_t(*p)) || *p == '(') {
        if (*p == '(' && !(p = strchr(p, ')')))
            return nullptr;
        p++;
    }
    return *p == '.' ? p : nullptr;
}

int32_t allowed(reader *r, const opset &o)
{
    bool ts = o.ts.size() != 1 || o.ts[0].any(), factor = o.factor();
    if (!ts && !factor)
        return 0;
    if (!(r->allow & FV_FACTOR) && factor)
        return error(!(r->allow & FV_TS) && ts ? 6104 : 6102);
    if (!(r->allow & FV_TS) && ts)
        return error(6101);
    r->has |= uint8_t((ts ? FV_TS : 0) | (factor ? FV_FACTOR : 0));
    return 0;
}

using terms = std::vector<fvterm>;

int32_t apply_one(const opset &o, const tsops &t, fvatom *a)
{
    if (o.kind) {
        if (a->kind && a->kind != o.kind)
            return errout(RC_SYNTAX, "operators i. and c. may not be combined\n");
        a->kind = o.kind;
    }
    if (!o.levels.empty()) {
        a->levels = o.levels;
        a->listed = o.listed;
    }
    if (o.base != FB_DEFAULT) {
        a->base = o.base;
        a->baseno = o.baseno;
    }
    a->omit |= o.omit;
    a->omits.insert(a->omits.end(), o.omits.begin(), o.omits.end());
    for (char letter : {'L', 'D'})
        if (!ts_join(&a->ts, letter, letter == 'L' ? t.lag : t.diff))
            return errout(RC_SYNTAX, "invalid time-series operator\n");
    for (int16_t k : t.span)
        if (k && !ts_join(&a->ts, 'S', k))
            return errout(RC_SYNTAX, "invalid time-series operator\n");
    if (a->kind == 'i' && (a->ts.diff || a->ts.span[0]))
        return errout(RC_SYNTAX, "differences may not be used as factor variables\n");
    return 0;
}

int32_t apply_ops(const opset &o, terms *list)
{
    terms out;
    for (const fvterm &t : *list)
        for (const tsops &ts : o.ts) {
            out.push_back(t);
            for (fvatom &a : out.back().part)
                if (int32_t rc = apply_one(o, ts, &a))
                    return rc;
            if (out.size() > size_t(maxterms))
                return error(RC_TOOMANYVARS);
        }
    *list = std::move(out);
    return 0;
}

int32_t read_list(reader *r, bool inside, terms *out);

// A name, pattern, range or group, with the operators in front of it.
int32_t operand_inside(reader *r, terms *out);

int32_t operand(reader *r, terms *out)
{
    if (r->nest == maxnest)
        return error(RC_TOOLONG);
    r->nest++;
    int32_t rc = operand_inside(r, out);
    r->nest--;
    return rc;
}

int32_t operand_inside(reader *r, terms *out)
{
    if (const char *end = op_end(r->p)) {
        opset o;
        while (r->p < end)
            if (int32_t rc = read_op(&r->p, &o))
                return rc;
        r->p++;
        int32_t rc = allowed(r, o);
        if (!rc)
            rc = operand(r, out);
        return rc ? rc : apply_ops(o, out);
    }
    if (*r->p == '(') {
        r->p++;
        int32_t rc = read_list(r, true, out);
        if (rc)
            return rc;
        if (*r->p != ')')
            return errout(RC_PARENS, "too few ')' or ']'\n");
        r->p++;
        return out->empty() ? error(RC_SYNTAX) : 0;
    }
    static int32_t vars[maxvlist];
    int32_t n = 0;
    if (int32_t rc = vlist_element(&r->p, vars, &n, maxvlist))
        return rc;
    for (int32_t i = 0; i < n; i++) {
        fvatom a;
        a.var = vars[i];
        out->push_back({{a}});
    }
    return 0;
}

// A variable without an operator is a factor in a product.
void as_factors(fvterm *t)
{
    for (fvatom &a : t->part)
        if (!a.kind)
            a.kind = a.ts.any() && (a.ts.diff || a.ts.span[0]) ? 'c' : 'i';
}

int32_t products(const terms &a, const terms &b, terms *out)
{
    for (const fvterm &x : a)
        for (const fvterm &y : b) {
            fvterm t = x;
            t.part.insert(t.part.end(), y.part.begin(), y.part.end());
            if (t.part.size() > size_t(term_maxparts))
                return errout(RC_SYNTAX, "interactions of more than %d variables not allowed\n",
                              term_maxparts);
            as_factors(&t);
            // Factors stand before what is none.
            std::stable_partition(t.part.begin(), t.part.end(),
                                  [](const fvatom &p) { return p.kind == 'i'; });
            out->push_back(t);
            if (out->size() > size_t(maxterms))
                return error(RC_TOOMANYVARS);
        }
    return 0;
}

int32_t element(reader *r, terms *out)
{
    terms left;
    int32_t rc = operand(r, &left);
    while (!rc && *r->p == '#') {
        if (!(r->allow & FV_FACTOR))
            return error(6103);
        r->has |= FV_FACTOR;
        bool full = r->p[1] == '#';
        r->p += 1 + full;
        terms right, both;
        if (!*r->p || *r->p == ' ' || *r->p == '#')
            return error(RC_SYNTAX);
        if ((rc = operand(r, &right)))
            break;
        if (full) {
            for (terms *side : {&left, &right})
                for (fvterm &t : *side) {
                    as_factors(&t);
                    both.push_back(t);
                }
        }
        rc = products(left, right, &both);
        left = std::move(both);
    }
    out->insert(out->end(), left.begin(), left.end());
    return rc;
}

void blanks(reader *r)
{
    while (*r->p == ' ' || *r->p == '\t')
        r->p++;
}

int32_t read_list(reader *r, bool inside, terms *out)
{
    for (blanks(r); *r->p; blanks(r)) {
        if (inside && *r->p == ')')
            return 0;
        if (*r->p != '(' && !op_end(r->p)) {
            if (!vlist_begins(r->p)) {
                if (*r->p == '#')
                    return error(r->allow & FV_FACTOR ? RC_SYNTAX : 6103);
                return 0;
            }
        }
        if (int32_t rc = element(r, out))
            return rc;
    }
    return 0;
}

bool same_atom(const fvatom &a, const fvatom &b)
{
    char ka = a.kind == 'i' ? 'i' : 'c', kb = b.kind == 'i' ? 'i' : 'c';
    return a.var == b.var && ka == kb && a.ts == b.ts && a.levels == b.levels;
}

// What a term is made of, whatever the order of its parts.
std::string key_of(const fvterm &t)
{
    std::vector<std::string> parts;
    for (const fvatom &a : t.part) {
        std::string s = (a.kind == 'i' ? "i" : "c") + ts_text(a.ts) + "." + std::to_string(a.var);
        for (int32_t k : a.levels)
            s += " " + std::to_string(k);
        parts.push_back(s);
    }
    std::sort(parts.begin(), parts.end());
    std::string key;
    for (const std::string &s : parts)
        key += s + "#";
    return key;
}

// A factor times itself is itself; a term that came before is there already. The first one may
// be an outcome and stays apart.
void tidy(terms *list)
{
    terms out;
    std::unordered_set<std::string> seen;
    for (fvterm &t : *list) {
        for (size_t i = 0; i < t.part.size(); i++)
            for (size_t j = t.part.size() - 1; j > i; j--)
                if (t.part[i].kind == 'i' && same_atom(t.part[i], t.part[j]))
                    t.part.erase(t.part.begin() + int64_t(j));
        bool outcome = out.empty() && fv_isplain(t) && !t.part[0].kind;
        if (outcome || seen.insert(key_of(t)).second)
            out.push_back(t);
    }
    *list = std::move(out);
}

int32_t check_types(const terms &list)
{
    for (const fvterm &t : list)
        for (const fvatom &a : t.part)
            if (t_isstr(_typlist[a.var - 1])) {
                if (a.kind == 'i')
                    return errout(RC_TYPE,
                                  "%s:  string variables may not be used as factor "
                                  "variables\n",
                                  _varlist[a.var - 1]);
                if (a.kind || a.ts.any())
                    return error(RC_TYPE);
            }
    return 0;
}

} // namespace

bool fv_isplain(const fvterm &t)
{
    const fvatom &a = t.part[0];
    return t.part.size() == 1 && a.kind != 'i' && !a.ts.any() && !a.omit;
}

bool fv_needed(const char *p)
{
    for (; *p && !strchr(",[=\"", *p); p++) {
        if (*p == '.' || *p == '#' || *p == '(')
            return true;
        if (*p == ' ' && (!strncmp(p, " if ", 4) || !strncmp(p, " in ", 4)))
            return false;
    }
    return false;
}

int32_t fv_parse(const char **at, uint8_t allow, fvspec *out)
{
    reader r{*at, allow, 0, 0};
    out->term.clear();
    int32_t rc = read_list(&r, false, &out->term);
    *at = r.p;
    if (!rc)
        rc = check_types(out->term);
    out->has = r.has;
    if (!rc && (r.has & FV_FACTOR))
        tidy(&out->term);
    return rc;
}

int32_t ti_fv_parse(toktype *ti, uint8_t allow, fvspec *out)
{
    const char *at = ti->c_ptr;
    int32_t rc = fv_parse(&at, allow, out);
    ti->c_ptr += at - ti->c_ptr;
    ti->lc_ptr = nullptr;
    return rc;
}

int32_t fv_text(const char *text, uint8_t allow, fvspec *out)
{
    int32_t rc = fv_parse(&text, allow, out);
    return rc || !*text ? rc : invalid(text);
}

// ---- terms as text

static std::string level_ops(const fvatom &a)
{
    std::string s;
    bool own = a.levels.size() == 1 && !a.listed;
    if (own)
        s = std::to_string(a.levels[0]);
    else {
        s = "i";
        for (size_t i = 0; i < a.levels.size(); i++)
            s += (i ? " " : "(") + std::to_string(a.levels[i]);
        s += a.levels.empty() ? "" : ")";
    }
    switch (a.base) {
    case FB_DEFAULT: break;
    case FB_NONE: s += "bn"; break;
    case FB_LEVEL:
        s += own && a.baseno == a.levels[0] ? "b" : "b" + std::to_string(a.baseno);
        break;
    case FB_FIRST: s += "b(first)"; break;
    case FB_LAST: s += "b(last)"; break;
    case FB_FREQ: s += "b(freq)"; break;
    case FB_ORDER: s += "b(#" + std::to_string(a.baseno) + ")"; break;
    }
    for (size_t i = 0; i < a.omits.size(); i++)
        s += (i ? " " : "o(") + std::to_string(a.omits[i]);
    return s + (a.omits.empty() ? "" : ")");
}

std::string fv_write(const fvterm &t)
{
    std::string s;
    for (const fvatom &a : t.part) {
        std::string ops = a.kind == 'i'                        ? level_ops(a)
                          : a.kind == 'c' && t.part.size() > 1 ? "c"
                                                               : "";
        ops += a.omit ? "o" : "";
        ops += ts_text(a.ts);
        s += (s.empty() ? "" : "#") + ops + (ops.empty() ? "" : ".") + _varlist[a.var - 1];
    }
    return s;
}

std::string fv_write(const fvspec &l)
{
    std::string s;
    for (const fvterm &t : l.term)
        s += (s.empty() ? "" : " ") + fv_write(t);
    return s;
}
