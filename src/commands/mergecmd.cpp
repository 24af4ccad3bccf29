// commands/mergecmd.cpp - _merge 1:1|m:1|1:m|m:m keys using FILE: the variables of a file
// beside those in memory, rows matched on keys, or by number with 1:1 _n.
//
//   keepusing(varlist) generate(name) nogenerate nolabel nonotes force noreport
//   update replace assert(results) keep(results)
//
// Both sides are walked together in the order of the keys, through an index each, a group of
// equal keys at a time. Rows the file alone has, and rows of memory that match several, are
// added behind; the walk tells where each row belongs, and at the end they go there at once.
//
// Where a row comes from stands in a byte variable: 1 memory, 2 the file, 3 both, and with
// update 4 a missing value was filled, 5 the two sides differ.
#include "commands/sidejoin.h"
#include "core/limits.h"
#include "core/mem.h"
#include "core/pollsort.h"
#include "core/progress.h"
#include "core/rc.h"
#include "core/state.h"
#include "core/text.h"
#include "data/dsa.h"
#include "data/labels.h"
#include "data/sort_int.h"
#include "data/sort.h"
#include "data/variables.h"
#include "expr/generate.h"
#include "expr/parse.h"
#include "interp/messages.h"
#include "output/fmt.h"
#include "output/print.h"
#include "stats/results.h"
#include <algorithm>
#include <cstring>

