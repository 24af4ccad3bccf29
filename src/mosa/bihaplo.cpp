// Haplotypes from genotypes of several places with two forms each.
//
// A genotype is a row of counts 0, 1, 2 of the second form at each place, missing when unknown. A
// haplotype is a number from 1: one more than the sum of 2^(j - 1) over the places j that have
// the second form. Frequencies are a column of 2^places.
#include "core/missing.h"
#include "mosa/bi_kern.h"
#include "mosa/bihandlers.h"
#include <algorithm>
#include <cmath>

namespace
{

constexpr int32_t most_places = 10;

bool genotypes(const bi_in &g)
{
    if (g.cols < 1 || g.cols > most_places)
        return bi_fail(3200);
    for (int64_t k = 0; k < g.count(); k++)
        if (g.p[k] < misval && g.p[k] != 0 && g.p[k] != 1 && g.p[k] != 2)
            return bi_fail(3300);
    return true;
}

// Calls each(a, b) with a <= b for every pair of haplotypes, from 0, that makes the genotype.
template <class F> void pairs(const double *g, int32_t places, F each)
{
    int32_t fixed = 0, must = 0, mixed = 0, open = 0;
    for (int32_t j = 0; j < places; j++) {
        int32_t bit = 1 << j;
        if (!(g[j] < misval))
            open |= bit;
        else if (g[j] == 1)
            mixed |= bit;
        else {
            fixed |= bit;
            must |= g[j] == 2 ? bit : 0;
        }
    }
    for (int32_t a = 0; a < 1 << places; a++) {
        if ((a & fixed) != must)
            continue;
        int32_t low = must | (~a & mixed);
        for (int32_t free = 0;; free = (free - open) & open) { // all ways to fill what is open
            if ((low | free) >= a)
                each(a, low | free);
            if (free == open)
                break;
        }
    }
}

// The chance of a genotype under the frequencies.
double chance(const double *g, int32_t places, const double *p)
{
    double z = 0;
    pairs(g, places, [&](int32_t a, int32_t b) { z += (a == b ? 1 : 2) * p[a] * p[b]; });
    return z;
}

// One step of the algorithm; the log likelihood of the frequencies it began with.
double em_step(const bi_in &g, const double *p, double *next, int32_t size)
{
    double lnf = 0;
    int64_t used = 0;
    std::fill(next, next + size, 0.0);
    for (int64_t i = 0; i < g.rows; i++) {
        const double *row = g.p + i * g.cols;
        double z = chance(row, g.cols, p);
        if (!(z > 0))
            continue;
        used++;
        lnf += std::log(z);
        pairs(row, g.cols, [&](int32_t a, int32_t b) {
            double f = (a == b ? 1 : 2) * p[a] * p[b] / z;
            next[a] += f;
            next[b] += f;
        });
    }
    for (int32_t k = 0; k < size; k++)
        next[k] = used ? next[k] / (2 * double(used)) : misval;
    return lnf;
}

} // namespace

// _geno2haplo_u(g): a row for each pair of haplotypes that the genotype g, one row, may consist of.
void bi_geno2haplo_u(int32_t argc)
{
    m_xeqerrid = "_geno2haplo_u()";
    bi_in g(m_arg(0));
    if (!g)
        return;
    if (g.rows != 1) {
        m_xrc = 3202;
        return;
    }
    if (!genotypes(g))
        return;
    int32_t n = 0;
    pairs(g.p, g.cols, [&](int32_t, int32_t) { n++; });
    bi_new r(n, 2);
    if (!r)
        return;
    double *to = r.p;
    pairs(g.p, g.cols, [&](int32_t a, int32_t b) {
        *to++ = a + 1;
        *to++ = b + 1;
    });
    r.result(argc);
}

// _em_haplotype_u(G [, tolerance [, most]]): frequencies under random mating by expectation and
// maximisation (Excoffier and Slatkin, Molecular Biology and Evolution 12 (1995) 921), begun at
// equal ones, until the log likelihood grows by less than 1e-10 or 1,000 steps are made.
void bi_em_haplotype_u(int32_t argc)
{
    m_xeqerrid = "_em_haplotype_u()";
    bi_in g(bi_arg(argc, 1));
    double tolerance = 1e-10;
    int32_t most = 1000;
    if (!g || !genotypes(g) || (argc > 1 && !bi_real(bi_arg(argc, 2), &tolerance)) ||
        (argc > 2 && !bi_int(bi_arg(argc, 3), 1, 100000000, &most)))
        return;
    int32_t size = 1 << g.cols;
    bi_new p(size, 1), next(size, 1);
    if (!p || !next)
        return;
    std::fill(p.p, p.p + size, 1.0 / size);
    double before = -HUGE_VAL;
    for (int32_t step = 0; step < most; step++) {
        if (row_break())
            return;
        double lnf = em_step(g, p.p, next.p, size);
        std::copy(next.p, next.p + size, p.p);
        if (lnf - before < tolerance || !g.rows)
            break;
        before = lnf;
    }
    p.result(argc);
}

// _haplo_d2_work_u(G, p, g, H): the log likelihood of frequencies p; g and H become its first and
// second derivatives by them, taken as free of each other.
void bi_haplo_d2_work_u(int32_t argc)
{
    m_xeqerrid = "_haplo_d2_work_u()";
    bi_in geno(m_arg(3));
    if (!geno || !genotypes(geno))
        return;
    bi_in p(m_arg(2));
    if (!p || !bi_ismatrix(m_arg(1)) || !bi_ismatrix(m_arg(0)))
        return;
    int32_t size = 1 << geno.cols;
    if (p.count() != size || !p.isvector()) {
        m_xrc = 3200;
        return;
    }
    if (!bi_nomissing(p))
        return;
    bi_new g(1, size), h(size, size);
    bi_doubles one(size);
    if (!g || !h || !one)
        return;
    g.zero();
    h.zero();
    double lnf = 0;
    for (int64_t i = 0; i < geno.rows && lnf < misval; i++) {
        if (row_break())
            return;
        const double *row = geno.p + i * geno.cols;
        double z = chance(row, geno.cols, p.p);
        if (!(z > 0)) {
            lnf = misval;
            break;
        }
        lnf += std::log(z);
        std::fill(one.p, one.p + size, 0.0);
        pairs(row, geno.cols, [&](int32_t a, int32_t b) {
            one[a] += 2 * p.p[b] / z; // of p[a]^2 or of 2 p[a] p[b]
            h.p[int64_t(a) * size + b] += 2 / z;
            if (a != b) {
                one[b] += 2 * p.p[a] / z;
                h.p[int64_t(b) * size + a] += 2 / z;
            }
        });
        for (int32_t a = 0; a < size; a++) {
            g.p[a] += one[a];
            for (int32_t b = 0; one[a] != 0 && b < size; b++)
                h.p[int64_t(a) * size + b] -= one[a] * one[b];
        }
    }
    if (lnf >= misval) {
        fillwithmissing(g.m);
        fillwithmissing(h.m);
    }
    g.give(m_arg(1));
    h.give(m_arg(0));
    m_result(argc, m_mktsmatsto(lnf));
}
