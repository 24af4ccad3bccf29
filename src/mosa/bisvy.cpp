// Totals, means and ratios from a sample of several stages, with their variances by
// linearization (Wolter, Introduction to Variance Estimation, 2007, chapters 2 and 6; Cochran,
// Sampling Techniques, 1977, chapter 11).
//
//   _svy(stat, Y, X, w, sub, single, within,
//        strata1, unit1, fpc1, ..., strata5, unit5, fpc5,
//        b, V, Vsrs, nstrata, nunits, sizes, nsingle)
//
//   stat     "total", "mean", or "ratio" of the columns of Y to those of X
//   w, sub   weights; rows that are not 0 belong to the part of the population meant
//   single   what a stratum with one unit adds: "missing", "certainty" nothing, "scaled" the mean
//            of the other strata, "centered" its distance from the mean of all units
//   within   not 0: Vsrs as for a sample of the part alone
//   fpc      units of the population in the stratum, or the share of them sampled when at most 1
//
// n by 0 or 0 by 0 stands for what is not given: no strata, each row a unit, no fpc (and then no
// further stage counts). Rows with a missing value are left out. The last seven arguments take the
// results: 1 by k, k by k, k by k (as if drawn without a design, the same number of rows), scalars,
// (rows, rows of the part, population, population of the part), scalar. The value is 0 or a code:
// 2000 no rows, 460 to 462 an fpc that cannot be, 463 weights that sum to 0.
#include "core/mem.h"
#include "mosa/bihandlers.h"
#include "mosa/lapack.h"
#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace
{

constexpr int32_t stages = 5, first_stage = 8, first_result = 23, args = 29;
enum svy_single { SG_MISSING, SG_CERTAINTY, SG_SCALED, SG_CENTERED };

struct stage {
    const matobj *strata, *unit, *fpc; // null when not given
    bool any() const { return strata || unit || fpc; }
};

struct survey {
    char stat; // t m r
    svy_single single;
    bool within;
    int32_t n, k;
    const matobj *y, *x, *w, *sub;
    stage st[stages];
    std::vector<int32_t> rows; // those used
    std::vector<double> score; // rows used by k, weighted
    std::vector<double> b;
    double N, Nsub;
    int32_t nsub, nstrata, nunits, nsingle;
    int32_t rc;
};

double at(const matobj *m, int32_t i, int32_t j = 0)
{
    return m_el(m, i, j);
}
double weight(const survey &s, int32_t i)
{
    return s.w ? at(s.w, i) : 1;
}
bool in_part(const survey &s, int32_t i)
{
    return !s.sub || at(s.sub, i) != 0;
}

// ---- arguments

bool read_matrix(const matobj *m, int32_t n, int32_t cols, const matobj **out)
{
    if (!bi_isreal(m))
        return false;
    *out = mo_count(m) ? m : nullptr;
    return !*out || (m->rows == n && m->cols == cols) || bi_fail(3200);
}

bool read_word(const matobj *m, const char *const *words, int32_t n, int32_t *which)
{
    const char *p;
    int32_t len;
    if (!bi_string(m, &p, &len))
        return false;
    std::string text(p, size_t(len));
    for (*which = 0; *which < n; ++*which)
        if (text == words[*which])
            return true;
    return bi_fail(3300);
}

bool read_survey(int32_t argc, survey *s)
{
    static const char *const stats[] = {"total", "mean", "ratio"};
    static const char *const singles[] = {"missing", "certainty", "scaled", "centered"};
    int32_t stat, single;
    double within;
    s->y = bi_arg(argc, 2);
    if (!read_word(bi_arg(argc, 1), stats, 3, &stat) || !bi_isreal(s->y))
        return false;
    s->stat = stats[stat][0];
    s->n = s->y->rows;
    s->k = s->y->cols;
    if (!read_matrix(bi_arg(argc, 3), s->n, s->k, &s->x) ||
        !read_matrix(bi_arg(argc, 4), s->n, 1, &s->w) ||
        !read_matrix(bi_arg(argc, 5), s->n, 1, &s->sub) ||
        !read_word(bi_arg(argc, 6), singles, 4, &single) || !bi_real(bi_arg(argc, 7), &within))
        return false;
    if ((s->stat == 'r') != (s->x != nullptr))
        return bi_fail(3200);
    s->single = svy_single(single);
    s->within = within != 0;
    for (int32_t k = 0; k < stages; k++) {
        int32_t a = first_stage + 3 * k;
        if (!read_matrix(bi_arg(argc, a), s->n, 1, &s->st[k].strata) ||
            !read_matrix(bi_arg(argc, a + 1), s->n, 1, &s->st[k].unit) ||
            !read_matrix(bi_arg(argc, a + 2), s->n, 1, &s->st[k].fpc))
            return false;
    }
    for (int32_t a = first_result; a <= args; a++)
        if (!bi_ismatrix(bi_arg(argc, a)))
            return false;
    return true;
}

bool complete(const survey &s, int32_t i)
{
    for (int32_t j = 0; j < s.k; j++)
        if (at(s.y, i, j) >= misval || (s.x && at(s.x, i, j) >= misval))
            return false;
    for (const matobj *m : {s.w, s.sub})
        if (m && at(m, i) >= misval)
            return false;
    for (const stage &t : s.st)
        for (const matobj *m : {t.strata, t.unit, t.fpc})
            if (m && at(m, i) >= misval)
                return false;
    return true;
}

// ---- estimates and scores

int32_t estimate(survey *s)
{
    std::vector<double> ysum(size_t(s->k)), xsum(size_t(s->k));
    s->N = s->Nsub = s->nsub = 0;
    for (int32_t i : s->rows) {
        double w = weight(*s, i);
        s->N += w;
        if (!in_part(*s, i))
            continue;
        s->Nsub += w;
        s->nsub++;
        for (int32_t j = 0; j < s->k; j++) {
            ysum[size_t(j)] += w * at(s->y, i, j);
            xsum[size_t(j)] += s->x ? w * at(s->x, i, j) : w;
        }
    }
    if (s->rows.empty() || !s->nsub)
        return 2000;
    if (s->Nsub == 0)
        return 463;
    s->b.resize(size_t(s->k));
    for (size_t j = 0; j < s->b.size(); j++)
        s->b[j] = s->stat == 't' ? ysum[j] : xsum[j] != 0 ? ysum[j] / xsum[j] : misval;
    s->score.assign(s->rows.size() * s->b.size(), 0);
    for (size_t r = 0; r < s->rows.size(); r++) {
        int32_t i = s->rows[r];
        for (int32_t j = 0; j < s->k && in_part(*s, i); j++) {
            double y = at(s->y, i, j), x = s->x ? at(s->x, i, j) : 1, b = s->b[size_t(j)];
            double u = s->stat == 't' ? y : (y - b * x) / xsum[size_t(j)];
            s->score[r * s->b.size() + size_t(j)] = weight(*s, i) * u;
        }
    }
    return 0;
}

// ---- the variance of one stage, and of those below it

struct unit_total {
    std::vector<int32_t> members; // places in rows
    std::vector<double> sum;
};
struct stratum {
    std::vector<unit_total> unit;
    double f = 0; // the share of its units that was drawn
};

double key(const survey &s, const matobj *m, int32_t place)
{
    return m ? at(m, s.rows[size_t(place)]) : 0;
}

// Members in the order of strata and units; without units every row is one.
std::vector<stratum> divide(const survey &s, const stage &t, std::vector<int32_t> members)
{
    std::stable_sort(members.begin(), members.end(), [&](int32_t a, int32_t b) {
        double ha = key(s, t.strata, a), hb = key(s, t.strata, b);
        return ha != hb ? ha < hb : key(s, t.unit, a) < key(s, t.unit, b);
    });
    std::vector<stratum> out;
    for (size_t k = 0; k < members.size(); k++) {
        int32_t p = members[k], before = k ? members[k - 1] : p;
        bool newstratum = !k || key(s, t.strata, p) != key(s, t.strata, before);
        if (newstratum)
            out.emplace_back();
        if (newstratum || !t.unit || key(s, t.unit, p) != key(s, t.unit, before)) {
            out.back().unit.emplace_back();
            out.back().unit.back().sum.resize(size_t(s.k));
        }
        unit_total &u = out.back().unit.back();
        u.members.push_back(p);
        for (size_t j = 0; j < u.sum.size(); j++)
            u.sum[j] += s.score[size_t(p) * size_t(s.k) + j];
    }
    return out;
}

// The shares drawn, from what the fpc of each stratum says: 0, or a code.
int32_t shares(const survey &s, const stage &t, std::vector<stratum> *strata)
{
    for (stratum &h : *strata) {
        if (!t.fpc)
            continue;
        double f = key(s, t.fpc, h.unit[0].members[0]);
        for (const unit_total &u : h.unit)
            for (int32_t p : u.members)
                if (key(s, t.fpc, p) != f)
                    return 461;
        auto n = double(h.unit.size());
        if (f < 0)
            return 460;
        if (f > 1 && f < n)
            return 462;
        h.f = f > 1 ? n / f : f;
    }
    return 0;
}

void add_square(std::vector<double> *V, const double *d, size_t k, double scale)
{
    for (size_t a = 0; a < k; a++)
        for (size_t b = 0; b < k; b++)
            (*V)[a * k + b] += scale * (d[a] * d[b]); // the same on both sides
}

// Squares about a mean of the units of a stratum.
void add_stratum(const stratum &h, const std::vector<double> &mean, double scale,
                 std::vector<double> *V)
{
    std::vector<double> d(mean.size());
    for (const unit_total &u : h.unit) {
        for (size_t j = 0; j < d.size(); j++)
            d[j] = u.sum[j] - mean[j];
        add_square(V, d.data(), d.size(), scale);
    }
}

std::vector<double> mean_of(const std::vector<stratum> &strata, size_t from, size_t to, size_t k)
{
    std::vector<double> mean(k);
    double n = 0;
    for (size_t h = from; h < to; h++)
        for (const unit_total &u : strata[h].unit) {
            n++;
            for (size_t j = 0; j < k; j++)
                mean[j] += u.sum[j];
        }
    for (double &z : mean)
        z /= n;
    return mean;
}

void stage_variance(survey *s, int32_t level, std::vector<int32_t> members, double scale,
                    std::vector<double> *V);

void stages_below(survey *s, int32_t level, const stratum &h, double scale, std::vector<double> *V)
{
    if (h.f <= 0 || level + 1 >= stages || !s->st[level + 1].any())
        return;
    for (const unit_total &u : h.unit)
        stage_variance(s, level + 1, u.members, scale * h.f, V);
}

void stage_variance(survey *s, int32_t level, std::vector<int32_t> members, double scale,
                    std::vector<double> *V)
{
    auto k = size_t(s->k);
    std::vector<stratum> strata = divide(*s, s->st[level], std::move(members));
    int32_t rc = shares(*s, s->st[level], &strata);
    s->rc = s->rc ? s->rc : rc;
    if (s->rc || row_break())
        return;
    std::vector<double> here(k * k);
    int32_t alone = 0;
    for (size_t h = 0; h < strata.size(); h++) {
        const stratum &t = strata[h];
        auto n = double(t.unit.size());
        if (n > 1)
            add_stratum(t, mean_of(strata, h, h + 1, k), (1 - t.f) * n / (n - 1), &here);
        else if (t.f < 1) {
            alone++;
            if (s->single == SG_CENTERED)
                add_stratum(t, mean_of(strata, 0, strata.size(), k), 1 - t.f, &here);
        }
        stages_below(s, level, t, scale, V);
        if (level == 0)
            s->nunits += int32_t(t.unit.size());
    }
    if (level == 0)
        s->nstrata = int32_t(strata.size());
    s->nsingle += alone;
    double up = 1;
    if (alone && s->single == SG_SCALED)
        up = size_t(alone) < strata.size() ? double(strata.size()) / double(strata.size() - alone)
                                           : misval;
    for (size_t e = 0; e < here.size(); e++) {
        bool lost = up >= misval || (alone && s->single == SG_MISSING) || (*V)[e] >= misval;
        (*V)[e] = lost ? misval : (*V)[e] + scale * up * here[e];
    }
}

// Rows drawn one by one without replacement from the population, or from the part.
void plain_variance(const survey &s, std::vector<double> *V)
{
    auto k = size_t(s.k);
    bool part = s.within && s.sub;
    double n = part ? s.nsub : double(s.rows.size()), N = part ? s.Nsub : s.N;
    std::vector<double> mean(k), d(k);
    for (int pass = 0; pass < 2; pass++)
        for (size_t r = 0; r < s.rows.size(); r++) {
            int32_t i = s.rows[r];
            double w = weight(s, i);
            if (w == 0 || (part && !in_part(s, i)))
                continue;
            for (size_t j = 0; j < k; j++) {
                double u = s.score[r * k + j] / w;
                if (pass == 0)
                    mean[j] += w * u / N;
                else
                    d[j] = u - mean[j];
            }
            if (pass)
                add_square(V, d.data(), k, w);
        }
    double share = s.st[0].fpc ? n / N : 0;
    for (double &z : *V)
        z *= n > 1 ? (1 - share) * N / (n - 1) : misval;
}

// ---- results

matobj *matrix_of(const std::vector<double> &z, int32_t rows, int32_t cols)
{
    matobj *m = m_mktmat(MO_REAL, rows, cols);
    for (size_t e = 0; m && e < z.size(); e++)
        mo_re(m)[e] = la_kept(z[e]);
    return m;
}

bool give_results(int32_t argc, const survey &s, const std::vector<double> &V,
                  const std::vector<double> &srs)
{
    const std::vector<double> sizes = {double(s.rows.size()), double(s.nsub), s.N, s.Nsub};
    matobj *made[] = {matrix_of(s.b, 1, s.k),  matrix_of(V, s.k, s.k), matrix_of(srs, s.k, s.k),
                      m_mktsmatsto(s.nstrata), m_mktsmatsto(s.nunits), matrix_of(sizes, 1, 4),
                      m_mktsmatsto(s.nsingle)};
    bool good = std::all_of(std::begin(made), std::end(made), [](matobj *m) { return m; });
    for (int32_t k = 0; k < 7 && good; k++)
        good = !cpymat(bi_arg(argc, first_result + k), made[k], false);
    for (matobj *m : made)
        if (m)
            mo_freemat(m);
    return good;
}

} // namespace

void bi_svy(int32_t argc)
{
    m_xeqerrid = "_svy()";
    survey s = {};
    if (!read_survey(argc, &s))
        return;
    std::vector<int32_t> places;
    for (int32_t i = 0; i < s.n; i++) {
        if (bi_stop(i))
            return;
        if (complete(s, i)) {
            places.push_back(int32_t(s.rows.size()));
            s.rows.push_back(i);
        }
    }
    auto k = size_t(s.k);
    std::vector<double> V(k * k), srs(k * k);
    s.rc = estimate(&s);
    if (!s.rc) {
        stage_variance(&s, 0, std::move(places), 1, &V);
        plain_variance(s, &srs);
    }
    if (m_xrc || (!s.rc && !give_results(argc, s, V, srs)))
        return;
    if (matobj *r = m_mktsmatsto(s.rc))
        m_result(argc, r);
}