namespace {

enum : uint8_t { R_MASTER = 1, R_USING, R_MATCH, R_FILLED, R_CONFLICT };

struct mergekey {
    int32_t side, var;
    uint8_t type;   // what both are compared as
};
struct mergecmd_t {
    bool manymaster, manyusing, bynumber;
    bool label, notes, force, report, update, replace, gen;
    char flag[33];
    uint32_t asserted, kept;  // bit r: result r is allowed; 0 not asked
    dtaside u;
    std::vector<mergekey> key;
    std::vector<sortkey> mkey;
    std::vector<joinvar> list;   // without the keys
    std::vector<int32_t> order;  // the file's rows in the order of the keys
    std::vector<int32_t> master; // memory's
    std::vector<int32_t> places; // the row that stands at each place of the result, from 1
    std::vector<uint8_t> result; // of each row in memory, from 0
    int32_t N0;                  // rows memory had
    int32_t count[6];
};

// ---- the command

int32_t kind(mergecmd_t *m)
{
    char *p = ti_wheretok(tokinfo);
    while (*p == ' ')
        p++;
    bool good = (*p == '1' || *p == 'm') && p[1] == ':' && (p[2] == '1' || p[2] == 'm') &&
                (p[3] == ' ' || !p[3]);
    if (!good)
        return errout(RC_SYNTAX, "1:1, m:1, 1:m or m:m required\n");
    m->manymaster = *p == 'm';
    m->manyusing = p[2] == 'm';
    for (p += 3; *p == ' ';)
        p++;
    m->bynumber = !strncmp(p, "_n ", 3);
    if (m->bynumber && (m->manymaster || m->manyusing))
        return errout(RC_SYNTAX, "_n goes with 1:1 only\n");
    ti_settok(tokinfo, m->bynumber ? p + 2 : p);
    return 0;
}

// The result a digit or a word names, 0 when it is none.
int32_t result_of(const char *word)
{
    static const struct {
        const char *word;
        size_t min;
        uint8_t result;
    } words[] = {{"master", 4, R_MASTER},       {"using", 2, R_USING},
                 {"matched", 3, R_MATCH},       {"matches", 3, R_MATCH},
                 {"match_update", 7, R_FILLED}, {"match_conflict", 7, R_CONFLICT}};
    if (*word >= '1' && *word <= '5' && !word[1])
        return *word - '0';
    size_t n = strlen(word);
    for (const auto &w : words)
        if (n >= w.min && !strncmp(word, w.word, n))
            return w.result;
    return 0;
}

// An option's results as one bit each.
int32_t results(const char *option, uint32_t *bits)
{
    char text[macrolen];
    *bits = 0;
    if (!ti_pi_findargasis(tokinfo, parinfo, option, int32_t(strlen(option)), text, sizeof text))
        return 0;
    toktype ti;
    ti_settok(&ti, text);
    while (*ti_gettok(&ti, prsestd)) {
        int32_t r = result_of(ti.token);
        if (!r)
            return errout(RC_SYNTAX, "%s(%s) invalid\n", option, tok_text(ti.token));
        *bits |= 1u << r;
    }
    return 0;
}

int32_t parse(mergecmd_t *m)
{
    int32_t rc = kind(m);
    if (rc)
        return rc;
    parinfo->pi_vlist = m->bynumber ? PI_NO : PI_REQ;
    parinfo->pi_if = parinfo->pi_in = parinfo->pi_exp = parinfo->pi_wgt = PI_NO;
    parinfo->pi_using = PI_REQ;
    parinfo->pi_opts = PI_OK;
    if ((rc = ti_pi_parse(tokinfo, parinfo)))
        return rc;
    char list[macrolen];
    ti_pi_findargasis(tokinfo, parinfo, "keepusing", 9, list, sizeof list);
    m->label = ti_pi_findopt(tokinfo, parinfo, "label", 3, 1);
    m->notes = ti_pi_findopt(tokinfo, parinfo, "notes", 4, 1);
    m->force = ti_pi_findopt(tokinfo, parinfo, "force", 5, 0);
    m->report = ti_pi_findopt(tokinfo, parinfo, "report", 3, 1);
    m->update = ti_pi_findopt(tokinfo, parinfo, "update", 6, 0);
    m->replace = ti_pi_findopt(tokinfo, parinfo, "replace", 7, 0);
    strcpy(m->flag, "_merge");
    char name[33];
    bool named = ti_pi_findargn(tokinfo, parinfo, "generate", 3, name, sizeof name, 1);
    if (named)
        strcpy(m->flag, name);
    m->gen = named || ti_pi_findopt(tokinfo, parinfo, "generate", 3, 1);
    if ((rc = results("assert", &m->asserted)) || (rc = results("keep", &m->kept)) ||
        (rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    if (m->replace && !m->update)
        return errout(RC_SYNTAX, "option replace goes with update only\n");
    if (m->gen && sysfindvar(m->flag))
        return error2(3, m->flag);
    return m->gen ? chkname(m->flag, false) : 0;
}

// ---- keys

int32_t find_keys(mergecmd_t *m)
{
    for (int32_t i = 0; !m->bynumber && i < parinfo->pi_nvar; i++) {
        mergekey k;
        k.var = parinfo->vl_vr[i];
        const char *name = _varlist[k.var - 1];
        k.side = side_find(&m->u, name);
        if (k.side < 0)
            return errout(RC_NOTFOUND, "variable %s not found in the file\n", name);
        uint8_t a = _typlist[k.var - 1], b = m->u.type[size_t(k.side)];
        char x[8], y[8];
        if (t_isstr(a) != t_isstr(b))
            return errout(106, "key variable %s is %s in memory but %s in the file\n", name,
                          type_word(a, x), type_word(b, y));
        m->key.push_back(k);
    }
    return 0;
}

// The file's rows hold its types; a number of the single-missing ones compares by value.
int one_key(const mergecmd_t *m, const mergekey &k, int32_t a, int32_t b)
{
    uint8_t t = m->u.d.types[k.side];
    if (t_isstr(t) || t >= T_BYTE) {
        sortkey s = {t, 0};
        return sort_onekey(s, side_cell(&m->u, k.side, a), side_cell(&m->u, k.side, b));
    }
    int64_t x = sort_ofdouble(side_num(&m->u, k.side, a)),
            y = sort_ofdouble(side_num(&m->u, k.side, b));
    return x < y ? -1 : x > y;
}

int side_cmp(const mergecmd_t *m, int32_t a, int32_t b)
{
    for (const mergekey &k : m->key)
        if (int c = one_key(m, k, a, b))
            return c;
    return 0;
}

// A row of memory against a row of the file.
int across(const mergecmd_t *m, int32_t obs, int32_t row)
{
    const char *p = dsa_obsptr(sysdsa, uint32_t(obs));
    for (const mergekey &k : m->key) {
        const char *a = p + sysdsa->offset[k.var - 1], *b = side_cell(&m->u, k.side, row);
        uint8_t ta = _typlist[k.var - 1], tb = m->u.d.types[k.side];
        if (t_isstr(ta)) {
            size_t na = strnlen(a, ta), nb = strnlen(b, tb);
            int c = memcmp(a, b, std::min(na, nb));
            if (c || na != nb)
                return c ? c : na < nb ? -1 : 1;
            continue;
        }
        int64_t x = sort_ofdouble(cell_data(ta, a)), y = sort_ofdouble(side_num(&m->u, k.side, row));
        if (x != y)
            return x < y ? -1 : 1;
    }
    return 0;
}

int32_t master_cmp(const mergecmd_t *m, int32_t a, int32_t b)
{
    return sort_rows(m->mkey.data(), int32_t(m->mkey.size()), dsa_obsptr(sysdsa, uint32_t(a)),
                     dsa_obsptr(sysdsa, uint32_t(b)));
}

// The first key decides most comparisons, so it stands beside the row's number.
struct siderow {
    int64_t key;
    int32_t row;
};

int64_t first_key(const mergecmd_t *m, int32_t row)
{
    const mergekey &k = m->key[0];
    uint8_t t = m->u.d.types[k.side];
    if (t_isstr(t) || t >= T_BYTE)
        return sort_ordinal({t, 0}, side_cell(&m->u, k.side, row));
    return sort_ofdouble(side_num(&m->u, k.side, row));
}

int32_t order_file(mergecmd_t *m)
{
    auto n = size_t(m->u.d.N);
    m->order.resize(n);
    bool up = true;
    for (size_t i = 0; i < n; i++) {
        m->order[i] = int32_t(i);
        up = up && (i == 0 || side_cmp(m, int32_t(i) - 1, int32_t(i)) <= 0);
    }
    if (up || m->bynumber)
        return 0;
    std::vector<siderow> rows(n);
    for (size_t i = 0; i < n; i++)
        rows[i] = {first_key(m, int32_t(i)), int32_t(i)};
    bool one = m->key.size() == 1 && !t_isstr(m->u.d.types[m->key[0].side]);
    int32_t rc = poll_sort(rows.data(), int64_t(n), [&](const siderow &a, const siderow &b) {
        if (a.key != b.key)
            return a.key < b.key;
        int c = one ? 0 : side_cmp(m, a.row, b.row);
        return c ? c < 0 : a.row < b.row;
    });
    for (size_t i = 0; i < n; i++)
        m->order[i] = rows[i].row;
    return rc;
}

std::vector<int32_t> key_vars(const mergecmd_t *m)
{
    std::vector<int32_t> keys;
    for (const mergekey &k : m->key)
        keys.push_back(k.var);
    return keys;
}

int32_t put_in_order(mergecmd_t *m)
{
    std::vector<int32_t> keys = key_vars(m);
    m->master.resize(size_t(_Nobs) + 1);
    int32_t n = sort_index(keys.data(), int32_t(keys.size()), nullptr, m->master.data());
    return n < 0 ? -n : order_file(m);
}

int32_t not_unique(const mergecmd_t *m, const char *where)
{
    std::string names;
    for (const mergekey &k : m->key)
        names += std::string(names.empty() ? "" : " ") + _varlist[k.var - 1];
    return errout(459, "variable%s %s do%s not uniquely identify observations in the %s\n",
                  m->key.size() > 1 ? "s" : "", names.c_str(), m->key.size() > 1 ? "" : "es", where);
}

int32_t check_unique(const mergecmd_t *m)
{
    if (m->bynumber)
        return 0;
    for (int32_t i = 2; !m->manymaster && i <= _Nobs; i++)
        if (!master_cmp(m, m->master[size_t(i) - 2], m->master[size_t(i) - 1]))
            return not_unique(m, "data in memory");
    for (size_t i = 1; !m->manyusing && i < m->order.size(); i++)
        if (!side_cmp(m, m->order[i - 1], m->order[i]))
            return not_unique(m, "file");
    return fault_poll();
}

void fill_master_keys(mergecmd_t *m)
{
    m->mkey.clear();
    for (const mergekey &k : m->key)
        m->mkey.push_back({_typlist[k.var - 1], sysdsa->offset[k.var - 1]});
}

// ---- the walk

// A matched pair. What memory has already stands unless update says otherwise.
uint8_t join_pair(mergecmd_t *m, int32_t obs, int32_t row)
{
    uint8_t r = R_MATCH;
    for (const joinvar &v : m->list) {
        if (v.fresh) {
            join_put(&m->u, &v, row, obs);
            continue;
        }
        if (!m->update)
            continue;
        char a[246], b[246];
        bool str = t_isstr(_typlist[v.var - 1]), mine, theirs, same;
        if (str) {
            dsa_sdata(sysdsa, uint32_t(v.var), uint32_t(obs), a);
            side_str(&m->u, v.side, row, b);
            mine = *a;
            theirs = *b;
            same = !strcmp(a, b);
        } else {
            double x = dsa_data(sysdsa, uint32_t(v.var), uint32_t(obs));
            double y = side_num(&m->u, v.side, row);
            mine = !ovismissing(x);
            theirs = !ovismissing(y);
            same = x == y;
        }
        if (!theirs || same)
            continue;
        if (!mine || m->replace)
            join_put(&m->u, &v, row, obs);
        if (mine)
            r = R_CONFLICT;
        else if (r == R_MATCH)
            r = R_FILLED;
    }
    return r;
}

// What the walk decides; rows are added afterwards, in one step.
struct plan {
    int32_t obs, row;  // obs 0: the file alone; the row of memory is copied otherwise
};

int32_t walk(mergecmd_t *m, std::vector<plan> *add, std::vector<int32_t> *partner)
{
    int32_t N = _Nobs;
    size_t o = 0, u = 0, no = size_t(N), nu = m->order.size();
    partner->assign(no + 1, -1);
    m->places.assign(1, 0);
    m->places.reserve(no + nu + 1);
    auto append = [&](int32_t obs, int32_t row) {
        add->push_back({obs, row});
        m->places.push_back(N + int32_t(add->size()));
    };
    while (o < no || u < nu) {
        if (((o + u) & 0xfff) == 0 && progress_poll("matching", double(o) + u, double(no) + nu))
            return RC_BREAK;
        int32_t obs = o < no ? m->master[o] : 0;
        int c = o >= no ? 1 : u >= nu ? -1 : m->bynumber ? 0 : across(m, obs, m->order[u]);
        if (c < 0) {
            m->places.push_back(obs);
            o++;
            continue;
        }
        if (c > 0) {
            append(0, m->order[u++]);
            continue;
        }
        size_t o2 = o + 1, u2 = u + 1;
        while (m->manymaster && o2 < no && !master_cmp(m, obs, m->master[o2]))
            o2++;
        while (m->manyusing && u2 < nu && !side_cmp(m, m->order[u], m->order[u2]))
            u2++;
        for (size_t i = o; i < o2; i++) {
            (*partner)[size_t(m->master[i])] = m->order[std::min(u + (i - o), u2 - 1)];
            m->places.push_back(m->master[i]);
        }
        // The file's rows left over go with copies of the last row of memory, made before it
        // is filled, so that each sees memory's own values.
        for (size_t i = u + (o2 - o); i < u2; i++)
            append(m->master[o2 - 1], m->order[i]);
        o = o2;
        u = u2;
    }
    return 0;
}

// Rows, and what is known of them, to their places.
void settle(mergecmd_t *m)
{
    std::vector<uint8_t> was = m->result;
    bool stands = true;
    for (size_t i = 1; i < m->places.size(); i++) {
        m->result[i] = was[size_t(m->places[i])];
        stands = stands && m->places[i] == int32_t(i);
    }
    if (!stands)
        sort_apply(m->places.data());
}

int32_t add_rows(mergecmd_t *m, const std::vector<plan> &add)
{
    if (add.empty())
        return 0;
    int32_t rc = dsa_add_obs(sysdsa, int64_t(add.size()), true), obs = m->N0;
    if (rc)
        return rc;
    _srtlist[0] = 0;
    for (const plan &p : add) {
        obs++;
        if (p.obs)
            dsa_cp_obs(sysdsa, uint32_t(obs), uint32_t(p.obs));
        else
            for (const mergekey &k : m->key) {
                joinvar v = {k.side, k.var, false};
                join_put(&m->u, &v, p.row, obs);
            }
        if ((obs & 0xfff) == 0 && fault_poll())
            return RC_BREAK;
    }
    return 0;
}

int32_t fill(mergecmd_t *m, const std::vector<plan> &add, const std::vector<int32_t> &partner)
{
    m->result.assign(size_t(_Nobs) + 1, R_MASTER);
    int32_t obs = m->N0;
    for (const plan &p : add) {
        obs++;
        m->result[size_t(obs)] = p.obs ? join_pair(m, obs, p.row) : uint8_t(R_USING);
        for (size_t i = 0; !p.obs && i < m->list.size(); i++)
            join_put(&m->u, &m->list[i], p.row, obs);
        if ((obs & 0xfff) == 0 && fault_poll())
            return RC_BREAK;
    }
    for (obs = 1; obs <= m->N0; obs++) {
        if (partner[size_t(obs)] >= 0)
            m->result[size_t(obs)] = join_pair(m, obs, partner[size_t(obs)]);
        if ((obs & 0xfff) == 0 && fault_poll())
            return RC_BREAK;
    }
    for (size_t i = 1; i < m->result.size(); i++)
        m->count[m->result[i]]++;
    return 0;
}

// ---- afterwards

const char *const result_words[] = {"", "master only (1)", "using only (2)", "matched (3)",
                                    "missing updated (4)", "nonmissing conflict (5)"};

int32_t make_flag(mergecmd_t *m)
{
    if (!m->gen)
        return 0;
    int32_t var = addvar(T_BYTE, m->flag);
    if (var < 0)
        return -var;
    _i_Kvar = _Kvar;
    for (int32_t i = 1; i <= _Nobs; i++)
        dsa_bstore(m->result[size_t(i)], sysdsa, uint32_t(var), uint32_t(i));
    return 0;
}

int32_t label_flag(const mergecmd_t *m)
{
    int32_t var = sysfindvar(m->flag);
    if (!m->gen || !var)
        return 0;
    vlpair pairs[5];
    for (int32_t i = 0; i < 5; i++)
        pairs[i] = {i + 1, result_words[i + 1]};
    if (!vlfind("_merge") && !vlbuild("_merge", pairs, 5))
        return vlwhy();
    strcpy(_lbllist[var - 1], "_merge");
    strcpy(_fmtlist[var - 1], "%23.0g");
    return 0;
}

// Rows whose result is not to be kept.
int32_t keep_results(mergecmd_t *m)
{
    if (!m->kept)
        return 0;
    dsa_delhandle h = dsa_delete_open(sysdsa, 0);
    if (h.var < 0)
        return -h.var;
    bool any = false;
    for (int32_t i = 1; i <= _Nobs; i++)
        if (!(m->kept >> m->result[size_t(i)] & 1)) {
            dsa_bstore(1, sysdsa, uint32_t(h.var), uint32_t(i));
            any = true;
        }
    int32_t rc = any ? dsa_delete(sysdsa, h.var) : 0;
    dsa_delete_close(sysdsa, &h);
    for (int32_t r = 1; r <= 5; r++)
        if (!(m->kept >> r & 1))
            m->count[r] = 0;
    return rc;
}

void table_row(int32_t indent, const char *what, int32_t n, const mergecmd_t *m, int32_t r)
{
    char buf[40];
    spout21fat(1, "    %*s%-*s", indent, "", 28 - indent, what);
    spout21fat(0, "%12s", fmt_comma(buf, n));
    if (r && m->gen)
        spout21fat(1, "  (%s==%d)", m->flag, r);
    newline();
}

void table(const mergecmd_t *m)
{
    static const char rule[] = "    ----------------------------------------\n";
    const int32_t *n = m->count;
    outlev_keep keep(1);
    spout21fat(1, "\n    %-28s%12s\n", "Result", "# of obs.");
    spout21at(1, rule);
    table_row(0, "not matched", n[R_MASTER] + n[R_USING], m, 0);
    if (n[R_MASTER] + n[R_USING]) {
        table_row(4, "from master", n[R_MASTER], m, R_MASTER);
        table_row(4, "from using", n[R_USING], m, R_USING);
    }
    newline();
    if (m->update) {
        table_row(0, "matched", n[R_MATCH] + n[R_FILLED] + n[R_CONFLICT], m, 0);
        table_row(4, "not updated", n[R_MATCH], m, R_MATCH);
        table_row(4, "missing updated", n[R_FILLED], m, R_FILLED);
        table_row(4, "nonmissing conflict", n[R_CONFLICT], m, R_CONFLICT);
    } else {
        table_row(0, "matched", n[R_MATCH], m, R_MATCH);
    }
    spout21at(1, rule);
}

void post(const mergecmd_t *m)
{
    retval_clear();
    retval_set_gscalar(m->count[R_MASTER], "N_master");
    retval_set_gscalar(m->count[R_USING], "N_using");
    retval_set_gscalar(m->count[R_MATCH], "N_matched");
    retval_set_gscalar(m->count[R_FILLED], "N_updated");
    retval_set_gscalar(m->count[R_CONFLICT], "N_conflict");
}

int32_t finish(mergecmd_t *m)
{
    int32_t rc = join_chars(&m->u, m->list, m->notes);
    if (!rc && m->label)
        rc = join_labels(&m->u);
    if (!rc)
        rc = label_flag(m);
    uint32_t other = 0;
    for (int32_t r = 1; r <= 5; r++)
        other |= m->count[r] && m->asserted && !(m->asserted >> r & 1);
    if (!rc)
        rc = keep_results(m);
    // The rows stand in order: this finds it so and notes it.
    std::vector<int32_t> keys = key_vars(m);
    if (!rc && !keys.empty())
        rc = sort_obs(keys.data(), int32_t(keys.size()), 1, _Nobs, false, SORT_AUTO);
    upSort = true;
    if (rc)
        return rc;
    if (m->report)
        table(m);
    post(m);
    return other ? errout(9, "merge:  not all observations have the results asserted\n") : 0;
}

int32_t merge(mergecmd_t *m)
{
    std::vector<uint8_t> wanted;
    int32_t rc = join_wanted(&m->u.d, "keepusing", &wanted);
    if (rc || (rc = find_keys(m)))
        return rc;
    for (const mergekey &k : m->key)
        wanted[size_t(k.side)] = 0;
    if ((rc = join_match(&m->u, wanted, m->force, &m->list)) || (rc = put_in_order(m)))
        return rc;
    fill_master_keys(m);
    if ((rc = check_unique(m)))
        return rc;
    int32_t K = _Kvar;
    m->N0 = _Nobs;
    std::vector<plan> add;
    std::vector<int32_t> partner;
    std::vector<joinvar> keys;
    for (const mergekey &k : m->key)
        keys.push_back({k.side, k.var, false});
    // Nothing of memory changes before the walk is done and there is room for all it asks.
    if ((rc = walk(m, &add, &partner)) ||
        (rc = join_room(&m->u, m->list, m->gen, int64_t(add.size()))))
        return rc;
    int16_t sorted = _Kvar ? _srtlist[0] : int16_t(0);
    if (!(rc = join_ready(&m->u, &keys)) && !(rc = join_ready(&m->u, &m->list)) &&
        !(rc = add_rows(m, add)) && !(rc = fill(m, add, partner)))
        rc = make_flag(m);
    if (rc) {
        dsa_truncate_obs(sysdsa, uint32_t(m->N0));
        dsa_truncate_var(sysdsa, uint32_t(K), true);
        _i_Kvar = _Kvar;
        if (K)
            _srtlist[0] = sorted;
        return rc;
    }
    s_updata = newdata = true;
    settle(m);
    return finish(m);
}

}  // namespace

int32_t mergecmd(int32_t);
int32_t mergecmd(int32_t)
{
    mergecmd_t m = {};
    int32_t rc = parse(&m);
    if (rc)
        return rc;
    rc = side_load(join_file().c_str(), &m.u);
    return rc ? rc : merge(&m);
}
