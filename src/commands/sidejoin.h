// commands/sidejoin.h - what append and merge share: the variables of a file held beside
// memory are matched by name with those in memory, types are widened so that either side's
// values fit, and new variables come with format, labels and characteristics.
#pragma once
#include "data/dtaside.h"
#include <cstdint>
#include <string>
#include <vector>

struct joinvar {
    int32_t side;  // variable of the file, from 0
    int32_t var;   // of memory; 0 until it is made
    bool fresh;    // memory did not have it
};
// The wanted variables of the file, with their counterparts. A text on one side and a number
// on the other is r(106), or with force leaves the file's out.
[[nodiscard]] int32_t join_match(const dtaside *s, const std::vector<uint8_t> &wanted, bool force,
                                 std::vector<joinvar> *list);
// Room for the new variables, a flag when there is to be one, and so many rows, so that a join
// without room is refused before anything has changed.
[[nodiscard]] int32_t join_room(const dtaside *s, const std::vector<joinvar> &list, bool flag,
                                int64_t rows);
// Widens what is there and makes what is new, missing in every row.
[[nodiscard]] int32_t join_ready(const dtaside *s, std::vector<joinvar> *list);
// Characteristics memory does not have; notes of the file's dataset behind those of memory.
[[nodiscard]] int32_t join_chars(const dtaside *s, const std::vector<joinvar> &list, bool notes);
// Value labels of the new variables, and of those of memory whose table is not there.
[[nodiscard]] int32_t join_labels(dtaside *s);
void join_put(const dtaside *s, const joinvar *v, int32_t row, int32_t obs);
// The file name of a parsed using, with its ending.
std::string join_file();
// The text of an option that lists variables of the file, all of them when it is absent.
[[nodiscard]] int32_t join_wanted(const dtadict *d, const char *option, std::vector<uint8_t> *wanted);
