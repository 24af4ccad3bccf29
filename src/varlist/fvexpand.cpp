// Terms to columns: the levels that a sample holds, the base among them, and what another term
// of the list already spans.
#include "core/mem.h"
#include "core/missing.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/labels.h"
#include "data/umat.h"
#include "data/variables.h"
#include "expr/parse.h"
#include "expr/varlist.h"
#include "interp/messages.h"
#include "varlist/terms.h"
#include <algorithm>
#include <cmath>
#include <cstring>
#include <unordered_map>

namespace
{

// A factor variable of the list, with the operators of its base wherever they stand.
struct factor {
    int32_t var;
    tsops ts;
    bool needed = false; // some term wants all its levels
    std::vector<int32_t> level;
    std::vector<int64_t> count;
    fvbase base = FB_DEFAULT;
    int32_t baseno = 0;
    bool hasbase = false;
};
struct expansion {
    const fvspec *typed;
    std::vector<factor> factors;
    fvlist *out;
};

factor *factor_of(expansion *e, const fvatom &a)
{
    for (factor &f : e->factors)
        if (f.var == a.var && f.ts == a.ts)
            return &f;
    return nullptr;
}

// ---- levels

int32_t bad_level(int32_t var, double z)
{
    return errout(452, "%s:  factor variables may not contain %s values\n", _varlist[var - 1],
                  z < 0                ? "negative"
                  : z == std::floor(z) ? "such large"
                                       : "noninteger");
}

// Counts by level: the low ones in a row, the others in a table.
struct counter {
    static constexpr int32_t low = 4096;
    std::vector<int64_t> row = std::vector<int64_t>(low);
    std::unordered_map<int32_t, int64_t> far;
    void add(double z)
    {
        if (z < low)
            row[size_t(z)]++;
        else
            far[int32_t(z)]++;
    }
};

int32_t find_levels(factor *f, const uint8_t *use)
{
    counter c;
    bool ts = f->ts.any();
    for (int32_t i = 1; i <= _Nobs; i++) {
        if ((i & 0xffff) == 0 && fault_poll())
            return stopflag;
        if (use && !use[i])
            continue;
        double z = ts ? rcpxeq(f->var, f->ts, i) : dsa_data(sysdsa, uint32_t(f->var), uint32_t(i));
        if (z >= misval)
            continue;
        if (!(z >= 0 && z <= 1e9) || z != std::floor(z))
            return bad_level(f->var, z);
        c.add(z);
    }
    std::vector<std::pair<int32_t, int64_t>> all;
    for (int32_t k = 0; k < counter::low; k++)
        if (c.row[size_t(k)])
            all.emplace_back(k, c.row[size_t(k)]);
    all.insert(all.end(), c.far.begin(), c.far.end());
    std::sort(all.begin(), all.end());
    if (all.size() > size_t(max_theory_k))
        return error(RC_TOOMANYVARS);
    for (const auto &p : all) {
        f->level.push_back(p.first);
        f->count.push_back(p.second);
    }
    return 0;
}

// ---- the base

// The base as the dataset keeps it: first, last, freq, none, #2 or 2.
void kept_base(factor *f)
{
    const char *text = charfind(_varlist[f->var - 1], "_fv_base", nullptr);
    if (!text || !*text)
        return;
    int32_t n;
    if (!strcmp(text, "last"))
        f->base = FB_LAST;
    else if (!strcmp(text, "freq"))
        f->base = FB_FREQ;
    else if (!strcmp(text, "none"))
        f->base = FB_NONE;
    else if (*text == '#' && !cnvnum(text + 1, &n)) {
        f->base = FB_ORDER;
        f->baseno = n;
    } else if (!cnvnum(text, &n)) {
        f->base = FB_LEVEL;
        f->baseno = n;
    }
}

void settle_base(factor *f)
{
    if (f->base == FB_DEFAULT)
        kept_base(f);
    size_t n = f->level.size();
    f->hasbase = f->base != FB_NONE;
    if (f->base == FB_LEVEL || !f->hasbase)
        return;
    f->hasbase = n > 0;
    if (!n)
        return;
    size_t at = 0;
    if (f->base == FB_LAST)
        at = n - 1;
    else if (f->base == FB_FREQ)
        at = size_t(std::max_element(f->count.begin(), f->count.end()) - f->count.begin());
    else if (f->base == FB_ORDER)
        at = size_t(f->baseno) - 1;
    f->hasbase = at < n;
    if (f->hasbase)
        f->baseno = f->level[at];
}

int32_t gather(expansion *e, const uint8_t *use)
{
    for (const fvterm &t : e->typed->term)
        for (const fvatom &a : t.part) {
            if (a.kind != 'i')
                continue;
            factor *f = factor_of(e, a);
            if (!f) {
                e->factors.push_back({});
                f = &e->factors.back();
                f->var = a.var;
                f->ts = a.ts;
            }
            f->needed |= a.levels.empty() || a.listed;
            bool own = a.levels.size() == 1 && !a.listed;
            if (a.base != FB_DEFAULT && !(own && a.base == FB_NONE)) {
                f->base = a.base;
                f->baseno = a.baseno;
            }
        }
    for (factor &f : e->factors) {
        int32_t rc = f.needed ? find_levels(&f, use) : 0;
        if (rc)
            return rc;
        settle_base(&f);
    }
    return 0;
}

// ---- columns

std::vector<termpart> parts_of(expansion *e, const fvatom &a)
{
    std::vector<termpart> out;
    termpart p;
    p.var = a.var;
    p.ts = a.ts;
    strcpy(p.name, _varlist[a.var - 1]);
    p.marks = a.omit ? TM_OMIT : 0;
    if (a.kind != 'i') {
        p.kind = TP_CONT;
        out.push_back(p);
        return out;
    }
    const factor *f = factor_of(e, a);
    bool own = a.levels.size() == 1 && !a.listed;
    const std::vector<int32_t> &levels = a.levels.empty() ? f->level : a.levels;
    p.kind = TP_LEVEL;
    for (int32_t k : levels) {
        p.level = k;
        p.marks = a.omit ? TM_OMIT : 0;
        if (own ? a.base == FB_LEVEL && a.baseno == k : f->hasbase && f->baseno == k)
            p.marks |= TM_BASE;
        if (own ? a.base == FB_NONE : !f->hasbase && k == levels.front())
            p.marks |= TM_NOBASE;
        if (std::find(a.omits.begin(), a.omits.end(), k) != a.omits.end())
            p.marks |= TM_OMIT;
        out.push_back(p);
    }
    return out;
}

// Is the term without its part i in the list too?
bool spanned(const expansion *e, const fvterm &t, size_t skip)
{
    for (const fvterm &u : e->typed->term) {
        if (u.part.size() + 1 != t.part.size())
            continue;
        uint32_t used = 0;
        size_t i = 0;
        for (; i < t.part.size(); i++) {
            if (i == skip)
                continue;
            size_t j = 0;
            for (; j < u.part.size(); j++) {
                const fvatom &a = t.part[i], &b = u.part[j];
                if (!(used >> j & 1) && a.var == b.var && a.ts == b.ts &&
                    (a.kind == 'i') == (b.kind == 'i') && b.levels.empty())
                    break;
            }
            if (j == u.part.size())
                break;
            used |= 1u << j;
        }
        if (i == t.part.size())
            return true;
    }
    return false;
}

// Marks a product at the base of a factor whose absence another term spans.
void mark_spanned(termname *c, const std::vector<bool> &redundant)
{
    if (term_isbase(*c))
        return;
    for (int32_t i = 0; i < c->n; i++)
        if ((c->part[i].marks & TM_BASE) && redundant[size_t(i)]) {
            term_omit(c);
            return;
        }
}

int32_t add_term(expansion *e, const fvterm &t)
{
    std::vector<std::vector<termpart>> parts;
    std::vector<bool> redundant;
    size_t total = 1;
    for (size_t i = 0; i < t.part.size(); i++) {
        parts.push_back(parts_of(e, t.part[i]));
        bool own = t.part[i].levels.size() == 1 && !t.part[i].listed;
        redundant.push_back(t.part.size() > 1 && t.part[i].kind == 'i' && !own && spanned(e, t, i));
        total *= parts.back().size();
        if (total + e->out->col.size() > size_t(max_theory_k))
            return error(RC_TOOMANYVARS);
    }
    for (size_t k = 0; k < total; k++) {
        termname c;
        c.n = int32_t(parts.size());
        size_t left = k;
        for (size_t i = parts.size(); i-- > 0;) {
            c.part[i] = parts[i][left % parts[i].size()];
            left /= parts[i].size();
        }
        if (c.n == 1 && c.part[0].kind == TP_CONT)
            c.part[0].kind = TP_PLAIN;
        mark_spanned(&c, redundant);
        std::string name = term_write(c);
        if (name.size() > size_t(term_maxname))
            return errout(RC_SYNTAX, "%s is too long a name\n", name.c_str());
        e->out->col.push_back(c);
        e->out->term.push_back(e->out->nterm);
    }
    e->out->nterm++;
    return 0;
}

} // namespace

