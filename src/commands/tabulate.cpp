// commands/tabulate.cpp - tabulate: frequencies of one variable, or of two against each other.
#include "commands/categories.h"
#include "commands/groupmeans.h"
#include "commands/tabstats.h"
#include "core/mem.h"
#include "core/missing.h"
#include "core/progress.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "data/labels.h"
#include "data/umat.h"
#include "data/variables.h"
#include "expr/generate.h"
#include "expr/parse.h"
#include "interp/messages.h"
#include "output/fmt.h"
#include "output/oml.h"
#include "output/print.h"
#include "stats/results.h"
#include "stats/statparse.h"
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace {

constexpr int32_t max_oneway = 12000, max_rows = 1200, max_cols = 80;

struct tabcmd {
    bool missing, nolabel, sort, plot, freq, row, col, cell, key;
    char stub[33], matcell[33], matrow[33], matcol[33];
    int32_t nvar;
    int32_t sumvar = 0;          // summarize(): the variable whose means are shown
    meanscolumns show;
    std::vector<groupsum> sums;  // as freqs, then as cellw
    tabstats stats;
    categories r, c;
    std::vector<double> freqs;  // by numbers met: r + c * nrows at the end (see tally)
    double total;
    std::vector<double> cellw;  // ranks: row * ncol + col
};

int32_t parse(tabcmd *t)
{
    statline line;
    line.vlist = PI_REQ;
    line.weights = W_AW | W_FW | W_IW;
    line.weightdflt = W_FW;
    int32_t rc = stat_parse(line);
    if (rc)
        return rc;
    t->missing = stat_option("missing", 1);
    t->nolabel = !stat_option("label", 1, true);
    t->sort = stat_option("sort", 2);
    t->plot = stat_option("plot", 1);
    t->freq = stat_option("freq", 2, true);
    t->row = stat_option("row", 1);
    t->col = stat_option("column", 1);
    t->cell = stat_option("cell", 2);
    t->key = stat_option("key", 1, true);
    ti_pi_findargn(tokinfo, parinfo, "generate", 1, t->stub, 31, 1);
    ti_pi_findargn(tokinfo, parinfo, "matcell", 4, t->matcell, 33, 1);
    ti_pi_findargn(tokinfo, parinfo, "matrow", 4, t->matrow, 33, 1);
    ti_pi_findargn(tokinfo, parinfo, "matcol", 4, t->matcol, 33, 1);
    char text[81];
    if (ti_pi_findargn(tokinfo, parinfo, "summarize", 2, text, 80, 1) && (rc = stat_numvar(text, &t->sumvar)))
        return rc;
    t->show.means = stat_option("means", 2, true);
    t->show.standard = stat_option("standard", 2, true);
    t->show.freq = t->freq;
    t->show.scaled = parinfo->pi_hasexp && parinfo->pi_wtype == W_AW;
    tabstats_options(&t->stats);
    if ((rc = ti_pi_chkopt(tokinfo, parinfo)))
        return rc;
    t->nvar = parinfo->pi_nvar;
    if (t->nvar > 2)
        return error(RC_TOOMANYVARS);
    if (t->nvar == 1 && tabstats_any(&t->stats))
        return errout(RC_SYNTAX, "tests and measures of association need two variables\n");
    if (t->nvar == 2 && (*t->stub || t->plot || t->sort))
        return errout(RC_SYNTAX, "options generate(), plot and sort need one variable\n");
    return 0;
}

// One walk over the observations: categories and the sums of weights of their pairs.
int32_t tally(tabcmd *t)
{
    category_open(&t->r, parinfo->vl_vr[0]);
    if (t->nvar == 2)
        category_open(&t->c, parinfo->vl_vr[1]);
    double counted = 0;
    int32_t maxr = t->nvar == 2 ? max_rows : max_oneway, width = t->nvar == 2 ? max_cols : 1;
    for (int32_t obs = parinfo->pi_obs1; obs <= parinfo->pi_obs2; obs++) {
        if ((obs & 0xfff) == 0 && progress_poll("tabulating", obs, parinfo->pi_obs2))
            return stopflag;
        if (!selobs(obs))
            continue;
        double w = 1;
        if (parinfo->pi_hasexp) {
            w = pi_xeq(parinfo, parinfo->wepgm, obs);
            if (w >= misval || w == 0)
                continue;
            if (w < 0 && parinfo->pi_wtype != W_IW)
                return error(402);
            if (parinfo->pi_wtype == W_FW && w != std::floor(w))
                return error(401);
        }
        // Both are looked at before either is counted, so that a value met only beside a
        // missing one makes no empty row.
        if (t->nvar == 2 && !t->missing) {
            int32_t v = t->c.var;
            char s[246];
            if (t_isstr(_typlist[v - 1]) ? !*dsa_sdata(sysdsa, uint32_t(v), uint32_t(obs), s)
                                         : dsa_data(sysdsa, uint32_t(v), uint32_t(obs)) >= misval)
                continue;
        }
        double y = t->sumvar ? dsa_data(sysdsa, uint32_t(t->sumvar), uint32_t(obs)) : 0;
        if (y >= misval)
            continue;
        int32_t i = category_at(&t->r, obs, t->missing, maxr);
        if (i == -1)
            continue;
        int32_t j = t->nvar == 2 ? category_at(&t->c, obs, t->missing, max_cols) : 0;
        if (i < 0 || j < 0)
            return error(134);
        size_t at = size_t(i) * size_t(width) + size_t(j);
        if (at >= t->freqs.size()) {
            t->freqs.resize((size_t(i) + 1) * size_t(width));
            t->sums.resize(t->sumvar ? t->freqs.size() : 0);
        }
        if (t->sumvar)
            gs_add(&t->sums[at], y, w, parinfo->pi_hasexp && parinfo->pi_wtype != W_AW);
        t->freqs[at] += w;
        t->total += w;
        counted++;
    }
    category_sort(&t->r);
    if (t->nvar == 2)
        category_sort(&t->c);
    int32_t nc = t->nvar == 2 ? t->c.count() : 1;
    t->cellw.assign(size_t(t->r.count()) * size_t(nc), 0);
    std::vector<groupsum> bynumber(std::move(t->sums));
    t->sums.assign(t->sumvar ? t->cellw.size() : 0, {});
    for (int32_t i = 0; i < t->r.count(); i++)
        for (int32_t j = 0; j < nc; j++) {
            size_t from = size_t(t->r.order[size_t(i)]) * size_t(width) +
                          size_t(t->nvar == 2 ? t->c.order[size_t(j)] : 0);
            size_t to = size_t(i) * size_t(nc) + size_t(j);
            t->cellw[to] = t->freqs[from];
            if (t->sumvar)
                t->sums[to] = bynumber[from];
        }
    // Analytic weights count for as many observations as there are.
    if (parinfo->pi_hasexp && parinfo->pi_wtype == W_AW && t->total > 0) {
        for (double &f : t->cellw)
            f *= counted / t->total;
        t->total = counted;
    }
    return 0;
}

// ---- printing

const char *fnum(char *buf, size_t n, double f)
{
    if (f == std::floor(f) && std::fabs(f) < 1e15)
        fmt_comma(buf, f);
    else
        fmtnumtrim(buf, n, f, "%10.0g");
    return buf;
}

std::string title_of(int32_t var)
{
    char label[81];
    getvarlab(var, label);
    return *label ? label : _varlist[var - 1];
}

std::string cut(const std::string &s, int32_t n)
{
    return int32_t(s.size()) > n ? s.substr(0, size_t(n)) : s;
}

void dashes(int32_t n)
{
    std::string s(size_t(n > 0 ? n : 0), '-');
    spout21at(1, s.c_str());
}

// Words of a title on lines of at most width characters.
std::vector<std::string> wrap(const std::string &s, int32_t width)
{
    std::vector<std::string> lines(1);
    size_t at = 0;
    while (at < s.size()) {
        size_t end = s.find(' ', at);
        std::string word = s.substr(at, end == std::string::npos ? end : end - at);
        at = end == std::string::npos ? s.size() : end + 1;
        if (!lines.back().empty() && int32_t(lines.back().size() + 1 + word.size()) > width)
            lines.emplace_back();
        lines.back() += (lines.back().empty() ? "" : " ") + cut(word, width);
    }
    return lines;
}

int32_t label_width(const categories &c, bool nolabel, int32_t least, int32_t most)
{
    int32_t w = least;
    for (int32_t i = 0; i < c.count(); i++)
        w = std::max(w, int32_t(category_text(&c, i, nolabel).size()));
    return std::min(w, most);
}

// One line a category, with the mean, the deviation and the frequency.
int32_t print_means(tabcmd *t)
{
    t->show.label = label_width(t->r, t->nolabel, 11, 30);
    gs_heading(t->show, cut(title_of(t->r.var), t->show.label), "Summary of " + title_of(t->sumvar));
    groupsum all;
    for (int32_t i = 0; i < t->r.count(); i++) {
        const groupsum &g = t->sums[size_t(i)];
        gs_row(t->show, cut(category_text(&t->r, i, t->nolabel), t->show.label), g);
        gs_join(&all, g);
        if (stopflag)
            return stopflag;
    }
    gs_rule(t->show);
    gs_row(t->show, "Total", all);
    return stopflag;
}

int32_t print_oneway(tabcmd *t)
{
    int32_t line = omlquery_maxwidth(oml_cur);
    int32_t w = label_width(t->r, t->nolabel, 11, line - 38 > 11 ? line - 38 : 11);
    std::vector<int32_t> rows(size_t(t->r.count()));
    for (size_t i = 0; i < rows.size(); i++)
        rows[i] = int32_t(i);
    if (t->sort)
        std::stable_sort(rows.begin(), rows.end(), [t](int32_t a, int32_t b) {
            return t->cellw[size_t(a)] > t->cellw[size_t(b)];
        });
    newline();
    std::vector<std::string> head = wrap(title_of(t->r.var), w);
    for (size_t i = 0; i + 1 < head.size(); i++)
        spout21fat(1, "%*s |\n", w, head[i].c_str());
    spout21fat(1, t->plot ? "%*s |      Freq.\n" : "%*s |      Freq.     Percent        Cum.\n", w,
               head.back().c_str());
    dashes(w + 1);
    spout21at(1, "+");
    dashes(t->plot ? line - w - 2 : 35);
    newline();
    double run = 0, most = 0;
    for (double f : t->cellw)
        most = std::max(most, f);
    char buf[64];
    for (int32_t i : rows) {
        double f = t->cellw[size_t(i)];
        run += f;
        spout21fat(1, "%*s |", w, cut(category_text(&t->r, i, t->nolabel), w).c_str());
        fnum(buf, sizeof buf, f);
        if (t->plot) {
            int32_t room = line - w - 15;
            spout21fat(0, "%11s |%s\n", buf,
                       std::string(size_t(most > 0 ? std::lround(f / most * room) : 0), '*').c_str());
        } else {
            spout21fat(0, "%11s %11.2f %11.2f\n", buf, f / t->total * 100, run / t->total * 100);
        }
        if (stopflag)
            return stopflag;
    }
    dashes(w + 1);
    spout21at(1, "+");
    dashes(t->plot ? line - w - 2 : 35);
    newline();
    spout21fat(1, "%*s |", w, "Total");
    fnum(buf, sizeof buf, t->total);
    spout21fat(0, t->plot ? "%11s\n" : "%11s %11.2f\n", buf, 100.0);
    return stopflag;
}

constexpr int32_t cellw_ = 11;  // columns of a cell

void print_key(const tabcmd *t)
{
    static const char *const words[] = {"frequency", "row percentage", "column percentage",
                                        "cell percentage"};
    const bool on[] = {t->freq, t->row, t->col, t->cell};
    if (t->sumvar) {
        static const char *const what[] = {"Means", "Standard Deviations", "Frequencies"};
        const bool shown[] = {t->show.means, t->show.standard, t->show.freq};
        std::string head;
        for (int k = 0, left = shown[0] + shown[1] + shown[2]; k < 3; k++)
            if (shown[k]) {
                left--;
                head += what[k] + std::string(left > 1 ? ", " : left == 1 ? " and " : "");
            }
        spout21f("\n%*s%s of %s\n", 16, "", head.c_str(), title_of(t->sumvar).c_str());
    }
    if (t->sumvar || !t->key || on[0] + on[1] + on[2] + on[3] < 2)
        return;
    spout21at(1, "\n+-------------------+\n| Key               |\n|-------------------|\n");
    for (int i = 0; i < 4; i++)
        if (on[i]) {
            int32_t n = int32_t(strlen(words[i])), left = (19 - n) / 2 + (19 - n) % 2;
            spout21fat(1, "|%*s%s%*s|\n", left, "", words[i], 19 - n - left, "");
        }
    spout21at(1, "+-------------------+\n");
}

struct margins {
    std::vector<double> row, col;
    std::vector<groupsum> rowsum, colsum;
    groupsum all;
};

// What the cells hold, line by line: frequency and percentages, or a summary.
struct celllines {
    bool on[7];
    int32_t n = 0;
};
celllines lines_of(const tabcmd *t)
{
    bool sum = t->sumvar != 0;
    celllines l = {{t->freq && !sum, t->row && !sum, t->col && !sum, t->cell && !sum,
                    sum && t->show.means, sum && t->show.standard, sum && t->show.freq}};
    for (bool b : l.on)
        l.n += b;
    return l;
}

// Row i and column j, -1 and the number of columns for the margins.
const groupsum &sum_at(const tabcmd *t, const margins &m, int32_t i, int32_t j)
{
    int32_t nc = t->c.count();
    if (j == nc)
        return i < 0 ? m.all : m.rowsum[size_t(i)];
    return i < 0 ? m.colsum[size_t(j)] : t->sums[size_t(i) * size_t(nc) + size_t(j)];
}

// The lines of one row of the table: frequency and whichever percentages are asked for.
void print_row(const tabcmd *t, const margins &m, const std::string &label, int32_t w, int32_t i,
               int32_t from, int32_t to)
{
    char buf[64];
    int32_t nc = t->c.count();
    celllines lines = lines_of(t);
    bool first = true;
    for (int k = 0; k < 7; k++) {
        if (!lines.on[k])
            continue;
        spout21fat(1, "%*s |", w, first ? label.c_str() : "");
        first = false;
        double rowsum = i < 0 ? t->total : m.row[size_t(i)];
        for (int32_t j = from; j <= to; j++) {
            bool margin = j == to;
            double colsum = margin ? t->total : m.col[size_t(j)];
            double f = margin ? rowsum
                              : i < 0 ? m.col[size_t(j)]
                                      : t->cellw[size_t(i) * size_t(nc) + size_t(j)];
            if (margin)
                spout21at(1, " |");
            if (k == 0)
                fnum(buf, sizeof buf, f);
            else if (k > 3) {
                const groupsum &g = sum_at(t, m, i, margin ? nc : j);
                double z = k == 6 ? g.n : k == 5 ? gs_sd(g, t->show.scaled) : g.n > 0 ? g.mean : misval;
                fmtnumtrim(buf, sizeof buf, z, "%9.0g");
            } else
                snprintf(buf, sizeof buf, "%.2f",
                         100 * f / (k == 1 ? rowsum : k == 2 ? colsum : t->total));
            spout21fat(0, margin ? "%*s" : "%*s", margin ? cellw_ - 1 : cellw_, buf);
        }
        newline();
    }
}

void print_rule(int32_t w, int32_t ncol)
{
    dashes(w + 1);
    spout21at(1, "+");
    dashes(ncol * cellw_ + 1);
    spout21at(1, "+");
    dashes(cellw_ - 1);
    newline();
}

int32_t print_panel(const tabcmd *t, const margins &m, int32_t w, int32_t from, int32_t to)
{
    int32_t inner = (to - from) * cellw_;
    newline();
    std::string ctitle = cut(title_of(t->c.var), inner);
    std::vector<std::string> head = wrap(title_of(t->r.var), w);
    for (size_t i = 0; i + 1 < head.size(); i++)
        spout21fat(1, "%*s |%*s%s%*s |\n", w, head[i].c_str(),
                   i ? 0 : (inner - int32_t(ctitle.size()) + 1) / 2, "", i ? "" : ctitle.c_str(),
                   i ? inner : (inner - int32_t(ctitle.size())) / 2, "");
    if (head.size() == 1)
        spout21fat(1, "%*s |%*s%s\n", w, "", (inner - int32_t(ctitle.size()) + 1) / 2, "",
                   ctitle.c_str());
    spout21fat(1, "%*s |", w, head.back().c_str());
    for (int32_t j = from; j < to; j++)
        spout21fat(1, "%*s", cellw_, cut(category_text(&t->c, j, t->nolabel), cellw_ - 1).c_str());
    spout21fat(1, " |%*s\n", cellw_ - 1, "Total");
    print_rule(w, to - from);
    bool many = lines_of(t).n > 1;
    for (int32_t i = 0; i < t->r.count(); i++) {
        print_row(t, m, cut(category_text(&t->r, i, t->nolabel), w), w, i, from, to);
        if (many || i == t->r.count() - 1)
            print_rule(w, to - from);
        if (stopflag)
            return stopflag;
    }
    print_row(t, m, "Total", w, -1, from, to);
    return stopflag;
}

int32_t print_twoway(tabcmd *t)
{
    int32_t nr = t->r.count(), nc = t->c.count(), line = omlquery_maxwidth(oml_cur);
    margins m;
    m.row.assign(size_t(nr), 0);
    m.col.assign(size_t(nc), 0);
    m.rowsum.resize(size_t(nr));
    m.colsum.resize(size_t(nc));
    for (int32_t i = 0; i < nr; i++)
        for (int32_t j = 0; j < nc; j++) {
            double f = t->cellw[size_t(i) * size_t(nc) + size_t(j)];
            m.row[size_t(i)] += f;
            m.col[size_t(j)] += f;
            if (t->sumvar) {
                const groupsum &g = t->sums[size_t(i) * size_t(nc) + size_t(j)];
                gs_join(&m.rowsum[size_t(i)], g);
                gs_join(&m.colsum[size_t(j)], g);
                gs_join(&m.all, g);
            }
        }
    int32_t w = label_width(t->r, t->nolabel, 10, 20);
    int32_t room = (line - w - 4 - cellw_) / cellw_;
    if (room < 1)
        room = 1;
    print_key(t);
    for (int32_t from = 0; from < nc; from += room)
        if (print_panel(t, m, w, from, std::min(from + room, nc)))
            return stopflag;
    return stopflag;
}

// ---- what is left behind

int32_t leave_matrices(const tabcmd *t)
{
    int32_t nr = t->r.count(), nc = t->nvar == 2 ? t->c.count() : 1, rc;
    matref ref;
    if (*t->matcell) {
        if ((rc = umat_new(t->matcell, MK_MAT, nr, nc, &ref)))
            return rc;
        std::copy(t->cellw.begin(), t->cellw.end(), ref.m->el);
    }
    const categories *of[] = {&t->r, &t->c};
    const char *name[] = {t->matrow, t->matcol};
    for (int k = 0; k < t->nvar; k++) {
        if (!*name[k] || of[k]->text)
            continue;
        int32_t n = of[k]->count();
        if ((rc = umat_new(name[k], MK_MAT, k ? 1 : n, k ? n : 1, &ref)))
            return rc;
        for (int32_t i = 0; i < n; i++)
            ref.m->el[i] = of[k]->num[size_t(of[k]->order[size_t(i)])];
    }
    return 0;
}

// generate(stub): one 0/1 variable a category, missing where the observation is left out.
int32_t leave_dummies(tabcmd *t)
{
    int32_t first = 0;
    for (int32_t i = 0; i < t->r.count(); i++) {
        char name[64], label[300];
        snprintf(name, sizeof name, "%s%d", t->stub, i + 1);
        int32_t var = addvar(T_BYTE, name), rc;
        if (var < 0)
            return -var;
        first = first ? first : var;
        snprintf(label, sizeof label, "%s==%s", _varlist[t->r.var - 1],
                 category_text(&t->r, i, t->nolabel).c_str());
        label[80] = 0;
        if ((rc = putvarlab(var, label)))
            return rc;
    }
    for (int32_t obs = 1; obs <= _Nobs && first; obs++) {
        bool in = obs >= parinfo->pi_obs1 && obs <= parinfo->pi_obs2 && selobs(obs);
        int32_t k = in ? category_find(&t->r, obs) : -1;
        for (int32_t i = 0; i < t->r.count(); i++)
            dsa_store(k < 0 ? misval : t->r.rank[size_t(k)] == i, sysdsa, uint32_t(first + i),
                      uint32_t(obs));
    }
    _i_Kvar = _Kvar;
    s_updata = true;
    return 0;
}

}  // namespace

int32_t tabulate(int32_t);
int32_t tabulate(int32_t)
{
    tabcmd t = {};
    int32_t rc = parse(&t);
    if (rc || (rc = tally(&t)))
        return rc;
    outlev_keep keep(1);
    retval_clear();
    retval_set_gscalar(t.total, "N");
    retval_set_gscalar(t.r.count(), "r");
    if (t.nvar == 2)
        retval_set_gscalar(t.c.count(), "c");
    if (!t.r.count())
        return error(RC_NOOBS);
    bool shown = lines_of(&t).n > 0;  // or the tests alone
    if (t.nvar == 1)
        rc = t.sumvar ? print_means(&t) : print_oneway(&t);
    else
        rc = shown ? print_twoway(&t) : 0;
    if (rc || (rc = leave_matrices(&t)))
        return rc;
    if (t.nvar == 2
        && (rc = tabstats_show(&t.stats, t.cellw.data(), t.r.count(), t.c.count())))
        return rc;
    return *t.stub ? leave_dummies(&t) : 0;
}
