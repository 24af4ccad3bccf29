// What the names of rows and columns of the console's matrices say, where they are terms.
//
// Each takes the name of a matrix: M, e(b), r(table). A term is a run of names with the same
// variables within an equation; the constant and a variable are terms of one name.
//
//   _split(M, w)     each name cut behind its # into pieces of at most w characters, n by most
//                    pieces; the pieces stand at the right
//   _abbrev(M, w)    equation and name cut to w characters, n by 2
//   _fvinfo(M)       n by 4: has a factor, is a base level, is left out, is an empty cell
//   _term_index(M)   n by 1: the number of the term
//   _term_levels(M)  n by most parts: levels of the parts, missing for a part without
//   _term_size(M)    how many names each term has
//   _term_omit(M)    how many of them are left out
#include "data/umat.h"
#include "expr/strfun.h"
#include "mosa/bihandlers.h"
#include "mosa/ov_names.h"
#include "stats/coefrows.h"
#include "stats/results.h"
#include "varlist/terms.h"
#include <cstring>
#include <vector>

namespace
{

// The names of one side; false with m_xrc set.
bool open_stripe(const matobj *arg, bool rows, std::vector<umatname> *out)
{
    ov_name n;
    if (!ov_readname(arg, &n))
        return false;
    if (n.where != OVN_PLAIN && (n.where != OVN_RESULT || n.kind == RK_S))
        return bi_fail(3300);
    matkind kind = n.where != OVN_RESULT ? MK_MAT
                   : n.kind == RK_R      ? MK_R
                   : n.kind == RK_E      ? MK_E
                                         : MK_RETURN;
    matref m;
    if (!umat_get(n.name.c_str(), kind, &m))
        return bi_fail(3499);
    const umatname *s = rows ? m.row : m.col;
    out->assign(s, s + (rows ? m.m->rows : m.m->cols));
    return true;
}

// The number of the term of each name, from 1.
std::vector<int32_t> term_numbers(const std::vector<umatname> &names)
{
    std::vector<int32_t> out;
    std::string last;
    int32_t k = 0;
    for (size_t i = 0; i < names.size(); i++) {
        std::string key = coefrow_of(names[i], false, false).key;
        bool same = i && !key.empty() && key == last && !strcmp(names[i].eq, names[i - 1].eq);
        k += !same;
        last = key;
        out.push_back(k);
    }
    return out;
}

std::vector<std::string> pieces_of(const std::string &name, size_t width)
{
    std::vector<std::string> out;
    for (size_t at = 0; at < name.size();) {
        size_t e = name.find('#', at);
        std::string w = name.substr(at, e == std::string::npos ? e : e - at + 1);
        at += w.size();
        if (w.size() > width) {
            char cut[246];
            str_abbrev(cut, w.c_str(), int32_t(width));
            w = cut;
        }
        if (!out.empty() && out.back().size() + w.size() <= width)
            out.back() += w;
        else
            out.push_back(w);
    }
    return out;
}

void put_text(matobj *r, int64_t k, const std::string &s)
{
    (void)selreplace(r, k, s.data(), int64_t(s.size()));
}

bool read_width(const matobj *m, int32_t *width)
{
    return bi_int(m, 5, term_maxname, width);
}

void split_call(int32_t argc, const char *id, bool rows)
{
    m_xeqerrid = id;
    std::vector<umatname> names;
    int32_t width;
    if (!open_stripe(bi_arg(argc, 1), rows, &names) || !read_width(bi_arg(argc, 2), &width))
        return;
    std::vector<std::vector<std::string>> all;
    size_t most = 1;
    for (const umatname &n : names) {
        all.push_back(pieces_of(n.name, size_t(width)));
        most = all.back().size() > most ? all.back().size() : most;
    }
    matobj *r = m_mktmat(MO_STRING, int32_t(all.size()), int32_t(most));
    for (size_t i = 0; r && i < all.size(); i++)
        for (size_t j = 0; j < all[i].size(); j++)
            put_text(r, int64_t(i * most + most - all[i].size() + j), all[i][j]);
    if (r)
        m_result(argc, r);
}

void abbrev_call(int32_t argc, const char *id, bool rows)
{
    m_xeqerrid = id;
    std::vector<umatname> names;
    int32_t width;
    if (!open_stripe(bi_arg(argc, 1), rows, &names) || !read_width(bi_arg(argc, 2), &width))
        return;
    matobj *r = m_mktmat(MO_STRING, int32_t(names.size()), 2);
    for (size_t i = 0; r && i < names.size(); i++) {
        char cut[246];
        const char *eq = strcmp(names[i].eq, "_") ? names[i].eq : "";
        str_abbrev(cut, eq, width);
        put_text(r, int64_t(2 * i), int32_t(strlen(eq)) > width ? cut : eq);
        str_abbrev(cut, names[i].name, width);
        put_text(r, int64_t(2 * i + 1),
                 int32_t(strlen(names[i].name)) > width ? cut : names[i].name);
    }
    if (r)
        m_result(argc, r);
}

void fvinfo_call(int32_t argc, const char *id, bool rows)
{
    m_xeqerrid = id;
    std::vector<umatname> names;
    if (!open_stripe(bi_arg(argc, 1), rows, &names))
        return;
    matobj *r = m_mktmat(MO_REAL, int32_t(names.size()), 4);
    for (size_t i = 0; r && i < names.size(); i++) {
        termname t;
        bool term = term_read(names[i].name, &t);
        double *to = mo_re(r) + 4 * i;
        to[0] = term && term_hasfactor(t);
        to[1] = term && term_isbase(t);
        to[2] = term && term_isomitted(t);
        to[3] = (names[i].info & UN_EMPTY) != 0;
    }
    if (r)
        m_result(argc, r);
}

void index_call(int32_t argc, const char *id, bool rows)
{
    m_xeqerrid = id;
    std::vector<umatname> names;
    if (!open_stripe(bi_arg(argc, 1), rows, &names))
        return;
    std::vector<int32_t> term = term_numbers(names);
    matobj *r = m_mktmat(MO_REAL, int32_t(term.size()), 1);
    for (size_t i = 0; r && i < term.size(); i++)
        mo_re(r)[i] = term[i];
    if (r)
        m_result(argc, r);
}

void levels_call(int32_t argc, const char *id, bool rows)
{
    m_xeqerrid = id;
    std::vector<umatname> names;
    if (!open_stripe(bi_arg(argc, 1), rows, &names))
        return;
    std::vector<termname> terms(names.size());
    int32_t most = 1;
    for (size_t i = 0; i < names.size(); i++)
        if (term_read(names[i].name, &terms[i]))
            most = terms[i].n > most ? terms[i].n : most;
        else
            terms[i].n = 0;
    matobj *r = m_mktmat(MO_REAL, int32_t(names.size()), most);
    for (size_t i = 0; r && i < terms.size(); i++)
        for (int32_t j = 0; j < most; j++) {
            const termpart &p = terms[i].part[j];
            bool level = j < terms[i].n && p.kind == TP_LEVEL;
            mo_re(r)[int64_t(i) * most + j] = level ? p.level : misval;
        }
    if (r)
        m_result(argc, r);
}

// Names of each term that count: all of them, or those left out.
void count_call(int32_t argc, const char *id, bool rows, bool omitted)
{
    m_xeqerrid = id;
    std::vector<umatname> names;
    if (!open_stripe(bi_arg(argc, 1), rows, &names))
        return;
    std::vector<int32_t> term = term_numbers(names);
    matobj *r = m_mktmat(MO_REAL, term.empty() ? 0 : term.back(), 1);
    for (int64_t k = 0; r && k < mo_count(r); k++)
        mo_re(r)[k] = 0;
    for (size_t i = 0; r && i < term.size(); i++) {
        termname t;
        bool out = term_read(names[i].name, &t) && term_isomitted(t);
        mo_re(r)[term[i] - 1] += !omitted || out;
    }
    if (r)
        m_result(argc, r);
}

} // namespace

#define BOTH(word, call)                                                                           \
    void biov_matrixrowstripe_##word(int32_t argc)                                                 \
    {                                                                                              \
        call("ov_matrixrowstripe_" #word "()", true);                                              \
    }                                                                                              \
    void biov_matrixcolstripe_##word(int32_t argc)                                                 \
    {                                                                                              \
        call("ov_matrixcolstripe_" #word "()", false);                                             \
    }
#define C_SPLIT(id, rows) split_call(argc, id, rows)
#define C_ABBREV(id, rows) abbrev_call(argc, id, rows)
#define C_FVINFO(id, rows) fvinfo_call(argc, id, rows)
#define C_INDEX(id, rows) index_call(argc, id, rows)
#define C_LEVELS(id, rows) levels_call(argc, id, rows)
#define C_SIZE(id, rows) count_call(argc, id, rows, false)
#define C_OMIT(id, rows) count_call(argc, id, rows, true)
BOTH(split, C_SPLIT)
BOTH(abbrev, C_ABBREV)
BOTH(fvinfo, C_FVINFO)
BOTH(term_index, C_INDEX)
BOTH(term_levels, C_LEVELS)
BOTH(term_size, C_SIZE)
BOTH(term_omit, C_OMIT)
