// commands/categories.h - the distinct values of a variable, in order, with their texts.
#pragma once
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

// Values are numbered as they are met; category_sort then gives each its rank. A missing
// value is a value like any other here: callers leave it out when they must.
struct categories {
    int32_t var = 0;
    bool text = false;
    std::vector<double> num;        // by number met, for numeric variables
    std::vector<std::string> str;   // for string variables
    std::vector<int32_t> order;     // ranks to numbers, after category_sort
    std::vector<int32_t> rank;      // and back
    std::unordered_map<double, int32_t> of_num;
    std::unordered_map<std::string, int32_t> of_str;
    int32_t count() const { return int32_t(text ? str.size() : num.size()); }
};
void category_open(categories *c, int32_t var);
// The number of the value at an observation; -1 for a missing one when missing is off; -2
// when there would be more than max of them.
int32_t category_at(categories *c, int32_t obs, bool missing, int32_t max);
// The same for the categories that there are: -1 for any other value.
int32_t category_find(const categories *c, int32_t obs);
void category_sort(categories *c);
// The text of the category of a rank: value label (unless nolabel), format or string.
std::string category_text(const categories *c, int32_t rank, bool nolabel);
