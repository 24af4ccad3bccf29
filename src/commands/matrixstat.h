// commands/matrixstat.h - subcommands of matrix that compute: from data and by decomposition.
#pragma once
#include <cstdint>

int32_t mat_accum(int32_t);       // accum A = varlist
int32_t mat_vecaccum(int32_t);    // vecaccum a = y varlist
int32_t mat_glsaccum(int32_t);    // glsaccum A = varlist, group() glsmat() row()
int32_t mat_svd(int32_t);         // svd U w V = A
int32_t mat_symeigen(int32_t);    // symeigen X v = A
int32_t mat_eigenvalues(int32_t); // eigenvalues r c = A
int32_t mat_score(int32_t);       // score [type] newvar = A
