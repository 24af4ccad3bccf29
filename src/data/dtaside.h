// data/dtaside.h - a dataset file held beside the dataset in memory, for commands that bring
// the two together.
//
//   dtaside u;
//   if ((rc = side_load(file, &u))) return rc;       dictionary, characteristics, rows
//   side_num(&u, k, i)   side_str(&u, k, i, buf)     variables and rows count from 0
//   side_labels(&u, wanted)                          its value labels into the store
//
// Nothing in memory changes before side_labels. Types are those of today whatever the release.
#pragma once
#include "data/dtafmt.h"
#include <string>
#include <vector>

struct sidechar {
    std::string owner, name, text;
};
struct dtaside {
    int32_t fd = -1;
    dtadict d;
    std::vector<sidechar> chars;
    char *rows = nullptr;           // N rows of d.width bytes in the machine's order
    std::vector<uint32_t> at;       // offset of a variable within a row
    std::vector<uint8_t> type;      // the type memory would give it
    dtaside() = default;
    ~dtaside();
    dtaside(const dtaside &) = delete;
    dtaside &operator=(const dtaside &) = delete;
};
[[nodiscard]] int32_t side_load(const char *name, dtaside *s);
[[nodiscard]] int32_t side_labels(dtaside *s, bool (*wanted)(const char *name));
int32_t side_find(const dtaside *s, const char *name);  // whole name; -1 when absent

inline const char *side_cell(const dtaside *s, int32_t k, int32_t row)
{
    return s->rows + uint64_t(row) * s->d.width + s->at[size_t(k)];
}
double side_num(const dtaside *s, int32_t k, int32_t row);
char *side_str(const dtaside *s, int32_t k, int32_t row, char *buf);  // 245 bytes; buf
