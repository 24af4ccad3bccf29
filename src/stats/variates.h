// stats/variates.h - random variates of the distributions, all drawn from the one stream.
//
// Each comes in two forms: one variate, and a vector of n of them at a stride of doubles. A
// bad parameter gives misval and draws nothing. The setup a parameter needs is kept until
// another value comes.
//
//   rnormal(m, s)               s from 0        rgamma(a, b), rbeta(a, b)  a, b 1e-4 .. 1e8
//   rchi2(df), rt(df)           2e-4 .. 2e8     rpoisson(m)    1e-6 .. 1e15
//   rbinomial(n, p)             n 1 .. 1e11     rnbinomial(n, p)  n 1e-4 .. 1e8, p above 0
//   rhypergeometric(N, K, n)    N 2 .. 1e6, whole numbers
#pragma once
#include <cstdint>

void runiform_(double *out, int64_t n, int64_t stride);
void rnormal_(double *out, int64_t n, int64_t stride, double m, double s);
void rgamma_(double *out, int64_t n, int64_t stride, double a, double b);
void rbeta_(double *out, int64_t n, int64_t stride, double a, double b);
void rchi2_(double *out, int64_t n, int64_t stride, double df);
void rt_(double *out, int64_t n, int64_t stride, double df);
void rpoisson_(double *out, int64_t n, int64_t stride, double m);
void rbinomial_(double *out, int64_t n, int64_t stride, double trials, double p);
void rhypergeometric_(double *out, int64_t n, int64_t stride, double N, double K, double draws);
void rnbinomial_(double *out, int64_t n, int64_t stride, double size, double p);

double rnormal(double m, double s);
double rgamma(double a, double b);
double rbeta(double a, double b);
double rchi2(double df);
double rt(double df);
double rpoisson(double m);
double rbinomial(double trials, double p);
double rhypergeometric(double N, double K, double draws);
double rnbinomial(double size, double p);