int32_t fv_expand(const fvspec &s, const uint8_t *use, fvlist *out)
{
    *out = fvlist{};
    expansion e{&s, {}, out};
    int32_t rc = s.has & FV_TS ? ts_init() : 0;
    if (!rc)
        rc = gather(&e, use);
    for (size_t i = 0; !rc && i < s.term.size(); i++)
        rc = add_term(&e, s.term[i]);
    return rc;
}

int32_t fv_markout(const fvspec &s, uint8_t *use)
{
    int32_t rc = s.has & FV_TS ? ts_init() : 0;
    if (rc)
        return rc;
    std::vector<const fvatom *> seen;
    for (const fvterm &t : s.term)
        for (const fvatom &a : t.part) {
            bool known = t_isstr(_typlist[a.var - 1]);
            for (const fvatom *b : seen)
                known |= b->var == a.var && b->ts == a.ts;
            if (known)
                continue;
            seen.push_back(&a);
            uint8_t type = _typlist[a.var - 1];
            uint32_t at = sysdsa->offset[a.var - 1];
            for (int32_t i = 1; i <= _Nobs; i++) {
                if ((i & 0xffff) == 0 && fault_poll())
                    return stopflag;
                if (!use[i])
                    continue;
                double z = a.ts.any() ? rcpxeq(a.var, a.ts, i)
                                      : cell_data(type, dsa_obsptr(sysdsa, uint32_t(i)) + at);
                if (z >= misval)
                    use[i] = 0;
            }
        }
    return 0;
}

