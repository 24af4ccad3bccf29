// stats/moptkern.h - sums over observations that maximum likelihood needs, and the likelihoods of
// five models with their derivatives.
//
// An equation is its variables x (n by k, by rows) and, when cons is 1, a constant behind them:
// kc = k + cons coefficients. Nothing is missing in what comes in.
#pragma once
#include <cstdint>

struct mopt_eq {
    const double *x;
    int64_t n;
    int32_t k, cons;
    int32_t kc() const { return k + cons; }
};

// out[i] = x[i] b (+ constant), stride apart. False on a break, as all of these.
bool mopt_xb(const mopt_eq &e, const double *b, double *out, int64_t stride);

// Sums are made in blocks whose totals are added with the rounding carried along (Neumaier,
// Zeitschrift fuer angewandte Mathematik und Mechanik 54 (1974) 39); plain ones term by term.
// s and w have n elements; w may be null for ones.
bool mopt_vecsum(const mopt_eq &e, const double *s, const double *w, bool plain, double *out,
                 double *work); // work: 2 kc
// out: kc of x by kc of y; with x the same as y it comes out symmetric.
bool mopt_matsum(const mopt_eq &x, const mopt_eq &y, const double *s, const double *w, bool plain,
                 double *out, double *work); // work: 2 kcx kcy
// Sum over groups, runs of equal g, of a (sum b x)' (sum c y), a taken where the group ends.
bool mopt_bysum(const mopt_eq &x, const mopt_eq &y, const double *g, const double *a,
                const double *b, const double *c, double *out, double *work); // kcx + kcy

// ---- models. The likelihood of one observation depends on m indices eta: one in logit and
// probit (y 0 or not), one for each outcome but the base 0 in mlogit (y from 0 to m), and in
// ologit and oprobit the linear index followed by m - 1 rising cuts (y from 1 to m).
enum mopt_model : int32_t { MOPT_LOGIT, MOPT_PROBIT, MOPT_OLOGIT, MOPT_OPROBIT, MOPT_MLOGIT };

// The log likelihood, its derivatives s by the indices and the second ones h, m by m, the lower
// triangle by rows. misval for what the model cannot give.
double mopt_obs(mopt_model model, double y, const double *eta, int32_t m, double *s, double *h);

struct mopt_data {
    mopt_model model;
    const double *y; // n
    mopt_eq e;       // the constant is unused by ologit and oprobit
    int32_t m;       // indices
    const double *b; // coefficients: kc for each index of logit, probit and mlogit; k and the cuts
    const double *w, *off; // of weights 1 or n, off 1 or n for the linear indices; or null
    int64_t nw, noff;
    int32_t params() const
    {
        return model == MOPT_OLOGIT || model == MOPT_OPROBIT ? e.k + m - 1 : m * e.kc();
    }
};
// Log likelihood, gradient (params) and second derivatives (params by params) of all
// observations; misval in f when one has none. work: 2 m + m (m + 1) / 2 + kc.
bool mopt_total(const mopt_data &d, int32_t todo, double *f, double *g, double *h, double *work);
