// expr/xeqdist.cpp - the distribution functions of the machine.
#include "core/missing.h"
#include "expr/machine.h"
#include "stats/dist.h"
#include "stats/distold.h"

struct distrow {
    int16_t op;
    uint8_t n;  // arguments
    double (*f2)(double, double);
    double (*f3)(double, double, double);
    double (*f4)(double, double, double, double);
};
#define D2(op, f) {op, 2, f, nullptr, nullptr}
#define D3(op, f) {op, 3, nullptr, f, nullptr}
#define D4(op, f) {op, 4, nullptr, nullptr, f}
static const distrow rows[] = {
    D2(OP_TPROB, tprob), D2(OP_INVT, invt_old), D2(OP_INVCHI, invchi2tail),
    D3(OP_BINORMAL, binormal), D2(OP_GAMMAP, gammap2), D3(OP_IBETA, ibeta2),
    D3(OP_IBETATAIL, ibetatail2), D3(OP_INVNCHI, invnchi2), D2(OP_CHI2, chi2cumm2),
    D3(OP_NCHI2, nchi2), D3(OP_F, fcumm2), D3(OP_FTAIL, ftail2), D3(OP_FDEN, fden),
    D3(OP_BINOMIAL_UPPER, binomialtail2), D3(OP_INVF, invfcumm2), D2(OP_CHI2TAIL, chi2tail2),
    D3(OP_INVFTAIL, invftail2), D2(OP_INVCHI2, invchi2cumm2), D2(OP_INVCHI2TAIL, invchi2tail2),
    D3(OP_INVNCHI2, invnchi2), D3(OP_NPNCHI, npnchi2), D3(OP_NPNCHI2, npnchi2),
    D3(OP_BINOMIALTAIL, binomialtail2), D3(OP_BINOMIAL, binomial2),
    D3(OP_INVBINOMIAL, invbinomial2), D3(OP_INVBINOMIALTAIL, invbinomialtail2),
    D2(OP_GAMMAPTAIL, gammaptail2), D2(OP_INVGAMMAP, invgammap2),
    D2(OP_INVGAMMAPTAIL, invgammaptail2), D2(OP_TTAIL, ttail2), D2(OP_INVTTAIL, invttail2),
    D4(OP_GAMMADEN, gammaden), D3(OP_BETADEN, betaden), D3(OP_INVIBETA, invibeta2),
    D3(OP_INVIBETATAIL, invibetatail2), D4(OP_NBETADEN, nbetaden), D4(OP_NIBETA, nibeta),
    D4(OP_INVNIBETA, invnibeta), D4(OP_NFDEN, nfden), D4(OP_NFTAIL, nftail),
    D4(OP_INVNFTAIL, invnftail), D2(OP_TDEN, tden), D2(OP_POISSON, poisson2),
    D2(OP_POISSONTAIL, poissontail2), D2(OP_POISSONP, poissonp), D2(OP_INVPOISSON, invpoisson),
    D2(OP_INVPOISSONTAIL, invpoissontail), D3(OP_BINOMIALP, binomialp),
    D3(OP_NBINOMIAL, nbinomial), D3(OP_NBINOMIALTAIL, nbinomialtail),
    D3(OP_NBINOMIALP, nbinomialp), D3(OP_INVNBINOMIAL, invnbinomial),
    D3(OP_INVNBINOMIALTAIL, invnbinomialtail), D4(OP_HYPERGEOMETRIC, hypergeometric),
    D4(OP_HYPERGEOMETRICP, hypergeometricp), D2(OP_DGAMMAPDA, dgammapda),
    D2(OP_DGAMMAPDX, dgammapdx), D2(OP_DGAMMAPDADA, dgammapdada),
    D2(OP_DGAMMAPDADX, dgammapdadx), D2(OP_DGAMMAPDXDX, dgammapdxdx),
    D3(OP_SRANGEPROB, srangeprob), D3(OP_INVSRANGEPROB, invsrangeprob),
    D3(OP_DUNNETTPROB, dunnettprob), D3(OP_INVDUNNETTPROB, invdunnettprob),
    // the first generation
    D2(OP_CHIPROB, chi2tail), D2(OP_GAMMAP_OLD, gammap), D2(OP_INVGAMMAP_OLD, invgammap),
    D2(OP_CHI2_OLD, chi2cumm), D2(OP_INVCHI2_OLD, invchi2cumm),
    D2(OP_INVCHI2TAIL_OLD, invchi2tail), D3(OP_IBETA_OLD, ibeta),
    D3(OP_INVIBETA_OLD, invibeta), D3(OP_FTAIL_OLD, ftail), D3(OP_F_OLD, fcumm),
    D3(OP_INVFTAIL_OLD, invftail), D3(OP_INVF_OLD, invfcumm), D2(OP_TTAIL_OLD, ttail),
    D2(OP_INVTTAIL_OLD, invttail), D3(OP_BINOMIAL_OLD, binomial_old),
    D3(OP_INVBINOMIAL_OLD, invbinomial_old), D3(OP_INVNCHI2_OLD, invnchi2_old),
    D3(OP_NPNCHI2_OLD, npnchi2_old), D4(OP_INVNIBETA_OLD, invnibeta_old),
    D4(OP_INVNFTAIL_OLD, invnftail_old),
};

bool xeq_dist(xeqrun *m, int32_t op)
{
    static const distrow *of[OP_N];
    static bool built;
    if (!built) {
        for (const distrow &r : rows)
            of[r.op] = &r;
        built = true;
    }
    const distrow *r = op > 0 && op < OP_N ? of[op] : nullptr;
    if (!r)
        return false;
    const double *a = m->sp;
    bool missing = false;
    for (int32_t i = 0; i < r->n; i++)
        missing |= !(a[-i] < misval);
    double z = misval;
    if (!missing)
        z = r->n == 2   ? r->f2(a[0], a[-1])
            : r->n == 3 ? r->f3(a[0], a[-1], a[-2])
                        : r->f4(a[0], a[-1], a[-2], a[-3]);
    m->sp -= r->n - 1;
    *m->sp = xq_fin(z);
    return true;
}
