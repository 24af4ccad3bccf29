#include "stats/crossprod.h"
#include "core/mem.h"
#include "core/rc.h"
#include "interp/messages.h"
#include <cmath>
#include <cstring>

typedef double v4 __attribute__((vector_size(32), aligned(8)));

crossprod::~crossprod() { safefree(s); }

int32_t cp_open(crossprod *p, int32_t k, bool central)
{
    p->k = k;
    p->ld = (k + 3) & ~3;
    p->central = central;
    size_t square = size_t(k) * size_t(p->ld), row = size_t(p->ld);
    p->s = static_cast<double *>(safecalloc(sizeof(double) * (2 * square + 4 * row)));
    if (!p->s)
        return errout(RC_NOMEM, "op. sys. refuses to provide memory\n");
    p->c = p->s + square;
    p->shift = p->c + square;
    p->mean = p->shift + row;
    p->meanc = p->mean + row;
    p->d = p->meanc + row;
    return 0;
}

// Adds w d d' to the upper triangle, the errors of the additions to c.
static void accumerr(crossprod *p, const double *d, double w)
{
    for (int32_t i = 0; i < p->k; i++) {
        double wd = w * d[i];
        if (wd == 0)
            continue;
        v4 f = {wd, wd, wd, wd};
        double *s = p->s + int64_t(i) * p->ld, *c = p->c + int64_t(i) * p->ld;
        for (int32_t j = i & ~3; j < p->ld; j += 4) {
            v4 x, a, e;
            memcpy(&x, d + j, sizeof x);
            memcpy(&a, s + j, sizeof a);
            memcpy(&e, c + j, sizeof e);
            v4 add = f * x, t = a + add, b = t - a;
            e += (a - (t - b)) + (add - b);  // exact (Knuth 1969, 4.2.2)
            memcpy(s + j, &t, sizeof t);
            memcpy(c + j, &e, sizeof e);
        }
    }
}

// The same for four rows at once: their products meet in plain sums, whose error is that of
// the products themselves, and one exact addition takes them in.
static void accumerr4(crossprod *p, const double *d, int64_t stride, const double *w)
{
    for (int32_t i = 0; i < p->k; i++) {
        v4 f[4];
        bool any = false;
        for (int r = 0; r < 4; r++) {
            double wd = w[r] * d[r * stride + i];
            any |= wd != 0;
            f[r] = v4{wd, wd, wd, wd};
        }
        if (!any)
            continue;
        double *s = p->s + int64_t(i) * p->ld, *c = p->c + int64_t(i) * p->ld;
        for (int32_t j = i & ~3; j < p->ld; j += 4) {
            v4 x, y, z, u, a, e;
            memcpy(&x, d + j, sizeof x);
            memcpy(&y, d + stride + j, sizeof y);
            memcpy(&z, d + 2 * stride + j, sizeof z);
            memcpy(&u, d + 3 * stride + j, sizeof u);
            memcpy(&a, s + j, sizeof a);
            memcpy(&e, c + j, sizeof e);
            v4 add = (f[0] * x + f[1] * y) + (f[2] * z + f[3] * u), t = a + add, b = t - a;
            e += (a - (t - b)) + (add - b);
            memcpy(s + j, &t, sizeof t);
            memcpy(c + j, &e, sizeof e);
        }
    }
}

static void add_to(double *sum, double *carry, double x)
{
    double t = *sum + x, b = t - *sum;
    *carry += (*sum - (t - b)) + (x - b);
    *sum = t;
}

// Moves the running means towards those of a block (in p->d) of weight w, and returns what
// the distance adds to the squares, through p->d.
static void join(crossprod *p, double w)
{
    double before = p->sum_w, after = before + w;
    for (int32_t j = 0; j < p->k; j++) {
        double gap = p->d[j] - (p->mean[j] + p->meanc[j]);
        add_to(&p->mean[j], &p->meanc[j], after != 0 ? gap * (w / after) : 0);
        p->d[j] = gap;
    }
    if (before != 0 && after != 0)
        accumerr(p, p->d, before * (w / after));
    p->sum_w = after;
}

static void deviations(const crossprod *p, const datarows *b, int32_t i, double *dev)
{
    const double *x = b->x + int64_t(i) * b->ld;
    for (int32_t j = 0; j < p->k; j++)
        dev[j] = (x[j] - p->shift[j]) - p->d[j];
}

// A handful of observations is worth every digit; with many the rows go by four.
static constexpr int32_t few_rows = 16;

static void central_block(crossprod *p, const datarows *b)
{
    static constexpr int32_t widest = 1024;
    double w = 0, dev[4 * widest];
    bool small = p->ld <= widest;
    memset(p->d, 0, sizeof(double) * size_t(p->ld));
    for (int32_t i = 0; i < b->n; i++)
        w += b->w[i];
    if (w == 0)
        return;
    // Very wide rows have no room for a second vector here: each is a block of its own then.
    if (!small) {
        for (int32_t i = 0; i < b->n; i++) {
            for (int32_t j = 0; j < p->k; j++)
                p->d[j] = b->x[int64_t(i) * b->ld + j] - p->shift[j];
            join(p, b->w[i]);
        }
        return;
    }
    for (int32_t i = 0; i < b->n; i++) {
        const double *x = b->x + int64_t(i) * b->ld;
        double f = b->w[i] / w;
        for (int32_t j = 0; j < p->k; j++)
            p->d[j] += f * (x[j] - p->shift[j]);
    }
    memset(dev, 0, sizeof(double) * 4 * size_t(p->ld));
    int32_t i = 0;
    for (; i + 4 <= b->n && b->n > 4 * few_rows; i += 4) {
        for (int32_t r = 0; r < 4; r++)
            deviations(p, b, i + r, dev + r * p->ld);
        accumerr4(p, dev, p->ld, b->w + i);
    }
    for (; i < b->n; i++) {
        deviations(p, b, i, dev);
        accumerr(p, dev, b->w[i]);
    }
    join(p, w);
}

void cp_block(crossprod *p, const datarows *b)
{
    if (!p->n && b->n && p->central)
        memcpy(p->shift, b->x, sizeof(double) * size_t(p->k));
    p->n += b->n;
    if (p->central)
        return central_block(p, b);
    for (int32_t i = 0; i < b->n; i++) {
        const double *x = b->x + int64_t(i) * b->ld;
        memcpy(p->d, x, sizeof(double) * size_t(p->k));
        accumerr(p, p->d, b->w[i]);
        for (int32_t j = 0; j < p->k; j++)
            add_to(&p->mean[j], &p->meanc[j], b->w[i] * x[j]);
        p->sum_w += b->w[i];
    }
}

void cp_close(crossprod *p)
{
    for (int64_t i = 0; i < int64_t(p->k) * p->ld; i++)
        p->s[i] += p->c[i];
    if (!p->central && p->sum_w != 0)
        for (int32_t j = 0; j < p->k; j++) {
            p->mean[j] = (p->mean[j] + p->meanc[j]) / p->sum_w;
            p->meanc[j] = 0;
        }
}
