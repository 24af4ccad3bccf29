// Names of columns taken apart, and rows of values set by what stands in their names.
//
//   _ms_parse_parts NAME          r(type) and its parts: r(name#) r(op#) r(level#) r(base#) ...
//   _msparse NAME ...             r(stripe): the names as stripes have them
//   _msdebug [MATRIX]             lists the parts of a stripe
//   _ms_means MATRIX [if] [in] [weight]   r(mean): means of what the columns are named for
//   _ms_setvalues MATRIX NAME=# ...   values of variables, and of the products they stand in
//   _ms_balance MATRIX [NAMES]    levels of factors in equal shares
//   _ms_dydx_parse NAMES          r(varlist): variables of e(b), factors by their levels
//   _ms_dzb_dx NAME [, matrix(M)]  r(b): derivative of the linear form, a row of coefficients
#include "core/missing.h"
#include "core/numtext.h"
#include "core/rc.h"
#include "core/state.h"
#include "core/text.h"
#include "data/dsa.h"
#include "data/variables.h"
#include "interp/messages.h"
#include "output/print.h"
#include "stats/crossprod.h"
#include "stats/results.h"
#include "stats/statparse.h"
#include "varlist/stripes.h"
#include <algorithm>
#include <cstring>

namespace
{

std::vector<std::string> words_of(const std::string &text)
{
    std::vector<std::string> out;
    for (size_t at = text.find_first_not_of(' '); at != std::string::npos;) {
        size_t e = text.find(' ', at);
        out.push_back(text.substr(at, e == std::string::npos ? e : e - at));
        at = e == std::string::npos ? e : text.find_first_not_of(' ', e);
    }
    return out;
}

std::string part_ops(const termpart &p)
{
    std::string s = p.kind == TP_LEVEL ? std::to_string(p.level) : p.kind == TP_CONT ? "c" : "";
    s += p.marks & TM_NOBASE ? "bn" : p.marks & TM_BASE ? "b" : "";
    return s + (p.marks & TM_OMIT ? "o" : "") + ts_text(p.ts);
}

void say_part(const termpart &p, const std::string &no)
{
    retval_set_glocal(("name" + no).c_str(), p.name);
    retval_set_glocal(("op" + no).c_str(), part_ops(p).c_str());
    if (p.ts.any())
        retval_set_glocal(("ts_op" + no).c_str(), ts_text(p.ts).c_str());
    if (p.kind == TP_LEVEL) {
        retval_set_gscalar(p.level, ("level" + no).c_str());
        retval_set_gscalar((p.marks & TM_BASE) != 0, ("base" + no).c_str());
    }
}

int32_t end_of_line()
{
    int32_t rc = ti_pi_parse(tokinfo, parinfo);
    return rc;
}

int32_t column_matrix(const std::string &word, matref *m, std::vector<termname> *cols)
{
    if (!ms_find(word.empty() ? "e(b)" : word, m))
        return word.empty() ? regrnotfound() : matnotfound(word.c_str());
    cols->resize(size_t(m->m->cols));
    for (int32_t j = 0; j < m->m->cols; j++)
        if (!term_read(m->col[j].name, &(*cols)[size_t(j)]))
            (*cols)[size_t(j)].n = 0;
    return 0;
}

bool is_cons(const termname &t)
{
    return t.n == 1 && !strcmp(t.part[0].name, "_cons");
}

} // namespace

int32_t msparseparts(int32_t);
int32_t msparseparts(int32_t)
{
    std::string word = ms_word();
    int32_t rc = end_of_line();
    if (rc)
        return rc;
    termname t;
    if (!term_read(word.c_str(), &t))
        return errout(RC_SYNTAX, "%s invalid name\n", word.c_str());
    retval_clear();
    retval_set_glocal("type", ms_type(t));
    retval_set_gscalar(term_isomitted(t), "omit");
    if (t.n == 1)
        say_part(t.part[0], "");
    else {
        retval_set_gscalar(t.n, "k_names");
        for (int32_t i = 0; i < t.n; i++)
            say_part(t.part[i], std::to_string(i + 1));
    }
    return 0;
}

int32_t msparse(int32_t);
int32_t msparse(int32_t)
{
    std::string out, text = ms_text();
    int32_t rc = end_of_line();
    if (rc)
        return rc;
    for (const std::string &w : words_of(text)) {
        termname t;
        size_t colon = w.find(':');
        std::string eq = colon == std::string::npos ? "" : w.substr(0, colon + 1);
        if (!term_read(w.c_str() + eq.size(), &t))
            return errout(RC_SYNTAX, "%s invalid name\n", w.c_str());
        out += (out.empty() ? "" : " ") + eq + term_write(t);
    }
    retval_clear();
    retval_set_glocal("stripe", out.c_str());
    return 0;
}

