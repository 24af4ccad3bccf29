#include "commands/tabstats.h"
#include "core/mem.h"
#include "core/missing.h"
#include "core/rc.h"
#include "core/state.h"
#include "expr/parse.h"
#include "interp/messages.h"
#include "output/fmt.h"
#include "output/print.h"
#include "stats/dist.h"
#include "stats/results.h"
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <vector>

void tabstats_options(tabstats *t)
{
    auto has = [](const char *word, int32_t min) {
        return ti_pi_findopt(tokinfo, parinfo, word, min, 0) != 0;
    };
    bool all = has("all", 1);
    t->chi2 = has("chi2", 2) || all;
    t->lrchi2 = has("lrchi2", 2) || all;
    t->exact = has("exact", 1);
    t->v = has("V", 1) || all;
    t->gamma = has("gamma", 2) || all;
    t->taub = has("taub", 1) || all;
}

namespace {

struct table {
    const double *cells;
    size_t nr, nc;
    std::vector<double> row, col;
    double n = 0;
    double at(size_t i, size_t j) const { return cells[i * nc + j]; }
};

void line(const char *label, double z, const char *what, double more)
{
    char num[64], tail[64] = "";
    fmtnumtrim(num, sizeof num, z, "%9.4f");
    if (what) {
        fmtnumtrim(tail, sizeof tail, more, "%5.3f");
        spout21f("%25s = %9s  %s = %s\n", label, num, what, tail);
    } else
        spout21f("%25s = %9s\n", label, num);
}

void chi_line(const char *name, double stat, double df, const char *r, const char *rp)
{
    char label[64];
    double p = df > 0 ? chi2tail2(df, stat) : misval;
    snprintf(label, sizeof label, "%s chi2(%.0f)", name, df);
    line(label, stat, " Pr", p);
    retval_set_gscalar(stat, r);
    retval_set_gscalar(p, rp);
}

double pearson(const table &t)
{
    double sum = 0;
    for (size_t i = 0; i < t.nr; i++)
        for (size_t j = 0; j < t.nc; j++) {
            double e = t.row[i] * t.col[j] / t.n;
            if (e > 0)
                sum += (t.at(i, j) - e) * (t.at(i, j) - e) / e;
        }
    return sum;
}

double likelihood_ratio(const table &t)
{
    double sum = 0;
    for (size_t i = 0; i < t.nr; i++)
        for (size_t j = 0; j < t.nc; j++)
            if (t.at(i, j) > 0)
                sum += t.at(i, j) * std::log(t.at(i, j) * t.n / t.row[i] / t.col[j]);
    return sum > 0 ? 2 * sum : 0;
}

double cramer(const table &t, double chi2)
{
    if (t.nr == 2 && t.nc == 2)
        return (t.at(0, 0) * t.at(1, 1) - t.at(0, 1) * t.at(1, 0))
               / std::sqrt(t.row[0] * t.row[1] * t.col[0] * t.col[1]);
    double least = double(std::min(t.nr, t.nc)) - 1;
    return least > 0 ? std::sqrt(chi2 / (t.n * least)) : misval;
}

// Pairs of observations in order and against it, seen from each cell (Goodman and Kruskal
// 1963; Brown and Benedetti 1977 for the standard errors).
struct pairs {
    std::vector<double> c, d;
    double P = 0, Q = 0;
};

pairs count_pairs(const table &t)
{
    // Sums of all cells above and left, from which any quadrant follows.
    std::vector<double> s((t.nr + 1) * (t.nc + 1));
    auto S = [&](size_t i, size_t j) -> double & { return s[i * (t.nc + 1) + j]; };
    for (size_t i = 0; i < t.nr; i++)
        for (size_t j = 0; j < t.nc; j++)
            S(i + 1, j + 1) = t.at(i, j) + S(i, j + 1) + S(i + 1, j) - S(i, j);
    pairs p;
    p.c.resize(t.nr * t.nc);
    p.d.resize(t.nr * t.nc);
    for (size_t i = 0; i < t.nr; i++)
        for (size_t j = 0; j < t.nc; j++) {
            double ul = S(i, j), ur = S(i, t.nc) - S(i, j + 1), ll = S(t.nr, j) - S(i + 1, j);
            double lr = S(t.nr, t.nc) - S(i + 1, t.nc) - S(t.nr, j + 1) + S(i + 1, j + 1);
            p.c[i * t.nc + j] = ul + lr;
            p.d[i * t.nc + j] = ur + ll;
            p.P += t.at(i, j) * (ul + lr);
            p.Q += t.at(i, j) * (ur + ll);
        }
    return p;
}

void show_gamma(const table &t, const pairs &p)
{
    double sum = p.P + p.Q, v = 0;
    for (size_t i = 0; i < t.nr * t.nc; i++) {
        double z = p.Q * p.c[i] - p.P * p.d[i];
        v += t.cells[i] * z * z;
    }
    double gamma = sum > 0 ? (p.P - p.Q) / sum : misval;
    double ase = sum > 0 ? 4 * std::sqrt(v) / (sum * sum) : misval;
    line("gamma", gamma, "ASE", ase);
    retval_set_gscalar(gamma, "gamma");
    retval_set_gscalar(ase, "ase_gam");
}

void show_taub(const table &t, const pairs &p)
{
    double wr = t.n * t.n, wc = wr, v = 0;
    for (double r : t.row)
        wr -= r * r;
    for (double c : t.col)
        wc -= c * c;
    double w = std::sqrt(wr * wc), tau = w > 0 ? (p.P - p.Q) / w : misval, ase = misval;
    if (w > 0) {
        for (size_t i = 0; i < t.nr; i++)
            for (size_t j = 0; j < t.nc; j++) {
                size_t k = i * t.nc + j;
                double z = 2 * w * (p.c[k] - p.d[k]) + tau * (t.row[i] * wc + t.col[j] * wr);
                v += t.cells[k] * z * z;
            }
        v -= t.n * t.n * t.n * tau * tau * (wr + wc) * (wr + wc);
        ase = std::sqrt(v > 0 ? v : 0) / (w * w);
    }
    line("Kendall's tau-b", tau, "ASE", ase);
    retval_set_gscalar(tau, "taub");
    retval_set_gscalar(ase, "ase_taub");
}

// ---- the exact test (Freeman and Halton 1951): the probability, with both margins fixed, of
// the tables that are no more likely than this one. Columns are dealt out one after the
// other; ways to the same remaining row totals with the same weight are joined, in the manner
// of Mehta and Patel (1983).

constexpr size_t most_states = 3000000;

struct dealt {
    double ways, weight;  // tables dealt so far, and the logarithm that they share
};
struct exactjob {
    std::vector<double> lnfact;
    typedef std::vector<int32_t> totals;
    typedef std::map<int64_t, dealt> weights;  // by their points of the grid
    std::map<totals, weights> now, next;       // by what remains of the row totals
    size_t states = 0;
};

// Weights are logarithms on a grid fine enough that equal products meet in one point.
constexpr double grid = 1e9;

bool deal(exactjob *x, const exactjob::totals &left, size_t i, int32_t rest, int32_t room,
          exactjob::totals *taken, double weight, const exactjob::weights &from)
{
    if (i + 1 == left.size()) {
        if (rest > left[i])
            return true;
        (*taken)[i] = rest;
        exactjob::totals key(left.size());
        for (size_t k = 0; k < left.size(); k++)
            key[k] = left[k] - (*taken)[k];
        std::sort(key.begin(), key.end());
        double w = weight - x->lnfact[size_t(rest)];
        auto &to = x->next[key];
        for (const auto &f : from) {
            double sum = f.second.weight + w;
            auto [at, made] = to.try_emplace(int64_t(std::llround(sum * grid)), dealt{0, sum});
            at->second.ways += f.second.ways;
            x->states += made;
        }
        return x->states < most_states && !fault_poll();
    }
    room -= left[i];  // what the rows behind this one can hold
    for (int32_t k = std::max(0, rest - room); k <= std::min(left[i], rest); k++) {
        (*taken)[i] = k;
        if (!deal(x, left, i + 1, rest - k, room, taken, weight - x->lnfact[size_t(k)], from))
            return false;
    }
    return true;
}

int32_t fisher(const table &t, double *p)
{
    exactjob x;
    auto n = size_t(t.n);
    x.lnfact.resize(n + 1);
    for (size_t i = 2; i <= n; i++)
        x.lnfact[i] = x.lnfact[i - 1] + std::log(double(i));
    exactjob::totals rows(t.row.begin(), t.row.end());
    std::sort(rows.begin(), rows.end());
    x.now[rows][0] = {1, 0};
    std::vector<double> cols(t.col);
    std::sort(cols.rbegin(), cols.rend());
    for (double c : cols) {
        x.next.clear();
        x.states = 0;
        for (const auto &node : x.now) {
            exactjob::totals taken(node.first.size());
            int32_t room = 0;
            for (int32_t r : node.first)
                room += r;
            if (!deal(&x, node.first, 0, int32_t(c), room, &taken, 0, node.second))
                return stopflag ? stopflag
                                : errout(RC_LIMIT, "table too large for the exact test\n");
        }
        x.now.swap(x.next);
    }
    double fixed = -x.lnfact[n], own = 0;
    for (double r : t.row)
        fixed += x.lnfact[size_t(r)];
    for (double c : t.col)
        fixed += x.lnfact[size_t(c)];
    for (size_t i = 0; i < t.nr * t.nc; i++)
        own -= x.lnfact[size_t(t.cells[i])];
    *p = 0;
    for (const auto &w : x.now.begin()->second)
        if (w.second.weight <= own + 1e-7)
            *p += w.second.ways * std::exp(w.second.weight + fixed);
    *p = std::min(*p, 1.0);
    return 0;
}

int32_t show_exact(const table &t)
{
    for (size_t i = 0; i < t.nr * t.nc; i++)
        if (t.cells[i] != std::floor(t.cells[i]) || t.cells[i] < 0 || t.n > 1e6)
            return error(135);
    double p = misval, one;
    if (int32_t rc = fisher(t, &p))
        return rc;
    line("Fisher's exact", p, nullptr, 0);
    retval_set_gscalar(p, "p_exact");
    if (t.nr != 2 || t.nc != 2)
        return 0;
    double k = t.at(0, 0), low = 0, high = 0;
    double most = std::min(t.row[0], t.col[0]), least = std::max(0.0, t.row[0] + t.col[0] - t.n);
    for (double i = least; i <= most; i++) {
        double q = hypergeometricp(t.n, t.row[0], t.col[0], i);
        if (q >= misval)
            q = 1;  // only one table has these margins
        low += i <= k ? q : 0;
        high += i >= k ? q : 0;
    }
    one = std::min({low, high, 1.0});
    line("1-sided Fisher's exact", one, nullptr, 0);
    retval_set_gscalar(one, "p1_exact");
    return 0;
}

}  // namespace

