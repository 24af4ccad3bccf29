// stats/sweep.h - the sweep operator over symmetric cross-product matrices.
//
// Matrices are plain blocks of doubles with a row stride of set_matsize. Sweeping a row turns
// its variable from one that is explained into one that explains. What the rule below leaves
// out has a row and a column of zeros, so that its coefficient and variance are zero.
//
//   dropped   when what is left of the diagonal is below its tolerance, which is taken from
//             the unswept matrix: rel times the diagonal, at least abs; rel itself for a zero
//   order     forced positions first, then the largest remaining diagonal, the lowest position
//             among equals; lastindex (the constant) at the end
#pragma once
#include <cstdint>

struct matrind_t {
    double abs, rel;
    int32_t pivot;  // 0: natural order
    double fv;      // stands for rel while factor terms are swept in their order
};
extern matrind_t matrind;
extern bool matrin3flg;  // matrin3 had to add to the diagonal

// Sweeps rows first to last; rows and columns low to high follow, as those of a dependent
// variable do that stands outside. order ends with -1 and may be null; lastindex -1 is none.
// A swept row j then holds at column y of a follower the coefficient. 0, 1, or 909 with words.
[[nodiscard]] int32_t sweep_within(double *a, int32_t low, int32_t high, int32_t first,
                                   int32_t last, const int32_t *order, int32_t lastindex);
// The generalized inverse of rows first to last, in place and symmetric.
[[nodiscard]] int32_t matrinf(double *a, int32_t first, int32_t last, const int32_t *order,
                              int32_t lastindex);
[[nodiscard]] int32_t matrin(double *a, int32_t first, int32_t last, int32_t lastindex);
// As matrin with no row dropped: the diagonal is raised until none is.
[[nodiscard]] int32_t matrin3(double *a, int32_t first, int32_t last, int32_t lastindex);