int32_t msdebug(int32_t);
int32_t msdebug(int32_t)
{
    std::string word = ms_word();
    matref m;
    std::vector<termname> cols;
    int32_t rc = end_of_line();
    if (rc || (rc = column_matrix(word, &m, &cols)))
        return rc;
    for (size_t j = 0; j < cols.size(); j++) {
        spout21f("%5d  %s  %s%s%s\n", int(j) + 1, m.col[j].name,
                 cols[j].n ? ms_type(cols[j]) : "error", term_isomitted(cols[j]) ? " omitted" : "",
                 m.col[j].info & UN_EMPTY ? " empty" : "");
        for (int32_t i = 0; i < cols[j].n; i++)
            spout21f("       %s.%s\n", part_ops(cols[j].part[i]).c_str(), cols[j].part[i].name);
    }
    return stopflag;
}

int32_t msmeans(int32_t);
int32_t msmeans(int32_t)
{
    std::string word = ms_word();
    statline line;
    line.weights = W_ALL4;
    line.weightdflt = W_AW;
    line.by = false;
    int32_t rc = stat_parse(line);
    matref m, r;
    std::vector<termname> cols;
    if (rc || (rc = ti_pi_chkopt(tokinfo, parinfo)) || (rc = column_matrix(word, &m, &cols)))
        return rc;
    std::vector<umatname> names(m.col, m.col + m.m->cols);
    auto k = int32_t(cols.size());
    // The columns become the list that rows are read for; the constant is made by hand.
    fv_current = fvlist{};
    std::vector<int32_t> vars, at(size_t(k), -1);
    for (int32_t j = 0; j < k; j++) {
        termname &t = cols[size_t(j)];
        if (is_cons(t))
            continue;
        if (!t.n || !fv_findvars(&t, false))
            return varnotfound(names[size_t(j)].name);
        fv_current.col.push_back(t);
        at[size_t(j)] = int32_t(vars.size());
        vars.push_back(-int32_t(fv_current.col.size()));
    }
    datarows d;
    crossprod p;
    if (vars.empty())
        return error(RC_TOOFEWVARS);
    if ((rc = dr_open(&d, vars.data(), int32_t(vars.size()))) ||
        (rc = cp_open(&p, int32_t(vars.size()), true)))
        return rc;
    for (;;) {
        if ((rc = dr_next(&d)))
            return rc;
        if (!d.n)
            break;
        cp_block(&p, &d);
    }
    cp_close(&p);
    if (!p.n)
        return errout(RC_NOOBS, "no observations\n");
    retval_clear();
    if ((rc = umat_new("mean", MK_R, 1, k, &r)))
        return rc;
    memcpy(r.col, names.data(), sizeof(umatname) * names.size());
    for (int32_t j = 0; j < k; j++)
        r.m->el[j] = at[size_t(j)] < 0 ? 1 : cp_mean(&p, at[size_t(j)]);
    retval_mark_dm();
    retval_set_gscalar(double(p.n), "N");
    retval_set_gscalar(p.sum_w, "sum_w");
    return 0;
}

// A column whose variables all have values gets theirs; others stay.
int32_t mssetvalues(int32_t);
int32_t mssetvalues(int32_t)
{
    std::string word = ms_word(), text = ms_text();
    matref m;
    std::vector<termname> cols;
    int32_t rc = end_of_line();
    if (rc || (rc = column_matrix(word, &m, &cols)))
        return rc;
    std::vector<std::pair<std::string, double>> given;
    for (const std::string &w : words_of(text)) {
        size_t eq = w.find('=');
        double z;
        if (eq == std::string::npos || cnvstoz(w.c_str() + eq + 1, &z))
            return invalid(w.c_str());
        int32_t var = findvar_in_list(w.substr(0, eq).c_str(), _varlist, _i_Kvar, !ovata_varabbrev);
        given.emplace_back(var > 0 ? _varlist[var - 1] : w.substr(0, eq), z);
    }
    for (int32_t i = 0; i < m.m->rows; i++)
        for (size_t j = 0; j < cols.size(); j++) {
            double v = 1;
            bool all = cols[j].n > 0 && !is_cons(cols[j]);
            for (int32_t p = 0; p < cols[j].n && all; p++) {
                const termpart &t = cols[j].part[p];
                auto at = std::find_if(given.begin(), given.end(),
                                       [&](const auto &g) { return g.first == t.name; });
                all = at != given.end() && !t.ts.any();
                if (all)
                    v *= t.kind == TP_LEVEL ? at->second == t.level : at->second;
            }
            if (all)
                m.m->el[size_t(i) * cols.size() + j] = v;
        }
    return 0;
}

