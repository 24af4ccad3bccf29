// expr/machine.h - one run of a compiled expression. For the files of the machine alone.
#pragma once
#include "expr/expr.h"
#include "expr/opcodes.h"
#include "core/missing.h"
#include "data/umat.h"
#include "data/variables.h"

inline constexpr int32_t xq_slot = 246;  // bytes of a string on the stack

// A matrix on the stack by its name; the name of a temporary begins with the digit 1. An
// empty name is no matrix at all (nullmat).
struct matslot {
    char kind;
    char name[33];
    bool temp() const { return *name == '1'; }
};

// Stacks grow upward and sp, ss, ms point at the top entry; entry 0 is never used. Nothing
// here is cleared at the start of a run.
struct xeqrun {
    xeqpgm *pgm;
    const int16_t *pc, *end;
    int32_t obs, obs1, obs2, n1, n2;
    const char *row;  // the observation's bytes, null when there is none
    double *sp;
    char (*ss)[xq_slot];
    matslot *ms;
    bool allmissing;  // of the missing() under way
    bool strict;      // a matrix expression: failures end the run
    int32_t rc;       // of the operation that ended it
    double num[xq_typestack + 2];
    char str[xq_strings + 2][xq_slot];
    matslot mat[xq_mats + 2];
};

void xeq_run(xeqrun *m);             // from pc to end
void xeq_rare(xeqrun *m, int32_t op); // strings and what is not arithmetic
bool xeq_dates(xeqrun *m, int32_t op); // false when op is none of its own
bool xeq_dist(xeqrun *m, int32_t op);
bool xeq_terms(xeqrun *m, int32_t op);
void xeq_matrix(xeqrun *m, int32_t op);
void xeq_start(xeqrun *m, xeqpgm *pgm, int32_t obs);

// What a result may be: a number inside the range, or misval.
inline double xq_fin(double z) { return __builtin_fabs(z) < misval ? z : misval; }

// Rounded as a float variable rounds.
inline double xq_float(double z)
{
    if (__builtin_fabs(z) <= max_ovfloat)
        return double(float(z));
    float f;
    (void)ovfloat(z, &f);
    return ovdouble_of_ovfloatp(&f);
}