// ---- one column by its name

bool fv_findvars(termname *t, bool abbrev)
{
    for (int32_t i = 0; i < t->n; i++) {
        termpart &p = t->part[i];
        p.var = sysfindvar(p.name);
        if (!p.var && abbrev)
            p.var = findvar_in_list(p.name, _varlist, _i_Kvar, !ovata_varabbrev);
        if (p.var < 1)
            return false;
        strcpy(p.name, _varlist[p.var - 1]);
    }
    return true;
}

int32_t ti_fv_findvar(const char *name, termname *out)
{
    if (!term_read(name, out) || !fv_findvars(out, true))
        return varnotfound(name);
    for (int32_t i = 0; i < out->n; i++)
        if (t_isstr(_typlist[out->part[i].var - 1]))
            return error(RC_TYPE);
    return 0;
}

std::string fv_fullname(const char *name)
{
    termname t;
    bool cons = !strcmp(name, "_cons");
    return !cons && term_read(name, &t) && fv_findvars(&t, true) ? term_write(t) : name;
}

static bool atom_matches(const fvatom &a, const termpart &p)
{
    if ((a.kind == 'i') != (p.kind == TP_LEVEL) || !(a.ts == p.ts) ||
        strcmp(_varlist[a.var - 1], p.name))
        return false;
    return a.levels.empty() ||
           std::find(a.levels.begin(), a.levels.end(), p.level) != a.levels.end();
}