// The share of a level is one in the number of levels that the stripe has of its factor.
int32_t msbalance(int32_t);
int32_t msbalance(int32_t)
{
    std::string word = ms_word(), text = ms_text();
    matref m;
    std::vector<termname> cols;
    int32_t rc = end_of_line();
    if (rc || (rc = column_matrix(word, &m, &cols)))
        return rc;
    std::vector<std::string> names = words_of(text);
    auto levels_of = [&](const termpart &p) {
        std::vector<int32_t> seen;
        for (const termname &t : cols)
            for (int32_t i = 0; i < t.n; i++)
                if (t.part[i].kind == TP_LEVEL && !strcmp(t.part[i].name, p.name) &&
                    std::find(seen.begin(), seen.end(), t.part[i].level) == seen.end())
                    seen.push_back(t.part[i].level);
        return double(seen.size());
    };
    for (size_t j = 0; j < cols.size(); j++) {
        double v = 1;
        bool all = cols[j].n > 0;
        for (int32_t i = 0; i < cols[j].n && all; i++) {
            const termpart &p = cols[j].part[i];
            all = p.kind == TP_LEVEL &&
                  (names.empty() || std::find(names.begin(), names.end(), p.name) != names.end());
            if (all)
                v /= levels_of(p);
        }
        for (int32_t r = 0; r < m.m->rows && all; r++)
            m.m->el[size_t(r) * cols.size() + j] = v;
    }
    return 0;
}

int32_t msdydxparse(int32_t);
int32_t msdydxparse(int32_t)
{
    std::string text = ms_text(), out, kinds;
    matref m;
    std::vector<termname> cols;
    int32_t rc = end_of_line();
    if (rc || (rc = column_matrix("", &m, &cols)))
        return rc;
    std::vector<std::string> names = words_of(text);
    bool all = names.size() == 1 && (names[0] == "*" || names[0] == "_all");
    if (all)
        names.clear();
    std::vector<std::string> known;
    for (const termname &t : cols)
        for (int32_t i = 0; i < t.n && !is_cons(t); i++)
            if (std::find(known.begin(), known.end(), t.part[i].name) == known.end())
                known.push_back(t.part[i].name);
    for (const std::string &w : names) {
        std::string full = fv_fullname(w.c_str());
        if (std::find(known.begin(), known.end(), full) == known.end())
            return notfound(w.c_str());
    }
    for (const std::string &name : known) {
        bool want = all;
        for (const std::string &w : names)
            want |= fv_fullname(w.c_str()) == name;
        if (!want)
            continue;
        std::vector<std::string> levels;
        for (const termname &t : cols)
            for (int32_t i = 0; i < t.n; i++) {
                termname one;
                one.n = 1;
                one.part[0] = t.part[i];
                one.part[0].marks &= uint8_t(~TM_OMIT);
                std::string s = term_write(one);
                if (name == t.part[i].name && t.part[i].kind == TP_LEVEL &&
                    std::find(levels.begin(), levels.end(), s) == levels.end())
                    levels.push_back(s);
            }
        if (levels.empty())
            levels.push_back(name);
        for (const std::string &s : levels)
            out += (out.empty() ? "" : " ") + s;
    }
    retval_clear();
    retval_set_glocal("varlist", out.c_str());
    return 0;
}

// d(xb)/dx as a row over the same columns: every product with x gives its coefficient, as often
// as x stands in it, to the product without one x.
int32_t msdzbdx(int32_t);
int32_t msdzbdx(int32_t)
{
    std::string word = ms_word();
    parinfo->pi_opts = PI_OK;
    int32_t rc = ti_pi_parse(tokinfo, parinfo);
    char text[81] = "";
    if (!rc && !ti_pi_findargasis(tokinfo, parinfo, "matrix", 3, text, 80))
        *text = 0;
    matref m, r;
    std::vector<termname> cols;
    if (rc || (rc = ti_pi_chkopt(tokinfo, parinfo)) || (rc = column_matrix(text, &m, &cols)))
        return rc;
    std::string x = fv_fullname(word.c_str());
    std::vector<umatname> names(m.col, m.col + m.m->cols);
    std::vector<double> d(cols.size()), b(m.m->el, m.m->el + m.m->cols);
    bool found = false;
    for (size_t j = 0; j < cols.size(); j++) {
        termname left;
        int32_t times = 0;
        for (int32_t i = 0; i < cols[j].n; i++) {
            const termpart &p = cols[j].part[i];
            bool is = p.kind != TP_LEVEL && x == p.name && !p.ts.any();
            if (is && !times++)
                continue;
            left.part[left.n++] = p;
        }
        if (!times)
            continue;
        found = true;
        if (b[j] == 0 || strcmp(names[j].eq, names[0].eq))
            continue;
        size_t at = 0;
        for (; at < cols.size(); at++)
            if (left.n ? term_same(cols[at], left) : is_cons(cols[at]))
                break;
        if (at == cols.size())
            return errout(RC_NOTFOUND, "no column for the derivative of %s\n", names[j].name);
        d[at] += times * b[j];
    }
    if (!found)
        return notfound(word.c_str());
    retval_clear();
    if ((rc = umat_new("b", MK_R, 1, int32_t(d.size()), &r)))
        return rc;
    memcpy(r.m->el, d.data(), sizeof(double) * d.size());
    memcpy(r.col, names.data(), sizeof(umatname) * names.size());
    retval_mark_dm();
    return 0;
}