int32_t tabstats_show(const tabstats *s, const double *cells, int32_t nr, int32_t nc)
{
    if (!tabstats_any(s))
        return 0;
    table t{cells, size_t(nr), size_t(nc), std::vector<double>(size_t(nr)),
            std::vector<double>(size_t(nc))};
    for (size_t i = 0; i < t.nr; i++)
        for (size_t j = 0; j < t.nc; j++) {
            t.row[i] += t.at(i, j);
            t.col[j] += t.at(i, j);
            t.n += t.at(i, j);
        }
    double df = double(nr - 1) * double(nc - 1), chi2 = pearson(t);
    newline();
    if (s->chi2)
        chi_line("Pearson", chi2, df, "chi2", "p");
    if (s->lrchi2)
        chi_line("likelihood-ratio", likelihood_ratio(t), df, "chi2_lr", "p_lr");
    if (s->v) {
        double v = cramer(t, chi2);
        line("Cramer's V", v, nullptr, 0);
        retval_set_gscalar(v, "CramersV");
    }
    if (s->gamma || s->taub) {
        pairs p = count_pairs(t);
        if (s->gamma)
            show_gamma(t, p);
        if (s->taub)
            show_taub(t, p);
    }
    int32_t rc = s->exact ? show_exact(t) : 0;
    return rc ? rc : stopflag;
}
