// commands/groupmeans.h - means, standard deviations and counts of groups, and the table that
// lists them one a line.
#pragma once
#include <cstdint>
#include <string>

struct groupsum {
    double n = 0, w = 0, mean = 0, m2 = 0; // observations, weight, running mean and squares
};
// counts: the weight is a number of observations.
void gs_add(groupsum *g, double y, double w, bool counts);
void gs_join(groupsum *all, const groupsum &g);
// The standard deviation; scaled lets weights sum to the number of observations. 0 of one
// observation, missing of none.
double gs_sd(const groupsum &g, bool scaled);

struct meanscolumns {
    bool means = true, standard = true, freq = true, scaled = false;
    int32_t label = 11; // columns of the labels
};
// The heading: the name of the groups, and above the numbers a title unless it is empty.
void gs_heading(const meanscolumns &c, const std::string &name, const std::string &title);
void gs_rule(const meanscolumns &c);
void gs_row(const meanscolumns &c, const std::string &label, const groupsum &g);