bool fv_matches(const fvterm &t, const termname &col)
{
    if (t.part.size() != size_t(col.n))
        return false;
    uint32_t used = 0;
    for (const fvatom &a : t.part) {
        int32_t j = 0;
        while (j < col.n && ((used >> j & 1) || !atom_matches(a, col.part[j])))
            j++;
        if (j == col.n)
            return false;
        used |= 1u << j;
    }
    return true;
}

std::vector<int32_t> fv_columns_of(const fvspec &s, const umatname *stripe, int32_t n,
                                   int32_t *missed)
{
    std::vector<int32_t> out;
    *missed = -1;
    for (size_t k = 0; k < s.term.size(); k++) {
        bool any = false;
        for (int32_t j = 0; j < n; j++) {
            termname t;
            if (!term_read(stripe[j].name, &t) || !fv_matches(s.term[k], t))
                continue;
            any = true;
            if (std::find(out.begin(), out.end(), j) == out.end())
                out.push_back(j);
        }
        if (!any && *missed < 0)
            *missed = int32_t(k);
    }
    return out;
}

// ---- the list of the parse

fvlist fv_current;

const char *fv_name(int32_t entry)
{
    static std::string text[4];
    static unsigned turn;
    if (entry > 0)
        return _varlist[entry - 1];
    std::string &s = text[turn++ & 3];
    s = term_write(fv_current.col[size_t(-entry) - 1]);
    return s.c_str();
}

int32_t pi_fvexpand(parinfo_t *pi)
{
    const auto *typed = static_cast<const fvspec *>(pi->pi_fvtoc);
    if (pi->pi_vlflag3) {
        pi->pi_nvar = 0;
        return 0;
    }
    std::vector<uint8_t> use(size_t(_Nobs) + 1);
    pi_initialize_xeq(pi);
    for (int32_t i = pi->pi_obs1; i <= pi->pi_obs2; i++) {
        if ((i & 0xffff) == 0 && fault_poll())
            return stopflag;
        use[size_t(i)] = selobs(i);
        if (use[size_t(i)] && pi->pi_hasexp) {
            double w = pi_xeq(pi, pi->wepgm, i);
            use[size_t(i)] = w < misval && w != 0;
        }
    }
    pi_initialize_xeq(pi);
    int32_t rc = pi->pi_vlflag2 ? 0 : fv_markout(*typed, use.data());
    // A factor without levels has no columns that would hold its missing values.
    if (!rc && !pi->pi_vlflag2 && std::find(use.begin(), use.end(), 1) == use.end())
        return errout(RC_NOOBS, "no observations\n");
    if (!rc)
        rc = fv_expand(*typed, use.data(), &fv_current);
    if (rc)
        return rc;
    if (fv_current.col.size() > size_t(max_theory_k))
        return error(RC_TOOMANYVARS);
    pi->pi_nvar = 0;
    for (size_t k = 0; k < fv_current.col.size(); k++) {
        const termname &c = fv_current.col[k];
        bool plain =
            c.n == 1 && c.part[0].kind == TP_PLAIN && !c.part[0].marks && !c.part[0].ts.any();
        pi->vl_vr[pi->pi_nvar++] = plain ? c.part[0].var : -int32_t(k) - 1;
    }
    return 0;
}

static int32_t order_class(int32_t entry)
{
    if (entry > 0)
        return 1;
    const termname &c = fv_current.col[size_t(-entry) - 1];
    return term_isomitted(c) ? 0 : c.n;
}

void fv_sweeporder(const int32_t *vars, int32_t n, int32_t first, std::vector<int32_t> *order)
{
    order->clear();
    for (int32_t degree = 1; degree <= term_maxparts; degree++)
        for (int32_t j = 0; j < n; j++)
            if (order_class(vars[j]) == degree)
                order->push_back(first + j);
    order->push_back(-1);
}

void fv_apply_omit_for_anova(const int32_t *vars, int32_t n, int32_t first, double *a, int64_t ld)
{
    for (int32_t j = 0; j < n; j++) {
        if (order_class(vars[j]))
            continue;
        int64_t at = first + j;
        for (int64_t i = 0; i < first + n; i++)
            a[at * ld + i] = a[i * ld + at] = 0;
    }
}
