// stats/distold.h - the first generation of the distribution functions, kept as it was so that
// programs written for old versions go on getting their numbers.
//
// Arguments stand in the user's order, as in stats/dist.h. Its limits are its character: a
// series stops after 1500 terms, an inverse when its bracket is 1e-7 wide.
#pragma once

double gammap(double a, double x);
double dgammapda(double a, double x);
double dgammapdx(double a, double x);
double dgammapdada(double a, double x);
double dgammapdadx(double a, double x);
double dgammapdxdx(double a, double x);
double invgammap(double a, double p);
double chi2cumm(double df, double x);
double chi2tail(double df, double x);
double invchi2cumm(double df, double p);
double invchi2tail(double df, double p);

double ibeta(double a, double b, double x);
double invibeta(double a, double b, double p);
double fcumm(double df1, double df2, double f);
double ftail(double df1, double df2, double f);
double invfcumm(double df1, double df2, double p);
double invftail(double df1, double df2, double p);
double ttail(double df, double t);
double invttail(double df, double p);
double invt_old(double df, double p);                       // two-sided, the probability inside
double binomial_old(double n, double k, double p);          // k or more
double invbinomial_old(double n, double k, double q);

double invnchi2_old(double df, double L, double p);
double npnchi2_old(double df, double x, double p);
double invnibeta_old(double a, double b, double L, double p);
double invnftail_old(double df1, double df2, double L, double p);
