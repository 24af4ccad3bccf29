#include "commands/stattab.h"
#include "core/mem.h"
#include "core/missing.h"
#include "core/pollsort.h"
#include "core/progress.h"
#include "core/rc.h"
#include "core/state.h"
#include "data/dsa.h"
#include "expr/parse.h"
#include "interp/messages.h"
#include <algorithm>
#include <cmath>

sample::~sample()
{
    safefree(x);
    safefree(w);
}

int32_t sample_read(sample *s, int32_t var)
{
    int64_t cap = int64_t(parinfo->pi_obs2) - parinfo->pi_obs1 + 1;
    bool weighted = parinfo->pi_hasexp;
    size_t bytes = size_t(cap > 0 ? cap : 1) * sizeof(double);
    if (!s->x && !(s->x = static_cast<double *>(safemalloc(bytes))))
        return error(RC_NOMEM);
    if (weighted && !s->w && !(s->w = static_cast<double *>(safemalloc(bytes))))
        return error(RC_NOMEM);
    s->n = 0;
    uint8_t type = sysdsa->typ[var - 1];
    uint32_t offset = sysdsa->offset[var - 1];
    for (int32_t obs = parinfo->pi_obs1; obs <= parinfo->pi_obs2; obs++) {
        if ((obs & 0xfff) == 0 && progress_poll("computing", obs, parinfo->pi_obs2))
            return stopflag;
        double z = cell_data(type, dsa_obsptr(sysdsa, uint32_t(obs)) + offset);
        if (z >= misval || !selobs(obs))
            continue;
        if (weighted) {
            double w = pi_xeq(parinfo, parinfo->wepgm, obs);
            if (w >= misval || w == 0)
                continue;
            if (w < 0)
                return error(402);
            if (parinfo->pi_wtype == W_FW && w != std::floor(w))
                return error(401);
            s->w[s->n] = w;
        }
        s->x[s->n++] = z;
    }
    return 0;
}

void moments_of(const sample *s, moments *m, bool higher)
{
    *m = {s->n, 0, 0, misval, 0, 0, 0, misval, misval};
    carrysum sum, sumw;
    double lo = HUGE_VAL, hi = -HUGE_VAL;
    for (int64_t i = 0; i < s->n; i++) {
        double w = s->w ? s->w[i] : 1, x = s->x[i];
        sum.add(w * x);
        if (s->w)
            sumw.add(w);
        lo = x < lo ? x : lo;
        hi = x > hi ? x : hi;
    }
    m->sum_w = s->w ? sumw.value() : double(s->n);
    m->sum = sum.value();
    if (!s->n)
        return;
    m->min = lo;
    m->max = hi;
    m->mean = m->sum / m->sum_w;
    carrysum d1, d2, d3, d4;
    for (int64_t i = 0; i < s->n; i++) {
        double w = s->w ? s->w[i] : 1, d = s->x[i] - m->mean;
        d1.add(w * d);
        d2.add(w * d * d);
        if (higher) {
            d3.add(w * d * d * d);
            d4.add(w * d * d * d * d);
        }
    }
    // What rounding left in the mean comes off the squares (Chan, Golub and LeVeque 1983).
    double left = d1.value();
    m->m2 = d2.value() - left * left / m->sum_w;
    if (m->m2 < 0)
        m->m2 = 0;
    m->m3 = d3.value();
    m->m4 = d4.value();
}

int32_t sample_sort(sample *s)
{
    if (!s->w) {
        return poll_sort(s->x, s->n, [](double a, double b) { return a < b; });
    }
    struct pair {
        double x, w;
    };
    pair *p = static_cast<pair *>(safemalloc(size_t(s->n ? s->n : 1) * sizeof(pair)));
    if (!p)
        return error(RC_NOMEM);
    for (int64_t i = 0; i < s->n; i++)
        p[i] = {s->x[i], s->w[i]};
    int32_t rc = poll_sort(p, s->n, [](const pair &a, const pair &b) { return a.x < b.x; });
    for (int64_t i = 0; i < s->n; i++) {
        s->x[i] = p[i].x;
        s->w[i] = p[i].w;
    }
    safefree(p);
    return rc;
}

double sample_pctile(const sample *s, double sum_w, double p)
{
    if (!s->n)
        return misval;
    double want = sum_w * p / 100, run = 0;
    if (!s->w) {
        int64_t i = int64_t(std::floor(want));
        if (i >= s->n)
            return s->x[s->n - 1];
        return double(i) == want && i > 0 ? (s->x[i - 1] + s->x[i]) / 2 : s->x[i];
    }
    for (int64_t i = 0; i < s->n; i++) {
        run += s->w[i];
        // Sums of weights meet the mark up to rounding.
        if (std::fabs(run - want) <= 1e-12 * sum_w)
            return i + 1 < s->n ? (s->x[i] + s->x[i + 1]) / 2 : s->x[i];
        if (run > want)
            return s->x[i];
    }
    return s->x[s->n - 1];
}
