// stats/dist.h - distributions: lower and upper tails, densities, inverses.
//
// Arguments stand in the user's order: parameters first, the value last. No function fails: a
// missing argument or one outside its domain gives misval.
//
//   gammap(a, x)      a from 1e-10 to 1e17       chi2(df, x)    df from 2e-10 to 1e17
//   ibeta(a, b, x)    a, b from 1e-10 to 1e17    F, t           df from 2e-10 to 2e17
//   poisson(m, k)     m from 1e-10 to below 2^53
#pragma once

// Both tails at once, each as precise as the other: false when the value cannot be had.
struct tails {
    double lower, upper;
};
bool dist_gamma(double a, double x, tails *out);
bool dist_beta(double a, double b, double x, double y, tails *out);  // y is 1 - x

double gammap2(double a, double x);
double gammaptail2(double a, double x);
double invgammap2(double a, double p);
double invgammaptail2(double a, double p);
double gammaden(double a, double b, double g, double x);
double chi2cumm2(double df, double x);
double chi2tail2(double df, double x);
double invchi2cumm2(double df, double p);
double invchi2tail2(double df, double p);

double ibeta2(double a, double b, double x);
double ibetatail2(double a, double b, double x);
double invibeta2(double a, double b, double p);
double invibetatail2(double a, double b, double p);
double betaden(double a, double b, double x);
double fcumm2(double df1, double df2, double f);
double ftail2(double df1, double df2, double f);
double invfcumm2(double df1, double df2, double p);
double invftail2(double df1, double df2, double p);
double fden(double df1, double df2, double f);
double ttail2(double df, double t);
double invttail2(double df, double p);
double tden(double df, double t);
double tprob(double df, double t);   // two-sided
double invt(double df, double p);    // its inverse: the probability inside

double binomial2(double n, double k, double p);
double binomialtail2(double n, double k, double p);
double binomialp(double n, double k, double p);
double invbinomial2(double n, double k, double q);
double invbinomialtail2(double n, double k, double q);
double poisson2(double m, double k);
double poissontail2(double m, double k);
double poissonp(double m, double k);
double invpoisson(double k, double q);
double invpoissontail(double k, double q);
double nbinomial(double n, double k, double p);
double nbinomialtail(double n, double k, double p);
double nbinomialp(double n, double k, double p);
double invnbinomial(double n, double k, double q);
double invnbinomialtail(double n, double k, double q);
double hypergeometric(double N, double K, double n, double k);
double hypergeometricp(double N, double K, double n, double k);

double nchi2(double df, double L, double x);
double invnchi2(double df, double L, double p);
double npnchi2(double df, double x, double p);  // solves for L
double nibeta(double a, double b, double L, double x);
double invnibeta(double a, double b, double L, double p);
double nbetaden(double a, double b, double L, double x);
double nftail(double df1, double df2, double L, double f);
double invnftail(double df1, double df2, double L, double p);
double nfden(double df1, double df2, double L, double f);
double binormal(double h, double k, double rho);

// k from 2 (1 for Dunnett) to 1e6, df from 1 to 1e17
double srangeprob(double k, double df, double x);
double invsrangeprob(double k, double df, double p);
double dunnettprob(double k, double df, double x);  // two-sided, correlation 1/2
double invdunnettprob(double k, double df, double p);

// The Poisson and binomial terms for real arguments, by saddle points.
double dist_poisson_term(double x, double mean);
double dist_binomial_term(double x, double n, double p, double q);
