// mosa/mtypes.h - types as the compiler and declarations know them.
#pragma once
#include <cstdint>

enum mt_eltype : int8_t {
    MT_TRANSMORPHIC = 0,
    MT_REAL = 1,
    MT_STRING = 2,
    MT_COMPLEX = 3,
    MT_NUMERIC = 4,
    MT_POINTER = 5,
    MT_STRUCT = 6,
    MT_CLASS = 7,
    MT_STRUCTDEF = -1,
    MT_CLASSDEF = -2,
};
enum mt_orgtype : int8_t {
    OT_MATRIX = 0,
    OT_SCALAR = 1,
    OT_VECTOR = 2,
    OT_ROWVECTOR = 3,
    OT_COLVECTOR = 4,
    OT_VOID = 5,
};
// The words; text outside the tables is "BROKEN%d" and "BROKEN", in a static buffer.
const char *readableeltype(int32_t eltype);
const char *readableorgtype(int32_t orgtype);
// Storage type of a declared element type: transmorphic and numeric begin as real.
int16_t mt_storage(int32_t eltype);
// Shape of a declared object before anything is stored: scalars 1 by 1, rows 1 by 0, ...
void mt_shape(int32_t orgtype, int32_t *rows, int32_t *cols);

// ---- the type table of one compilation: entries are interned, except pointers, which are
// compared by mtyp_isequal so that a chain can be patched after it was begun.
inline constexpr int32_t mtyp_max = 500, mtyp_poolmax = 4000;
struct mtyp_entry {
    int8_t eltype, orgtype, isfcn;
    int32_t ptrto;   // entry pointed to, -1 if none
    int32_t nameoff; // struct or class name in the pool, -1 if none
};
struct mtyp_table {
    int32_t n, poolused;
    mtyp_entry e[mtyp_max];
    char pool[mtyp_poolmax];
};
// Index of the entry; -1 when the table is full, after its words were printed.
int32_t mtyp_addany(mtyp_table *t, int32_t eltype, int32_t orgtype, bool isfcn, const char *name);
int32_t mtyp_add(mtyp_table *t, int32_t eltype, int32_t orgtype); // pointers: a new entry each
void mtyp_replto(mtyp_table *t, int32_t pointer, int32_t target);
int32_t mtyp_refcn(mtyp_table *t, int32_t type); // the same type, as a function's result
bool mtyp_isequal(const mtyp_table *t, int32_t a, int32_t b);
const char *mtyp_name(const mtyp_table *t, int32_t type); // "" when it has none
