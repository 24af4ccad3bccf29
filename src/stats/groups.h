// stats/groups.h - the values of a variable numbered as they are met, for clusters and groups.
#pragma once
#include <cstdint>
#include <string>
#include <unordered_map>

struct groupids {
    int32_t var = 0;  // 0 none
    std::unordered_map<double, int32_t> num;
    std::unordered_map<std::string, int32_t> text;
    int32_t n = 0;
};
// The group of an observation from 0, -1 where the value is missing.
int32_t group_at(groupids *g, int32_t obs);
