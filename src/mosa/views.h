// mosa/views.h - matrices whose elements stay in the dataset.
//
//   kind 1  cols variable numbers, the first observation          (cols + 1) * 4 bytes
//   kind 2  cols variable numbers, rows observation numbers       (rows + cols) * 4
//   kind 3  a handle to expanded terms, then as kind 1            cols * 4 + 12
//           (-k in place of a variable number is column k of the terms)
//   kind 4  a handle to expanded terms, then as kind 2            (rows + cols) * 4 + 8
//
// Numbers and observations count from 1. What lies outside the dataset reads as missing and
// is not written. Writing keeps the variable's storage type.
#pragma once
#include "mosa/values.h"

int64_t v_length(int32_t kind, int32_t rows, int32_t cols);
double v_el(const matobj *v, int32_t i, int32_t j); // i, j from 0
double v_el1(const matobj *v, int64_t k);
void v_row(const matobj *v, int32_t i, double *out); // all of row i, faster than one by one
void v_sto_el(double z, const matobj *v, int32_t i, int32_t j);
void v_sto_el1(double z, const matobj *v, int64_t k);
// A string element into buffer (at least 245 bytes); returns its length.
int32_t v_sel(const matobj *v, int32_t i, int32_t j, char *buffer);
int32_t v_sel1(const matobj *v, int64_t k, char *buffer);
[[nodiscard]] char *v_exsel(const matobj *v, int32_t i, int32_t j); // as a counted block
void v_sto_sel(const char *bytes, int32_t length, const matobj *v, int32_t i, int32_t j);
int32_t v_obs(const matobj *v, int32_t i);    // observation of row i
int32_t v_var(const matobj *v, int32_t j);    // variable of column j
// ---- views of terms. They share what was expanded, counted by the views that hold it; when the
// dataset is dropped they let go of it and read as missing.
struct fvlist;
struct fvhandle;
[[nodiscard]] fvhandle *v_fvnew(fvlist &&list);  // held once by the caller; null with 3900
fvhandle *v_fvhandle(const matobj *v);           // of a view, or null
void v_fvhold(fvhandle *h);
void v_fvlet(fvhandle *h);
void v_fvset(matobj *v, fvhandle *h);            // into a fresh descriptor, which holds it too
[[nodiscard]] int32_t v_fvxeqinit(matobj *v); // 0, or 1 with 3598 in m_xrc
bool v_fvnotallowed(const matobj *v);         // true with 3206 in m_xrc for kinds 3 and 4
void v_fvfree(matobj *v);
void v_fvclearall();
void v_upvarnums(int32_t n);                      // variable n went away
const char *mosa_representation(const matobj *m); // "Array", "View1" ...
