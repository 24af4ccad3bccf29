// stats/hypothesis.cpp - _test: linear hypotheses about the coefficients in e(), and linear
// combinations of them.
//
//   _test x1 x2 ...                       each is zero
//   _test x1 = x2 + 3 [= ...]             equations, several in parentheses
//   _test x1 - x2 , combine level(#)      the combination with its standard error
//   _test [eq]  _test [eq1=eq2]: x1 x2    equations are zero, or equal to one another
//   options: accumulate (on top of the last test), notest, mtest[(method)]
//
// A term is [number *] coefficient, a coefficient a name of e(b), eq:name, [eq]name or _b[name].
#include "core/missing.h"
#include "core/rc.h"
#include "core/state.h"
#include "core/text.h"
#include "data/dsa.h"
#include "data/umat.h"
#include "data/variables.h"
#include "expr/parse.h"
#include "interp/messages.h"
#include "output/fmt.h"
#include "output/print.h"
#include "stats/coeftab.h"
#include "stats/dist.h"
#include "stats/results.h"
#include "stats/statparse.h"
#include "varlist/terms.h"
#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace
{

// R b = q, one row a restriction, with the text that shows it.
struct restriction {
    std::vector<double> R;
    double q = 0;
    std::string text;
};
std::vector<restriction> kept; // of the last test, for accumulate

struct reader {
    const char *p;
    matref b;
    int32_t n;
};

void blanks(reader *r)
{
    while (*r->p == ' ')
        r->p++;
}

std::string name_at(reader *r)
{
    const char *from = r->p;
    while (isalnum(uint8_t(*r->p)) || *r->p == '_' || *r->p == '.' || *r->p == '#')
        r->p++;
    return std::string(from, r->p);
}

int32_t column(const reader *r, const std::string &eq, const std::string &name)
{
    std::string full = eq.empty() ? name : eq + ":" + name;
    int32_t at = umat_findname(r->b.col, r->n, full.c_str(), false);
    if (!at && name != "_cons") { // an abbreviated variable
        full = (eq.empty() ? "" : eq + ":") + fv_fullname(name.c_str());
        at = umat_findname(r->b.col, r->n, full.c_str(), false);
    }
    return at;
}

// A coefficient in one of its forms; -1 with words when there is none of that name.
int32_t coefficient(reader *r)
{
    const char *from = r->p;
    std::string eq, name;
    if (*r->p == '[') {
        r->p++;
        eq = name_at(r);
        if (*r->p++ != ']')
            return -error(RC_SYNTAX);
    }
    name = name_at(r);
    if ((name == "_b" || name == "_coef") && *r->p == '[') {
        r->p++;
        name = name_at(r);
        if (*r->p == ':') {
            r->p++;
            eq = name;
            name = name_at(r);
        }
        if (*r->p++ != ']')
            return -error(RC_SYNTAX);
    } else if (*r->p == ':') {
        r->p++;
        eq = name;
        name = name_at(r);
    }
    int32_t at = name.empty() ? 0 : column(r, eq, name);
    if (at)
        return at;
    std::string shown(from, r->p);
    if (shown.empty())
        return -error(RC_SYNTAX);
    return -notfound(shown.c_str());
}

struct linear {
    std::vector<double> c;
    double k = 0;
};

// A digit may begin a number or a level, as in 2.group.
bool level_at(const reader *r)
{
    reader ahead = *r;
    std::string name = name_at(&ahead);
    termname t;
    return name.find('.') != std::string::npos && term_read(name.c_str(), &t) &&
           column(r, "", name);
}

int32_t sum(reader *r, linear *out);

// A factor: a number, a coefficient or a sum in parentheses.
int32_t factor(reader *r, linear *out)
{
    blanks(r);
    out->c.assign(size_t(r->n), 0);
    out->k = 0;
    if (*r->p == '(') {
        r->p++;
        int32_t rc = sum(r, out);
        blanks(r);
        if (!rc && *r->p++ != ')')
            rc = error(RC_SYNTAX);
        return rc;
    }
    if (*r->p == '-' || *r->p == '+') {
        bool neg = *r->p++ == '-';
        int32_t rc = factor(r, out);
        if (neg) {
            out->k = -out->k;
            for (double &z : out->c)
                z = -z;
        }
        return rc;
    }
    if ((isdigit(uint8_t(*r->p)) || *r->p == '.') && !level_at(r)) {
        char *end;
        out->k = strtod(r->p, &end);
        r->p = end;
        return 0;
    }
    int32_t at = coefficient(r);
    if (at < 0)
        return -at;
    out->c[size_t(at) - 1] = 1;
    return 0;
}

bool is_number(const linear &l)
{
    for (double z : l.c)
        if (z != 0)
            return false;
    return true;
}

int32_t term(reader *r, linear *out)
{
    int32_t rc = factor(r, out);
    for (blanks(r); !rc && (*r->p == '*' || *r->p == '/'); blanks(r)) {
        bool div = *r->p++ == '/';
        linear b;
        if ((rc = factor(r, &b)))
            break;
        if (!is_number(b) && (div || !is_number(*out)))
            return errout(131, "not possible with test\n");
        if (div && b.k == 0)
            return error(RC_SYNTAX);
        if (is_number(b)) {
            double f = div ? 1 / b.k : b.k;
            out->k *= f;
            for (double &z : out->c)
                z *= f;
        } else {
            for (double &z : b.c)
                z *= out->k;
            b.k *= out->k;
            *out = b;
        }
    }
    return rc;
}

int32_t sum(reader *r, linear *out)
{
    int32_t rc = term(r, out);
    for (blanks(r); !rc && (*r->p == '+' || *r->p == '-'); blanks(r)) {
        double sign = *r->p++ == '-' ? -1 : 1;
        linear b;
        if ((rc = term(r, &b)))
            break;
        out->k += sign * b.k;
        for (size_t i = 0; i < out->c.size(); i++)
            out->c[i] += sign * b.c[i];
    }
    return rc;
}

// ---- showing a restriction

std::string number(double z)
{
    char buf[64];
    fmtnumtrim(buf, sizeof buf, z, "%9.0g");
    return buf;
}

std::string shown_sum(const reader *r, const std::vector<double> &c)
{
    std::string s;
    for (size_t j = 0; j < c.size(); j++) {
        double z = c[j];
        if (z == 0)
            continue;
        s += s.empty() ? (z < 0 ? "- " : "") : z < 0 ? " - " : " + ";
        if (std::fabs(z) != 1)
            s += number(std::fabs(z)) + "*";
        const umatname &n = r->b.col[j];
        if (strcmp(n.eq, "_"))
            s += std::string("[") + n.eq + "]";
        s += n.name;
    }
    return s.empty() ? "0" : s;
}

void add(std::vector<restriction> *v, const reader *r, const linear &l)
{
    restriction x;
    x.R = l.c;
    x.q = l.k == 0 ? 0 : -l.k;
    x.text = shown_sum(r, l.c) + " = " + number(x.q);
    v->push_back(x);
}

// [eq] and [eq=eq2], with or without the names that are meant behind a colon: whole equations
// that are zero, or equal where both have the name. False when the text is not of that form.
bool equation_form(reader *r, std::vector<restriction> *v, int32_t *rc)
{
    blanks(r);
    const char *close = *r->p == '[' ? strchr(r->p, ']') : nullptr, *rest = close ? close + 1 : "x";
    while (*rest == ' ')
        rest++;
    if (*rest && *rest != ':')
        return false;
    std::string eq[2];
    r->p++;
    eq[0] = name_at(r);
    blanks(r);
    if (*r->p == '=') {
        r->p++;
        blanks(r);
        eq[1] = name_at(r);
        blanks(r);
    }
    int32_t first[2], last[2];
    for (int i = 0; i < 2; i++)
        if (!(i && eq[1].empty()) &&
            !umat_eqspan(r->b.col, r->n, eq[i].c_str(), &first[i], &last[i])) {
            *rc = eqnotfound(eq[i].c_str());
            return true;
        }
    if (r->p != close) {
        *rc = error(RC_SYNTAX);
        return true;
    }
    std::vector<std::string> names;
    r->p = rest + (*rest == ':');
    for (blanks(r); *r->p; blanks(r)) {
        names.push_back(name_at(r));
        if (names.back().empty()) {
            *rc = error(RC_SYNTAX);
            return true;
        }
    }
    if (names.empty())
        for (int32_t j = first[0]; j <= last[0]; j++)
            if (strcmp(r->b.col[j].name, "_cons") &&
                (eq[1].empty() || column(r, eq[1], r->b.col[j].name)))
                names.emplace_back(r->b.col[j].name);
    for (const std::string &name : names) {
        linear l;
        l.c.assign(size_t(r->n), 0);
        for (int i = 0; i < 1 + !eq[1].empty(); i++) {
            int32_t at = column(r, eq[i], name);
            if (!at) {
                *rc = notfound(("[" + eq[i] + "]" + name).c_str());
                return true;
            }
            l.c[size_t(at) - 1] = i ? -1 : 1;
        }
        add(v, r, l);
    }
    return true;
}

// i.group, or a product with one: every coefficient of the term that was estimated. False when
// the text is not of that form.
bool whole_terms(reader *r, std::vector<restriction> *v, int32_t *rc)
{
    std::string text(r->p, strcspn(r->p, " "));
    const char *point = strchr(text.c_str(), '.');
    fvspec s;
    if (!point || column(r, "", text))
        return false;
    termname t;
    if (term_read(text.c_str(), &t))
        return false;
    if ((*rc = fv_text(text.c_str(), FV_TS | FV_FACTOR, &s)))
        return true;
    r->p += text.size();
    int32_t missed;
    for (int32_t j : fv_columns_of(s, r->b.col, r->n, &missed)) {
        termname col;
        if (term_read(r->b.col[j].name, &col) && term_isomitted(col))
            continue;
        linear l;
        l.c.assign(size_t(r->n), 0);
        l.c[size_t(j)] = 1;
        add(v, r, l);
    }
    if (missed >= 0)
        *rc = notfound(fv_write(s.term[size_t(missed)]).c_str());
    return true;
}

// a = b = c makes two restrictions; without any = every coefficient named is zero.
int32_t read_group(reader *r, std::vector<restriction> *v)
{
    int32_t rc = 0;
    if (equation_form(r, v, &rc))
        return rc;
    if (!strchr(r->p, '=')) {
        for (blanks(r); *r->p; blanks(r)) {
            if (whole_terms(r, v, &rc)) {
                if (rc)
                    return rc;
                continue;
            }
            int32_t at = coefficient(r);
            if (at < 0)
                return -at;
            linear l;
            l.c.assign(size_t(r->n), 0);
            l.c[size_t(at) - 1] = 1;
            add(v, r, l);
        }
        return 0;
    }
    linear a, b;
    rc = sum(r, &a);
    for (blanks(r); !rc && *r->p == '='; blanks(r)) {
        r->p++;
        if (*r->p == '=')
            r->p++;
        if ((rc = sum(r, &b)))
            break;
        linear d = a;
        d.k -= b.k;
        for (size_t i = 0; i < d.c.size(); i++)
            d.c[i] -= b.c[i];
        add(v, r, d);
        a = b;
    }
    return rc ? rc : *r->p ? error(RC_SYNTAX) : 0;
}

// Parentheses around whole restrictions part them; others belong to the arithmetic.
int32_t read_all(reader *r, const std::string &text, std::vector<restriction> *v)
{
    size_t at = text.find_first_not_of(' ');
    if (at == std::string::npos)
        return error(RC_SYNTAX);
    std::vector<std::string> parts;
    while (at != std::string::npos && text[at] == '(') {
        int depth = 0;
        size_t e = at;
        do {
            depth += (text[e] == '(') - (text[e] == ')');
            e++;
        } while (e < text.size() && depth);
        if (depth)
            return error(RC_SYNTAX);
        parts.push_back(text.substr(at + 1, e - at - 2));
        at = text.find_first_not_of(' ', e);
    }
    if (at != std::string::npos) // not of that form
        parts = {text};
    for (const std::string &part : parts) {
        r->p = part.c_str();
        if (int32_t rc = read_group(r, v))
            return rc;
    }
    return 0;
}

// ---- the test

// The inverse of the covariance of R b - q by elimination in units of its diagonal; rows that
// follow from others are marked. Returns the statistic.
double wald(const std::vector<restriction> &v, const matref &b, const matref &V,
            std::vector<bool> *dropped, int32_t *rank)
{
    size_t m = v.size(), n = size_t(b.m->cols);
    std::vector<double> W(m * m), d(m), scale(m);
    for (size_t i = 0; i < m; i++) {
        d[i] = -v[i].q;
        for (size_t k = 0; k < n; k++)
            d[i] += v[i].R[k] * b.m->el[k];
        for (size_t j = 0; j <= i; j++) {
            double s = 0;
            for (size_t k = 0; k < n; k++)
                if (v[i].R[k] != 0)
                    for (size_t l = 0; l < n; l++)
                        s += v[i].R[k] * V.m->el[k * n + l] * v[j].R[l];
            W[i * m + j] = W[j * m + i] = s;
        }
    }
    for (size_t i = 0; i < m; i++)
        scale[i] = W[i * m + i] > 0 ? std::sqrt(W[i * m + i]) : 0;
    for (size_t i = 0; i < m; i++) {
        for (size_t j = 0; j < m; j++)
            W[i * m + j] = scale[i] > 0 && scale[j] > 0 ? W[i * m + j] / scale[i] / scale[j] : 0;
        d[i] = scale[i] > 0 ? d[i] / scale[i] : 0;
    }
    dropped->assign(m, false);
    *rank = 0;
    double q = 0;
    for (size_t p = 0; p < m; p++) { // Cholesky-like: what a row adds to those before it
        double piv = W[p * m + p];
        if (piv < 1e-10) {
            (*dropped)[p] = true;
            continue;
        }
        ++*rank;
        q += d[p] * d[p] / piv;
        for (size_t i = p + 1; i < m; i++) {
            double f = W[i * m + p] / piv;
            d[i] -= f * d[p];
            for (size_t j = p + 1; j < m; j++)
                W[i * m + j] -= f * W[p * m + j];
        }
    }
    return q;
}

struct waldtest {
    std::vector<bool> dropped;
    int32_t rank;
    bool isf;
    double df_r, stat, p;
};

waldtest test_of(const std::vector<restriction> &v, const matref &b, const matref &V)
{
    waldtest t;
    double q = wald(v, b, V, &t.dropped, &t.rank);
    t.df_r = estval_get_double("df_r");
    t.isf = gretval_find(RK_E, "df_r") != 0;
    t.stat = t.rank ? t.isf ? q / t.rank : q : misval;
    t.p = !t.rank || t.df_r == 0 ? misval
          : t.isf                ? ftail2(t.rank, t.df_r, t.stat)
                                 : chi2tail2(t.rank, t.stat);
    return t;
}

// ---- every restriction on its own, its probability adjusted for their number

struct method {
    const char *word, *name;
    int32_t min;
};
constexpr method methods[] = {{"noadjust", "Unadjusted", 4},
                              {"bonferroni", "Bonferroni-adjusted", 1},
                              {"holm", "Holm-adjusted", 1},
                              {"sidak", "Sidak-adjusted", 1}};

// Bonferroni; Holm (1979); Sidak (1967). Tests without a probability do not count.
void adjust(std::vector<double> *p, int how)
{
    double m = 0;
    for (double z : *p)
        m += z < misval;
    std::vector<size_t> order;
    for (size_t i = 0; i < p->size(); i++)
        if ((*p)[i] < misval)
            order.push_back(i);
    std::sort(order.begin(), order.end(), [&](size_t a, size_t b) { return (*p)[a] < (*p)[b]; });
    double most = 0;
    for (size_t k = 0; k < order.size(); k++) {
        double &z = (*p)[order[k]];
        if (how == 1)
            z = std::min(1.0, z * m);
        else if (how == 2)
            z = most = std::max(most, std::min(1.0, z * (m - double(k))));
        else if (how == 3)
            z = z < 1 ? -std::expm1(m * std::log1p(-z)) : 1;
    }
}

int32_t show_each(const std::vector<restriction> &v, const matref &b, const matref &V,
                  const waldtest &all, int how)
{
    static const char *rule = "---------------------------------------\n";
    std::vector<double> p;
    std::vector<waldtest> each;
    for (const restriction &x : v) {
        each.push_back(test_of({x}, b, V));
        p.push_back(each.back().p);
    }
    adjust(&p, how);
    each.push_back(all);
    p.push_back(all.p);
    matref m;
    if (int32_t rc = umat_new("mtest", MK_R, int32_t(v.size()), 3, &m))
        return rc;
    retval_mark_dm();
    strcpy(m.col[0].name, all.isf ? "F" : "chi2");
    strcpy(m.col[1].name, "df");
    strcpy(m.col[2].name, how ? "adjustp" : "p");
    std::string what = all.isf ? "F(df," + number(all.df_r) + ")" : "chi2";
    spout21f("\n%s       |%11s      df           p\n", rule, what.c_str());
    for (size_t i = 0; i < each.size(); i++) {
        char stat[64], pr[64], label[24] = "all";
        if (i == v.size() || !i)
            spout21("-------+-------------------------------\n");
        if (i < v.size()) {
            snprintf(label, sizeof label, "(%d)", int(i) + 1);
            double row[] = {each[i].stat, double(each[i].rank), p[i]};
            memcpy(m.m->el + 3 * i, row, sizeof row);
        }
        fmtnumtrim(stat, sizeof stat, each[i].stat, "%9.2f");
        fmtnumtrim(pr, sizeof pr, p[i], "%8.4f");
        spout21f("%6s |%11s%8d%12s%s\n", label, stat, each[i].rank, pr,
                 i < v.size() && how ? " *" : "");
    }
    spout21(rule);
    if (how)
        spout21f("     * %s probabilities\n", methods[how].name);
    return stopflag;
}

int32_t show_test(const std::vector<restriction> &v, const matref &b, const matref &V, bool quiet,
                  int each)
{
    waldtest t = test_of(v, b, V);
    const std::vector<bool> &dropped = t.dropped;
    int32_t rank = t.rank;
    double df_r = t.df_r, stat = t.stat, p = t.p;
    bool isf = t.isf;
    retval_clear();
    retval_set_gscalar(p, "p");
    if (isf) {
        retval_set_gscalar(stat, "F");
        retval_set_gscalar(df_r, "df_r");
    } else
        retval_set_gscalar(stat, "chi2");
    retval_set_gscalar(rank, "df");
    int32_t ndrop = int32_t(v.size()) - rank;
    retval_set_gscalar(ndrop > 0, "drop");
    if (quiet)
        return 0;
    outlev_keep keep(1);
    newline();
    for (size_t i = 0; i < v.size(); i++)
        spout21f(" (%2d)  %s\n", int(i) + 1, v[i].text.c_str());
    for (size_t i = 0; i < v.size(); i++)
        if (dropped[i])
            spout21f("       Constraint %d dropped\n", int(i) + 1);
    newline();
    std::string label;
    char buf[64];
    if (isf)
        snprintf(buf, sizeof buf, "F(%3d,%6s)", rank, number(df_r).c_str());
    else
        snprintf(buf, sizeof buf, "chi2(%3d)", rank);
    char value[64];
    fmtnumtrim(value, sizeof value, stat, "%8.2f");
    spout21f("%18s =%8s\n", buf, value);
    fmtnumtrim(value, sizeof value, p, "%8.4f");
    spout21f("%18s =%8s\n", isf ? "Prob > F" : "Prob > chi2", value);
    return each >= 0 ? show_each(v, b, V, t, each) : stopflag;
}

// mtest alone or with a method: its place among the methods, -1 without the option.
int32_t each_option(int *each)
{
    char text[33] = "";
    *each = stat_option("mtest", 5) ? 0 : -1;
    if (*each == 0 || !ti_pi_findargn(tokinfo, parinfo, "mtest", 5, text, 32, 1))
        return 0;
    for (int i = 0; i < 4; i++)
        if (int32_t(strlen(text)) >= methods[i].min &&
            !strncmp(text, methods[i].word, strlen(text))) {
            *each = i;
            return 0;
        }
    return errout(RC_SYNTAX, "mtest() must be bonferroni, holm, sidak or noadjust\n");
}

int32_t combine(reader *r, const std::string &text, const matref &V, const coeftab &t)
{
    linear l;
    r->p = text.c_str();
    int32_t rc = sum(r, &l);
    blanks(r);
    if (!rc && *r->p)
        rc = error(RC_SYNTAX);
    if (rc)
        return rc;
    double b = l.k, var = 0;
    size_t n = size_t(r->n);
    for (size_t i = 0; i < n; i++) {
        b += l.c[i] * r->b.m->el[i];
        for (size_t j = 0; j < n; j++)
            var += l.c[i] * V.m->el[i * n + j] * l.c[j];
    }
    bool isz = gretval_find(RK_E, "df_r") == 0;
    double df = isz ? misval : estval_get_double("df_r");
    std::string depvar = gretval_find(RK_E, "depvar") == 5179 ? retval_get_strptr() : "";
    coefstat c = coef_stats(b, var > 0 ? std::sqrt(var) : misval, df, t.level);
    retval_clear();
    retval_set_gscalar(b, "estimate");
    retval_set_gscalar(c.se, "se");
    retval_set_gscalar(c.stat, isz ? "z" : "t");
    retval_set_gscalar(c.p, "p");
    retval_set_gscalar(c.low, "lb");
    retval_set_gscalar(c.high, "ub");
    if (!isz)
        retval_set_gscalar(df, "df");
    retval_set_gscalar(t.level, "level");
    outlev_keep keep(1);
    std::string shown = shown_sum(r, l.c);
    if (l.k != 0)
        shown += (l.k < 0 ? " - " : " + ") + number(std::fabs(l.k));
    spout21f("\n (%2d)  %s = 0\n\n", 1, shown.c_str());
    if (*t.eform)
        c = coef_exp(&c);
    spout21("------------------------------------------------------------------------------\n");
    coeftab_heading(&t, depvar.c_str(), *t.eform ? t.eform : "Coef.", isz, "");
    coeftab_rule('+');
    coeftab_line(&t, "(1)", &c, misval);
    spout21("------------------------------------------------------------------------------\n");
    return stopflag;
}

// The text up to the comma of the options.
std::string take_text()
{
    const char *from = ti_wheretok(tokinfo), *p = from;
    int depth = 0;
    for (; *p && (*p != ',' || depth > 0); p++)
        depth += (*p == '(' || *p == '[') - (*p == ')' || *p == ']');
    std::string text(from, p);
    gettok_state at{const_cast<char *>(p), nullptr};
    ti_resettok(tokinfo, &at);
    return text;
}

} // namespace

