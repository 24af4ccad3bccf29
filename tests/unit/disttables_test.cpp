// The distribution functions against reference tables made with multiple precision
// (tools/make-dist-tables.py). DIST_TABLES=1 in the environment prints the worst errors, which
// docs/distributions.md quotes.
#include "core/missing.h"
#include "expr/strfun.h"
#include "stats/dist.h"
#include "stats/distold.h"
#include "stats/normal.h"
#include <gtest/gtest.h>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

struct routine {
    const char *name;
    double most;  // relative error allowed, some four times the one measured
    double (*f1)(double);
    double (*f2)(double, double);
    double (*f3)(double, double, double);
    double (*f4)(double, double, double, double);
};
#define R1(n, most, f) {n, most, f, nullptr, nullptr, nullptr}
#define R2(n, most, f) {n, most, nullptr, f, nullptr, nullptr}
#define R3(n, most, f) {n, most, nullptr, nullptr, f, nullptr}
#define R4(n, most, f) {n, most, nullptr, nullptr, nullptr, f}
const routine routines[] = {
    R1("normal", 2e-15, ovnormal), R1("lnnormal", 2e-15, ovlnnormal),
    R1("invnormal", 2e-15, ovinvnormal), R1("lngamma", 2e-15, ovlngamma),
    R1("digamma", 2e-15, ovdigamma), R1("trigamma", 2e-15, ovtrigamma),
    R2("gammap", 1e-14, gammap2), R2("gammaptail", 2e-14, gammaptail2),
    R4("gammaden", 2e-15, gammaden), R2("chi2", 1e-14, chi2cumm2), R2("chi2tail", 1e-14, chi2tail2),
    R3("ibeta", 2e-14, ibeta2), R3("ibetatail", 1e-14, ibetatail2), R3("betaden", 2e-15, betaden),
    R3("F", 1e-14, fcumm2), R3("Ftail", 2e-14, ftail2), R3("Fden", 2e-15, fden),
    R2("ttail", 2e-14, ttail2), R2("tprob", 1e-14, tprob), R2("tden", 2e-15, tden),
    R3("binomial", 1e-14, binomial2), R3("binomialtail", 1e-14, binomialtail2),
    R3("binomialp", 2e-15, binomialp), R2("poisson", 1e-14, poisson2),
    R2("poissontail", 1e-14, poissontail2), R2("poissonp", 2e-15, poissonp),
    R3("nbinomial", 1e-14, nbinomial), R3("nbinomialtail", 1e-14, nbinomialtail),
    R3("nbinomialp", 2e-15, nbinomialp), R4("hypergeometric", 4e-15, hypergeometric),
    R4("hypergeometricp", 2e-15, hypergeometricp), R3("nchi2", 1e-14, nchi2),
    R4("nibeta", 1e-14, nibeta), R4("nbetaden", 1e-14, nbetaden), R4("nFtail", 1e-14, nftail),
    R4("nFden", 1e-14, nfden), R3("binormal", 1e-13, binormal), R2("dgammapda", 4e-15, dgammapda),
    R2("dgammapdx", 4e-15, dgammapdx), R2("dgammapdada", 4e-15, dgammapdada),
    R2("dgammapdadx", 4e-15, dgammapdadx), R2("dgammapdxdx", 4e-15, dgammapdxdx),
    R2("invgammap", 2e-14, invgammap2), R2("invgammaptail", 1e-14, invgammaptail2),
    R3("invibeta", 1e-14, invibeta2), R3("invibetatail", 1e-14, invibetatail2),
    R3("invFtail", 1e-14, invftail2), R2("invttail", 1e-14, invttail2),
    R3("srangeprob", 2e-14, srangeprob), R3("dunnettprob", 2e-14, dunnettprob),
};

struct row {
    const char *name;
    double a[4], want;
};
const row rows[] = {
#define R(name, a, b, c, d, want) {#name, {a, b, c, d}, want},
#include "disttables.inc"
#undef R
};

double value(const routine &r, const double *a)
{
    return r.f1   ? r.f1(a[0])
           : r.f2 ? r.f2(a[0], a[1])
           : r.f3 ? r.f3(a[0], a[1], a[2])
                  : r.f4(a[0], a[1], a[2], a[3]);
}

TEST(disttables, EveryPointWithinItsError)
{
    bool show = getenv("DIST_TABLES") != nullptr;
    size_t walked = 0;
    for (const routine &r : routines) {
        double worst = 0;
        const row *at = nullptr;
        int n = 0;
        for (const row &w : rows) {
            if (strcmp(w.name, r.name))
                continue;
            double z = value(r, w.a), e = w.want == 0 ? std::fabs(z) : std::fabs(z / w.want - 1);
            n++;
            if (show && e > r.most)
                printf("  %s(%.17g, %.17g, %.17g, %.17g): %.17g, not %.17g: %.2g\n", r.name, w.a[0], w.a[1],
                       w.a[2], w.a[3], z, w.want, e);
            if (!(e <= worst)) {
                worst = e;
                at = &w;
            }
        }
        walked += size_t(n);
        EXPECT_GT(n, 0) << r.name;
        EXPECT_LE(worst, r.most) << r.name << " at " << at->a[0] << ", " << at->a[1] << ", " << at->a[2] << ", "
                                 << at->a[3];
        if (show)
            printf("| `%s` | %d | %.1e |\n", r.name, n, worst);
    }
    EXPECT_EQ(walked, sizeof rows / sizeof *rows);
}

}
