// stats/normal.h - the normal distribution. Arguments are not missing; results are finite or
// misval.
#pragma once

double ovnormal(double z);          // lower tail
double ovlnnormal(double z);        // its logarithm, good far out in the left tail
double ovinvnormal(double p);       // misval unless 0 < p < 1
double ovnormalden(double z);
double ovnormalden3(double x, double mean, double sd);    // misval unless sd > 0
double ovlnnormalden3(double x, double mean, double sd);