int32_t testcmd(int32_t);
int32_t testcmd(int32_t)
{
    reader r = {};
    matref V;
    if (!umat_get("b", MK_E, &r.b) || !umat_get("V", MK_E, &V) || V.m->cols != r.b.m->cols)
        return regrnotfound();
    r.n = r.b.m->cols;
    std::string text = take_text();
    parinfo->pi_opts = PI_OK;
    int32_t rc = ti_pi_parse(tokinfo, parinfo);
    if (rc)
        return rc;
    coeftab t;
    bool combined = stat_option("combine", 7);
    bool accumulate = stat_option("accumulate", 1);
    bool quiet = !stat_option("test", 4, true);
    int each;
    if ((rc = each_option(&each)) || (rc = coeftab_options(&t)) ||
        (rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    if (combined)
        return combine(&r, text, V, t);
    std::vector<restriction> v;
    if (accumulate)
        for (const restriction &x : kept)
            if (x.R.size() == size_t(r.n))
                v.push_back(x);
    if (text.find_first_not_of(' ') == std::string::npos) { // all slopes
        for (int32_t j = 0; j < r.n; j++)
            if (termname col; strcmp(r.b.col[j].name, "_cons") &&
                            !(term_read(r.b.col[j].name, &col) && term_isomitted(col))) {
                linear l;
                l.c.assign(size_t(r.n), 0);
                l.c[size_t(j)] = 1;
                add(&v, &r, l);
            }
    } else if ((rc = read_all(&r, text, &v)))
        return rc;
    kept = v;
    return show_test(v, r.b, V, quiet, each);
}
