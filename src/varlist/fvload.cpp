// Values of columns: one at a time, and by blocks of observations.
#include "core/missing.h"
#include "core/rc.h"
#include "data/dsa.h"
#include "data/variables.h"
#include "interp/messages.h"
#include "varlist/terms.h"

double fv_xeq(const termname &t, int32_t obs)
{
    double v = 1;
    for (int32_t i = 0; i < t.n; i++) {
        const termpart &p = t.part[i];
        double z = rcpxeq(p.var, p.ts, obs);
        if (z >= misval)
            return misval;
        if (p.kind == TP_LEVEL)
            z = z == p.level;
        v *= z;
    }
    return v;
}

static int32_t source_of(fvcolumns *c, const termpart &p)
{
    for (size_t i = 0; i < c->src.size(); i++)
        if (c->src[i].var == p.var && c->src[i].ts == p.ts)
            return int32_t(i);
    c->src.push_back({p.var, p.ts});
    return int32_t(c->src.size()) - 1;
}

int32_t fvc_open(fvcolumns *c, const std::vector<termname> &col, int32_t rows, bool zeromarked)
{
    *c = fvcolumns{};
    bool ts = false;
    for (const termname &t : col) {
        c->first.push_back(int32_t(c->piece_.size()));
        for (int32_t i = 0; i < t.n; i++) {
            const termpart &p = t.part[i];
            ts |= p.ts.any();
            bool zero = zeromarked && term_isomitted(t);
            c->piece_.push_back({source_of(c, p), p.level, p.kind == TP_LEVEL, zero});
        }
    }
    c->first.push_back(int32_t(c->piece_.size()));
    c->val.resize(c->src.size() * size_t(rows));
    return ts ? ts_init() : 0;
}

void fvc_read(fvcolumns *c, const int32_t *obs, int32_t n)
{
    size_t rows = c->src.empty() ? 0 : c->val.size() / c->src.size();
    for (size_t s = 0; s < c->src.size(); s++) {
        const fvcolumns::source &f = c->src[s];
        double *to = &c->val[s * rows];
        if (f.ts.any()) {
            for (int32_t i = 0; i < n; i++)
                to[i] = rcpxeq(f.var, f.ts, obs[i]);
            continue;
        }
        uint32_t at = sysdsa->offset[f.var - 1];
        uint8_t type = _typlist[f.var - 1];
        for (int32_t i = 0; i < n; i++)
            to[i] = cell_data(type, dsa_obsptr(sysdsa, uint32_t(obs[i])) + at);
    }
}

void fvc_column(const fvcolumns *c, int32_t j, int32_t n, double *out, int32_t stride)
{
    size_t rows = c->val.size() / c->src.size();
    int32_t from = c->first[size_t(j)], to = c->first[size_t(j) + 1];
    for (int32_t k = from; k < to; k++) {
        const fvcolumns::piece &p = c->piece_[size_t(k)];
        const double *z = &c->val[size_t(p.src) * rows];
        for (int32_t i = 0; i < n; i++) {
            double v = z[i];
            double x = v >= misval ? v : p.zero ? 0 : p.indicator ? double(v == p.level) : v;
            double *o = out + int64_t(i) * stride;
            if (k == from)
                *o = x;
            else
                *o = *o < misval && x < misval ? *o * x : misval;
        }
    }
}
