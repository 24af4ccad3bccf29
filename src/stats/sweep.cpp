#include "stats/sweep.h"
#include "core/mem.h"
#include "core/rc.h"
#include "core/settings.h"
#include "core/state.h"
#include "interp/messages.h"
#include <cmath>
#include <cstring>

matrind_t matrind = {1e-19, 1e-09, 1, 1e-08};
bool matrin3flg;

static int32_t nomemory()
{
    return errout(RC_NOMEM, "op. sys. refuses to provide memory\n");
}

struct sweepjob {
    double *a;
    int64_t ld;
    int32_t low, high, first, last, lastindex;
    const int32_t *order;
    double *tol;
    uint8_t *done;
    double *el(int32_t i, int32_t j) const { return a + i * ld + j; }
};

static int32_t choose(const sweepjob *s, int32_t step)
{
    if (!matrind.pivot)
        return s->first + step;
    int32_t at = -1;
    for (int32_t i = s->first; i <= s->last; i++)
        if (!s->done[i - s->first] && i != s->lastindex && (at < 0 || *s->el(i, i) > *s->el(at, at)))
            at = i;
    return at < 0 ? s->lastindex : at;
}

static void sweep_row(const sweepjob *s, int32_t p)
{
    double d = *s->el(p, p), *rowp = s->el(p, 0);
    for (int32_t j = s->low; j <= s->high; j++)
        if (j != p)
            rowp[j] /= d;
    for (int32_t i = s->low; i <= s->high; i++) {
        double *row = s->el(i, 0), f = row[p];
        if (i == p || f == 0)
            continue;
        for (int32_t j = s->low; j <= s->high; j++)
            row[j] -= f * rowp[j];
        row[p] = -f / d;
    }
    rowp[p] = 1 / d;
}

static void drop_row(const sweepjob *s, int32_t p)
{
    for (int32_t j = s->low; j <= s->high; j++)
        *s->el(p, j) = *s->el(j, p) = 0;
}

static int32_t run(sweepjob *s)
{
    int32_t n = s->last - s->first + 1, forced = 0;
    for (int32_t i = 0; i < n; i++) {
        double *d = s->el(s->first + i, s->first + i);
        if (*d < 0)
            *d = 0;
        s->tol[i] = *d == 0 ? matrind.rel : *d * matrind.rel;
        if (*d != 0 && s->tol[i] < matrind.abs)
            s->tol[i] = matrind.abs;
    }
    for (int32_t step = 0; step < n; step++) {
        if (fault_poll())
            return stopflag;
        int32_t p;
        if (s->order && s->order[forced] >= 0)
            p = s->order[forced++];
        else
            p = choose(s, step);
        s->done[p - s->first] = 1;
        if (s->tol[p - s->first] <= *s->el(p, p))
            sweep_row(s, p);
        else
            drop_row(s, p);
    }
    for (int32_t i = s->first; i <= s->last; i++)
        for (int32_t j = i + 1; j <= s->last; j++)
            *s->el(j, i) = *s->el(i, j);
    return 0;
}

int32_t sweep_within(double *a, int32_t low, int32_t high, int32_t first, int32_t last,
                     const int32_t *order, int32_t lastindex)
{
    if (last < first)
        return 0;
    size_t n = size_t(last - first + 1);
    auto block = static_cast<double *>(safecalloc(n * (sizeof(double) + 1)));
    if (!block)
        return nomemory();
    sweepjob s{a, set_matsize, low, high, first, last, lastindex, order, block,
               reinterpret_cast<uint8_t *>(block + n)};
    int32_t rc = run(&s);
    safefree(block);
    return rc;
}

int32_t matrinf(double *a, int32_t first, int32_t last, const int32_t *order, int32_t lastindex)
{
    return sweep_within(a, first, last, first, last, order, lastindex);
}

int32_t matrin(double *a, int32_t first, int32_t last, int32_t lastindex)
{
    return matrinf(a, first, last, nullptr, lastindex);
}

int32_t matrin3(double *a, int32_t first, int32_t last, int32_t lastindex)
{
    int64_t ld = set_matsize;
    int32_t n = last - first + 1, rc = 0;
    matrin3flg = false;
    if (n <= 0)
        return 0;
    auto kept = static_cast<double *>(safemalloc(sizeof(double) * size_t(n) * size_t(n)));
    if (!kept)
        return nomemory();
    for (int32_t i = 0; i < n; i++)
        memcpy(kept + int64_t(i) * n, a + (first + i) * ld + first, sizeof(double) * size_t(n));
    for (double f = 1; !(rc = matrin(a, first, last, lastindex)); f *= 2) {
        bool lost = false;
        for (int32_t i = 0; i < n; i++)
            lost |= a[(first + i) * ld + first + i] == 0 && kept[int64_t(i) * n + i] != 0;
        if (!lost || f > 1e30)
            break;
        matrin3flg = true;
        for (int32_t i = 0; i < n; i++) {
            double *row = a + (first + i) * ld + first;
            memcpy(row, kept + int64_t(i) * n, sizeof(double) * size_t(n));
            row[i] += f * std::fabs(row[i]);
        }
    }
    safefree(kept);
    return rc;
}
