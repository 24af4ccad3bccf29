#include "stats/rows.h"
#include "core/mem.h"
#include "core/progress.h"
#include "core/rc.h"
#include "core/state.h"
#include "interp/messages.h"
#include "varlist/terms.h"
#include <new>

datarows::~datarows()
{
    safefree(x);
    delete fv;
}

static int32_t open_columns(datarows *d)
{
    bool any = false;
    for (int32_t j = 0; j < d->k; j++)
        any |= d->vars[j] < 0;
    if (!any)
        return 0;
    d->fv = new (std::nothrow) fvcolumns;
    return d->fv ? fvc_open(d->fv, fv_current.col, block_rows, d->zeromarked) : error(RC_NOMEM);
}

int32_t dr_open(datarows *d, const int32_t *vars, int32_t k)
{
    d->k = k;
    d->ld = (k + 3) & ~3;
    d->vars = vars;
    d->x = static_cast<double *>(safecalloc(sizeof(double) * size_t(d->ld) * block_rows));
    if (!d->x)
        return errout(RC_NOMEM, "op. sys. refuses to provide memory\n");
    dr_rewind(d);
    return open_columns(d);
}

void dr_rewind(datarows *d)
{
    pi_initialize_xeq(parinfo);
    rv_open(&d->rv, parinfo->pi_hasexp ? parinfo->wepgm : nullptr, parinfo->pi_obs2);
    d->next = parinfo->pi_obs1;
    d->n = 0;
}

static int32_t weight(double w, bool *use)
{
    *use = w < misval && w != 0;
    if (!*use)
        return 0;
    if (w < 0 && parinfo->pi_wtype != W_IW)
        return error(402);
    return parinfo->pi_wtype == W_FW && w != std::floor(w) ? error(401) : 0;
}

template <uint8_t TYPE> static void load(datarows *d, int32_t j, char *const *row, uint32_t at)
{
    for (int32_t i = 0; i < d->n; i++)
        d->x[i * d->ld + j] = num_load<TYPE>(row[i] + at);
}

static void load_column(datarows *d, int32_t j, char *const *row)
{
    if (d->vars[j] < 0)
        return fvc_column(d->fv, -d->vars[j] - 1, d->n, d->x + j, d->ld);
    auto var = size_t(d->vars[j]) - 1;
    uint32_t at = sysdsa->offset[var];
    switch (_typlist[var]) {
    case T_BYTE: return load<T_BYTE>(d, j, row, at);
    case T_INT: return load<T_INT>(d, j, row, at);
    case T_LONG: return load<T_LONG>(d, j, row, at);
    case T_FLOAT: return load<T_FLOAT>(d, j, row, at);
    default: return load<T_DOUBLE>(d, j, row, at);
    }
}

// Rows with a missing value go; the others move up.
static void squeeze(datarows *d)
{
    int32_t n = 0;
    for (int32_t i = 0; i < d->n; i++) {
        const double *x = d->x + i * d->ld;
        bool good = true;
        for (int32_t j = 0; j < d->k; j++)
            good &= x[j] < misval;
        if (!good)
            continue;
        if (n != i) {
            memcpy(d->x + n * d->ld, x, sizeof(double) * size_t(d->k));
            d->w[n] = d->w[i];
            d->obs[n] = d->obs[i];
        }
        n++;
    }
    d->n = n;
}

int32_t dr_next(datarows *d)
{
    char *row[block_rows];
    do {
        d->n = 0;
        if (progress_poll("computing", d->next, parinfo->pi_obs2))
            return stopflag;
        for (; d->n < block_rows && d->next <= parinfo->pi_obs2; d->next++) {
            if (!rv_selected(&d->rv, d->next))
                continue;
            double w = 1;
            bool use = true;
            if (d->rv.exp) {
                w = rv_value(&d->rv, d->next);
                if (int32_t rc = weight(w, &use))
                    return rc;
            }
            if (!use)
                continue;
            d->w[d->n] = w;
            d->obs[d->n] = d->next;
            row[d->n++] = dsa_obsptr(sysdsa, uint32_t(d->next));
        }
        if (!d->n)
            return 0;
        if (d->fv)
            fvc_read(d->fv, d->obs, d->n);
        for (int32_t j = 0; j < d->k; j++)
            load_column(d, j, row);
        if (!d->keepmissing)
            squeeze(d);
    } while (!d->n);
    return 0;
}
