// mosa/values.h - what the matrix language computes with.
//
// Everything is a matobj: a matrix of real, complex, string, pointer, struct or class elements,
// a view onto the dataset, or a compiled function. Each is a record of the dm store, of type
// DM_MOSA or DM_MOSAFCN; pools of free records and of 8-byte blocks make a scalar temporary
// cost two pops and no search.
//
//   array      element (i, j), from 0, at i * cols + j
//   complex    all real parts, then all imaginary parts, rows * cols doubles further on
//   string     each element a counted block, or null when empty
//   pointer    each element a matobj whose links counts it, or null
//   struct     an array of pointers to instances; an instance is a pointer array itself
//   view       data holds a descriptor (views.h), the elements stay in the dataset
//   function   data holds code words (image.h)
//
// Links. links counts the stack slots, pointer elements and globals that refer to a record.
// What falls below 1 is freed by mo_free. A temporary is born with 0.
//
// Failure. Constructors answer null (or 1) after m_custom_xeqerr reported 3900.
#pragma once
#include "core/missing.h"
#include "interp/dm.h"
#include <cstdint>
#include <cstring>

enum mo_eltype : int16_t {
    MO_REAL = 0,
    MO_COMPLEX = -1,
    MO_ODD = -2, // opaque, by m_mktodd
    MO_STRING = -3,
    MO_POINTER = -4,
    MO_STRUCT = -5,
    MO_CLASS = -6,
};

struct matinfo {
    int32_t stamp; // functions: m_sysclock at the last use
    char name[33]; // empty: invisible
    char subname[33];
    int8_t inclass; // the function belongs to a program class
};
static_assert(sizeof(matinfo) == 72);

struct matobj {
    void *data;
    matinfo *info; // null for a nameless temporary
    int64_t alloc; // bytes owned through data
    int32_t links;
    int32_t rows;   // functions: code words
    int32_t cols;   // functions: compile-time type of the result; -1 struct, -2 class definition
    int32_t level;  // -1 global, 0 top level, else the level of the owning frame
    int16_t eltype; // functions: shape of the result
    int8_t view;    // 0 array, 1 to 4 a kind of view; functions: 1 when loaded from a library
    uint8_t status; // 0 free, 1 live, 2 class instance whose destructor has run
};
static_assert(sizeof(matobj) == 48);

inline constexpr int32_t mo_maxlinks = 2147483647;
inline constexpr int32_t mo_maxfree = 500;  // records in the pool
inline constexpr int32_t mo_maxsmall = 250; // 8-byte blocks in the pool
inline constexpr int32_t mo_structdepth = 500;

inline bool mo_isfcn(const matobj *m)
{
    return dm_rec(m)->type == DM_MOSAFCN;
}
inline bool mo_isarray(const matobj *m)
{
    return m->view == 0;
}
inline bool mo_is1by1(const matobj *m)
{
    return m->rows == 1 && m->cols == 1;
}
inline int64_t mo_count(const matobj *m)
{
    return int64_t(m->rows) * m->cols;
}
inline bool mo_isptrlike(int16_t eltype)
{
    return eltype <= MO_POINTER;
}
inline double *mo_re(const matobj *m)
{
    return static_cast<double *>(m->data);
}
inline double *mo_im(const matobj *m)
{
    return mo_re(m) + mo_count(m);
}
inline char **mo_sel(const matobj *m)
{
    return static_cast<char **>(m->data);
}
inline matobj **mo_pel(const matobj *m)
{
    return static_cast<matobj **>(m->data);
}
inline int32_t *mo_code(const matobj *m)
{
    return static_cast<int32_t *>(m->data);
}

extern int32_t m_level;        // execution level: -1 before any code, 0 top, +1 for each call
extern int32_t mosa_xeq_depth; // nesting of interactive statements; 0 when none runs
extern int32_t m_sysclock;     // serial number against which cached links are valid
extern int64_t m_albytes;      // bytes of functions loaded from libraries
extern const char *m_tname;    // how a message names the object being made, or null

// ---- pools and start
void mo_init();
void mo_reinit(); // empties the pools when nothing runs
struct mo_poolinfo {
    int32_t small_capacity, small_held, records_held;
};
mo_poolinfo mo_rpt();

