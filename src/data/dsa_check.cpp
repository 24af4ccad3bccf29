// data/dsa_check.cpp - the rules of data/dsa.h as a test, and a number that stands for the data.
#include "data/dsa_int.h"

static int32_t check_sortlist(const dsa_area *d)
{
    if (!d->srt || d->srt_n < uint64_t(d->K) + 1)
        return 5;
    for (uint32_t i = 0; d->srt[i]; i++)
        if (i >= d->K || d->srt[i] < 0 || uint32_t(d->srt[i]) > d->K)
            return 5;
    return 0;
}

static int32_t check_mirrors(const dsa_area *d)
{
    if (!d->issys)
        return 0;
    int32_t N = d->_No_ ? int32_t(d->_No_ - 1) : 0;
    bool same = _Kvar == int32_t(d->K) && _Nobs == N && _typlist == d->typ &&
                _varlist == d->name && _fmtlist == d->fmt && _lbllist == d->lbl &&
                _srtlist == d->srt && _i_Kvar >= 0 && _i_Kvar <= _Kvar;
    return same ? 0 : 6;
}

int32_t dsa_check(const dsa_area *d)
{
    if (d->state != 3)
        return d->K || d->_No_ || d->S ? 1 : 0;
    uint64_t at = 0;
    for (uint32_t k = 0; k < d->K; k++) {
        int32_t w = dsa_bytlenc(d->typ[k]);
        if (w == 0)
            return 1;
        if (d->offset[k] != at)
            return 4;
        at += uint64_t(w);
    }
    if (at != d->lrec || d->lrec > d->width || d->repartitioning)
        return 1;
    if (d->_No_ > d->_N_max || d->n_per_S != d->segment_size / d->width ||
        d->_No_ > uint64_t(d->n_per_S) * d->S)
        return 2;
    // A longer table than there are rows is still right.
    if (d->fsa.n_per_S != d->n_per_S || d->fsa.No < d->_No_ || dsa_fsa_debug(d))
        return 3;
    int32_t rc = check_sortlist(d);
    return rc ? rc : check_mirrors(d);
}

static void mix(uint64_t *h, const void *p, size_t n)
{
    auto b = static_cast<const uint8_t *>(p);
    for (size_t i = 0; i < n; i++)
        *h = (*h ^ b[i]) * 1099511628211u;
}

uint64_t dsa_hash(const dsa_area *d)
{
    uint64_t h = 14695981039346656037u;
    mix(&h, &d->K, sizeof d->K);
    mix(&h, &d->_No_, sizeof d->_No_);
    for (uint32_t k = 0; k < d->K; k++) {
        mix(&h, d->name[k], strlen(d->name[k]));
        mix(&h, d->fmt[k], strlen(d->fmt[k]));
        mix(&h, d->lbl[k], strlen(d->lbl[k]));
        mix(&h, &d->typ[k], 1);
    }
    for (uint32_t i = 0; d->srt && d->srt[i]; i++)
        mix(&h, &d->srt[i], sizeof d->srt[i]);
    for (uint32_t i = 1; i < d->_No_; i++)
        for (uint32_t k = 1; k <= d->K; k++) {
            const char *cell = dsa_varobsptr(d, k, i);
            uint8_t t = d->typ[k - 1];
            mix(&h, cell, t_isstr(t) ? strnlen(cell, t) : size_t(dsa_bytlenc(t)));
        }
    return h;
}
