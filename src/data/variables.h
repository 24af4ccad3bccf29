// data/variables.h - the dictionary: names, lookup, temporary names, type conversion.
#pragma once
#include "core/missing.h"
#include <cstdint>

// ---- between a double and a stored value
int32_t ovfloat(double value, float *out);  // 1 when the result is missing
int32_t ovbyte_of_ovdouble(double z);
int32_t ovint_of_ovdouble(double z);
int32_t ovlong_of_ovdouble(double z);
double ovdouble_of_stbyte(int32_t v);
double ovdouble_of_stint(int32_t v);
double ovdouble_of_ovlong(int32_t v);
double ovdouble_of_ovfloatp(const float *p);
uint8_t dsa_modernvartype(uint8_t type);
void dsa_map_vartypes_to_old(uint8_t *types, int32_t k);
[[nodiscard]] int32_t dsa_fix_old_vartypes();

// ---- names. 0 when good; with quiet nothing is printed.
[[nodiscard]] int32_t chkname(const char *name, bool quiet);
[[nodiscard]] int32_t chksinglename(const char *name, bool quiet);
[[nodiscard]] int32_t chkreserved(const char *name);
[[nodiscard]] int32_t chkreskeywrds(const char *name);
[[nodiscard]] int32_t chkreskeywrds_quietly(const char *name);
extern const char *const resword[], *const keyword[];  // each ends with a single blank

// ---- lookup. A variable number, or a negated code. mode 0: the name is to be new, and the
// answer is _Kvar + 1; add 10 for quiet (not found then gives _Kvar + 1). exact switches
// abbreviation off.
int32_t ovata_findvar(const char *name, int32_t mode, bool exact);
int32_t findtyped(const char *name, bool exact);  // a name just typed; every failure has words
int32_t sysfindvar(const char *name);         // whole name, quiet, any variable; 0 when absent
int32_t sysfindvarfromend(const char *name);
int32_t findvarnoab(const char *name);        // whole name; negated 111 with words
int32_t unab_var(const char *name, char *full);  // 33 bytes; a code
// Lookup in a table of n names: the 1-based index, 0 not found, -1 ambiguous. Silent.
int32_t findvar_in_list(const char *name, const char (*names)[33], int32_t n, bool exact);
// A new variable with the checks on names. Its number, or a negated code.
int32_t addvar(uint8_t type, const char *name);
// A work variable behind the user's, over the variable limit when need be; every row holds
// initial. Its number, or a negated code. doreq drops what a command leaves behind.
int32_t addwrkvar(uint8_t type, double initial);

// ---- temporary names: __ and six base-36 digits of tmpvctr
extern int32_t tmpvctr;
void mktmpvn(char *buffer);  // 9 bytes
bool istmpvn(const char *name, int32_t start);
void rmtmpvn(int32_t start);  // drops the variables numbered from start, scalars and matrices too