// ---- making. All temporaries come with links 0, the current level and view 0; string and
// pointer-like slots are null, numbers uninitialised. Rows and columns must not be negative;
// a size that does not fit counts as out of memory.
[[nodiscard]] matobj *m_mktmat(int16_t eltype, int32_t rows, int32_t cols);
// Named; the empty name makes a temporary. Level -1. Links 1 at level 0, else 0.
[[nodiscard]] matobj *m_mkmat(const char *name, int16_t eltype, int32_t rows, int32_t cols);
[[nodiscard]] matobj *m_mkglobalmat(const char *name, int16_t eltype, int32_t rows, int32_t cols);
[[nodiscard]] matobj *m_mktview(int16_t eltype, int8_t kind, int32_t rows, int32_t cols);
[[nodiscard]] matobj *m_mktsmat(); // real 1 by 1
[[nodiscard]] matobj *m_mktsmatsto(double z);
[[nodiscard]] matobj *m_mktodd(int64_t bytes);
[[nodiscard]] matobj *m_mktstr(const char *bytes, int64_t length); // string 1 by 1
[[nodiscard]] matobj *m_dupmat(const matobj *src);
// Reshapes in place, keeping name, level and links. 0, or 1 with 3900 in m_xrc.
[[nodiscard]] int32_t m_remkmat(matobj *m, int16_t eltype, int8_t view, int32_t rows, int32_t cols);
[[nodiscard]] int32_t mo_resize(matobj *m, int64_t bytes);
void m_swapmat(matobj *a, matobj *b); // contents only: names, levels and links stay
[[nodiscard]] int32_t remakemiss(matobj *m, int16_t eltype, int32_t rows, int32_t cols);
void fillwithmissing(matobj *m); // . for numbers, empty or null for the rest
// Assignment: dest takes src's value; a temporary of links 1 gives up its storage when steal
// is set. src == dest materialises a view. 0, or nonzero with m_xrc set.
[[nodiscard]] int32_t cpymat(matobj *dest, matobj *src, bool steal);
// Element by element into a destination of the same shape and type, either may be a view.
[[nodiscard]] int32_t matcpy_x_x(matobj *dest, const matobj *src);
// One element: dest[di] = src[si], both arrays of one type (numbers from 0).
[[nodiscard]] int32_t matcpy_el(matobj *dest, int64_t di, const matobj *src, int64_t si);
// rows and cols as doubles: 3300 in m_xrc and true at or above 2^31.
bool m_checkrandc(double rows, double cols);
// size * rows * cols into *bytes; false when it does not fit.
bool m_canmultiply(int64_t size, int64_t rows, int64_t cols, int64_t *bytes);
int64_t mo_elsize(int16_t eltype);

// ---- freeing
void mo_free(matobj *m); // a matrix or a function
void mo_freemat(matobj *m);
void mo_freemat_no_destroy(matobj *m);
void mo_free_force(matobj *m);
void mo_freefcn(matobj *f);
void mo_freefcn_force(matobj *f);
void mo_freefcn_forado(matobj *f);
void mo_subptrfree(matobj *m); // releases the targets, keeps the array
inline void mo_unlink(matobj *m)
{
    if (--m->links < 1)
        mo_free(m);
}
void m_freeunlinkedmats();

// ---- strings: a block is int32 length + 1, the bytes, a NUL; null is the empty string
inline int32_t sel_len(const char *block)
{
    if (!block)
        return 0;
    int32_t n;
    memcpy(&n, block, sizeof n);
    return n - 1;
}
inline const char *sel_text(const char *block)
{
    return block ? block + 4 : "";
}
void selinit(matobj *m);
void selfree(matobj *m);
[[nodiscard]] int32_t selrecreate(matobj *m, int64_t i, int64_t length);
[[nodiscard]] int32_t selreplace(matobj *m, int64_t i, const char *bytes, int64_t length);
char *selexch(matobj *m, int64_t i);
int32_t exstrcmp(const char *a, const char *b);
void selfreeblock(char *block); // what selexch handed over
// ---- pointers
void pelinit(matobj *m);
void pelreplace(matobj *m, int64_t i, matobj *target);

// ---- names. cls is a program class (of a program file), "" for none; a class member has the
// class in name and the member in subname.
void mo_dmnamingconvention(const char *cls, const char *name, const char *subname, char *key,
                           char *rest);
[[nodiscard]] matobj *mo_allocfcn(const char *cls, const char *name, const char *subname,
                                  int64_t bytes);
matobj *mo_findfcn(const char *cls, const char *name, const char *subname);
bool fcnnameavbl(const char *cls, const char *name, const char *subname, char *buffer);
matobj *findlvl0mat(const char *name);
matobj *findglobalmat(const char *name);
double findglobalrs(const char *name, double dflt);
bool m_isvisible(const matobj *m);
bool m_isglobal(const matobj *m);
void m_makeinvisible(matobj *m);
bool m_rmobject(matobj *m);
bool m_rmglobalmat(const char *name);
// The functions of a program class go with the program; one that runs is no longer found.
void mo_dropclass(const char *cls);
void mo_renamefcn(matobj *f, const char *name);
[[nodiscard]] int32_t mo_renamemat(matobj *m, const char *name);
matobj *mo_nextfcn(matobj *f); // null gives the first
matobj *mo_nextmat(matobj *m);
int32_t mo_cnt();
const char *mo_name(const matobj *m); // "" when nameless

// ---- accounting
int64_t m_objsize(const matobj *m);
struct m_sums {
    int32_t nfcn, nauto, nclass, nmat;
    int64_t fcn, autos, inclass, mat;
};
m_sums m_getsum();
int64_t mosa_extra();
void m_dropoldfcns();
bool mosa_has_any_memory();
void m_resetclock();
inline constexpr int64_t mo_overhead = 48;

// ---- what the floors above fill in
extern void (*mo_classdestroy)(matobj *instance);   // runs destroy() of a class instance
extern void (*mo_freeclassdef)(matobj *definition); // drops what preparing it made
extern void (*mo_clearlinks)(matobj *function);     // forgets the cached links of its code

const char *mateltypestr(int16_t eltype); // "real" ... of storage types
