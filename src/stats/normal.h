// stats/normal.h - the normal distribution. Arguments are not missing; results are finite or
// misval.
#pragma once

double ovnormal(double z);          // lower tail
double ovlnnormal(double z);        // its logarithm, good far out in the left tail
double old_lnnormal(double z);      // as before version 10: the log of the tail, misval where that is 0
double ovinvnormal(double p);       // misval unless 0 < p < 1
double ovnormalden(double z);
double ovnormalden3(double x, double mean, double sd);    // misval unless sd > 0
double ovlnnormalden3(double x, double mean, double sd);
